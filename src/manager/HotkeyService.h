#pragma once

#include <QHash>
#include <QObject>

class QSocketNotifier;

namespace zelmor::manager {

// Binds key sequences to system-wide hotkeys and reports their presses by id. What an id
// runs is the caller's business.
class HotkeyService : public QObject
{
    Q_OBJECT
public:
    // A sequence as the system binds it: modifier bits and a virtual-key code (0: unbindable).
    struct Binding
    {
        unsigned modifiers = 0;
        unsigned virtualKey = 0;
    };
    static Binding translate(const QString& sequence);
    // False where only the desktop's own settings bind keys: registerHotkey then binds nothing,
    // and the desktop runs the actions' command lines.
    static bool bindsKeys();

    explicit HotkeyService(QObject* parent = nullptr);
    ~HotkeyService() override;

    // False when the id is taken, the key cannot be bound, or another program holds it.
    bool registerHotkey(int id, const QString& sequence);
    // The name under which a desktop that binds the keys itself lists hotkey `id`.
    void describeHotkey(int id, const QString& description);
    void unregisterAll();

Q_SIGNALS:
    void hotkeyTriggered(int id);

private:
    void publishPresses();

    QHash<int, int> m_ids;
    QSocketNotifier* m_notifier = nullptr;
    bool m_wakesOnMessages = false; // where presses come as window messages (Windows)
};

} // namespace zelmor::manager
