// The chat's tool loop against the fake AI server: the model asks for one desktop tool call,
// which runs, and then answers; prints "tool NAME RESULT" and "finished ANSWER".
//   zelmor-wl-chat TOOL ARGUMENTS_JSON

#include "FakeAiServer.h"
#include "core/DisplaySession.h"
#include "service/ai/AiApiService.h"

#include <QGuiApplication>
#include <QStandardPaths>

#include <iostream>

using namespace zelmor;

int main(int argc, char** argv)
{
    QStandardPaths::setTestModeEnabled(true);
    QGuiApplication app(argc, argv);
    if (argc < 3) return 2;
    core::tellDisplayServer();
    test::FakeAiServer server;
    service::ai::AiProviderService& providers = service::ai::AiProviderService::instance();
    for (const service::ai::AiProvider& p : providers.list())
        providers.remove(p.id);
    providers.insert({0, "fake", "openai", server.baseUrl(), "sk-test", "m", true, 0});
    const QJsonValue arguments = QJsonDocument::fromJson(argv[2]).object();
    server.enqueue(200, test::openAiToolReply({{QString::fromLocal8Bit(argv[1]), arguments}}));
    server.enqueue(200, test::openAiReply(QStringLiteral("done")));

    service::ai::AiApiService chat;
    QObject::connect(&chat, &service::ai::AiApiService::chatToolExecuted,
                     [](const QString& name, const QVariantMap&, const QVariantMap& result) {
                         std::cout << "tool " << name.toStdString() << ' '
                                   << QJsonDocument(QJsonObject::fromVariantMap(result))
                                          .toJson(QJsonDocument::Compact)
                                          .toStdString()
                                   << std::endl;
                     });
    QObject::connect(&chat, &service::ai::AiApiService::chatFinished, [](const QString& text) {
        std::cout << "finished " << text.toStdString() << std::endl;
        QCoreApplication::exit(0);
    });
    QObject::connect(&chat, &service::ai::AiApiService::chatFailed, [](const QString& reason) {
        std::cout << "failed " << reason.toStdString() << std::endl;
        QCoreApplication::exit(1);
    });
    service::ai::ChatRequest request;
    request.text = QStringLiteral("go");
    request.enableTools = true;
    chat.chat(request);
    return app.exec();
}
