#pragma once

#include "core/HistoryItem.h"

#include <QAbstractListModel>
#include <QCache>
#include <QListView>
#include <QPixmap>
#include <QStyledItemDelegate>

namespace zelmor::widget {

class ThumbnailLoader;

// The visible history rows. The thumbnail comes as decoration once it is decoded; until then
// the decoration is empty and the delegate paints a grey placeholder.
class HistoryGridModel : public QAbstractListModel
{
    Q_OBJECT
public:
    explicit HistoryGridModel(QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;

    void setItems(const QList<core::HistoryItem>& items);
    const core::HistoryItem* item(int row) const;
    qint64 fileSize(int row) const;
    void updateItemTags(qint64 id, const QStringList& tags);

    // Tiles by file path, shared by every view of the process.
    static QCache<QString, QPixmap>& thumbnailCache();

Q_SIGNALS:
    // Only the tile changed: the view repaints the row, where dataChanged would lay out
    // every row again.
    void tileReady(const QModelIndex& index);

private:
    void onTileReady(const QString& path, const QImage& tile);

    QList<core::HistoryItem> m_items;
    QList<qint64> m_sizes;
    ThumbnailLoader* m_loader;
};

class HistoryGridDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void setListMode(bool on) { m_listMode = on; }
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    // The card colours of every history view follow the theme.
    static void applyTheme(bool dark);

private:
    void paintGrid(QPainter* painter, const QRect& card, const QModelIndex& index) const;
    void paintList(QPainter* painter, const QRect& card, const QModelIndex& index) const;

    bool m_listMode = false;
};

class HistoryThumbnailView : public QListView
{
    Q_OBJECT
public:
    explicit HistoryThumbnailView(QWidget* parent = nullptr);

    void setItems(const QList<core::HistoryItem>& items);
    void setListMode(bool on);
    bool listMode() const { return m_listMode; }
    void updateItemTags(qint64 id, const QStringList& tags);
    // Null where no item is.
    const core::HistoryItem* itemAt(const QPoint& position) const;
    HistoryGridModel* gridModel() const { return m_model; }

Q_SIGNALS:
    void itemActivated(const core::HistoryItem& item);
    // Null when nothing is selected.
    void selectionChangedTo(const core::HistoryItem* item);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void applyModeSizes();

    HistoryGridModel* m_model;
    HistoryGridDelegate* m_delegate;
    bool m_listMode = false;
};

} // namespace zelmor::widget
