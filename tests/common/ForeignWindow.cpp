// Another (Linux) program for the Windows edition's check under Wine: a plain white window at
// a known place, whose pixels a capture through Wine must find. It prints "shown" once mapped.
//   zelmor-test-window TITLE X Y WIDTH HEIGHT

#include <QApplication>
#include <QTimer>
#include <QWidget>
#include <QWindow>

#include <iostream>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    if (argc < 6) return 2;
    QWidget window;
    window.setWindowTitle(QString::fromLocal8Bit(argv[1]));
    window.setStyleSheet(QStringLiteral("background: white"));
    window.setGeometry(atoi(argv[2]), atoi(argv[3]), atoi(argv[4]), atoi(argv[5]));
    window.show();
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (!window.windowHandle() || !window.windowHandle()->isExposed()) return;
        poll.stop();
        std::cout << "shown" << std::endl;
    });
    poll.start(10);
    return app.exec();
}
