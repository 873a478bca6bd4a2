// Window manager requests and window facts, checked on real windows under openbox: another
// process's window, watched through the window list and through that process's exit.

#include "TestMain.h"
#include "UiFixture.h"

#include "platform/Windows.h"

#include <QScreen>
#include <QWidget>

using namespace zelmor::platform;
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

class TestDesktopWindows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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
        QCOMPARE(qRect(recordOf(h).frame), normal);

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

ZELMOR_TEST_MAIN(TestDesktopWindows, QApplication)
#include "tst_desktopwindows.moc"
