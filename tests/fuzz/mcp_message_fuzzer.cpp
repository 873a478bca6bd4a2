// libFuzzer target for the tool server's message layer: framing, JSON-RPC checks, both
// protocol eras and cancellations, and the reader thread's watch for cancellations, fed the
// input in two chunks. Tool calls are held, never run: they drive the desktop.

#include "service/mcp/CancellationWatch.h"
#include "service/mcp/McpServer.h"

#include <QBuffer>
#include <QCoreApplication>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static int argc = 1;
    static char name[] = "mcp-fuzz";
    static char* argv[] = {name, nullptr};
    static QCoreApplication application(argc, argv);

    const QByteArray input(reinterpret_cast<const char*>(data), qsizetype(size));
    QBuffer sink;
    sink.open(QIODevice::WriteOnly);
    zelmor::service::mcp::McpServer server;
    server.setOutput(&sink);
    server.holdToolCalls(true);
    server.receive(input);
    server.finish();

    zelmor::service::mcp::CancellationWatch watch;
    const qsizetype cut = input.isEmpty() ? 0 : std::uint8_t(input.front()) % (input.size() + 1);
    watch.begin(1);
    watch.scan(input.left(cut));
    watch.scan(input.mid(cut));
    watch.end();
    return 0;
}
