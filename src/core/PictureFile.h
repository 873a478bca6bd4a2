#pragma once

#include <QImage>
#include <QSize>
#include <QString>

class QIODevice;

namespace zelmor::core {

// A user's picture decoded within the limit set at start, or why it was not. A picture past the
// limit is refused before any pixel is decoded.
struct DecodedPicture
{
    enum Fault { None, Missing, NotAPicture, TooLarge, Damaged };
    QImage image;
    Fault fault = None;
    QSize size;              // as the file states it, when it could be told
    int limitMegapixels = 0; // for TooLarge: the most pixels allowed at this picture's depth
    QString reason;          // for Damaged: the decoder's own words
};

DecodedPicture decodePicture(const QString& path);
// `format` empty: told from the content.
DecodedPicture decodePicture(QIODevice* device, const QByteArray& format = {});

} // namespace zelmor::core
