// A Wayland-native window for the desktop tools' check. It reports on standard output what
// reaches it ("text T", "hotkey" for Ctrl+Alt+J, "pressed", "scrolled N") and, once shown,
// where its button and list are inside the window ("at NAME X Y", their centres). With
// "churn" it then changes its title 10,000 times, as a busy program may, and says "churned".
//   zelmor-wl-tool-target TITLE [churn]

#include <QApplication>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScrollBar>
#include <QShortcut>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>

#include <iostream>

namespace {
void report(const QString& line)
{
    std::cout << line.toStdString() << std::endl;
}
} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QWidget window;
    window.setWindowTitle(QString::fromLocal8Bit(argc > 1 ? argv[1] : "target"));
    // A colour a capture of the free area must find.
    QPalette orange = window.palette();
    orange.setColor(QPalette::Window, QColor(255, 128, 0));
    window.setPalette(orange);
    window.setAutoFillBackground(true);
    auto* layout = new QVBoxLayout(&window);
    auto* edit = new QLineEdit;
    auto* button = new QPushButton(QStringLiteral("Press"));
    auto* list = new QListWidget;
    for (int i = 0; i < 300; ++i)
        list->addItem(QStringLiteral("row %1").arg(i));
    for (QWidget* w : {static_cast<QWidget*>(edit), static_cast<QWidget*>(button),
                       static_cast<QWidget*>(list)}) {
        w->setFixedSize(300, w == list ? 200 : w->sizeHint().height());
        layout->addWidget(w);
    }
    layout->addStretch();
    QObject::connect(edit, &QLineEdit::textChanged, [](const QString& t) { report("text " + t); });
    QObject::connect(button, &QPushButton::clicked, [] { report(QStringLiteral("pressed")); });
    QObject::connect(list->verticalScrollBar(), &QScrollBar::valueChanged,
                     [](int v) { report(QStringLiteral("scrolled %1").arg(v)); });
    QObject::connect(new QShortcut(QKeySequence(QStringLiteral("Ctrl+Alt+J")), &window),
                     &QShortcut::activated, [] { report(QStringLiteral("hotkey")); });
    window.show();
    edit->setFocus();
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (!window.windowHandle()->isExposed()) return;
        poll.stop();
        for (QWidget* w : {static_cast<QWidget*>(button), static_cast<QWidget*>(list)}) {
            const QPoint centre = w->mapTo(&window, w->rect().center());
            report(QStringLiteral("at %1 %2 %3")
                       .arg(w == button ? "button" : "list")
                       .arg(centre.x())
                       .arg(centre.y()));
        }
        if (argc < 3) return;
        // A few at a time: the event loop sends each batch on before the next.
        auto* churn = new QTimer(&window);
        QObject::connect(churn, &QTimer::timeout, [&window, churn, n = 0]() mutable {
            for (int i = 0; i < 5; ++i)
                window.setWindowTitle(QStringLiteral("title %1").arg(n++));
            if (n < 10000) return;
            churn->stop();
            report(QStringLiteral("churned"));
        });
        churn->start(1);
    });
    poll.start(10);
    return app.exec();
}
