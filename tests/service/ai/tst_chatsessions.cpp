#include "TestMain.h"
#include "TestSupport.h"

#include "service/ai/ChatSessions.h"

#include <QDir>
#include <QGuiApplication>
#include <QTemporaryDir>

using namespace zelmor::service::ai;

class TestChatSessions : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

private slots:
    void title_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("title");
        QTest::newRow("16 characters") << "abcdefghijklmnop"
                                       << "abcdefghijklmnop";
        QTest::newRow("17 characters") << "abcdefghijklmnopq"
                                       << "abcdefghijklmnop...";
        QTest::newRow("image alone") << QString() << "Image Chat";
    }
    void title()
    {
        QFETCH(QString, text);
        QFETCH(QString, title);
        QCOMPARE(chatTitleFor(text, "Image Chat"), title);
    }

    void markdown_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("html");
        QTest::newRow("typed HTML stays text") << "<b>x</b>"
                                               << "&lt;b&gt;x&lt;/b&gt;";
        QTest::newRow("bold then italic") << "**a** *b*"
                                          << "<b>a</b> <i>b</i>";
        QTest::newRow("fence keeps its breaks")
            << "```\nx\n```"
            << "<pre style=\"background:#1e1e24;color:#f8f8f2;padding:10px;"
               "border-radius:6px;font-family:Consolas,monospace;line-height:1.4;"
               "\"><br>x<br></pre>";
    }
    void markdown()
    {
        QFETCH(QString, text);
        QFETCH(QString, html);
        QCOMPARE(renderChatMarkdown(text), html);
    }

    // Drafts never reach the disk; what does comes back whole, its picture too, from a file
    // that only its owner reads.
    void saveAndLoad()
    {
        const QString path = m_dir.filePath("sessions.json");
        QImage picture(4, 3, QImage::Format_RGB32);
        picture.fill(Qt::red);
        const QDateTime now = QDateTime::currentDateTime();
        const QList<ChatSession> sessions{
            {"1", "New Chat", now, {}},
            {"2", "Kept", now, {{"user", "hi", QPixmap::fromImage(picture), now}}}};
        QVERIFY(saveChatSessions(path, sessions, "New Chat"));
        QVERIFY(!(QFile::permissions(path) & (QFile::ReadGroup | QFile::ReadOther)));
        QList<ChatSession> loaded;
        QVERIFY(loadChatSessions(path, &loaded));
        QCOMPARE(loaded.size(), 1);
        QCOMPARE(loaded[0].title, "Kept");
        QCOMPARE(loaded[0].updatedAt, now);
        QCOMPARE(loaded[0].messages[0].image.toImage().pixel(1, 1), picture.pixel(1, 1));
    }

    void malformedFileIsKeptAside()
    {
        const QString path = m_dir.filePath("broken.json");
        QVERIFY(zelmor::test::writeFile(path, "{\"not\": \"an array\""));
        QList<ChatSession> loaded{{"x", "y", {}, {}}};
        QString copy;
        QVERIFY(loadChatSessions(path, &loaded, &copy));
        QVERIFY(loaded.isEmpty());
        QCOMPARE(zelmor::test::readFile(copy), "{\"not\": \"an array\"");
    }
};

ZELMOR_TEST_MAIN(TestChatSessions, QGuiApplication)
#include "tst_chatsessions.moc"
