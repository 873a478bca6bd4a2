#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <string>

namespace zelmor::platform::x11 {

template <typename T> struct FreeDeleter
{
    void operator()(T* p) const { std::free(p); }
};
// xcb replies and errors are malloc'ed and freed by the caller.
template <typename T> using Reply = std::unique_ptr<T, FreeDeleter<T>>;

// A new connection to the display named by DISPLAY, for a part that reads events of its own;
// null when none can be made. `screen` receives the default screen's number.
xcb_connection_t* openConnection(int* screen = nullptr);

// The backend's own connection to the display named by DISPLAY, opened on first use and
// shared by all threads (xcb is thread-safe). Null when no display can be reached.
class X11Connection
{
public:
    static X11Connection* shared();

    xcb_connection_t* connection() const { return m_connection; }
    xcb_screen_t* screen() const { return m_screen; }
    xcb_window_t root() const { return m_screen->root; }

    xcb_atom_t atom(const char* name);
    std::string atomName(xcb_atom_t atom);

    ~X11Connection();

private:
    X11Connection(xcb_connection_t* connection, xcb_screen_t* screen);

    xcb_connection_t* m_connection;
    xcb_screen_t* m_screen;
};

} // namespace zelmor::platform::x11
