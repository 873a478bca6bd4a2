// Runs on an X server with no window manager (scripts/x-session.sh --bare): the window
// list and the focused window come from the root's children and the input focus.

#include "TestMain.h"
#include "TestSupport.h"

#include "platform/Windows.h"
#include "service/capture/WindowList.h"

using namespace zelmor::service::capture;

class TestBareWindows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Raising, focusing and closing are done without a manager; minimizing and maximizing not.
    void listFocusAndActWithoutAWindowManager()
    {
        namespace platform = zelmor::platform;
        using zelmor::test::makeSolidWindow;
        auto a = makeSolidWindow(QStringLiteral("Bare A é"), Qt::red, QRect(100, 100, 300, 200));
        auto b = makeSolidWindow(QStringLiteral("Bare B"), Qt::blue, QRect(150, 150, 300, 200));
        QVERIFY(QTest::qWaitForWindowExposed(a.get()));
        QVERIFY(QTest::qWaitForWindowExposed(b.get()));
        QTRY_VERIFY(zelmor::test::windowIndex(a->windowTitle()) >= 0 &&
                    zelmor::test::windowIndex(b->windowTitle()) >= 0);
        const WindowInfo info =
            listTopLevelWindows().at(zelmor::test::windowIndex(a->windowTitle()));
        QCOMPARE(info.rect, QRect(100, 100, 300, 200)); // no frame without a window manager
        QCOMPARE(info.handle, quintptr(a->winId()));

        for (QWidget* target : {a.get(), b.get(), a.get()}) {
            QVERIFY(platform::activateWindow(target->winId()));
            QTRY_COMPARE(foregroundWindow().handle, quintptr(target->winId()));
            QCOMPARE(foregroundWindow().title, target->windowTitle());
            QCOMPARE(platform::windowAt({200, 200}), platform::WindowHandle(target->winId()));
        }
        QVERIFY(zelmor::test::windowIndex(a->windowTitle()) <
                zelmor::test::windowIndex(b->windowTitle())); // raised last, on top
        QVERIFY(!platform::minimizeWindow(a->winId()));
        QVERIFY(!platform::maximizeWindow(a->winId()));
        QVERIFY(platform::closeWindow(b->winId()));
        QTRY_VERIFY(!b->isVisible());
        QTRY_COMPARE(zelmor::test::windowIndex(b->windowTitle()), -1);
    }
};

ZELMOR_TEST_MAIN(TestBareWindows, QApplication)
#include "tst_barewindows.moc"
