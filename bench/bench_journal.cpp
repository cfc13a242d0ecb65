// The course journal on 10,000 and 100,000 courses (or the counts given), on SQLite and, when
// ZAREK_TEST_PG names a server, on PostgreSQL: opening, a change of conditions to the first rows
// shown, sorting by each column, and export of every row to .xlsx and .csv.
#include "benchdata.h"
#include "courses/coursejournal.h"
#include "data/currencyrows.h"
#include "data/tableexport.h"
#include "forms/commandday.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QSqlRecord>
#include <QTableView>

#include <memory>

using namespace zarek;

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    return bench::runOnEnginesAndCourseCounts(argc, argv, [](const QString &engine, QSqlDatabase db, int count) {
        // Opened three times, the best kept, as the bare statements are: in the program the main
        // window has drawn its text and charts before the journal opens.
        QElapsedTimer timer;
        double firstRows = 1e9;
        double opened = 1e9;
        std::unique_ptr<CourseJournal> opening;
        for (int i = 0; i < 3; ++i) {
            opening.reset();
            timer.start();
            opening = std::make_unique<CourseJournal>(db);
            opening->show();
            opening->grid()->viewport()->repaint();
            firstRows = std::min(firstRows, bench::ms(timer));  // the rows shown; the totals and the chart follow
            QApplication::processEvents();
            opened = std::min(opened, bench::ms(timer));
        }
        CourseJournal &journal = *opening;
        // What the opening races, bare: the ids of every course by date (what it read before), and
        // the statements it runs now (the count, the first page, the totals by month with each
        // row's currency), each with its values.
        using Statement = std::pair<QString, QVariantList>;
        const auto bareMin = [&db](const QList<Statement> &statements) {
            double best = 1e9;
            for (int i = 0; i < 3; ++i) {
                QElapsedTimer bareTimer;
                bareTimer.start();
                for (const auto &[sql, values] : statements) {
                    QSqlQuery query(db);
                    query.setForwardOnly(true);
                    query.prepare(sql);
                    for (const QVariant &value : values)
                        query.addBindValue(value);
                    query.exec();
                    while (query.next()) {
                        for (int c = 0; c < query.record().count(); ++c)
                            query.value(c);
                    }
                }
                best = std::min(best, bench::ms(bareTimer));
            }
            return best;
        };
        const double bare = bareMin({{QStringLiteral("SELECT id FROM tabl ORDER BY data, id"), {}}});
        const QString month = engine == QStringLiteral("PostgreSQL") ? QStringLiteral("to_char(data, 'YYYY-MM')")
                                                                     : QStringLiteral("substr(data, 1, 7)");
        const Changeover changeover = commandDay().changeover;
        const QString cents = QStringLiteral("ROUND(bruto * 100)");
        const SqlPart euro = byRowCurrency(QStringLiteral("data"), changeover, cents, QStringLiteral("0"));
        const SqlPart leva = byRowCurrency(QStringLiteral("data"), changeover, QStringLiteral("0"), cents);
        const SqlPart euroCount = byRowCurrency(QStringLiteral("data"), changeover, QStringLiteral("1"), QStringLiteral("0"));
        const double own = bareMin(
            {{QStringLiteral("SELECT COUNT(*) FROM tabl"), {}},
             {QStringLiteral("SELECT id, data, kod, kola, Klient, Marsh, Tovar, ton, km, Tarifa, bruto, NomFakt, Fakt, plat "
                             "FROM tabl ORDER BY data DESC, id DESC LIMIT 200 OFFSET 0"),
              {}},
             {QStringLiteral("SELECT %1, COUNT(*), SUM(ton), SUM(km), SUM(%2), SUM(%3), SUM(%4) FROM tabl GROUP BY 1 ORDER BY 1")
                  .arg(month, euro.sql, leva.sql, euroCount.sql),
              euro.values + leva.values + euroCount.values}});
        std::printf("%s %d: journal's first rows shown in %.0f ms, with its totals and chart %.0f ms (%d rows); the id list of every course bare %.0f ms, "
                    "ratio %.1f; its own statements (count, first page, totals by month) bare %.0f ms, ratio %.1f "
                    "(goal 2: %s)\n",
                    qPrintable(engine), count, firstRows, opened, journal.model()->rowCount(), bare, opened / std::max(bare, 0.01),
                    own, opened / std::max(own, 0.01), opened <= 2 * std::max(bare, own) ? "met" : "NOT met");
        auto *truck = journal.findChild<QLineEdit *>(QStringLiteral("txtTruck"));
        auto *paid = journal.findChild<QComboBox *>(QStringLiteral("cboPaid"));
        timer.restart();
        truck->setText(QStringLiteral("1234"));
        journal.applyFilter();
        journal.grid()->viewport()->repaint();
        std::printf("  truck condition to first rows shown: %.0f ms (%d rows)\n", bench::ms(timer), journal.model()->rowCount());
        timer.restart();
        paid->setCurrentIndex(2);
        journal.grid()->viewport()->repaint();
        std::printf("  + unpaid: %.0f ms (%d rows)\n", bench::ms(timer), journal.model()->rowCount());
        timer.restart();
        truck->clear();
        journal.applyFilter();
        journal.grid()->viewport()->repaint();
        std::printf("  truck condition cleared: %.0f ms (%d rows)\n", bench::ms(timer), journal.model()->rowCount());
        timer.restart();
        paid->setCurrentIndex(0);
        journal.grid()->viewport()->repaint();
        std::printf("  paid condition cleared, every course: %.0f ms (%d rows)\n", bench::ms(timer), journal.model()->rowCount());

        double slowest = 0;
        QString slowestColumn;
        for (int column = 0; column < journalColumnCount; ++column) {
            timer.restart();
            journal.model()->sort(column, Qt::DescendingOrder);
            journal.grid()->viewport()->repaint();
            if (bench::ms(timer) > slowest) {
                slowest = bench::ms(timer);
                slowestColumn = CourseJournalModel::caption(column);
            }
        }
        std::printf("  sort by any column: slowest %.0f ms (%s)\n", slowest, qPrintable(slowestColumn));

        timer.restart();
        const Checked<ExportTable> table = journal.exportTable();
        std::printf("  export: the rows read in %.0f ms\n", bench::ms(timer));
        QTemporaryDir dir;
        for (const char *kind : {"xlsx", "csv"}) {
            timer.restart();
            journal.exportTo(dir.filePath(QStringLiteral("journal.") + QLatin1String(kind)));
            std::printf("  export of %d rows to .%s: %.0f ms\n", journal.model()->rowCount(), kind, bench::ms(timer));
        }
    });
}
