// Prints how long the client statement takes to open for a client with 5,000 courses in a year
// (among 100,000 courses), to print, and to save and load its .kl file.
// Not a test: figures only. Run: bench_klients [courses of the client] (default 5000).

#include "benchdata.h"
#include "data/scratchdatabase.h"
#include "forms/messageservice.h"
#include "reports/reportpreview.h"
#include "settlement/klfile.h"
#include "settlement/klients.h"

#include <QApplication>
#include <QFileInfo>
#include <QTemporaryDir>
#include <cstdio>

using namespace zarek;
using zarek::bench::ms;

namespace {

const QString client = QStringLiteral("Бетон Перник АД");
constexpr int otherCourses = 95000;

bool fill(QSqlDatabase db, int clientCourses)
{
    const QStringList others = {"Д'Аргос ООД", "Стройинвест Юг ЕООД", "Пътстрой ЕАД", "Агрополис ООД"};
    const QStringList routes = {"Перник - София", "Перник - Кюстендил", "Батановци - Перник"};
    if (!db.transaction())
        return false;
    QSqlQuery query(db);
    query.prepare(QStringLiteral("INSERT INTO tabl (data, kod, kola, Klient, Marsh, Tovar, km, ton, Tarifa, bruto, "
                                 "procent, neto, Fakt, NomFakt, plat, Doc) "
                                 "VALUES (?, '001', ?, ?, ?, 'Пясък', ?, ?, ?, ?, 0, ?, FALSE, '0000000000', FALSE, FALSE)"));
    const int total = otherCourses + clientCourses;
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
    return db.commit();
}

void benchStatement(QSqlDatabase db, const QString &folder)
{
    const FirmProfile firm;
    SearchConditions conditions;
    conditions.SeekKlient = client;
    conditions.period = {QDate(2023, 1, 1), QDate(2023, 12, 31)};

    QElapsedTimer step;
    step.start();
    Klients screen(conditions, db, std::make_unique<ScratchDatabase>(folder), [&firm]() -> const FirmProfile & { return firm; });
    const double made = ms(step);
    screen.show();
    QCoreApplication::processEvents();
    screen.grab();
    const double opened = ms(step);
    const int rows = screen.model()->rowCount();

    const QString unprinted = folder + QStringLiteral("/списък.kl");
    step.restart();
    const auto saveRefusal = saveStatementFile(screen.scratch()->db(), {client, conditions.period}, unprinted);
    const double saved = ms(step);

    step.restart();
    ReportPreview *preview = screen.print();
    const double printed = ms(step);
    const int pages = preview ? preview->report().pageCount() : 0;
    delete preview;

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
    std::printf("statement of %d courses: opened and shown %6.1f ms (screen made %6.1f ms; goal < 500 ms), "
                "printed %6.1f ms (%d pages)\n",
                rows, opened, made, printed, pages);
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
    const int clientCourses = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 5000;
    QTemporaryDir dir;  // the files the bench writes
    int failed = 0;
    bench::runOnEngines([&](const QString &, QSqlDatabase db) {
        QElapsedTimer timer;
        timer.start();
        if (!bench::migrated(db) || !fill(db, clientCourses)) {
            failed = 1;
            return;
        }
        std::printf("filled %d courses, %d of them of the client in 2023, in %.0f ms\n", otherCourses + clientCourses,
                    clientCourses, ms(timer));
        for (int run = 0; run < 2; ++run)
            benchStatement(db, dir.path());
        if (!quiet.shown.isEmpty())
            std::fprintf(stderr, "message: %s\n", qPrintable(quiet.shown.first().text));
    }, true);
    return failed;
}
