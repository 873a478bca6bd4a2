// Scroll capture of programs this project does not write: a terminal pager and a GTK text view
// show a file of numbered lines and are scrolled to its end by the wheel, by Page Down or by
// the capture itself, or not at all. Read back by text recognition, the stitched image holds every
// line once, in order, from the first line shown at the start to the last one shown at the end.

#include "DesktopDriver.h"
#include "RealProgram.h"
#include "TestMain.h"
#include "TestSupport.h"

#include "core/ConfigManager.h"
#include "platform/Input.h"
#include "service/capture/CaptureService.h"
#include "service/capture/ScreenGrabber.h"
#include "service/ocr/LocalOcrEngine.h"

#include <QMargins>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>

using namespace zelmor;
using namespace zelmor::test;
using service::capture::CaptureService;

namespace {

constexpr int kLines = 160;
const QString kTitle = QStringLiteral("zelmor real program");
constexpr unsigned kPageDownKey = 0x22; // virtual key

enum class Scroll { Still, Wheel, PageDown, Itself };

} // namespace

Q_DECLARE_METATYPE(Scroll)

class TestScrollRealApps : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_file;
    std::unique_ptr<service::ocr::LocalOcrEngine> m_ocr;

    // The numbers that begin the recognised lines, top to bottom.
    QList<int> lineNumbers(const QImage& image)
    {
        static const QRegularExpression numbered("^\\s*(\\d{4})\\s",
                                                 QRegularExpression::MultilineOption);
        const QString text = m_ocr->recognize(image).text;
        QList<int> numbers;
        for (auto it = numbered.globalMatch(text); it.hasNext();)
            numbers.append(it.next().captured(1).toInt());
        return numbers;
    }

private slots:
    void initTestCase()
    {
        for (const char* needed : {"xterm", "zenity", "xdotool"})
            QVERIFY2(!QStandardPaths::findExecutable(needed).isEmpty(), needed);
        m_ocr = std::make_unique<service::ocr::LocalOcrEngine>("eng");
        QCOMPARE(m_ocr->loadError(), QString());
        m_file = m_dir.filePath("lines.txt");
        QFile file(m_file);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(numberedLines(kLines)) > 0);
        core::ConfigManager::instance().setOutputDir(m_dir.filePath("out"));
    }

    void stitchesEveryLineOnce_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QMargins>("border"); // around the text, inside the client area
        QTest::addColumn<Scroll>("scroll");
        QTest::addColumn<int>("notches"); // a wheel step
        const QStringList pager = pagerArguments(kTitle, m_file);
        const QStringList textView = {"--text-info", "--title=" + kTitle, "--filename=" + m_file,
                                      "--width=640", "--height=520"};
        const QMargins pagerBorder(2, 2, 2, 24), textViewBorder(13, 13, 13, 50);
        QTest::newRow("less still") << "xterm" << pager << pagerBorder << Scroll::Still << 0;
        QTest::newRow("less wheel") << "xterm" << pager << pagerBorder << Scroll::Wheel << 2;
        QTest::newRow("less page down") << "xterm" << pager << pagerBorder << Scroll::PageDown << 0;
        QTest::newRow("less by itself") << "xterm" << pager << pagerBorder << Scroll::Itself << 0;
        QTest::newRow("GTK wheel") << "zenity" << textView << textViewBorder << Scroll::Wheel << 1;
        QTest::newRow("GTK by itself")
            << "zenity" << textView << textViewBorder << Scroll::Itself << 0;
    }
    void stitchesEveryLineOnce()
    {
        QFETCH(QString, program);
        QFETCH(QStringList, arguments);
        QFETCH(QMargins, border);
        QFETCH(Scroll, scroll);
        QFETCH(int, notches);
        RealProgram window(program, arguments, kTitle);
        QVERIFY2(!window.client.isEmpty(), qPrintable(program + " shows no window"));
        const QRect region = window.client - border;
        QTest::qWait(500);                                // the first paint
        QVERIFY(click(region.topLeft() + QPoint(40, 8))); // in the text, as a user would
        const QList<int> first = lineNumbers(service::capture::grabRegion(region).toImage());
        CaptureService capture;
        QSignalSpy progress(&capture, &CaptureService::scrollProgressChanged);
        QSignalSpy completed(&capture, &CaptureService::scrollCaptureCompleted);
        capture.captureScrolling(region, scroll == Scroll::Itself);
        QTRY_VERIFY(!progress.isEmpty());
        QVERIFY(platform::setCursorPosition({region.center().x(), region.center().y()}));

        // A step is taken once the one before is in the image; none grows it at the end.
        bool grew = scroll == Scroll::Wheel || scroll == Scroll::PageDown;
        for (int step = 0; grew && completed.isEmpty() && step < kLines; ++step) {
            const int before = lastHeight(progress);
            if (scroll == Scroll::Wheel)
                for (int i = 0; i < notches; ++i)
                    QVERIFY(platform::sendMouseWheel(-120));
            else
                QVERIFY(platform::sendKeys({{kPageDownKey, true}, {kPageDownKey, false}}));
            grew = QTest::qWaitFor([&] { return lastHeight(progress) > before; }, 3000);
        }
        // Still frames at the end of the page end the run by itself.
        const bool endedByItself =
            !completed.isEmpty() || completed.wait(scroll == Scroll::Itself ? 150000 : 15000);
        if (!endedByItself) capture.stopScrollCapture();
        QTRY_COMPARE_WITH_TIMEOUT(completed.size(), 1, 10000);
        const QImage stitched(completed.first().first().value<core::CaptureResult>().filePath);
        const QList<int> lines = lineNumbers(stitched);
        QList<int> expected;
        for (int n = first.value(0); n <= (scroll == Scroll::Still ? first.last() : kLines); ++n)
            expected << n;
        QVERIFY(endedByItself);
        QCOMPARE(lines, expected);
        if (scroll == Scroll::Still) QCOMPARE(stitched.height(), region.height());
    }
};

ZELMOR_TEST_MAIN(TestScrollRealApps, QApplication)
#include "tst_scrollrealapps.moc"
