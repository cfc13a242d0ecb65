// Prints what the euro costs on large data: the course report of two years with and without a
// changeover in the middle (each leva row with its unit and converted), Space in a result grid whose
// rows are of both currencies (the total counted again at each press), and the changeover's review
// and writing over thousands of prices on hand and open receipts.
// Not a test: figures only. Run: bench_euro [courses...] (default 10000 100000).

#include "benchdata.h"
#include "core/currency.h"
#include "core/firmprofile.h"
#include "core/formats.h"
#include "courses/coursereports.h"
#include "data/changeoverstore.h"
#include "forms/commandday.h"
#include "forms/resultgridscreen.h"
#include "reports/reportlayout.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QSqlError>
#include <QSqlQuery>
#include <QTableView>
#include <QTest>
#include <cstdio>

using namespace zarek;
using zarek::bench::ms;

namespace {

const Changeover midway{QDate(2023, 1, 1)};

void benchReport(QSqlDatabase db, int count, bool changedOver)
{
    const BooksDay books{changedOver ? midway : Changeover{}, QDate::currentDate()};
    SearchConditions conditions;
    conditions.SeekChoice = QStringLiteral("All");
    conditions.period = {QDate(2022, 1, 1), QDate(2023, 12, 31)};
    QElapsedTimer step;
    step.start();
    const Checked<Report> report = ReportAll(conditions, db, FirmProfile{}, books);
    const double query = ms(step);
    if (!report) {
        std::fprintf(stderr, "report: %s\n", qPrintable(report.message().text));
        return;
    }
    step.restart();
    const LaidOutReport laid = layoutReport(report.value());
    std::printf("all-courses report, %6d courses, %-22s query %7.1f ms, layout %7.1f ms (%d pages)\n", count,
                changedOver ? "leva and euro rows:" : "leva only:", query, ms(step), laid.pageCount());
}

void benchSpace(QSqlDatabase db, int count, bool changedOver)
{
    ScopedCommandDay books({changedOver ? midway : Changeover{}, QDate::currentDate()});
    QSqlQuery query(db);
    query.setForwardOnly(true);
    query.exec(QStringLiteral("SELECT Data, Marsh, kola, KM, Ton, Tarifa, neto, plat FROM tabl ORDER BY Data"));
    const Checked<RowSet> rows = RowSet::fromQuery(query, QStringLiteral("ГРЕШКА"));
    ResultGridConfig config;
    config.formName = QStringLiteral("Plashtane");
    config.columns = {{QStringLiteral("Data"), QStringLiteral("Дата"), 1200, {}, Qt::AlignLeft},
                      {QStringLiteral("neto"), QStringLiteral("Сума"), 900, QStringLiteral("###0.00"), Qt::AlignRight,
                       false, false, false, false, true},
                      {QStringLiteral("plat"), QStringLiteral("Плат."), 650, {}, Qt::AlignHCenter, false, false, true}};
    config.flagField = QStringLiteral("plat");
    config.amountField = QStringLiteral("neto");
    config.sumCaption = QStringLiteral("Сума за плащане:");
    config.dateField = QStringLiteral("Data");
    ResultGridScreen screen(config);
    screen.setRows(rows.value());
    screen.show();
    while (screen.currentRow() < 0)
        QCoreApplication::processEvents();
    constexpr int presses = 200;
    QElapsedTimer step;
    step.start();
    for (int i = 0; i < presses; ++i) {
        screen.grid()->setCurrentIndex(screen.model()->index(i * 37 % screen.model()->rowCount(), 0));
        QTest::keyClick(screen.grid(), Qt::Key_Space);
    }
    std::printf("Space in a grid of %6d rows, %-22s %6.3f ms a press (total %s)\n", rows.value().rowCount(),
                changedOver ? "leva and euro rows:" : "leva only:", ms(step) / presses,
                qPrintable(amountText(screen.runningTotal(), screen.totalsCurrency())));
}

bool fillStock(QSqlDatabase db, int names, int receiptsPerName)
{
    if (!db.transaction())
        return false;
    QSqlQuery nalich(db);
    nalich.prepare(QStringLiteral("INSERT INTO Nalich (Name, Edin, Broi) VALUES (?, ?, ?)"));
    QSqlQuery receipt(db);
    receipt.prepare(QStringLiteral("INSERT INTO Sklad (Data, DocVid, DocNom, Name, Kol, Edin, Suma, VidKol, Ostat, Lipsa) "
                                   "VALUES (?, 'Фактура', ?, ?, 10, ?, ?, 'P', 4, ?)"));
    for (int n = 0; n < names; ++n) {
        const QString name = QStringLiteral("Артикул %1").arg(n, 5, 10, QLatin1Char('0'));
        nalich.addBindValue(name);
        nalich.addBindValue(1.0 + n % 97 / 10.0);
        nalich.addBindValue(4.0 * receiptsPerName);
        if (!nalich.exec())
            return false;
        for (int r = 0; r < receiptsPerName; ++r) {
            const double price = 1.0 + (n + r) % 97 / 10.0;
            receipt.addBindValue(QDate(2025, 1, 1).addDays((n + r * 13) % 360));
            receipt.addBindValue(QString::number(n * 10 + r));
            receipt.addBindValue(name);
            receipt.addBindValue(price);
            receipt.addBindValue(price * 10);
            receipt.addBindValue(false);
            if (!receipt.exec())
                return false;
        }
    }
    return db.commit();
}

void benchChangeover(QSqlDatabase db)
{
    constexpr int names = 2000;
    constexpr int receiptsPerName = 3;
    if (!fillStock(db, names, receiptsPerName)) {
        std::fprintf(stderr, "stock: %s\n", qPrintable(db.lastError().text()));
        return;
    }
    QElapsedTimer step;
    step.start();
    const Checked<ChangeoverReview> review = reviewChangeover(db, euroAdoptionDate());
    const double read = ms(step);
    if (!review) {
        std::fprintf(stderr, "review: %s\n", qPrintable(review.message().text));
        return;
    }
    step.restart();
    const auto failure = runChangeover(db, review.value());
    const double written = ms(step);
    std::printf("changeover of %d prices on hand and %lld open receipts: review %7.1f ms, written %7.1f ms%s\n", names,
                static_cast<long long>(review.value().receipts.size()), read, written,
                failure ? qPrintable(QStringLiteral(" (refused: ") + failure->text + QLatin1Char(')')) : "");
}

}

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    bool changeoverTimed = false;
    return bench::runOnCourseCounts(argc, argv, [&changeoverTimed](QSqlDatabase db, int count) {
        for (const bool changedOver : {false, true})
            benchReport(db, count, changedOver);
        for (const bool changedOver : {false, true})
            benchSpace(db, count, changedOver);
        if (!changeoverTimed) {
            benchChangeover(db);
            changeoverTimed = true;
        }
    });
}
