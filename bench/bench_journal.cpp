// The course journal on 10,000 and 100,000 courses (or the counts given), on SQLite and, when
// ZAREK_TEST_PG names a server, on PostgreSQL: opening, a change of conditions to the first rows
// shown, sorting by each column, and export of every row to .xlsx and .csv.
#include "benchdata.h"
#include "courses/coursejournal.h"
#include "data/tableexport.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QTableView>

using namespace zarek;

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    return bench::runOnEnginesAndCourseCounts(argc, argv, [](const QString &engine, QSqlDatabase db, int count) {
        QElapsedTimer timer;
        timer.start();
        CourseJournal journal(db);
        journal.show();
        QApplication::processEvents();
        const double opened = bench::ms(timer);
        // The statement the opening races: the ids of every course by date, bare.
        double bare = 1e9;
        for (int i = 0; i < 3; ++i) {
            QElapsedTimer bareTimer;
            bareTimer.start();
            QSqlQuery ids(db);
            ids.setForwardOnly(true);
            ids.exec(QStringLiteral("SELECT id FROM tabl ORDER BY data, id"));
            while (ids.next()) {
            }
            bare = std::min(bare, bench::ms(bareTimer));
        }
        std::printf("%s %d: journal opened and painted in %.0f ms (%d rows); its id list bare %.0f ms, ratio %.1f "
                    "(goal 2: %s)\n",
                    qPrintable(engine), count, opened, journal.model()->rowCount(), bare, opened / std::max(bare, 0.01),
                    opened <= 2 * bare ? "met" : "NOT met");

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
