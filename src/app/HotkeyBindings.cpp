#include "HotkeyBindings.h"

#include "core/ConfigManager.h"
#include "core/HotkeyState.h"
#include "manager/ActionManager.h"
#include "manager/HotkeyService.h"

namespace zelmor::app {

HotkeyBindings::HotkeyBindings(manager::HotkeyService& hotkeys, manager::ActionManager& actions)
    : QObject(&hotkeys), m_hotkeys(hotkeys), m_actions(actions)
{
    connect(&core::ConfigManager::instance(), &core::ConfigManager::hotkeysChanged, this,
            &HotkeyBindings::registerAll);
    connect(&core::HotkeyState::instance(), &core::HotkeyState::suspendedChanged, this,
            &HotkeyBindings::registerAll);
    connect(&m_hotkeys, &manager::HotkeyService::hotkeyTriggered, &m_actions,
            [this](int id) { run(id); });
}

// Rows whose action the program does not have yet are not bound, so that their keys stay
// free for other programs. While the user types a new hotkey every key is let go, so that one
// bound already reaches the field; the keys are still bound for a moment to learn which the
// system refuses.
void HotkeyBindings::registerAll()
{
    struct Row
    {
        int id;
        const char* name;
        std::function<void()> action;
    };
    manager::ActionManager& a = m_actions;
    const Row rows[] = {
        {1, "region", [&a] { a.captureRegion(); }},
        {2, "fullscreen", [&a] { a.captureFullscreen(); }},
        {3, "window", [&a] { a.captureWindow(); }},
        {4, "delayed", [&a] { a.captureDelayed(3); }},
        {5, "gif", [&a] { a.recordGif(); }},
        {6, "scroll", [&a] { a.scrollCapture(); }},
        {7, "pinClickThrough", [&a] { a.togglePinClickThrough(); }},
        {8, "pinFromClipboard", [&a] { a.pinFromClipboard(); }},
        {9, "history", [&a] { a.showHistory(); }},
        {10, "shortcutSheet", [&a] { a.showShortcutSheet(); }},
    };
    m_hotkeys.unregisterAll();
    m_callbacks.clear();
    QSet<QString> refused;
    for (const Row& row : rows) {
        const QString sequence = core::ConfigManager::instance().hotkey(row.name);
        if (sequence.isEmpty()) continue;
        if (m_hotkeys.registerHotkey(row.id, sequence))
            m_callbacks.insert(row.id, row.action);
        else
            refused.insert(QLatin1String(row.name));
    }
    core::HotkeyState& state = core::HotkeyState::instance();
    if (state.suspended()) {
        m_hotkeys.unregisterAll();
        m_callbacks.clear();
    }
    state.setRefused(refused);
}

void HotkeyBindings::run(int id)
{
    const auto callback = m_callbacks.constFind(id);
    if (callback != m_callbacks.cend()) (*callback)();
}

} // namespace zelmor::app
