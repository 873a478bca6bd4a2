#pragma once

// Every suite runs with HOME and the XDG folders inside a fresh temporary folder, set
// before the application object exists, so no test reads or writes a real user's files.

#include "core/Resources.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>

namespace zelmor::test {

inline QTemporaryDir& sandboxRoot()
{
    static QTemporaryDir root(QDir::tempPath() + QStringLiteral("/zelmor-test-XXXXXX"));
    return root;
}

inline void enterSandbox()
{
    const QByteArray root = sandboxRoot().path().toUtf8();
    qputenv("HOME", root);
    qputenv("XDG_CONFIG_HOME", root + "/config");
    qputenv("XDG_DATA_HOME", root + "/data");
    qputenv("XDG_CACHE_HOME", root + "/cache");
    qunsetenv("XDG_PICTURES_DIR");
}

} // namespace zelmor::test

#define ZELMOR_TEST_MAIN(TestObject, AppType)                                                      \
    int main(int argc, char** argv)                                                                \
    {                                                                                              \
        zelmor::test::enterSandbox();                                                              \
        AppType app(argc, argv);                                                                   \
        zelmor::core::initResources();                                                             \
        app.setOrganizationName(QStringLiteral("Zelmor"));                                         \
        app.setApplicationName(QStringLiteral("Zelmor"));                                          \
        TestObject test;                                                                           \
        return QTest::qExec(&test, argc, argv);                                                    \
    }
