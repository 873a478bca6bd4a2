#pragma once

#include <QByteArray>
#include <QString>

class QImage;
class QPixmap;

namespace zelmor::core {

// Path of an empty temporary file that stays on disk; the caller deletes it.
QString makeTempFilePath(const QString& extension);

// "1023 bytes", "1.5 KB", "10 KB": one decimal below 10 units, none from 10 on.
QString formatFileSize(qint64 bytes);

// A number from outside as an int: rounded towards zero, held to [-limit, limit], and 0 when
// it is not finite, so that no conversion overflows.
int boundedInt(double value, int limit = 1 << 30);

// Base64 of the image's PNG encoding.
QByteArray imageToBase64(const QImage& image);

// The image as PNG bytes; empty when it cannot be encoded.
QByteArray imageToPng(const QImage& image);

void copyPixmapToClipboard(const QPixmap& pixmap);
void copyTextToClipboard(const QString& text);

// The file name of one of the system's programs: "zelmor-mcp" becomes "zelmor-mcp.exe" on
// Windows.
QString executableFileName(const QString& baseName);

// Opens the file manager on the file's folder with the file selected; without a file manager
// that answers, opens the folder. False when neither could be asked.
bool showInFileManager(const QString& path);

} // namespace zelmor::core
