#include "WaylandConnection.h"

#include "kde-fake-input-client-protocol.h"
#include "virtual-keyboard-unstable-v1-client-protocol.h"
#include "wlr-data-control-unstable-v1-client-protocol.h"
#include "wlr-screencopy-unstable-v1-client-protocol.h"
#include "wlr-virtual-pointer-unstable-v1-client-protocol.h"
#include "xdg-output-unstable-v1-client-protocol.h"

#include <wayland-client.h>

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <mutex>
#include <string_view>

namespace zelmor::platform::wayland {

namespace {

constexpr std::uint32_t kOutputVersion = 4;
constexpr std::uint32_t kScreencopyVersion = 3;
constexpr std::uint32_t kXdgOutputVersion = 3;
// A busy compositor (software rendering on a loaded machine) takes seconds to answer.
constexpr int kFirstAnswerMs = 10000;

Output& outputOf(void* data)
{
    return *static_cast<Output*>(data);
}

const wl_output_listener outputListener = {
    [](void* data, wl_output*, int32_t x, int32_t y, int32_t, int32_t, int32_t, const char*,
       const char*, int32_t transform) {
        Output& o = outputOf(data);
        // xdg-output's logical position, where there is one, wins over this one.
        if (!o.xdgOutput) o.position = {x, y};
        o.transform = transform;
    },
    [](void* data, wl_output*, uint32_t flags, int32_t width, int32_t height, int32_t) {
        if (!(flags & WL_OUTPUT_MODE_CURRENT)) return;
        outputOf(data).modeWidth = width;
        outputOf(data).modeHeight = height;
    },
    [](void*, wl_output*) {},
    [](void* data, wl_output*, int32_t factor) { outputOf(data).scale = std::max(factor, 1); },
    [](void* data, wl_output*, const char* name) {
        if (outputOf(data).name.empty()) outputOf(data).name = name;
    },
    [](void*, wl_output*, const char*) {},
};

const zxdg_output_v1_listener xdgOutputListener = {
    [](void* data, zxdg_output_v1*, int32_t x, int32_t y) {
        outputOf(data).position = {x, y};
    },
    [](void*, zxdg_output_v1*, int32_t, int32_t) {},
    [](void*, zxdg_output_v1*) {},
    [](void* data, zxdg_output_v1*, const char* name) { outputOf(data).name = name; },
    [](void*, zxdg_output_v1*, const char*) {},
};

const wl_registry_listener registryListener = {
    [](void* data, wl_registry* registry, uint32_t name, const char* interface, uint32_t version) {
        static_cast<WaylandConnection*>(data)->bindGlobal(registry, name, interface, version);
    },
    [](void* data, wl_registry*, uint32_t name) {
        static_cast<WaylandConnection*>(data)->removeGlobal(name);
    },
};

template <typename T>
T* bind(wl_registry* registry, std::uint32_t name, const wl_interface* interface,
        std::uint32_t offered, std::uint32_t wanted)
{
    return static_cast<T*>(wl_registry_bind(registry, name, interface, std::min(offered, wanted)));
}

} // namespace

void WaylandConnection::bindGlobal(wl_registry* registry, std::uint32_t name, const char* interface,
                                   std::uint32_t version)
{
    if (bindDesktopToolGlobal(registry, name, interface, version)) return;
    if (std::strcmp(interface, wl_shm_interface.name) == 0) {
        m_shm = bind<wl_shm>(registry, name, &wl_shm_interface, version, 1);
    } else if (std::strcmp(interface, zwlr_screencopy_manager_v1_interface.name) == 0) {
        m_screencopy = bind<zwlr_screencopy_manager_v1>(
            registry, name, &zwlr_screencopy_manager_v1_interface, version, kScreencopyVersion);
    } else if (std::strcmp(interface, zxdg_output_manager_v1_interface.name) == 0) {
        m_xdgOutputs = bind<zxdg_output_manager_v1>(
            registry, name, &zxdg_output_manager_v1_interface, version, kXdgOutputVersion);
        for (auto& output : m_outputs)
            describeOutput(*output);
    } else if (std::strcmp(interface, wl_output_interface.name) == 0) {
        auto output = std::make_unique<Output>();
        output->globalName = name;
        output->output =
            bind<wl_output>(registry, name, &wl_output_interface, version, kOutputVersion);
        wl_output_add_listener(output->output, &outputListener, output.get());
        describeOutput(*output);
        m_outputs.push_back(std::move(output));
    }
}

bool WaylandConnection::bindDesktopToolGlobal(wl_registry* registry, std::uint32_t name,
                                              const char* interface, std::uint32_t version)
{
    const std::string_view offered = interface;
    if (offered == wl_seat_interface.name && !m_seat)
        m_seat = bind<wl_seat>(registry, name, &wl_seat_interface, version, 1);
    else if (offered == zwp_virtual_keyboard_manager_v1_interface.name)
        m_virtualKeyboards = bind<zwp_virtual_keyboard_manager_v1>(
            registry, name, &zwp_virtual_keyboard_manager_v1_interface, version, 1);
    else if (offered == zwlr_virtual_pointer_manager_v1_interface.name)
        m_virtualPointers = bind<zwlr_virtual_pointer_manager_v1>(
            registry, name, &zwlr_virtual_pointer_manager_v1_interface, version, 2);
    else if (offered == zwlr_data_control_manager_v1_interface.name)
        m_dataControl = bind<zwlr_data_control_manager_v1>(
            registry, name, &zwlr_data_control_manager_v1_interface, version, 1);
    else if (offered == org_kde_kwin_fake_input_interface.name && version >= 4)
        m_kdeFakeInput = bind<org_kde_kwin_fake_input>(
            registry, name, &org_kde_kwin_fake_input_interface, version, 4);
    else
        return false;
    return true;
}

void WaylandConnection::describeOutput(Output& output)
{
    if (!m_xdgOutputs || output.xdgOutput) return;
    output.xdgOutput = zxdg_output_manager_v1_get_xdg_output(m_xdgOutputs, output.output);
    zxdg_output_v1_add_listener(output.xdgOutput, &xdgOutputListener, &output);
}

void WaylandConnection::removeGlobal(std::uint32_t name)
{
    auto gone = std::find_if(m_outputs.begin(), m_outputs.end(),
                             [name](const auto& o) { return o->globalName == name; });
    if (gone == m_outputs.end()) return;
    if ((*gone)->xdgOutput) zxdg_output_v1_destroy((*gone)->xdgOutput);
    wl_output_destroy((*gone)->output);
    m_outputs.erase(gone);
}

Rect Output::rect() const
{
    // A quarter turn swaps the output's width and height on the desktop.
    const bool turned = transform % 2 == 1;
    return {position.x, position.y, turned ? modeHeight : modeWidth,
            turned ? modeWidth : modeHeight};
}

WaylandConnection* WaylandConnection::shared()
{
    // A compositor too busy to answer in time is asked again at the next call, instead of
    // leaving the process without a connection for good.
    static std::mutex creating;
    static WaylandConnection* instance = nullptr;
    std::lock_guard<std::mutex> lock(creating);
    if (!instance) {
        wl_display* display = wl_display_connect(nullptr);
        if (!display) return nullptr;
        instance = new WaylandConnection(display);
        // The globals, then what the outputs say of themselves.
        if (!instance->roundtrip(kFirstAnswerMs) || !instance->roundtrip(kFirstAnswerMs)) {
            delete instance;
            instance = nullptr;
            return nullptr;
        }
    }
    if (wl_display_get_error(instance->display()) != 0) return nullptr;
    return instance;
}

WaylandConnection::WaylandConnection(wl_display* display) : m_display(display)
{
    m_registry = wl_display_get_registry(m_display);
    wl_registry_add_listener(m_registry, &registryListener, this);
}

WaylandConnection::~WaylandConnection()
{
    wl_display_disconnect(m_display);
}

bool WaylandConnection::dispatchUntil(const std::function<bool()>& done, int timeoutMs)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!done()) {
        while (wl_display_prepare_read(m_display) != 0)
            if (wl_display_dispatch_pending(m_display) < 0) return false;
        if (done()) {
            wl_display_cancel_read(m_display);
            return true;
        }
        wl_display_flush(m_display);
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd fd{wl_display_get_fd(m_display), POLLIN, 0};
        if (left <= 0 || poll(&fd, 1, int(left)) <= 0) {
            wl_display_cancel_read(m_display);
            return false;
        }
        if (wl_display_read_events(m_display) < 0) return false;
        if (wl_display_dispatch_pending(m_display) < 0) return false;
    }
    return true;
}

bool WaylandConnection::roundtrip(int timeoutMs)
{
    static const wl_callback_listener doneListener = {
        [](void* data, wl_callback*, uint32_t) { *static_cast<bool*>(data) = true; },
    };
    bool answered = false;
    wl_callback* sync = wl_display_sync(m_display);
    wl_callback_add_listener(sync, &doneListener, &answered);
    const bool ok = dispatchUntil([&answered] { return answered; }, timeoutMs);
    wl_callback_destroy(sync);
    return ok;
}

} // namespace zelmor::platform::wayland
