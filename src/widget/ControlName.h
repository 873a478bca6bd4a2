#pragma once

#include <QLabel>
#include <QPushButton>
#include <QString>
#include <QWidget>

namespace zelmor::widget {

// A control that shows an icon or a sign instead of words: screen readers and AT-SPI clients
// read its tooltip as its name.
inline void setTipAndName(QWidget* control, const QString& tip)
{
    control->setToolTip(tip);
    control->setAccessibleName(tip);
}

// Widgets that style sheets and tests find by object name.
inline QLabel* makeLabel(const QString& text, const char* objectName, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setObjectName(QLatin1String(objectName));
    return label;
}

inline QPushButton* makeButton(const QString& text, const char* objectName, QWidget* parent)
{
    auto* button = new QPushButton(text, parent);
    button->setObjectName(QLatin1String(objectName));
    return button;
}

} // namespace zelmor::widget
