// The windows of a Wayland desktop as its taskbars see them: titles, application ids and
// states through wlr-foreign-toplevel-management (no rectangles), and on KWin through Plasma's
// window management, which tells rectangles and processes too.
// The compositor tells every change of every window, a busy title many times a second, and
// drops a client that leaves its messages unread: the list has a connection of its own, read
// all the time by a thread of its own.

#include "DesktopToolsWayland.h"
#include "kde-plasma-window-management-client-protocol.h"
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
    zwlr_foreign_toplevel_handle_v1* handle = nullptr; // one of the two
    org_kde_plasma_window* plasma = nullptr;
    Rect frame;
    bool frameKnown = false;
    std::int64_t processId = 0;
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
    void bindGlobal(wl_registry* registry, std::uint32_t name, const char* interface,
                    std::uint32_t version);
    Toplevel& add(std::unique_ptr<Toplevel> t);
    void addPlasma(const char* uuid);
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
    org_kde_plasma_window_management* m_plasma = nullptr;
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
    [](void* data, wl_registry* registry, uint32_t name, const char* interface, uint32_t version) {
        listOf(data).bindGlobal(registry, name, interface, version);
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
        auto t = std::make_unique<Toplevel>();
        t->handle = handle;
        zwlr_foreign_toplevel_handle_v1_add_listener(handle, &handleListener,
                                                     &listOf(data).add(std::move(t)));
    },
    [](void* data, zwlr_foreign_toplevel_manager_v1*) { listOf(data).finish(); },
};

// A Plasma window's events, on the reading thread.
const org_kde_plasma_window_listener plasmaListener = {
    [](void* data, org_kde_plasma_window*, const char* title) {
        std::lock_guard<std::mutex> lock(of(data).list->mutex);
        of(data).title = title;
    },
    [](void* data, org_kde_plasma_window*, const char* appId) {
        std::lock_guard<std::mutex> lock(of(data).list->mutex);
        of(data).appId = appId;
    },
    [](void* data, org_kde_plasma_window*, uint32_t flags) {
        std::lock_guard<std::mutex> lock(of(data).list->mutex);
        of(data).activated = flags & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE;
        of(data).minimized = flags & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_MINIMIZED;
        of(data).maximized = flags & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_MAXIMIZED;
    },
    [](void*, org_kde_plasma_window*, int32_t) {},
    [](void*, org_kde_plasma_window*, const char*) {},
    [](void* data, org_kde_plasma_window*) { of(data).list->forget(of(data)); },
    [](void*, org_kde_plasma_window*) {},
    [](void*, org_kde_plasma_window*, org_kde_plasma_window*) {},
    [](void* data, org_kde_plasma_window*, int32_t x, int32_t y, uint32_t width, uint32_t height) {
        std::lock_guard<std::mutex> lock(of(data).list->mutex);
        of(data).frame = Rect{x, y, int(width), int(height)};
        of(data).frameKnown = true;
    },
    [](void*, org_kde_plasma_window*) {},
    [](void* data, org_kde_plasma_window*, uint32_t pid) {
        std::lock_guard<std::mutex> lock(of(data).list->mutex);
        of(data).processId = pid;
    },
    [](void*, org_kde_plasma_window*, const char*) {},
    [](void*, org_kde_plasma_window*, const char*) {},
    [](void*, org_kde_plasma_window*, const char*, const char*) {},
};

const org_kde_plasma_window_management_listener plasmaManagerListener = {
    [](void*, org_kde_plasma_window_management*, uint32_t) {},
    [](void*, org_kde_plasma_window_management*, uint32_t) {},
    [](void*, org_kde_plasma_window_management*, wl_array*) {},
    [](void*, org_kde_plasma_window_management*, const char*) {},
    [](void* data, org_kde_plasma_window_management*, uint32_t, const char* uuid) {
        listOf(data).addPlasma(uuid);
    },
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

void ToplevelList::bindGlobal(wl_registry* registry, std::uint32_t name, const char* interface,
                              std::uint32_t version)
{
    if (std::strcmp(interface, wl_seat_interface.name) == 0 && !seat) {
        seat = static_cast<wl_seat*>(wl_registry_bind(registry, name, &wl_seat_interface, 1));
    } else if (std::strcmp(interface, zwlr_foreign_toplevel_manager_v1_interface.name) == 0) {
        m_manager = static_cast<zwlr_foreign_toplevel_manager_v1*>(
            wl_registry_bind(registry, name, &zwlr_foreign_toplevel_manager_v1_interface, 3));
        zwlr_foreign_toplevel_manager_v1_add_listener(m_manager, &managerListener, this);
    } else if (std::strcmp(interface, org_kde_plasma_window_management_interface.name) == 0 &&
               version >= ORG_KDE_PLASMA_WINDOW_MANAGEMENT_WINDOW_WITH_UUID_SINCE_VERSION) {
        m_plasma = static_cast<org_kde_plasma_window_management*>(
            wl_registry_bind(registry, name, &org_kde_plasma_window_management_interface,
                             ORG_KDE_PLASMA_WINDOW_MANAGEMENT_WINDOW_WITH_UUID_SINCE_VERSION));
        org_kde_plasma_window_management_add_listener(m_plasma, &plasmaManagerListener, this);
    }
}

bool ToplevelList::connect()
{
    m_display = wl_display_connect(nullptr);
    if (!m_display) return false;
    wl_registry_add_listener(wl_display_get_registry(m_display), &registryListener, this);
    // The globals, then the windows there are now.
    if (wl_display_roundtrip(m_display) < 0 || !(m_manager || m_plasma) ||
        wl_display_roundtrip(m_display) < 0 || wl_display_roundtrip(m_display) < 0) {
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

Toplevel& ToplevelList::add(std::unique_ptr<Toplevel> t)
{
    t->list = this;
    std::lock_guard<std::mutex> lock(mutex);
    t->id = ++m_lastId;
    windows.push_back(std::move(t));
    return *windows.back();
}

void ToplevelList::addPlasma(const char* uuid)
{
    auto t = std::make_unique<Toplevel>();
    org_kde_plasma_window* window = t->plasma =
        org_kde_plasma_window_management_get_window_by_uuid(m_plasma, uuid);
    org_kde_plasma_window_add_listener(window, &plasmaListener, &add(std::move(t)));
}

void ToplevelList::forget(Toplevel& gone)
{
    std::lock_guard<std::mutex> lock(mutex);
    if (gone.handle) zwlr_foreign_toplevel_handle_v1_destroy(gone.handle);
    if (gone.plasma) org_kde_plasma_window_destroy(gone.plasma);
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
    w.frame = t.frame;
    w.frameKnown = t.frameKnown;
    w.processId = t.processId;
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

// The requests, in whichever protocol tells of the window.
enum class State : std::uint32_t {
    Minimized = ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_MINIMIZED,
    Maximized = ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_MAXIMIZED,
};

void setState(Toplevel& t, State state, bool on)
{
    const auto flag = std::uint32_t(state);
    if (t.plasma)
        org_kde_plasma_window_set_state(t.plasma, flag, on ? flag : 0);
    else if (state == State::Minimized)
        on ? zwlr_foreign_toplevel_handle_v1_set_minimized(t.handle)
           : zwlr_foreign_toplevel_handle_v1_unset_minimized(t.handle);
    else
        on ? zwlr_foreign_toplevel_handle_v1_set_maximized(t.handle)
           : zwlr_foreign_toplevel_handle_v1_unset_maximized(t.handle);
}

void activate(Toplevel& t, wl_seat* seat)
{
    constexpr std::uint32_t active = ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE;
    if (t.minimized) setState(t, State::Minimized, false);
    if (t.plasma)
        org_kde_plasma_window_set_state(t.plasma, active, active);
    else if (seat)
        zwlr_foreign_toplevel_handle_v1_activate(t.handle, seat);
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
    return ask(window, activate);
}

bool minimizeWindow(WindowHandle window)
{
    return ask(window, [](Toplevel& t, wl_seat*) { setState(t, State::Minimized, true); });
}

bool maximizeWindow(WindowHandle window)
{
    return ask(window, [](Toplevel& t, wl_seat* seat) {
        setState(t, State::Maximized, true);
        activate(t, seat);
    });
}

bool restoreWindow(WindowHandle window)
{
    return ask(window, [](Toplevel& t, wl_seat* seat) {
        if (!t.minimized) setState(t, State::Maximized, false);
        activate(t, seat);
    });
}

bool closeWindow(WindowHandle window)
{
    return ask(window, [](Toplevel& t, wl_seat*) {
        if (t.plasma)
            org_kde_plasma_window_close(t.plasma);
        else
            zwlr_foreign_toplevel_handle_v1_close(t.handle);
    });
}

} // namespace zelmor::platform::wayland
