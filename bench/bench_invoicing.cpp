// Prints how long the invoicing screen takes for a client with 2,000 uninvoiced courses among
// 100,000: opening it, Space on every row, the statement, and the closing write of 2,000 courses.
// SQLite always; PostgreSQL when ZAREK_TEST_PG names a server. Not a test: figures only.
// Run: bench_invoicing [courses] (default 100000).

#include "benchdata.h"
#include "data/scratchdatabase.h"
#include "invoicing/faktura.h"
#include "reports/reportlayout.h"

#include <QApplication>
#include <QComboBox>
#include <QPushButton>
#include <QTimer>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <cstdio>

using namespace zarek;
using zarek::bench::ms;

namespace {

const QString client = QStringLiteral("Д'Аргос ООД");
constexpr int uninvoiced = 2000;

// Leaves the client exactly 2,000 uninvoiced courses; the rest of its courses, and every course
// the bench data marks as invoiced, get invoice numbers.
bool prepareInvoices(QSqlDatabase db)
{
    QSqlQuery query(db);
    query.prepare(QStringLiteral("SELECT id FROM tabl WHERE Klient = ? AND Fakt = ? ORDER BY id DESC"));
    query.addBindValue(client);
    query.addBindValue(false);
    if (!query.exec())
        return false;
    QList<qint64> keep;
    while (query.next() && keep.size() < uninvoiced)
        keep.append(query.value(0).toLongLong());
    if (keep.size() < uninvoiced)
        return false;
    if (!db.transaction())
        return false;
    QSqlQuery update(db);
    update.prepare(QStringLiteral("UPDATE tabl SET Fakt = ?, NomFakt = ? WHERE Klient = ? AND id < ?"));
    update.addBindValue(true);
    update.addBindValue(QStringLiteral("0000000100"));
    update.addBindValue(client);
    update.addBindValue(keep.last());
    if (!update.exec())
        return false;
    update.prepare(QStringLiteral("UPDATE tabl SET NomFakt = ? WHERE Fakt = ? AND NomFakt = ?"));
    update.addBindValue(QStringLiteral("0000000099"));
    update.addBindValue(true);
    update.addBindValue(QStringLiteral("0000000000"));
    return update.exec() && db.commit();
}

void run(const QString &engine, QSqlDatabase db, int count)
{
    QString error;
    if (!db.isOpen() || !migrateSchema(db, &error)) {
        std::fprintf(stderr, "%s: %s\n", qPrintable(engine), qPrintable(error));
        return;
    }
    QElapsedTimer fill;
    fill.start();
    if (!bench::fillCourses(db, count) || !prepareInvoices(db)) {
        std::fprintf(stderr, "%s: filling failed\n", qPrintable(engine));
        return;
    }
    std::printf("%-10s filled %d courses in %.0f ms\n", qPrintable(engine), count, ms(fill));

    QTemporaryDir folder;
    ScratchDatabase scratch(folder.path());
    scratch.RebuildScratchTable(QStringLiteral("TempPlaten"));
    SearchConditions conditions;
    conditions.SeekKlient = client;
    conditions.period = {QDate(2022, 1, 1), QDate(2023, 12, 31)};
    FirmProfile firm;
    firm.UserName = QStringLiteral("Транспорт Петров ЕООД");

    QElapsedTimer step;
    step.start();
    Faktura screen(FakturaMode::FaktNew, conditions, db, scratch.db(), firm);
    screen.show();
    while (screen.currentRow() < 0)
        QCoreApplication::processEvents();
    screen.grid()->grab();
    const double opened = ms(step);
    const int rows = screen.model()->rowCount();

    step.restart();
    for (int row = 0; row < rows; ++row) {
        QTest::keyClick(screen.grid(), Qt::Key_Space);
        QTest::keyClick(screen.grid(), Qt::Key_Down);
    }
    QCoreApplication::processEvents();
    const double marked = ms(step);

    int pages = 0;
    screen.showStatement = [&pages](const Report &report) { pages = layoutReport(report).pageCount(); };
    screen.clock = [] { return QDateTime(QDate(2024, 1, 5), QTime(10, 0)); };
    // The number as DiaFakt would give it, without the modal dialog.
    QTimer::singleShot(0, [] {
        if (auto *dialog = QApplication::activeModalWidget()) {
            dialog->findChild<QComboBox *>(QStringLiteral("Combo1"))->setEditText(QStringLiteral("101"));
            dialog->findChild<QPushButton *>(QStringLiteral("OKButton"))->click();
        }
    });
    screen.chooseNumber();
    step.restart();
    screen.print();
    const double printed = ms(step);

    step.restart();
    screen.close();
    const double closed = ms(step);

    QSqlQuery check(db);
    check.prepare(QStringLiteral("SELECT COUNT(*) FROM tabl WHERE NomFakt = ?"));
    check.addBindValue(QStringLiteral("0000000101"));
    check.exec();
    check.next();
    std::printf("%-10s %d courses, client with %d uninvoiced: opened %6.1f ms | Space on every row %7.1f ms "
                "(%.2f ms a row) | statement %6.1f ms (%d pages) | closing write %6.1f ms (%d courses numbered)\n",
                qPrintable(engine), count, rows, opened, marked, rows ? marked / rows : 0.0, printed, pages, closed,
                check.value(0).toInt());
}

}

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int count = argc > 1 ? QString::fromLatin1(argv[1]).toInt() : 100000;
    bench::runOnEngines([count](const QString &engine, QSqlDatabase db) { run(engine, db, count); });
    return 0;
}
