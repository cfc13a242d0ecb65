// Prints how long the client statement takes to open for a client with 5,000 courses in a year
// (among 100,000 courses), and to print, each raced against the bare statements it runs; and to
// save and load its .kl file. SQLite always; PostgreSQL when ZAREK_TEST_PG names a server.
// Not a test: figures only. Run: bench_klients [courses] [courses of the client] (default 100000 5000).

#include "benchdata.h"
#include "benchratio.h"
#include "data/scratchdatabase.h"
#include "forms/messageservice.h"
#include "reports/reportpreview.h"
#include "settlement/klfile.h"
#include "settlement/klients.h"
#include "settlement/klientsstore.h"

#include <QApplication>
#include <QFileInfo>
#include <QTemporaryDir>
#include <cstdio>

using namespace zarek;
using zarek::bench::ms;

namespace {

const QString client = QStringLiteral("Бетон Перник АД");
bool fill(QSqlDatabase db, int total, int clientCourses)
{
    const QStringList others = {"Д'Аргос ООД", "Стройинвест Юг ЕООД", "Пътстрой ЕАД", "Агрополис ООД"};
    const QStringList routes = {"Перник - София", "Перник - Кюстендил", "Батановци - Перник"};
    if (!db.transaction())
        return false;
    QSqlQuery query(db);
    query.prepare(QStringLiteral("INSERT INTO tabl (data, kod, kola, Klient, Marsh, Tovar, km, ton, Tarifa, bruto, "
                                 "procent, neto, Fakt, NomFakt, plat, Doc) "
                                 "VALUES (?, '001', ?, ?, ?, 'Пясък', ?, ?, ?, ?, 0, ?, FALSE, '0000000000', FALSE, FALSE)"));
    for (int i = 0; i < total; ++i) {
        const bool mine = i % (total / clientCourses) == 0 && i / (total / clientCourses) < clientCourses;
        const double km = 10 + i * 53 % 240;
        const double ton = 8 + (i * 37 % 170) / 10.0;
        const double rate = 0.08 + (i % 7) * 0.015;
        const double bruto = std::round(ton * km * rate * 100) / 100;
        const QDate date = mine ? QDate(2023, 1, 1).addDays(i % 365) : QDate(2022, 1, 1).addDays(i % 730);
        for (const QVariant &value : QList<QVariant>{date, QStringLiteral("РВ %1 АК").arg(1000 + i % 40),
                                                     mine ? client : others.at(i % others.size()),
                                                     routes.at(i % routes.size()), km, ton, rate, bruto, bruto})
            query.addBindValue(value);
        if (!query.exec()) {
            std::fprintf(stderr, "insert: %s\n", qPrintable(query.lastError().text()));
            return false;
        }
    }
    if (!db.commit())
        return false;
    if (dialectOf(db) == Dialect::PostgreSQL)
        QSqlQuery(db).exec(QStringLiteral("ANALYZE"));
    return true;
}

void benchStatement(QSqlDatabase db, const QString &folder)
{
    const FirmProfile firm;
    SearchConditions conditions;
    conditions.SeekKlient = client;
    conditions.period = {QDate(2023, 1, 1), QDate(2023, 12, 31)};
    // The statement the screen reads the client's courses with, bare.
    const QList<bench::Statement> screenStatements = {
        {KlientsStore::clientCoursesSql(dialectOf(db)), {client, conditions.period.from, conditions.period.to}}};
    bench::runBare(db, screenStatements);  // the first run reads the pages in

    // The screen, opened and drawn; and its paper, its first page shown.
    int rows = 0;
    double made = 0;
    const double opened = bench::bestOf3([&] {
        QElapsedTimer step;
        step.start();
        Klients screen(conditions, db, std::make_unique<ScratchDatabase>(folder),
                       [&firm]() -> const FirmProfile & { return firm; });
        made = ms(step);
        screen.show();
        const QPixmap drawn = screen.grab();  // drawn
        const double taken = ms(step);
        bench::keepPicture(drawn, "klients");
        rows = screen.model()->rowCount();
        return taken;
    });
    const double screenBare = bench::bareOf3(db, screenStatements);

    Klients screen(conditions, db, std::make_unique<ScratchDatabase>(folder),
                   [&firm]() -> const FirmProfile & { return firm; });
    screen.show();
    QCoreApplication::processEvents();
    // The paper reads the working list by route and writes and reads its printed copy.
    const QList<bench::Statement> paperStatements = {
        {QStringLiteral("SELECT rowid AS RowKey, Data, Marsh, VidTovar, Kola, KM, Ton, Tarifa, Suma FROM TempKlients "
                        "ORDER BY Marsh, Data, rowid"), {}},
        {QStringLiteral("SELECT Data, Marsh, VidTovar, Kola, KM, Ton, Tarifa, Suma FROM TempKlientsNew ORDER BY rowid"),
         {}}};
    int pages = 0;
    double laidOut = 0;
    double paperBare = 0;
    const double printed = bench::bestOf3([&] {
        QElapsedTimer step;
        step.start();
        std::unique_ptr<ReportPreview> preview(screen.print());
        const QPixmap drawn = preview ? preview->grab() : QPixmap();  // its first page drawn
        const double taken = ms(step);
        bench::keepPicture(drawn, "statement");
        paperBare = std::max(paperBare, bench::bareOf3(screen.scratch()->db(), paperStatements));
        step.restart();
        pages = preview ? preview->report().pageCount() : 0;
        laidOut = ms(step);
        return taken;
    });
    paperBare = bench::bareOf3(screen.scratch()->db(), paperStatements);
    std::printf("  statement of %d courses (screen made %.1f ms; goal < 500 ms); the rest of its %d pages laid out "
                "%.1f ms\n",
                rows, made, pages, laidOut);
    bench::printRace("statement screen (Klients) opened and drawn", opened, screenBare);
    bench::printRace("statement paper, first page shown", printed, paperBare, 2.0, "bare scratch reads");

    const QString unprinted = folder + QStringLiteral("/списък.kl");
    QElapsedTimer step;
    step.start();
    const auto saveRefusal = saveStatementFile(screen.scratch()->db(), {client, conditions.period}, unprinted);
    const double saved = ms(step);

    const QString both = folder + QStringLiteral("/списък и печат.kl");
    step.restart();
    const auto bothRefusal = saveStatementFile(screen.scratch()->db(), {client, conditions.period}, both);
    const double savedBoth = ms(step);

    screen.chooseFileToOpen = [&unprinted](QWidget *) { return unprinted; };
    step.restart();
    screen.openFile();
    const double loaded = ms(step);
    screen.chooseFileToOpen = [&both](QWidget *) { return both; };
    step.restart();
    screen.openFile();
    const double loadedBoth = ms(step);

    if (saveRefusal || bothRefusal || screen.model()->rowCount() != rows)
        std::fprintf(stderr, "the file round trip failed\n");
    std::printf("  .kl of %d rows (%lld bytes): saved %6.1f ms, loaded %6.1f ms; with its printed copy (%d rows, "
                "%lld bytes): saved %6.1f ms, loaded %6.1f ms (goal < 300 ms each)\n",
                rows, static_cast<long long>(QFileInfo(unprinted).size()), saved, loaded, 2 * rows,
                static_cast<long long>(QFileInfo(both).size()), savedBoth, loadedBoth);
}

}

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    RecordingMessageService quiet;
    const int courses = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 100000;
    const int clientCourses = argc > 2 ? QString::fromLocal8Bit(argv[2]).toInt() : 5000;
    QTemporaryDir dir;  // the files the bench writes
    int failed = 0;
    bench::runOnEngines([&](const QString &engine, QSqlDatabase db) {
        QElapsedTimer timer;
        timer.start();
        if (!bench::migrated(db) || !fill(db, courses, clientCourses)) {
            failed = 1;
            return;
        }
        std::printf("%s: filled %d courses, %d of them of the client in 2023, in %.0f ms\n", qPrintable(engine),
                    courses, clientCourses, ms(timer));
        benchStatement(db, dir.path());
        if (!quiet.shown.isEmpty())
            std::fprintf(stderr, "message: %s\n", qPrintable(quiet.shown.first().text));
    });
    return failed;
}
