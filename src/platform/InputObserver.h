#pragma once

#include "Geometry.h"

#include <functional>
#include <memory>

namespace zelmor::platform {

// One event seen system-wide, in the terms of the Windows low-level hooks.
struct ObservedInput
{
    static constexpr unsigned MouseMove = 512;
    static constexpr unsigned LeftButtonDown = 513;
    static constexpr unsigned LeftButtonUp = 514;
    static constexpr unsigned RightButtonDown = 516;
    static constexpr unsigned RightButtonUp = 517;
    static constexpr unsigned MiddleButtonDown = 519;
    static constexpr unsigned MiddleButtonUp = 520;
    static constexpr unsigned KeyDown = 256;

    unsigned message = 0;
    Point position;          // pointer events: the pointer, physical desktop pixels
    unsigned virtualKey = 0; // keys: left and right modifiers have codes of their own
};

// What an observer reports; motion is a flood, so only those who need it ask for it.
enum ObservedKind : unsigned {
    ButtonPresses = 1,
    ButtonReleases = 2,
    PointerMotion = 4,
    KeyPresses = 8,
};

// Watches the session's pointer and key events on a connection and a thread of its own,
// taking none of them away from their targets. Keys pressed while Alt is held, and Alt itself,
// are left out, as a Windows hook sees those as system keys.
class InputObserver
{
public:
    using Callback = std::function<void(const ObservedInput&)>;

    virtual ~InputObserver() = default; // stops
    // Returns once no callback runs any more; later calls do nothing.
    virtual void stop() = 0;
};

// Starts observing the `kinds` (ObservedKind flags); `callback` runs on the observer's thread.
// Null where the session offers no source of global input.
std::unique_ptr<InputObserver> observeInput(unsigned kinds, InputObserver::Callback callback);

} // namespace zelmor::platform
