#include "ChatSessions.h"

#include "core/Log.h"
#include "core/Utilities.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSaveFile>
#include <QStandardPaths>

namespace zelmor::service::ai {

namespace {

constexpr int kTitleLength = 16;

QString key(const char* name)
{
    return QLatin1String(name);
}

QJsonObject messageJson(const ChatMessage& message)
{
    QJsonObject json{{key("role"), message.role},
                     {key("text"), message.text},
                     {key("timestamp"), message.timestamp.toString(Qt::ISODateWithMs)}};
    if (!message.image.isNull())
        json.insert(key("image"),
                    QString::fromLatin1(core::imageToBase64(message.image.toImage())));
    return json;
}

ChatMessage messageFrom(const QJsonObject& json)
{
    ChatMessage message{
        json.value(key("role")).toString(), json.value(key("text")).toString(), QPixmap(),
        QDateTime::fromString(json.value(key("timestamp")).toString(), Qt::ISODateWithMs)};
    const QString image = json.value(key("image")).toString();
    if (!image.isEmpty())
        message.image.loadFromData(QByteArray::fromBase64(image.toLatin1()), "PNG");
    return message;
}

ChatSession sessionFrom(const QJsonObject& json)
{
    ChatSession session{
        json.value(key("id")).toString(),
        json.value(key("title")).toString(),
        QDateTime::fromString(json.value(key("updatedAt")).toString(), Qt::ISODateWithMs),
        {}};
    for (const QJsonValue& message : json.value(key("messages")).toArray())
        session.messages.append(messageFrom(message.toObject()));
    return session;
}

QString keepAside(const QString& path)
{
    const QString copy = path + QStringLiteral(".unreadable-") +
                         QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    if (!QFile::copy(path, copy)) return QString();
    core::writeLogLine(QStringLiteral("[chat] %1 could not be read; kept as %2").arg(path, copy));
    return copy;
}

} // namespace

QString chatSessionsPath()
{
    const QString dir = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    QDir().mkpath(dir);
    return dir + QStringLiteral("/ai_sessions.json");
}

bool loadChatSessions(const QString& path, QList<ChatSession>* sessions, QString* keptCopy)
{
    sessions->clear();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return false;
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    file.close();
    if (error.error != QJsonParseError::NoError || !document.isArray()) {
        const QString copy = keepAside(path);
        if (keptCopy) *keptCopy = copy;
        return true;
    }
    for (const QJsonValue& session : document.array())
        sessions->append(sessionFrom(session.toObject()));
    return true;
}

bool saveChatSessions(const QString& path, const QList<ChatSession>& sessions,
                      const QString& draftTitle)
{
    QJsonArray array;
    for (const ChatSession& session : sessions) {
        if (session.messages.isEmpty() && session.title == draftTitle) continue;
        QJsonArray messages;
        for (const ChatMessage& message : session.messages)
            messages.append(messageJson(message));
        array.append(QJsonObject{{key("id"), session.id},
                                 {key("title"), session.title},
                                 {key("updatedAt"), session.updatedAt.toString(Qt::ISODateWithMs)},
                                 {key("messages"), messages}});
    }
    // Conversations and their pictures are the user's alone, as the history is.
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) &&
           file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner) &&
           file.write(QJsonDocument(array).toJson(QJsonDocument::Compact)) >= 0 && file.commit();
}

QString chatTitleFor(const QString& text, const QString& imageTitle)
{
    if (text.isEmpty()) return imageTitle;
    return text.size() > kTitleLength ? text.left(kTitleLength) + QStringLiteral("...") : text;
}

QString renderChatMarkdown(const QString& text)
{
    static const QRegularExpression inlineCode(QStringLiteral("`([^`\n]+)`"));
    static const QRegularExpression bold(QStringLiteral("\\*\\*([^*\n]+)\\*\\*"));
    static const QRegularExpression italic(QStringLiteral("\\*([^*\n]+)\\*"));
    static const QRegularExpression fence(QStringLiteral("```(.*?)```"),
                                          QRegularExpression::DotMatchesEverythingOption);
    QString html = text.toHtmlEscaped();
    html.replace(
        inlineCode,
        QStringLiteral("<code style=\"background:#2a2a30;color:#e67e22;padding:2px "
                       "6px;border-radius:4px;font-family:Consolas,monospace;\">\\1</code>"));
    html.replace(bold, QStringLiteral("<b>\\1</b>"));
    html.replace(italic, QStringLiteral("<i>\\1</i>"));
    html.replace(fence, QStringLiteral("<pre style=\"background:#1e1e24;color:#f8f8f2;padding:10px;"
                                       "border-radius:6px;font-family:Consolas,monospace;line-"
                                       "height:1.4;\">\\1</pre>"));
    html.replace(QLatin1Char('\n'), QStringLiteral("<br>"));
    return html;
}

} // namespace zelmor::service::ai
