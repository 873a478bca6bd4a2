#include "TestMain.h"
#include "TestSupport.h"

#include "core/Toast.h"
#include "service/history/HistoryService.h"
#include "widget/GifEditorDialog.h"

#include <QLabel>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QSemaphore>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>
#include <QThreadPool>
#include <QTimer>

using zelmor::service::history::HistoryService;
using zelmor::test::buttonWithText;
using zelmor::widget::GifEditorDialog;

namespace {

constexpr int kFrames = 5;

// Frame i is filled with red 40 * i, so that any frame tells its place in the recording.
QList<QImage> numberedFrames()
{
    QList<QImage> frames;
    for (int i = 0; i < kFrames; ++i) {
        QImage frame(40, 30, QImage::Format_RGB32);
        frame.fill(QColor(40 * i, 0, 0));
        frames << frame;
    }
    return frames;
}

QList<int> numbers(const QList<QImage>& frames)
{
    QList<int> result;
    for (const QImage& frame : frames)
        result << qRed(frame.pixel(0, 0)) / 40;
    return result;
}

QString labelText(const GifEditorDialog& d, const char* name)
{
    return d.findChild<QLabel*>(QLatin1String(name))->text();
}

} // namespace

// The frame editor: trimming, stepping, frame rate and export into the history.
class TestGifEditor : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

private Q_SLOTS:
    void cleanup() { delete zelmor::core::tool::Toast::current(); }

    // A frame rate of 0 leaves the spin box alone.
    void intervalComesFromTheConstructorAndTheFrameRate_data()
    {
        QTest::addColumn<int>("given");
        QTest::addColumn<int>("fps");
        QTest::addColumn<int>("interval");
        QTest::newRow("zero") << 0 << 0 << 100;
        QTest::newRow("positive") << 40 << 0 << 40;
        QTest::newRow("60 fps hits the floor") << 100 << 60 << 20;
    }
    void intervalComesFromTheConstructorAndTheFrameRate()
    {
        QFETCH(int, given);
        QFETCH(int, fps);
        GifEditorDialog d(numberedFrames(), given, QString());
        if (fps) d.findChild<QSpinBox*>()->setValue(fps);
        QTEST(d.intervalMs(), "interval");
    }

    void everyFrameCanGoAndRestoreBringsThemBack_data()
    {
        QTest::addColumn<QString>("how");
        QTest::newRow("first, one by one") << "⏮ 删首帧";
        QTest::newRow("last, one by one") << "⏭ 删尾帧";
        QTest::newRow("all selected") << QString();
    }
    void everyFrameCanGoAndRestoreBringsThemBack()
    {
        QFETCH(QString, how);
        GifEditorDialog d(numberedFrames(), 100, QString());
        if (how.isEmpty()) {
            QTest::keyClick(&d, Qt::Key_A, Qt::ControlModifier);
            QTest::keyClick(&d, Qt::Key_Delete);
        } else {
            for (int i = 0; i < kFrames; ++i)
                buttonWithText(&d, how)->click();
        }
        QVERIFY(d.frames().isEmpty());
        QCOMPARE(labelText(d, "gifEditorPreview"), QStringLiteral("暂无剩余帧"));
        QCOMPARE(labelText(d, "gifEditorFrameCount"), QStringLiteral("第 0 / 0 帧"));

        QTest::keyClick(&d, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(numbers(d.frames()), QList<int>({0, 1, 2, 3, 4}));
        QCOMPARE(labelText(d, "gifEditorFrameCount"), QStringLiteral("第 1 / 5 帧"));
    }

    void keepingSelectedFramesKeepsTheirOrder()
    {
        GifEditorDialog d(numberedFrames(), 100, QString());
        QItemSelectionModel* selection = d.findChild<QListView*>()->selectionModel();
        selection->select(selection->model()->index(3, 0), QItemSelectionModel::ClearAndSelect);
        selection->select(selection->model()->index(1, 0), QItemSelectionModel::Select);
        buttonWithText(&d, QStringLiteral("✂️ 仅保留框选帧"))->click();
        QCOMPARE(numbers(d.frames()), QList<int>({1, 3}));
        QCOMPARE(d.currentIndex(), 0);
    }

    void steppingWrapsAround_data()
    {
        QTest::addColumn<QString>("keys");
        QTest::addColumn<int>("index");
        QTest::newRow("left on the first") << "L" << kFrames - 1;
        QTest::newRow("right on the last") << "RRRRR" << 0;
    }
    void steppingWrapsAround()
    {
        QFETCH(QString, keys);
        GifEditorDialog d(numberedFrames(), 100, QString());
        for (QChar key : keys)
            QTest::keyClick(&d, key == u'L' ? Qt::Key_Left : Qt::Key_Right);
        QTEST(d.currentIndex(), "index");
        QCOMPARE(d.findChild<QSlider*>()->value(), d.currentIndex());
    }

    void everyControlHasAName()
    {
        GifEditorDialog d(numberedFrames(), 100, QString());
        QCOMPARE(zelmor::test::unnamedControls(&d), QString());
    }

    // Escape during an export closes the dialog at once and cancels the job: the file that
    // stood at the target stays as it was. The only pool thread is kept busy meanwhile, so the
    // job cannot have ended before.
    void escapeDuringAnExportCancelsIt()
    {
        const QString target = m_dir.filePath(QStringLiteral("closed.gif"));
        QVERIFY(zelmor::test::writeFile(target, "old"));
        const qsizetype rowsBefore = HistoryService::instance().recent(100).size();
        QThreadPool* pool = QThreadPool::globalInstance();
        const int threads = pool->maxThreadCount();
        pool->setMaxThreadCount(1);
        QSemaphore gate;
        pool->start([&gate] { gate.acquire(); });
        {
            GifEditorDialog d(numberedFrames(), 50, target);
            buttonWithText(&d, QStringLiteral("💾 导出保存"))->click();
            QSignalSpy rejected(&d, &QDialog::rejected);
            QTest::keyClick(&d, Qt::Key_Escape);
            QCOMPARE(rejected.count(), 1);
        }
        gate.release();
        pool->waitForDone();
        pool->setMaxThreadCount(threads);
        QCoreApplication::sendPostedEvents();
        QCOMPARE(zelmor::test::readFile(target), QByteArray("old"));
        QCOMPARE(HistoryService::instance().recent(100).size(), rowsBefore);
    }

    // The first frame is drawn as large as the preview, not at the label's size before the
    // dialog was laid out.
    void theFirstFrameFillsThePreview()
    {
        QList<QImage> frames = numberedFrames();
        frames.first() = frames.first().scaled(400, 300);
        GifEditorDialog d(frames, 100, QString());
        d.show();
        QVERIFY(QTest::qWaitForWindowExposed(&d));
        const QLabel* preview = d.findChild<QLabel*>(QStringLiteral("gifEditorPreview"));
        const QSize shown = preview->pixmap().size();
        QVERIFY2(shown.width() == preview->width() || shown.height() == preview->height(),
                 qPrintable(QStringLiteral("%1x%2").arg(shown.width()).arg(shown.height())));
    }

    // A recording of 10 s or more that was never saved is dropped only when the user says so.
    void cancelAsksBeforeDroppingALongRecording()
    {
        GifEditorDialog d(QList<QImage>(100, numberedFrames().first()), 100,
                          m_dir.filePath(QStringLiteral("unsaved.gif")));
        QSignalSpy rejected(&d, &QDialog::rejected);
        for (const QMessageBox::StandardButton answer :
             {QMessageBox::Cancel, QMessageBox::Discard}) {
            QTimer::singleShot(0, this, [answer] {
                if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
                    box->button(answer)->click();
            });
            buttonWithText(&d, QStringLiteral("取消"))->click();
            QCOMPARE(rejected.count(), answer == QMessageBox::Discard ? 1 : 0);
        }
    }
};

ZELMOR_TEST_MAIN(TestGifEditor, QApplication)

#include "tst_gifeditor.moc"
