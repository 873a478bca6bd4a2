// libFuzzer target for the tools themselves: random arguments, shaped after the tools' own
// schemas, for every tool that needs no display. Tools that start programs or open folders
// on the desktop are left out: a fuzzer must not act on the machine around it. libFuzzer's
// -timeout holds each call to its limit.

#include "service/mcp/McpTool.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QImage>
#include <QJsonArray>
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

private:
    const std::uint8_t* m_data;
    std::size_t m_size;
};

const QStringList& vocabulary()
{
    static const QStringList words = [] {
        QSet<QString> set{"kind",       "points", "color",     "penWidth", "fontSize", "text",
                          "mosaicSize", "rect",   "ellipse",   "oval",     "arrow",    "line",
                          "brush",      "pen",    "highlight", "mosaic",   "blur",     "counter",
                          "number",     "stamp",  "#00FF00",   "*",        "\"",       "NEAR(",
                          "/",          "/tmp",   ".."};
        for (const McpTool& tool : zelmor::service::mcp::mcpTools())
            if (tool.schema)
                for (const QString& key : tool.schema().value("properties").toObject().keys())
                    set.insert(key);
        return QStringList(set.cbegin(), set.cend());
    }();
    return words;
}

// Base64 of a small picture, so that the painting tools have something to paint on.
QString smallPng()
{
    static const QString png = [] {
        QImage image(64, 48, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "PNG");
        return QString::fromLatin1(bytes.toBase64());
    }();
    return png;
}

QVariant value(Choices& in, int depth);

QVariantMap object(Choices& in, int depth)
{
    QVariantMap map;
    for (unsigned n = in.below(6); n > 0; --n)
        map.insert(vocabulary().at(int(in.below(unsigned(vocabulary().size())))),
                   value(in, depth + 1));
    return map;
}

QVariant value(Choices& in, int depth)
{
    switch (in.below(depth < 4 ? 10 : 7)) {
    case 0:
        return QVariant();
    case 1:
        return bool(in.byte() & 1);
    case 2:
        return int(qint8(in.byte()));
    case 3:
        return in.number();
    case 4:
        return in.text();
    case 5:
        return vocabulary().at(int(in.below(unsigned(vocabulary().size()))));
    case 6:
        return smallPng();
    case 7:
    case 8: {
        QVariantList list;
        for (unsigned n = in.below(5); n > 0; --n)
            list << value(in, depth + 1);
        return list;
    }
    default:
        return object(in, depth);
    }
}

// A coordinate or size: mostly on the picture, often of some power of ten, sometimes
// anything a double can hold.
QVariant measure(Choices& in)
{
    switch (in.below(4)) {
    case 0:
        return int(qint8(in.byte())) * 3;
    case 1:
        return (in.byte() & 1 ? -1.0 : 1.0) * std::pow(10.0, in.below(16));
    case 2:
        return int(in.byte() << 24 | in.byte() << 16 | in.byte() << 8 | in.byte());
    default:
        return in.number();
    }
}

QVariantMap annotation(Choices& in)
{
    static const QStringList kinds{"rect",  "ellipse", "oval",      "arrow",  "line",
                                   "brush", "pen",     "highlight", "mosaic", "blur",
                                   "text",  "counter", "number",    "stamp"};
    QVariantMap shape;
    if (in.below(4))
        shape.insert("kind", kinds.at(int(in.below(unsigned(kinds.size())))));
    else if (in.below(2))
        shape.insert("kind", value(in, 3));
    QVariantList points;
    for (unsigned n = in.below(6); n > 0; --n)
        points << QVariant(QVariantList{measure(in), measure(in)});
    if (in.below(4)) shape.insert("points", points);
    for (const char* key : {"color", "text"})
        if (in.below(3) == 0) shape.insert(key, value(in, 3));
    for (const char* key : {"penWidth", "fontSize", "mosaicSize"})
        if (in.below(3) == 0) shape.insert(key, measure(in));
    return shape;
}

// Mostly the tool's own arguments, each present or not, now and then a stranger.
QVariantMap arguments(const McpTool& tool, Choices& in)
{
    QVariantMap args = in.below(8) ? QVariantMap() : object(in, 1);
    const QJsonObject properties =
        tool.schema ? tool.schema().value("properties").toObject() : QJsonObject();
    for (const QString& key : properties.keys()) {
        if (in.below(4) == 0) continue;
        if (key == QLatin1String("annotations")) {
            QVariantList shapes;
            for (unsigned n = in.below(4); n > 0; --n)
                shapes << annotation(in);
            args.insert(key, shapes);
        } else if (key == QLatin1String("image")) {
            args.insert(key, in.below(4) ? QVariant(smallPng()) : value(in, 1));
        } else {
            args.insert(key, in.below(2) ? measure(in) : value(in, 1));
        }
    }
    return args;
}

QList<McpTool> fuzzedTools()
{
    QList<McpTool> tools;
    for (const McpTool& tool : zelmor::service::mcp::mcpTools())
        if (!tool.needsDisplay && tool.name != QLatin1String("launch_app") &&
            tool.name != QLatin1String("open_folder_and_select"))
            tools << tool;
    return tools;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static int argc = 1;
    static char name[] = "mcp-args-fuzz";
    static char* argv[] = {name, nullptr};
    static QGuiApplication application(argc, argv);
    static const QList<McpTool> tools = fuzzedTools();

    Choices in(data, size);
    const McpTool& tool = tools.at(int(in.below(unsigned(tools.size()))));
    zelmor::service::mcp::callMcpTool(tool.name, arguments(tool, in));
    return 0;
}
