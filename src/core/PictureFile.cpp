#include "core/PictureFile.h"

#include <QFileInfo>
#include <QImageReader>

#include <algorithm>

namespace zelmor::core {

namespace {

DecodedPicture decode(QImageReader& reader)
{
    DecodedPicture picture;
    if (!reader.canRead()) {
        const bool unreadable = reader.error() == QImageReader::DeviceError ||
                                reader.error() == QImageReader::FileNotFoundError;
        picture.fault = unreadable ? DecodedPicture::Damaged : DecodedPicture::NotAPicture;
        picture.reason = reader.errorString();
        return picture;
    }
    picture.size = reader.size();
    const QImage::Format format = reader.imageFormat();
    const qint64 bits = std::max(
        1, format == QImage::Format_Invalid ? 32 : QImage::toPixelFormat(format).bitsPerPixel());
    const qint64 limitBytes = qint64(QImageReader::allocationLimit()) << 20; // 0: none
    if (limitBytes > 0 && picture.size.isValid() &&
        qint64(picture.size.width()) * picture.size.height() * bits / 8 > limitBytes) {
        picture.fault = DecodedPicture::TooLarge;
        picture.limitMegapixels = int(limitBytes * 8 / bits / 1000000);
        return picture;
    }
    if (!reader.read(&picture.image)) {
        picture.fault = DecodedPicture::Damaged;
        picture.reason = reader.errorString();
    }
    return picture;
}

} // namespace

DecodedPicture decodePicture(const QString& path)
{
    if (!QFileInfo(path).isFile()) {
        DecodedPicture missing;
        missing.fault = DecodedPicture::Missing;
        return missing;
    }
    QImageReader reader(path);
    return decode(reader);
}

DecodedPicture decodePicture(QIODevice* device, const QByteArray& format)
{
    QImageReader reader(device, format);
    return decode(reader);
}

} // namespace zelmor::core
