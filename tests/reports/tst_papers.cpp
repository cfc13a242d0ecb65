#include "app/demodata.h"
#include "attestation/attestationreport.h"
#include "core/currency.h"
#include "core/version.h"
#include "courses/coursereports.h"
#include "data/firmstore.h"
#include "data/scratchdatabase.h"
#include "documents/documentstore.h"
#include "documents/duedocuments.h"
#include "fleet/balansreport.h"
#include "forms/commandday.h"
#include "fleet/balansstore.h"
#include "invoicing/invoicestatement.h"
#include "reports/reportlayout.h"
#include "settlement/klientsreport.h"
#include "settlement/klientsstore.h"
#include "settlement/paymentstore.h"
#include "settlement/paysheetstore.h"
#include "settlement/scratchsheets.h"
#include "settlement/settlementreports.h"
#include "testdatabase.h"
#include "warehouse/stocklists.h"
#include "waybills/waybillreport.h"

#include <QFile>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <functional>
#include <map>
#include <memory>

using namespace zarek;

// Every paper of the program, filled on the demo firm and laid out, reads as the text kept beside
// this test (tests/papers/<row>.txt): what a reader sees on paper does not change unnoticed. The
// version number stands as "<версия>", so a new release does not touch the texts. After a
// deliberate change of a paper, ZAREK_WRITE_PAPERS=1 writes the texts anew for review.
namespace {

const QDate demoToday(2026, 3, 20);
const Period period{QDate(2025, 11, 1), QDate(2026, 2, 28)};
const BooksDay books{Changeover{QDate(2026, 1, 1)}, demoToday};

struct Demo {
    std::unique_ptr<test::ScratchDatabase> database;
    QTemporaryDir folder;
    std::unique_ptr<zarek::ScratchDatabase> scratch;
    FirmProfile firm;
    QString truck, client, driverKod, driverName;

    QSqlDatabase db() const { return database->db(); }
    QString first(const QString &sql) const
    {
        QSqlQuery query(db());
        return query.exec(sql) && query.next() ? query.value(0).toString() : QString();
    }
};

using Paper = std::function<Checked<Report>(Demo &)>;

SearchConditions conditions(const Demo &demo)
{
    SearchConditions c;
    c.period = period;
    c.SeekKola = demo.truck;
    c.SeekKlient = demo.client;
    c.SeekDriverKod = demo.driverKod;
    c.SeekDriverIme = demo.driverName;
    return c;
}

Checked<Report> allCourses(Demo &demo, const QString &choice)
{
    SearchConditions c = conditions(demo);
    c.SeekChoice = choice;
    return ReportAll(c, demo.db(), demo.firm, books);
}

Checked<Report> invoiceStatement(Demo &demo, FakturaMode mode)
{
    using namespace invoicing;
    if (auto refusal = demo.scratch->RebuildScratchTable(QStringLiteral("TempPlaten")))
        return *refusal;
    QSqlQuery query(demo.db());
    query.prepare(QStringLiteral("SELECT data, Marsh, Tovar, kola, km, ton, Tarifa, bruto FROM tabl "
                                 "WHERE Klient = ? AND data BETWEEN ? AND ? ORDER BY data, id"));
    query.addBindValue(demo.client);
    query.addBindValue(period.from);
    query.addBindValue(period.to);
    if (!query.exec())
        return UserMessage{QStringLiteral("ГРЕШКА"), query.lastError().text()};
    QList<StatementLine> lines;
    while (query.next()) {
        StatementLine line;
        line.red = static_cast<int>(lines.size()) + 1;
        line.data = query.value(0).toDate();
        line.marsh = query.value(1).toString();
        line.vidTovar = query.value(2).toString();
        line.kolaId = query.value(3).toString();
        line.km = query.value(4).toDouble();
        line.ton = query.value(5).toDouble();
        line.tarifa = query.value(6).toDouble();
        line.suma = Money::fromAmount(query.value(7).toDouble());
        line.currency = books.currencyOn(line.data);
        lines.append(line);
    }
    StatementMoney money = mode == FakturaMode::FaktNew ? statementMoney(lines, Currency::Euro)
                                                        : statementMoney(lines, std::nullopt, Currency::Leva);
    money.changeover = books.changeover;
    if (auto refusal = fillTempPlaten(demo.scratch->db(), lines, money.mixed))
        return *refusal;
    return ReportFaktura({mode, demo.client, period, QStringLiteral("0000000042")}, money, demo.scratch->db(),
                         demo.firm);
}

Checked<Report> clientStatement(Demo &demo)
{
    if (auto refusal = demo.scratch->RebuildScratchTable(QStringLiteral("TempKlients")))
        return *refusal;
    SearchConditions c = conditions(demo);
    c.SeekKola.clear();  // every truck of the client
    const Checked<RowSet> courses = KlientsStore::clientCourses(demo.db(), c);
    if (!courses)
        return courses.message();
    KlientsStore store(demo.scratch->db());
    if (auto refusal = store.fillWorkingList(courses.value()))
        return *refusal;
    const Checked<StatementTotals> totals = store.fillPrintCopy(books);
    if (!totals)
        return totals.message();
    const Checked<RowSet> copy = store.printCopy();
    if (!copy)
        return copy.message();
    return ReportKlientS(copy.value(), totals.value(), demo.client, period, demo.firm);
}

Checked<Report> paySheet(Demo &demo)
{
    const Checked<PaySheet> sheet = BuildDriverPaySheet(conditions(demo), demo.db(), books);
    if (!sheet)
        return sheet.message();
    const Checked<RowSet> rows = writeTempZaplata(*demo.scratch, sheet.value());
    if (!rows)
        return rows.message();
    return ReportZaplata(sheet.value(), rows.value(), demo.firm, demoToday);
}

Checked<ScratchStatement> driverStatement(Demo &demo, bool paid)
{
    PaymentStore store(demo.db());
    const Checked<RowSet> courses = store.courses(demo.driverKod, period, paid, true);
    if (!courses)
        return courses.message();
    QList<int> rows;
    for (int row = 0; row < courses.value().rowCount(); ++row)
        rows.append(row);
    return writeTempPlaten(*demo.scratch, courses.value(), rows, 2, {books, {}, false});
}

Checked<Report> paidCourses(Demo &demo)
{
    PaymentStore store(demo.db());
    const Checked<DriverPapers> papers = store.driverPapers(demo.driverKod);
    if (!papers)
        return papers.message();
    const Checked<ScratchStatement> statement = driverStatement(demo, true);
    if (!statement)
        return statement.message();
    return ReportPlaten(demo.driverName, papers.value(), period, statement.value(), demo.firm, demoToday);
}

Checked<Report> courseList(Demo &demo, bool paid)
{
    const Checked<ScratchStatement> statement = driverStatement(demo, paid);
    if (!statement)
        return statement.message();
    return ReportNePlaten(paid, demo.driverName, period, statement.value(), demo.firm);
}

Checked<Report> truckBalance(Demo &demo, BalansMode mode)
{
    const Checked<QList<TruckBalance>> balances = BalansStore(demo.db()).balances(mode, period, books.changeover);
    if (!balances)
        return balances.message();
    if (auto refusal = demo.scratch->RebuildScratchTable(QStringLiteral("TempBalans")))
        return *refusal;
    const Currency currency = balansCurrency(period, books.changeover);
    if (auto refusal = BalansStore::writeScratch(demo.scratch->db(), mode, balances.value(), currency))
        return *refusal;
    const Checked<RowSet> rows = BalansStore::readScratch(demo.scratch->db());
    if (!rows)
        return rows.message();
    return ReportBalans(mode, rows.value(), period, balansTotal(balances.value()), demo.firm, books.changeover);
}

Checked<Report> truckFuel(Demo &demo)
{
    const Checked<RowSet> waybills = BalansStore(demo.db()).waybills(demo.truck, period);
    if (!waybills)
        return waybills.message();
    return ReportKolaN(demo.truck, waybills.value(), period, demo.firm);
}

Checked<Report> attestation(Demo &demo, AttestationForm form, AttestationReason reason)
{
    AttestationSheet sheet;
    sheet.form = form;
    sheet.driverName = demo.driverName;
    sheet.birthDate = QStringLiteral("02.01.1975");
    sheet.card = QStringLiteral("612345678");
    sheet.periodFrom = QStringLiteral("01.03.2026");
    sheet.periodTo = QStringLiteral("15.03.2026");
    sheet.startedOn = QStringLiteral("01.06.2019");
    sheet.reason = reason;
    return ReportDAI(sheet, demo.firm, demoToday);
}

Checked<Report> dueDocuments(Demo &demo)
{
    const Checked<RowSet> rows = documents::DocumentStore(demo.db()).dueList(demoToday);
    if (!rows)
        return rows.message();
    return documents::dueDocumentsReport(rows.value(), demo.firm, demoToday);
}

Checked<Report> stockPositionPaper(Demo &demo)
{
    const Checked<StockList> list = stockPosition(demo.db(), QString(), books);
    if (!list)
        return list.message();
    return ReportNalich(list.value(), demo.firm, demoToday);
}

Checked<Report> stockAuditPaper(Demo &demo)
{
    const Checked<StockList> list = stockAudit(demo.db(), period, books);
    if (!list)
        return list.message();
    return ReportSklad(list.value(), demo.firm, demoToday);
}

Checked<Report> stockMovementsPaper(Demo &demo, bool receipts)
{
    return SkladReport(receipts, conditions(demo), demo.db(), demo.firm, books);
}

Checked<Report> waybillsPaper(Demo &demo, bool allOfThem)
{
    if (auto refusal = demo.scratch->RebuildScratchTable(QStringLiteral("TempRowdList")))
        return *refusal;
    SearchConditions c = conditions(demo);
    if (allOfThem)
        c.SeekKola = allTrucks();
    return RowdReport(c, demo.db(), *demo.scratch, demo.firm);
}

const std::map<QString, Paper> &papers()
{
    static const std::map<QString, Paper> all = {
        {QStringLiteral("rptKola"), [](Demo &d) { return ReportKola(conditions(d), d.db(), d.firm, books); }},
        {QStringLiteral("rptAll"), [](Demo &d) { return allCourses(d, QStringLiteral("All")); }},
        {QStringLiteral("rptAll-invoiced"), [](Demo &d) { return allCourses(d, QStringLiteral("Yes")); }},
        {QStringLiteral("rptAll-not-invoiced"), [](Demo &d) { return allCourses(d, QStringLiteral("No")); }},
        {QStringLiteral("rptKlient"), [](Demo &d) { return ReportKlient(conditions(d), d.db(), d.firm, books); }},
        {QStringLiteral("rptDriver"), [](Demo &d) { return ReportDriver(conditions(d), d.db(), d.firm, books); }},
        {QStringLiteral("rptFaktura-new"), [](Demo &d) { return invoiceStatement(d, FakturaMode::FaktNew); }},
        {QStringLiteral("rptFaktura-issued"), [](Demo &d) { return invoiceStatement(d, FakturaMode::EditFakt); }},
        {QStringLiteral("rptKlientS"), clientStatement},
        {QStringLiteral("rptZaplata"), paySheet},
        {QStringLiteral("rptPlaten"), paidCourses},
        {QStringLiteral("rptNePlaten-unpaid"), [](Demo &d) { return courseList(d, false); }},
        {QStringLiteral("rptNePlaten-paid"), [](Demo &d) { return courseList(d, true); }},
        {QStringLiteral("rptBalans-profit"), [](Demo &d) { return truckBalance(d, BalansMode::Profit); }},
        {QStringLiteral("rptBalans-fuel"), [](Demo &d) { return truckBalance(d, BalansMode::Fuel); }},
        {QStringLiteral("rptKolaN"), truckFuel},
        {QStringLiteral("rptDAI"),
         [](Demo &d) { return attestation(d, AttestationForm::Decision2007, AttestationReason::AnnualLeave); }},
        {QStringLiteral("rptDAI2009"),
         [](Demo &d) { return attestation(d, AttestationForm::Decision2009, AttestationReason::OtherWork); }},
        {QStringLiteral("rptDokumenti"), dueDocuments},
        {QStringLiteral("rptNalich"), stockPositionPaper},
        {QStringLiteral("rptSklad"), stockAuditPaper},
        {QStringLiteral("rptSkladPR-receipts"), [](Demo &d) { return stockMovementsPaper(d, true); }},
        {QStringLiteral("rptSkladPR-issues"), [](Demo &d) { return stockMovementsPaper(d, false); }},
        {QStringLiteral("rptRowdList"), [](Demo &d) { return waybillsPaper(d, false); }},
        {QStringLiteral("rptRowdList-all"), [](Demo &d) { return waybillsPaper(d, true); }},
    };
    return all;
}

// The paper as a reader sees it: the window's title, the name a copy is saved under, every page's
// lines, its cells' colours and its fonts.
QString paperText(const Report &report)
{
    const LaidOutReport laidOut = layoutReport(report);
    QStringList lines = {QStringLiteral("Прозорец: ") + laidOut.windowCaption,
                         QStringLiteral("Файл: ") + laidOut.suggestedFileName};
    for (int page = 0; page < laidOut.pageCount(); ++page) {
        lines.append(QStringLiteral("--- страница %1").arg(page + 1));
        lines.append(laidOut.textLines(page));
        // What the lines do not tell: the cells' colours and the texts' fonts, counted.
        std::map<QString, int> fills, fonts;
        for (const ReportPrimitive &p : laidOut.pages.at(page).primitives) {
            if (p.kind == ReportPrimitive::Kind::Fill)
                ++fills[QString::number(p.color, 16)];
            if (p.kind == ReportPrimitive::Kind::Text && !p.text.isEmpty()) {
                const ReportFont &font = laidOut.fonts.at(p.font);
                ++fonts[QString::number(font.size) + (font.bold ? QStringLiteral(" получер") : QString())
                        + (font.italic ? QStringLiteral(" курсив") : QString())];
            }
        }
        QStringList counted;
        for (const auto &[colour, count] : fills)
            counted.append(QStringLiteral("%1×%2").arg(colour).arg(count));
        lines.append(QStringLiteral("Заливки: ") + counted.join(QStringLiteral(", ")));
        counted.clear();
        for (const auto &[font, count] : fonts)
            counted.append(QStringLiteral("%1×%2").arg(font).arg(count));
        lines.append(QStringLiteral("Шрифтове: ") + counted.join(QStringLiteral(", ")));
    }
    QString text = lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
    text.replace(QStringLiteral("Зарек ") + version::text(), QStringLiteral("Зарек <версия>"));
    text.replace(QStringLiteral("Зарек ") + version::majorMinor(), QStringLiteral("Зарек <версия>"));
    return text;
}

QString expectedPath(const QString &paper)
{
    return QStringLiteral(ZAREK_PAPERS_DIR "/%1.txt").arg(paper);
}

}

class PapersTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void cleanupTestCase() { m_demos.clear(); }

    void eachPaperReadsAsBefore_data()
    {
        QTest::addColumn<QString>("paper");
        for (const auto &[name, fill] : papers())
            QTest::newRow(qPrintable(name)) << name;
    }

    void eachPaperReadsAsBefore()
    {
        QFETCH_GLOBAL(QString, engine);
        QFETCH(QString, paper);
        ScopedCommandDay day(books);
        Demo *demo = demoOf(engine);
        if (!demo)
            QSKIP(qPrintable(m_skipReason));
        const Checked<Report> report = papers().at(paper)(*demo);
        QVERIFY2(report.ok(), report.ok() ? "" : qPrintable(report.message().text));
        const QString text = paperText(report.value());
        QFile file(expectedPath(paper));
        if (qEnvironmentVariableIsSet("ZAREK_WRITE_PAPERS")) {
            QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
            file.write(text.toUtf8());
            return;
        }
        QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.fileName()));
        const QStringList expected = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
        const QStringList actual = text.split(QLatin1Char('\n'));
        for (int i = 0; i < qMin(expected.size(), actual.size()); ++i)
            QCOMPARE(actual.at(i), expected.at(i));
        QCOMPARE(actual.size(), expected.size());
    }

private:
    // One demo firm per engine, made at its first use.
    Demo *demoOf(const QString &engine)
    {
        auto found = m_demos.find(engine);
        if (found != m_demos.end())
            return found->second.get();
        auto demo = std::make_unique<Demo>();
        demo->database = std::make_unique<test::ScratchDatabase>(engine);
        if (!demo->database->isReady()) {
            m_skipReason = demo->database->skipReason();
            return nullptr;
        }
        QSqlDatabase db = demo->db();
        DemoOptions options;
        options.courses = 400;
        options.today = demoToday;
        const Checked<DemoSummary> summary = fillDemoDatabase(db, options);
        if (!summary) {
            qWarning() << summary.message().text;
            return nullptr;
        }
        if (const std::optional<FirmRow> firm = readFirmRow(db))
            demo->firm = firm->profile;
        demo->scratch = std::make_unique<zarek::ScratchDatabase>(demo->folder.path());
        // The truck, client and driver with the most courses in the period.
        const QString busiest = QStringLiteral(" FROM tabl WHERE data BETWEEN '2025-11-01' AND '2026-02-28' GROUP BY %1 "
                                               "ORDER BY COUNT(*) DESC, %1 LIMIT 1");
        demo->truck = demo->first(QStringLiteral("SELECT kola") + busiest.arg(QStringLiteral("kola")));
        demo->client = demo->first(QStringLiteral("SELECT Klient") + busiest.arg(QStringLiteral("Klient")));
        demo->driverKod = demo->first(QStringLiteral("SELECT kod") + busiest.arg(QStringLiteral("kod")));
        demo->driverName = demo->first(QStringLiteral("SELECT ime FROM shof WHERE kod = '") + demo->driverKod
                                       + QStringLiteral("'"));
        Demo *made = demo.get();
        m_demos.emplace(engine, std::move(demo));
        return made;
    }

    std::map<QString, std::unique_ptr<Demo>> m_demos;
    QString m_skipReason;
};

QTEST_MAIN(PapersTest)
#include "tst_papers.moc"
