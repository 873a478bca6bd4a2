// Another application for the tests: one titled window that holds the focus until killed.
//   zelmor-test-window TITLE [X Y WIDTH HEIGHT]

#include <QApplication>
#include <QLineEdit>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QLineEdit window;
    window.setWindowTitle(argc > 1 ? QString::fromLocal8Bit(argv[1])
                                   : QStringLiteral("Foreign window"));
    if (argc > 5) window.setGeometry(atoi(argv[2]), atoi(argv[3]), atoi(argv[4]), atoi(argv[5]));
    window.show();
    window.activateWindow();
    return app.exec();
}
