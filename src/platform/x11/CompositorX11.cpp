// A compositing manager owns the selection _NET_WM_CM_S<screen> while it runs; XFixes reports
// each change of its owner (Windows: desktop composition is always on since Windows 8).

#include "../Compositor.h"
#include "X11Connection.h"

#include <xcb/xfixes.h>

#include <mutex>
#include <string>

namespace zelmor::platform {

using x11::Reply;

namespace {

// A connection of its own, so that its descriptor turns readable for these events alone.
class CompositorWatch
{
public:
    static CompositorWatch* instance()
    {
        static CompositorWatch* watch = []() -> CompositorWatch* {
            int screen = 0;
            xcb_connection_t* c = x11::openConnection(&screen);
            return c ? new CompositorWatch(c, screen) : nullptr;
        }();
        return watch;
    }

    bool running()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        for (;;) {
            while (xcb_generic_event_t* event = xcb_poll_for_event(m_c))
                free(event);
            Reply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
                m_c, xcb_get_selection_owner(m_c, m_selection), nullptr));
            // An event read together with the reply leaves the descriptor quiet, and may
            // be newer than the reply: read the owner again.
            if (xcb_generic_event_t* late = xcb_poll_for_queued_event(m_c)) {
                free(late);
                continue;
            }
            return owner && owner->owner != XCB_NONE;
        }
    }

    int descriptor() const { return xcb_get_file_descriptor(m_c); }

private:
    CompositorWatch(xcb_connection_t* c, int screen) : m_c(c)
    {
        const std::string name = "_NET_WM_CM_S" + std::to_string(screen);
        Reply<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
            c, xcb_intern_atom(c, 0, std::uint16_t(name.size()), name.c_str()), nullptr));
        m_selection = atom ? atom->atom : xcb_atom_t(XCB_ATOM_NONE);

        // The server answers XFixes requests only after the client has named its version.
        Reply<xcb_xfixes_query_version_reply_t> version(xcb_xfixes_query_version_reply(
            c, xcb_xfixes_query_version(c, XCB_XFIXES_MAJOR_VERSION, XCB_XFIXES_MINOR_VERSION),
            nullptr));
        xcb_screen_iterator_t roots = xcb_setup_roots_iterator(xcb_get_setup(c));
        for (int i = 0; i < screen && roots.rem; ++i)
            xcb_screen_next(&roots);
        if (version && roots.rem && m_selection != XCB_ATOM_NONE) {
            xcb_xfixes_select_selection_input(
                c, roots.data->root, m_selection,
                XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                    XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                    XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
            xcb_flush(c);
        }
    }

    std::mutex m_mutex;
    xcb_connection_t* m_c;
    xcb_atom_t m_selection = XCB_ATOM_NONE;
};

} // namespace

bool compositorRunning()
{
    CompositorWatch* watch = CompositorWatch::instance();
    return watch && watch->running();
}

int compositorChangeDescriptor()
{
    CompositorWatch* watch = CompositorWatch::instance();
    return watch ? watch->descriptor() : -1;
}

} // namespace zelmor::platform
