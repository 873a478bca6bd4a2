#include "TestMain.h"

#include "service/mcp/McpServer.h"
#include "service/mcp/McpTool.h"
#include "service/mcp/StdinReader.h"

#include <QBuffer>
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTemporaryDir>

#include <memory>

#include <unistd.h>

using namespace zelmor::service::mcp;

namespace {

QByteArray request(const QJsonValue& id, const QString& method, const QJsonObject& params = {})
{
    QJsonObject message{{"jsonrpc", "2.0"}, {"id", id}, {"method", method}};
    if (!params.isEmpty()) message.insert("params", params);
    return QJsonDocument(message).toJson(QJsonDocument::Compact);
}

// Every line must be a JSON-RPC 2.0 object: anything else on the stream breaks a client.
QList<QJsonObject> parseReplies(const QByteArray& stream)
{
    QList<QJsonObject> replies;
    for (const QByteArray& line : stream.split('\n')) {
        if (line.isEmpty()) continue;
        const QJsonDocument doc = QJsonDocument::fromJson(line);
        if (!doc.isObject() || doc.object().value("jsonrpc") != QLatin1String("2.0"))
            qWarning("not a protocol line: %s", line.left(200).constData());
        replies << doc.object();
    }
    return replies;
}

struct Session
{
    QBuffer output;
    McpServer server;
    Session()
    {
        output.open(QIODevice::ReadWrite);
        server.setOutput(&output);
    }
    QList<QJsonObject> replies() { return parseReplies(output.data()); }
};

QList<int> replyIds(const QList<QJsonObject>& replies)
{
    QList<int> ids;
    for (const QJsonObject& r : replies)
        ids << r.value("id").toInt(-1);
    return ids;
}

QString mcpExecutable()
{
    QString dir = qEnvironmentVariable("ZELMOR_BIN_DIR");
    if (dir.isEmpty()) dir = QCoreApplication::applicationDirPath() + "/../bin";
    return dir + "/zelmor-mcp";
}

// Standard input of this process replaced by a pipe the test writes, for the reader.
struct PipedStdin
{
    int writeEnd = -1;
    int saved = dup(STDIN_FILENO);
    PipedStdin()
    {
        int fds[2];
        if (pipe(fds) != 0) return;
        dup2(fds[0], STDIN_FILENO);
        close(fds[0]);
        writeEnd = fds[1];
    }
    void closeWriteEnd()
    {
        if (writeEnd >= 0) close(writeEnd);
        writeEnd = -1;
    }
    ~PipedStdin()
    {
        closeWriteEnd();
        dup2(saved, STDIN_FILENO);
        close(saved);
    }
};

qsizetype totalSize(const QSignalSpy& chunks)
{
    qsizetype total = 0;
    for (const QList<QVariant>& args : chunks)
        total += args.at(0).toByteArray().size();
    return total;
}

} // namespace

class TestMcpServer : public QObject
{
    Q_OBJECT

private slots:
    void framing_data()
    {
        QTest::addColumn<QByteArrayList>("chunks");
        QTest::addColumn<QList<int>>("ids");
        const QByteArray one = request(1, "ping") + '\n';
        const QByteArray two = request(2, "ping") + '\n';
        QByteArrayList bytes;
        const QByteArray both = one + two;
        for (char c : both)
            bytes << QByteArray(1, c);
        const QByteArray big =
            request(
                7, "tools/call",
                {{"name", "ping"}, {"arguments", QJsonObject{{"blob", QString(3 << 19, 'x')}}}}) +
            '\n';
        QByteArrayList bigChunks;
        for (qsizetype at = 0; at < big.size(); at += 8192)
            bigChunks << big.mid(at, 8192);

        QTest::newRow("one line") << QByteArrayList{one} << QList<int>{1};
        QTest::newRow("split over two reads")
            << QByteArrayList{one.left(10), one.mid(10)} << QList<int>{1};
        QTest::newRow("two in one read") << QByteArrayList{one + two} << QList<int>{1, 2};
        QTest::newRow("byte by byte") << bytes << QList<int>{1, 2};
        QTest::newRow("CRLF and blank lines")
            << QByteArrayList{"\n  \r\n" + one.chopped(1) + "\r\n\n"} << QList<int>{1};
        QTest::newRow("unterminated waits") << QByteArrayList{one.chopped(1)} << QList<int>{};
        QTest::newRow("1.5 MiB in 8192-byte reads") << bigChunks << QList<int>{7};
    }
    void framing()
    {
        QFETCH(QByteArrayList, chunks);
        QFETCH(QList<int>, ids);
        Session s;
        for (const QByteArray& chunk : chunks)
            s.server.receive(chunk);
        QCOMPARE(replyIds(s.replies()), ids);
    }

    void endOfInputAnswersLastLine()
    {
        Session s;
        s.server.receive(request(3, "ping"));
        QVERIFY(s.replies().isEmpty());
        s.server.finish();
        QCOMPARE(replyIds(s.replies()), QList<int>{3});
    }

    void errors_data()
    {
        QTest::addColumn<QByteArray>("message");
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("id"); // JSON text of the expected id

        QTest::newRow("not JSON") << QByteArray("{\"jsonrpc\":\"2.0\",") << -32700
                                  << QByteArray("null");
        QTest::newRow("bad UTF-8")
            << QByteArray("{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"\xff\"}") << -32700
            << QByteArray("null");
        QTest::newRow("bare number") << QByteArray("42") << -32600 << QByteArray("null");
        QTest::newRow("batch array")
            << QByteArray("[" + request(1, "ping") + "]") << -32600 << QByteArray("null");
        QTest::newRow("no jsonrpc")
            << QByteArray(R"({"id":3,"method":"ping"})") << -32600 << QByteArray("3");
        QTest::newRow("jsonrpc 1.0") << QByteArray(R"({"jsonrpc":"1.0","id":3,"method":"ping"})")
                                     << -32600 << QByteArray("3");
        QTest::newRow("no method")
            << QByteArray(R"({"jsonrpc":"2.0","id":4})") << -32600 << QByteArray("4");
        QTest::newRow("method a number") << QByteArray(R"({"jsonrpc":"2.0","id":"a","method":5})")
                                         << -32600 << QByteArray("\"a\"");
        QTest::newRow("null id") << QByteArray(R"({"jsonrpc":"2.0","id":null,"method":"ping"})")
                                 << -32600 << QByteArray("null");
        QTest::newRow("object id") << QByteArray(R"({"jsonrpc":"2.0","id":{},"method":"ping"})")
                                   << -32600 << QByteArray("null");
        QTest::newRow("unknown method")
            << request(6, "resources/list") << -32601 << QByteArray("6");
        QTest::newRow("params an array")
            << QByteArray(R"({"jsonrpc":"2.0","id":7,"method":"tools/list","params":[1]})")
            << -32602 << QByteArray("7");
        QTest::newRow("call without name")
            << request("s", "tools/call", {{"arguments", QJsonObject()}}) << -32602
            << QByteArray("\"s\"");
        QTest::newRow("call arguments a string")
            << request(8, "tools/call", {{"name", "ping"}, {"arguments", "x"}}) << -32602
            << QByteArray("8");
        QTest::newRow("initialize without version")
            << request(9, "initialize", {{"capabilities", QJsonObject()}}) << -32602
            << QByteArray("9");
    }
    void errors()
    {
        QFETCH(QByteArray, message);
        QFETCH(int, code);
        QFETCH(QByteArray, id);
        Session s;
        s.server.receive(message + '\n' + request(99, "ping") + '\n');
        const QList<QJsonObject> replies = s.replies();
        QCOMPARE(replies.size(), 2);
        QCOMPARE(replies[0].value("error").toObject().value("code").toInt(), code);
        QCOMPARE(replies[0].value("id"), QJsonDocument::fromJson("[" + id + "]").array().at(0));
        QVERIFY(!replies[0].contains("result"));
        // The server lives on.
        QCOMPARE(replies[1].value("id").toInt(), 99);
        QVERIFY(replies[1].value("result").isObject());
    }

    void notificationsUnanswered_data()
    {
        QTest::addColumn<QByteArray>("message");
        QTest::newRow("initialized")
            << QByteArray(R"({"jsonrpc":"2.0","method":"notifications/initialized"})");
        QTest::newRow("cancelled") << QByteArray(
            R"({"jsonrpc":"2.0","method":"notifications/cancelled","params":{"requestId":1}})");
        QTest::newRow("unknown") << QByteArray(R"({"jsonrpc":"2.0","method":"x/y"})");
        QTest::newRow("ping without id") << QByteArray(R"({"jsonrpc":"2.0","method":"ping"})");
        QTest::newRow("client result") << QByteArray(R"({"jsonrpc":"2.0","id":5,"result":{}})");
    }
    void notificationsUnanswered()
    {
        QFETCH(QByteArray, message);
        Session s;
        s.server.receive(message + '\n');
        QCOMPARE(s.output.data(), QByteArray());
    }

    void versionNegotiation_data()
    {
        QTest::addColumn<QString>("requested");
        QTest::addColumn<QString>("answered");
        for (const char* v : {"2025-11-25", "2025-06-18", "2025-03-26", "2024-11-05"})
            QTest::newRow(v) << v << v;
        QTest::newRow("older than all") << "2024-10-07"
                                        << "2025-11-25";
        QTest::newRow("empty") << ""
                               << "2025-11-25";
    }
    void versionNegotiation()
    {
        QFETCH(QString, requested);
        QFETCH(QString, answered);
        Session s;
        const QJsonObject reply =
            QJsonDocument::fromJson(
                s.server.answer(
                    request(1, "initialize",
                            {{"protocolVersion", requested},
                             {"capabilities", QJsonObject()},
                             {"clientInfo", QJsonObject{{"name", "t"}, {"version", "1"}}}})))
                .object();
        const QJsonObject result = reply.value("result").toObject();
        QCOMPARE(result.value("protocolVersion").toString(), answered);
        QVERIFY(result.value("capabilities").toObject().value("tools").isObject());
        QVERIFY(!result.value("serverInfo").toObject().value("name").toString().isEmpty());
    }

    void callMcpTool_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QVariantMap>("expected");
        QTest::newRow("ping") << "ping" << QVariantMap{{"text", "pong"}, {"pong", true}};
        const auto unknown = [](const QString& name) {
            return QVariantMap{{"isError", true}, {"text", QString("unknown tool: %1").arg(name)}};
        };
        for (const char* name : {"PING", "ping ", "", "capture_active_window"})
            QTest::newRow(qPrintable('"' + QString(name) + '"')) << name << unknown(name);
    }
    void callMcpTool()
    {
        QFETCH(QString, name);
        QFETCH(QVariantMap, expected);
        QCOMPARE(zelmor::service::mcp::callMcpTool(name, {{"x", 1}}), expected);
    }

    void callResult_data()
    {
        QTest::addColumn<QVariantMap>("result");
        QTest::addColumn<QStringList>("texts");
        QTest::addColumn<bool>("isError");
        QTest::newRow("text and data") << QVariantMap{{"text", "pong"}, {"pong", true}}
                                       << QStringList{"pong", R"({"pong":true})"} << false;
        QTest::newRow("failure") << QVariantMap{{"isError", true}, {"text", "capture failed"}}
                                 << QStringList{"capture failed"} << true;
        QTest::newRow("data only")
            << QVariantMap{{"count", 1}, {"windows", QVariantList{QVariantMap{{"title", "a"}}}}}
            << QStringList{R"({"count":1,"windows":[{"title":"a"}]})"} << false;
        QTest::newRow("isError false is no failure")
            << QVariantMap{{"isError", false}, {"text", "resolved"}} << QStringList{"resolved"}
            << false;
        QTest::newRow("empty") << QVariantMap{} << QStringList{"{}"} << false;
    }
    void callResult()
    {
        QFETCH(QVariantMap, result);
        QFETCH(QStringList, texts);
        QFETCH(bool, isError);
        const QJsonObject converted = McpServer::callResult(result);
        QStringList actual;
        for (const QJsonValue& block : converted.value("content").toArray()) {
            QCOMPARE(block.toObject().value("type").toString(), "text");
            actual << block.toObject().value("text").toString();
        }
        QCOMPARE(actual, texts);
        QCOMPARE(converted.value("isError").toBool(), isError);
    }

    void readerDeliversChunksThenEof()
    {
        PipedStdin input;
        QVERIFY(input.writeEnd >= 0);
        StdinReader reader;
        QSignalSpy chunks(&reader, &StdinReader::dataReady);
        QSignalSpy eof(&reader, &StdinReader::eof);
        reader.start();
        const QByteArray bytes(20000, 'x');
        QCOMPARE(write(input.writeEnd, bytes.constData(), bytes.size()), ssize_t(bytes.size()));
        input.closeWriteEnd();
        QTRY_COMPARE_WITH_TIMEOUT(eof.size(), 1, 30000);
        QCOMPARE(totalSize(chunks), bytes.size());
        for (const QList<QVariant>& args : chunks)
            QVERIFY(args.at(0).toByteArray().size() <= 8192);
    }

    // A client that keeps its pipe open must not keep the reader's thread alive.
    void readerDestroyedWhileBlocked()
    {
        PipedStdin input;
        QVERIFY(input.writeEnd >= 0);
        auto reader = std::make_unique<StdinReader>();
        QSignalSpy chunks(reader.get(), &StdinReader::dataReady);
        reader->start();
        QCOMPARE(write(input.writeEnd, "ab", 2), ssize_t(2));
        QTRY_COMPARE_WITH_TIMEOUT(chunks.size(), 1, 30000);
        reader.reset(); // a thread still running here would abort the process
    }

    // The real executable: standard input read in 8192-byte chunks, lines around that size.
    void process_data()
    {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<QList<int>>("ids");
        const auto padded = [](int id, int lineSize) -> QByteArray {
            const QByteArray bare = request(
                id, "tools/call", {{"name", "ping"}, {"arguments", QJsonObject{{"p", ""}}}});
            const QByteArray line = request(
                id, "tools/call",
                {{"name", "ping"},
                 {"arguments", QJsonObject{{"p", QString(lineSize - bare.size() - 1, 'p')}}}});
            return line + '\n';
        };
        QTest::newRow("closed at once") << QByteArray() << QList<int>{};
        for (int size : {8191, 8192, 8193, 3 * 8192})
            QTest::newRow(qPrintable(QString::number(size) + "-byte line"))
                << QByteArray(padded(1, size) + request(2, "ping") + '\n') << QList<int>{1, 2};
        QTest::newRow("unterminated last line")
            << QByteArray(request(1, "ping") + '\n' + request(2, "ping")) << QList<int>{1, 2};
        QTest::newRow("garbage between")
            << QByteArray(request(1, "ping") + "\n}{\n" + request(2, "ping") + '\n')
            << QList<int>{1, -1, 2};
    }
    void process()
    {
        QFETCH(QByteArray, input);
        QFETCH(QList<int>, ids);
        QProcess mcp;
        mcp.start(mcpExecutable(), {});
        QVERIFY2(mcp.waitForStarted(), qPrintable(mcp.errorString()));
        mcp.write(input);
        mcp.closeWriteChannel();
        QVERIFY(mcp.waitForFinished(60000));
        QCOMPARE(mcp.exitStatus(), QProcess::NormalExit);
        QCOMPARE(mcp.exitCode(), 0);
        const QByteArray out = mcp.readAllStandardOutput();
        QVERIFY(out.isEmpty() || out.endsWith('\n'));
        const QList<QJsonObject> replies = parseReplies(out);
        for (const QJsonObject& r : replies)
            QVERIFY2(r.value("jsonrpc") == QLatin1String("2.0"), "stdout held a non-protocol line");
        QCOMPARE(replyIds(replies), ids);
    }

    // A client that stops reading: the server ends quietly at the end of input instead of
    // being killed by the broken pipe.
    void closedOutputEndsQuietly()
    {
        QProcess mcp; // its output goes to a reader that is gone at once
        mcp.start("bash", {"-c", "\"$0\" | true; exit \"${PIPESTATUS[0]}\"", mcpExecutable()});
        QVERIFY2(mcp.waitForStarted(), qPrintable(mcp.errorString()));
        for (int i = 0; i < 100; ++i)
            mcp.write(request(i, "ping") + '\n');
        mcp.closeWriteChannel();
        QVERIFY(mcp.waitForFinished(30000));
        QCOMPARE(mcp.exitCode(), 0);
    }

    // Input ends while a recognition waits on its provider: the answer says so rather than
    // passing for an empty text.
    void ocrCutShortByEndOfInput()
    {
        QTcpServer silentProvider; // takes the request and never answers
        QVERIFY(silentProvider.listen(QHostAddress::LocalHost));
        QTemporaryDir home;
        QVERIFY(QDir().mkpath(home.filePath("config/Zelmor")));
        QFile ini(home.filePath("config/Zelmor/Zelmor.ini"));
        QVERIFY(ini.open(QIODevice::WriteOnly));
        ini.write("[ai]\nprovider=openai\napiKey=k\nmodel=m\nbaseUrl=http://127.0.0.1:" +
                  QByteArray::number(silentProvider.serverPort()) + "\n");
        ini.close();
        QImage shot(8, 8, QImage::Format_RGB32);
        shot.fill(Qt::white);
        QVERIFY(shot.save(home.filePath("shot.png")));

        QProcess mcp;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("HOME", home.path());
        env.insert("XDG_CONFIG_HOME", home.filePath("config"));
        env.insert("XDG_DATA_HOME", home.filePath("data"));
        mcp.setProcessEnvironment(env);
        mcp.start(mcpExecutable(), {});
        QVERIFY2(mcp.waitForStarted(), qPrintable(mcp.errorString()));
        mcp.write(request(1, "tools/call",
                          {{"name", "ocr"},
                           {"arguments", QJsonObject{{"path", home.filePath("shot.png")}}}}) +
                  '\n');
        QVERIFY(mcp.waitForBytesWritten());
        QVERIFY(silentProvider.waitForNewConnection(30000));
        mcp.closeWriteChannel();
        QVERIFY(mcp.waitForFinished(30000));
        const QList<QJsonObject> replies = parseReplies(mcp.readAllStandardOutput());
        QCOMPARE(replyIds(replies), QList<int>{1});
        const QString text = replies.first()["result"]["content"][0]["text"].toString();
        QVERIFY2(text.startsWith("[error]"), qPrintable(text));
    }
};

ZELMOR_TEST_MAIN(TestMcpServer, QGuiApplication)
#include "tst_mcpserver.moc"
