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

// The distinct token values of the base, chat, history and settings templates.
const QStringList kDarkTokens =
    QStringLiteral("#1e1e22 #131316 #2a2a30 #3a3a40 #e4e4e7 #1a1a1f #b4b4b8 #1F1F23 #18181B "
                   "#2A2A30 #3A3A40 #E4E4E7 #9AA3AF #E67E22 #F39C12 #3A2A18 #1b1b1f #232328 "
                   "#333339 #9a9aa0 #7a7a80 #F57C00 #E66A00 #F44336 #3a1f22 #4a2528 #6F7681 "
                   "#3a2a18 #2F2F35 #5A5F68 #81C784 #1B382B #A1A1AA #2A2A32 #3D1E22 #FF8A80 "
                   "#5C282D #4A2328 url(:/icons/common/toggle-off_dark.svg)")
        .split(QLatin1Char(' '));

const QStringList kLightTokens =
    QStringLiteral("#F5F5F7 #FFFFFF #E5E5E5 #222222 #5F6876 #FAFAFC #F4F4F6 #6F7681 #E67E22 "
                   "#D35400 #FFFBF8 #FAFAFA #666666 #999999 #F57C00 #E66A00 #F44336 #FFECEC "
                   "#FFDADA #7D8593 #FDF1E5 #F0F0F2 #9AA3AF #2E7D32 #E8F5E9 #616161 #F5F5F5 "
                   "#FFEBEE #D32F2F #FFCDD2 url(:/icons/common/toggle-off.svg)")
        .split(QLatin1Char(' '));

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

    void darkPaletteRoles_data()
    {
        QTest::addColumn<int>("group");
        QTest::addColumn<int>("role");
        QTest::addColumn<QColor>("colour");
        // Role and colour pairs for every group; three roles turn grey when disabled.
        const QStringList table =
            QStringLiteral("Window #141418 WindowText #F4F4F5 Base #18181C AlternateBase #222228 "
                           "ToolTipBase #222228 ToolTipText #F4F4F5 Text #F4F4F5 Button #222228 "
                           "ButtonText #F4F4F5 BrightText #FF0000 Link #E67E22 Highlight #E67E22 "
                           "HighlightedText #FFFFFF")
                .split(QLatin1Char(' '));
        const QStringList greyWhenDisabled = {"Text", "ButtonText", "WindowText"};
        const QMetaEnum groups = QMetaEnum::fromType<QPalette::ColorGroup>();
        const QMetaEnum roles = QMetaEnum::fromType<QPalette::ColorRole>();
        for (auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
            for (qsizetype i = 0; i < table.size(); i += 2) {
                const QString& role = table.at(i);
                const bool grey = group == QPalette::Disabled && greyWhenDisabled.contains(role);
                QTest::addRow("%s %s", groups.valueToKey(group), qPrintable(role))
                    << int(group) << roles.keyToValue(qPrintable(role))
                    << QColor(grey ? QStringLiteral("#6B7280") : table.at(i + 1));
            }
        }
    }
    void darkPaletteRoles()
    {
        QFETCH(int, group);
        QFETCH(int, role);
        QFETCH(QColor, colour);
        ThemeManager::instance().apply(QStringLiteral("light"));
        ThemeManager::instance().apply(QStringLiteral("dark"));
        QCOMPARE(
            QApplication::palette().color(QPalette::ColorGroup(group), QPalette::ColorRole(role)),
            colour);
    }

    void styleSheetCarriesTheTokens_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("header");
        QTest::addColumn<QStringList>("own");
        QTest::addColumn<QStringList>("foreign");
        QTest::addColumn<QColor>("detailText");
        const auto onlyIn = [](const QStringList& a, const QStringList& b) {
            QStringList out;
            for (const QString& token : a)
                if (!b.contains(token)) out << token;
            return out;
        };
        QTest::newRow("dark") << "dark"
                              << "---- Dark theme ----" << kDarkTokens
                              << onlyIn(kLightTokens, kDarkTokens) << QColor(0xE4, 0xE4, 0xE7);
        QTest::newRow("light") << "light"
                               << "---- Light theme ----" << kLightTokens
                               << onlyIn(kDarkTokens, kLightTokens) << QColor(0x22, 0x22, 0x22);
    }
    void styleSheetCarriesTheTokens()
    {
        QFETCH(QString, name);
        QFETCH(QString, header);
        QFETCH(QStringList, own);
        QFETCH(QStringList, foreign);
        QFETCH(QColor, detailText);
        ThemeManager::instance().apply(name);
        const QString sheet = qApp->styleSheet();

        for (const QString& token : own)
            QVERIFY2(sheet.contains(token), qPrintable(token));
        for (const QString& token : foreign)
            QVERIFY2(!sheet.contains(token), qPrintable(token));
        QVERIFY2(!sheet.contains(QRegularExpression(QStringLiteral("%\\d"))),
                 "a placeholder was left unfilled");

        // Later blocks override earlier ones, so their order is part of the look.
        const QList<qsizetype> order = {
            sheet.indexOf(header), sheet.indexOf(QStringLiteral("#settingsRoot")),
            sheet.indexOf(QStringLiteral("#historyWindow")),
            sheet.indexOf(QStringLiteral("#aiChatPanel")),
            sheet.indexOf(QStringLiteral("font-family: 'Segoe UI Variable', 'Segoe UI', "
                                         "'Microsoft YaHei UI', sans-serif; font-size: 14px;"))};
        QVERIFY(order.first() >= 0);
        for (int i = 1; i < order.size(); ++i)
            QVERIFY2(order.at(i) > order.at(i - 1), qPrintable(QString::number(i)));

        // A syntax error anywhere would drop the whole sheet when the first widget is styled.
        QTest::failOnWarning(QRegularExpression(QStringLiteral("Could not parse")));
        QLabel label(QStringLiteral("styled"));
        label.setObjectName(QStringLiteral("detailValue"));
        label.ensurePolished();
        QCOMPARE(label.font().pixelSize(), 14);
        QCOMPARE(label.palette().color(QPalette::WindowText), detailText);
    }
};

ZELMOR_TEST_MAIN(TestThemeManager, QApplication)
#include "tst_thememanager.moc"
