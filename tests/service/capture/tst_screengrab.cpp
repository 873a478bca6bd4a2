#include "TestMain.h"
#include "TestSupport.h"

#include "platform/ScreenGrab.h"
#include "service/capture/CaptureService.h"
#include "service/capture/ScreenGrabber.h"
#include "service/capture/WindowList.h"

#include <QScreen>
#include <QWidget>

using namespace zelmor::service::capture;
using zelmor::test::makeSolidWindow;
using zelmor::test::windowIndex;
namespace platform = zelmor::platform;

namespace {

const QColor kProbeColour(0x12, 0xab, 0x34);
const QColor kOtherColour(0xc0, 0x30, 0x70);

// Every pixel of `image` inside `rect` has `colour`.
bool allPixels(const QImage& image, const QRect& rect, const QColor& colour)
{
    for (int y = rect.top(); y <= rect.bottom(); ++y)
        for (int x = rect.left(); x <= rect.right(); ++x)
            if (image.pixelColor(x, y) != colour) return false;
    return true;
}

} // namespace

class TestScreenGrab : public QObject
{
    Q_OBJECT

    std::unique_ptr<QWidget> m_probe;
    QRect m_client; // the probe's client area on the desktop

    QImage platformGrab(const QRect& r, platform::GrabMethod method)
    {
        QImage image(r.size(), QImage::Format_RGB32);
        image.fill(Qt::white);
        if (!platform::grabDesktopRect({r.x(), r.y(), r.width(), r.height()},
                                       reinterpret_cast<std::uint32_t*>(image.bits()),
                                       int(image.bytesPerLine() / 4), method))
            return {};
        return image;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QCOMPARE(QGuiApplication::primaryScreen()->geometry(), QRect(0, 0, 1920, 1080));
        m_probe = makeSolidWindow(QStringLiteral("Zelmor grab probe"), kProbeColour,
                                  QRect(300, 200, 400, 300));
        QVERIFY(QTest::qWaitForWindowExposed(m_probe.get()));
        QTRY_VERIFY(windowIndex(m_probe->windowTitle()) >= 0);
        m_client = QRect(m_probe->mapToGlobal(QPoint(0, 0)), m_probe->size());
        QTRY_VERIFY(allPixels(grabRegion(m_client).toImage(), QRect(QPoint(), m_client.size()),
                              kProbeColour));
    }

    void monitorsCarryQtsScreenNames()
    {
        const QList<MonitorEntry> monitors = collectMonitors();
        QCOMPARE(monitors.size(), 1);
        QCOMPARE(monitors[0].deviceName, QGuiApplication::primaryScreen()->name());
        QCOMPARE(monitors[0].rect, QRect(0, 0, 1920, 1080));
    }

    void everyGrabSeesTheWindow_data()
    {
        QTest::addColumn<QPixmap>("pixmap");
        QTest::newRow("grabVirtualDesktop") << grabVirtualDesktop();
        QTest::newRow("grabScreen(0)") << grabScreen(0);
        QTest::newRow("captureFullscreen") << CaptureService().captureFullscreen().pixmap;
    }
    void everyGrabSeesTheWindow()
    {
        QFETCH(QPixmap, pixmap);
        QCOMPARE(pixmap.size(), QSize(1920, 1080));
        QCOMPARE(pixmap.devicePixelRatio(), 1.0);
        const QImage image = pixmap.toImage();
        QVERIFY(allPixels(image, m_client, kProbeColour));
        QVERIFY(image.pixelColor(m_client.topLeft() - QPoint(40, 40)) != kProbeColour);
    }

    void regionIsClippedToTheCanvas()
    {
        const QPixmap inside = grabRegion(m_client);
        QCOMPARE(inside.size(), m_client.size());
        QVERIFY(allPixels(inside.toImage(), inside.rect(), kProbeColour));

        QCOMPARE(grabRegion(QRect(1900, 1060, 100, 100)).size(), QSize(20, 20));
        QVERIFY(grabRegion(QRect(5000, 5000, 10, 10)).isNull());
        QVERIFY(grabScreen(-1).isNull() && grabScreen(1).isNull());
        // The capture keeps the size asked for, black beyond the screen.
        const QPixmap pixmap = CaptureService().captureRegion(QRect(1900, 1060, 40, 40)).pixmap;
        QCOMPARE(pixmap.size(), QSize(40, 40));
        QCOMPARE(pixmap.toImage().pixelColor(30, 30), QColor(Qt::black));
    }

    void platformGrabsAgreeAndFillOutsideBlack()
    {
        QVERIFY(platform::sharedMemoryGrabAvailable());
        const QRect around = m_client.adjusted(-50, -50, 50, 50);
        const QImage shm = platformGrab(around, platform::GrabMethod::SharedMemory);
        const QImage plain = platformGrab(around, platform::GrabMethod::Plain);
        QVERIFY(!shm.isNull());
        QCOMPARE(shm, plain);
        QCOMPARE(qAlpha(shm.pixel(0, 0)), 255);

        // 20 px of the window's desktop column hang off the left edge.
        const QImage image = platformGrab(QRect(-20, m_client.top(), m_client.left() + 60, 10),
                                          platform::GrabMethod::Automatic);
        QVERIFY(!image.isNull());
        QVERIFY(allPixels(image, QRect(0, 0, 20, 10), Qt::black));
        QVERIFY(allPixels(image, QRect(m_client.left() + 20, 0, 10, 10), kProbeColour));
        const QImage off = platformGrab(QRect(-500, -500, 10, 10), platform::GrabMethod::Plain);
        QVERIFY(!off.isNull() && allPixels(off, off.rect(), Qt::black));
    }

    void stackingAndFocusFollowActivation()
    {
        const auto other = makeSolidWindow("Zelmor other 中文", kOtherColour, {900, 300, 200, 150});
        QVERIFY(QTest::qWaitForWindowExposed(other.get()));
        // The window manager focuses a new window of the focused application; an activation
        // sent before it has done so races with it, and either may win.
        QTRY_COMPARE(foregroundWindow().title, other->windowTitle());
        for (QWidget* target : {m_probe.get(), other.get()}) {
            target->raise();
            target->activateWindow();
            QTRY_COMPARE(foregroundWindow().handle, quintptr(target->winId()));
            QCOMPARE(foregroundWindow().rect, target->frameGeometry());
            // Docks such as the tray host stay above; the target is above the other test window.
            const QWidget* below = target == other.get() ? m_probe.get() : other.get();
            QTRY_VERIFY(windowIndex(target->windowTitle()) < windowIndex(below->windowTitle()));
        }
        other->showMinimized(); // and a minimized window is left out
        QTRY_COMPARE(windowIndex(other->windowTitle()), -1);
    }
};

ZELMOR_TEST_MAIN(TestScreenGrab, QApplication)
#include "tst_screengrab.moc"
