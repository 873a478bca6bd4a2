#pragma once

#include <QDesktopServices>
#include <QObject>
#include <QUrl>

namespace zelmor::test {

// Takes the place of the desktop's handler for file URLs, so that no suite starts a real file
// manager; it keeps the last URL it was given.
class UrlCatcher : public QObject
{
    Q_OBJECT
public:
    UrlCatcher() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "open"); }
    ~UrlCatcher() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

    QUrl last;

public Q_SLOTS:
    void open(const QUrl& url) { last = url; }
};

} // namespace zelmor::test
