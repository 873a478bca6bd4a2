// Another program for the desktop tests: a window of named controls that reports on standard
// output what happens to them. Commands on standard input:
//   where NAME             answers "at NAME X Y WIDTH HEIGHT", the control's screen rectangle
//   add KIND COUNT NAME    adds controls to a second window, "TITLE extras", named NAME, or
//                          "NAME 1" to "NAME COUNT" when COUNT > 1. KIND: label, edit, button,
//                          hidden (a button never shown), echo (a label showing NAME and then
//                          the first window's text)
// Each window, once on screen, is announced as "shown TITLE"; a menu of its own, such as the
// line's context menu, as "menu".
//   zelmor-ui-fixture TITLE X Y WIDTH HEIGHT

#include <QApplication>
#include <QCursor>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSlider>
#include <QSocketNotifier>
#include <QSpinBox>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>

#include <iostream>
#include <memory>

#include <unistd.h>

namespace {

void report(const QString& line)
{
    std::cout << line.toStdString() << std::endl;
}

// Until a window is exposed, the window manager's placement (the frame it adds around the
// window) may not have reached this program, and the rectangles it answers would be off.
// A focus request is sent then too, not deferred by Qt to a moment nobody waits for.
void announceWhenShown(QWidget* window, bool activate)
{
    auto* poll = new QTimer(window);
    QObject::connect(poll, &QTimer::timeout, window, [window, poll, activate] {
        if (!window->windowHandle() || !window->windowHandle()->isExposed()) return;
        poll->deleteLater();
        if (activate) {
            window->activateWindow();
            // A round trip sends the request on before the announcement: a late activation would
            // undo what the test does to the window after it.
            QCursor::pos();
        }
        report(QStringLiteral("shown ") + window->windowTitle());
    });
    poll->start(10);
}

// The line's keys, and every menu of this program as it opens.
class Reporter : public QObject
{
public:
    QObject* line = nullptr;

protected:
    bool eventFilter(QObject* watched, QEvent* e) override
    {
        const auto* key = static_cast<QKeyEvent*>(e);
        if (e->type() == QEvent::Show && qobject_cast<QMenu*>(watched))
            report(QStringLiteral("menu"));
        else if (watched == line && e->type() == QEvent::KeyPress)
            report(QStringLiteral("key %1").arg(key->key()));
        else if (watched == line && e->type() == QEvent::KeyRelease && !key->isAutoRepeat())
            report(QStringLiteral("release %1").arg(key->key()));
        return false;
    }
};

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    Reporter reporter;
    app.installEventFilter(&reporter);
    QWidget window;
    window.setWindowTitle(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("Fixture"));
    auto* layout = new QVBoxLayout(&window);

    auto* edit = new QLineEdit;
    edit->setAccessibleName(QStringLiteral("Line"));
    reporter.line = edit;
    QObject::connect(edit, &QLineEdit::textChanged, [](const QString& t) { report("text " + t); });
    auto* save = new QPushButton(QStringLiteral("Save"));
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
    auto* pad = new QWidget;
    pad->setAccessibleName(QStringLiteral("Pad"));
    pad->setMinimumSize(200, 80);
    for (QWidget* w : QList<QWidget*>{edit, save, count, level, pad})
        layout->addWidget(w);

    std::unique_ptr<QWidget> extras;
    QGridLayout* extrasLayout = nullptr;
    const auto addOne = [&](const QString& kind, const QString& name) {
        QWidget* w = nullptr;
        if (kind == QLatin1String("label")) {
            w = new QLabel(name);
        } else if (kind == QLatin1String("echo")) {
            auto* echo = new QLabel(name + ' ' + edit->text());
            QObject::connect(edit, &QLineEdit::textChanged, echo,
                             [echo, name](const QString& t) { echo->setText(name + ' ' + t); });
            w = echo;
        } else if (kind == QLatin1String("edit")) {
            auto* field = new QLineEdit;
            field->setAccessibleName(name);
            QObject::connect(field, &QLineEdit::textChanged, [name](const QString& t) {
                report(QStringLiteral("changed %1: %2").arg(name, t));
            });
            w = field;
        } else if (kind == QLatin1String("button") || kind == QLatin1String("hidden")) {
            auto* button = new QPushButton(name);
            QObject::connect(button, &QPushButton::clicked,
                             [name] { report(QStringLiteral("clicked %1").arg(name)); });
            w = button;
        } else {
            return;
        }
        const int n = extrasLayout->count();
        extrasLayout->addWidget(w, n / 4, n % 4);
        if (kind == QLatin1String("hidden")) w->hide();
    };
    const auto addExtras = [&](const QString& kind, int count, const QString& name) {
        if (!extras) {
            extras = std::make_unique<QWidget>();
            extras->setWindowTitle(window.windowTitle() + QStringLiteral(" extras"));
            extrasLayout = new QGridLayout(extras.get());
            extras->move(window.geometry().right() + 20, window.geometry().top());
            announceWhenShown(extras.get(), false);
        }
        for (int i = 1; i <= count; ++i)
            addOne(kind, count > 1 ? QStringLiteral("%1 %2").arg(name).arg(i) : name);
        extras->adjustSize();
        extras->show();
    };

    const auto run = [&](const QString& command) {
        if (command.startsWith(QLatin1String("add "))) {
            addExtras(command.section(' ', 1, 1), command.section(' ', 2, 2).toInt(),
                      command.section(' ', 3));
            return;
        }
        const QString name = command.section(' ', 1);
        QList<QWidget*> widgets = window.findChildren<QWidget*>();
        if (extras) widgets += extras->findChildren<QWidget*>();
        for (QWidget* w : widgets) {
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
    };
    // Read raw: a buffered stream would take in several commands at once and leave the
    // notifier nothing to announce for the rest.
    QByteArray pending;
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, [&] {
        char buffer[4096];
        const ssize_t n = ::read(STDIN_FILENO, buffer, sizeof buffer);
        if (n <= 0) {
            input.setEnabled(false);
            return;
        }
        pending.append(buffer, n);
        for (qsizetype end; (end = pending.indexOf('\n')) >= 0; pending.remove(0, end + 1))
            run(QString::fromUtf8(pending.left(end)));
    });

    if (argc > 5) window.setGeometry(atoi(argv[2]), atoi(argv[3]), atoi(argv[4]), atoi(argv[5]));
    window.show();
    announceWhenShown(&window, true);
    edit->setFocus();
    return app.exec();
}
