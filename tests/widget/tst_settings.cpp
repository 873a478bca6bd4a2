#include "FakeAiServer.h"
#include "TestMain.h"
#include "TestSupport.h"

#include "app/HotkeyBindings.h"
#include "core/ConfigManager.h"
#include "core/Toast.h"
#include "manager/ActionManager.h"
#include "manager/HotkeyService.h"
#include "manager/ThemeManager.h"
#include "service/history/HistoryService.h"
#include "service/mcp/ClientConfig.h"
#include "widget/MainWindow.h"
#include "widget/overlay/OverlayPanels.h"
#include "widget/settings/AiSettingsPage.h"
#include "widget/settings/SettingsDialog.h"
#include "widget/settings/ShortcutSheetDialog.h"

#include <QSignalSpy>
#include <QtWidgets>

using namespace zelmor;
using test::xdotool;
using widget::SettingsDialog;

namespace {

core::ConfigManager& config()
{
    return core::ConfigManager::instance();
}

// The control of that accessible name or, failing that, of that text.
template <typename Control = QWidget> Control* control(QWidget& root, const QString& name)
{
    const QList<Control*> all = root.findChildren<Control*>();
    for (Control* c : all)
        if (c->accessibleName() == name) return c;
    for (Control* c : all)
        if (c->property("text").toString() == name) return c;
    return nullptr;
}

// What the settings file holds, as its text.
QString stored(QString key)
{
    if (key.startsWith(QLatin1String("general/"))) key[0] = QLatin1Char('G');
    return QSettings(config().fileName(), QSettings::IniFormat).value(key).toString();
}

// Sets a control the way a user's change would, through its own change signal; gives its value.
QVariant valueOf(QWidget* w, const QVariant& set = QVariant())
{
    auto* combo = qobject_cast<QComboBox*>(w);
    const QMetaProperty user = w->metaObject()->userProperty();
    if (set.isValid())
        combo ? combo->setCurrentIndex(combo->findData(set)) : void(user.write(w, set));
    return combo ? combo->currentData() : user.read(w);
}

QList<widget::ShortcutSheetDialog*> openSheets()
{
    QList<widget::ShortcutSheetDialog*> sheets;
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto* sheet = qobject_cast<widget::ShortcutSheetDialog*>(w);
            sheet && sheet->isVisible())
            sheets << sheet;
    return sheets;
}

// Pixels of `area` that stand out from its most common shade: text, marks, arrows.
int inkIn(QWidget* w, QRect area)
{
    const QImage image = w->grab().toImage();
    area &= image.rect();
    QList<int> shades(256);
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            ++shades[qGray(image.pixel(x, y))];
    const auto ground = int(std::max_element(shades.cbegin(), shades.cend()) - shades.cbegin());
    int ink = 0;
    for (int shade = 0; shade < 256; ++shade)
        ink += qAbs(shade - ground) > 40 ? shades[shade] : 0;
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

    // The AI page's fields are typed and left as a user finishes them.
    void fill(const QString& field, const QString& text)
    {
        control<QLineEdit>(*m_panel, field)->setText(text);
        Q_EMIT control<QLineEdit>(*m_panel, field)->editingFinished();
    }
    qint64 aiProvider()
    {
        return qobject_cast<widget::AiSettingsPage*>(m_panel->page(SettingsDialog::AiPage))
            ->currentId();
    }

private Q_SLOTS:
    void initTestCase() { manager::ThemeManager::instance().apply(QStringLiteral("light")); }
    void init() // with a provider on the AI page
    {
        m_panel = std::make_unique<SettingsDialog>();
        control<QPushButton>(*m_panel, "Add")->click();
    }
    void cleanup()
    {
        m_panel.reset();
        for (const auto& p : service::ai::AiProviderService::instance().list())
            service::ai::AiProviderService::instance().remove(p.id);
        delete core::tool::Toast::current();
    }

    // The tag names the control; the bounds of the zoom are not checked against each other.
    void everyControlWritesAtOnce_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* name, const QVariant& value, const char* key,
                            const char* expected) {
            QTest::newRow(name) << value << key << expected;
        };
        row("Theme", "dark", "general/theme", "dark");
        row("Language", "en_US", "general/language", "en_US");
        row("Start minimized to tray", false, "general/startMinimizedToTray", "false");
        row("Check for updates on startup", false, "startup/checkUpdatesOnStart", "false");
        row("Default format", "jpg", "capture/format", "jpg");
        row("JPG quality", 55, "capture/jpgQuality", "55");
        row("Auto-copy to clipboard", false, "capture/autoCopy", "false");
        row("Auto-save file", false, "capture/autoSave", "false");
        row("Hide pinned windows before capture", true, "capture/hidePins", "true");
        row("GIF fps", 24, "record/gifFps", "24");
        row("GIF duration (s)", 12, "record/gifDurationSecs", "12");
        row("Default opacity", 40, "pin/opacity", "0.4");
        row("Default position", "cursor", "pin/position", "cursor");
        row("Min zoom (%)", 300, "pin/minZoom", "3");
        row("Max zoom (%)", 150, "pin/maxZoom", "1.5");
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
        m_panel = std::make_unique<SettingsDialog>(); // closing lost nothing
        QCOMPARE(valueOf(control(*m_panel, QTest::currentDataTag())), value);
    }

    // By Return in the folder, by leaving the pattern; not on every key.
    void lineEditsWriteWhenFinished()
    {
        showPanel(SettingsDialog::CapturePage);
        for (const auto& [key, name] : {std::pair{"general/outputDir", "Output directory"},
                                        {"general/fileNaming", "File name pattern"}}) {
            auto* edit = control<QLineEdit>(*m_panel, name);
            edit->setFocus();
            const QString typed = edit->text() + "_typed";
            QTest::keyClicks(edit, QStringLiteral("_typed"));
            QVERIFY(stored(key) != typed);
            name[0] == 'O' ? QTest::keyClick(edit, Qt::Key_Return)
                           : control(*m_panel, "JPG quality")->setFocus();
            QCOMPARE(stored(key), typed);
        }
    }

    void clearHistoryAsksFirst()
    {
        auto& history = service::history::HistoryService::instance();
        for (const auto& [answer, remaining] :
             {std::pair{QMessageBox::No, 1}, {QMessageBox::Yes, 0}}) {
            history.clear();
            QVERIFY(history.insert(QPixmap(4, 4), "/nowhere/a.png",
                                   core::HistoryCategory::Screenshot) > 0);
            QString text;
            QTimer::singleShot(0, [&text, button = answer] {
                auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                text = box->text();
                box->button(button)->click();
            });
            control<QPushButton>(*m_panel, "Clear capture history")->click();
            QCOMPARE(text, "Delete all history records? Files on disk are kept.");
            QCOMPARE(history.recent(10).size(), remaining);
        }
    }

    // A field saves when it is left; Cancel brings back what is stored.
    void aiCancelReloadsWhatIsStored()
    {
        QLineEdit* name = control<QLineEdit>(*m_panel, "Name");
        name->setText("typed, not left");
        control<QPushButton>(*m_panel, "Cancel")->click();
        QCOMPARE(name->text(), "New Provider");
        fill("Name", "left");
        control<QPushButton>(*m_panel, "Cancel")->click();
        QCOMPARE(service::ai::AiProviderService::instance().get(aiProvider()).name, "left");
        QCOMPARE(name->text(), "left");
    }

    // Saved when done: a save reloads the form, which would move the cursor of a box in use.
    void aiModelBoxKeepsTheCursorWhileTyping()
    {
        showPanel(SettingsDialog::AiPage);
        QLineEdit* model = control<QComboBox>(*m_panel, "Chat model")->lineEdit();
        model->setFocus();
        model->setCursorPosition(3);
        QTest::keyClicks(model, "XY");
        QCOMPARE(model->text(), "gptXY-4o");
        QTest::keyClick(model, Qt::Key_Return);
        QCOMPARE(service::ai::AiProviderService::instance().get(aiProvider()).model, "gptXY-4o");
    }

    void aiPresetFillsTheForm()
    {
        control<QComboBox>(*m_panel, "Preset")->setCurrentIndex(2);
        const auto chosen = service::ai::presets().value(1);
        QCOMPARE(control<QLineEdit>(*m_panel, "Endpoint")->text(), chosen.baseUrl);
        const auto saved = service::ai::AiProviderService::instance().get(aiProvider());
        QCOMPARE(saved.protocol + saved.model, chosen.protocol + chosen.defaultModel);
        control<QComboBox>(*m_panel, "Preset")->setCurrentIndex(0); // Custom changes nothing
        QCOMPARE(control<QLineEdit>(*m_panel, "Endpoint")->text(), chosen.baseUrl);
    }

    void aiTestAgainstTheServer()
    {
        test::FakeAiServer server;
        fill("Endpoint", server.baseUrl());
        fill("API key", "k");
        for (const auto& [status, shown] :
             {std::pair{200, "Test Succeeded"}, {500, "Test Failed"}}) {
            server.enqueue(status, R"({"choices":[{"message":{"content":"hi"}}]})");
            QTRY_VERIFY(control<QPushButton>(*m_panel, "Test"));
            control<QPushButton>(*m_panel, "Test")->click();
            QTRY_VERIFY(control<QPushButton>(*m_panel, shown));
            QCOMPARE(core::tool::Toast::current() != nullptr, status != 200);
        }
    }

    void aiShareThenPasteImport()
    {
        fill("API key", "secret");
        QTimer::singleShot(0, [] { QApplication::activeModalWidget()->close(); });
        control<QPushButton>(*m_panel, "Share")->click();
        QVERIFY(QApplication::clipboard()->text().contains("secret"));
        const qint64 shared = aiProvider();
        control<QPushButton>(*m_panel, "Paste import")->click();
        QCOMPARE(m_panel->findChild<QListWidget*>(QStringLiteral("aiProviderList"))->count(), 2);
        QVERIFY(aiProvider() != shared);
        QCOMPARE(control<QLineEdit>(*m_panel, "API key")->text(), "secret");
    }

    void mcpCardsFollowConnectAndDisconnect()
    {
        if (!QFile::exists(service::mcp::mcpExecutablePath()))
            QVERIFY(QFile::link(qEnvironmentVariable("ZELMOR_BIN_DIR") + "/zelmor-mcp",
                                service::mcp::mcpExecutablePath()));
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("client/mcp.json"));
        config().addMcpCustomPath(path);
        m_panel = std::make_unique<SettingsDialog>();
        QWidget* card = control<QLabel>(*m_panel, path)->parentWidget()->parentWidget();
        const auto button = [card](const char* text) {
            QPushButton* b = control<QPushButton>(*card, QString::fromUtf8(text));
            return b && !b->isHidden() ? b : nullptr;
        };
        const auto status = card->findChild<QLabel*>(QStringLiteral("fieldHint"));
        QCOMPARE(status->text(), "未接入");
        for (const auto& [click, configured] :
             {std::pair{"接入", true}, {"重新接入", true}, {"取消接入", false}}) {
            QVERIFY2(button(click), click);
            button(click)->click();
            QCOMPARE(service::mcp::isClientConfigured(path, "zelmor"), configured);
            QCOMPARE(status->text(), configured ? "已接入" : "未接入");
            QVERIFY(!button("取消接入") == !configured && button(configured ? "重新接入" : "接入"));
        }
        config().removeMcpCustomPath(path);
    }

    void hotkeyFieldKeepsItsValueUntilACombinationIsWhole_data()
    {
        QTest::addColumn<QKeyCombination>("keys");
        QTest::addColumn<QString>("after");
        QTest::newRow("Alt, as of Alt+F4") << QKeyCombination(Qt::ALT, Qt::Key_Alt) << "F6";
        QTest::newRow("Shift+Tab moves on") << QKeyCombination(Qt::SHIFT, Qt::Key_Backtab) << "F6";
        QTest::newRow("Backspace clears") << QKeyCombination(Qt::Key_Backspace) << "";
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
        widget::MainWindow window;
        manager::ActionManager actions(&window);
        manager::HotkeyService hotkeys;
        app::HotkeyBindings bindings(hotkeys, actions);
        bindings.registerAll();
        showPanel(SettingsDialog::HotkeysPage);
        control(*m_panel, "History panel")->setFocus();
        QVERIFY(xdotool(QStringLiteral("key F1")));
        QTRY_COMPARE(config().hotkeyHistory(), "F1");
        QVERIFY(openSheets().isEmpty());

        m_panel->close(); // the field lets go: F1 now opens the history, the old key nothing
        QTRY_VERIFY(bindings.isBound(9));
        QSignalSpy pressed(&hotkeys, &manager::HotkeyService::hotkeyTriggered);
        QVERIFY(xdotool(QStringLiteral("key ctrl+alt+h F1")));
        QTRY_VERIFY(window.isVisible());
        QCOMPARE(pressed.count(), 1);
        QVERIFY(openSheets().isEmpty());
    }

    void shortcutSheetShowsEveryRowOnce()
    {
        config().setHotkey("gif", QStringLiteral("Ctrl+Shift+G"));
        widget::MainWindow window;
        manager::ActionManager actions(&window);
        actions.showShortcutSheet();
        actions.showShortcutSheet();
        QTRY_COMPARE(openSheets().size(), 1);
        QVERIFY(QTest::qWaitForWindowExposed(openSheets().constFirst()));
        QStringList keys;
        for (QTableWidget* table : openSheets().constFirst()->findChildren<QTableWidget*>())
            for (int row = 0; row < table->rowCount(); ++row) {
                keys << table->item(row, 1)->text();
                QVERIFY(table->visualItemRect(table->item(row, 1)).bottom() <
                        table->viewport()->height());
            }
        for (const char* key :
             {"Ctrl+Shift+G", "F1", "Ctrl+C", "Ctrl+S", "Ctrl+Y", "Ctrl+Z", "Esc"})
            QVERIFY2(keys.join(QLatin1Char(' ')).contains(QLatin1String(key)), key);
        openSheets().constFirst()->close();
    }

    void everythingFitsOnScreen()
    {
        QTest::failOnWarning(QRegularExpression(QStringLiteral("Unknown property")));
        showPanel(SettingsDialog::AiPage);
        auto* list = m_panel->findChild<QListWidget*>(QStringLiteral("aiProviderList"));
        QVERIFY(!list->horizontalScrollBar()->isVisible());
        for (QLabel* pill : list->findChildren<QLabel*>(QStringLiteral("aiProviderItemPill")))
            QVERIFY(list->viewport()->rect().contains(
                pill->geometry().translated(pill->parentWidget()->pos())));

        widget::MainWindow window; // on a 1366x768 screen, less a panel and a title bar
        for (const char* page : {"showHistory", "showAiChat", "showSettings"}) {
            QMetaObject::invokeMethod(&window, page);
            const QSize least = window.minimumSizeHint().expandedTo(window.minimumSize());
            QVERIFY2(least.height() <= 768 - 70 && least.width() <= 1366, page);
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

        QWidget toolbar; // the overlay's lists stay readable in the light theme
        toolbar.setObjectName(QStringLiteral("captureToolbar"));
        auto* list = new QComboBox(&toolbar);
        list->addItems({QStringLiteral("Manual"), QStringLiteral("5s")});
        toolbar.show();
        QCursor::setPos(0, 0); // no row is under the pointer
        list->showPopup();
        QAbstractItemView* view = list->view();
        QTRY_VERIFY(view->isVisible());
        QVERIFY(inkIn(view->viewport(),
                      view->visualRect(view->model()->index(1, 0)).adjusted(2, 2, -2, -2)) > 10);
        list->hidePopup();
    }

    void panelFollowsOutsideChangesAndIsNamed()
    {
        config().setTheme(QStringLiteral("light"));
        m_panel = std::make_unique<SettingsDialog>();
        config().setTheme(QStringLiteral("dark")); // as the tray does
        QCOMPARE(control<QComboBox>(*m_panel, "Theme")->currentData().toString(), "dark");

        // A screen reader picks a page by the action of its row.
        QAccessibleInterface* pin =
            QAccessible::queryAccessibleInterface(m_panel->navigation())->child(3);
        pin->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
        QVERIFY(m_panel->page(SettingsDialog::PinPage)->isVisibleTo(m_panel.get()));

        QWidget overlay;
        widget::overlay::OverlayPanels panels(&overlay);
        QStringList swatches;
        for (QToolButton* b : overlay.findChildren<QToolButton*>(QRegularExpression("^palette")))
            swatches << b->accessibleName();
        QCOMPARE(swatches.first(), "Red");
        QCOMPARE(swatches.filter(QRegularExpression("^#")), QStringList());
    }

    void startWithTheSessionIsTheAutostartEntry()
    {
        const QString entry = qEnvironmentVariable("XDG_CONFIG_HOME") + "/autostart/zelmor.desktop";
        auto* toggle = control<QCheckBox>(*m_panel, "Start with the session");
        QVERIFY(toggle && !control(*m_panel, "Run as administrator")); // no elevation on Linux
        toggle->setChecked(true);
        const QByteArray exec =
            "Exec=\"" + QCoreApplication::applicationFilePath().toUtf8() + "\"\n";
        QVERIFY(test::readFile(entry).contains(exec) && config().autoStart());
        toggle->setChecked(false);
        QVERIFY(!QFile::exists(entry));
    }
};

ZELMOR_TEST_MAIN(TestSettings, QApplication)
#include "tst_settings.moc"
