#include "HotkeyState.h"

namespace zelmor::core {

HotkeyState& HotkeyState::instance()
{
    static HotkeyState state;
    return state;
}

void HotkeyState::setRefused(const QSet<QString>& names)
{
    if (names == m_refused) return;
    m_refused = names;
    Q_EMIT refusedChanged();
}

void HotkeyState::suspend()
{
    if (++m_suspensions == 1) Q_EMIT suspendedChanged(true);
}

void HotkeyState::resume()
{
    if (m_suspensions == 0) return;
    if (--m_suspensions == 0) Q_EMIT suspendedChanged(false);
}

} // namespace zelmor::core
