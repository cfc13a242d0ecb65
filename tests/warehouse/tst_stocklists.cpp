#include "forms/commandday.h"
#include "core/formats.h"
#include "reports/reportlayout.h"
#include "queryrows.h"
#include "testdatabase.h"
#include "warehouse/stockfixture.h"
#include "warehouse/stocklists.h"
#include "warehouse/warehousestore.h"

#include <QGuiApplication>
#include <QSqlQuery>

using namespace zarek;
using zarek::test::movement;

namespace {

FirmProfile firm()
{
    FirmProfile f;
    f.UserName = QStringLiteral("Зарек Транс ЕООД");
    f.UserCity = QStringLiteral("Пловдив");
    f.UserAdres = QStringLiteral("ул. Индустриална 12");
    f.UserTel = QStringLiteral("032 600 100");
    return f;
}

// A small warehouse in March 2026 (with one receipt in February), and a course's cost.
void fill(test::ScratchDatabase &scratch)
{
    const WarehouseStore store(scratch.db(), [] { return QDateTime(QDate(2026, 3, 31), QTime(9, 0)); });
    QVERIFY(store.addReceipt(movement("Масло двигателно", 10, 2.00, QDate(2026, 2, 20), "Фактура", "3101")));
    QVERIFY(store.addReceipt(movement("Масло двигателно", 10, 3.00, QDate(2026, 3, 2), "Фактура", "3102")));
    QVERIFY(store.addReceipt(movement("Крушка 24V", 4, 0.50, QDate(2026, 3, 3), "Стокова", "17")));
    QVERIFY(store.addReceipt(movement("антифриз", 2.5, 6.40, QDate(2026, 3, 4), "Фактура", "3103")));
    QVERIFY(store.addIssue(movement("Масло двигателно", 15, 3.00, QDate(2026, 3, 5), "СА 1234 ВК", "0000000011")));
    QVERIFY(store.addIssue(movement("Крушка 24V", 3.5, 0.50, QDate(2026, 3, 6), "РВ 5678 КМ", "12")));
    QVERIFY(store.addIssue(movement("Ремонт", 1, 240.00, QDate(2026, 3, 7), "СА 1234 ВК", "55")));
    // A course's expense row, as the course editor writes it.
    QVERIFY(scratch.exec("INSERT INTO Sklad (DocVid, DocNom, Data, Name, Kol, Edin, Suma, VidKol, Lipsa, Ostat) "
                         "VALUES ('РВ 5678 КМ', '0000000000', '2026-03-08', 'Разходи за курс', 1, 35.5, 35.5, 'R', TRUE, 0)"));
}

// The lines of the text that it lacks.
QStringList missing(const QString &text, const QStringList &lines)
{
    QStringList lacking;
    for (const QString &line : lines) {
        if (!text.contains(line))
            lacking << line;
    }
    return lacking;
}

}

// A fresh database of the current engine with the small warehouse (scratch).
#define FILLED_WAREHOUSE()     \
    ZAREK_SCRATCH_DB(scratch); \
    fill(scratch)

class StockListsTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void thePositionListsNamesByPrefixWithTheirValue_data()
    {
        QTest::addColumn<QString>("prefix");
        QTest::addColumn<QStringList>("rows");
        QTest::addColumn<QString>("total");
        QTest::newRow("every article") << ""
                                       << QStringList{"1|антифриз|2.5|6.4|16", "2|Крушка 24V|0.5|0.5|0.25",
                                                      "3|Масло двигателно|5|3|15"}
                                       << "31,25";
        QTest::newRow("a prefix, whatever its case") << "МАСЛО" << QStringList{"1|Масло двигателно|5|3|15"} << "15,00";
        QTest::newRow("Cyrillic lower case") << "кру" << QStringList{"1|Крушка 24V|0.5|0.5|0.25"} << "0,25";
        QTest::newRow("no match") << "Гума" << QStringList{} << "0,00";
    }
    void thePositionListsNamesByPrefixWithTheirValue()
    {
        FILLED_WAREHOUSE();
        QFETCH(QString, prefix);
        QFETCH(QStringList, rows);
        const Checked<StockList> list = stockPosition(scratch.db(), prefix, commandDay());
        QVERIFY(list);
        QCOMPARE(test::rowTexts(list.value().rows, {"Red", "Name", "Kol", "Cena", "Suma"}), rows);
        QTEST(formatAmount(list.value().total), "total");
    }

    void aPriceUnderOneIsDrawnRed_data()
    {
        QTest::addColumn<double>("price");
        QTest::addColumn<bool>("red");
        QTest::newRow("0.50") << 0.50 << true;
        QTest::newRow("0.99") << 0.99 << true;
        QTest::newRow("1.00") << 1.00 << false;
    }
    void aPriceUnderOneIsDrawnRed()
    {
        QFETCH(double, price);
        QTEST(priceDrawnRed(price), "red");
    }

    void theAuditBalancesEachNameOverThePeriod()
    {
        FILLED_WAREHOUSE();
        const Checked<StockList> audit = stockAudit(scratch.db(), {QDate(2026, 3, 1), QDate(2026, 3, 31)}, commandDay());
        QVERIFY(audit);
        const RowSet &rows = audit.value().rows;
        const QStringList columns = {"Red", "Name", "Cena", "Prihod", "SumaP", "Razhod", "SumaR", "Ostatak", "SumaO"};
        const QStringList got = test::rowTexts(rows, columns);
        const QStringList expected = {
            "1|антифриз|6,40лв.|2,5|16,00лв.|- |- |2,5|16,00лв.",
            "2|Крушка 24V|0,50лв.|4|2,00лв.|3,5|1,75лв.|0,5|0,25лв.",
            // The February receipt is outside: the price is March's, and the 15 issued cost 35.
            "3|Масло двигателно|3,00лв.|10|30,00лв.|15|35,00лв.|-5|-5,00лв.",
            // Course costs are issues of their name.
            "4|Разходи за курс||0|0,00лв.|1|35,50лв.|-1|-35,50лв.",
            "5|Ремонт||0|0,00лв.|1|240,00лв.|-1|-240,00лв."};
        QCOMPARE(got, expected);
        QCOMPARE(formatAmount(audit.value().total), QStringLiteral("-264,25"));
        // Red where the remainder is under 1: 0.5 and the negative ones, not 2.5.
        QList<bool> red;
        for (int r = 0; r < rows.rowCount(); ++r)
            red.append(remainderDrawnRed(rows.value(r, "OstatakKol").toDouble()));
        QCOMPARE(red, (QList<bool>{false, true, true, true, true}));
        QVERIFY(!remainderDrawnRed(1.0));
    }

    // Regression: a name with no receipt in the period showed the price of the name listed before it.
    void theAuditShowsNoStalePriceForANameWithoutReceipts()
    {
        FILLED_WAREHOUSE();
        const Checked<StockList> audit = stockAudit(scratch.db(), {QDate(2026, 3, 3), QDate(2026, 3, 31)}, commandDay());
        QVERIFY(audit);
        // No receipt of the oil from the 3rd on: no price.
        QCOMPARE(test::rowTexts(audit.value().rows, {"Name", "Cena", "Prihod", "Ostatak"}).mid(1, 2),
                 (QStringList{"Крушка 24V|0,50лв.|4|0,5", "Масло двигателно||0|-15"}));
    }

    void theMovementListsTotalTheirRows_data()
    {
        QTest::addColumn<bool>("receipts");
        QTest::addColumn<QString>("article");
        QTest::addColumn<QString>("truck");
        QTest::addColumn<QStringList>("rows");
        QTest::addColumn<QString>("total");
        QTest::newRow("receipts of the period")
            << true << "" << ""
            << QStringList{"1|Фактура|3103 / 4.3.2026|антифриз|2,500|6,40|16,00",
                           "2|Стокова|17 / 3.3.2026|Крушка 24V|4,000|0,50|2,00",
                           "3|Фактура|3102 / 2.3.2026|Масло двигателно|10,000|3,00|30,00"}
            << "48,00";
        QTest::newRow("receipts by article") << true << "масло" << ""
                                             << QStringList{"1|Фактура|3102 / 2.3.2026|Масло двигателно|10,000|3,00|30,00"}
                                             << "30,00";
        QTest::newRow("issues of a truck, course costs among them")
            << false << "" << "РВ"
            << QStringList{"1|РВ 5678 КМ|12 / 6.3.2026|Крушка 24V|3,500|0,50|1,75",
                           "2|РВ 5678 КМ|0000000000 / 8.3.2026|Разходи за курс|1,000|35,50|35,50"}
            << "37,25";
        QTest::newRow("all issues")
            << false << "" << ""
            << QStringList{"1|РВ 5678 КМ|12 / 6.3.2026|Крушка 24V|3,500|0,50|1,75",
                           "2|СА 1234 ВК|0000000011 / 5.3.2026|Масло двигателно|15,000|2,33|35,00",
                           "3|РВ 5678 КМ|0000000000 / 8.3.2026|Разходи за курс|1,000|35,50|35,50",
                           "4|СА 1234 ВК|55 / 7.3.2026|Ремонт|1,000|240,00|240,00"}
            << "312,25";
    }
    void theMovementListsTotalTheirRows()
    {
        FILLED_WAREHOUSE();
        QFETCH(bool, receipts);
        QFETCH(QString, article);
        QFETCH(QString, truck);
        QFETCH(QStringList, rows);
        const Checked<StockList> list =
            stockMovements(scratch.db(), receipts, {QDate(2026, 3, 1), QDate(2026, 3, 31)}, article, truck, commandDay());
        QVERIFY(list);
        QCOMPARE(test::rowTexts(list.value().rows, {"Red", "DocVid", "NomData", "Name", "Broi", "Edin", "Suma"}), rows);
        QTEST(formatAmount(list.value().total), "total");
    }

    void aPeriodWithoutMovementsIsToldAndPrintsNothing()
    {
        FILLED_WAREHOUSE();
        SearchConditions c;
        c.period = {QDate(2025, 1, 1), QDate(2025, 12, 31)};
        const Checked<Report> receipts = SkladReport(true, c, scratch.db(), firm(), commandDay());
        QVERIFY(!receipts);
        QCOMPARE(receipts.message().title + QLatin1Char('|') + receipts.message().text,
                 QStringLiteral("ВНИМАНИЕ!|Няма приходи в склада за периода!"));
        QCOMPARE(SkladReport(false, c, scratch.db(), firm(), commandDay()).message().text,
                 QStringLiteral("Няма разходи в склада за периода!"));
    }

    void theThreeReportsPrintTheirListsAndTotals()
    {
        FILLED_WAREHOUSE();
        const QDate today(2026, 3, 31);
        const Period march{QDate(2026, 3, 1), QDate(2026, 3, 31)};

        const Checked<Report> nalich = ReportNalich(stockPosition(scratch.db(), {}, commandDay()).value(), firm(), today);
        QVERIFY(nalich);
        QCOMPARE(nalich.value().windowCaption(), QStringLiteral("Зарек 2.3 - Справка склад"));
        const QStringList nalichText = layoutReport(nalich.value()).textLines();
        QCOMPARE(missing(nalichText.join(QLatin1Char('\n')),
                         {"за наличноста в склада към 31.03.2026", "Зарек Транс ЕООД", "Пловдив, ул. Индустриална 12",
                          "тел:032 600 100", "2 | Крушка 24V | 0,5 | 0,50 | 0,25", "Обща сума 31,25 лв."}),
                 QStringList());

        SearchConditions c;
        c.period = march;
        const Checked<Report> audit = ReportSklad(stockAudit(scratch.db(), march, commandDay()).value(), firm(), today);
        const QString a = layoutReport(audit.value()).textLines().join(QLatin1Char('\n'));
        QCOMPARE(missing(a, {"за приходите и разходите в склада към 31.03.2026", "Обща сума -264,25 лв.",
                             "3 | Масло двигателно | 10 | 30,00лв. | 15 | 35,00лв. | -5 | -5,00лв."}),
                 QStringList());
        QVERIFY(!a.contains(QStringLiteral("Пловдив")));  // the subject line prints where the address stood

        c.SeekMarsh = QStringLiteral("Масло");
        const Checked<Report> issues = SkladReport(false, c, scratch.db(), firm(), commandDay());
        QVERIFY(issues);
        QCOMPARE(issues.value().windowCaption(), QStringLiteral("Зарек 2.3 - Справка - Разходи в склада"));
        const QString i = layoutReport(issues.value()).textLines().join(QLatin1Char('\n'));
        QCOMPARE(missing(i, {"за разходите в склада от 01.03.2026 до 31.03.2026", "Разход", "Обща сума на разходите: 35,00 лв.",
                             "1 | СА 1234 ВК | 0000000011 / 5.3.2026 | Масло двигателно | 2,33 | 15,000 | 35,00"}),
                 QStringList());

        c.SeekArtikul = QStringLiteral("Масло");
        const QString r = layoutReport(SkladReport(true, c, scratch.db(), firm(), commandDay()).value()).textLines().join('\n');
        QVERIFY2(r.contains(QStringLiteral("Приход")) && !r.contains(QStringLiteral("Разход")), qPrintable(r));
        QVERIFY(r.contains(QStringLiteral("Обща сума на приходите: 30,00 лв.")));
    }
};

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);  // fonts for the layout
    StockListsTest test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_stocklists.moc"
