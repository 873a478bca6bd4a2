#include "HistoryService.h"

#include "core/Log.h"
#include "service/ai/AiProviderService.h"
#include "service/capture/OutputFile.h"

#include <QDateTime>
#include <QFile>
#include <QPixmap>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

namespace zelmor::service::history {

using core::HistoryItem;

namespace {

constexpr int kSchemaVersion = 2;

// A locked file must fail within a second instead of freezing the GUI thread.
const QString kConnectOptions = QStringLiteral("QSQLITE_BUSY_TIMEOUT=1000");

const QString kSchema[] = {
    QStringLiteral("CREATE TABLE IF NOT EXISTS items (  id INTEGER PRIMARY KEY AUTOINCREMENT,  "
                   "kind TEXT,  category TEXT,  path TEXT,  created_at INTEGER,  width INTEGER,  "
                   "height INTEGER,  note TEXT)"),
    QStringLiteral("CREATE VIRTUAL TABLE IF NOT EXISTS items_fts USING fts5(  path, ocr_text, "
                   "content='items', content_rowid='id')"),
    QStringLiteral("CREATE TABLE IF NOT EXISTS tags (  id INTEGER PRIMARY KEY AUTOINCREMENT, name "
                   "TEXT UNIQUE)"),
    QStringLiteral("CREATE TABLE IF NOT EXISTS history_tags (  item_id INTEGER NOT NULL, tag_id "
                   "INTEGER NOT NULL,  PRIMARY KEY (item_id, tag_id))"),
};

const QString kSelectColumns = QStringLiteral(
    "SELECT i.id, i.kind, i.category, i.path, i.created_at, i.width, i.height,   (SELECT "
    "group_concat(t.name, ',') FROM history_tags ht    JOIN tags t ON t.id = ht.tag_id WHERE "
    "ht.item_id = i.id) ");

const QString kPathMatch =
    QStringLiteral("FROM items i WHERE i.path LIKE ? ESCAPE '\\' ORDER BY created_at DESC");
const QString kTextMatch = QStringLiteral("FROM items i WHERE i.id IN   (SELECT rowid FROM "
                                          "items_fts WHERE items_fts MATCH ?) ORDER BY "
                                          "created_at DESC");
const QString kTagMatch = QStringLiteral(
    "FROM items i WHERE i.id IN   (SELECT ht.item_id FROM history_tags ht    JOIN tags t ON t.id "
    "= ht.tag_id    WHERE t.name LIKE ? ESCAPE '\\') ORDER BY created_at DESC");

// Stamps version 2 on older files, filling in the category they were written without.
bool migrate(const QString& connectionName)
{
    QSqlDatabase db = QSqlDatabase::database(connectionName, true);
    if (!db.isOpen()) return false;
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("PRAGMA user_version;")) || !query.next()) return false;
    if (query.value(0).toInt() >= kSchemaVersion) return true;

    // Fails on files that already have the column; only the updates matter then.
    QSqlQuery(db).exec(QStringLiteral("ALTER TABLE items ADD COLUMN category TEXT;"));
    QSqlQuery(db).exec(QStringLiteral(
        "UPDATE items SET category='recording' WHERE category IS NULL AND kind='gif';"));
    QSqlQuery(db).exec(QStringLiteral("UPDATE items SET category='screenshot' WHERE category IS "
                                      "NULL;"));
    return QSqlQuery(db).exec(QStringLiteral("PRAGMA user_version = %1;").arg(kSchemaVersion));
}

HistoryItem readItem(const QSqlQuery& query)
{
    HistoryItem item;
    item.id = query.value(0).toLongLong();
    item.kind = core::captureKindFromText(query.value(1).toString());
    item.category = core::historyCategoryFromText(query.value(2).toString());
    item.path = query.value(3).toString();
    item.createdAt = QDateTime::fromMSecsSinceEpoch(query.value(4).toLongLong());
    item.width = query.value(5).toInt();
    item.height = query.value(6).toInt();
    // A tag holding a comma comes back as two; the tag editor never creates one.
    item.tags = query.value(7).toString().split(QLatin1Char(','), Qt::SkipEmptyParts);
    return item;
}

QString likePattern(QString text)
{
    text.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    text.replace(QLatin1Char('%'), QLatin1String("\\%"));
    text.replace(QLatin1Char('_'), QLatin1String("\\_"));
    return QLatin1Char('%') + text + QLatin1Char('%');
}

} // namespace

HistoryService& HistoryService::instance()
{
    static HistoryService service(core::dataDirectory() + QStringLiteral("/history.db"),
                                  QStringLiteral("zelmor-history"));
    return service;
}

HistoryService::HistoryService(const QString& dbPath, const QString& connectionName,
                               QObject* parent)
    : QObject(parent), m_connectionName(connectionName)
{
    qRegisterMetaType<HistoryItem>();
    m_ready = open(dbPath);
    if (m_ready) migrate(m_connectionName);
    // The provider table lives in the same file. Only the process store hands its connection
    // over, so that a store on a private connection cannot capture the provider singleton.
    if (m_ready && m_connectionName == QLatin1String("zelmor-history"))
        ai::AiProviderService::instance().ensureTable(m_connectionName);
}

HistoryService::~HistoryService()
{
    if (!m_ownsConnection) return;
    QSqlDatabase::database(m_connectionName, false).close();
    QSqlDatabase::removeDatabase(m_connectionName);
}

bool HistoryService::open(const QString& path)
{
    if (QSqlDatabase::contains(m_connectionName)) {
        core::writeLogLine(QStringLiteral("[history] cannot open %1: connection %2 is in use")
                               .arg(path, m_connectionName));
        return false;
    }
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connectionName);
    m_ownsConnection = true;
    db.setDatabaseName(path);
    db.setConnectOptions(kConnectOptions);
    if (!db.open()) {
        core::writeLogLine(
            QStringLiteral("[history] cannot open %1: %2").arg(path, db.lastError().text()));
        return false;
    }
    if (!createSchema()) return false;
    // The file may hold paths and recognised text the user would not share.
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
    return true;
}

bool HistoryService::createSchema()
{
    QSqlDatabase db = database();
    for (const QString& statement : kSchema) {
        QSqlQuery query(db);
        if (query.exec(statement)) continue;
        core::writeLogLine(QStringLiteral("[history] cannot open %1: %2")
                               .arg(db.databaseName(), query.lastError().text()));
        return false;
    }
    return true;
}

// A store that could not take its connection name must not run on somebody else's file.
QSqlDatabase HistoryService::database() const
{
    if (!m_ownsConnection) return QSqlDatabase();
    return QSqlDatabase::database(m_connectionName, true);
}

qint64 HistoryService::insert(const QPixmap& image, const QString& path,
                              core::HistoryCategory category, const QString& ocrText)
{
    if (!m_ready) return -1;
    QSqlQuery query(database());
    query.prepare(QStringLiteral("INSERT INTO items (kind, category, path, created_at, width, "
                                 "height, note) VALUES (?, ?, ?, ?, ?, ?, ?)"));
    query.addBindValue(QStringLiteral("image"));
    query.addBindValue(core::historyCategoryToText(category));
    query.addBindValue(path);
    query.addBindValue(QDateTime::currentMSecsSinceEpoch());
    query.addBindValue(image.width());
    query.addBindValue(image.height());
    query.addBindValue(QStringLiteral(""));
    if (!query.exec()) return -1;
    const qint64 id = query.lastInsertId().toLongLong();

    // Only OCR text needs the index; path search reads the items table directly.
    if (!ocrText.isEmpty()) {
        QSqlQuery fts(database());
        fts.prepare(QStringLiteral("INSERT INTO items_fts (rowid, path, ocr_text) VALUES (?, ?, "
                                   "?)"));
        fts.addBindValue(id);
        fts.addBindValue(path);
        fts.addBindValue(ocrText);
        fts.exec();
    }
    Q_EMIT itemsChanged();
    return id;
}

void HistoryService::addTags(qint64 id, const QStringList& tags)
{
    if (!m_ready || id < 1) return;
    QSqlDatabase db = database();
    db.transaction();
    for (const QString& raw : tags) {
        const QString name = raw.trimmed();
        if (name.isEmpty()) continue;
        QSqlQuery query(db);
        query.prepare(QStringLiteral("INSERT OR IGNORE INTO tags (name) VALUES (?)"));
        query.addBindValue(name);
        query.exec();
        query.prepare(QStringLiteral("SELECT id FROM tags WHERE name = ?"));
        query.addBindValue(name);
        if (!query.exec() || !query.next()) continue;
        const qint64 tagId = query.value(0).toLongLong();
        query.prepare(
            QStringLiteral("INSERT OR IGNORE INTO history_tags (item_id, tag_id) VALUES (?, ?)"));
        query.addBindValue(id);
        query.addBindValue(tagId);
        query.exec();
    }
    // Callers refresh their own list, so no itemsChanged here.
    db.commit();
}

void HistoryService::removeTag(qint64 id, const QString& tag)
{
    QSqlQuery query(database());
    query.prepare(QStringLiteral("DELETE FROM history_tags WHERE item_id = ? AND tag_id =   "
                                 "(SELECT id FROM tags WHERE name = ?)"));
    query.addBindValue(id);
    query.addBindValue(tag.trimmed());
    query.exec();
}

QList<HistoryItem> HistoryService::recent(qint32 limit) const
{
    QList<HistoryItem> items;
    QSqlQuery query(database());
    query.prepare(kSelectColumns + QStringLiteral("FROM items i ORDER BY created_at DESC LIMIT ?"));
    query.addBindValue(limit);
    if (!query.exec()) return items;
    while (query.next())
        items.append(readItem(query));
    return items;
}

QList<HistoryItem> HistoryService::search(const QString& query, qint32 limit) const
{
    QList<HistoryItem> items;
    const QString trimmed = query.trimmed();
    if (trimmed.isEmpty()) return items;
    const QString cleaned = QString(trimmed).remove(QLatin1Char('"'));
    const QString like = likePattern(cleaned);
    const QString phrase = QStringLiteral("\"%1\"*").arg(cleaned);

    QSet<qint64> seen;
    appendMatches(kPathMatch, like, seen, items);
    appendMatches(kTextMatch, phrase, seen, items);
    appendMatches(kTagMatch, like, seen, items);
    if (items.size() > limit) items.resize(qMax(limit, 0));
    return items;
}

void HistoryService::appendMatches(const QString& sql, const QString& pattern, QSet<qint64>& seen,
                                   QList<HistoryItem>& items) const
{
    QSqlQuery query(database());
    query.prepare(kSelectColumns + sql);
    query.addBindValue(pattern);
    if (!query.exec()) return;
    while (query.next()) {
        const qint64 id = query.value(0).toLongLong();
        if (seen.contains(id)) continue;
        seen.insert(id);
        items.append(readItem(query));
    }
}

bool HistoryService::remove(qint64 id)
{
    QSqlQuery query(database());
    query.prepare(QStringLiteral("DELETE FROM items WHERE id=?"));
    query.addBindValue(id);
    const bool removed = query.exec();
    if (removed) Q_EMIT itemsChanged();
    return removed;
}

bool HistoryService::clear()
{
    const bool cleared = QSqlQuery(database()).exec(QStringLiteral("DELETE FROM items"));
    if (cleared) Q_EMIT itemsChanged();
    return cleared;
}

bool HistoryService::exportTo(qint64 id, const QString& destination) const
{
    if (destination.isEmpty()) return false;
    QSqlQuery query(database());
    query.prepare(QStringLiteral("SELECT path FROM items WHERE id = ?"));
    query.addBindValue(id);
    if (!query.exec() || !query.next()) return false;
    const QString path = query.value(0).toString();
    if (path.isEmpty()) return false;
    if (QFile::copy(path, destination)) return true;

    // The copy refuses an existing destination; a save overwrites it in the suffix's format.
    return capture::savePixmapFile(QPixmap(path), destination);
}

} // namespace zelmor::service::history
