#include "settlement/paysheet.h"

#include <QtTest>

using namespace zarek;

// The pay rules of a driver, without a database.
class PaySheetTest : public QObject {
    Q_OBJECT
private slots:
    void eachWholeTonneAboveTheRatedLoadTakesAFifth_data()
    {
        QTest::addColumn<double>("bruto");
        QTest::addColumn<double>("percent");
        QTest::addColumn<double>("ton");
        QTest::addColumn<double>("ratedTon");
        QTest::addColumn<qint64>("cents");
        QTest::newRow("below the rated load pays in full") << 1000.0 << 10.0 << 15.0 << 20.0 << qint64(10000);
        QTest::newRow("at the rated load pays in full") << 1000.0 << 10.0 << 20.0 << 20.0 << qint64(10000);
        QTest::newRow("20.9 t on 20 t pays in full") << 1000.0 << 10.0 << 20.9 << 20.0 << qint64(10000);
        QTest::newRow("21.0 t loses 20 %") << 1000.0 << 10.0 << 21.0 << 20.0 << qint64(8000);
        QTest::newRow("21.9 t loses 20 %") << 1000.0 << 10.0 << 21.9 << 20.0 << qint64(8000);
        QTest::newRow("22.0 t loses 40 %") << 1000.0 << 10.0 << 22.0 << 20.0 << qint64(6000);
        QTest::newRow("23.5 t on 20 t pays 40.00") << 1000.0 << 10.0 << 23.5 << 20.0 << qint64(4000);
        QTest::newRow("25.0 t pays nothing") << 1000.0 << 10.0 << 25.0 << 20.0 << qint64(0);
        QTest::newRow("26.0 t pays a fifth of the base back") << 1000.0 << 10.0 << 26.0 << 20.0 << qint64(-2000);
        // Regression: 21.1 − 20.1 is 0.99999… in binary, which dropped the whole tonne.
        QTest::newRow("21.1 t on 20.1 t is one tonne over") << 1000.0 << 10.0 << 21.1 << 20.1 << qint64(8000);
        QTest::newRow("a percent with decimals") << 250.0 << 12.5 << 10.0 << 20.0 << qint64(3125);
        QTest::newRow("half a stotinka rounds to even, down") << 31.25 << 10.0 << 10.0 << 20.0 << qint64(312);
        QTest::newRow("half a stotinka rounds to even, up") << 31.35 << 10.0 << 10.0 << 20.0 << qint64(314);
        QTest::newRow("below the half rounds down") << 31.25 << 13.0 << 10.0 << 20.0 << qint64(406);  // 4.0625
        QTest::newRow("a negative half rounds to even") << 31.25 << 10.0 << 26.0 << 20.0 << qint64(-62);  // -0.625
    }
    void eachWholeTonneAboveTheRatedLoadTakesAFifth()
    {
        QFETCH(double, bruto);
        QFETCH(double, percent);
        QFETCH(double, ton);
        QFETCH(double, ratedTon);
        QFETCH(qint64, cents);
        QCOMPARE(coursePay(bruto, percent, ton, ratedTon).rounded().cents(), cents);
    }

    void overloadCountsWholeTonnesOnly_data()
    {
        QTest::addColumn<double>("ton");
        QTest::addColumn<double>("ratedTon");
        QTest::addColumn<int>("tonnes");
        QTest::newRow("under") << 12.0 << 20.0 << 0;
        QTest::newRow("a kilogram short of a tonne") << 20.999 << 20.0 << 0;
        QTest::newRow("exactly a tonne") << 21.0 << 20.0 << 1;
        QTest::newRow("no rated load") << 3.5 << 0.0 << 3;
        QTest::newRow("decimal loads") << 23.3 << 20.3 << 3;
    }
    void overloadCountsWholeTonnesOnly()
    {
        QFETCH(double, ton);
        QFETCH(double, ratedTon);
        QFETCH(int, tonnes);
        QCOMPARE(overloadTonnes(ton, ratedTon), tonnes);
    }

    void theTotalAddsUnroundedPaySoItMayDifferFromThePrintedLines()
    {
        // Two courses of 3.125 each: printed 3.12 and 3.12, but the total is 6.25.
        const ExactPay first = coursePay(31.25, 10, 10, 20);
        const ExactPay second = coursePay(31.25, 10, 10, 20);
        QCOMPARE(first.rounded().cents() + second.rounded().cents(), qint64(624));
        QCOMPARE((first + second).rounded().cents(), qint64(625));
        QCOMPARE((first + second).toDouble(), 6.25);
    }

    void exactPayCarriesFractionsOfACentBothWays()
    {
        const ExactPay plus = ExactPay::fromParts(0, 3 * ExactPay::partsPerCent / 2);   // 1.5 cents
        const ExactPay minus = ExactPay::fromParts(0, -3 * ExactPay::partsPerCent / 2); // -1.5 cents
        QCOMPARE(plus.rounded().cents(), qint64(2));
        QCOMPARE(minus.rounded().cents(), qint64(-2));
        QCOMPARE((plus + minus).rounded().cents(), qint64(0));
        QCOMPARE(plus + minus, ExactPay());
    }

    void theLaterConfigRowOfATruckCounts()
    {
        const QList<PayTruck> trucks = {{QStringLiteral("СА 1234 ВК"), 0, 18},
                                        {QStringLiteral("РВ 7777 АА"), 15, 25},
                                        {QStringLiteral("СА 1234 ВК"), 12, 20}};
        const PayTruck found = payTruckFor(trucks, QStringLiteral(" СА 1234 ВК "));
        QCOMPARE(found.percent, 12.0);
        QCOMPARE(found.ratedTon, 20.0);
        QCOMPARE(payTruckFor(trucks, QStringLiteral("РВ 7777 АА")).percent, 15.0);
        QCOMPARE(payTruckFor(trucks, QStringLiteral("ВТ 0000 ХХ")).percent, 0.0);
    }
};

QTEST_APPLESS_MAIN(PaySheetTest)
#include "tst_paysheet.moc"
