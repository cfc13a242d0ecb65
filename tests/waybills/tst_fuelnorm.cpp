#include "waybills/fuelnorm.h"
#include "waybills/waybillrules.h"

#include <QtTest>

using namespace zarek;

Q_DECLARE_METATYPE(zarek::waybills::HeaderTexts)

class FuelNormTest : public QObject {
    Q_OBJECT
private slots:
    void normFuelOfALine_data()
    {
        QTest::addColumn<double>("norm");
        QTest::addColumn<double>("ton");
        QTest::addColumn<int>("km");
        QTest::addColumn<double>("koef");
        QTest::addColumn<double>("expected");
        QTest::newRow("the worked example") << 30.0 << 10.0 << 250 << 10.0 << 93.5;
        QTest::newRow("no surcharge is factor 1") << 30.0 << 10.0 << 250 << 0.0 << 85.0;
        QTest::newRow("100 % doubles") << 30.0 << 10.0 << 250 << 100.0 << 170.0;
        QTest::newRow("a negative surcharge reduces") << 30.0 << 10.0 << 250 << -10.0 << 76.5;
        QTest::newRow("empty run: the norm alone") << 32.5 << 0.0 << 120 << 0.0 << 39.0;
        QTest::newRow("each tonne adds 0.4 l per 100 km") << 30.0 << 1.0 << 100 << 0.0 << 30.4;
        QTest::newRow("16.15 goes to even, up") << 32.3 << 0.0 << 50 << 0.0 << 16.2;   // in binary a hair below
        QTest::newRow("15.05 goes to even, down") << 30.1 << 0.0 << 50 << 0.0 << 15.0;
        QTest::newRow("below the half goes down") << 32.333 << 0.0 << 15 << 0.0 << 4.8;  // 4.84995
        QTest::newRow("half to even: 0.25 -> 0.2") << 25.0 << 0.0 << 1 << 0.0 << 0.2;
        QTest::newRow("half to even: 0.35 -> 0.4") << 35.0 << 0.0 << 1 << 0.0 << 0.4;
        QTest::newRow("decimal norm, decimal tonnes") << 32.3 << 12.75 << 250 << 0.0 << 93.5;  // 37.4 * 2.5 = 93.5
        QTest::newRow("90.75 goes to even, up") << 30.25 << 0.0 << 300 << 0.0 << 90.8;
        QTest::newRow("negative kilometres reduce") << 30.0 << 0.0 << -100 << 0.0 << -30.0;
    }
    void normFuelOfALine()
    {
        QFETCH(double, norm);
        QFETCH(double, ton);
        QFETCH(int, km);
        QFETCH(double, koef);
        QFETCH(double, expected);
        QCOMPARE(fuelnorm::normFuel(norm, ton, km, koef), expected);
    }

    void factorOfTheSurcharge_data()
    {
        QTest::addColumn<double>("koef");
        QTest::addColumn<double>("factor");
        QTest::newRow("0 is none") << 0.0 << 1.0;
        QTest::newRow("10 %") << 10.0 << 1.1;
        QTest::newRow("100 %") << 100.0 << 2.0;
        QTest::newRow("-20 %") << -20.0 << 0.8;
    }
    void factorOfTheSurcharge()
    {
        QFETCH(double, koef);
        QFETCH(double, factor);
        QCOMPARE(fuelnorm::surchargeFactor(koef), factor);
    }

    // Kilometres count whole, halves to even; those that cannot count are refused: the count, or
    // "title|first line" of the refusal.
    void kilometresCountWholeHalvesToEvenOrAreRefused_data()
    {
        QTest::addColumn<std::optional<double>>("km");
        QTest::addColumn<QString>("counted");
        const QString tooMany = QStringLiteral("ГРЕШКА при запис!|Километрите на маршрута са твърде много!");
        QTest::newRow("99.5") << std::optional(99.5) << "100";
        QTest::newRow("100.5") << std::optional(100.5) << "100";
        QTest::newRow("101.5") << std::optional(101.5) << "102";
        QTest::newRow("100.4") << std::optional(100.4) << "100";
        QTest::newRow("the largest") << std::optional(32767.0) << "32767";
        QTest::newRow("just below the largest") << std::optional(32767.4) << "32767";
        QTest::newRow("blank") << std::optional<double>() << "ГРЕШКА при запис!|Няма въведени километри на маршрута!";
        QTest::newRow("above 32767") << std::optional(32768.0) << tooMany;
        QTest::newRow("32767.5 is 32768") << std::optional(32767.5) << tooMany;
        QTest::newRow("below -32768") << std::optional(-40000.0) << tooMany;
    }
    void kilometresCountWholeHalvesToEvenOrAreRefused()
    {
        QFETCH(std::optional<double>, km);
        const Checked<int> result = fuelnorm::normKilometres(km, QStringLiteral("ГРЕШКА при запис!"));
        QTEST(result.ok() ? QString::number(result.value())
                          : result.message().title + QLatin1Char('|') + result.message().text.section(QLatin1Char('\n'), 0, 0),
              "counted");
    }

    void theWaybillSumsAreRoundedOnceMore()
    {
        QCOMPARE(fuelnorm::fuelSum(93.5 + 12.3 + 0.1), 105.9);
        QCOMPARE(fuelnorm::fuelSum(0.1 + 0.2), 0.3);
        QCOMPARE(fuelnorm::fuelSum(10.25), 10.2);
        QCOMPARE(fuelnorm::kilometreSum(250 + 99.5), 350.0);  // 349.5 to even
        QCOMPARE(fuelnorm::kilometreSum(250 + 100.5), 350.0);
    }

    void theHeaderChecksComeInTheirOrder_data()
    {
        QTest::addColumn<waybills::HeaderTexts>("texts");
        QTest::addColumn<QString>("fault");
        const waybills::HeaderTexts full{QStringLiteral("05.03.2026"), QStringLiteral("37"), QStringLiteral("СА 1234 ВК"),
                                         QStringLiteral("Иван Петров"), QStringLiteral("250"), QStringLiteral("93,5")};
        QTest::newRow("all there") << full << QString();
        waybills::HeaderTexts t = full;
        t = waybills::HeaderTexts{};
        QTest::newRow("nothing: the date first") << t << QStringLiteral("Няма въведена дата на пътния лист!");
        t = waybills::HeaderTexts{full.date, QStringLiteral("  "), {}, {}, {}, {}};
        QTest::newRow("then the number") << t << QStringLiteral("Няма въведен номер на пътния лист!");
        t = waybills::HeaderTexts{full.date, full.number, QStringLiteral(" "), {}, {}, {}};
        QTest::newRow("then the truck") << t << QStringLiteral("Няма въведен номер на кола в пътния лист!");
        t = waybills::HeaderTexts{full.date, full.number, full.kola, {}, {}, {}};
        QTest::newRow("then the driver") << t << QStringLiteral("Няма въведено име на шофьор!");
        t = waybills::HeaderTexts{full.date, full.number, full.kola, full.driver, {}, QStringLiteral(" ")};
        QTest::newRow("then the routes") << t << QStringLiteral("Няма въведени маршрути към пътния лист!");
        t = waybills::HeaderTexts{full.date, full.number, full.kola, full.driver, {}, QStringLiteral("0")};
        QTest::newRow("one sum is enough") << t << QString();
    }
    void theHeaderChecksComeInTheirOrder()
    {
        QFETCH(waybills::HeaderTexts, texts);
        QFETCH(QString, fault);
        const auto refusal = waybills::checkHeader(texts);
        QCOMPARE(refusal ? refusal->text.section(QLatin1Char('\n'), 0, 0) : QString(), fault);
        if (refusal) {
            QCOMPARE(refusal->title, QStringLiteral("   ВНИМАНИЕ!"));
            QCOMPARE(refusal->icon, UserMessage::Icon::Critical);
            QCOMPARE(refusal->text.section(QLatin1Char('\n'), 1, 1), QString());  // a blank line between
        }
    }

    void theMessagesReadAsTheSystemWritesThem()
    {
        QCOMPARE(waybills::duplicateNumberMessage(),
                 (UserMessage{QStringLiteral("   ГРЕШКА!"),
                              QStringLiteral("Съществува пътен лист със същия номер!\n\n"
                                             "Моля, променете номера и опитайте отново."),
                              UserMessage::Icon::Critical}));
        // The texts of the other two are checked where the waybill screen shows them (tst_rowdlist).
    }
};

QTEST_APPLESS_MAIN(FuelNormTest)
#include "tst_fuelnorm.moc"
