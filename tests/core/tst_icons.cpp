#include "TestMain.h"

#include "core/Resources.h"

#include <QDirIterator>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

class TestIcons : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { zelmor::core::initResources(); }

    void trayIconIsOpaqueInTheMiddle()
    {
        const QImage tray(QStringLiteral(":/icons/tray.png"));
        QVERIFY(tray.width() >= 22 && tray.width() == tray.height());
        QCOMPARE(qAlpha(tray.pixel(tray.width() / 2, tray.height() / 2)), 255);
    }

    void svgRendersAtToolbarSize_data()
    {
        QTest::addColumn<QString>("path");
        QDirIterator it(QStringLiteral(":/icons"), {QStringLiteral("*.svg")}, QDir::Files,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            QTest::newRow(qPrintable(path)) << path;
        }
    }
    void svgRendersAtToolbarSize()
    {
        QFETCH(QString, path);
        QSvgRenderer renderer(path);
        QVERIFY(renderer.isValid());
        QCOMPARE(renderer.viewBoxF(), QRectF(0, 0, 24, 24));

        QImage image(18, 18, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        renderer.render(&painter);
        painter.end();

        int inked = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (qAlpha(image.pixel(x, y)) > 64) ++inked;
        // A drawn line icon covers some of the square but never most of it.
        QVERIFY2(inked >= 15 && inked <= 18 * 18 * 2 / 3, qPrintable(QString::number(inked)));
    }
};

ZELMOR_TEST_MAIN(TestIcons, QApplication)
#include "tst_icons.moc"
