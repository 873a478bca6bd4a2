#include "LayerStrip.h"

#include "../Session.h"
#include "WaylandConnection.h"

#include "wlr-layer-shell-unstable-v1-client-protocol.h"

#include <wayland-client.h>

#include <poll.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string_view>

namespace zelmor::platform {

std::unique_ptr<ScreenStrip> makeScreenStrip(Point place, ScreenStrip::PointerCallback onPointer)
{
    if (displayServer() != DisplayServer::Wayland) return nullptr;
    return wayland::LayerStrip::create(place, std::move(onPointer));
}

namespace wayland {

namespace {

constexpr std::uint32_t kCompositorVersion = 4; // buffer scale
constexpr std::uint32_t kLayerShellVersion = 1;

LayerStrip& stripOf(void* data)
{
    return *static_cast<LayerStrip*>(data);
}

Point pointOf(wl_fixed_t x, wl_fixed_t y)
{
    return {wl_fixed_to_int(x), wl_fixed_to_int(y)};
}

const wl_registry_listener registryListener = {
    [](void* data, wl_registry* registry, uint32_t name, const char* interface, uint32_t version) {
        stripOf(data).bindGlobal(registry, name, interface, version);
    },
    [](void*, wl_registry*, uint32_t) {},
};

const zwlr_layer_surface_v1_listener layerListener = {
    [](void* data, zwlr_layer_surface_v1*, uint32_t serial, uint32_t, uint32_t) {
        stripOf(data).configured(serial);
    },
    [](void* data, zwlr_layer_surface_v1*) { stripOf(data).closed(); },
};

const wl_buffer_listener bufferListener = {
    [](void* data, wl_buffer* buffer) { stripOf(data).released(buffer); },
};

const wl_seat_listener seatListener = {
    [](void* data, wl_seat*, uint32_t capabilities) {
        stripOf(data).seatCapabilities(capabilities);
    },
    [](void*, wl_seat*, const char*) {},
};

const wl_pointer_listener& pointerListener()
{
    static const wl_pointer_listener listener = [] {
        wl_pointer_listener l{};
        l.enter = [](void* data, wl_pointer*, uint32_t, wl_surface*, wl_fixed_t x, wl_fixed_t y) {
            stripOf(data).pointerMoved(pointOf(x, y));
        };
        l.leave = [](void* data, wl_pointer*, uint32_t, wl_surface*) {
            stripOf(data).pointer(StripPointer::Leave, {});
        };
        l.motion = [](void* data, wl_pointer*, uint32_t, wl_fixed_t x, wl_fixed_t y) {
            stripOf(data).pointerMoved(pointOf(x, y));
        };
        l.button = [](void* data, wl_pointer*, uint32_t, uint32_t, uint32_t button,
                      uint32_t state) {
            constexpr uint32_t kLeftButton = 0x110; // BTN_LEFT
            if (button != kLeftButton) return;
            stripOf(data).pointer(state == WL_POINTER_BUTTON_STATE_PRESSED ? StripPointer::Press
                                                                           : StripPointer::Release,
                                  {});
        };
        l.axis = [](void*, wl_pointer*, uint32_t, uint32_t, wl_fixed_t) {};
        return l;
    }();
    return listener;
}

} // namespace

std::unique_ptr<LayerStrip> LayerStrip::create(Point place, PointerCallback onPointer)
{
    wl_display* display = wl_display_connect(nullptr);
    if (!display) return nullptr;
    std::unique_ptr<LayerStrip> strip(new LayerStrip(display, place, std::move(onPointer)));
    wl_display_roundtrip(display);
    if (!strip->m_layerShell || !strip->m_compositor || !strip->m_shm) return nullptr;
    return strip;
}

LayerStrip::LayerStrip(wl_display* display, Point place, PointerCallback onPointer)
    : m_display(display), m_place(place), m_onPointer(std::move(onPointer))
{
    // The shared connection knows the outputs' logical places; their global names are the
    // same on every connection.
    if (WaylandConnection* shared = WaylandConnection::shared()) {
        std::lock_guard<std::mutex> lock(shared->mutex);
        for (const auto& output : shared->outputs()) {
            const Rect device = output->rect();
            const Rect logical{output->position.x, output->position.y, device.width / output->scale,
                               device.height / output->scale};
            if (!logical.contains(place)) continue;
            m_outputName = output->globalName;
            m_outputPosition = output->position;
        }
    }
    m_registry = wl_display_get_registry(m_display);
    wl_registry_add_listener(m_registry, &registryListener, this);
}

LayerStrip::~LayerStrip()
{
    dropBuffers();
    if (m_layer) zwlr_layer_surface_v1_destroy(m_layer);
    if (m_surface) wl_surface_destroy(m_surface);
    if (m_pointer) wl_pointer_destroy(m_pointer);
    if (m_seat) wl_seat_destroy(m_seat);
    if (m_output) wl_output_destroy(m_output);
    if (m_layerShell) zwlr_layer_shell_v1_destroy(m_layerShell);
    if (m_shm) wl_shm_destroy(m_shm);
    if (m_compositor) wl_compositor_destroy(m_compositor);
    wl_registry_destroy(m_registry);
    wl_display_disconnect(m_display);
}

void LayerStrip::bindGlobal(wl_registry* registry, std::uint32_t name, const char* interface,
                            std::uint32_t version)
{
    const std::string_view offered = interface;
    if (offered == wl_compositor_interface.name && version >= kCompositorVersion)
        m_compositor = static_cast<wl_compositor*>(
            wl_registry_bind(registry, name, &wl_compositor_interface, kCompositorVersion));
    else if (offered == wl_shm_interface.name)
        m_shm = static_cast<wl_shm*>(wl_registry_bind(registry, name, &wl_shm_interface, 1));
    else if (offered == zwlr_layer_shell_v1_interface.name)
        m_layerShell = static_cast<zwlr_layer_shell_v1*>(
            wl_registry_bind(registry, name, &zwlr_layer_shell_v1_interface, kLayerShellVersion));
    else if (offered == wl_output_interface.name && name == m_outputName)
        m_output =
            static_cast<wl_output*>(wl_registry_bind(registry, name, &wl_output_interface, 1));
    else if (offered == wl_seat_interface.name && !m_seat) {
        m_seat = static_cast<wl_seat*>(wl_registry_bind(registry, name, &wl_seat_interface, 1));
        wl_seat_add_listener(m_seat, &seatListener, this);
    }
}

// A virtual pointer that goes away takes the seat's pointer with it; a new one brings it back.
void LayerStrip::seatCapabilities(std::uint32_t capabilities)
{
    const bool hasPointer = capabilities & WL_SEAT_CAPABILITY_POINTER;
    if (hasPointer && !m_pointer) {
        m_pointer = wl_seat_get_pointer(m_seat);
        wl_pointer_add_listener(m_pointer, &pointerListener(), this);
    } else if (!hasPointer && m_pointer) {
        wl_pointer_destroy(m_pointer);
        m_pointer = nullptr;
    }
}

void LayerStrip::pointerMoved(Point position)
{
    m_lastPointer = position;
    pointer(StripPointer::Motion, position);
}

void LayerStrip::pointer(StripPointer::Kind kind, Point position)
{
    if (kind == StripPointer::Press || kind == StripPointer::Release) position = m_lastPointer;
    if (m_onPointer) m_onPointer({kind, position});
}

void LayerStrip::makeSurface()
{
    m_surface = wl_compositor_create_surface(m_compositor);
    m_layer = zwlr_layer_shell_v1_get_layer_surface(m_layerShell, m_surface, m_output,
                                                    ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY, "zelmor");
    zwlr_layer_surface_v1_add_listener(m_layer, &layerListener, this);
    zwlr_layer_surface_v1_set_anchor(m_layer, ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP |
                                                  ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT);
    zwlr_layer_surface_v1_set_margin(m_layer, m_place.y - m_outputPosition.y, 0, 0,
                                     m_place.x - m_outputPosition.x);
    // Neither pushed aside by panels nor pushing windows aside; the keyboard stays where it is.
    zwlr_layer_surface_v1_set_exclusive_zone(m_layer, -1);
    zwlr_layer_surface_v1_set_keyboard_interactivity(m_layer, 0);
}

void LayerStrip::show(const std::uint32_t* pixels, int width, int height, int stride, int scale)
{
    if (m_closed || width <= 0 || height <= 0) return;
    m_picture.resize(std::size_t(width) * height);
    for (int row = 0; row < height; ++row)
        std::copy_n(pixels + std::size_t(row) * stride, width,
                    m_picture.begin() + std::ptrdiff_t(row) * width);
    const bool resized = width != m_width || height != m_height || scale != m_scale;
    m_width = width;
    m_height = height;
    m_scale = std::max(scale, 1);
    m_pending = true;
    if (!m_surface) makeSurface();
    if (resized) {
        zwlr_layer_surface_v1_set_size(m_layer, m_width / m_scale, m_height / m_scale);
        if (!m_configured) wl_surface_commit(m_surface); // asks for the first configure
    }
    present();
    wl_display_flush(m_display);
}

void LayerStrip::configured(std::uint32_t serial)
{
    zwlr_layer_surface_v1_ack_configure(m_layer, serial);
    m_configured = true;
    present();
}

void LayerStrip::closed()
{
    m_closed = true;
    dropBuffers();
    zwlr_layer_surface_v1_destroy(m_layer);
    wl_surface_destroy(m_surface);
    m_layer = nullptr;
    m_surface = nullptr;
}

void LayerStrip::released(wl_buffer* buffer)
{
    for (Buffer& b : m_buffers)
        if (b.buffer == buffer) b.busy = false;
    present();
}

void LayerStrip::present()
{
    if (!m_configured || !m_pending || m_closed) return;
    if (m_width != m_bufferWidth || m_height != m_bufferHeight) makeBuffers();
    auto free = std::find_if(std::begin(m_buffers), std::end(m_buffers),
                             [](const Buffer& b) { return b.buffer && !b.busy; });
    if (free == std::end(m_buffers)) return; // a release brings it back here
    std::copy(m_picture.begin(), m_picture.end(), free->pixels);
    free->busy = true;
    m_pending = false;
    wl_surface_set_buffer_scale(m_surface, m_scale);
    wl_surface_attach(m_surface, free->buffer, 0, 0);
    wl_surface_damage(m_surface, 0, 0, m_width, m_height);
    wl_surface_commit(m_surface);
}

void LayerStrip::makeBuffers()
{
    dropBuffers();
    const std::size_t bytes = std::size_t(m_width) * m_height * 4;
    const int fd = memfd_create("zelmor-strip", MFD_CLOEXEC);
    if (fd < 0) return;
    if (ftruncate(fd, off_t(2 * bytes)) == 0) {
        void* data = mmap(nullptr, 2 * bytes, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
        if (data != MAP_FAILED) {
            m_mapping = data;
            m_mappingBytes = 2 * bytes;
            wl_shm_pool* pool = wl_shm_create_pool(m_shm, fd, int(2 * bytes));
            for (int i = 0; i < 2; ++i) {
                Buffer& b = m_buffers[i];
                b.buffer = wl_shm_pool_create_buffer(pool, int(i * bytes), m_width, m_height,
                                                     m_width * 4, WL_SHM_FORMAT_ARGB8888);
                b.pixels = static_cast<std::uint32_t*>(data) + i * bytes / 4;
                wl_buffer_add_listener(b.buffer, &bufferListener, this);
            }
            wl_shm_pool_destroy(pool);
            m_bufferWidth = m_width;
            m_bufferHeight = m_height;
        }
    }
    close(fd);
}

void LayerStrip::dropBuffers()
{
    for (Buffer& b : m_buffers) {
        if (b.buffer) wl_buffer_destroy(b.buffer);
        b = {};
    }
    if (m_mapping) munmap(m_mapping, m_mappingBytes);
    m_mapping = nullptr;
    m_bufferWidth = m_bufferHeight = 0;
}

int LayerStrip::descriptor() const
{
    return wl_display_get_fd(m_display);
}

bool LayerStrip::dispatch()
{
    if (wl_display_prepare_read(m_display) == 0) {
        pollfd fd{wl_display_get_fd(m_display), POLLIN, 0};
        if (poll(&fd, 1, 0) > 0)
            wl_display_read_events(m_display);
        else
            wl_display_cancel_read(m_display);
    }
    wl_display_dispatch_pending(m_display);
    wl_display_flush(m_display);
    return wl_display_get_error(m_display) == 0;
}

} // namespace wayland

} // namespace zelmor::platform
