#include "OutputFile.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QPixmap>
#include <QSaveFile>

namespace zelmor::service::capture {

QString makeOutputPath(const QString& dir, const QString& pattern, const QString& extension)
{
    QDir folder(dir);
    if (!dir.isEmpty() && !folder.exists()) QDir(dir).mkpath(QStringLiteral("."));

    const QDateTime now = QDateTime::currentDateTime();
    QString base = pattern;
    base.replace(QLatin1String("{date}"), now.toString(QStringLiteral("yyyy-MM-dd")));
    base.replace(QLatin1String("{time}"), now.toString(QStringLiteral("hh-mm-ss-zzz")));

    QString candidate = base + QLatin1Char('.') + extension;
    for (int n = 1; folder.exists(candidate); ++n)
        candidate =
            QStringLiteral("%1_%2.%3").arg(base).arg(n, 3, 10, QLatin1Char('0')).arg(extension);
    return folder.absoluteFilePath(candidate);
}

bool savePixmapFile(const QPixmap& pixmap, const QString& path, const char* format, int quality)
{
    if (pixmap.isNull()) return false;
    // Whole or not at all: a watcher never reads half a picture, and a full disk leaves none.
    QSaveFile file(path);
    const QByteArray suffix = QFileInfo(path).suffix().toLower().toLatin1();
    return file.open(QIODevice::WriteOnly) &&
           pixmap.save(&file, format ? format : suffix.constData(), quality) && file.commit();
}

} // namespace zelmor::service::capture
