#include "OcrCorpus.h"
#include "TestMain.h"

#include "service/ai/AiApiService.h"
#include "service/ai/AiProviderService.h"
#include "service/ai/AiWorkflow.h"
#include "service/history/HistoryService.h"
#include "service/ocr/LocalOcrEngine.h"

#include <QFontMetrics>
#include <QPainter>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>

#include <algorithm>

using namespace zelmor;
using service::ocr::LocalOcrEngine;

namespace {

const QStringList kEnglish{QStringLiteral("Save the capture to the output folder"),
                           QStringLiteral("Settings: Language, Theme and Hotkeys"),
                           QStringLiteral("Total 1,284.50 USD for 12 items"),
                           QStringLiteral("Open recent file report_2026.pdf")};
const QStringList kChinese{QStringLiteral("保存截图到输出文件夹"),
                           QStringLiteral("设置语言、主题和快捷键"),
                           QStringLiteral("历史记录中共有十二张图片")};

QImage render(const QStringList& lines, const QString& family, int pixelSize, bool dark,
              int lineStep = 0)
{
    QFont font(family);
    font.setPixelSize(pixelSize);
    const QFontMetrics metrics(font);
    int width = 0;
    for (const QString& line : lines)
        width = std::max(width, metrics.horizontalAdvance(line));
    const int step = lineStep > 0 ? lineStep : metrics.height() * 3 / 2;
    QImage image(width + 2 * pixelSize, step * int(lines.size()) + pixelSize, QImage::Format_RGB32);
    image.fill(dark ? QColor(0x1E, 0x1E, 0x1E) : QColor(Qt::white));
    QPainter painter(&image);
    painter.setFont(font);
    painter.setPen(dark ? QColor(0xE0, 0xE0, 0xE0) : QColor(0x20, 0x20, 0x20));
    for (int i = 0; i < lines.size(); ++i)
        painter.drawText(pixelSize, pixelSize / 2 + i * step + metrics.ascent(), lines[i]);
    return image;
}

} // namespace

// Text recognition on this machine. Run by ctest in a network namespace of its own, where one
// exists, so that any use of the network fails.
class TestLocalOcr : public QObject
{
    Q_OBJECT

    std::unique_ptr<LocalOcrEngine> m_engine;

    void checkErrorRate(const QImage& image, const QString& truth, double limit)
    {
        const service::ocr::LocalOcrResult result = m_engine->recognize(image);
        QCOMPARE(result.error, QString());
        const double rate = testing::characterErrorRate(truth, result.text);
        qInfo("CER %.2f%%", rate * 100);
        QVERIFY2(rate < limit, qPrintable(result.text));
    }

private Q_SLOTS:
    void initTestCase()
    {
        if (qEnvironmentVariableIsSet("ZELMOR_NO_NETWORK")) {
            QTcpServer server;
            QVERIFY(server.listen(QHostAddress::LocalHost));
            QTcpSocket socket;
            socket.connectToHost(QHostAddress::LocalHost, server.serverPort());
            QVERIFY2(!socket.waitForConnected(2000), "the network is reachable");
        } else {
            qInfo("no network namespace here: the network stays reachable");
        }
        service::ai::AiProvider local;
        local.name = QStringLiteral("Tesseract OCR (local)");
        local.protocol = QStringLiteral("tesseract");
        local.isDefault = true;
        service::history::HistoryService::instance(); // opens the database
        QVERIFY(service::ai::AiProviderService::instance().insert(local) > 0);
        m_engine = std::make_unique<LocalOcrEngine>(QString());
        QCOMPARE(m_engine->loadError(), QString());
        service::ai::AiApiService api; // the settings' connection test
        QString described;
        api.testConnection(local, [&](bool, const QString& message) { described = message; });
        QTRY_VERIFY2(described.startsWith(QStringLiteral("Tesseract 5.")) &&
                         described.endsWith(QStringLiteral(", languages: eng, chi_sim")),
                     qPrintable(described));
    }

    void characterErrorRate_data()
    {
        QTest::addColumn<QStringList>("lines");
        QTest::addColumn<QString>("family");
        QTest::addColumn<int>("pixelSize");
        QTest::addColumn<bool>("dark");
        QTest::addColumn<int>("lineStep");
        QTest::addColumn<double>("limit");
        for (const char* family : {"DejaVu Sans", "Liberation Sans"})
            for (int size : {12, 14, 16, 20})
                for (bool dark : {false, true})
                    QTest::addRow("%s %dpx %s", family, size, dark ? "dark" : "light")
                        << kEnglish << QString::fromLatin1(family) << size << dark << 0 << 0.02;
        for (int size : {12, 14, 16, 20})
            for (bool dark : {false, true})
                QTest::addRow("Noto Sans CJK SC %dpx %s", size, dark ? "dark" : "light")
                    << kChinese << QStringLiteral("Noto Sans CJK SC") << size << dark << 0 << 0.10;
        // Taller than one band of the engine's memory bound: read in bands cut between lines.
        QStringList page;
        for (int i = 0; i < 10; ++i)
            page << kEnglish;
        QTest::addRow("page of 40 lines, 16000 px tall")
            << page << QStringLiteral("DejaVu Sans") << 14 << false << 400 << 0.02;
    }
    void characterErrorRate()
    {
        QFETCH(QStringList, lines);
        QFETCH(QString, family);
        QFETCH(int, pixelSize);
        QFETCH(bool, dark);
        QFETCH(int, lineStep);
        QFETCH(double, limit);
        checkErrorRate(render(lines, family, pixelSize, dark, lineStep), lines.join('\n'), limit);
    }

    // Windows of real programs: borders, icons, bitmap fonts and Chinese interface text. The
    // benchmark reads the rest of the corpus.
    void realProgram_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<double>("limit");
        QTest::newRow("text box with borders, bold bitmap font")
            << QStringLiteral("xmessage") << 0.02;
        QTest::newRow("buttons with icons") << QStringLiteral("qt-dialog") << 0.02;
        QTest::newRow("shaded icon beside a heading") << QStringLiteral("heading-40px") << 0.02;
        QTest::newRow("bitmap terminal") << QStringLiteral("xterm-9x15-dark") << 0.015;
        QTest::newRow("manual page: bold headings, long options")
            << QStringLiteral("man-ls") << 0.02;
        QTest::newRow("smallest bitmap font: full stops, w")
            << QStringLiteral("xterm-fixed-light") << 0.02;
        QTest::newRow("Chinese beside an icon") << QStringLiteral("gtk-cjk") << 0.05;
        QTest::newRow("Chinese beside a ringed icon") << QStringLiteral("qt-cjk-16px") << 0.02;
        QTest::newRow("Chinese, buttons filled by their text")
            << QStringLiteral("qt-cjk-12px") << 0.02;
        QTest::newRow("Chinese of few strokes") << QStringLiteral("xterm-cjk-mono") << 0.02;
        QTest::newRow("Chinese bitmap font") << QStringLiteral("qt-wqy-12px") << 0.05;
        QTest::newRow("Chinese top to bottom") << QStringLiteral("qt-cjk-vertical") << 0.02;
    }
    void realProgram()
    {
        QFETCH(QString, name);
        QFETCH(double, limit);
        checkErrorRate(QImage(testing::ocrCorpusDir() + '/' + name + ".png"),
                       testing::ocrCorpusText(name), limit);
    }

    // A job that needs a language model says at once what to configure instead. (The ocr tool
    // reading with the local engine is the tool server's suite.)
    void workflowWithTheLocalProvider()
    {
        service::ai::AiWorkflow workflow;
        QSignalSpy failed(&workflow, &service::ai::AiWorkflow::failed);
        workflow.translate(QPixmap(20, 20), QStringLiteral("English"));
        QCOMPARE(failed.size(), 1);
        QVERIFY(failed.first().first().toString().contains(QStringLiteral("Settings → AI")));
    }
};

ZELMOR_TEST_MAIN(TestLocalOcr, QApplication)
#include "tst_localocr.moc"
