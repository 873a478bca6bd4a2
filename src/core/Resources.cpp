#include "core/Resources.h"

#include <QtGlobal>

// Q_INIT_RESOURCE declares a global symbol, so it must be expanded outside any namespace.
static void initIconResources()
{
    Q_INIT_RESOURCE(icons);
}

namespace zelmor::core {

void initResources()
{
    initIconResources();
}

} // namespace zelmor::core
