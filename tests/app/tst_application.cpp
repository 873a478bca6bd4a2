#include "TestMain.h"

#include "app/Application.h"
#include "app/CommandLine.h"
#include "core/ConfigManager.h"

#include <QFile>
#include <QStandardPaths>
#include <QStyle>

using zelmor::app::Application;
using zelmor::core::ConfigManager;

class TestApplication : public QObject
{
    Q_OBJECT

    static QString appData()
    {
        return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    }
    static QString translated()
    {
        return QCoreApplication::translate("zelmor::widget::SettingsDialog",
                                           "Language:", "settings.general.language");
    }
    static void placeQm(const QString& name)
    {
        QDir().mkpath(appData());
        QFile::remove(appData() + QLatin1Char('/') + name);
        QVERIFY(
            QFile::copy(qEnvironmentVariable("ZELMOR_BIN_DIR") + QStringLiteral("/zelmor_zh_CN.qm"),
                        appData() + QLatin1Char('/') + name));
    }

private Q_SLOTS:
    void captureSwitch_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QString>("expected");
        QTest::newRow("program name is not a switch") << QStringList{} << QString();
        QTest::newRow("region") << QStringList{"--capture-region"} << "--capture-region";
        QTest::newRow("first of both wins")
            << QStringList{"--capture-fullscreen", "--capture-region"} << "--capture-fullscreen";
        QTest::newRow("spelling counts")
            << QStringList{"--Capture-Region", "-capture-fullscreen"} << QString();
        QTest::newRow("no prefix match")
            << QStringList{"--capture-regions", "--capture-fullscreen="} << QString();
    }
    void captureSwitch()
    {
        QFETCH(QStringList, args);
        QFETCH(QString, expected);
        std::vector<QByteArray> storage{QByteArray("--capture-region")}; // argv[0] is skipped
        for (const QString& a : args)
            storage.push_back(a.toUtf8());
        std::vector<const char*> argv;
        for (const QByteArray& a : storage)
            argv.push_back(a.constData());
        const char* found = zelmor::app::firstCaptureSwitch(int(argv.size()), argv.data());
        QCOMPARE(QString::fromLatin1(found), expected);
    }

    void translationLocale_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QLocale>("system");
        QTest::addColumn<QString>("expected");
        QTest::newRow("system is the full name") << "system" << QLocale("de_DE") << "de_DE";
        QTest::newRow("empty is system") << "" << QLocale("pt_BR") << "pt_BR";
        QTest::newRow("explicit short") << "de" << QLocale("en_US") << "de";
    }
    void translationLocale()
    {
        QFETCH(QString, language);
        QFETCH(QLocale, system);
        QFETCH(QString, expected);
        QCOMPARE(Application::translationLocale(language, system), expected);
    }

    void loadsOnlyTheExactFile()
    {
        auto* app = static_cast<Application*>(qApp);
        // A file for the language alone is not taken for the full locale.
        placeQm(QStringLiteral("zelmor_de.qm"));
        ConfigManager::instance().setLanguage(QStringLiteral("de_DE"));
        app->reloadTranslators();
        QCOMPARE(translated(), QStringLiteral("Language:"));

        placeQm(QStringLiteral("zelmor_de_DE.qm"));
        app->reloadTranslators();
        QCOMPARE(translated(), QStringLiteral("语言："));

        // A reload to a language without a file drops the old translator.
        ConfigManager::instance().setLanguage(QStringLiteral("fr_FR"));
        app->reloadTranslators();
        QCOMPARE(translated(), QStringLiteral("Language:"));
    }
};

ZELMOR_TEST_MAIN(TestApplication, Application)
#include "tst_application.moc"
