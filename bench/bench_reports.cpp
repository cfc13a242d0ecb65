// Prints how long the course report of the whole firm and the result grid take on large data, on
// SQLite and PostgreSQL: the first page shown as the rows are read, against the bare query's
// first row and all its rows, the peak memory of the whole report, and the report laid out whole.
// Not a test: figures only. Run: bench_reports [courses...] (default 10000 100000).

#include "benchdata.h"
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
#include <QTableView>
#include <cstdio>

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
    double firstRow = 0;
    double allRows = 0;
    bareQuery(db, &firstRow, &allRows);
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
    std::printf("%-10s all-courses report, %7d courses: bare query first row %7.1f ms, all rows %8.1f ms | "
                "first page shown %7.1f ms (%.2f x all rows, %+.1f ms after the first row) | rest laid out %8.1f ms, "
                "%d pages | peak memory %6.1f MB (+%.1f MB)\n",
                qPrintable(engine), count, firstRow, allRows, firstPage, firstPage / std::max(allRows, 0.001),
                firstPage - firstRow, whole, pages, peakMegabytes(), peakMegabytes() - before);
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

void benchGrid(QSqlDatabase db, int count)
{
    QElapsedTimer total;
    total.start();
    QSqlQuery query(db);
    query.setForwardOnly(true);
    query.exec(QStringLiteral("SELECT Data, Marsh, Tovar, kola, KM, Ton, Tarifa, bruto, Fakt, NomFakt FROM tabl "
                              "ORDER BY Data"));
    const Checked<RowSet> rows = RowSet::fromQuery(query, QStringLiteral("ГРЕШКА"));
    const double read = ms(total);
    // The invoicing screen's grid: the widest result grid with marking and a running sum.
    const ResultGridConfig config = Faktura::config(FakturaMode::FaktNew, SearchConditions{});
    QElapsedTimer open;
    open.start();
    ResultGridScreen screen(config);
    screen.setRows(rows.value());
    screen.show();
    while (screen.currentRow() < 0)
        QCoreApplication::processEvents();
    screen.grid()->grab();
    const double opened = ms(open);
    std::printf("           result grid, %6d rows: query into rows %7.1f ms, grid opened %6.1f ms, total %7.1f ms\n",
                rows.value().rowCount(), read, opened, ms(total));
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
        // The whole layout and the grid hold every row: measured up to 100,000.
        if (count <= 100000) {
            resetPeak();
            benchReport(db, count);
            std::printf("           laid out whole: peak memory %6.1f MB\n", peakMegabytes());
            benchGrid(db, count);
        }
    });
}
