#include "core/currency.h"
#include "core/formats.h"
#include "courses/coursepricing.h"

#include <QtTest>

using namespace zarek;

namespace {

Money cents(qint64 value) { return Money::fromCents(value); }

}

class CurrencyTest : public QObject {
    Q_OBJECT
private slots:
    // Amounts go to euro half up to the cent; wages are rounded up (900 лв. of pay is 460,1627 €:
    // half up would give 460,16).
    void amountsGoToEuroHalfUpToTheCentAndWagesUp_data()
    {
        QTest::addColumn<qint64>("leva");
        QTest::addColumn<qint64>("euro");
        QTest::addColumn<qint64>("wages");
        QTest::newRow("one euro's worth") << qint64(196) << qint64(100) << qint64(101);  // 1,96 лв. is 1,00 €
        QTest::newRow("100 лв") << qint64(10000) << qint64(5113) << qint64(5113);
        QTest::newRow("1 лв") << qint64(100) << qint64(51) << qint64(52);  // 0,5113
        QTest::newRow("a stotinka keeps a cent") << qint64(1) << qint64(1) << qint64(1);  // 0,00511 rounds up
        QTest::newRow("nothing") << qint64(0) << qint64(0) << qint64(0);
        QTest::newRow("negative keeps its sign") << qint64(-10000) << qint64(-5113) << qint64(-5112);
        QTest::newRow("900 лв") << qint64(90000) << qint64(46016) << qint64(46017);
        QTest::newRow("a deduction rounds up too") << qint64(-90000) << qint64(-46016) << qint64(-46016);
        QTest::newRow("exact") << qint64(195583) << qint64(100000) << qint64(100000);  // 1955,83 лв. is 1000 € exactly
        QTest::newRow("large") << qint64(195583) * 1'000'000 << qint64(100'000'000'000) << qint64(100'000'000'000);
    }
    void amountsGoToEuroHalfUpToTheCentAndWagesUp()
    {
        QFETCH(qint64, leva);
        QFETCH(qint64, euro);
        QFETCH(qint64, wages);
        QCOMPARE(levaToEuro(cents(leva)).cents(), euro);
        QCOMPARE(convertAmount(cents(leva), Currency::Leva, Currency::Euro).cents(), euro);
        QCOMPARE(wagesToEuro(cents(leva)).cents(), wages);
    }

    void theExactRateGivesOneEuroAndEuroGoBackToLevaHalfUp()
    {
        // 1,95583 лв. is no amount of whole stotinki: as a unit price it is exactly one euro.
        QCOMPARE(convertPrice(1.95583, Currency::Leva, Currency::Euro), 1.00);
        QCOMPARE(convertPrice(0.005, Currency::Leva, Currency::Euro), 0.00);
        QCOMPARE(convertPrice(3.00, Currency::Leva, Currency::Euro), 1.53);
        QCOMPARE(convertPrice(1.53, Currency::Euro, Currency::Leva), 2.99);
        // Euro go back to leva half up.
        QCOMPARE(euroToLeva(cents(100)).cents(), qint64(196));
        QCOMPARE(euroToLeva(cents(5113)).cents(), qint64(10000));
        QCOMPARE(convertAmount(cents(5113), Currency::Euro, Currency::Euro).cents(), qint64(5113));
    }

    void anInvalidAmountStaysInvalid()
    {
        QVERIFY(!levaToEuro(Money::invalid()).isValid());
        QVERIFY(!wagesToEuro(Money::invalid()).isValid());
        QVERIFY(!euroToLeva(Money::invalid()).isValid());
    }

    void ratesKeepEnoughDecimals_data()
    {
        QTest::addColumn<double>("leva");
        QTest::addColumn<double>("euro");
        QTest::newRow("0,125") << 0.125 << 0.06391149;
        QTest::newRow("0,1") << 0.1 << 0.05112919;
        QTest::newRow("0,35") << 0.35 << 0.17895216;
        QTest::newRow("1,2") << 1.2 << 0.61355026;
        QTest::newRow("0") << 0.0 << 0.0;
    }
    void ratesKeepEnoughDecimals()
    {
        QFETCH(double, leva);
        QFETCH(double, euro);
        QCOMPARE(convertRate(leva, Currency::Leva, Currency::Euro), euro);
        // A leva course corrected after the changeover gets its band rate back exactly.
        QCOMPARE(convertRate(euro, Currency::Euro, Currency::Leva), leva);
    }

    void aCoursePricedInEuroIsWithinACentOfTheConvertedLevaPrice_data()
    {
        QTest::addColumn<double>("ton");
        QTest::addColumn<double>("km");
        QTest::addColumn<double>("rate");
        QTest::newRow("everyday") << 10.0 << 25.0 << 0.125;
        QTest::newRow("long haul") << 24.5 << 640.0 << 0.087;
        QTest::newRow("heaviest and farthest") << 100.0 << 2000.0 << 0.123;
        QTest::newRow("odd figures") << 17.321 << 1333.0 << 0.0777;
        QTest::newRow("dear rate") << 40.0 << 1999.0 << 99.999;
        QTest::newRow("short") << 0.5 << 3.0 << 1.3;
    }
    void aCoursePricedInEuroIsWithinACentOfTheConvertedLevaPrice()
    {
        QFETCH(double, ton);
        QFETCH(double, km);
        QFETCH(double, rate);
        const Money converted = levaToEuro(priceCourse(ton, km, rate).bruto);
        const Money priced = priceCourse(ton, km, convertRate(rate, Currency::Leva, Currency::Euro)).bruto;
        QVERIFY2(std::llabs(converted.cents() - priced.cents()) <= 1,
                 qPrintable(QStringLiteral("%1 against %2").arg(converted.cents()).arg(priced.cents())));
    }

    void theDateDecidesTheCurrency_data()
    {
        QTest::addColumn<QDate>("changeover");
        QTest::addColumn<QDate>("day");
        QTest::addColumn<int>("currency");
        const QDate euroDay(2026, 1, 1);
        QTest::newRow("not changed over") << QDate() << QDate(2027, 5, 1) << int(Currency::Leva);
        QTest::newRow("the day before") << euroDay << QDate(2025, 12, 31) << int(Currency::Leva);
        QTest::newRow("the day itself") << euroDay << euroDay << int(Currency::Euro);
        QTest::newRow("later") << euroDay << QDate(2026, 3, 1) << int(Currency::Euro);
        QTest::newRow("no date counts as today") << euroDay << QDate() << int(Currency::Euro);
    }
    void theDateDecidesTheCurrency()
    {
        QFETCH(QDate, changeover);
        QFETCH(QDate, day);
        QFETCH(int, currency);
        const Changeover books{changeover};
        QCOMPARE(int(books.currencyOn(day, QDate(2026, 6, 1))), currency);
        // The books of a command answer the same, today being the day the command began.
        QCOMPARE(int(BooksDay({books, QDate(2026, 6, 1)}).currencyOn(day)), currency);
    }

    void pricesAndTotalsStandInEuroOnceChangedOver()
    {
        QCOMPARE(Changeover{}.priceCurrency(), Currency::Leva);
        QCOMPARE(Changeover{QDate(2027, 1, 1)}.priceCurrency(), Currency::Euro);
        // Totals are in euro once any amount or the day is.
        QCOMPARE(totalsCurrency(false), Currency::Leva);
        QCOMPARE(totalsCurrency(true), Currency::Euro);
        QCOMPARE(totalsCurrency(false, Currency::Euro), Currency::Euro);
        QCOMPARE(totalsCurrency(false, Currency::Leva), Currency::Leva);
    }

    void totalsConvertEachAmountOfTheOtherCurrency()
    {
        CurrencyTotal total(Currency::Euro);
        total.add(cents(10000), Currency::Leva);  // 51,13
        total.add(cents(6000), Currency::Euro);
        QCOMPARE(total.total().cents(), qint64(11113));
        QVERIFY(total.converted());
        CurrencyTotal leva(Currency::Leva);
        leva.add(cents(100), Currency::Leva);
        QVERIFY(!leva.converted());
    }

    void anAmountTakenOffLeavesTheTotalAsItWas_data()
    {
        QTest::addColumn<int>("rule");
        QTest::newRow("each amount") << int(CurrencyTotal::Rule::EachAmount);
        QTest::newRow("wages") << int(CurrencyTotal::Rule::Wages);
    }
    void anAmountTakenOffLeavesTheTotalAsItWas()
    {
        QFETCH(int, rule);
        CurrencyTotal total(Currency::Euro, CurrencyTotal::Rule(rule));
        total.add(cents(90000), Currency::Leva);
        const Money before = total.total();
        total.add(cents(1), Currency::Leva);
        total.add(cents(6000), Currency::Euro);
        total.remove(cents(6000), Currency::Euro);
        total.remove(cents(1), Currency::Leva);
        QCOMPARE(total.total(), before);
        // Pay converts its leva once, rounded up; other totals convert each amount half up.
        QCOMPARE(before.cents(), rule == int(CurrencyTotal::Rule::Wages) ? qint64(46017) : qint64(46016));
    }

    void theNoteSaysHowTheTotalsWereMade()
    {
        const Changeover books{QDate(2026, 1, 1)};
        QCOMPARE(conversionNote(books), QStringLiteral("Сумите преди 01.01.2026 са преизчислени по курс 1,95583 лв. за 1 евро."));
        QCOMPARE(conversionNote(books, Currency::Leva),
                 QStringLiteral("Сумите от 01.01.2026 са преизчислени по курс 1,95583 лв. за 1 евро."));
    }
};

QTEST_APPLESS_MAIN(CurrencyTest)
#include "tst_currency.moc"
