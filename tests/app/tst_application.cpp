#include "TestMain.h"

#include "app/Application.h"
#include "app/CommandLine.h"
#include "core/ConfigManager.h"

#include <QFile>
#include <QStandardPaths>

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
        QTest::newRow("first of both wins")
            << QStringList{"--capture-fullscreen", "--capture-region"} << "--capture-fullscreen";
        QTest::newRow("spelling counts, no prefix match")
            << QStringList{"--Capture-Region", "--capture-regions", "--capture-fullscreen="}
            << QString();
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

    // Ours by the exact file name, else the shipped one of the language (English for all but
    // Chinese); Qt's own texts (standard buttons) in the language loaded.
    void loadsTranslations_data()
    {
        QTest::addColumn<QString>("placed"); // a copy of the Chinese file under this name
        QTest::addColumn<QString>("language");
        QTest::addColumn<QString>("ours");
        QTest::addColumn<QString>("qts");
        QTest::newRow("no file for the language alone") << "zelmor_de.qm"
                                                        << "de_DE"
                                                        << "Language:"
                                                        << "Cancel";
        QTest::newRow("the exact file") << "zelmor_de_DE.qm"
                                        << "de_DE"
                                        << "语言："
                                        << "Abbrechen";
        QTest::newRow("Chinese") << "zelmor_zh_CN.qm"
                                 << "zh_CN"
                                 << "语言："
                                 << "取消";
        QTest::newRow("no file drops the old translators") << QString() << "fr_FR"
                                                           << "Language:"
                                                           << "Cancel";
    }
    void loadsTranslations()
    {
        QFETCH(QString, placed);
        QFETCH(QString, language);
        QFETCH(QString, ours);
        QFETCH(QString, qts);
        if (!placed.isEmpty()) placeQm(placed);
        ConfigManager::instance().setLanguage(language);
        static_cast<Application*>(qApp)->reloadTranslators();
        QCOMPARE(translated(), ours);
        QCOMPARE(QCoreApplication::translate("QPlatformTheme", "Cancel"), qts);
    }
};

ZELMOR_TEST_MAIN(TestApplication, Application)
#include "tst_application.moc"
