// History store throughput and query latency at growing sizes.
//   scripts/x-session.sh build/bench/zelmor-bench-history [rounds]

#include "BenchSupport.h"

#include "service/history/HistoryService.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QPixmap>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QVariant>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

using zelmor::bench::medianMs;
using zelmor::core::HistoryCategory;
using zelmor::service::history::HistoryService;

namespace {

QString pathOf(int n)
{
    return QStringLiteral("/home/user/Pictures/Zelmor/Zelmor_2026-11-%1_10-%2.png")
        .arg(n % 28 + 1, 2, 10, QLatin1Char('0'))
        .arg(n, 6, 10, QLatin1Char('0'));
}

// Rows past the timed inserts go in through one transaction: the timed path commits each
// row on its own, which at 100 000 rows would measure the disk, not the store.
void fill(const QString& connection, int from, int to)
{
    QSqlDatabase db = QSqlDatabase::database(connection);
    db.transaction();
    QSqlQuery query(db);
    query.prepare(
        QStringLiteral("INSERT INTO items (kind, category, path, created_at, width, height, note) "
                       "VALUES ('image', 'screenshot', ?, ?, 1920, 1080, '')"));
    for (int n = from; n < to; ++n) {
        query.addBindValue(pathOf(n));
        query.addBindValue(qint64(1700000000000) + n);
        query.exec();
    }
    db.commit();
}

} // namespace

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    const int rounds = argc > 1 ? std::max(1, atoi(argv[1])) : 15;
    const QPixmap pixmap(1920, 1080);

    std::printf("%8s %12s %14s %16s %16s %14s\n", "rows", "inserts/s", "recent(500) ms",
                "search path ms", "search none ms", "search tag ms");
    int serial = 0;
    for (int rows : {1000, 10000, 100000}) {
        QTemporaryDir dir;
        const QString connection = QStringLiteral("bench%1").arg(++serial);
        HistoryService store(dir.filePath(QStringLiteral("history.db")), connection);

        constexpr int kTimedInserts = 500;
        QElapsedTimer timer;
        timer.start();
        qint64 last = 0;
        for (int n = 0; n < kTimedInserts; ++n)
            last = store.insert(pixmap, pathOf(n), HistoryCategory::Screenshot,
                                n % 10 ? QString() : QStringLiteral("invoice total"));
        const double perSecond = kTimedInserts / (timer.nsecsElapsed() / 1e9);
        fill(connection, kTimedInserts, rows);
        store.addTags(last, {QStringLiteral("receipt")});

        const double recent = medianMs(rounds, [&] { store.recent(500); });
        const double path = medianMs(rounds, [&] { store.search(QStringLiteral("10-0012"), 500); });
        const double none =
            medianMs(rounds, [&] { store.search(QStringLiteral("nothing-like-this"), 500); });
        const double tag = medianMs(rounds, [&] { store.search(QStringLiteral("receipt"), 500); });
        std::printf("%8d %12.0f %14.2f %16.2f %16.2f %14.2f\n", rows, perSecond, recent, path, none,
                    tag);
    }
    return 0;
}
