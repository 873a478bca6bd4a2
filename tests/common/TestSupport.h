#pragma once

// Small helpers shared by the suites.

#include <QFile>
#include <QPalette>
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

} // namespace zelmor::test
