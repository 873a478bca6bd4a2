// The mouse, keyboard and clipboard tools and the input calls under them, against real windows:
// this suite's own for the mouse, another program's for keys and text (typing remaps keys that
// the receiver must read while the sender waits), and xclip as the other side of the clipboard.

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

class Recorder : public QWidget
{
public:
    QList<Qt::MouseButton> presses;
    QList<QPoint> pressedAt, releasedAt, wheels;

protected:
    void mousePressEvent(QMouseEvent* e) override
    {
        presses << e->button();
        pressedAt << e->globalPosition().toPoint();
    }
    void mouseDoubleClickEvent(QMouseEvent* e) override { mousePressEvent(e); }
    void mouseReleaseEvent(QMouseEvent* e) override { releasedAt << e->globalPosition().toPoint(); }
    void wheelEvent(QWheelEvent* e) override { wheels << e->angleDelta(); }
};

std::unique_ptr<Recorder> shownRecorder()
{
    auto r = std::make_unique<Recorder>();
    r->setGeometry(300, 300, 300, 200);
    r->show();
    return QTest::qWaitForWindowExposed(r.get()) ? std::move(r) : nullptr;
}

// Where the recorder's centre is, the cursor moved there.
QPoint centreOf(const QWidget& w)
{
    const QPoint c = w.mapToGlobal(w.rect().center());
    return platform::setCursorPosition({c.x(), c.y()}) ? c : QPoint();
}

bool click()
{
    return platform::sendMouseButtons(
        {{platform::MouseButton::Left, true}, {platform::MouseButton::Left, false}});
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

    void clicksAndButtons_data()
    {
        QTest::addColumn<QVariantMap>("args");
        QTest::addColumn<QList<Qt::MouseButton>>("presses");
        const Qt::MouseButton left = Qt::LeftButton;
        QTest::newRow("0 clicks") << QVariantMap{{"clicks", 0}} << QList<Qt::MouseButton>{left};
        QTest::newRow("9 clicks, at most 3")
            << QVariantMap{{"clicks", 9}} << QList<Qt::MouseButton>{left, left, left};
        QTest::newRow("RIGHT") << QVariantMap{{"button", "RIGHT"}}
                               << QList<Qt::MouseButton>{Qt::RightButton};
        QTest::newRow("middle") << QVariantMap{{"button", "middle"}}
                                << QList<Qt::MouseButton>{Qt::MiddleButton};
        QTest::newRow("x1 is left")
            << QVariantMap{{"button", "x1"}} << QList<Qt::MouseButton>{left};
    }
    void clicksAndButtons()
    {
        QFETCH(QVariantMap, args);
        QFETCH(QList<Qt::MouseButton>, presses);
        const auto recorder = shownRecorder();
        QVERIFY(recorder);
        const QPoint at = centreOf(*recorder);
        args.insert("x", 5); // without y: the cursor stays where it is
        const McpToolResult result = callMcpTool("mouse_click", args);
        QCOMPARE(QPoint(result.value("x").toInt(), result.value("y").toInt()), at);
        QTRY_COMPARE(recorder->presses, presses);
        QCOMPARE(recorder->pressedAt.first(), at);
    }

    void scrollMovesWholeNotches_data()
    {
        QTest::addColumn<int>("delta");
        QTest::addColumn<QList<QPoint>>("received");
        QTest::newRow("none is one notch down") << 0 << QList<QPoint>{{0, -120}};
        QTest::newRow("two down") << -240 << QList<QPoint>{{0, -120}, {0, -120}};
        QTest::newRow("part of a notch up") << 30 << QList<QPoint>{{0, 120}};
    }
    void scrollMovesWholeNotches()
    {
        QFETCH(int, delta);
        QFETCH(QList<QPoint>, received);
        const auto recorder = shownRecorder();
        QVERIFY(recorder && !centreOf(*recorder).isNull());
        QVERIFY(callMcpTool("mouse_scroll", {{"delta", delta}}).value("success").toBool());
        QVERIFY(click()); // a marker: every wheel event came before it
        QTRY_COMPARE(recorder->presses.size(), 1);
        QCOMPARE(recorder->wheels, received);
    }

    void dragPressesMovesAndReleases_data()
    {
        QTest::addColumn<QPoint>("offset"); // of the end from the start
        QTest::newRow("across") << QPoint(-97, 53);
        QTest::newRow("start is end") << QPoint(0, 0);
    }
    void dragPressesMovesAndReleases()
    {
        QFETCH(QPoint, offset);
        const auto recorder = shownRecorder();
        QVERIFY(recorder);
        const QPoint start = centreOf(*recorder) + QPoint(40, -40);
        const QPoint end = start + offset;
        McpToolArgs args{
            {"startX", start.x()}, {"startY", start.y()}, {"endX", end.x()}, {"endY", end.y()}};
        QVERIFY(callMcpTool("mouse_drag", args).value("success").toBool());
        QTRY_COMPARE(recorder->releasedAt, QList<QPoint>{end});
        QCOMPARE(recorder->pressedAt, QList<QPoint>{start});
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

    void typesExactlyIntoAnotherProgram()
    {
        UiFixture& fixture = focusedFixture();
        const QString text = QStringLiteral("Hello 中文 é 😀");
        QCOMPARE(callMcpTool("type_text", {{"text", text}}),
                 (McpToolResult{{"length", 13}, {"success", true}}));
        QTRY_COMPARE(fixture.lastText(), text);
        // Return changes no line edit's text; a lone surrogate is skipped.
        callMcpTool("type_text", {{"text", QStringView(u"\n\xD800!").toString()}});
        QTRY_COMPARE(fixture.lastText(), text + QLatin1Char('!'));
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
