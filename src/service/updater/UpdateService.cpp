#include "UpdateService.h"

#include "core/Utilities.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QProcess>
#include <QStandardPaths>
#include <QTimer>
#include <QVersionNumber>

namespace zelmor::service::updater {

namespace {

const QUrl kPublicApi(QStringLiteral("https://api.github.com"));
const QString kRepository = QStringLiteral("zelmor-app/zelmor");

// A release answer is a few kilobytes; more is not a feed.
constexpr qint64 kFeedLimit = 1 << 20;
constexpr int kIdleMs = 15000;
constexpr int kTotalMs = 30000;
const char kFailureProperty[] = "zelmorFailure";

struct CheckTimeouts
{
    int idleMs = kIdleMs;
    int totalMs = kTotalMs;
};

CheckTimeouts& checkTimeouts()
{
    static CheckTimeouts timeouts;
    return timeouts;
}

QUrl& apiBase()
{
    static QUrl base = kPublicApi;
    return base;
}

// The Debian package is the Linux edition's own.
const QStringList& packageSuffixes()
{
#ifdef Q_OS_WIN
    static const QStringList suffixes = {QStringLiteral(".zip"), QStringLiteral(".exe")};
#else
    static const QStringList suffixes = {QStringLiteral(".zip"), QStringLiteral(".exe"),
                                         QStringLiteral(".deb")};
#endif
    return suffixes;
}

QString packageSuffix(const QString& name)
{
    for (const QString& suffix : packageSuffixes())
        if (name.endsWith(suffix, Qt::CaseInsensitive)) return suffix;
    return {};
}

// The feed's order alone decides between packages.
QString pickDownloadUrl(const QJsonObject& release)
{
    for (const QJsonValue& asset : release.value(QStringLiteral("assets")).toArray()) {
        const QJsonObject object = asset.toObject();
        if (!packageSuffix(object.value(QStringLiteral("name")).toString()).isEmpty())
            return object.value(QStringLiteral("browser_download_url")).toString();
    }
    return release.value(QStringLiteral("html_url")).toString();
}

QNetworkRequest makeRequest(const QUrl& url)
{
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("Zelmor-Qt-Updater"));
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::NoLessSafeRedirectPolicy);
    return request;
}

// One fixed name, so a newer download replaces the older one. On Linux the package keeps the
// suffix it was published with, so that the file manager opens it with the right program.
QString downloadPath(const QString& url)
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
    if (folder.isEmpty() || !QDir(folder).exists()) folder = QDir::tempPath();
#ifdef Q_OS_WIN
    Q_UNUSED(url);
    return folder + QDir::separator() + QStringLiteral("Zelmor-Qt-Setup.exe");
#else
    return folder + QDir::separator() + QStringLiteral("Zelmor-Qt-Setup") +
           packageSuffix(QUrl(url).path()).toLower();
#endif
}

} // namespace

UpdateService::UpdateService(QObject* parent)
    : QObject(parent), m_network(new QNetworkAccessManager(this)), m_repository(kRepository)
{}

void UpdateService::setApiBaseForTests(const QUrl& base)
{
    apiBase() = base.isEmpty() ? kPublicApi : base;
}

void UpdateService::setCheckTimeoutsForTests(int idleMs, int totalMs)
{
    checkTimeouts() = {idleMs > 0 ? idleMs : kIdleMs, totalMs > 0 ? totalMs : kTotalMs};
}

void UpdateService::checkForUpdates()
{
    QUrl url = apiBase();
    url.setPath(url.path() + QStringLiteral("/repos/%1/releases/latest").arg(m_repository));
    QNetworkRequest request = makeRequest(url);
    request.setRawHeader("Accept", "application/vnd.github+json");
    // Covers the connection and every pause between bytes.
    request.setTransferTimeout(checkTimeouts().idleMs);
    QNetworkReply* reply = m_network->get(request);
    const auto giveUp = [reply](const QString& reason) {
        reply->setProperty(kFailureProperty, reason);
        reply->abort();
    };
    // A feed that trickles never pauses long enough: the whole answer has a deadline too.
    QTimer::singleShot(checkTimeouts().totalMs, reply, [giveUp] {
        giveUp(tr("The release feed did not answer in time.", "updater.timeout"));
    });
    // Read as a whole at the end: what arrives is held in memory until then.
    connect(reply, &QNetworkReply::readyRead, this, [reply, giveUp] {
        if (reply->bytesAvailable() > kFeedLimit)
            giveUp(tr("The release feed sent more than a release.", "updater.tooLarge"));
    });
    connect(reply, &QNetworkReply::finished, this, [this, reply] { onCheckFinished(reply); });
}

void UpdateService::onCheckFinished(QNetworkReply* reply)
{
    reply->deleteLater();
    if (reply->error() != QNetworkReply::NoError) {
        QString reason = reply->property(kFailureProperty).toString();
        // Nothing else cancels a check: the transfer timeout did.
        const bool timedOut = reply->error() == QNetworkReply::OperationCanceledError ||
                              reply->error() == QNetworkReply::TimeoutError;
        if (reason.isEmpty())
            reason = timedOut ? tr("The release feed did not answer in time.", "updater.timeout")
                              : reply->errorString();
        Q_EMIT checkFailed(reason);
        return;
    }
    // An unreadable body is an empty release: no tag, so up to date.
    const QJsonObject release = QJsonDocument::fromJson(reply->readAll()).object();
    const QString tag = release.value(QStringLiteral("tag_name")).toString();
    const QString notes = release.value(QStringLiteral("body")).toString();
    const QVersionNumber current =
        QVersionNumber::fromString(QCoreApplication::applicationVersion());
    // Only a lower-case "v" is a prefix; "V1.0.21" reads as no version at all.
    const QVersionNumber latest =
        QVersionNumber::fromString(tag.startsWith(QLatin1Char('v')) ? tag.mid(1) : tag);
    if (latest.segmentCount() > 0 && QVersionNumber::compare(latest, current) > 0)
        Q_EMIT updateAvailable(tag, pickDownloadUrl(release), notes);
    else
        Q_EMIT upToDate();
}

void UpdateService::downloadAndInstall(const QString& url)
{
    if (url.isEmpty()) {
        Q_EMIT downloadFailed(QStringLiteral("empty URL"));
        return;
    }
    const QString path = downloadPath(url);
    auto* file = new QFile(path, this);
    if (!file->open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)) {
        delete file;
        Q_EMIT downloadFailed(QStringLiteral("cannot open %1").arg(path));
        return;
    }
    QNetworkReply* reply = m_network->get(makeRequest(QUrl(url)));
    // Streamed to disk as it arrives; a write that fails (a full disk) ends the download.
    connect(reply, &QNetworkReply::readyRead, this, [reply, file] {
        const QByteArray chunk = reply->readAll();
        if (file->write(chunk) != chunk.size()) reply->abort();
    });
    connect(reply, &QNetworkReply::downloadProgress, this, &UpdateService::downloadProgress);
    connect(reply, &QNetworkReply::finished, this,
            [this, reply, file] { onDownloadFinished(reply, file); });
}

void UpdateService::onDownloadFinished(QNetworkReply* reply, QFile* file)
{
    const QString path = file->fileName();
    const bool written = file->flush() && file->error() == QFileDevice::NoError;
    const QString writeError = file->errorString();
    file->close();
    file->deleteLater();
    reply->deleteLater();
    if (reply->error() != QNetworkReply::NoError || !written) {
        QFile::remove(path);
        Q_EMIT downloadFailed(written ? reply->errorString() : writeError);
        return;
    }
#ifdef Q_OS_WIN
    // A running tool server would keep its executable locked against the installer.
    QProcess::execute(QStringLiteral("taskkill"),
                      {QStringLiteral("/F"), QStringLiteral("/IM"),
                       core::executableFileName(QStringLiteral("zelmor-mcp"))});
    if (!QProcess::startDetached(path, {}, QString())) {
        QFile::remove(path);
        Q_EMIT downloadFailed(QStringLiteral("failed to launch installer"));
        return;
    }
#else
    // Linux does not lock a running executable, and Zelmor never runs what it downloaded:
    // the user installs the package from the folder shown.
    core::showInFileManager(path);
#endif
    Q_EMIT installerLaunched(path);
}

} // namespace zelmor::service::updater
