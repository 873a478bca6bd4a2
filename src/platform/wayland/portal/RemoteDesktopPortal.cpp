// Input through the RemoteDesktop portal: one session for the process, with the keyboard, the
// pointer and every monitor as a screen stream, which absolute pointer motion is relative to.

#include "RemoteDesktopPortal.h"
#include "PortalRequest.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QThread>

#include <cstdlib>
#include <mutex>
#include <vector>

namespace zelmor::platform::wayland::remote {

namespace {

const QString kRemoteDesktop = QStringLiteral("org.freedesktop.portal.RemoteDesktop");
const QString kScreenCast = QStringLiteral("org.freedesktop.portal.ScreenCast");
constexpr int kStepTimeoutMs = 5000;
// The user reads the portal's dialog and answers it.
constexpr int kAnswerTimeoutMs = 60000;
constexpr int kRetryPauseMs = 1000;
constexpr uint kKeyboard = 1, kPointer = 2, kMonitor = 1;
constexpr uint kPersistUntilRevoked = 2;
constexpr uint kReleased = 0, kPressed = 1;
// A wheel's notch in the axis units of Wayland's pointer.
constexpr double kNotchAxisValue = 15;

struct Stream
{
    uint id = 0;
    Rect area; // logical; at 0,0 when the portal does not tell its place
};

std::recursive_mutex mutex;
QString session; // the session's object path; empty while there is none
std::vector<Stream> streams;

std::pair<int, int> pairOf(const QVariant& value)
{
    int a = 0, b = 0;
    const QDBusArgument argument = value.value<QDBusArgument>();
    if (argument.currentType() == QDBusArgument::StructureType) {
        argument.beginStructure();
        argument >> a >> b;
        argument.endStructure();
    }
    return {a, b};
}

// The `streams` of Start's results: a(ua{sv}).
std::vector<Stream> streamsOf(const QVariant& value)
{
    std::vector<Stream> found;
    const QDBusArgument argument = value.value<QDBusArgument>();
    if (argument.currentType() != QDBusArgument::ArrayType) return found;
    argument.beginArray();
    while (!argument.atEnd()) {
        Stream s;
        QVariantMap properties;
        argument.beginStructure();
        argument >> s.id >> properties;
        argument.endStructure();
        const auto [x, y] = pairOf(properties.value(QStringLiteral("position")));
        const auto [width, height] = pairOf(properties.value(QStringLiteral("size")));
        s.area = Rect{x, y, width, height};
        found.push_back(s);
    }
    argument.endArray();
    return found;
}

Access accessOf(PortalOutcome outcome)
{
    switch (outcome) {
    case PortalOutcome::Granted:
        return Access::Granted;
    case PortalOutcome::Cancelled:
        return Access::Refused;
    case PortalOutcome::NoAnswer:
        return Access::NoAnswer;
    case PortalOutcome::NoPortal:
        return Access::NoPortal;
    case PortalOutcome::Failed:
        break;
    }
    return Access::Failed;
}

void closeSession(const QString& path)
{
    portalBus().call(QDBusMessage::createMethodCall(
                         kPortalService, path, QStringLiteral("org.freedesktop.portal.Session"),
                         QStringLiteral("Close")),
                     QDBus::NoBlock);
}

// A step that asks nobody and goes unanswered failed.
PortalReply step(const QString& interface, const char* method, const QVariantList& arguments)
{
    PortalReply reply = callPortal(interface, QLatin1String(method), arguments, kStepTimeoutMs);
    if (reply.outcome == PortalOutcome::NoAnswer) reply.outcome = PortalOutcome::Failed;
    return reply;
}

Access start()
{
    static int serial = 0;
    PortalReply reply = step(kRemoteDesktop, "CreateSession",
                             {QVariantMap{{QStringLiteral("session_handle_token"),
                                           QStringLiteral("zelmor%1").arg(++serial)}}});
    if (reply.outcome != PortalOutcome::Granted) return accessOf(reply.outcome);
    const QString path = reply.results.value(QStringLiteral("session_handle")).toString();
    const QDBusObjectPath handle(path);
    QVariantMap devices{{QStringLiteral("types"), kKeyboard | kPointer},
                        {QStringLiteral("persist_mode"), kPersistUntilRevoked}};
    if (const QString token = keptRestoreToken(QStringLiteral("remote-desktop")); !token.isEmpty())
        devices.insert(QStringLiteral("restore_token"), token);
    reply = step(kRemoteDesktop, "SelectDevices", {QVariant::fromValue(handle), devices});
    // Without screen streams the pointer cannot be placed; the keyboard still works.
    if (reply.outcome == PortalOutcome::Granted && portalOffers(kScreenCast))
        step(kScreenCast, "SelectSources",
             {QVariant::fromValue(handle), QVariantMap{{QStringLiteral("types"), kMonitor},
                                                       {QStringLiteral("multiple"), true}}});
    if (reply.outcome == PortalOutcome::Granted)
        reply =
            callPortal(kRemoteDesktop, QStringLiteral("Start"),
                       {QVariant::fromValue(handle), QString(), QVariantMap()}, kAnswerTimeoutMs);
    if (reply.outcome != PortalOutcome::Granted) {
        closeSession(path);
        return accessOf(reply.outcome);
    }
    keepRestoreToken(QStringLiteral("remote-desktop"),
                     reply.results.value(QStringLiteral("restore_token")).toString());
    session = path;
    streams = streamsOf(reply.results.value(QStringLiteral("streams")));
    return Access::Granted;
}

// Calls one of the portal's Notify methods; a session the portal ended is started anew at the
// next access.
bool notify(const char* method, QVariantList arguments)
{
    std::lock_guard<std::recursive_mutex> lock(mutex);
    if (access() != Access::Granted) return false;
    arguments.prepend(QVariantMap());
    arguments.prepend(QVariant::fromValue(QDBusObjectPath(session)));
    QDBusMessage call = QDBusMessage::createMethodCall(kPortalService, kPortalPath, kRemoteDesktop,
                                                       QLatin1String(method));
    call.setArguments(arguments);
    const QDBusMessage reply = portalBus().call(call, QDBus::Block, kStepTimeoutMs);
    if (reply.type() == QDBusMessage::ReplyMessage) return true;
    session.clear();
    return false;
}

bool offered()
{
    return portalOffers(kRemoteDesktop);
}

} // namespace

Access access()
{
    std::lock_guard<std::recursive_mutex> lock(mutex);
    if (!session.isEmpty()) return Access::Granted;
    if (!offered()) return Access::NoPortal;
    // A backend that has just started may not know the screens yet, and fails the session.
    const Access first = start();
    if (first != Access::Failed) return first;
    QThread::msleep(kRetryPauseMs);
    return start();
}

bool moveTo(Point logical)
{
    std::lock_guard<std::recursive_mutex> lock(mutex);
    if (access() != Access::Granted || streams.empty()) return false;
    // The stream showing the point. Plasma 5.27 tells no place and takes the point on the
    // whole desktop, which it then gets unchanged.
    Stream on = streams.front();
    for (const Stream& s : streams)
        if (s.area.contains(logical)) on = s;
    return notify("NotifyPointerMotionAbsolute",
                  {on.id, double(logical.x - on.area.x), double(logical.y - on.area.y)});
}

bool button(std::uint32_t evdevButton, bool down)
{
    return notify("NotifyPointerButton", {int(evdevButton), down ? kPressed : kReleased});
}

// Plasma 5.27 passes a discrete step on as one unit of motion, which scrolls next to nothing:
// the notches go as the motion a wheel makes, one scroll each. Plasma's portal turns the
// vertical motion around, against the other desktops' portals.
bool wheel(int notches, bool horizontal)
{
    const double step = notches > 0 ? kNotchAxisValue : -kNotchAxisValue;
    const bool turned = qEnvironmentVariable("XDG_CURRENT_DESKTOP").contains(QLatin1String("KDE"));
    const double dy = turned ? -step : step;
    for (int i = 0; i < std::abs(notches); ++i)
        if (!notify("NotifyPointerAxis", {horizontal ? step : 0.0, horizontal ? 0.0 : dy}))
            return false;
    return true;
}

bool keysym(std::uint32_t keysym, bool down)
{
    return notify("NotifyKeyboardKeysym", {int(keysym), down ? kPressed : kReleased});
}

} // namespace zelmor::platform::wayland::remote
