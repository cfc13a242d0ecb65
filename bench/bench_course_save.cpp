// Saves N courses through the course save API and reads them back, then runs a bare loop of the
// same two INSERTs (one transaction per course) on the same connection; prints the figures.
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
#include <QTemporaryDir>
#include <cstdio>

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
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < count; ++i) {
        if (!store.save(entryFor(i), {CourseMode::NewKurs, true, {}}, books).ok()) {
            std::printf("%s: save failed at %d\n", qPrintable(engine), i);
            return;
        }
    }
    const qint64 saveMs = timer.restart();

    QSqlQuery read(db);
    read.setForwardOnly(true);
    read.exec(QStringLiteral("SELECT * FROM tabl"));
    int readBack = 0;
    while (read.next())
        readBack += CourseStore::fromRecord(read.record()).id > 0;
    const qint64 readMs = timer.restart();

    QSqlQuery course(db);
    course.prepare(QStringLiteral(
        "INSERT INTO tabl (data, kod, kola, Klient, Marsh, Tovar, km, ton, Tarifa, bruto, procent, neto, Fakt, "
        "NomFakt, plat, Doc) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    QSqlQuery expense(db);
    expense.prepare(QStringLiteral("INSERT INTO Sklad (DocVid, DocNom, Data, Name, Kol, Edin, Suma, VidKol, Lipsa, Ostat) "
                                   "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    timer.restart();
    for (int i = 0; i < count; ++i) {
        Transaction transaction(db);
        const QVariantList values{QDate(2025, 1, 1).addDays(i % 700), QStringLiteral("001"), QStringLiteral("РВ 1000 ТМ"),
                                  QStringLiteral("Клиент ООД"), QStringLiteral("Маршрут"), QStringLiteral("Пясък"),
                                  25.0, 10.0, 0.18, 45.0, 1.35, 43.65, false, QStringLiteral("0000000000"), false, false};
        for (int v = 0; v < values.size(); ++v)
            course.bindValue(v, values[v]);
        course.exec();
        const QVariantList row{QStringLiteral("РВ 1000 ТМ"), QStringLiteral("0000000000"), QDate(2025, 1, 1),
                               QStringLiteral("Разходи за курс"), 1.0, 0.0, 0.0, QStringLiteral("R"), true, 0.0};
        for (int v = 0; v < row.size(); ++v)
            expense.bindValue(v, row[v]);
        expense.exec();
        transaction.commit();
    }
    const qint64 bareMs = timer.elapsed();

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
