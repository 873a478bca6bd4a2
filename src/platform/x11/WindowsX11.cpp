// Top-level windows from EWMH properties (Windows: EnumWindows, GetForegroundWindow).

#include "../Windows.h"
#include "X11Connection.h"

#include <algorithm>

namespace zelmor::platform {

using x11::Reply;
using x11::X11Connection;

namespace {

constexpr std::uint32_t kIconicState = 3; // WM_STATE value of a minimized window

struct Atoms
{
    xcb_atom_t clientListStacking, activeWindow, supportingWmCheck, netWmName, utf8String, wmState,
        netWmState, netWmStateHidden, frameExtents, netWmPid;

    explicit Atoms(X11Connection& x)
        : clientListStacking(x.atom("_NET_CLIENT_LIST_STACKING")),
          activeWindow(x.atom("_NET_ACTIVE_WINDOW")),
          supportingWmCheck(x.atom("_NET_SUPPORTING_WM_CHECK")), netWmName(x.atom("_NET_WM_NAME")),
          utf8String(x.atom("UTF8_STRING")), wmState(x.atom("WM_STATE")),
          netWmState(x.atom("_NET_WM_STATE")), netWmStateHidden(x.atom("_NET_WM_STATE_HIDDEN")),
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

} // namespace zelmor::platform
