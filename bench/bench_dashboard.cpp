// Prints how long the dashboard "Табло" takes to fill its tiles on 100,000 courses (or the counts
// given), each tile on its own and all of them in the background as the main window does, the
// longest pause of the window's event loop meanwhile (what a menu click would wait), and whether
// the goal is met: every tile filled within 0.3 s on 100,000 courses, within 2 s on 1,000,000.
// SQLite, and PostgreSQL when ZAREK_TEST_PG is set. Not a test: figures only.
// Run: bench_dashboard [courses...]

#include "benchdata.h"
#include "dashboard/tablo.h"
#include "data/query.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTimer>
#include <cstdio>

using namespace zarek;
using namespace zarek::dashboard;
using zarek::bench::ms;

namespace {

// The books of a day in the last month of the benchmark's two years of courses.
const BooksDay books{Changeover{}, QDate(2023, 12, 15)};

bool addFleet(QSqlDatabase db)
{
    QSqlQuery query(db);
    for (const char *kola : {"СА 1234 ВК", "РК 5678 ВС", "РК 9012 КМ", "СО 3456 АР", "ВТ 7890 ХА"}) {
        query.prepare(QStringLiteral("INSERT INTO Config (kola, Razhod, Procent, Ton) VALUES (?, 30, 12, 20)"));
        query.addBindValue(QString::fromUtf8(kola));
        if (!query.exec())
            return false;
    }
    for (int i = 0; i < 9; ++i) {
        query.prepare(QStringLiteral("INSERT INTO shof (kod, ime) VALUES (?, ?)"));
        query.addBindValue(QStringLiteral("00%1").arg(i));
        query.addBindValue(QStringLiteral("Шофьор %1").arg(i));
        if (!query.exec())
            return false;
    }
    return true;
}

const char *tileName(Tile tile)
{
    switch (tile) {
    case Tile::Month: return "month";
    case Tile::Uninvoiced: return "not invoiced";
    case Tile::Unpaid: return "drivers unpaid";
    case Tile::Receivables: return "receivables";
    case Tile::Documents: return "documents due";
    case Tile::Profit: return "profit per truck";
    }
    return "";
}

// The time all tiles may take: 0.3 s up to 100,000 courses, 2 s up to 1,000,000; none beyond.
double goalMs(int count)
{
    return count <= 100000 ? 300 : count <= 1000000 ? 2000 : 0;
}

void run(const QString &engine, QSqlDatabase db, int count)
{
    if (!addFleet(db)) {
        std::fprintf(stderr, "fleet: %s\n", qPrintable(db.lastError().text()));
        return;
    }
    {
        PrivateConnection connection(db);
        for (Tile tile : allTiles) {
            QElapsedTimer timer;
            timer.start();
            const TileResult result = readTile(tile, connection.db(), books);
            std::printf("%s, %d courses: %-17s %7.1f ms%s%s\n", qPrintable(engine), count, tileName(tile), ms(timer),
                        result.failure.isEmpty() ? "" : "  — ", qPrintable(result.failure));
        }
    }
    // As the main window does: in the background, the event loop turning meanwhile.
    Tablo tablo(db, [] { return books; }, [] { return FirmProfile(); });
    tablo.resize(1024, 700);
    tablo.show();
    QElapsedTimer since;
    qint64 longestPause = 0;
    QTimer tick;
    tick.setInterval(5);
    QObject::connect(&tick, &QTimer::timeout, [&] {
        longestPause = std::max(longestPause, since.restart());
    });
    QSignalSpy loaded(&tablo, &Tablo::loaded);
    QElapsedTimer timer;
    timer.start();
    since.start();
    tick.start();
    tablo.refresh();
    loaded.wait(120000);
    tick.stop();
    const double all = ms(timer);
    std::printf("%s, %d courses: all tiles filled in %.1f ms; the longest pause of the event loop %lld ms\n",
                qPrintable(engine), count, all, static_cast<long long>(longestPause));
    if (const double goal = goalMs(count); goal > 0)
        std::printf("%s, %d courses: goal %.0f ms %s\n", qPrintable(engine), count, goal,
                    all < goal ? "met" : "NOT met");
}

}

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    return bench::runOnEnginesAndCourseCounts(argc, argv, run);
}
