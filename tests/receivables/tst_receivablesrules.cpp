#include "receivables/receivablesrules.h"

#include <QtTest>

using namespace zarek;
using namespace zarek::receivables;

namespace {

OpenDocument document(qint64 id, const QString &number, const QDate &due, qint64 total, qint64 settled = 0,
                      Currency currency = Currency::Leva)
{
    OpenDocument d;
    d.id = id;
    d.number = number;
    d.due = due;
    d.total = Money::fromCents(total);
    d.settled = Money::fromCents(settled);
    d.currency = currency;
    return d;
}

// "id:cents id:cents"
QString text(const QList<Settlement> &settlements)
{
    QStringList parts;
    for (const Settlement &s : settlements)
        parts << QStringLiteral("%1:%2").arg(s.documentId).arg(s.amount.cents());
    return parts.join(QLatin1Char(' '));
}

}

class ReceivablesRulesTest : public QObject {
    Q_OBJECT
private slots:
    void paymentsSettleTheOldestDueDateFirst_data()
    {
        QTest::addColumn<qint64>("payment");
        QTest::addColumn<QString>("expected");
        // 1 due 10.03 (100,00), 2 due 01.03 (50,00, 20,00 paid), 3 due 01.03 with a higher number (70,00)
        QTest::newRow("part of the oldest") << qint64(1000) << "2:1000";
        QTest::newRow("the oldest exactly") << qint64(3000) << "2:3000";
        QTest::newRow("the same due date: the lower number first") << qint64(5000) << "2:3000 3:2000";
        QTest::newRow("all three") << qint64(20000) << "2:3000 3:7000 1:10000";
        QTest::newRow("more than owed: the rest is left") << qint64(25000) << "2:3000 3:7000 1:10000";
    }
    void paymentsSettleTheOldestDueDateFirst()
    {
        QFETCH(qint64, payment);
        QFETCH(QString, expected);
        QList<OpenDocument> documents{document(1, "0000000001", QDate(2026, 3, 10), 10000),
                                      document(3, "0000000003", QDate(2026, 3, 1), 7000),
                                      document(2, "0000000002", QDate(2026, 3, 1), 5000, 2000)};
        sortOldestFirst(documents);
        QCOMPARE(text(spread(Money::fromCents(payment), Currency::Leva, documents)), expected);
    }

    void aPaymentInTheOtherCurrencyIsConverted_data()
    {
        QTest::addColumn<qint64>("euroCents");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<qint64>("unused");
        // an invoice in leva of 195,58 лв. and one of 100,00 лв.
        QTest::newRow("100,00 € covers 195,58 лв. and leaves 0,00 €") << qint64(10000) << "1:19558" << qint64(0);
        QTest::newRow("10,00 € settles 19,56 лв.") << qint64(1000) << "1:1956" << qint64(0);
        QTest::newRow("200,00 € covers both, 48,87 € left") << qint64(20000) << "1:19558 2:10000" << qint64(4887);
    }
    void aPaymentInTheOtherCurrencyIsConverted()
    {
        QFETCH(qint64, euroCents);
        QFETCH(QString, expected);
        QFETCH(qint64, unused);
        const QList<OpenDocument> documents{document(1, "1", QDate(2025, 12, 1), 19558),
                                            document(2, "2", QDate(2025, 12, 5), 10000)};
        const auto settlements = spread(Money::fromCents(euroCents), Currency::Euro, documents);
        QCOMPARE(text(settlements), expected);
        Money leva;
        for (const Settlement &s : settlements)
            leva += s.amount;
        QCOMPARE(unusedAmount(Money::fromCents(euroCents), Currency::Euro, Money(), leva).cents(), unused);
    }

    void ageBuckets_data()
    {
        QTest::addColumn<int>("daysLate");
        QTest::addColumn<int>("bucket");
        QTest::newRow("due in a week") << -7 << 0;
        QTest::newRow("due today") << 0 << 0;
        QTest::newRow("1 day") << 1 << 1;
        QTest::newRow("30 days") << 30 << 1;
        QTest::newRow("31 days") << 31 << 2;
        QTest::newRow("60 days") << 60 << 2;
        QTest::newRow("61 days") << 61 << 3;
        QTest::newRow("90 days") << 90 << 3;
        QTest::newRow("91 days") << 91 << 4;
    }
    void ageBuckets()
    {
        QFETCH(int, daysLate);
        QFETCH(int, bucket);
        const QDate on(2026, 3, 31);
        QCOMPARE(ageBucket(on.addDays(-daysLate), on), bucket);
    }
};

QTEST_GUILESS_MAIN(ReceivablesRulesTest)
#include "tst_receivablesrules.moc"
