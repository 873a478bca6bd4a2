#pragma once

#include <QObject>
#include <QSet>

namespace zelmor::manager {
class ActionManager;
class HotkeyService;
} // namespace zelmor::manager

namespace zelmor::app {

// The table of global hotkeys: which id stands for which setting and runs which action. It
// binds them all again whenever a hotkey setting changes.
class HotkeyBindings : public QObject
{
    Q_OBJECT
public:
    HotkeyBindings(manager::HotkeyService& hotkeys, manager::ActionManager& actions);

    void registerAll();
    bool isBound(int id) const { return m_bound.contains(id); }

    // Runs the action of hotkey `id`, bound or not, as its command-line switch does.
    static void perform(manager::ActionManager& actions, int id);

private:
    manager::HotkeyService& m_hotkeys;
    manager::ActionManager& m_actions;
    QSet<int> m_bound;
};

} // namespace zelmor::app
