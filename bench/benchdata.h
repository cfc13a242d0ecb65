#pragma once

// Courses written straight into tabl for the benchmarks: five trucks, four clients, three
// routes and cargoes, nine drivers, spread over two years.

#include "data/database.h"
#include "data/dialect.h"
#include "data/schema.h"

#include <QCoreApplication>
#include <QDate>
#include <QElapsedTimer>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>
#include <cmath>
#include <QTemporaryDir>
#include <cstdio>
#include <functional>

namespace zarek::bench {

inline double ms(const QElapsedTimer &timer) { return timer.nsecsElapsed() / 1e6; }

inline bool fillCourses(QSqlDatabase db, int count)
{
    const QStringList trucks = {"СА 1234 ВК", "РК 5678 ВС", "РК 9012 КМ", "СО 3456 АР", "ВТ 7890 ХА"};
    const QStringList clients = {"Бетон Перник АД", "Д'Аргос ООД", "Стройинвест Юг ЕООД", "Пътстрой ЕАД"};
    const QStringList routes = {"Перник - София", "Радомир - Кюстендил", "Батановци - Перник"};
    const QStringList goods = {"Пясък", "Чакъл 0-4 мм", "Бетонови елементи"};
    if (!db.transaction())
        return false;
    QSqlQuery query(db);
    query.prepare(QStringLiteral("INSERT INTO tabl (data, kod, kola, Klient, Marsh, Tovar, km, ton, Tarifa, bruto, "
                                 "procent, neto, Fakt, NomFakt, plat, Doc) "
                                 "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    for (int i = 0; i < count; ++i) {
        const double ton = 8 + (i * 37 % 170) / 10.0;
        const double km = 10 + (i * 53 % 240);
        const double rate = 0.08 + (i % 7) * 0.015;
        const double bruto = std::round(ton * km * rate * 100) / 100;
        const double procent = std::round(bruto * 3) / 100;
        const QList<QVariant> values = {QDate(2022, 1, 1).addDays(i % 730), QStringLiteral("00%1").arg(i % 9),
                                        trucks.at(i % trucks.size()), clients.at(i % clients.size()),
                                        routes.at(i % routes.size()), goods.at(i % goods.size()), km, ton, rate,
                                        bruto, procent, bruto - procent, i % 4 == 0,
                                        QStringLiteral("0000000000"), i % 3 == 0, false};
        for (const QVariant &value : values)
            query.addBindValue(value);
        if (!query.exec()) {
            std::fprintf(stderr, "insert: %s\n", qPrintable(query.lastError().text()));
            return false;
        }
    }
    return db.commit();
}

// The bench once on a new SQLite file, and once more on a new PostgreSQL database of its own when
// ZAREK_TEST_PG names a server (dropped afterwards). The databases are empty, not yet migrated;
// each connection is closed when its bench returns.
inline void runOnEngines(const std::function<void(const QString &engine, QSqlDatabase db)> &bench, bool sqliteOnly = false)
{
    static int run = 0;
    const QString tag = QStringLiteral("%1_%2").arg(QCoreApplication::applicationPid()).arg(++run);
    // ZAREK_BENCH_ENGINE=SQLite or PostgreSQL: that engine alone (a run at a million courses is long).
    const QString only = qEnvironmentVariable("ZAREK_BENCH_ENGINE");
    if (only.isEmpty() || only == QStringLiteral("SQLite")) {
        QTemporaryDir dir;
        DatabaseConfig config;
        config.sqlitePath = dir.filePath(QStringLiteral("bench.db"));
        const QString connection = QStringLiteral("bench_lite_") + tag;
        bench(QStringLiteral("SQLite"), openDatabase(config, connection));
        closeDatabase(connection);
    }
    if (sqliteOnly || (!only.isEmpty() && only != QStringLiteral("PostgreSQL")))
        return;
    const auto admin = DatabaseConfig::fromText(qEnvironmentVariable("ZAREK_TEST_PG"));
    if (!admin) {
        std::printf("PostgreSQL skipped: set ZAREK_TEST_PG=postgresql://user@host:port/postgres\n");
        return;
    }
    const QString name = QStringLiteral("zarek_bench_") + tag;
    const QString adminConnection = QStringLiteral("bench_admin_") + tag;
    QSqlQuery(openDatabase(*admin, adminConnection))
        .exec(QStringLiteral("CREATE DATABASE %1 ENCODING 'UTF8' TEMPLATE template0").arg(name));
    DatabaseConfig config = *admin;
    config.databaseName = name;
    const QString connection = QStringLiteral("bench_pg_") + tag;
    bench(QStringLiteral("PostgreSQL"), openDatabase(config, connection));
    closeDatabase(connection);
    QSqlQuery(QSqlDatabase::database(adminConnection)).exec(QStringLiteral("DROP DATABASE IF EXISTS %1").arg(name));
    closeDatabase(adminConnection);
}

// A new database migrated; false, told on stderr, when it cannot be.
inline bool migrated(QSqlDatabase db)
{
    QString error;
    if (!db.isOpen() || !migrateSchema(db, &error)) {
        std::fprintf(stderr, "database: %s\n", qPrintable(error.isEmpty() ? db.lastError().text() : error));
        return false;
    }
    return true;
}

// The counts of courses given on the command line, or the defaults.
inline QList<int> courseCounts(int argc, char **argv, QList<int> defaults = {10000, 100000})
{
    QList<int> sizes;
    for (int i = 1; i < argc; ++i)
        sizes.append(QString::fromLocal8Bit(argv[i]).toInt());
    return sizes.isEmpty() ? defaults : sizes;
}

// Runs the benchmark once per count of courses given on the command line (default 10,000 and
// 100,000), each on a new database filled with that many courses: on SQLite, and on PostgreSQL
// too unless sqliteOnly. The bench is told the engine's name. The exit code of the program.
inline int runOnEnginesAndCourseCounts(int argc, char **argv,
                                       const std::function<void(const QString &engine, QSqlDatabase db, int count)> &bench,
                                       bool sqliteOnly = false)
{
    int failed = 0;
    for (const int count : courseCounts(argc, argv)) {
        runOnEngines([&](const QString &engine, QSqlDatabase db) {
            if (failed || !migrated(db)) {
                failed = 1;
                return;
            }
            QElapsedTimer fill;
            fill.start();
            if (!fillCourses(db, count)) {
                failed = 1;
                return;
            }
            // As a database in use stands after autovacuum: planned from its statistics, and its
            // visibility map set, so that a count can read the index alone.
            if (dialectOf(db) == Dialect::PostgreSQL)
                QSqlQuery(db).exec(QStringLiteral("VACUUM ANALYZE"));
            std::printf("%s: filled %d courses in %.0f ms\n", qPrintable(engine), count, ms(fill));
            bench(engine, db, count);
        }, sqliteOnly);
    }
    return failed;
}

// As runOnEnginesAndCourseCounts, on SQLite alone.
inline int runOnCourseCounts(int argc, char **argv, const std::function<void(QSqlDatabase db, int count)> &bench)
{
    return runOnEnginesAndCourseCounts(
        argc, argv, [&bench](const QString &, QSqlDatabase db, int count) { bench(db, count); }, true);
}

}
