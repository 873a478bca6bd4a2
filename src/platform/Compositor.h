#pragma once

namespace zelmor::platform {

// Whether a compositing manager runs for the display's default screen. Only then do window
// pixels with alpha show what lies behind them; without one they show black. False without
// a display.
bool compositorRunning();

// A descriptor that becomes readable when a compositing manager may have started or stopped;
// compositorRunning() then tells the new state. -1 without a display.
int compositorChangeDescriptor();

} // namespace zelmor::platform
