// Prints how long the course report of the whole firm and the result grid take on large data.
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
#include <QTableView>
#include <cstdio>

using namespace zarek;
using zarek::bench::ms;

namespace {

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
    std::printf("all-courses report, %6d courses: query %7.1f ms, layout %7.1f ms (%d pages), first page drawn "
                "%6.1f ms, first page shown after %7.1f ms, layout/query %.2f\n",
                count, query, layout, laid.pageCount(), firstPage, shown, layout / std::max(query, 0.001));
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
    std::printf("result grid, %6d rows: query into rows %7.1f ms, grid opened %6.1f ms, total %7.1f ms\n",
                rows.value().rowCount(), read, opened, ms(total));
}

}

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    return bench::runOnCourseCounts(argc, argv, [](QSqlDatabase db, int count) {
        benchReport(db, count);
        benchGrid(db, count);
    });
}
