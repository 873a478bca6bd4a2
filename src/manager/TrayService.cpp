#include "TrayService.h"

#include "ActionManager.h"
#include "core/ConfigManager.h"
#include "core/HotkeyState.h"
#include "manager/HotkeyService.h"
#include "manager/ThemeManager.h"
#include "platform/Elevation.h"
#include "widget/TrayMenu.h"

#include <QApplication>
#include <QIcon>
#include <QKeySequence>
#include <QStyle>
#include <QSystemTrayIcon>

#include <type_traits>

namespace zelmor::manager {

namespace {

// The stored sequence as the menu shows it; empty shows no key.
QKeySequence shownKey(const QString& stored)
{
    return QKeySequence(
        QKeySequence(stored, QKeySequence::NativeText).toString(QKeySequence::PortableText));
}

// Rows whose entry grabs the screen: the menu must be gone first.
bool grabsScreen(void (ActionManager::*slot)())
{
    for (auto entry :
         {&ActionManager::captureRegion, &ActionManager::captureFullscreen,
          &ActionManager::captureWindow, &ActionManager::captureForAiChat, &ActionManager::quickOcr,
          &ActionManager::aiAnnotate, &ActionManager::recordGif, &ActionManager::scrollCapture,
          &ActionManager::annotateScreen})
        if (slot == entry) return true;
    return false;
}

// A row shows its hotkey only while the hotkey works; one that the system refused is named in
// the row's text instead. Where the desktop binds the keys, which it binds is not known here.
QAction* showHotkey(QAction* action, const char* name)
{
    if (!HotkeyService::bindsKeys()) return action;
    const QString stored = core::ConfigManager::instance().hotkey(name);
    if (core::HotkeyState::instance().isActive(QLatin1String(name)) || stored.isEmpty()) {
        action->setShortcut(shownKey(stored));
        return action;
    }
    action->setText(TrayService::tr("%1 (%2 unavailable)", "tray.hotkeyRefused")
                        .arg(action->text(), shownKey(stored).toString(QKeySequence::NativeText)));
    return action;
}

template <typename Slot>
QAction* addItem(QMenu* menu, const QString& text, ActionManager* actions, Slot slot,
                 const char* hotkey = nullptr)
{
    // The texts carry no mnemonics: an ampersand is shown as written.
    QAction* action =
        menu->addAction(QString(text).replace(QLatin1Char('&'), QStringLiteral("&&")));
    if (hotkey) {
        showHotkey(action, hotkey);
        action->setShortcutContext(Qt::WidgetShortcut); // shown, never acted on
    }
    if constexpr (std::is_same_v<Slot, void (ActionManager::*)()>) {
        if (grabsScreen(slot)) {
            QObject::connect(action, &QAction::triggered, actions,
                             [actions, slot] { actions->runAfterMenu(slot); });
            return action;
        }
    }
    QObject::connect(action, &QAction::triggered, actions, slot);
    return action;
}

} // namespace

TrayService::TrayService(ActionManager* actions, QObject* parent)
    : QObject(parent), m_trayIcon(new QSystemTrayIcon(this)), m_actions(actions)
{
    QIcon icon(QStringLiteral(":/icons/tray.png"));
    if (icon.isNull())
        icon = QIcon::fromTheme(QStringLiteral("camera-photo"),
                                qApp->style()->standardIcon(QStyle::SP_ComputerIcon));
    m_trayIcon->setIcon(icon);
    m_trayIcon->setToolTip(tr("Zelmor", "tray.tooltip"));
    rebuildMenu();
    connect(&core::ConfigManager::instance(), &core::ConfigManager::hotkeysChanged, this,
            &TrayService::rebuildMenu);
    connect(&core::HotkeyState::instance(), &core::HotkeyState::refusedChanged, this,
            &TrayService::rebuildMenu);
    connect(m_trayIcon, &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Trigger) m_actions->captureRegion();
            });
}

TrayService::~TrayService()
{
    delete m_menu;
}

void TrayService::show()
{
    m_trayIcon->setVisible(true);
}

void TrayService::retranslate()
{
    m_trayIcon->setToolTip(tr("Zelmor", "tray.tooltip"));
    rebuildMenu();
}

void TrayService::rebuildMenu()
{
    delete m_menu;
    m_menu = new widget::TrayMenu(ThemeManager::instance().currentTheme());
    m_trayIcon->setContextMenu(m_menu);
    ActionManager* a = m_actions;
    QMenu* menu = m_menu;

    menu->addAction(new widget::TrayHeaderAction(
        tr("Zelmor · v%1", "tray.header").arg(QStringLiteral("1.0.20")), 0, menu));
    menu->addSeparator();

    addItem(menu, tr("✨ AI Assistant & Chat", "tray.aiChat"), a, &ActionManager::aiChat);
    addItem(menu, tr("📷 Send Screenshot to AI", "tray.aiCapture"), a,
            &ActionManager::captureForAiChat);
    addItem(menu, tr("🔤 Extract Text (OCR)", "tray.ocr"), a, &ActionManager::quickOcr);
    addItem(menu, tr("✏️ AI Auto Annotate UI", "tray.aiAnnotate"), a,
            &ActionManager::aiAnnotate);
    menu->addSeparator();

    addItem(menu, tr("Region capture", "tray.captureRegion"), a, &ActionManager::captureRegion,
            "region");
    addItem(menu, tr("Fullscreen capture", "tray.captureFullscreen"), a,
            &ActionManager::captureFullscreen, "fullscreen");
    addItem(menu, tr("Window capture", "tray.captureWindow"), a, &ActionManager::captureWindow,
            "window");
    QMenu* delayed = menu->addMenu(tr("Delayed capture", "tray.captureDelayed"));
    for (int secs : {3, 5, 10})
        addItem(delayed, tr("%1 s", "tray.delayed.secs").arg(secs), a,
                [a, secs] { a->captureDelayed(secs); });
    addItem(menu, tr("Record GIF", "tray.recordGif"), a, &ActionManager::recordGif, "gif");
    addItem(menu, tr("Scroll capture", "tray.scrollCapture"), a, &ActionManager::scrollCapture,
            "scroll");
    addItem(menu, tr("Annotate screen", "tray.annotateScreen"), a, &ActionManager::annotateScreen);
    showHotkey(addItem(menu, tr("From clipboard", "tray.fromClipboard"), a,
                       &ActionManager::pinFromClipboard),
               "pinFromClipboard");
    menu->addSeparator();

    showHotkey(addItem(menu, tr("History", "tray.history"), a, &ActionManager::showHistory),
               "history");
    addItem(menu, tr("Open output directory", "tray.openOutputDir"), a,
            &ActionManager::openOutputDir);
    QMenu* pins = menu->addMenu(tr("Pin sessions", "tray.pinSessions"));
    addItem(pins, tr("Hide all pins", "tray.pinHideAll"), a, &ActionManager::pinHideAll);
    addItem(pins, tr("Restore all pins", "tray.pinRestoreAll"), a, &ActionManager::pinRestoreAll);
    addItem(pins, tr("Clear all pins", "tray.pinClearAll"), a, &ActionManager::clearAllPins);
    menu->addSeparator();

    // Unchecked at every rebuild, whatever the service is doing: nothing remembers gestures.
    QAction* gestures = menu->addAction(tr("Mouse gestures", "tray.mouseGesture"));
    gestures->setCheckable(true);
    QObject::connect(gestures, &QAction::toggled, a, &ActionManager::toggleMouseGesture);
    QMenu* theme = menu->addMenu(tr("Theme", "tray.theme"));
    addItem(theme, tr("Light", "tray.theme.light"), a,
            [a] { a->setTheme(QStringLiteral("light")); });
    addItem(theme, tr("Dark", "tray.theme.dark"), a, [a] { a->setTheme(QStringLiteral("dark")); });
    addItem(theme, tr("System", "tray.theme.system"), a,
            [a] { a->setTheme(QStringLiteral("system")); });
    addItem(menu, tr("Settings...", "tray.settings"), a, &ActionManager::showSettings);
    addItem(menu, tr("About", "tray.about"), a, &ActionManager::showAbout);
    showHotkey(addItem(menu, tr("Shortcut cheat sheet", "tray.shortcutSheet"), a,
                       &ActionManager::showShortcutSheet),
               "shortcutSheet");
    addItem(menu, tr("Check for updates", "tray.checkUpdates"), a, &ActionManager::checkUpdates);
    addItem(menu, tr("License...", "tray.license"), a, &ActionManager::showLicense);
    // Offered only where the system can grant it.
    if (platform::elevationAvailable())
        addItem(menu, tr("Restart as admin", "tray.restartAdmin"), a,
                &ActionManager::restartAsAdmin);
    menu->addSeparator();
    addItem(menu, tr("Quit", "tray.quit"), a, &ActionManager::quit);
}

} // namespace zelmor::manager
