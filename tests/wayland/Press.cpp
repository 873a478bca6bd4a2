// Plays a user's mouse and keyboard on a Wayland desktop, which has no input device of its own
// in the test sessions, through the desktop's virtual devices as the desktop tools reach them.
//   zelmor-wl-press drag X1 Y1 X2 Y2     a left-button drag in desktop coordinates
//   zelmor-wl-press keys VK...           each a chord of Windows virtual keys joined by '+'

#include "platform/Input.h"
#include "platform/Session.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

using namespace zelmor::platform;

namespace {

void pause(int ms)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

bool drag(const int* v)
{
    constexpr int kSteps = 10; // the overlay follows a moving pointer, not a jump
    bool ok = setCursorPosition({v[0], v[1]}) && sendMouseButtons({{MouseButton::Left, true}});
    for (int i = 1; ok && i <= kSteps; ++i, pause(20))
        ok = setCursorPosition(
            {v[0] + (v[2] - v[0]) * i / kSteps, v[1] + (v[3] - v[1]) * i / kSteps});
    return ok && sendMouseButtons({{MouseButton::Left, false}});
}

bool chord(char* keys)
{
    std::vector<KeyEvent> events;
    for (char* p = keys; *p; p += *p == '+')
        events.push_back({unsigned(std::strtoul(p, &p, 0)), true});
    for (auto key = events.rbegin(), end = events.rend(); key != end; ++key)
        events.push_back({key->virtualKey, false});
    return sendKeys(events);
}

} // namespace

int main(int argc, char** argv)
{
    setDisplayServer(DisplayServer::Wayland);
    bool ok = argc > 2;
    if (ok && std::strcmp(argv[1], "drag") == 0 && argc == 6) {
        int v[4];
        for (int i = 0; i < 4; ++i)
            v[i] = std::atoi(argv[i + 2]);
        ok = drag(v);
    } else if (ok && std::strcmp(argv[1], "keys") == 0) {
        for (int i = 2; ok && i < argc; ++i, pause(100))
            ok = chord(argv[i]);
    } else {
        return std::fprintf(stderr, "usage: %s drag X1 Y1 X2 Y2 | keys VK[+VK]...\n", argv[0]), 2;
    }
    if (!ok) std::fprintf(stderr, "%s: the desktop took no input\n", argv[0]);
    return ok ? 0 : 1;
}
