#pragma once

#include <QObject>
#include <QStringList>

namespace zelmor::test {

// The file manager's "show these items" service, for registering on the session bus from a
// thread of its own while the call under test blocks the test's thread.
class FakeFileManager : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")
public:
    QStringList items;
public Q_SLOTS:
    void ShowItems(const QStringList& uris, const QString&) { items += uris; }
};

} // namespace zelmor::test
