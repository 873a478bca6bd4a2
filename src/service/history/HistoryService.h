#pragma once

#include "core/HistoryItem.h"

#include <QList>
#include <QObject>
#include <QSet>

class QPixmap;
class QSqlDatabase;
class QSqlQuery;

namespace zelmor::service::history {

// The SQLite store of every capture's metadata: path, size, time, category and tags. The
// image files stay where the capture put them; the store never owns or deletes them.
class HistoryService : public QObject
{
    Q_OBJECT
public:
    // The store on history.db in the data folder, connection "zelmor-history".
    static HistoryService& instance();

    // A store on an explicit file under a connection of its own. A connection name that is
    // already taken leaves the store not ready instead of stealing the other's connection.
    HistoryService(const QString& dbPath, const QString& connectionName, QObject* parent = nullptr);
    ~HistoryService() override;

    // The new row id, or -1 when the store is not ready or the row could not be written.
    qint64 insert(const QPixmap& image, const QString& path, core::HistoryCategory category,
                  const QString& ocrText = QString());
    void addTags(qint64 id, const QStringList& tags);
    void removeTag(qint64 id, const QString& tag);
    QList<core::HistoryItem> recent(qint32 limit) const;
    // Path hits, then OCR text hits, then tag hits, each newest first and each item once.
    QList<core::HistoryItem> search(const QString& query, qint32 limit) const;
    bool remove(qint64 id);
    bool clear();
    bool exportTo(qint64 id, const QString& destination) const;

Q_SIGNALS:
    void itemsChanged();

private:
    bool open(const QString& path);
    bool createSchema();
    QSqlDatabase database() const;
    // Appends the rows of `sql` with `pattern` bound, skipping ids already in `seen`.
    void appendMatches(const QString& sql, const QString& pattern, QSet<qint64>& seen,
                       QList<core::HistoryItem>& items) const;

    QString m_connectionName;
    bool m_ownsConnection = false;
    bool m_ready = false;
};

} // namespace zelmor::service::history
