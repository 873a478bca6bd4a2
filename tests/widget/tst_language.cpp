#include "TestMain.h"

#include "app/Application.h"
#include "core/ConfigManager.h"
#include "manager/ActionManager.h"
#include "manager/TrayService.h"
#include "widget/MainWindow.h"
#include "widget/TrayMenu.h"
#include "widget/settings/SettingsDialog.h"

#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QStandardPaths>
#include <QSystemTrayIcon>

using zelmor::app::Application;
using zelmor::core::ConfigManager;
using zelmor::manager::ActionManager;
using zelmor::manager::TrayService;
using zelmor::widget::MainWindow;
using zelmor::widget::SettingsDialog;

namespace {

// The built translations, put where the application looks first: the sandbox's data folder.
bool placeTranslations()
{
    const QString built = qEnvironmentVariable(
        "ZELMOR_BIN_DIR", QCoreApplication::applicationDirPath() + QStringLiteral("/../bin"));
    const QString appData = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    QDir().mkpath(appData);
    for (const char* language : {"zh_CN", "en_US"}) {
        const QString name = QStringLiteral("zelmor_%1.qm").arg(QLatin1String(language));
        QFile::remove(appData + QLatin1Char('/') + name);
        if (!QFile::copy(built + QLatin1Char('/') + name, appData + QLatin1Char('/') + name))
            return false;
    }
    return true;
}

QComboBox* languageCombo(QWidget& settings)
{
    for (QComboBox* combo : settings.findChildren<QComboBox*>())
        if (combo->findData(QStringLiteral("zh_CN")) >= 0) return combo;
    return nullptr;
}

QStringList placeholders(QWidget* panel)
{
    QStringList out;
    for (const QLineEdit* edit : panel->findChildren<QLineEdit*>())
        out << edit->placeholderText();
    return out;
}

} // namespace

class TestLanguage : public QObject
{
    Q_OBJECT

    std::unique_ptr<MainWindow> m_window;
    std::unique_ptr<ActionManager> m_actions;
    std::unique_ptr<TrayService> m_tray;

    QStringList trayTexts() const
    {
        QStringList out;
        for (const QAction* a : m_tray->menu()->actions())
            out << a->text();
        return out;
    }
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
        QVERIFY(placeTranslations());
        ConfigManager::instance().setLanguage(QStringLiteral("en_US"));
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

    void switchingRebuildsTrayAndPanels_data()
    {
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        QTest::addColumn<QStringList>("trayRows");
        QTest::addColumn<QStringList>("navigation");
        QTest::addColumn<QString>("historySearch");
        QTest::newRow("English to Chinese")
            << "en_US"
            << "zh_CN" << QStringList{"区域截图", "历史记录", "设置...", "退出"}
            << QStringList{"常规", "快捷键", "截图", "贴图", "AI", "MCP", "隐私", "关于"}
            << "搜索文件名、标签或识别出的文字...";
        QTest::newRow("Chinese to English")
            << "zh_CN"
            << "en_US" << QStringList{"Region capture", "History", "Settings...", "Quit"}
            << QStringList{"General", "Hotkeys", "Capture", "Pin", "AI", "MCP", "Privacy", "About"}
            << "Search file name, tags or OCR text...";
    }
    void switchingRebuildsTrayAndPanels()
    {
        QFETCH(QString, from);
        QFETCH(QString, to);
        QFETCH(QStringList, trayRows);
        QFETCH(QStringList, navigation);
        QFETCH(QString, historySearch);
        if (ConfigManager::instance().language() != from) chooseInSettings(from);
        const QPointer<QMenu> menuBefore = m_tray->menu();

        chooseInSettings(to);

        QVERIFY(menuBefore.isNull());
        QCOMPARE(m_tray->trayIcon()->contextMenu(), m_tray->menu());
        for (const QString& row : trayRows)
            QVERIFY2(trayTexts().contains(row), qPrintable(row));
        QListWidget* nav = settings()->navigation();
        QStringList shown;
        for (int row = 0; row < nav->count(); ++row)
            shown << nav->item(row)->text();
        QCOMPARE(shown, navigation);
        QVERIFY(
            placeholders(m_window->pageWidget(MainWindow::HistoryPage)).contains(historySearch));
        // The rebuilt panel shows the same page, with the new language chosen.
        QCOMPARE(m_window->currentPage(), int(MainWindow::SettingsPage));
        QCOMPARE(languageCombo(*settings())->currentData().toString(), to);
    }
};

ZELMOR_TEST_MAIN(TestLanguage, Application)
#include "tst_language.moc"
