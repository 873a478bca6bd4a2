#include "FrameListModel.h"

#include <QPixmap>

namespace zelmor::widget {

namespace {

const QSize kThumbnailSize(100, 70);
// A strip shows a handful of frames; the thumbnails themselves are kept.
constexpr qint64 kReaderCacheBytes = qint64(16) << 20;

} // namespace

void FrameListModel::setFrames(std::shared_ptr<const service::record::FrameStore> store,
                               const QList<int>& rows)
{
    beginResetModel();
    if (!m_reader || m_reader->store() != store)
        m_reader =
            std::make_unique<service::record::FrameReader>(std::move(store), kReaderCacheBytes);
    m_rows = rows;
    m_thumbnails.clear();
    endResetModel();
}

int FrameListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant FrameListModel::data(const QModelIndex& index, int role) const
{
    const int row = index.row();
    if (!index.isValid() || row < 0 || row >= m_rows.size()) return QVariant();
    switch (role) {
    case Qt::DisplayRole:
        return QStringLiteral("#%1").arg(row + 1);
    case Qt::DecorationRole:
        return thumbnail(row);
    case Qt::TextAlignmentRole:
        return int(Qt::AlignCenter);
    default:
        return QVariant();
    }
}

QIcon FrameListModel::thumbnail(int row) const
{
    auto cached = m_thumbnails.constFind(row);
    if (cached != m_thumbnails.constEnd()) return *cached;
    const QIcon icon(QPixmap::fromImage(
        m_reader->frame(m_rows.at(row))
            .scaled(kThumbnailSize, Qt::KeepAspectRatio, Qt::SmoothTransformation)));
    m_thumbnails.insert(row, icon);
    return icon;
}

} // namespace zelmor::widget
