#include "Translucency.h"

#include "platform/Compositor.h"

#include <QSocketNotifier>

namespace zelmor::widget {

Translucency& Translucency::instance()
{
    static auto* translucency = new Translucency; // watches for the life of the process
    return *translucency;
}

Translucency::Translucency() : m_available(platform::compositorRunning())
{
    const int descriptor = platform::compositorChangeDescriptor();
    if (descriptor < 0) return;
    m_notifier = new QSocketNotifier(descriptor, QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &Translucency::recheck);
}

QString Translucency::cornerRadius(int pixels) const
{
    return QStringLiteral("%1px").arg(m_available ? pixels : 0);
}

void Translucency::recheck()
{
    const bool available = platform::compositorRunning();
    if (available == m_available) return;
    m_available = available;
    Q_EMIT availableChanged(available);
}

} // namespace zelmor::widget
