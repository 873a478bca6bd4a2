// The chat page's sessions and its conversation view.

#include "AiChatPanel.h"

#include "ChatWidgets.h"
#include "widget/ControlName.h"

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QLocale>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QStackedWidget>
#include <QTimer>
#include <QVBoxLayout>

namespace zelmor::widget {

using service::ai::ChatMessage;
using service::ai::ChatSession;

namespace {

enum StackPage { WelcomePage = 0, ConversationPage = 1 };

QString draftTitle()
{
    return AiChatPanel::tr("New Chat", "ai.session.newTitle");
}

// Laying out rich text costs time with its length: a bubble shows the start of a long message,
// and the whole of it opens in a plain viewer.
constexpr qsizetype kShownChars = 6000;

QString shownPart(const QString& text)
{
    if (text.size() <= kShownChars) return text;
    const qsizetype lineEnd = text.lastIndexOf(QLatin1Char('\n'), kShownChars);
    return text.left(lineEnd > kShownChars / 2 ? lineEnd : kShownChars) + QStringLiteral(" …");
}

QLabel* bubbleText(const QString& text, bool rich, QWidget* parent)
{
    auto* label = new QLabel(parent);
    label->setTextFormat(rich ? Qt::RichText : Qt::PlainText);
    label->setText(text);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextBrowserInteraction);
    label->setOpenExternalLinks(true);
    return label;
}

void addBubbleText(const QString& text, QWidget* frame, QVBoxLayout* column)
{
    column->addWidget(bubbleText(service::ai::renderChatMarkdown(shownPart(text)), true, frame));
    if (text.size() <= kShownChars) return;
    QPushButton* all = makeButton(AiChatPanel::tr("Show all (%1 characters)", "ai.bubble.showAll")
                                      .arg(QLocale().toString(text.size())),
                                  "btnShowAll", frame);
    all->setCursor(Qt::PointingHandCursor);
    QObject::connect(all, &QPushButton::clicked, frame,
                     [text, frame] { showChatTextViewer(text, frame->window()); });
    column->addWidget(all, 0, Qt::AlignLeft);
}

} // namespace

void AiChatPanel::loadSessions()
{
    QList<ChatSession> loaded;
    if (!service::ai::loadChatSessions(service::ai::chatSessionsPath(), &loaded)) return;
    m_sessions = loaded;
}

void AiChatPanel::saveSessions()
{
    service::ai::saveChatSessions(service::ai::chatSessionsPath(), m_sessions, draftTitle());
}

ChatSession* AiChatPanel::session(const QString& id)
{
    for (ChatSession& session : m_sessions)
        if (!id.isEmpty() && session.id == id) return &session;
    return nullptr;
}

void AiChatPanel::appendTo(const QString& id, const QString& role, const QString& text,
                           const QPixmap& image)
{
    ChatSession* target = session(id);
    if (!target) return;
    const QDateTime now = QDateTime::currentDateTime();
    target->messages.append({role, text, image, now});
    target->updatedAt = now;
}

// The new session, named by the time in milliseconds, first in the list and current.
void AiChatPanel::startSession(const QString& title)
{
    const QDateTime now = QDateTime::currentDateTime();
    m_sessions.prepend({QString::number(now.toMSecsSinceEpoch()), title, now, {}});
    m_currentId = m_sessions.first().id;
}

void AiChatPanel::newSession()
{
    startSession(draftTitle());
    refreshSessionList();
    clearBubbles();
    setAttachment(QPixmap());
    m_stack->setCurrentIndex(WelcomePage);
    saveSessions();
}

void AiChatPanel::selectSession(const QString& id)
{
    m_currentId = id;
    clearBubbles();
    const ChatSession* session = currentSession();
    const bool empty = !session || session->messages.isEmpty();
    m_stack->setCurrentIndex(empty ? WelcomePage : ConversationPage);
    if (session)
        for (const ChatMessage& message : session->messages)
            addBubble(message.role, message.text, message.image);
    for (int row = 0; row < m_sessionList->count(); ++row)
        if (m_sessionList->item(row)->data(Qt::UserRole).toString() == id)
            m_sessionList->setCurrentRow(row);
}

void AiChatPanel::deleteSession(const QString& id)
{
    m_sessions.erase(std::remove_if(m_sessions.begin(), m_sessions.end(),
                                    [&id](const ChatSession& s) { return s.id == id; }),
                     m_sessions.end());
    if (id != m_currentId) {
        refreshSessionList();
        saveSessions();
        return;
    }
    m_currentId.clear();
    if (m_sessions.isEmpty())
        newSession();
    else
        selectSession(m_sessions.first().id);
    saveSessions();
}

void AiChatPanel::clearCurrentChat()
{
    if (ChatSession* session = currentSession()) session->messages.clear();
    clearBubbles();
    saveSessions();
}

void AiChatPanel::refreshSessionList()
{
    m_sessionList->clear();
    const QString filter = m_searchBox->text().trimmed().toLower();
    for (const ChatSession& session : m_sessions) {
        if (!filter.isEmpty() && !session.title.toLower().contains(filter)) continue;
        auto* item = new QListWidgetItem(m_sessionList);
        item->setSizeHint(QSize(0, 56));
        item->setData(Qt::UserRole, session.id);
        item->setData(Qt::AccessibleTextRole, session.title);
        auto* row = new SessionItemWidget(
            session.id, session.title,
            QStringLiteral("%1 · %2条")
                .arg(session.updatedAt.toString(QStringLiteral("MM-dd hh:mm")))
                .arg(session.messages.size()),
            m_sessionList);
        // Queued: both can rebuild the list, and the row must not be deleted inside its own
        // click.
        connect(row, &SessionItemWidget::clicked, this, &AiChatPanel::selectSession,
                Qt::QueuedConnection);
        connect(row, &SessionItemWidget::deleteRequested, this, &AiChatPanel::deleteSession,
                Qt::QueuedConnection);
        m_sessionList->setItemWidget(item, row);
        if (session.id == m_currentId) m_sessionList->setCurrentItem(item);
    }
}

void AiChatPanel::clearBubbles()
{
    // The last item is the stretch that keeps bubbles at the top.
    while (m_conversation->count() > 1) {
        QLayoutItem* item = m_conversation->takeAt(0);
        delete item->widget();
        delete item;
    }
    m_loadingBubble = nullptr;
    m_loadingLabel = nullptr;
}

void AiChatPanel::addBubble(const QString& role, const QString& text, const QPixmap& image)
{
    auto* bubble = new QWidget;
    auto* column = new QVBoxLayout(bubble);
    column->setContentsMargins(0, 0, 0, 0);
    const bool user = role == QLatin1String("user");
    const bool system = role == QLatin1String("system");
    auto* name = new QLabel(user     ? tr("You", "ai.role.user")
                            : system ? tr("System", "ai.role.sys")
                                     : tr("Zelmor AI", "ai.role.ai"),
                            bubble);
    name->setObjectName(QStringLiteral("bubbleName"));
    if (system) {
        QLabel* line = bubbleText(shownPart(text), false, bubble);
        line->setObjectName(QStringLiteral("bubbleSystem"));
        line->setAlignment(Qt::AlignCenter);
        column->addWidget(name, 0, Qt::AlignHCenter);
        column->addWidget(line);
    } else {
        auto* frame = new QFrame(bubble);
        frame->setObjectName(user ? QStringLiteral("bubbleUser") : QStringLiteral("bubbleAi"));
        frame->setProperty("align", user ? "right" : "left");
        frame->setMaximumWidth(640);
        auto* inner = new QVBoxLayout(frame);
        inner->setContentsMargins(14, 10, 14, 10);
        inner->setSpacing(8);
        if (!image.isNull()) {
            auto* picture = new ChatPictureLabel(frame);
            picture->setObjectName(QStringLiteral("bubbleImage"));
            picture->setPicture(image);
            picture->setPixmap(
                image.scaled(280, 180, Qt::KeepAspectRatio, Qt::SmoothTransformation));
            picture->setStyleSheet(
                QStringLiteral("border-radius: 8px; border: 1px solid rgba(255, 255, 255, 0.2);"));
            picture->setToolTip(QStringLiteral("%1 (%2 × %3)")
                                    .arg(tr("点击放大预览截图", "ai.tip.previewImage"))
                                    .arg(image.width())
                                    .arg(image.height()));
            picture->setAccessibleName(picture->toolTip());
            inner->addWidget(picture);
        }
        if (!text.isEmpty()) addBubbleText(text, frame, inner);
        auto* row = new QHBoxLayout;
        if (user) row->addStretch(1);
        row->addWidget(frame);
        if (!user) row->addStretch(1);
        column->addWidget(name, 0, user ? Qt::AlignRight : Qt::AlignLeft);
        column->addLayout(row);
    }
    m_conversation->insertWidget(m_conversation->count() - 1, bubble);
    scrollToEnd();
}

void AiChatPanel::scrollToEnd()
{
    m_followEnd = true;
    QScrollBar* bar = m_scrollArea->verticalScrollBar();
    bar->setValue(bar->maximum());
}

// Bubbles take their height only as the layout settles, after they are added: the view
// keeps to its end through every growth until the user scrolls away from it.
void AiChatPanel::followEnd()
{
    QScrollBar* bar = m_scrollArea->verticalScrollBar();
    connect(bar, &QScrollBar::rangeChanged, this, [this, bar](int, int maximum) {
        if (m_followEnd) bar->setValue(maximum);
    });
    connect(bar, &QScrollBar::valueChanged, this,
            [this, bar](int value) { m_followEnd = value >= bar->maximum(); });
}

} // namespace zelmor::widget
