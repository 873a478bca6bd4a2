#pragma once

#include "service/record/FrameStore.h"

#include <QAbstractListModel>
#include <QHash>
#include <QIcon>
#include <QList>

#include <memory>

namespace zelmor::widget {

// The frames of a recording as a strip of numbered thumbnails, decoded when first shown.
class FrameListModel : public QAbstractListModel
{
    Q_OBJECT
public:
    using QAbstractListModel::QAbstractListModel;

    // Shows `rows` of `store` in one model reset; the thumbnails of the old ones go with them.
    void setFrames(std::shared_ptr<const service::record::FrameStore> store,
                   const QList<int>& rows);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

private:
    QIcon thumbnail(int row) const;

    QList<int> m_rows;
    // Its own reader: the strip reads in its own order, apart from the preview's.
    std::unique_ptr<service::record::FrameReader> m_reader;
    mutable QHash<int, QIcon> m_thumbnails;
};

} // namespace zelmor::widget
