#include "data/scratchdatabase.h"
#include "reports/reportlayout.h"
#include "queryrows.h"
#include "testdatabase.h"
#include "waybills/waybillreport.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>

using namespace zarek;

namespace {

const QString truck = QStringLiteral("СА 1234 ВК");
const QString otherTruck = QStringLiteral("РВ 7777 АА");

FirmProfile exampleFirm()
{
    FirmProfile firm;
    firm.UserName = QStringLiteral("Транспорт Петров ЕООД");
    firm.UserCity = QStringLiteral("София");
    firm.UserAdres = QStringLiteral("ул. Искър 12");
    return firm;
}

struct Waybill {
    QString listId;
    QDate date;
    QString kola;
    double sumKm, sumFuel, endKm, zarN;
};

bool insert(QSqlDatabase db, const Waybill &w)
{
    return test::insertRow(db, QStringLiteral("RowdList"),
                           QStringLiteral("ListID, Data, Kola, NameDriver, SumKM, SumRazhN, EndKM, ZarN, ZarM, CenaN, CenaM"),
                           {w.listId, w.date, w.kola, QStringLiteral("Иван"), w.sumKm, w.sumFuel, w.endKm, w.zarN, 0, 0, 0});
}

bool line(QSqlDatabase db, const QString &marshId, const QString &route, double km, double ton, double koef,
          double razhN)
{
    return test::insertRow(db, QStringLiteral("Marsh"), QStringLiteral("MarshID, Marshrut, KM, Ton, Koef, RazhN"),
                           {marshId, route, km, ton, koef, razhN});
}

// March 2026: waybill 37 of the first truck with two lines (stored sums that are not the lines'
// own, as a waybill typed without "Изчисли" again would have), 12 of the other truck without any
// line and no fuel loaded, 38 of the first truck on the last day; 36 in February is outside.
void fill(QSqlDatabase db)
{
    QVERIFY(insert(db, {QStringLiteral("0000000037"), QDate(2026, 3, 5), truck, 300, 100.5, 245300, 120.5}));
    QVERIFY(line(db, QStringLiteral("0000000037"), QStringLiteral("Д'Аргос - Перник"), 250, 10, 10, 93.5));
    QVERIFY(line(db, QStringLiteral("0000000037"), QStringLiteral("Перник - София"), 30, 0, 0, 9));
    QVERIFY(insert(db, {QStringLiteral("0000000012"), QDate(2026, 3, 5), otherTruck, 0, 0, 0, 0}));
    QVERIFY(insert(db, {QStringLiteral("0000000038"), QDate(2026, 3, 31), truck, 45, 13.5, 245345, 0}));
    QVERIFY(line(db, QStringLiteral("0000000038"), QStringLiteral("София - Перник"), 45, 0, 0, 13.5));
    QVERIFY(insert(db, {QStringLiteral("0000000036"), QDate(2026, 2, 28), truck, 10, 3, 245000, 50}));
}

SearchConditions march(const QString &kola)
{
    SearchConditions conditions;
    conditions.SeekKola = kola;
    conditions.period = {QDate(2026, 3, 1), QDate(2026, 3, 31)};
    return conditions;
}

QStringList rows(const Report &report)
{
    return test::rowTexts(report.data(), {"Red", "NomData", "KolaID", "Marsh", "KM", "Ton", "RazhN", "Proc"});
}

QString footer(const Report &report, const char *label)
{
    return report.control(QStringLiteral("ReportFooter"), QString::fromLatin1(label)).caption;
}

}

class WaybillReportTest : public QObject {
    Q_OBJECT
    // The waybill report of the truck in March, built on the test's database and scratch sheet.
    Checked<Report> reportOf(const QString &kola) { return RowdReport(march(kola), m_database->db(), *m_scratch, exampleFirm()); }

private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_scratch = std::make_unique<ScratchDatabase>(m_folder->path());
        QVERIFY(!m_scratch->RebuildScratchTable(QStringLiteral("TempRowdList")));
        ZAREK_SCRATCH_DB_INTO(m_database);
        fill(m_database->db());
    }
    void cleanup()
    {
        m_database.reset();
        m_scratch.reset();
        m_folder.reset();
    }

    // Truck "0" is every truck: by date and number, a head line each, then its routes.
    void everyTruckWithHeadLinesAndRoutes()
    {
        const Checked<Report> report = reportOf(QStringLiteral(" 0 "));
        QVERIFY2(report.ok(), report.ok() ? "" : qPrintable(report.message().text));
        QCOMPARE(rows(report.value()),
                 (QStringList{
                     QStringLiteral("1.|0000000012 / 05.03.2026|РВ 7777 АА| - |0,00| |0,00| "),
                     QStringLiteral("2.|0000000037 / 05.03.2026|СА 1234 ВК|120,5л. - 245300км|300,00| |100,50| "),
                     QStringLiteral(" | | |Д'Аргос - Перник|250,00|10,000|93,50|10"),
                     QStringLiteral(" | | |Перник - София|30,00|0,000|9,00|0"),
                     QStringLiteral("3.|0000000038 / 31.03.2026|СА 1234 ВК| - |45,00| |13,50| "),
                     QStringLiteral(" | | |София - Перник|45,00|0,000|13,50|0"),
                 }));
        // The totals are the waybills' stored sums, not the lines'.
        // Km, fuel loaded (120.5, halves to even), fuel by the norm.
        QCOMPARE((QStringList{footer(report.value(), "Label11"), footer(report.value(), "Label10"),
                              footer(report.value(), "Label8")}),
                 (QStringList{"345", "120", "114,0"}));
        QCOMPARE(report.value().windowCaption(), QStringLiteral("Зарек 2.3 - Справка пътни листи"));
    }

    void oneTruckOrNone()
    {
        const Checked<Report> report = reportOf(otherTruck);
        QVERIFY(report.ok());
        QCOMPARE(rows(report.value()), QStringList{QStringLiteral("1.|0000000012 / 05.03.2026|РВ 7777 АА| - |0,00| |0,00| ")});
        QCOMPARE(footer(report.value(), "Label8"), QStringLiteral("0,0"));
        // A truck without waybills is told instead of a report.
        const Checked<Report> none = reportOf(QStringLiteral("ВТ 0001 ХХ"));
        QVERIFY(!none.ok());
        QCOMPARE(none.message().title, QStringLiteral("ВНИМАНИЕ!"));
        QCOMPARE(none.message().text, QStringLiteral("Няма въведени пътни листи при тези условия!\nМоля, изберете други."));
    }

    // The scratch table is emptied before it is filled: a second run prints the same rows.
    void aSecondRunPrintsTheSameRows()
    {
        const Checked<Report> first = reportOf(truck);
        const Checked<Report> second = reportOf(truck);
        QVERIFY(first.ok() && second.ok());
        QCOMPARE(rows(second.value()), rows(first.value()));
        QCOMPARE(second.value().data().rowCount(), 5);
    }

    void thePaperReadsAsTheDesignSays()
    {
        const Checked<Report> report = reportOf(QStringLiteral("0"));
        QVERIFY(report.ok());
        const QStringList text = layoutReport(report.value()).textLines();
        const QString all = text.join(QLatin1Char('\n'));
        for (const char *expected : {"Транспорт Петров ЕООД", "София, ул. Искър 12", "Справка", "за издадените пътни листи",
                                     "за периода от 01.03.2026 до 31.03.2026", "Номер/Дата | Кола | Маршрут | КМ | Тонаж | Разх.наф.",
                                     "2. | 0000000037 / 05.03.2026 | СА 1234 ВК | 120,5л. - 245300км | 300,00 |   | 100,50",
                                     "Д'Аргос - Перник | 250,00 | 10,000 | 93,50 | 10",
                                     "Изминати километри | Заредена нафта | Изчислен разход", "Всичко | 345 | 120 | 114,0",
                                     "Зарек 2.3.4", "Страница 1 от 1"})
            QVERIFY2(all.contains(QString::fromUtf8(expected)), qPrintable(QString::fromUtf8(expected) + QStringLiteral(" in:\n") + all));
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<ScratchDatabase> m_scratch;
    std::unique_ptr<test::ScratchDatabase> m_database;
};

QTEST_MAIN(WaybillReportTest)
#include "tst_waybillreport.moc"
