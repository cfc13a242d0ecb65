#pragma once

// Courses written straight into tabl for the benchmarks: five trucks, four clients, three
// routes and cargoes, nine drivers, spread over two years.

#include "data/database.h"
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
    const QStringList routes = {"Перник - София", "Перник - Радомир - Кюстендил", "Батановци - Перник"};
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

// Runs the benchmark once per count of courses given on the command line (default 10,000 and
// 100,000), each on a fresh SQLite file filled with that many courses. The exit code of the program.
inline int runOnCourseCounts(int argc, char **argv, const std::function<void(QSqlDatabase db, int count)> &bench)
{
    QList<int> sizes;
    for (int i = 1; i < argc; ++i)
        sizes.append(QString::fromLocal8Bit(argv[i]).toInt());
    if (sizes.isEmpty())
        sizes = {10000, 100000};
    for (const int count : sizes) {
        QTemporaryDir dir;
        DatabaseConfig config;
        config.sqlitePath = dir.filePath(QStringLiteral("bench.db"));
        const QString connection = QStringLiteral("bench%1").arg(count);
        {
            QSqlDatabase db = openDatabase(config, connection);
            QString error;
            if (!db.isOpen() || !migrateSchema(db, &error)) {
                std::fprintf(stderr, "database: %s\n", qPrintable(error));
                return 1;
            }
            QElapsedTimer fill;
            fill.start();
            if (!fillCourses(db, count))
                return 1;
            std::printf("filled %d courses in %.0f ms\n", count, ms(fill));
            bench(db, count);
        }
        closeDatabase(connection);
    }
    return 0;
}

// As runOnCourseCounts, once on SQLite and once more on PostgreSQL when ZAREK_TEST_PG names a
// server (a database of its own, dropped afterwards). The bench is told the engine's name.
inline int runOnEnginesAndCourseCounts(int argc, char **argv,
                                       const std::function<void(const QString &engine, QSqlDatabase db, int count)> &bench)
{
    QList<int> sizes;
    for (int i = 1; i < argc; ++i)
        sizes.append(QString::fromLocal8Bit(argv[i]).toInt());
    if (sizes.isEmpty())
        sizes = {10000, 100000};
    const auto admin = DatabaseConfig::fromText(qEnvironmentVariable("ZAREK_TEST_PG"));
    if (!admin)
        std::printf("PostgreSQL skipped: set ZAREK_TEST_PG=postgresql://user@host:port/postgres\n");
    for (const int count : sizes) {
        for (const bool pg : {false, true}) {
            if (pg && !admin)
                continue;
            QTemporaryDir dir;
            DatabaseConfig config;
            const QString connection = QStringLiteral("bench%1%2").arg(count).arg(pg ? "pg" : "lite");
            const QString pgName = QStringLiteral("zarek_bench_%1_%2").arg(QCoreApplication::applicationPid()).arg(count);
            if (pg) {
                QSqlQuery create(openDatabase(*admin, QStringLiteral("benchadmin")));
                create.exec(QStringLiteral("CREATE DATABASE %1 ENCODING 'UTF8' TEMPLATE template0").arg(pgName));
                config = *admin;
                config.databaseName = pgName;
            } else {
                config.sqlitePath = dir.filePath(QStringLiteral("bench.db"));
            }
            {
                QSqlDatabase db = openDatabase(config, connection);
                QString error;
                if (!db.isOpen() || !migrateSchema(db, &error)) {
                    std::fprintf(stderr, "database: %s\n", qPrintable(error));
                    return 1;
                }
                QElapsedTimer fill;
                fill.start();
                if (!fillCourses(db, count))
                    return 1;
                if (pg) {
                    QSqlQuery analyze(db);
                    analyze.exec(QStringLiteral("ANALYZE"));
                }
                std::printf("%s: filled %d courses in %.0f ms\n", pg ? "PostgreSQL" : "SQLite", count, ms(fill));
                bench(pg ? QStringLiteral("PostgreSQL") : QStringLiteral("SQLite"), db, count);
            }
            closeDatabase(connection);
            if (pg) {
                QSqlQuery drop(QSqlDatabase::database(QStringLiteral("benchadmin")));
                drop.exec(QStringLiteral("DROP DATABASE IF EXISTS %1").arg(pgName));
            }
        }
    }
    return 0;
}

}
