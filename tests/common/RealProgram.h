#pragma once

// Programs this project does not write, for the scroll capture's end-to-end checks and its
// benchmark: a file of numbered lines to show in them, and their windows on the screen.

#include <QMap>
#include <QProcess>
#include <QRect>
#include <QStringList>

namespace zelmor::test {

// Lines "0042 charlie bravo": a number and a pair of words that no other line of the first
// 400 has.
inline QByteArray numberedLines(int count)
{
    static const QStringList words = {"alpha",   "bravo",  "charlie", "delta",    "echo",
                                      "foxtrot", "golf",   "hotel",   "india",    "juliet",
                                      "kilo",    "lima",   "mike",    "november", "oscar",
                                      "papa",    "quebec", "romeo",   "sierra",   "tango"};
    QByteArray text;
    for (int n = 1; n <= count; ++n)
        text += QString("%1 %2 %3\n")
                    .arg(n, 4, 10, QChar('0'))
                    .arg(words[n % 20], words[n / 20 % 20])
                    .toUtf8();
    return text;
}

// Another program's window, found by its title and activated, with its client area on the
// screen (empty when no window came); the program runs until this is deleted.
struct RealProgram
{
    QProcess process;
    QRect client;

    RealProgram(const QString& program, const QStringList& arguments, const QString& title)
    {
        process.start(program, arguments);
        const QByteArray id =
            output("xdotool", {"search", "--sync", "--onlyvisible", "--name", title})
                .split('\n')
                .first();
        if (id.isEmpty()) return;
        output("xdotool", {"windowactivate", "--sync", id});
        // xwininfo, as xdotool's position is off by the window manager's frame.
        QMap<QString, int> geometry;
        for (const QString& line : QString(output("xwininfo", {"-id", id})).split('\n'))
            geometry[line.section(':', 0, 0).trimmed()] = line.section(':', 1).toInt();
        client = QRect(geometry["Absolute upper-left X"], geometry["Absolute upper-left Y"],
                       geometry["Width"], geometry["Height"]);
    }
    ~RealProgram()
    {
        process.kill();
        process.waitForFinished();
    }
    static QByteArray output(const QString& program, const QStringList& arguments)
    {
        QProcess tool;
        tool.start(program, arguments);
        tool.waitForFinished(20000);
        return tool.readAllStandardOutput().trimmed();
    }
};

// xterm showing the file in less at an 11 pt monospace font, 80 by 30 cells. less moves by
// the wheel only with --mouse (xterm's own wheel would scroll its save-lines), here by 3 lines
// a notch, and keeps 3 lines of the last page on the next.
inline QStringList pagerArguments(const QString& title, const QString& file)
{
    return {"-fa", "Monospace", "-fs",  "11",      "-geometry",       "80x30", "-T",
            title, "-e",        "less", "--mouse", "--wheel-lines=3", "-z-3",  file};
}

// The stitched height a QSignalSpy on the scroll capture's progress heard last.
template <typename Spy> int lastHeight(const Spy& progress)
{
    return progress.isEmpty() ? 0 : progress.last().first().toInt();
}

} // namespace zelmor::test
