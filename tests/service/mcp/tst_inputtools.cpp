// The mouse, keyboard and clipboard tools and the input calls under them, against real windows:
// this suite's own for the mouse, another program's for keys, and xclip as the other side of the
// clipboard. Typing into another program is checked by the SDK client (sdk_client.mjs).

#include "TestMain.h"
#include "UiFixture.h"

#include "platform/Input.h"
#include "platform/Windows.h"
#include "service/mcp/InputTools.h"
#include "service/mcp/McpTool.h"

#include <QClipboard>
#include <QImage>
#include <QMimeData>
#include <QMouseEvent>

using namespace zelmor::service::mcp;
namespace platform = zelmor::platform;
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

} // namespace

class TestInputTools : public QObject
{
    Q_OBJECT

    std::unique_ptr<UiFixture> m_fixture;

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

private Q_SLOTS:
    void keyNames_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<unsigned>("code");
        QTest::newRow("trimmed, any case") << " Control " << 0x11u;
        QTest::newRow("f13 is not named") << "f13" << 0u;
        QTest::newRow("!, the key of 1") << "!" << 0x31u;
        QTest::newRow("*, main keys before the keypad") << "*" << 0x38u;
        QTest::newRow("é, not on a US keyboard") << "é" << 0u;
        QTest::newRow("surrogate pair") << "😀" << 0u;
    }
    void keyNames()
    {
        QFETCH(QString, name);
        QFETCH(unsigned, code);
        QCOMPARE(mcpKeyCode(name), code);
    }

    // Every tool of the desktop names what it lacks or did not find.
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
    }
    void failures()
    {
        QFETCH(QString, tool);
        QFETCH(QVariantMap, args);
        QFETCH(QString, message);
        QCOMPARE(callMcpTool(tool, args), mcpToolError(message));
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
        QTest::newRow("scroll part of a notch up")
            << "mouse_scroll" << QVariantMap{{"delta", 30}} << QStringList{"wheel 120"};
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
        QTest::newRow("OEM period") << 0xBEu << int(Qt::Key_Period);
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
};

ZELMOR_TEST_MAIN(TestInputTools, QApplication)
#include "tst_inputtools.moc"
