#include "core/money.h"
#include "core/rounding.h"

#include <QtTest>

using namespace zarek;

class RoundingTest : public QObject {
    Q_OBJECT
private slots:
    // Each value rounded half to even and half up at the shown decimal: a half goes to the even
    // digit, or away from zero.
    void halvesGoToTheEvenDigitOrAwayFromZeroOfTheShownDecimal_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<int>("decimals");
        QTest::addColumn<double>("halfEven");
        QTest::addColumn<double>("halfUp");
        QTest::newRow("0.125") << 0.125 << 2 << 0.12 << 0.13;
        QTest::newRow("0.135") << 0.135 << 2 << 0.14 << 0.14;
        QTest::newRow("0.9375 above the half") << 0.9375 << 2 << 0.94 << 0.94;
        QTest::newRow("2.675 as shown, not as stored") << 2.675 << 2 << 2.68 << 2.68;
        QTest::newRow("1.005 as shown, not as stored") << 1.005 << 2 << 1.0 << 1.01;
        QTest::newRow("1.015 as shown") << 1.015 << 2 << 1.02 << 1.02;
        QTest::newRow("negative half") << -0.125 << 2 << -0.12 << -0.13;
        QTest::newRow("negative above") << -0.126 << 2 << -0.13 << -0.13;
        QTest::newRow("below the half") << 0.1249 << 2 << 0.12 << 0.12;
        QTest::newRow("carry over") << 9.995 << 2 << 10.0 << 10.0;
        QTest::newRow("already short") << 31.25 << 2 << 31.25 << 31.25;
        QTest::newRow("already short, three decimals") << 0.5 << 3 << 0.5 << 0.5;
        QTest::newRow("one decimal half even") << 93.45 << 1 << 93.4 << 93.5;
        QTest::newRow("one decimal half odd") << 93.55 << 1 << 93.6 << 93.6;
        QTest::newRow("whole 99.5") << 99.5 << 0 << 100.0 << 100.0;
        QTest::newRow("whole 100.5") << 100.5 << 0 << 100.0 << 101.0;
        QTest::newRow("large") << 123456789.125 << 2 << 123456789.12 << 123456789.13;
        QTest::newRow("a euro rate of eight decimals") << 0.35 / 1.95583 << 8 << 0.17895216 << 0.17895216;
        QTest::newRow("zero") << 0.0 << 2 << 0.0 << 0.0;
    }
    void halvesGoToTheEvenDigitOrAwayFromZeroOfTheShownDecimal()
    {
        QFETCH(double, value);
        QFETCH(int, decimals);
        QFETCH(double, halfEven);
        QFETCH(double, halfUp);
        QCOMPARE(roundHalfEven(value, decimals), halfEven);
        QCOMPARE(roundHalfUp(value, decimals), halfUp);
    }

    void moneyShareRoundsHalfToEvenInCents_data()
    {
        QTest::addColumn<qint64>("cents");
        QTest::addColumn<qint64>("expectedThreePercent");
        QTest::newRow("31.25 -> 0.94 (0.9375)") << qint64(3125) << qint64(94);
        QTest::newRow("50.00 -> 1.50") << qint64(5000) << qint64(150);
        QTest::newRow("0.50 -> 0.02 (0.015 half to even)") << qint64(50) << qint64(2);
        QTest::newRow("1.50 -> 0.04 (0.045 half to even)") << qint64(150) << qint64(4);
        QTest::newRow("0.17 -> 0.01 (0.0051)") << qint64(17) << qint64(1);
        QTest::newRow("negative -31.25") << qint64(-3125) << qint64(-94);
    }
    void moneyShareRoundsHalfToEvenInCents()
    {
        QFETCH(qint64, cents);
        QFETCH(qint64, expectedThreePercent);
        QCOMPARE(Money::fromCents(cents).share(3, 100).cents(), expectedThreePercent);
    }

    void moneyFromAmountUsesTheShownDecimal()
    {
        QCOMPARE(Money::fromAmount(2.675).cents(), qint64(268));
        QCOMPARE(Money::fromAmount(0.125).cents(), qint64(12));
        QCOMPARE(Money::fromAmount(-0.135).cents(), qint64(-14));
        QCOMPARE(Money::fromAmount(1e9).cents(), qint64(100000000000));
    }
};

QTEST_APPLESS_MAIN(RoundingTest)
#include "tst_rounding.moc"
