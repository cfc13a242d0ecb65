// Prints how long the course report of the whole firm and the result grid take on large data, on
// SQLite and PostgreSQL: the first page shown as the rows are read, against the bare query's
// first row and all its rows, the peak memory of the whole report, and the report laid out whole.
// Not a test: figures only. Run: bench_reports [courses...] (default 10000 100000).

#include "benchdata.h"
#include "core/dates.h"
#include "core/valueformat.h"
#include "core/firmprofile.h"
#include "forms/resultgridscreen.h"
#include "invoicing/faktura.h"
#include "courses/coursereports.h"
#include "reports/reportlayout.h"
#include "reports/reportpreview.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QSqlError>
#include <QSqlQuery>
#include <QFile>
#include <malloc.h>
#include <QTableView>
#include <cstdio>
#include <functional>

using namespace zarek;
using zarek::bench::ms;

namespace {

// The process's peak resident memory since the last reset, in MB (Linux).
double peakMegabytes()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').value(0).toDouble() / 1024;
    }
    return 0;
}

// Starts the peak anew from what the process holds now.
void resetPeak()
{
    QFile clear(QStringLiteral("/proc/self/clear_refs"));
    if (clear.open(QIODevice::WriteOnly))
        clear.write("5");
}

FirmProfile benchFirm()
{
    FirmProfile firm;
    firm.UserName = QStringLiteral("Транспорт Петров ЕООД");
    firm.UserCity = QStringLiteral("Перник");
    firm.UserAdres = QStringLiteral("ул. Индустриална 14");
    return firm;
}

SearchConditions allCourses()
{
    SearchConditions conditions;
    conditions.SeekChoice = QStringLiteral("All");
    conditions.period = {QDate(2022, 1, 1), QDate(2023, 12, 31)};
    return conditions;
}

// The report's own query, run bare: the time to its first row and to its last.
void bareQuery(QSqlDatabase db, double *firstRow, double *allRows)
{
    *firstRow = 1e12;
    *allRows = 1e12;
    for (int run = 0; run < 3; ++run) {
        QElapsedTimer timer;
        timer.start();
        QSqlQuery query(db);
        query.setForwardOnly(true);
        query.prepare(QStringLiteral("SELECT data, kola, ton, km, Tarifa, bruto, Marsh, Klient, Tovar, plat, Fakt FROM tabl "
                                     "WHERE data BETWEEN ? AND ? ORDER BY data, id"));
        query.addBindValue(QDate(2022, 1, 1));
        query.addBindValue(QDate(2023, 12, 31));
        query.exec();
        int rows = 0;
        if (query.next())
            ++rows;
        *firstRow = std::min(*firstRow, ms(timer));
        while (query.next()) {
            for (int c = 0; c < 11; ++c)
                query.value(c);
            ++rows;
        }
        *allRows = std::min(*allRows, ms(timer));
    }
}

void benchProgressive(const QString &engine, QSqlDatabase db, int count)
{
    // The report's own memory: what the filling freed is given back first, and the bare query
    // (whose driver may hold every row) runs after the report.
    malloc_trim(0);
    resetPeak();
    const double before = peakMegabytes();
    double firstPage = 1e12;
    int pages = 0;
    double whole = 0;
    for (int run = 0; run < 3; ++run) {
        QElapsedTimer timer;
        timer.start();
        ReportPreview *preview = showReport(streamReportAll(allCourses(), db, benchFirm(), {Changeover{}, QDate::currentDate()}));
        if (!preview)
            return;
        QCoreApplication::processEvents();
        preview->findChild<QWidget *>(QStringLiteral("picPage"))->grab();  // the first page painted
        firstPage = std::min(firstPage, ms(timer));
        if (run == 0) {
            // The rest laid out, and the last page drawn: the whole report's memory.
            QElapsedTimer rest;
            rest.start();
            preview->finishLayout(QString());
            preview->setPage(preview->pageCount() - 1);
            preview->findChild<QWidget *>(QStringLiteral("picPage"))->grab();
            whole = ms(rest);
            pages = preview->pageCount();
        }
        preview->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    const double peak = peakMegabytes();
    double firstRow = 0;
    double allRows = 0;
    bareQuery(db, &firstRow, &allRows);
    std::printf("%-10s all-courses report, %7d courses: bare query first row %7.1f ms, all rows %8.1f ms | "
                "first page shown %7.1f ms (%.2f x all rows, %+.1f ms after the first row; goal 300 ms: %s) | rest laid "
                "out %8.1f ms, %d pages | peak memory %6.1f MB (+%.1f MB; goal 300 MB: %s)\n",
                qPrintable(engine), count, firstRow, allRows, firstPage, firstPage / std::max(allRows, 0.001),
                firstPage - firstRow, firstPage <= 300 ? "met" : "NOT met", whole, pages, peak, peak - before,
                peak <= 300 ? "met" : "NOT met");
    std::fflush(stdout);
}

// The truck, client and driver reports: the first page shown, against their bare query.
void benchSubjectReports(const QString &engine, QSqlDatabase db)
{
    struct Subject {
        const char *name;
        std::function<Checked<StreamedReport>(const SearchConditions &)> fill;
        QString condition;
        QVariant value;
    };
    SearchConditions conditions = allCourses();
    conditions.SeekKola = QStringLiteral("СА 1234 ВК");
    conditions.SeekKlient = QStringLiteral("Бетон Перник АД");
    conditions.SeekDriverKod = QStringLiteral("001");
    conditions.SeekDriverIme = QStringLiteral("Шофьор 001");
    const BooksDay books{Changeover{}, QDate::currentDate()};
    const QList<Subject> subjects = {
        {"truck", [&](const SearchConditions &c) { return streamReportKola(c, db, benchFirm(), books); },
         QStringLiteral("kola = ?"), conditions.SeekKola},
        {"client", [&](const SearchConditions &c) { return streamReportKlient(c, db, benchFirm(), books); },
         QStringLiteral("Klient = ?"), conditions.SeekKlient},
        {"driver", [&](const SearchConditions &c) { return streamReportDriver(c, db, benchFirm(), books); },
         QStringLiteral("kod = ?"), conditions.SeekDriverKod},
    };
    for (const Subject &subject : subjects) {
        double bare = 1e12;
        double firstPage = 1e12;
        for (int run = 0; run < 3; ++run) {
            QElapsedTimer timer;
            timer.start();
            QSqlQuery query(db);
            query.setForwardOnly(true);
            query.prepare(QStringLiteral("SELECT data, kola, ton, km, Tarifa, bruto, Marsh, Klient, Tovar, plat, Fakt "
                                         "FROM tabl WHERE %1 AND data BETWEEN ? AND ? ORDER BY data, id")
                              .arg(subject.condition));
            query.addBindValue(subject.value);
            query.addBindValue(QDate(2022, 1, 1));
            query.addBindValue(QDate(2023, 12, 31));
            query.exec();
            while (query.next()) {
                for (int c = 0; c < 11; ++c)
                    query.value(c);
            }
            bare = std::min(bare, ms(timer));
            timer.restart();
            ReportPreview *preview = showReport(subject.fill(conditions));
            if (!preview)
                return;
            QCoreApplication::processEvents();
            preview->findChild<QWidget *>(QStringLiteral("picPage"))->grab();
            firstPage = std::min(firstPage, ms(timer));
            preview->close();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
        std::printf("%-10s %-6s report: first page shown %7.1f ms (goal 300 ms: %s); its bare query, all rows %7.1f ms\n",
                    qPrintable(engine), subject.name, firstPage, firstPage <= 300 ? "met" : "NOT met", bare);
    }
    std::fflush(stdout);
}

void benchReport(QSqlDatabase db, int count)
{
    FirmProfile firm;
    firm.UserName = QStringLiteral("Транспорт Петров ЕООД");
    firm.UserCity = QStringLiteral("Перник");
    firm.UserAdres = QStringLiteral("ул. Индустриална 14");
    SearchConditions conditions;
    conditions.SeekChoice = QStringLiteral("All");
    conditions.period = {QDate(2022, 1, 1), QDate(2023, 12, 31)};

    QElapsedTimer total;
    total.start();
    QElapsedTimer step;
    step.start();
    const Checked<Report> report = ReportAll(conditions, db, firm, {Changeover{}, QDate::currentDate()});
    const double query = ms(step);
    if (!report) {
        std::fprintf(stderr, "report: %s\n", qPrintable(report.message().text));
        return;
    }
    step.restart();
    const LaidOutReport laid = layoutReport(report.value());
    const double layout = ms(step);
    step.restart();
    ReportPreview preview(laid);
    preview.show();
    QCoreApplication::processEvents();
    preview.grab();  // the first page painted
    const double firstPage = ms(step);
    const double shown = ms(total);
    std::printf("           laid out whole, %7d courses: query %7.1f ms, layout %7.1f ms (%d pages), first page drawn "
                "%6.1f ms, first page shown after %7.1f ms, layout/query %.2f\n",
                count, query, layout, laid.pageCount(), firstPage, shown, layout / std::max(query, 0.001));
    std::fflush(stdout);
}

void benchGrid(const QString &engine, QSqlDatabase db, int count)
{
    const QString select = QStringLiteral("SELECT Data, Marsh, Tovar, kola, KM, Ton, Tarifa, bruto, Fakt, NomFakt FROM tabl "
                                          "ORDER BY Data, id");
    // The grid's query, bare: every row read out.
    double bare = 1e12;
    for (int run = 0; run < 3; ++run) {
        QElapsedTimer timer;
        timer.start();
        QSqlQuery query(db);
        query.setForwardOnly(true);
        query.exec(select);
        while (query.next()) {
            for (int c = 0; c < 10; ++c)
                query.value(c);
        }
        bare = std::min(bare, ms(timer));
    }
    // The invoicing screen's grid: the widest result grid with marking and a running sum.
    const ResultGridConfig config = Faktura::config(FakturaMode::FaktNew, SearchConditions{});
    QElapsedTimer total;
    total.start();
    QSqlQuery query(db);
    query.setForwardOnly(true);
    query.exec(select);
    const Checked<RowSet> rows = RowSet::fromQuery(query, QStringLiteral("ГРЕШКА"));
    const double read = ms(total);
    double opened = 0;
    {
        QElapsedTimer open;
        open.start();
        ResultGridScreen screen(config);
        screen.setRows(rows.value());
        screen.show();
        while (screen.currentRow() < 0)
            QCoreApplication::processEvents();
        screen.grid()->grab();
        opened = ms(open);
    }
    const double whole = ms(total);
    std::printf("%-10s result grid, %6d rows in memory: query into rows %7.1f ms, grid opened %6.1f ms, total %7.1f ms; "
                "bare query %7.1f ms, ratio %.2f (goal 2: %s)\n",
                qPrintable(engine), rows.value().rowCount(), read, opened, whole, bare, whole / std::max(bare, 0.001),
                whole <= 2 * bare ? "met" : "NOT met");
    // The same grid reading its rows a block at a time: the count, the first block, the marked sum.
    QElapsedTimer lazy;
    lazy.start();
    ResultGridBlocks blocks = queryBlocks(db, select, {}, QStringLiteral("ГРЕШКА"));
    blocks.markedTotal = [db](Currency totals) -> Checked<CurrencyTotal> {
        QSqlQuery sum(db);
        sum.exec(QStringLiteral("SELECT SUM(bruto) FROM tabl WHERE Fakt = (1 = 1)"));
        CurrencyTotal marked(totals);
        if (sum.next())
            marked.add(Money::fromAmount(sum.value(0).toDouble()), totals);
        return marked;
    };
    blocks.dateRange = [db]() -> Checked<std::pair<QDate, QDate>> {
        QSqlQuery range(db);
        range.exec(QStringLiteral("SELECT MIN(data), MAX(data) FROM tabl"));
        if (!range.next())
            return std::pair<QDate, QDate>{};
        return std::pair{dateOfValue(range.value(0)), dateOfValue(range.value(1))};
    };
    ResultGridScreen screen(config);
    screen.setRows(blocks);
    screen.show();
    while (screen.currentRow() < 0)
        QCoreApplication::processEvents();
    screen.grid()->grab();
    const double first = ms(lazy);
    lazy.restart();
    screen.grid()->scrollToBottom();
    QCoreApplication::processEvents();
    const double block = ms(lazy);
    lazy.restart();
    const ExportTable table = screen.exportTable();
    const double rest = ms(lazy);
    std::printf("%-10s result grid, %6d rows read in blocks: opened %6.1f ms (%.2f x the bare query; goal 2: %s), "
                "a further block on scrolling %5.1f ms, the rest for an export %7.1f ms (%d rows)\n",
                qPrintable(engine), screen.model()->totalRowCount(), first, first / std::max(bare, 0.001),
                first <= 2 * bare ? "met" : "NOT met", block, rest, table.rowCount);
    std::fflush(stdout);
}
}

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    return bench::runOnEnginesAndCourseCounts(argc, argv, [](const QString &engine, QSqlDatabase db, int count) {
        benchProgressive(engine, db, count);
        benchSubjectReports(engine, db);
        // The whole layout and the grid in memory hold every row: measured up to 100,000.
        if (count <= 100000) {
            resetPeak();
            benchReport(db, count);
            std::printf("           laid out whole: peak memory %6.1f MB\n", peakMegabytes());
        }
        benchGrid(engine, db, count);
    });
}
