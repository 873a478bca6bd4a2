#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QStringList>
#include <QThread>

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

// A FakeFileManager on the session bus for the lifetime of this object.
class FileManagerOnBus
{
public:
    FileManagerOnBus()
    {
        m_manager.moveToThread(&m_thread);
        m_thread.start();
        registered = m_bus.registerObject(kPath, &m_manager, QDBusConnection::ExportAllSlots) &&
                     m_bus.registerService(kService);
    }
    ~FileManagerOnBus()
    {
        m_bus.unregisterService(kService);
        m_bus.unregisterObject(kPath);
        QDBusConnection::disconnectFromBus(kConnection);
        m_thread.quit();
        m_thread.wait();
    }

    // The URIs asked to be shown so far.
    QStringList shown()
    {
        QStringList items;
        QMetaObject::invokeMethod(
            &m_manager, [&] { items = m_manager.items; }, Qt::BlockingQueuedConnection);
        return items;
    }

    bool registered = false;

private:
    static inline const QString kPath = QStringLiteral("/org/freedesktop/FileManager1");
    static inline const QString kService = QStringLiteral("org.freedesktop.FileManager1");
    static inline const QString kConnection = QStringLiteral("fake-file-manager");

    QThread m_thread;
    FakeFileManager m_manager;
    QDBusConnection m_bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, kConnection);
};

} // namespace zelmor::test
