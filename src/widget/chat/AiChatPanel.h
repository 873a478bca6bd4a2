#pragma once

#include "service/ai/ChatSessions.h"

#include <QPixmap>
#include <QWidget>

class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QScrollArea;
class QStackedWidget;
class QTimer;
class QVBoxLayout;

namespace zelmor::service::ai {
class AiApiService;
}

namespace zelmor::widget {

class ChatInputEdit;
class ChatPictureLabel;

// The chat page: sessions at the side, the conversation or the welcome cards in the middle,
// and the input with its attachment below. Each send is one request of its own; the
// conversation before it is shown, not sent.
class AiChatPanel : public QWidget
{
    Q_OBJECT
public:
    explicit AiChatPanel(QWidget* parent = nullptr);

    // Shows a message; it is neither kept nor sent.
    void addBubble(const QString& role, const QString& text, const QPixmap& image);

    const QList<service::ai::ChatSession>& sessions() const { return m_sessions; }
    QString currentSessionId() const { return m_currentId; }
    const QPixmap& attachment() const { return m_attachment; }
    bool thinking() const { return m_thinkingTimer != nullptr; }

Q_SIGNALS:
    void captureRegionRequested();
    void settingsRequested();

public Q_SLOTS:
    void onCaptureForChat(const QPixmap& pm);

protected:
    void showEvent(QShowEvent* event) override;

private:
    // Construction
    QWidget* buildSidebar();
    QWidget* buildMainColumn();
    QWidget* buildTopBar();
    QWidget* buildWelcomePage();
    QWidget* buildConversation();
    QWidget* buildInputArea();
    void applyTheme(bool dark);
    void refreshProvider();
    void refreshModelDisplays();
    void refreshAttachment();
    void setAttachment(const QPixmap& picture);
    void tellPictureRefused(const QString& why);

    // Sessions
    void loadSessions();
    void saveSessions();
    void startSession(const QString& title);
    void newSession();
    void selectSession(const QString& id);
    void deleteSession(const QString& id);
    void clearCurrentChat();
    void refreshSessionList();
    void clearBubbles();
    service::ai::ChatSession* session(const QString& id);
    service::ai::ChatSession* currentSession() { return session(m_currentId); }
    void appendTo(const QString& id, const QString& role, const QString& text,
                  const QPixmap& image);
    // A message of the pending request, kept in the session it was asked in and shown only
    // while that session is on screen.
    void answerWith(const QString& role, const QString& text, bool keep);

    // Sending and answers
    void send();
    void stop();
    void beginThinking();
    void endThinking();
    void onAnswer(const QString& answer);
    void onToolExecuted(const QString& toolName, const QVariantMap& args,
                        const QVariantMap& result);
    void onFailed(const QString& reason);
    void runQuickAction(const QString& key, const QString& prompt);
    void fillInput(const QString& text);
    // The welcome card's title of a quick action; the generic label for others.
    static QString cardTitle(const QString& action);
    void scrollToEnd();
    void followEnd();

    QList<service::ai::ChatSession> m_sessions; // newest first
    QString m_currentId;
    QString m_askedId; // the session of the request in flight
    QPixmap m_attachment;
    QString m_pendingAction;
    service::ai::AiApiService* m_api = nullptr;

    QLineEdit* m_searchBox = nullptr;
    QListWidget* m_sessionList = nullptr;
    QComboBox* m_modelSelect = nullptr;
    QLabel* m_modelWarning = nullptr;
    QStackedWidget* m_stack = nullptr;
    QScrollArea* m_scrollArea = nullptr;
    QVBoxLayout* m_conversation = nullptr;
    ChatPictureLabel* m_attachThumb = nullptr;
    QLabel* m_attachInfo = nullptr;
    QPushButton* m_removeAttach = nullptr;
    ChatInputEdit* m_input = nullptr;
    QLabel* m_providerInfo = nullptr;
    QLabel* m_status = nullptr;
    QPushButton* m_sendButton = nullptr;
    QPushButton* m_stopButton = nullptr;
    QTimer* m_thinkingTimer = nullptr;
    QWidget* m_loadingBubble = nullptr;
    QLabel* m_loadingLabel = nullptr;
    int m_dots = 0;
    bool m_followEnd = true; // the view keeps to its end as the conversation grows
};

} // namespace zelmor::widget
