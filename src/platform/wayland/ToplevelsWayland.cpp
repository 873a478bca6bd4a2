// The windows of a Wayland desktop as its taskbars see them, through
// wlr-foreign-toplevel-management: titles, application ids and states, but no rectangles.

#include "DesktopToolsWayland.h"
#include "WaylandConnection.h"
#include "wlr-foreign-toplevel-management-unstable-v1-client-protocol.h"

#include <wayland-client.h>

#include <algorithm>

namespace zelmor::platform::wayland {

namespace {

struct Toplevel
{
    zwlr_foreign_toplevel_handle_v1* handle = nullptr;
    WindowHandle id = 0;
    std::string title;
    std::string appId;
    bool minimized = false;
    bool maximized = false;
    bool activated = false;
};

// Every window the compositor announced, oldest first; changed only while the shared
// connection dispatches, under its mutex.
std::vector<std::unique_ptr<Toplevel>> toplevels;
WindowHandle lastId = 0;
bool managerFinished = false;

Toplevel& of(void* data)
{
    return *static_cast<Toplevel*>(data);
}

void forget(Toplevel& gone)
{
    zwlr_foreign_toplevel_handle_v1_destroy(gone.handle);
    toplevels.erase(std::find_if(toplevels.begin(), toplevels.end(),
                                 [&gone](const auto& t) { return t.get() == &gone; }));
}

const zwlr_foreign_toplevel_handle_v1_listener handleListener = {
    [](void* data, zwlr_foreign_toplevel_handle_v1*, const char* title) { of(data).title = title; },
    [](void* data, zwlr_foreign_toplevel_handle_v1*, const char* appId) { of(data).appId = appId; },
    [](void*, zwlr_foreign_toplevel_handle_v1*, wl_output*) {},
    [](void*, zwlr_foreign_toplevel_handle_v1*, wl_output*) {},
    [](void* data, zwlr_foreign_toplevel_handle_v1*, wl_array* states) {
        Toplevel& t = of(data);
        t.minimized = t.maximized = t.activated = false;
        const auto* state = static_cast<const std::uint32_t*>(states->data);
        for (std::size_t i = 0; i < states->size / sizeof *state; ++i) {
            t.minimized |= state[i] == ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_MINIMIZED;
            t.maximized |= state[i] == ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_MAXIMIZED;
            t.activated |= state[i] == ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED;
        }
    },
    [](void*, zwlr_foreign_toplevel_handle_v1*) {},
    [](void* data, zwlr_foreign_toplevel_handle_v1*) { forget(of(data)); },
    [](void*, zwlr_foreign_toplevel_handle_v1*, zwlr_foreign_toplevel_handle_v1*) {},
};

const zwlr_foreign_toplevel_manager_v1_listener managerListener = {
    [](void*, zwlr_foreign_toplevel_manager_v1*, zwlr_foreign_toplevel_handle_v1* handle) {
        auto t = std::make_unique<Toplevel>();
        t->handle = handle;
        t->id = ++lastId;
        zwlr_foreign_toplevel_handle_v1_add_listener(handle, &handleListener, t.get());
        toplevels.push_back(std::move(t));
    },
    [](void*, zwlr_foreign_toplevel_manager_v1*) { managerFinished = true; },
};

WindowRecord recordOf(const Toplevel& t)
{
    WindowRecord w;
    w.handle = t.id;
    w.title = t.title;
    w.className = t.appId;
    w.frameKnown = false;
    w.minimized = t.minimized;
    w.maximized = t.maximized;
    w.visible = true;
    return w;
}

// The connection, its mutex held and the window list brought up to date.
struct Fresh
{
    WaylandConnection* c = WaylandConnection::shared();
    std::unique_lock<std::mutex> lock;
    Fresh()
    {
        if (!c || !c->toplevels()) return;
        lock = std::unique_lock<std::mutex>(c->mutex);
        c->roundtrip();
    }
    bool usable() const { return lock.owns_lock() && !managerFinished; }
};

// Carries a request out on the window; false when it is gone.
template <typename Request> bool ask(WindowHandle window, Request request)
{
    Fresh fresh;
    if (!fresh.usable()) return false;
    const auto found = std::find_if(toplevels.begin(), toplevels.end(),
                                    [window](const auto& t) { return t->id == window; });
    if (found == toplevels.end()) return false;
    request(**found, fresh.c->seat());
    return fresh.c->roundtrip();
}

void activate(Toplevel& t, wl_seat* seat)
{
    if (seat) zwlr_foreign_toplevel_handle_v1_activate(t.handle, seat);
}

} // namespace

zwlr_foreign_toplevel_manager_v1* watchToplevels(zwlr_foreign_toplevel_manager_v1* manager)
{
    zwlr_foreign_toplevel_manager_v1_add_listener(manager, &managerListener, nullptr);
    return manager;
}

bool windowManagementAvailable()
{
    return Fresh().usable();
}

std::vector<WindowRecord> listTopLevelWindows()
{
    Fresh fresh;
    if (!fresh.usable()) return {};
    // No stacking order is told: the focused window first, then the newest.
    std::vector<WindowRecord> windows;
    for (auto it = toplevels.rbegin(); it != toplevels.rend(); ++it)
        windows.insert((*it)->activated ? windows.begin() : windows.end(), recordOf(**it));
    return windows;
}

WindowRecord foregroundWindow()
{
    Fresh fresh;
    if (!fresh.usable()) return {};
    for (const auto& t : toplevels)
        if (t->activated) return recordOf(*t);
    return {};
}

bool activateWindow(WindowHandle window)
{
    return ask(window, [](Toplevel& t, wl_seat* seat) {
        if (t.minimized) zwlr_foreign_toplevel_handle_v1_unset_minimized(t.handle);
        activate(t, seat);
    });
}

bool minimizeWindow(WindowHandle window)
{
    return ask(window, [](Toplevel& t, wl_seat*) {
        zwlr_foreign_toplevel_handle_v1_set_minimized(t.handle);
    });
}

bool maximizeWindow(WindowHandle window)
{
    return ask(window, [](Toplevel& t, wl_seat* seat) {
        zwlr_foreign_toplevel_handle_v1_set_maximized(t.handle);
        activate(t, seat);
    });
}

bool restoreWindow(WindowHandle window)
{
    return ask(window, [](Toplevel& t, wl_seat* seat) {
        if (t.minimized)
            zwlr_foreign_toplevel_handle_v1_unset_minimized(t.handle);
        else
            zwlr_foreign_toplevel_handle_v1_unset_maximized(t.handle);
        activate(t, seat);
    });
}

bool closeWindow(WindowHandle window)
{
    return ask(window,
               [](Toplevel& t, wl_seat*) { zwlr_foreign_toplevel_handle_v1_close(t.handle); });
}

} // namespace zelmor::platform::wayland
