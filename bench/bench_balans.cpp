// Prints how long the truck balance takes to compute and show, in profit mode on 100,000 courses of
// 40 trucks with 20,000 warehouse issues, and in fuel mode on 20,000 waybills of 5 route lines each.
// Not a test: figures only. Run: bench_balans [courses] (default 100000).

#include "benchdata.h"
#include "data/scratchdatabase.h"
#include "fleet/balans.h"
#include "fleet/balansstore.h"
#include "forms/messageservice.h"

#include <QApplication>
#include <QTemporaryDir>
#include <cstdio>

using namespace zarek;
using zarek::bench::ms;

namespace {

constexpr int truckCount = 40;
constexpr int issueCount = 20000;
constexpr int waybillCount = 20000;
constexpr int linesPerWaybill = 5;
const QDate firstDay(2022, 1, 1);  // two years of data

QString plate(int i)
{
    return QStringLiteral("РВ %1 АК").arg(1000 + i * 37);
}

bool exec(QSqlQuery &query)
{
    if (query.exec())
        return true;
    std::fprintf(stderr, "insert: %s\n", qPrintable(query.lastError().text()));
    return false;
}

bool fill(QSqlDatabase db, int courses)
{
    if (!db.transaction())
        return false;
    QSqlQuery query(db);
    query.prepare(QStringLiteral("INSERT INTO Config (kola, Razhod, Procent, Ton) VALUES (?, ?, 12, 20)"));
    for (int i = 0; i < truckCount; ++i) {
        query.addBindValue(plate(i));
        query.addBindValue(28.0 + i % 9);
        if (!exec(query))
            return false;
    }
    query.prepare(QStringLiteral("INSERT INTO tabl (data, kod, kola, Klient, Marsh, Tovar, km, ton, Tarifa, bruto, "
                                 "procent, neto, Fakt, NomFakt, plat, Doc) "
                                 "VALUES (?, '001', ?, 'Бетон АД', 'Пловдив - София', 'Пясък', ?, ?, ?, ?, ?, ?, "
                                 "FALSE, '0000000000', FALSE, FALSE)"));
    for (int i = 0; i < courses; ++i) {
        const double km = 10 + i * 53 % 240;
        const double ton = 8 + (i * 37 % 170) / 10.0;
        const double rate = 0.08 + (i % 7) * 0.015;
        const double bruto = std::round(ton * km * rate * 100) / 100;
        const double procent = std::round(bruto * 3) / 100;
        for (const QVariant &value : QList<QVariant>{firstDay.addDays(i % 730), plate(i % truckCount), km, ton, rate,
                                                     bruto, procent, bruto - procent})
            query.addBindValue(value);
        if (!exec(query))
            return false;
    }
    query.prepare(QStringLiteral("INSERT INTO Sklad (Data, DocVid, DocNom, Name, Kol, Edin, Suma, VidKol, Ostat, Lipsa) "
                                 "VALUES (?, ?, '0000000001', 'Филтър маслен', 1, ?, ?, 'R', 0, TRUE)"));
    for (int i = 0; i < issueCount; ++i) {
        const double suma = 5 + (i * 71 % 9000) / 100.0;
        for (const QVariant &value : QList<QVariant>{firstDay.addDays(i * 7 % 730), plate(i * 3 % truckCount), suma, suma})
            query.addBindValue(value);
        if (!exec(query))
            return false;
    }
    QSqlQuery line(db);
    line.prepare(QStringLiteral("INSERT INTO Marsh (MarshID, Marshrut, KM, Ton, Koef, RazhN) VALUES (?, ?, ?, ?, 0, ?)"));
    query.prepare(QStringLiteral("INSERT INTO RowdList (ListID, Data, Kola, NameDriver, SumKM, SumRazhN, EndKM, ZarN, "
                                 "ZarM, CenaN, CenaM) VALUES (?, ?, ?, 'Иван Петров', ?, ?, 0, ?, 0, 2.5, 9.8)"));
    for (int i = 0; i < waybillCount; ++i) {
        const QString listId = QStringLiteral("%1").arg(i + 1, 10, 10, QLatin1Char('0'));
        double sumKm = 0;
        double sumFuel = 0;
        for (int l = 0; l < linesPerWaybill; ++l) {
            const double km = 20 + (i * 13 + l * 29) % 280;
            const double ton = (i + l) % 20;
            const double fuel = std::round((ton * 0.4 + 30) * km / 100 * 10) / 10;
            sumKm += km;
            sumFuel += fuel;
            for (const QVariant &value : QList<QVariant>{listId, QStringLiteral("Пловдив - София"), km, ton, fuel})
                line.addBindValue(value);
            if (!exec(line))
                return false;
        }
        for (const QVariant &value : QList<QVariant>{listId, firstDay.addDays(i * 730 / waybillCount),
                                                     plate(i % truckCount), sumKm, sumFuel, std::round(sumFuel * 1.03)})
            query.addBindValue(value);
        if (!exec(query))
            return false;
    }
    return db.commit();
}

void benchMode(QSqlDatabase db, BalansMode mode, const Period &period, const QString &folder)
{
    ScratchDatabase scratch(folder);
    const FirmProfile firm;
    QElapsedTimer step;
    step.start();
    const Checked<QList<TruckBalance>> figures = BalansStore(db).balances(mode, period, Changeover{});
    const double queries = ms(step);
    if (!figures) {
        std::fprintf(stderr, "balance: %s\n", qPrintable(figures.message().text));
        return;
    }
    step.restart();
    Balans screen(mode, period, db, &scratch, [&firm]() -> const FirmProfile & { return firm; });
    const double opened = ms(step);
    screen.show();
    QCoreApplication::processEvents();
    screen.grab();  // the first paint
    const double shown = ms(step);
    std::printf("%-6s balance, %d trucks, %s - %s: grouped queries %6.1f ms, screen made %6.1f ms, "
                "computed and shown %6.1f ms (goal < 300 ms)\n",
                mode == BalansMode::Profit ? "profit" : "fuel", int(figures.value().size()),
                qPrintable(period.from.toString(Qt::ISODate)), qPrintable(period.to.toString(Qt::ISODate)), queries,
                opened, shown);
}

}

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    RecordingMessageService quiet;
    const int courses = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 100000;
    QTemporaryDir dir;  // the files the bench writes
    int failed = 0;
    bench::runOnEngines([&](const QString &, QSqlDatabase db) {
        QElapsedTimer timer;
        timer.start();
        if (!bench::migrated(db) || !fill(db, courses)) {
            failed = 1;
            return;
        }
        std::printf("filled %d courses of %d trucks, %d warehouse issues, %d waybills of %d lines in %.0f ms\n",
                    courses, truckCount, issueCount, waybillCount, linesPerWaybill, ms(timer));
        const Period wholeTime{firstDay, firstDay.addDays(729)};
        const Period year{QDate(2023, 1, 1), QDate(2023, 12, 31)};
        for (int run = 0; run < 2; ++run) {
            std::printf("run %d\n", run + 1);
            benchMode(db, BalansMode::Profit, wholeTime, dir.path());
            benchMode(db, BalansMode::Profit, year, dir.path());
            benchMode(db, BalansMode::Fuel, year, dir.path());
        }
        if (!quiet.shown.isEmpty())
            std::fprintf(stderr, "message: %s\n", qPrintable(quiet.shown.first().text));
    }, true);
    return failed;
}
