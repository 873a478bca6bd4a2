#include "TestMain.h"

#include "service/ai/AnnotationBox.h"

using namespace zelmor::service::ai;

class TestAnnotationBoxes : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void boxes_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QList<QRect>>("rects");
        const QSize image(200, 100);
        Q_UNUSED(image)
        QTest::newRow("box array")
            << R"([{"box":[10,20,30,40],"label":"button"}])" << QList<QRect>{QRect(10, 20, 30, 40)};
        QTest::newRow("fenced with prose") << "Sure!\n```json\n[{\"box\":[1,2,3,4]}]\n```\nDone."
                                           << QList<QRect>{QRect(1, 2, 3, 4)};
        QTest::newRow("no area: dropped") << R"([{"box":[10,10,0,5]}])" << QList<QRect>{};
        QTest::newRow("negative origin keeps its size")
            << R"([{"box":[-5,-5,20,20]}])" << QList<QRect>{QRect(0, 0, 20, 20)};
        QTest::newRow("beyond the right edge: 1 px at W")
            << R"([{"box":[250,10,30,30]}])" << QList<QRect>{QRect(200, 10, 1, 30)};
        QTest::newRow("long keys")
            << R"([{"x":1,"y":2,"width":3,"height":4}])" << QList<QRect>{QRect(1, 2, 3, 4)};
        QTest::newRow("short keys win")
            << R"([{"x":1,"y":2,"w":5,"width":3,"h":6}])" << QList<QRect>{QRect(1, 2, 5, 6)};
        QTest::newRow("box of three falls back to keys")
            << R"([{"box":[1,2,3],"x":4,"y":5,"w":6,"h":7}])" << QList<QRect>{QRect(4, 5, 6, 7)};
        QTest::newRow("fractions truncate")
            << R"([{"box":[1.9,2.9,3.9,4.9]}])" << QList<QRect>{QRect(1, 2, 3, 4)};
        QTest::newRow("empty array") << "[]" << QList<QRect>{};
        QTest::newRow("far beyond int: held at the edges")
            << R"([{"box":[1e12,-1e300,5,1e20]}])" << QList<QRect>{QRect(200, 0, 1, 1 << 30)};
    }
    void boxes()
    {
        QFETCH(QString, answer);
        QFETCH(QList<QRect>, rects);
        const AnnotationParse parse = parseAnnotationBoxes(answer, QSize(200, 100));
        QVERIFY2(parse.error.isEmpty(), qPrintable(parse.error));
        QList<QRect> got;
        for (const AnnotationBox& b : parse.boxes)
            got << b.rect;
        QCOMPARE(got, rects);
    }

    void failures_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QString>("error");
        QTest::newRow("no bracket") << "nothing here"
                                    << "No JSON array in AI response";
        QTest::newRow("bracket order") << "] then ["
                                       << "No JSON array in AI response";
        QTest::newRow("bad json") << "[{\"box\": [1,2,}]"
                                  << "Bad JSON: ";
    }
    void failures()
    {
        QFETCH(QString, answer);
        QFETCH(QString, error);
        QVERIFY(parseAnnotationBoxes(answer, QSize(10, 10)).error.startsWith(error));
    }

    void labelsAreKept()
    {
        const AnnotationParse parse =
            parseAnnotationBoxes(R"([{"box":[0,0,5,5],"label":"menu"}])", QSize(10, 10));
        QCOMPARE(parse.boxes.first().label, QStringLiteral("menu"));
    }
};

ZELMOR_TEST_MAIN(TestAnnotationBoxes, QCoreApplication)
#include "tst_annotationboxes.moc"
