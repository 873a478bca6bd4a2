#include "DesktopClipboard.h"

#include "Utilities.h"
#include "platform/Clipboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QUrl>

#include <algorithm>

namespace zelmor::core {

namespace {

using platform::ClipboardFormat;

// What text-reading programs of either toolkit ask for, best first.
const char* const kTextTypes[] = {"text/plain;charset=utf-8", "text/plain", "UTF8_STRING", "TEXT",
                                  "STRING"};
const char* const kImageType = "image/png";
const char* const kUriListType = "text/uri-list";

bool direct()
{
    return platform::clipboardRoute() == platform::ClipboardRoute::Direct;
}

std::optional<std::string> directData(const char* const* types, std::size_t count)
{
    const std::vector<std::string> held = platform::clipboardTypes();
    for (std::size_t i = 0; i < count; ++i)
        if (std::find(held.begin(), held.end(), types[i]) != held.end())
            return platform::clipboardData(types[i]);
    return std::nullopt;
}

} // namespace

bool clipboardWithoutFocus()
{
    return platform::clipboardRoute() != platform::ClipboardRoute::FocusOnly;
}

void setClipboardText(const QString& text)
{
    const std::string utf8 = text.toStdString();
    std::vector<ClipboardFormat> formats;
    for (const char* type : kTextTypes)
        formats.push_back({type, utf8});
    if (direct() && platform::setClipboardContent(formats)) return;
    QGuiApplication::clipboard()->setText(text, QClipboard::Clipboard);
}

void setClipboardImage(const QImage& image)
{
    if (direct() && platform::setClipboardContent({{kImageType, imageToPng(image).toStdString()}}))
        return;
    QGuiApplication::clipboard()->setImage(image, QClipboard::Clipboard);
}

void setClipboardFiles(const QStringList& paths)
{
    QList<QUrl> urls;
    QByteArray uriList;
    for (const QString& path : paths) {
        urls.append(QUrl::fromLocalFile(path));
        uriList += urls.last().toEncoded() + "\r\n";
    }
    if (direct() && platform::setClipboardContent({{kUriListType, uriList.toStdString()}})) return;
    auto* data = new QMimeData;
    data->setUrls(urls);
    QGuiApplication::clipboard()->setMimeData(data, QClipboard::Clipboard);
}

std::optional<QString> clipboardText()
{
    if (direct()) {
        const std::optional<std::string> utf8 = directData(kTextTypes, std::size(kTextTypes));
        return utf8 ? std::optional<QString>(QString::fromStdString(*utf8)) : std::nullopt;
    }
    const QMimeData* data = QGuiApplication::clipboard()->mimeData(QClipboard::Clipboard);
    return data && data->hasText() ? std::optional<QString>(data->text()) : std::nullopt;
}

QImage clipboardImage()
{
    if (direct()) {
        const std::optional<std::string> png = directData(&kImageType, 1);
        return png ? QImage::fromData(QByteArray::fromStdString(*png), "PNG") : QImage();
    }
    return QGuiApplication::clipboard()->image();
}

} // namespace zelmor::core
