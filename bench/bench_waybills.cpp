// Prints how long the waybill editor takes to open and to show a waybill's routes, and how long
// the waybill report of a month of every truck takes to its first page, on 20,000 waybills of
// five lines each spread over two years (about 830 a month). Not a test: figures only.
// Run: bench_waybills [waybills...] (default 20000). With ZAREK_TEST_PG set, PostgreSQL too.

#include "benchdata.h"
#include "core/firmprofile.h"
#include "data/scratchdatabase.h"
#include "printingmessages.h"
#include "forms/recordform.h"
#include "reports/reportlayout.h"
#include "reports/reportpreview.h"
#include "waybills/rowdlist.h"
#include "waybills/waybillreport.h"

#include <QApplication>
#include <QTabWidget>
#include <QTableView>
#include <QUuid>
#include <cstdio>

using namespace zarek;
using zarek::bench::ms;

namespace {

const QStringList trucks = {"СА 1234 ВК", "РК 5678 ВС", "РК 9012 КМ", "СО 3456 АР", "ВТ 7890 ХА",
                            "РВ 1111 АА", "РВ 2222 ВВ", "ЕН 3333 СС", "Е 4444 КК",  "СТ 5555 ММ"};

bool fillWaybills(QSqlDatabase db, int count)
{
    const QStringList routes = {"Пловдив - София", "София - Пловдив", "Пловдив - Ст. Загора", "Пловдив - Бургас"};
    if (!db.transaction())
        return false;
    QSqlQuery config(db);
    for (qsizetype t = 0; t < trucks.size(); ++t) {
        config.prepare(QStringLiteral("INSERT INTO Config (kola, Razhod, Procent, Ton) VALUES (?, ?, 12, 20)"));
        config.addBindValue(trucks[t]);
        config.addBindValue(28.0 + t);
        config.exec();
    }
    QSqlQuery header(db);
    header.prepare(QStringLiteral("INSERT INTO RowdList (ListID, Data, Kola, NameDriver, SumKM, SumRazhN, EndKM, ZarN, "
                                  "ZarM, CenaN, CenaM) VALUES (?, ?, ?, 'Иван Петров', ?, ?, ?, ?, 0, 2.45, 9.8)"));
    QSqlQuery line(db);
    line.prepare(QStringLiteral("INSERT INTO Marsh (MarshID, Marshrut, KM, Ton, Koef, RazhN) VALUES (?, ?, ?, ?, 0, ?)"));
    for (int i = 0; i < count; ++i) {
        const QString listId = QStringLiteral("%1").arg(i + 1, 10, 10, QLatin1Char('0'));
        double km = 0, fuel = 0;
        for (int l = 0; l < 5; ++l) {
            const double lineKm = 20 + (i * 7 + l * 31) % 250;
            const double ton = (i + l) % 18;
            const double razhN = std::round((ton * 0.4 + 30) * lineKm / 10.0) / 10.0;
            for (const QVariant &value : QVariantList{listId, routes[(i + l) % routes.size()], lineKm, ton, razhN})
                line.addBindValue(value);
            if (!line.exec())
                return false;
            km += lineKm;
            fuel += razhN;
        }
        for (const QVariant &value : QVariantList{listId, QDate(2024, 1, 1).addDays(i % 730), trucks[i % trucks.size()],
                                                  km, fuel, 100000.0 + i * 50, std::round(fuel)})
            header.addBindValue(value);
        if (!header.exec())
            return false;
    }
    return db.commit();
}

void benchWaybills(QSqlDatabase db, const char *engine, int count)
{
    bench::PrintingMessages messages;
    MessageService::setInstance(&messages);
    // Opening: from the command to the newest waybill painted. Best of three after a warm-up.
    double open = 1e9;
    std::unique_ptr<RowdList> screen;
    for (int i = 0; i < 4; ++i) {
        screen.reset();
        QElapsedTimer timer;
        timer.start();
        screen = std::make_unique<RowdList>(db);
        screen->show();
        QCoreApplication::processEvents();
        screen->grab();
        if (i > 0)
            open = std::min(open, ms(timer));
    }
    // The route tab of a waybill: its lines read and the grid painted. Best over ten waybills.
    double routes = 1e9;
    int lines = 0;
    for (int i = 0; i < 10; ++i) {
        screen->tabs()->setCurrentIndex(0);
        screen->header()->previous();
        QElapsedTimer timer;
        timer.start();
        screen->tabs()->setCurrentIndex(1);
        QCoreApplication::processEvents();
        screen->grid()->grab();
        routes = std::min(routes, ms(timer));
        lines = screen->grid()->model()->rowCount();
    }
    screen.reset();

    // The report of a month of every truck, to its first page on screen.
    ScratchDatabase scratch(QDir::tempPath() + QStringLiteral("/zarek-bench-") + QUuid::createUuid().toString(QUuid::Id128));
    FirmProfile firm;
    firm.UserName = QStringLiteral("Транспорт Петров ЕООД");
    SearchConditions conditions;
    conditions.SeekKola = allTrucks();
    conditions.period = {QDate(2024, 3, 1), QDate(2024, 3, 31)};
    double best = 1e9, query = 0, layout = 0;
    int pages = 0, rows = 0;
    for (int i = 0; i < 4; ++i) {
        QElapsedTimer total;
        total.start();
        scratch.RebuildScratchTable(QStringLiteral("TempRowdList"));
        const Checked<Report> report = RowdReport(conditions, db, scratch, firm);
        if (!report) {
            std::printf("  report: %s\n", qPrintable(report.message().text));
            return;
        }
        const double filled = ms(total);
        const LaidOutReport laid = layoutReport(report.value());
        const double laidOut = ms(total) - filled;
        ReportPreview preview(laid);
        preview.show();
        QCoreApplication::processEvents();
        preview.grab();
        const double shown = ms(total);
        if (i > 0 && shown < best) {
            best = shown;
            query = filled;
            layout = laidOut;
        }
        pages = laid.pageCount();
        rows = report.value().data().rowCount();
    }
    std::printf("%-10s %6d waybills: RowdList open %6.1f ms | route tab (%d lines) %5.1f ms | RowdReport March, "
                "all trucks: %d rows, %d pages, first page %6.1f ms (query+scratch %5.1f, layout %5.1f)\n",
                engine, count, open, lines, routes, rows, pages, best, query, layout);
    MessageService::setInstance(nullptr);
}

}

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    int failed = 0;
    for (const int count : bench::courseCounts(argc, argv, {20000})) {
        bench::runOnEngines([&](const QString &engine, QSqlDatabase db) {
            if (failed || !bench::migrated(db)) {
                failed = 1;
                return;
            }
            QElapsedTimer fill;
            fill.start();
            if (!fillWaybills(db, count)) {
                std::fprintf(stderr, "fill: %s\n", qPrintable(db.lastError().text()));
                failed = 1;
                return;
            }
            std::printf("%-10s filled %d waybills with %d lines in %.0f ms\n", qPrintable(engine), count, count * 5,
                        ms(fill));
            benchWaybills(db, qPrintable(engine), count);
        });
    }
    return failed;
}
