#include "FakeAiServer.h"
#include "TestMain.h"
#include "TestSupport.h"

#include "core/Log.h"
#include "service/ai/AiApiService.h"
#include "service/ai/AiDialect.h"
#include "service/ai/AiProviderService.h"
#include "service/ai/AiWorkflow.h"
#include "service/ai/AnnotationBox.h"
#include "service/mcp/McpTool.h"

#include <QImage>
#include <QJsonArray>
#include <QPixmap>
#include <QRegularExpression>
#include <QSignalSpy>

using namespace zelmor::service::ai;
using zelmor::test::FakeAiServer;

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

// Delivers whatever is queued, so a signal that should not come would have come by now.
void settle()
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
}

struct Outcome
{
    bool finished = false;
    QString text;                      // the answer, or the failure's reason
    QList<QVariantList> executed = {}; // tool name, arguments and result of each tool call
};

// A tool-calling turn of the OpenAI dialect and the answers around it.
QJsonObject call(const QString& id, const QString& name, const QJsonValue& arguments)
{
    return {{"id", id},
            {"type", "function"},
            {"function", QJsonObject{{"name", name}, {"arguments", arguments}}}};
}

QJsonObject toolTurn(const QJsonArray& calls)
{
    return {{"role", "assistant"}, {"content", QJsonValue::Null}, {"tool_calls", calls}};
}

QByteArray answer(const QJsonObject& message)
{
    const QJsonObject choice{{"index", 0}, {"message", message}};
    return QJsonDocument(QJsonObject{{"choices", QJsonArray{choice}}}).toJson();
}

QString compact(const QVariantMap& result)
{
    return QJsonDocument(QJsonObject::fromVariantMap(result)).toJson(QJsonDocument::Compact);
}

QByteArray textAnswer(const QString& text)
{
    return answer({{"role", "assistant"}, {"content", text}});
}

// The picture the request carried, decoded from its data URL.
QImage sentImage(const QJsonObject& body)
{
    const QJsonArray content = body.value(QStringLiteral("messages"))
                                   .toArray()
                                   .last()
                                   .toObject()
                                   .value(QStringLiteral("content"))
                                   .toArray();
    for (const QJsonValue& part : content) {
        const QString url = part.toObject()
                                .value(QStringLiteral("image_url"))
                                .toObject()
                                .value(QStringLiteral("url"))
                                .toString();
        if (!url.isEmpty())
            return QImage::fromData(
                QByteArray::fromBase64(url.section(QLatin1Char(','), 1).toLatin1()));
    }
    return {};
}

} // namespace

class TestAiApi : public QObject
{
    Q_OBJECT

    FakeAiServer m_server;

    // Makes the one stored provider, the default, point at the fake server.
    void useProvider(const QString& protocol, const QString& baseSuffix,
                     const QString& key = QStringLiteral("sk-test"))
    {
        AiProviderService& providers = AiProviderService::instance();
        for (const AiProvider& p : providers.list())
            providers.remove(p.id);
        AiProvider p;
        p.name = "fake";
        p.protocol = protocol;
        p.baseUrl = m_server.baseUrl() + baseSuffix;
        p.apiKey = key;
        p.model = "m";
        p.isDefault = true;
        QVERIFY(providers.insert(p) > 0);
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
    void initTestCase() { QVERIFY(m_server.isListening()); }
    void init() { m_server.clear(); }

    void endpoint_data()
    {
        QTest::addColumn<QString>("protocol");
        QTest::addColumn<QString>("base");
        QTest::addColumn<QString>("expected");

        QTest::newRow("bare host with /v1/, no scheme")
            << "openai-compat"
            << "api.example.com/v1/"
            << "https://api.example.com/v1/chat/completions";
        QTest::newRow("openai, host only") << "openai"
                                           << "https://api.openai.com"
                                           << "https://api.openai.com/v1/chat/completions";
        QTest::newRow("openai, full endpoint") << "openai"
                                               << "https://r.example/v1/chat/completions/"
                                               << "https://r.example/v1/chat/completions";
        QTest::newRow("openai, other version path")
            << "openai-compat"
            << "https://open.bigmodel.cn/api/paas/v4"
            << "https://open.bigmodel.cn/api/paas/v4/v1/chat/completions";
        QTest::newRow("anthropic, host only") << "anthropic"
                                              << "https://api.anthropic.com"
                                              << "https://api.anthropic.com/v1/messages";
        QTest::newRow("anthropic, ends in /v1/messages") << "anthropic"
                                                         << "https://a.example/v1/messages"
                                                         << "https://a.example/v1/messages";
        QTest::newRow("ollama, ends in /api/chat") << "ollama"
                                                   << "http://localhost:11434/api/chat"
                                                   << "http://localhost:11434/api/chat";
        QTest::newRow("gemini, host only") << "gemini"
                                           << "https://generativelanguage.googleapis.com"
                                           << "https://generativelanguage.googleapis.com/api/chat";
        QTest::newRow("protocol compared by case") << "OpenAI"
                                                   << "https://h"
                                                   << "https://h/api/chat";
        QTest::newRow("blanks and several slashes") << "openai"
                                                    << "  https://h//  "
                                                    << "https://h/v1/chat/completions";
        QTest::newRow("blank base") << "openai"
                                    << "   "
                                    << "";
    }

    void endpoint()
    {
        QFETCH(QString, protocol);
        QFETCH(QString, base);
        QFETCH(QString, expected);
        QCOMPARE(endpointUrl(effectiveProtocol(protocol), base), expected);
    }

    void wire_data()
    {
        QTest::addColumn<QString>("protocol");
        QTest::addColumn<QString>("baseSuffix");
        QTest::addColumn<QString>("key");
        QTest::addColumn<bool>("withImage");
        QTest::addColumn<QString>("system");
        QTest::addColumn<bool>("tools");
        QTest::addColumn<QByteArray>("path");
        // content-type, authorization, x-api-key, anthropic-version; "-" when absent
        QTest::addColumn<QStringList>("headers");
        QTest::addColumn<QString>("body"); // "<png>" stands for the image's base64

        QTest::newRow("openai-compat, text only")
            << "openai-compat"
            << "/v1/"
            << "sk-test" << false << "" << false << QByteArray("/v1/chat/completions")
            << QStringList{"application/json", "Bearer sk-test", "-", "-"}
            << R"({"model":"m","max_tokens":1024,"messages":[{"role":"user","content":"hello"}]})";
        QTest::newRow("openai, image and system")
            << "openai"
            << ""
            << "sk-test" << true << "sys" << false << QByteArray("/v1/chat/completions")
            << QStringList{"application/json", "Bearer sk-test", "-", "-"}
            << R"({"model":"m","max_tokens":1024,"messages":[{"role":"system","content":"sys"},)"
               R"({"role":"user","content":[{"type":"image_url","image_url":)"
               R"({"url":"data:image/png;base64,<png>"}},{"type":"text","text":"hello"}]}]})";
        QTest::newRow("openai, empty key still sends the bearer")
            << "openai"
            << "/v1"
            << "" << false << "" << false << QByteArray("/v1/chat/completions")
            << QStringList{"application/json", "Bearer", "-", "-"}
            << R"({"model":"m","max_tokens":1024,"messages":[{"role":"user","content":"hello"}]})";
        QTest::newRow("anthropic, image, system and tools")
            << "anthropic"
            << "/v1/messages"
            << "sk-test" << true << "sys" << true << QByteArray("/v1/messages")
            << QStringList{"application/json", "-", "sk-test", "2023-06-01"}
            << QString(R"({"model":"m","max_tokens":1024,"system":"sys\n\n)" + kAgentPrompt +
                       R"(","messages":[{"role":"user","content":[{"type":"image","source":)"
                       R"({"type":"base64","media_type":"image/png","data":"<png>"}},)"
                       R"({"type":"text","text":"hello"}]}]})");
        QTest::newRow("anthropic, tools without system")
            << "anthropic"
            << ""
            << "sk-test" << false << "" << true << QByteArray("/v1/messages")
            << QStringList{"application/json", "-", "sk-test", "2023-06-01"}
            << QString(R"({"model":"m","max_tokens":1024,"system":")" + kAgentPrompt +
                       R"(","messages":[{"role":"user","content":"hello"}]})");
        QTest::newRow("ollama, image, system and tools")
            << "ollama"
            << ""
            << "sk-test" << true << "sys" << true << QByteArray("/api/chat")
            << QStringList{"application/json", "-", "-", "-"}
            << R"({"model":"m","max_tokens":1024,"stream":false,)"
               R"("messages":[{"role":"user","content":"hello","images":["<png>"]}]})";
        QTest::newRow("gemini, no dialect")
            << "gemini"
            << ""
            << "sk-test" << true << "sys" << false << QByteArray("/api/chat")
            << QStringList{"application/json", "-", "-", "-"}
            << R"({"model":"m","max_tokens":1024})";
    }

    void wire()
    {
        QFETCH(QString, protocol);
        QFETCH(QString, baseSuffix);
        QFETCH(QString, key);
        QFETCH(bool, withImage);
        QFETCH(QString, system);
        QFETCH(bool, tools);
        QFETCH(QByteArray, path);
        QFETCH(QStringList, headers);
        QFETCH(QString, body);

        useProvider(protocol, baseSuffix, key);
        m_server.enqueue(200, R"({"content":"ok"})");
        ChatRequest request;
        request.text = "hello";
        request.systemPrompt = system;
        request.enableTools = tools;
        if (withImage) request.image = QPixmap::fromImage(sampleImage());
        QCOMPARE(chat(request).text, "ok");

        QCOMPARE(m_server.requests().size(), 1);
        const zelmor::test::HttpRequest& sent = m_server.requests()[0];
        QCOMPARE(sent.method, "POST");
        QCOMPARE(sent.path, path);
        QStringList sentHeaders;
        for (const char* name : {"content-type", "authorization", "x-api-key", "anthropic-version"})
            sentHeaders << QString::fromUtf8(sent.headers.value(name, "-"));
        QCOMPARE(sentHeaders, headers);

        QVERIFY(!sent.body.contains('\n'));
        QString text = QString::fromUtf8(sent.body);
        const QRegularExpressionMatch png = QRegularExpression("[A-Za-z0-9+/]{40,}=*").match(text);
        QCOMPARE(png.hasMatch(), body.contains("<png>"));
        if (png.hasMatch()) {
            const QImage decoded =
                QImage::fromData(QByteArray::fromBase64(png.captured().toLatin1()), "PNG");
            QCOMPARE(decoded.convertToFormat(QImage::Format_ARGB32), sampleImage());
            text.replace(png.captured(), "<png>");
        }
        QCOMPARE(QJsonDocument::fromJson(text.toUtf8()).object(),
                 QJsonDocument::fromJson(body.toUtf8()).object());
    }

    void bodyKeys_data()
    {
        QTest::addColumn<QString>("protocol");
        QTest::addColumn<bool>("enableTools");
        QTest::addColumn<bool>("prepared"); // a prepared conversation replaces the built one
        QTest::addColumn<QStringList>("keys");

        QTest::newRow("openai, tools")
            << "openai" << true << false << QStringList{"max_tokens", "messages", "model", "tools"};
        QTest::newRow("openai, prepared, tools")
            << "openai" << true << true << QStringList{"max_tokens", "messages", "model", "tools"};
        QTest::newRow("openai, prepared, no tools")
            << "openai" << false << true << QStringList{"max_tokens", "messages", "model"};
        QTest::newRow("anthropic, prepared, tools")
            << "anthropic" << true << true << QStringList{"max_tokens", "messages", "model"};
        QTest::newRow("ollama, prepared")
            << "ollama" << false << true << QStringList{"max_tokens", "messages", "model"};
    }

    void bodyKeys()
    {
        QFETCH(QString, protocol);
        QFETCH(bool, enableTools);
        QFETCH(bool, prepared);
        QFETCH(QStringList, keys);

        ChatRequest request;
        request.text = "built";
        request.systemPrompt = "sys";
        request.enableTools = enableTools;
        const QJsonArray conversation{QJsonObject{{"role", "user"}, {"content", "prepared"}},
                                      QJsonObject{{"role", "tool"}, {"content", "{}"}}};
        const QJsonArray tools{QJsonObject{{"type", "function"}}};
        const QJsonObject body =
            requestBody(request, protocol, "m", prepared ? conversation : QJsonArray(), tools);
        QCOMPARE(body.keys(), keys);
        if (prepared) QCOMPARE(body["messages"].toArray(), conversation);
        if (keys.contains("tools")) QCOMPARE(body["tools"].toArray(), tools);
    }

    void reader_data()
    {
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<QByteArray>("contentType");
        QTest::addColumn<QString>("expected");

        const QByteArray json = "application/json";
        QTest::newRow("choices, string content")
            << QByteArray(R"({"choices":[{"message":{"content":"a"}}]})") << json << "a";
        QTest::newRow("choices, text parts")
            << QByteArray(R"({"choices":[{"message":{"content":[{"type":"text","text":"a"},)"
                          R"({"type":"image_url"},{"type":"text","text":"b"}]}}]})")
            << json << "ab";
        QTest::newRow("choices, parts without text end the search")
            << QByteArray(
                   R"({"choices":[{"message":{"content":[{"type":"image_url"}]}}],"content":"x"})")
            << json
            << R"({"choices":[{"message":{"content":[{"type":"image_url"}]}}],"content":"x"})";
        QTest::newRow("choices, null content falls through")
            << QByteArray(R"({"choices":[{"message":{"content":null}}],"content":"x"})") << json
            << "x";
        QTest::newRow("choices, completion text")
            << QByteArray(R"({"choices":[{"text":"t"}]})") << json << "t";
        QTest::newRow("empty choices fall through")
            << QByteArray(R"({"choices":[],"content":"c"})") << json << "c";
        QTest::newRow("anthropic parts around a tool part")
            << QByteArray(R"({"content":[{"type":"text","text":"a"},{"type":"tool_use","id":"t"},)"
                          R"({"type":"text","text":"b"}]})")
            << json << "ab";
        QTest::newRow("content without text falls through")
            << QByteArray(R"({"content":[{"type":"tool_use"}],"message":{"content":"m"}})") << json
            << "m";
        QTest::newRow("ollama message")
            << QByteArray(R"({"message":{"role":"assistant","content":"o"},"done":true})") << json
            << "o";
        QTest::newRow("gemini candidates")
            << QByteArray(R"({"candidates":[{"content":{"parts":[{"text":"g"},{"text":"h"}]}}]})")
            << json << "g";
        QTest::newRow("no known shape")
            << QByteArray(R"({"result":"r"})") << json << R"({"result":"r"})";
        QTest::newRow("plain text") << QByteArray("Grüße") << QByteArray("text/plain") << "Grüße";
        QTest::newRow("empty body") << QByteArray() << json << "";
    }

    void reader()
    {
        QFETCH(QByteArray, reply);
        QFETCH(QByteArray, contentType);
        QFETCH(QString, expected);

        useProvider("ollama", "");
        m_server.enqueue(200, reply, contentType);
        const Outcome outcome = chat();
        QVERIFY(outcome.finished);
        QCOMPARE(outcome.text, expected);
    }

    void failure_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<QByteArray>("contentType");
        QTest::addColumn<QString>("reason"); // "~" + text: the network layer's words holding it

        QTest::newRow("openai error message")
            << 401
            << QByteArray(
                   R"({"error":{"message":"Incorrect API key provided.","type":"invalid_request_error"}})")
            << QByteArray("application/json") << "Incorrect API key provided.";
        QTest::newRow("anthropic error message")
            << 529
            << QByteArray(
                   R"({"type":"error","error":{"type":"overloaded_error","message":"Overloaded"}})")
            << QByteArray("application/json") << "Overloaded";
        QTest::newRow("html page")
            << 401 << QByteArray("<html><h1>401 Authorization Required</h1></html>")
            << QByteArray("text/html") << "~Host requires authentication";
        QTest::newRow("error as a string")
            << 404 << QByteArray(R"({"error":"model not found"})") << QByteArray("application/json")
            << "~server replied: Not Found";
        QTest::newRow("error without message")
            << 400 << QByteArray(R"({"error":{"code":"x"}})") << QByteArray("application/json")
            << "~server replied: Bad Request";
    }

    void failure()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, reply);
        QFETCH(QByteArray, contentType);
        QFETCH(QString, reason);

        useProvider("openai", "");
        m_server.enqueue(status, reply, contentType);
        const Outcome outcome = chat();
        QVERIFY(!outcome.finished);
        if (reason.startsWith('~')) {
            QVERIFY2(outcome.text.contains(reason.mid(1)), qPrintable(outcome.text));
            QVERIFY(!outcome.text.contains("model not found"));
        } else {
            QCOMPARE(outcome.text, reason);
        }
    }

    void keyStaysOutOfTheLog()
    {
        const QString key = "sk-live-0123456789abcdef";
        useProvider("openai", "", key);
        m_server.enqueue(401, R"({"error":{"message":"Incorrect API key provided: )" +
                                  key.toUtf8() + R"("}})");
        QVERIFY(chat().text.contains(key));
        QCOMPARE(m_server.requests()[0].headers.value("authorization"),
                 QByteArray("Bearer " + key.toUtf8()));

        const QByteArray log = zelmor::test::readFile(zelmor::core::logFilePath());
        QVERIFY(log.contains("[ai] openai request to 127.0.0.1 failed"));
        QVERIFY(!log.contains(key.toUtf8()));
        QVERIFY(!log.contains("sk-live"));
    }

    void notConfigured_data()
    {
        QTest::addColumn<bool>("anyProvider");
        QTest::newRow("no provider") << false;
        QTest::newRow("blank base URL") << true;
    }

    void notConfigured()
    {
        QFETCH(bool, anyProvider);
        useProvider("openai", "");
        AiProviderService& providers = AiProviderService::instance();
        AiProvider stored = providers.active();
        stored.baseUrl = "   ";
        QVERIFY(anyProvider ? providers.update(stored) : providers.remove(stored.id));

        AiApiService service;
        QSignalSpy failed(&service, &AiApiService::chatFailed);
        service.chat({});
        QCOMPARE(failed.count(), 1);
        QCOMPARE(failed[0][0].toString(), "AI Base URL is not configured. Please open Zelmor "
                                          "Settings -> AI to set API Base URL & Key.");
        settle();
        QVERIFY(m_server.requests().isEmpty());
    }

    void cancelEndsInFailure()
    {
        useProvider("anthropic", "");
        m_server.enqueueHold();
        AiApiService service;
        QSignalSpy finished(&service, &AiApiService::chatFinished);
        QSignalSpy failed(&service, &AiApiService::chatFailed);
        service.cancel(); // nothing in flight
        service.chat({});
        QTRY_COMPARE(m_server.requests().size(), 1);
        QVERIFY(failed.isEmpty());

        service.cancel();
        QTRY_COMPARE(failed.count(), 1);
        service.cancel();
        settle();
        QCOMPARE(failed.count(), 1);
        QCOMPARE(finished.count(), 0);
    }

    void testConnection_data()
    {
        QTest::addColumn<QString>("protocol");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<QString>("error"); // a part of it

        QTest::newRow("any success counts")
            << "openai" << 200 << QByteArray("<html>fine</html>") << true << "";
        QTest::newRow("failure in the network layer's words")
            << "anthropic" << 401 << QByteArray(R"({"error":{"message":"bad key"}})") << false
            << "Host requires authentication";
    }

    void testConnection()
    {
        QFETCH(QString, protocol);
        QFETCH(int, status);
        QFETCH(QByteArray, reply);
        QFETCH(bool, ok);
        QFETCH(QString, error);

        // The record under test is not the stored one.
        useProvider("ollama", "/elsewhere");
        AiProvider p;
        p.protocol = protocol;
        p.baseUrl = m_server.baseUrl();
        p.apiKey = "k";
        p.model = "tiny";
        m_server.enqueue(status, reply);

        AiApiService service;
        QList<QPair<bool, QString>> answers;
        service.testConnection(p, [&](bool success, const QString& reason) {
            answers.append({success, reason});
        });
        QTRY_COMPARE(answers.size(), 1);
        QCOMPARE(answers[0].first, ok);
        QVERIFY2(ok ? answers[0].second.isEmpty() : answers[0].second.contains(error),
                 qPrintable(answers[0].second));
        QVERIFY(!answers[0].second.contains("bad key"));

        QCOMPARE(m_server.requests().size(), 1);
        QVERIFY(!m_server.requests()[0].path.startsWith("/elsewhere"));
        QCOMPARE(
            m_server.requests()[0].json(),
            QJsonDocument::fromJson(
                R"({"model":"tiny","max_tokens":1,"messages":[{"role":"user","content":"hi"}]})")
                .object());
        settle();
        QCOMPARE(answers.size(), 1);
    }

    void testConnectionEndsWithItsService()
    {
        m_server.enqueueHold();
        AiProvider p;
        p.protocol = "ollama";
        p.baseUrl = m_server.baseUrl();
        int answers = 0;
        auto service = std::make_unique<AiApiService>();
        service->testConnection(p, [&](bool, const QString&) { ++answers; });
        QTRY_COMPARE(m_server.requests().size(), 1);
        service.reset();
        settle();
        QCOMPARE(answers, 0);
    }

    void toolListFollowsTheRegistry()
    {
        useProvider("openai-compat", "");
        m_server.enqueue(200, textAnswer("done"));
        QVERIFY(chat(toolRequest()).finished);
        const QJsonArray tools = m_server.requests()[0].json()["tools"].toArray();
        const auto& registry = zelmor::service::mcp::mcpTools();
        QCOMPARE(tools.size(), registry.size());
        for (qsizetype i = 0; i < registry.size(); ++i) {
            const QJsonObject entry = tools[i].toObject();
            QCOMPARE(entry["type"].toString(), "function");
            const QJsonObject function = entry["function"].toObject();
            QCOMPARE(function["name"].toString(), registry[i].name);
            QCOMPARE(function["description"].toString(), registry[i].description);
            QCOMPARE(function.contains("parameters"), registry[i].schema != nullptr);
            if (registry[i].schema)
                QCOMPARE(function["parameters"].toObject(), registry[i].schema());
        }
    }

    void twoCallsInOneAnswer()
    {
        useProvider("openai", "");
        const QJsonObject turn =
            toolTurn({call("c1", "ping", R"({"n":1})"), call("c2", "no_such_tool", "")});
        m_server.enqueue(200, answer(turn));
        m_server.enqueue(200, textAnswer("all done"));
        const Outcome outcome = chat(toolRequest());
        QCOMPARE(outcome.text, "all done");
        QCOMPARE(m_server.requests().size(), 2);

        const QList<QVariantList>& executed = outcome.executed;
        QCOMPARE(executed.count(), 2);
        QCOMPARE(executed[0][0].toString(), "ping");
        QCOMPARE(executed[0][1].toMap(), (QVariantMap{{"n", 1}}));
        QCOMPARE(executed[0][2].toMap()["pong"], true);
        QCOMPARE(executed[1][0].toString(), "no_such_tool");
        QCOMPARE(executed[1][1].toMap(), QVariantMap());
        QCOMPARE(executed[1][2].toMap(),
                 (QVariantMap{{"isError", true}, {"text", "unknown tool: no_such_tool"}}));

        const QJsonObject first = m_server.requests()[0].json();
        const QJsonObject second = m_server.requests()[1].json();
        QJsonArray expected = first["messages"].toArray();
        expected.append(turn);
        expected.append(
            QJsonObject{{"role", "tool"},
                        {"tool_call_id", "c1"},
                        {"content", compact(zelmor::service::mcp::callMcpTool("ping", {}))}});
        expected.append(
            QJsonObject{{"role", "tool"},
                        {"tool_call_id", "c2"},
                        {"content", R"({"isError":true,"text":"unknown tool: no_such_tool"})"}});
        QCOMPARE(second["messages"].toArray(), expected);
        QJsonObject rest = second;
        rest.insert("messages", first["messages"]);
        QCOMPARE(rest, first); // tools, model and max_tokens travel on unchanged
    }

    void arguments_data()
    {
        QTest::addColumn<QJsonValue>("arguments");
        QTest::addColumn<QVariantMap>("expected");
        QTest::newRow("empty string") << QJsonValue("") << QVariantMap();
        QTest::newRow("bad json") << QJsonValue("{\"n\":") << QVariantMap();
        QTest::newRow("json array") << QJsonValue("[1]") << QVariantMap();
        QTest::newRow("nested") << QJsonValue(R"({"a":{"b":"c"}})")
                                << QVariantMap{{"a", QVariantMap{{"b", "c"}}}};
        QTest::newRow("object itself")
            << QJsonValue(QJsonObject{{"n", 2}}) << QVariantMap{{"n", 2}};
    }

    void arguments()
    {
        QFETCH(QJsonValue, arguments);
        QFETCH(QVariantMap, expected);
        useProvider("openai", "");
        m_server.enqueue(200, answer(toolTurn({call("c", "ping", arguments)})));
        m_server.enqueue(200, textAnswer("ok"));
        const Outcome outcome = chat(toolRequest());
        QCOMPARE(outcome.executed.count(), 1);
        QCOMPARE(outcome.executed[0][1].toMap(), expected);
    }

    void depthLimit()
    {
        useProvider("openai", "");
        const QByteArray again = answer(toolTurn({call("c", "ping", "{}")}));
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

    void noLoop_data()
    {
        QTest::addColumn<QString>("protocol");
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<QString>("text");

        const QByteArray asking = answer({{"role", "assistant"},
                                          {"content", "t"},
                                          {"tool_calls", QJsonArray{call("c", "ping", "{}")}}});
        QTest::newRow("empty tool_calls")
            << "openai"
            << answer({{"role", "assistant"}, {"content", "t"}, {"tool_calls", QJsonArray()}})
            << "t";
        QTest::newRow("null tool_calls")
            << "openai"
            << answer({{"role", "assistant"}, {"content", "t"}, {"tool_calls", QJsonValue::Null}})
            << "t";
        QTest::newRow("anthropic") << "anthropic" << asking << "t";
        QTest::newRow("ollama") << "ollama" << asking << "t";
    }

    void noLoop()
    {
        QFETCH(QString, protocol);
        QFETCH(QByteArray, reply);
        QFETCH(QString, text);
        useProvider(protocol, "");
        m_server.enqueue(200, reply);
        m_server.enqueue(200, textAnswer("second"));
        const Outcome outcome = chat(toolRequest());
        QCOMPARE(outcome.text, text);
        QCOMPARE(outcome.executed.count(), 0);
        QCOMPARE(m_server.requests().size(), 1);
    }

    void cancelReachesALaterStep()
    {
        useProvider("openai", "");
        m_server.enqueue(200, answer(toolTurn({call("c", "ping", "{}")})));
        m_server.enqueueHold();
        AiApiService service;
        QSignalSpy failed(&service, &AiApiService::chatFailed);
        service.chat(toolRequest());
        QTRY_COMPARE(m_server.requests().size(), 2);
        service.cancel();
        QTRY_COMPARE(failed.count(), 1);
    }

    void ocrScalesOnlyLargePictures_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QSize>("sent");
        QTest::newRow("1921x100") << QSize(1921, 100) << QSize(1920, 99);
        QTest::newRow("1920x1920") << QSize(1920, 1920) << QSize(1920, 1920);
    }
    void ocrScalesOnlyLargePictures()
    {
        useProvider("openai", "");
        QFETCH(QSize, size);
        QFETCH(QSize, sent);
        m_server.enqueue(200, zelmor::test::openAiReply(QStringLiteral("Hello")));
        AiWorkflow workflow;
        QSignalSpy result(&workflow, &AiWorkflow::resultReady);
        QPixmap pixmap(size);
        pixmap.fill(Qt::white);
        workflow.ocr(pixmap);
        QTRY_COMPARE(result.count(), 1);
        QCOMPARE(result.first().at(0).toString(), QStringLiteral("ocr"));
        QCOMPARE(result.first().at(1).toString(), QStringLiteral("Hello"));
        const QJsonObject body = m_server.requests().last().json();
        QCOMPARE(sentImage(body).size(), sent);
        QCOMPARE(body.value(QStringLiteral("max_tokens")).toInt(), 1024);
    }

    void annotationParsesBoxesAgainstTheImage()
    {
        useProvider("openai", "");
        m_server.enqueue(200, zelmor::test::openAiReply(QStringLiteral(
                                  "Here:\n[{\"box\":[190,90,50,50],\"label\":\"button\"}]")));
        AiWorkflow workflow;
        QSignalSpy boxes(&workflow, &AiWorkflow::boxesReady);
        QPixmap pixmap(200, 100);
        pixmap.fill(Qt::white);
        workflow.annotate(pixmap);
        QTRY_COMPARE(boxes.count(), 1);
        const auto list = boxes.first().first().value<QList<AnnotationBox>>();
        QCOMPARE(list.size(), 1);
        QCOMPARE(list.first().rect, QRect(190, 90, 10, 10));
        const QJsonObject body = m_server.requests().last().json();
        QCOMPARE(body.value(QStringLiteral("max_tokens")).toInt(), 2048);
        QVERIFY(body.value(QStringLiteral("messages"))
                    .toArray()
                    .first()
                    .toObject()
                    .value(QStringLiteral("content"))
                    .toString()
                    .startsWith(QStringLiteral("You are a UI element detector.")));
    }

    void answersWithoutArraysFail()
    {
        useProvider("openai", "");
        m_server.enqueue(200, zelmor::test::openAiReply(QStringLiteral("no boxes, sorry")));
        AiWorkflow workflow;
        QSignalSpy failed(&workflow, &AiWorkflow::failed);
        workflow.annotate(QPixmap(10, 10));
        QTRY_COMPARE(failed.count(), 1);
        QCOMPARE(failed.first().first().toString(), QStringLiteral("No JSON array in AI response"));
    }

    void cancelReachesRecognitionButNotTranslation()
    {
        useProvider("openai", "");
        const qsizetype before = m_server.requests().size();
        m_server.enqueueHold();
        AiWorkflow ocr;
        QSignalSpy ocrFailed(&ocr, &AiWorkflow::failed);
        ocr.ocr(QPixmap(10, 10));
        QTRY_COMPARE(m_server.requests().size(), before + 1);
        ocr.cancel();
        QTRY_COMPARE(ocrFailed.count(), 1);

        m_server.enqueue(200, zelmor::test::openAiReply(QStringLiteral("你好")));
        AiWorkflow translation;
        QSignalSpy translated(&translation, &AiWorkflow::resultReady);
        translation.translate(QPixmap(10, 10), QStringLiteral("中文"));
        translation.cancel();
        QTRY_COMPARE(translated.count(), 1);
        QCOMPARE(translated.first().at(0).toString(), QStringLiteral("translate"));
    }

    void annotationBoxes_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QList<QRect>>("rects");
        const QSize image(200, 100);
        Q_UNUSED(image)
        QTest::newRow("box array")
            << R"([{"box":[10,20,30,40],"label":"button"}])" << QList<QRect>{QRect(10, 20, 30, 40)};
        QTest::newRow("fenced with prose") << "Sure!\n```json\n[{\"box\":[1,2,3,4]}]\n```\nDone."
                                           << QList<QRect>{QRect(1, 2, 3, 4)};
        QTest::newRow("no area: dropped") << R"([{"box":[10,10,0,5]}])" << QList<QRect>{};
        QTest::newRow("negative origin keeps its size")
            << R"([{"box":[-5,-5,20,20]}])" << QList<QRect>{QRect(0, 0, 20, 20)};
        QTest::newRow("beyond the right edge: 1 px at W")
            << R"([{"box":[250,10,30,30]}])" << QList<QRect>{QRect(200, 10, 1, 30)};
        QTest::newRow("long keys")
            << R"([{"x":1,"y":2,"width":3,"height":4}])" << QList<QRect>{QRect(1, 2, 3, 4)};
        QTest::newRow("short keys win")
            << R"([{"x":1,"y":2,"w":5,"width":3,"h":6}])" << QList<QRect>{QRect(1, 2, 5, 6)};
        QTest::newRow("box of three falls back to keys")
            << R"([{"box":[1,2,3],"x":4,"y":5,"w":6,"h":7}])" << QList<QRect>{QRect(4, 5, 6, 7)};
        QTest::newRow("fractions truncate")
            << R"([{"box":[1.9,2.9,3.9,4.9]}])" << QList<QRect>{QRect(1, 2, 3, 4)};
        QTest::newRow("far beyond int: held at the edges")
            << R"([{"box":[1e12,-1e300,5,1e20]}])" << QList<QRect>{QRect(200, 0, 1, 1 << 30)};
        QTest::newRow("empty array") << "[]" << QList<QRect>{};
    }
    void annotationBoxes()
    {
        QFETCH(QString, answer);
        QFETCH(QList<QRect>, rects);
        const AnnotationParse parse = parseAnnotationBoxes(answer, QSize(200, 100));
        QVERIFY2(parse.error.isEmpty(), qPrintable(parse.error));
        QList<QRect> got;
        for (const AnnotationBox& b : parse.boxes)
            got << b.rect;
        QCOMPARE(got, rects);
    }

    void annotationBoxFailures_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QString>("error");
        QTest::newRow("no bracket") << "nothing here"
                                    << "No JSON array in AI response";
        QTest::newRow("bracket order") << "] then ["
                                       << "No JSON array in AI response";
        QTest::newRow("bad json") << "[{\"box\": [1,2,}]"
                                  << "Bad JSON: ";
    }
    void annotationBoxFailures()
    {
        QFETCH(QString, answer);
        QFETCH(QString, error);
        QVERIFY(parseAnnotationBoxes(answer, QSize(10, 10)).error.startsWith(error));
    }

    void annotationLabelsAreKept()
    {
        const AnnotationParse parse =
            parseAnnotationBoxes(R"([{"box":[0,0,5,5],"label":"menu"}])", QSize(10, 10));
        QCOMPARE(parse.boxes.first().label, QStringLiteral("menu"));
    }
};

ZELMOR_TEST_MAIN(TestAiApi, QApplication)
#include "tst_aiapi.moc"
