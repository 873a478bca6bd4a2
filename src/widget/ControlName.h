#pragma once

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

} // namespace zelmor::widget
