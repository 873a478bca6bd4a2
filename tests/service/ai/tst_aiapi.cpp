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
using zelmor::test::openAiReply;

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

// The base64 PNG a request body carries, if any.
QRegularExpressionMatch pngIn(const QString& body)
{
    return QRegularExpression("[A-Za-z0-9+/]{40,}=*").match(body);
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
    return QJsonDocument(QJsonObject{{"choices", QJsonArray{QJsonObject{{"message", message}}}}})
        .toJson();
}

QString compact(const QVariantMap& result)
{
    return QJsonDocument(QJsonObject::fromVariantMap(result)).toJson(QJsonDocument::Compact);
}

} // namespace

class TestAiApi : public QObject
{
    Q_OBJECT

    FakeAiServer m_server;

    // Makes the one stored provider, the default, point at the fake server.
    void useProvider(const QString& protocol, const QString& key = QStringLiteral("sk-test"))
    {
        AiProviderService& providers = AiProviderService::instance();
        for (const AiProvider& p : providers.list())
            providers.remove(p.id);
        AiProvider p;
        p.name = "fake";
        p.protocol = protocol;
        p.baseUrl = m_server.baseUrl();
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
    void init() { m_server.clear(); }

    void endpoint_data()
    {
        QTest::addColumn<QStringList>("protocolBaseAndUrl");
        QTest::newRow("bare host with /v1/, no scheme") << QStringList{
            "openai-compat", "api.example.com/v1/", "https://api.example.com/v1/chat/completions"};
        QTest::newRow("openai, host only")
            << QStringList{"openai", "https://o.example", "https://o.example/v1/chat/completions"};
        QTest::newRow("openai, full endpoint")
            << QStringList{"openai", "https://r.example/v1/chat/completions/",
                           "https://r.example/v1/chat/completions"};
        QTest::newRow("ollama, ends in /api/chat")
            << QStringList{"ollama", "http://l:11434/api/chat", "http://l:11434/api/chat"};
        QTest::newRow("protocol compared by case")
            << QStringList{"OpenAI", "https://h", "https://h/api/chat"};
        QTest::newRow("blanks and several slashes")
            << QStringList{"openai", "  https://h//  ", "https://h/v1/chat/completions"};
        QTest::newRow("blank base") << QStringList{"openai", "   ", ""};
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
        QTest::addColumn<QString>("protocol");
        QTest::addColumn<bool>("withImage");
        QTest::addColumn<QString>("system");
        QTest::addColumn<bool>("tools");
        QTest::addColumn<QByteArray>("path");
        // content-type, authorization, x-api-key, anthropic-version; "-" when absent
        QTest::addColumn<QStringList>("headers");
        QTest::addColumn<QString>("body");     // "<png>" stands for the image's base64
        QTest::addColumn<QByteArray>("reply"); // its answer is "ok"

        const QStringList bearer{"application/json", "Bearer sk-test", "-", "-"};
        QTest::newRow("openai-compat, text only")
            << "openai-compat" << false << "" << false << QByteArray("/v1/chat/completions")
            << bearer
            << R"({"model":"m","max_tokens":1024,"messages":[{"role":"user","content":"hello"}]})"
            << QByteArray(R"({"choices":[{"message":{"content":"ok"}}]})");
        QTest::newRow("openai, image and system")
            << "openai" << true << "sys" << false << QByteArray("/v1/chat/completions") << bearer
            << R"({"model":"m","max_tokens":1024,"messages":[{"role":"system","content":"sys"},)"
               R"({"role":"user","content":[{"type":"image_url","image_url":)"
               R"({"url":"data:image/png;base64,<png>"}},{"type":"text","text":"hello"}]}]})"
            << QByteArray(R"({"choices":[{"message":{"content":[{"type":"text","text":"o"},)"
                          R"({"type":"image_url"},{"type":"text","text":"k"}]}}]})");
        QTest::newRow("anthropic, image, system and tools")
            << "anthropic" << true << "sys" << true << QByteArray("/v1/messages")
            << QStringList{"application/json", "-", "sk-test", "2023-06-01"}
            << QString(R"({"model":"m","max_tokens":1024,"system":"sys\n\n)" + kAgentPrompt +
                       R"(","messages":[{"role":"user","content":[{"type":"image","source":)"
                       R"({"type":"base64","media_type":"image/png","data":"<png>"}},)"
                       R"({"type":"text","text":"hello"}]}]})")
            << QByteArray(R"({"content":[{"type":"text","text":"o"},{"type":"tool_use","id":"t"},)"
                          R"({"type":"text","text":"k"}]})");
        QTest::newRow("ollama, image, system and tools")
            << "ollama" << true << "sys" << true << QByteArray("/api/chat")
            << QStringList{"application/json", "-", "-", "-"}
            << R"({"model":"m","max_tokens":1024,"stream":false,)"
               R"("messages":[{"role":"user","content":"hello","images":["<png>"]}]})"
            << QByteArray(R"({"message":{"role":"assistant","content":"ok"},"done":true})");
        QTest::newRow("gemini, no dialect")
            << "gemini" << true << "sys" << false << QByteArray("/api/chat")
            << QStringList{"application/json", "-", "-", "-"}
            << R"({"model":"m","max_tokens":1024})"
            << QByteArray(R"({"candidates":[{"content":{"parts":[{"text":"ok"},{"text":"h"}]}}]})");
    }
    void wire()
    {
        QFETCH(QString, protocol);
        QFETCH(bool, withImage);
        QFETCH(QString, system);
        QFETCH(bool, tools);
        QFETCH(QByteArray, path);
        QFETCH(QStringList, headers);
        QFETCH(QString, body);
        QFETCH(QByteArray, reply);

        useProvider(protocol);
        m_server.enqueue(200, reply);
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
        const QRegularExpressionMatch png = pngIn(text);
        QCOMPARE(png.hasMatch(), body.contains("<png>"));
        if (png.hasMatch()) {
            QCOMPARE(decodePng(png.captured()).convertToFormat(QImage::Format_ARGB32),
                     sampleImage());
            text.replace(png.captured(), "<png>");
        }
        QCOMPARE(QJsonDocument::fromJson(text.toUtf8()).object(),
                 QJsonDocument::fromJson(body.toUtf8()).object());
    }

    // Replies in no dialect's shape, or in one that holds no answer.
    void reader_data()
    {
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<QByteArray>("contentType");
        QTest::addColumn<QString>("expected");
        const QByteArray json = "application/json";
        QTest::newRow("choices, null content falls through")
            << QByteArray(R"({"choices":[{"message":{"content":null}}],"content":"x"})") << json
            << "x";
        QTest::newRow("choices, completion text")
            << QByteArray(R"({"choices":[{"text":"t"}]})") << json << "t";
        QTest::newRow("content without text falls through")
            << QByteArray(R"({"content":[{"type":"tool_use"}],"message":{"content":"m"}})") << json
            << "m";
        QTest::newRow("no known shape")
            << QByteArray(R"({"result":"r"})") << json << R"({"result":"r"})";
        QTest::newRow("plain text") << QByteArray("Grüße") << QByteArray("text/plain") << "Grüße";
    }
    void reader()
    {
        QFETCH(QByteArray, reply);
        QFETCH(QByteArray, contentType);
        QFETCH(QString, expected);
        useProvider("ollama");
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
        const QByteArray json = "application/json";
        QTest::newRow("openai error message")
            << 401 << QByteArray(R"({"error":{"message":"Bad key.","type":"invalid_request"}})")
            << json << "Bad key.";
        QTest::newRow("anthropic error message")
            << 529 << QByteArray(R"({"type":"error","error":{"message":"Overloaded"}})") << json
            << "Overloaded";
        QTest::newRow("html page") << 401 << QByteArray("<html><h1>401 Go away</h1></html>")
                                   << QByteArray("text/html") << "~Host requires authentication";
        QTest::newRow("error as a string") << 404 << QByteArray(R"({"error":"model not found"})")
                                           << json << "~server replied: Not Found";
    }
    void failure()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, reply);
        QFETCH(QByteArray, contentType);
        QFETCH(QString, reason);
        useProvider("openai");
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
        const QByteArray key = "sk-live-0123456789abcdef";
        useProvider("openai", key);
        m_server.enqueue(401,
                         R"({"error":{"message":"Incorrect API key provided: )" + key + R"("}})");
        QVERIFY(chat().text.contains(key));
        QCOMPARE(m_server.requests()[0].headers.value("authorization"), "Bearer " + key);
        const QByteArray log = zelmor::test::readFile(zelmor::core::logFilePath());
        QVERIFY(log.contains("[ai] openai request to 127.0.0.1 failed"));
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
        useProvider("openai");
        AiProviderService& providers = AiProviderService::instance();
        AiProvider stored = providers.active();
        stored.baseUrl = "   ";
        QVERIFY(anyProvider ? providers.update(stored) : providers.remove(stored.id));
        AiApiService service;
        QSignalSpy failed(&service, &AiApiService::chatFailed);
        service.chat({});
        QCOMPARE(failed.count(), 1);
        QVERIFY(failed[0][0].toString().startsWith("AI Base URL is not configured."));
        settle();
        QVERIFY(m_server.requests().isEmpty());
    }

    void cancelEndsInFailure()
    {
        useProvider("anthropic");
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
        QTest::addColumn<QString>("error"); // a part of it; empty: success
        QTest::newRow("any success counts")
            << "openai" << 200 << QByteArray("<html>ok</html>") << "";
        QTest::newRow("failure in the network layer's words")
            << "anthropic" << 401 << QByteArray(R"({"error":{"message":"bad key"}})")
            << "Host requires authentication";
    }
    void testConnection()
    {
        QFETCH(QString, protocol);
        QFETCH(int, status);
        QFETCH(QByteArray, reply);
        QFETCH(QString, error);
        useProvider("ollama"); // the record under test is not the stored one
        AiProvider p;
        p.protocol = protocol;
        p.baseUrl = m_server.baseUrl() + "/tested";
        p.apiKey = "k";
        p.model = "tiny";
        m_server.enqueue(status, reply);

        AiApiService service;
        QList<QPair<bool, QString>> answers;
        service.testConnection(p, [&](bool ok, const QString& why) { answers.append({ok, why}); });
        QTRY_COMPARE(answers.size(), 1);
        QCOMPARE(answers[0].first, error.isEmpty());
        QVERIFY2(answers[0].second.contains(error), qPrintable(answers[0].second));
        QVERIFY(!answers[0].second.contains("bad key"));
        QCOMPARE(m_server.requests().size(), 1);
        QVERIFY(m_server.requests()[0].path.startsWith("/tested"));
        QCOMPARE(m_server.requests()[0].json(),
                 QJsonDocument::fromJson(R"({"model":"tiny","max_tokens":1,)"
                                         R"("messages":[{"role":"user","content":"hi"}]})")
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
        useProvider("openai-compat");
        m_server.enqueue(200, openAiReply("done"));
        QVERIFY(chat(toolRequest()).finished);
        QJsonArray expected;
        for (const auto& tool : zelmor::service::mcp::mcpTools()) {
            QJsonObject function{{"name", tool.name}, {"description", tool.description}};
            if (tool.schema) function.insert("parameters", tool.schema());
            expected.append(QJsonObject{{"type", "function"}, {"function", function}});
        }
        QCOMPARE(m_server.requests()[0].json()["tools"].toArray(), expected);
    }

    void twoCallsInOneAnswer()
    {
        useProvider("openai");
        const QJsonObject turn =
            toolTurn({call("c1", "ping", R"({"n":1})"), call("c2", "no_such_tool", "")});
        m_server.enqueue(200, answer(turn));
        m_server.enqueue(200, openAiReply("all done"));
        const Outcome outcome = chat(toolRequest());
        QCOMPARE(outcome.text, "all done");
        QCOMPARE(m_server.requests().size(), 2);

        QCOMPARE(outcome.executed.count(), 2);
        const QVariantMap unknown{{"isError", true}, {"text", "unknown tool: no_such_tool"}};
        const QJsonObject first = m_server.requests()[0].json();
        const QJsonObject second = m_server.requests()[1].json();
        QJsonArray expected = first["messages"].toArray();
        expected.append(turn);
        const QString pong = compact(zelmor::service::mcp::callMcpTool("ping", {}));
        expected.append(QJsonObject{{"role", "tool"}, {"tool_call_id", "c1"}, {"content", pong}});
        expected.append(
            QJsonObject{{"role", "tool"}, {"tool_call_id", "c2"}, {"content", compact(unknown)}});
        QCOMPARE(second["messages"].toArray(), expected);
        QJsonObject rest = second;
        rest.insert("messages", first["messages"]);
        QCOMPARE(rest, first); // tools, model and max_tokens travel on unchanged
    }

    void arguments_data()
    {
        QTest::addColumn<QJsonValue>("arguments");
        QTest::addColumn<QVariantMap>("expected");
        QTest::newRow("bad json") << QJsonValue("{\"n\":") << QVariantMap();
        QTest::newRow("json array") << QJsonValue("[1]") << QVariantMap();
        QTest::newRow("object itself")
            << QJsonValue(QJsonObject{{"n", 2}}) << QVariantMap{{"n", 2}};
    }
    void arguments()
    {
        QFETCH(QJsonValue, arguments);
        QFETCH(QVariantMap, expected);
        useProvider("openai");
        m_server.enqueue(200, answer(toolTurn({call("c", "ping", arguments)})));
        m_server.enqueue(200, openAiReply("ok"));
        const Outcome outcome = chat(toolRequest());
        QCOMPARE(outcome.executed.count(), 1);
        QCOMPARE(outcome.executed[0][1].toMap(), expected);
    }

    void depthLimit()
    {
        useProvider("openai");
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
        QTest::addColumn<QJsonValue>("calls");
        const QJsonArray ping{call("c", "ping", "{}")};
        QTest::newRow("empty tool_calls") << "openai" << QJsonValue(QJsonArray());
        QTest::newRow("anthropic") << "anthropic" << QJsonValue(ping);
        QTest::newRow("ollama") << "ollama" << QJsonValue(ping);
    }
    void noLoop()
    {
        QFETCH(QString, protocol);
        QFETCH(QJsonValue, calls);
        useProvider(protocol);
        m_server.enqueue(200,
                         answer({{"role", "assistant"}, {"content", "t"}, {"tool_calls", calls}}));
        m_server.enqueue(200, openAiReply("second"));
        const Outcome outcome = chat(toolRequest());
        QCOMPARE(outcome.text, "t");
        QCOMPARE(outcome.executed.count(), 0);
        QCOMPARE(m_server.requests().size(), 1);
    }

    void cancelReachesALaterStep()
    {
        useProvider("openai");
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
        QFETCH(QSize, size);
        QFETCH(QSize, sent);
        useProvider("openai");
        m_server.enqueue(200, openAiReply("Hello"));
        AiWorkflow workflow;
        QSignalSpy result(&workflow, &AiWorkflow::resultReady);
        QPixmap pixmap(size);
        pixmap.fill(Qt::white);
        workflow.ocr(pixmap);
        QTRY_COMPARE(result.count(), 1);
        QCOMPARE(result.first(), (QVariantList{"ocr", "Hello"}));
        const QRegularExpressionMatch png = pngIn(m_server.requests().last().body);
        QCOMPARE(decodePng(png.captured()).size(), sent);
    }

    void cancelReachesRecognitionButNotTranslation()
    {
        useProvider("openai");
        m_server.enqueueHold();
        AiWorkflow ocr;
        QSignalSpy ocrFailed(&ocr, &AiWorkflow::failed);
        ocr.ocr(QPixmap(10, 10));
        QTRY_COMPARE(m_server.requests().size(), 1);
        ocr.cancel();
        QTRY_COMPARE(ocrFailed.count(), 1);

        m_server.enqueue(200, openAiReply("你好"));
        AiWorkflow translation;
        QSignalSpy translated(&translation, &AiWorkflow::resultReady);
        translation.translate(QPixmap(10, 10), QStringLiteral("中文"));
        translation.cancel();
        QTRY_COMPARE(translated.count(), 1);
        QCOMPARE(translated.first().at(0).toString(), "translate");
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
        QTest::newRow("negative origin keeps its size")
            << R"([{"box":[-5,-5,20,20]}])" << Rects{{0, 0, 20, 20}} << "";
        QTest::newRow("beyond the right edge: 1 px at W")
            << R"([{"box":[250,10,30,30]}])" << Rects{{200, 10, 1, 30}} << "";
        QTest::newRow("short keys win")
            << R"([{"x":1,"y":2,"w":5,"width":3,"h":6}])" << Rects{{1, 2, 5, 6}} << "";
        QTest::newRow("box of three falls back to keys")
            << R"([{"box":[1,2,3],"x":4,"y":5,"w":6,"h":7}])" << Rects{{4, 5, 6, 7}} << "";
        QTest::newRow("far beyond int: held at the edges")
            << R"([{"box":[1e12,-1e300,5,1e20]}])" << Rects{{200, 0, 1, 1 << 30}} << "";
        QTest::newRow("bracket order") << "] then [" << Rects{} << "No JSON array in AI response";
        QTest::newRow("bad json") << "[{\"box\": [1,2,}]" << Rects{} << "Bad JSON: ";
    }
    void annotationBoxes()
    {
        QFETCH(QString, answer);
        QFETCH(QList<QRect>, rects);
        QFETCH(QString, error);
        const AnnotationParse parse = parseAnnotationBoxes(answer, QSize(200, 100));
        QVERIFY2(error.isEmpty() ? parse.error.isEmpty() : parse.error.startsWith(error),
                 qPrintable(parse.error));
        QList<QRect> got;
        for (const AnnotationBox& b : parse.boxes)
            got << b.rect;
        QCOMPARE(got, rects);
    }
};

ZELMOR_TEST_MAIN(TestAiApi, QApplication)
#include "tst_aiapi.moc"
