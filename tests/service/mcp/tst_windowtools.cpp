// The window, launch and file tools on real windows under openbox: other programs' windows
// found, focused and changed, the desktop's URL handlers and the search path, and a file
// manager on the session bus.

#include "FakeFileManager.h"
#include "TestMain.h"
#include "TestSupport.h"
#include "UiFixture.h"
#include "UrlCatcher.h"

#include "platform/Windows.h"
#include "service/mcp/McpTool.h"

#include <QDir>
#include <QScreen>
#include <QUrl>

using namespace zelmor::service::mcp;
using namespace zelmor::platform;
using zelmor::test::succeeded;
using zelmor::test::UiFixture;

namespace {

WindowRecord recordOf(WindowHandle handle)
{
    for (const WindowRecord& w : listTopLevelWindows())
        if (w.handle == handle) return w;
    return {};
}

QRect qRect(const Rect& r)
{
    return {r.x, r.y, r.width, r.height};
}

} // namespace

class TestWindowTools : public QObject
{
    Q_OBJECT

    zelmor::test::UrlCatcher m_urls{{"http", "https", "file"}};

private Q_SLOTS:
    void init() { m_urls.opened.clear(); }

    void listsAndFocusesOtherPrograms()
    {
        UiFixture notepad("Untitled - Notepad", QRect(100, 100, 320, 180));
        const WindowHandle target = notepad.focusedHandle();
        QVERIFY(target);
        const QString hwnd = QString::number(target, 16);
        UiFixture other("Other window", QRect(150, 150, 300, 120));
        QVERIFY(other.focusedHandle());
        const Rect frame = recordOf(target).frame;
        QVERIFY(frame.width >= 320 && frame.height >= 180);
        const QVariantMap listed{{"title", "Untitled - Notepad"},
                                 {"hwnd", hwnd},
                                 {"process", "zelmor-ui-fixture"},
                                 {"x", frame.x},
                                 {"y", frame.y},
                                 {"width", frame.width},
                                 {"height", frame.height}};
        QVERIFY(callMcpTool("list_windows", {}).value("windows").toList().contains(listed));

        QCOMPARE(callMcpTool("focus_window", {{"title", " note "}}),
                 succeeded({{"matchedTitle", "Untitled - Notepad"}, {"hwnd", hwnd}}));
        QTRY_COMPARE(foregroundWindow().handle, target);
        QCOMPARE(windowAt({200, 200}), target); // raised above the other
        QCOMPARE(callMcpTool("get_active_window_info", {}), succeeded(listed));
    }

    void windowActionsChangeTheWindow()
    {
        UiFixture other("Action target", QRect(300, 200, 400, 300));
        const WindowHandle h = other.focusedHandle();
        QVERIFY(h);
        const QRect normal = qRect(recordOf(h).frame);
        const Point inside{normal.center().x(), normal.center().y()};
        QTRY_COMPARE(windowAt(inside), h);
        const auto state = [h] {
            const WindowRecord w = recordOf(h);
            return QString("%1%2").arg(w.minimized).arg(w.maximized);
        };
        const auto act = [](const QString& action) {
            return callMcpTool("window_action", {{"action", action}, {"title", " action TARGET"}});
        };
        QCOMPARE(act(" Minimize "),
                 succeeded({{"action", "minimize"}, {"title", "Action target"}}));
        QTRY_COMPARE(state(), "10");
        QTRY_COMPARE(windowAt(inside), WindowHandle(0));
        act("restore");
        QTRY_COMPARE(state(), "00");
        QTRY_COMPARE(foregroundWindow().handle, h);
        // The window manager animates the way back from the icon.
        QTRY_COMPARE(qRect(recordOf(h).frame), normal);

        act("maximize");
        QTRY_COMPARE(state(), "01");
        QTRY_COMPARE(recordOf(h).frame.width,
                     QGuiApplication::primaryScreen()->availableGeometry().width());
        act("minimize"); // and back from the icon it is maximized again, as it was
        QTRY_VERIFY(recordOf(h).minimized);
        act("restore");
        QTRY_COMPARE(state(), "01");
        act("restore");
        QTRY_COMPARE(state(), "00");
        QTRY_COMPARE(qRect(recordOf(h).frame), normal);
        QCOMPARE(act("hide"), mcpToolError("unknown action: hide"));

        // Without a title the action falls on the active window.
        QTRY_COMPARE(foregroundWindow().handle, h);
        QCOMPARE(callMcpTool("window_action", {{"action", "CLOSE"}}),
                 succeeded({{"action", "close"}, {"title", "Action target"}}));
        QTRY_COMPARE(other.process().state(), QProcess::NotRunning);
        QCOMPARE(other.process().exitStatus(), QProcess::NormalExit);
        QTRY_VERIFY(!activateWindow(h)); // a window that is gone
        QVERIFY(!closeWindow(h));
        QCOMPARE(windowProcessName(h), std::string());
    }

    void activatesSendsHotkeyAndPastes()
    {
        UiFixture fixture("Paste target", QRect(150, 150, 400, 400));
        QVERIFY(fixture.focusedHandle());
        UiFixture other("Paste bystander", QRect(600, 150, 300, 120));
        const WindowHandle bystander = other.focusedHandle();
        QVERIFY(bystander);
        const auto paste = [](const QString& text) {
            return callMcpTool("activate_window_and_paste",
                               {{"title", "paste TARGET"}, {"hotkey", "ctrl+a"}, {"text", text}});
        };
        QCOMPARE(paste("first"), succeeded({{"title", "paste TARGET"}}));
        QTRY_COMPARE(fixture.lastText(), "first");
        activateWindow(bystander);
        QTRY_COMPARE(foregroundWindow().handle, bystander);
        paste("second 中文"); // select-all first, so it replaces
        QTRY_COMPARE(fixture.lastText(), "second 中文");
    }

    void launchesUrlsFilesAndPrograms()
    {
        const QDir bin(zelmor::test::sandboxRoot().filePath("bin"));
        QVERIFY(bin.mkpath("."));
        const QString probe = bin.filePath("zelmor-launch-probe");
        QVERIFY(zelmor::test::writeFile(probe, "#!/bin/sh\ntouch \"$0.ran\"\n"));
        QFile::setPermissions(probe, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        qputenv("PATH", bin.path().toUtf8() + ':' + qgetenv("PATH"));

        const auto launch = [](const QString& target) {
            return callMcpTool("launch_app", {{"target", target}});
        };
        QVERIFY(launch(" https://example.org/a b ").value("success").toBool());
        QVERIFY(launch(probe).value("success").toBool());
        QCOMPARE(m_urls.opened,
                 (QList<QUrl>{QUrl("https://example.org/a b"), QUrl::fromLocalFile(probe)}));

        QVERIFY(launch("zelmor-launch-probe").value("success").toBool());
        QTRY_VERIFY(QFile::exists(probe + ".ran"));
        QCOMPARE(launch("zelmor-launch-probe --now"),
                 mcpToolError("Failed to launch target: zelmor-launch-probe --now"));
        QCOMPARE(launch("HTTP://example.org/"),
                 mcpToolError("Failed to launch target: HTTP://example.org/"));
        QCOMPARE(m_urls.opened.size(), 2);
    }

    // Without a file manager on the bus the folder is opened; with one, it shows the file.
    void revealsTheFile()
    {
        const QString file = zelmor::test::sandboxRoot().filePath("shown file.txt");
        QVERIFY(zelmor::test::writeFile(file, "x"));
        QVERIFY(callMcpTool("get_file_info", {{"path", file}}).value("isFile").toBool());
        QCOMPARE(callMcpTool("open_folder_and_select", {{"path", file}}),
                 succeeded({{"path", file}}));
        QCOMPARE(m_urls.opened,
                 QList<QUrl>{QUrl::fromLocalFile(zelmor::test::sandboxRoot().path())});

        m_urls.opened.clear();
        zelmor::test::FileManagerOnBus fileManager;
        QVERIFY(fileManager.registered);

        QCOMPARE(callMcpTool("open_folder_and_select", {{"path", QString(" " + file)}}),
                 succeeded({{"path", file}}));
        const QStringList shown = fileManager.shown();
        QCOMPARE(shown.size(), 1);
        QCOMPARE(QUrl(shown.first()).toLocalFile(), file);
        QVERIFY(m_urls.opened.isEmpty());
    }
};

ZELMOR_TEST_MAIN(TestWindowTools, QApplication)
#include "tst_windowtools.moc"
