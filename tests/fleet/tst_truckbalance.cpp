#include "fleet/truckbalance.h"
#include "reports/reportdesign.h"

#include <QtTest>

using namespace zarek;

class TruckBalanceTest : public QObject {
    Q_OBJECT
private slots:
    void figuresShowTheirUnit_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<qint64>("units");
        QTest::addColumn<QString>("text");
        QTest::newRow("leva") << int(BalansMode::Profit) << qint64(123456) << "1234,56лв.";
        QTest::newRow("negative leva keep the sign") << int(BalansMode::Profit) << qint64(-7550) << "-75,50лв.";
        QTest::newRow("no leva") << int(BalansMode::Profit) << qint64(0) << "0,00лв.";
        QTest::newRow("big") << int(BalansMode::Profit) << qint64(123456789012) << "1234567890,12лв.";
        QTest::newRow("litres") << int(BalansMode::Fuel) << qint64(1437) << "143,7 л";
        QTest::newRow("negative litres") << int(BalansMode::Fuel) << qint64(-63) << "-6,3 л";
        QTest::newRow("no litres") << int(BalansMode::Fuel) << qint64(0) << "0,0 л";
    }
    void figuresShowTheirUnit()
    {
        QFETCH(int, mode);
        QFETCH(qint64, units);
        QTEST(balansFigure(BalansMode(mode), units), "text");
    }

    void sumsBecomeWholeUnitsHalvesToEven_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<double>("value");
        QTest::addColumn<qint64>("units");
        QTest::newRow("a sum of cents with noise") << int(BalansMode::Profit) << (0.1 + 0.2) << qint64(30);
        QTest::newRow("half cent to even") << int(BalansMode::Profit) << 2.675 << qint64(268);
        QTest::newRow("half cent down") << int(BalansMode::Profit) << 0.125 << qint64(12);
        QTest::newRow("negative") << int(BalansMode::Profit) << -10.005 << qint64(-1000);
        QTest::newRow("litres") << int(BalansMode::Fuel) << 143.7 << qint64(1437);
        QTest::newRow("half litre tenth") << int(BalansMode::Fuel) << 50.25 << qint64(502);
        QTest::newRow("a litre sum with noise") << int(BalansMode::Fuel) << (93.5 + 50.2) << qint64(1437);
    }
    void sumsBecomeWholeUnitsHalvesToEven()
    {
        QFETCH(int, mode);
        QFETCH(double, value);
        QTEST(balansUnits(BalansMode(mode), value), "units");
    }

    void theTotalAddsTheRemaindersAsShown()
    {
        const QList<TruckBalance> balances = {{QStringLiteral("А"), 0, 7550},
                                              {QStringLiteral("Б"), 5005, 0},
                                              {QStringLiteral("В"), 30030, 3030}};
        QCOMPARE(balances.at(0).ostatak(), qint64(-7550));
        QCOMPARE(balansTotal(balances), qint64(24455));
        QCOMPARE(balansTotal({}), qint64(0));
    }

    void titleDatesArePlainNumbers()
    {
        QCOMPARE(balansDate(QDate(2006, 3, 5)), QStringLiteral("5.3.2006"));
        QCOMPARE(balansDate(QDate(2006, 12, 31)), QStringLiteral("31.12.2006"));
    }

    // The two per-truck designs stand with their named controls; rptKolaR binds its fields itself.
    void thePerTruckDesignsHoldTheirControls()
    {
        const Checked<ReportDesign> costs = loadReportDesign(QStringLiteral("rptKolaR"));
        QVERIFY(costs.ok());
        const ReportSection *header = costs.value().section(QStringLiteral("ReportHeader"));
        QVERIFY(header);
        QCOMPARE(header->control(QStringLiteral("Label1"))->caption, QStringLiteral("Справка"));
        QCOMPARE(header->control(QStringLiteral("Label2"))->caption, QStringLiteral("за разходите на кола "));
        QVERIFY(header->control(QStringLiteral("Label3")));
        QVERIFY(header->control(QStringLiteral("Label4")));
        const ReportSection *detail = costs.value().section(QStringLiteral("Detail"));
        QStringList fields;
        for (const ReportControl &control : detail->controls)
            fields << control.dataField;
        QCOMPARE(fields, (QStringList{"Data", "Name", "Cena", "Kol"}));

        const Checked<ReportDesign> fuel = loadReportDesign(QStringLiteral("rptKolaN"));
        QVERIFY(fuel.ok());
        const ReportSection *columns = fuel.value().section(QStringLiteral("PageHeader"));
        const QList<QPair<QString, QString>> captions = {{"Label100", "Лист "},   {"Label101", "Дата"},
                                                         {"Label103", "Шофьор"},  {"Label9", "Разход"},
                                                         {"Label10", "по норма"}, {"Label11", "действит."}};
        for (const auto &[name, caption] : captions)
            QCOMPARE(columns->control(name)->caption, caption);
        QCOMPARE(fuel.value().section(QStringLiteral("ReportFooter"))->control(QStringLiteral("Label8"))->caption,
                 QStringLiteral("Всичко"));
        QCOMPARE(fuel.value().section(QStringLiteral("PageFooter"))->control(QStringLiteral("Label7"))->caption,
                 QStringLiteral("Orvenn Ltd."));
    }
};

QTEST_GUILESS_MAIN(TruckBalanceTest)
#include "tst_truckbalance.moc"
