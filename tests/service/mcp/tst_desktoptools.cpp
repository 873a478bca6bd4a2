// The desktop tools of the MCP table and the platform calls under them, on real windows under
// openbox; typing into another program is checked by the SDK client (sdk_client.mjs).

#include "FakeFileManager.h"
#include "TestMain.h"
#include "TestSupport.h"
#include "UiFixture.h"
#include "UrlCatcher.h"

#include "platform/Input.h"
#include "platform/UiElements.h"
#include "platform/Windows.h"
#include "service/mcp/InputTools.h"
#include "service/mcp/McpTool.h"

#include <QClipboard>
#include <QDir>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMimeData>
#include <QMouseEvent>
#include <QPushButton>
#include <QScreen>
#include <QUrl>

#include <future>

using namespace zelmor::service::mcp;
using namespace zelmor::platform;
namespace platform = zelmor::platform;
using zelmor::test::succeeded;
using zelmor::test::UiFixture;

namespace {

// What reaches this window, as lines with points from its centre: "press BUTTON X,Y",
// "release X,Y", "wheel DELTA".
class Recorder : public QWidget
{
public:
    QStringList events;
    QPoint centre;

protected:
    void mousePressEvent(QMouseEvent* e) override
    {
        events << QStringLiteral("press %1 %2").arg(e->button()).arg(at(e));
    }
    void mouseDoubleClickEvent(QMouseEvent* e) override { mousePressEvent(e); }
    void mouseReleaseEvent(QMouseEvent* e) override { events << "release " + at(e); }
    void wheelEvent(QWheelEvent* e) override
    {
        events << QStringLiteral("wheel %1").arg(e->angleDelta().y());
    }

private:
    QString at(QMouseEvent* e) const
    {
        const QPoint p = e->globalPosition().toPoint() - centre;
        return QStringLiteral("%1,%2").arg(p.x()).arg(p.y());
    }
};

QStringList clicks(Qt::MouseButton button, int count, const QString& at = QStringLiteral("0,0"))
{
    QStringList events;
    while (count-- > 0)
        events << QStringLiteral("press %1 %2").arg(button).arg(at) << "release " + at;
    return events;
}

QVariantMap record(const QString& name, const QString& type, const QRect& r)
{
    return {{"name", name}, {"controlType", type}, {"x", r.x()},
            {"y", r.y()},   {"width", r.width()},  {"height", r.height()}};
}

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

class TestDesktopTools : public QObject
{
    Q_OBJECT

    zelmor::test::UrlCatcher m_urls{{"http", "https", "file"}};
    std::unique_ptr<UiFixture> m_fixture, m_tools;

    // Another program's focused line edit, emptied.
    UiFixture& focusedFixture()
    {
        if (!m_fixture)
            m_fixture = std::make_unique<UiFixture>(QStringLiteral("Input tools fixture"),
                                                    QRect(700, 150, 400, 400));
        platform::WindowHandle handle = 0;
        [&] { QTRY_VERIFY((handle = m_fixture->handle())); }();
        callMcpTool("focus_window", {{"title", m_fixture->title()}});
        [&] { QTRY_COMPARE(platform::foregroundWindow().handle, handle); }();
        callMcpTool("send_hotkey", {{"hotkey", "ctrl+a"}});
        callMcpTool("send_hotkey", {{"hotkey", "delete"}});
        // Every line of the clearing is in before the caller looks.
        [&] { QTRY_VERIFY(m_fixture->saw(QStringLiteral("release %1").arg(Qt::Key_Delete))); }();
        [&] { QCOMPARE(m_fixture->lastText(), QString()); }();
        m_fixture->forget();
        return *m_fixture;
    }

    // Another program's window of elements to find, made for the last cases: it would stand in
    // the way of the window cases.
    UiFixture& tools()
    {
        if (m_tools) return *m_tools;
        m_fixture.reset(); // the keys' fixture has controls of the same names
        m_tools = std::make_unique<UiFixture>("Tools fixture", QRect(100, 120, 420, 460));
        m_tools->add("hidden", 1, "Send (hidden)");
        m_tools->add("button", 1, "Send");
        m_tools->add("label", 1, "Note label");
        m_tools->add("edit", 1, "Note field");
        m_tools->add("label", 100, "Row");
        [this] {
            QTRY_VERIFY(m_tools->handle() && m_tools->shown("Tools fixture extras"));
            QTRY_COMPARE(callMcpTool("find_ui_elements", {{"name", "Row 100"}}).value("count"), 1);
        }();
        return *m_tools;
    }

private Q_SLOTS:
    void init() { m_urls.opened.clear(); }

    void keyNames_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<unsigned>("code");
        QTest::newRow("trimmed, any case") << " Control " << 0x11u;
        QTest::newRow("!, the key of 1") << "!" << 0x31u;
        QTest::newRow("*, main keys before the keypad") << "*" << 0x38u;
        QTest::newRow("é, not on a US keyboard") << "é" << 0u;
        QTest::newRow("surrogate pair") << "😀" << 0u;
    }
    void keyNames()
    {
        QFETCH(QString, name);
        QTEST(mcpKeyCode(name), "code");
    }

    // Points of a drag are given from the window's centre, where the cursor is at first.
    void mouseToolsReachTheWindow_data()
    {
        QTest::addColumn<QString>("tool");
        QTest::addColumn<QVariantMap>("args");
        QTest::addColumn<QStringList>("events");
        const Qt::MouseButton left = Qt::LeftButton;
        QTest::newRow("9 clicks, at most 3; without y the cursor stays; x1 is left")
            << "mouse_click" << QVariantMap{{"x", 5}, {"clicks", 9}, {"button", "x1"}}
            << clicks(left, 3);
        QTest::newRow("0 clicks") << "mouse_click" << QVariantMap{{"clicks", 0}} << clicks(left, 1);
        QTest::newRow("RIGHT") << "mouse_click" << QVariantMap{{"button", "RIGHT"}}
                               << clicks(Qt::RightButton, 1);
        QTest::newRow("middle") << "mouse_click" << QVariantMap{{"button", "middle"}}
                                << clicks(Qt::MiddleButton, 1);
        QTest::newRow("scroll none is one notch down")
            << "mouse_scroll" << QVariantMap{{"delta", 0}} << QStringList{"wheel -120"};
        QTest::newRow("scroll two down") << "mouse_scroll" << QVariantMap{{"delta", -240}}
                                         << QStringList{"wheel -120", "wheel -120"};
        QTest::newRow("scroll 2000, a part notch is a whole one")
            << "mouse_scroll" << QVariantMap{{"delta", 2000}} << QStringList(17, "wheel 120");
        QTest::newRow("drag across")
            << "mouse_drag"
            << QVariantMap{{"startX", 40}, {"startY", -40}, {"endX", -57}, {"endY", 13}}
            << QStringList{"press 1 40,-40", "release -57,13"};
        QTest::newRow("drag, start is end")
            << "mouse_drag"
            << QVariantMap{{"startX", 40}, {"startY", -40}, {"endX", 40}, {"endY", -40}}
            << QStringList{"press 1 40,-40", "release 40,-40"};
    }
    void mouseToolsReachTheWindow()
    {
        QFETCH(QString, tool);
        QFETCH(QVariantMap, args);
        QFETCH(QStringList, events);
        Recorder recorder;
        recorder.setGeometry(300, 300, 300, 200);
        recorder.show();
        QVERIFY(QTest::qWaitForWindowExposed(&recorder));
        recorder.centre = recorder.mapToGlobal(recorder.rect().center());
        QVERIFY(platform::setCursorPosition({recorder.centre.x(), recorder.centre.y()}));
        for (const char* key : {"startX", "endX"})
            if (args.contains(key)) args[key] = args[key].toInt() + recorder.centre.x();
        for (const char* key : {"startY", "endY"})
            if (args.contains(key)) args[key] = args[key].toInt() + recorder.centre.y();
        QVERIFY(callMcpTool(tool, args).value("success").toBool());
        // A click of its own after the tool: all the tool sent has arrived once it is in.
        QVERIFY(platform::sendMouseButtons(
            {{platform::MouseButton::Left, true}, {platform::MouseButton::Left, false}}));
        QTRY_COMPARE(recorder.events.size(), events.size() + 2);
        QCOMPARE(recorder.events.mid(0, events.size()), events);
    }

    // Typing keeps the server's thread busy, yet a cancellation or the end of input stops it
    // between characters; what was cancelled is not answered, the next request is.
    void typingStops_data()
    {
        QTest::addColumn<QByteArray>("then");
        QTest::addColumn<int>("answered");
        QTest::newRow("cancelled") << QByteArray(R"({"jsonrpc":"2.0","method":"notifications/)"
                                                 R"(cancelled","params":{"requestId":1}})"
                                                 "\n"
                                                 R"({"jsonrpc":"2.0","id":2,"method":"ping"})"
                                                 "\n")
                                   << 2;
        QTest::newRow("end of input") << QByteArray() << 1;
    }
    void typingStops()
    {
        QFETCH(QByteArray, then);
        UiFixture& fixture = focusedFixture();
        QProcess mcp;
        mcp.start(qEnvironmentVariable("ZELMOR_BIN_DIR") + "/zelmor-mcp", {});
        QVERIFY(mcp.waitForStarted());
        const QJsonObject call{{"name", "type_text"},
                               {"arguments", QJsonObject{{"text", QString(200, 'a')}}}};
        mcp.write(QJsonDocument(
                      {{"jsonrpc", "2.0"}, {"id", 1}, {"method", "tools/call"}, {"params", call}})
                      .toJson(QJsonDocument::Compact) +
                  '\n');
        QTRY_VERIFY_WITH_TIMEOUT(!fixture.lastText().isEmpty(), 30000);
        QTest::qWait(500);
        mcp.write(then);
        if (then.isEmpty()) mcp.closeWriteChannel();
        QTRY_VERIFY_WITH_TIMEOUT(mcp.canReadLine(), 30000);
        QTEST(QJsonDocument::fromJson(mcp.readLine())["id"].toInt(), "answered");
        mcp.closeWriteChannel();
        QVERIFY(mcp.waitForFinished(30000));
        QCOMPARE(mcp.readAllStandardOutput(), QByteArray());
        // A key of this process after the typing: all that was typed is in once it is.
        callMcpTool("send_hotkey", {{"hotkey", "shift"}});
        QTRY_VERIFY(fixture.saw(QStringLiteral("release %1").arg(Qt::Key_Shift)));
        const QString typed = fixture.lastText();
        QVERIFY2(typed.size() < 200 && typed == QString(typed.size(), 'a'), qPrintable(typed));
    }

    void hotkeyPressesInOrderAndReleasesInReverse()
    {
        UiFixture& fixture = focusedFixture();
        QCOMPARE(
            callMcpTool("send_hotkey", {{"hotkey", " Ctrl+Shift+Esc "}}),
            (McpToolResult{{"hotkey", "Ctrl+Shift+Esc"}, {"keysPressed", 3}, {"success", true}}));
        QStringList expected;
        for (const char* step : {"key", "release"})
            for (int key : {Qt::Key_Control, Qt::Key_Shift, Qt::Key_Escape})
                expected << QStringLiteral("%1 %2").arg(step).arg(key);
        std::reverse(expected.begin() + 3, expected.end());
        QTRY_COMPARE(fixture.lines(), expected);
    }

    void keysReachTheirQtKeys_data()
    {
        QTest::addColumn<unsigned>("virtualKey");
        QTest::addColumn<int>("qtKey");
        QTest::newRow("F13, a key the keyboard lacks") << 0x7Cu << int(Qt::Key_F13);
        QTest::newRow("numpad 7 without NumLock") << 0x67u << int(Qt::Key_7);
        QTest::newRow("unknown virtual key is skipped") << 0xFFu << int(Qt::Key_Home);
    }
    void keysReachTheirQtKeys()
    {
        QFETCH(unsigned, virtualKey);
        QFETCH(int, qtKey);
        UiFixture& fixture = focusedFixture();
        QVERIFY(platform::sendKeys(
            {{virtualKey, true}, {virtualKey, false}, {0x24, true}, {0x24, false}}));
        QTRY_VERIFY(fixture.saw(QStringLiteral("key %1").arg(Qt::Key_Home)));
        QCOMPARE(fixture.lines().filter(QStringLiteral("key ")).first(),
                 QStringLiteral("key %1").arg(qtKey));
    }

    void clipboardBothWays()
    {
        const QString text = QStringLiteral("clip 中文 ✓");
        QCOMPARE(callMcpTool("write_clipboard", {{"text", text}}),
                 (McpToolResult{{"length", 9}, {"success", true}}));
        QProcess xclip;
        xclip.start("xclip", {"-o", "-selection", "clipboard"});
        QTRY_COMPARE(xclip.state(), QProcess::NotRunning); // served by this event loop
        QCOMPARE(QString::fromUtf8(xclip.readAllStandardOutput()), text);

        QProcess owner; // -quiet keeps xclip in the foreground, serving until killed
        owner.start("xclip", {"-quiet", "-selection", "clipboard", "-i"});
        owner.write(QStringLiteral("from xclip 中文").toUtf8());
        owner.closeWriteChannel();
        QTRY_COMPARE(callMcpTool("read_clipboard", {}).value("text"), "from xclip 中文");
        owner.kill();

        const QString png = zelmor::test::sandboxRoot().filePath("only.png");
        QImage(8, 8, QImage::Format_RGB32).save(png);
        QProcess image;
        image.start("xclip", {"-quiet", "-selection", "clipboard", "-t", "image/png", "-i", png});
        QTRY_VERIFY(QGuiApplication::clipboard()->mimeData()->hasImage());
        QCOMPARE(callMcpTool("read_clipboard", {}),
                 (McpToolResult{{"hasText", false}, {"text", QString()}, {"success", true}}));
        image.kill();
        owner.waitForFinished();
        image.waitForFinished();
    }
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
    // Every tool of the desktop names what it lacks or did not find; last, with the element
    // fixture up, for the element tools.
    void failures_data()
    {
        QTest::addColumn<QString>("tool");
        QTest::addColumn<QVariantMap>("args");
        QTest::addColumn<QString>("message");
        QTest::newRow("hotkey of blanks")
            << "send_hotkey" << QVariantMap{{"hotkey", "  "}} << "hotkey cannot be empty";
        QTest::newRow("hotkey +") << "send_hotkey" << QVariantMap{{"hotkey", "+"}}
                                  << "unrecognized hotkey: +";
        QTest::newRow("key ab") << "key_down" << QVariantMap{{"key", " ab"}}
                                << "unrecognized key: ab";
        QTest::newRow("no text to type") << "type_text" << QVariantMap{} << "text cannot be empty";
        QTest::newRow("paste, too long") // the check typing shares
            << "paste_text_to_focused" << QVariantMap{{"text", QString(10001, 'x')}}
            << "text is 10001 characters long, more than the 10000 allowed";
        QTest::newRow("hotkey of 17 keys")
            << "send_hotkey" << QVariantMap{{"hotkey", QStringList(17, "a").join('+')}}
            << "hotkey has 17 keys, more than the 16 allowed";
        QTest::newRow("1001 annotations")
            << "annotate_image" << QVariantMap{{"annotations", QVariantList(1001)}}
            << "1001 annotations, more than the 1000 allowed";
        QTest::newRow("scroll of a billion")
            << "mouse_scroll" << QVariantMap{{"delta", 1e9}}
            << "delta 1000000000 is out of range: at most 600000 either way";
        QTest::newRow("focus, blanks")
            << "focus_window" << QVariantMap{{"title", "  "}} << "title keyword cannot be empty";
        QTest::newRow("focus, no match") << "focus_window" << QVariantMap{{"title", " nope 4711 "}}
                                         << "no visible window found matching 'nope 4711'";
        QTest::newRow("action, no window before the action")
            << "window_action" << QVariantMap{{"action", "hide"}, {"title", "nope 4711"}}
            << "window not found";
        QTest::newRow("reveal, missing")
            << "open_folder_and_select" << QVariantMap{{"path", " /no/such/file "}}
            << "file does not exist: /no/such/file";
        QTest::newRow("find, blanks")
            << "find_ui_elements" << QVariantMap{{"name", " "}} << "name cannot be empty";
        QTest::newRow("click, no name")
            << "click_ui_element" << QVariantMap{} << "name cannot be empty";
        QTest::newRow("click, no match")
            << "click_ui_element" << QVariantMap{{"name", " nothing 4711 "}}
            << "no UI element found matching 'nothing 4711'";
        QTest::newRow("set, a slider but no number")
            << "set_ui_element_text" << QVariantMap{{"name", "level"}, {"text", "3x"}}
            << "no editable UI element found matching 'level'";
        QTest::newRow("set, only a button")
            << "set_ui_element_text" << QVariantMap{{"name", "save"}, {"text", "x"}}
            << "no editable UI element found matching 'save'";
    }
    void failures()
    {
        QFETCH(QString, tool);
        QFETCH(QVariantMap, args);
        QFETCH(QString, message);
        tools();
        QCOMPARE(callMcpTool(tool, args), mcpToolError(message));
    }

    void findReturnsTheFirstThirty()
    {
        tools();
        const McpToolResult found = callMcpTool("find_ui_elements", {{"name", " ROW "}});
        QCOMPARE(found.value("count"), 30);
        const QVariantList elements = found.value("elements").toList();
        QCOMPARE(elements.size(), 30);
        QCOMPARE(elements[29].toMap().value("name"), "Row 30");
        QCOMPARE(elements[0].toMap(), record("Row 1", "Text", tools().where("Row 1")));
        QCOMPARE(callMcpTool("find_ui_elements", {{"name", "nothing 4711"}}),
                 succeeded({{"elements", QVariantList()}, {"count", 0}}));
    }

    void clickPassesOverElementsWithoutRectangle()
    {
        tools();
        const QVariantList matches =
            callMcpTool("find_ui_elements", {{"name", "send"}}).value("elements").toList();
        QCOMPARE(matches.size(), 2);
        QCOMPARE(matches[0].toMap().value("name"), "Send (hidden)");
        QCOMPARE(matches[0].toMap().value("width", 0), 0);
        const QRect send = tools().where("Send");
        QCOMPARE(callMcpTool("click_ui_element", {{"name", "send"}}),
                 succeeded({{"matchedName", "Send"},
                            {"x", send.x() + send.width() / 2},
                            {"y", send.y() + send.height() / 2}}));
        QTRY_VERIFY(tools().saw("clicked Send"));
        QVERIFY(!tools().saw("clicked Send (hidden)"));
    }

    // Elements refusing text, or this text, are passed over.
    void setTextWritesEditsAndValues_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("matched");
        QTest::addColumn<QString>("reported");
        QTest::newRow("edit after a label")
            << QString(" NOTE ") << QString(" 写入 ") << QString("Note field")
            << QString("changed Note field:  写入 ");
        QTest::newRow("spin box") << QString("count") << QString("42") << QString("Count")
                                  << QString("value 42");
        QTest::newRow("slider") << QString("Level") << QString(" 30 ") << QString("Level")
                                << QString("level 30");
    }
    void setTextWritesEditsAndValues()
    {
        QFETCH(QString, name);
        QFETCH(QString, text);
        QFETCH(QString, matched);
        QFETCH(QString, reported);
        tools();
        QCOMPARE(callMcpTool("set_ui_element_text", {{"name", name}, {"text", text}}),
                 succeeded({{"matchedName", matched}, {"text", text}}));
        QTRY_VERIFY(tools().saw(reported));
    }

    void inspectsTheElementAtAPoint_data()
    {
        QTest::addColumn<QString>("control");
        QTest::addColumn<bool>("onlyX"); // then the cursor's position counts
        QTest::addColumn<QString>("type");
        QTest::newRow("button under the cursor") << "Save" << true << "Button";
        QTest::newRow("pane at a point") << "Pad" << false << "Custom(50033)";
        QTest::newRow("nothing is no failure") << QString() << false << QString();
    }
    void inspectsTheElementAtAPoint()
    {
        QFETCH(QString, control);
        QFETCH(bool, onlyX);
        QFETCH(QString, type);
        const QRect r = control.isEmpty() ? QRect(1900, 1060, 1, 1) : tools().where(control);
        McpToolArgs args{{"x", r.center().x()}, {"y", r.center().y()}};
        if (onlyX) {
            callMcpTool("mouse_move", args);
            args = {{"x", 3}};
        }
        const McpToolResult none{{"element", QVariantMap()}, {"success", false}};
        QCOMPARE(callMcpTool("inspect_ui_element", args),
                 control.isEmpty() ? none : succeeded({{"element", record(control, type, r)}}));
    }

    void ownProgramIsLeftOut()
    {
        QPushButton own(QStringLiteral("Own button"));
        own.setGeometry(800, 600, 150, 40);
        own.show();
        QVERIFY(QTest::qWaitForWindowExposed(&own));
        // Asked from another thread, while this one answers the bus, it could be found.
        auto found = std::async(std::launch::async, [&own] {
            for (const UiElement& e : UiElement().descendants())
                if (e.name() == "Own button") return true;
            return !uiElementOfWindow(own.winId()).isNull() || !uiElementAt({875, 620}).isNull();
        });
        QTRY_VERIFY(found.wait_for(std::chrono::seconds(0)) == std::future_status::ready);
        QVERIFY(!found.get());
    }
};

ZELMOR_TEST_MAIN(TestDesktopTools, QApplication)
#include "tst_desktoptools.moc"
