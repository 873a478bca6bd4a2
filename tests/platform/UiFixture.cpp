// Another program for the desktop tests: a window of named controls that reports on standard
// output, one line each, what happens to them. "where NAME" on standard input answers
// "at NAME X Y WIDTH HEIGHT" with the control's rectangle on the screen.
//   zelmor-ui-fixture TITLE X Y WIDTH HEIGHT

#include <QApplication>
#include <QCheckBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QSocketNotifier>
#include <QSpinBox>
#include <QVBoxLayout>

#include <cstdio>
#include <iostream>
#include <string>

namespace {

void report(const QString& line)
{
    std::cout << line.toStdString() << std::endl;
}

class Pad : public QWidget
{
protected:
    void mousePressEvent(QMouseEvent* e) override
    {
        static const QHash<Qt::MouseButton, QString> names{{Qt::LeftButton, "left"},
                                                           {Qt::RightButton, "right"},
                                                           {Qt::MiddleButton, "middle"},
                                                           {Qt::BackButton, "x1"},
                                                           {Qt::ForwardButton, "x2"}};
        report("press " + names.value(e->button(), QString::number(e->button())));
    }
    void mouseDoubleClickEvent(QMouseEvent* e) override { mousePressEvent(e); }
    void wheelEvent(QWheelEvent* e) override
    {
        report(QStringLiteral("wheel %1 %2").arg(e->angleDelta().x()).arg(e->angleDelta().y()));
    }
};

class KeyReporter : public QObject
{
protected:
    bool eventFilter(QObject*, QEvent* e) override
    {
        if (e->type() == QEvent::KeyPress)
            report(QStringLiteral("key %1").arg(static_cast<QKeyEvent*>(e)->key()));
        return false;
    }
};

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QWidget window;
    window.setWindowTitle(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("Fixture"));
    auto* layout = new QVBoxLayout(&window);

    auto* edit = new QLineEdit;
    edit->setAccessibleName(QStringLiteral("Name field"));
    KeyReporter keys;
    edit->installEventFilter(&keys);
    QObject::connect(edit, &QLineEdit::textChanged, [](const QString& t) { report("text " + t); });
    auto* label = new QLabel(QStringLiteral("Name label"));
    auto* save = new QPushButton(QStringLiteral("Save"));
    QObject::connect(save, &QPushButton::clicked, [] { report(QStringLiteral("clicked Save")); });
    auto* remember = new QCheckBox(QStringLiteral("Remember"));
    QObject::connect(remember, &QCheckBox::toggled,
                     [](bool on) { report(QStringLiteral("toggled %1").arg(on)); });
    auto* count = new QSpinBox;
    count->setAccessibleName(QStringLiteral("Count"));
    count->setRange(0, 100);
    QObject::connect(count, &QSpinBox::valueChanged,
                     [](int v) { report(QStringLiteral("value %1").arg(v)); });
    auto* level = new QSlider(Qt::Horizontal);
    level->setAccessibleName(QStringLiteral("Level"));
    level->setRange(0, 100);
    QObject::connect(level, &QSlider::valueChanged,
                     [](int v) { report(QStringLiteral("level %1").arg(v)); });
    auto* pad = new Pad;
    pad->setAccessibleName(QStringLiteral("Pad"));
    pad->setMinimumSize(200, 80);
    for (QWidget* w :
         {static_cast<QWidget*>(edit), static_cast<QWidget*>(label), static_cast<QWidget*>(save),
          static_cast<QWidget*>(remember), static_cast<QWidget*>(count),
          static_cast<QWidget*>(level), static_cast<QWidget*>(pad)})
        layout->addWidget(w);

    QSocketNotifier input(fileno(stdin), QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, [&] {
        std::string line;
        if (!std::getline(std::cin, line)) {
            input.setEnabled(false);
            return;
        }
        const QString name = QString::fromStdString(line).section(' ', 1);
        for (QWidget* w : window.findChildren<QWidget*>()) {
            const QString wName = w->accessibleName().isEmpty() ? w->property("text").toString()
                                                                : w->accessibleName();
            if (wName == name)
                report(QStringLiteral("at %1 %2 %3 %4 %5")
                           .arg(name)
                           .arg(w->mapToGlobal(QPoint(0, 0)).x())
                           .arg(w->mapToGlobal(QPoint(0, 0)).y())
                           .arg(w->width())
                           .arg(w->height()));
        }
    });

    if (argc > 5) window.setGeometry(atoi(argv[2]), atoi(argv[3]), atoi(argv[4]), atoi(argv[5]));
    window.show();
    window.activateWindow();
    edit->setFocus();
    return app.exec();
}
