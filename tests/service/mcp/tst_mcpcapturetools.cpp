#include "TestMain.h"

#include "service/history/HistoryService.h"
#include "service/mcp/CaptureTools.h"
#include "service/mcp/McpTool.h"
#include "service/mcp/ModelImage.h"

#include <QDateTime>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRandomGenerator>

using namespace zelmor;
using namespace zelmor::service::mcp;
using Shape = zelmor::service::capture::AnnotationShape;

namespace {

service::history::HistoryService& store()
{
    return service::history::HistoryService::instance();
}

QList<qint64> itemIds(const McpToolResult& result)
{
    QList<qint64> ids;
    const QJsonDocument doc = QJsonDocument::fromJson(result.value("text").toString().toUtf8());
    for (const QJsonValue& item : doc.object().value("items").toArray())
        ids << item.toObject().value("id").toInteger();
    return ids;
}

// Rows are ordered by their millisecond; a row that must be older than the next starts a new one.
void nextMillisecond()
{
    const qint64 start = QDateTime::currentMSecsSinceEpoch();
    while (QDateTime::currentMSecsSinceEpoch() == start) {
    }
}

} // namespace

class TestCaptureTools : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Runs first, while the history is empty.
    void noSourceImage_data()
    {
        QTest::addColumn<QString>("tool");
        QTest::addColumn<QVariantMap>("args");
        QTest::addColumn<QString>("message");
        QTest::newRow("annotate, undecodable image")
            << "annotate_image" << QVariantMap{{"image", "%%% not base64"}, {"annotations", {}}}
            << "no source image (provide id or base64)";
        QTest::newRow("ocr, bad path") << "ocr" << QVariantMap{{"path", "/nowhere/x.png"}}
                                       << "no image to OCR. Please specify a valid 'path' or "
                                          "history 'id'.";
        QTest::newRow("pin") << "pin_last" << QVariantMap{} << "no image to pin";
    }
    void noSourceImage()
    {
        QFETCH(QString, tool);
        QFETCH(QVariantMap, args);
        QFETCH(QString, message);
        QVERIFY(store().recent(1).isEmpty());
        QCOMPARE(callMcpTool(tool, args), mcpToolError(message));
    }

    // Short inner arrays are skipped, extra items ignored.
    void annotationPoints()
    {
        const Shape shape = readMcpAnnotation(
            {{"kind", "line"},
             {"points", QVariantList{QVariantList{1}, QVariantList{2.5, 3, 9}, QVariantList{5, 6}}},
             {"color", "#00ff00"},
             {"penWidth", 7}});
        QCOMPARE(shape.points, (QList<QPointF>{{2.5, 3}, {5, 6}}));
        QCOMPARE(shape.kind, Shape::Line);
        QCOMPARE(shape.color, QColor(Qt::green));
    }

    // Quotes become blanks and the whole query is one phrase matched as a prefix.
    void searchPhrasePrefix()
    {
        const QPixmap pixmap(4, 4);
        const qint64 hit = store().insert(pixmap, "/nowhere/a.png", {}, "foo barbaz");
        store().insert(pixmap, "/nowhere/b.png", {}, "foo qux bar");
        store().insert(pixmap, "/nowhere/c.png", {}, "xfoo bar");
        QVERIFY(hit > 0);
        QCOMPARE(itemIds(callMcpTool("search_history", {{"query", " foo\"bar "}})),
                 QList<qint64>{hit});
    }

    // Only the latest 200 rows can be listed or named by id.
    void rowsBeyondLatest200()
    {
        const QString path = zelmor::test::sandboxRoot().filePath("four-by-three.png");
        QVERIFY(QPixmap(4, 3).save(path));
        const qint64 oldest = store().insert(QPixmap(4, 3), path, {});
        nextMillisecond();
        qint64 newer = 0;
        for (int i = 0; i < 200; ++i)
            newer = store().insert(QPixmap(4, 3), path, {});
        QCOMPARE(itemIds(callMcpTool("list_history", {{"limit", 1000}})).size(), 200);
        QCOMPARE(itemIds(callMcpTool("list_history", {{"limit", 0}})).size(), 1);
        QCOMPARE(callMcpTool("pin_last", {{"id", oldest}}), mcpToolError("no image to pin"));
        const McpToolResult pinned = callMcpTool("pin_last", {{"id", newer}});
        QVERIFY(pinned.value("text").toString().startsWith("Image resolved (4x3) "));
        QCOMPARE(pinned.value("isError"), QVariant(false));
    }

    // Noise in four channels compresses worst: the picture is made smaller until its PNG fits
    // the line a client takes, aspect kept.
    void modelImageOfNoise()
    {
        QImage noise(3840, 2160, QImage::Format_ARGB32);
        QRandomGenerator random(7);
        for (int y = 0; y < noise.height(); ++y)
            random.fillRange(reinterpret_cast<quint32*>(noise.scanLine(y)), noise.width());
        const McpModelImage picture = makeModelImage(noise);
        QCOMPARE(QImage::fromData(picture.png, "PNG").size(), picture.size);
        QVERIFY(picture.png.size() * 4 / 3 < 6 * 1024 * 1024);
        QVERIFY(picture.size.width() < 1568);
        QCOMPARE(qRound(3840 * picture.scale), picture.size.width());
        QVERIFY(qAbs(picture.size.width() * 2160.0 / picture.size.height() - 3840) < 20);
    }
};

ZELMOR_TEST_MAIN(TestCaptureTools, QGuiApplication)

#include "tst_mcpcapturetools.moc"
