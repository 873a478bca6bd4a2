// Presses keys on KWin through its fake input interface, as a user's keyboard would (the
// headless session has none; KWin offers the interface with its permission checks off).
//   zelmor-kwin-keys CHORD...   (a chord: evdev key codes joined by '+', e.g. 29+64 Ctrl+F6)

#include "kde-fake-input-client-protocol.h"

#include <wayland-client.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

namespace {

org_kde_kwin_fake_input* input = nullptr;

const wl_registry_listener registryListener = {
    [](void*, wl_registry* registry, uint32_t name, const char* interface, uint32_t) {
        if (std::strcmp(interface, org_kde_kwin_fake_input_interface.name) == 0)
            input = static_cast<org_kde_kwin_fake_input*>(
                wl_registry_bind(registry, name, &org_kde_kwin_fake_input_interface, 4));
    },
    [](void*, wl_registry*, uint32_t) {},
};

} // namespace

int main(int argc, char** argv)
{
    wl_display* display = wl_display_connect(nullptr);
    if (!display) return std::fprintf(stderr, "no Wayland display\n"), 1;
    wl_registry_add_listener(wl_display_get_registry(display), &registryListener, nullptr);
    wl_display_roundtrip(display);
    if (!input) return std::fprintf(stderr, "no org_kde_kwin_fake_input\n"), 1;
    org_kde_kwin_fake_input_authenticate(input, "zelmor checks", "press keys");
    for (int i = 1; i < argc; ++i) {
        std::vector<unsigned> keys;
        for (char* p = argv[i]; *p; p += *p == '+')
            keys.push_back(unsigned(std::strtoul(p, &p, 10)));
        for (unsigned key : keys)
            org_kde_kwin_fake_input_keyboard_key(input, key, 1);
        for (auto key = keys.rbegin(); key != keys.rend(); ++key)
            org_kde_kwin_fake_input_keyboard_key(input, *key, 0);
        wl_display_roundtrip(display);
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    wl_display_disconnect(display);
    return 0;
}
