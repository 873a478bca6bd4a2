#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace zelmor::service::ai {

// One configured AI endpoint, a row of the provider table.
struct AiProvider
{
    qint64 id = 0; // 0: no provider
    QString name;
    QString protocol; // "openai", "openai-compat", "anthropic", "ollama", or stored as typed
    QString baseUrl;  // as typed; the request URL is derived from it per protocol
    QString apiKey;
    QString model;
    bool isDefault = false;
    qint32 sortOrder = 0;
};

// A well-known endpoint the settings page offers to fill in a provider.
struct AiProviderPreset
{
    QString name;
    QString protocol;
    QString baseUrl;
    QString defaultModel;
    QStringList models;
};

QList<AiProviderPreset> presets();

// The provider that recognises text on this machine: it has no endpoint, no key and no
// language model, and its model field holds the recognition languages.
QString localOcrProtocol();
bool isLocalOcr(const AiProvider& provider);

// Suggestions for a model box that has no preset behind it.
QStringList commonModels();

} // namespace zelmor::service::ai
