#pragma once

// Small helpers shared by the suites.

#include "service/capture/WindowList.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QAccessible>
#include <QComboBox>
#include <QCoreApplication>
#include <QFile>
#include <QLineEdit>
#include <QPalette>
#include <QProcess>
#include <QScreen>
#include <QSlider>
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

// The controls under `root` that a screen reader would read out without a name, the line edits
// inside spin and combo boxes left to their boxes.
inline QString unnamedControls(QWidget* root)
{
    QStringList unnamed;
    for (QWidget* w : root->findChildren<QWidget*>()) {
        const bool inBox = qobject_cast<QAbstractSpinBox*>(w->parentWidget()) ||
                           qobject_cast<QComboBox*>(w->parentWidget());
        if ((qobject_cast<QAbstractButton*>(w) || (qobject_cast<QLineEdit*>(w) && !inBox) ||
             qobject_cast<QComboBox*>(w) || qobject_cast<QAbstractSpinBox*>(w) ||
             qobject_cast<QSlider*>(w) || qobject_cast<QAbstractItemView*>(w)) &&
            QAccessible::queryAccessibleInterface(w)->text(QAccessible::Name).isEmpty())
            unnamed << w->metaObject()->className() + (' ' + w->objectName());
    }
    return unnamed.join(QStringLiteral(", "));
}

// The button under `root` that shows this text, or null.
template <typename Button = QAbstractButton>
Button* buttonWithText(QWidget* root, const QString& text)
{
    for (Button* b : root->findChildren<Button*>())
        if (b->text() == text) return b;
    return nullptr;
}

// Where the window list, top first, holds a window of that title, or that handle; -1 if nowhere.
inline int windowIndex(const QString& title, quintptr handle = 0)
{
    const QList<service::capture::WindowInfo> windows = service::capture::listTopLevelWindows();
    for (int i = 0; i < windows.size(); ++i)
        if (handle ? windows[i].handle == handle : windows[i].title == title) return i;
    return -1;
}

// Input through the X server: xdotool with these arguments, say "key ctrl+a F1".
inline bool xdotool(const QString& arguments)
{
    return QProcess::execute("xdotool", arguments.split(QLatin1Char(' '))) == 0;
}

// The colour the screen shows at `at`.
inline QRgb screenPixel(const QPoint& at)
{
    const QImage one =
        QGuiApplication::primaryScreen()->grabWindow(0, at.x(), at.y(), 1, 1).toImage();
    return one.pixel(0, 0);
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
