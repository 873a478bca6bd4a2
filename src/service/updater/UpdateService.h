#pragma once

#include <QObject>
#include <QString>
#include <QUrl>

class QFile;
class QNetworkAccessManager;
class QNetworkReply;

namespace zelmor::service::updater {

// Asks the release feed whether a newer version exists and fetches its package. One object per
// check: the caller deletes it after its answer.
class UpdateService : public QObject
{
    Q_OBJECT
public:
    explicit UpdateService(QObject* parent = nullptr);

    // Tests point the service at a local Releases-compatible server; an empty URL restores the
    // public one.
    static void setApiBaseForTests(const QUrl& base);
    // Tests shorten the waits for a feed that does not answer; 0 restores the usual ones.
    static void setCheckTimeoutsForTests(int idleMs, int totalMs);

public Q_SLOTS:
    void checkForUpdates();
    void downloadAndInstall(const QString& url);

Q_SIGNALS:
    void updateAvailable(const QString& version, const QString& downloadUrl,
                         const QString& releaseNotes);
    void upToDate();
    void checkFailed(const QString& reason);
    void downloadProgress(qint64 bytesReceived, qint64 bytesTotal);
    // Windows has started the installer at `path`. Linux never runs a download: the package
    // is kept there and shown in the file manager.
    void installerLaunched(const QString& path);
    void downloadFailed(const QString& reason);

private:
    void onCheckFinished(QNetworkReply* reply);
    void onDownloadFinished(QNetworkReply* reply, QFile* file);

    QNetworkAccessManager* m_network;
    const QString m_repository;
};

} // namespace zelmor::service::updater
