#pragma once

#include <QDateTime>
#include <QList>
#include <QPixmap>
#include <QString>

// The chat's conversations as kept on disk, and the rules for their titles and for showing an
// answer's text.
namespace zelmor::service::ai {

struct ChatMessage
{
    QString role; // "user", "assistant" or "system"
    QString text;
    QPixmap image; // may be null
    QDateTime timestamp;
};

struct ChatSession
{
    QString id;
    QString title;
    QDateTime updatedAt;
    QList<ChatMessage> messages;
};

// "ai_sessions.json" in the data folder.
QString chatSessionsPath();

// The sessions in file order. A missing file gives false and an empty list; a file that is
// not a session array is copied aside first (`keptCopy` names the copy), so the next save
// cannot destroy what it held, and gives an empty list.
bool loadChatSessions(const QString& path, QList<ChatSession>* sessions,
                      QString* keptCopy = nullptr);

// Writes atomically, leaving out untouched drafts: sessions titled `draftTitle` with no message.
bool saveChatSessions(const QString& path, const QList<ChatSession>& sessions,
                      const QString& draftTitle);

// The title a session takes from its first message: the first 16 characters, "..." when
// longer; `imageTitle` when there is no text.
QString chatTitleFor(const QString& text, const QString& imageTitle);

// An answer as rich text: escaped first, then inline code, bold, italic, fences and breaks.
QString renderChatMarkdown(const QString& text);

} // namespace zelmor::service::ai
