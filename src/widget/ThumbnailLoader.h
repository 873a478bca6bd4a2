#pragma once

#include <QImage>
#include <QObject>
#include <QSet>
#include <QThreadPool>

namespace zelmor::widget {

// Decodes history thumbnails on pool threads so that scrolling never waits for a file. A path
// is decoded at most once at a time, and the newest request runs first: the rows on screen
// come before the rows the user has already scrolled past.
class ThumbnailLoader : public QObject
{
    Q_OBJECT
public:
    explicit ThumbnailLoader(QObject* parent = nullptr);
    // Drops the queue and waits for the running decodes; their results are never delivered.
    ~ThumbnailLoader() override;

    void request(const QString& path);
    bool isPending(const QString& path) const { return m_pending.contains(path); }

    // The 256x160 tile of a file, decoded at 512x320 at most; a grey tile when it can't be read.
    static QImage makeTile(const QString& path);

Q_SIGNALS:
    void ready(const QString& path, const QImage& tile);

private:
    QThreadPool m_pool;
    QSet<QString> m_pending;
    int m_priority = 0;
};

} // namespace zelmor::widget
