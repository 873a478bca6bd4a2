#include "TaskManager.h"

#include "widget/TaskNotificationToast.h"

#include <QDateTime>

namespace zelmor::manager {

TaskManager& TaskManager::instance()
{
    static TaskManager manager;
    return manager;
}

TaskManager::TaskManager()
{
    qRegisterMetaType<TaskItem>();
}

TaskItem* TaskManager::find(quint64 id)
{
    for (TaskItem& task : m_tasks)
        if (task.id == id) return &task;
    return nullptr;
}

int TaskManager::activeCount() const
{
    return int(std::count_if(m_tasks.cbegin(), m_tasks.cend(),
                             [](const TaskItem& t) { return t.isActive(); }));
}

void TaskManager::showCard()
{
    widget::TaskNotificationToast::instance().showSynced();
}

quint64 TaskManager::addTask(const QString& title, const QString& message, const QPixmap& thumbnail,
                             std::function<void()> onCancel)
{
    TaskItem task;
    task.id = m_nextId++;
    task.title = title;
    task.message = message;
    task.thumbnail = thumbnail;
    task.onCancel = std::move(onCancel);
    task.createdAt = QDateTime::currentMSecsSinceEpoch();
    m_tasks.append(task);
    Q_EMIT taskAdded(task);
    Q_EMIT activeCountChanged(activeCount());
    showCard();
    return task.id;
}

void TaskManager::updateTask(quint64 id, TaskItem::State state, const QString& message,
                             const QString& result)
{
    TaskItem* task = find(id);
    if (!task) return;
    task->state = state;
    if (!message.isEmpty()) task->message = message;
    if (!result.isEmpty()) task->result = result;
    const TaskItem updated = *task;
    Q_EMIT taskUpdated(updated);
    Q_EMIT activeCountChanged(activeCount());
    showCard(); // a finished job brings the card back even after the user closed it
}

void TaskManager::cancelTask(quint64 id)
{
    TaskItem* task = find(id);
    if (!task || !task->isActive()) return;
    task->state = TaskItem::Cancelled;
    task->message = tr("已取消");
    const std::function<void()> onCancel = task->onCancel;
    if (onCancel) onCancel();
    // The job may have reported meanwhile; what is announced is what the list now holds.
    if (const TaskItem* now = find(id)) Q_EMIT taskUpdated(*now);
    Q_EMIT activeCountChanged(activeCount());
}

void TaskManager::clearFinished()
{
    for (qsizetype i = m_tasks.size() - 1; i >= 0; --i) {
        if (m_tasks[i].isActive()) continue;
        const quint64 id = m_tasks[i].id;
        m_tasks.removeAt(i);
        Q_EMIT taskRemoved(id);
    }
    Q_EMIT activeCountChanged(activeCount());
}

} // namespace zelmor::manager
