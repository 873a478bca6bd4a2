#pragma once

#include <QAbstractListModel>
#include <QHash>
#include <QIcon>
#include <QImage>
#include <QList>

namespace zelmor::widget {

// The frames of a recording as a strip of numbered thumbnails, made when first shown.
class FrameListModel : public QAbstractListModel
{
    Q_OBJECT
public:
    using QAbstractListModel::QAbstractListModel;

    // Replaces the frames in one model reset; the thumbnails of the old ones go with them.
    void setFrames(const QList<QImage>& frames);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

private:
    QIcon thumbnail(int row) const;

    QList<QImage> m_frames;
    mutable QHash<int, QIcon> m_thumbnails;
};

} // namespace zelmor::widget
