#include "FakeAiServer.h"
#include "TestMain.h"
#include "TestSupport.h"

#include "app/HotkeyBindings.h"
#include "core/ConfigManager.h"
#include "manager/ActionManager.h"
#include "manager/HotkeyService.h"
#include "manager/ThemeManager.h"
#include "service/history/HistoryService.h"
#include "service/mcp/ClientConfig.h"
#include "service/updater/UpdateService.h"
#include "widget/MainWindow.h"
#include "widget/overlay/OverlayPanels.h"
#include "widget/settings/SettingsDialog.h"
#include "widget/settings/ShortcutSheetDialog.h"
#include "widget/settings/UpdateSection.h"

#include <QAccessible>
#include <QCheckBox>
#include <QComboBox>
#include <QKeySequenceEdit>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>
#include <QTableWidget>
#include <QTimer>
#include <QToolButton>

using zelmor::core::ConfigManager;
using zelmor::widget::SettingsDialog;
using zelmor::widget::ShortcutSheetDialog;

namespace {

ConfigManager& config()
{
    return ConfigManager::instance();
}

template <typename Control = QWidget> Control* control(QWidget& root, const QString& name)
{
    for (Control* c : root.findChildren<Control*>())
        if (c->accessibleName() == name) return c;
    return nullptr;
}

// What the settings file holds, as its text.
QString stored(QString key)
{
    if (key.startsWith(QLatin1String("general/"))) key[0] = QLatin1Char('G');
    return QSettings(config().fileName(), QSettings::IniFormat).value(key).toString();
}

// Sets a control the way a user's change would, through its own change signal; answers its value.
QVariant valueOf(QWidget* w, const QVariant& set = QVariant())
{
    auto* combo = qobject_cast<QComboBox*>(w);
    auto* range = qobject_cast<QAbstractSlider*>(w);
    auto* spin = qobject_cast<QSpinBox*>(w);
    auto* toggle = qobject_cast<QCheckBox*>(w);
    if (set.isValid() && combo) combo->setCurrentIndex(combo->findData(set));
    if (set.isValid() && range) range->setValue(set.toInt());
    if (set.isValid() && spin) spin->setValue(set.toInt());
    if (set.isValid() && toggle) toggle->setChecked(set.toBool());
    return combo   ? combo->currentData()
           : range ? range->value()
           : spin  ? spin->value()
                   : toggle->isChecked();
}

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

// Pixels of `area` that stand out from its top-left pixel: drawn marks, text, arrows.
int inkIn(QWidget* w, QRect area)
{
    const QImage image = w->grab().toImage();
    area &= image.rect();
    const int ground = qGray(image.pixel(area.topLeft()));
    int ink = 0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            ink += qAbs(qGray(image.pixel(x, y)) - ground) > 40;
    return ink;
}

} // namespace

class TestSettings : public QObject
{
    Q_OBJECT

    std::unique_ptr<SettingsDialog> m_panel;

    void showPanel(SettingsDialog::PageId page)
    {
        m_panel->showPage(page);
        m_panel->show();
        m_panel->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_panel.get()));
    }

private Q_SLOTS:
    void initTestCase()
    {
        zelmor::manager::ThemeManager::instance().apply(QStringLiteral("light"));
    }
    void init() { m_panel = std::make_unique<SettingsDialog>(); }
    void cleanup() { m_panel.reset(); }

    void everyControlWritesAtOnce_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("expected");
        QTest::newRow("Theme") << QVariant("dark") << "general/theme"
                               << "dark";
        QTest::newRow("Language") << QVariant("en_US") << "general/language"
                                  << "en_US";
        QTest::newRow("Start minimized to tray")
            << QVariant(false) << "general/startMinimizedToTray"
            << "false";
        QTest::newRow("Check for updates on startup")
            << QVariant(false) << "startup/checkUpdatesOnStart"
            << "false";
        QTest::newRow("Default format") << QVariant("jpg") << "capture/format"
                                        << "jpg";
        QTest::newRow("JPG quality") << QVariant(55) << "capture/jpgQuality"
                                     << "55";
        QTest::newRow("Auto-copy to clipboard") << QVariant(false) << "capture/autoCopy"
                                                << "false";
        QTest::newRow("Auto-save file") << QVariant(false) << "capture/autoSave"
                                        << "false";
        QTest::newRow("Hide pinned windows before capture") << QVariant(true) << "capture/hidePins"
                                                            << "true";
        QTest::newRow("GIF fps") << QVariant(24) << "record/gifFps"
                                 << "24";
        QTest::newRow("GIF duration (s)") << QVariant(12) << "record/gifDurationSecs"
                                          << "12";
        QTest::newRow("Default opacity") << QVariant(40) << "pin/opacity"
                                         << "0.4";
        QTest::newRow("Default position") << QVariant("cursor") << "pin/position"
                                          << "cursor";
        // The two bounds of the zoom are not checked against each other.
        QTest::newRow("Min zoom (%)") << QVariant(300) << "pin/minZoom"
                                      << "3";
        QTest::newRow("Max zoom (%)") << QVariant(150) << "pin/maxZoom"
                                      << "1.5";
    }
    void everyControlWritesAtOnce()
    {
        QFETCH(QVariant, value);
        QFETCH(QString, key);
        QFETCH(QString, expected);
        QWidget* w = control(*m_panel, QTest::currentDataTag());
        QVERIFY(w && stored(key) != expected);
        valueOf(w, value);
        QCOMPARE(stored(key), expected);
        m_panel.reset(); // closing loses nothing, and a new panel starts from the store
        m_panel = std::make_unique<SettingsDialog>();
        QCOMPARE(valueOf(control(*m_panel, QTest::currentDataTag())), value);
    }

    void lineEditsWriteWhenFinished_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<bool>("byReturn");
        QTest::newRow("Output directory") << "general/outputDir" << true;
        QTest::newRow("File name pattern") << "general/fileNaming" << false; // by leaving it
    }
    void lineEditsWriteWhenFinished()
    {
        QFETCH(QString, key);
        QFETCH(bool, byReturn);
        showPanel(SettingsDialog::CapturePage);
        auto* edit = control<QLineEdit>(*m_panel, QTest::currentDataTag());
        edit->setFocus();
        const QString before = edit->text();
        QTest::keyClicks(edit, QStringLiteral("_typed"));
        QCOMPARE(stored(key) == before + "_typed", false);
        if (byReturn)
            QTest::keyClick(edit, Qt::Key_Return);
        else
            control(*m_panel, "JPG quality")->setFocus();
        QCOMPARE(stored(key), before + "_typed");
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
        QVERIFY(history.insert(pixmap, "/nowhere/a.png",
                               zelmor::core::HistoryCategory::Screenshot) > 0);
        const auto text = answerNextMessageBox(QMessageBox::StandardButton(answer));
        for (QPushButton* b : m_panel->findChildren<QPushButton*>())
            if (b->text() == QLatin1String("Clear capture history")) b->click();
        QCOMPARE(*text, QStringLiteral("Delete all history records? Files on disk are kept."));
        QCOMPARE(history.recent(10).size(), remaining);
    }

    // A second check runs on the same service, whose signals answer once each.
    void updateCheckAsksAndChecksAgain()
    {
        zelmor::test::FakeAiServer server;
        QCoreApplication::setApplicationVersion(QStringLiteral("1.0.20"));
        zelmor::service::updater::UpdateService::setApiBaseForTests(QUrl(server.baseUrl()));
        server.enqueue(200, R"({"tag_name": "v1.0.21"})");
        server.enqueue(200, R"({"tag_name": "v1.0.20"})");
        auto* section = m_panel->findChild<zelmor::widget::settings::UpdateSection*>();
        const auto question = answerNextMessageBox(QMessageBox::No);
        section->checkButton()->click();
        QTRY_VERIFY(question->startsWith(QLatin1String("Version v1.0.21 is available.")));
        QTRY_VERIFY(section->checkButton()->isEnabled());
        section->checkButton()->click();
        QTRY_COMPARE(section->statusLabel()->text(), "You're on the latest version.");
        QCOMPARE(section->findChildren<zelmor::service::updater::UpdateService*>().size(), 1);
    }

    void mcpCardsFollowConnectAndDisconnect()
    {
        const QString beside = zelmor::service::mcp::mcpExecutablePath();
        if (!QFile::exists(beside))
            QVERIFY(QFile::link(qEnvironmentVariable("ZELMOR_BIN_DIR") + "/zelmor-mcp", beside));
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("client/mcp.json"));
        config().addMcpCustomPath(path);
        m_panel = std::make_unique<SettingsDialog>();
        QWidget* card = nullptr;
        for (QLabel* label : m_panel->findChildren<QLabel*>(QStringLiteral("settingsCardDesc")))
            if (label->text() == path) card = label->parentWidget()->parentWidget();
        QVERIFY(card);
        const auto button = [card](const char* text) {
            for (QPushButton* b : card->findChildren<QPushButton*>())
                if (b->text() == QString::fromUtf8(text) && !b->isHidden()) return b;
            return static_cast<QPushButton*>(nullptr);
        };
        const auto status = card->findChild<QLabel*>(QStringLiteral("fieldHint"));
        QCOMPARE(status->text(), QStringLiteral("未接入"));
        for (const auto& [click, configured] :
             {std::pair{"接入", true}, {"重新接入", true}, {"取消接入", false}}) {
            QVERIFY2(button(click), click);
            button(click)->click();
            QCOMPARE(zelmor::service::mcp::isClientConfigured(path, "zelmor"), configured);
            QCOMPARE(status->text(),
                     configured ? QStringLiteral("已接入") : QStringLiteral("未接入"));
            QCOMPARE(!button("取消接入"), !configured);
            QVERIFY(button(configured ? "重新接入" : "接入"));
        }
        config().removeMcpCustomPath(path);
    }

    // Each row: the keys pressed in the field and what is stored afterwards.
    void hotkeyFieldKeepsItsValueUntilACombinationIsWhole_data()
    {
        QTest::addColumn<QKeyCombination>("keys");
        QTest::addColumn<QString>("after");
        QTest::newRow("Shift alone") << QKeyCombination(Qt::ShiftModifier, Qt::Key_Shift) << "F6";
        QTest::newRow("Alt, as of Alt+F4") << QKeyCombination(Qt::AltModifier, Qt::Key_Alt) << "F6";
        QTest::newRow("Shift+Tab moves on")
            << QKeyCombination(Qt::ShiftModifier, Qt::Key_Backtab) << "F6";
        QTest::newRow("Backspace clears") << QKeyCombination(Qt::Key_Backspace) << "";
        QTest::newRow("a whole combination")
            << (Qt::CTRL | Qt::SHIFT | Qt::Key_F5) << "Ctrl+Shift+F5";
    }
    void hotkeyFieldKeepsItsValueUntilACombinationIsWhole()
    {
        QFETCH(QKeyCombination, keys);
        QFETCH(QString, after);
        config().setHotkey("region", QStringLiteral("F6"));
        m_panel = std::make_unique<SettingsDialog>();
        showPanel(SettingsDialog::HotkeysPage);
        auto* edit = control<QKeySequenceEdit>(*m_panel, "Region capture");
        edit->setFocus();
        QTest::keyClick(edit, keys.key(), keys.keyboardModifiers());
        QCOMPARE(config().hotkeyRegion(), after);
        QCOMPARE(edit->keySequence().toString(), after);
    }

    // While a field has the focus the global hotkeys are let go: a bound key reaches the field.
    void aBoundKeyCanBeTypedIntoAField()
    {
        config().setHotkey("shortcutSheet", QStringLiteral("F1"));
        config().setHotkey("history", QStringLiteral("Ctrl+Alt+H"));
        zelmor::widget::MainWindow window;
        zelmor::manager::ActionManager actions(&window);
        zelmor::manager::HotkeyService hotkeys;
        zelmor::app::HotkeyBindings bindings(hotkeys, actions);
        bindings.registerAll();
        showPanel(SettingsDialog::HotkeysPage);
        control(*m_panel, "History panel")->setFocus();
        QVERIFY(xdotoolKey(QStringLiteral("F1")));
        QTRY_COMPARE(config().hotkeyHistory(), QStringLiteral("F1"));
        QVERIFY(openSheets().isEmpty());

        m_panel->close(); // the field lets go: F1 now opens the history, the old key nothing
        QTRY_VERIFY(bindings.isBound(9));
        QSignalSpy pressed(&hotkeys, &zelmor::manager::HotkeyService::hotkeyTriggered);
        QVERIFY(xdotoolKey(QStringLiteral("ctrl+alt+h F1")));
        QTRY_VERIFY(window.isVisible());
        QCOMPARE(pressed.count(), 1);
        QCOMPARE(pressed.last().first().toInt(), 9);
        QVERIFY(openSheets().isEmpty());
    }

    void shortcutSheetShowsEveryRowOnce()
    {
        config().setHotkey("gif", QStringLiteral("Ctrl+Shift+G"));
        zelmor::widget::MainWindow window;
        zelmor::manager::ActionManager actions(&window);
        actions.showShortcutSheet();
        actions.showShortcutSheet();
        QTRY_COMPARE(openSheets().size(), 1);
        ShortcutSheetDialog* sheet = openSheets().constFirst();
        QVERIFY(QTest::qWaitForWindowExposed(sheet));
        QStringList keys;
        for (QTableWidget* table : sheet->findChildren<QTableWidget*>())
            for (int row = 0; row < table->rowCount(); ++row) {
                keys << table->item(row, 1)->text();
                const QRect cell = table->visualItemRect(table->item(row, 1));
                QVERIFY2(table->viewport()->rect().contains(cell), qPrintable(keys.last()));
            }
        for (const char* key :
             {"Ctrl+Shift+G", "F1", "Ctrl+C", "Ctrl+S", "Ctrl+Y", "Ctrl+Z", "Esc"})
            QVERIFY2(keys.join(QLatin1Char(' ')).contains(QLatin1String(key)), key);
        sheet->close();
    }

    void everythingFitsOnScreen()
    {
        QTest::failOnWarning(QRegularExpression(QStringLiteral("Unknown property")));
        auto& providers = zelmor::service::ai::AiProviderService::instance();
        zelmor::service::ai::AiProvider provider;
        provider.name = QStringLiteral("New Provider");
        provider.protocol = QStringLiteral("openai-compat");
        provider.model = QStringLiteral("gpt-4o");
        const qint64 id = providers.insert(provider);
        showPanel(SettingsDialog::AiPage);
        auto* list = m_panel->findChild<QListWidget*>(QStringLiteral("aiProviderList"));
        QVERIFY(!list->horizontalScrollBar()->isVisible());
        for (QLabel* pill : list->findChildren<QLabel*>(QStringLiteral("aiProviderItemPill")))
            QVERIFY(list->viewport()->rect().contains(
                pill->geometry().translated(pill->parentWidget()->pos())));
        providers.remove(id);

        // A 1366x768 screen, less a panel and a title bar.
        zelmor::widget::MainWindow window;
        for (int page : {1, 2, 0}) {
            QMetaObject::invokeMethod(&window, page == 1   ? "showHistory"
                                               : page == 2 ? "showAiChat"
                                                           : "showSettings");
            const QSize least = window.minimumSizeHint().expandedTo(window.minimumSize());
            QVERIFY2(least.height() <= 768 - 70 && least.width() <= 1366,
                     qPrintable(QString::number(page)));
        }
    }

    void styledControlsShowTheirParts()
    {
        showPanel(SettingsDialog::CapturePage);
        QWidget* combo = control(*m_panel, "Default format");
        QVERIFY(inkIn(combo, QRect(combo->width() - 20, 2, 16, combo->height() - 4)) > 4);
        QWidget* spin = control(*m_panel, "JPG quality");
        const int half = spin->height() / 2;
        QVERIFY(inkIn(spin, QRect(spin->width() - 16, 2, 14, half - 2)) > 2);
        QVERIFY(inkIn(spin, QRect(spin->width() - 16, half, 14, half - 2)) > 2);

        // The overlay's lists stay readable in the light theme.
        QWidget toolbar;
        toolbar.setObjectName(QStringLiteral("captureToolbar"));
        auto* list = new QComboBox(&toolbar);
        list->addItems({QStringLiteral("Manual"), QStringLiteral("5s")});
        toolbar.show();
        list->showPopup();
        QAbstractItemView* view = list->view();
        QTRY_VERIFY(view->isVisible());
        QVERIFY(inkIn(view->viewport(),
                      view->visualRect(view->model()->index(1, 0)).adjusted(2, 2, -2, -2)) > 10);
        list->hidePopup();
    }

    void panelFollowsOutsideChanges()
    {
        config().setTheme(QStringLiteral("light"));
        m_panel = std::make_unique<SettingsDialog>();
        config().setTheme(QStringLiteral("dark")); // as the tray does
        QCOMPARE(control<QComboBox>(*m_panel, "Theme")->currentData().toString(), "dark");

        // A screen reader picks a page by its row's action.
        QAccessibleInterface* navigation =
            QAccessible::queryAccessibleInterface(m_panel->navigation());
        for (int i = 0; i < navigation->childCount(); ++i)
            if (navigation->child(i)->text(QAccessible::Name) == QLatin1String("Pin"))
                navigation->child(i)->actionInterface()->doAction(
                    QAccessibleActionInterface::toggleAction());
        QVERIFY(m_panel->page(SettingsDialog::PinPage)->isVisibleTo(m_panel.get()));

        QWidget overlay;
        zelmor::widget::overlay::OverlayPanels panels(&overlay);
        QStringList swatches;
        for (QToolButton* b : overlay.findChildren<QToolButton*>(QRegularExpression("^palette")))
            swatches << b->accessibleName();
        QCOMPARE(swatches.first(), "Red");
        QCOMPARE(swatches.filter(QRegularExpression("^#")), QStringList());
    }

    void startWithTheSessionIsTheAutostartEntry()
    {
        const QString entry = qEnvironmentVariable("XDG_CONFIG_HOME") + "/autostart/zelmor.desktop";
        QVERIFY(!control(*m_panel, "Run as administrator")); // Linux has no elevation to ask for
        auto* toggle = control<QCheckBox>(*m_panel, "Start with the session");
        QVERIFY(toggle);
        toggle->setChecked(true);
        QVERIFY(zelmor::test::readFile(entry).contains(
            QByteArray("Exec=\"" + QCoreApplication::applicationFilePath().toUtf8() + "\"\n")));
        QVERIFY(config().autoStart());
        toggle->setChecked(false);
        QVERIFY(!QFile::exists(entry));
    }
};

ZELMOR_TEST_MAIN(TestSettings, QApplication)
#include "tst_settings.moc"
