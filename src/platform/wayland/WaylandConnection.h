#pragma once

#include "../Geometry.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

struct wl_display;
struct wl_output;
struct wl_registry;
struct wl_seat;
struct wl_shm;
struct org_kde_kwin_fake_input;
struct zwlr_data_control_manager_v1;
struct zwlr_virtual_pointer_manager_v1;
struct zwp_virtual_keyboard_manager_v1;
struct zwlr_screencopy_manager_v1;
struct zxdg_output_manager_v1;
struct zxdg_output_v1;

namespace zelmor::platform::wayland {

// One output as wl_output and xdg-output describe it.
struct Output
{
    std::uint32_t globalName = 0;
    wl_output* output = nullptr;
    zxdg_output_v1* xdgOutput = nullptr;
    std::string name;
    Point position; // logical, the same point as the toolkit's screen geometry
    int modeWidth = 0;
    int modeHeight = 0;
    int scale = 1;
    int transform = 0; // wl_output.transform

    // The top-left corner in the desktop's logical coordinates, the size in the output's
    // own pixels: the X11 edition's rectangle of a monitor, unscaled or scaled alike.
    Rect rect() const;
};

// A connection of our own to the compositor, beside the toolkit's: the platform layer knows
// nothing of the toolkit, and grabs may come from any thread (one at a time, under `mutex`).
class WaylandConnection
{
public:
    // Null when no compositor answers.
    static WaylandConnection* shared();
    ~WaylandConnection();

    std::mutex mutex;

    wl_display* display() const { return m_display; }
    wl_shm* shm() const { return m_shm; }
    zwlr_screencopy_manager_v1* screencopy() const { return m_screencopy; }
    const std::vector<std::unique_ptr<Output>>& outputs() const { return m_outputs; }
    // The desktop tools' globals; null where the compositor offers none.
    wl_seat* seat() const { return m_seat; }
    zwp_virtual_keyboard_manager_v1* virtualKeyboards() const { return m_virtualKeyboards; }
    zwlr_virtual_pointer_manager_v1* virtualPointers() const { return m_virtualPointers; }
    zwlr_data_control_manager_v1* dataControl() const { return m_dataControl; }
    org_kde_kwin_fake_input* kdeFakeInput() const { return m_kdeFakeInput; }

    // Serves events until `done` holds; false after `timeoutMs` or when the connection broke.
    bool dispatchUntil(const std::function<bool()>& done, int timeoutMs);
    // Lets every request so far be answered.
    bool roundtrip(int timeoutMs = 2000);

    // The registry's announcements.
    void bindGlobal(wl_registry* registry, std::uint32_t name, const char* interface,
                    std::uint32_t version);
    void removeGlobal(std::uint32_t name);

private:
    explicit WaylandConnection(wl_display* display);
    void describeOutput(Output& output);
    bool bindDesktopToolGlobal(wl_registry* registry, std::uint32_t name, const char* interface,
                               std::uint32_t version);

    wl_display* m_display = nullptr;
    wl_registry* m_registry = nullptr;
    wl_shm* m_shm = nullptr;
    zwlr_screencopy_manager_v1* m_screencopy = nullptr;
    zxdg_output_manager_v1* m_xdgOutputs = nullptr;
    wl_seat* m_seat = nullptr;
    zwp_virtual_keyboard_manager_v1* m_virtualKeyboards = nullptr;
    zwlr_virtual_pointer_manager_v1* m_virtualPointers = nullptr;
    zwlr_data_control_manager_v1* m_dataControl = nullptr;
    org_kde_kwin_fake_input* m_kdeFakeInput = nullptr;
    std::vector<std::unique_ptr<Output>> m_outputs;
};

} // namespace zelmor::platform::wayland
