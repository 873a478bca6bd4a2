#include "X11Connection.h"

#include <cstring>
#include <mutex>
#include <unordered_map>

namespace zelmor::platform::x11 {

namespace {
std::mutex atomMutex;
std::unordered_map<std::string, xcb_atom_t> atomCache;
} // namespace

xcb_connection_t* openConnection(int* screen)
{
    xcb_connection_t* c = xcb_connect(nullptr, screen);
    if (c && xcb_connection_has_error(c)) {
        xcb_disconnect(c);
        return nullptr;
    }
    return c;
}

X11Connection* X11Connection::shared()
{
    static X11Connection* instance = []() -> X11Connection* {
        int screenNumber = 0;
        xcb_connection_t* c = openConnection(&screenNumber);
        if (!c) return nullptr;
        xcb_screen_iterator_t it = xcb_setup_roots_iterator(xcb_get_setup(c));
        for (int i = 0; i < screenNumber && it.rem; ++i)
            xcb_screen_next(&it);
        if (!it.rem) {
            xcb_disconnect(c);
            return nullptr;
        }
        return new X11Connection(c, it.data);
    }();
    if (instance && xcb_connection_has_error(instance->connection())) return nullptr;
    return instance;
}

X11Connection::X11Connection(xcb_connection_t* connection, xcb_screen_t* screen)
    : m_connection(connection), m_screen(screen)
{}

X11Connection::~X11Connection()
{
    xcb_disconnect(m_connection);
}

xcb_atom_t X11Connection::atom(const char* name)
{
    {
        std::lock_guard<std::mutex> lock(atomMutex);
        auto found = atomCache.find(name);
        if (found != atomCache.end()) return found->second;
    }
    Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        m_connection, xcb_intern_atom(m_connection, 0, std::strlen(name), name), nullptr));
    const xcb_atom_t value = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    std::lock_guard<std::mutex> lock(atomMutex);
    atomCache.emplace(name, value);
    return value;
}

std::string X11Connection::atomName(xcb_atom_t atom)
{
    Reply<xcb_get_atom_name_reply_t> reply(
        xcb_get_atom_name_reply(m_connection, xcb_get_atom_name(m_connection, atom), nullptr));
    if (!reply) return {};
    return std::string(xcb_get_atom_name_name(reply.get()),
                       xcb_get_atom_name_name_length(reply.get()));
}

} // namespace zelmor::platform::x11
