// Synthetic mouse and keyboard input, received by real windows: the test's own for the mouse,
// another process's for keys, since typing remaps keys that the receiver must read while the
// sender waits.

#include "TestMain.h"
#include "UiFixture.h"

#include "platform/Input.h"

#include <QMouseEvent>

using namespace zelmor::platform;
using zelmor::test::UiFixture;

Q_DECLARE_METATYPE(MouseButton)

namespace {

class Recorder : public QWidget
{
public:
    QList<Qt::MouseButton> presses;
    QList<QPoint> wheels;

protected:
    void mousePressEvent(QMouseEvent* e) override { presses << e->button(); }
    void mouseDoubleClickEvent(QMouseEvent* e) override { presses << e->button(); }
    void wheelEvent(QWheelEvent* e) override { wheels << e->angleDelta(); }
};

Point centreOf(const QWidget& w)
{
    const QPoint p = w.mapToGlobal(w.rect().center());
    return {p.x(), p.y()};
}

bool click(MouseButton button)
{
    return sendMouseButtons({{button, true}, {button, false}});
}

} // namespace

class TestDesktopInput : public QObject
{
    Q_OBJECT

    std::unique_ptr<UiFixture> m_fixture;

    UiFixture& focusedFixture()
    {
        if (!m_fixture)
            m_fixture = std::make_unique<UiFixture>(QStringLiteral("Input fixture"),
                                                    QRect(700, 150, 400, 400));
        WindowHandle handle = 0;
        [&] { QTRY_VERIFY((handle = m_fixture->handle())); }();
        activateWindow(handle);
        [&] { QTRY_COMPARE(foregroundWindow().handle, handle); }();
        return *m_fixture;
    }

private Q_SLOTS:
    void buttonsArriveAsSuch_data()
    {
        QTest::addColumn<MouseButton>("button");
        QTest::addColumn<Qt::MouseButton>("received");
        QTest::newRow("left") << MouseButton::Left << Qt::LeftButton;
        QTest::newRow("right") << MouseButton::Right << Qt::RightButton;
        QTest::newRow("middle") << MouseButton::Middle << Qt::MiddleButton;
        QTest::newRow("x1") << MouseButton::X1 << Qt::BackButton;
        QTest::newRow("x2") << MouseButton::X2 << Qt::ForwardButton;
    }
    void buttonsArriveAsSuch()
    {
        QFETCH(MouseButton, button);
        QFETCH(Qt::MouseButton, received);
        Recorder recorder;
        recorder.setGeometry(250, 300, 200, 150);
        recorder.show();
        QVERIFY(QTest::qWaitForWindowExposed(&recorder));
        QVERIFY(setCursorPosition(centreOf(recorder)));
        QVERIFY(click(button));
        QTRY_COMPARE(recorder.presses, QList<Qt::MouseButton>{received});
    }

    void wheelMovesWholeNotches_data()
    {
        QTest::addColumn<int>("delta");
        QTest::addColumn<bool>("horizontal");
        QTest::addColumn<QList<QPoint>>("received");
        QTest::newRow("one up") << 120 << false << QList<QPoint>{{0, 120}};
        QTest::newRow("two down") << -240 << false << QList<QPoint>{{0, -120}, {0, -120}};
        QTest::newRow("part of a notch") << -30 << false << QList<QPoint>{{0, -120}};
        QTest::newRow("right") << 120 << true << QList<QPoint>{{-120, 0}};
        QTest::newRow("left") << -120 << true << QList<QPoint>{{120, 0}};
        QTest::newRow("none") << 0 << false << QList<QPoint>{};
    }
    void wheelMovesWholeNotches()
    {
        QFETCH(int, delta);
        QFETCH(bool, horizontal);
        QFETCH(QList<QPoint>, received);
        Recorder recorder;
        recorder.setGeometry(250, 300, 200, 150);
        recorder.show();
        QVERIFY(QTest::qWaitForWindowExposed(&recorder));
        QVERIFY(setCursorPosition(centreOf(recorder)));
        QVERIFY(sendMouseWheel(delta, horizontal));
        QVERIFY(click(MouseButton::Left)); // a marker: every wheel event came before it
        QTRY_COMPARE(recorder.presses.size(), 1);
        QCOMPARE(recorder.wheels, received);
    }

    void keysReachTheirQtKeys_data()
    {
        QTest::addColumn<unsigned>("virtualKey");
        QTest::addColumn<int>("qtKey");
        QTest::newRow("F5") << 0x74u << int(Qt::Key_F5);
        QTest::newRow("F13, a key the keyboard lacks") << 0x7Cu << int(Qt::Key_F13);
        QTest::newRow("F24") << 0x87u << int(Qt::Key_F24);
        QTest::newRow("numpad 7 without NumLock") << 0x67u << int(Qt::Key_7);
        QTest::newRow("OEM period") << 0xBEu << int(Qt::Key_Period);
        QTest::newRow("right arrow") << 0x27u << int(Qt::Key_Right);
        QTest::newRow("unknown virtual key is skipped") << 0xFFu << int(Qt::Key_Home);
    }
    void keysReachTheirQtKeys()
    {
        QFETCH(unsigned, virtualKey);
        QFETCH(int, qtKey);
        UiFixture& fixture = focusedFixture();
        fixture.forget();
        QVERIFY(sendKeys({{virtualKey, true}, {virtualKey, false}, {0x24, true}, {0x24, false}}));
        QTRY_VERIFY(fixture.saw(QStringLiteral("key %1").arg(Qt::Key_Home)));
        QCOMPARE(fixture.lines().filter(QStringLiteral("key ")).first(),
                 QStringLiteral("key %1").arg(qtKey));
    }

    void plainKeyOfCharacter_data()
    {
        QTest::addColumn<uint>("character");
        QTest::addColumn<unsigned>("virtualKey");
        QTest::newRow("a") << uint('a') << 0x41u;
        QTest::newRow("A, no shift") << uint('A') << 0x41u;
        QTest::newRow("!, the key of 1") << uint('!') << 0x31u;
        QTest::newRow("*, main keys before the keypad") << uint('*') << 0x38u;
        QTest::newRow(";") << uint(';') << 0xBAu;
        QTest::newRow(":") << uint(':') << 0xBAu;
        QTest::newRow("space") << uint(' ') << 0x20u;
        QTest::newRow("é, not on a US keyboard") << uint(U'é') << 0u;
        QTest::newRow("中") << uint(U'中') << 0u;
    }
    void plainKeyOfCharacter()
    {
        QFETCH(uint, character);
        QFETCH(unsigned, virtualKey);
        QCOMPARE(virtualKeyForCharacter(char32_t(character)), virtualKey);
    }
};

ZELMOR_TEST_MAIN(TestDesktopInput, QApplication)
#include "tst_desktopinput.moc"
