// Prints how long the international trip editor takes to open on 20,000 trips and the firms
// address book on 5,000 firms. Not a test: figures only. Run: bench_international [trips firms].

#include "data/database.h"
#include "data/schema.h"
#include "printingmessages.h"
#include "forms/recordform.h"
#include "international/insidekurs.h"
#include "international/sendresive.h"
#include "international/triprules.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QSqlError>
#include <QSqlQuery>
#include <QTableView>
#include <QTemporaryDir>
#include <cstdio>
#include <memory>

using namespace zarek;

namespace {

double ms(const QElapsedTimer &timer) { return timer.nsecsElapsed() / 1e6; }

bool fill(QSqlDatabase db, int trips, int firms)
{
    if (!db.transaction())
        return false;
    QSqlQuery firm(db);
    firm.prepare(QStringLiteral("INSERT INTO Firms (SrName, SrAdres, SrCity, SrCountry) VALUES (?, ?, ?, ?)"));
    for (int i = 0; i < firms; ++i) {
        for (const QVariant &v : {QVariant(QStringLiteral("Фирма %1 ООД").arg(i, 5, 10, QLatin1Char('0'))),
                                  QVariant(QStringLiteral("ул. Търговска %1").arg(i % 300)),
                                  QVariant(QStringLiteral("Град %1").arg(i % 80)), QVariant(QStringLiteral("България"))})
            firm.addBindValue(v);
        if (!firm.exec())
            return false;
    }
    QStringList marks;
    for (int i = 0; i < tripColumns().size(); ++i)
        marks.append(QStringLiteral("?"));
    QSqlQuery trip(db);
    trip.prepare(QStringLiteral("INSERT INTO ExternalKurs (%1) VALUES (%2)")
                     .arg(tripColumns().join(QStringLiteral(", ")), marks.join(QStringLiteral(", "))));
    for (int i = 0; i < trips; ++i) {
        const QString from = QStringLiteral("Фирма %1 ООД").arg(i % firms, 5, 10, QLatin1Char('0'));
        const QVariantList values = {
            QStringLiteral("%1").arg(i + 1, 10, 10, QLatin1Char('0')), QDate(2022, 1, 1).addDays(i % 1400),
            QStringLiteral("Шофьор %1").arg(i % 12), QStringLiteral("РВ %1 ВК").arg(1000 + i % 9),
            QStringLiteral("РВ %1 ЕЕ").arg(2000 + i % 6), QStringLiteral("Пшеница"), 22.0, 410.0, 1250.0, from,
            QStringLiteral("ул. Търговска 1"), QStringLiteral("Пловдив"), QStringLiteral("България"),
            QStringLiteral("Hellas Foods SA"), QStringLiteral("Odos Lagkada 140"), QStringLiteral("Thessaloniki"),
            QStringLiteral("Гърция"), QStringLiteral("Пловдив"), QStringLiteral("България"),
            QStringLiteral("Thessaloniki"), QStringLiteral("Гърция"), 2800.0, 1900.0};
        for (const QVariant &v : values)
            trip.addBindValue(v);
        if (!trip.exec()) {
            std::fprintf(stderr, "insert: %s\n", qPrintable(trip.lastError().text()));
            return false;
        }
    }
    return db.commit();
}

// From the command to the first trip shown, painted.
double openEditor(QSqlDatabase db)
{
    QElapsedTimer timer;
    timer.start();
    auto screen = std::make_unique<InsideKurs>(db);
    screen->show();
    QCoreApplication::processEvents();
    screen->grab();
    return ms(timer);
}

// From the right click to the list of firms, painted.
double openPicker(QSqlDatabase db)
{
    QElapsedTimer timer;
    timer.start();
    SendResive picker(db);
    picker.show();
    QCoreApplication::processEvents();
    picker.grab();
    return ms(timer);
}

}

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    bench::PrintingMessages messages;
    MessageService::setInstance(&messages);
    const int trips = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 20000;
    const int firms = argc > 2 ? QString::fromLocal8Bit(argv[2]).toInt() : 5000;
    QTemporaryDir dir;
    DatabaseConfig config;
    config.sqlitePath = dir.filePath(QStringLiteral("bench.db"));
    int exitCode = 0;
    {
        QSqlDatabase db = openDatabase(config, QStringLiteral("bench"));
        QString error;
        if (!db.isOpen() || !migrateSchema(db, &error) || !fill(db, trips, firms)) {
            std::fprintf(stderr, "database: %s\n", qPrintable(error));
            exitCode = 1;
        } else {
            openEditor(db);  // warms the database file and the fonts
            openPicker(db);
            double editor = 1e9, picker = 1e9;
            for (int i = 0; i < 3; ++i) {
                editor = std::min(editor, openEditor(db));
                picker = std::min(picker, openPicker(db));
            }
            std::printf("international trips, %d trips: InsideKurs opened and painted %6.1f ms (best of 3)\n", trips,
                        editor);
            std::printf("firms address book, %d firms: SendResive opened and painted %6.1f ms (best of 3)\n", firms,
                        picker);
        }
    }
    closeDatabase(QStringLiteral("bench"));
    MessageService::setInstance(nullptr);
    return exitCode;
}
