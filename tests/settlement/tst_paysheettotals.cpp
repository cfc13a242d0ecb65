#include "settlement/paysheetstore.h"
#include "settlement/paysheettotals.h"
#include "settlementfixture.h"
#include "testdatabase.h"

#include <QRandomGenerator>

using namespace zarek;
using namespace zarek::test;

namespace {

// What a driver's sheet comes to: "lines currency total|other printed" or the refusal.
QString sheetText(int lines, Currency currency, ExactPay total, ExactPay other, Money printed)
{
    return QStringLiteral("%1 %2 %3|%4 %5")
        .arg(lines)
        .arg(currency == Currency::Euro ? QStringLiteral("EUR") : QStringLiteral("BGN"))
        .arg(total.toDouble(), 0, 'f', 10)
        .arg(other.toDouble(), 0, 'f', 10)
        .arg(printed.cents());
}

QString refusalText(const UserMessage &message)
{
    return message.title + QStringLiteral(": ") + message.text;
}

// Each driver's totals against the pay sheet his row opens, from his oldest unpaid course to the
// day; the drivers are those with unpaid courses up to it. Empty when all agree.
QString differences(QSqlDatabase db, const BooksDay &books, int *sheetsCompared = nullptr)
{
    const Checked<QList<PaySheetTotal>> totals = unpaidPaySheetTotals(db, books, books.today);
    if (!totals)
        return refusalText(totals.message());
    QStringList kods;
    QString found;
    int compared = 0;
    for (const PaySheetTotal &total : totals.value()) {
        kods << total.kod;
        SearchConditions conditions;
        conditions.SeekDriverKod = total.kod;
        conditions.SeekDriverIme = total.name;
        conditions.period = {total.from, books.today};
        const Checked<PaySheet> sheet = BuildDriverPaySheet(conditions, db, books);
        const QString expected = sheet ? sheetText(sheet.value().lines.size(), sheet.value().currency, sheet.value().total,
                                                   sheet.value().otherTotal, sheet.value().printedTotal())
                                       : refusalText(sheet.message());
        const QString actual = total.refusal ? refusalText(*total.refusal)
                                             : sheetText(total.lines, total.currency, total.total, total.otherTotal,
                                                         total.printedTotal());
        if (actual != expected)
            found += QStringLiteral("%1: %2, the sheet: %3\n").arg(total.kod, actual, expected);
        if (sheet && total.lines != sheet.value().lines.size())
            found += QStringLiteral("%1: %2 lines\n").arg(total.kod).arg(total.lines);
        ++compared;
    }
    const QString unpaid = rowsText(db, "SELECT DISTINCT kod FROM tabl WHERE plat = ? AND data <= ? ORDER BY kod",
                                    {false, books.today});
    if (kods.join(QLatin1Char(' ')) != unpaid)
        found += QStringLiteral("drivers %1, unpaid %2\n").arg(kods.join(QLatin1Char(',')), unpaid);
    if (sheetsCompared)
        *sheetsCompared = compared;
    return found;
}

// "number|percent|rated tonnes"
bool addTrucks(QSqlDatabase db, const QStringList &trucks)
{
    for (const QString &truck : trucks) {
        const QStringList cells = truck.split(QLatin1Char('|'));
        if (!insertTruck(db, cells.value(0), cells.value(1).toDouble(), cells.value(2).toDouble()))
            return false;
    }
    return true;
}

// "date|driver|truck|tonnes|bruto", "|paid" at the end for a paid one
bool addCourses(QSqlDatabase db, const QStringList &courses)
{
    for (const QString &course : courses) {
        const QStringList cells = course.split(QLatin1Char('|'));
        SettlementCourse row;
        row.data = QDate::fromString(cells.value(0), Qt::ISODate);
        row.kod = cells.value(1);
        row.kola = cells.value(2);
        row.ton = cells.value(3).toDouble();
        row.bruto = cells.value(4).toDouble();
        row.neto = row.bruto;
        row.plat = cells.value(5) == QLatin1String("paid");
        if (!insertCourse(db, row))
            return false;
    }
    return true;
}

const QDate changeover(2026, 1, 1);

}

class PaySheetTotalsTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { addEngineRows(); }

    // The totals the database adds up are what each driver's pay sheet prints, line for line.
    void eachDriverTotalsAsHisPaySheet_data()
    {
        QTest::addColumn<QStringList>("trucks");   // "number|percent|rated tonnes", in their order in Config
        QTest::addColumn<QStringList>("courses");  // "date|driver|truck|tonnes|bruto[|paid]"
        QTest::addColumn<QDate>("today");
        QTest::addColumn<QDate>("euroFrom");       // no date: the firm keeps leva
        QTest::addColumn<QString>("expected");     // driver 007's sheet, as sheetText or the refusal
        const QDate spring(2006, 4, 5);
        QTest::newRow("overloads of 0, 1, 2 and 6 tonnes")
            << QStringList{"СА 1234 ВК|12|20.1"}
            << QStringList{"2006-03-01|007|СА 1234 ВК|20.1|1000", "2006-03-02|007|СА 1234 ВК|21.099|333.33",
                           "2006-03-03|007|СА 1234 ВК|21.1|1000", "2006-03-04|007|СА 1234 ВК|22.1|1000",
                           "2006-03-05|007|СА 1234 ВК|26.5|777.77", "2006-03-06|007|СА 1234 ВК|22.0995|10.01",
                           "2006-03-07|007|СА 1234 ВК|0|0.01"}
            << spring << QDate() << "7 BGN 310.0550400000|0.0000000000 31006";
        // 21.1005 t is 21 100.5 kg: one tonne over 20.101 t, rounded away from zero as the sheet does
        // (half to even would make it none); so are 1 234.5 and -462.5 cents.
        QTest::newRow("half a kilogram and half a cent away from zero")
            << QStringList{"СА 1234 ВК|12|20.101"}
            << QStringList{"2006-03-01|007|СА 1234 ВК|21.1005|12.345", "2006-03-02|007|СА 1234 ВК|20|0.125",
                           "2006-03-03|007|СА 1234 ВК|20|-4.625"}
            << spring << QDate() << "3 BGN 0.6456000000|0.0000000000 65";
        QTest::newRow("a truck listed twice in Config: the later row")
            << QStringList{"СА 1234 ВК|0|18", "РВ 7777 АА|12|25", "СА 1234 ВК|10|20"}
            << QStringList{"2006-03-01|007|СА 1234 ВК|20.9|1000", "2006-03-02|007|РВ 7777 АА|26|200",
                           "2006-03-03|007|СА 1234 ВК|19|31.25"}
            << spring << QDate() << "3 BGN 122.3250000000|0.0000000000 12232";
        QTest::newRow("a truck typed with spaces round it")
            << QStringList{"СА 1234 ВК|12.5|20"}
            << QStringList{"2006-03-01|007|СА 1234 ВК  |21|1000", "2006-03-02|007| СА 1234 ВК|20|100.01",
                           "2006-03-03|007|СА 1234 ВК\t|22|0.05"}
            << spring << QDate() << "3 BGN 112.5050000000|0.0000000000 11250";
        QTest::newRow("a truck not in Config: the first such course, as typed")
            << QStringList{"СА 1234 ВК|12|20"}
            << QStringList{"2006-03-01|007|СА 1234 ВК|10|100", "2006-03-09|007|ВТ 9999 ХХ|10|100",
                           "2006-03-05|007|РК 0000 АА  |10|100", "2006-03-05|007|ВТ 9999 ХХ|10|100"}
            << spring << QDate() << "ВНИМАНИЕ!: Няма зададен процент за кола № РК 0000 АА   !";
        QTest::newRow("a course without a truck")
            << QStringList{"СА 1234 ВК|12|20"}
            << QStringList{"2006-03-01|007|СА 1234 ВК|10|100", "2006-03-04|007|РК 0000 АА|10|100",
                           "2006-03-02|007||10|100"}
            << spring << QDate() << "ВНИМАНИЕ!: Няма зададен процент за кола №  !";
        QTest::newRow("a truck at 0 % in Config")
            << QStringList{"СА 1234 ВК|12|20", "РК 0000 АА|0|20"}
            << QStringList{"2006-03-01|007|СА 1234 ВК|10|100", "2006-03-02|007|РК 0000 АА|10|100"}
            << spring << QDate() << "ВНИМАНИЕ!: Няма зададен процент за кола № РК 0000 АА !";
        QTest::newRow("a driver without a row in shof")
            << QStringList{"СА 1234 ВК|12|20"} << QStringList{"2006-03-01|009|СА 1234 ВК|10|100"}
            << spring << QDate() << "";
        QTest::newRow("paid courses and courses after the day are left out")
            << QStringList{"СА 1234 ВК|10|20"}
            << QStringList{"2006-03-01|007|СА 1234 ВК|10|100", "2006-03-02|007|СА 1234 ВК|10|500|paid",
                           "2006-04-05|007|СА 1234 ВК|10|40", "2006-04-06|007|СА 1234 ВК|10|900"}
            << spring << QDate() << "2 BGN 14.0000000000|0.0000000000 1400";
        QTest::newRow("a correction below zero")
            << QStringList{"СА 1234 ВК|12|20"}
            << QStringList{"2006-03-01|007|СА 1234 ВК|10|100.05", "2006-03-02|007|СА 1234 ВК|21|-33.33"}
            << spring << QDate() << "2 BGN 8.8063200000|0.0000000000 881";
        QTest::newRow("courses both sides of the changeover")
            << QStringList{"СА 1234 ВК|12|20"}
            << QStringList{"2025-12-30|007|СА 1234 ВК|10|1000", "2025-12-31|007|СА 1234 ВК|22|333.33",
                           "2026-01-01|007|СА 1234 ВК|10|511.29", "2026-01-02|007|СА 1234 ВК|21|100"}
            << QDate(2026, 1, 10) << changeover << "4 EUR 70.9548000000|143.9997600000 14458";
        QTest::newRow("leva courses paid after the changeover")
            << QStringList{"СА 1234 ВК|12|20"}
            << QStringList{"2025-12-30|007|СА 1234 ВК|10|1000", "2025-12-31|007|СА 1234 ВК|20.5|333.33"}
            << QDate(2026, 2, 1) << changeover << "2 EUR 0.0000000000|159.9996000000 8181";
        QTest::newRow("a day before the changeover")
            << QStringList{"СА 1234 ВК|12|20"}
            << QStringList{"2025-12-30|007|СА 1234 ВК|10|1000", "2025-12-31|007|СА 1234 ВК|21|333.33",
                           "2026-01-02|007|СА 1234 ВК|10|500"}
            << QDate(2025, 12, 31) << changeover << "2 BGN 151.9996800000|0.0000000000 15200";
    }
    void eachDriverTotalsAsHisPaySheet()
    {
        QFETCH(QStringList, trucks);
        QFETCH(QStringList, courses);
        QFETCH(QDate, today);
        QFETCH(QDate, euroFrom);
        QFETCH(QString, expected);
        ZAREK_SCRATCH_DB(scratch);
        QSqlDatabase db = scratch.db();
        QVERIFY(insertDriver(db, "007", driverName(), "7503124567", "645123987"));
        QVERIFY(addTrucks(db, trucks));
        QVERIFY(addCourses(db, courses));
        QVERIFY(QSqlQuery(db).exec(QStringLiteral("UPDATE tabl SET kola = NULL WHERE kola = ''")));  // typed as nothing
        const BooksDay books{Changeover{euroFrom}, today};
        int compared = 0;
        QCOMPARE(differences(db, books, &compared), QString());
        QVERIFY(compared > 0);
        const auto totals = unpaidPaySheetTotals(db, books, today);
        QVERIFY(totals.ok());
        const PaySheetTotal &total = totals.value().first();
        if (total.kod != QLatin1String("007")) {
            QCOMPARE(refusalText(*total.refusal), QStringLiteral("ВНИМАНИЕ!: Няма данни за шофьора!"));
            return;
        }
        QCOMPARE(total.name, driverName());
        QCOMPARE(total.refusal ? refusalText(*total.refusal)
                               : sheetText(total.lines, total.currency, total.total, total.otherTotal, total.printedTotal()),
                 expected);
    }

    // A fleet drawn at random (a fixed seed): loads round the rated ones to the kilogram, trucks
    // typed with blanks, paid and unpaid courses over the changeover.
    void aRandomFleetTotalsAsItsPaySheets_data()
    {
        QTest::addColumn<QDate>("today");
        QTest::addColumn<QDate>("euroFrom");
        QTest::newRow("in leva") << QDate(2025, 12, 20) << QDate();
        QTest::newRow("over the changeover") << QDate(2026, 2, 10) << changeover;
    }
    void aRandomFleetTotalsAsItsPaySheets()
    {
        QFETCH(QDate, today);
        QFETCH(QDate, euroFrom);
        ZAREK_SCRATCH_DB(scratch);
        QSqlDatabase db = scratch.db();
        QRandomGenerator random(20261126);
        const QStringList numbers = {"СА 1234 ВК", "РК 5678 ВС", "РК 9012 КМ", "СО 3456 АР", "ВТ 7890 ХА"};
        for (const QString &number : numbers) {
            const double rated = (15000 + random.bounded(12000)) / 1000.0;
            QVERIFY(insertTruck(db, number, (500 + random.bounded(1500)) / 100.0, rated));
        }
        QVERIFY(insertTruck(db, numbers[2], 13.75, 24.5));  // listed again: this row counts
        for (int driver = 1; driver <= 6; ++driver)
            QVERIFY(insertDriver(db, QStringLiteral("00%1").arg(driver), QStringLiteral("Шофьор %1").arg(driver), "", ""));
        db.transaction();
        const QStringList blanks = {"", "", "", " ", "  ", "\t"};
        for (int i = 0; i < 400; ++i) {
            SettlementCourse course;
            course.data = today.addDays(-random.bounded(90) + 5);
            course.kod = QStringLiteral("00%1").arg(1 + random.bounded(6));
            course.kola = numbers[random.bounded(numbers.size())] + blanks[random.bounded(blanks.size())];
            if (course.kod == QLatin1String("006") && random.bounded(10) == 0)
                course.kola = QStringLiteral("КН 0000 КН");  // driver 006 drove a truck not in Config
            // Loads round the rated ones, to the kilogram, some up to eight tonnes over.
            course.ton = (12000 + random.bounded(23000)) / 1000.0;
            course.bruto = random.bounded(500000) / 100.0;
            course.neto = course.bruto;
            course.plat = random.bounded(4) == 0;
            QVERIFY(insertCourse(db, course));
        }
        QVERIFY(db.commit());
        int compared = 0;
        QCOMPARE(differences(db, BooksDay{Changeover{euroFrom}, today}, &compared), QString());
        QCOMPARE(compared, 6);
    }
};

QTEST_MAIN(PaySheetTotalsTest)
#include "tst_paysheettotals.moc"
