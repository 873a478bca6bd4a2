#include "TestMain.h"

#include "core/Toast.h"
#include "service/history/HistoryService.h"
#include "widget/GifEditorDialog.h"

#include <QAccessible>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QScopeGuard>
#include <QSemaphore>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>
#include <QThreadPool>

using zelmor::service::history::HistoryService;
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

QPushButton* button(const GifEditorDialog& d, const QString& text)
{
    for (QPushButton* b : d.findChildren<QPushButton*>())
        if (b->text() == text) return b;
    return nullptr;
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
        QTest::newRow("negative") << -5 << 0 << 100;
        QTest::newRow("positive") << 40 << 0 << 40;
        QTest::newRow("60 fps hits the floor") << 100 << 60 << 20;
        QTest::newRow("30 fps") << 100 << 30 << 33;
    }
    void intervalComesFromTheConstructorAndTheFrameRate()
    {
        QFETCH(int, given);
        QFETCH(int, fps);
        QFETCH(int, interval);
        GifEditorDialog d(numberedFrames(), given, QString());
        if (fps) d.findChild<QSpinBox*>()->setValue(fps);
        QCOMPARE(d.intervalMs(), interval);
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
                button(d, how)->click();
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
        button(d, QStringLiteral("✂️ 仅保留框选帧"))->click();
        QCOMPARE(numbers(d.frames()), QList<int>({1, 3}));
        QCOMPARE(d.currentIndex(), 0);
    }

    void steppingWrapsAround_data()
    {
        QTest::addColumn<QString>("keys");
        QTest::addColumn<int>("index");
        QTest::newRow("left on the first") << "L" << kFrames - 1;
        QTest::newRow("right on the last") << "RRRRR" << 0;
        QTest::newRow("there and back") << "RRL" << 1;
    }
    void steppingWrapsAround()
    {
        QFETCH(QString, keys);
        QFETCH(int, index);
        GifEditorDialog d(numberedFrames(), 100, QString());
        for (QChar key : keys)
            QTest::keyClick(&d, key == u'L' ? Qt::Key_Left : Qt::Key_Right);
        QCOMPARE(d.currentIndex(), index);
        QCOMPARE(d.findChild<QSlider*>()->value(), d.currentIndex());
    }

    void everyControlHasAName()
    {
        GifEditorDialog d(numberedFrames(), 100, QString());
        const QList<QWidget*> controls = d.findChildren<QWidget*>();
        for (QWidget* w : controls) {
            const bool control = qobject_cast<QAbstractButton*>(w) || qobject_cast<QSlider*>(w) ||
                                 qobject_cast<QAbstractSpinBox*>(w) ||
                                 qobject_cast<QAbstractItemView*>(w);
            if (!control) continue;
            QVERIFY2(!QAccessible::queryAccessibleInterface(w)->text(QAccessible::Name).isEmpty(),
                     w->metaObject()->className());
        }
    }

    // Escape is not held back while the encoder runs, and the caller deletes the dialog: the
    // job must be done by then. The only pool thread is kept busy, so it cannot be done sooner.
    void closingDuringAnExportWaitsForTheJob()
    {
        const QString target = m_dir.filePath(QStringLiteral("closed.gif"));
        const qsizetype rowsBefore = HistoryService::instance().recent(100).size();
        QThreadPool* pool = QThreadPool::globalInstance();
        const int threads = pool->maxThreadCount();
        pool->setMaxThreadCount(1);
        QSemaphore gate;
        pool->start([&gate] { gate.acquire(); });
        const auto reopen = qScopeGuard([&] {
            gate.release();
            pool->waitForDone(); // the blocker must be gone before the gate is
            pool->setMaxThreadCount(threads);
        });
        {
            GifEditorDialog d(numberedFrames(), 50, target);
            button(d, QStringLiteral("💾 导出保存"))->click();
            QSignalSpy rejected(&d, &QDialog::rejected);
            QTest::keyClick(&d, Qt::Key_Escape);
            QCOMPARE(rejected.count(), 1);
        }
        QVERIFY(QFileInfo::exists(target));
        QCoreApplication::sendPostedEvents();
        QCOMPARE(HistoryService::instance().recent(100).size(), rowsBefore);
    }
};

ZELMOR_TEST_MAIN(TestGifEditor, QApplication)

#include "tst_gifeditor.moc"
