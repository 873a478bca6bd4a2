// Another application for the tests: one titled window that holds the focus until killed.
// It prints "shown" once the window is on screen and its request for the focus has been sent,
// and "menu" whenever a menu of its own opens, such as the line's context menu.
//   zelmor-test-window TITLE [X Y WIDTH HEIGHT]

#include <QApplication>
#include <QLineEdit>
#include <QMenu>
#include <QTimer>
#include <QWindow>

#include <iostream>

namespace {

class MenuReporter : public QObject
{
protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Show && qobject_cast<QMenu*>(watched))
            std::cout << "menu" << std::endl;
        return false;
    }
};

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    MenuReporter menus;
    app.installEventFilter(&menus);
    QLineEdit window;
    window.setWindowTitle(argc > 1 ? QString::fromLocal8Bit(argv[1])
                                   : QStringLiteral("Foreign window"));
    if (argc > 5) window.setGeometry(atoi(argv[2]), atoi(argv[3]), atoi(argv[4]), atoi(argv[5]));
    window.show();
    // Asked for only once the window is mapped: a request deferred until then would reach the
    // window manager at a moment nobody waits for, and undo what a test has asked of it since.
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (!window.windowHandle() || !window.windowHandle()->isExposed()) return;
        poll.stop();
        window.activateWindow();
        std::cout << "shown" << std::endl;
    });
    poll.start(10);
    return app.exec();
}
