#include "MouseGestureService.h"

#include "core/Log.h"
#include "platform/InputObserver.h"

#include <QHash>

#include <cmath>

namespace zelmor::service::gesture {

namespace {

using platform::ObservedInput;

// A long drag costs constant memory; once full, the oldest direction is forgotten.
constexpr int kMaxPoints = 256;
constexpr int kMinStepSquared = 64;
constexpr double kPi = 3.14159265358979323846;

QString actionFor(const QString& gesture)
{
    static const QHash<QString, QString> actions = {
        {QStringLiteral("R"), QStringLiteral("next-pin")},
        {QStringLiteral("L"), QStringLiteral("prev-pin")},
        {QStringLiteral("D"), QStringLiteral("show-history")},
        {QStringLiteral("U"), QStringLiteral("show-desktop")},
        {QStringLiteral("DR"), QStringLiteral("capture-region")},
        {QStringLiteral("DL"), QStringLiteral("clear-pins")},
    };
    return actions.value(gesture);
}

} // namespace

MouseGestureService::MouseGestureService(QObject* parent) : QObject(parent) {}

MouseGestureService::~MouseGestureService()
{
    if (m_enabled) setEnabled(false);
}

void MouseGestureService::setEnabled(bool on)
{
    if (on == m_enabled) return;
    if (on) {
        const unsigned kinds =
            platform::ButtonPresses | platform::ButtonReleases | platform::PointerMotion;
        // Observed on a thread of its own, handled here in arrival order.
        m_hook = platform::observeInput(kinds, [this](const ObservedInput& input) {
            const QPoint point(input.position.x, input.position.y);
            QMetaObject::invokeMethod(
                this, [this, message = input.message, point] { handle(message, point); },
                Qt::QueuedConnection);
        });
        if (!m_hook)
            core::writeLogLine(QStringLiteral(
                "[gesture] the display offers no global input (X RECORD); gestures stay inert"));
    } else {
        // Stopped before the reset, so nothing of this drag is queued behind it but events
        // already on their way, which `m_enabled` turns away.
        if (m_hook) m_hook->stop();
        m_hook.reset();
        m_tracking = false;
        m_startPos = {};
        m_points.clear();
    }
    m_enabled = on; // even without a source: the service then stays silent
}

QString MouseGestureService::sectorText(const QPoint& a, const QPoint& b)
{
    static const char* const texts[] = {"R", "DR", "D", "DL", "L", "UL", "U", "UR"};
    const int dx = b.x() - a.x();
    const int dy = b.y() - a.y();
    if (dx * dx + dy * dy < kMinStepSquared) return {};
    const double v = (std::atan2(double(dy), double(dx)) + kPi) / (kPi / 4);
    return QString::fromLatin1(texts[int(std::round(v)) & 7]);
}

QString MouseGestureService::gestureText(const QList<QPoint>& points)
{
    QString result;
    for (int i = 1; i < points.size(); ++i) {
        const QString text = sectorText(points[i - 1], points[i]);
        if (text.isEmpty()) continue;
        // Only a one-letter text can equal the last letter, so "DR" may follow "DR".
        if (!result.isEmpty() && QString(result.back()) == text) continue;
        result += text;
    }
    return result;
}

void MouseGestureService::handle(unsigned message, const QPoint& point)
{
    if (!m_enabled) return;
    switch (message) {
    case ObservedInput::RightButtonDown:
        m_tracking = true;
        m_startPos = point;
        m_points = {point};
        break;
    case ObservedInput::MouseMove:
        if (m_tracking) onMove(point);
        break;
    case ObservedInput::RightButtonUp:
        if (m_tracking) onRelease();
        break;
    }
}

void MouseGestureService::onMove(const QPoint& point)
{
    if (m_points.size() < kMaxPoints) {
        if (sectorText(m_points.last(), point).isEmpty()) return;
    } else {
        m_points.removeFirst();
    }
    m_points.append(point);
}

void MouseGestureService::onRelease()
{
    m_tracking = false;
    const QString text = gestureText(m_points);
    const QString action = actionFor(text);
    if (!text.isEmpty() && !action.isEmpty()) Q_EMIT gestureDetected(action);
    m_startPos = {};
    m_points.clear();
}

} // namespace zelmor::service::gesture
