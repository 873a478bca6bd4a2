#pragma once

#include "manager/TaskManager.h"

#include <QMap>
#include <QTimer>
#include <QWidget>

class QLabel;
class QPushButton;
class QVBoxLayout;

namespace zelmor::widget {

// One job in the task card: picture, title, message, state and a cancel button.
class TaskItemRow : public QWidget
{
    Q_OBJECT
public:
    explicit TaskItemRow(const manager::TaskItem& item, QWidget* parent = nullptr);
    void update(const manager::TaskItem& item);
    QString statusText() const;
    bool cancelShown() const;

Q_SIGNALS:
    void cancelRequested(quint64 id);

private:
    void showState();

    quint64 m_id;
    manager::TaskItem::State m_state;
    QLabel* m_thumbnail;
    QLabel* m_title;
    QLabel* m_message;
    QLabel* m_status;
    QPushButton* m_cancel;
};

// The floating card in the lower right corner listing the AI jobs. It lives for the process;
// closing it hides it and keeps the jobs.
class TaskNotificationToast : public QWidget
{
    Q_OBJECT
public:
    static TaskNotificationToast& instance();

    // Brings the card up to date with the task list and shows it.
    void showSynced();
    TaskItemRow* row(quint64 id) const { return m_rows.value(id); }
    QString headerText() const;
    bool hideTimerActive() const { return m_hideTimer.isActive(); }

public Q_SLOTS:
    void onTaskAdded(const zelmor::manager::TaskItem& item);
    void onTaskUpdated(const zelmor::manager::TaskItem& item);
    void onTaskRemoved(quint64 id);
    void onActiveCountChanged(int count);

protected:
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    TaskNotificationToast();
    void addRow(const manager::TaskItem& item);
    void place();
    void applyTheme();
    void hideWhenIdle();
    void showHeader();

    QLabel* m_header;
    QVBoxLayout* m_list;
    QMap<quint64, TaskItemRow*> m_rows;
    QTimer m_hideTimer;
    bool m_hovered = false;
    int m_activeCount = -1; // -1: no job yet
};

} // namespace zelmor::widget
