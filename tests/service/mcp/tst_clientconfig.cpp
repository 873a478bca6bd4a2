#include "TestMain.h"
#include "TestSupport.h"

#include "service/mcp/ClientConfig.h"

#include <QtCore>

using namespace zelmor::service::mcp;
using namespace zelmor::test;
using namespace Qt::StringLiterals;

class TestClientConfig : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

private slots:
    void initTestCase()
    {
        // As a user may leave it by editing the file, before the store reads it.
        QSettings(QSettings::IniFormat, QSettings::UserScope, QCoreApplication::organizationName(),
                  QCoreApplication::applicationName())
            .setValue("mcp/customPaths", QStringList{"", "/x/a.json", "", "/y/b.json"});
        // The executable is looked for beside this one.
        const QString beside = mcpExecutablePath();
        if (!QFile::exists(beside))
            QVERIFY(QFile::link(qEnvironmentVariable("ZELMOR_BIN_DIR") + "/zelmor-mcp", beside));
    }

    // Each row: the file before (absent when null), the action, and what must hold after.
    void edits_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<bool>("insert");
        QTest::addColumn<int>("times");
        QTest::addColumn<QByteArray>("after"); // compact JSON; "same" when untouched
        const QByteArray entry =
            QJsonDocument(QJsonObject{{"args", QJsonArray()}, {"command", mcpExecutablePath()}})
                .toJson(QJsonDocument::Compact);
        QTest::newRow("insert into a missing file")
            << QByteArray() << true << 1
            << QByteArray(R"({"mcpServers":{"zelmor":)" + entry + "}}");
        QTest::newRow("others kept, inserted twice")
            << R"({"theme":1,"mcpServers":{"other":{"command":"x"}}})"_ba << true << 2
            << QByteArray(R"({"mcpServers":{"other":{"command":"x"},"zelmor":)" + entry +
                          R"(},"theme":1})");
        QTest::newRow("a string of servers is lost")
            << R"({"mcpServers":"text"})"_ba << true << 1
            << QByteArray(R"({"mcpServers":{"zelmor":)" + entry + "}}");
        QTest::newRow("remove the last: the key goes, the file stays")
            << R"({"a":2,"mcpServers":{"zelmor":{}}})"_ba << false << 1 << R"({"a":2})"_ba;
        QTest::newRow("remove from a missing file") << QByteArray() << false << 1 << "same"_ba;
        QTest::newRow("remove a name not there")
            << R"({"mcpServers":{"other":{}}})"_ba << false << 1 << "same"_ba;
        for (bool insert : {true, false})
            QTest::addRow("top-level array, %s", insert ? "insert" : "remove")
                << "[1, 2]"_ba << insert << 1 << "same"_ba;
    }
    void edits()
    {
        QFETCH(QByteArray, before);
        QFETCH(bool, insert);
        QFETCH(int, times);
        QFETCH(QByteArray, after);
        const QString path =
            m_dir.filePath(QString("%1/deeper/config.json").arg(QTest::currentDataTag()));
        if (!before.isNull())
            QVERIFY(QDir().mkpath(QFileInfo(path).path()) && writeFile(path, before));
        QString message;
        for (int i = 0; i < times; ++i)
            message =
                insert ? injectClientConfig(path, "zelmor") : removeClientConfig(path, "zelmor");
        const bool parseError = before.startsWith('[');
        QCOMPARE(message.startsWith("Parse error in " + path + ": "), parseError);
        QVERIFY2(message.isEmpty() || parseError, qPrintable(message));
        if (after == "same") {
            QCOMPARE(QFile::exists(path), !before.isNull());
            if (!before.isNull()) QCOMPARE(readFile(path), before);
        } else {
            QCOMPARE(QJsonDocument::fromJson(readFile(path)).toJson(QJsonDocument::Compact), after);
        }
        QCOMPARE(isClientConfigured(path, "zelmor"), insert && !parseError);
    }

    void entriesAndSnippet()
    {
        const QList<McpClientEntry> entries = mcpClientEntries();
        QCOMPARE(entries.size(), 10);
        QCOMPARE(entries[1].configPath, QDir::homePath() + "/.cursor/mcp.json"); // Cursor's own
        QCOMPARE(entries[8].id + entries[8].displayName, "custom_1自定义实例 (a.json)");
        QCOMPARE(entries[9].id + entries[9].configPath, "custom_2/y/b.json");
        const QJsonDocument snippet =
            QJsonDocument::fromJson(clientConfigSnippet("zelmor").toUtf8());
        QCOMPARE(snippet["mcpServers"]["zelmor"]["command"].toString(), mcpExecutablePath());
    }

    // What Zelmor writes starts the server for a real client.
    void entryStartsTheServer()
    {
        if (QStandardPaths::findExecutable("node").isEmpty()) QSKIP("node is not installed");
        const QString path = m_dir.filePath("client/config.json");
        QCOMPARE(injectClientConfig(path, "zelmor"), QString());
        QProcess node;
        node.setWorkingDirectory(QStringLiteral(ZELMOR_TESTS_DIR "/mcp"));
        node.start("node", {"config_entry.mjs", path});
        QVERIFY(node.waitForFinished(60000));
        QCOMPARE(node.readAllStandardOutput().trimmed(), "32");
    }
};

ZELMOR_TEST_MAIN(TestClientConfig, QCoreApplication)
#include "tst_clientconfig.moc"
