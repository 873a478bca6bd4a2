#pragma once

#include <QWidget>

class QLabel;
class QSystemTrayIcon;

namespace zelmor::core {

namespace tool {

// The program's one transient message, at the bottom right of the primary screen. It never
// takes focus or clicks, and a new toast replaces the one on screen at once.
class Toast : public QWidget
{
    Q_OBJECT
public:
    static void showToast(const QString& title, const QString& body, int ms);

    // The toast on screen, or null.
    static Toast* current();

    QString title() const;
    QString body() const; // as shown, with the wrap points after path separators

private:
    Toast();
    void applyStyle();
    void setTexts(const QString& title, const QString& body);

    QLabel* titleLabel;
    QLabel* bodyLabel;
};

} // namespace tool

// Shows a toast; answers whether the tray icon is visible (false without one).
bool notifyUser(const QString& title, const QString& body, int ms);

// The tray icon notifyUser reports on; set once the tray exists.
void setNotificationTrayIcon(QSystemTrayIcon* icon);

// A long path wraps at its separators: a zero-width space follows each "/" and "\".
QString withPathWrapPoints(const QString& text);

} // namespace zelmor::core
