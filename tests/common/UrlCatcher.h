#pragma once

#include <QDesktopServices>
#include <QObject>
#include <QUrl>

namespace zelmor::test {

// Takes the place of the desktop's handlers for these schemes, so that no suite starts a real
// file manager or browser; it keeps every URL it was given.
class UrlCatcher : public QObject
{
    Q_OBJECT
public:
    explicit UrlCatcher(const QStringList& schemes = {QStringLiteral("file")}) : m_schemes(schemes)
    {
        for (const QString& scheme : m_schemes)
            QDesktopServices::setUrlHandler(scheme, this, "open");
    }
    ~UrlCatcher() override
    {
        for (const QString& scheme : m_schemes)
            QDesktopServices::unsetUrlHandler(scheme);
    }

    QList<QUrl> opened;
    QUrl last;

public Q_SLOTS:
    void open(const QUrl& url) { opened << (last = url); }

private:
    QStringList m_schemes;
};

} // namespace zelmor::test
