#include "CaptureTools.h"

#include "core/ConfigManager.h"
#include "core/PictureFile.h"
#include "core/Utilities.h"
#include "platform/ScreenGrab.h"
#include "service/ai/AiWorkflow.h"
#include "service/capture/AnnotationPainter.h"
#include "service/capture/CaptureService.h"
#include "service/capture/OutputFile.h"
#include "service/capture/WindowList.h"
#include "service/history/HistoryService.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QEventLoop>
#include <QHash>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPainter>
#include <QTimer>

namespace zelmor::service::mcp {

namespace {

constexpr int kHistoryLimit = 200;
// Far more marks than a picture can show; each is painted on the whole image.
constexpr int kMaxAnnotations = 1000;
constexpr int kOcrLimitMs = 120000;
constexpr int kMaxLabelLength = 4096; // a label, not a document: keeps one paint short

QString key(const char* name)
{
    return QLatin1String(name);
}

history::HistoryService& historyStore()
{
    return history::HistoryService::instance();
}

// Saves under the user's output naming, records the row and answers like every capture.
// Neither a failed save nor a failed insert is reported: the path is what the caller asked for.
McpToolResult saveAndRecord(const QPixmap& pixmap, core::HistoryCategory category, int width,
                            int height)
{
    const core::ConfigManager& config = core::ConfigManager::instance();
    const QString path =
        capture::makeOutputPath(config.outputDir(), config.fileNaming(), QStringLiteral("png"));
    capture::savePixmapFile(pixmap, path);
    historyStore().insert(pixmap, path, category, QString());
    return {{key("text"), path},
            {key("path"), path},
            {key("width"), width},
            {key("height"), height},
            {mcpModelImageKey(), pixmap.toImage()}};
}

McpToolResult saveCapture(const QPixmap& pixmap, int width, int height)
{
    return saveAndRecord(pixmap, core::HistoryCategory::Screenshot, width, height);
}

// A picture for a tool, or why the one asked for cannot be used. Neither: nothing was found.
struct Source
{
    QImage image;
    QString error;
};

Source usable(core::DecodedPicture picture, const QString& name)
{
    switch (picture.fault) {
    case core::DecodedPicture::None:
        return {std::move(picture.image), QString()};
    case core::DecodedPicture::Missing:
        return {QImage(), QStringLiteral("file not found: %1").arg(name)};
    case core::DecodedPicture::NotAPicture:
        return {QImage(), QStringLiteral("%1 is not a PNG, JPEG or other picture").arg(name)};
    case core::DecodedPicture::TooLarge:
        return {QImage(), QStringLiteral("%1 is %2x%3, larger than the %4-megapixel limit")
                              .arg(name)
                              .arg(picture.size.width())
                              .arg(picture.size.height())
                              .arg(picture.limitMegapixels)};
    case core::DecodedPicture::Damaged:
        break;
    }
    return {QImage(), QStringLiteral("%1 cannot be read: %2").arg(name, picture.reason)};
}

// The history row among the latest 200, or the latest row for an id below 1.
Source historySource(qint64 id)
{
    const QList<core::HistoryItem> items = historyStore().recent(id < 1 ? 1 : kHistoryLimit);
    for (const core::HistoryItem& item : items)
        if (id < 1 || item.id == id) return usable(core::decodePicture(item.path), item.path);
    return {};
}

// The newest history item stands in only when no picture was given at all.
Source sourceImage(const McpToolArgs& args)
{
    QByteArray encoded = args.value(key("image")).toString().toLatin1();
    // Models like to send data URLs; the payload after the comma is the base64.
    if (encoded.startsWith("data:")) encoded = encoded.mid(encoded.indexOf(',') + 1);
    if (encoded.isEmpty()) return historySource(mcpIntArg(args, key("id")));
    auto bytes = QByteArray::fromBase64Encoding(encoded, QByteArray::AbortOnBase64DecodingErrors);
    if (!bytes) return {QImage(), QStringLiteral("image is not base64")};
    QBuffer buffer(&*bytes);
    core::DecodedPicture picture = core::decodePicture(&buffer, "PNG");
    if (picture.fault == core::DecodedPicture::NotAPicture)
        return {QImage(), QStringLiteral("image is not a PNG")};
    return usable(std::move(picture), key("image"));
}

int clampedLimit(const McpToolArgs& args)
{
    return qBound(1, mcpIntArg(args, key("limit"), 20), kHistoryLimit);
}

} // namespace

capture::AnnotationShape::Kind mcpAnnotationKind(const QString& kind)
{
    using Shape = capture::AnnotationShape;
    static const QHash<QString, Shape::Kind> kinds{
        {QStringLiteral("ellipse"), Shape::Ellipse},     {QStringLiteral("oval"), Shape::Ellipse},
        {QStringLiteral("arrow"), Shape::Arrow},         {QStringLiteral("line"), Shape::Line},
        {QStringLiteral("brush"), Shape::Brush},         {QStringLiteral("pen"), Shape::Brush},
        {QStringLiteral("highlight"), Shape::Highlight}, {QStringLiteral("mosaic"), Shape::Mosaic},
        {QStringLiteral("blur"), Shape::Blur},           {QStringLiteral("text"), Shape::Text},
        {QStringLiteral("counter"), Shape::Counter},     {QStringLiteral("number"), Shape::Counter},
        {QStringLiteral("stamp"), Shape::Stamp},
    };
    return kinds.value(kind.toLower(), Shape::Rect);
}

capture::AnnotationShape readMcpAnnotation(const QVariantMap& annotation)
{
    capture::AnnotationShape shape;
    shape.kind = mcpAnnotationKind(annotation.value(key("kind")).toString());
    for (const QVariant& point : annotation.value(key("points")).toList()) {
        const QVariantList xy = point.toList();
        if (xy.size() >= 2) shape.points.append(QPointF(xy.at(0).toDouble(), xy.at(1).toDouble()));
    }
    const QColor fallback(QStringLiteral("#FF5252"));
    const QColor color(annotation.value(key("color"), fallback.name()).toString());
    shape.color = color.isValid() ? color : fallback;
    shape.width = mcpIntArg(annotation, key("penWidth"), 3);
    shape.fontSize = mcpIntArg(annotation, key("fontSize"), 18);
    shape.text = annotation.value(key("text")).toString().left(kMaxLabelLength);
    shape.blockSize = mcpIntArg(annotation, key("mosaicSize"), 12);
    return shape;
}

QString historyItemsJson(const QList<core::HistoryItem>& items)
{
    QJsonArray array;
    for (const core::HistoryItem& item : items) {
        const char* kind = item.kind == core::Gif      ? "gif"
                           : item.kind == core::Scroll ? "scroll"
                                                       : "image";
        array.append(QJsonObject{{key("id"), item.id},
                                 {key("kind"), QLatin1String(kind)},
                                 {key("path"), item.path},
                                 {key("width"), item.width},
                                 {key("height"), item.height},
                                 {key("createdAt"), item.createdAt.toString(Qt::ISODate)}});
    }
    return QString::fromUtf8(
        QJsonDocument(QJsonObject{{key("items"), array}}).toJson(QJsonDocument::Compact));
}

McpToolResult captureFullscreenTool(const McpToolArgs&)
{
    capture::CaptureService service;
    const core::CaptureResult result = service.captureFullscreen();
    if (result.pixmap.isNull()) return mcpToolError(capture::CaptureService::failureReason());
    return saveCapture(result.pixmap, result.width, result.height);
}

McpToolResult captureRegionTool(const McpToolArgs& args)
{
    // One flag for all four on purpose: only the height's conversion decides.
    bool ok = false;
    const int x = mcpIntArg(args, key("x"), 0, &ok);
    const int y = mcpIntArg(args, key("y"), 0, &ok);
    const int w = mcpIntArg(args, key("w"), 0, &ok);
    const int h = mcpIntArg(args, key("h"), 0, &ok);
    if (!ok || w < 1 || h < 1) return mcpToolError(QStringLiteral("invalid region"));

    capture::CaptureService service;
    const QPixmap frozen = service.grabScreens();
    if (frozen.isNull()) return mcpToolError(capture::CaptureService::failureReason());
    // The rectangle is taken as canvas coordinates as given, with no shift by the desktop's
    // origin.
    const QPixmap cropped = frozen.copy(QRect(x, y, w, h));
    if (cropped.isNull()) return mcpToolError(QStringLiteral("crop failed"));
    return saveCapture(cropped, cropped.width(), cropped.height());
}

McpToolResult screenshotActiveWindowTool(const McpToolArgs&)
{
    const capture::WindowInfo window = capture::foregroundWindow();
    QRect rect;
    if (window.handle == 0) {
        // No focused window: the desktop stands in, as the root window would.
        const platform::Rect desktop = platform::virtualDesktopRect();
        if (desktop.isEmpty()) return mcpToolError(QStringLiteral("no active window found"));
        rect = QRect(desktop.x, desktop.y, desktop.width, desktop.height);
    } else {
        rect = window.rect;
        if (rect.isEmpty()) return mcpToolError(QStringLiteral("could not get active window rect"));
    }

    capture::CaptureService service;
    const QPixmap frozen = service.grabScreens();
    if (frozen.isNull()) return mcpToolError(capture::CaptureService::failureReason());
    const QPixmap cropped = frozen.copy(rect.intersected(frozen.rect()));
    if (cropped.isNull()) return mcpToolError(QStringLiteral("crop active window failed"));
    return saveCapture(cropped, cropped.width(), cropped.height());
}

McpToolResult annotateImageTool(const McpToolArgs& args)
{
    const QVariantList annotations = args.value(key("annotations")).toList();
    if (annotations.size() > kMaxAnnotations)
        return mcpToolError(QStringLiteral("%1 annotations, more than the %2 allowed")
                                .arg(annotations.size())
                                .arg(kMaxAnnotations));
    const Source source = sourceImage(args);
    if (!source.error.isEmpty()) return mcpToolError(source.error);
    if (source.image.isNull())
        return mcpToolError(QStringLiteral("no source image (provide id or base64)"));
    QImage canvas = source.image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (canvas.isNull()) return mcpToolError(QStringLiteral("canvas alloc failed"));
    // Mosaic and blur read this copy, so later shapes never sample earlier ones.
    const QImage unmarked = canvas;

    QPainter painter(&canvas);
    painter.setRenderHint(QPainter::Antialiasing);
    for (const QVariant& annotation : annotations) {
        // A blur of a large picture takes a while, so the caller may give up between shapes.
        if (McpToolCancellation::instance().isRequested()) return mcpToolStoppedError();
        capture::paintAnnotation(painter, unmarked, readMcpAnnotation(annotation.toMap()));
    }
    painter.end();

    McpToolResult result =
        saveAndRecord(QPixmap::fromImage(canvas), core::HistoryCategory::Annotation, canvas.width(),
                      canvas.height());
    result.insert(key("base64"), QString::fromLatin1(core::imageToBase64(canvas)));
    return result;
}

McpToolResult ocrTool(const McpToolArgs& args)
{
    // The newest history item stands in only when no path was given at all.
    const QString path = args.value(key("path")).toString();
    const Source source = path.isEmpty() ? historySource(mcpIntArg(args, key("id")))
                                         : usable(core::decodePicture(path), path);
    if (!source.error.isEmpty()) return mcpToolError(source.error);
    if (source.image.isNull())
        return mcpToolError(
            QStringLiteral("no image to OCR. Please specify a valid 'path' or history 'id'."));
    const QPixmap pixmap = QPixmap::fromImage(source.image);

    ai::AiWorkflow workflow;
    QEventLoop loop;
    QTimer limit;
    limit.setSingleShot(true);
    QString text;
    // The first outcome wins: a cancel or a missing provider can fail before the loop runs.
    bool done = false;
    const auto settle = [&](const QString& outcome) {
        if (done) return;
        done = true;
        text = outcome;
        loop.quit();
    };
    QObject::connect(&workflow, &ai::AiWorkflow::resultReady, &loop,
                     [&](const QString&, const QString& result) { settle(result); });
    QObject::connect(&workflow, &ai::AiWorkflow::failed, &loop, [&](const QString& reason) {
        settle(QStringLiteral("[error] %1").arg(reason));
    });
    // The workflow dies with this frame; its request must not outlive it.
    const auto stop = [&](const QString& reason) {
        settle(reason);
        workflow.cancel();
    };
    QObject::connect(&limit, &QTimer::timeout, &loop,
                     [&] { stop(QStringLiteral("[error] OCR request timed out (120s)")); });
    QObject::connect(&McpToolCancellation::instance(), &McpToolCancellation::requested, &loop,
                     [&] { stop(QStringLiteral("[error] OCR request cancelled")); });

    workflow.ocr(pixmap);
    limit.start(kOcrLimitMs);
    if (!done) loop.exec();
    // The loop also ends when the whole process is asked to quit, as at the end of input.
    if (!done) stop(QStringLiteral("[error] OCR request interrupted"));
    // A failure is an answer, not a tool error: the text says "[error]".
    return {{key("text"), text}};
}

McpToolResult pinLastTool(const McpToolArgs& args)
{
    const Source source = historySource(mcpIntArg(args, key("id")));
    if (!source.error.isEmpty()) return mcpToolError(source.error);
    const QImage& pixmap = source.image;
    if (pixmap.isNull()) return mcpToolError(QStringLiteral("no image to pin"));
    const QCoreApplication* application = QCoreApplication::instance();
    // The tool only answers; it opens no pin window in either process.
    if (application && application->inherits("QApplication"))
        return {{key("text"), QStringLiteral("pinned")}};
    return {{key("text"), QStringLiteral("Image resolved (%1x%2) but pin window requires the "
                                         "Zelmor GUI process to be running. Start %3 and try "
                                         "again.")
                              .arg(pixmap.width())
                              .arg(pixmap.height())
                              .arg(core::executableFileName(QStringLiteral("zelmor")))},
            {key("isError"), false}};
}

McpToolResult listHistoryTool(const McpToolArgs& args)
{
    return {{key("text"), historyItemsJson(historyStore().recent(clampedLimit(args)))}};
}

McpToolResult searchHistoryTool(const McpToolArgs& args)
{
    QString query = args.value(key("query")).toString().trimmed();
    if (query.isEmpty()) return mcpToolError(QStringLiteral("query required"));
    query.replace(QLatin1Char('"'), QLatin1Char(' '));
    const QString phrase = QStringLiteral("\"%1\"*").arg(query);
    return {{key("text"), historyItemsJson(historyStore().search(phrase, clampedLimit(args)))}};
}

} // namespace zelmor::service::mcp
