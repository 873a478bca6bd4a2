// Window manager requests on real windows under openbox, directly and through the window, launch
// and file tools: other programs' windows found, focused and changed, the desktop's URL handlers
// and the search path, and a file manager on the session bus.

#include "TestMain.h"
#include "TestSupport.h"
#include "UiFixture.h"

#include "platform/Windows.h"
#include "service/mcp/McpTool.h"

#include <QDBusConnection>
#include <QDesktopServices>
#include <QDir>
#include <QMutex>
#include <QScreen>
#include <QThread>
#include <QUrl>

using namespace zelmor::service::mcp;
using namespace zelmor::platform;
using zelmor::test::startForeignWindow;
using zelmor::test::UiFixture;

namespace {

WindowRecord windowTitled(const QString& title)
{
    for (const WindowRecord& w : listTopLevelWindows())
        if (QString::fromStdString(w.title) == title && w.visible) return w;
    return {};
}

QString hex(WindowHandle handle)
{
    return QString::number(handle, 16);
}

McpToolResult succeeded(McpToolResult fields)
{
    fields.insert("success", true);
    return fields;
}

// Another program's window, ended with the test.
struct Foreign
{
    std::unique_ptr<QProcess> process;
    Foreign(const QString& title, const QRect& geometry)
        : process(startForeignWindow(title, geometry))
    {}
    ~Foreign()
    {
        process->kill();
        process->waitForFinished();
    }
};

// The program has shown its window and taken the focus, as it does once when it starts: a test
// that acts before that late request would see its own request undone.
WindowHandle focusedWindow(const QString& title)
{
    WindowHandle handle = 0;
    const bool focused = QTest::qWaitFor(
        [&] {
            return (handle = windowTitled(title).handle) && foregroundWindow().handle == handle;
        },
        10000);
    return focused ? handle : 0;
}

// Collects what the desktop would have opened.
class UrlCatcher : public QObject
{
    Q_OBJECT
public:
    QList<QUrl> opened;
public Q_SLOTS:
    void open(const QUrl& url) { opened << url; }
};

// Answers on the session bus from a thread of its own, so the tool's blocking call can be
// served while the test's thread waits in it.
class FakeFileManager : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")
public:
    QStringList items()
    {
        QMutexLocker lock(&m_mutex);
        return m_items;
    }
public Q_SLOTS:
    void ShowItems(const QStringList& uris, const QString&)
    {
        QMutexLocker lock(&m_mutex);
        m_items += uris;
    }

private:
    QMutex m_mutex;
    QStringList m_items;
};

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

    UrlCatcher m_urls;

private Q_SLOTS:
    void initTestCase()
    {
        for (const char* scheme : {"http", "https", "file"})
            QDesktopServices::setUrlHandler(scheme, &m_urls, "open");
    }
    void cleanupTestCase()
    {
        for (const char* scheme : {"http", "https", "file"})
            QDesktopServices::unsetUrlHandler(scheme);
    }
    void init() { m_urls.opened.clear(); }

    void failures_data()
    {
        QTest::addColumn<QString>("tool");
        QTest::addColumn<QVariantMap>("args");
        QTest::addColumn<QString>("message");
        QTest::newRow("focus, blanks")
            << "focus_window" << QVariantMap{{"title", "  "}} << "title keyword cannot be empty";
        QTest::newRow("focus, no match") << "focus_window" << QVariantMap{{"title", " nope 4711 "}}
                                         << "no visible window found matching 'nope 4711'";
        QTest::newRow("action, no window before the action")
            << "window_action" << QVariantMap{{"action", "hide"}, {"title", "nope 4711"}}
            << "window not found";
        QTest::newRow("paste, no window")
            << "activate_window_and_paste" << QVariantMap{{"title", "nope 4711"}}
            << "no visible window found matching 'nope 4711'";
        QTest::newRow("reveal, missing")
            << "open_folder_and_select" << QVariantMap{{"path", " /no/such/file "}}
            << "file does not exist: /no/such/file";
        QTest::newRow("file info, missing")
            << "get_file_info" << QVariantMap{{"path", "/no/such/file"}}
            << "file does not exist: /no/such/file";
    }
    void failures()
    {
        QFETCH(QString, tool);
        QFETCH(QVariantMap, args);
        QFETCH(QString, message);
        QCOMPARE(callMcpTool(tool, args), mcpToolError(message));
    }

    void listsWindowsOfOtherPrograms()
    {
        const Foreign other("Listed window", QRect(120, 140, 320, 180));
        WindowRecord record;
        QTRY_VERIFY((record = windowTitled("Listed window")).handle);
        const McpToolResult result = callMcpTool("list_windows", {});
        QVariantMap listed;
        for (const QVariant& w : result.value("windows").toList())
            if (w.toMap().value("title") == "Listed window") listed = w.toMap();
        QCOMPARE(listed, (QVariantMap{{"title", "Listed window"},
                                      {"hwnd", hex(record.handle)},
                                      {"process", "zelmor-test-window"},
                                      {"x", record.frame.x},
                                      {"y", record.frame.y},
                                      {"width", record.frame.width},
                                      {"height", record.frame.height}}));
        QVERIFY(record.frame.width >= 320 && record.frame.height >= 180);
        QCOMPARE(result.value("count").toInt(), result.value("windows").toList().size());
        QVERIFY(result.value("success").toBool());
    }

    void focusesBySubstringIgnoringCase()
    {
        const Foreign notepad("Untitled - Notepad", QRect(100, 100, 300, 120));
        const WindowHandle target = focusedWindow("Untitled - Notepad");
        QVERIFY(target);
        const Foreign other("Other window", QRect(500, 100, 300, 120));
        QVERIFY(focusedWindow("Other window"));

        QCOMPARE(callMcpTool("focus_window", {{"title", " note "}}),
                 succeeded({{"matchedTitle", "Untitled - Notepad"}, {"hwnd", hex(target)}}));
        QTRY_COMPARE(foregroundWindow().handle, target);
        const McpToolResult active = callMcpTool("get_active_window_info", {});
        QCOMPARE(active.value("title"), "Untitled - Notepad");
        QCOMPARE(active.value("hwnd"), hex(target));
        QCOMPARE(active.value("process"), "zelmor-test-window");
        QCOMPARE(active.value("width").toInt(), foregroundWindow().frame.width);
    }

    void windowActionsChangeTheWindow()
    {
        const Foreign other("Action target", QRect(200, 200, 300, 150));
        const WindowHandle handle = focusedWindow("Action target");
        QVERIFY(handle);
        const auto state = [handle] {
            for (const WindowRecord& w : listTopLevelWindows())
                if (w.handle == handle) return QString("%1%2").arg(w.minimized).arg(w.maximized);
            return QString();
        };
        const auto act = [](const QString& action) {
            return callMcpTool("window_action", {{"action", action}, {"title", " action TARGET"}});
        };
        QCOMPARE(act(" Minimize "),
                 succeeded({{"action", "minimize"}, {"title", "Action target"}}));
        QTRY_COMPARE(state(), "10");
        act("restore");
        QTRY_COMPARE(state(), "00");
        act("maximize");
        QTRY_COMPARE(state(), "01");
        act("restore");
        QTRY_COMPARE(state(), "00");
        QCOMPARE(act("hide"), mcpToolError("unknown action: hide"));

        // Without a title the action falls on the active window.
        QTRY_COMPARE(foregroundWindow().handle, handle);
        QCOMPARE(callMcpTool("window_action", {{"action", "CLOSE"}}),
                 succeeded({{"action", "close"}, {"title", "Action target"}}));
        QTRY_COMPARE(other.process->state(), QProcess::NotRunning);
    }

    void activatesSendsHotkeyAndPastes()
    {
        UiFixture fixture("Paste target", QRect(150, 150, 400, 400));
        QTRY_VERIFY(fixture.handle() && foregroundWindow().handle == fixture.handle());
        const Foreign other("Paste bystander", QRect(600, 150, 300, 120));
        QVERIFY(focusedWindow("Paste bystander"));
        const auto paste = [](const QString& text) {
            return callMcpTool("activate_window_and_paste",
                               {{"title", "paste TARGET"}, {"hotkey", "ctrl+a"}, {"text", text}});
        };
        QCOMPARE(paste("first"), succeeded({{"title", "paste TARGET"}}));
        QTRY_COMPARE(fixture.lastText(), "first");
        activateWindow(windowTitled("Paste bystander").handle);
        QTRY_COMPARE(QString::fromStdString(foregroundWindow().title), "Paste bystander");
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
        const auto launched = [](const QString& target) {
            return succeeded({{"text", QStringLiteral("Launched successfully: %1. App window is "
                                                      "now ready for UI automation.")
                                           .arg(target)}});
        };
        QCOMPARE(launch(" https://example.org/a b "), launched("https://example.org/a b"));
        QCOMPARE(launch(probe), launched(probe));
        QCOMPARE(m_urls.opened,
                 (QList<QUrl>{QUrl("https://example.org/a b"), QUrl::fromLocalFile(probe)}));

        QCOMPARE(launch("zelmor-launch-probe"), launched("zelmor-launch-probe"));
        QTRY_VERIFY(QFile::exists(probe + ".ran"));
        QCOMPARE(launch("zelmor-launch-probe --now"),
                 mcpToolError("Failed to launch target: zelmor-launch-probe --now"));
        QCOMPARE(launch("HTTP://example.org/"),
                 mcpToolError("Failed to launch target: HTTP://example.org/"));
        QCOMPARE(m_urls.opened.size(), 2);
    }

    void fileInfoOfAFolder()
    {
        const QString path = zelmor::test::sandboxRoot().filePath("a.folder");
        QVERIFY(QDir().mkpath(path));
        const QFileInfo info(path);
        QCOMPARE(callMcpTool("get_file_info", {{"path", QString(" " + path + " ")}}),
                 succeeded({{"path", path},
                            {"fileName", "a.folder"},
                            {"sizeBytes", info.size()},
                            {"isDir", true},
                            {"isFile", false},
                            {"suffix", "folder"},
                            {"created", info.birthTime().toString(Qt::ISODate)},
                            {"lastModified", info.lastModified().toString(Qt::ISODate)},
                            {"isWritable", true}}));
    }

    void revealWithoutFileManagerOpensTheFolder()
    {
        const QString file = zelmor::test::sandboxRoot().filePath("shown file.txt");
        QVERIFY(zelmor::test::writeFile(file, "x"));
        QCOMPARE(callMcpTool("open_folder_and_select", {{"path", file}}),
                 succeeded({{"path", file}}));
        QCOMPARE(m_urls.opened,
                 QList<QUrl>{QUrl::fromLocalFile(zelmor::test::sandboxRoot().path())});
    }

    void revealAsksTheFileManagerOnTheBus()
    {
        QThread thread;
        thread.start();
        FakeFileManager manager;
        manager.moveToThread(&thread);
        QDBusConnection bus =
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, "fake-file-manager");
        QVERIFY(bus.registerObject("/org/freedesktop/FileManager1", &manager,
                                   QDBusConnection::ExportAllSlots));
        QVERIFY(bus.registerService("org.freedesktop.FileManager1"));

        const QString file = zelmor::test::sandboxRoot().filePath("shown file.txt");
        QVERIFY(zelmor::test::writeFile(file, "x"));
        QCOMPARE(callMcpTool("open_folder_and_select", {{"path", QString(" " + file)}}),
                 succeeded({{"path", file}}));
        QCOMPARE(manager.items().size(), 1);
        QCOMPARE(QUrl(manager.items().first()).toLocalFile(), file);
        QVERIFY(m_urls.opened.isEmpty());

        bus.unregisterService("org.freedesktop.FileManager1");
        bus.unregisterObject("/org/freedesktop/FileManager1");
        QDBusConnection::disconnectFromBus("fake-file-manager");
        thread.quit();
        thread.wait();
    }

    void activationMakesForeground()
    {
        QWidget own;
        own.setWindowTitle(QStringLiteral("Activation own"));
        own.setGeometry(100, 100, 300, 200);
        own.show();
        QVERIFY(QTest::qWaitForWindowExposed(&own));
        UiFixture fixture(QStringLiteral("Activation fixture"), QRect(150, 150, 300, 300));
        WindowHandle other = 0;
        QTRY_VERIFY((other = fixture.handle()));

        for (WindowHandle target : {WindowHandle(own.winId()), other, WindowHandle(own.winId())}) {
            QVERIFY(activateWindow(target));
            QTRY_COMPARE(foregroundWindow().handle, target);
            QCOMPARE(windowAt({200, 200}), target); // raised above the other
        }
    }

    void minimizeMaximizeRestoreAndClose()
    {
        UiFixture fixture(QStringLiteral("Actions fixture"), QRect(300, 200, 400, 300));
        WindowHandle h = 0;
        QTRY_VERIFY((h = fixture.handle()));
        QTRY_VERIFY(recordOf(h).frame.width > 0);
        const QRect normal = qRect(recordOf(h).frame);
        const Point inside{normal.center().x(), normal.center().y()};
        QTRY_COMPARE(windowAt(inside), h);

        QVERIFY(minimizeWindow(h));
        QTRY_VERIFY(recordOf(h).minimized);
        QCOMPARE(windowAt(inside), WindowHandle(0));
        QVERIFY(restoreWindow(h));
        QTRY_VERIFY(!recordOf(h).minimized);
        QTRY_COMPARE(foregroundWindow().handle, h);
        // The window manager animates the way back from the icon.
        QTRY_COMPARE(qRect(recordOf(h).frame), normal);

        QVERIFY(maximizeWindow(h));
        QTRY_VERIFY(recordOf(h).maximized);
        const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
        QTRY_COMPARE(qRect(recordOf(h).frame).width(), available.width());

        // Back from minimized it is maximized again, as it was.
        QVERIFY(minimizeWindow(h));
        QTRY_VERIFY(recordOf(h).minimized);
        QVERIFY(restoreWindow(h));
        QTRY_VERIFY(!recordOf(h).minimized);
        QVERIFY(recordOf(h).maximized);

        QVERIFY(restoreWindow(h));
        QTRY_VERIFY(!recordOf(h).maximized);
        QTRY_COMPARE(qRect(recordOf(h).frame), normal);

        QVERIFY(closeWindow(h));
        QTRY_COMPARE(fixture.process().state(), QProcess::NotRunning);
        QCOMPARE(fixture.process().exitStatus(), QProcess::NormalExit);
        QCOMPARE(fixture.process().exitCode(), 0);
        QTRY_VERIFY(!activateWindow(h)); // a window that is gone
        QVERIFY(!closeWindow(h));
        QCOMPARE(windowProcessName(h), std::string());
        QCOMPARE(windowProcessName(0), std::string());
    }

    void nothingAtAnEmptyPoint()
    {
        QCOMPARE(windowAt({5, 1075}), WindowHandle(0));
        QCOMPARE(windowAt({-50, -50}), WindowHandle(0));
    }
};

ZELMOR_TEST_MAIN(TestWindowTools, QApplication)
#include "tst_windowtools.moc"
