// What clients owe on 20,000 invoices and 30,000 payments among 200 clients over two years with
// the changeover between them: "Вземания" on a date and a client's account for a year; on SQLite,
// and on PostgreSQL when ZAREK_TEST_PG names a server.
#include "benchdata.h"

#include "data/dialect.h"
#include "receivables/receivablesstore.h"

#include <QCoreApplication>
#include <algorithm>

using namespace zarek;
using namespace zarek::receivables;

namespace {

constexpr int clientCount = 200;
constexpr int invoiceCount = 20000;
constexpr int paidInvoices = 15000;  // two payments each: 30,000

QString clientName(int i) { return QStringLiteral("Клиент %1").arg(i, 3, 10, QLatin1Char('0')); }

bool fill(QSqlDatabase db)
{
    if (!db.transaction())
        return false;
    const QDate first(2025, 1, 1);
    const QDate changeover(2026, 1, 1);
    QSqlQuery invoice(db);
    invoice.prepare(QStringLiteral("INSERT INTO FaktDok (id, Nomer, Vid, Data, DataDan, Klient, Valuta, DDSProcent, Osnova, "
                                   "DDS, Obshto, DataPadej) VALUES (?, ?, 'F', ?, ?, ?, ?, 20, ?, 0, ?, ?)"));
    QSqlQuery payment(db);
    payment.prepare(QStringLiteral("INSERT INTO Plashtania (id, Data, Klient, Suma, Valuta, Nachin) VALUES (?, ?, ?, ?, ?, 'B')"));
    QSqlQuery settlement(db);
    settlement.prepare(QStringLiteral("INSERT INTO Pogasiavania (DokID, PlashtaneID, Data, Suma) VALUES (?, ?, ?, ?)"));
    qint64 paymentId = 0;
    for (int i = 0; i < invoiceCount; ++i) {
        const QDate day = first.addDays(i * 729 / invoiceCount);
        const QString currency = day < changeover ? QStringLiteral("BGN") : QStringLiteral("EUR");
        const qint64 total = 10000 + (i * 7919) % 500000;
        const QString client = clientName(i % clientCount);
        for (const QVariant &value : QVariantList{i + 1, QStringLiteral("%1").arg(i + 1, 10, 10, QLatin1Char('0')), day, day,
                                                  client, currency, total, total, day.addDays(30)})
            invoice.addBindValue(value);
        if (!invoice.exec())
            return false;
        if (i >= paidInvoices)
            continue;
        for (int part = 0; part < 2; ++part) {
            const QDate paid = day.addDays(10 + part * 25);
            const qint64 cents = part == 0 ? total / 2 : total - total / 2;
            for (const QVariant &value : QVariantList{++paymentId, paid, client, cents, currency})
                payment.addBindValue(value);
            if (!payment.exec())
                return false;
            for (const QVariant &value : QVariantList{i + 1, paymentId, paid, cents})
                settlement.addBindValue(value);
            if (!settlement.exec())
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

}

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    int failed = 0;
    const BooksDay books{Changeover{QDate(2026, 1, 1)}, QDate(2026, 12, 31)};
    bench::runOnEngines([&](const QString &engine, QSqlDatabase db) {
        if (!bench::migrated(db) || !fill(db)) {
            std::fprintf(stderr, "%s: filling failed: %s\n", qPrintable(engine), qPrintable(db.lastError().text()));
            failed = 1;
            return;
        }
        if (dialectOf(db) == Dialect::PostgreSQL)
            QSqlQuery(db).exec(QStringLiteral("ANALYZE"));
        std::printf("%s: %d invoices, %d payments, %d clients\n", qPrintable(engine), invoiceCount, paidInvoices * 2,
                    clientCount);
        QList<double> receivables, account;
        int rows = 0;
        int lines = 0;
        for (int run = 0; run < 5; ++run) {
            QElapsedTimer timer;
            timer.start();
            auto result = receivablesOn(db, QDate(2026, 6, 30), books);
            receivables.append(bench::ms(timer));
            if (!result) {
                failed = 1;
                return;
            }
            rows = int(result.value().clients.size());
            timer.restart();
            auto statement = clientAccount(db, clientName(run), QDate(2025, 7, 1), QDate(2026, 6, 30), books);
            account.append(bench::ms(timer));
            if (!statement) {
                failed = 1;
                return;
            }
            lines = int(statement.value().lines.size());
        }
        std::printf("%s: \"Вземания\" on 30.06.2026 (%d clients): %.1f ms (median of 5; goal 300 ms)\n",
                    qPrintable(engine), rows, median(receivables));
        std::printf("%s: a client's account for a year (%d lines): %.1f ms (median of 5; goal 200 ms)\n",
                    qPrintable(engine), lines, median(account));
    });
    return failed;
}
