#pragma once

#include "platform/Input.h"

#include <QAbstractButton>
#include <QApplication>
#include <QPoint>
#include <QWidget>

// The pointer driven through the display server, as a user would: for suites that test what
// reaches other programs and windows that must not take the focus.
namespace zelmor::test {

template <typename T> T* shownTopLevel()
{
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto* t = qobject_cast<T*>(w); t && t->isVisible()) return t;
    return nullptr;
}

inline bool moveTo(const QPoint& at)
{
    return platform::setCursorPosition({at.x(), at.y()});
}

inline bool click(const QPoint& at)
{
    return moveTo(at) && platform::sendMouseButtons({{platform::MouseButton::Left, true},
                                                     {platform::MouseButton::Left, false}});
}

// The button of that text or object name, clicked at its centre.
inline bool clickButton(QWidget* parent, const QString& text)
{
    for (auto* button : parent->findChildren<QAbstractButton*>())
        if (button->text() == text || button->objectName() == text)
            return click(button->mapToGlobal(button->rect().center()));
    return false;
}

// Pressed at `from`, moved in steps, released at `to`.
inline bool drag(const QPoint& from, const QPoint& to)
{
    if (!moveTo(from) || !platform::sendMouseButtons({{platform::MouseButton::Left, true}}))
        return false;
    for (int step = 1; step <= 5; ++step)
        if (!moveTo(from + (to - from) * step / 5)) return false;
    return platform::sendMouseButtons({{platform::MouseButton::Left, false}});
}

} // namespace zelmor::test
