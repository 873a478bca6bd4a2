#pragma once

#include "AiProvider.h"

#include <QObject>

class QSqlDatabase;
class QSqlQuery;

namespace zelmor::service::ai {

// The user's AI endpoints, kept in the table ai_providers of the history database. Nothing
// is cached: every call reads the table, so all callers see one truth.
class AiProviderService : public QObject
{
    Q_OBJECT
public:
    // The service on the history store's connection.
    static AiProviderService& instance();

    // A service of its own; it works once ensureTable has been given an open connection.
    explicit AiProviderService(QObject* parent = nullptr);

    // Creates the table on the named connection and, on an empty table, imports the one
    // provider that older versions kept in the settings group "ai".
    bool ensureTable(const QString& connectionName);

    QList<AiProvider> list() const;
    qint32 count() const;
    // The default provider, else the first one; id 0 when there is none.
    AiProvider active() const;
    AiProvider get(qint64 id) const;

    // The new id, or -1. A provider marked default takes the mark from all others.
    qint64 insert(const AiProvider& provider);
    bool update(const AiProvider& provider);
    // Removing the default passes the mark to the first remaining provider.
    bool remove(qint64 id);
    bool setDefault(qint64 id);

    // The share form: name, protocol, baseUrl, apiKey and model as indented JSON, the key
    // in plain text, since users paste it to each other. Empty for an unknown id.
    QString exportJson(qint64 id) const;
    // Inserts the shared provider, not as default; -1 when the text is no JSON object.
    qint64 importJson(const QString& text, const QString& nameOverride = QString());

Q_SIGNALS:
    void changed();

private:
    bool ensureReady() const;
    QSqlDatabase database() const;
    AiProvider selectOne(const QString& sql, const QVariantList& binds = {}) const;
    void importLegacySettings();

    QString m_connectionName;
    bool m_ready = false;
};

} // namespace zelmor::service::ai
