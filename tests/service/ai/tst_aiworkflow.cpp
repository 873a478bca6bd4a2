#include "FakeAiServer.h"
#include "TestMain.h"

#include "service/ai/AiProviderService.h"
#include "service/ai/AiWorkflow.h"

#include <QImage>
#include <QJsonArray>
#include <QSignalSpy>

using namespace zelmor::service::ai;
using zelmor::test::FakeAiServer;

namespace {

// The picture the request carried, decoded from its data URL.
QImage sentImage(const QJsonObject& body)
{
    const QJsonArray content = body.value(QStringLiteral("messages"))
                                   .toArray()
                                   .last()
                                   .toObject()
                                   .value(QStringLiteral("content"))
                                   .toArray();
    for (const QJsonValue& part : content) {
        const QString url = part.toObject()
                                .value(QStringLiteral("image_url"))
                                .toObject()
                                .value(QStringLiteral("url"))
                                .toString();
        if (!url.isEmpty())
            return QImage::fromData(
                QByteArray::fromBase64(url.section(QLatin1Char(','), 1).toLatin1()));
    }
    return {};
}

} // namespace

class TestAiWorkflow : public QObject
{
    Q_OBJECT

    FakeAiServer m_server;

private Q_SLOTS:
    void initTestCase()
    {
        AiProvider p;
        p.name = QStringLiteral("local");
        p.protocol = QStringLiteral("openai");
        p.baseUrl = m_server.baseUrl();
        p.model = QStringLiteral("m");
        QVERIFY(AiProviderService::instance().insert(p) > 0);
    }

    void ocrScalesOnlyLargePictures_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QSize>("sent");
        QTest::newRow("1921x100") << QSize(1921, 100) << QSize(1920, 99);
        QTest::newRow("1920x1920") << QSize(1920, 1920) << QSize(1920, 1920);
    }
    void ocrScalesOnlyLargePictures()
    {
        QFETCH(QSize, size);
        QFETCH(QSize, sent);
        m_server.enqueue(200, zelmor::test::openAiReply(QStringLiteral("Hello")));
        AiWorkflow workflow;
        QSignalSpy result(&workflow, &AiWorkflow::resultReady);
        QPixmap pixmap(size);
        pixmap.fill(Qt::white);
        workflow.ocr(pixmap);
        QTRY_COMPARE(result.count(), 1);
        QCOMPARE(result.first().at(0).toString(), QStringLiteral("ocr"));
        QCOMPARE(result.first().at(1).toString(), QStringLiteral("Hello"));
        const QJsonObject body = m_server.requests().last().json();
        QCOMPARE(sentImage(body).size(), sent);
        QCOMPARE(body.value(QStringLiteral("max_tokens")).toInt(), 1024);
    }

    void annotationParsesBoxesAgainstTheImage()
    {
        m_server.enqueue(200, zelmor::test::openAiReply(QStringLiteral(
                                  "Here:\n[{\"box\":[190,90,50,50],\"label\":\"button\"}]")));
        AiWorkflow workflow;
        QSignalSpy boxes(&workflow, &AiWorkflow::boxesReady);
        QPixmap pixmap(200, 100);
        pixmap.fill(Qt::white);
        workflow.annotate(pixmap);
        QTRY_COMPARE(boxes.count(), 1);
        const auto list = boxes.first().first().value<QList<AnnotationBox>>();
        QCOMPARE(list.size(), 1);
        QCOMPARE(list.first().rect, QRect(190, 90, 10, 10));
        const QJsonObject body = m_server.requests().last().json();
        QCOMPARE(body.value(QStringLiteral("max_tokens")).toInt(), 2048);
        QVERIFY(body.value(QStringLiteral("messages"))
                    .toArray()
                    .first()
                    .toObject()
                    .value(QStringLiteral("content"))
                    .toString()
                    .startsWith(QStringLiteral("You are a UI element detector.")));
    }

    void answersWithoutArraysFail()
    {
        m_server.enqueue(200, zelmor::test::openAiReply(QStringLiteral("no boxes, sorry")));
        AiWorkflow workflow;
        QSignalSpy failed(&workflow, &AiWorkflow::failed);
        workflow.annotate(QPixmap(10, 10));
        QTRY_COMPARE(failed.count(), 1);
        QCOMPARE(failed.first().first().toString(), QStringLiteral("No JSON array in AI response"));
    }

    void cancelReachesRecognitionButNotTranslation()
    {
        const qsizetype before = m_server.requests().size();
        m_server.enqueueHold();
        AiWorkflow ocr;
        QSignalSpy ocrFailed(&ocr, &AiWorkflow::failed);
        ocr.ocr(QPixmap(10, 10));
        QTRY_COMPARE(m_server.requests().size(), before + 1);
        ocr.cancel();
        QTRY_COMPARE(ocrFailed.count(), 1);

        m_server.enqueue(200, zelmor::test::openAiReply(QStringLiteral("你好")));
        AiWorkflow translation;
        QSignalSpy translated(&translation, &AiWorkflow::resultReady);
        translation.translate(QPixmap(10, 10), QStringLiteral("中文"));
        translation.cancel();
        QTRY_COMPARE(translated.count(), 1);
        QCOMPARE(translated.first().at(0).toString(), QStringLiteral("translate"));
    }
};

ZELMOR_TEST_MAIN(TestAiWorkflow, QApplication)
#include "tst_aiworkflow.moc"
