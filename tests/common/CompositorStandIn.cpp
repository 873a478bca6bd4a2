// Holds the compositing manager's selection of the default screen without compositing,
// so that a suite can make the display look composited; prints "ready" once it owns it and
// keeps it until it is killed.

#include <xcb/xcb.h>

#include <cstdio>
#include <cstdlib>
#include <string>

int main()
{
    int screenNumber = 0;
    xcb_connection_t* c = xcb_connect(nullptr, &screenNumber);
    if (xcb_connection_has_error(c)) return 1;
    xcb_screen_iterator_t roots = xcb_setup_roots_iterator(xcb_get_setup(c));
    for (int i = 0; i < screenNumber && roots.rem; ++i)
        xcb_screen_next(&roots);
    if (!roots.rem) return 1;

    const xcb_window_t owner = xcb_generate_id(c);
    xcb_create_window(c, XCB_COPY_FROM_PARENT, owner, roots.data->root, 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    const std::string name = "_NET_WM_CM_S" + std::to_string(screenNumber);
    xcb_intern_atom_reply_t* atom = xcb_intern_atom_reply(
        c, xcb_intern_atom(c, 0, uint16_t(name.size()), name.c_str()), nullptr);
    if (!atom) return 1;
    xcb_set_selection_owner(c, owner, atom->atom, XCB_CURRENT_TIME);
    xcb_get_selection_owner_reply_t* held =
        xcb_get_selection_owner_reply(c, xcb_get_selection_owner(c, atom->atom), nullptr);
    if (!held || held->owner != owner) return 1;
    std::free(held);
    std::free(atom);

    std::puts("ready");
    std::fflush(stdout);
    while (xcb_generic_event_t* event = xcb_wait_for_event(c))
        std::free(event);
    return 0;
}
