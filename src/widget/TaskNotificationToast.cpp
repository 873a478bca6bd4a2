#include "TaskNotificationToast.h"

#include "ControlName.h"
#include "FollowLanguage.h"
#include "Translucency.h"
#include "core/ThemeFlag.h"
#include "manager/ThemeManager.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QToolButton>

namespace zelmor::widget {

using manager::TaskItem;
using manager::TaskManager;

namespace {

constexpr int kHideAfterMs = 4000;
constexpr int kCardWidth = 380;
constexpr int kCardMargin = 12;
constexpr int kRowHeight = 56;

struct StateLook
{
    struct
    {
        const char* source;
        const char* comment;
    } text;
    const char* style;
};

// The context is written out in full: lupdate reads only literals.
StateLook lookOf(TaskItem::State state)
{
    switch (state) {
    case TaskItem::Finished:
        return {QT_TRANSLATE_NOOP3("zelmor::widget::TaskItemRow", "✅ 完成", "task.finished"),
                "color: #67c23a; font-weight: bold;"};
    case TaskItem::Failed:
        return {QT_TRANSLATE_NOOP3("zelmor::widget::TaskItemRow", "❌ 失败", "task.failed"),
                "color: #f56c6c; font-weight: bold;"};
    case TaskItem::Cancelled:
        return {QT_TRANSLATE_NOOP3("zelmor::widget::TaskItemRow", "已取消", "task.cancelled"),
                "color: #909399;"};
    default:
        return {QT_TRANSLATE_NOOP3("zelmor::widget::TaskItemRow", "⏳ 处理中", "task.running"),
                "color: #e6a23c; font-weight: bold;"};
    }
}

QFont pointFont(const QWidget* w, int points, bool bold)
{
    QFont font = w->font();
    font.setPointSize(points);
    if (bold) font.setWeight(QFont::Bold);
    return font;
}

} // namespace

TaskItemRow::TaskItemRow(const TaskItem& item, QWidget* parent)
    : QWidget(parent), m_id(item.id), m_state(item.state)
{
    setObjectName(QStringLiteral("taskItemRow"));
    setAttribute(Qt::WA_StyledBackground);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(10, 8, 14, 8);
    row->setSpacing(10);
    m_thumbnail = new QLabel(this);
    m_thumbnail->setFixedSize(36, 36);
    m_thumbnail->setAlignment(Qt::AlignCenter);
    m_thumbnail->setStyleSheet(
        QStringLiteral("border-radius: 4px; background: rgba(128, 128, 128, 0.2);"));
    m_thumbnail->setText(QStringLiteral("📷"));
    row->addWidget(m_thumbnail);

    auto* texts = new QVBoxLayout;
    texts->setSpacing(2);
    m_title = new QLabel(this);
    m_title->setFont(pointFont(this, 9, true));
    m_message = new QLabel(this);
    m_message->setFont(pointFont(this, 8, false));
    m_message->setWordWrap(true); // a failure's reason is read in full
    m_message->setTextFormat(Qt::PlainText);
    m_message->setStyleSheet(QStringLiteral("color: #888888;"));
    texts->addWidget(m_title);
    texts->addWidget(m_message);
    row->addLayout(texts, 1);

    m_status = new QLabel(this);
    m_status->setFont(pointFont(this, 8, false));
    row->addWidget(m_status);
    m_cancel = new QPushButton(this);
    m_cancel->setCursor(Qt::PointingHandCursor);
    m_cancel->setFixedSize(48, 22);
    m_cancel->setStyleSheet(
        QStringLiteral("QPushButton { color: #f56c6c; background: rgba(245, 108, 108, 0.12);"
                       " border: 1px solid rgba(245, 108, 108, 0.4); border-radius: 4px; }"
                       "QPushButton:hover { background: rgba(245, 108, 108, 0.25); }"));
    connect(m_cancel, &QPushButton::clicked, this, [this] { Q_EMIT cancelRequested(m_id); });
    row->addWidget(m_cancel);
    update(item);
    followLanguage(this, [this] {
        m_cancel->setText(tr("取消", "task.cancel"));
        showState();
    });
}

void TaskItemRow::update(const TaskItem& item)
{
    m_title->setText(item.title);
    const bool why = item.state == TaskItem::Failed && !item.result.isEmpty();
    m_message->setText(why ? QStringLiteral("%1: %2").arg(item.message, item.result)
                           : item.message);
    if (!item.thumbnail.isNull())
        m_thumbnail->setPixmap(item.thumbnail.scaled(36, 36, Qt::KeepAspectRatioByExpanding,
                                                     Qt::SmoothTransformation));
    m_state = item.state;
    showState();
    m_cancel->setVisible(item.isActive());
}

void TaskItemRow::showState()
{
    const StateLook look = lookOf(m_state);
    m_status->setText(tr(look.text.source, look.text.comment));
    m_status->setStyleSheet(QLatin1String(look.style));
}

QString TaskItemRow::statusText() const
{
    return m_status->text();
}

bool TaskItemRow::cancelShown() const
{
    return !m_cancel->isHidden();
}

TaskNotificationToast& TaskNotificationToast::instance()
{
    static auto* card = new TaskNotificationToast; // lives for the process, like the task list
    return *card;
}

TaskNotificationToast::TaskNotificationToast() : QWidget(nullptr)
{
    setObjectName(QStringLiteral("taskToastContainer"));
    setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_TranslucentBackground); // the card's round corners
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    auto* card = new QWidget(this);
    card->setObjectName(QStringLiteral("taskToastCard"));
    card->setAttribute(Qt::WA_StyledBackground);
    outer->addWidget(card);

    auto* column = new QVBoxLayout(card);
    column->setContentsMargins(kCardMargin, 10, kCardMargin, 10);
    column->setSpacing(8);
    auto* header = new QHBoxLayout;
    m_header = new QLabel(card);
    m_header->setFont(pointFont(this, 10, true));
    auto* close = new QToolButton(card);
    close->setText(QStringLiteral("✕"));
    close->setCursor(Qt::PointingHandCursor);
    connect(close, &QToolButton::clicked, this, &QWidget::hide);
    header->addWidget(m_header);
    header->addStretch();
    header->addWidget(close);
    column->addLayout(header);

    auto* scroll = new QScrollArea(card);
    scroll->setObjectName(QStringLiteral("taskScrollArea"));
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* container = new QWidget(scroll);
    container->setObjectName(QStringLiteral("taskListContainer"));
    m_list = new QVBoxLayout(container);
    m_list->setSpacing(6);
    m_list->addStretch();
    scroll->setWidget(container);
    column->addWidget(scroll);

    m_hideTimer.setSingleShot(true);
    connect(&m_hideTimer, &QTimer::timeout, this, [this] {
        if (m_hovered) return;
        TaskManager::instance().clearFinished();
        hide();
    });
    TaskManager& tasks = TaskManager::instance();
    connect(&tasks, &TaskManager::taskAdded, this, &TaskNotificationToast::onTaskAdded);
    connect(&tasks, &TaskManager::taskUpdated, this, &TaskNotificationToast::onTaskUpdated);
    connect(&tasks, &TaskManager::taskRemoved, this, &TaskNotificationToast::onTaskRemoved);
    connect(&tasks, &TaskManager::activeCountChanged, this,
            &TaskNotificationToast::onActiveCountChanged);
    connect(&manager::ThemeManager::instance(), &manager::ThemeManager::themeChanged, this,
            &TaskNotificationToast::applyTheme);
    connect(&Translucency::instance(), &Translucency::availableChanged, this,
            &TaskNotificationToast::applyTheme);
    applyTheme();
    followLanguage(this, [this, close] {
        showHeader();
        setTipAndName(close, tr("Close", "task.close"));
    });
}

void TaskNotificationToast::applyTheme()
{
    const bool dark = core::isDarkTheme();
    setStyleSheet(
        QStringLiteral("#taskToastCard { background: %1; border: 1px solid %2; border-radius: %7; }"
                       "#taskToastCard QLabel { color: %3; }"
                       "#taskListContainer, #taskScrollArea { background: transparent; }"
                       "#taskItemRow { background: %4; border-radius: 8px; }"
                       "QScrollBar:vertical { width: 6px; background: transparent; }"
                       "QScrollBar::handle:vertical { background: %5; border-radius: 3px; }"
                       "QScrollBar::handle:vertical:hover { background: %6; }"
                       "QScrollBar::add-line, QScrollBar::sub-line { height: 0; }")
            .arg(dark ? QStringLiteral("#2b2b30") : QStringLiteral("#FFFFFF"),
                 dark ? QStringLiteral("#3a3a40") : QStringLiteral("#E6E6E6"),
                 dark ? QStringLiteral("#e4e4e7") : QStringLiteral("#222222"),
                 dark ? QStringLiteral("#202024") : QStringLiteral("#F7F7F8"),
                 dark ? QStringLiteral("rgba(255,255,255,0.25)")
                      : QStringLiteral("rgba(0,0,0,0.25)"),
                 dark ? QStringLiteral("rgba(255,255,255,0.5)") : QStringLiteral("rgba(0,0,0,0.5)"),
                 Translucency::instance().cornerRadius(12)));
}

void TaskNotificationToast::addRow(const TaskItem& item)
{
    auto* row = new TaskItemRow(item, m_list->parentWidget());
    connect(row, &TaskItemRow::cancelRequested, &TaskManager::instance(), &TaskManager::cancelTask);
    m_list->insertWidget(m_list->count() - 1, row); // before the closing stretch
    m_rows.insert(item.id, row);
}

void TaskNotificationToast::onTaskAdded(const TaskItem& item)
{
    if (m_rows.contains(item.id)) return;
    addRow(item);
    m_hideTimer.stop();
    place();
    raise();
    show();
}

void TaskNotificationToast::onTaskUpdated(const TaskItem& item)
{
    if (TaskItemRow* row = m_rows.value(item.id)) {
        row->update(item);
        place(); // the new text may take more lines
    } else {
        onTaskAdded(item);
    }
}

void TaskNotificationToast::onTaskRemoved(quint64 id)
{
    TaskItemRow* row = m_rows.take(id);
    if (!row) return;
    m_list->removeWidget(row);
    row->deleteLater();
    place();
}

void TaskNotificationToast::onActiveCountChanged(int count)
{
    m_activeCount = count;
    showHeader();
    if (count > 0)
        m_hideTimer.stop();
    else
        hideWhenIdle();
}

void TaskNotificationToast::showHeader()
{
    if (m_activeCount > 0)
        m_header->setText(tr("⚡ AI 后台任务 (%1 处理中)", "task.header.active").arg(m_activeCount));
    else if (m_activeCount < 0)
        m_header->setText(tr("⚡ AI 后台任务管理器", "task.manager.title"));
    else
        m_header->setText(tr("⚡ AI 后台任务 (处理完成)", "task.header.finished"));
}

QString TaskNotificationToast::headerText() const
{
    return m_header->text();
}

void TaskNotificationToast::hideWhenIdle()
{
    if (!m_hovered && TaskManager::instance().activeCount() == 0) m_hideTimer.start(kHideAfterMs);
}

void TaskNotificationToast::showSynced()
{
    const QList<TaskItem> tasks = TaskManager::instance().tasks();
    QList<quint64> ids;
    for (const TaskItem& task : tasks)
        ids.append(task.id);
    for (quint64 id : m_rows.keys())
        if (!ids.contains(id)) onTaskRemoved(id);
    for (const TaskItem& task : tasks) {
        if (TaskItemRow* row = m_rows.value(task.id)) {
            row->update(task);
        } else {
            addRow(task);
        }
    }
    onActiveCountChanged(TaskManager::instance().activeCount());
    place();
    raise();
    show();
}

void TaskNotificationToast::place()
{
    // Each row as tall as its wrapped text needs, so that a long reason shows whole.
    const int rowWidth = kCardWidth - 2 * kCardMargin - m_list->contentsMargins().left() -
                         m_list->contentsMargins().right();
    int rows = 0;
    for (const TaskItemRow* row : std::as_const(m_rows))
        rows += std::max(kRowHeight, row->heightForWidth(rowWidth)) + m_list->spacing();
    setFixedSize(kCardWidth, qBound(80, 48 + rows, 320));
    const QScreen* screen = QGuiApplication::primaryScreen();
    const QRect area = screen ? screen->availableGeometry() : QRect();
    if (!area.isValid()) return;
    move(area.right() - 20 - width() + 1, area.bottom() - 20 - height() + 1);
}

void TaskNotificationToast::enterEvent(QEnterEvent* event)
{
    m_hovered = true;
    m_hideTimer.stop();
    QWidget::enterEvent(event);
}

void TaskNotificationToast::leaveEvent(QEvent* event)
{
    m_hovered = false;
    hideWhenIdle();
    QWidget::leaveEvent(event);
}

void TaskNotificationToast::resizeEvent(QResizeEvent* event)
{
    applyTheme();
    QWidget::resizeEvent(event);
}

} // namespace zelmor::widget
