#pragma once

#include <QObject>

class QSystemTrayIcon;

namespace zelmor::widget {
class TrayMenu;
}

namespace zelmor::manager {

class ActionManager;

// The tray icon and its menu: the program's face while no window is open. The menu is made
// anew whenever hotkeys or the language change, so no row is ever updated in place.
class TrayService : public QObject
{
    Q_OBJECT
public:
    explicit TrayService(ActionManager* actions, QObject* parent = nullptr);
    ~TrayService() override;

    QSystemTrayIcon* trayIcon() const { return m_trayIcon; }
    widget::TrayMenu* menu() const { return m_menu; }

public Q_SLOTS:
    void show();
    void retranslate();
    void rebuildMenu();

private:
    QSystemTrayIcon* m_trayIcon;
    widget::TrayMenu* m_menu = nullptr;
    ActionManager* m_actions;
};

} // namespace zelmor::manager
