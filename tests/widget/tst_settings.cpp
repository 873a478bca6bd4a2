#include "FakeAiServer.h"
#include "FakeFileManager.h"
#include "TestMain.h"

#include "app/HotkeyBindings.h"
#include "core/ConfigManager.h"
#include "manager/ActionManager.h"
#include "manager/HotkeyService.h"
#include "service/history/HistoryService.h"
#include "service/mcp/ClientConfig.h"
#include "service/updater/UpdateService.h"
#include "widget/MainWindow.h"
#include "widget/settings/SettingsDialog.h"
#include "widget/settings/ShortcutSheetDialog.h"
#include "widget/settings/UpdateSection.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QKeySequenceEdit>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>
#include <QTableWidget>
#include <QTimer>

#include <functional>

using zelmor::core::ConfigManager;
using zelmor::widget::SettingsDialog;
using zelmor::widget::ShortcutSheetDialog;

namespace {

ConfigManager& config()
{
    return ConfigManager::instance();
}

template <typename Control> Control* control(QWidget& root, const QString& name)
{
    for (Control* c : root.findChildren<Control*>())
        if (c->accessibleName() == name) return c;
    return nullptr;
}

// Sets a control the way a user's change would, through its own change signal.
void change(QWidget* w, const QVariant& value)
{
    if (auto* combo = qobject_cast<QComboBox*>(w))
        combo->setCurrentIndex(combo->findData(value));
    else if (auto* spin = qobject_cast<QSpinBox*>(w))
        spin->setValue(value.toInt());
    else if (auto* slider = qobject_cast<QSlider*>(w))
        slider->setValue(value.toInt());
    else if (auto* toggle = qobject_cast<QCheckBox*>(w))
        toggle->setChecked(value.toBool());
}

QVariant shown(QWidget* w)
{
    if (auto* combo = qobject_cast<QComboBox*>(w)) return combo->currentData();
    if (auto* spin = qobject_cast<QSpinBox*>(w)) return spin->value();
    if (auto* slider = qobject_cast<QSlider*>(w)) return slider->value();
    return qobject_cast<QCheckBox*>(w)->isChecked();
}

QVariant stored(const QString& key)
{
    const QHash<QString, std::function<QVariant()>> getters{
        {"general/theme", [] { return config().theme(); }},
        {"general/language", [] { return config().language(); }},
        {"general/startMinimizedToTray", [] { return config().startMinimizedToTray(); }},
        {"startup/checkUpdatesOnStart", [] { return config().checkUpdatesOnStart(); }},
        {"startup/autoStart", [] { return config().autoStart(); }},
        {"capture/format", [] { return config().captureFormat(); }},
        {"capture/jpgQuality", [] { return config().jpgQuality(); }},
        {"capture/autoCopy", [] { return config().autoCopy(); }},
        {"capture/autoSave", [] { return config().autoSave(); }},
        {"capture/hidePins", [] { return config().hidePins(); }},
        {"record/gifFps", [] { return config().gifFps(); }},
        {"record/gifDurationSecs", [] { return config().gifDurationSecs(); }},
        {"pin/opacity", [] { return config().pinOpacity(); }},
        {"pin/position", [] { return config().pinPosition(); }},
        {"pin/minZoom", [] { return config().pinMinZoom(); }},
        {"pin/maxZoom", [] { return config().pinMaxZoom(); }},
        {"general/outputDir", [] { return config().outputDir(); }},
        {"general/fileNaming", [] { return config().fileNaming(); }},
    };
    return getters.value(key)();
}

// Presses the keys one after another, in this order.
bool xdotoolKey(const QString& keys)
{
    return QProcess::execute(QStringLiteral("xdotool"), QStringList{QStringLiteral("key")} +
                                                            keys.split(QLatin1Char(' '))) == 0;
}

// Answers the next message box with `button` once it is on screen; returns its text.
std::shared_ptr<QString> answerNextMessageBox(QMessageBox::StandardButton button)
{
    auto text = std::make_shared<QString>();
    auto* timer = new QTimer;
    QObject::connect(timer, &QTimer::timeout, timer, [timer, button, text] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box) return;
        *text = box->text();
        box->button(button)->click();
        timer->deleteLater();
    });
    timer->start(10);
    return text;
}

QList<ShortcutSheetDialog*> openSheets()
{
    QList<ShortcutSheetDialog*> sheets;
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto* sheet = qobject_cast<ShortcutSheetDialog*>(w); sheet && sheet->isVisible())
            sheets << sheet;
    return sheets;
}

} // namespace

class TestSettings : public QObject
{
    Q_OBJECT

    std::unique_ptr<SettingsDialog> m_panel;

private Q_SLOTS:
    void init() { m_panel = std::make_unique<SettingsDialog>(); }
    void cleanup() { m_panel.reset(); }

    void everyControlWritesAtOnce_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QVariant>("expected");
        const auto row = [](const char* name, const QVariant& value, const char* key,
                            const QVariant& expected) {
            QTest::newRow(name) << name << value << key << expected;
        };
        row("Theme", "dark", "general/theme", "dark");
        row("Language", "en_US", "general/language", "en_US");
        row("Start minimized to tray", false, "general/startMinimizedToTray", false);
        row("Check for updates on startup", false, "startup/checkUpdatesOnStart", false);
        row("Start with Windows", true, "startup/autoStart", true);
        row("Default format", "jpg", "capture/format", "jpg");
        row("JPG quality", 55, "capture/jpgQuality", 55);
        row("Auto-copy to clipboard", false, "capture/autoCopy", false);
        row("Auto-save file", false, "capture/autoSave", false);
        row("Hide pinned windows before capture", true, "capture/hidePins", true);
        row("GIF fps", 24, "record/gifFps", 24);
        row("GIF duration (s)", 12, "record/gifDurationSecs", 12);
        row("Default opacity", 40, "pin/opacity", 0.4);
        row("Default position", "cursor", "pin/position", "cursor");
        row("Min zoom (%)", 300, "pin/minZoom", 3.0);
        row("Max zoom (%)", 150, "pin/maxZoom", 1.5);
    }
    void everyControlWritesAtOnce()
    {
        QFETCH(QString, name);
        QFETCH(QVariant, value);
        QFETCH(QString, key);
        QFETCH(QVariant, expected);
        QWidget* w = control<QWidget>(*m_panel, name);
        QVERIFY(w);
        QVERIFY(stored(key) != expected);
        change(w, value);
        QCOMPARE(stored(key), expected);
        m_panel.reset(); // closing loses nothing, and a new panel starts from the store
        m_panel = std::make_unique<SettingsDialog>();
        QCOMPARE(shown(control<QWidget>(*m_panel, name)), value);
    }

    void minZoomAboveMaxIsKept()
    {
        control<QSpinBox>(*m_panel, "Max zoom (%)")->setValue(100);
        control<QSpinBox>(*m_panel, "Min zoom (%)")->setValue(400);
        QCOMPARE(config().pinMinZoom(), 4.0);
        QCOMPARE(config().pinMaxZoom(), 1.0);
    }

    void lineEditsWriteWhenFinished_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("key");
        QTest::addColumn<bool>("byReturn");
        QTest::newRow("folder, Return") << "Output directory"
                                        << "general/outputDir" << true;
        QTest::newRow("pattern, focus out") << "File name pattern"
                                            << "general/fileNaming" << false;
    }
    void lineEditsWriteWhenFinished()
    {
        QFETCH(QString, name);
        QFETCH(QString, key);
        QFETCH(bool, byReturn);
        m_panel->showPage(SettingsDialog::CapturePage);
        m_panel->show();
        m_panel->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_panel.get()));
        auto* edit = control<QLineEdit>(*m_panel, name);
        edit->setFocus();
        const QVariant before = stored(key);
        QTest::keyClicks(edit, QStringLiteral("_typed"));
        QCOMPARE(stored(key), before);
        if (byReturn)
            QTest::keyClick(edit, Qt::Key_Return);
        else
            control<QSpinBox>(*m_panel, "JPG quality")->setFocus();
        QCOMPARE(stored(key), QVariant(before.toString() + "_typed"));
    }

    void clearHistoryAsksFirst_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<int>("remaining");
        QTest::newRow("no keeps it") << int(QMessageBox::No) << 1;
        QTest::newRow("yes clears") << int(QMessageBox::Yes) << 0;
    }
    void clearHistoryAsksFirst()
    {
        QFETCH(int, answer);
        QFETCH(int, remaining);
        auto& history = zelmor::service::history::HistoryService::instance();
        history.clear();
        QPixmap pixmap(4, 4);
        pixmap.fill(Qt::red);
        QVERIFY(history.insert(pixmap, QStringLiteral("/nowhere/a.png"),
                               zelmor::core::HistoryCategory::Screenshot) > 0);
        const auto text = answerNextMessageBox(QMessageBox::StandardButton(answer));
        for (QPushButton* b : m_panel->findChildren<QPushButton*>())
            if (b->text() == QLatin1String("Clear capture history")) b->click();
        QCOMPARE(*text, QStringLiteral("Delete all history records? Files on disk are kept."));
        QCOMPARE(history.recent(10).size(), remaining);
    }

    // A second check runs on the same service, whose signals answer once each.
    void updateCheckOffersTheDownloadAndSavesIt()
    {
        zelmor::test::FakeAiServer server;
        zelmor::test::FileManagerOnBus fileManager;
        QVERIFY(fileManager.registered);
        QCoreApplication::setApplicationVersion(QStringLiteral("1.0.20"));
        zelmor::service::updater::UpdateService::setApiBaseForTests(QUrl(server.baseUrl()));
        const QJsonObject asset{
            {"name", "zelmor.deb"},
            {"browser_download_url", QString(server.baseUrl() + "/zelmor.deb")}};
        server.enqueue(
            200, QJsonDocument(QJsonObject{{"tag_name", "v1.0.21"}, {"assets", QJsonArray{asset}}})
                     .toJson());
        server.enqueue(200, "package bytes", "application/octet-stream");
        server.enqueue(200, R"({"tag_name": "v1.0.20"})");
        auto* section = m_panel->findChild<zelmor::widget::settings::UpdateSection*>();
        QCOMPARE(section->statusLabel()->text(), QStringLiteral("Last checked: never"));

        const auto question = answerNextMessageBox(QMessageBox::Yes);
        section->checkButton()->click();
        QTRY_VERIFY(section->statusLabel()->text().startsWith(QLatin1String("Saved to ")));
        QVERIFY(question->startsWith(QLatin1String("Version v1.0.21 is available.")));
        QVERIFY(section->checkButton()->isEnabled());
        QCOMPARE(fileManager.shown().size(), 1);
        QFile saved(QUrl(fileManager.shown().first()).toLocalFile());
        QVERIFY(saved.open(QIODevice::ReadOnly));
        QCOMPARE(saved.readAll(), QByteArray("package bytes"));

        section->checkButton()->click();
        QTRY_COMPARE(section->statusLabel()->text(),
                     QStringLiteral("You're on the latest version."));
        QCOMPARE(section->findChildren<zelmor::service::updater::UpdateService*>().size(), 1);
        QCOMPARE(server.requests().size(), 3);
    }

    void mcpCardsFollowConnectAndDisconnect()
    {
        const QString beside = zelmor::service::mcp::mcpExecutablePath();
        const QString bin = qEnvironmentVariable(
            "ZELMOR_BIN_DIR", QCoreApplication::applicationDirPath() + "/../bin");
        if (!QFile::exists(beside)) QVERIFY(QFile::link(bin + "/zelmor-mcp", beside));
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("client/mcp.json"));
        config().addMcpCustomPath(path);
        m_panel = std::make_unique<SettingsDialog>();

        QWidget* card = nullptr;
        for (QLabel* label : m_panel->findChildren<QLabel*>(QStringLiteral("settingsCardDesc")))
            if (label->text() == path) card = label->parentWidget()->parentWidget();
        QVERIFY(card);
        const auto button = [card](const QString& text) {
            for (QPushButton* b : card->findChildren<QPushButton*>())
                if (b->text() == text) return b;
            return static_cast<QPushButton*>(nullptr);
        };
        const auto status = card->findChild<QLabel*>(QStringLiteral("fieldHint"));
        QCOMPARE(status->text(), QStringLiteral("未接入"));
        struct Step
        {
            const char* click;
            bool configured;
        };
        for (const Step& step :
             {Step{"接入", true}, Step{"重新接入", true}, Step{"取消接入", false}}) {
            QPushButton* b = button(QString::fromUtf8(step.click));
            QVERIFY2(b && !b->isHidden(), step.click);
            b->click();
            QCOMPARE(zelmor::service::mcp::isClientConfigured(path, "zelmor"), step.configured);
            QCOMPARE(status->text(),
                     step.configured ? QStringLiteral("已接入") : QStringLiteral("未接入"));
            QCOMPARE(button(QStringLiteral("取消接入"))->isHidden(), !step.configured);
            QVERIFY(button(step.configured ? QStringLiteral("重新接入") : QStringLiteral("接入")));
        }
        config().removeMcpCustomPath(path);
    }

    void aHotkeyEditedInThePanelIsLiveAtOnce()
    {
        config().setHotkey("shortcutSheet", QStringLiteral("F1"));
        config().setHotkey("pinClickThrough", QStringLiteral("F9"));
        zelmor::widget::MainWindow window;
        zelmor::manager::ActionManager actions(&window);
        zelmor::manager::HotkeyService hotkeys;
        zelmor::app::HotkeyBindings bindings(hotkeys, actions);
        bindings.registerAll();
        QVERIFY(bindings.isBound(10));

        m_panel->showPage(SettingsDialog::HotkeysPage);
        m_panel->show();
        auto* edit = control<QKeySequenceEdit>(*m_panel, QStringLiteral("Shortcut sheet"));
        QSignalSpy finished(edit, &QKeySequenceEdit::editingFinished);
        QTest::keyClick(edit, Qt::Key_F2);
        QVERIFY(finished.wait());
        QCOMPARE(config().hotkeyShortcutSheet(), QStringLiteral("F2"));
        m_panel->close(); // the presses below must reach no edit

        QSignalSpy pressed(&hotkeys, &zelmor::manager::HotkeyService::hotkeyTriggered);
        QVERIFY(xdotoolKey(QStringLiteral("F1 F9"))); // F9 marks that F1 has been handled
        QTRY_COMPARE(pressed.count(), 1);
        QCOMPARE(pressed.last().first().toInt(), 7);
        QVERIFY(openSheets().isEmpty());
        QVERIFY(xdotoolKey(QStringLiteral("F2")));
        QTRY_COMPARE(openSheets().size(), 1);
        QCOMPARE(pressed.last().first().toInt(), 10);
        openSheets().constFirst()->close();
    }

    void sheetShowsEachHotkeyAsStored_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("row");
        int row = 0;
        for (const char* name : {"region", "fullscreen", "window", "delayed", "gif", "scroll",
                                 "pinClickThrough", "pinFromClipboard", "history", "shortcutSheet"})
            QTest::newRow(name) << name << row++;
    }
    void sheetShowsEachHotkeyAsStored()
    {
        QFETCH(QString, name);
        QFETCH(int, row);
        const QByteArray key = name.toLatin1();
        const auto shown = [row](const ShortcutSheetDialog& sheet) {
            return sheet.table()->item(row, 1)->text();
        };
        const ShortcutSheetDialog open;
        QCOMPARE(open.table()->rowCount(), 10);
        const QString before = config().hotkey(key.constData());
        QCOMPARE(shown(open), before);
        const QString remapped = QStringLiteral("Ctrl+Shift+F%1").arg(row + 1);
        config().setHotkey(key.constData(), remapped);
        QCOMPARE(shown(ShortcutSheetDialog()), remapped);
        QCOMPARE(shown(open), before); // an open sheet does not follow
        config().setHotkey(key.constData(), QString());
        QCOMPARE(shown(ShortcutSheetDialog()), QString()); // an unset hotkey keeps its row
    }
};

ZELMOR_TEST_MAIN(TestSettings, QApplication)
#include "tst_settings.moc"
