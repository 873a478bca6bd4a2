#pragma once

#include <QImage>
#include <QString>
#include <QStringList>

#include <optional>

namespace zelmor::core {

// The desktop's clipboard, reached directly where the toolkit's clipboard would need a focus
// this program may not have: a Wayland compositor with a data-control protocol. Elsewhere the
// toolkit's clipboard serves.

// False on a Wayland desktop that hands the clipboard to the focused program only: without a
// window in focus nothing can be read or copied there.
bool clipboardWithoutFocus();

void setClipboardText(const QString& text);
void setClipboardImage(const QImage& image);
// The files themselves, as a file manager copies them: they paste as files, not as their content.
void setClipboardFiles(const QStringList& paths);

// Nullopt when the clipboard holds no text.
std::optional<QString> clipboardText();
// Null when the clipboard holds no picture.
QImage clipboardImage();

} // namespace zelmor::core
