// Hotkeys through the desktop's GlobalShortcuts portal, where a Wayland client cannot grab
// keys itself (X11: key grabs on the root window; Windows: RegisterHotKey).

#include "ShortcutsPortal.h"
#include "../../Hotkeys.h"
#include "../../x11/KeyboardX11.h"
#include "PortalRequest.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QObject>
#include <QTimer>

#include <xkbcommon/xkbcommon.h>

#include <map>

namespace zelmor::platform::wayland {

struct PortalShortcut
{
    QString id;
    QVariantMap properties;
};

} // namespace zelmor::platform::wayland

Q_DECLARE_METATYPE(zelmor::platform::wayland::PortalShortcut)

namespace zelmor::platform::wayland {

QDBusArgument& operator<<(QDBusArgument& out, const PortalShortcut& shortcut)
{
    out.beginStructure();
    out << shortcut.id << shortcut.properties;
    out.endStructure();
    return out;
}

const QDBusArgument& operator>>(const QDBusArgument& in, PortalShortcut& shortcut)
{
    in.beginStructure();
    in >> shortcut.id >> shortcut.properties;
    in.endStructure();
    return in;
}

namespace {

const QString kShortcuts = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");
constexpr int kAnswerTimeoutMs = 30000; // the desktop may ask the user to confirm the keys

// A trigger as the shortcut specification writes it: "CTRL+SHIFT+F6".
QString triggerText(unsigned modifiers, unsigned virtualKey)
{
    const xcb_keysym_t keysym = x11::keysymForVirtualKey(virtualKey);
    char name[64] = {};
    if (keysym == XCB_NO_SYMBOL || xkb_keysym_get_name(keysym, name, sizeof name) <= 0) return {};
    QString text;
    if (modifiers & HotkeyControl) text += QLatin1String("CTRL+");
    if (modifiers & HotkeyAlt) text += QLatin1String("ALT+");
    if (modifiers & HotkeyShift) text += QLatin1String("SHIFT+");
    if (modifiers & HotkeyWin) text += QLatin1String("LOGO+");
    return text + QString::fromLatin1(name);
}

// The one portal session of this process, on the thread that bound the first hotkey.
class ShortcutsSession : public QObject
{
    Q_OBJECT
public:
    static ShortcutsSession& instance()
    {
        static auto* session = new ShortcutsSession;
        return *session;
    }

    std::map<int, QString> triggers;
    std::map<int, QString> descriptions;
    std::vector<int> pressed;
    std::function<void()> wake;

    void scheduleBind()
    {
        if (m_bindPending) return;
        m_bindPending = true;
        QTimer::singleShot(0, this, &ShortcutsSession::bind);
    }

public Q_SLOTS:
    void activated(const QDBusObjectPath& session, const QString& id, qulonglong,
                   const QVariantMap&)
    {
        if (session.path() != m_session) return;
        bool known = false;
        const int hotkey = id.toInt(&known);
        if (!known || !triggers.count(hotkey)) return;
        pressed.push_back(hotkey);
        if (wake) wake();
    }

private:
    ShortcutsSession()
    {
        qDBusRegisterMetaType<PortalShortcut>();
        qDBusRegisterMetaType<QList<PortalShortcut>>();
    }

    QString description(int id) const
    {
        const auto found = descriptions.find(id);
        return found != descriptions.end() ? found->second : QStringLiteral("Zelmor %1").arg(id);
    }

    QList<PortalShortcut> table() const
    {
        QList<PortalShortcut> list;
        for (const auto& [id, trigger] : triggers)
            list.append({QString::number(id),
                         {{QStringLiteral("description"), description(id)},
                          {QStringLiteral("preferred_trigger"), trigger}}});
        return list;
    }

    // The table goes to a new session each time. Plasma 5 binds the shortcuts given with
    // the session, and its BindShortcuts opens the desktop's settings instead; the others
    // bind them on BindShortcuts.
    void bind()
    {
        m_bindPending = false;
        closeSession();
        if (triggers.empty()) return;
        const QVariant shortcuts = QVariant::fromValue(table());
        if (!createSession(shortcuts) || listedShortcuts() >= triggers.size()) return;
        callPortal(
            kShortcuts, QStringLiteral("BindShortcuts"),
            {QVariant::fromValue(QDBusObjectPath(m_session)), shortcuts, QString(), QVariantMap()},
            kAnswerTimeoutMs);
    }

    bool createSession(const QVariant& shortcuts)
    {
        // Plasma names the shortcuts' group in its settings by the session's token.
        const QVariantMap options{
            {QStringLiteral("session_handle_token"), QStringLiteral("zelmor")},
            {QStringLiteral("shortcuts"), shortcuts}};
        const PortalReply reply =
            callPortal(kShortcuts, QStringLiteral("CreateSession"), {options}, kAnswerTimeoutMs);
        m_session = reply.results.value(QStringLiteral("session_handle")).toString();
        if (reply.outcome != PortalOutcome::Granted || m_session.isEmpty()) return false;
        if (!m_listening)
            m_listening = portalBus().connect(
                kPortalService, kPortalPath, kShortcuts, QStringLiteral("Activated"), this,
                SLOT(activated(QDBusObjectPath, QString, qulonglong, QVariantMap)));
        return true;
    }

    std::size_t listedShortcuts()
    {
        const PortalReply reply = callPortal(
            kShortcuts, QStringLiteral("ListShortcuts"),
            {QVariant::fromValue(QDBusObjectPath(m_session)), QVariantMap()}, kAnswerTimeoutMs);
        const QVariant listed = reply.results.value(QStringLiteral("shortcuts"));
        return listed.canConvert<QDBusArgument>()
                   ? std::size_t(qdbus_cast<QList<PortalShortcut>>(listed).size())
                   : 0;
    }

    void closeSession()
    {
        if (m_session.isEmpty()) return;
        portalBus().call(
            QDBusMessage::createMethodCall(kPortalService, m_session,
                                           QStringLiteral("org.freedesktop.portal.Session"),
                                           QStringLiteral("Close")),
            QDBus::Block, kAnswerTimeoutMs); // the next session takes the same name
        m_session.clear();
    }

    QString m_session;
    bool m_listening = false;
    bool m_bindPending = false;
};

} // namespace

bool shortcutsPortalAvailable()
{
    return portalOffers(kShortcuts);
}

bool bindPortalHotkey(int id, unsigned modifiers, unsigned virtualKey)
{
    ShortcutsSession& s = ShortcutsSession::instance();
    const QString trigger = triggerText(modifiers, virtualKey);
    if (trigger.isEmpty() || s.triggers.count(id) || !shortcutsPortalAvailable()) return false;
    // A combination bound twice must fail as elsewhere.
    for (const auto& [other, taken] : s.triggers)
        if (taken == trigger) return false;
    s.triggers[id] = trigger;
    s.scheduleBind();
    return true;
}

void unbindPortalHotkey(int id)
{
    ShortcutsSession& s = ShortcutsSession::instance();
    if (s.triggers.erase(id)) s.scheduleBind();
}

void describePortalHotkey(int id, const std::string& description)
{
    ShortcutsSession::instance().descriptions[id] = QString::fromStdString(description);
}

void onPortalHotkeyPresses(std::function<void()> wake)
{
    ShortcutsSession::instance().wake = std::move(wake);
}

std::vector<int> takePortalHotkeyPresses()
{
    std::vector<int> pressed;
    pressed.swap(ShortcutsSession::instance().pressed);
    return pressed;
}

} // namespace zelmor::platform::wayland

#include "ShortcutsPortal.moc"
