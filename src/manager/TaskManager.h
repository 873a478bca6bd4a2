#pragma once

#include <QList>
#include <QMetaType>
#include <QObject>
#include <QPixmap>

#include <functional>

namespace zelmor::manager {

// One background job as the task card shows it.
struct TaskItem
{
    // No underlying type given: with one, lupdate loses track of the classes declared below.
    enum State { Pending = 0, Running = 1, Finished = 2, Failed = 3, Cancelled = 4 };

    quint64 id = 0;
    QString title;
    QString message;
    QPixmap thumbnail;
    State state = Running;
    qint32 progress = -1; // reserved; nothing sets it
    std::function<void()> onCancel;
    QString result;
    qint64 createdAt = 0;

    bool isActive() const { return state < Finished; }
};

// The list of running and recently ended AI jobs behind the task card.
class TaskManager : public QObject
{
    Q_OBJECT
public:
    static TaskManager& instance();

    quint64 addTask(const QString& title, const QString& message, const QPixmap& thumbnail,
                    std::function<void()> onCancel);
    // Empty texts keep the former message and result.
    void updateTask(quint64 id, TaskItem::State state, const QString& message,
                    const QString& result);
    void cancelTask(quint64 id);
    void clearFinished();
    QList<TaskItem> tasks() const { return m_tasks; }
    int activeCount() const;

Q_SIGNALS:
    void taskAdded(const zelmor::manager::TaskItem& item);
    void taskUpdated(const zelmor::manager::TaskItem& item);
    void taskRemoved(quint64 id);
    void activeCountChanged(int count);

private:
    TaskManager();
    TaskItem* find(quint64 id);
    void showCard();

    quint64 m_nextId = 1;
    QList<TaskItem> m_tasks;
};

} // namespace zelmor::manager

Q_DECLARE_METATYPE(zelmor::manager::TaskItem)
