#pragma once

// Drives the zelmor-ui-fixture program: another process with a window of named controls that
// reports what happens to them.

#include "platform/Windows.h"

#include <QCoreApplication>
#include <QProcess>
#include <QRect>
#include <QStringList>
#include <QTest>

namespace zelmor::test {

class UiFixture
{
public:
    UiFixture(const QString& title, const QRect& g) : m_title(title)
    {
        m_process.start(QCoreApplication::applicationDirPath() + "/zelmor-ui-fixture",
                        {title, QString::number(g.x()), QString::number(g.y()),
                         QString::number(g.width()), QString::number(g.height())});
        m_process.waitForStarted();
    }
    ~UiFixture()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    const QString& title() const { return m_title; }
    QProcess& process() { return m_process; }

    // The fixture's window once it is on screen and listed, else 0.
    platform::WindowHandle handle()
    {
        if (!shown(m_title)) return 0;
        for (const platform::WindowRecord& w : platform::listTopLevelWindows())
            if (QString::fromStdString(w.title) == m_title && w.visible) return w.handle;
        return 0;
    }

    // The window once on screen and focused, as the program asks when it starts, else 0: a test
    // that acts before that late request would see its own undone.
    platform::WindowHandle focusedHandle()
    {
        platform::WindowHandle h = 0;
        const auto focused = [&] {
            return (h = handle()) && platform::foregroundWindow().handle == h;
        };
        return QTest::qWaitFor(focused, 10000) ? h : 0;
    }

    const QStringList& lines()
    {
        while (m_process.canReadLine()) {
            const QString line = QString::fromUtf8(m_process.readLine()).chopped(1);
            if (line.startsWith(QLatin1String("shown ")))
                m_shown << line.mid(6);
            else
                m_lines << line;
        }
        return m_lines;
    }
    // The window of that title is on screen, with the window manager's placement known to it.
    bool shown(const QString& title) { return lines(), m_shown.contains(title); }
    bool saw(const QString& line) { return lines().contains(line); }
    void forget() { lines(), m_lines.clear(); }
    QString lastText()
    {
        for (auto it = lines().crbegin(); it != lines().crend(); ++it)
            if (it->startsWith(QLatin1String("text "))) return it->mid(5);
        return {};
    }

    // Adds controls to the fixture's second window, "TITLE extras"; KIND as zelmor-ui-fixture
    // takes it.
    void add(const QString& kind, int count, const QString& name)
    {
        m_process.write(QStringLiteral("add %1 %2 %3\n").arg(kind).arg(count).arg(name).toUtf8());
    }

    // The control's rectangle on the screen, as the fixture itself sees it.
    QRect where(const QString& name)
    {
        const QString prefix = QStringLiteral("at %1 ").arg(name);
        m_process.write(QStringLiteral("where %1\n").arg(name).toUtf8());
        QString answer;
        if (!QTest::qWaitFor([&] { return !(answer = lines().filter(prefix).value(0)).isEmpty(); }))
            return {};
        m_lines.removeAll(answer);
        const QStringList n = answer.mid(prefix.size()).split(' ');
        return QRect(n[0].toInt(), n[1].toInt(), n[2].toInt(), n[3].toInt());
    }

private:
    QString m_title;
    QProcess m_process;
    QStringList m_lines;
    QStringList m_shown;
};

// A tool's result on success: `fields` and success = true.
inline QVariantMap succeeded(QVariantMap fields)
{
    fields.insert(QStringLiteral("success"), true);
    return fields;
}

} // namespace zelmor::test
