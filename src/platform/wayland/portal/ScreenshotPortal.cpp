// Single pictures from the desktop's Screenshot portal, where the compositor lets no client
// copy the screen itself (KDE, GNOME).

#include "ScreenshotPortal.h"
#include "../../Pixels.h"
#include "PortalRequest.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QStandardPaths>
#include <QUrl>

#include <atomic>
#include <mutex>

namespace zelmor::platform::wayland {

namespace {

const QString kScreenshot = QStringLiteral("org.freedesktop.portal.Screenshot");
// The portal may ask the user first, and some ask every time.
constexpr int kAnswerTimeoutMs = 30000;
// The grabs of one capture (one per output) come within this time of each other.
constexpr qint64 kPictureLifeMs = 1000;

std::mutex pictureMutex;
QImage picture;
QElapsedTimer pictureAge;
thread_local bool asking = false;
std::atomic<PortalAnswer> lastAnswer{PortalAnswer::Granted};

PortalAnswer answerOf(PortalOutcome outcome)
{
    switch (outcome) {
    case PortalOutcome::Granted:
        return PortalAnswer::Granted;
    case PortalOutcome::Cancelled:
        return PortalAnswer::Refused;
    case PortalOutcome::NoAnswer:
        return PortalAnswer::NoAnswer;
    case PortalOutcome::Failed:
    case PortalOutcome::NoPortal:
        break;
    }
    return PortalAnswer::Failed;
}

QImage askForPicture()
{
    // KDE's portal saves the picture into the Pictures folder and fails where there is none.
    QDir().mkpath(QStandardPaths::writableLocation(QStandardPaths::PicturesLocation));
    const PortalReply reply =
        callPortal(kScreenshot, QStringLiteral("Screenshot"),
                   {QString(), QVariantMap{{QStringLiteral("interactive"), false},
                                           {QStringLiteral("modal"), false}}},
                   kAnswerTimeoutMs);
    lastAnswer = answerOf(reply.outcome);
    if (reply.outcome != PortalOutcome::Granted) return {};
    const QUrl uri(reply.results.value(QStringLiteral("uri")).toString());
    QImage image;
    if (uri.isLocalFile()) {
        image.load(uri.toLocalFile());
        // Written for this grab alone: no second copy of the screen is left behind.
        QFile::remove(uri.toLocalFile());
    }
    if (image.isNull()) lastAnswer = PortalAnswer::Failed;
    return image.convertToFormat(QImage::Format_RGB32);
}

} // namespace

bool screenshotPortalAvailable()
{
    return portalOffers(kScreenshot);
}

PortalAnswer lastScreenshotAnswer()
{
    return lastAnswer;
}

bool grabThroughScreenshotPortal(const Rect& rect, const Rect& desktop, std::uint32_t* dest,
                                 int destStride)
{
    // A grab asked for from within the wait for the portal's answer would wait on itself.
    if (asking || rect.isEmpty() || desktop.isEmpty() || !dest || destStride < rect.width)
        return false;
    std::lock_guard<std::mutex> lock(pictureMutex);
    if (picture.isNull() || !pictureAge.isValid() || pictureAge.elapsed() > kPictureLifeMs) {
        asking = true;
        picture = askForPicture();
        asking = false;
        pictureAge.start();
        if (picture.isNull()) return false;
        // A picture in other pixels than the outputs' (a scaled desktop) is fitted to them.
        if (picture.width() != desktop.width || picture.height() != desktop.height)
            picture = picture.scaled(desktop.width, desktop.height, Qt::IgnoreAspectRatio,
                                     Qt::SmoothTransformation);
    }
    if (picture.isNull()) return false;
    copyFromPicture(reinterpret_cast<const std::uint32_t*>(picture.constBits()),
                    int(picture.bytesPerLine() / 4), desktop, rect, dest, destStride);
    return true;
}

} // namespace zelmor::platform::wayland
