#pragma once

namespace zelmor::core {

// The process-wide dark-theme flag, written when a theme is applied and read by windows
// that style themselves (the toast, the task card). False until a theme was applied.
bool isDarkTheme();
bool darkThemeEverSet();
void setDarkTheme(bool dark);

} // namespace zelmor::core
