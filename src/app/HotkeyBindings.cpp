#include "HotkeyBindings.h"

#include "core/ConfigManager.h"
#include "core/HotkeyActions.h"
#include "core/HotkeyState.h"
#include "manager/ActionManager.h"
#include "manager/HotkeyService.h"
#include "widget/settings/ShortcutSheetDialog.h"

namespace zelmor::app {

HotkeyBindings::HotkeyBindings(manager::HotkeyService& hotkeys, manager::ActionManager& actions)
    : QObject(&hotkeys), m_hotkeys(hotkeys), m_actions(actions)
{
    connect(&core::ConfigManager::instance(), &core::ConfigManager::hotkeysChanged, this,
            &HotkeyBindings::registerAll);
    connect(&core::HotkeyState::instance(), &core::HotkeyState::suspendedChanged, this,
            &HotkeyBindings::registerAll);
    connect(&m_hotkeys, &manager::HotkeyService::hotkeyTriggered, &m_actions, [this](int id) {
        if (m_bound.contains(id)) perform(m_actions, id);
    });
}

// While the user types a new hotkey every key is let go, so that one bound already reaches the
// field; the keys are still bound for a moment to learn which the system refuses. Where the
// desktop binds the keys, none is tried and none counts as refused.
void HotkeyBindings::registerAll()
{
    m_hotkeys.unregisterAll();
    m_bound.clear();
    QSet<QString> refused;
    for (const core::HotkeyAction& action : core::kHotkeyActions) {
        const QString sequence = core::ConfigManager::instance().hotkey(action.name);
        if (sequence.isEmpty() || !manager::HotkeyService::bindsKeys()) continue;
        m_hotkeys.describeHotkey(action.id, widget::ShortcutSheetDialog::hotkeyTitle(action.name));
        if (m_hotkeys.registerHotkey(action.id, sequence))
            m_bound.insert(action.id);
        else
            refused.insert(QLatin1String(action.name));
    }
    core::HotkeyState& state = core::HotkeyState::instance();
    if (state.suspended()) {
        m_hotkeys.unregisterAll();
        m_bound.clear();
    }
    state.setRefused(refused);
}

void HotkeyBindings::perform(manager::ActionManager& a, int id)
{
    switch (id) {
    case 1:
        return a.captureRegion();
    case 2:
        return a.captureFullscreen();
    case 3:
        return a.captureWindow();
    case 4:
        return a.captureDelayed(3);
    case 5:
        return a.recordGif();
    case 6:
        return a.scrollCapture();
    case 7:
        return a.togglePinClickThrough();
    case 8:
        return a.pinFromClipboard();
    case 9:
        return a.showHistory();
    case 10:
        return a.showShortcutSheet();
    }
}

} // namespace zelmor::app
