#include "FakeAiServer.h"
#include "TestMain.h"

#include "service/ai/AiApiService.h"
#include "service/ai/AiProviderService.h"
#include "service/mcp/McpTool.h"

#include <QGuiApplication>
#include <QJsonArray>
#include <QSignalSpy>

using namespace zelmor::service::ai;
using zelmor::test::FakeAiServer;

namespace {

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

} // namespace

class TestAiToolLoop : public QObject
{
    Q_OBJECT

    FakeAiServer m_server;

    void useProvider(const QString& protocol)
    {
        AiProviderService& providers = AiProviderService::instance();
        for (const AiProvider& p : providers.list())
            providers.remove(p.id);
        AiProvider p;
        p.name = "fake";
        p.protocol = protocol;
        p.baseUrl = m_server.baseUrl();
        p.model = "m";
        p.isDefault = true;
        QVERIFY(providers.insert(p) > 0);
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

    void toolListFollowsTheRegistry()
    {
        useProvider("openai-compat");
        m_server.enqueue(200, textAnswer("done"));
        AiApiService service;
        QSignalSpy finished(&service, &AiApiService::chatFinished);
        service.chat(toolRequest());
        QTRY_COMPARE(finished.count(), 1);

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
        useProvider("openai");
        const QJsonObject turn =
            toolTurn({call("c1", "ping", R"({"n":1})"), call("c2", "no_such_tool", "")});
        m_server.enqueue(200, answer(turn));
        m_server.enqueue(200, textAnswer("all done"));
        AiApiService service;
        QSignalSpy finished(&service, &AiApiService::chatFinished);
        QSignalSpy executed(&service, &AiApiService::chatToolExecuted);
        service.chat(toolRequest());
        QTRY_COMPARE(finished.count(), 1);
        QCOMPARE(finished[0][0].toString(), "all done");
        QCOMPARE(m_server.requests().size(), 2);

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
        useProvider("openai");
        m_server.enqueue(200, answer(toolTurn({call("c", "ping", arguments)})));
        m_server.enqueue(200, textAnswer("ok"));
        AiApiService service;
        QSignalSpy finished(&service, &AiApiService::chatFinished);
        QSignalSpy executed(&service, &AiApiService::chatToolExecuted);
        service.chat(toolRequest());
        QTRY_COMPARE(finished.count(), 1);
        QCOMPARE(executed.count(), 1);
        QCOMPARE(executed[0][1].toMap(), expected);
    }

    void depthLimit()
    {
        useProvider("openai");
        const QByteArray again = answer(toolTurn({call("c", "ping", "{}")}));
        for (int i = 0; i < 102; ++i)
            m_server.enqueue(200, again);
        AiApiService service;
        QSignalSpy finished(&service, &AiApiService::chatFinished);
        QSignalSpy failed(&service, &AiApiService::chatFailed);
        QSignalSpy executed(&service, &AiApiService::chatToolExecuted);
        service.chat(toolRequest());
        QVERIFY(QTest::qWaitFor([&] { return !failed.isEmpty() || !finished.isEmpty(); }, 60000));

        QCOMPARE(failed.count(), 1);
        QCOMPARE(failed[0][0].toString(), "Max tool execution depth (100 steps) exceeded");
        QCOMPARE(finished.count(), 0);
        QCOMPARE(executed.count(), 101);
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
        useProvider(protocol);
        m_server.enqueue(200, reply);
        m_server.enqueue(200, textAnswer("second"));
        AiApiService service;
        QSignalSpy finished(&service, &AiApiService::chatFinished);
        QSignalSpy executed(&service, &AiApiService::chatToolExecuted);
        service.chat(toolRequest());
        QTRY_COMPARE(finished.count(), 1);
        QCOMPARE(finished[0][0].toString(), text);
        QCOMPARE(executed.count(), 0);
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
};

ZELMOR_TEST_MAIN(TestAiToolLoop, QGuiApplication)
#include "tst_aitoolloop.moc"
