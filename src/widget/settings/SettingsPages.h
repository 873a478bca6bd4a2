#pragma once

#include <QCoreApplication>

class QWidget;

namespace zelmor::widget::settings {

// The pages of the settings panel that are plain forms over the configuration store.
class SettingsPages
{
    Q_DECLARE_TR_FUNCTIONS(zelmor::widget::SettingsDialog)
public:
    static QWidget* general();
    static QWidget* hotkeys();
    static QWidget* capture();
    static QWidget* pin();
    static QWidget* privacy();
    static QWidget* about();
};

} // namespace zelmor::widget::settings
