// Global input observation through the RECORD extension (Windows: WH_MOUSE_LL and
// WH_KEYBOARD_LL). RECORD copies the device events the server processes, auto-repeated keys
// included, to a connection of ours without taking them from anyone. XInput2 raw events would
// miss the repeats and carry neither the pointer position nor the modifiers.

#include "../InputObserver.h"
#include "../Session.h"
#include "KeyboardX11.h"
#include "X11Connection.h"

#include <sys/socket.h>
#include <xcb/record.h>

#include <cstring>
#include <iterator>
#include <thread>
#include <utility>

namespace zelmor::platform {

using x11::KeyboardMap;
using x11::Reply;

namespace {

constexpr unsigned kLeftAlt = 0xA4;
constexpr unsigned kRightAlt = 0xA5;
// Alt is the first extra modifier in every common keyboard map.
constexpr std::uint16_t kAltMask = XCB_MOD_MASK_1;
// Device events travel in the wire format of core events.
constexpr int kEventSize = 32;
static_assert(sizeof(xcb_key_press_event_t) == kEventSize);
// The category of a reply that carries events from the server.
constexpr std::uint8_t kFromServer = 0;

unsigned buttonMessage(std::uint8_t button, bool pressed)
{
    switch (button) {
    case 1:
        return pressed ? ObservedInput::LeftButtonDown : ObservedInput::LeftButtonUp;
    case 2:
        return pressed ? ObservedInput::MiddleButtonDown : ObservedInput::MiddleButtonUp;
    case 3:
        return pressed ? ObservedInput::RightButtonDown : ObservedInput::RightButtonUp;
    }
    return 0; // wheel notches and side buttons are not reported
}

bool hasRecord(xcb_connection_t* c)
{
    const xcb_query_extension_reply_t* ext = xcb_get_extension_data(c, &xcb_record_id);
    if (!ext || !ext->present) return false;
    Reply<xcb_record_query_version_reply_t> version(
        xcb_record_query_version_reply(c, xcb_record_query_version(c, 1, 13), nullptr));
    return bool(version);
}

// A context recording the chosen events of every client's devices.
xcb_record_context_t createContext(xcb_connection_t* c, unsigned kinds)
{
    const std::pair<unsigned, std::uint8_t> eventOfKind[] = {
        {KeyPresses, XCB_KEY_PRESS},
        {ButtonPresses, XCB_BUTTON_PRESS},
        {ButtonReleases, XCB_BUTTON_RELEASE},
        {PointerMotion, XCB_MOTION_NOTIFY},
    };
    xcb_record_range_t ranges[std::size(eventOfKind)] = {};
    std::uint32_t count = 0;
    for (const auto& [kind, event] : eventOfKind)
        if (kinds & kind) ranges[count++].device_events = {event, event};
    if (count == 0) return 0;
    const xcb_record_context_t context = xcb_generate_id(c);
    const xcb_record_client_spec_t clients = XCB_RECORD_CS_ALL_CLIENTS;
    Reply<xcb_generic_error_t> error(xcb_request_check(
        c, xcb_record_create_context_checked(c, context, 0, 1, count, &clients, ranges)));
    return error ? 0 : context;
}

class InputObserverX11 : public InputObserver
{
public:
    // `control` holds `context`; `data` is where the recorded events arrive.
    InputObserverX11(xcb_connection_t* control, xcb_connection_t* data,
                     xcb_record_context_t context, Callback callback)
        : m_control(control), m_data(data), m_callback(std::move(callback)),
          m_keyboard(KeyboardMap::read(control))
    {
        // The first reply says recording has begun: presses made after construction are seen.
        const xcb_record_enable_context_cookie_t stream = xcb_record_enable_context(data, context);
        Reply<xcb_record_enable_context_reply_t> started(
            xcb_record_enable_context_reply(data, stream, nullptr));
        if (started) m_thread = std::thread([this, stream] { run(stream); });
    }

    ~InputObserverX11() override
    {
        stop();
        // The server drops the context with the connection that made it.
        xcb_disconnect(m_data);
        xcb_disconnect(m_control);
    }

    void stop() override
    {
        if (!m_thread.joinable()) return;
        // A disable request was seen to leave the stream open for minutes; shutting the reading
        // side ends it at once, and the server drops the recording with the connection.
        shutdown(xcb_get_file_descriptor(m_data), SHUT_RDWR);
        m_thread.join();
    }

private:
    void run(xcb_record_enable_context_cookie_t stream)
    {
        // Null once the connection is shut or lost.
        while (Reply<xcb_record_enable_context_reply_t> reply{
            xcb_record_enable_context_reply(m_data, stream, nullptr)}) {
            if (reply->category != kFromServer) continue;
            refreshKeyboardMap();
            const std::uint8_t* bytes = xcb_record_enable_context_data(reply.get());
            const int length = xcb_record_enable_context_data_length(reply.get());
            for (int offset = 0; offset + kEventSize <= length; offset += kEventSize) {
                xcb_key_press_event_t event; // button and motion events share this layout
                std::memcpy(&event, bytes + offset, kEventSize);
                handle(event);
            }
        }
    }

    // Every client hears of keyboard map changes, the control connection among them.
    void refreshKeyboardMap()
    {
        bool changed = false;
        while (Reply<xcb_generic_event_t> event{xcb_poll_for_event(m_control)})
            changed |= (event->response_type & 0x7f) == XCB_MAPPING_NOTIFY;
        if (changed) m_keyboard = KeyboardMap::read(m_control);
    }

    void handle(const xcb_key_press_event_t& event)
    {
        const std::uint8_t type = event.response_type & 0x7f;
        const Point pointer{event.root_x, event.root_y};
        if (type == XCB_BUTTON_PRESS || type == XCB_BUTTON_RELEASE) {
            if (const unsigned message = buttonMessage(event.detail, type == XCB_BUTTON_PRESS))
                m_callback({message, pointer, 0});
        } else if (type == XCB_MOTION_NOTIFY) {
            m_callback({ObservedInput::MouseMove, pointer, 0});
        } else if (type == XCB_KEY_PRESS && !(event.state & kAltMask)) {
            const unsigned vk = x11::virtualKeyForKeysym(m_keyboard.plainKeysym(event.detail),
                                                         /*sidedModifiers=*/true);
            if (vk && vk != kLeftAlt && vk != kRightAlt)
                m_callback({ObservedInput::KeyDown, {}, vk});
        }
    }

    xcb_connection_t* m_control;
    xcb_connection_t* m_data;
    Callback m_callback;
    KeyboardMap m_keyboard; // the reading thread's
    std::thread m_thread;
};

} // namespace

std::unique_ptr<InputObserver> observeInput(unsigned kinds, InputObserver::Callback callback)
{
    // A Wayland compositor shows no client another's input; Xwayland would tell only of its own
    // clients'.
    if (displayServer() == DisplayServer::Wayland) return nullptr;
    xcb_connection_t* control = x11::openConnection();
    xcb_connection_t* data = control ? x11::openConnection() : nullptr;
    const xcb_record_context_t context =
        data && hasRecord(control) ? createContext(control, kinds) : 0;
    if (!context) {
        if (data) xcb_disconnect(data);
        if (control) xcb_disconnect(control);
        return nullptr;
    }
    return std::make_unique<InputObserverX11>(control, data, context, std::move(callback));
}

} // namespace zelmor::platform
