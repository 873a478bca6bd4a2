// The mouse, keyboard and clipboard tools against real windows: this suite's own for the mouse,
// another program's for keys and text, and xclip as the other side of the clipboard.

#include "TestMain.h"
#include "TestSupport.h"
#include "UiFixture.h"

#include "platform/Windows.h"
#include "service/mcp/InputTools.h"
#include "service/mcp/McpTool.h"

#include <QClipboard>
#include <QImage>
#include <QMimeData>
#include <QMouseEvent>
#include <QPushButton>
#include <QSignalSpy>

using namespace zelmor::service::mcp;
using zelmor::test::UiFixture;

namespace {

class Recorder : public QWidget
{
public:
    QList<Qt::MouseButton> presses;
    QList<QPoint> pressedAt, releasedAt;
    QList<int> wheels;

protected:
    void mousePressEvent(QMouseEvent* e) override
    {
        presses << e->button();
        pressedAt << e->globalPosition().toPoint();
    }
    void mouseDoubleClickEvent(QMouseEvent* e) override { mousePressEvent(e); }
    void mouseReleaseEvent(QMouseEvent* e) override { releasedAt << e->globalPosition().toPoint(); }
    void wheelEvent(QWheelEvent* e) override { wheels << e->angleDelta().y(); }
};

std::unique_ptr<Recorder> shownRecorder()
{
    auto r = std::make_unique<Recorder>();
    r->setGeometry(300, 300, 300, 200);
    r->show();
    if (!QTest::qWaitForWindowExposed(r.get())) return nullptr;
    return r;
}

QPoint centreOf(const QWidget& w)
{
    return w.mapToGlobal(w.rect().center());
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
        zelmor::platform::WindowHandle handle = 0;
        [&] { QTRY_VERIFY((handle = m_fixture->handle())); }();
        callMcpTool("focus_window", {{"title", m_fixture->title()}});
        [&] { QTRY_COMPARE(zelmor::platform::foregroundWindow().handle, handle); }();
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
        QTest::newRow("F12") << "F12" << 0x7Bu;
        QTest::newRow("f13 is not named") << "f13" << 0u;
        QTest::newRow("A, the plain key") << "A" << 0x41u;
        QTest::newRow("!, the key of 1") << "!" << 0x31u;
        QTest::newRow("two letters") << "ab" << 0u;
        QTest::newRow("surrogate pair") << "😀" << 0u;
    }
    void keyNames()
    {
        QFETCH(QString, name);
        QFETCH(unsigned, code);
        QCOMPARE(mcpKeyCode(name), code);
    }

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
    }
    void failures()
    {
        QFETCH(QString, tool);
        QFETCH(QVariantMap, args);
        QFETCH(QString, message);
        QCOMPARE(callMcpTool(tool, args), mcpToolError(message));
    }

    void clickLandsOnButton()
    {
        QPushButton button(QStringLiteral("Click me"));
        button.setGeometry(200, 200, 160, 40);
        button.show();
        QVERIFY(QTest::qWaitForWindowExposed(&button));
        QSignalSpy clicked(&button, &QPushButton::clicked);
        const QPoint at = centreOf(button);
        const McpToolResult result = callMcpTool("mouse_click", {{"x", at.x()}, {"y", at.y()}});
        QCOMPARE(result, (McpToolResult{{"x", at.x()},
                                        {"y", at.y()},
                                        {"button", "left"},
                                        {"clicks", 1},
                                        {"success", true}}));
        QTRY_COMPARE(clicked.count(), 1);
    }

    void clicksAndButtons_data()
    {
        QTest::addColumn<QVariantMap>("args");
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("clicks");
        QTest::addColumn<QList<Qt::MouseButton>>("presses");
        const Qt::MouseButton left = Qt::LeftButton;
        QTest::newRow("0 clicks") << QVariantMap{{"clicks", 0}} << "left" << 1
                                  << QList<Qt::MouseButton>{left};
        QTest::newRow("9 clicks") << QVariantMap{{"clicks", 9}} << "left" << 3
                                  << QList<Qt::MouseButton>{left, left, left};
        QTest::newRow("RIGHT") << QVariantMap{{"button", "RIGHT"}} << "right" << 1
                               << QList<Qt::MouseButton>{Qt::RightButton};
        QTest::newRow("x1 is left")
            << QVariantMap{{"button", "x1"}} << "x1" << 1 << QList<Qt::MouseButton>{left};
    }
    void clicksAndButtons()
    {
        QFETCH(QVariantMap, args);
        QFETCH(QString, button);
        QFETCH(int, clicks);
        QFETCH(QList<Qt::MouseButton>, presses);
        const auto recorder = shownRecorder();
        QVERIFY(recorder);
        const QPoint at = centreOf(*recorder);
        callMcpTool("mouse_move", {{"x", at.x()}, {"y", at.y()}});
        args.insert("x", 5); // without y: the cursor stays where it is
        const McpToolResult result = callMcpTool("mouse_click", args);
        QCOMPARE(result.value("button").toString(), button);
        QCOMPARE(result.value("clicks").toInt(), clicks);
        QCOMPARE(QPoint(result.value("x").toInt(), result.value("y").toInt()), at);
        QTRY_COMPARE(recorder->presses, presses);
    }

    void scrollOfZeroIsOneNotchDown()
    {
        const auto recorder = shownRecorder();
        QVERIFY(recorder);
        const QPoint at = centreOf(*recorder);
        QCOMPARE(callMcpTool("mouse_scroll", {{"delta", 0}, {"x", at.x()}, {"y", at.y()}}),
                 (McpToolResult{{"delta", -120}, {"success", true}}));
        QTRY_COMPARE(recorder->wheels, QList<int>{-120});
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
        const McpToolArgs args{
            {"startX", start.x()}, {"startY", start.y()}, {"endX", end.x()}, {"endY", end.y()}};
        McpToolResult expected = args;
        expected.insert("success", true);
        QCOMPARE(callMcpTool("mouse_drag", args), expected);
        QTRY_COMPARE(recorder->releasedAt, QList<QPoint>{end});
        QCOMPARE(recorder->pressedAt, QList<QPoint>{start});
    }

    void hotkeyPressesInOrderAndReleasesInReverse()
    {
        UiFixture& fixture = focusedFixture();
        QCOMPARE(
            callMcpTool("send_hotkey", {{"hotkey", " Ctrl+Shift+Esc "}}),
            (McpToolResult{{"hotkey", "Ctrl+Shift+Esc"}, {"keysPressed", 3}, {"success", true}}));
        const QStringList expected{QStringLiteral("key %1").arg(Qt::Key_Control),
                                   QStringLiteral("key %1").arg(Qt::Key_Shift),
                                   QStringLiteral("key %1").arg(Qt::Key_Escape),
                                   QStringLiteral("release %1").arg(Qt::Key_Escape),
                                   QStringLiteral("release %1").arg(Qt::Key_Shift),
                                   QStringLiteral("release %1").arg(Qt::Key_Control)};
        QTRY_COMPARE(fixture.lines(), expected);
    }

    void keyDownOfCapitalPressesThePlainKey()
    {
        UiFixture& fixture = focusedFixture();
        QCOMPARE(callMcpTool("key_down", {{"key", " A "}}),
                 (McpToolResult{{"key", "A"}, {"success", true}}));
        callMcpTool("key_up", {{"key", "a"}});
        QTRY_COMPARE(fixture.lastText(), QStringLiteral("a"));
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

    void pastesIntoAnotherProgram()
    {
        UiFixture& fixture = focusedFixture();
        const QString text = QStringLiteral("pasted 粘贴 ✓");
        QCOMPARE(callMcpTool("paste_text_to_focused", {{"text", text}}),
                 (McpToolResult{{"pastedText", text}, {"success", true}}));
        QTRY_COMPARE(fixture.lastText(), text); // this process serves the text meanwhile
    }

    void clipboardTextReachesAnotherProgram()
    {
        const QString text = QStringLiteral("clip 中文 ✓");
        QCOMPARE(callMcpTool("write_clipboard", {{"text", text}}),
                 (McpToolResult{{"length", 9}, {"success", true}}));
        QProcess xclip;
        xclip.start("xclip", {"-o", "-selection", "clipboard"});
        QTRY_COMPARE(xclip.state(), QProcess::NotRunning); // served by this event loop
        QCOMPARE(QString::fromUtf8(xclip.readAllStandardOutput()), text);
    }

    void clipboardOfAnotherProgramIsRead()
    {
        QProcess owner; // -quiet keeps xclip in the foreground, serving until killed
        owner.start("xclip", {"-quiet", "-selection", "clipboard", "-i"});
        owner.write(QStringLiteral("from xclip 中文").toUtf8());
        owner.closeWriteChannel();
        QTRY_COMPARE(
            callMcpTool("read_clipboard", {}),
            (McpToolResult{{"hasText", true}, {"text", "from xclip 中文"}, {"success", true}}));
        owner.kill();
        owner.waitForFinished();

        const QString png = zelmor::test::sandboxRoot().filePath("only.png");
        QImage(8, 8, QImage::Format_RGB32).save(png);
        owner.start("xclip", {"-quiet", "-selection", "clipboard", "-t", "image/png", "-i", png});
        QTRY_VERIFY(QGuiApplication::clipboard()->mimeData()->hasImage());
        QCOMPARE(callMcpTool("read_clipboard", {}),
                 (McpToolResult{{"hasText", false}, {"text", QString()}, {"success", true}}));
        owner.kill();
        owner.waitForFinished();
    }
};

ZELMOR_TEST_MAIN(TestInputTools, QApplication)
#include "tst_inputtools.moc"
