#include "receivables/receivablesstore.h"
#include "data/query.h"
#include "receivablesfixture.h"
#include "testdatabase.h"

#include <QRandomGenerator>

using namespace zarek;
using namespace zarek::receivables;

namespace {

const QString client = QStringLiteral("Транс ООД");
const BooksDay inLeva{Changeover{}, QDate(2026, 6, 1)};
const BooksDay changedOver{Changeover{QDate(2026, 1, 1)}, QDate(2026, 6, 1)};

PaymentEntry payment(const QDate &date, qint64 cents, Currency currency = Currency::Leva, const QString &who = client)
{
    PaymentEntry entry;
    entry.date = date;
    entry.client = who;
    entry.amount = Money::fromCents(cents);
    entry.currency = currency;
    entry.reference = QStringLiteral("ПН 1");
    return entry;
}

// What each document still owes: "number:open" in the order of their numbers.
QString openText(QSqlDatabase db)
{
    return test::rowsText(db, QStringLiteral("SELECT d.Nomer, d.Obshto - COALESCE((SELECT SUM(Suma) FROM Pogasiavania s "
                                             "WHERE s.DokID = d.id), 0) FROM FaktDok d WHERE d.Vid <> 'K' ORDER BY d.Nomer"));
}

QString bucketsText(const ClientReceivable &row)
{
    QStringList parts;
    for (Money amount : row.buckets)
        parts << QString::number(amount.cents());
    parts << QString::number(row.credit.cents()) << QString::number(row.total.cents());
    return parts.join(QLatin1Char(' '));
}

}

// A fresh database of the current engine (db) with the client's invoice 0000000001 of 35,00,
// issued 01.03.2026 and due 31.03.2026.
#define AN_INVOICE_OF_35()            \
    ZAREK_SCRATCH_DB_AS(scratch, db); \
    test::issueDocument(db, "0000000001", 'F', client, QDate(2026, 3, 1), QDate(2026, 3, 31), 3500)

class ReceivablesStoreTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    // A payment goes to the oldest due date first; what is left after all of them is the client's credit.
    void aPaymentIsSpreadOldestFirst_data()
    {
        QTest::addColumn<qint64>("cents");
        QTest::addColumn<QString>("open");
        QTest::addColumn<qint64>("credit");
        QTest::newRow("part payment of the oldest") << qint64(3000) << "0000000001|3500 0000000002|10000 0000000003|2000" << qint64(0);
        QTest::newRow("the oldest and part of the next") << qint64(10000) << "0000000001|0 0000000002|8500 0000000003|0" << qint64(0);
        QTest::newRow("everything") << qint64(18500) << "0000000001|0 0000000002|0 0000000003|0" << qint64(0);
        QTest::newRow("overpayment kept as credit") << qint64(20000) << "0000000001|0 0000000002|0 0000000003|0" << qint64(1500);
    }
    void aPaymentIsSpreadOldestFirst()
    {
        QFETCH(qint64, cents);
        QFETCH(QString, open);
        QFETCH(qint64, credit);
        AN_INVOICE_OF_35();
        test::issueDocument(db, "0000000002", 'F', client, QDate(2026, 3, 2), QDate(2026, 4, 1), 10000);
        test::issueDocument(db, "0000000003", 'F', client, QDate(2026, 2, 20), QDate(2026, 3, 2), 5000);
        auto recorded = recordPayment(db, payment(QDate(2026, 4, 10), cents));
        QVERIFY2(recorded, qPrintable(recorded ? QString() : recorded.message().text));
        QCOMPARE(openText(db), open);
        QCOMPARE(recorded.value().unused.cents(), credit);
        QCOMPARE(clientCredit(db, client, Currency::Leva).value().cents(), credit);
    }

    // The client's credit goes to the next invoice when offered.
    void creditGoesToTheNextInvoice()
    {
        AN_INVOICE_OF_35();
        QVERIFY(recordPayment(db, payment(QDate(2026, 3, 5), 5000)));
        test::issueDocument(db, "0000000002", 'F', client, QDate(2026, 4, 1), QDate(2026, 4, 30), 10000);
        auto spread = spreadCredit(db, client, QDate(2026, 4, 1));
        QVERIFY(spread);
        QCOMPARE(openText(db), QStringLiteral("0000000001|0 0000000002|8500"));
        QCOMPARE(clientCredit(db, client, Currency::Leva).value().cents(), qint64(0));
        QCOMPARE(test::rowsText(db, "SELECT Data FROM Pogasiavania ORDER BY id"), QStringLiteral("2026-03-05 2026-04-01"));
    }

    // Picked documents take what the user put against them; more than the payment, or more than
    // a document owes, is refused and nothing is written.
    void pickedDocuments_data()
    {
        QTest::addColumn<qint64>("first");
        QTest::addColumn<qint64>("second");
        QTest::addColumn<bool>("accepted");
        QTest::addColumn<QString>("open");
        QTest::newRow("the newer one only") << qint64(0) << qint64(4000) << true << "0000000001|3500 0000000002|6000";
        QTest::newRow("both in part") << qint64(1000) << qint64(4000) << true << "0000000001|2500 0000000002|6000";
        QTest::newRow("more than the payment") << qint64(3500) << qint64(3000) << false << "0000000001|3500 0000000002|10000";
        QTest::newRow("more than it owes") << qint64(3600) << qint64(0) << false << "0000000001|3500 0000000002|10000";
    }
    void pickedDocuments()
    {
        QFETCH(qint64, first);
        QFETCH(qint64, second);
        QFETCH(bool, accepted);
        QFETCH(QString, open);
        ZAREK_SCRATCH_DB_AS(scratch, db);
        const qint64 one = test::issueDocument(db, "0000000001", 'F', client, QDate(2026, 3, 1), QDate(2026, 3, 31), 3500);
        const qint64 two = test::issueDocument(db, "0000000002", 'F', client, QDate(2026, 3, 2), QDate(2026, 4, 1), 10000);
        PaymentEntry entry = payment(QDate(2026, 4, 10), 6000);
        if (first > 0)
            entry.picked.append({one, 1, Money::fromCents(first)});
        if (second > 0)
            entry.picked.append({two, 1, Money::fromCents(second)});
        QCOMPARE(bool(recordPayment(db, entry)), accepted);
        QCOMPARE(openText(db), open);
        QCOMPARE(test::scalar(db, "SELECT COUNT(*) FROM Plashtania").toInt(), accepted ? 1 : 0);
    }

    // Deleting a payment gives back exactly what it settled, and nothing of another payment's.
    void deletingAPaymentGivesBackWhatItSettled()
    {
        AN_INVOICE_OF_35();
        test::issueDocument(db, "0000000002", 'F', client, QDate(2026, 3, 2), QDate(2026, 4, 1), 10000);
        QVERIFY(recordPayment(db, payment(QDate(2026, 4, 1), 2000)));
        auto second = recordPayment(db, payment(QDate(2026, 4, 2), 5000));
        QVERIFY(second);
        QCOMPARE(openText(db), QStringLiteral("0000000001|0 0000000002|6500"));
        QVERIFY(!deletePayment(db, second.value().id, 1));
        QCOMPARE(openText(db), QStringLiteral("0000000001|1500 0000000002|10000"));
        QCOMPARE(test::scalar(db, "SELECT COUNT(*) FROM Pogasiavania").toInt(), 1);
        QVERIFY(deletePayment(db, second.value().id, 1));  // gone already: the conflict box
    }

    // A credit note settles what its invoice still owes; once the invoice is paid the note stays
    // as the client's credit and the balance counts it all the same.
    void aCreditNoteSettlesItsInvoice_data()
    {
        QTest::addColumn<qint64>("paidBefore");
        QTest::addColumn<qint64>("settled");
        QTest::addColumn<QString>("open");
        QTest::addColumn<qint64>("balance");
        QTest::newRow("unpaid invoice") << qint64(0) << qint64(2000) << "0000000001|8000" << qint64(8000);
        QTest::newRow("part paid, note covers the rest") << qint64(9000) << qint64(1000) << "0000000001|0" << qint64(-1000);
        QTest::newRow("paid: the note is credit") << qint64(10000) << qint64(0) << "0000000001|0" << qint64(-2000);
    }
    void aCreditNoteSettlesItsInvoice()
    {
        QFETCH(qint64, paidBefore);
        QFETCH(qint64, settled);
        QFETCH(QString, open);
        QFETCH(qint64, balance);
        ZAREK_SCRATCH_DB_AS(scratch, db);
        const qint64 invoice = test::issueDocument(db, "0000000001", 'F', client, QDate(2026, 3, 1), QDate(2026, 3, 31), 10000);
        if (paidBefore > 0)
            QVERIFY(recordPayment(db, payment(QDate(2026, 3, 10), paidBefore)));
        const qint64 note = test::issueDocument(db, "0000000002", 'K', client, QDate(2026, 3, 15), QDate(2026, 3, 15), 2000,
                                                "BGN", invoice);
        auto result = settleCreditNote(db, note);
        QVERIFY(result);
        QCOMPARE(result.value().cents(), settled);
        QCOMPARE(settleCreditNote(db, note).value().cents(), qint64(0));  // twice adds nothing
        QCOMPARE(openText(db), open);
        auto receivables = receivablesOn(db, QDate(2026, 3, 20), inLeva);
        QVERIFY(receivables);
        QCOMPARE(receivables.value().totals.total.cents(), balance);
        auto account = clientAccount(db, client, QDate(2026, 1, 1), QDate(2026, 3, 31), inLeva);
        QCOMPARE(account.value().closing.cents(), balance);
    }

    // The age of what is due on 31.03.2026, at each boundary.
    void ageingOnADate_data()
    {
        QTest::addColumn<int>("daysLate");
        QTest::addColumn<QString>("buckets");
        QTest::newRow("due today") << 0 << "1000 0 0 0 0 0 1000";
        QTest::newRow("30 days") << 30 << "0 1000 0 0 0 0 1000";
        QTest::newRow("31 days") << 31 << "0 0 1000 0 0 0 1000";
        QTest::newRow("90 days") << 90 << "0 0 0 1000 0 0 1000";
        QTest::newRow("91 days") << 91 << "0 0 0 0 1000 0 1000";
    }
    void ageingOnADate()
    {
        QFETCH(int, daysLate);
        QFETCH(QString, buckets);
        ZAREK_SCRATCH_DB_AS(scratch, db);
        const QDate on(2026, 3, 31);
        const QDate due = on.addDays(-daysLate);
        test::issueDocument(db, "0000000001", 'F', client, due.addDays(-10), due, 1500);
        // paid in part before the date, and once more after it (not counted on the date)
        QVERIFY(recordPayment(db, payment(due.addDays(-5), 500)));
        QVERIFY(recordPayment(db, payment(on.addDays(1), 1000)));
        auto receivables = receivablesOn(db, on, inLeva);
        QVERIFY(receivables);
        QCOMPARE(receivables.value().clients.size(), 1);
        QCOMPARE(bucketsText(receivables.value().clients.first()), buckets);
        auto summary = receivablesSummary(db, on, inLeva);
        QCOMPARE(summary.value().overdue.cents(), daysLate > 0 ? qint64(1000) : qint64(0));
        QCOMPARE(summary.value().largestOverdue.size(), daysLate > 0 ? 1 : 0);
    }

    // Across the changeover: amounts keep the currency of their day, the balance is in euro.
    void balancesAcrossTheChangeover_data()
    {
        QTest::addColumn<QDate>("from");
        QTest::addColumn<QDate>("to");
        QTest::addColumn<int>("currency");
        QTest::addColumn<qint64>("opening");
        QTest::addColumn<qint64>("closing");
        QTest::addColumn<int>("lines");
        // 195,58 лв. invoice on 15.12.2025, 100,00 лв. paid 31.12.2025, 50,00 € invoice 01.01.2026, 20,00 € paid 02.01.2026
        QTest::newRow("December in leva") << QDate(2025, 12, 1) << QDate(2025, 12, 31) << int(Currency::Leva) << qint64(0)
                                          << qint64(9558) << 2;
        QTest::newRow("January in euro") << QDate(2026, 1, 1) << QDate(2026, 1, 31) << int(Currency::Euro) << qint64(4887)
                                         << qint64(7887) << 2;
        QTest::newRow("both months in euro") << QDate(2025, 12, 1) << QDate(2026, 1, 31) << int(Currency::Euro) << qint64(0)
                                             << qint64(7887) << 4;
    }
    void balancesAcrossTheChangeover()
    {
        QFETCH(QDate, from);
        QFETCH(QDate, to);
        QFETCH(int, currency);
        QFETCH(qint64, opening);
        QFETCH(qint64, closing);
        QFETCH(int, lines);
        ZAREK_SCRATCH_DB_AS(scratch, db);
        test::issueDocument(db, "0000000001", 'F', client, QDate(2025, 12, 15), QDate(2026, 1, 14), 19558);
        QVERIFY(recordPayment(db, payment(QDate(2025, 12, 31), 10000)));
        test::issueDocument(db, "0000000002", 'F', client, QDate(2026, 1, 1), QDate(2026, 1, 31), 5000, "EUR");
        QVERIFY(recordPayment(db, payment(QDate(2026, 1, 2), 2000, Currency::Euro)));
        auto account = clientAccount(db, client, from, to, changedOver);
        QVERIFY(account);
        QCOMPARE(int(account.value().currency), currency);
        QCOMPARE(account.value().opening.cents(), opening);
        QCOMPARE(account.value().closing.cents(), closing);
        QCOMPARE(account.value().lines.size(), lines);
        // "Вземания" on each side of the changeover: leva on 31.12.2025, euro on 01.01.2026.
        auto december = receivablesOn(db, QDate(2025, 12, 31), changedOver);
        QCOMPARE(int(december.value().currency), int(Currency::Leva));
        QCOMPARE(december.value().totals.total.cents(), qint64(9558));
        auto january = receivablesOn(db, QDate(2026, 1, 2), changedOver);
        QCOMPARE(int(january.value().currency), int(Currency::Euro));
        // 95,58 лв. open is 48,87 €; the 20,00 € payment went to that leva invoice: 39,22 лв. = 20,05 €? no:
        // 20,00 € settles 39,12 лв. of it, leaving 56,46 лв. = 28,87 €, and the euro invoice owes 50,00 €.
        QCOMPARE(january.value().totals.total.cents(), qint64(2887 + 5000));
    }

    // Two workstations read the same open invoice; the first settles it, the second's
    // settlement of the version it read is refused and writes nothing.
    void twoWorkstationsNeverSettleOneInvoiceTwice()
    {
        ZAREK_SCRATCH_DB_AS(scratch, first);
        QSqlDatabase second = scratch.openSecondConnection();
        QVERIFY(second.isOpen());
        test::issueDocument(first, "0000000001", 'F', client, QDate(2026, 3, 1), QDate(2026, 3, 31), 10000);
        auto seenByFirst = openDocuments(first, client);
        auto seenBySecond = openDocuments(second, client);
        QCOMPARE(seenBySecond.value().size(), 1);
        PaymentEntry one = payment(QDate(2026, 3, 10), 10000);
        one.picked.append({seenByFirst.value().first().id, seenByFirst.value().first().version, Money::fromCents(10000)});
        PaymentEntry two = one;
        two.picked.first().version = seenBySecond.value().first().version;
        QVERIFY(recordPayment(first, one));
        auto refused = recordPayment(second, two);
        QVERIFY(!refused);
        QCOMPARE(test::scalar(first, "SELECT COUNT(*) FROM Plashtania").toInt(), 1);
        QCOMPARE(test::scalar(first, "SELECT SUM(Suma) FROM Pogasiavania").toLongLong(), qint64(10000));
        // Spread by the second workstation afterwards: nothing is open, the payment is credit.
        auto spread = recordPayment(second, payment(QDate(2026, 3, 11), 10000));
        QVERIFY(spread);
        QVERIFY(spread.value().settlements.isEmpty());
        QCOMPARE(test::scalar(first, "SELECT SUM(Suma) FROM Pogasiavania").toLongLong(), qint64(10000));
    }

    // Thousands of steps of invoices, credit notes, payments and deletions: no document is ever
    // settled beyond its total and each client's balance is invoices − notes − payments.
    void randomSequenceKeepsTheBooksTrue()
    {
        ZAREK_SCRATCH_DB_AS(scratch, db);
        QRandomGenerator random(20260101);
        const QStringList clients{QStringLiteral("Алфа"), QStringLiteral("Бета"), QStringLiteral("Гама")};
        int number = 0;
        QDate day(2026, 1, 1);
        const int steps = 2000;
        for (int step = 0; step < steps; ++step) {
            if (random.bounded(4) == 0)
                day = day.addDays(1);
            const QString who = clients.at(random.bounded(clients.size()));
            const int action = random.bounded(10);
            if (action < 4) {
                test::issueDocument(db, QStringLiteral("%1").arg(++number, 10, 10, QLatin1Char('0')),
                                    action == 3 ? 'D' : 'F', who, day, day.addDays(random.bounded(60)),
                                    1 + random.bounded(100000),
                                    QStringLiteral("BGN"), action == 3 ? 1 : 0);
            } else if (action == 4) {
                const qint64 invoice = test::scalar(db, "SELECT MAX(id) FROM FaktDok WHERE Klient = ? AND Vid = 'F'", {who})
                                           .toLongLong();
                if (invoice > 0) {
                    const qint64 note = test::issueDocument(db, QStringLiteral("%1").arg(++number, 10, 10, QLatin1Char('0')),
                                                            'K', who, day, day, 1 + random.bounded(30000), "BGN", invoice);
                    QVERIFY(settleCreditNote(db, note));
                }
            } else if (action < 8) {
                PaymentEntry entry = payment(day, 1 + random.bounded(150000), Currency::Leva, who);
                if (action == 7) {
                    auto open = openDocuments(db, who);
                    QVERIFY(open);
                    if (!open.value().isEmpty()) {
                        const OpenDocument &d = open.value().at(random.bounded(open.value().size()));
                        entry.picked.append({d.id, d.version, std::min(d.open(), entry.amount)});
                    }
                }
                auto recorded = recordPayment(db, entry);
                QVERIFY2(recorded, qPrintable(recorded ? QString() : recorded.message().text));
            } else if (action == 8) {
                const RowSet rows = readRows(db, "t", "SELECT id, row_version FROM Plashtania WHERE Klient = ? ORDER BY id",
                                             {who}).value();
                if (!rows.isEmpty()) {
                    const int row = random.bounded(rows.rowCount());
                    QVERIFY(!deletePayment(db, rows.value(row, 0).toLongLong(), rows.value(row, 1).toLongLong()));
                }
            } else {
                QVERIFY(spreadCredit(db, who, day));
            }
            QCOMPARE(test::scalar(db, "SELECT COUNT(*) FROM FaktDok d WHERE d.Obshto < "
                                      "(SELECT SUM(Suma) FROM Pogasiavania s WHERE s.DokID = d.id)").toInt(), 0);
            if (step % 50 == 49 || step == steps - 1) {
                auto receivables = receivablesOn(db, day, inLeva);
                QVERIFY(receivables);
                for (const QString &name : clients) {
                    const qint64 expected =
                        test::scalar(db, "SELECT COALESCE(SUM(CASE WHEN Vid = 'K' THEN -Obshto ELSE Obshto END), 0) FROM FaktDok "
                                         "WHERE Klient = ?", {name}).toLongLong()
                        - test::scalar(db, "SELECT COALESCE(SUM(Suma), 0) FROM Plashtania WHERE Klient = ?", {name}).toLongLong();
                    qint64 owed = 0;
                    for (const ClientReceivable &row : receivables.value().clients) {
                        if (row.client == name)
                            owed = row.total.cents();
                    }
                    QCOMPARE(owed, expected);
                    QCOMPARE(clientAccount(db, name, QDate(2026, 1, 1), day, inLeva).value().closing.cents(), expected);
                }
            }
        }
    }
};

QTEST_GUILESS_MAIN(ReceivablesStoreTest)
#include "tst_receivablesstore.moc"
