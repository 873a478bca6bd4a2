#include "core/DisplaySession.h"
#include "core/Log.h"
#include "platform/Session.h"
#include "platform/StandardStreams.h"
#include "service/mcp/McpServer.h"
#include "service/mcp/StdinReader.h"

#include <QFile>
#include <QGuiApplication>

#include <cstdio>

using namespace zelmor;

int main(int argc, char** argv)
{
    // Protocol lines alone may reach the client; whatever else prints goes to stderr.
    const int protocolOutput = platform::reserveStandardOutput();
    platform::survivePeerClosingOutput();

    // A client may start us with no display at all: the one the Zelmor window recorded is
    // taken when it answers, and without any the tools that need none still serve.
    QCoreApplication::setOrganizationName(QStringLiteral("Zelmor"));
    QCoreApplication::setApplicationName(QStringLiteral("Zelmor"));
    bool display = platform::displayReachable();
    if (!display && core::adoptRecordedDisplaySession()) display = platform::displayReachable();
    if (!display) qputenv("QT_QPA_PLATFORM", "offscreen");

    QGuiApplication application(argc, argv);
    application.setOrganizationName(QStringLiteral("Zelmor"));
    application.setApplicationName(QStringLiteral("Zelmor"));
    application.setApplicationVersion(QStringLiteral(ZELMOR_VERSION));
    application.setQuitOnLastWindowClosed(false);

    QFile output;
    if (protocolOutput >= 0)
        output.open(protocolOutput, QIODevice::WriteOnly | QIODevice::Unbuffered,
                    QFileDevice::AutoCloseHandle);
    else
        output.open(stdout, QIODevice::WriteOnly | QIODevice::Unbuffered);

    service::mcp::McpServer server;
    server.setOutput(&output);
    service::mcp::StdinReader reader;
    server.attach(&reader);
    QObject::connect(&reader, &service::mcp::StdinReader::eof, &application, [&] {
        server.finish();
        QCoreApplication::quit();
    });

    core::writeLogLine(QStringLiteral("[mcp] server started on the %1 platform%2")
                           .arg(QGuiApplication::platformName(),
                                display ? QString() : QStringLiteral(" (no display reachable)")));
    reader.start();
    return application.exec();
}
