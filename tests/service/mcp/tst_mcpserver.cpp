#include "TestMain.h"
#include "TestSupport.h"

#include "service/ai/AiProviderService.h"
#include "service/history/HistoryService.h"
#include "service/mcp/CaptureTools.h"
#include "service/mcp/ClientConfig.h"
#include "service/mcp/McpServer.h"
#include "service/mcp/McpTool.h"
#include "service/mcp/ModelImage.h"
#include "service/mcp/StdinReader.h"

#include <QBuffer>
#include <QDateTime>
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QImageReader>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPainter>
#include <QProcess>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTemporaryDir>

#include <memory>

#include <unistd.h>

using namespace zelmor::service::mcp;
using namespace zelmor::test;
using namespace Qt::StringLiterals;
using Shape = zelmor::service::capture::AnnotationShape;

namespace {

QByteArray request(const QJsonValue& id, const QString& method, const QJsonObject& params = {})
{
    QJsonObject message{{"jsonrpc", "2.0"}, {"id", id}, {"method", method}};
    if (!params.isEmpty()) message.insert("params", params);
    return QJsonDocument(message).toJson(QJsonDocument::Compact);
}

QList<QJsonObject> parseReplies(const QByteArray& stream)
{
    QList<QJsonObject> replies;
    for (const QByteArray& line : stream.split('\n'))
        if (!line.isEmpty()) replies << QJsonDocument::fromJson(line).object();
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

QJsonObject modern(const QString& revision = "2026-07-28")
{
    return {{"_meta", QJsonObject{{"io.modelcontextprotocol/protocolVersion", revision},
                                  {"io.modelcontextprotocol/clientCapabilities", QJsonObject()}}}};
}

QList<int> replyIds(const QList<QJsonObject>& replies)
{
    QList<int> ids; // -2 for a line that is no JSON-RPC 2.0 object: it would break a client
    for (const QJsonObject& r : replies)
        ids << (r.value("jsonrpc") == QLatin1String("2.0") ? r.value("id").toInt(-1) : -2);
    return ids;
}

// Standard input of this process replaced by a pipe the test writes, for the reader.
struct PipedStdin
{
    int fds[2] = {-1, -1};
    int saved = dup(STDIN_FILENO);
    PipedStdin()
    {
        if (pipe(fds) == 0) dup2(fds[0], STDIN_FILENO);
    }
    ~PipedStdin()
    {
        dup2(saved, STDIN_FILENO);
        for (int fd : {fds[0], fds[1], saved})
            close(fd);
    }
};

zelmor::service::history::HistoryService& store()
{
    return zelmor::service::history::HistoryService::instance();
}

QList<qint64> itemIds(const McpToolResult& result)
{
    QList<qint64> ids;
    const QJsonDocument doc = QJsonDocument::fromJson(result.value("text").toString().toUtf8());
    for (const QJsonValue& item : doc.object().value("items").toArray())
        ids << item.toObject().value("id").toInteger();
    return ids;
}

// Rows are ordered by their millisecond; a row that must be older than the next starts a new one.
void nextMillisecond()
{
    const qint64 start = QDateTime::currentMSecsSinceEpoch();
    while (QDateTime::currentMSecsSinceEpoch() == start) {
    }
}

} // namespace

// The tool server: its messages and process, the tools that need no desktop, and the clients'
// configuration files that start it.
class TestMcpServer : public QObject
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
        store(); // the providers live in its database; this one reads text on this machine
        const zelmor::service::ai::AiProvider reader{0, "ocr", "tesseract", "", "", "eng", true};
        QVERIFY(zelmor::service::ai::AiProviderService::instance().insert(reader) > 0);
    }

    // A picture that was given is used, past Qt's default decoding limit too, or the answer says
    // why not; the newest history item stands in only when none was given.
    void givenImage_data()
    {
        QTest::addColumn<QString>("tool");
        QTest::addColumn<QString>("image"); // a file name in m_dir, or base64 text
        QTest::addColumn<int>("limitMiB");  // 0: the program's own
        QTest::addColumn<QString>("error"); // empty: the picture's own result
        for (const char* tool : {"annotate_image", "ocr"}) {
            QTest::addRow("%s, 6000x6000", tool) << tool << "large.png" << 0 << "";
            QTest::addRow("%s, past the limit", tool)
                << tool << "large.png" << 64
                << "%1 is 6000x6000, larger than the 16-megapixel limit";
        }
        QTest::newRow("ocr, no such file") << "ocr"
                                           << "gone.png" << 0 << "file not found: %1";
        QTest::newRow("annotate, not base64") << "annotate_image"
                                              << "%%%" << 0 << "image is not base64";
        QTest::newRow("annotate, not a PNG") << "annotate_image"
                                             << "bm90IGEgUE5H" << 0 << "image is not a PNG";
        QTest::newRow("annotate, none: the newest") << "annotate_image"
                                                    << "" << 0 << "";
    }
    void givenImage()
    {
        QFETCH(QString, tool);
        QFETCH(QString, image);
        QFETCH(int, limitMiB);
        QFETCH(QString, error);
        const QString path = m_dir.filePath(image);
        if (image == "large.png" && !QFile::exists(path)) {
            QImage large(6000, 6000, QImage::Format_RGB32);
            large.fill(Qt::white);
            QPainter painter(&large);
            painter.setFont(QFont("DejaVu Sans", 60));
            painter.drawText(QRect(0, 0, 1000, 200), Qt::AlignCenter, "ZELMOR");
            painter.end();
            QVERIFY(large.save(path));
        }
        const QString newest = m_dir.filePath("newest.png");
        QVERIFY(QImage(4, 3, QImage::Format_RGB32).save(newest));
        QVERIFY(store().insert(QPixmap(newest), newest, {}) > 0);

        const int programLimit = QImageReader::allocationLimit();
        const auto restore = qScopeGuard([=] { QImageReader::setAllocationLimit(programLimit); });
        if (limitMiB) QImageReader::setAllocationLimit(limitMiB);
        const bool annotate = tool == "annotate_image";
        const QVariant given = !annotate             ? path
                               : image.contains('.') ? readFile(path).toBase64()
                                                     : image.toLatin1();
        const McpToolResult result =
            callMcpTool(tool, {{annotate ? "image" : "path", given}, {"annotations", {}}});
        const QString text = result["text"].toString();
        if (!error.isEmpty())
            QCOMPARE(result, mcpToolError(QString(error).replace("%1", annotate ? "image" : path)));
        else if (annotate)
            QCOMPARE(QImage(text).size(), image.isEmpty() ? QSize(4, 3) : QSize(6000, 6000));
        else
            QVERIFY2(text.contains("ZELMOR"), qPrintable(text));
    }

    // Short inner arrays are skipped, extra items ignored.
    void annotationPoints()
    {
        const Shape shape = readMcpAnnotation(
            {{"kind", "line"},
             {"points", QVariantList{QVariantList{1}, QVariantList{2.5, 3, 9}, QVariantList{5, 6}}},
             {"color", "#00ff00"},
             {"penWidth", 7}});
        QCOMPARE(shape.points, (QList<QPointF>{{2.5, 3}, {5, 6}}));
        QCOMPARE(shape.kind, Shape::Line);
        QCOMPARE(shape.color, QColor(Qt::green));
    }

    // Quotes become blanks and the whole query is one phrase matched as a prefix.
    void searchPhrasePrefix()
    {
        const QPixmap pixmap(4, 4);
        const qint64 hit = store().insert(pixmap, "/nowhere/a.png", {}, "foo barbaz");
        store().insert(pixmap, "/nowhere/b.png", {}, "foo qux bar");
        store().insert(pixmap, "/nowhere/c.png", {}, "xfoo bar");
        QVERIFY(hit > 0);
        QCOMPARE(itemIds(callMcpTool("search_history", {{"query", " foo\"bar "}})),
                 QList<qint64>{hit});
    }

    // Only the latest 200 rows can be listed or named by id.
    void rowsBeyondLatest200()
    {
        const QString path = zelmor::test::sandboxRoot().filePath("four-by-three.png");
        QVERIFY(QPixmap(4, 3).save(path));
        const qint64 oldest = store().insert(QPixmap(4, 3), path, {});
        nextMillisecond();
        qint64 newer = 0;
        for (int i = 0; i < 200; ++i)
            newer = store().insert(QPixmap(4, 3), path, {});
        QCOMPARE(itemIds(callMcpTool("list_history", {{"limit", 1000}})).size(), 200);
        QCOMPARE(itemIds(callMcpTool("list_history", {{"limit", 0}})).size(), 1);
        QCOMPARE(callMcpTool("pin_last", {{"id", oldest}}), mcpToolError("no image to pin"));
        const McpToolResult pinned = callMcpTool("pin_last", {{"id", newer}});
        QVERIFY(pinned.value("text").toString().startsWith("Image resolved (4x3) "));
        QCOMPARE(pinned.value("isError"), QVariant(false));
    }

    // Noise in four channels compresses worst: the picture is made smaller until its PNG fits
    // the line a client takes, aspect kept.
    void modelImageOfNoise()
    {
        QImage noise(3840, 2160, QImage::Format_ARGB32);
        QRandomGenerator random(7);
        for (int y = 0; y < noise.height(); ++y)
            random.fillRange(reinterpret_cast<quint32*>(noise.scanLine(y)), noise.width());
        const McpModelImage picture = makeModelImage(noise);
        QCOMPARE(QImage::fromData(picture.png, "PNG").size(), picture.size);
        QVERIFY(picture.png.size() * 4 / 3 < 6 * 1024 * 1024);
        QVERIFY(picture.size.width() < 1568);
        QCOMPARE(qRound(3840 * picture.scale), picture.size.width());
        QVERIFY(qAbs(picture.size.width() * 2160.0 / picture.size.height() - 3840) < 20);
    }
    void framing_data()
    {
        QTest::addColumn<QByteArrayList>("chunks");
        QTest::addColumn<QList<int>>("ids");
        const QByteArray one = request(1, "ping") + '\n';
        const QByteArray two = request(2, "ping") + '\n';
        QByteArrayList bytes;
        for (char c : QByteArray(one + two))
            bytes << QByteArray(1, c);
        QTest::newRow("byte by byte") << bytes << QList<int>{1, 2};
        QTest::newRow("CRLF and blank lines")
            << QByteArrayList{"\n  \r\n" + one.chopped(1) + "\r\n\n"} << QList<int>{1};
        QTest::newRow("unterminated waits") << QByteArrayList{one.chopped(1)} << QList<int>{};
        // Notifications, known or not, and a client's answers are left unanswered.
        for (const QByteArray& message : {R"({"jsonrpc":"2.0","method":"ping"})"_ba,
                                          R"({"jsonrpc":"2.0","id":5,"result":{}})"_ba})
            QTest::newRow(message.constData()) << QByteArrayList{message + '\n'} << QList<int>{};
    }
    void framing()
    {
        QFETCH(QByteArrayList, chunks);
        Session s;
        for (const QByteArray& chunk : chunks)
            s.server.receive(chunk);
        QTEST(replyIds(s.replies()), "ids");
    }

    void errors_data()
    {
        QTest::addColumn<QByteArray>("message");
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("id"); // JSON text of the expected id

        QTest::newRow("not JSON") << R"({"jsonrpc":"2.0",)"_ba << -32700 << "null"_ba;
        QTest::newRow("bad UTF-8")
            << "{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"\xff\"}"_ba << -32700 << "null"_ba;
        QTest::newRow("batch array")
            << QByteArray("[" + request(1, "ping") + "]") << -32600 << "null"_ba;
        QTest::newRow("no jsonrpc") << R"({"id":3,"method":"ping"})"_ba << -32600 << "3"_ba;
        QTest::newRow("no method") << R"({"jsonrpc":"2.0","id":4})"_ba << -32600 << "4"_ba;
        QTest::newRow("unknown method") << request(6, "resources/list") << -32601 << "6"_ba;
        QTest::newRow("params an array")
            << R"({"jsonrpc":"2.0","id":7,"method":"tools/list","params":[1]})"_ba << -32602
            << "7"_ba;
        QTest::newRow("call arguments a string")
            << request(8, "tools/call", {{"name", "ping"}, {"arguments", "x"}}) << -32602 << "8"_ba;
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
        QCOMPARE(replies[0]["error"]["code"].toInt(), code);
        QCOMPARE(QJsonDocument(QJsonArray{replies[0]["id"]}).toJson(QJsonDocument::Compact),
                 "[" + id + "]");
        QVERIFY(!replies[0].contains("result"));
        QVERIFY(!replies[0]["error"].toObject().contains("data"));
        QVERIFY(replies[1]["result"].isObject()); // the server lives on
    }

    // Each row: messages in one session, and a piece of the last reply, or "!" and a piece it
    // must not hold.
    void eras_data()
    {
        QTest::addColumn<QByteArrayList>("messages");
        QTest::addColumn<QByteArray>("piece");
        // Discovery and calls without a handshake are the official client's (sdk_v2_client.mjs).
        QTest::newRow("unknown revision")
            << QByteArrayList{request(1, "tools/list", modern("1900-01-01"))}
            << R"("error":{"code":-32022,"data":{"requested":"1900-01-01","supported":["2026-07-28"]})"_ba;
        QTest::newRow("ping method gone")
            << QByteArrayList{request(1, "ping", modern())} << R"("code":-32601)"_ba;
        QTest::newRow("handshake after stateless")
            << QByteArrayList{request(1, "tools/list", modern()),
                              request(2, "initialize", {{"protocolVersion", "2025-06-18"}})}
            << R"("protocolVersion":"2025-06-18")"_ba;
        QTest::newRow("handshake era unchanged")
            << QByteArrayList{request(1, "tools/list")} << "!resultType"_ba;
        // Half a surrogate pair would be no text once decoded.
        QTest::newRow("lone surrogate echoed")
            << QByteArrayList{request(1, "tools/call", {{"name", QString(QChar(0xd800))}})}
            << "unknown tool: \uFFFD"_ba;
        // A known older version is kept, any other answered with the latest.
        for (const auto& [asked, answered] : {std::pair{"2024-11-05"_ba, "2024-11-05"_ba},
                                              std::pair{"2024-10-07"_ba, "2025-11-25"_ba}})
            QTest::addRow("initialize %s", asked.constData())
                << QByteArrayList{request(1, "initialize", {{"protocolVersion", QString(asked)}})}
                << "\"protocolVersion\":\"" + answered + '"';
    }
    void eras()
    {
        QFETCH(QByteArrayList, messages);
        QFETCH(QByteArray, piece);
        Session s;
        for (const QByteArray& message : messages)
            s.server.receive(message + '\n');
        const QByteArrayList lines = s.output.data().trimmed().split('\n');
        QCOMPARE(lines.size(), messages.size());
        const bool absent = piece.startsWith('!');
        QVERIFY2(lines.last().contains(piece.mid(absent ? 1 : 0)) != absent, lines.last());
    }

    // A client that keeps its pipe open must not keep the reader's thread alive.
    void readerDestroyedWhileBlocked()
    {
        PipedStdin input;
        QVERIFY(input.fds[1] >= 0);
        auto reader = std::make_unique<StdinReader>();
        QSignalSpy chunks(reader.get(), &StdinReader::dataReady);
        reader->start();
        QCOMPARE(write(input.fds[1], "ab", 2), ssize_t(2));
        QTRY_COMPARE_WITH_TIMEOUT(chunks.size(), 1, 30000);
        reader.reset(); // a thread still running here would abort the process
    }

    // The real executable: standard input read in 8192-byte chunks, lines around that size. A
    // client that stops reading: the server ends quietly at the end of input instead of being
    // killed by the broken pipe.
    void process_data()
    {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<QList<int>>("ids");
        QTest::addColumn<bool>("readerGone");
        const auto padded = [](int lineSize) -> QByteArray { // exactly lineSize with its newline
            const QByteArray bare = request(1, "ping", {{"p", ""}});
            return request(1, "ping", {{"p", QString(lineSize - bare.size() - 1, 'p')}}) + '\n';
        };
        for (int size : {8192, 3 * 8192})
            QTest::addRow("%d-byte line", size)
                << QByteArray(padded(size) + request(2, "ping") + '\n') << QList<int>{1, 2}
                << false;
        QTest::newRow("unterminated last line")
            << QByteArray(request(1, "ping") + '\n' + request(2, "ping")) << QList<int>{1, 2}
            << false;
        QByteArray pings;
        for (int i = 0; i < 100; ++i)
            pings += request(i, "ping") + '\n';
        QTest::newRow("output closed") << pings << QList<int>{} << true;
    }
    void process()
    {
        QFETCH(QByteArray, input);
        QFETCH(bool, readerGone);
        QProcess mcp;
        if (readerGone) // its output goes to a reader that is gone at once
            mcp.start("bash",
                      {"-c", "\"$0\" | true; exit \"${PIPESTATUS[0]}\"", mcpExecutablePath()});
        else
            mcp.start(mcpExecutablePath(), {});
        mcp.write(input);
        mcp.closeWriteChannel();
        QVERIFY(mcp.waitForFinished(60000));
        QCOMPARE(mcp.exitStatus() == QProcess::NormalExit ? mcp.exitCode() : -1, 0);
        const QByteArray out = mcp.readAllStandardOutput();
        QVERIFY(out.isEmpty() || out.endsWith('\n'));
        QTEST(replyIds(parseReplies(out)), "ids");
    }

    // A recognition that waits on its provider is cut short. At the end of input the answer
    // says so rather than passing for an empty text; a cancelled one is never answered. The
    // local engine answers, then ends with the process. Standard error stays empty, even in a
    // client's bare environment: clients show it to their user.
    void ocr_data()
    {
        QTest::addColumn<bool>("local");
        QTest::addColumn<QByteArray>("then");
        QTest::addColumn<QList<int>>("ids");
        QTest::newRow("end of input") << false << QByteArray() << QList<int>{1};
        QTest::newRow("cancelled")
            << false
            << QByteArray(
                   R"({"jsonrpc":"2.0","method":"notifications/cancelled","params":{"requestId":1}})"
                   "\n" +
                   request(2, "tools/list") + '\n')
            << QList<int>{2};
        QTest::newRow("local engine") << true << QByteArray() << QList<int>{1};
    }
    void ocr()
    {
        QFETCH(bool, local);
        QFETCH(QByteArray, then);
        QFETCH(QList<int>, ids);
        QTcpServer silentProvider; // takes the request and never answers
        QVERIFY(silentProvider.listen(QHostAddress::LocalHost));
        QTemporaryDir home;
        QVERIFY(QDir().mkpath(home.filePath("config/Zelmor")));
        QVERIFY(zelmor::test::writeFile(
            home.filePath("config/Zelmor/Zelmor.ini"),
            local ? "[ai]\nprovider=tesseract\nbaseUrl=-\nmodel=eng\n"_ba
                  : "[ai]\nprovider=openai\napiKey=k\nmodel=m\nbaseUrl=http://127.0.0.1:" +
                        QByteArray::number(silentProvider.serverPort()) + "\n"));
        QImage shot(8, 8, QImage::Format_RGB32);
        shot.fill(Qt::white);
        QVERIFY(shot.save(home.filePath("shot.png")));

        QProcess mcp;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("HOME", home.path());
        env.insert("XDG_CONFIG_HOME", home.filePath("config"));
        env.insert("XDG_DATA_HOME", home.filePath("data"));
        env.remove("XDG_RUNTIME_DIR");
        mcp.setProcessEnvironment(env);
        mcp.start(mcpExecutablePath(), {});
        mcp.write(request(1, "tools/call",
                          {{"name", "ocr"},
                           {"arguments", QJsonObject{{"path", home.filePath("shot.png")}}}}) +
                  '\n');
        QVERIFY(mcp.waitForBytesWritten());
        QVERIFY(local ? mcp.waitForReadyRead(30000) : silentProvider.waitForNewConnection(30000));
        mcp.write(then);
        mcp.closeWriteChannel();
        QVERIFY(mcp.waitForFinished(30000));
        const QList<QJsonObject> replies = parseReplies(mcp.readAllStandardOutput());
        QCOMPARE(replyIds(replies), ids);
        const QString text = replies.first()["result"]["content"][0]["text"].toString();
        QVERIFY2(text.startsWith("[error]") == (ids.first() == 1 && !local), qPrintable(text));
        QCOMPARE(mcp.readAllStandardError(), QByteArray());
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

ZELMOR_TEST_MAIN(TestMcpServer, QGuiApplication)
#include "tst_mcpserver.moc"
