#pragma once

#include <QDBusConnection>
#include <QString>
#include <QVariantList>
#include <QVariantMap>

namespace zelmor::platform::wayland {

// How one request to the desktop portal ended: the codes of its Response signal, then ours.
enum class PortalOutcome {
    Granted = 0,
    Cancelled = 1, // the user said no, or closed the portal's dialog
    Failed = 2,    // the portal could not do it
    NoAnswer,      // no Response within the time allowed (a dialog may still stand open)
    NoPortal,      // no portal, or none with this interface, on the session bus
};

struct PortalReply
{
    PortalOutcome outcome = PortalOutcome::NoPortal;
    QVariantMap results;
};

// Calls `method` of the portal `interface` (the last of `arguments` is its options map, which
// gets the request's handle token) and waits for the answer, running a local event loop.
PortalReply callPortal(const QString& interface, const QString& method, QVariantList arguments,
                       int timeoutMs);

// The connection every portal call and signal goes through: a session and its signals belong
// to the connection that made it.
QDBusConnection portalBus();

// The restore token a portal gave for `name` ("screencast", say), so that the user is not asked
// again at the next start; kept in the app's data folder.
QString keptRestoreToken(const QString& name);
void keepRestoreToken(const QString& name, const QString& token);

// The portal offers `interface` (read once per interface and process).
bool portalOffers(const QString& interface);

inline const QString kPortalService = QStringLiteral("org.freedesktop.portal.Desktop");
inline const QString kPortalPath = QStringLiteral("/org/freedesktop/portal/desktop");

} // namespace zelmor::platform::wayland
