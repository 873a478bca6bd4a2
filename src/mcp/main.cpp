#include "core/DisplaySession.h"
#include "core/Log.h"
#include "core/Resources.h"
#include "platform/Session.h"
#include "platform/StandardStreams.h"
#include "service/mcp/McpServer.h"
#include "service/mcp/StdinReader.h"

#include <QFile>
#include <QGuiApplication>

#include <cstdio>

using namespace zelmor;

namespace {

// Answers the protocol's own requests straight from standard input, before the application
// that tools need is made: a client's handshake or discovery and the tool list wait for no
// display connection. Returns false when input ended with no tool call waiting.
bool answerUntilToolCall(service::mcp::McpServer& server)
{
    server.holdToolCalls(true);
    char buffer[8192];
    while (!server.toolCallWaiting()) {
        const long n = platform::readStandardInput(buffer, sizeof buffer);
        if (n <= 0) {
            server.finish();
            return server.toolCallWaiting();
        }
        server.receive(QByteArray(buffer, int(n)));
    }
    return true;
}

// A client may start us with no display at all: the one the Zelmor window recorded is taken
// when it answers, and without any the tools that need none still serve.
bool findDisplay()
{
    platform::DisplayServer server = platform::DisplayServer::Usual;
    bool display = platform::displayReachable(&server);
    if (!display && core::adoptRecordedDisplaySession())
        display = platform::displayReachable(&server);
    if (!display) qputenv("QT_QPA_PLATFORM", "offscreen");
    // A Wayland desktop without an X server: Qt looks for one unless the session type says
    // otherwise, which a console client's environment may not, and it stops the process when
    // a platform asked for (xcb, say, meant for other programs) finds no display.
    else if (server == platform::DisplayServer::Wayland &&
             !qgetenv("QT_QPA_PLATFORM").startsWith("wayland"))
        qputenv("QT_QPA_PLATFORM", "wayland");
    return display;
}

QtMessageHandler qtMessageHandler = nullptr;

// Qt warns when a client starts us without a runtime folder, and then makes a private one:
// nothing a client's user can act on.
void reportFaults(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    if (!message.startsWith(QLatin1String("QStandardPaths: XDG_RUNTIME_DIR not set")))
        qtMessageHandler(type, context, message);
}

} // namespace

int main(int argc, char** argv)
{
    // Protocol lines alone may reach the client; whatever else prints goes to stderr. No
    // program started from here may read the client's requests or write into the replies.
    platform::reserveStandardInput();
    const int protocolOutput = platform::reserveStandardOutput();
    platform::survivePeerClosingOutput();
    qtMessageHandler = qInstallMessageHandler(reportFaults);
    QCoreApplication::setOrganizationName(QStringLiteral("Zelmor"));
    QCoreApplication::setApplicationName(QStringLiteral("Zelmor"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ZELMOR_VERSION));

    QFile output;
    if (protocolOutput >= 0)
        output.open(protocolOutput, QIODevice::WriteOnly | QIODevice::Unbuffered,
                    QFileDevice::AutoCloseHandle);
    else
        output.open(stdout, QIODevice::WriteOnly | QIODevice::Unbuffered);
    service::mcp::McpServer server;
    server.setOutput(&output);
    if (!answerUntilToolCall(server)) return 0;

    const bool display = findDisplay();
    QGuiApplication application(argc, argv);
    core::tellDisplayServer();
    core::initResources();
    application.setQuitOnLastWindowClosed(false);
    core::writeLogLine(QStringLiteral("[mcp] tools ready on the %1 platform%2")
                           .arg(QGuiApplication::platformName(),
                                display ? QString() : QStringLiteral(" (no display reachable)")));

    service::mcp::StdinReader reader;
    server.attach(&reader);
    QObject::connect(&reader, &service::mcp::StdinReader::eof, &application, [&] {
        server.finish();
        QCoreApplication::quit();
    });
    // Queued ahead of the first chunk, so that the call waiting runs first, and with the
    // reader running, so that a cancellation of it gets through.
    QMetaObject::invokeMethod(
        &server, [&server] { server.holdToolCalls(false); }, Qt::QueuedConnection);
    reader.start();
    return application.exec();
}
