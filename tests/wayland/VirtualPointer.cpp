// Drags with the left button on a wlroots compositor through a virtual pointer, as a user's
// mouse would: the Wayland session has no input device of its own.
//   zelmor-wl-drag X1 Y1 X2 Y2 WIDTH HEIGHT   (WIDTH x HEIGHT: the layout's extent)

#include "wlr-virtual-pointer-unstable-v1-client-protocol.h"

#include <wayland-client.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace {

constexpr std::uint32_t kLeftButton = 0x110; // BTN_LEFT
zwlr_virtual_pointer_manager_v1* manager = nullptr;

const wl_registry_listener registryListener = {
    [](void*, wl_registry* registry, uint32_t name, const char* interface, uint32_t) {
        if (std::strcmp(interface, zwlr_virtual_pointer_manager_v1_interface.name) == 0)
            manager = static_cast<zwlr_virtual_pointer_manager_v1*>(
                wl_registry_bind(registry, name, &zwlr_virtual_pointer_manager_v1_interface, 1));
    },
    [](void*, wl_registry*, uint32_t) {},
};

std::uint32_t now()
{
    using namespace std::chrono;
    return std::uint32_t(
        duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

void pause(wl_display* display, int ms)
{
    wl_display_roundtrip(display);
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 7) {
        std::fprintf(stderr, "usage: %s X1 Y1 X2 Y2 WIDTH HEIGHT\n", argv[0]);
        return 2;
    }
    int v[6];
    for (int i = 0; i < 6; ++i)
        v[i] = std::atoi(argv[i + 1]);
    wl_display* display = wl_display_connect(nullptr);
    if (!display) return std::fprintf(stderr, "no Wayland display\n"), 1;
    wl_registry_add_listener(wl_display_get_registry(display), &registryListener, nullptr);
    wl_display_roundtrip(display);
    if (!manager) return std::fprintf(stderr, "no zwlr_virtual_pointer_manager_v1\n"), 1;
    zwlr_virtual_pointer_v1* pointer =
        zwlr_virtual_pointer_manager_v1_create_virtual_pointer(manager, nullptr);
    // Clients learn of the new pointer first.
    pause(display, 300);
    const auto moveTo = [&](int x, int y) {
        zwlr_virtual_pointer_v1_motion_absolute(pointer, now(), x, y, v[4], v[5]);
        zwlr_virtual_pointer_v1_frame(pointer);
        pause(display, 20);
    };
    const auto button = [&](bool down) {
        zwlr_virtual_pointer_v1_button(pointer, now(), kLeftButton,
                                       down ? WL_POINTER_BUTTON_STATE_PRESSED
                                            : WL_POINTER_BUTTON_STATE_RELEASED);
        zwlr_virtual_pointer_v1_frame(pointer);
        pause(display, 50);
    };
    moveTo(v[0], v[1]);
    button(true);
    constexpr int kSteps = 10;
    for (int i = 1; i <= kSteps; ++i)
        moveTo(v[0] + (v[2] - v[0]) * i / kSteps, v[1] + (v[3] - v[1]) * i / kSteps);
    button(false);
    zwlr_virtual_pointer_v1_destroy(pointer);
    wl_display_roundtrip(display);
    wl_display_disconnect(display);
    return 0;
}
