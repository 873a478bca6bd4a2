#pragma once

#include <QHash>
#include <QObject>

#include <functional>

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
    bool isBound(int id) const { return m_callbacks.contains(id); }

private:
    void run(int id);

    manager::HotkeyService& m_hotkeys;
    manager::ActionManager& m_actions;
    QHash<int, std::function<void()>> m_callbacks;
};

} // namespace zelmor::app
