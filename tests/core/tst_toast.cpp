#include "TestMain.h"

#include "core/ThemeFlag.h"
#include "core/Toast.h"
#include "manager/ThemeManager.h"
#include "service/capture/WindowList.h"

#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>

using zelmor::core::notifyUser;
using zelmor::core::tool::Toast;

class TestToast : public QObject
{
    Q_OBJECT

    static QRect area() { return QGuiApplication::primaryScreen()->availableGeometry(); }
    static Toast* showAndWait(const QString& title, const QString& body, int ms = 60000)
    {
        notifyUser(title, body, ms);
        Toast* toast = Toast::current();
        if (toast && !QTest::qWaitForWindowExposed(toast)) return nullptr;
        return toast;
    }
    static QLabel* bodyLabel(Toast* toast)
    {
        return toast->findChild<QLabel*>(QStringLiteral("toastBody"));
    }

private Q_SLOTS:
    void cleanup()
    {
        if (Toast::current()) delete Toast::current();
    }

    void widthIsClampedAndCornerKept_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("body");
        QTest::addColumn<int>("expectedWidth"); // 0: between the limits
        QTest::newRow("short") << "Saved"
                               << "ok" << 320;
        QTest::newRow("long line") << "Copied" << QString(300, QLatin1Char('w')) << 460;
        QTest::newRow("long title") << QString(200, QLatin1Char('T')) << "" << 460;
        QTest::newRow("medium") << "Captured"
                                << QStringLiteral(
                                       "Captured 1920x1080, with a few more words to say here")
                                << 0;
    }
    void widthIsClampedAndCornerKept()
    {
        QFETCH(QString, title);
        QFETCH(QString, body);
        QFETCH(int, expectedWidth);
        Toast* toast = showAndWait(title, body);
        QVERIFY(toast);
        if (expectedWidth) {
            QCOMPARE(toast->width(), expectedWidth);
        } else {
            QVERIFY(toast->width() > 320 && toast->width() < 460);
        }
        const QRect frame = toast->frameGeometry();
        QCOMPARE(frame.right(), area().right() - 16 - 1);
        QCOMPARE(frame.bottom(), area().bottom() - 16 - 1);
    }

    // The application's sheet sets a font size for every widget; the toast keeps its own.
    void keepsItsFontUnderTheApplicationSheet()
    {
        zelmor::manager::ThemeManager::instance().apply(QStringLiteral("light"));
        const QString title = QStringLiteral("Region copied to the clipboard");
        Toast* toast = showAndWait(title, QString());
        QVERIFY(toast);
        const QLabel* label = toast->findChild<QLabel*>(QStringLiteral("toastTitle"));
        QCOMPARE(label->font().pointSize(), 9);
        QCOMPARE(toast->width(),
                 qBound(320, label->fontMetrics().horizontalAdvance(title) + 48, 460));
        qApp->setStyleSheet(QString());
    }

    void secondToastReplacesTheFirstAtOnce()
    {
        Toast* first = showAndWait(QStringLiteral("One"), QStringLiteral("first"));
        QPointer<Toast> firstGuard(first);
        Toast* second = showAndWait(QStringLiteral("Two"), QStringLiteral("second"));
        QVERIFY(second != first);
        QTRY_VERIFY(firstGuard.isNull());
        QCOMPARE(Toast::current(), second);
        QCOMPARE(second->title(), QStringLiteral("Two"));
    }

    void expiresAfterItsTime()
    {
        QPointer<Toast> toast(showAndWait(QStringLiteral("Brief"), QString(), 50));
        QVERIFY(toast);
        QTRY_VERIFY(toast.isNull());
        QVERIFY(!Toast::current());
    }

    void emptyBodyHidesItsLabel()
    {
        Toast* withBody = showAndWait(QStringLiteral("Title"), QStringLiteral("body text"));
        const int tallHeight = withBody->height();
        Toast* bare = showAndWait(QStringLiteral("Title"), QString());
        QVERIFY(!bodyLabel(bare)->isVisible());
        QVERIFY(bare->height() < tallHeight);
    }

    void longPathWrapsAtSeparators()
    {
        const QString path = QStringLiteral("/home/user/Pictures/Zelmor/a/very/long/folder/name/"
                                            "Zelmor_2026-11-23_03-15-09-109.png");
        QString windowsPath = path;
        windowsPath.replace(QLatin1Char('/'), QLatin1Char('\\'));
        const QString original = path;
        Toast* toast = showAndWait(QStringLiteral("Saved"), path);
        const QString shown = bodyLabel(toast)->text();
        QCOMPARE(shown.count(QChar(0x200B)), path.count(QLatin1Char('/')));
        QCOMPARE(QString(shown).remove(QChar(0x200B)), path);
        QCOMPARE(path, original);
        QVERIFY(toast->width() <= 460);
        QVERIFY(bodyLabel(toast)->height() > bodyLabel(toast)->fontMetrics().height()); // wrapped
        QCOMPARE(zelmor::core::withPathWrapPoints(windowsPath).count(QChar(0x200B)),
                 windowsPath.count(QLatin1Char('\\')));
    }

    void neitherFocusNorClicksAreTaken()
    {
        QPushButton below(QStringLiteral("below"));
        below.setWindowTitle(QStringLiteral("Zelmor toast underlay"));
        below.setGeometry(area().right() - 600, area().bottom() - 300, 590, 290);
        below.show();
        QVERIFY(QTest::qWaitForWindowExposed(&below));
        below.activateWindow();
        QTRY_COMPARE(zelmor::service::capture::foregroundWindow().title, below.windowTitle());
        QSignalSpy clicked(&below, &QPushButton::clicked);

        Toast* toast = showAndWait(QStringLiteral("Look"), QStringLiteral("but do not touch"));
        QVERIFY(toast);
        // The window manager gives the focus, if at all, while it maps the window.
        QCOMPARE(zelmor::service::capture::foregroundWindow().title, below.windowTitle());
        QVERIFY(QApplication::activeWindow() != toast);

        // A real pointer click through the X server, at the toast's centre.
        const QPoint centre = toast->frameGeometry().center();
        QCOMPARE(QProcess::execute(QStringLiteral("xdotool"),
                                   {QStringLiteral("mousemove"), QString::number(centre.x()),
                                    QString::number(centre.y()), QStringLiteral("click"),
                                    QStringLiteral("1")}),
                 0);
        QTRY_COMPARE(clicked.count(), 1);
    }

    void followsTheDarkFlag()
    {
        QVERIFY(showAndWait(QStringLiteral("Light"), QString())
                    ->styleSheet()
                    .contains(QStringLiteral("#FFFFFF")));
        zelmor::core::setDarkTheme(true);
        const QString sheet = showAndWait(QStringLiteral("Dark"), QString())->styleSheet();
        zelmor::core::setDarkTheme(false);
        QVERIFY(sheet.contains(QStringLiteral("#2b2b30")));
        QVERIFY(sheet.contains(QStringLiteral("#F57C00")));
    }
};

ZELMOR_TEST_MAIN(TestToast, QApplication)
#include "tst_toast.moc"
