#include "FakeAiServer.h"
#include "FakeFileManager.h"
#include "TestMain.h"
#include "TestSupport.h"

#include "service/updater/UpdateService.h"

#include <QFile>
#include <QSignalSpy>
#include <QStandardPaths>

using zelmor::service::updater::UpdateService;
using zelmor::test::FakeAiServer;

namespace {

QByteArray release(const QString& tag, const QStringList& assetNames)
{
    QJsonArray assets;
    for (const QString& name : assetNames)
        assets.append(QJsonObject{{"name", name},
                                  {"browser_download_url", QString("https://dl.example/" + name)}});
    return QJsonDocument(QJsonObject{{"tag_name", tag},
                                     {"body", QString("notes of " + tag)},
                                     {"html_url", QString("https://example/releases/" + tag)},
                                     {"assets", assets}})
        .toJson();
}

} // namespace

class TestUpdater : public QObject
{
    Q_OBJECT

    FakeAiServer m_server;
    QString m_downloads;

private Q_SLOTS:
    void initTestCase()
    {
        QCoreApplication::setApplicationVersion(QStringLiteral("1.0.20"));
        UpdateService::setApiBaseForTests(QUrl(m_server.baseUrl()));
        m_downloads = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
        QVERIFY(m_downloads.startsWith(zelmor::test::sandboxRoot().path()));
        QVERIFY(QDir().mkpath(m_downloads));
    }
    void init() { m_server.clear(); }

    // "failed: <reason>" for a failure; no offer means up to date. A held answer sends `body`
    // and then nothing, or one more byte at every turn of the event loop when it trickles.
    void checkAnswers_data()
    {
        QTest::addColumn<int>("status"); // 0: held
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<bool>("trickle");
        QTest::addColumn<QString>("offered");
        const QByteArray head = FakeAiServer::head(200, 4096, "application/json");
        QTest::newRow("same version with v") << 200 << release("v1.0.20", {"a.zip"}) << false << "";
        QTest::newRow("capital V is no prefix") << 200 << release("V1.0.21", {}) << false << "";
        QTest::newRow("suffix ignored") << 200 << release("1.0.20-beta", {}) << false << "";
        QTest::newRow("body not JSON") << 200 << QByteArray("<html>") << false << "";
        QTest::newRow("zip listed first wins")
            << 200 << release("v1.0.21", {"notes.txt", "Portable.ZIP", "Setup.exe"}) << false
            << "https://dl.example/Portable.ZIP";
        QTest::newRow("no package: the release page") << 200 << release("v2.0.0", {"notes.txt"})
                                                      << false << "https://example/releases/v2.0.0";
        QTest::newRow("HTTP error") << 404 << QByteArray("{}") << false << "failed: Not Found";
        QTest::newRow("never answers") << 0 << QByteArray() << false << "failed: in time";
        QTest::newRow("stalls after its headers") << 0 << head << false << "failed: in time";
        QTest::newRow("trickles") << 0 << head << true << "failed: in time";
        QTest::newRow("larger than any release")
            << 200 << QByteArray(3 << 20, ' ') << false << "failed: more than a release";
    }
    void checkAnswers()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        QFETCH(bool, trickle);
        QFETCH(QString, offered);
        if (status)
            m_server.enqueue(status, body);
        else
            m_server.enqueueHold();
        UpdateService::setCheckTimeoutsForTests(status ? 0 : 500, status ? 0 : 2000);
        UpdateService service;
        QSignalSpy available(&service, &UpdateService::updateAvailable);
        QSignalSpy upToDate(&service, &UpdateService::upToDate);
        QSignalSpy failed(&service, &UpdateService::checkFailed);
        service.checkForUpdates();
        QTRY_COMPARE(m_server.requests().size(), 1);
        m_server.sendHeld(body, false);
        const auto answers = [&] { return available.size() + upToDate.size() + failed.size(); };
        for (int turn = 0; turn < 200 && !QTest::qWaitFor(answers, 100); ++turn)
            if (trickle) m_server.sendHeld(" ", false);
        QCOMPARE(answers(), 1);

        const zelmor::test::HttpRequest& request = m_server.requests().value(0);
        QCOMPARE(request.path, QByteArray("/repos/zelmor-app/zelmor/releases/latest"));
        QCOMPARE(request.headers.value("user-agent"), QByteArray("Zelmor-Qt-Updater"));
        QCOMPARE(request.headers.value("accept"), QByteArray("application/vnd.github+json"));
        if (offered.startsWith(QLatin1String("failed: ")))
            QVERIFY2(failed.value(0).value(0).toString().contains(offered.mid(8)),
                     qPrintable(failed.value(0).value(0).toString()));
        else if (offered.isEmpty())
            QCOMPARE(upToDate.size(), 1);
        else
            QCOMPARE(available.value(0).value(1).toString(), offered);
    }

    // The package streams to disk under a fixed name, keeping its suffix; one broken off is
    // removed, a whole one shown in the file manager.
    void download_data()
    {
        QTest::addColumn<QString>("asset");
        QTest::addColumn<bool>("whole");
        QTest::newRow("whole") << "zelmor_1.0.21.deb" << true;
        QTest::newRow("broken off") << "Setup.exe" << false;
    }
    void download()
    {
        QFETCH(QString, asset);
        QFETCH(bool, whole);
        zelmor::test::FileManagerOnBus fileManager;
        QVERIFY(fileManager.registered);
        const QByteArray package(3 << 20, 'z');
        m_server.enqueueHold();
        UpdateService service;
        QSignalSpy progress(&service, &UpdateService::downloadProgress);
        QSignalSpy saved(&service, &UpdateService::installerLaunched);
        QSignalSpy failed(&service, &UpdateService::downloadFailed);
        service.downloadAndInstall(m_server.baseUrl() + QLatin1Char('/') + asset);
        QTRY_COMPARE(m_server.requests().size(), 1);
        m_server.sendHeld(FakeAiServer::head(200, package.size(), "application/octet-stream") +
                              package.left(1 << 20),
                          false);
        const QString path =
            m_downloads + QStringLiteral("/Zelmor-Qt-Setup.") + asset.section('.', -1);
        QTRY_COMPARE(QFileInfo(path).size(), 1 << 20); // on disk before the end

        m_server.sendHeld(whole ? package.mid(1 << 20) : QByteArray(), true);
        QTRY_COMPARE(saved.size() + failed.size(), 1);
        QCOMPARE(QFile::exists(path), whole);
        if (!whole) return;
        QCOMPARE(progress.last(), (QList<QVariant>{package.size(), package.size()}));
        QCOMPARE(saved.first().first().toString(), path);
        QCOMPARE(zelmor::test::readFile(path), package);
        QCOMPARE(fileManager.shown(), QStringList{QUrl::fromLocalFile(path).toString()});
    }
};

ZELMOR_TEST_MAIN(TestUpdater, QApplication)
#include "tst_updater.moc"
