// Screen copies from the X root window (Windows: BitBlt from the screen DC with CAPTUREBLT),
// monitors from RandR 1.5 (Windows: EnumDisplayMonitors).

#include "ScreenGrabX11.h"
#include "../Pixels.h"
#include "X11Connection.h"

#include <sys/ipc.h>
#include <sys/shm.h>
#include <xcb/randr.h>
#include <xcb/shm.h>

#include <algorithm>
#include <cstdlib>
#include <mutex>

namespace zelmor::platform::x11 {

namespace {

Rect rootRect(X11Connection& x)
{
    return {0, 0, x.screen()->width_in_pixels, x.screen()->height_in_pixels};
}

// Only 24/32-bit TrueColor roots with 0xRRGGBB masks in 32-bit units can be copied as
// they are; anything else is left to the caller's fallback.
bool rootIsPlainRgb32(X11Connection& x)
{
    const xcb_setup_t* setup = xcb_get_setup(x.connection());
    if (setup->image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST) return false;
    const std::uint8_t depth = x.screen()->root_depth;
    if (depth != 24 && depth != 32) return false;
    bool bpp32 = false;
    for (auto f = xcb_setup_pixmap_formats_iterator(setup); f.rem; xcb_format_next(&f))
        if (f.data->depth == depth) bpp32 = f.data->bits_per_pixel == 32;
    if (!bpp32) return false;
    for (auto d = xcb_screen_allowed_depths_iterator(x.screen()); d.rem; xcb_depth_next(&d))
        for (auto v = xcb_depth_visuals_iterator(d.data); v.rem; xcb_visualtype_next(&v))
            if (v.data->visual_id == x.screen()->root_visual)
                return v.data->red_mask == 0xff0000 && v.data->green_mask == 0xff00 &&
                       v.data->blue_mask == 0xff;
    return false;
}

void copyOpaque(const std::uint8_t* src, int width, int height, std::uint32_t* dest, int destStride)
{
    const auto* pixels = reinterpret_cast<const std::uint32_t*>(src);
    for (int row = 0; row < height; ++row) {
        const std::uint32_t* in = pixels + std::size_t(row) * width;
        std::uint32_t* out = dest + std::size_t(row) * destStride;
        for (int col = 0; col < width; ++col)
            out[col] = in[col] | kOpaque;
    }
}

// One segment, reused while it is large enough; grabs from several threads take turns.
class SharedSegment
{
public:
    ~SharedSegment() { release(); }

    std::mutex mutex;

    bool reserve(X11Connection& x, std::size_t bytes)
    {
        if (m_address && m_size >= bytes) return true;
        release();
        const int id = shmget(IPC_PRIVATE, bytes, IPC_CREAT | 0600);
        if (id < 0) return false;
        void* address = shmat(id, nullptr, 0);
        if (address == reinterpret_cast<void*>(-1)) {
            shmctl(id, IPC_RMID, nullptr);
            return false;
        }
        const xcb_shm_seg_t seg = xcb_generate_id(x.connection());
        Reply<xcb_generic_error_t> error(
            xcb_request_check(x.connection(), xcb_shm_attach_checked(x.connection(), seg, id, 0)));
        // Marked for removal now, so the segment goes with the last detach even after a crash.
        shmctl(id, IPC_RMID, nullptr);
        if (error) {
            shmdt(address);
            return false;
        }
        m_connection = x.connection();
        m_segment = seg;
        m_address = static_cast<std::uint8_t*>(address);
        m_size = bytes;
        return true;
    }

    xcb_shm_seg_t segment() const { return m_segment; }
    const std::uint8_t* data() const { return m_address; }

private:
    void release()
    {
        if (!m_address) return;
        if (!xcb_connection_has_error(m_connection)) {
            xcb_shm_detach(m_connection, m_segment);
            xcb_flush(m_connection);
        }
        shmdt(m_address);
        m_address = nullptr;
        m_size = 0;
    }

    xcb_connection_t* m_connection = nullptr;
    xcb_shm_seg_t m_segment = 0;
    std::uint8_t* m_address = nullptr;
    std::size_t m_size = 0;
};

SharedSegment& sharedSegment()
{
    static SharedSegment segment;
    return segment;
}

bool shmExtensionPresent(X11Connection& x)
{
    static const bool present = [&x] {
        const xcb_query_extension_reply_t* ext =
            xcb_get_extension_data(x.connection(), &xcb_shm_id);
        if (!ext || !ext->present) return false;
        Reply<xcb_shm_query_version_reply_t> version(xcb_shm_query_version_reply(
            x.connection(), xcb_shm_query_version(x.connection()), nullptr));
        return version != nullptr;
    }();
    return present;
}

bool grabShared(X11Connection& x, const Rect& r, std::uint32_t* dest, int destStride)
{
    if (!shmExtensionPresent(x)) return false;
    SharedSegment& shm = sharedSegment();
    std::lock_guard<std::mutex> lock(shm.mutex);
    if (!shm.reserve(x, std::size_t(r.width) * r.height * 4)) return false;
    Reply<xcb_shm_get_image_reply_t> reply(xcb_shm_get_image_reply(
        x.connection(),
        xcb_shm_get_image(x.connection(), x.root(), r.x, r.y, r.width, r.height, ~0u,
                          XCB_IMAGE_FORMAT_Z_PIXMAP, shm.segment(), 0),
        nullptr));
    if (!reply) return false;
    copyOpaque(shm.data(), r.width, r.height, dest, destStride);
    return true;
}

bool grabPlain(X11Connection& x, const Rect& r, std::uint32_t* dest, int destStride)
{
    Reply<xcb_get_image_reply_t> reply(
        xcb_get_image_reply(x.connection(),
                            xcb_get_image(x.connection(), XCB_IMAGE_FORMAT_Z_PIXMAP, x.root(), r.x,
                                          r.y, r.width, r.height, ~0u),
                            nullptr));
    if (!reply || xcb_get_image_data_length(reply.get()) < r.width * r.height * 4) return false;
    copyOpaque(xcb_get_image_data(reply.get()), r.width, r.height, dest, destStride);
    return true;
}

bool allBlack(const std::uint32_t* pixels, int stride, int width, int height)
{
    for (int row = 0; row < height; ++row) {
        const std::uint32_t* line = pixels + std::size_t(row) * stride;
        if (std::any_of(line, line + width, [](std::uint32_t p) { return p != kOpaque; }))
            return false;
    }
    return true;
}

// Xwayland names its outputs XWAYLAND0, XWAYLAND1 …
bool servedByXwayland()
{
    const char* wayland = std::getenv("WAYLAND_DISPLAY");
    if (wayland && *wayland) return true;
    for (const MonitorInfo& m : listMonitors())
        if (m.name.rfind("XWAYLAND", 0) == 0) return true;
    return false;
}

} // namespace

std::vector<MonitorInfo> listMonitors()
{
    X11Connection* x = X11Connection::shared();
    if (!x) return {};
    std::vector<MonitorInfo> monitors;
    const xcb_query_extension_reply_t* randr =
        xcb_get_extension_data(x->connection(), &xcb_randr_id);
    if (randr && randr->present) {
        Reply<xcb_randr_get_monitors_reply_t> reply(xcb_randr_get_monitors_reply(
            x->connection(), xcb_randr_get_monitors(x->connection(), x->root(), 1), nullptr));
        if (reply) {
            for (auto it = xcb_randr_get_monitors_monitors_iterator(reply.get()); it.rem;
                 xcb_randr_monitor_info_next(&it))
                monitors.push_back({x->atomName(it.data->name),
                                    {it.data->x, it.data->y, it.data->width, it.data->height}});
        }
    }
    if (monitors.empty()) monitors.push_back({std::string(), rootRect(*x)});
    return monitors;
}

GrabBlocker screenGrabBlocker()
{
    static const GrabBlocker blocker =
        servedByXwayland() ? GrabBlocker::Xwayland : GrabBlocker::None;
    return blocker;
}

bool sharedMemoryGrabAvailable()
{
    X11Connection* x = X11Connection::shared();
    return x && shmExtensionPresent(*x);
}

bool grabDesktopRect(const Rect& rect, std::uint32_t* dest, int destStride, GrabMethod method)
{
    X11Connection* x = X11Connection::shared();
    if (!x || rect.isEmpty() || !dest || destStride < rect.width || !rootIsPlainRgb32(*x))
        return false;
    const Rect inside = intersected(rect, rootRect(*x));
    std::uint32_t* target =
        dest + std::size_t(inside.y - rect.y) * destStride + (inside.x - rect.x);
    if (!inside.isEmpty()) {
        bool ok = false;
        if (method != GrabMethod::Plain) ok = grabShared(*x, inside, target, destStride);
        if (!ok && method != GrabMethod::SharedMemory)
            ok = grabPlain(*x, inside, target, destStride);
        if (!ok) return false;
        if (screenGrabBlocker() == GrabBlocker::Xwayland &&
            allBlack(target, destStride, inside.width, inside.height))
            return false;
    }
    if (inside.width == rect.width && inside.height == rect.height) return true;
    // Paint the uncovered bands around the copied part black.
    for (int row = 0; row < rect.height; ++row) {
        const int y = rect.y + row;
        std::uint32_t* line = dest + std::size_t(row) * destStride;
        if (inside.isEmpty() || y < inside.y || y >= inside.bottom()) {
            fillBlack(line, destStride, rect.width, 1);
            continue;
        }
        fillBlack(line, destStride, inside.x - rect.x, 1);
        fillBlack(line + (inside.right() - rect.x), destStride, rect.right() - inside.right(), 1);
    }
    return true;
}

} // namespace zelmor::platform::x11
