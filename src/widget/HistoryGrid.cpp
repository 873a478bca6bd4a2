#include "HistoryGrid.h"

#include "ThumbnailLoader.h"
#include "core/Utilities.h"

#include <QFileInfo>
#include <QPaintEvent>
#include <QPainter>
#include <QResizeEvent>

namespace zelmor::widget {

namespace {

constexpr int kCacheCost = 300;
const QSize kGridIcon(256, 160);
const QSize kListIcon(128, 80);
const QSize kGridCell(278, 220);
const QSize kGridHint(266, 208);
const QSize kListHint(320, 88);
constexpr int kListRowHeight = 88;
constexpr int kListMinWidth = 144;
const QColor kTileGrey(34, 34, 34);

enum Colour { CardBackground, NormalBorder, HoverBorder, SelectedBorder, NameText, MetaText };
QColor g_colours[6] = {QColor(255, 255, 255), QColor(218, 218, 218), QColor(187, 187, 187),
                       QColor(245, 124, 0),   QColor(102, 102, 102), QColor(153, 153, 153)};

QString metaLine(const core::HistoryItem& item, qint64 bytes)
{
    return QStringLiteral("%1 · %2×%3 · %4")
        .arg(item.createdAt.toString(QStringLiteral("yyyy-MM-dd HH:mm")))
        .arg(item.width)
        .arg(item.height)
        .arg(core::formatFileSize(bytes));
}

QFont sizedFont(const QFont& base, int points, bool bold = false)
{
    QFont font(base);
    font.setPointSize(points);
    font.setBold(bold);
    return font;
}

} // namespace

HistoryGridModel::HistoryGridModel(QObject* parent)
    : QAbstractListModel(parent), m_loader(new ThumbnailLoader(this))
{
    connect(m_loader, &ThumbnailLoader::ready, this, &HistoryGridModel::onTileReady);
}

QCache<QString, QPixmap>& HistoryGridModel::thumbnailCache()
{
    static QCache<QString, QPixmap> cache(kCacheCost);
    return cache;
}

int HistoryGridModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_items.size());
}

QVariant HistoryGridModel::data(const QModelIndex& index, int role) const
{
    const core::HistoryItem* entry = item(index.row());
    if (!entry) return {};
    switch (role) {
    case Qt::DisplayRole:
        return QFileInfo(entry->path).fileName();
    case Qt::ToolTipRole:
        return entry->path;
    case Qt::DecorationRole:
        if (const QPixmap* tile = thumbnailCache().object(entry->path)) return *tile;
        m_loader->request(entry->path);
        return {};
    }
    return {};
}

void HistoryGridModel::setItems(const QList<core::HistoryItem>& items)
{
    beginResetModel();
    m_items = items;
    m_sizes.clear();
    for (const core::HistoryItem& entry : m_items)
        m_sizes << QFileInfo(entry.path).size();
    endResetModel();
}

const core::HistoryItem* HistoryGridModel::item(int row) const
{
    return row >= 0 && row < m_items.size() ? &m_items[row] : nullptr;
}

qint64 HistoryGridModel::fileSize(int row) const
{
    return row >= 0 && row < m_sizes.size() ? m_sizes[row] : 0;
}

void HistoryGridModel::updateItemTags(qint64 id, const QStringList& tags)
{
    for (int row = 0; row < m_items.size(); ++row) {
        if (m_items[row].id != id) continue;
        m_items[row].tags = tags;
        emit dataChanged(index(row), index(row));
    }
}

// A tile for a path no row shows any more is still worth keeping for the next filter.
void HistoryGridModel::onTileReady(const QString& path, const QImage& tile)
{
    thumbnailCache().insert(path, new QPixmap(QPixmap::fromImage(tile)), 1);
    for (int row = 0; row < m_items.size(); ++row)
        if (m_items[row].path == path) emit tileReady(index(row));
}

void HistoryGridDelegate::applyTheme(bool dark)
{
    if (dark) {
        const QColor colours[] = {{35, 35, 40},  {51, 51, 57},    {74, 74, 85},
                                  {245, 124, 0}, {180, 180, 184}, {154, 154, 160}};
        std::copy(std::begin(colours), std::end(colours), g_colours);
    } else {
        const QColor colours[] = {{255, 255, 255}, {218, 218, 218}, {187, 187, 187},
                                  {245, 124, 0},   {102, 102, 102}, {153, 153, 153}};
        std::copy(std::begin(colours), std::end(colours), g_colours);
    }
}

QSize HistoryGridDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const
{
    return m_listMode ? kListHint : kGridHint;
}

void HistoryGridDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                const QModelIndex& index) const
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    QPen pen(g_colours[NormalBorder], 1);
    if (option.state & QStyle::State_Selected)
        pen = QPen(g_colours[SelectedBorder], 2);
    else if (option.state & QStyle::State_MouseOver)
        pen = QPen(g_colours[HoverBorder], 1);
    painter->setPen(pen);
    painter->setBrush(g_colours[CardBackground]);
    painter->drawRoundedRect(option.rect, 4, 4);
    const auto* model = qobject_cast<const HistoryGridModel*>(index.model());
    if (model && model->item(index.row())) {
        painter->setFont(option.font);
        if (m_listMode)
            paintList(painter, option.rect, index);
        else
            paintGrid(painter, option.rect, index);
    }
    painter->restore();
}

void HistoryGridDelegate::paintGrid(QPainter* painter, const QRect& card,
                                    const QModelIndex& index) const
{
    const auto* model = static_cast<const HistoryGridModel*>(index.model());
    const core::HistoryItem& item = *model->item(index.row());
    const QRect thumb(card.topLeft() + QPoint(5, 5), kGridIcon);
    painter->fillRect(thumb, kTileGrey);
    const QPixmap tile = index.data(Qt::DecorationRole).value<QPixmap>();
    if (!tile.isNull()) painter->drawPixmap(thumb, tile);

    const QRect nameRect(thumb.left(), thumb.bottom() + 1 + 4, kGridIcon.width(), 18);
    painter->setFont(sizedFont(painter->font(), 9));
    painter->setPen(g_colours[NameText]);
    const QString name = QFileInfo(item.path).fileName();
    painter->drawText(nameRect, Qt::AlignLeft | Qt::AlignVCenter,
                      painter->fontMetrics().elidedText(name, Qt::ElideRight, nameRect.width()));

    const QRect metaRect(nameRect.left(), nameRect.bottom() + 1, kGridIcon.width(), 16);
    painter->setFont(sizedFont(painter->font(), 8));
    painter->setPen(g_colours[MetaText]);
    painter->drawText(
        metaRect, Qt::AlignLeft | Qt::AlignVCenter,
        painter->fontMetrics().elidedText(metaLine(item, model->fileSize(index.row())),
                                          Qt::ElideRight, metaRect.width()));
}

void HistoryGridDelegate::paintList(QPainter* painter, const QRect& card,
                                    const QModelIndex& index) const
{
    const auto* model = static_cast<const HistoryGridModel*>(index.model());
    const core::HistoryItem& item = *model->item(index.row());
    const QRect thumb(card.left() + 8, card.top() + (card.height() - kListIcon.height()) / 2,
                      kListIcon.width(), kListIcon.height());
    painter->fillRect(thumb, kTileGrey);
    const QPixmap tile = index.data(Qt::DecorationRole).value<QPixmap>();
    if (!tile.isNull()) {
        // Drawn scaled rather than scaled first: no new pixmap per row and paint.
        const QSize fitted = tile.size().scaled(thumb.size(), Qt::KeepAspectRatio);
        QRect target(QPoint(), fitted);
        target.moveCenter(thumb.center());
        painter->setRenderHint(QPainter::SmoothPixmapTransform);
        painter->drawPixmap(target, tile);
    }

    const int textLeft = thumb.right() + 1 + 12;
    const int textWidth = qMax(0, card.right() - 8 - textLeft);
    const int top = card.top() + (card.height() - 80) / 2;
    const QRect nameRect(textLeft, top, textWidth, 40);
    painter->setFont(sizedFont(painter->font(), 10, true));
    painter->setPen(g_colours[NameText]);
    const QString name = QFileInfo(item.path).fileName();
    painter->drawText(nameRect, Qt::AlignLeft | Qt::AlignVCenter,
                      painter->fontMetrics().elidedText(name, Qt::ElideRight, textWidth));
    const QRect metaRect(textLeft, top + 40, textWidth, 40);
    painter->setFont(sizedFont(painter->font(), 9));
    painter->setPen(g_colours[MetaText]);
    painter->drawText(metaRect, Qt::AlignLeft | Qt::AlignVCenter,
                      painter->fontMetrics().elidedText(
                          metaLine(item, model->fileSize(index.row())), Qt::ElideRight, textWidth));
}

HistoryThumbnailView::HistoryThumbnailView(QWidget* parent)
    : QListView(parent), m_model(new HistoryGridModel(this)),
      m_delegate(new HistoryGridDelegate(this))
{
    setObjectName(QStringLiteral("historyThumbView"));
    setAccessibleName(tr("History items", "history.view"));
    setViewMode(QListView::IconMode);
    setResizeMode(QListView::Adjust);
    setUniformItemSizes(true);
    setMovement(QListView::Static);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setSpacing(12);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setContextMenuPolicy(Qt::CustomContextMenu);
    setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_Hover);
    // An opaque viewport lets scrolling move the painted pixels and repaint only the strip
    // that comes into view; a styled background would repaint all of it on every step.
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    setModel(m_model);
    setItemDelegate(m_delegate);
    connect(m_model, &HistoryGridModel::tileReady, this,
            qOverload<const QModelIndex&>(&QAbstractItemView::update));
    applyModeSizes();
    connect(this, &QAbstractItemView::activated, this, [this](const QModelIndex& index) {
        if (const core::HistoryItem* entry = m_model->item(index.row())) emit itemActivated(*entry);
    });
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        const QModelIndexList rows = selectionModel()->selectedIndexes();
        emit selectionChangedTo(rows.isEmpty() ? nullptr : m_model->item(rows.first().row()));
    });
}

void HistoryThumbnailView::setItems(const QList<core::HistoryItem>& items)
{
    m_model->setItems(items);
}

void HistoryThumbnailView::setListMode(bool on)
{
    m_listMode = on;
    m_delegate->setListMode(on);
    setViewMode(on ? QListView::ListMode : QListView::IconMode);
    setMovement(QListView::Static); // the icon mode would make the tiles draggable
    applyModeSizes();
}

void HistoryThumbnailView::updateItemTags(qint64 id, const QStringList& tags)
{
    m_model->updateItemTags(id, tags);
}

const core::HistoryItem* HistoryThumbnailView::itemAt(const QPoint& position) const
{
    const QModelIndex index = indexAt(position);
    return index.isValid() ? m_model->item(index.row()) : nullptr;
}

void HistoryThumbnailView::resizeEvent(QResizeEvent* event)
{
    QListView::resizeEvent(event);
    if (m_listMode) applyModeSizes();
}

// The list view paints every row in the bounding rectangle of what needs painting; while
// scrolling under the pointer that is the new strip and the hovered row far apart, so each
// part is painted on its own.
void HistoryThumbnailView::paintEvent(QPaintEvent* event)
{
    QPainter(viewport()).fillRect(event->rect(), palette().brush(QPalette::Base));
    for (const QRect& part : event->region()) {
        QPaintEvent partEvent(part);
        QListView::paintEvent(&partEvent);
    }
}

void HistoryThumbnailView::applyModeSizes()
{
    if (m_listMode) {
        setIconSize(kListIcon);
        setGridSize(QSize(qMax(kListMinWidth, viewport()->width()), kListRowHeight));
    } else {
        setIconSize(kGridIcon);
        setGridSize(kGridCell);
    }
}

} // namespace zelmor::widget
