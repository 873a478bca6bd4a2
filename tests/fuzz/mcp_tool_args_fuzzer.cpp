// libFuzzer target for the tools themselves: random arguments, shaped after the tools' own
// schemas, for every tool that needs no display. Tools that start programs or open folders
// on the desktop are left out: a fuzzer must not act on the machine around it. libFuzzer's
// -timeout holds each call to its limit.

#include "service/mcp/McpTool.h"

#include <QGuiApplication>
#include <QJsonObject>
#include <QSet>

#include <fuzzer/FuzzedDataProvider.h>

#include <cmath>

namespace {

using zelmor::service::mcp::McpTool;

QStringList keysOf(const McpTool& tool)
{
    return tool.schema ? tool.schema().value("properties").toObject().keys() : QStringList();
}

// The annotations' keys and kinds, the tools' argument names, and some awkward text.
const QStringList& vocabulary()
{
    static const QStringList words = [] {
        QSet<QString> set{"kind",  "points", "color", "penWidth", "fontSize", "mosaicSize",
                          "text",  "rect",   "oval",  "arrow",    "line",     "pen",
                          "blur",  "number", "stamp", "#00FF00",  "*",        "\"",
                          "NEAR(", "/tmp",   ".."};
        set << "/etc/hostname"
            << "data:image/png;base64,"; // given pictures that are none
        for (const McpTool& tool : zelmor::service::mcp::mcpTools())
            for (const QString& key : keysOf(tool))
                set.insert(key);
        return QStringList(set.cbegin(), set.cend());
    }();
    return words;
}

const QString& word(FuzzedDataProvider& in)
{
    return vocabulary().at(in.ConsumeIntegralInRange<int>(0, int(vocabulary().size()) - 1));
}

// Base64 of a small picture, so that the painting tools have something to paint on.
const QString smallPng = QStringLiteral("iVBORw0KGgoAAAANSUhEUgAAAAgAAAAGCAIAAABxZ0isAAAAEElEQVR42m"
                                        "Ng6O7GjgZSAgAsxzQhqVxkcwAAAABJRU5ErkJggg==");

// A coordinate or size: mostly on the picture, often of some power of ten, sometimes
// anything a double can hold (JSON has no NaN or infinity).
QVariant measure(FuzzedDataProvider& in)
{
    switch (in.ConsumeIntegralInRange(0, 2)) {
    case 0:
        return in.ConsumeIntegral<qint8>() * 3;
    case 1:
        return (in.ConsumeBool() ? -1.0 : 1.0) * std::pow(10.0, in.ConsumeIntegralInRange(0, 15));
    default:
        const double d = in.ConsumeFloatingPoint<double>();
        return std::isfinite(d) ? d : 0.0;
    }
}

QVariant value(FuzzedDataProvider& in, int depth)
{
    switch (in.ConsumeIntegralInRange(0, depth < 4 ? 8 : 5)) {
    case 0:
        return QVariant();
    case 1:
        return measure(in);
    case 2:
        return QString::fromStdString(in.ConsumeRandomLengthString(48));
    case 3:
        return word(in);
    case 4:
        return smallPng;
    case 5:
        return in.ConsumeBool();
    case 6: {
        QVariantList list;
        for (int n = in.ConsumeIntegralInRange(0, 4); n > 0; --n)
            list << value(in, depth + 1);
        return list;
    }
    default: {
        QVariantMap map;
        for (int n = in.ConsumeIntegralInRange(0, 5); n > 0; --n)
            map.insert(word(in), value(in, depth + 1));
        return map;
    }
    }
}

QVariantMap annotation(FuzzedDataProvider& in)
{
    QVariantMap shape;
    QVariantList points;
    for (int n = in.ConsumeIntegralInRange(0, 5); n > 0; --n)
        points << QVariant(QVariantList{measure(in), measure(in)});
    if (in.ConsumeIntegralInRange(0, 3)) shape.insert("points", points);
    for (const char* key : {"kind", "color", "text"})
        if (in.ConsumeIntegralInRange(0, 2) == 0) shape.insert(key, value(in, 3));
    for (const char* key : {"penWidth", "fontSize", "mosaicSize"})
        if (in.ConsumeIntegralInRange(0, 2) == 0) shape.insert(key, measure(in));
    return shape;
}

// Mostly the tool's own arguments, each present or not, now and then a stranger.
QVariantMap arguments(const McpTool& tool, FuzzedDataProvider& in)
{
    QVariantMap args = in.ConsumeIntegralInRange(0, 7) ? QVariantMap() : value(in, 3).toMap();
    for (const QString& key : keysOf(tool)) {
        if (in.ConsumeIntegralInRange(0, 3) == 0) continue;
        if (key == QLatin1String("annotations")) {
            QVariantList shapes;
            for (int n = in.ConsumeIntegralInRange(0, 3); n > 0; --n)
                shapes << annotation(in);
            args.insert(key, shapes);
        } else if (key == QLatin1String("image")) {
            args.insert(key, in.ConsumeIntegralInRange(0, 3) ? QVariant(smallPng) : value(in, 1));
        } else {
            args.insert(key, in.ConsumeBool() ? measure(in) : value(in, 1));
        }
    }
    return args;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static int argc = 1;
    static char name[] = "mcp-args-fuzz";
    static char* argv[] = {name, nullptr};
    static QGuiApplication application(argc, argv);
    static const QList<McpTool> tools = [] {
        QList<McpTool> fuzzed;
        for (const McpTool& tool : zelmor::service::mcp::mcpTools())
            if (!tool.needsDisplay && tool.name != QLatin1String("launch_app") &&
                tool.name != QLatin1String("open_folder_and_select"))
                fuzzed << tool;
        return fuzzed;
    }();

    FuzzedDataProvider in(data, size);
    const McpTool& tool = tools.at(in.ConsumeIntegralInRange<int>(0, int(tools.size()) - 1));
    zelmor::service::mcp::callMcpTool(tool.name, arguments(tool, in));
    return 0;
}
