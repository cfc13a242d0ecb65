// Saves N courses through the course save API and, in turn block by block, the very rows it wrote
// again by a bare loop of the same two INSERTs (one transaction per course) on the same connection;
// then reads every course back; prints the figures.
// SQLite always; PostgreSQL when ZAREK_TEST_PG names a server. Usage: bench_course_save [N]

#include "benchdata.h"
#include "core/formats.h"
#include "courses/coursestore.h"
#include "data/database.h"
#include "data/schema.h"
#include "data/transaction.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTemporaryDir>
#include <cstdio>
#include <vector>

using namespace zarek;

namespace {

CourseEntry entryFor(int i)
{
    CourseEntry entry;
    entry.driver = QStringLiteral("%1,Шофьор %1").arg(i % 12 + 1, 3, 10, QLatin1Char('0'));
    entry.kola = QStringLiteral("РВ %1 ТМ").arg(1000 + i % 9);
    entry.date = QDate(2025, 1, 1).addDays(i % 700).toString(QStringLiteral("dd.MM.yyyy"));
    entry.ton = formatFixed(10 + i % 15, 1);
    entry.km = QString::number(15 + i % 300);
    entry.tarifa = QStringLiteral("0,180");
    entry.marsh = QStringLiteral("Пловдив - Маршрут %1").arg(i % 25);
    entry.klient = QStringLiteral("Клиент %1 ООД").arg(i % 20);
    entry.tovar = QStringLiteral("Пясък");
    entry.nomFakt = QStringLiteral("0000000000");
    return entry;
}

double perSecond(int count, qint64 ms)
{
    return ms > 0 ? count * 1000.0 / double(ms) : 0.0;
}

void run(const QString &engine, QSqlDatabase db, int count)
{
    QString error;
    if (!migrateSchema(db, &error)) {
        std::printf("%s: %s\n", qPrintable(engine), qPrintable(error));
        return;
    }
    CourseStore store(db);
    const BooksDay books{Changeover{}, QDate::currentDate()};
    const QString courseColumns = QStringLiteral("data, kod, kola, Klient, Marsh, Tovar, km, ton, Tarifa, bruto, procent, "
                                                 "neto, Fakt, NomFakt, plat, Doc");
    const QString expenseColumns = QStringLiteral("DocVid, DocNom, Data, Name, Kol, Edin, Suma, VidKol, Lipsa, Ostat");
    QSqlQuery course(db);
    course.prepare(QStringLiteral("INSERT INTO tabl (%1) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)").arg(courseColumns));
    QSqlQuery expense(db);
    expense.prepare(QStringLiteral("INSERT INTO Sklad (%1) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)").arg(expenseColumns));
    // The rows of a table past an id, in id order, each as its values.
    const auto rowsAfter = [&db](const QString &columns, const QString &table, qint64 after, qint64 *last) {
        std::vector<QVariantList> rows;
        QSqlQuery query(db);
        query.setForwardOnly(true);
        query.exec(QStringLiteral("SELECT id, %1 FROM %2 WHERE id > %3 ORDER BY id").arg(columns, table).arg(after));
        while (query.next()) {
            *last = query.value(0).toLongLong();
            QVariantList row;
            for (int column = 1; column < query.record().count(); ++column)
                row.append(query.value(column));
            rows.push_back(row);
        }
        return rows;
    };

    // In blocks of 100, in turn: the courses saved through the API, then the very rows it wrote
    // written again by the bare pair of INSERTs (one transaction per course), into the same
    // tables and indexes, so that the same keys dirty the same pages and a machine busy for a
    // moment weighs on both alike.
    qint64 saveMs = 0;
    qint64 bareMs = 0;
    qint64 lastCourse = 0;
    qint64 lastExpense = 0;
    QElapsedTimer timer;
    for (int from = 0; from < count; from += 100) {
        const int to = std::min(count, from + 100);
        timer.start();
        for (int i = from; i < to; ++i) {
            if (!store.save(entryFor(i), {CourseMode::NewKurs, true, {}}, books).ok()) {
                std::printf("%s: save failed at %d\n", qPrintable(engine), i);
                return;
            }
        }
        saveMs += timer.elapsed();
        const std::vector<QVariantList> courses = rowsAfter(courseColumns, QStringLiteral("tabl"), lastCourse, &lastCourse);
        const std::vector<QVariantList> expenses = rowsAfter(expenseColumns, QStringLiteral("Sklad"), lastExpense, &lastExpense);
        timer.start();
        for (size_t i = 0; i < courses.size() && i < expenses.size(); ++i) {
            Transaction transaction(db);
            for (int v = 0; v < courses[i].size(); ++v)
                course.bindValue(v, courses[i][v]);
            course.exec();
            for (int v = 0; v < expenses[i].size(); ++v)
                expense.bindValue(v, expenses[i][v]);
            expense.exec();
            transaction.commit();
        }
        bareMs += timer.elapsed();
        // The bare rows are passed over by the next block's read.
        rowsAfter(QStringLiteral("id"), QStringLiteral("tabl"), lastCourse, &lastCourse);
        rowsAfter(QStringLiteral("id"), QStringLiteral("Sklad"), lastExpense, &lastExpense);
    }

    timer.start();
    QSqlQuery read(db);
    read.setForwardOnly(true);
    read.exec(QStringLiteral("SELECT * FROM tabl"));
    int readBack = 0;
    while (read.next())
        readBack += CourseStore::fromRecord(read.record()).id > 0;
    const qint64 readMs = timer.elapsed();

    std::printf("%-10s save API %8.0f courses/s (%lld ms) | read back %9.0f courses/s (%d rows, %lld ms) | "
                "bare INSERTs %8.0f courses/s (%lld ms) | save/bare time ratio %.2f (goal 1.3: %s)\n",
                qPrintable(engine), perSecond(count, saveMs), saveMs, perSecond(readBack, readMs), readBack, readMs,
                perSecond(count, bareMs), bareMs, bareMs > 0 ? double(saveMs) / double(bareMs) : 0.0,
                bareMs > 0 && double(saveMs) <= 1.3 * double(bareMs) ? "met" : "NOT met");
}

}

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const int count = argc > 1 ? QString::fromLatin1(argv[1]).toInt() : 10000;
    bench::runOnEngines([count](const QString &engine, QSqlDatabase db) { run(engine, db, count); });
    return 0;
}
