// The windows of a Wayland desktop as its taskbars see them, through
// wlr-foreign-toplevel-management: titles, application ids and states, but no rectangles.
// The compositor tells every change of every window, a busy title many times a second, and
// drops a client that leaves its messages unread: the list has a connection of its own, read
// all the time by a thread of its own.

#include "DesktopToolsWayland.h"
#include "wlr-foreign-toplevel-management-unstable-v1-client-protocol.h"

#include <wayland-client.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <memory>
#include <mutex>
#include <thread>

namespace zelmor::platform::wayland {

namespace {

// How long the compositor may take to answer whether the list is up to date.
constexpr int kSyncTimeoutMs = 2000;

class ToplevelList;

struct Toplevel
{
    ToplevelList* list = nullptr;
    zwlr_foreign_toplevel_handle_v1* handle = nullptr;
    WindowHandle id = 0;
    std::string title;
    std::string appId;
    bool minimized = false;
    bool maximized = false;
    bool activated = false;
};

class ToplevelList
{
public:
    // Null when no compositor answers or it offers no window list.
    static ToplevelList* shared();

    // Holds `mutex` and the windows the compositor told of by the time of the call.
    std::unique_lock<std::mutex> upToDate();
    bool usable() const { return !m_finished && !m_broken; }

    std::mutex mutex;
    std::vector<std::unique_ptr<Toplevel>> windows; // oldest first, under `mutex`
    wl_seat* seat = nullptr;

    // The listeners' side, on the reading thread.
    void bindGlobal(wl_registry* registry, std::uint32_t name, const char* interface);
    void add(zwlr_foreign_toplevel_handle_v1* handle);
    void forget(Toplevel& gone);
    void finish() { m_finished = true; }
    void synced()
    {
        std::lock_guard<std::mutex> lock(mutex);
        ++m_synced;
        m_answered.notify_all();
    }

private:
    bool connect();
    void read();

    wl_display* m_display = nullptr;
    zwlr_foreign_toplevel_manager_v1* m_manager = nullptr;
    WindowHandle m_lastId = 0;
    std::atomic<bool> m_finished{false};
    std::atomic<bool> m_broken{false};
    std::condition_variable m_answered;
    unsigned m_synced = 0; // sync answers so far, under `mutex`
};

ToplevelList& listOf(void* data)
{
    return *static_cast<ToplevelList*>(data);
}

Toplevel& of(void* data)
{
    return *static_cast<Toplevel*>(data);
}

const wl_registry_listener registryListener = {
    [](void* data, wl_registry* registry, uint32_t name, const char* interface, uint32_t) {
        listOf(data).bindGlobal(registry, name, interface);
    },
    [](void*, wl_registry*, uint32_t) {},
};

// The handle's events, on the reading thread; its data is the window, whose list is the one.
const zwlr_foreign_toplevel_handle_v1_listener handleListener = {
    [](void* data, zwlr_foreign_toplevel_handle_v1*, const char* title) {
        std::lock_guard<std::mutex> lock(of(data).list->mutex);
        of(data).title = title;
    },
    [](void* data, zwlr_foreign_toplevel_handle_v1*, const char* appId) {
        std::lock_guard<std::mutex> lock(of(data).list->mutex);
        of(data).appId = appId;
    },
    [](void*, zwlr_foreign_toplevel_handle_v1*, wl_output*) {},
    [](void*, zwlr_foreign_toplevel_handle_v1*, wl_output*) {},
    [](void* data, zwlr_foreign_toplevel_handle_v1*, wl_array* states) {
        std::lock_guard<std::mutex> lock(of(data).list->mutex);
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
    [](void* data, zwlr_foreign_toplevel_handle_v1*) { of(data).list->forget(of(data)); },
    [](void*, zwlr_foreign_toplevel_handle_v1*, zwlr_foreign_toplevel_handle_v1*) {},
};

const zwlr_foreign_toplevel_manager_v1_listener managerListener = {
    [](void* data, zwlr_foreign_toplevel_manager_v1*, zwlr_foreign_toplevel_handle_v1* handle) {
        listOf(data).add(handle);
    },
    [](void* data, zwlr_foreign_toplevel_manager_v1*) { listOf(data).finish(); },
};

const wl_callback_listener syncListener = {
    [](void* data, wl_callback* callback, uint32_t) {
        wl_callback_destroy(callback);
        listOf(data).synced();
    },
};

ToplevelList* ToplevelList::shared()
{
    static ToplevelList* list = [] {
        auto* made = new ToplevelList;
        if (made->connect()) return made;
        delete made;
        return static_cast<ToplevelList*>(nullptr);
    }();
    return list;
}

void ToplevelList::bindGlobal(wl_registry* registry, std::uint32_t name, const char* interface)
{
    if (std::strcmp(interface, wl_seat_interface.name) == 0 && !seat) {
        seat = static_cast<wl_seat*>(wl_registry_bind(registry, name, &wl_seat_interface, 1));
    } else if (std::strcmp(interface, zwlr_foreign_toplevel_manager_v1_interface.name) == 0) {
        m_manager = static_cast<zwlr_foreign_toplevel_manager_v1*>(
            wl_registry_bind(registry, name, &zwlr_foreign_toplevel_manager_v1_interface, 3));
        zwlr_foreign_toplevel_manager_v1_add_listener(m_manager, &managerListener, this);
    }
}

bool ToplevelList::connect()
{
    m_display = wl_display_connect(nullptr);
    if (!m_display) return false;
    wl_registry_add_listener(wl_display_get_registry(m_display), &registryListener, this);
    // The globals, then the windows there are now.
    if (wl_display_roundtrip(m_display) < 0 || !m_manager || wl_display_roundtrip(m_display) < 0) {
        wl_display_disconnect(m_display);
        return false;
    }
    std::thread([this] { read(); }).detach();
    return true;
}

void ToplevelList::read()
{
    while (wl_display_dispatch(m_display) >= 0) {
    }
    std::lock_guard<std::mutex> lock(mutex);
    m_broken = true;
    m_answered.notify_all();
    // The connection stays: requests on its objects go nowhere rather than to freed memory.
}

void ToplevelList::add(zwlr_foreign_toplevel_handle_v1* handle)
{
    auto t = std::make_unique<Toplevel>();
    t->list = this;
    t->handle = handle;
    std::lock_guard<std::mutex> lock(mutex);
    t->id = ++m_lastId;
    zwlr_foreign_toplevel_handle_v1_add_listener(handle, &handleListener, t.get());
    windows.push_back(std::move(t));
}

void ToplevelList::forget(Toplevel& gone)
{
    std::lock_guard<std::mutex> lock(mutex);
    zwlr_foreign_toplevel_handle_v1_destroy(gone.handle);
    windows.erase(std::find_if(windows.begin(), windows.end(),
                               [&gone](const auto& t) { return t.get() == &gone; }));
}

std::unique_lock<std::mutex> ToplevelList::upToDate()
{
    std::unique_lock<std::mutex> lock(mutex);
    const unsigned wanted = m_synced + 1;
    wl_callback* sync = wl_display_sync(m_display);
    wl_callback_add_listener(sync, &syncListener, this);
    wl_display_flush(m_display);
    m_answered.wait_for(lock, std::chrono::milliseconds(kSyncTimeoutMs),
                        [&] { return m_synced >= wanted || m_broken; });
    return lock;
}

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

// Carries a request out on the window; false when it is gone.
template <typename Request> bool ask(WindowHandle window, Request request)
{
    ToplevelList* list = ToplevelList::shared();
    if (!list) return false;
    const std::unique_lock<std::mutex> lock = list->upToDate();
    const auto found = std::find_if(list->windows.begin(), list->windows.end(),
                                    [window](const auto& t) { return t->id == window; });
    if (!list->usable() || found == list->windows.end()) return false;
    request(**found, list->seat);
    return true;
}

void activate(Toplevel& t, wl_seat* seat)
{
    if (seat) zwlr_foreign_toplevel_handle_v1_activate(t.handle, seat);
}

} // namespace

bool windowManagementAvailable()
{
    const ToplevelList* list = ToplevelList::shared();
    return list && list->usable();
}

std::vector<WindowRecord> listTopLevelWindows()
{
    ToplevelList* list = ToplevelList::shared();
    if (!list) return {};
    const std::unique_lock<std::mutex> lock = list->upToDate();
    // No stacking order is told: the focused window first, then the newest.
    std::vector<WindowRecord> windows;
    for (auto it = list->windows.rbegin(); it != list->windows.rend(); ++it)
        windows.insert((*it)->activated ? windows.begin() : windows.end(), recordOf(**it));
    return windows;
}

WindowRecord foregroundWindow()
{
    ToplevelList* list = ToplevelList::shared();
    if (!list) return {};
    const std::unique_lock<std::mutex> lock = list->upToDate();
    for (const auto& t : list->windows)
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
