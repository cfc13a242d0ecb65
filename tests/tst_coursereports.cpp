#include "examplefirm.h"
#include "forms/commandday.h"
#include "courses/coursereports.h"
#include "reports/reportlayout.h"
#include "reports/reportpreview.h"
#include "testdatabase.h"

#include <QSqlError>
#include <QSqlQuery>

using namespace zarek;
using zarek::test::exampleFirm;

namespace {

struct Row {
    QDate data;
    QString kod;
    QString kola;
    QString klient;
    double ton;
    double km;
    double tarifa;
    double bruto;
    bool fakt;
    bool plat;
};

bool insert(QSqlDatabase db, const Row &row)
{
    QSqlQuery query(db);
    query.prepare(QStringLiteral("INSERT INTO tabl (data, kod, kola, Klient, Marsh, Tovar, km, ton, Tarifa, bruto, "
                                 "procent, neto, Fakt, NomFakt, plat, Doc) "
                                 "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    for (const QVariant &value :
         QList<QVariant>{row.data, row.kod, row.kola, row.klient, QStringLiteral("София - Перник"),
                         QStringLiteral("Пясък"), row.km, row.ton, row.tarifa, row.bruto, 0.0, row.bruto, row.fakt,
                         row.fakt ? QStringLiteral("0000000125") : QStringLiteral("0000000000"), row.plat, false})
        query.addBindValue(value);
    if (!query.exec()) {
        qWarning() << query.lastError().text();
        return false;
    }
    return true;
}

// Two trucks, two clients, two drivers over March 2006, and one course on each side of it.
bool fillCourses(QSqlDatabase db)
{
    const QString truck1 = QStringLiteral("СА 1234 ВК");
    const QString truck2 = QStringLiteral("РВ 7777 АА");
    const QString client1 = QStringLiteral("Д'Аргос ООД");
    const QString client2 = QStringLiteral("Бетон АД");
    const QList<Row> rows = {
        {QDate(2006, 2, 28), QStringLiteral("007"), truck1, client1, 9, 10, 0.2, 18.00, false, true},
        {QDate(2006, 3, 1), QStringLiteral("007"), truck1, client1, 10, 25, 0.125, 31.25, true, false},
        {QDate(2006, 3, 5), QStringLiteral("008"), truck2, client2, 12.5, 40, 0.1, 50.00, false, true},
        {QDate(2006, 3, 17), QStringLiteral("007"), truck1, client2, 20, 100, 0.05, 100.00, false, true},
        {QDate(2006, 3, 31), QStringLiteral("008"), truck1, client1, 7.25, 12, 0.3, 26.10, true, false},
        {QDate(2006, 4, 1), QStringLiteral("007"), truck1, client1, 1, 1, 1, 1.00, false, false},
    };
    for (const Row &row : rows) {
        if (!insert(db, row))
            return false;
    }
    return true;
}

SearchConditions march()
{
    SearchConditions conditions;
    conditions.period = {QDate(2006, 3, 1), QDate(2006, 3, 31)};
    return conditions;
}

LaidOutReport laidOut(const Checked<Report> &report)
{
    if (!report.ok())
        qWarning() << report.message().text;
    return report.ok() ? layoutReport(report.value()) : LaidOutReport{};
}

const QString firmLines = QStringLiteral(
    "Транспорт Петров ЕООД\nСофия, ул. Искър 12\n"
    "тел:02 987 65 43, факс:0888 123 456, E-mail:office@petrov.bg, URL:http//www.petrov.bg");

}

class CourseReportsTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void theTruckReportListsItsCoursesOfThePeriodWithTotals()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(fillCourses(scratch.db()));
        SearchConditions conditions = march();
        conditions.SeekKola = QStringLiteral("СА 1234 ВК");
        const Checked<Report> report = ReportKola(conditions, scratch.db(), exampleFirm(), commandDay());
        QVERIFY(report.ok());
        QCOMPARE(report.value().design().page.orientation, ReportOrientation::Landscape);
        QCOMPARE(report.value().design().page.leftMargin, 1000);
        QCOMPARE(report.value().design().page.topMargin, 567);
        const LaidOutReport laid = laidOut(report);
        QCOMPARE(laid.pageCount(), 1);
        const QStringList expected = (firmLines + QStringLiteral(
            "\nСправка\nза курсовете на кола №СА 1234 ВК\nза периода от 01.03.2006 до 31.03.2006\n"
            "Дата | Пл. | Тонаж | Км | Тар. | Сума | Маршрут | Клиент | Товар\n"
            "01.03.2006 | Не | 10,000 | 25 | 0,125 | 31,25 | София - Перник | Д'Аргос ООД | Пясък\n"
            "17.03.2006 | Да | 20,000 | 100 | 0,050 | 100,00 | София - Перник | Бетон АД | Пясък\n"
            "31.03.2006 | Не | 7,250 | 12 | 0,300 | 26,10 | София - Перник | Д'Аргос ООД | Пясък\n"
            "Товар | Км | Сума\n"
            "Всичко | 37,250 | 137 | 157,35\n"
            "Зарек 2.3.4 | Страница 1 от 1 | Orvenn Ltd.")).split('\n');
        QCOMPARE(laid.textLines(), expected);
    }

    void theFirmReportFollowsTheInvoiceChoice_data()
    {
        QTest::addColumn<QString>("choice");
        QTest::addColumn<QString>("subject");
        QTest::addColumn<QString>("totals");
        QTest::addColumn<int>("rows");
        QTest::newRow("all") << "All" << "за курсовете на фирма Транспорт Петров ЕООД"
                             << "Всичко | 49,750 | 177 | 207,35" << 4;
        QTest::newRow("invoiced") << "Yes" << "за фактурираните курсове на фирма Транспорт Петров ЕООД"
                                  << "Всичко | 17,250 | 37 | 57,35" << 2;
        QTest::newRow("not invoiced") << "No" << "за нефактурираните курсове на фирма Транспорт Петров ЕООД"
                                      << "Всичко | 32,500 | 140 | 150,00" << 2;
    }
    void theFirmReportFollowsTheInvoiceChoice()
    {
        ZAREK_SCRATCH_DB(scratch);
        QFETCH(QString, choice);
        QFETCH(QString, subject);
        QFETCH(QString, totals);
        QFETCH(int, rows);
        QVERIFY(fillCourses(scratch.db()));
        SearchConditions conditions = march();
        conditions.SeekChoice = choice;
        const Checked<Report> report = ReportAll(conditions, scratch.db(), exampleFirm(), commandDay());
        QVERIFY(report.ok());
        QCOMPARE(report.value().windowCaption(), QStringLiteral("Зарек 2.3 - Справка за курсове"));
        QCOMPARE(report.value().data().rowCount(), rows);
        const QStringList lines = laidOut(report).textLines();
        QCOMPARE(lines.at(3), QStringLiteral("Обща справка"));
        QCOMPARE(lines.at(4), subject);
        QCOMPARE(lines.at(6), QStringLiteral("Дата | Кола | Тонаж | Км | Тар. | Сума | Маршрут | Клиент | Товар"));
        QVERIFY2(lines.contains(totals), qPrintable(lines.join('\n')));
    }

    void theClientReportNamesTheFirmAndTheClient()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(fillCourses(scratch.db()));
        SearchConditions conditions = march();
        conditions.SeekKlient = QStringLiteral("Д'Аргос ООД");  // an apostrophe is just a letter
        const Checked<Report> report = ReportKlient(conditions, scratch.db(), exampleFirm(), commandDay());
        QVERIFY(report.ok());
        QCOMPARE(report.value().design().page.orientation, ReportOrientation::Portrait);
        QCOMPARE(report.value().windowCaption(), QStringLiteral("Зарек 2.3 - Справка за курсовете"));
        const QStringList expected = (firmLines + QStringLiteral(
            "\nИзвършени от Транспорт Петров ЕООД курсове\nпо заявка на Д'Аргос ООД\n"
            "за периода от 01.03.2006 до 31.03.2006\n"
            "Дата | Кола | Тон. | Км | Сума | Маршрут | Товар\n"
            "01.03.2006 | СА 1234 ВК | 10,000 | 25 | 31,25 | София - Перник | Пясък\n"
            "31.03.2006 | СА 1234 ВК | 7,250 | 12 | 26,10 | София - Перник | Пясък\n"
            "Товар | Км | Сума\n"
            "Всичко | 17,250 | 37 | 57,35\n"
            "Зарек 2.3.4 | Страница 1 от 1 | Orvenn Ltd.")).split('\n');
        QCOMPARE(laidOut(report).textLines(), expected);
    }

    void aLongRouteOrCargoOnTheClientReportIsWrappedNotCut()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(fillCourses(scratch.db()));
        const QString route = QStringLiteral("Стамболийски - Пловдив - Асеновград - Смолян");
        const QString cargo = QStringLiteral("Строителни материали на палети");
        QSqlQuery update(scratch.db());
        update.prepare(QStringLiteral("UPDATE tabl SET Marsh = ?, Tovar = ? WHERE Klient = ?"));
        update.addBindValue(route);
        update.addBindValue(cargo);
        update.addBindValue(QStringLiteral("Бетон АД"));
        QVERIFY(update.exec());
        SearchConditions conditions = march();
        conditions.SeekKlient = QStringLiteral("Бетон АД");
        const LaidOutReport laid = laidOut(ReportKlient(conditions, scratch.db(), exampleFirm(), commandDay()));
        const QString page = laid.textLines().join(QLatin1Char(' '));
        QVERIFY2(!page.contains(QChar(0x2026)), qPrintable(page));
        for (const QString &word : (route + QLatin1Char(' ') + cargo).split(QLatin1Char(' ')))
            QVERIFY2(page.contains(word), qPrintable(word));
    }

    void theDriverReportGreysTheDateOfEachUnpaidCourse()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(fillCourses(scratch.db()));
        SearchConditions conditions = march();
        conditions.SeekDriverKod = QStringLiteral("007");
        conditions.SeekDriverIme = QStringLiteral("Иван Петров");
        const Checked<Report> report = ReportDriver(conditions, scratch.db(), exampleFirm(), commandDay());
        QVERIFY(report.ok());
        const LaidOutReport laid = laidOut(report);
        const QStringList lines = laid.textLines();
        QCOMPARE(lines.at(4), QStringLiteral("за курсовете извършени от Иван Петров"));
        QCOMPARE(lines.at(6),
                 QStringLiteral("Дата | Кола | Тонаж | Км | Тар. | Сума | Маршрут | Клиент | Товар | Плат."));
        QCOMPARE(lines.at(7), QStringLiteral("01.03.2006 | СА 1234 ВК | 10,000 | 25 | 0,125 | 31,25 | "
                                             "София - Перник | Д'Аргос ООД | Пясък | Не"));
        QCOMPARE(lines.at(8), QStringLiteral("17.03.2006 | СА 1234 ВК | 20,000 | 100 | 0,050 | 100,00 | "
                                             "София - Перник | Бетон АД | Пясък | Да"));
        QVERIFY(lines.contains(QStringLiteral("Всичко | 30,000 | 125 | 131,25")));
        // The first course is unpaid and the second paid: each date cell shows its own course.
        QList<quint32> fills;
        for (const ReportPrimitive &p : laid.pages.at(0).primitives) {
            if (p.kind == ReportPrimitive::Kind::Fill)
                fills.append(p.color);
        }
        QCOMPARE(fills, QList<quint32>({0xFFC0C0C0u, 0xFFFFFFFFu}));
    }

    // The PDF export offered the design's name ("rptKola.pdf"): it offers the subject and period.
    void thePdfExportOfferedTheDesignsName_data()
    {
        QTest::addColumn<QString>("report");
        QTest::addColumn<QString>("fileName");
        QTest::newRow("truck") << "rptKola" << "Справка за курсовете на кола №СА 1234 ВК, 01.03.2006 - 31.03.2006.pdf";
        QTest::newRow("firm") << "rptAll"
                              << "Обща справка за нефактурираните курсове на фирма Транспорт Петров ЕООД, "
                                 "01.03.2006 - 31.03.2006.pdf";
        QTest::newRow("client, the slash a dash") << "rptKlient"
                                                  << "Справка за курсовете по заявка на Бетон-Инерт АД, "
                                                     "01.03.2006 - 31.03.2006.pdf";
        QTest::newRow("driver") << "rptDriver"
                                << "Справка за курсовете извършени от Иван Петров, 01.03.2006 - 31.03.2006.pdf";
    }
    void thePdfExportOfferedTheDesignsName()
    {
        QFETCH(QString, report);
        QFETCH(QString, fileName);
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(fillCourses(scratch.db()));
        SearchConditions conditions = march();
        conditions.SeekKola = QStringLiteral("СА 1234 ВК");
        conditions.SeekChoice = QStringLiteral("No");
        conditions.SeekKlient = QStringLiteral("Бетон/Инерт АД");
        conditions.SeekDriverKod = QStringLiteral("007");
        conditions.SeekDriverIme = QStringLiteral("Иван Петров");
        const Checked<Report> filled = report == QLatin1String("rptKola")     ? ReportKola(conditions, scratch.db(), exampleFirm(), commandDay())
                                     : report == QLatin1String("rptAll")      ? ReportAll(conditions, scratch.db(), exampleFirm(), commandDay())
                                     : report == QLatin1String("rptKlient")   ? ReportKlient(conditions, scratch.db(), exampleFirm(), commandDay())
                                                                              : ReportDriver(conditions, scratch.db(), exampleFirm(), commandDay());
        QVERIFY(filled.ok());
        const ReportPreview preview(laidOut(filled));
        QCOMPARE(preview.suggestedPdfName(), fileName);
    }

    void anEmptyPeriodGivesTheFrameWithZeroTotals()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(fillCourses(scratch.db()));
        SearchConditions conditions;
        conditions.period = {QDate(2007, 1, 1), QDate(2007, 12, 31)};
        conditions.SeekKola = QStringLiteral("СА 1234 ВК");
        const LaidOutReport laid = laidOut(ReportKola(conditions, scratch.db(), exampleFirm(), commandDay()));
        QCOMPARE(laid.pageCount(), 1);
        const QStringList lines = laid.textLines();
        QCOMPARE(lines.at(5), QStringLiteral("за периода от 01.01.2007 до 31.12.2007"));
        QCOMPARE(lines.at(6), QStringLiteral("Дата | Пл. | Тонаж | Км | Тар. | Сума | Маршрут | Клиент | Товар"));
        QCOMPARE(lines.at(7), QStringLiteral("Товар | Км | Сума"));
        QCOMPARE(lines.at(8), QStringLiteral("Всичко | 0,000 | 0 | 0,00"));
    }

    void aLongReportRepeatsItsColumnsOnEveryPage()
    {
        ZAREK_SCRATCH_DB(scratch);
        {
            QVERIFY(scratch.db().transaction());
            for (int i = 0; i < 150; ++i)
                QVERIFY(insert(scratch.db(), {QDate(2006, 3, 1).addDays(i % 28), QStringLiteral("007"),
                                              QStringLiteral("СА 1234 ВК"), QStringLiteral("Бетон АД"), 10, 20,
                                              0.1, 20.00, false, false}));
            QVERIFY(scratch.db().commit());
        }
        SearchConditions conditions = march();
        conditions.SeekChoice = QStringLiteral("All");
        const LaidOutReport laid = laidOut(ReportAll(conditions, scratch.db(), exampleFirm(), commandDay()));
        QVERIFY(laid.pageCount() >= 3);
        for (int page = 0; page < laid.pageCount(); ++page) {
            const QStringList lines = laid.textLines(page);
            QVERIFY(lines.contains(QStringLiteral("Дата | Кола | Тонаж | Км | Тар. | Сума | Маршрут | Клиент | Товар")));
            QCOMPARE(lines.last(), QStringLiteral("Зарек 2.3.4 | Страница %1 от %2 | Orvenn Ltd.")
                                       .arg(page + 1)
                                       .arg(laid.pageCount()));
        }
        QVERIFY(laid.textLines(laid.pageCount() - 1).contains(QStringLiteral("Всичко | 1500,000 | 3000 | 3000,00")));
    }
};

QTEST_MAIN(CourseReportsTest)
#include "tst_coursereports.moc"
