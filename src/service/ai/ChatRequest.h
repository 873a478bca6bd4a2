#pragma once

#include <QPixmap>
#include <QString>

namespace zelmor::service::ai {

// One question to the active provider.
struct ChatRequest
{
    QString systemPrompt;
    QString text;
    QPixmap image; // sent as PNG, unscaled
    qint32 maxTokens = 1024;
    // Offers the desktop tools (OpenAI dialect only) and adds the agent prompt.
    bool enableTools = false;
};

} // namespace zelmor::service::ai
