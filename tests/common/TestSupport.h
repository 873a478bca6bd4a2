#pragma once

// Small helpers shared by the suites.

#include <QCoreApplication>
#include <QFile>
#include <QPalette>
#include <QProcess>
#include <QWidget>

#include <memory>

namespace zelmor::test {

inline QByteArray readFile(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

inline bool writeFile(const QString& path, const QByteArray& bytes)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly | QIODevice::Truncate) && f.write(bytes) == bytes.size();
}

// Presses the keys one after another, in this order, through the X server.
inline bool xdotoolKey(const QString& keys)
{
    return QProcess::execute("xdotool", QStringList{"key"} + keys.split(QLatin1Char(' '))) == 0;
}

// A shown top-level window filled with one colour, for pixel checks on the screen.
inline std::unique_ptr<QWidget> makeSolidWindow(const QString& title, const QColor& colour,
                                                const QRect& geometry)
{
    auto w = std::make_unique<QWidget>();
    w->setWindowTitle(title);
    QPalette p = w->palette();
    p.setColor(QPalette::Window, colour);
    w->setPalette(p);
    w->setAutoFillBackground(true);
    w->setGeometry(geometry);
    w->show();
    return w;
}

// Starts another application with one focused window of that title, and returns once the window
// is shown and its focus request sent; it runs until deleted.
inline std::unique_ptr<QProcess> startForeignWindow(const QString& title, const QRect& geometry)
{
    auto process = std::make_unique<QProcess>();
    process->start(QCoreApplication::applicationDirPath() + QStringLiteral("/zelmor-test-window"),
                   {title, QString::number(geometry.x()), QString::number(geometry.y()),
                    QString::number(geometry.width()), QString::number(geometry.height())});
    QByteArray said;
    while (!said.contains("shown") && process->waitForReadyRead(10000))
        said += process->readAllStandardOutput();
    return process;
}

} // namespace zelmor::test
