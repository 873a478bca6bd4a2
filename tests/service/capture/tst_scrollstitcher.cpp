#include "TestMain.h"

#include "service/capture/ScrollStitcher.h"

#include <QFile>
#include <QPainter>

using namespace zelmor::service::capture;
using Ints = QList<int>;
using Step = ScrollStitcher::Step;

namespace {

const QSize kRegion(320, 600);
constexpr int kLinePitch = 17;
constexpr int kHeaderRows = 44;
constexpr int kFooterRows = 30;
const QString kPhoto = "/usr/share/matplotlib/mpl-data/sample_data/grace_hopper.jpg";

QStringList licenceLines()
{
    QFile file("/usr/share/common-licenses/GPL-3");
    if (!file.open(QIODevice::ReadOnly)) return {};
    return QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
}

// The licence as a reader shows it; `every` > 1 keeps only every so many lines, cut short:
// most rows of such a page are blank.
QImage textPage(QColor ink, QColor paper, int every, int height)
{
    QImage page(kRegion.width(), height, QImage::Format_RGB32);
    page.fill(paper);
    QPainter painter(&page);
    painter.setFont(QFont("DejaVu Sans", 10));
    painter.setPen(ink);
    const QStringList lines = licenceLines();
    for (int i = 0; i * kLinePitch < height; ++i)
        if (i % every == 0)
            painter.drawText(6, (i + 1) * kLinePitch - 4,
                             lines.value(i + 60).left(every > 1 ? 18 : 200));
    return page;
}

// A web page: headings, paragraphs and pictures (the photo, small), shown between a sticky
// header and footer.
QImage webContent(int height)
{
    QImage page = textPage(QColor(40, 40, 40), QColor(255, 255, 255), 1, height);
    QPainter painter(&page);
    const QImage photo = QImage(kPhoto).scaledToWidth(120, Qt::SmoothTransformation);
    for (int y = 120; y < height; y += 380) {
        painter.fillRect(0, y - 30, page.width(), 26, QColor(230, 238, 250));
        painter.drawImage(page.width() - 130, y, photo);
    }
    return page;
}

QImage bar(int rows, const char* text)
{
    QImage bar(kRegion.width(), rows, QImage::Format_RGB32);
    bar.fill(QColor(30, 60, 120));
    QPainter painter(&bar);
    painter.setPen(Qt::white);
    painter.setFont(QFont("DejaVu Sans", 12, QFont::Bold));
    painter.drawText(bar.rect(), Qt::AlignCenter, text);
    return bar;
}

QImage photoPage(int height)
{
    const QImage photo = QImage(kPhoto).scaledToHeight(height, Qt::SmoothTransformation);
    return photo.copy(0, 0, kRegion.width(), height).convertToFormat(QImage::Format_RGB32);
}

// Identical lines: every displacement by whole lines fits as well as any other.
QImage repetitivePage(int height)
{
    QImage page(kRegion.width(), height, QImage::Format_RGB32);
    page.fill(Qt::white);
    QPainter painter(&page);
    for (int y = kLinePitch; y < height; y += kLinePitch)
        painter.drawText(6, y - 4, "= = = = = = = = = = = =");
    return page;
}

// What a region `rows` tall shows when the page's row `top` is at its top (between a sticky
// header and footer, if there are).
QImage shown(const QImage& page, int top, int rows, bool sticky)
{
    if (!sticky) return page.copy(0, top, kRegion.width(), rows);
    QImage frame(kRegion.width(), rows, QImage::Format_RGB32);
    QPainter painter(&frame);
    painter.drawImage(0, 0, bar(kHeaderRows, "Release notes"));
    painter.drawImage(0, kHeaderRows, page, 0, top, kRegion.width(),
                      rows - kHeaderRows - kFooterRows);
    painter.drawImage(0, rows - kFooterRows, bar(kFooterRows, "Accept cookies?"));
    return frame;
}

QImage frameAt(const QImage& page, int top, bool sticky = false)
{
    return shown(page, top, kRegion.height(), sticky);
}

QImage pageOf(const QString& kind, int height)
{
    if (kind == "dense light") return textPage(Qt::black, Qt::white, 1, height);
    if (kind == "sparse light" || kind == "marked")
        return textPage(QColor(60, 60, 60), QColor(250, 250, 245), 3, height);
    if (kind == "dense dark") return textPage(QColor(210, 210, 210), QColor(30, 30, 36), 1, height);
    if (kind == "sparse dark") return textPage(QColor(140, 220, 140), Qt::black, 4, height);
    if (kind == "web") return webContent(height);
    if (kind == "repetitive") return repetitivePage(height);
    return photoPage(height);
}

Ints steps(std::initializer_list<Step> list)
{
    Ints out;
    for (Step step : list)
        out << int(step);
    return out;
}

} // namespace

class TestScrollStitcher : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(!licenceLines().isEmpty() && !QImage(kPhoto).isNull(),
                 "the licence text and the photo come from Debian packages");
    }

    // Frames cut from a page at `tops` (scrolling by hand: any step, still, back, too far):
    // the image is the page's rows from the first top to the last appended frame's bottom.
    void pagesComeBackRowForRow_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<Ints>("tops");
        QTest::addColumn<Ints>("steps");
        QTest::addColumn<int>("bottom"); // of the page's rows in the image
        const int h = kRegion.height();
        for (const char* page :
             {"dense light", "sparse light", "dense dark", "sparse dark", "web", "photo"}) {
            const int moving = h - (page == QByteArray("web") ? kHeaderRows + kFooterRows : 0);
            for (int step : {1, 3 * kLinePitch, moving / 2, moving * 9 / 10}) {
                Ints tops{0};
                Ints kinds{int(Step::Started)};
                for (int i = 1; i <= 4; ++i) {
                    tops << i * step;
                    kinds << int(Step::Appended);
                }
                QTest::addRow("%s, step %d", page, step) << page << tops << kinds << 4 * step + h;
            }
        }
        // A text view's caret and its overlay scroll bar's thumb change the rows both frames share.
        QTest::newRow("caret and thumb")
            << "marked" << Ints{0, 300, 600}
            << steps({Step::Started, Step::Appended, Step::Appended}) << 600 + h;
        QTest::newRow("still frames")
            << "dense light" << Ints{0, 51, 51, 51, 51}
            << steps({Step::Started, Step::Appended, Step::Still, Step::Still, Step::Still})
            << 51 + h;
        QTest::newRow("too far, then back within reach")
            << "dense dark" << Ints{0, h + 30, h - 60, h + 40}
            << steps({Step::Started, Step::TooFast, Step::Appended, Step::Appended}) << 2 * h + 40;
        QTest::newRow("back up, then on")
            << "sparse light" << Ints{0, 100, 40, 150}
            << steps({Step::Started, Step::Appended, Step::Back, Step::Appended}) << 150 + h;
        QTest::newRow("repetitive lines are no match")
            << "repetitive" << Ints{0, 40} << steps({Step::Started, Step::Unreliable}) << h;
        QTest::newRow("a null frame is skipped")
            << "photo" << Ints{0, -1, 90} << steps({Step::Started, Step::None, Step::Appended})
            << 90 + h;
    }
    void pagesComeBackRowForRow()
    {
        QFETCH(QString, page);
        QFETCH(Ints, tops);
        QFETCH(int, bottom);
        const bool sticky = page == "web";
        const bool marked = page == "marked";
        const QImage source = pageOf(page, 5 * kRegion.height());
        ScrollStitcher stitcher(3);
        Ints seen;
        for (int top : tops) {
            QImage frame = top < 0 ? QImage() : frameAt(source, top, sticky);
            if (marked && top > 0) {
                QPainter painter(&frame);
                painter.fillRect(38, 10, 1, 17, Qt::black);
                painter.fillRect(kRegion.width() - 5, 11, 3, 56, Qt::gray);
            }
            stitcher.addFrame(frame);
            seen << int(stitcher.lastStep());
        }
        QTEST(seen, "steps");
        QCOMPARE(stitcher.canvas().convertToFormat(QImage::Format_RGB32),
                 shown(source, 0, bottom, sticky));
    }

    // Results as the driver reads them: still frames up to the idle limit stop the run; a
    // missing match, a null frame and the memory bound are told apart.
    void resultsTellTheDriverWhatToDo_data()
    {
        QTest::addColumn<Ints>("tops");
        QTest::addColumn<int>("boundRows");
        QTest::addColumn<Ints>("results");
        QTest::addColumn<bool>("memoryFull");
        QTest::newRow("idle limit") << Ints{0, 0, 0, 0} << 0 << Ints{0, 0, 0, 2} << false;
        QTest::newRow("a step resets the count")
            << Ints{0, 0, 10, 10, 10, 10} << 0 << Ints{0, 0, 0, 0, 0, 2} << false;
        QTest::newRow("no match") << Ints{0, 700} << 0 << Ints{0, 1} << false;
        QTest::newRow("null frame") << Ints{-1, 0} << 0 << Ints{1, 0} << false;
        QTest::newRow("memory bound") << Ints{0, 200, 400} << 900 << Ints{0, 0, 2} << true;
    }
    void resultsTellTheDriverWhatToDo()
    {
        QFETCH(Ints, tops);
        QFETCH(int, boundRows);
        const QImage source = pageOf("dense light", 1000);
        ScrollStitcher stitcher(3, nullptr, qint64(boundRows) * kRegion.width() * 4);
        Ints results;
        for (int top : tops)
            results << stitcher.addFrame(top < 0 ? QImage() : frameAt(source, top));
        QTEST(results, "results");
        QTEST(stitcher.memoryLimitReached(), "memoryFull");
    }
};

ZELMOR_TEST_MAIN(TestScrollStitcher, QApplication)
#include "tst_scrollstitcher.moc"
