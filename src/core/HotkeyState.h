#pragma once

#include <QObject>
#include <QSet>
#include <QString>

namespace zelmor::core {

// What the panels need to know of the global hotkeys besides their settings: which of them
// the system refused, and whether binding is held off while the user types a new one.
class HotkeyState : public QObject
{
    Q_OBJECT
public:
    static HotkeyState& instance();

    // `name` is the setting's name without "hotkeys/", e.g. "region". A hotkey counts as
    // active until a registration of it failed.
    bool isActive(const QString& name) const { return !m_refused.contains(name); }
    void setRefused(const QSet<QString>& names);

    // Counted, so that one field taking the focus from another never lets the keys go live.
    void suspend();
    void resume();
    bool suspended() const { return m_suspensions > 0; }

Q_SIGNALS:
    void refusedChanged();
    void suspendedChanged(bool suspended);

private:
    HotkeyState() = default;

    QSet<QString> m_refused;
    int m_suspensions = 0;
};

} // namespace zelmor::core
