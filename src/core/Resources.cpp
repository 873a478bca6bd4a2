#include "core/Resources.h"

#include "platform/Memory.h"

#include <QImageReader>
#include <QtGlobal>

#include <algorithm>
#include <climits>

// Q_INIT_RESOURCE declares a global symbol, so it must be expanded outside any namespace.
static void initIconResources()
{
    Q_INIT_RESOURCE(icons);
}

namespace zelmor::core {

namespace {

// A decoded picture may take this share of the memory available at start.
constexpr double kPictureMemoryShare = 0.4;
constexpr int kQtDefaultLimitMiB = 128;

} // namespace

void initResources()
{
    initIconResources();
    const auto mib = qint64(double(platform::availableMemoryBytes()) * kPictureMemoryShare) >> 20;
    QImageReader::setAllocationLimit(int(std::clamp<qint64>(mib, kQtDefaultLimitMiB, INT_MAX)));
}

} // namespace zelmor::core
