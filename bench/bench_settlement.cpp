// Driver pay on 100,000 courses, a driver with about 3,000 unpaid courses in the period: the pay
// sheet computed and its first page shown, Plashtane opened, each raced against the bare statements
// it runs; and 1,000 Space marks written.
// SQLite always; PostgreSQL when ZAREK_TEST_PG names a server. Usage: bench_settlement [courses]

#include "benchdata.h"
#include "benchratio.h"
#include "core/firmprofile.h"
#include "core/valueformat.h"
#include "data/scratchdatabase.h"
#include "forms/messageservice.h"
#include "reports/reportlayout.h"
#include "reports/reportpreview.h"
#include "settlement/paysheetstore.h"
#include "settlement/plashtane.h"
#include "settlement/scratchsheets.h"
#include "settlement/settlementreports.h"

#include <QApplication>
#include <QTableView>

using namespace zarek;
using zarek::bench::ms;

namespace {

// Every course of this code is unpaid in the benchmark data.
const QString driver = QStringLiteral("004");

bool prepare(QSqlDatabase db, int count)
{
    QString error;
    if (!migrateSchema(db, &error)) {
        std::fprintf(stderr, "schema: %s\n", qPrintable(error));
        return false;
    }
    QElapsedTimer fill;
    fill.start();
    if (!bench::fillCourses(db, count))
        return false;
    QSqlQuery query(db);
    for (const char *truck : {"СА 1234 ВК", "РК 5678 ВС", "РК 9012 КМ", "СО 3456 АР", "ВТ 7890 ХА"}) {
        query.prepare(QStringLiteral("INSERT INTO Config (kola, Razhod, Procent, Ton) VALUES (?, 32, 12, 20)"));
        query.addBindValue(QString::fromUtf8(truck));
        if (!query.exec())
            return false;
    }
    query.prepare(QStringLiteral("INSERT INTO shof (kod, ime, EGN, LKarta) VALUES (?, ?, '7503124567', '645123987')"));
    query.addBindValue(driver);
    query.addBindValue(QStringLiteral("Иван Петров Иванов"));
    std::printf("  filled %d courses in %.0f ms\n", count, ms(fill));
    return query.exec();
}

// The period from the first day that holds 3,000 of the driver's unpaid courses.
Period periodOf3000(QSqlDatabase db)
{
    QSqlQuery query(db);
    query.prepare(QStringLiteral("SELECT data, COUNT(*) FROM tabl WHERE kod = ? AND plat = ? GROUP BY data ORDER BY data"));
    query.addBindValue(driver);
    query.addBindValue(false);
    if (!query.exec())
        std::fprintf(stderr, "period: %s\n", qPrintable(query.lastError().text()));
    Period period;
    int total = 0;
    while (query.next() && total < 3000) {
        const QDate day = dateOfValue(query.value(0));
        if (!period.from.isValid())
            period.from = day;
        period.to = day;
        total += query.value(1).toInt();
    }
    return period;
}

void run(const char *engine, QSqlDatabase db, int count)
{
    std::printf("%s\n", engine);
    if (!prepare(db, count))
        return;
    SearchConditions conditions;
    conditions.SeekDriverKod = driver;
    conditions.SeekDriverIme = QStringLiteral("Иван Петров Иванов");
    conditions.period = periodOf3000(db);
    std::printf("  period %s .. %s\n", qPrintable(conditions.period.from.toString(Qt::ISODate)),
                qPrintable(conditions.period.to.toString(Qt::ISODate)));
    FirmProfile firm;
    firm.UserName = QStringLiteral("Транспорт Петров ЕООД");
    firm.UserCity = QStringLiteral("Перник");
    firm.UserAdres = QStringLiteral("ул. Индустриална 14");
    QTemporaryDir folder;
    ScratchDatabase scratch(folder.path());
    RecordingMessageService messages;

    // The statements the pay sheet runs, and those the payment screen runs, bare.
    const QList<bench::Statement> sheetStatements = {
        {QStringLiteral("SELECT EGN, LKarta FROM shof WHERE kod = ? ORDER BY id"), {driver}},
        {QStringLiteral("SELECT kola, Procent, Ton FROM Config ORDER BY id"), {}},
        {QStringLiteral("SELECT data, kola, ton, KM, Marsh, Tovar, bruto FROM tabl "
                        "WHERE kod = ? AND plat = ? AND data BETWEEN ? AND ? ORDER BY data, id"),
         {driver, false, conditions.period.from, conditions.period.to}}};
    const QList<bench::Statement> screenStatements = {
        {QStringLiteral("SELECT kola, Procent, Ton FROM Config ORDER BY id"), {}},
        {QStringLiteral("SELECT id, row_version, kod, Data, Marsh, Tovar, kola, KM, Ton, Tarifa, neto, plat, bruto "
                        "FROM tabl WHERE plat = ? AND kod = ? AND Data BETWEEN ? AND ? ORDER BY Data, id"),
         {false, driver, conditions.period.from, conditions.period.to}}};
    bench::runBare(db, sheetStatements);  // the first run reads the pages in

    // The pay sheet as its command shows it: computed, its first page laid out and drawn.
    int lines = 0;
    int pages = 0;
    double compute = 0;
    double layout = 0;
    const double shown = bench::bestOf3([&] {
        QElapsedTimer total;
        total.start();
        QElapsedTimer step;
        step.start();
        const Checked<PaySheet> sheet = BuildDriverPaySheet(conditions, db, {Changeover{}, QDate::currentDate()});
        compute = ms(step);
        if (!sheet) {
            std::fprintf(stderr, "pay sheet: %s\n", qPrintable(sheet.message().text));
            return 0.0;
        }
        lines = int(sheet.value().lines.size());
        const Checked<StreamedReport> report =
            ReportZaplata(sheet.value(), paySheetRowStream(sheet.value()), firm, QDate::currentDate());
        ReportPreview preview(std::make_shared<ReportLayouter>(report.value()));
        preview.show();
        const QPixmap drawn = preview.grab();  // drawn, before the background layout's first slice
        const double taken = ms(total);
        bench::keepPicture(drawn, "paysheet");
        step.restart();
        pages = preview.report().pageCount();  // the rest laid out, as printing does
        layout = ms(step);
        return taken;
    });
    const double sheetBare = bench::bareOf3(db, sheetStatements);
    std::printf("  pay sheet of %d courses among %d: computed %.1f ms; all %d pages laid out (print) %.1f ms\n", lines,
                count, compute, pages, layout);
    bench::printRace("pay sheet paper, first page shown", shown, sheetBare);

    // The payment screen, opened and drawn.
    int screenRows = 0;
    const double opened = bench::bestOf3([&] {
        QElapsedTimer open;
        open.start();
        Plashtane screen(conditions, db, scratch, firm, nullptr, QDate::currentDate());
        screen.show();
        const QPixmap drawn = screen.grab();  // drawn
        const double taken = ms(open);
        bench::keepPicture(drawn, "plashtane");
        screenRows = screen.model()->rowCount();
        return taken;
    });
    const double screenBare = bench::bareOf3(db, screenStatements);
    std::printf("  Plashtane with %d courses\n", screenRows);
    bench::printRace("pay screen (Plashtane) opened and drawn", opened, screenBare);

    Plashtane screen(conditions, db, scratch, firm, nullptr, QDate::currentDate());
    screen.show();
    QCoreApplication::processEvents();
    QElapsedTimer marks;
    marks.start();
    const int toMark = std::min(1000, screen.model()->rowCount());
    for (int row = 0; row < toMark; ++row) {
        screen.grid()->setCurrentIndex(screen.model()->index(row, 0));
        screen.markCurrentRow();
    }
    const double markMs = ms(marks);
    std::printf("  %d Space marks written in %6.1f ms (%.2f ms each), %lld messages, sum %s\n", toMark, markMs,
                markMs / std::max(1, toMark), static_cast<long long>(messages.shown.size()),
                qPrintable(QString::number(screen.runningTotal().toDouble(), 'f', 2)));
}

}

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    const int count = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 100000;
    bench::runOnEngines([count](const QString &engine, QSqlDatabase db) { run(qPrintable(engine), db, count); });
    return 0;
}
