#include "TestMain.h"

#include "app/Application.h"
#include "app/CommandLine.h"
#include "core/ConfigManager.h"
#include "manager/ActionManager.h"
#include "manager/TaskManager.h"
#include "manager/TrayService.h"
#include "widget/GifEditorDialog.h"
#include "widget/LicenseDialog.h"
#include "widget/MainWindow.h"
#include "widget/OcrResultDialog.h"
#include "widget/RecordHud.h"
#include "widget/ScrollHud.h"
#include "widget/TaskNotificationToast.h"
#include "widget/TrayMenu.h"
#include "widget/settings/SettingsDialog.h"
#include "widget/settings/ShortcutSheetDialog.h"

#include <QAccessible>
#include <QComboBox>
#include <QFile>
#include <QListWidget>
#include <QPointer>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QSystemTrayIcon>

using zelmor::app::Application;
using zelmor::core::ConfigManager;
using zelmor::manager::ActionManager;
using zelmor::manager::TaskItem;
using zelmor::manager::TaskManager;
using zelmor::manager::TrayService;
using zelmor::widget::MainWindow;
using zelmor::widget::SettingsDialog;
using zelmor::widget::TaskNotificationToast;

namespace {

// A built translation, put under `name` where the application looks first: the sandbox's data
// folder.
bool placeTranslation(const char* language, const QString& name)
{
    const QString built = qEnvironmentVariable(
        "ZELMOR_BIN_DIR", QCoreApplication::applicationDirPath() + QStringLiteral("/../bin"));
    const QString appData = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    QDir().mkpath(appData);
    QFile::remove(appData + QLatin1Char('/') + name);
    return QFile::copy(built + QStringLiteral("/zelmor_%1.qm").arg(QLatin1String(language)),
                       appData + QLatin1Char('/') + name);
}

QComboBox* languageCombo(QWidget& settings)
{
    for (QComboBox* combo : settings.findChildren<QComboBox*>())
        if (combo->findData(QStringLiteral("zh_CN")) >= 0) return combo;
    return nullptr;
}

// The texts of a window that an assistive technology reads and that hold Chinese characters:
// names, descriptions (tooltips), values and the text of text controls, of shown parts only.
QStringList chineseTexts(QAccessibleInterface* node)
{
    QStringList out;
    if (!node || node->state().invisible) return out;
    QStringList texts;
    for (QAccessible::Text t : {QAccessible::Name, QAccessible::Description, QAccessible::Value})
        texts << node->text(t);
    if (QAccessibleTextInterface* text = node->textInterface())
        texts << text->text(0, text->characterCount());
    // Han characters, CJK punctuation and full-width forms.
    static const QRegularExpression chinese(QStringLiteral(
        "[\\x{3000}-\\x{303F}\\x{3400}-\\x{9FFF}\\x{F900}-\\x{FAFF}\\x{FF00}-\\x{FFEF}]"));
    for (const QString& text : texts)
        if (text.contains(chinese)) out << text;
    for (int i = 0; i < node->childCount(); ++i)
        out << chineseTexts(node->child(i));
    return out;
}

QStringList chineseTexts(QWidget* window)
{
    return chineseTexts(QAccessible::queryAccessibleInterface(window));
}

} // namespace

class TestLanguage : public QObject
{
    Q_OBJECT

    std::unique_ptr<MainWindow> m_window;
    std::unique_ptr<ActionManager> m_actions;
    std::unique_ptr<TrayService> m_tray;

    SettingsDialog* settings() const
    {
        return static_cast<SettingsDialog*>(m_window->pageWidget(MainWindow::SettingsPage));
    }

    // Picks the language in the settings panel with the arrow keys, as a user would, and
    // waits until the panels made before the change are gone.
    void chooseInSettings(const QString& language)
    {
        QComboBox* combo = languageCombo(*settings());
        QVERIFY(combo);
        const QPointer<QWidget> before = settings();
        const int target = combo->findData(language);
        for (int step = 0; step < combo->count() && combo->currentIndex() != target; ++step)
            QTest::keyClick(combo, combo->currentIndex() < target ? Qt::Key_Down : Qt::Key_Up);
        QCOMPARE(ConfigManager::instance().language(), language);
        QTRY_VERIFY(before.isNull() && settings());
    }

private Q_SLOTS:
    void initTestCase()
    {
        for (const char* language : {"zh_CN", "en_US"})
            QVERIFY(placeTranslation(language, QStringLiteral("zelmor_%1.qm").arg(language)));
        ConfigManager::instance().setLanguage(QStringLiteral("system"));
        static_cast<Application*>(qApp)->reloadTranslators();
        m_window = std::make_unique<MainWindow>();
        m_actions = std::make_unique<ActionManager>(m_window.get());
        m_tray = std::make_unique<TrayService>(m_actions.get());
        static_cast<Application*>(qApp)->followLanguage(*m_tray, *m_window);
        m_window->showSettings();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    }
    void cleanupTestCase()
    {
        m_tray.reset();
        m_actions.reset();
        m_window.reset();
    }

    // Run under a locale without a translation of its own (de_DE, C): English throughout, in
    // the windows that were open in Chinese before the change too.
    void otherLanguagesShowNoChinese()
    {
        QVERIFY(QLocale::system().language() != QLocale::Chinese);
        ConfigManager::instance().setLanguage(QStringLiteral("zh_CN"));
        TaskManager& tasks = TaskManager::instance();
        tasks.addTask(QStringLiteral("job"), QString(), {}, {});
        std::vector<std::unique_ptr<QWidget>> windows;
        windows.emplace_back(new zelmor::widget::OcrResultDialog(QStringLiteral("text")));
        windows.emplace_back(new zelmor::widget::LicenseDialog);
        windows.emplace_back(new zelmor::widget::ShortcutSheetDialog);
        windows.emplace_back(new zelmor::widget::RecordHud);
        windows.emplace_back(new zelmor::widget::ScrollHud);
        QList<QWidget*> shown{&TaskNotificationToast::instance()}; // the card lives on
        for (const auto& window : windows)
            shown << window.get();
        for (QWidget* window : shown) {
            window->show();
            QVERIFY(QTest::qWaitForWindowExposed(window));
            QVERIFY2(!chineseTexts(window).isEmpty(), window->metaObject()->className());
        }
        const QPointer<QWidget> before = settings();
        ConfigManager::instance().setLanguage(QStringLiteral("system"));
        QTRY_VERIFY(before.isNull() && settings());

        QImage frame(64, 48, QImage::Format_RGB32);
        frame.fill(Qt::darkCyan);
        zelmor::widget::GifEditorDialog editor({frame, frame}, 100, QString(), nullptr);
        shown << &editor;
        editor.show();
        QVERIFY(QTest::qWaitForWindowExposed(&editor));
        const char* context = "zelmor::manager::ActionManager";
        const quint64 done = tasks.addTask(
            QCoreApplication::translate(context, "文字识别 (OCR)", "ai.ocr.title"),
            QCoreApplication::translate(context, "正在提取文字...", "ai.ocr.processing"), {}, {});
        tasks.updateTask(done, TaskItem::Finished,
                         QCoreApplication::translate(context, "提取成功", "ai.ocr.success"), {});
        QStringList found;
        for (QWidget* window : shown)
            found << chineseTexts(window);
        for (int row = 0; row < settings()->navigation()->count(); ++row) {
            settings()->navigation()->setCurrentRow(row);
            found << chineseTexts(m_window.get());
        }
        m_window->showAiChat();
        found << chineseTexts(m_window.get());
        m_window->showSettings();
        QVERIFY2(found.isEmpty(), qPrintable(found.join(QLatin1Char('\n'))));
    }

    // Back from Chinese is the case above; here to Chinese.
    void switchingRebuildsTrayAndPanels()
    {
        if (ConfigManager::instance().language() != "en_US") chooseInSettings("en_US");
        const QPointer<QMenu> menuBefore = m_tray->menu();

        chooseInSettings("zh_CN");

        QVERIFY(menuBefore.isNull());
        QCOMPARE(m_tray->trayIcon()->contextMenu(), m_tray->menu());
        QStringList tray;
        for (const QAction* a : m_tray->menu()->actions())
            tray << a->text();
        for (const char* row : {"区域截图", "历史记录", "设置...", "退出"})
            QVERIFY2(tray.contains(QString::fromUtf8(row)), row);
        QListWidget* nav = settings()->navigation();
        QStringList shown;
        for (int row = 0; row < nav->count(); ++row)
            shown << nav->item(row)->text();
        QCOMPARE(shown,
                 QStringList({"常规", "快捷键", "截图", "贴图", "AI", "MCP", "隐私", "关于"}));
        // The rebuilt panel shows the same page, with the new language chosen.
        QCOMPARE(m_window->currentPage(), int(MainWindow::SettingsPage));
        QCOMPARE(languageCombo(*settings())->currentData().toString(), "zh_CN");
    }

    void captureSwitch_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QString>("expected");
        QTest::newRow("program name is not a switch") << QStringList{} << QString();
        QTest::newRow("first of both wins")
            << QStringList{"--capture-fullscreen", "--capture-region"} << "--capture-fullscreen";
        QTest::newRow("spelling counts, no prefix match")
            << QStringList{"--Capture-Region", "--capture-regions", "--capture-fullscreen="}
            << QString();
    }
    void captureSwitch()
    {
        QFETCH(QStringList, args);
        std::vector<QByteArray> storage{QByteArray("--capture-region")}; // argv[0] is skipped
        for (const QString& a : args)
            storage.push_back(a.toUtf8());
        std::vector<const char*> argv;
        for (const QByteArray& a : storage)
            argv.push_back(a.constData());
        const char* found = zelmor::app::firstCaptureSwitch(int(argv.size()), argv.data());
        QTEST(QString::fromLatin1(found), "expected");
    }

    // Ours by the exact file name, else the shipped one of the language (English for all but
    // Chinese); Qt's own texts (standard buttons) in the language loaded. Last, as the files it
    // places would be found by the cases above.
    void loadsTranslations_data()
    {
        QTest::addColumn<QString>("placed"); // a copy of the Chinese file under this name
        QTest::addColumn<QString>("language");
        QTest::addColumn<QString>("ours");
        QTest::addColumn<QString>("qts");
        const auto row = [](const char* name, const char* placed, const char* language,
                            const char* ours, const char* qts) {
            QTest::newRow(name) << QString(placed) << QString(language) << QString(ours)
                                << QString(qts);
        };
        row("no file for the language alone", "zelmor_de.qm", "de_DE", "Language:", "Cancel");
        row("the exact file", "zelmor_de_DE.qm", "de_DE", "语言：", "Abbrechen");
        row("Chinese", "zelmor_zh_CN.qm", "zh_CN", "语言：", "取消");
        row("no file drops the old translators", "", "fr_FR", "Language:", "Cancel");
    }
    void loadsTranslations()
    {
        QFETCH(QString, placed);
        QFETCH(QString, language);
        QFETCH(QString, ours);
        if (!placed.isEmpty()) QVERIFY(placeTranslation("zh_CN", placed));
        ConfigManager::instance().setLanguage(language);
        static_cast<Application*>(qApp)->reloadTranslators();
        QCOMPARE(QCoreApplication::translate("zelmor::widget::SettingsDialog",
                                             "Language:", "settings.general.language"),
                 ours);
        QTEST(QCoreApplication::translate("QPlatformTheme", "Cancel"), "qts");
    }
};

ZELMOR_TEST_MAIN(TestLanguage, Application)
#include "tst_language.moc"
