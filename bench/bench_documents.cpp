// The documents of 500 trucks and 1,000 drivers, 20,000 in all: the due list and its count, and
// the main window's start with the sign-in notice against without it; on SQLite, and on
// PostgreSQL when ZAREK_TEST_PG names a server.
#include "benchdata.h"

#include "app/frmmain.h"
#include "documents/documentrules.h"
#include "documents/documentstore.h"
#include "forms/messageservice.h"

#include <QApplication>
#include <algorithm>

using namespace zarek;
using namespace zarek::documents;

namespace {

constexpr int truckCount = 500;
constexpr int driverCount = 1000;
constexpr int documentCount = 20000;

bool fillDocuments(QSqlDatabase db, const QDate &today)
{
    const auto kinds = DocumentStore(db).kinds();
    if (!kinds)
        return false;
    QList<DocumentKind> truckKinds, driverKinds;
    for (const DocumentKind &kind : kinds.value())
        (kind.holder == Holder::Truck ? truckKinds : driverKinds).append(kind);
    if (!db.transaction())
        return false;
    QSqlQuery query(db);
    query.prepare(QStringLiteral("INSERT INTO Config (kola, Razhod, Procent, Ton) VALUES (?, ?, ?, ?)"));
    for (int i = 0; i < truckCount; ++i) {
        for (const QVariant &value : QVariantList{QStringLiteral("СА %1 ВК").arg(1000 + i), 32.5, 12.0, 20.0})
            query.addBindValue(value);
        if (!query.exec())
            return false;
    }
    query.prepare(QStringLiteral("INSERT INTO shof (kod, ime) VALUES (?, ?)"));
    for (int i = 0; i < driverCount; ++i) {
        query.addBindValue(QStringLiteral("%1").arg(i + 1, 4, 10, QLatin1Char('0')));
        query.addBindValue(QStringLiteral("Шофьор %1").arg(i + 1));
        if (!query.exec())
            return false;
    }
    query.prepare(QStringLiteral("INSERT INTO Dokumenti (Vid, Za, Kod, Nomer, Izdaden, Valid, Izdatel, Smenen) "
                                 "VALUES (?, ?, ?, ?, ?, ?, ?, ?)"));
    for (int i = 0; i < documentCount; ++i) {
        const bool truck = i % 3 == 0;
        const QList<DocumentKind> &list = truck ? truckKinds : driverKinds;
        const DocumentKind &kind = list.at((i / 3) % list.size());
        // Validity spread from 60 days past to five years ahead; one in ten renewed already.
        const QDate valid = kind.expires() ? today.addDays((i * 7919) % 1886 - 60) : QDate();
        const QDate issued = valid.isValid() ? valid.addDays(-300) : today.addDays(-900);
        const QString holder = truck ? QStringLiteral("СА %1 ВК").arg(1000 + i % truckCount)
                                     : QStringLiteral("%1").arg(i % driverCount + 1, 4, 10, QLatin1Char('0'));
        for (const QVariant &value : QVariantList{kind.name, holderCode(kind.holder), holder, QString::number(i), issued,
                                                  valid.isValid() ? QVariant(valid) : QVariant(QMetaType(QMetaType::QDate)),
                                                  QStringLiteral("ИА АА"), i % 10 == 0})
            query.addBindValue(value);
        if (!query.exec()) {
            std::fprintf(stderr, "insert: %s\n", qPrintable(query.lastError().text()));
            return false;
        }
    }
    return db.commit();
}

double median(QList<double> times)
{
    std::sort(times.begin(), times.end());
    return times.at(times.size() / 2);
}

// The main window made and shown, with or without the notice, until its events are done.
double startWindow(QSqlDatabase db, bool notice, const QDate &today)
{
    QElapsedTimer timer;
    timer.start();
    {
        FrmMain window(FirmProfile{}, DatabaseConfig{}, db, QStringLiteral("A"));
        window.show();
        if (notice)
            window.showDueNotice(QStringLiteral("admin"), today);
        QApplication::processEvents();
        const double elapsed = bench::ms(timer);
        return elapsed;
    }
}

}

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    RecordingMessageService quiet;
    QTemporaryDir settings;
    FrmMain::setSettingsFile(settings.filePath(QStringLiteral("zarek.ini")));
    const QDate today = QDate::currentDate();
    int failed = 0;
    bench::runOnEngines([&](const QString &engine, QSqlDatabase db) {
        if (!bench::migrated(db)) {
            failed = 1;
            return;
        }
        QElapsedTimer fill;
        fill.start();
        if (!fillDocuments(db, today)) {
            std::fprintf(stderr, "%s: filling failed\n", qPrintable(engine));
            failed = 1;
            return;
        }
        if (dialectOf(db) == Dialect::PostgreSQL)
            QSqlQuery(db).exec(QStringLiteral("ANALYZE"));
        std::printf("%s: %d trucks, %d drivers, %d documents filled in %.0f ms\n", qPrintable(engine), truckCount,
                    driverCount, documentCount, bench::ms(fill));

        const DocumentStore store(db);
        QList<double> lists;
        int rows = 0;
        for (int run = 0; run < 7; ++run) {
            QElapsedTimer timer;
            timer.start();
            const auto due = store.dueList(today);
            lists.append(bench::ms(timer));
            rows = due ? due.value().rowCount() : -1;
        }
        std::printf("%s: due list of %d rows: first %.1f ms, median %.1f ms (limit 100 ms) %s\n", qPrintable(engine), rows,
                    lists.first(), median(lists), median(lists) < 100 ? "ok" : "TOO SLOW");

        QList<double> without, with;
        startWindow(db, false, today);  // the first start pays for fonts and styles once
        for (int run = 0; run < 9; ++run) {
            without.append(startWindow(db, false, today));
            with.append(startWindow(db, true, today));
        }
        const double ratio = median(with) / median(without);
        std::printf("%s: main window start without the notice %.1f ms, with it %.1f ms (median of 9): %+.1f %% (limit +10 %%) %s\n",
                    qPrintable(engine), median(without), median(with), (ratio - 1) * 100, ratio <= 1.10 ? "ok" : "TOO SLOW");
    });
    return failed;
}
