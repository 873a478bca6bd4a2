// A stream of the screen from the desktop's ScreenCast portal, where the compositor lets no
// client copy the screen itself (KDE, GNOME).

#include "ScreenCastPortal.h"
#include "PortalRequest.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QPoint>
#include <QThread>

#include <unistd.h>

namespace zelmor::platform::wayland {

namespace {

const QString kScreenCast = QStringLiteral("org.freedesktop.portal.ScreenCast");
// The portal may ask the user first.
constexpr int kAnswerTimeoutMs = 60000;
constexpr uint kMonitor = 1;
constexpr uint kCursorHidden = 1, kCursorEmbedded = 2;
constexpr uint kPersistUntilRevoked = 2;

QString sessionPath;

// Grabs elsewhere carry no pointer; a portal that cannot leave it out draws it in.
uint cursorMode()
{
    QDBusMessage get = QDBusMessage::createMethodCall(
        kPortalService, kPortalPath, QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("Get"));
    get.setArguments({kScreenCast, QStringLiteral("AvailableCursorModes")});
    const QDBusMessage reply = portalBus().call(get, QDBus::Block, 5000);
    const uint modes = reply.arguments().value(0).value<QDBusVariant>().variant().toUInt();
    return modes & kCursorHidden || !(modes & kCursorEmbedded) ? kCursorHidden : kCursorEmbedded;
}

// A pair of integers, (ii), of a stream's properties.
QPoint pairOf(const QVariantMap& props, const char* key)
{
    const auto value = props.value(QLatin1String(key)).value<QDBusArgument>();
    int a = 0, b = 0;
    if (value.currentType() == QDBusArgument::StructureType) {
        value.beginStructure();
        value >> a >> b;
        value.endStructure();
    }
    return {a, b};
}

// The first stream of Start's answer, a(ua{sv}): its node and where it lies on the desktop.
bool readStream(const QVariant& streams, ScreenCastGrant* grant)
{
    const auto arg = streams.value<QDBusArgument>();
    if (arg.currentType() != QDBusArgument::ArrayType) return false;
    QList<std::pair<uint, QVariantMap>> all;
    arg.beginArray();
    while (!arg.atEnd()) {
        std::pair<uint, QVariantMap> stream;
        arg.beginStructure();
        arg >> stream.first >> stream.second;
        arg.endStructure();
        all.append(stream);
    }
    arg.endArray();
    if (all.isEmpty() || all.first().first == 0) return false;
    const QPoint position = pairOf(all.first().second, "position");
    const QPoint size = pairOf(all.first().second, "size");
    grant->node = all.first().first;
    grant->area = {position.x(), position.y(), size.x(), size.y()};
    return true;
}

// How the portal answered; Granted only with a stream to read.
PortalOutcome startSession(ScreenCastGrant* grant)
{
    const PortalReply created = callPortal(
        kScreenCast, QStringLiteral("CreateSession"),
        {QVariantMap{{QStringLiteral("session_handle_token"), QStringLiteral("zelmor")}}},
        kAnswerTimeoutMs);
    sessionPath = created.results.value(QStringLiteral("session_handle")).toString();
    if (created.outcome != PortalOutcome::Granted) return created.outcome;
    if (sessionPath.isEmpty()) return PortalOutcome::Failed;
    const QDBusObjectPath session(sessionPath);
    QVariantMap sources{{QStringLiteral("types"), kMonitor},
                        {QStringLiteral("multiple"), false},
                        {QStringLiteral("cursor_mode"), cursorMode()},
                        {QStringLiteral("persist_mode"), kPersistUntilRevoked}};
    const QString token = keptRestoreToken(QStringLiteral("screencast"));
    if (!token.isEmpty()) sources.insert(QStringLiteral("restore_token"), token);
    const PortalReply selected =
        callPortal(kScreenCast, QStringLiteral("SelectSources"),
                   {QVariant::fromValue(session), sources}, kAnswerTimeoutMs);
    if (selected.outcome != PortalOutcome::Granted) return selected.outcome;
    const PortalReply started =
        callPortal(kScreenCast, QStringLiteral("Start"),
                   {QVariant::fromValue(session), QString(), QVariantMap()}, kAnswerTimeoutMs);
    if (started.outcome != PortalOutcome::Granted) return started.outcome;
    if (!readStream(started.results.value(QStringLiteral("streams")), grant))
        return PortalOutcome::Failed;
    keepRestoreToken(QStringLiteral("screencast"),
                     started.results.value(QStringLiteral("restore_token")).toString());
    QDBusMessage open = QDBusMessage::createMethodCall(kPortalService, kPortalPath, kScreenCast,
                                                       QStringLiteral("OpenPipeWireRemote"));
    open.setArguments({QVariant::fromValue(session), QVariantMap()});
    const QDBusMessage remote = portalBus().call(open, QDBus::Block, 10000);
    const auto fd = remote.arguments().value(0).value<QDBusUnixFileDescriptor>();
    grant->remote = fd.isValid() ? ::dup(fd.fileDescriptor()) : -1;
    return grant->remote >= 0 ? PortalOutcome::Granted : PortalOutcome::Failed;
}

} // namespace

bool openScreenCast(ScreenCastGrant* grant)
{
    if (!grant || !portalOffers(kScreenCast)) return false;
    closeScreenCast();
    PortalOutcome outcome = startSession(grant);
    // KDE's portal learns the outputs only after its first request, which it then fails.
    if (outcome == PortalOutcome::Failed) {
        closeScreenCast();
        QThread::msleep(1000);
        outcome = startSession(grant);
    }
    if (outcome == PortalOutcome::Granted) return true;
    closeScreenCast();
    return false;
}

void closeScreenCast()
{
    if (sessionPath.isEmpty()) return;
    portalBus().call(QDBusMessage::createMethodCall(
                         kPortalService, sessionPath,
                         QStringLiteral("org.freedesktop.portal.Session"), QStringLiteral("Close")),
                     QDBus::NoBlock);
    sessionPath.clear();
}

} // namespace zelmor::platform::wayland
