#include "TestMain.h"
#include "TestSupport.h"

#include "core/Log.h"
#include "service/history/HistoryService.h"

#include <QGuiApplication>
#include <QImageReader>
#include <QPixmap>
#include <QSignalSpy>
#include <QSqlDatabase>
#include <QSqlQuery>

#include <memory>

using namespace zelmor::core;
using zelmor::service::history::HistoryService;
using zelmor::test::readFile;

namespace {

// A second connection on the store's file, standing in for older builds and other processes.
class RawDb
{
public:
    explicit RawDb(const QString& path) : m_name("raw-" + QString::number(++s_count))
    {
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", m_name);
        db.setDatabaseName(path);
        db.open();
    }
    ~RawDb()
    {
        QSqlDatabase::database(m_name, false).close();
        QSqlDatabase::removeDatabase(m_name);
    }
    // Runs `sql`; returns the first column of every row, NULL as "<null>", or "failed".
    QStringList run(const QString& sql, const QVariantList& binds = {}) const
    {
        QSqlQuery query(QSqlDatabase::database(m_name));
        query.prepare(sql);
        for (const QVariant& value : binds)
            query.addBindValue(value);
        if (!query.exec()) return {"failed"};
        QStringList values;
        while (query.next())
            values << (query.isNull(0) ? "<null>" : query.value(0).toString());
        return values;
    }

private:
    static inline int s_count = 0;
    QString m_name;
};

QStringList paths(const QList<HistoryItem>& items)
{
    QStringList result;
    for (const HistoryItem& item : items)
        result << item.path;
    return result;
}

} // namespace

class TestHistoryService : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_path;
    std::unique_ptr<HistoryService> m_store;
    int m_count = 0;

    // Fixes the time after the insert, so that no order rests on a tie within a millisecond.
    qint64 add(const QString& path, qint64 createdAt, const QStringList& tags = {},
               const QString& ocr = {})
    {
        const qint64 id = m_store->insert(QPixmap(4, 3), path, HistoryCategory::Screenshot, ocr);
        RawDb(m_path).run("UPDATE items SET created_at=? WHERE id=?", {createdAt, id});
        m_store->addTags(id, tags);
        return id;
    }

private Q_SLOTS:
    void init()
    {
        m_path = m_dir.filePath(QString("history-%1.db").arg(++m_count));
        m_store = std::make_unique<HistoryService>(m_path, QString("store-%1").arg(m_count));
    }
    void cleanup() { m_store.reset(); }

    void searchMatchesLiterally_data()
    {
        QTest::addColumn<QString>("query");
        QTest::addColumn<int>("limit");
        QTest::addColumn<QStringList>("expected");
        // Path hits come before tag hits; "/s/a b" would answer a blank that reached SQL.
        QTest::newRow("blank") << " " << 10 << QStringList();
        QTest::newRow("quoted, padded: path, then text, then tag")
            << " \"plain\" " << 10 << QStringList{"/s/plain", "/s/dog", "/s/snap_1"};
        QTest::newRow("lone quote") << "\"" << 3 << QStringList{"/s/a b", "/s/b\\s", "/s/snap_1"};
        QTest::newRow("percent") << "%" << 10 << QStringList{"/s/100%", "/s/plain"};
        QTest::newRow("underscore") << "_" << 10 << QStringList{"/s/snap_1", "/s/b\\s"};
        QTest::newRow("backslash") << "\\" << 10 << QStringList{"/s/b\\s", "/s/a b"};
    }
    void searchMatchesLiterally()
    {
        QFETCH(QString, query);
        QFETCH(int, limit);
        add("/s/plain", 1000, {"50%"});
        add("/s/100%", 2000);
        add("/s/snap_1", 3000, {"plains"});
        add("/s/b\\s", 4000, {"x_y"});
        add("/s/a b", 5000, {"c\\d"});
        add("/s/dog", 500, {}, "a plain cat");
        QTEST(paths(m_store->search(query, limit)), "expected");
        QCOMPARE(paths(m_store->recent(2)), (QStringList{"/s/a b", "/s/b\\s"})); // newest first
    }

    void idsAreNeverReused_data()
    {
        QTest::addColumn<bool>("clearAll");
        QTest::newRow("remove") << false;
        QTest::newRow("clear") << true;
    }
    void idsAreNeverReused()
    {
        QFETCH(bool, clearAll);
        const qint64 last = add("/old", 1, {"stale"}, "secret words");
        QVERIFY(clearAll ? m_store->clear() : m_store->remove(last));
        QCOMPARE(add("/new", 2), last + 1);
        QCOMPARE(m_store->recent(10).value(0).tags, QStringList());
        QVERIFY(m_store->search("secret", 10).isEmpty());
        QVERIFY(m_store->search("stale", 10).isEmpty());
    }

    void tagsAreTrimmedAndDeduplicated()
    {
        const qint64 id = add("/a", 1);
        m_store->addTags(id, {"tag", " tag ", "", "  ", kFavouriteTag});
        m_store->addTags(0, {"orphan"});
        QCOMPARE(m_store->recent(1).value(0).tags, (QStringList{"tag", kFavouriteTag}));
        QCOMPARE(RawDb(m_path).run("SELECT name FROM tags"), (QStringList{"tag", kFavouriteTag}));
        m_store->removeTag(id, " tag ");
        QCOMPARE(m_store->recent(1).value(0).tags, QStringList{kFavouriteTag});
    }

    void olderFilesAreMigrated_data()
    {
        QTest::addColumn<bool>("hasCategory");
        QTest::addColumn<int>("version");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("version 0") << true << 0 << QStringList{"recording", "screenshot", "ai"};
        QTest::newRow("version 0 without column")
            << false << 0 << QStringList{"recording", "screenshot", "screenshot"};
        QTest::newRow("version 2 untouched") << true << 2 << QStringList{"<null>", "<null>", "ai"};
    }
    void olderFilesAreMigrated()
    {
        QFETCH(bool, hasCategory);
        QFETCH(int, version);
        m_store.reset();
        QFile::remove(m_path);
        {
            RawDb raw(m_path);
            raw.run(
                QString(
                    "CREATE TABLE items (id INTEGER PRIMARY KEY AUTOINCREMENT, kind TEXT, "
                    "%1 path TEXT, created_at INTEGER, width INTEGER, height INTEGER, note TEXT)")
                    .arg(hasCategory ? "category TEXT," : ""));
            raw.run("INSERT INTO items (kind) VALUES ('gif'), ('scroll')");
            raw.run(hasCategory ? "INSERT INTO items (kind, category) VALUES ('gif', 'ai')"
                                : "INSERT INTO items (kind) VALUES ('other')");
            raw.run(QString("PRAGMA user_version = %1").arg(version));
        }
        m_store = std::make_unique<HistoryService>(m_path, "migrated");
        RawDb raw(m_path);
        QTEST(raw.run("SELECT category FROM items ORDER BY id"), "expected");
        QCOMPARE(raw.run("PRAGMA user_version"), QStringList{"2"});
        QVERIFY(m_store->insert(QPixmap(1, 1), "/n", HistoryCategory::Ai) > 0);
    }

    void exportCopiesOrConverts_data()
    {
        QTest::addColumn<bool>("sourceExists");
        QTest::addColumn<QString>("destination");
        QTest::addColumn<bool>("destinationExists");
        QTest::addColumn<QByteArray>("expectedFormat"); // empty: the export fails
        QTest::newRow("copy") << true << "out.png" << false << QByteArray("png");
        QTest::newRow("existing file converted") << true << "out.jpg" << true << QByteArray("jpeg");
        QTest::newRow("source gone") << false << "out.jpg" << true << QByteArray();
    }
    void exportCopiesOrConverts()
    {
        QFETCH(bool, sourceExists);
        QFETCH(QString, destination);
        QFETCH(bool, destinationExists);
        QFETCH(QByteArray, expectedFormat);
        QTemporaryDir dir;
        const QString source = dir.filePath("shot.png");
        QPixmap image(8, 6);
        image.fill(Qt::red);
        if (sourceExists) QVERIFY(image.save(source));
        const qint64 id = m_store->insert(image, source, HistoryCategory::Screenshot);
        const QString target = dir.filePath(destination);
        if (destinationExists) QVERIFY(zelmor::test::writeFile(target, {}));
        QCOMPARE(m_store->exportTo(id, target), !expectedFormat.isEmpty());
        if (expectedFormat.isEmpty()) return;
        QCOMPARE(QImageReader(target).format(), expectedFormat);
        QCOMPARE(QImage(target).size(), QSize(8, 6));
        if (!destinationExists) QCOMPARE(readFile(target), readFile(source));
    }

    void onlyInsertRemoveAndClearSignal()
    {
        const qint64 id = add("/a", 1, {"t"});
        QSignalSpy spy(m_store.get(), &HistoryService::itemsChanged);
        m_store->addTags(id, {"u"});
        m_store->removeTag(id, "t");
        QCOMPARE(spy.count(), 0);
        m_store->insert(QPixmap(1, 1), "/b", HistoryCategory::Ai);
        QVERIFY(m_store->remove(id));
        QVERIFY(m_store->clear());
        QCOMPARE(spy.count(), 3);
    }

    void unusableFilesAreLeftAlone_data()
    {
        QTest::addColumn<QString>("damage");
        QTest::newRow("garbage") << "garbage";
        QTest::newRow("locked") << "locked";
    }
    void unusableFilesAreLeftAlone()
    {
        QFETCH(QString, damage);
        add("/kept", 1);
        m_store.reset();
        std::unique_ptr<RawDb> locker;
        if (damage == "garbage") {
            QVERIFY(zelmor::test::writeFile(m_path, QByteArray(4096, 'Z')));
        } else {
            locker = std::make_unique<RawDb>(m_path);
            locker->run("PRAGMA locking_mode=EXCLUSIVE");
            QCOMPARE(locker->run("BEGIN EXCLUSIVE"), QStringList());
        }
        const QByteArray before = readFile(m_path);

        m_store = std::make_unique<HistoryService>(m_path, "damaged");
        QCOMPARE(m_store->insert(QPixmap(1, 1), "/lost", HistoryCategory::Ai), -1);
        m_store->addTags(1, {"t"});
        m_store.reset();
        locker.reset();

        QCOMPARE(readFile(m_path), before);
        QVERIFY(readFile(logFilePath())
                    .contains(QByteArray("[history] cannot open " + m_path.toUtf8())));
        if (damage == "locked")
            QCOMPARE(RawDb(m_path).run("SELECT path FROM items"), QStringList{"/kept"});
    }
};

ZELMOR_TEST_MAIN(TestHistoryService, QGuiApplication)
#include "tst_historyservice.moc"
