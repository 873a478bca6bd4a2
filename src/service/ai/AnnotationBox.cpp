#include "AnnotationBox.h"

#include "core/Utilities.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace zelmor::service::ai {

namespace {

// x, y, w, h from "box": [x, y, w, h], or from the keys, where "w" and "h" win over
// "width" and "height".
void readGeometry(const QJsonObject& o, double& x, double& y, double& w, double& h)
{
    const QJsonArray box = o.value(QStringLiteral("box")).toArray();
    if (box.size() == 4) {
        x = box[0].toDouble(0);
        y = box[1].toDouble(0);
        w = box[2].toDouble(0);
        h = box[3].toDouble(0);
        return;
    }
    x = o.value(QStringLiteral("x")).toDouble(0);
    y = o.value(QStringLiteral("y")).toDouble(0);
    w = o.value(QStringLiteral("w")).toDouble(o.value(QStringLiteral("width")).toDouble(0));
    h = o.value(QStringLiteral("h")).toDouble(o.value(QStringLiteral("height")).toDouble(0));
}

// Sizes are cut against the unclamped origin first, so a box hanging off the top left keeps
// its full size; every kept box has at least one pixel.
QRect clampedRect(int x, int y, int w, int h, const QSize& image)
{
    h = qMin(h, image.height() - y);
    w = qMin(w, image.width() - x);
    y = qMin(y, image.height());
    x = qMin(x, image.width());
    h = qMax(h, 1);
    w = qMax(w, 1);
    y = qMax(y, 0);
    x = qMax(x, 0);
    return QRect(x, y, w, h);
}

} // namespace

AnnotationParse parseAnnotationBoxes(const QString& answer, const QSize& imageSize)
{
    AnnotationParse parse;
    const qsizetype open = answer.indexOf(QLatin1Char('['));
    const qsizetype close = answer.lastIndexOf(QLatin1Char(']'));
    if (open < 0 || close <= open) {
        parse.error = QStringLiteral("No JSON array in AI response");
        return parse;
    }
    QJsonParseError error;
    const QJsonDocument doc =
        QJsonDocument::fromJson(answer.mid(open, close - open + 1).toUtf8(), &error);
    if (error.error != QJsonParseError::NoError || !doc.isArray()) {
        parse.error = QStringLiteral("Bad JSON: %1").arg(error.errorString());
        return parse;
    }
    for (const QJsonValue& value : doc.array()) {
        const QJsonObject o = value.toObject();
        double x = 0, y = 0, w = 0, h = 0;
        readGeometry(o, x, y, w, h);
        if (!(w > 0 && h > 0)) continue;
        parse.boxes.append({clampedRect(core::boundedInt(x), core::boundedInt(y),
                                        core::boundedInt(w), core::boundedInt(h), imageSize),
                            o.value(QStringLiteral("label")).toString()});
    }
    return parse;
}

} // namespace zelmor::service::ai
