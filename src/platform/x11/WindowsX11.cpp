// Top-level windows from EWMH properties and requests to the window manager (Windows:
// EnumWindows, GetForegroundWindow, ShowWindow, SetForegroundWindow, PostMessage).

#include "WindowsX11.h"
#include "X11Connection.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <fstream>

namespace zelmor::platform::x11 {

namespace {

constexpr std::uint32_t kIconicState = 3; // WM_STATE value of a minimized window

struct Atoms
{
    xcb_atom_t clientListStacking, activeWindow, supportingWmCheck, netWmName, utf8String, wmState,
        netWmState, netWmStateHidden, netWmStateMaxVert, netWmStateMaxHorz, frameExtents, netWmPid;

    explicit Atoms(X11Connection& x)
        : clientListStacking(x.atom("_NET_CLIENT_LIST_STACKING")),
          activeWindow(x.atom("_NET_ACTIVE_WINDOW")),
          supportingWmCheck(x.atom("_NET_SUPPORTING_WM_CHECK")), netWmName(x.atom("_NET_WM_NAME")),
          utf8String(x.atom("UTF8_STRING")), wmState(x.atom("WM_STATE")),
          netWmState(x.atom("_NET_WM_STATE")), netWmStateHidden(x.atom("_NET_WM_STATE_HIDDEN")),
          netWmStateMaxVert(x.atom("_NET_WM_STATE_MAXIMIZED_VERT")),
          netWmStateMaxHorz(x.atom("_NET_WM_STATE_MAXIMIZED_HORZ")),
          frameExtents(x.atom("_NET_FRAME_EXTENTS")), netWmPid(x.atom("_NET_WM_PID"))
    {}
};

xcb_get_property_cookie_t askProperty(xcb_connection_t* c, xcb_window_t w, xcb_atom_t property,
                                      xcb_atom_t type, std::uint32_t words = 1024)
{
    return xcb_get_property(c, 0, w, property, type, 0, words);
}

std::vector<std::uint8_t> propertyBytes(xcb_connection_t* c, xcb_get_property_cookie_t cookie)
{
    Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(c, cookie, nullptr));
    if (!reply || reply->type == XCB_ATOM_NONE) return {};
    const auto* data = static_cast<const std::uint8_t*>(xcb_get_property_value(reply.get()));
    return {data, data + xcb_get_property_value_length(reply.get())};
}

std::vector<std::uint32_t> propertyWords(xcb_connection_t* c, xcb_get_property_cookie_t cookie)
{
    const std::vector<std::uint8_t> bytes = propertyBytes(c, cookie);
    std::vector<std::uint32_t> words(bytes.size() / 4);
    std::copy_n(bytes.data(), words.size() * 4, reinterpret_cast<std::uint8_t*>(words.data()));
    return words;
}

std::string latin1ToUtf8(const std::vector<std::uint8_t>& bytes)
{
    std::string out;
    for (std::uint8_t b : bytes) {
        if (b < 0x80) {
            out += char(b);
        } else {
            out += char(0xc0 | (b >> 6));
            out += char(0x80 | (b & 0x3f));
        }
    }
    return out;
}

// Every request for one window is sent before any reply is read, so a whole list costs
// about one round trip instead of several per window.
struct PendingWindow
{
    xcb_window_t window;
    xcb_get_property_cookie_t netName, name, wmClass, wmState, netState, extents, pid;
    xcb_get_window_attributes_cookie_t attributes;
    xcb_get_geometry_cookie_t geometry;
    xcb_translate_coordinates_cookie_t origin;
};

PendingWindow ask(X11Connection& x, const Atoms& a, xcb_window_t w)
{
    xcb_connection_t* c = x.connection();
    return {w,
            askProperty(c, w, a.netWmName, a.utf8String),
            askProperty(c, w, XCB_ATOM_WM_NAME, XCB_ATOM_STRING),
            askProperty(c, w, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING),
            askProperty(c, w, a.wmState, a.wmState, 2),
            askProperty(c, w, a.netWmState, XCB_ATOM_ATOM),
            askProperty(c, w, a.frameExtents, XCB_ATOM_CARDINAL, 4),
            askProperty(c, w, a.netWmPid, XCB_ATOM_CARDINAL, 1),
            xcb_get_window_attributes(c, w),
            xcb_get_geometry(c, w),
            xcb_translate_coordinates(c, w, x.root(), 0, 0)};
}

WindowRecord collect(X11Connection& x, const Atoms& a, const PendingWindow& p)
{
    xcb_connection_t* c = x.connection();
    WindowRecord r;
    r.handle = p.window;

    std::vector<std::uint8_t> title = propertyBytes(c, p.netName);
    std::vector<std::uint8_t> plainTitle = propertyBytes(c, p.name);
    r.title = title.empty() ? latin1ToUtf8(plainTitle) : std::string(title.begin(), title.end());

    // WM_CLASS holds "instance\0class\0".
    std::vector<std::uint8_t> wmClass = propertyBytes(c, p.wmClass);
    const auto firstNul = std::find(wmClass.begin(), wmClass.end(), 0);
    if (firstNul != wmClass.end())
        r.className = std::string(firstNul + 1, std::find(firstNul + 1, wmClass.end(), 0));

    const std::vector<std::uint32_t> wmState = propertyWords(c, p.wmState);
    const std::vector<std::uint32_t> netState = propertyWords(c, p.netState);
    r.minimized = (!wmState.empty() && wmState[0] == kIconicState) ||
                  std::find(netState.begin(), netState.end(), a.netWmStateHidden) != netState.end();
    r.maximized =
        std::find(netState.begin(), netState.end(), a.netWmStateMaxVert) != netState.end() &&
        std::find(netState.begin(), netState.end(), a.netWmStateMaxHorz) != netState.end();

    const std::vector<std::uint32_t> extents =
        propertyWords(c, p.extents); // left, right, top, bottom
    const std::vector<std::uint32_t> pid = propertyWords(c, p.pid);
    if (!pid.empty()) r.processId = pid[0];

    Reply<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(c, p.attributes, nullptr));
    r.visible = (attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE) || r.minimized;

    Reply<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(c, p.geometry, nullptr));
    Reply<xcb_translate_coordinates_reply_t> origin(
        xcb_translate_coordinates_reply(c, p.origin, nullptr));
    if (geometry && origin) {
        r.frame = {origin->dst_x, origin->dst_y, geometry->width, geometry->height};
        if (extents.size() == 4) {
            r.frame.x -= int(extents[0]);
            r.frame.y -= int(extents[2]);
            r.frame.width += int(extents[0] + extents[1]);
            r.frame.height += int(extents[2] + extents[3]);
        }
    }
    return r;
}

bool windowManagerRunning(X11Connection& x, const Atoms& a)
{
    const std::vector<std::uint32_t> check =
        propertyWords(x.connection(), askProperty(x.connection(), x.root(), a.supportingWmCheck,
                                                  XCB_ATOM_WINDOW, 1));
    return !check.empty() && check[0] != XCB_WINDOW_NONE;
}

// Without a window manager the top-levels are the root's mapped, unmanaged-by-design children.
std::vector<xcb_window_t> rootChildrenTopFirst(X11Connection& x)
{
    xcb_connection_t* c = x.connection();
    Reply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(c, xcb_query_tree(c, x.root()), nullptr));
    if (!tree) return {};
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    const int count = xcb_query_tree_children_length(tree.get());
    std::vector<xcb_get_window_attributes_cookie_t> cookies;
    for (int i = 0; i < count; ++i)
        cookies.push_back(xcb_get_window_attributes(c, children[i]));
    std::vector<xcb_window_t> windows;
    for (int i = count - 1; i >= 0; --i) {
        Reply<xcb_get_window_attributes_reply_t> attr(
            xcb_get_window_attributes_reply(c, cookies[i], nullptr));
        if (attr && attr->map_state == XCB_MAP_STATE_VIEWABLE && !attr->override_redirect)
            windows.push_back(children[i]);
    }
    // Replies of the skipped cookies were read above, in reverse; none is left pending.
    return windows;
}

std::vector<WindowRecord> describe(X11Connection& x, const Atoms& a,
                                   const std::vector<xcb_window_t>& windows)
{
    std::vector<PendingWindow> pending;
    pending.reserve(windows.size());
    for (xcb_window_t w : windows)
        pending.push_back(ask(x, a, w));
    std::vector<WindowRecord> records;
    records.reserve(pending.size());
    for (const PendingWindow& p : pending)
        records.push_back(collect(x, a, p));
    return records;
}

xcb_window_t topLevelOf(X11Connection& x, xcb_window_t w)
{
    xcb_connection_t* c = x.connection();
    while (w != XCB_WINDOW_NONE && w != x.root()) {
        Reply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(c, xcb_query_tree(c, w), nullptr));
        if (!tree) return XCB_WINDOW_NONE;
        if (tree->parent == x.root()) return w;
        w = tree->parent;
    }
    return XCB_WINDOW_NONE;
}

} // namespace

std::vector<WindowRecord> listTopLevelWindows()
{
    X11Connection* x = X11Connection::shared();
    if (!x) return {};
    const Atoms a(*x);
    if (!windowManagerRunning(*x, a)) return describe(*x, a, rootChildrenTopFirst(*x));
    std::vector<std::uint32_t> stacking =
        propertyWords(x->connection(), askProperty(x->connection(), x->root(), a.clientListStacking,
                                                   XCB_ATOM_WINDOW, 1u << 14));
    std::reverse(stacking.begin(), stacking.end()); // the property runs bottom to top
    return describe(*x, a, std::vector<xcb_window_t>(stacking.begin(), stacking.end()));
}

WindowRecord foregroundWindow()
{
    X11Connection* x = X11Connection::shared();
    if (!x) return {};
    const Atoms a(*x);
    xcb_connection_t* c = x->connection();
    xcb_window_t window = XCB_WINDOW_NONE;
    if (windowManagerRunning(*x, a)) {
        const std::vector<std::uint32_t> active =
            propertyWords(c, askProperty(c, x->root(), a.activeWindow, XCB_ATOM_WINDOW, 1));
        if (!active.empty()) window = active[0];
    } else {
        Reply<xcb_get_input_focus_reply_t> focus(
            xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
        if (focus) window = topLevelOf(*x, focus->focus);
    }
    if (window == XCB_WINDOW_NONE) return {};
    // Some window managers keep naming a window as active after it was withdrawn.
    WindowRecord record = describe(*x, a, {window}).front();
    return record.visible ? record : WindowRecord();
}

namespace {

constexpr std::uint32_t kSourcePager = 2; // EWMH: the request comes from a pager or tool
constexpr std::uint32_t kIconicRequest = 3;
constexpr std::uint32_t kStateRemove = 0;
constexpr std::uint32_t kStateAdd = 1;

bool exists(X11Connection& x, WindowHandle window)
{
    if (window == 0 || window > UINT32_MAX) return false;
    Reply<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
        x.connection(), xcb_get_window_attributes(x.connection(), xcb_window_t(window)), nullptr));
    return bool(attributes);
}

void sendClientMessage(X11Connection& x, xcb_window_t destination, std::uint32_t eventMask,
                       xcb_window_t window, xcb_atom_t type, std::array<std::uint32_t, 5> data)
{
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = type;
    std::copy(data.begin(), data.end(), event.data.data32);
    xcb_send_event(x.connection(), 0, destination, eventMask,
                   reinterpret_cast<const char*>(&event));
    xcb_flush(x.connection());
}

void askWindowManager(X11Connection& x, xcb_window_t window, const char* message,
                      std::array<std::uint32_t, 5> data)
{
    sendClientMessage(x, x.root(),
                      XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                      window, x.atom(message), data);
}

void setMaximized(X11Connection& x, xcb_window_t window, bool maximized)
{
    askWindowManager(x, window, "_NET_WM_STATE",
                     {maximized ? kStateAdd : kStateRemove, x.atom("_NET_WM_STATE_MAXIMIZED_VERT"),
                      x.atom("_NET_WM_STATE_MAXIMIZED_HORZ"), kSourcePager, 0});
}

// Without a window manager nothing can minimize or maximize, but raising and focusing are
// plain requests that the window's owner would otherwise leave to the manager.
bool activate(X11Connection& x, const Atoms& a, xcb_window_t window)
{
    if (windowManagerRunning(x, a)) {
        askWindowManager(x, window, "_NET_ACTIVE_WINDOW",
                         {kSourcePager, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0});
        return true;
    }
    xcb_connection_t* c = x.connection();
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_map_window(c, window);
    xcb_configure_window(c, window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    xcb_set_input_focus(c, XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
    xcb_flush(c);
    return true;
}

std::string fileNameOf(std::string path)
{
    // The link of a program whose file was replaced while it ran ends in this.
    const std::string deleted = " (deleted)";
    if (path.size() > deleted.size() &&
        path.compare(path.size() - deleted.size(), deleted.size(), deleted) == 0)
        path.resize(path.size() - deleted.size());
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

} // namespace

WindowHandle windowAt(Point point)
{
    for (const WindowRecord& w : listTopLevelWindows())
        if (w.visible && !w.minimized && w.frame.contains(point)) return w.handle;
    return 0;
}

std::string windowProcessName(WindowHandle window)
{
    X11Connection* x = X11Connection::shared();
    if (!x || !exists(*x, window)) return {};
    xcb_connection_t* c = x->connection();
    const xcb_window_t w = xcb_window_t(window);
    const auto pidCookie = askProperty(c, w, x->atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, 1);
    const auto machineCookie = askProperty(c, w, XCB_ATOM_WM_CLIENT_MACHINE, XCB_ATOM_STRING, 64);
    const std::vector<std::uint32_t> pid = propertyWords(c, pidCookie);
    std::vector<std::uint8_t> machine = propertyBytes(c, machineCookie);
    if (pid.empty() || pid[0] == 0) return {};
    // A window of another host names a process id of that host, not of this one.
    char host[HOST_NAME_MAX + 1] = {};
    gethostname(host, sizeof host - 1);
    machine.erase(std::find(machine.begin(), machine.end(), 0), machine.end());
    if (!machine.empty() && std::string(machine.begin(), machine.end()) != host) return {};

    const std::string proc = "/proc/" + std::to_string(pid[0]);
    char target[PATH_MAX];
    const ssize_t length = readlink((proc + "/exe").c_str(), target, sizeof target - 1);
    if (length > 0) return fileNameOf(std::string(target, std::size_t(length)));
    // Another user's program hides its file, but not its (shortened) command name.
    std::string command;
    std::getline(std::ifstream(proc + "/comm"), command);
    return command;
}

bool activateWindow(WindowHandle window)
{
    X11Connection* x = X11Connection::shared();
    if (!x || !exists(*x, window)) return false;
    return activate(*x, Atoms(*x), xcb_window_t(window));
}

bool minimizeWindow(WindowHandle window)
{
    X11Connection* x = X11Connection::shared();
    if (!x || !exists(*x, window) || !windowManagerRunning(*x, Atoms(*x))) return false;
    // The manager owns _NET_WM_STATE_HIDDEN and ignores requests to set it; this is the way.
    askWindowManager(*x, xcb_window_t(window), "WM_CHANGE_STATE", {kIconicRequest, 0, 0, 0, 0});
    return true;
}

bool maximizeWindow(WindowHandle window)
{
    X11Connection* x = X11Connection::shared();
    if (!x || !exists(*x, window)) return false;
    const Atoms a(*x);
    if (!windowManagerRunning(*x, a)) return false;
    setMaximized(*x, xcb_window_t(window), true);
    return activate(*x, a, xcb_window_t(window));
}

bool restoreWindow(WindowHandle window)
{
    X11Connection* x = X11Connection::shared();
    if (!x || !exists(*x, window)) return false;
    const Atoms a(*x);
    // Un-minimizing brings a window back as it was, maximized or not, as on Windows.
    if (!describe(*x, a, {xcb_window_t(window)}).front().minimized && windowManagerRunning(*x, a))
        setMaximized(*x, xcb_window_t(window), false);
    return activate(*x, a, xcb_window_t(window));
}

bool closeWindow(WindowHandle window)
{
    X11Connection* x = X11Connection::shared();
    if (!x || !exists(*x, window)) return false;
    const xcb_window_t w = xcb_window_t(window);
    if (windowManagerRunning(*x, Atoms(*x))) {
        askWindowManager(*x, w, "_NET_CLOSE_WINDOW", {XCB_CURRENT_TIME, kSourcePager, 0, 0, 0});
        return true;
    }
    // What the manager would do: ask the program, if it takes part in the deletion protocol.
    const xcb_atom_t deleteWindow = x->atom("WM_DELETE_WINDOW");
    const std::vector<std::uint32_t> protocols = propertyWords(
        x->connection(), askProperty(x->connection(), w, x->atom("WM_PROTOCOLS"), XCB_ATOM_ATOM));
    if (std::find(protocols.begin(), protocols.end(), deleteWindow) == protocols.end())
        return false;
    sendClientMessage(*x, w, XCB_EVENT_MASK_NO_EVENT, w, x->atom("WM_PROTOCOLS"),
                      {deleteWindow, XCB_CURRENT_TIME, 0, 0, 0});
    return true;
}

bool waitUntilUnmanaged(WindowHandle window, int timeoutMs)
{
    X11Connection* x = X11Connection::shared();
    if (!x) return true;
    const Atoms atoms(*x);
    if (!windowManagerRunning(*x, atoms)) return true;
    // The manager drops WM_STATE, or sets it to withdrawn, once it has released the window.
    for (int waited = 0; waited <= timeoutMs; waited += 5) {
        const std::vector<std::uint32_t> state =
            propertyWords(x->connection(), askProperty(x->connection(), xcb_window_t(window),
                                                       atoms.wmState, atoms.wmState, 2));
        if (state.empty() || state[0] == 0) return true;
        usleep(5000);
    }
    return false;
}

} // namespace zelmor::platform::x11
