#pragma once

#include <QString>

class QPixmap;

namespace zelmor::service::capture {

// A free path in `dir` named by `pattern` with {date} and {time} filled in; a name that is
// taken gets _001, _002 and so on. The folder is created when missing.
QString makeOutputPath(const QString& dir, const QString& pattern, const QString& extension);

// Written atomically, in `format` or else the suffix's; false for a null pixmap or a failed
// write, which leaves no file behind.
bool savePixmapFile(const QPixmap& pixmap, const QString& path, const char* format = nullptr,
                    int quality = -1);

} // namespace zelmor::service::capture
