#include "AiProviderService.h"

#include "core/ConfigManager.h"
#include "service/history/HistoryService.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSettings>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QVariant>

namespace zelmor::service::ai {

namespace {

const QString kCreateTable = QStringLiteral(
    "CREATE TABLE IF NOT EXISTS ai_providers (  id INTEGER PRIMARY KEY AUTOINCREMENT,  name TEXT "
    "NOT NULL,  protocol TEXT NOT NULL,  base_url TEXT NOT NULL DEFAULT '',  api_key TEXT NOT "
    "NULL DEFAULT '',  model TEXT NOT NULL DEFAULT '',  is_default INTEGER NOT NULL DEFAULT 0,  "
    "sort_order INTEGER NOT NULL DEFAULT 0,  created_at INTEGER NOT NULL)");

const QString kSelect = QStringLiteral(
    "SELECT id, name, protocol, base_url, api_key, model, is_default, sort_order FROM "
    "ai_providers ");

const QString kInsert = QStringLiteral(
    "INSERT INTO ai_providers (name, protocol, base_url, api_key, model, is_default, sort_order, "
    "created_at) VALUES (?, ?, ?, ?, ?, ?, ?, ?)");

// The columns are NOT NULL, and a null QString would be bound as NULL.
QVariant text(const QString& value)
{
    return value.isNull() ? QVariant(QStringLiteral("")) : QVariant(value);
}

AiProvider readProvider(const QSqlQuery& query)
{
    AiProvider provider;
    provider.id = query.value(QStringLiteral("id")).toLongLong();
    provider.name = query.value(QStringLiteral("name")).toString();
    provider.protocol = query.value(QStringLiteral("protocol")).toString();
    provider.baseUrl = query.value(QStringLiteral("base_url")).toString();
    provider.apiKey = query.value(QStringLiteral("api_key")).toString();
    provider.model = query.value(QStringLiteral("model")).toString();
    provider.isDefault = query.value(QStringLiteral("is_default")).toInt() == 1;
    provider.sortOrder = query.value(QStringLiteral("sort_order")).toInt();
    return provider;
}

} // namespace

AiProviderService& AiProviderService::instance()
{
    static AiProviderService service;
    return service;
}

AiProviderService::AiProviderService(QObject* parent) : QObject(parent) {}

bool AiProviderService::ensureTable(const QString& connectionName)
{
    if (m_ready) return true;
    m_connectionName = connectionName;
    QSqlDatabase db = database();
    if (!db.isOpen()) return false;
    if (!QSqlQuery(db).exec(kCreateTable)) return false;
    importLegacySettings();
    m_ready = true;
    return true;
}

void AiProviderService::importLegacySettings()
{
    QSqlQuery query(database());
    if (!query.exec(QStringLiteral("SELECT COUNT(*) FROM ai_providers")) || !query.next()) return;
    if (query.value(0).toLongLong() > 0) return;

    QSettings settings(core::ConfigManager::instance().fileName(), QSettings::IniFormat);
    settings.beginGroup(QStringLiteral("ai"));
    const QString protocol =
        settings.value(QStringLiteral("provider"), QStringLiteral("anthropic")).toString();
    const QString baseUrl = settings.value(QStringLiteral("baseUrl")).toString();
    const QString apiKey = settings.value(QStringLiteral("apiKey")).toString();
    const QString model = settings.value(QStringLiteral("model")).toString();
    if (apiKey.isEmpty() && baseUrl.isEmpty()) return;

    query.prepare(QStringLiteral("INSERT INTO ai_providers (name, protocol, base_url, api_key, "
                                 "model, is_default, sort_order, created_at) VALUES (?, ?, ?, ?, "
                                 "?, 1, 0, ?)"));
    query.addBindValue(QStringLiteral("Imported"));
    query.addBindValue(text(protocol));
    query.addBindValue(text(baseUrl));
    query.addBindValue(text(apiKey));
    query.addBindValue(text(model));
    query.addBindValue(QDateTime::currentMSecsSinceEpoch());
    // The settings keys stay, so that an older version started again still finds its setup.
    if (query.exec()) Q_EMIT changed();
}

// Readers may come before the history store was ever asked for; opening it hands over the
// connection.
bool AiProviderService::ensureReady() const
{
    if (!m_ready) history::HistoryService::instance();
    return m_ready;
}

QSqlDatabase AiProviderService::database() const
{
    // An empty name would reach Qt's default connection, which is not ours.
    if (m_connectionName.isEmpty()) return QSqlDatabase();
    return QSqlDatabase::database(m_connectionName, true);
}

AiProvider AiProviderService::selectOne(const QString& sql, const QVariantList& binds) const
{
    QSqlQuery query(database());
    query.prepare(sql);
    for (const QVariant& value : binds)
        query.addBindValue(value);
    if (!query.exec() || !query.next()) return {};
    return readProvider(query);
}

QList<AiProvider> AiProviderService::list() const
{
    QList<AiProvider> providers;
    if (!ensureReady()) return providers;
    QSqlQuery query(database());
    if (!query.exec(kSelect + QStringLiteral("ORDER BY sort_order, id"))) return providers;
    while (query.next())
        providers.append(readProvider(query));
    return providers;
}

qint32 AiProviderService::count() const
{
    if (!ensureReady()) return 0;
    QSqlQuery query(database());
    if (!query.exec(QStringLiteral("SELECT COUNT(*) FROM ai_providers")) || !query.next()) return 0;
    return query.value(0).toInt();
}

AiProvider AiProviderService::active() const
{
    if (!ensureReady()) return {};
    const AiProvider flagged = selectOne(kSelect + QStringLiteral("WHERE is_default=1 LIMIT 1"));
    if (flagged.id != 0) return flagged;
    return selectOne(kSelect + QStringLiteral("ORDER BY sort_order, id LIMIT 1"));
}

AiProvider AiProviderService::get(qint64 id) const
{
    if (!ensureReady()) return {};
    return selectOne(kSelect + QStringLiteral("WHERE id=?"), {id});
}

// The columns insert and update share, in the order both statements name them.
static void bindFields(QSqlQuery& query, const AiProvider& provider)
{
    query.addBindValue(text(provider.name));
    query.addBindValue(text(provider.protocol));
    query.addBindValue(text(provider.baseUrl));
    query.addBindValue(text(provider.apiKey));
    query.addBindValue(text(provider.model));
    query.addBindValue(provider.isDefault ? 1 : 0);
    query.addBindValue(provider.sortOrder);
}

qint64 AiProviderService::insert(const AiProvider& provider)
{
    if (!ensureReady()) return -1;
    QSqlQuery query(database());
    query.prepare(kInsert);
    bindFields(query, provider);
    query.addBindValue(QDateTime::currentMSecsSinceEpoch());
    if (!query.exec()) return -1;
    const qint64 id = query.lastInsertId().toLongLong();
    if (provider.isDefault) setDefault(id);
    Q_EMIT changed();
    return id;
}

bool AiProviderService::update(const AiProvider& provider)
{
    if (!ensureReady() || provider.id < 1) return false;
    QSqlQuery query(database());
    query.prepare(QStringLiteral("UPDATE ai_providers SET name=?, protocol=?, base_url=?, "
                                 "api_key=?, model=?, is_default=?, sort_order=? WHERE id=?"));
    bindFields(query, provider);
    query.addBindValue(provider.id);
    if (!query.exec()) return false;
    if (provider.isDefault) setDefault(provider.id);
    Q_EMIT changed();
    return true;
}

bool AiProviderService::setDefault(qint64 id)
{
    if (!ensureReady()) return false;
    QSqlQuery query(database());
    if (!query.exec(QStringLiteral("UPDATE ai_providers SET is_default=0"))) return false;
    query.prepare(QStringLiteral("UPDATE ai_providers SET is_default=1 WHERE id=?"));
    query.addBindValue(id);
    if (!query.exec()) return false;
    Q_EMIT changed();
    return true;
}

bool AiProviderService::remove(qint64 id)
{
    if (!ensureReady()) return false;
    const bool wasDefault = get(id).isDefault;
    QSqlQuery query(database());
    query.prepare(QStringLiteral("DELETE FROM ai_providers WHERE id=?"));
    query.addBindValue(id);
    if (!query.exec()) return false;
    if (wasDefault &&
        query.exec(QStringLiteral("SELECT id FROM ai_providers ORDER BY sort_order, id LIMIT 1")) &&
        query.next())
        setDefault(query.value(0).toLongLong());
    Q_EMIT changed();
    return true;
}

QString AiProviderService::exportJson(qint64 id) const
{
    const AiProvider provider = get(id);
    if (provider.id == 0) return QString();
    const QJsonObject object{{QStringLiteral("name"), provider.name},
                             {QStringLiteral("protocol"), provider.protocol},
                             {QStringLiteral("baseUrl"), provider.baseUrl},
                             {QStringLiteral("apiKey"), provider.apiKey},
                             {QStringLiteral("model"), provider.model}};
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Indented));
}

qint64 AiProviderService::importJson(const QString& text, const QString& nameOverride)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject()) return -1;
    const QJsonObject object = document.object();

    AiProvider provider;
    provider.name =
        nameOverride.isEmpty() ? object.value(QStringLiteral("name")).toString() : nameOverride;
    if (provider.name.isEmpty()) provider.name = QStringLiteral("Imported");
    provider.protocol = object.value(QStringLiteral("protocol")).toString();
    if (provider.protocol.isEmpty()) provider.protocol = QStringLiteral("openai-compat");
    provider.baseUrl = object.value(QStringLiteral("baseUrl")).toString();
    provider.apiKey = object.value(QStringLiteral("apiKey")).toString();
    provider.model = object.value(QStringLiteral("model")).toString();
    return insert(provider);
}

} // namespace zelmor::service::ai
