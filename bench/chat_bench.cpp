// The chat page with a huge AI answer: the longest stall of the GUI thread from sending to the
// answer on screen, the time the page takes to open again over the saved session, and the
// stall while the whole answer fills its viewer.
//   scripts/x-session.sh build/bench/zelmor-bench-chat [answer sizes in MB, e.g. 1 8]

#include "BenchSupport.h"
#include "FakeAiServer.h"
#include "core/Resources.h"
#include "service/ai/AiDialect.h"
#include "service/ai/ChatSessions.h"
#include "widget/chat/AiChatPanel.h"
#include "widget/chat/ChatWidgets.h"

#include <QApplication>
#include <QFileInfo>
#include <QKeyEvent>
#include <QPushButton>
#include <QTemporaryDir>

#include <cstdio>
#include <memory>

using zelmor::bench::FirstPaint;
using zelmor::bench::spinUntil;
using zelmor::bench::StallMeter;
using zelmor::widget::AiChatPanel;

namespace {

// Markdown as a model writes it: headings, points, code, in lines of varied length.
QString answerOf(qint64 bytes)
{
    QString text;
    for (int n = 0; text.size() < bytes; ++n)
        text +=
            QStringLiteral("## Part %1\n- **point** %1 with `code` and *stress*: the quick brown "
                           "fox jumps over the lazy dog %2\n```\nint x%1 = %1;\n```\n")
                .arg(n)
                .arg(QString(n % 40, QLatin1Char('z')));
    return text.left(bytes);
}

// Enter in the message box, as the user sends.
void send(AiChatPanel& panel, const QString& text)
{
    auto* input = panel.findChild<zelmor::widget::ChatInputEdit*>();
    input->setPlainText(text);
    QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QCoreApplication::sendEvent(input, &enter);
}

void settleFor(int ms)
{
    QElapsedTimer clock;
    clock.start();
    spinUntil([&] { return clock.elapsed() >= ms; });
}

} // namespace

int main(int argc, char** argv)
{
    // The panel reads and writes the session file in the data folder: a private one.
    QTemporaryDir sandbox;
    zelmor::bench::useSandbox(sandbox);
    QApplication app(argc, argv);
    app.setOrganizationName(QStringLiteral("Zelmor"));
    app.setApplicationName(QStringLiteral("Zelmor"));
    zelmor::core::initResources();
    QList<int> sizes;
    for (int i = 1; i < argc; ++i)
        sizes << std::max(1, atoi(argv[i]));
    if (sizes.isEmpty()) sizes = {1, 8};

    zelmor::test::FakeAiServer server;
    server.becomeActiveProvider();
    std::printf("%8s %16s %18s %14s %16s %18s %16s\n", "answer", "answer shown ms",
                "longest stall ms", "stalls >16 ms", "page reopens ms", "reopen stall ms",
                "viewer stall ms");
    for (int mb : sizes) {
        QFile::remove(zelmor::service::ai::chatSessionsPath());
        const QString answer = answerOf(qint64(mb) << 20);
        server.enqueue(200, zelmor::test::openAiReply(answer));
        auto panel = std::make_unique<AiChatPanel>();
        panel->resize(1100, 700);
        panel->show();
        settleFor(500);

        StallMeter answering;
        QElapsedTimer clock;
        answering.start();
        clock.start();
        send(*panel, QStringLiteral("Tell me everything."));
        spinUntil([&] { return !panel->thinking(); });
        const qint64 shownMs = clock.elapsed();
        settleFor(1000);
        answering.stop();

        // Opened again over the saved session, as after a restart.
        panel.reset();
        StallMeter reopening;
        reopening.start();
        clock.restart();
        FirstPaint firstPaint(clock);
        panel = std::make_unique<AiChatPanel>();
        panel->installEventFilter(&firstPaint);
        panel->resize(1100, 700);
        panel->show();
        spinUntil([&] { return firstPaint.at >= 0; });
        settleFor(500);
        reopening.stop();

        StallMeter viewing;
        viewing.start();
        auto* all = panel->findChild<QPushButton*>(QStringLiteral("btnShowAll"));
        if (all) all->click();
        zelmor::widget::ChatTextViewer* viewer = nullptr;
        spinUntil([&] {
            viewer = panel->findChild<zelmor::widget::ChatTextViewer*>();
            return !all || (viewer && viewer->filled());
        });
        settleFor(500);
        viewing.stop();
        if (viewer) viewer->close();

        std::printf("%5d MB %16lld %18.1f %14d %16lld %18.1f %16.1f\n", mb, shownMs,
                    answering.longestMs, answering.over16, firstPaint.at, reopening.longestMs,
                    viewing.longestMs);
        // The parts of the answer's path that cost with its size.
        const QByteArray reply = zelmor::test::openAiReply(answer);
        const double readMs = zelmor::bench::medianMs(3, [&] {
            zelmor::service::ai::toolCallTurn(reply);
            zelmor::service::ai::replyText(reply);
        });
        const QList<zelmor::service::ai::ChatSession> sessions = panel->sessions();
        const double saveMs = zelmor::bench::medianMs(3, [&] {
            zelmor::service::ai::saveChatSessions(sandbox.filePath(QStringLiteral("copy.json")),
                                                  sessions, QString());
        });
        std::printf("         session file %.1f MB; reading the reply %.1f ms, saving %.1f ms\n",
                    QFileInfo(zelmor::service::ai::chatSessionsPath()).size() / 1e6, readMs,
                    saveMs);
    }
    return 0;
}
