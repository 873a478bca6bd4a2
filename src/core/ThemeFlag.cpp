#include "ThemeFlag.h"

namespace zelmor::core {

namespace {
bool dark = false;
bool everSet = false;
} // namespace

bool isDarkTheme()
{
    return dark;
}

bool darkThemeEverSet()
{
    return everSet;
}

void setDarkTheme(bool isDark)
{
    dark = isDark;
    everSet = true;
}

} // namespace zelmor::core
