#include "AiProvider.h"

namespace zelmor::service::ai {

QList<AiProviderPreset> presets()
{
    return {
        {QStringLiteral("OpenAI"),
         QStringLiteral("openai"),
         QStringLiteral("https://api.openai.com"),
         QStringLiteral("gpt-4o"),
         {QStringLiteral("gpt-4o"), QStringLiteral("gpt-4o-mini"), QStringLiteral("gpt-4-turbo"),
          QStringLiteral("gpt-4.5-preview"), QStringLiteral("o3-mini"), QStringLiteral("o1")}},
        {QStringLiteral("Anthropic (Claude)"),
         QStringLiteral("anthropic"),
         QStringLiteral("https://api.anthropic.com"),
         QStringLiteral("claude-opus-4-7"),
         {QStringLiteral("claude-opus-4-7"), QStringLiteral("claude-sonnet-4-6"),
          QStringLiteral("claude-haiku-4-5-20251001"), QStringLiteral("claude-3-5-sonnet-latest")}},
        {QStringLiteral("Google Gemini"),
         QStringLiteral("gemini"),
         QStringLiteral("https://generativelanguage.googleapis.com"),
         QStringLiteral("gemini-2.5-pro"),
         {QStringLiteral("gemini-2.5-pro"), QStringLiteral("gemini-2.5-flash"),
          QStringLiteral("gemini-2.0-flash"), QStringLiteral("gemini-1.5-pro")}},
        {QStringLiteral("Groq"),
         QStringLiteral("openai-compat"),
         QStringLiteral("https://api.groq.com/openai/v1"),
         QStringLiteral("llama-3.3-70b-versatile"),
         {QStringLiteral("llama-3.3-70b-versatile"), QStringLiteral("llama-3.2-90b-vision-preview"),
          QStringLiteral("mixtral-8x7b-32768")}},
        {QStringLiteral("Mistral"),
         QStringLiteral("openai-compat"),
         QStringLiteral("https://api.mistral.ai/v1"),
         QStringLiteral("pixtral-large-latest"),
         {QStringLiteral("pixtral-large-latest"), QStringLiteral("mistral-large-latest"),
          QStringLiteral("mistral-small-latest")}},
        {QStringLiteral("智谱 GLM"),
         QStringLiteral("openai-compat"),
         QStringLiteral("https://open.bigmodel.cn/api/paas/v4"),
         QStringLiteral("glm-4v-plus"),
         {QStringLiteral("glm-4v-plus"), QStringLiteral("glm-4v-flash"),
          QStringLiteral("glm-4-plus"), QStringLiteral("glm-4-air")}},
        {QStringLiteral("通义千问 Qwen"),
         QStringLiteral("openai-compat"),
         QStringLiteral("https://dashscope.aliyuncs.com/compatible-mode/v1"),
         QStringLiteral("qwen-vl-max"),
         {QStringLiteral("qwen-vl-max"), QStringLiteral("qwen-vl-plus"),
          QStringLiteral("qwen2.5-vl-72b-instruct"), QStringLiteral("qwen-max")}},
        {QStringLiteral("DeepSeek"),
         QStringLiteral("openai-compat"),
         QStringLiteral("https://api.deepseek.com"),
         QStringLiteral("deepseek-chat"),
         {QStringLiteral("deepseek-chat"), QStringLiteral("deepseek-reasoner"),
          QStringLiteral("deepseek-v3")}},
        {QStringLiteral("月之暗面 Kimi"),
         QStringLiteral("openai-compat"),
         QStringLiteral("https://api.moonshot.cn/v1"),
         QStringLiteral("moonshot-v1-8k-vision-preview"),
         {QStringLiteral("moonshot-v1-8k-vision-preview"),
          QStringLiteral("moonshot-v1-32k-vision-preview"), QStringLiteral("moonshot-v1-32k")}},
        {QStringLiteral("OpenAI-Compat Relay"),
         QStringLiteral("openai-compat"),
         QString(),
         QStringLiteral("gpt-4o"),
         {QStringLiteral("gpt-4o"), QStringLiteral("gpt-4o-mini"),
          QStringLiteral("claude-3-5-sonnet")}},
        {QStringLiteral("Ollama (local)"),
         QStringLiteral("ollama"),
         QStringLiteral("http://localhost:11434"),
         QStringLiteral("llama3.2-vision"),
         {QStringLiteral("llama3.2-vision"), QStringLiteral("qwen2.5-coder"),
          QStringLiteral("llava"), QStringLiteral("moondream")}},
        {QStringLiteral("LM Studio (local)"),
         QStringLiteral("lmstudio"),
         QStringLiteral("http://localhost:1234/v1"),
         QStringLiteral("local-model"),
         {QStringLiteral("local-model")}},
        {QStringLiteral("Tesseract OCR (local)"),
         localOcrProtocol(),
         QString(),
         QStringLiteral("eng+chi_sim"),
         {QStringLiteral("eng+chi_sim"), QStringLiteral("eng"), QStringLiteral("chi_sim")}},
    };
}

QString localOcrProtocol()
{
    return QStringLiteral("tesseract");
}

bool isLocalOcr(const AiProvider& provider)
{
    return provider.protocol == localOcrProtocol();
}

QStringList commonModels()
{
    return {QStringLiteral("gpt-4o"),
            QStringLiteral("gpt-4o-mini"),
            QStringLiteral("gpt-4.5-preview"),
            QStringLiteral("claude-opus-4-7"),
            QStringLiteral("claude-sonnet-4-6"),
            QStringLiteral("gemini-2.5-pro"),
            QStringLiteral("gemini-2.5-flash"),
            QStringLiteral("glm-4v-plus"),
            QStringLiteral("qwen-vl-max"),
            QStringLiteral("deepseek-chat"),
            QStringLiteral("deepseek-reasoner")};
}

} // namespace zelmor::service::ai
