// Prints how long the course editor takes to open, move to the last course and save a course on
// large data, on SQLite and PostgreSQL (ZAREK_TEST_PG), with the first page's statement timed bare.
// Not a test: figures only. Run: bench_kurs [courses...] (default 10000 100000).

#include "benchdata.h"
#include "printingmessages.h"
#include "courses/courseeditorrules.h"
#include "courses/kurs.h"
#include "forms/recordform.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <cstdio>

using namespace zarek;
using zarek::bench::ms;

namespace {

void fillReference(QSqlDatabase db)
{
    QSqlQuery query(db);
    query.exec(QStringLiteral("INSERT INTO Tarifi (\"Trf_20\", \"Trf_20-30\", \"Trf_30-50\", \"Trf_50-100\", "
                              "\"Trf_100-200\", \"Trf_200\") VALUES (0.35, 0.25, 0.18, 0.14, 0.12, 0.1)"));
    for (int i = 0; i < 9; ++i)
        query.exec(QStringLiteral("INSERT INTO shof (kod, ime) VALUES ('00%1', 'Шофьор %1')").arg(i));
}

// From the command to the first course ready for typing, painted.
double openNewKurs(QSqlDatabase db, std::unique_ptr<Kurs> &screen)
{
    QElapsedTimer timer;
    timer.start();
    screen = std::make_unique<Kurs>(db);
    screen->show();
    QCoreApplication::processEvents();
    screen->grab();
    return ms(timer);
}

// The statement the editor's first page runs, bare: the race it is measured against.
double bareFirstPage(QSqlDatabase db)
{
    double best = 1e9;
    for (int i = 0; i < 3; ++i) {
        QElapsedTimer timer;
        timer.start();
        QSqlQuery query(db);
        query.setForwardOnly(true);
        query.exec(QStringLiteral("SELECT id, row_version, %1 FROM tabl ORDER BY kod, id LIMIT %2 OFFSET 0")
                       .arg(courseeditor::columns().join(QStringLiteral(", ")))
                       .arg(RecordSet::pageSize));
        while (query.next()) {
        }
        best = std::min(best, ms(timer));
    }
    return best;
}

void benchKurs(const QString &engine, QSqlDatabase db, int count)
{
    std::unique_ptr<Kurs> screen;
    openNewKurs(db, screen);  // warms the database file and the fonts
    screen.reset();
    double best = 1e9;
    for (int i = 0; i < 3; ++i) {
        best = std::min(best, openNewKurs(db, screen));
        if (i < 2)
            screen.reset();
    }
    RecordForm *form = screen->recordForm();
    form->cancel();  // cancelling closes the editor, which stays in memory here
    screen->show();

    QElapsedTimer step;
    step.start();
    form->last();
    const double last = ms(step);

    form->add();
    screen->findChild<QComboBox *>(QStringLiteral("Combo5"))->setEditText(QStringLiteral("001,Шофьор 1"));
    screen->findChild<QComboBox *>(QStringLiteral("Combo1"))->setEditText(QStringLiteral("СА 1234 ВК"));
    screen->findChild<QLineEdit *>(QStringLiteral("txtFields_1"))->setText(QStringLiteral("23.11.2026"));
    screen->findChild<QLineEdit *>(QStringLiteral("txtFields_12"))->setText(QStringLiteral("10"));
    screen->findChild<QLineEdit *>(QStringLiteral("txtFields_4"))->setText(QStringLiteral("25"));
    screen->findChild<QLineEdit *>(QStringLiteral("txtTarifa"))->setText(QStringLiteral("0,125"));
    screen->findChild<QComboBox *>(QStringLiteral("Combo2"))->setEditText(QStringLiteral("Перник - София"));
    screen->findChild<QComboBox *>(QStringLiteral("Combo3"))->setEditText(QStringLiteral("Д'Аргос ООД"));
    screen->findChild<QComboBox *>(QStringLiteral("Combo4"))->setEditText(QStringLiteral("Пясък"));
    step.restart();
    const bool saved = form->update();
    const double save = ms(step);

    QElapsedTimer edit;
    edit.start();
    Kurs correction(db, QStringLiteral("СА 1234 ВК"), {QDate(2022, 3, 1), QDate(2022, 3, 31)});
    correction.show();
    QCoreApplication::processEvents();
    correction.grab();
    const double bare = bareFirstPage(db);
    std::printf("%s, course editor, %7d courses: NewKurs opened and painted %6.1f ms (best of 3; goal 150 ms: %s; "
                "its first page bare %.1f ms, ratio %.1f), last course %5.1f ms, save with reload %6.1f ms%s, "
                "EditKurs of one truck and month %5.1f ms (%d courses)\n",
                qPrintable(engine), count, best, best <= 150 ? "met" : "NOT met", bare, best / std::max(bare, 0.01), last,
                save, saved ? "" : " (NOT SAVED)", ms(edit), correction.recordForm()->rowCount());
}

}

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    bench::PrintingMessages messages;
    MessageService::setInstance(&messages);
    const int exitCode = bench::runOnEnginesAndCourseCounts(argc, argv, [](const QString &engine, QSqlDatabase db, int count) {
        fillReference(db);
        benchKurs(engine, db, count);
    });
    MessageService::setInstance(nullptr);
    return exitCode;
}
