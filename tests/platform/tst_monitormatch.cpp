// Screens matched to the monitors that show them where the names say nothing (Qt names a
// Windows screen after the monitor's model, the monitor list names devices) and the monitor
// list need not be in Qt's order.

#include "platform/Geometry.h"

#include <QTest>

using zelmor::platform::monitorForScreen;
using zelmor::platform::Rect;

Q_DECLARE_METATYPE(std::vector<Rect>)
Q_DECLARE_METATYPE(Rect)

class TestMonitorMatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void screenFindsItsMonitor_data()
    {
        QTest::addColumn<std::vector<Rect>>("monitors");
        QTest::addColumn<Rect>("screen");
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("expected");
        const Rect left{-1920, 0, 1920, 1080}, primary{0, 0, 2560, 1440};
        QTest::newRow("primary enumerated after the left monitor")
            << std::vector<Rect>{left, primary} << primary << 0 << 1;
        QTest::newRow("left monitor, Qt's second screen")
            << std::vector<Rect>{primary, left} << left << 1 << 1;
        QTest::newRow("scaled size rounded off: the top-left corner decides")
            << std::vector<Rect>{left, primary} << Rect{0, 0, 2559, 1439} << 0 << 1;
        QTest::newRow("no monitor at the screen's place: its index")
            << std::vector<Rect>{left, primary} << Rect{5000, 0, 800, 600} << 1 << 1;
        QTest::newRow("nothing at all") << std::vector<Rect>{} << primary << 0 << -1;
    }
    void screenFindsItsMonitor()
    {
        QFETCH(std::vector<Rect>, monitors);
        QFETCH(Rect, screen);
        QFETCH(int, index);
        QFETCH(int, expected);
        QCOMPARE(monitorForScreen(monitors, screen, index), expected);
    }
};

QTEST_GUILESS_MAIN(TestMonitorMatch)
#include "tst_monitormatch.moc"
