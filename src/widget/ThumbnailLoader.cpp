#include "ThumbnailLoader.h"

#include "platform/Threads.h"

#include <QImageReader>
#include <QPainter>
#include <QThread>

#include <climits>

namespace zelmor::widget {

namespace {

const QSize kTileSize(256, 160);
const QSize kDecodeBound(512, 320);
const QColor kTileGrey(34, 34, 34);

} // namespace

ThumbnailLoader::ThumbnailLoader(QObject* parent) : QObject(parent)
{
    // Decoding on every core would take the CPU from the GUI thread while the user scrolls.
    m_pool.setMaxThreadCount(qMax(1, QThread::idealThreadCount() - 1));
}

ThumbnailLoader::~ThumbnailLoader()
{
    m_pool.clear();
    m_pool.waitForDone();
}

void ThumbnailLoader::request(const QString& path)
{
    if (m_pending.contains(path)) return;
    m_pending.insert(path);
    m_priority = m_priority == INT_MAX ? 0 : m_priority + 1;
    m_pool.start(
        [this, path] {
            platform::lowerCurrentThreadPriority();
            const QImage tile = makeTile(path);
            QMetaObject::invokeMethod(
                this,
                [this, path, tile] {
                    m_pending.remove(path);
                    emit ready(path, tile);
                },
                Qt::QueuedConnection);
        },
        m_priority);
}

QImage ThumbnailLoader::makeTile(const QString& path)
{
    QImage picture;
    QImageReader reader(path);
    if (reader.canRead()) {
        const QSize size = reader.size();
        // The decoder then never makes a full-size image of a large capture.
        if (size.isValid())
            reader.setScaledSize(size.scaled(kDecodeBound, Qt::KeepAspectRatioByExpanding));
        picture = reader.read();
    }
    if (picture.isNull()) picture.load(path);

    QImage tile(kTileSize, QImage::Format_RGB32);
    tile.fill(kTileGrey);
    if (!picture.isNull()) {
        const QImage scaled =
            picture.scaled(kTileSize, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
        QPainter painter(&tile);
        painter.drawImage((kTileSize.width() - scaled.width()) / 2,
                          (kTileSize.height() - scaled.height()) / 2, scaled);
    }
    return tile;
}

} // namespace zelmor::widget
