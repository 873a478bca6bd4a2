#include "TestMain.h"

#include "core/Resources.h"

#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

namespace {

const QStringList kIcons = {
    QStringLiteral("overlay/copy"),      QStringLiteral("overlay/pin"),
    QStringLiteral("overlay/save"),      QStringLiteral("overlay/ocr"),
    QStringLiteral("overlay/translate"), QStringLiteral("overlay/ai_annotate"),
    QStringLiteral("overlay/reselect"),  QStringLiteral("overlay/cancel"),
    QStringLiteral("overlay/start"),     QStringLiteral("annotate/undo"),
    QStringLiteral("annotate/redo"),     QStringLiteral("annotate/select"),
    QStringLiteral("annotate/rect"),     QStringLiteral("annotate/ellipse"),
    QStringLiteral("annotate/arrow"),    QStringLiteral("annotate/line"),
    QStringLiteral("annotate/brush"),    QStringLiteral("annotate/highlight"),
    QStringLiteral("annotate/mosaic"),   QStringLiteral("annotate/blur"),
    QStringLiteral("annotate/text"),     QStringLiteral("annotate/counter"),
    QStringLiteral("annotate/stamp"),
};

QString resourcePath(const QString& name)
{
    return QStringLiteral(":/icons/") + name + QStringLiteral(".svg");
}

} // namespace

class TestIcons : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { zelmor::core::initResources(); }

    void resourceTreeHoldsExactlyTheIcons()
    {
        QStringList found;
        QDirIterator it(QStringLiteral(":/icons"), QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext())
            found << it.next();
        QStringList expected;
        for (const QString& name : kIcons)
            expected << resourcePath(name);
        expected << QStringLiteral(":/icons/tray.png");
        found.sort();
        expected.sort();
        QCOMPARE(found, expected);
    }

    void trayIconIsOpaqueInTheMiddle()
    {
        const QImage tray(QStringLiteral(":/icons/tray.png"));
        QVERIFY(tray.width() >= 22 && tray.width() == tray.height());
        QCOMPARE(qAlpha(tray.pixel(tray.width() / 2, tray.height() / 2)), 255);
    }

    void rendersAtToolbarSize_data()
    {
        QTest::addColumn<QString>("path");
        for (const QString& name : kIcons)
            QTest::newRow(qPrintable(name)) << resourcePath(name);
    }
    void rendersAtToolbarSize()
    {
        QFETCH(QString, path);
        QVERIFY(QFile::exists(path));
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
