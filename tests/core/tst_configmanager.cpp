#include "TestMain.h"
#include "TestSupport.h"

#include "core/ConfigManager.h"
#include "core/Log.h"

#include <QFile>
#include <QSignalSpy>

#include <memory>

using zelmor::core::ConfigManager;

class TestConfigManager : public QObject
{
    Q_OBJECT

    // A fresh folder per test: QSettings caches parsed files by path within a process.
    std::unique_ptr<QTemporaryDir> m_dir;
    QString iniPath() const { return m_dir->filePath(QStringLiteral("Zelmor.ini")); }
    // What another process would read from disk right now (a QSettings in this process
    // would share the unsynced cache).
    QVariant onDisk(const QString& key) const
    {
        static int serial = 0;
        const QString copy = m_dir->filePath(QStringLiteral("copy%1.ini").arg(++serial));
        QFile::copy(iniPath(), copy);
        return QSettings(copy, QSettings::IniFormat).value(key);
    }
    QString logText() const
    {
        return QString::fromUtf8(zelmor::test::readFile(zelmor::core::logFilePath()));
    }
    static void writeFile(const QString& path, const QByteArray& bytes)
    {
        QVERIFY(zelmor::test::writeFile(path, bytes));
    }

private Q_SLOTS:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QFile::remove(zelmor::core::logFilePath());
    }

    void hotkeyClearing()
    {
        ConfigManager config(iniPath());
        QSignalSpy changed(&config, &ConfigManager::hotkeysChanged);

        // Never written: the stored value reads as empty, so clearing changes nothing.
        config.setHotkey("region", QString());
        QCOMPARE(changed.count(), 0);
        QCOMPARE(config.hotkeyRegion(), QStringLiteral("F6"));
        QVERIFY(!onDisk(QStringLiteral("hotkeys/region")).isValid());

        // Writing the default while absent is a change, flushed at once.
        config.setHotkey("region", QStringLiteral("F6"));
        QCOMPARE(changed.count(), 1);
        QCOMPARE(onDisk(QStringLiteral("hotkeys/region")).toString(), QStringLiteral("F6"));

        // Once written, it can be cleared, and the default does not come back.
        config.setHotkey("region", QString());
        QCOMPARE(changed.count(), 2);
        QCOMPARE(config.hotkeyRegion(), QString());

        config.setHotkey("region", QString());
        QCOMPARE(changed.count(), 2);
    }

    void announcingSetters_data()
    {
        QTest::addColumn<QString>("which");
        QTest::addColumn<bool>("flushedAtOnce");
        QTest::newRow("theme") << "theme" << false;
        QTest::newRow("language") << "language" << true;
    }
    void announcingSetters()
    {
        QFETCH(QString, which);
        QFETCH(bool, flushedAtOnce);
        ConfigManager config(iniPath());
        const bool isTheme = which == QLatin1String("theme");
        QSignalSpy changed(&config, isTheme ? &ConfigManager::themeChanged
                                            : &ConfigManager::languageChanged);
        const auto set = [&](const QString& v) {
            isTheme ? config.setTheme(v) : config.setLanguage(v);
        };
        const QString key =
            isTheme ? QStringLiteral("General/theme") : QStringLiteral("General/language");

        set(QStringLiteral("system")); // equal to the default, but the stored value reads as empty
        QCOMPARE(changed.count(), 1);
        QCOMPARE(onDisk(key).isValid(), flushedAtOnce);
        set(QStringLiteral("system"));
        QCOMPARE(changed.count(), 1);
        set(QStringLiteral("dark"));
        QCOMPARE(changed.count(), 2);
    }

    void plainSettersFlushAsListed_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<bool>("flushedAtOnce");
        QTest::newRow("pin/opacity") << "pin/opacity" << true;
        QTest::newRow("pin/minZoom") << "pin/minZoom" << false;
        QTest::newRow("record/gifFps") << "record/gifFps" << false;
        QTest::newRow("capture/jpgQuality") << "capture/jpgQuality" << true;
        QTest::newRow("startup/autoStart") << "startup/autoStart" << true;
        QTest::newRow("general/fileNaming") << "General/fileNaming" << false;
    }
    void plainSettersFlushAsListed()
    {
        QFETCH(QString, key);
        QFETCH(bool, flushedAtOnce);
        ConfigManager config(iniPath());
        if (key == QLatin1String("pin/opacity")) config.setPinOpacity(0.5);
        if (key == QLatin1String("pin/minZoom")) config.setPinMinZoom(0.5);
        if (key == QLatin1String("record/gifFps")) config.setGifFps(20);
        if (key == QLatin1String("capture/jpgQuality")) config.setJpgQuality(70);
        if (key == QLatin1String("startup/autoStart")) config.setAutoStart(true);
        if (key == QLatin1String("General/fileNaming")) config.setFileNaming(QStringLiteral("x"));
        QCOMPARE(onDisk(key).isValid(), flushedAtOnce);
    }

    void generalGroupSurvivesARestart()
    {
        {
            ConfigManager config(iniPath());
            QVERIFY(config.outputDir().endsWith(QStringLiteral("/Zelmor")));
            QVERIFY(!QFile::exists(iniPath())); // reading writes nothing
            config.setOutputDir(QString());     // empty means unset
            QVERIFY(config.outputDir().endsWith(QStringLiteral("/Zelmor")));
            config.setOutputDir(QStringLiteral("/shots"));
            config.setTheme(QStringLiteral("dark"));
        }
        ConfigManager reopened(iniPath());
        QCOMPARE(reopened.outputDir(), QStringLiteral("/shots"));
        QCOMPARE(reopened.theme(), QStringLiteral("dark"));
        QVERIFY(onDisk(QStringLiteral("General/theme")).isValid());
    }

    void storeNeitherValidatesNorClamps()
    {
        writeFile(iniPath(), "[record]\ngifFps=fast\n[capture]\njpgQuality=900\n");
        ConfigManager config(iniPath());
        QCOMPARE(config.gifFps(), 0); // not the default 15
        QCOMPARE(config.jpgQuality(), 900);
    }

    void customPaths()
    {
        ConfigManager config(iniPath());
        config.addMcpCustomPath(QStringLiteral("  "));
        QVERIFY(!onDisk(QStringLiteral("mcp/customPaths")).isValid());
        config.addMcpCustomPath(QStringLiteral(" a "));
        config.addMcpCustomPath(QStringLiteral(" a "));
        config.addMcpCustomPath(QStringLiteral(" A "));
        QCOMPARE(config.mcpCustomPaths(),
                 (QStringList{QStringLiteral(" a "), QStringLiteral(" A ")}));

        // A hand-edited file may hold duplicates; removal takes them all.
        writeFile(iniPath(), "[mcp]\ncustomPaths=/x, /y, /x\n");
        ConfigManager edited(iniPath());
        QCOMPARE(edited.mcpCustomPaths().size(), 3);
        edited.removeMcpCustomPath(QStringLiteral("/x"));
        QCOMPARE(edited.mcpCustomPaths(), QStringList{QStringLiteral("/y")});
        QCOMPARE(onDisk(QStringLiteral("mcp/customPaths")).toStringList(),
                 QStringList{QStringLiteral("/y")});
    }

    void migratesOlderFileOnce()
    {
        const QString older = m_dir->filePath(QStringLiteral("Zelmor-Qt.ini"));
        writeFile(older, "[%General]\nlanguage=zh_CN\ntheme=dark\n[hotkeys]\nregion=F2\n");
        {
            ConfigManager config(iniPath());
            QCOMPARE(config.hotkeyRegion(), QStringLiteral("F2"));
            QVERIFY(QFile::exists(older));
            QVERIFY(logText().contains(QStringLiteral("[config] migrated prefs from ") + older));
            QVERIFY2(logText().contains(QStringLiteral(" lang=zh_CN theme=dark")),
                     qPrintable(logText()));
            config.setHotkey("region", QStringLiteral("F3"));
        }
        QFile::remove(zelmor::core::logFilePath());
        QFile::remove(older);
        ConfigManager again(iniPath()); // the current file exists now: no second copy
        QCOMPARE(again.hotkeyRegion(), QStringLiteral("F3"));
        QVERIFY(!logText().contains(QStringLiteral("migrated")));
    }

    void unreadableFileKeepsDefaultsAndACopy_data()
    {
        QTest::addColumn<bool>("asDirectory");
        QTest::newRow("garbage") << false;
        QTest::newRow("a directory") << true;
    }
    void unreadableFileKeepsDefaultsAndACopy()
    {
        QFETCH(bool, asDirectory);
        if (asDirectory) {
            QVERIFY(QDir().mkpath(iniPath()));
        } else {
            writeFile(iniPath(),
                      QByteArray("[general\n\xff\xfe\x00 =\n[[[\n", 13) + QByteArray(64, '\0'));
        }
        ConfigManager config(iniPath());
        QCOMPARE(config.hotkeyRegion(), QStringLiteral("F6"));
        config.setLanguage(QStringLiteral("en_US")); // must not crash, whatever the file is
        QCOMPARE(config.language(), QStringLiteral("en_US"));
        if (asDirectory) QVERIFY(logText().contains(QStringLiteral("using defaults")));
    }
};

ZELMOR_TEST_MAIN(TestConfigManager, QCoreApplication)
#include "tst_configmanager.moc"
