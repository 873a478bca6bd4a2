// Screen copies through the compositor's wlr-screencopy protocol into shared memory, monitors
// from wl_output and xdg-output (X11: the root window and RandR; Windows: BitBlt and
// EnumDisplayMonitors).

#include "ScreenGrabWayland.h"
#include "../Pixels.h"
#include "ScreenStream.h"
#include "WaylandConnection.h"
#include "portal/ScreenshotPortal.h"

#include "wlr-screencopy-unstable-v1-client-protocol.h"

#include <wayland-client.h>

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

namespace zelmor::platform::wayland {

namespace {

constexpr int kFrameTimeoutMs = 3000;

// One shared-memory buffer, kept for the next grab of the same shape.
class ShmBuffer
{
public:
    ~ShmBuffer() { release(); }

    bool fits(std::uint32_t format, int width, int height, int stride) const
    {
        return m_buffer && m_format == format && m_width == width && m_height == height &&
               m_stride == stride;
    }

    bool reserve(wl_shm* shm, std::uint32_t format, int width, int height, int stride)
    {
        if (fits(format, width, height, stride)) return true;
        release();
        const std::size_t bytes = std::size_t(stride) * height;
        m_fd = memfd_create("zelmor-screencopy", MFD_CLOEXEC);
        if (m_fd < 0 || ftruncate(m_fd, off_t(bytes)) != 0) return release(), false;
        void* data = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, m_fd, 0);
        if (data == MAP_FAILED) return release(), false;
        m_data = static_cast<std::uint8_t*>(data);
        m_bytes = bytes;
        wl_shm_pool* pool = wl_shm_create_pool(shm, m_fd, int(bytes));
        m_buffer = wl_shm_pool_create_buffer(pool, 0, width, height, stride, format);
        wl_shm_pool_destroy(pool);
        m_format = format;
        m_width = width;
        m_height = height;
        m_stride = stride;
        return true;
    }

    wl_buffer* buffer() const { return m_buffer; }
    const std::uint8_t* data() const { return m_data; }

private:
    void release()
    {
        if (m_buffer) wl_buffer_destroy(m_buffer);
        if (m_data) munmap(m_data, m_bytes);
        if (m_fd >= 0) close(m_fd);
        m_buffer = nullptr;
        m_data = nullptr;
        m_fd = -1;
    }

    int m_fd = -1;
    std::uint8_t* m_data = nullptr;
    std::size_t m_bytes = 0;
    wl_buffer* m_buffer = nullptr;
    std::uint32_t m_format = 0;
    int m_width = 0;
    int m_height = 0;
    int m_stride = 0;
};

// What the compositor says of one frame.
struct Frame
{
    std::uint32_t format = 0;
    int width = 0;
    int height = 0;
    int stride = 0;
    bool offered = false; // a wl_shm buffer fits
    bool announced = false;
    std::uint32_t flags = 0;
    bool ready = false;
    bool failed = false;
};

Frame& frameOf(void* data)
{
    return *static_cast<Frame*>(data);
}

const zwlr_screencopy_frame_v1_listener frameListener = {
    [](void* data, zwlr_screencopy_frame_v1*, uint32_t format, uint32_t width, uint32_t height,
       uint32_t stride) {
        Frame& f = frameOf(data);
        f = {format, int(width), int(height), int(stride), true};
    },
    [](void* data, zwlr_screencopy_frame_v1*, uint32_t flags) { frameOf(data).flags = flags; },
    [](void* data, zwlr_screencopy_frame_v1*, uint32_t, uint32_t, uint32_t) {
        frameOf(data).ready = true;
    },
    [](void* data, zwlr_screencopy_frame_v1*) { frameOf(data).failed = true; },
    [](void*, zwlr_screencopy_frame_v1*, uint32_t, uint32_t, uint32_t, uint32_t) {},
    [](void*, zwlr_screencopy_frame_v1*, uint32_t, uint32_t, uint32_t) {},
    [](void* data, zwlr_screencopy_frame_v1*) { frameOf(data).announced = true; },
};

// 32-bit formats only; the red and blue places of each.
bool readableFormat(std::uint32_t format, bool* swapRedBlue)
{
    switch (format) {
    case WL_SHM_FORMAT_XRGB8888:
    case WL_SHM_FORMAT_ARGB8888:
        *swapRedBlue = false;
        return true;
    case WL_SHM_FORMAT_XBGR8888:
    case WL_SHM_FORMAT_ABGR8888:
        *swapRedBlue = true;
        return true;
    default:
        return false;
    }
}

void copyPixels(const std::uint8_t* src, const Frame& frame, const Rect& part, std::uint32_t* dest,
                int destStride, bool swapRedBlue)
{
    const bool inverted = frame.flags & ZWLR_SCREENCOPY_FRAME_V1_FLAGS_Y_INVERT;
    for (int row = 0; row < part.height; ++row) {
        const int y = part.y + row;
        const auto* in =
            reinterpret_cast<const std::uint32_t*>(
                src + std::size_t(inverted ? frame.height - 1 - y : y) * frame.stride) +
            part.x;
        std::uint32_t* out = dest + std::size_t(row) * destStride;
        for (int col = 0; col < part.width; ++col) {
            const std::uint32_t p = in[col];
            out[col] = kOpaque |
                       (swapRedBlue ? ((p & 0xff) << 16) | (p & 0xff00) | ((p >> 16) & 0xff) : p);
        }
    }
}

ShmBuffer& shmBuffer()
{
    static ShmBuffer buffer;
    return buffer;
}

// Copies `local`, a rectangle in the output's own pixels, into `dest`. Where one output pixel
// is one logical pixel the compositor copies the rectangle alone, else the whole output.
bool grabFromOutput(WaylandConnection& c, const Output& output, const Rect& local,
                    std::uint32_t* dest, int destStride)
{
    const bool plain = output.scale == 1 && output.transform == WL_OUTPUT_TRANSFORM_NORMAL;
    Frame frame;
    zwlr_screencopy_frame_v1* handle =
        plain ? zwlr_screencopy_manager_v1_capture_output_region(
                    c.screencopy(), 0, output.output, local.x, local.y, local.width, local.height)
              : zwlr_screencopy_manager_v1_capture_output(c.screencopy(), 0, output.output);
    zwlr_screencopy_frame_v1_add_listener(handle, &frameListener, &frame);
    // Before version 3 the shared-memory buffer is all there is, and nothing ends the list.
    const bool listEnds = zwlr_screencopy_frame_v1_get_version(handle) >= 3;
    bool ok = c.dispatchUntil(
        [&frame, listEnds] { return frame.failed || (listEnds ? frame.announced : frame.offered); },
        kFrameTimeoutMs);
    bool swapRedBlue = false;
    ok = ok && !frame.failed && frame.offered && readableFormat(frame.format, &swapRedBlue) &&
         frame.stride >= frame.width * 4 &&
         shmBuffer().reserve(c.shm(), frame.format, frame.width, frame.height, frame.stride);
    if (ok) {
        zwlr_screencopy_frame_v1_copy(handle, shmBuffer().buffer());
        ok = c.dispatchUntil([&frame] { return frame.ready || frame.failed; }, kFrameTimeoutMs) &&
             frame.ready;
    }
    zwlr_screencopy_frame_v1_destroy(handle);
    if (!ok) return false;
    // The region came as it was asked for; the whole output is cut to it here.
    const Rect part = plain ? Rect{0, 0, local.width, local.height} : local;
    if (part.right() > frame.width || part.bottom() > frame.height) return false;
    copyPixels(shmBuffer().data(), frame, part, dest, destStride, swapRedBlue);
    return true;
}

} // namespace

std::vector<MonitorInfo> listMonitors()
{
    WaylandConnection* c = WaylandConnection::shared();
    if (!c) return {};
    std::lock_guard<std::mutex> lock(c->mutex);
    c->roundtrip(); // outputs that came or went since
    std::vector<MonitorInfo> monitors;
    for (const auto& output : c->outputs())
        if (!output->rect().isEmpty()) monitors.push_back({output->name, output->rect()});
    return monitors;
}

bool screencopyAvailable()
{
    WaylandConnection* c = WaylandConnection::shared();
    return c && c->screencopy() && c->shm();
}

bool grabDesktopRect(const Rect& rect, std::uint32_t* dest, int destStride, GrabMethod method)
{
    WaylandConnection* c = WaylandConnection::shared();
    if (!c || rect.isEmpty() || !dest || destStride < rect.width) return false;
    if (method == GrabMethod::Portal || !c->screencopy() || !c->shm()) {
        if (method == GrabMethod::SharedMemory) return false;
        // An open stream of the screen (a recording's) serves at once, asking nobody.
        if (method != GrabMethod::Portal && grabFromScreenStream(rect, dest, destStride))
            return true;
        if (!screenshotPortalAvailable()) return false;
        Rect desktop;
        for (const MonitorInfo& m : listMonitors())
            desktop = united(desktop, m.rect);
        return grabThroughScreenshotPortal(rect, desktop, dest, destStride);
    }
    std::lock_guard<std::mutex> lock(c->mutex);
    fillBlack(dest, destStride, rect.width, rect.height);
    for (const auto& output : c->outputs()) {
        const Rect desktop = output->rect();
        const Rect inside = intersected(rect, desktop);
        if (inside.isEmpty()) continue;
        const Rect local{inside.x - desktop.x, inside.y - desktop.y, inside.width, inside.height};
        std::uint32_t* target =
            dest + std::size_t(inside.y - rect.y) * destStride + (inside.x - rect.x);
        if (!grabFromOutput(*c, *output, local, target, destStride)) return false;
    }
    return true;
}

} // namespace zelmor::platform::wayland
