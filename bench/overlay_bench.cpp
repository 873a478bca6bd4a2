// Time of one capture-overlay frame during a selecting drag, with and without shapes.
//   scripts/x-session.sh build/bench/zelmor-bench-overlay [frames]

#include "service/capture/AnnotationShape.h"
#include "widget/overlay/OverlayPainter.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPainter>

#include <algorithm>
#include <cstdio>
#include <vector>

using zelmor::service::capture::AnnotationShape;
using namespace zelmor::widget::overlay;

namespace {

QImage desktopLike(const QSize& size)
{
    QImage image(size, QImage::Format_RGB32);
    QPainter p(&image);
    QLinearGradient g(0, 0, size.width(), size.height());
    g.setColorAt(0, QColor(30, 60, 90));
    g.setColorAt(1, QColor(200, 180, 120));
    p.fillRect(image.rect(), g);
    for (int i = 0; i < 40; ++i)
        p.fillRect(QRect((i * 97) % size.width(), (i * 53) % size.height(), 300, 200),
                   QColor::fromHsv(i * 9 % 360, 120, 230));
    return image;
}

QList<AnnotationShape> twentyShapes()
{
    QList<AnnotationShape> shapes;
    for (int i = 0; i < 20; ++i) {
        AnnotationShape s;
        s.kind = i % 11;
        const QPointF a(20 + i * 30, 20 + i * 15);
        s.points = {a, a + QPointF(160, 90)};
        if (s.kind == AnnotationShape::Brush || s.kind == AnnotationShape::Highlight)
            for (int k = 0; k < 40; ++k)
                s.points.append(a + QPointF(k * 4, (k % 7) * 5));
        s.text = QStringLiteral("%1").arg(i + 1);
        shapes.append(s);
    }
    shapes[5].kind = AnnotationShape::Blur;
    shapes[5].blockSize = 16;
    shapes[6].kind = AnnotationShape::Mosaic;
    return shapes;
}

double medianFrameMs(const QSize& size, int frames, bool withShapes)
{
    const QImage frozen = desktopLike(size);
    const QRect selection(size.width() / 5, size.height() / 5, size.width() / 2, size.height() / 2);
    const QImage selectionImage =
        frozen.copy(selection).convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QList<AnnotationShape> shapes = withShapes ? twentyShapes() : QList<AnnotationShape>();
    QImage frame(size, QImage::Format_RGB32);
    std::vector<double> times;
    for (int i = 0; i < frames; ++i) {
        OverlayScene scene;
        scene.frozenImage = &frozen;
        scene.selectionImage = &selectionImage;
        scene.annotations = &shapes;
        scene.selection = selection.adjusted(0, 0, i % 50, i % 30);
        scene.mousePos = scene.selection.bottomRight();
        scene.hasSelection = withShapes;
        scene.selecting = !withShapes;
        QElapsedTimer timer;
        timer.start();
        frame.fill(Qt::black);
        QPainter painter(&frame);
        paintOverlayFrame(painter, size, scene);
        painter.end();
        times.push_back(timer.nsecsElapsed() / 1e6);
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const int frames = argc > 1 ? std::max(1, atoi(argv[1])) : 40;
    std::printf("overlay frame, median of %d frames (ms)\n", frames);
    std::printf("%-12s %12s %16s\n", "size", "drag", "20 shapes");
    for (const QSize size : {QSize(1920, 1080), QSize(3840, 2160)})
        std::printf("%-12s %12.2f %16.2f\n",
                    qPrintable(QStringLiteral("%1x%2").arg(size.width()).arg(size.height())),
                    medianFrameMs(size, frames, false), medianFrameMs(size, frames, true));
    return 0;
}
