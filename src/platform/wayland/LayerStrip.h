#pragma once

#include "../ScreenStrip.h"

#include <cstdint>
#include <vector>

struct wl_buffer;
struct wl_compositor;
struct wl_display;
struct wl_output;
struct wl_pointer;
struct wl_registry;
struct wl_seat;
struct wl_shm;
struct wl_surface;
struct zwlr_layer_shell_v1;
struct zwlr_layer_surface_v1;

namespace zelmor::platform::wayland {

// The strip as a surface in the desktop's overlay layer (wlr-layer-shell), on a connection of
// its own: the toolkit's windows cannot have that role, and the shared connection is only
// served while a grab waits.
class LayerStrip final : public ScreenStrip
{
public:
    // Null where the compositor offers no layer shell.
    static std::unique_ptr<LayerStrip> create(Point place, PointerCallback onPointer);
    ~LayerStrip() override;

    void show(const std::uint32_t* pixels, int width, int height, int stride, int scale) override;
    int descriptor() const override;
    bool dispatch() override;

    // The listeners' entry points.
    void bindGlobal(wl_registry* registry, std::uint32_t name, const char* interface,
                    std::uint32_t version);
    void configured(std::uint32_t serial);
    void closed();
    void released(wl_buffer* buffer);
    void seatCapabilities(std::uint32_t capabilities);
    void pointer(StripPointer::Kind kind, Point position);
    void pointerMoved(Point position);

private:
    struct Buffer
    {
        wl_buffer* buffer = nullptr;
        std::uint32_t* pixels = nullptr;
        bool busy = false;
    };

    LayerStrip(wl_display* display, Point place, PointerCallback onPointer);
    void makeSurface();
    void makeBuffers();
    void dropBuffers();
    void present();

    wl_display* m_display = nullptr;
    wl_registry* m_registry = nullptr;
    wl_compositor* m_compositor = nullptr;
    wl_shm* m_shm = nullptr;
    wl_seat* m_seat = nullptr;
    wl_pointer* m_pointer = nullptr;
    zwlr_layer_shell_v1* m_layerShell = nullptr;
    std::uint32_t m_outputName = 0; // the global of the output under `m_place`
    wl_output* m_output = nullptr;
    Point m_outputPosition;
    Point m_place;
    PointerCallback m_onPointer;
    Point m_lastPointer;

    wl_surface* m_surface = nullptr;
    zwlr_layer_surface_v1* m_layer = nullptr;
    bool m_configured = false;
    bool m_closed = false;

    // The picture waiting for a free buffer, in device pixels.
    std::vector<std::uint32_t> m_picture;
    int m_width = 0;
    int m_height = 0;
    int m_scale = 1;
    bool m_pending = false;
    Buffer m_buffers[2];
    void* m_mapping = nullptr;
    std::size_t m_mappingBytes = 0;
    int m_bufferWidth = 0;
    int m_bufferHeight = 0;
};

} // namespace zelmor::platform::wayland
