#include "settlement/clientstatement.h"

#include <QtTest>

using namespace zarek;
using namespace zarek::settlement;

class ClientStatementTest : public QObject {
    Q_OBJECT
private slots:
    void theTaxIsTwentyPercentOfTheGrossAndTheNetTheRest_data()
    {
        QTest::addColumn<qint64>("grossCents");
        QTest::addColumn<qint64>("vatCents");
        QTest::addColumn<qint64>("netCents");
        QTest::newRow("whole") << qint64(30000) << qint64(6000) << qint64(24000);
        QTest::newRow("rounds down") << qint64(123456) << qint64(24691) << qint64(98765);  // 246,912
        QTest::newRow("rounds up") << qint64(10003) << qint64(2001) << qint64(8002);      // 20,006
        QTest::newRow("a cent") << qint64(1) << qint64(0) << qint64(1);                   // 0,002
        QTest::newRow("seven cents") << qint64(7) << qint64(1) << qint64(6);              // 0,014
        QTest::newRow("nothing") << qint64(0) << qint64(0) << qint64(0);
        QTest::newRow("credit") << qint64(-10003) << qint64(-2001) << qint64(-8002);
    }
    void theTaxIsTwentyPercentOfTheGrossAndTheNetTheRest()
    {
        QFETCH(qint64, grossCents);
        QFETCH(qint64, vatCents);
        QFETCH(qint64, netCents);
        const StatementTax tax = statementTax(Money::fromCents(grossCents));
        QCOMPARE(tax.gross.cents(), grossCents);
        QCOMPARE(tax.vat.cents(), vatCents);
        QCOMPARE(tax.net.cents(), netCents);
        QCOMPARE((tax.vat + tax.net).cents(), grossCents);  // the summary always adds up on paper
    }

    void aPrintedLineIsKilometresTimesTonnesTimesRate_data()
    {
        QTest::addColumn<double>("km");
        QTest::addColumn<double>("ton");
        QTest::addColumn<double>("tarifa");
        QTest::addColumn<QString>("kmText");
        QTest::addColumn<QString>("tonText");
        QTest::addColumn<QString>("tarifaText");
        QTest::addColumn<QString>("suma");
        QTest::newRow("corrected km") << 120.0 << 10.0 << 0.125 << "120" << "10,000" << "0,125" << "150,00";
        QTest::newRow("half cent to even") << 1.0 << 1.0 << 0.125 << "1" << "1,000" << "0,125" << "0,12";
        QTest::newRow("odd cent up") << 3.0 << 1.0 << 0.045 << "3" << "1,000" << "0,045" << "0,14";  // 0,135
        QTest::newRow("tonnes") << 42.0 << 12.345 << 0.1 << "42" << "12,345" << "0,100" << "51,85";  // 51,849
        QTest::newRow("no km") << 0.0 << 20.0 << 0.15 << "0" << "20,000" << "0,150" << "0,00";
    }
    void aPrintedLineIsKilometresTimesTonnesTimesRate()
    {
        QFETCH(double, km);
        QFETCH(double, ton);
        QFETCH(double, tarifa);
        const StatementLine line = statementLine(km, ton, tarifa);
        QTEST(line.km, "kmText");
        QTEST(line.ton, "tonText");
        QTEST(line.tarifa, "tarifaText");
        QTEST(line.sumaText(), "suma");
    }

    void typedKilometresAreAWholeNumberUpTo32767_data()
    {
        QTest::addColumn<double>("typed");
        QTest::addColumn<bool>("accepted");
        QTest::newRow("120") << 120.0 << true;
        QTest::newRow("0") << 0.0 << true;
        QTest::newRow("32767") << 32767.0 << true;
        QTest::newRow("32768") << 32768.0 << false;
        QTest::newRow("fraction") << 120.5 << false;
        QTest::newRow("negative") << -5.0 << false;
    }
    void typedKilometresAreAWholeNumberUpTo32767()
    {
        QFETCH(double, typed);
        QFETCH(bool, accepted);
        QCOMPARE(statementKm(typed).has_value(), accepted);
        if (accepted)
            QCOMPARE(double(*statementKm(typed)), typed);
    }

    void aCoursesKilometresAreHeldWholeHalvesToEven()
    {
        QCOMPARE(wholeKm(99.5), 100.0);
        QCOMPARE(wholeKm(100.5), 100.0);
        QCOMPARE(wholeKm(100.6), 101.0);
    }

    void prefixesCompareWithoutCase_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("prefix");
        QTest::addColumn<bool>("matches");
        QTest::newRow("empty prefix") << "Пясък" << "" << true;
        QTest::newRow("empty value, empty prefix") << "" << "" << true;
        QTest::newRow("cyrillic case") << "Пясък едър" << "пяс" << true;
        QTest::newRow("latin case") << "CA 1234 BK" << "ca 12" << true;
        QTest::newRow("not at the start") << "Чакъл пясък" << "пяс" << false;
        QTest::newRow("longer than the value") << "Пяс" << "Пясък" << false;
    }
    void prefixesCompareWithoutCase()
    {
        QFETCH(QString, value);
        QFETCH(QString, prefix);
        QTEST(matchesPrefix(value, prefix), "matches");
    }
};

QTEST_GUILESS_MAIN(ClientStatementTest)
#include "tst_clientstatement.moc"
