#include "PortalRequest.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QMutex>
#include <QObject>
#include <QSaveFile>
#include <QStandardPaths>
#include <QTimer>

#include <atomic>
#include <mutex>

namespace zelmor::platform::wayland {

namespace {

const QString kRequestInterface = QStringLiteral("org.freedesktop.portal.Request");

// Catches the Response of one Request object.
class ResponseCatcher : public QObject
{
    Q_OBJECT
public:
    QEventLoop loop;
    bool answered = false;
    uint code = 2;
    QVariantMap results;

    bool watch(QDBusConnection& bus, const QString& path, bool on)
    {
        const char* slot = SLOT(take(uint, QVariantMap));
        return on ? bus.connect(kPortalService, path, kRequestInterface, QStringLiteral("Response"),
                                this, slot)
                  : bus.disconnect(kPortalService, path, kRequestInterface,
                                   QStringLiteral("Response"), this, slot);
    }

public Q_SLOTS:
    void take(uint responseCode, const QVariantMap& answer)
    {
        answered = true;
        code = responseCode;
        results = answer;
        loop.quit();
    }
};

// The Request object's path is known before the call, so the answer cannot come unheard.
QString requestPath(const QDBusConnection& bus, const QString& token)
{
    QString sender = bus.baseService().mid(1);
    sender.replace(QLatin1Char('.'), QLatin1Char('_'));
    return QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2").arg(sender, token);
}

} // namespace

// Qt's shared session connection holds incoming messages back until the main event loop has
// turned once; a tool call that runs before that waited out every answer of the portal.
QDBusConnection portalBus()
{
    static const QString name = QStringLiteral("zelmor-portal");
    static std::once_flag connected;
    std::call_once(connected,
                   [] { QDBusConnection::connectToBus(QDBusConnection::SessionBus, name); });
    return QDBusConnection(name);
}

PortalReply callPortal(const QString& interface, const QString& method, QVariantList arguments,
                       int timeoutMs)
{
    QDBusConnection bus = portalBus();
    if (!QCoreApplication::instance() || !bus.isConnected() || arguments.isEmpty()) return {};
    static std::atomic<int> serial{0};
    const QString token = QStringLiteral("zelmor%1").arg(++serial);
    QString path = requestPath(bus, token);
    ResponseCatcher catcher;
    catcher.watch(bus, path, true);

    QVariantMap options = arguments.last().toMap();
    options.insert(QStringLiteral("handle_token"), token);
    arguments.last() = options;
    QDBusMessage call =
        QDBusMessage::createMethodCall(kPortalService, kPortalPath, interface, method);
    call.setArguments(arguments);
    const QDBusMessage reply = bus.call(call, QDBus::Block, timeoutMs);
    if (reply.type() != QDBusMessage::ReplyMessage) {
        catcher.watch(bus, path, false);
        const bool absent =
            reply.errorName().startsWith(QLatin1String("org.freedesktop.DBus.Error.Unknown")) ||
            reply.errorName() == QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown");
        return {absent ? PortalOutcome::NoPortal : PortalOutcome::Failed, {}};
    }
    // Portals older than the predictable path name another one.
    const QString handle = reply.arguments().value(0).value<QDBusObjectPath>().path();
    if (!handle.isEmpty() && handle != path) {
        catcher.watch(bus, path, false);
        path = handle;
        catcher.watch(bus, path, true);
    }
    if (!catcher.answered) {
        QTimer::singleShot(timeoutMs, &catcher.loop, &QEventLoop::quit);
        catcher.loop.exec(QEventLoop::ExcludeUserInputEvents);
    }
    catcher.watch(bus, path, false);
    if (!catcher.answered) {
        // Takes down a dialog that nobody answered, so that it does not wait on.
        bus.call(QDBusMessage::createMethodCall(kPortalService, path, kRequestInterface,
                                                QStringLiteral("Close")),
                 QDBus::NoBlock);
        return {PortalOutcome::NoAnswer, {}};
    }
    const PortalOutcome outcome = catcher.code == 0   ? PortalOutcome::Granted
                                  : catcher.code == 1 ? PortalOutcome::Cancelled
                                                      : PortalOutcome::Failed;
    return {outcome, catcher.results};
}

namespace {

QString tokenFile(const QString& name)
{
    return QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation) +
           QLatin1Char('/') + name + QStringLiteral("-token");
}

} // namespace

QString keptRestoreToken(const QString& name)
{
    QFile file(tokenFile(name));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).trimmed() : QString();
}

void keepRestoreToken(const QString& name, const QString& token)
{
    if (token.isEmpty() || token == keptRestoreToken(name)) return;
    QDir().mkpath(QFileInfo(tokenFile(name)).absolutePath());
    QSaveFile file(tokenFile(name));
    if (file.open(QIODevice::WriteOnly)) {
        file.write(token.toUtf8());
        file.commit();
    }
}

bool portalOffers(const QString& interface)
{
    static QMutex mutex;
    static QHash<QString, bool> known;
    QMutexLocker lock(&mutex);
    const auto found = known.constFind(interface);
    if (found != known.cend()) return *found;
    QDBusConnection bus = portalBus();
    if (!QCoreApplication::instance() || !bus.isConnected()) return false;
    QDBusMessage get = QDBusMessage::createMethodCall(
        kPortalService, kPortalPath, QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("Get"));
    get.setArguments({interface, QStringLiteral("version")});
    // The first call may start the portal, which takes a moment, and longer on a busy machine;
    // a portal that did not answer in time is asked again next time.
    const QDBusMessage reply = bus.call(get, QDBus::Block, 25000);
    const bool offered = reply.type() == QDBusMessage::ReplyMessage;
    if (offered || reply.errorName() != QLatin1String("org.freedesktop.DBus.Error.NoReply"))
        known.insert(interface, offered);
    return offered;
}

} // namespace zelmor::platform::wayland

#include "PortalRequest.moc"
