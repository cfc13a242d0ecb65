#include "forms/commandday.h"
#include "core/currency.h"
#include "core/docnumber.h"
#include "courses/coursejournalstore.h"
#include "courses/coursereports.h"
#include "data/changeoverstore.h"
#include "data/scratchdatabase.h"
#include "fleet/balansstore.h"
#include "forms/messageservice.h"
#include "invoicing/diafakt.h"
#include "invoicing/faktura.h"
#include "invoicing/invoicingfixture.h"
#include "invoicing/invoicingscreens.h"
#include "reports/reportlayout.h"
#include "reports/reportpreview.h"
#include "settlement/klientsreport.h"
#include "settlement/klientsstore.h"
#include "settlement/paysheetstore.h"
#include "settlement/plashtane.h"
#include "settlement/scratchsheets.h"
#include "settlement/settlementreports.h"
#include "screendriver.h"
#include "examplefirm.h"
#include "laidoutpapers.h"
#include "testdatabase.h"
#include "warehouse/stocklists.h"

#include <QLabel>
#include <QTemporaryDir>

using namespace zarek;
using namespace zarek::test;

// Papers and screens of periods that cross the changeover on 01.01.2026: each row in the
// currency of its day with its unit, the totals in euro, and the note under them. A period that
// stays in 2025 reads exactly as it did.
namespace {

const QDate euroDay(2026, 1, 1);
const QString note = QStringLiteral("Сумите преди 01.01.2026 са преизчислени по курс 1,95583 лв. за 1 евро.");
const QString truck = QStringLiteral("СА 1234 ВК");
const Period winter{QDate(2025, 12, 1), QDate(2026, 1, 31)};
const Period december{QDate(2025, 12, 1), QDate(2025, 12, 31)};

// A course of the last day in leva and one of the first day in euro, both of Д'Аргос.
void fillTwoCourses(QSqlDatabase db)
{
    insertCourse(db, {QDate(2025, 12, 31), dargos, QStringLiteral("София - Перник"), QStringLiteral("Пясък"), truck, 40,
                      10, 0.25, 100.0});
    insertCourse(db, {QDate(2026, 1, 1), dargos, QStringLiteral("Перник - София"), QStringLiteral("Пясък"), truck, 40,
                      10, 0.15, 60.0});
}

QStringList textOf(const Checked<Report> &report)
{
    return test::laidOut(report).textLines();
}

int lineWith(const QStringList &lines, const QString &part)
{
    for (int i = 0; i < lines.size(); ++i) {
        if (lines.at(i).contains(part))
            return i;
    }
    return -1;
}

bool containsLine(const QStringList &lines, const QString &part)
{
    return lineWith(lines, part) >= 0;
}

// The note stands under the line of the totals.
bool noteUnder(const QStringList &lines, const QString &total)
{
    const int at = lineWith(lines, total);
    return at >= 0 && lines.indexOf(note) > at;
}

struct Scratch {
    QTemporaryDir folder;
    zarek::ScratchDatabase db{folder.path()};
};

}

// A fresh database of the current engine with the two courses of Д'Аргос (31.12.2025 in leva,
// 01.01.2026 in euro), the books past the changeover, and a search for the client in the period.
#define DARGOS_ACROSS_THE_CHANGEOVER(searchPeriod)                        \
    ZAREK_SCRATCH_DB(scratch);                                           \
    fillTwoCourses(scratch.db());                                        \
    ScopedCommandDay books({Changeover{euroDay}, QDate::currentDate()}); \
    SearchConditions conditions;                                         \
    conditions.SeekKlient = dargos;                                      \
    conditions.period = searchPeriod

// A fresh database of the current engine (db) with Иван Петров's two courses of Д'Аргос, 450 km on
// 30.12.2025 and 300 km on 05.01.2026, of the tonnes and gross given, his truck paying him the
// percent given; the books past the changeover, and a search for him over the winter.
#define DRIVER_ACROSS_THE_CHANGEOVER(percent, ton, decemberBruto, januaryBruto)                                          \
    ZAREK_SCRATCH_DB_AS(scratch, db);                                                                                    \
    QVERIFY(scratch.exec(QStringLiteral("INSERT INTO shof (kod, ime, EGN, LKarta) VALUES ('007', 'Иван Петров', "        \
                                        "'7501010000', '612345678')")));                                                 \
    QVERIFY(test::execBound(db, QStringLiteral("INSERT INTO Config (kola, Razhod, Procent, Ton) VALUES (?, 30, ?, 20)"), \
                            {truck, percent}));                                                                          \
    insertCourse(db, {QDate(2025, 12, 30), dargos, QStringLiteral("София - Варна"), QStringLiteral("Пясък"), truck,      \
                      450, ton, 1.0, decemberBruto});                                                                    \
    insertCourse(db, {QDate(2026, 1, 5), dargos, QStringLiteral("Варна - София"), QStringLiteral("Пясък"), truck,        \
                      300, ton, 0.1, januaryBruto});                                                                     \
    ScopedCommandDay books({Changeover{euroDay}, QDate::currentDate()});                                                 \
    SearchConditions conditions;                                                                                         \
    conditions.SeekDriverKod = QStringLiteral("007");                                                                    \
    conditions.SeekDriverIme = QStringLiteral("Иван Петров");                                                            \
    conditions.period = winter

class EuroPapersTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { addEngineRows(); }

    // The client's report, the client's statement and the course journal across the changeover:
    // each row in the currency of its day with its unit, the totals in euro; a report of 2025
    // alone reads as it did.
    void theClientsPapersAndTheJournalAddTheirSumsInEuro()
    {
        DARGOS_ACROSS_THE_CHANGEOVER(winter);
        const QStringList lines = textOf(ReportKlient(conditions, scratch.db(), pernikFirm(), commandDay()));
        QVERIFY2(containsLine(lines, QStringLiteral("31.12.2025 | СА 1234 ВК | 10,000 | 40 | 100,00 лв.")),
                 qPrintable(lines.join('\n')));
        QVERIFY(containsLine(lines, QStringLiteral("01.01.2026 | СА 1234 ВК | 10,000 | 40 | 60,00 евро")));
        // 100 лв. are 51,13 €: with the 60 € of January, 111,13 €.
        QVERIFY2(containsLine(lines, QStringLiteral("Всичко | 20,000 | 80 | 111,13 евро")), qPrintable(lines.join('\n')));
        QVERIFY(noteUnder(lines, QStringLiteral("111,13 евро")));

        Scratch paper;
        QVERIFY(!paper.db.RebuildScratchTable(QStringLiteral("TempKlients")));
        KlientsStore store(paper.db.db());
        QVERIFY(!store.fillWorkingList(KlientsStore::clientCourses(scratch.db(), conditions).value(), {}));
        const Checked<StatementTotals> totals = store.fillPrintCopy(commandDay());
        QVERIFY(totals.ok());
        QCOMPARE(totals.value().currency, Currency::Euro);
        QVERIFY(totals.value().mixed);
        QCOMPARE(totals.value().gross, Money::fromCents(11113));
        const QStringList statement =
            textOf(ReportKlientS(store.printCopy().value(), totals.value(), dargos, winter, pernikFirm()));
        QVERIFY2(containsLine(statement, QStringLiteral("100,00 лв.")), qPrintable(statement.join('\n')));
        QVERIFY(containsLine(statement, QStringLiteral("60,00 евро")));
        QVERIFY(containsLine(statement, QStringLiteral("111,13 евро")));
        QVERIFY(noteUnder(statement, QStringLiteral("111,13 евро")));

        CourseJournalStore journal(scratch.db());
        QVERIFY(!journal.refreshLists());
        JournalFilter filter;
        filter.from = winter.from;
        filter.to = winter.to;
        const Checked<JournalSummary> summary = journal.summary(filter, commandDay().changeover);
        QVERIFY(summary.ok());
        QCOMPARE(summary.value().totals.currency, Currency::Euro);
        QVERIFY(summary.value().totals.converted);
        QCOMPARE(summary.value().totals.gross, 111.13);
        QCOMPARE(summary.value().months.size(), 2);
        QCOMPARE(summary.value().months.at(0).second, 51.13);

        // A report of leva days alone reads as it did.
        conditions.period = december;
        const QStringList leva = textOf(ReportKlient(conditions, scratch.db(), pernikFirm(), commandDay()));
        QVERIFY2(containsLine(leva, QStringLiteral("31.12.2025 | СА 1234 ВК | 10,000 | 40 | 100,00 | ")),
                 qPrintable(leva.join('\n')));
        QVERIFY(!containsLine(leva, QStringLiteral("лв.")));
        QVERIFY(!containsLine(leva, QStringLiteral("евро")));
        QVERIFY(!leva.contains(note));
    }

    // Pay earned in leva and paid in euro: the driver's leva once, rounded up (900 лв. -> 460,17 €).
    // The truck's balance of the period is in euro too.
    void aPaySheetAndATruckBalanceAcrossTheChangeoverAreInEuro()
    {
        DRIVER_ACROSS_THE_CHANGEOVER(10, 20, 9000.0, 600.0);
        const QDate payday(2026, 1, 20);
        const Checked<PaySheet> sheet = BuildDriverPaySheet(conditions, db, {commandDay().changeover, payday});
        QVERIFY(sheet.ok());
        QCOMPARE(sheet.value().currency, Currency::Euro);
        QVERIFY(sheet.value().mixed());
        QCOMPARE(sheet.value().printedTotal(), Money::fromCents(52017));  // 60,00 + 460,17
        Scratch paper;
        const Checked<RowSet> rows = writeTempZaplata(paper.db, sheet.value());
        const QStringList lines = textOf(ReportZaplata(sheet.value(), rows.value(), pernikFirm(), payday));
        QVERIFY2(containsLine(lines, QStringLiteral("9000,00 лв. | 900,00 лв.")), qPrintable(lines.join('\n')));
        QVERIFY(containsLine(lines, QStringLiteral("600,00 евро | 60,00 евро")));
        QVERIFY(lines.contains(QStringLiteral("Всичко заработка: 520,17 евро")));
        QVERIFY(containsLine(lines, QStringLiteral("получих сумата от 520,17 евро за извършените от мен курсове")));
        QVERIFY(noteUnder(lines, QStringLiteral("Всичко заработка: 520,17 евро")));

        // Paid before the changeover, the December course alone is leva through and through.
        conditions.period = december;
        const Checked<PaySheet> old = BuildDriverPaySheet(conditions, db, {commandDay().changeover, QDate(2025, 12, 31)});
        QCOMPARE(old.value().currency, Currency::Leva);
        QVERIFY(!old.value().mixed());
        const QStringList oldLines =
            textOf(ReportZaplata(old.value(), writeTempZaplata(paper.db, old.value()).value(), pernikFirm(), QDate(2025, 12, 31)));
        QVERIFY(oldLines.contains(QStringLiteral("Всичко заработка: 900,00 лв.")));
        QVERIFY(containsLine(oldLines, QStringLiteral("получих сумата от 900,00 лв. за извършените")));
        QVERIFY(!containsLine(oldLines, QStringLiteral("евро")));

        // The truck's balance converts the leva of its period the same way.
        QVERIFY(scratch.exec(QStringLiteral("INSERT INTO Sklad (Data, DocVid, Name, Kol, Edin, Suma, VidKol, Lipsa) "
                                            "VALUES ('2026-01-06', 'СА 1234 ВК', 'Ремонт', 1, 100, 100, 'R', TRUE)")));
        const Checked<QList<TruckBalance>> balances = BalansStore(db).balances(BalansMode::Profit, winter, commandDay().changeover);
        QVERIFY(balances.ok());
        QCOMPARE(balances.value().size(), 1);
        QCOMPARE(balances.value().first().prihod, qint64(520163));  // 600 € and 9000 лв. = 4601,63 €
        QCOMPARE(balances.value().first().razhod, qint64(10000));
        QCOMPARE(balansCurrency(winter, commandDay().changeover), Currency::Euro);
        QVERIFY(balansConverted(winter, commandDay().changeover));
        QCOMPARE(balansFigure(BalansMode::Profit, balances.value().first().ostatak(), Currency::Euro),
                 QStringLiteral("5101,63 евро"));
        // December alone is a leva balance.
        QCOMPARE(BalansStore(db).balances(BalansMode::Profit, december, commandDay().changeover).value().first().prihod, qint64(900000));
        QCOMPARE(balansCurrency(december, commandDay().changeover), Currency::Leva);
    }

    // The payment screen pays today: leva and euro courses marked total in euro by the wages rule.
    void thePaymentScreenTotalsMarkedLevaAndEuroInEuro()
    {
        // The whole gross is the driver's here, so his pay is the courses' own sums.
        DRIVER_ACROSS_THE_CHANGEOVER(100, 2, 900.0, 60.0);
        RecordingMessageService messages;
        Scratch paper;
        Plashtane screen(conditions, db, paper.db, pernikFirm(), nullptr, QDate(2026, 1, 20));
        test::showExposed(screen);
        QCOMPARE(screen.model()->index(0, 7).data().toString(), QStringLiteral("900,00 лв."));
        QCOMPARE(screen.model()->index(1, 7).data().toString(), QStringLiteral("60,00 евро"));
        auto *noteLabel = screen.findChild<QLabel *>(QStringLiteral("lblCurrencyNote"));
        QVERIFY(noteLabel->isVisible());
        QCOMPARE(noteLabel->text(), note);
        const auto sum = [&screen] { return screen.findChild<QLabel *>(QStringLiteral("Label4"))->text(); };
        mark(screen, {0, 1});
        QCOMPARE(sum(), QStringLiteral("520,17 евро"));
        // A mark taken back takes back exactly what it added.
        mark(screen, {0});
        QCOMPARE(sum(), QStringLiteral("60,00 евро"));
        mark(screen, {0});
        QCOMPARE(sum(), QStringLiteral("520,17 евро"));
        QStringList lines;
        test::onNextModal<ReportPreview>([&lines](ReportPreview &preview) {
            lines = preview.report().textLines();
            preview.reject();
        });
        screen.printButton()->click();
        QVERIFY(lines.contains(QStringLiteral("Всичко заработка: 520,17 евро")));
        QVERIFY(containsLine(lines, QStringLiteral("получих сумата от 520,17 евро")));
        QVERIFY(noteUnder(lines, QStringLiteral("Всичко заработка: 520,17 евро")));
    }

    // A new invoice printed after the changeover is in euro, and is kept as a euro invoice; an
    // invoice issued in leva keeps its leva statement in EditFakt.
    void anInvoiceIssuedAfterTheChangeoverIsInEuroAndALevaInvoiceStaysInLeva()
    {
        ZAREK_SCRATCH_DB_AS(scratch, db);
        insertCourse(db, {QDate(2025, 12, 31), dargos, QStringLiteral("София - Перник")});  // 31,25 лв.
        insertCourse(db, {QDate(2026, 1, 2), dargos, QStringLiteral("Перник - София"), QStringLiteral("Пясък"), truck,
                          25, 10, 0.06391149, 15.98});
        insertCourse(db, {QDate(2025, 11, 3), dargos, QStringLiteral("София - Перник"), QStringLiteral("Пясък"), truck,
                          25, 10, 0.125, 31.25, true, QStringLiteral("0000000120")});
        insertCourse(db, {QDate(2025, 11, 4), dargos, QStringLiteral("Перник - София"), QStringLiteral("Пясък"), truck,
                          25, 10, 0.125, 31.25, true, QStringLiteral("0000000120")});
        ScopedCommandDay books({Changeover{euroDay}, QDate::currentDate()});
        RecordingMessageService messages;
        Scratch paper;
        paper.db.RebuildScratchTable(QStringLiteral("TempPlaten"));
        const QDateTime issued(QDate(2026, 1, 20), QTime(11, 0));

        SearchConditions conditions;
        conditions.SeekKlient = dargos;
        conditions.period = winter;
        QStringList statement;
        {
            Faktura screen(FakturaMode::FaktNew, conditions, db, paper.db.db(), pernikFirm());
            screen.clock = [issued] { return issued; };
            screen.showStatement = [&](const Report &report) { statement = layoutReport(report).textLines(); };
            test::showExposed(screen);
            mark(screen, {0, 1});
            QCOMPARE(screen.findChild<QLabel *>(QStringLiteral("Label4"))->text(), QStringLiteral("31,96 евро"));
            test::onNextModal<DiaFakt>([](DiaFakt &dialog) {
                dialog.combo()->setEditText(QStringLiteral("121"));
                dialog.okButton()->click();
            });
            screen.chooseNumber();
            QCOMPARE(screen.NomFakt(), QStringLiteral("0000000121"));
            screen.print();
            screen.close();
        }
        QVERIFY2(statement.contains(QStringLiteral("Сума без ДДС: 31,96 евро")), qPrintable(statement.join('\n')));
        QVERIFY(statement.contains(QStringLiteral("         ДДС: 6,39 евро")));
        QVERIFY(statement.contains(QStringLiteral("      Всичко: 38,35 евро")));
        QVERIFY(containsLine(statement, QStringLiteral("31,25 лв.")));
        QVERIFY(containsLine(statement, QStringLiteral("15,98 евро")));
        QVERIFY(noteUnder(statement, QStringLiteral("Всичко: 38,35 евро")));
        QVERIFY(isEuroInvoice(db, QStringLiteral("0000000121")).value());
        QVERIFY(!isEuroInvoice(db, QStringLiteral("0000000120")).value());

        // Corrected in 2026, the November invoice stays the leva paper it was.
        SearchConditions edit;
        edit.SeekNomFakt = QStringLiteral("0000000120");
        {
            Faktura screen(FakturaMode::EditFakt, edit, db, paper.db.db(), pernikFirm());
            screen.clock = [issued] { return issued; };
            screen.showStatement = [&](const Report &report) { statement = layoutReport(report).textLines(); };
            screen.print();
            QVERIFY(!screen.findChild<QLabel *>(QStringLiteral("lblCurrencyNote"))->isVisibleTo(&screen));
        }
        QVERIFY2(statement.contains(QStringLiteral("Сума без ДДС: 62,50 лв.")), qPrintable(statement.join('\n')));
        QVERIFY(!containsLine(statement, QStringLiteral("евро")));
        // And the January invoice stays in euro.
        edit.SeekNomFakt = QStringLiteral("0000000121");
        {
            Faktura screen(FakturaMode::EditFakt, edit, db, paper.db.db(), pernikFirm());
            screen.showStatement = [&](const Report &report) { statement = layoutReport(report).textLines(); };
            screen.print();
        }
        QVERIFY(statement.contains(QStringLiteral("Сума без ДДС: 31,96 евро")));
    }

    void theReceiptsListShowsEachReceiptsUnitAndAConvertedTotal()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(scratch.exec(QStringLiteral("INSERT INTO Sklad (Data, DocVid, DocNom, Name, Kol, Edin, Suma, VidKol, Ostat, "
                                            "Lipsa) VALUES ('2025-12-10', 'Фактура', '11', 'Масло', 10, 3, 30, 'P', 10, FALSE)")));
        QVERIFY(scratch.exec(QStringLiteral("INSERT INTO Sklad (Data, DocVid, DocNom, Name, Kol, Edin, Suma, VidKol, Ostat, "
                                            "Lipsa) VALUES ('2026-01-10', 'Фактура', '12', 'Масло', 10, 1.6, 16, 'P', 10, FALSE)")));
        ScopedCommandDay books({Changeover{euroDay}, QDate::currentDate()});
        const Checked<StockList> list = stockMovements(scratch.db(), true, winter, {}, {}, commandDay());
        QVERIFY(list.ok());
        QCOMPARE(list.value().rows.value(0, QStringLiteral("Suma")).toString(), QStringLiteral("30,00 лв."));
        QCOMPARE(list.value().rows.value(1, QStringLiteral("Edin")).toString(), QStringLiteral("1,60 евро"));
        QCOMPARE(list.value().total, Money::fromCents(3134));  // 15,34 € and 16,00 €
        const QStringList lines = textOf(ReportSkladPR(list.value(), true, winter, pernikFirm()));
        QVERIFY(lines.contains(QStringLiteral("Обща сума на приходите: 31,34 евро")));
        QVERIFY(noteUnder(lines, QStringLiteral("Обща сума на приходите: 31,34 евро")));
    }

    // With ZAREK_SCREENSHOT_DIR set, saves the papers across the changeover as PDF and the payment
    // screen as a picture.
    void screenshots()
    {
        ZAREK_SCREENSHOT_DIR(dir);
        ZAREK_ONLY_ON("sqlite", "one set of papers is enough");
        ZAREK_SCRATCH_DB_AS(scratch, db);
        QVERIFY(scratch.exec(QStringLiteral("INSERT INTO shof (kod, ime, EGN, LKarta) VALUES ('007', 'Иван Петров', "
                                            "'7501010000', '612345678')")));
        QVERIFY(scratch.exec(QStringLiteral("INSERT INTO Config (kola, Razhod, Procent, Ton) VALUES ('СА 1234 ВК', 30, 12, 20)")));
        const QList<CourseRow> rows = {
            {QDate(2025, 12, 15), dargos, QStringLiteral("София - Перник"), QStringLiteral("Пясък"), truck, 40, 18, 0.18, 129.60},
            {QDate(2025, 12, 29), dargos, QStringLiteral("Перник - Радомир"), QStringLiteral("Чакъл"), truck, 25, 20, 0.25, 125.00},
            {QDate(2025, 12, 31), dargos, QStringLiteral("София - Пловдив"), QStringLiteral("Цимент"), truck, 150, 20, 0.12, 360.00},
            {QDate(2026, 1, 2), dargos, QStringLiteral("Пловдив - София"), QStringLiteral("Цимент"), truck, 150, 20, 0.06135503, 184.07},
            {QDate(2026, 1, 9), dargos, QStringLiteral("София - Перник"), QStringLiteral("Пясък"), truck, 40, 18, 0.09203257, 66.26},
        };
        for (const CourseRow &row : rows)
            insertCourse(db, row);
        ScopedCommandDay books({Changeover{euroDay}, QDate::currentDate()});
        const auto savePdf = [&dir](const Checked<Report> &report, const QString &name) {
            QVERIFY(report.ok());
            ReportPreview preview(layoutReport(report.value()));
            QVERIFY(preview.exportPdfTo(dir + QLatin1Char('/') + name));
        };
        SearchConditions conditions;
        conditions.SeekKlient = dargos;
        conditions.SeekDriverKod = QStringLiteral("007");
        conditions.SeekDriverIme = QStringLiteral("Иван Петров");
        conditions.period = winter;
        savePdf(ReportKlient(conditions, db, pernikFirm(), commandDay()), QStringLiteral("euro-client-report.pdf"));
        const Checked<PaySheet> sheet = BuildDriverPaySheet(conditions, db, {commandDay().changeover, QDate(2026, 1, 20)});
        QVERIFY(sheet.ok());
        Scratch paper;
        savePdf(ReportZaplata(sheet.value(), writeTempZaplata(paper.db, sheet.value()).value(), pernikFirm(), QDate(2026, 1, 20)),
                QStringLiteral("euro-pay-sheet.pdf"));
        // The statement of a January invoice of January courses: a euro paper through and through.
        QVERIFY(paper.db.RebuildScratchTable(QStringLiteral("TempPlaten")) == std::nullopt);
        RecordingMessageService messages;
        SearchConditions january = conditions;
        january.period = {QDate(2026, 1, 1), QDate(2026, 1, 31)};
        {
            Faktura screen(FakturaMode::FaktNew, january, db, paper.db.db(), pernikFirm());
            screen.clock = [] { return QDateTime(QDate(2026, 1, 31), QTime(12, 0)); };
            screen.showStatement = [&](const Report &report) {
                ReportPreview preview(layoutReport(report));
                QVERIFY(preview.exportPdfTo(dir + QStringLiteral("/euro-invoice-statement.pdf")));
            };
            for (int row = 0; row < screen.model()->rowCount(); ++row)
                screen.model()->setMarked(row, true);
            test::onNextModal<DiaFakt>([](DiaFakt &dialog) {
                dialog.combo()->setEditText(QStringLiteral("130"));
                dialog.okButton()->click();
            });
            screen.chooseNumber();
            screen.print();
        }
        // The payment screen with both currencies marked.
        Plashtane pay(conditions, db, paper.db, pernikFirm(), nullptr, QDate(2026, 1, 20));
        pay.resize(1000, 420);
        test::showExposed(pay);
        mark(pay, {0, 1, 2, 3, 4});
        QVERIFY(pay.grab().save(dir + QStringLiteral("/euro-plashtane.png")));
    }
};

QTEST_MAIN(EuroPapersTest)
#include "tst_europapers.moc"
