#include "TestMain.h"

#include "core/ConfigManager.h"
#include "service/ai/AiProviderService.h"

#include <QGuiApplication>
#include <QJsonDocument>
#include <QSettings>
#include <QSqlDatabase>

#include <memory>

using namespace zelmor::service::ai;

namespace {

QStringList fields(const AiProvider& p)
{
    return {p.name, p.protocol, p.baseUrl, p.apiKey, p.model};
}

// What older versions kept in the settings group "ai"; an empty map clears the group.
void writeLegacySettings(const QVariantMap& values)
{
    QSettings settings(zelmor::core::ConfigManager::instance().fileName(), QSettings::IniFormat);
    settings.remove(QStringLiteral("ai"));
    for (auto it = values.begin(); it != values.end(); ++it)
        settings.setValue(QStringLiteral("ai/") + it.key(), it.value());
    settings.sync();
}

} // namespace

class TestAiProvider : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_connection;
    std::unique_ptr<AiProviderService> m_service;

    qint64 add(const QString& name, qint32 sortOrder = 0, bool isDefault = false)
    {
        return m_service->insert({0, name, "openai", {}, {}, {}, isDefault, sortOrder});
    }

    QStringList defaultNames() const
    {
        QStringList names;
        for (const AiProvider& p : m_service->list())
            if (p.isDefault) names << p.name;
        return names;
    }

private Q_SLOTS:
    // First, so that nothing has opened the process store before: reading the providers does.
    void processStoreImportsSettingsOnFirstUse()
    {
        writeLegacySettings({{"apiKey", "legacy-key"}, {"baseUrl", "http://legacy.example"}});
        const QList<AiProvider> providers = AiProviderService::instance().list();
        QCOMPARE(providers.size(), 1);
        QCOMPARE(fields(providers[0]),
                 QStringList({"Imported", "anthropic", "http://legacy.example", "legacy-key", ""}));
        QVERIFY(providers[0].isDefault);
    }

    void init()
    {
        static int count = 0;
        m_connection = QStringLiteral("providers-%1").arg(++count);
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", m_connection);
        db.setDatabaseName(m_dir.filePath(m_connection + ".db"));
        QVERIFY(db.open());
        m_service = std::make_unique<AiProviderService>();
        QVERIFY(m_service->ensureTable(m_connection));
    }

    void cleanup()
    {
        m_service.reset();
        QSqlDatabase::database(m_connection, false).close();
        QSqlDatabase::removeDatabase(m_connection);
        writeLegacySettings({});
    }

    void removePassesTheDefaultOn_data()
    {
        QTest::addColumn<QList<int>>("sortOrders"); // providers p0, p1, ... in insert order
        QTest::addColumn<int>("defaultIndex");
        QTest::addColumn<int>("removeIndex");
        QTest::addColumn<QStringList>("defaultsAfter");
        QTest::newRow("default removed, lowest sort order takes it")
            << QList<int>{5, 1, 1} << 0 << 0 << QStringList{"p1"};
        QTest::newRow("default removed, tie goes to the lower id")
            << QList<int>{0, 0, 0} << 1 << 1 << QStringList{"p0"};
        QTest::newRow("other removed, default stays")
            << QList<int>{0, 0, 0} << 2 << 0 << QStringList{"p2"};
        QTest::newRow("last one removed") << QList<int>{0} << 0 << 0 << QStringList{};
    }

    void removePassesTheDefaultOn()
    {
        QFETCH(QList<int>, sortOrders);
        QFETCH(int, defaultIndex);
        QFETCH(int, removeIndex);
        QFETCH(QStringList, defaultsAfter);
        QList<qint64> ids;
        for (int i = 0; i < sortOrders.size(); ++i)
            ids << add(QStringLiteral("p%1").arg(i), sortOrders[i], i == defaultIndex);
        QVERIFY(m_service->remove(ids[removeIndex]));
        QCOMPARE(m_service->count(), sortOrders.size() - 1);
        QCOMPARE(defaultNames(), defaultsAfter);
        QCOMPARE(m_service->active().name, defaultsAfter.value(0));
    }

    void onlyOneDefault()
    {
        const qint64 a = add("a", 0, true);
        add("b", 0, true);
        QCOMPARE(defaultNames(), QStringList{"b"});
        AiProvider first = m_service->get(a);
        first.isDefault = true;
        QVERIFY(m_service->update(first));
        QCOMPARE(defaultNames(), QStringList{"a"});
        QVERIFY(m_service->setDefault(add("c")));
        QCOMPARE(defaultNames(), QStringList{"c"});
    }

    // The share form: what is imported, and what a full one exports unchanged.
    void importJson_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("nameOverride");
        QTest::addColumn<QStringList>("expected"); // empty: refused
        QTest::newRow("empty object") << "{}"
                                      << "" << QStringList{"Imported", "openai-compat", "", "", ""};
        QTest::newRow("name overridden") << R"({"name":"Team","protocol":"ollama"})"
                                         << "Mine" << QStringList{"Mine", "ollama", "", "", ""};
        QTest::newRow("array: refused") << R"([{"name":"a"}])"
                                        << "" << QStringList{};
        QTest::newRow("full, exported unchanged")
            << R"({"apiKey":"k","baseUrl":"https://r","model":"m","name":"Relay","protocol":"ollama"})"
            << "" << QStringList{"Relay", "ollama", "https://r", "k", "m"};
    }
    void importJson()
    {
        QFETCH(QString, text);
        QFETCH(QString, nameOverride);
        QFETCH(QStringList, expected);
        const qint64 id = m_service->importJson(text, nameOverride);
        QCOMPARE(m_service->count(), expected.isEmpty() ? 0 : 1);
        if (id > 0) QCOMPARE(fields(m_service->get(id)), expected);
        if (QTest::currentDataTag() == QLatin1String("full, exported unchanged"))
            QCOMPARE(QJsonDocument::fromJson(m_service->exportJson(id).toUtf8()),
                     QJsonDocument::fromJson(text.toUtf8()));
        QCOMPARE(m_service->exportJson(id + 100), QString());
    }

    void legacySettingsImport_data()
    {
        QTest::addColumn<QVariantMap>("settings");
        QTest::addColumn<bool>("tableHasRows");
        QTest::addColumn<QStringList>("expected"); // the providers' names and fields, in order
        QTest::newRow("base, protocol and model")
            << QVariantMap{{"provider", "openai-compat"}, {"baseUrl", "http://b"}, {"model", "m"}}
            << false << QStringList{"Imported", "openai-compat", "http://b", "", "m"};
        QTest::newRow("neither key nor base")
            << QVariantMap{{"model", "m"}} << false << QStringList{};
        QTest::newRow("table already has rows")
            << QVariantMap{{"apiKey", "k"}} << true << QStringList{"kept", "openai", "", "", ""};
    }

    void legacySettingsImport()
    {
        QFETCH(QVariantMap, settings);
        QFETCH(bool, tableHasRows);
        QFETCH(QStringList, expected);
        if (tableHasRows) add("kept");
        writeLegacySettings(settings);
        AiProviderService restarted;
        QVERIFY(restarted.ensureTable(m_connection));
        QCOMPARE(fields(restarted.active()), expected.isEmpty() ? fields({}) : expected);
        QCOMPARE(restarted.count(), expected.isEmpty() ? 0 : 1);
        // The settings stay for an older version started again.
        QSettings ini(zelmor::core::ConfigManager::instance().fileName(), QSettings::IniFormat);
        QCOMPARE(ini.value("ai/model"), settings.value("model"));
    }
};

ZELMOR_TEST_MAIN(TestAiProvider, QGuiApplication)
#include "tst_aiprovider.moc"
