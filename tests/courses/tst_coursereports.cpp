#include "examplefirm.h"
#include "forms/commandday.h"
#include "courses/coursereports.h"
#include "data/query.h"
#include "reports/reportlayout.h"
#include "reports/reportrows.h"
#include "reports/reportpreview.h"
#include "coursesfixture.h"
#include "laidoutpapers.h"
#include "testdatabase.h"
#include "forms/messageservice.h"

#include <QPrinter>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

using namespace zarek;
using zarek::test::laidOut;
using zarek::test::exampleFirm;

namespace {

using Row = test::CourseRow;

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
    return std::all_of(rows.begin(), rows.end(), [&db](const Row &row) { return test::insertCourse(db, row); });
}

SearchConditions march()
{
    SearchConditions conditions;
    conditions.period = {QDate(2006, 3, 1), QDate(2006, 3, 31)};
    return conditions;
}

// Courses over March 2006 in a changing mix of trucks, clients and drivers, some invoiced, some paid.
bool fillManyCourses(QSqlDatabase db, int count, int first = 0)
{
    if (!db.transaction())
        return false;
    const QStringList trucks = {QStringLiteral("СА 1234 ВК"), QStringLiteral("РВ 7777 АА")};
    const QStringList clients = {QStringLiteral("Д'Аргос ООД"), QStringLiteral("Бетон АД")};
    for (int i = first; i < first + count; ++i) {
        const double ton = 5 + (i * 37 % 170) / 10.0;
        const double km = 10 + (i * 53 % 240);
        const double tarifa = 0.05 + (i % 7) * 0.015;
        if (!test::insertCourse(db, {QDate(2006, 3, 1).addDays(i % 31), QStringLiteral("00%1").arg(7 + i % 2), trucks.at(i % 2),
                         clients.at(i / 2 % 2), ton, km, tarifa, std::round(ton * km * tarifa * 100) / 100, i % 3 == 0,
                         i % 5 == 0}))
            return false;
    }
    return db.commit();
}

using StreamedRoutine = Checked<StreamedReport> (*)(const SearchConditions &, QSqlDatabase, const FirmProfile &,
                                                    const BooksDay &);
using WholeRoutine = Checked<Report> (*)(const SearchConditions &, QSqlDatabase, const FirmProfile &, const BooksDay &);

// A course report by its design's name: laid out whole, and streamed page by page.
std::pair<WholeRoutine, StreamedRoutine> courseReport(const QString &design)
{
    return QHash<QString, std::pair<WholeRoutine, StreamedRoutine>>{
        {QStringLiteral("rptKola"), {&ReportKola, &streamReportKola}},
        {QStringLiteral("rptAll"), {&ReportAll, &streamReportAll}},
        {QStringLiteral("rptKlient"), {&ReportKlient, &streamReportKlient}},
        {QStringLiteral("rptDriver"), {&ReportDriver, &streamReportDriver}}}.value(design);
}

SearchConditions everyCondition()
{
    SearchConditions conditions = march();
    conditions.SeekKola = QStringLiteral("СА 1234 ВК");
    conditions.SeekChoice = QStringLiteral("All");
    conditions.SeekKlient = QStringLiteral("Бетон АД");
    conditions.SeekDriverKod = QStringLiteral("007");
    conditions.SeekDriverIme = QStringLiteral("Иван Петров");
    return conditions;
}

// The preview's outside world without windows: the progress box cancels at the step asked, the
// print dialog writes to a PDF file.
class ScriptedServices : public PreviewServices {
public:
    ScriptedServices() { PreviewServices::setInstance(this); }
    ~ScriptedServices() override { PreviewServices::setInstance(nullptr); }

    class Work : public ReportWork {
    public:
        Work(ScriptedServices &services, bool cancels) : m_services(services), m_cancels(cancels) {}
        bool step(int, int) override
        {
            if (!m_cancels)
                return true;
            return ++m_services.steps != m_services.cancelAtStep;
        }

    private:
        ScriptedServices &m_services;
        bool m_cancels;
    };
    std::unique_ptr<ReportWork> startWork(const QString &text, QWidget *) override
    {
        works.append(text);
        return std::make_unique<Work>(*this, text.startsWith(cancelWork));
    }
    bool choosePrinter(QPrinter &printer, int pageCount, QWidget *) override
    {
        printerPages = pageCount;
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(pdf);
        return true;
    }

    QStringList works;
    QString cancelWork;  // the work the user cancels, by the start of its text
    int steps = 0;
    int cancelAtStep = -1;
    int printerPages = -1;
    QString pdf;
};

const QString firmLines = QStringLiteral(
    "Транспорт Петров ЕООД\nСофия, ул. Искър 12\n"
    "тел:02 987 65 43, факс:0888 123 456, E-mail:office@petrov.bg, URL:http//www.petrov.bg");

}

namespace {

// The report laid out page by page against the same report laid out whole.
void comparePages(const QString &report, QSqlDatabase db, int courses)
{
    const auto [whole, streamed] = courseReport(report);
    const LaidOutReport complete = laidOut(whole(everyCondition(), db, exampleFirm(), commandDay()));
    QVERIFY(complete.pageCount() >= 1);

    const Checked<StreamedReport> filled = streamed(everyCondition(), db, exampleFirm(), commandDay());
    QVERIFY(filled.ok());
    ReportLayouter layouter(filled.value());
    QVERIFY(layouter.layoutNextPage());
    QCOMPARE(layouter.pageCount(), 1);
    // The first page stands before the rows of the later ones are read.
    if (complete.pageCount() > 2) {
        QVERIFY(!layouter.isComplete());
        QVERIFY(layouter.rowCount() < courses);
    }
    for (int page = 0; page < complete.pageCount(); ++page) {
        layouter.layoutThrough(page);
        LaidOutReport one = layouter.frame();
        one.pages = {layouter.page(page)};
        QStringList lines = one.textLines();
        QStringList expected = complete.textLines(page);
        if (!layouter.isComplete()) {
            // Until the last page is laid out, the count is the pages so far and "…".
            QCOMPARE(lines.last(), QStringLiteral("Зарек 2.3.4 | Страница %1 от %2… | Orvenn Ltd.")
                                       .arg(page + 1)
                                       .arg(layouter.pageCount()));
            lines.removeLast();
            expected.removeLast();
        }
        QCOMPARE(lines, expected);
    }
    QVERIFY(layouter.isComplete());
    QCOMPARE(layouter.pageCount(), complete.pageCount());
    QCOMPARE(layouter.whole().textLines(), complete.textLines());
    QCOMPARE(layouter.table()->totals, complete.table->totals);
    QCOMPARE(layouter.table()->rowCount, complete.table->rowCount);
}

}

// A fresh database of the current engine with the courses, and a search over March.
#define MARCH_COURSES()                   \
    ZAREK_SCRATCH_DB(scratch);            \
    QVERIFY(fillCourses(scratch.db()));   \
    SearchConditions conditions = march()

class CourseReportsTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    // The truck's and the client's report, whole: the firm, the subject, the rows and the totals.
    void theTruckAndClientReportsListTheirCoursesWithTotals_data()
    {
        QTest::addColumn<QString>("report");
        QTest::addColumn<int>("orientation");
        QTest::addColumn<QString>("body");
        QTest::newRow("truck") << "rptKola" << int(ReportOrientation::Landscape)
            << "Справка\nза курсовете на кола №СА 1234 ВК\nза периода от 01.03.2006 до 31.03.2006\n"
               "Дата | Пл. | Тонаж | Км | Тар. | Сума | Маршрут | Клиент | Товар\n"
               "01.03.2006 | Не | 10,000 | 25 | 0,125 | 31,25 | София - Перник | Д'Аргос ООД | Пясък\n"
               "17.03.2006 | Да | 20,000 | 100 | 0,050 | 100,00 | София - Перник | Бетон АД | Пясък\n"
               "31.03.2006 | Не | 7,250 | 12 | 0,300 | 26,10 | София - Перник | Д'Аргос ООД | Пясък\n"
               "Товар | Км | Сума\nВсичко | 37,250 | 137 | 157,35";
        // An apostrophe in the client's name is just a letter.
        QTest::newRow("client") << "rptKlient" << int(ReportOrientation::Portrait)
            << "Извършени от Транспорт Петров ЕООД курсове\nпо заявка на Д'Аргос ООД\n"
               "за периода от 01.03.2006 до 31.03.2006\nДата | Кола | Тон. | Км | Сума | Маршрут | Товар\n"
               "01.03.2006 | СА 1234 ВК | 10,000 | 25 | 31,25 | София - Перник | Пясък\n"
               "31.03.2006 | СА 1234 ВК | 7,250 | 12 | 26,10 | София - Перник | Пясък\n"
               "Товар | Км | Сума\nВсичко | 17,250 | 37 | 57,35";
    }
    void theTruckAndClientReportsListTheirCoursesWithTotals()
    {
        QFETCH(QString, report);
        QFETCH(int, orientation);
        QFETCH(QString, body);
        MARCH_COURSES();
        conditions.SeekKola = QStringLiteral("СА 1234 ВК");
        conditions.SeekKlient = QStringLiteral("Д'Аргос ООД");
        const Checked<Report> filled = courseReport(report).first(conditions, scratch.db(), exampleFirm(), commandDay());
        QVERIFY(filled.ok());
        const ReportPageSetup &page = filled.value().design().page;
        QCOMPARE(int(page.orientation), orientation);
        if (report == QLatin1String("rptKola"))  // the truck's list has margins of its own
            QCOMPARE(QStringLiteral("%1 %2").arg(page.leftMargin).arg(page.topMargin), QStringLiteral("1000 567"));
        else
            QCOMPARE(filled.value().windowCaption(), QStringLiteral("Зарек 2.3 - Справка за курсовете"));
        const LaidOutReport laid = laidOut(filled);
        QCOMPARE(laid.pageCount(), 1);
        QCOMPARE(laid.textLines(),
                 (firmLines + '\n' + body + QStringLiteral("\nЗарек 2.3.4 | Страница 1 от 1 | Orvenn Ltd.")).split('\n'));
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
        QFETCH(QString, choice);
        QFETCH(QString, subject);
        QFETCH(QString, totals);
        QFETCH(int, rows);
        MARCH_COURSES();
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

    void aLongRouteOrCargoOnTheClientReportIsWrappedNotCut()
    {
        MARCH_COURSES();
        const QString route = QStringLiteral("Стамболийски - Пловдив - Асеновград - Смолян");
        const QString cargo = QStringLiteral("Строителни материали на палети");
        QVERIFY(test::execBound(scratch.db(), QStringLiteral("UPDATE tabl SET Marsh = ?, Tovar = ? WHERE Klient = ?"),
                                {route, cargo, QStringLiteral("Бетон АД")}));
        conditions.SeekKlient = QStringLiteral("Бетон АД");
        const LaidOutReport laid = laidOut(ReportKlient(conditions, scratch.db(), exampleFirm(), commandDay()));
        const QString page = laid.textLines().join(QLatin1Char(' '));
        QVERIFY2(!page.contains(QChar(0x2026)), qPrintable(page));
        for (const QString &word : (route + QLatin1Char(' ') + cargo).split(QLatin1Char(' ')))
            QVERIFY2(page.contains(word), qPrintable(word));
    }

    void theDriverReportGreysTheDateOfEachUnpaidCourse()
    {
        MARCH_COURSES();
        conditions.SeekDriverKod = QStringLiteral("007");
        conditions.SeekDriverIme = QStringLiteral("Иван Петров");
        const Checked<Report> report = ReportDriver(conditions, scratch.db(), exampleFirm(), commandDay());
        QVERIFY(report.ok());
        const LaidOutReport laid = laidOut(report);
        const QStringList lines = laid.textLines();
        QCOMPARE(lines.at(4), QStringLiteral("за курсовете извършени от Иван Петров"));
        QCOMPARE(lines.mid(6, 3), (QStringList{"Дата | Кола | Тонаж | Км | Тар. | Сума | Маршрут | Клиент | Товар | Плат.",
                                               "01.03.2006 | СА 1234 ВК | 10,000 | 25 | 0,125 | 31,25 | "
                                               "София - Перник | Д'Аргос ООД | Пясък | Не",
                                               "17.03.2006 | СА 1234 ВК | 20,000 | 100 | 0,050 | 100,00 | "
                                               "София - Перник | Бетон АД | Пясък | Да"}));
        QVERIFY(lines.contains(QStringLiteral("Всичко | 30,000 | 125 | 131,25")));
        // The first course is unpaid and the second paid: each date cell shows its own course.
        QCOMPARE(test::fillsOn(laid, 0), QList<quint32>({0xFFC0C0C0u, 0xFFFFFFFFu}));
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
        MARCH_COURSES();
        conditions.SeekKola = QStringLiteral("СА 1234 ВК");
        conditions.SeekChoice = QStringLiteral("No");
        conditions.SeekKlient = QStringLiteral("Бетон/Инерт АД");
        conditions.SeekDriverKod = QStringLiteral("007");
        conditions.SeekDriverIme = QStringLiteral("Иван Петров");
        const Checked<Report> filled = courseReport(report).first(conditions, scratch.db(), exampleFirm(), commandDay());
        QVERIFY(filled.ok());
        const ReportPreview preview(laidOut(filled));
        QCOMPARE(preview.suggestedPdfName(), fileName);
    }

    void anEmptyPeriodGivesTheFrameWithZeroTotals()
    {
        MARCH_COURSES();
        conditions.period = {QDate(2007, 1, 1), QDate(2007, 12, 31)};
        conditions.SeekKola = QStringLiteral("СА 1234 ВК");
        const LaidOutReport laid = laidOut(ReportKola(conditions, scratch.db(), exampleFirm(), commandDay()));
        QCOMPARE(laid.pageCount(), 1);
        QCOMPARE(laid.textLines().mid(5, 4), (QStringList{"за периода от 01.01.2007 до 31.12.2007",
                                                          "Дата | Пл. | Тонаж | Км | Тар. | Сума | Маршрут | Клиент | Товар",
                                                          "Товар | Км | Сума", "Всичко | 0,000 | 0 | 0,00"}));
    }

    void aLongReportRepeatsItsColumnsOnEveryPage()
    {
        ZAREK_SCRATCH_DB(scratch);
        {
            QVERIFY(scratch.db().transaction());
            for (int i = 0; i < 150; ++i)
                QVERIFY(test::insertCourse(scratch.db(), {QDate(2006, 3, 1).addDays(i % 28), QStringLiteral("007"),
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

    // Each course report laid out page by page as its rows are read gives the pages of the report
    // laid out whole: the same lines, totals and page numbers, once the count is known.
    void progressiveAndCompleteLayoutsGiveTheSamePages_data()
    {
        QTest::addColumn<QString>("report");
        QTest::newRow("truck") << "rptKola";
        QTest::newRow("firm") << "rptAll";
        QTest::newRow("client") << "rptKlient";
        QTest::newRow("driver") << "rptDriver";
    }
    void progressiveAndCompleteLayoutsGiveTheSamePages()
    {
        QFETCH(QString, report);
        ZAREK_SCRATCH_DB(scratch);
        // No course, one, about a page and a half, several pages.
        int courses = 0;
        for (const int more : {0, 1, 44, 115}) {
            QVERIFY(fillManyCourses(scratch.db(), more, courses));
            courses += more;
            comparePages(report, scratch.db(), courses);
            if (QTest::currentTestFailed())
                return;
        }
    }

    // The course reports read their rows in growing chunks after the last (date, id) read: across
    // several chunks they are the rows of the whole query in its order, and those of the moment the
    // report began (a course saved meanwhile waits for the next report).
    void theRowsReadInChunksAreThoseOfTheWholeQueryAtItsStart()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(fillManyCourses(scratch.db(), 3000));
        const QString columns = QStringLiteral("data, kola, ton, bruto");
        const QString fromAndWhere = QStringLiteral("tabl WHERE data BETWEEN ? AND ? ");
        const QList<QVariant> values = {QDate(2006, 3, 1), QDate(2006, 3, 31)};
        const Checked<RowSet> whole =
            readRows(scratch.db(), QString(), QStringLiteral("SELECT ") + columns + QStringLiteral(" FROM ") + fromAndWhere
                                                  + QStringLiteral("ORDER BY data, id"), values);
        QVERIFY(whole.ok());
        const Checked<std::shared_ptr<RowStream>> stream =
            keyedRowStream(scratch.db(), columns, fromAndWhere, {QStringLiteral("data"), QStringLiteral("id")}, values,
                           QString());
        QVERIFY(stream.ok());
        QCOMPARE(stream.value()->columns(), whole.value().columns());
        QList<QVariant> cells;
        QVERIFY(stream.value()->next(cells));
        QVERIFY(fillManyCourses(scratch.db(), 5, 3000));
        RowSet read(stream.value()->columns());
        read.appendRow(cells);
        while (stream.value()->next(cells))
            read.appendRow(cells);
        QVERIFY(!stream.value()->error());
        QCOMPARE(read.rowCount(), whole.value().rowCount());
        for (int row = 0; row < read.rowCount(); row += 97) {
            for (int column = 0; column < read.columnCount(); ++column)
                QCOMPARE(read.value(row, column), whole.value().value(row, column));
        }
        QCOMPARE(read.value(read.rowCount() - 1, 3), whole.value().value(read.rowCount() - 1, 3));
    }

    void thePreviewPagesForwardWhileTheRestIsLaidOut()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(fillManyCourses(scratch.db(), 400));
        const Checked<StreamedReport> filled = streamReportAll(everyCondition(), scratch.db(), exampleFirm(), commandDay());
        QVERIFY(filled.ok());
        ReportPreview preview(std::make_shared<ReportLayouter>(filled.value()));
        QCOMPARE(preview.pageCount(), 1);
        QVERIFY(!preview.isLaidOut());
        QCOMPARE(preview.pageCountText(), QStringLiteral("от 1…"));
        auto *next = preview.findChild<QToolButton *>(QStringLiteral("cmdNext"));
        QVERIFY(next && next->isEnabled());
        next->click();
        next->click();
        QCOMPARE(preview.currentPage(), 2);
        QVERIFY(preview.pageCount() >= 3);
        QTRY_VERIFY(preview.isLaidOut());
        const int pages = preview.pageCount();
        QVERIFY(pages > 3);
        QCOMPARE(preview.pageCountText(), QStringLiteral("от %1").arg(pages));
        QCOMPARE(preview.currentPage(), 2);
        LaidOutReport shown;
        shown.pages = {preview.shownPage()};
        QCOMPARE(shown.textLines().last(), QStringLiteral("Зарек 2.3.4 | Страница 3 от %1 | Orvenn Ltd.").arg(pages));
        auto *last = preview.findChild<QToolButton *>(QStringLiteral("cmdLast"));
        last->click();
        QCOMPARE(preview.currentPage(), pages - 1);
        QVERIFY(!next->isEnabled());
    }

    void aLongPrintCanBeCancelled_data()
    {
        QTest::addColumn<QString>("work");
        QTest::addColumn<int>("cancelAtStep");
        QTest::addColumn<bool>("laidOut");
        QTest::addColumn<bool>("printerAsked");
        QTest::newRow("while the pages are laid out") << "Подреждане" << 1 << false << false;
        QTest::newRow("while the pages print") << "Печат" << 3 << true << true;
    }
    void aLongPrintCanBeCancelled()
    {
        QFETCH(QString, work);
        QFETCH(int, cancelAtStep);
        QFETCH(bool, laidOut);
        QFETCH(bool, printerAsked);
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(fillManyCourses(scratch.db(), 800));
        RecordingMessageService messages;
        ScriptedServices services;
        QTemporaryDir dir;
        services.pdf = dir.filePath(QStringLiteral("report.pdf"));
        services.cancelWork = work;
        services.cancelAtStep = cancelAtStep;
        const Checked<StreamedReport> filled = streamReportAll(everyCondition(), scratch.db(), exampleFirm(), commandDay());
        QVERIFY(filled.ok());
        ReportPreview preview(std::make_shared<ReportLayouter>(filled.value()));
        preview.print();
        QCOMPARE(preview.isLaidOut(), laidOut);
        QCOMPARE(services.printerPages > 0, printerAsked);
        // The work stopped at the step that cancelled it.
        QCOMPARE(services.steps, cancelAtStep);
        QVERIFY(messages.shown.isEmpty());
        // Cancelled half way, the PDF export leaves no file behind.
        if (laidOut) {
            services.steps = 0;
            services.cancelWork = QStringLiteral("Запис в PDF");
            QVERIFY(!preview.exportPdfTo(services.pdf + QStringLiteral(".2")));
            QCOMPARE(services.steps, cancelAtStep);
            QVERIFY(!QFile::exists(services.pdf + QStringLiteral(".2")));
        }
    }
};

QTEST_MAIN(CourseReportsTest)
#include "tst_coursereports.moc"
