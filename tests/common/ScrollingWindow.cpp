// Another application for the tests: a page taller than its window that moves by a fixed
// step for each notch of the wheel, either way. It prints "shown X Y" with its client area's global
// top left once on screen.
//   zelmor-test-scroller WIDTH HEIGHT PAGE_HEIGHT STEP

#include "ScrollContent.h"

#include <QApplication>
#include <QPainter>
#include <QTimer>
#include <QWheelEvent>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <iostream>

namespace {

class Scroller : public QWidget
{
public:
    Scroller(int pageHeight, int step) : m_step(step), m_pageHeight(pageHeight) {}
    void build(int width) { m_page = zelmor::test::scrollContent(width, m_pageHeight); }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter(this).drawImage(0, 0, m_page, 0, m_offset, width(), height());
    }
    void wheelEvent(QWheelEvent* event) override
    {
        const int notches = event->angleDelta().y() / 120; // positive: up
        m_offset = std::clamp(m_offset - notches * m_step, 0, m_page.height() - height());
        update();
    }

private:
    QImage m_page;
    int m_step;
    int m_pageHeight;
    int m_offset = 0;
};

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    if (argc < 5) return 2;
    Scroller window(atoi(argv[3]), atoi(argv[4]));
    window.setWindowTitle(QStringLiteral("Scrolling page"));
    window.setFixedSize(atoi(argv[1]), atoi(argv[2]));
    window.build(window.width());
    window.move(100, 100);
    window.show();
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (!window.windowHandle() || !window.windowHandle()->isExposed()) return;
        poll.stop();
        const QPoint origin = window.mapToGlobal(QPoint());
        std::cout << "shown " << origin.x() << ' ' << origin.y() << std::endl;
    });
    poll.start(10);
    return app.exec();
}
