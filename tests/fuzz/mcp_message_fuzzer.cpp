// libFuzzer target for the tool server's message layer: framing, JSON-RPC checks and the
// replies of the methods that act on nothing. Tool calls are skipped: they drive the desktop.

#include "service/mcp/McpServer.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstddef>
#include <cstdint>

namespace {

bool callsATool(const QByteArray& input)
{
    for (const QByteArray& line : input.split('\n')) {
        const QJsonObject message = QJsonDocument::fromJson(line).object();
        if (message.value(QStringLiteral("method")).toString() == QLatin1String("tools/call"))
            return true;
    }
    return false;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static int argc = 1;
    static char name[] = "mcp-fuzz";
    static char* argv[] = {name, nullptr};
    static QCoreApplication application(argc, argv);

    const QByteArray input(reinterpret_cast<const char*>(data), qsizetype(size));
    if (callsATool(input)) return 0;

    QBuffer sink;
    sink.open(QIODevice::WriteOnly);
    zelmor::service::mcp::McpServer server;
    server.setOutput(&sink);
    server.answer(input);
    server.receive(input);
    server.finish();
    return 0;
}
