#include "TestMain.h"

#include "manager/TaskManager.h"
#include "widget/OcrResultDialog.h"
#include "widget/TaskNotificationToast.h"

#include <QClipboard>
#include <QProcess>
#include <QPushButton>
#include <QSignalSpy>
#include <QTextEdit>

using zelmor::manager::TaskItem;
using zelmor::manager::TaskManager;
using zelmor::widget::TaskNotificationToast;

class TestTaskManager : public QObject
{
    Q_OBJECT

    static TaskManager& tasks() { return TaskManager::instance(); }
    static TaskNotificationToast& card() { return TaskNotificationToast::instance(); }
    static void finishAll()
    {
        for (const TaskItem& t : tasks().tasks())
            if (t.isActive()) tasks().updateTask(t.id, TaskItem::Finished, QString(), QString());
        tasks().clearFinished();
    }

private Q_SLOTS:
    void cleanup() { finishAll(); }

    void cancelRunsItsCallbackOnce()
    {
        int cancels = 0;
        const quint64 id = tasks().addTask(QStringLiteral("OCR"), QStringLiteral("working"),
                                           QPixmap(), [&] { ++cancels; });
        QVERIFY(card().isVisible());
        QVERIFY(card().row(id)->cancelShown());
        tasks().cancelTask(id);
        tasks().cancelTask(id);
        QCOMPARE(cancels, 1);
        QCOMPARE(tasks().tasks().last().state, TaskItem::Cancelled);
        QVERIFY(!card().row(id)->cancelShown());

        const quint64 done =
            tasks().addTask(QStringLiteral("Done"), QString(), QPixmap(), [&] { ++cancels; });
        tasks().updateTask(done, TaskItem::Finished, QString(), QStringLiteral("text"));
        tasks().cancelTask(done); // a finished job cannot be cancelled
        QCOMPARE(cancels, 1);
        QVERIFY(done > id);
    }

    void emptyTextsKeepTheFormerOnes()
    {
        const quint64 id =
            tasks().addTask(QStringLiteral("T"), QStringLiteral("first"), QPixmap(), {});
        tasks().updateTask(id, TaskItem::Failed, QString(), QStringLiteral("why"));
        const TaskItem item = tasks().tasks().last();
        QCOMPARE(item.message, QStringLiteral("first"));
        QCOMPARE(item.result, QStringLiteral("why"));
        QCOMPARE(card().row(id)->statusText(), QStringLiteral("❌ 失败"));
        tasks().updateTask(999999, TaskItem::Finished, QStringLiteral("x"),
                           QString()); // unknown: nothing
    }

    void cardGrowsToItsLimitAndCountsActiveJobs()
    {
        QList<quint64> ids;
        for (int i = 0; i < 6; ++i)
            ids << tasks().addTask(QStringLiteral("Job %1").arg(i), QString(), QPixmap(), {});
        QCOMPARE(card().height(), 320);
        QCOMPARE(card().width(), 380);
        QCOMPARE(card().headerText(), QStringLiteral("⚡ AI 后台任务 (6 处理中)"));
        for (quint64 id : ids)
            tasks().updateTask(id, TaskItem::Finished, QString(), QString());
        QCOMPARE(card().headerText(), QStringLiteral("⚡ AI 后台任务 (处理完成)"));
        QVERIFY(card().hideTimerActive());
    }

    void closedCardComesBackWhenAJobEnds()
    {
        const quint64 id = tasks().addTask(QStringLiteral("Long"), QString(), QPixmap(), {});
        card().hide();
        QCOMPARE(tasks().tasks().last().state, TaskItem::Running); // hiding cancels nothing
        tasks().updateTask(id, TaskItem::Finished, QStringLiteral("done"), QString());
        QVERIFY(card().isVisible());
    }

    void hoverKeepsTheCardOpen()
    {
        const quint64 id = tasks().addTask(QStringLiteral("Hover"), QString(), QPixmap(), {});
        QVERIFY(QTest::qWaitForWindowExposed(&card()));
        const QPoint inside = card().geometry().center();
        QProcess::execute(QStringLiteral("xdotool"),
                          {QStringLiteral("mousemove"), QString::number(inside.x()),
                           QString::number(inside.y())});
        QTRY_VERIFY(card().underMouse());
        tasks().updateTask(id, TaskItem::Finished, QString(), QString());
        QVERIFY(!card().hideTimerActive());
        QProcess::execute(QStringLiteral("xdotool"), {QStringLiteral("mousemove"),
                                                      QStringLiteral("10"), QStringLiteral("10")});
        QTRY_VERIFY(card().hideTimerActive());
    }

    void dialogActsOnTheEditedText()
    {
        auto* dialog = new zelmor::widget::OcrResultDialog(QStringLiteral("recognised"));
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        QPointer<zelmor::widget::OcrResultDialog> guard(dialog);
        QSignalSpy pinned(dialog, &zelmor::widget::OcrResultDialog::pinRequested);
        dialog->show();
        dialog->findChild<QTextEdit*>(QStringLiteral("ocrTextEdit"))
            ->setPlainText(QStringLiteral("edited"));
        dialog->findChild<QPushButton*>(QStringLiteral("btnCopy"))->click();
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("edited"));
        QVERIFY(dialog->isVisible());
        for (QPushButton* b : dialog->findChildren<QPushButton*>())
            if (b->text() == QStringLiteral("📌 钉在屏幕")) b->click();
        QCOMPARE(pinned.count(), 1);
        QCOMPARE(pinned.first().first().toString(), QStringLiteral("edited"));
        QTRY_VERIFY(guard.isNull());
    }
};

ZELMOR_TEST_MAIN(TestTaskManager, QApplication)
#include "tst_taskmanager.moc"
