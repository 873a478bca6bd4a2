#include "DesktopDriver.h"
#include "TestMain.h"

#include "core/ThemeFlag.h"
#include "core/Toast.h"
#include "manager/ThemeManager.h"
#include "service/capture/WindowList.h"

#include <QLabel>
#include <QMetaEnum>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QSignalSpy>
#include <QStyle>

using zelmor::core::notifyUser;
using zelmor::core::tool::Toast;
using zelmor::manager::ThemeManager;

// The toast and the themes it follows.
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

    void applyResolvesTheName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("current");
        QTest::addColumn<bool>("dark");
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
        const bool systemDark =
            QGuiApplication::styleHints()->colorScheme() == Qt::ColorScheme::Dark;
#else
        const bool systemDark = false;
#endif
        const QString system = systemDark ? QStringLiteral("dark") : QStringLiteral("light");
        QTest::newRow("dark") << QString("dark") << "dark" << true;
        QTest::newRow("system") << QString("system") << system << systemDark;
        QTest::newRow("empty is system") << QString() << system << systemDark;
        QTest::newRow("unknown kept, applied light; names are case-sensitive")
            << QString("Dark") << "Dark" << false;
    }
    void applyResolvesTheName()
    {
        QFETCH(QString, name);
        QFETCH(bool, dark);
        ThemeManager& themes = ThemeManager::instance();
        themes.apply(dark ? QStringLiteral("light") : QStringLiteral("dark"));
        QSignalSpy changed(&themes, &ThemeManager::themeChanged);

        themes.apply(name);
        QTEST(themes.currentTheme(), "current");
        QCOMPARE(zelmor::core::isDarkTheme(), dark);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.at(0).at(0).toBool(), dark);
        themes.apply(name); // no short cut for an unchanged theme
        QCOMPARE(changed.count(), 2);

        // A syntax error anywhere would drop the whole sheet when the first widget is styled.
        QVERIFY2(!qApp->styleSheet().contains(QRegularExpression(QStringLiteral("%\\d"))),
                 "a placeholder was left unfilled");
        QTest::failOnWarning(QRegularExpression(QStringLiteral("Could not parse")));
        QLabel label(QStringLiteral("styled"));
        label.setObjectName(QStringLiteral("detailValue"));
        label.ensurePolished();
        QCOMPARE(label.palette().color(QPalette::WindowText).lightness() > 128, dark);
        if (dark) return;

        // Light is the style's own palette, every role, not a table of ours.
        const QPalette standard = QApplication::style()->standardPalette();
        for (auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
            for (int role = 0; role < QPalette::NColorRoles; ++role)
                QVERIFY2(QApplication::palette().color(group, QPalette::ColorRole(role)) ==
                             standard.color(group, QPalette::ColorRole(role)),
                         QMetaEnum::fromType<QPalette::ColorRole>().valueToKey(role));
    }

    // The application's sheet sets a font size for every widget; the toast keeps its own.
    void widthIsClampedAndCornerKept_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("body");
        QTest::addColumn<int>("expectedWidth"); // 0: the title's own, at 9 points
        QTest::newRow("short") << "Saved" << QString() << 320;
        QTest::newRow("between the limits")
            << "Region copied to the clipboard and saved to disk" << QString() << 0;
        QTest::newRow("long line") << "Copied" << QString(300, QLatin1Char('w')) << 460;
    }
    void widthIsClampedAndCornerKept()
    {
        QFETCH(QString, title);
        QFETCH(QString, body);
        QFETCH(int, expectedWidth);
        ThemeManager::instance().apply(QStringLiteral("light"));
        Toast* toast = showAndWait(title, body);
        QVERIFY(toast);
        const QLabel* label = toast->findChild<QLabel*>(QStringLiteral("toastTitle"));
        QCOMPARE(label->font().pointSize(), 9);
        QCOMPARE(toast->width(), expectedWidth
                                     ? expectedWidth
                                     : label->fontMetrics().horizontalAdvance(title) + 48);
        QCOMPARE(bodyLabel(toast)->isVisible(), !body.isEmpty()); // no empty line under the title
        const QRect frame = toast->frameGeometry();
        QCOMPARE(frame.right(), area().right() - 16 - 1);
        QCOMPARE(frame.bottom(), area().bottom() - 16 - 1);
        qApp->setStyleSheet(QString());
    }

    void secondToastReplacesTheFirstAtOnceAndExpires()
    {
        QPointer<Toast> first = showAndWait(QStringLiteral("One"), QStringLiteral("first"));
        QPointer<Toast> second = showAndWait(QStringLiteral("Two"), QString(), 50);
        QVERIFY(second && second != first);
        QTRY_VERIFY(first.isNull());
        QCOMPARE(Toast::current(), second);
        QTRY_VERIFY(second.isNull());
        QVERIFY(!Toast::current());
    }

    void longPathWrapsAtSeparators()
    {
        const QString path = QStringLiteral("/home/user/Pictures/Zelmor/a/very/long/folder/name/"
                                            "Zelmor_2026-11-23_03-15-09-109.png");
        Toast* toast = showAndWait(QStringLiteral("Saved"), path);
        const QString shown = bodyLabel(toast)->text();
        QCOMPARE(shown.count(QChar(0x200B)), path.count(QLatin1Char('/')));
        QCOMPARE(QString(shown).remove(QChar(0x200B)), path);
        QVERIFY(toast->width() <= 460);
        QVERIFY(bodyLabel(toast)->height() > bodyLabel(toast)->fontMetrics().height()); // wrapped
        QCOMPARE(zelmor::core::withPathWrapPoints(QStringLiteral("C:\\a\\b")).count(QChar(0x200B)),
                 2);
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
        QVERIFY(zelmor::test::click(toast->frameGeometry().center()));
        QTRY_COMPARE(clicked.count(), 1);
    }

    void followsTheDarkFlag()
    {
        const QString light = showAndWait(QStringLiteral("Light"), QString())->styleSheet();
        zelmor::core::setDarkTheme(true);
        QVERIFY(showAndWait(QStringLiteral("Dark"), QString())->styleSheet() != light);
        zelmor::core::setDarkTheme(false);
    }
};

ZELMOR_TEST_MAIN(TestToast, QApplication)
#include "tst_toast.moc"
