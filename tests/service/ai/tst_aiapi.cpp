#include "FakeAiServer.h"
#include "TestMain.h"
#include "TestSupport.h"

#include "core/ConfigManager.h"
#include "core/Log.h"
#include "service/ai/AiApiService.h"
#include "service/ai/AiDialect.h"
#include "service/ai/AiProviderService.h"
#include "service/ai/AiWorkflow.h"
#include "service/ai/AnnotationBox.h"
#include "service/ai/ChatSessions.h"
#include "service/mcp/McpTool.h"

#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QPixmap>
#include <QRegularExpression>
#include <QSettings>
#include <QSignalSpy>
#include <QSqlDatabase>
#include <QTemporaryDir>

#include <memory>

using namespace zelmor::service::ai;
using zelmor::test::FakeAiServer;
using zelmor::test::openAiReply;
using zelmor::test::openAiToolReply;

namespace {

const QString kAgentPrompt = QStringLiteral(
    "You are an autonomous Windows Computer Use Agent. Prefer using UIAutomation tools "
    "(click_ui_element, set_ui_element_text, find_ui_elements) or direct hotkeys for high "
    "efficiency.");

QImage sampleImage()
{
    QImage image(3, 2, QImage::Format_ARGB32);
    image.fill(Qt::red);
    image.setPixel(1, 1, qRgb(0, 128, 255));
    return image;
}

// The base64 of the PNG a request body carries, if any.
QString pngIn(const QString& body)
{
    return QRegularExpression("[A-Za-z0-9+/]{40,}=*").match(body).captured();
}

QImage decodePng(const QString& base64)
{
    return QImage::fromData(QByteArray::fromBase64(base64.toLatin1()), "PNG");
}

// Delivers whatever is queued, so a signal that should not come would have come by now.
void settle()
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
}

// One dialect's request for "hello" with the system prompt "sys", and a reply answering "ok".
struct Dialect
{
    QString protocol;
    bool image = false;
    bool tools = false;
    QByteArray path;
    QStringList headers; // content-type, authorization, x-api-key, anthropic-version; "-": none
    QString body;        // "<png>" stands for the image's base64
    QByteArray reply;
};

struct Outcome
{
    bool finished = false;
    QString text;                      // the answer, or the failure's reason
    QList<QVariantList> executed = {}; // tool name, arguments and result of each tool call
};

QString compact(const QVariantMap& result)
{
    return QJsonDocument(QJsonObject::fromVariantMap(result)).toJson(QJsonDocument::Compact);
}

QStringList fields(const AiProvider& p)
{
    return {p.name, p.protocol, p.baseUrl, p.apiKey, p.model};
}

// What older versions kept in the settings group "ai"; an empty map clears the group.
void writeLegacySettings(const QVariantMap& values)
{
    QSettings settings(zelmor::core::ConfigManager::instance().fileName(), QSettings::IniFormat);
    settings.remove(QStringLiteral("ai"));
    for (auto it = values.begin(); it != values.end(); ++it)
        settings.setValue(QStringLiteral("ai/") + it.key(), it.value());
    settings.sync();
}

} // namespace

Q_DECLARE_METATYPE(Dialect)

// The AI services: providers, chat sessions, requests and answers, the image workflows.
class TestAiApi : public QObject
{
    Q_OBJECT

    FakeAiServer m_server;
    QTemporaryDir m_dir;
    QString m_connection;
    std::unique_ptr<AiProviderService> m_service;

    qint64 add(const QString& name, qint32 sortOrder = 0, bool isDefault = false)
    {
        return m_service->insert({0, name, "openai", {}, {}, {}, isDefault, sortOrder});
    }

    QStringList defaultNames() const
    {
        QStringList names;
        for (const AiProvider& p : m_service->list())
            if (p.isDefault) names << p.name;
        return names;
    }

    // Makes the one stored provider, the default, point at the fake server.
    void useProvider(const QString& protocol, const QString& key = QStringLiteral("sk-test"))
    {
        AiProviderService& providers = AiProviderService::instance();
        for (const AiProvider& p : providers.list())
            providers.remove(p.id);
        QVERIFY(providers.insert({0, "fake", protocol, m_server.baseUrl(), key, "m", true, 0}) > 0);
    }

    Outcome chat(const ChatRequest& request = {})
    {
        AiApiService service;
        QSignalSpy finished(&service, &AiApiService::chatFinished);
        QSignalSpy failed(&service, &AiApiService::chatFailed);
        QSignalSpy executed(&service, &AiApiService::chatToolExecuted);
        service.chat(request);
        if (!QTest::qWaitFor([&] { return finished.count() + failed.count() > 0; }, 60000))
            return {false, "no outcome"};
        const QSignalSpy& ended = finished.isEmpty() ? failed : finished;
        return {!finished.isEmpty(), ended.at(0).at(0).toString(), executed};
    }

    static ChatRequest toolRequest()
    {
        ChatRequest request;
        request.text = "go";
        request.enableTools = true;
        return request;
    }

private Q_SLOTS:
    // First, so that nothing has opened the process store before: reading the providers does.
    void processStoreImportsSettingsOnFirstUse()
    {
        writeLegacySettings({{"apiKey", "legacy-key"}, {"baseUrl", "http://legacy.example"}});
        const QList<AiProvider> providers = AiProviderService::instance().list();
        QCOMPARE(providers.size(), 1);
        QCOMPARE(fields(providers[0]),
                 QStringList({"Imported", "anthropic", "http://legacy.example", "legacy-key", ""}));
        QVERIFY(providers[0].isDefault);
    }

    void init()
    {
        m_server.clear();
        static int count = 0;
        m_connection = QStringLiteral("providers-%1").arg(++count);
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", m_connection);
        db.setDatabaseName(m_dir.filePath(m_connection + ".db"));
        QVERIFY(db.open());
        m_service = std::make_unique<AiProviderService>();
        QVERIFY(m_service->ensureTable(m_connection));
    }

    void cleanup()
    {
        m_service.reset();
        QSqlDatabase::database(m_connection, false).close();
        QSqlDatabase::removeDatabase(m_connection);
        writeLegacySettings({});
    }

    void removePassesTheDefaultOn_data()
    {
        QTest::addColumn<QList<int>>("sortOrders"); // providers p0, p1, ... in insert order
        QTest::addColumn<int>("defaultIndex");
        QTest::addColumn<int>("removeIndex");
        QTest::addColumn<QStringList>("defaultsAfter");
        QTest::newRow("default removed: lowest sort order, of a tie the lower id")
            << QList<int>{5, 1, 1} << 0 << 0 << QStringList{"p1"};
        QTest::newRow("other removed, default stays")
            << QList<int>{0, 0, 0} << 2 << 0 << QStringList{"p2"};
        QTest::newRow("last one removed") << QList<int>{0} << 0 << 0 << QStringList{};
    }

    void removePassesTheDefaultOn()
    {
        QFETCH(QList<int>, sortOrders);
        QFETCH(int, defaultIndex);
        QFETCH(int, removeIndex);
        QFETCH(QStringList, defaultsAfter);
        QList<qint64> ids;
        for (int i = 0; i < sortOrders.size(); ++i)
            ids << add(QStringLiteral("p%1").arg(i), sortOrders[i], i == defaultIndex);
        QVERIFY(m_service->remove(ids[removeIndex]));
        QCOMPARE(m_service->count(), sortOrders.size() - 1);
        QCOMPARE(defaultNames(), defaultsAfter);
        QCOMPARE(m_service->active().name, defaultsAfter.value(0));
    }

    void onlyOneDefault()
    {
        const qint64 a = add("a", 0, true);
        add("b", 0, true);
        QCOMPARE(defaultNames(), QStringList{"b"});
        AiProvider first = m_service->get(a);
        first.isDefault = true;
        QVERIFY(m_service->update(first));
        QCOMPARE(defaultNames(), QStringList{"a"});
        QVERIFY(m_service->setDefault(add("c")));
        QCOMPARE(defaultNames(), QStringList{"c"});
    }

    // The share form: what is imported; its round trip is the settings page's.
    void importJson_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("nameOverride");
        QTest::addColumn<QStringList>("expected"); // empty: refused
        QTest::newRow("empty object")
            << QString("{}") << "" << QStringList{"Imported", "openai-compat", "", "", ""};
        QTest::newRow("name overridden") << QString(R"({"name":"Team","protocol":"ollama"})")
                                         << "Mine" << QStringList{"Mine", "ollama", "", "", ""};
        QTest::newRow("array: refused") << QString(R"([{"name":"a"}])") << "" << QStringList{};
    }
    void importJson()
    {
        QFETCH(QString, text);
        QFETCH(QString, nameOverride);
        QFETCH(QStringList, expected);
        const qint64 id = m_service->importJson(text, nameOverride);
        QCOMPARE(m_service->count(), expected.isEmpty() ? 0 : 1);
        if (id > 0) QCOMPARE(fields(m_service->get(id)), expected);
        QCOMPARE(m_service->exportJson(id + 100), QString());
    }

    void legacySettingsImport_data()
    {
        QTest::addColumn<QVariantMap>("settings");
        QTest::addColumn<bool>("tableHasRows");
        QTest::addColumn<QStringList>("expected"); // the providers' names and fields, in order
        QTest::newRow("base, protocol and model")
            << QVariantMap{{"provider", "openai-compat"}, {"baseUrl", "http://b"}, {"model", "m"}}
            << false << QStringList{"Imported", "openai-compat", "http://b", "", "m"};
        QTest::newRow("neither key nor base")
            << QVariantMap{{"model", "m"}} << false << QStringList{};
        QTest::newRow("table already has rows")
            << QVariantMap{{"apiKey", "k"}} << true << QStringList{"kept", "openai", "", "", ""};
    }

    void legacySettingsImport()
    {
        QFETCH(QVariantMap, settings);
        QFETCH(bool, tableHasRows);
        QFETCH(QStringList, expected);
        if (tableHasRows) add("kept");
        writeLegacySettings(settings);
        AiProviderService restarted;
        QVERIFY(restarted.ensureTable(m_connection));
        QCOMPARE(fields(restarted.active()), expected.isEmpty() ? fields({}) : expected);
        QCOMPARE(restarted.count(), expected.isEmpty() ? 0 : 1);
        // The settings stay for an older version started again.
        QSettings ini(zelmor::core::ConfigManager::instance().fileName(), QSettings::IniFormat);
        QCOMPARE(ini.value("ai/model"), settings.value("model"));
    }
    // A title of 16 characters is whole; a fence keeps its line breaks.
    void titleAndMarkdown()
    {
        QCOMPARE(chatTitleFor("abcdefghijklmnop", "Image Chat"), "abcdefghijklmnop");
        QCOMPARE(chatTitleFor(QString(), "Image Chat"), "Image Chat");
        QCOMPARE(renderChatMarkdown("**a** *b*"), "<b>a</b> <i>b</i>");
        QVERIFY(renderChatMarkdown("```\nx\n```").endsWith("\"><br>x<br></pre>"));
    }

    // Drafts never reach the disk; what does comes back whole, its picture too, from a file
    // that only its owner reads.
    void saveAndLoad()
    {
        const QString path = m_dir.filePath("sessions.json");
        QImage picture(4, 3, QImage::Format_RGB32);
        picture.fill(Qt::red);
        const QDateTime now = QDateTime::currentDateTime();
        const QList<ChatSession> sessions{
            {"1", "New Chat", now, {}},
            {"2", "Kept", now, {{"user", "hi", QPixmap::fromImage(picture), now}}}};
        QVERIFY(saveChatSessions(path, sessions, "New Chat"));
        QVERIFY(!(QFile::permissions(path) & (QFile::ReadGroup | QFile::ReadOther)));
        QList<ChatSession> loaded;
        QVERIFY(loadChatSessions(path, &loaded));
        QCOMPARE(loaded.size(), 1);
        QCOMPARE(loaded[0].title, "Kept");
        QCOMPARE(loaded[0].updatedAt, now);
        QCOMPARE(loaded[0].messages[0].image.toImage().pixel(1, 1), picture.pixel(1, 1));
    }

    void malformedFileIsKeptAside()
    {
        const QString path = m_dir.filePath("broken.json");
        QVERIFY(zelmor::test::writeFile(path, "{\"not\": \"an array\""));
        QList<ChatSession> loaded{{"x", "y", {}, {}}};
        QString copy;
        QVERIFY(loadChatSessions(path, &loaded, &copy));
        QVERIFY(loaded.isEmpty());
        QCOMPARE(zelmor::test::readFile(copy), "{\"not\": \"an array\"");
    }

    void endpoint_data()
    {
        QTest::addColumn<QStringList>("protocolBaseAndUrl");
        QTest::newRow("bare host with /v1/, no scheme") << QStringList{
            "openai-compat", "api.example.com/v1/", "https://api.example.com/v1/chat/completions"};
        QTest::newRow("openai, full endpoint")
            << QStringList{"openai", "https://r.example/v1/chat/completions/",
                           "https://r.example/v1/chat/completions"};
        QTest::newRow("ollama, ends in /api/chat")
            << QStringList{"ollama", "http://l:11434/api/chat", "http://l:11434/api/chat"};
        QTest::newRow("blanks and several slashes")
            << QStringList{"openai", "  https://h//  ", "https://h/v1/chat/completions"};
    }
    void endpoint()
    {
        QFETCH(QStringList, protocolBaseAndUrl);
        QCOMPARE(endpointUrl(effectiveProtocol(protocolBaseAndUrl[0]), protocolBaseAndUrl[1]),
                 protocolBaseAndUrl[2]);
    }

    // What each dialect sends, and where in its reply the answer is found.
    void wire_data()
    {
        QTest::addColumn<Dialect>("dialect");
        const QStringList bearer{"application/json", "Bearer sk-test", "-", "-"};
        const QStringList plain{"application/json", "-", "-", "-"};
        const QString system = R"({"model":"m","max_tokens":1024,"messages":[)"
                               R"({"role":"system","content":"sys"},{"role":"user","content":)";
        QString body = system + R"("hello"}]})";
        QByteArray reply = R"({"choices":[{"message":{"content":"ok"}}]})";
        QTest::newRow("openai-compat, text only")
            << Dialect{"openai-compat", false, false, "/v1/chat/completions", bearer, body, reply};
        body = system +
               R"([{"type":"image_url","image_url":{"url":"data:image/png;base64,<png>"}},)"
               R"({"type":"text","text":"hello"}]}]})";
        reply = R"({"choices":[{"message":{"content":[{"type":"text","text":"o"},)"
                R"({"type":"image_url"},{"type":"text","text":"k"}]}}]})";
        QTest::newRow("openai, image")
            << Dialect{"openai", true, false, "/v1/chat/completions", bearer, body, reply};
        body = QString(R"({"model":"m","max_tokens":1024,"system":"%1",)"
                       R"("messages":[{"role":"user","content":[{"type":"image","source":)"
                       R"({"type":"base64","media_type":"image/png","data":"<png>"}},)"
                       R"({"type":"text","text":"hello"}]}]})")
                   .arg("sys\\n\\n" + kAgentPrompt);
        reply = R"({"content":[{"type":"text","text":"o"},{"type":"tool_use","id":"t"},)"
                R"({"type":"text","text":"k"}]})";
        const QStringList keyed{"application/json", "-", "sk-test", "2023-06-01"};
        QTest::newRow("anthropic, image and tools")
            << Dialect{"anthropic", true, true, "/v1/messages", keyed, body, reply};
        body = R"({"model":"m","max_tokens":1024,"stream":false,)"
               R"("messages":[{"role":"user","content":"hello","images":["<png>"]}]})";
        reply = R"({"message":{"content":"ok","tool_calls":[{"function":{"name":"ping"}}]}})";
        QTest::newRow("ollama, image and tools")
            << Dialect{"ollama", true, true, "/api/chat", plain, body, reply};
        body = R"({"model":"m","max_tokens":1024})";
        reply = R"({"candidates":[{"content":{"parts":[{"text":"ok"},{"text":"h"}]}}]})";
        QTest::newRow("gemini, no dialect")
            << Dialect{"gemini", true, false, "/api/chat", plain, body, reply};
    }
    void wire()
    {
        QFETCH(Dialect, dialect);
        useProvider(dialect.protocol);
        m_server.enqueue(200, dialect.reply);
        ChatRequest request;
        request.text = "hello";
        request.systemPrompt = "sys";
        request.enableTools = dialect.tools;
        if (dialect.image) request.image = QPixmap::fromImage(sampleImage());
        QCOMPARE(chat(request).text, "ok");
        QCOMPARE(m_server.requests().size(), 1); // only the OpenAI dialect runs tools
        const zelmor::test::HttpRequest& sent = m_server.requests()[0];
        QCOMPARE(sent.method, "POST");
        QCOMPARE(sent.path, dialect.path);
        QStringList headers;
        for (const char* name : {"content-type", "authorization", "x-api-key", "anthropic-version"})
            headers << QString::fromUtf8(sent.headers.value(name, "-"));
        QCOMPARE(headers, dialect.headers);
        QVERIFY(!sent.body.contains('\n'));
        QString text = QString::fromUtf8(sent.body);
        const QString png = pngIn(text);
        QCOMPARE(!png.isEmpty(), dialect.body.contains("<png>"));
        if (!png.isEmpty()) text.replace(png, "<png>");
        QCOMPARE(decodePng(png).convertToFormat(QImage::Format_ARGB32),
                 png.isEmpty() ? QImage() : sampleImage());
        QCOMPARE(QJsonDocument::fromJson(text.toUtf8()).object(),
                 QJsonDocument::fromJson(dialect.body.toUtf8()).object());
    }

    // Replies in no dialect's shape, and failures: an error's own message when it has one, kept
    // out of the log; a body broken off before its end, compressed or not, is no answer.
    void reply_data()
    {
        QTest::addColumn<QByteArray>("response"); // as it goes on the wire
        QTest::addColumn<QString>("text"); // "~" + text: a failure in the network layer's words
        const auto whole = [](int status, const QByteArray& body,
                              const QByteArray& type) -> QByteArray {
            return FakeAiServer::head(status, body.size(), type) + body;
        };
        const QByteArray json = "application/json";
        QTest::newRow("choices, null content falls through")
            << whole(200, R"({"choices":[{"message":{"content":null}}],"content":"x"})", json)
            << "x";
        QTest::newRow("no known shape")
            << whole(200, R"({"result":"r"})", json) << R"({"result":"r"})";
        QTest::newRow("plain text") << whole(200, "Grüße", "text/plain") << "Grüße";
        QTest::newRow("long, read away from the GUI thread")
            << whole(200, openAiReply(QString(300000, 'y')), json) << QString(300000, 'y');
        QTest::newRow("openai error message quoting the key")
            << whole(401, R"({"error":{"message":"Incorrect key: sk-test","type":"x"}})", json)
            << "~Incorrect key: sk-test";
        QTest::newRow("error as a string, as an HTML page would be")
            << whole(404, R"({"error":"model not found"})", json) << "~server replied: Not Found";
        const QByteArray answer = openAiReply(QString(5000, 'x'));
        const QByteArray packed = qCompress(answer).mid(4); // a zlib stream: "deflate"
        const QByteArray ok = "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n";
        QTest::newRow("fewer bytes than announced")
            << QByteArray(FakeAiServer::head(200, answer.size(), json) + answer.left(30))
            << "~Connection closed";
        QTest::newRow("compressed, fewer bytes than announced")
            << QByteArray(ok + "Content-Encoding: deflate\r\nContent-Length: " +
                          QByteArray::number(packed.size()) + "\r\n\r\n" +
                          packed.left(packed.size() / 2))
            << "~Connection closed";
        QTest::newRow("chunked, broken inside a chunk")
            << QByteArray(ok + "Transfer-Encoding: chunked\r\n\r\n400\r\n" + answer.left(30))
            << "~Connection closed";
    }
    void reply()
    {
        QFETCH(QByteArray, response);
        QFETCH(QString, text);
        useProvider("openai");
        m_server.enqueueRaw(response);
        const Outcome outcome = chat();
        QCOMPARE(outcome.finished, !text.startsWith('~'));
        if (outcome.finished)
            QCOMPARE(outcome.text, text);
        else
            QVERIFY2(outcome.text.contains(text.mid(1)), qPrintable(outcome.text));
        QVERIFY(!outcome.text.contains("model not found"));
        // Neither the key nor the provider's words go to the log.
        const QByteArray log = zelmor::test::readFile(zelmor::core::logFilePath());
        QVERIFY(outcome.finished || log.contains("[ai] openai request to 127.0.0.1 failed"));
        QVERIFY(!log.contains("sk-test"));
    }

    // The given record is tested, not the stored one; a failure is in the network layer's words.
    void testConnection()
    {
        useProvider("ollama");
        const AiProvider p{0,   {},     "anthropic", m_server.baseUrl() + "/tested",
                           "k", "tiny", false,       0};
        m_server.enqueue(401, R"({"error":{"message":"bad key"}})");
        AiApiService service;
        QList<QPair<bool, QString>> answers;
        service.testConnection(p, [&](bool ok, const QString& why) { answers.append({ok, why}); });
        QTRY_COMPARE(answers.size(), 1);
        QVERIFY2(!answers[0].first && answers[0].second.contains("Host requires authentication"),
                 qPrintable(answers[0].second));
        QVERIFY(m_server.requests()[0].path.startsWith("/tested"));
        QCOMPARE(m_server.requests()[0].json(),
                 QJsonDocument::fromJson(R"({"model":"tiny","max_tokens":1,)"
                                         R"("messages":[{"role":"user","content":"hi"}]})")
                     .object());
        // A test still waiting when its service goes answers nobody.
        m_server.enqueueHold();
        auto gone = std::make_unique<AiApiService>();
        gone->testConnection(p, [&](bool ok, const QString& why) { answers.append({ok, why}); });
        QTRY_COMPARE(m_server.requests().size(), 2);
        gone.reset();
        settle();
        QCOMPARE(answers.size(), 1);
    }

    void twoCallsInOneAnswer()
    {
        useProvider("openai");
        const QJsonObject turn =
            zelmor::test::openAiToolTurn({{"ping", QJsonObject{{"n", 1}}}, {"no_such_tool", "{"}});
        m_server.enqueue(200, zelmor::test::openAiAnswer(turn));
        m_server.enqueue(200, openAiReply("all done"));
        const Outcome outcome = chat(toolRequest());
        QCOMPARE(outcome.text, "all done");
        QCOMPARE(m_server.requests().size(), 2);

        // Arguments come as an object or as its text; text that is no object reads as none.
        QCOMPARE(outcome.executed.count(), 2);
        QCOMPARE(outcome.executed[0][1].toMap(), (QVariantMap{{"n", 1}}));
        QCOMPARE(outcome.executed[1][1].toMap(), QVariantMap());
        const QVariantMap unknown{{"isError", true}, {"text", "unknown tool: no_such_tool"}};
        const QJsonObject first = m_server.requests()[0].json();
        const QJsonObject second = m_server.requests()[1].json();
        QJsonArray expected = first["messages"].toArray();
        expected.append(turn);
        const QString pong = compact(zelmor::service::mcp::callMcpTool("ping", {}));
        expected.append(
            QJsonObject{{"role", "tool"}, {"tool_call_id", "call_0"}, {"content", pong}});
        expected.append(QJsonObject{
            {"role", "tool"}, {"tool_call_id", "call_1"}, {"content", compact(unknown)}});
        QCOMPARE(second["messages"].toArray(), expected);
        QJsonObject rest = second;
        rest.insert("messages", first["messages"]);
        QCOMPARE(rest, first); // tools, model and max_tokens travel on unchanged
    }

    void depthLimit()
    {
        useProvider("openai");
        const QByteArray again = openAiToolReply({{"ping", "{}"}});
        for (int i = 0; i < 102; ++i)
            m_server.enqueue(200, again);
        const Outcome outcome = chat(toolRequest());
        QVERIFY(!outcome.finished);
        QCOMPARE(outcome.text, "Max tool execution depth (100 steps) exceeded");
        QCOMPARE(outcome.executed.count(), 101);
        QCOMPARE(m_server.requests().size(), 101);
        // system and user, then one assistant turn and one tool result per round
        QCOMPARE(m_server.requests().last().json()["messages"].toArray().size(), 2 + 2 * 100);
    }

    // Cancelled at a later step of the tool loop.
    void cancelEndsInOneFailure()
    {
        useProvider("openai");
        m_server.enqueue(200, openAiToolReply({{"ping", "{}"}}));
        m_server.enqueueHold();
        AiApiService service;
        QSignalSpy finished(&service, &AiApiService::chatFinished);
        QSignalSpy failed(&service, &AiApiService::chatFailed);
        service.cancel(); // nothing in flight
        service.chat(toolRequest());
        QTRY_COMPARE(m_server.requests().size(), 2);
        QVERIFY(failed.isEmpty());
        service.cancel();
        QTRY_COMPARE(failed.count(), 1);
        service.cancel();
        settle();
        QCOMPARE(failed.count(), 1);
        QCOMPARE(finished.count(), 0);
    }

    // Recognition sends a picture larger than 1920 pixels scaled down, one of 1920 as it is.
    void ocrScalesOnlyLargePictures()
    {
        useProvider("openai");
        m_server.enqueue(200, openAiReply("Hello"));
        AiWorkflow workflow;
        QSignalSpy result(&workflow, &AiWorkflow::resultReady);
        workflow.ocr(QPixmap(1921, 100));
        QTRY_COMPARE(result.count(), 1);
        QCOMPARE(result.first(), (QVariantList{"ocr", "Hello"}));
        QCOMPARE(decodePng(pngIn(m_server.requests().last().body)).size(), QSize(1920, 99));
        QCOMPARE(AiWorkflow::ocrImage(QPixmap(1920, 1920)).size(), QSize(1920, 1920));
    }

    void annotationBoxes_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QList<QRect>>("rects");
        QTest::addColumn<QString>("error"); // how it starts
        using Rects = QList<QRect>;
        QTest::newRow("box array")
            << R"([{"box":[10,20,30,40],"label":"button"}])" << Rects{{10, 20, 30, 40}} << "";
        QTest::newRow("fenced with prose")
            << "Sure!\n```json\n[{\"box\":[1,2,3,4]}]\n```\nDone." << Rects{{1, 2, 3, 4}} << "";
        QTest::newRow("no area: dropped") << R"([{"box":[10,10,0,5]}])" << Rects{} << "";
        QTest::newRow("beyond the right edge: 1 px at W")
            << R"([{"box":[250,10,30,30]}])" << Rects{{200, 10, 1, 30}} << "";
        QTest::newRow("short keys win")
            << R"([{"x":1,"y":2,"w":5,"width":3,"h":6}])" << Rects{{1, 2, 5, 6}} << "";
        QTest::newRow("box of three falls back to keys")
            << R"([{"box":[1,2,3],"x":4,"y":5,"w":6,"h":7}])" << Rects{{4, 5, 6, 7}} << "";
        QTest::newRow("far beyond int: held at the edges")
            << R"([{"box":[1e12,-1e300,5,1e20]}])" << Rects{{200, 0, 1, 1 << 30}} << "";
        QTest::newRow("bad json") << "[{\"box\": [1,2,}]" << Rects{} << "Bad JSON: ";
    }
    void annotationBoxes()
    {
        QFETCH(QString, answer);
        QFETCH(QString, error);
        const AnnotationParse parse = parseAnnotationBoxes(answer, QSize(200, 100));
        QVERIFY2(error.isEmpty() ? parse.error.isEmpty() : parse.error.startsWith(error),
                 qPrintable(parse.error));
        QList<QRect> got;
        for (const AnnotationBox& b : parse.boxes)
            got << b.rect;
        QTEST(got, "rects");
    }
};

ZELMOR_TEST_MAIN(TestAiApi, QApplication)
#include "tst_aiapi.moc"
