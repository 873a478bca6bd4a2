#include "InputHook.h"

#include "platform/InputObserver.h"

#include <QDateTime>
#include <QHash>
#include <QMutexLocker>

namespace zelmor::service::record {

namespace {

constexpr int kMaxRows = 256;
// Auto-repeat sends the same key every 30 ms or so; one chip stands for the whole burst.
constexpr qint64 kRepeatWindowMs = 150;

template <typename Row> void appendCapped(QList<Row>& rows, Row row)
{
    rows.append(std::move(row));
    while (rows.size() > kMaxRows)
        rows.removeFirst();
}

} // namespace

struct InputHook::Observation
{
    std::unique_ptr<platform::InputObserver> observer; // null where nothing can be observed
};

InputHook::InputHook(QObject* parent) : QObject(parent) {}

InputHook::~InputHook()
{
    uninstall();
}

void InputHook::install()
{
    if (m_observation) return;
    {
        // A new observation is a new recording: the keys of the last one are not its own.
        QMutexLocker lock(&m_mutex);
        m_clicks.clear();
        m_keys.clear();
    }
    m_observation = std::make_unique<Observation>();
    const unsigned kinds = platform::ButtonPresses | platform::KeyPresses;
    m_observation->observer =
        platform::observeInput(kinds, [this](const platform::ObservedInput& input) {
            // Stamped here: the installing thread may be busy for a while before it takes the row.
            const qint64 now = QDateTime::currentMSecsSinceEpoch();
            QMetaObject::invokeMethod(
                this,
                [this, input, now] {
                    if (input.message == platform::ObservedInput::KeyDown)
                        onKeyDown(now, int(input.virtualKey));
                    else
                        onButtonDown(now, QPoint(input.position.x, input.position.y));
                },
                Qt::QueuedConnection);
        });
}

void InputHook::uninstall()
{
    // Stopping first: no row of this observation is queued after the reset.
    if (m_observation && m_observation->observer) m_observation->observer->stop();
    m_observation.reset();
}

bool InputHook::observing() const
{
    return m_observation && m_observation->observer;
}

QList<ClickEvent> InputHook::recentClicks() const
{
    QMutexLocker lock(&m_mutex);
    return m_clicks;
}

QList<KeyEvent> InputHook::recentKeys() const
{
    QMutexLocker lock(&m_mutex);
    return m_keys;
}

void InputHook::onButtonDown(qint64 timestampMs, const QPoint& pos)
{
    QMutexLocker lock(&m_mutex);
    appendCapped(m_clicks, ClickEvent{timestampMs, pos});
}

void InputHook::onKeyDown(qint64 timestampMs, int virtualKey)
{
    const QString label = keyLabel(virtualKey);
    QMutexLocker lock(&m_mutex);
    if (!m_keys.isEmpty() && m_keys.last().label == label &&
        timestampMs - m_keys.last().timestampMs < kRepeatWindowMs)
        return;
    appendCapped(m_keys, KeyEvent{timestampMs, label});
}

QString InputHook::keyLabel(int vk)
{
    static const QHash<int, QString> names = {
        {13, QStringLiteral("Enter")}, {8, QStringLiteral("Back")},   {9, QStringLiteral("Tab")},
        {27, QStringLiteral("Esc")},   {32, QStringLiteral("Space")}, {17, QStringLiteral("Ctrl")},
        {16, QStringLiteral("Shift")}, {18, QStringLiteral("Alt")},   {91, QStringLiteral("Win")},
        {20, QStringLiteral("Caps")},  {37, QStringLiteral("←")},     {39, QStringLiteral("→")},
        {38, QStringLiteral("↑")},     {40, QStringLiteral("↓")},     {36, QStringLiteral("Home")},
        {35, QStringLiteral("End")},   {46, QStringLiteral("Del")},   {45, QStringLiteral("Ins")},
        {33, QStringLiteral("PgUp")},  {34, QStringLiteral("PgDn")},
    };
    if (const auto name = names.constFind(vk); name != names.constEnd()) return *name;
    if ((vk >= '0' && vk <= '9') || (vk >= 'A' && vk <= 'Z')) return QString(QChar(vk));
    if (vk >= 112 && vk <= 135) return QStringLiteral("F%1").arg(vk - 111);
    return QStringLiteral("Key%1").arg(vk);
}

} // namespace zelmor::service::record
