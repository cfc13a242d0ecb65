#include "courses/coursepricing.h"
#include "courses/tariffbands.h"

#include <QtTest>

using namespace zarek;

class PricingTest : public QObject {
    Q_OBJECT
private slots:
    void kilometresPickTheirBand_data()
    {
        QTest::addColumn<double>("km");
        QTest::addColumn<int>("band");
        QTest::newRow("0 from the default") << 0.0 << 0;
        QTest::newRow("20 is the first band") << 20.0 << 0;
        QTest::newRow("20.5 is the second") << 20.5 << 1;
        QTest::newRow("30") << 30.0 << 1;
        QTest::newRow("30.01") << 30.01 << 2;
        QTest::newRow("50") << 50.0 << 2;
        QTest::newRow("100") << 100.0 << 3;
        QTest::newRow("200 is still 100-200") << 200.0 << 4;
        QTest::newRow("200.01 is above 200") << 200.01 << 5;
        QTest::newRow("far") << 1500.0 << 5;
    }
    void kilometresPickTheirBand()
    {
        QFETCH(double, km);
        QFETCH(int, band);
        QCOMPARE(TariffBands::bandOf(km), band);
        const TariffBands bands{{0.35, 0.25, 0.18, 0.14, 0.12, 0.10}};
        QCOMPARE(bands.rateFor(km), bands.rates[static_cast<size_t>(band)]);
    }

    void rateFromTypedKilometres()
    {
        const TariffBands bands{{0.35, 0.25, 0.18, 0.14, 0.12, 0.10}};
        QCOMPARE(bands.rateForText(QStringLiteral("25")).value(), 0.25);
        QCOMPARE(bands.rateForText(QStringLiteral("20,5")).value(), 0.25);
        const auto refused = bands.rateForText(QStringLiteral("двадесет"));
        QVERIFY(!refused.ok());
        QCOMPARE(refused.message().text, QStringLiteral("Километрите не са число!\nМоля, въведете километрите на курса"));
        QVERIFY(!bands.rateForText(QString()).ok());
        QCOMPARE(TariffBands{}.rateFor(120), 0.0);
    }

    void courseMoney_data()
    {
        QTest::addColumn<double>("ton");
        QTest::addColumn<double>("km");
        QTest::addColumn<double>("rate");
        QTest::addColumn<qint64>("bruto");
        QTest::addColumn<qint64>("procent");
        QTest::addColumn<qint64>("neto");
        QTest::newRow("10 t, 25 km, 0.125") << 10.0 << 25.0 << 0.125 << qint64(3125) << qint64(94) << qint64(3031);
        QTest::newRow("zero rate") << 20.0 << 100.0 << 0.0 << qint64(0) << qint64(0) << qint64(0);
        QTest::newRow("gross rounds half even") << 1.0 << 1.0 << 0.125 << qint64(12) << qint64(0) << qint64(12);
        QTest::newRow("deduction of 50.00") << 20.0 << 25.0 << 0.1 << qint64(5000) << qint64(150) << qint64(4850);
        QTest::newRow("heavy long course") << 24.5 << 412.0 << 0.1 << qint64(100940) << qint64(3028) << qint64(97912);
        QTest::newRow("fractional tonnes") << 12.35 << 37.0 << 0.18 << qint64(8225) << qint64(247) << qint64(7978);
    }
    void courseMoney()
    {
        QFETCH(double, ton);
        QFETCH(double, km);
        QFETCH(double, rate);
        QFETCH(qint64, bruto);
        QFETCH(qint64, procent);
        QFETCH(qint64, neto);
        const CourseMoney money = priceCourse(ton, km, rate);
        QCOMPARE((QList<qint64>{money.bruto.cents(), money.procent.cents(), money.neto.cents()}),
                 (QList<qint64>{bruto, procent, neto}));
        QCOMPARE(money.neto, money.bruto - money.procent);
    }
};

QTEST_APPLESS_MAIN(PricingTest)
#include "tst_pricing.moc"
