#pragma once

#include "core/HistoryItem.h"

#include <QList>
#include <QWidget>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace zelmor::widget {

class HistoryDetailPanel;
class HistoryThumbnailView;

// The history page: search, tabs, type filter and sort over the stored captures, a grid or
// list of them, the details of the selected one, and a status line.
class HistoryPanel : public QWidget
{
    Q_OBJECT
public:
    enum Tab { AllTab, TodayTab, WeekTab, FavouritesTab };

    explicit HistoryPanel(QWidget* parent = nullptr);
    // Saves a pending tag edit; the focus leaving the tag line later reaches no one.
    ~HistoryPanel() override;

    const QList<core::HistoryItem>& visibleItems() const { return m_visibleItems; }

Q_SIGNALS:
    void pinRequested(const QPixmap& pm);
    void copyRequested(const QPixmap& pm);
    void reeditRequested(const QPixmap& pm);

public Q_SLOTS:
    void reload();

private:
    QWidget* buildToolbar();
    QWidget* buildViewSwitch();
    QWidget* buildStatusBar();
    void connectDetails();
    void setTab(int tab);
    void applyFilters();
    bool passesTab(const core::HistoryItem& item, const QDateTime& now) const;
    void sortVisible();
    void showSelected(const core::HistoryItem* item);
    const core::HistoryItem* findVisible(qint64 id) const;

    void activate(const core::HistoryItem& item);
    void editGif(const QString& path);
    void showContextMenu(const QPoint& position);
    void copyImage(const QString& path);
    void toggleFavourite(qint64 id);
    void exportItem(qint64 id);
    void deleteItem(qint64 id);
    void reconcileTags(qint64 id, const QStringList& tags);
    void applyTheme(bool dark);

    QList<core::HistoryItem> m_allItems;
    QList<core::HistoryItem> m_visibleItems;
    int m_currentTab = AllTab;

    QLineEdit* m_search = nullptr;
    QList<QPushButton*> m_tabs;
    QComboBox* m_filter = nullptr;
    QComboBox* m_sort = nullptr;
    HistoryThumbnailView* m_view = nullptr;
    HistoryDetailPanel* m_details = nullptr;
    QLabel* m_statusLeft = nullptr;
    QLabel* m_statusMiddle = nullptr;
};

} // namespace zelmor::widget
