#include "DesktopDriver.h"
#include "TestMain.h"
#include "TestSupport.h"
#include "UiFixture.h"

#include "core/Toast.h"
#include "manager/ActionManager.h"
#include "manager/PinManager.h"
#include "manager/TrayService.h"
#include "service/gesture/MouseGestureService.h"
#include "widget/MainWindow.h"
#include "widget/TrayMenu.h"
#include "widget/overlay/CaptureOverlay.h"

#include <QSignalSpy>

using zelmor::core::tool::Toast;
using zelmor::manager::ActionManager;
using zelmor::service::gesture::MouseGestureService;
using zelmor::test::moveTo;

namespace {

bool rightButton(bool down)
{
    return zelmor::platform::sendMouseButtons({{zelmor::platform::MouseButton::Right, down}});
}

} // namespace

class TestGestures : public QObject
{
    Q_OBJECT

    zelmor::widget::MainWindow m_window;
    std::unique_ptr<ActionManager> m_actions;
    std::unique_ptr<zelmor::manager::TrayService> m_tray;
    QWidget m_surface; // under every drag, so no press reaches the window manager's root menu

    MouseGestureService* gestures() const { return m_actions->gestureService(); }

    void toggleFromTray(const QString& toastTitle)
    {
        for (QAction* action : m_tray->menu()->actions())
            if (action->text() == QLatin1String("Mouse gestures")) action->trigger();
        QVERIFY(Toast::current());
        QCOMPARE(Toast::current()->title(), toastTitle);
    }

    // Pressed at the path's start and moved through it; release() lets go and returns once the
    // service has handled it.
    void press(const QList<QPoint>& path)
    {
        QVERIFY(moveTo(path.first()) && rightButton(true));
        QTRY_VERIFY(gestures()->isTracking());
        for (const QPoint& point : path.mid(1))
            QVERIFY(moveTo(point));
    }
    void release()
    {
        QVERIFY(rightButton(false));
        QTRY_VERIFY(!gestures()->isTracking());
    }

    static QList<QPoint> steps(QPoint from, const QPoint& step, int count)
    {
        QList<QPoint> path{from};
        while (count-- > 0)
            path.append(from += step);
        return path;
    }

    static zelmor::widget::CaptureOverlay* shownOverlay()
    {
        return zelmor::test::shownTopLevel<zelmor::widget::CaptureOverlay>();
    }
    void closeOverlay()
    {
        QTRY_VERIFY(shownOverlay());
        QTest::keyClick(shownOverlay(), Qt::Key_Escape);
        QTRY_VERIFY(!m_actions->regionCaptureActive());
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_actions = std::make_unique<ActionManager>(&m_window);
        m_tray = std::make_unique<zelmor::manager::TrayService>(m_actions.get());
        m_surface.setWindowFlags(Qt::FramelessWindowHint | Qt::WindowStaysOnBottomHint);
        m_surface.setGeometry(QGuiApplication::primaryScreen()->geometry());
        m_surface.show();
        QVERIFY(QTest::qWaitForWindowExposed(&m_surface));
        toggleFromTray(QStringLiteral("Gestures on"));
        QVERIFY(gestures()->isEnabled());
    }

    // The texts name the opposite of the physical direction, and a two-letter text repeats:
    // a diagonal of several steps matches nothing.
    void dragGivesItsAction_data()
    {
        QTest::addColumn<QList<QPoint>>("moves");
        QTest::addColumn<QString>("action");
        const QPoint left(-20, 0), right(20, 0), up(0, -20), down(0, 20);
        QTest::newRow("left") << QList<QPoint>{left, left, left} << "next-pin";
        QTest::newRow("up: history") << QList<QPoint>{up, up, up} << "show-history";
        QTest::newRow("up, left: region capture")
            << QList<QPoint>{up, up, left, left} << "capture-region";
        QTest::newRow("one step up-left: region capture")
            << QList<QPoint>{up + left} << "capture-region";
        QTest::newRow("up, right: pins cleared") << QList<QPoint>{up, right, right} << "clear-pins";
        QTest::newRow("diagonal of steps: nothing")
            << QList<QPoint>{up + left, up + left, up + left} << "";
        QTest::newRow("down-right: nothing") << QList<QPoint>{down + right} << "";
    }
    void dragGivesItsAction()
    {
        QFETCH(QList<QPoint>, moves);
        QFETCH(QString, action);
        QPixmap pin(40, 40);
        pin.fill(Qt::red);
        m_actions->pinFromPixmap(pin);
        QSignalSpy detected(gestures(), &MouseGestureService::gestureDetected);
        QList<QPoint> path{QPoint(400, 800)};
        for (const QPoint& move : moves)
            path.append(path.last() + move);
        press(path);
        release();
        QCOMPARE(detected.size(), action.isEmpty() ? 0 : 1);
        if (!action.isEmpty()) QCOMPARE(detected.first().first().toString(), action);

        if (action == QLatin1String("capture-region")) closeOverlay();
        if (action == QLatin1String("show-history")) {
            QTRY_VERIFY(m_window.isVisible());
            m_window.hide();
        }
        QCOMPARE(m_actions->pinManager()->pins().isEmpty(), action == QLatin1String("clear-pins"));
        m_actions->clearAllPins();
    }

    void shortMovesAddNoPoint()
    {
        const QPoint start(600, 700);
        press({start, start + QPoint(7, 0), start + QPoint(15, 0)});
        QTRY_COMPARE(gestures()->points().size(), 2);
        QCOMPARE(gestures()->points().last(), start + QPoint(15, 0));
        release();
    }

    // Another program's line edit, whose context menu says so on its output.
    void rightClickOpensTheWindowsOwnMenuAndDoesNothing()
    {
        zelmor::test::UiFixture other(QStringLiteral("Menu owner"), QRect(1000, 600, 300, 240));
        QVERIFY(other.focusedHandle());
        QSignalSpy detected(gestures(), &MouseGestureService::gestureDetected);
        press({other.where(QStringLiteral("Line")).center()});
        release();
        QTRY_VERIFY(other.saw(QStringLiteral("menu")));
        QCOMPARE(detected.size(), 0);
    }

    // Down, up, then left: with every point kept the text would be "UDR", which is nothing;
    // past 256 points the downward start is forgotten and "DR" remains.
    void longDragForgetsItsStart()
    {
        QList<QPoint> path = steps(QPoint(1800, 1000), QPoint(0, 10), 5);
        path += steps(path.last(), QPoint(0, -8), 131).mid(1);
        path += steps(path.last(), QPoint(-8, 0), 225).mid(1);
        QSignalSpy detected(gestures(), &MouseGestureService::gestureDetected);
        press(path);
        QTRY_COMPARE(gestures()->points().last(), path.last());
        QCOMPARE(gestures()->points().size(), 256);
        QCOMPARE(gestures()->points().first(), path.at(path.size() - 256));
        release();
        QCOMPARE(detected.size(), 1);
        QCOMPARE(detected.first().first().toString(), QStringLiteral("capture-region"));
        closeOverlay();
    }

    void trayTurnsGesturesOff()
    {
        toggleFromTray(QStringLiteral("Gestures off"));
        QVERIFY(!gestures()->isEnabled());
    }
};

ZELMOR_TEST_MAIN(TestGestures, QApplication)
#include "tst_gestures.moc"
