#include "Utilities.h"

#include "DesktopClipboard.h"

#include <QBuffer>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QPixmap>
#include <QProcess>
#include <QTemporaryFile>
#include <QUrl>

#ifndef Q_OS_WIN
#include <QDBusConnection>
#include <QDBusMessage>
#endif

#include <algorithm>
#include <cmath>

namespace zelmor::core {

QString makeTempFilePath(const QString& extension)
{
    QTemporaryFile file(QDir::tempPath() + QStringLiteral("/zelmor-XXXXXX.") + extension);
    file.setAutoRemove(false);
    file.open();
    const QString path = file.fileName();
    file.close();
    return path;
}

QString formatFileSize(qint64 bytes)
{
    constexpr qint64 KB = 1024, MB = KB * 1024, GB = MB * 1024;
    if (bytes < KB) return QString::number(bytes) + QStringLiteral(" bytes");
    const auto scaled = [bytes](qint64 divisor, const char* unit) -> QString {
        const double value = double(bytes) / double(divisor);
        return QString::number(value, 'f', value < 10 ? 1 : 0) + QLatin1Char(' ') +
               QLatin1String(unit);
    };
    if (bytes < MB) return scaled(KB, "KB");
    if (bytes < GB) return scaled(MB, "MB");
    return scaled(GB, "GB");
}

int boundedInt(double value, int limit)
{
    if (!std::isfinite(value)) return 0;
    return int(std::clamp(value, -double(limit), double(limit)));
}

QByteArray imageToBase64(const QImage& image)
{
    return imageToPng(image).toBase64();
}

QByteArray imageToPng(const QImage& image)
{
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG", -1);
    return png;
}

void copyPixmapToClipboard(const QPixmap& pixmap)
{
    setClipboardImage(pixmap.toImage());
}

void copyTextToClipboard(const QString& text)
{
    setClipboardText(text);
}

QString executableFileName(const QString& baseName)
{
#ifdef Q_OS_WIN
    return baseName + QStringLiteral(".exe");
#else
    return baseName;
#endif
}

#ifdef Q_OS_WIN
bool showInFileManager(const QString& path)
{
    return QProcess::startDetached(QStringLiteral("explorer.exe"),
                                   {QStringLiteral("/select,") +
                                    QDir::toNativeSeparators(QFileInfo(path).absoluteFilePath())});
}
#else
constexpr int kShowItemsTimeoutMs = 5000;

// Windows: explorer.exe "/select,PATH". A file manager that implements the freedesktop
// interface opens the folder with the item selected.
bool showInFileManager(const QString& path)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << QStringList{QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath())
                            .toString(QUrl::FullyEncoded)}
         << QString();
    const QDBusMessage reply =
        QDBusConnection::sessionBus().call(call, QDBus::Block, kShowItemsTimeoutMs);
    if (reply.type() == QDBusMessage::ReplyMessage) return true;
    return QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
}
#endif

} // namespace zelmor::core
