// libFuzzer target for the tools themselves: random arguments, shaped after the tools' own
// schemas, for every tool that needs no display. Tools that start programs or open folders
// on the desktop are left out: a fuzzer must not act on the machine around it. libFuzzer's
// -timeout holds each call to its limit.

#include "service/mcp/McpTool.h"

#include <QGuiApplication>
#include <QJsonObject>
#include <QSet>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

using zelmor::service::mcp::McpTool;

// The fuzz input read as a stream of choices; past its end every choice is 0.
class Choices
{
public:
    Choices(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}

    unsigned byte()
    {
        if (m_size == 0) return 0;
        --m_size;
        return *m_data++;
    }
    unsigned below(unsigned n) { return n ? byte() % n : 0; }
    double number()
    {
        std::uint64_t bits = 0;
        for (int i = 0; i < 8; ++i)
            bits = bits << 8 | byte();
        double value;
        std::memcpy(&value, &bits, sizeof value);
        return std::isfinite(value) ? value : double(qint64(bits)); // JSON has no NaN
    }
    QString text()
    {
        QByteArray bytes;
        for (unsigned n = below(48); n > 0; --n)
            bytes += char(byte());
        return QString::fromUtf8(bytes);
    }
    template <typename List> const auto& pick(const List& list)
    {
        return list.at(int(below(unsigned(list.size()))));
    }

private:
    const std::uint8_t* m_data;
    std::size_t m_size;
};

QJsonObject properties(const McpTool& tool)
{
    return tool.schema ? tool.schema().value("properties").toObject() : QJsonObject();
}

// The annotations' keys and kinds, the tools' argument names, and some awkward text.
const QStringList& vocabulary()
{
    static const QStringList words = [] {
        QSet<QString> set{"kind",  "points", "color", "penWidth", "fontSize", "mosaicSize",
                          "text",  "rect",   "oval",  "arrow",    "line",     "pen",
                          "blur",  "number", "stamp", "#00FF00",  "*",        "\"",
                          "NEAR(", "/tmp",   ".."};
        for (const McpTool& tool : zelmor::service::mcp::mcpTools())
            for (const QString& key : properties(tool).keys())
                set.insert(key);
        return QStringList(set.cbegin(), set.cend());
    }();
    return words;
}

// Base64 of a small picture, so that the painting tools have something to paint on.
const QString smallPng = QStringLiteral("iVBORw0KGgoAAAANSUhEUgAAAAgAAAAGCAIAAABxZ0isAAAAEElEQVR42m"
                                        "Ng6O7GjgZSAgAsxzQhqVxkcwAAAABJRU5ErkJggg==");

// A coordinate or size: mostly on the picture, often of some power of ten, sometimes
// anything a double can hold.
QVariant measure(Choices& in)
{
    switch (in.below(3)) {
    case 0:
        return int(qint8(in.byte())) * 3;
    case 1:
        return (in.byte() & 1 ? -1.0 : 1.0) * std::pow(10.0, in.below(16));
    default:
        return in.number();
    }
}

QVariant value(Choices& in, int depth)
{
    switch (in.below(depth < 4 ? 9 : 6)) {
    case 0:
        return QVariant();
    case 1:
        return measure(in);
    case 2:
        return in.text();
    case 3:
        return in.pick(vocabulary());
    case 4:
        return smallPng;
    case 5:
        return bool(in.byte() & 1);
    case 6: {
        QVariantList list;
        for (unsigned n = in.below(5); n > 0; --n)
            list << value(in, depth + 1);
        return list;
    }
    default: {
        QVariantMap map;
        for (unsigned n = in.below(6); n > 0; --n)
            map.insert(in.pick(vocabulary()), value(in, depth + 1));
        return map;
    }
    }
}

QVariantMap annotation(Choices& in)
{
    QVariantMap shape;
    QVariantList points;
    for (unsigned n = in.below(6); n > 0; --n)
        points << QVariant(QVariantList{measure(in), measure(in)});
    if (in.below(4)) shape.insert("points", points);
    for (const char* key : {"kind", "color", "text"})
        if (in.below(3) == 0) shape.insert(key, value(in, 3));
    for (const char* key : {"penWidth", "fontSize", "mosaicSize"})
        if (in.below(3) == 0) shape.insert(key, measure(in));
    return shape;
}

// Mostly the tool's own arguments, each present or not, now and then a stranger.
QVariantMap arguments(const McpTool& tool, Choices& in)
{
    QVariantMap args = in.below(8) ? QVariantMap() : value(in, 3).toMap();
    for (const QString& key : properties(tool).keys()) {
        if (in.below(4) == 0) continue;
        if (key == QLatin1String("annotations")) {
            QVariantList shapes;
            for (unsigned n = in.below(4); n > 0; --n)
                shapes << annotation(in);
            args.insert(key, shapes);
        } else if (key == QLatin1String("image")) {
            args.insert(key, in.below(4) ? QVariant(smallPng) : value(in, 1));
        } else {
            args.insert(key, in.below(2) ? measure(in) : value(in, 1));
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

    Choices in(data, size);
    const McpTool& tool = in.pick(tools);
    zelmor::service::mcp::callMcpTool(tool.name, arguments(tool, in));
    return 0;
}
