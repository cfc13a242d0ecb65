#include "core/money.h"
#include "courses/coursepricing.h"

#include <QtTest>
#include <limits>

using namespace zarek;

// Money holds +-10^15 cents; beyond that it is invalid rather than a wrapped figure.
class MoneyTest : public QObject {
    Q_OBJECT
private slots:
    void amountsMoneyCannotHoldAreInvalid_data()
    {
        QTest::addColumn<double>("amount");
        QTest::addColumn<bool>("valid");
        QTest::newRow("the overflow course's gross") << 1e17 << false;
        QTest::newRow("beyond 64 bits of cents") << 1e300 << false;
        QTest::newRow("negative beyond") << -1e14 << false;
        QTest::newRow("infinity") << std::numeric_limits<double>::infinity() << false;
        QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN() << false;
        QTest::newRow("the largest amount") << 1e13 << true;
        QTest::newRow("the smallest amount") << -1e13 << true;
        QTest::newRow("an ordinary gross") << 31.25 << true;
    }
    void amountsMoneyCannotHoldAreInvalid()
    {
        QFETCH(double, amount);
        QFETCH(bool, valid);
        QCOMPARE(Money::fromAmount(amount).isValid(), valid);
    }

    // 100000000 t x 1000000000 km x 1,000 gave -92233720368547760,00 through undefined behaviour.
    void theOverflowCourseIsPricedInvalidNotWrapped()
    {
        const CourseMoney money = priceCourse(100000000.0, 1000000000.0, 1.0);
        QVERIFY(!money.bruto.isValid());
        QVERIFY(!money.procent.isValid());
        QVERIFY(!money.neto.isValid());
        QVERIFY(std::isnan(money.bruto.toDouble()));
    }

    void sumsBeyondTheRangeAreInvalid_data()
    {
        QTest::addColumn<qint64>("a");
        QTest::addColumn<qint64>("b");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<qint64>("sum");
        QTest::newRow("ordinary") << qint64(3125) << qint64(-94) << true << qint64(3031);
        QTest::newRow("to the limit") << Money::maxCents - 1 << qint64(1) << true << Money::maxCents;
        QTest::newRow("past the limit") << Money::maxCents << qint64(1) << false << qint64(0);
        QTest::newRow("past the negative limit") << -Money::maxCents << qint64(-1) << false << qint64(0);
    }
    void sumsBeyondTheRangeAreInvalid()
    {
        QFETCH(qint64, a);
        QFETCH(qint64, b);
        QFETCH(bool, valid);
        QFETCH(qint64, sum);
        const Money total = Money::fromCents(a) + Money::fromCents(b);
        QCOMPARE(total.isValid(), valid);
        if (valid)
            QCOMPARE(total.cents(), sum);
        Money running = Money::fromCents(a);
        running += Money::fromCents(b);
        QCOMPARE(running.isValid(), valid);
    }

    void anInvalidMoneyStaysInvalid()
    {
        const Money bad = Money::fromAmount(1e300);
        QVERIFY(!(bad + Money::fromCents(1)).isValid());
        QVERIFY(!(Money::fromCents(1) - bad).isValid());
        QVERIFY(!bad.share(3, 100).isValid());
        QVERIFY(!Money::fromCents(std::numeric_limits<qint64>::min()).isValid());
        QVERIFY(!Money::fromCents(std::numeric_limits<qint64>::max()).isValid());
    }

    void sharesOfTheLargestAmountDoNotOverflow()
    {
        // cents x numerator needs more than 64 bits here.
        const Money largest = Money::fromCents(Money::maxCents);
        QCOMPARE(largest.share(3, 100).cents(), qint64(30'000'000'000'000));
        QCOMPARE(largest.share(100000, 100000).cents(), Money::maxCents);
        QVERIFY(!largest.share(2, 1).isValid());
        QVERIFY(!largest.share(1, 0).isValid());
    }
};

QTEST_APPLESS_MAIN(MoneyTest)
#include "tst_money.moc"
