#include "TestMain.h"

#include "core/ThemeFlag.h"
#include "core/Toast.h"
#include "manager/ThemeManager.h"

#include <QLabel>
#include <QMetaEnum>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStyle>

using zelmor::manager::ThemeManager;

namespace {

QString opposite(bool dark)
{
    return dark ? QStringLiteral("light") : QStringLiteral("dark");
}

} // namespace

class TestThemeManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Must stay the first test: nothing may have applied a theme yet.
    void toastMadeBeforeAnyApplyIsLight()
    {
        QVERIFY(!zelmor::core::darkThemeEverSet());
        QCOMPARE(ThemeManager::instance().currentTheme(), QStringLiteral("light"));
        zelmor::core::tool::Toast::showToast(QStringLiteral("Before"), QString(), 60000);
        auto* toast = zelmor::core::tool::Toast::current();
        QVERIFY(toast);
        const QString sheet = toast->styleSheet();
        delete toast;
        QVERIFY(sheet.contains(QStringLiteral("#FFFFFF")));
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
        QTest::newRow("dark") << "dark"
                              << "dark" << true;
        QTest::newRow("light") << "light"
                               << "light" << false;
        QTest::newRow("system") << "system" << system << systemDark;
        QTest::newRow("empty is system") << "" << system << systemDark;
        QTest::newRow("unknown kept, applied light") << "solarized"
                                                     << "solarized" << false;
        QTest::newRow("names are case-sensitive") << "Dark"
                                                  << "Dark" << false;
    }
    void applyResolvesTheName()
    {
        QFETCH(QString, name);
        QFETCH(QString, current);
        QFETCH(bool, dark);
        ThemeManager& themes = ThemeManager::instance();
        themes.apply(opposite(dark));
        QSignalSpy changed(&themes, &ThemeManager::themeChanged);

        themes.apply(name);
        QCOMPARE(themes.currentTheme(), current);
        QCOMPARE(ThemeManager::isDarkTheme(), dark);
        QCOMPARE(zelmor::core::isDarkTheme(), dark);
        QVERIFY(zelmor::core::darkThemeEverSet());
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.at(0).at(0).toBool(), dark);
        themes.apply(name); // no short cut for an unchanged theme
        QCOMPARE(changed.count(), 2);
        if (dark) return;

        // Light is the style's own palette, every role, not a table of ours.
        const QPalette standard = QApplication::style()->standardPalette();
        const QPalette applied = QApplication::palette();
        for (auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
            for (int role = 0; role < QPalette::NColorRoles; ++role) {
                const auto r = QPalette::ColorRole(role);
                QVERIFY2(applied.color(group, r) == standard.color(group, r),
                         QMetaEnum::fromType<QPalette::ColorRole>().valueToKey(role));
            }
        }
    }

    void styleSheetParsesAndStylesWidgets_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("dark") << "dark";
        QTest::newRow("light") << "light";
    }
    void styleSheetParsesAndStylesWidgets()
    {
        QFETCH(QString, name);
        ThemeManager::instance().apply(opposite(name == QLatin1String("dark")));
        const QString other = qApp->styleSheet();
        ThemeManager::instance().apply(name);
        const QString sheet = qApp->styleSheet();
        QVERIFY(sheet != other);
        QVERIFY2(!sheet.contains(QRegularExpression(QStringLiteral("%\\d"))),
                 "a placeholder was left unfilled");

        // A syntax error anywhere would drop the whole sheet when the first widget is styled.
        QTest::failOnWarning(QRegularExpression(QStringLiteral("Could not parse")));
        QLabel label(QStringLiteral("styled"));
        label.setObjectName(QStringLiteral("detailValue"));
        label.ensurePolished();
        QCOMPARE(label.font().pixelSize(), 14);
        const QColor text = label.palette().color(QPalette::WindowText);
        QCOMPARE(text.lightness() > 128, name == QLatin1String("dark"));
    }
};

ZELMOR_TEST_MAIN(TestThemeManager, QApplication)
#include "tst_thememanager.moc"
