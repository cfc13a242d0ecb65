// Prints how long "Записване", "Зареждане" and "Нова година" take on a firm of 100,000 courses and
// 100,000 warehouse movements (and 10,000 of each): the archive written and checked, the restore
// (its check and working copy, the safety copy and the replacement), and the year close (its
// archive and the deletion). The restore is raced against the engine's own dump and restore on the
// same data (sqlite3 .dump piped into sqlite3; pg_dump and pg_restore), each the best of three
// runs, with its goal of 2x; on SQLite also against .backup and cp of the file, for scale.
// SQLite always; PostgreSQL when ZAREK_TEST_PG names a server.
// Not a test: figures only. Run: bench_archive [counts...]

#include "benchdata.h"
#include "benchratio.h"
#include "data/archive.h"
#include "data/dialect.h"
#include "data/restore.h"
#include "data/yearclose.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <functional>
#include <limits>

using namespace zarek;
using zarek::bench::ms;

namespace {

// Movements many rows a statement: receipts and issues over two years, a few hundred articles.
bool fillMovements(QSqlDatabase db, int count)
{
    constexpr int perStatement = 50;
    const QString row = QStringLiteral("(?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    QStringList rows;
    for (int i = 0; i < perStatement; ++i)
        rows << row;
    const QString head = QStringLiteral("INSERT INTO Sklad (Data, DocVid, DocNom, Name, Kol, Edin, Suma, VidKol, Ostat, Lipsa) VALUES ");
    if (!db.transaction())
        return false;
    QSqlQuery query(db);
    query.prepare(head + rows.join(QLatin1Char(',')));
    for (int start = 0; start < count; start += perStatement) {
        for (int i = start; i < start + perStatement; ++i) {
            const bool receipt = i % 2 == 0;
            const double kol = 1 + i % 20;
            const double edin = 2.5 + (i % 300) * 0.75;
            query.addBindValue(QDate(2022, 1, 1).addDays(i % 730));
            query.addBindValue(receipt ? QStringLiteral("Фактура") : QStringLiteral("СА 1234 ВК"));
            query.addBindValue(QStringLiteral("%1").arg(i, 10, 10, QLatin1Char('0')));
            query.addBindValue(QStringLiteral("Артикул %1").arg(i % 300));
            query.addBindValue(kol);
            query.addBindValue(edin);
            query.addBindValue(std::round(kol * edin * 100) / 100);
            query.addBindValue(receipt ? QStringLiteral("P") : QStringLiteral("R"));
            query.addBindValue(receipt ? kol : 0.0);
            query.addBindValue(!receipt);
        }
        if (!query.exec()) {
            std::fprintf(stderr, "movements: %s\n", qPrintable(query.lastError().text()));
            return false;
        }
    }
    // The stock on hand of each article is what its receipts still hold, as the warehouse keeps it.
    if (!query.exec(QStringLiteral("INSERT INTO Nalich (Name, Edin, Broi) SELECT Name, MAX(Edin), SUM(Ostat) FROM Sklad "
                                   "WHERE VidKol = 'P' AND Lipsa = FALSE GROUP BY Name"))) {
        std::fprintf(stderr, "stock on hand: %s\n", qPrintable(query.lastError().text()));
        return false;
    }
    return db.commit();
}

// The engine's own tools on the same data, the races a restore is measured against. SQLite: its
// own dump and restore (sqlite3 file .dump | sqlite3 new file), its own copy (.backup) and cp of
// the file, its log folded in first. PostgreSQL: pg_dump and pg_restore into a database of their
// own. Each the best of three runs; a run that fails counts as never ending.
struct OwnTools {
    double dumpAndRestore = std::numeric_limits<double>::max();
    double backup = std::numeric_limits<double>::max();
    double copy = std::numeric_limits<double>::max();
};

OwnTools ownTools(QSqlDatabase db, const QString &folder)
{
    const auto run = [](const QString &program, const QStringList &arguments) {
        QProcess process;
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(program, arguments);
        return process.waitForFinished(-1) && process.exitCode() == 0;
    };
    const auto timed = [](const std::function<bool()> &step) {
        QElapsedTimer timer;
        timer.start();
        const bool done = step();
        const double took = ms(timer);
        return done ? took : std::numeric_limits<double>::max();
    };
    OwnTools tools;
    if (dialectOf(db) == Dialect::SQLite) {
        QSqlQuery(db).exec(QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)"));
        const QString copy = QDir(folder).filePath(QStringLiteral("copy.db"));
        const auto clean = [&copy] {
            for (const QString &suffix : {QString(), QStringLiteral("-journal"), QStringLiteral("-wal"), QStringLiteral("-shm")})
                QFile::remove(copy + suffix);
        };
        tools.dumpAndRestore = bench::bestOf3([&] {
            const double took = timed([&] {
                return run(QStringLiteral("sh"), {QStringLiteral("-c"), QStringLiteral("sqlite3 \"$1\" .dump | sqlite3 \"$2\""),
                                                  QStringLiteral("sh"), db.databaseName(), copy});
            });
            clean();
            return took;
        });
        tools.backup = bench::bestOf3([&] {
            const double took = timed([&] {
                return run(QStringLiteral("sqlite3"), {db.databaseName(), QStringLiteral(".backup '%1'").arg(copy)});
            });
            clean();
            return took;
        });
        tools.copy = bench::bestOf3([&] {
            const double took = timed([&] { return run(QStringLiteral("cp"), {db.databaseName(), copy}); });
            clean();
            return took;
        });
        return tools;
    }
    const QString server = QStringLiteral("postgresql://%1@%2:%3/").arg(db.userName(), db.hostName()).arg(db.port());
    const QString dump = QDir(folder).filePath(QStringLiteral("dump.pgc"));
    const QString copy = db.databaseName() + QStringLiteral("_tools");
    tools.dumpAndRestore = bench::bestOf3([&] {
        QSqlQuery(db).exec(QStringLiteral("CREATE DATABASE %1 TEMPLATE template0").arg(copy));
        const double took = timed([&] {
            return run(QStringLiteral("pg_dump"), {QStringLiteral("-Fc"), QStringLiteral("-f"), dump, server + db.databaseName()})
                   && run(QStringLiteral("pg_restore"), {QStringLiteral("-d"), server + copy, dump});
        });
        QSqlQuery(db).exec(QStringLiteral("DROP DATABASE IF EXISTS %1").arg(copy));
        QFile::remove(dump);
        return took;
    });
    return tools;
}

double megabytes(const QString &path)
{
    return QFileInfo(path).size() / 1048576.0;
}

}

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    return bench::runOnEnginesAndCourseCounts(argc, argv, [](const QString &engine, QSqlDatabase db, int count) {
        QElapsedTimer timer;
        timer.start();
        if (!fillMovements(db, count))
            return;
        // An invoiced course carries its invoice's number, or an archive of it is refused on restore:
        // the bench's invoiced courses are left not invoiced.
        QSqlQuery invoiced(db);
        invoiced.prepare(QStringLiteral("UPDATE tabl SET Fakt = ? WHERE Fakt = ?"));
        invoiced.addBindValue(false);
        invoiced.addBindValue(true);
        invoiced.exec();
        QSqlQuery firm(db);
        firm.exec(QStringLiteral("INSERT INTO ZarekCfg (UserName, UserAdres, UserCity, UserTel) "
                                 "VALUES ('Бенчмарк ООД', 'ул. Първа 1', 'Перник', '076 600 600')"));
        std::printf("%s: filled %d movements in %.0f ms\n", qPrintable(engine), count, ms(timer));
        QTemporaryDir dir;
        const QString archive = dir.filePath(QStringLiteral("archive.abd"));

        timer.restart();
        const auto written = writeArchive(db, archive);
        if (!written) {
            std::fprintf(stderr, "archive: %s\n", qPrintable(written.message().text));
            return;
        }
        std::printf("%s %d: archive written and checked in %.0f ms (%.1f MB)\n", qPrintable(engine), count, ms(timer),
                    megabytes(archive));

        // The restore raced against the engine's own tools, each the best of three runs.
        double checkedBest = 0;
        double restoreBest = std::numeric_limits<double>::max();
        bool failed = false;
        for (int run = 0; run < 3 && !failed; ++run) {
            timer.restart();
            PreparedArchive prepared;
            if (auto refusal = prepared.prepare(archive, dir.path())) {
                std::fprintf(stderr, "restore: %s\n", qPrintable(refusal->text));
                failed = true;
                break;
            }
            const double checked = ms(timer);
            const auto restored = restoreArchive(db, prepared, dir.path(), QDateTime::currentDateTime());
            if (!restored) {
                std::fprintf(stderr, "restore: %s\n", qPrintable(restored.message().text));
                failed = true;
                break;
            }
            const double restore = ms(timer);
            QFile::remove(restored.value().safetyCopy);
            if (restore < restoreBest) {
                restoreBest = restore;
                checkedBest = checked;
            }
        }
        if (failed)
            return;
        const OwnTools tools = ownTools(db, dir.path());
        const bool sqlite = dialectOf(db) == Dialect::SQLite;
        if (tools.dumpAndRestore == std::numeric_limits<double>::max()) {
            std::fprintf(stderr, "the engine's own dump and restore failed\n");
            return;
        }
        std::printf("%s %d: restore in %.0f ms (check and working copy %.0f ms, safety copy and replacement %.0f ms)\n",
                    qPrintable(engine), count, restoreBest, checkedBest, restoreBest - checkedBest);
        // The goal: within 2x of the engine's own dump and restore; SQLite's page copies for scale.
        const QString label = QStringLiteral("%1 %2: restore").arg(engine).arg(count);
        bench::printRace(qPrintable(label), restoreBest, tools.dumpAndRestore, 2.0,
                         sqlite ? "sqlite3 .dump | sqlite3" : "pg_dump + pg_restore");
        if (sqlite) {
            const double never = std::numeric_limits<double>::max();
            if (tools.backup != never)
                std::printf("  %-44s %8.1f ms, %s %7.1f ms, %5.2fx (for scale)\n", qPrintable(label), restoreBest,
                            "sqlite3 .backup", tools.backup, restoreBest / tools.backup);
            if (tools.copy != never)
                std::printf("  %-44s %8.1f ms, %s %7.1f ms, %5.2fx (for scale)\n", qPrintable(label), restoreBest, "cp",
                            tools.copy, restoreBest / tools.copy);
        }

        timer.restart();
        const int year = closingYear(db, QDate::currentDate());
        const auto closed = closeYear(db, dir.path(), year, false, QDateTime::currentDateTime());
        if (!closed) {
            std::fprintf(stderr, "year close: %s\n", qPrintable(closed.message().text));
            return;
        }
        std::printf("%s %d: year close of %d in %.0f ms (%lld courses archived and deleted)\n", qPrintable(engine), count,
                    year, ms(timer), closed.value().deletedCourses);
    });
}
