#include "app/demodata.h"
#include "app/frmmain.h"
#include "core/formats.h"
#include "core/valueformat.h"
#include "courses/coursereports.h"
#include "courses/coursesfixture.h"
#include "courses/kurs.h"
#include "dashboard/dashboardfigures.h"
#include "dashboard/dashboardreport.h"
#include "dashboard/tablo.h"
#include "documents/documentstore.h"
#include "fleet/balansstore.h"
#include "forms/commandday.h"
#include "forms/messageservice.h"
#include "invoicing/invoicestatement.h"
#include "invoicing/invoicestore.h"
#include "reports/laidoutreport.h"
#include "reports/reportlayout.h"
#include "settlement/paysheetstore.h"
#include "testdatabase.h"

#include <QComboBox>
#include <QGraphicsTextItem>
#include <QGraphicsView>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTreeWidget>

using namespace zarek;
using namespace zarek::dashboard;

namespace {

const QDate demoToday(2026, 11, 22);

BooksDay demoBooks() { return {Changeover{euroAdoptionDate()}, demoToday}; }

// The demo firm, small: four hundred courses over two years before its day.
bool fillDemo(QSqlDatabase db)
{
    DemoOptions options;
    options.courses = 400;
    options.today = demoToday;
    const auto filled = fillDemoDatabase(db, options);
    if (!filled)
        qWarning() << filled.message().text;
    return filled.ok();
}

bool addCourse(QSqlDatabase db, const QDate &day, double bruto, double km = 100, double ton = 10)
{
    test::CourseRow row;
    row.data = day;
    row.bruto = bruto;
    row.km = km;
    row.ton = ton;
    return test::insertCourse(db, row);
}

// The totals line of a course report: tonnes, kilometres and gross, as printed (the gross without its unit).
QStringList reportTotals(const Checked<Report> &report)
{
    if (!report)
        return {report.message().text};
    for (const QString &line : layoutReport(report.value()).textLines()) {
        if (line.startsWith(QStringLiteral("Всичко | "))) {
            QStringList cells = line.split(QStringLiteral(" | ")).mid(1);
            for (QString &cell : cells)
                cell = cell.section(QLatin1Char(' '), 0, 0).remove(QStringLiteral("лв.")).remove(QStringLiteral("евро"));
            return cells;
        }
    }
    return {QStringLiteral("<no totals>")};
}

Checked<Report> allCourses(QSqlDatabase db, const BooksDay &books, const Period &period)
{
    SearchConditions conditions;
    conditions.period = period;
    conditions.SeekChoice = QStringLiteral("All");
    FirmProfile firm;
    firm.UserName = QStringLiteral("Демо");
    return ReportAll(conditions, db, firm, books);
}

QString tilesShown(const Tablo &tablo)
{
    QString shown;
    for (Tile tile : allTiles) {
        if (tablo.isTileAllowed(tile) && !tablo.tileBox(tile)->isHidden())
            shown += QString::number(static_cast<int>(tile) + 1);
    }
    return shown;
}

bool waitLoaded(Tablo &tablo)
{
    QSignalSpy loaded(&tablo, &Tablo::loaded);
    return loaded.wait(30000);
}

}

// A fresh database of the current engine with the demo firm, the books of its day, and its
// dashboard read.
#define DEMO_DASHBOARD(tablo)                                                              \
    ZAREK_SCRATCH_DB(scratch);                                                             \
    QVERIFY(fillDemo(scratch.db()));                                                       \
    ScopedCommandDay books(demoBooks());                                                   \
    Tablo tablo(scratch.db(), [] { return commandDay(); }, [] { return FirmProfile(); }); \
    tablo.refresh();                                                                       \
    QVERIFY(waitLoaded(tablo))

class DashboardTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        FrmMain::setSettingsFile(m_dir.filePath(QStringLiteral("zarek.ini")));
    }

    // A course counts in the month of its date: the last day of a month is in it, the first day of
    // the next is not, and February ends on the 29th in a leap year.
    void aMonthHoldsTheCoursesFromItsFirstToItsLastDay_data()
    {
        QTest::addColumn<QDate>("today");
        QTest::addColumn<QString>("expected");  // courses this month | the one before | a year ago
        QTest::newRow("march") << QDate(2026, 3, 15) << "2|1|1";
        QTest::newRow("first day") << QDate(2026, 3, 1) << "2|1|1";
        QTest::newRow("april") << QDate(2026, 4, 30) << "1|2|0";
        QTest::newRow("leap february") << QDate(2024, 2, 10) << "1|0|0";
        QTest::newRow("january") << QDate(2026, 1, 31) << "0|0|0";
    }
    void aMonthHoldsTheCoursesFromItsFirstToItsLastDay()
    {
        QFETCH(QDate, today);
        QFETCH(QString, expected);
        ZAREK_SCRATCH_DB(scratch);
        for (const QDate day : {QDate(2024, 2, 29), QDate(2025, 3, 31), QDate(2026, 2, 28), QDate(2026, 3, 1),
                                QDate(2026, 3, 31), QDate(2026, 4, 1)})
            QVERIFY(addCourse(scratch.db(), day, 10));
        const auto months = monthComparison(scratch.db(), {Changeover{}, today});
        QVERIFY(months.ok());
        QCOMPARE(QStringLiteral("%1|%2|%3")
                     .arg(months.value().current.courses)
                     .arg(months.value().previous.courses)
                     .arg(months.value().yearAgo.courses),
                 expected);
        QCOMPARE(months.value().current.period, monthOf(today));
    }

    // The month of the changeover: its leva courses are converted one by one into its euro
    // total, exactly as the report of all courses adds them; a month wholly on one side keeps
    // its own currency.
    void theChangeoverMonthTotalsAsTheReportOfAllCourses_data()
    {
        QTest::addColumn<QDate>("changeover");
        QTest::addColumn<QDate>("month");
        QTest::addColumn<QString>("gross");
        QTest::addColumn<bool>("converted");
        QTest::newRow("changed over mid-month") << QDate(2026, 1, 15) << QDate(2026, 1, 1) << "101,15 евро" << true;
        QTest::newRow("changed over on the first") << QDate(2026, 1, 1) << QDate(2026, 1, 1) << "150,03 евро" << false;
        QTest::newRow("the month before") << QDate(2026, 1, 1) << QDate(2025, 12, 1) << "33,33лв." << false;
        QTest::newRow("not changed over") << QDate() << QDate(2026, 1, 1) << "150,03лв." << false;
    }
    void theChangeoverMonthTotalsAsTheReportOfAllCourses()
    {
        QFETCH(QDate, changeover);
        QFETCH(QDate, month);
        QFETCH(QString, gross);
        QFETCH(bool, converted);
        ZAREK_SCRATCH_DB(scratch);
        // In leva before a changeover on the 15th: 50,01 лв. is 25,57 €, 50,00 лв. is 25,56 € and each
        // 0,01 лв. is 0,01 €, each on its own (the leva summed first would give 51,14 €, not 51,15 €).
        for (const auto &[day, bruto] : {std::pair{QDate(2025, 12, 31), 33.33}, {QDate(2026, 1, 10), 50.01},
                                         {QDate(2026, 1, 14), 50.0}, {QDate(2026, 1, 12), 0.01}, {QDate(2026, 1, 13), 0.01},
                                         {QDate(2026, 1, 20), 0.0}, {QDate(2026, 1, 31), 50.0}})
            QVERIFY(addCourse(scratch.db(), day, bruto));
        const BooksDay books{Changeover{changeover}, QDate(2026, 2, 10)};
        const Period period = monthOf(month);
        const auto figures = periodFigures(scratch.db(), books, period);
        QVERIFY(figures.ok());
        QCOMPARE(amountText(figures.value().gross, figures.value().currency), gross);
        QCOMPARE(figures.value().converted, converted);
        const QStringList totals = reportTotals(allCourses(scratch.db(), books, period));
        QCOMPARE(totals.value(2), formatAmount(figures.value().gross));
        QCOMPARE(totals.value(1), formatKm(figures.value().km));
    }

    // Every tile's figure is the figure of the screen or report its Enter opens, for the same
    // client, driver, truck and period, on the demo firm.
    void eachTileEqualsWhatItOpens_data()
    {
        QTest::addColumn<int>("tile");
        QTest::newRow("month against the report of all courses") << static_cast<int>(Tile::Month);
        QTest::newRow("not invoiced against invoicing") << static_cast<int>(Tile::Uninvoiced);
        QTest::newRow("drivers against the pay sheet") << static_cast<int>(Tile::Unpaid);
        QTest::newRow("documents against the due list") << static_cast<int>(Tile::Documents);
        QTest::newRow("profit against the balance") << static_cast<int>(Tile::Profit);
    }
    void eachTileEqualsWhatItOpens()
    {
        QFETCH(int, tile);
        ZAREK_SCRATCH_DB(scratch);
        QSqlDatabase db = scratch.db();
        QVERIFY(fillDemo(db));
        const BooksDay books = demoBooks();
        const TileResult read = readTile(static_cast<Tile>(tile), db, books);
        QVERIFY2(read.figures.has_value(), qPrintable(read.failure));
        switch (static_cast<Tile>(tile)) {
        case Tile::Month: {
            const auto &months = std::get<MonthComparison>(*read.figures);
            QVERIFY(months.current.courses > 0 && months.previous.courses > 0 && months.yearAgo.courses > 0);
            for (const MonthFigures *figures : {&months.current, &months.previous, &months.yearAgo}) {
                const Checked<Report> report = allCourses(db, books, figures->period);
                QVERIFY(report.ok());
                QCOMPARE(report.value().data().rowCount(), figures->courses);
                const QStringList totals = reportTotals(report);
                QCOMPARE(totals.value(1), formatKm(figures->km));
                QCOMPARE(totals.value(2), formatAmount(figures->gross));
            }
            break;
        }
        case Tile::Uninvoiced: {
            const auto &clients = std::get<QList<UninvoicedClient>>(*read.figures);
            QVERIFY(!clients.isEmpty());
            for (int i = 1; i < clients.size(); ++i)
                QVERIFY(clients[i - 1].period.from <= clients[i].period.from);  // oldest first
            for (const UninvoicedClient &client : clients) {
                FakturaSelection selection;
                selection.klient = client.klient;
                selection.period = client.period;
                const Checked<RowSet> rows = InvoiceStore(db).courses(selection);
                QVERIFY(rows.ok());
                QCOMPARE(rows.value().rowCount(), client.courses);
                // Every course marked with Space, as the invoice would take them all.
                RowSet marked = rows.value();
                for (int row = 0; row < marked.rowCount(); ++row)
                    marked.setValue(row, marked.column(QStringLiteral("Fakt")), true);
                const auto lines = invoicing::statementLines(marked, books);
                bool anyEuro = false;
                for (int row = 0; row < rows.value().rowCount(); ++row)
                    anyEuro = anyEuro || books.currencyOn(dateOfValue(rows.value().value(row, QStringLiteral("Data")))) == Currency::Euro;
                const Currency currency = totalsCurrency(anyEuro, books.currencyOn(books.today));
                QCOMPARE(client.currency, currency);
                QCOMPARE(invoicing::statementMoney(lines, std::nullopt, currency).sum, client.gross);
            }
            break;
        }
        case Tile::Unpaid: {
            const auto &drivers = std::get<QList<UnpaidDriver>>(*read.figures);
            QVERIFY(!drivers.isEmpty());
            for (const UnpaidDriver &driver : drivers) {
                SearchConditions conditions;
                conditions.SeekDriverKod = driver.kod;
                conditions.SeekDriverIme = driver.name;
                conditions.period = driver.period;
                const Checked<PaySheet> sheet = BuildDriverPaySheet(conditions, db, books);
                QVERIFY(sheet.ok());
                QCOMPARE(driver.pay, sheet.value().printedTotal());
                QCOMPARE(driver.courses, static_cast<int>(sheet.value().lines.size()));
                QCOMPARE(test::scalar(db, "SELECT COUNT(*) FROM tabl WHERE kod = ? AND plat = ? AND data <= ?",
                                      {driver.kod, false, books.today})
                             .toInt(),
                         driver.courses);
            }
            break;
        }
        case Tile::Documents: {
            const auto &due = std::get<DueDocuments>(*read.figures);
            const auto counted = documents::DocumentStore(db).dueCount(books.today);
            QVERIFY(counted.ok());
            QVERIFY(counted.value().first > 0);
            QCOMPARE(due.count, counted.value().first);
            QCOMPARE(due.expired, counted.value().second);
            QCOMPARE(due.nearest.size(), std::min(5, due.count));
            const auto list = documents::DocumentStore(db).dueList(books.today);
            QCOMPARE(due.nearest.first().id, list.value().value(0, QStringLiteral("id")).toLongLong());
            break;
        }
        case Tile::Profit: {
            const auto &profits = std::get<TruckProfits>(*read.figures);
            QCOMPARE(profits.period, monthOf(books.today));
            const auto balances = BalansStore(db).balances(BalansMode::Profit, profits.period, books.changeover);
            QVERIFY(balances.ok());
            QCOMPARE(profits.trucks.size(), balances.value().size());
            for (int i = 0; i < profits.trucks.size(); ++i) {
                QCOMPARE(profits.trucks[i].kola, balances.value()[i].kola);
                QCOMPARE(profits.trucks[i].profit().cents(), balances.value()[i].ostatak());
            }
            QCOMPARE(profits.currency, Currency::Euro);
            break;
        }
        case Tile::Receivables: break;
        }
    }

    // What clients owe: each invoice and debit note less what settled it, leva documents converted
    // each on its own into today's euro; overdue once the due date has passed (not on the day).
    void receivablesAreWhatIsLeftOfTheInvoices_data()
    {
        QTest::addColumn<QStringList>("documents");  // "client kind currency total due-date settled"
        QTest::addColumn<QString>("expected");        // open | overdue | the largest overdue clients
        QTest::newRow("nothing issued") << QStringList() << "0,00 евро|0,00 евро|";
        QTest::newRow("not yet due") << QStringList{"А F EUR 120000 2026-12-01 0"} << "1200,00 евро|0,00 евро|";
        QTest::newRow("due today is not overdue") << QStringList{"А F EUR 120000 2026-11-22 0"} << "1200,00 евро|0,00 евро|";
        QTest::newRow("partly paid and overdue")
            << QStringList{"А F EUR 120000 2026-11-01 20000"} << "1000,00 евро|1000,00 евро|А 1000,00 евро 01.11.2026";
        QTest::newRow("paid in full drops out") << QStringList{"А F EUR 120000 2026-11-01 120000"} << "0,00 евро|0,00 евро|";
        QTest::newRow("a leva invoice in euro")
            << QStringList{"Б F BGN 195583 2025-12-01 0", "Б D BGN 1 2025-11-01 0"}
            << "1000,01 евро|1000,01 евро|Б 1000,01 евро 01.11.2025";
        QTest::newRow("a credit note is no debt") << QStringList{"В K EUR 5000 2026-11-01 0"} << "0,00 евро|0,00 евро|";
        QTest::newRow("the five largest")
            << QStringList{"А F EUR 100 2026-11-01 0", "Б F EUR 600 2026-11-01 0", "В F EUR 300 2026-11-01 0",
                           "Г F EUR 400 2026-11-01 0", "Д F EUR 500 2026-11-01 0", "Е F EUR 200 2026-11-01 0"}
            << "21,00 евро|21,00 евро|Б 6,00 евро 01.11.2026, Д 5,00 евро 01.11.2026, Г 4,00 евро 01.11.2026, "
               "В 3,00 евро 01.11.2026, Е 2,00 евро 01.11.2026";
    }
    void receivablesAreWhatIsLeftOfTheInvoices()
    {
        QFETCH(QStringList, documents);
        QFETCH(QString, expected);
        ZAREK_SCRATCH_DB(scratch);
        int number = 0;
        for (const QString &document : documents) {
            const QStringList f = document.split(QLatin1Char(' '));
            const qint64 total = f[3].toLongLong();
            const qint64 base = total * 100 / 120;
            const QDate due = QDate::fromString(f[4], Qt::ISODate);
            const QVariant kamId = f[1] == QLatin1String("F") ? QVariant(QMetaType::fromType<qlonglong>()) : QVariant(1);
            QVERIFY(test::insertRow(scratch.db(), QStringLiteral("FaktDok"),
                                    QStringLiteral("Nomer, Vid, Data, DataDan, KamID, Klient, Valuta, DDSProcent, "
                                                   "Osnova, DDS, Obshto, DataPadej"),
                                    {QStringLiteral("%1").arg(++number, 10, 10, QLatin1Char('0')), f[1], due.addDays(-30),
                                     due.addDays(-30), kamId, f[0], f[2], 20, base, total - base, total, due}));
            if (f[5].toLongLong() > 0) {
                const QVariant id = test::scalar(scratch.db(), "SELECT MAX(id) FROM FaktDok");
                QVERIFY(scratch.exec(QStringLiteral("INSERT INTO Pogasiavania (DokID, KreditID, Data, Suma) VALUES (%1, 999, '2026-11-02', %2)")
                                         .arg(id.toLongLong()).arg(f[5].toLongLong())));
            }
        }
        const auto read = receivables(scratch.db(), demoBooks());
        QVERIFY2(read.ok(), read.ok() ? "" : qPrintable(read.message().text));
        QStringList clients;
        for (const OverdueClient &client : read.value().largest)
            clients.append(client.klient + QLatin1Char(' ') + amountText(client.overdue, read.value().currency) + QLatin1Char(' ')
                           + formatDate(client.oldestDue));
        QCOMPARE(amountText(read.value().open, read.value().currency) + QLatin1Char('|')
                     + amountText(read.value().overdue, read.value().currency) + QLatin1Char('|') + clients.join(QStringLiteral(", ")),
                 expected);
    }

    // Each tile prints on one page, under its title and period, with the rows it shows.
    void eachTilePrintsOnOnePage_data()
    {
        QTest::addColumn<int>("tile");
        for (Tile tile : allTiles) {
            if (tile != Tile::Receivables)
                QTest::newRow(qPrintable(QStringLiteral("tile %1").arg(static_cast<int>(tile) + 1))) << static_cast<int>(tile);
        }
    }
    void eachTilePrintsOnOnePage()
    {
        QFETCH(int, tile);
        DEMO_DASHBOARD(tablo);
        const TileSheet sheet = tablo.sheet(static_cast<Tile>(tile));
        QVERIFY(!sheet.period.isEmpty());
        const Checked<Report> report = tablo.report(static_cast<Tile>(tile));
        QVERIFY(report.ok());
        const LaidOutReport laid = layoutReport(report.value());
        QCOMPARE(laid.pageCount(), 1);
        const QStringList lines = laid.textLines();
        QVERIFY(lines.contains(QStringLiteral("Табло - ") + sheet.title));
        QVERIFY(lines.contains(sheet.period));
        // The first row's words (a long cell wraps onto a line of its own).
        const QString text = lines.join(QLatin1Char(' '));
        for (const QString &cell : sheet.rows.value(0)) {
            for (const QString &word : cell.split(QLatin1Char(' '), Qt::SkipEmptyParts))
                QVERIFY2(text.contains(word), qPrintable(word));
        }
    }

    // A user who may not open a screen does not see its tile: an ordinary user has no balance.
    // Receivables show to whoever may open a client's account.
    void aTileShowsOnlyToWhoMayOpenItsScreen_data()
    {
        QTest::addColumn<QString>("vid");
        QTest::addColumn<QString>("shown");
        QTest::newRow("administrator") << "A" << "123456";
        QTest::newRow("manager") << "B" << "123456";
        QTest::newRow("ordinary user") << "C" << "12345";
    }
    void aTileShowsOnlyToWhoMayOpenItsScreen()
    {
        QFETCH(QString, vid);
        QFETCH(QString, shown);
        ZAREK_SCRATCH_DB(scratch);
        RecordingMessageService messages;
        FrmMain window(FirmProfile(), scratch.config(), scratch.db(), vid);
        QVERIFY(window.tablo());
        QCOMPARE(tilesShown(*window.tablo()), shown);
        QVERIFY(waitLoaded(*window.tablo()));
    }

    // The window answers while the tiles are read, and a tile that cannot read says so in a line.
    void aTileThatCannotReadSaysSoInALine()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(scratch.exec(QStringLiteral("DROP TABLE Dokumenti")));
        ScopedCommandDay books(demoBooks());
        Tablo tablo(scratch.db(), [] { return commandDay(); }, [] { return FirmProfile(); });
        tablo.refresh();
        QVERIFY(tablo.isLoading());
        QVERIFY(waitLoaded(tablo));
        QVERIFY(!tablo.failure(Tile::Documents).isEmpty());
        QVERIFY(tablo.tileBox(Tile::Documents)->noteText().startsWith(QStringLiteral("Данните не могат да се прочетат: ")));
        QVERIFY(tablo.failure(Tile::Month).isEmpty());
    }

    // Enter on a row asks for the screen of that row: the client and period of the invoicing.
    void enterOnARowOpensItsScreen()
    {
        DEMO_DASHBOARD(tablo);
        const auto clients = std::get<QList<UninvoicedClient>>(*tablo.figures(Tile::Uninvoiced));
        QSignalSpy invoicing(&tablo, &Tablo::openInvoicing);
        QWidget *rows = tablo.tileBox(Tile::Uninvoiced)->keyWidget();
        tablo.tileBox(Tile::Uninvoiced)->setCurrentRow(0);
        QTest::keyClick(rows, Qt::Key_Down);
        QTest::keyClick(rows, Qt::Key_Return);
        QCOMPARE(invoicing.count(), 1);
        QCOMPARE(invoicing.first().value(0).toString(), clients.value(1).klient);
        QCOMPARE(invoicing.first().value(1).value<Period>(), clients.value(1).period);
        QSignalSpy balans(&tablo, &Tablo::openBalans);
        QWidget *chart = tablo.tileBox(Tile::Profit)->keyWidget();
        QTest::keyClick(chart, Qt::Key_Right);
        QTest::keyClick(chart, Qt::Key_Return);
        QCOMPARE(balans.count(), 1);
        QCOMPARE(balans.first().value(0).toString(),
                 std::get<TruckProfits>(*tablo.figures(Tile::Profit)).trucks.value(1).kola);
    }

    // Each truck's number stands whole under its bar, on a small screen as on a large one: the
    // chart takes the height its upright numbers need.
    void theProfitChartShowsEachTruckNumberWhole_data()
    {
        QTest::addColumn<QSize>("size");  // the main window's client area
        QTest::newRow("1024x768") << QSize(1024, 680);
        QTest::newRow("1600x900") << QSize(1600, 810);
    }
    void theProfitChartShowsEachTruckNumberWhole()
    {
        QFETCH(QSize, size);
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(fillDemo(scratch.db()));
        Tablo tablo(scratch.db(), [] { return demoBooks(); }, [] { return FirmProfile(); });
        tablo.resize(size);
        tablo.show();
        tablo.refresh();
        QVERIFY(waitLoaded(tablo));
        QTest::qWait(50);
        QStringList trucks;
        const auto figures = tablo.figures(Tile::Profit);  // kept: the loop must not outlive it
        QVERIFY(figures);
        for (const TruckProfit &truck : std::get<TruckProfits>(*figures).trucks)
            trucks << truck.kola;
        QVERIFY(trucks.size() >= 5);
        auto *chart = qobject_cast<QGraphicsView *>(tablo.tileBox(Tile::Profit)->keyWidget());
        QVERIFY(chart);
        QStringList shown;
        for (QGraphicsItem *item : chart->scene()->items()) {
            if (auto *text = dynamic_cast<QGraphicsTextItem *>(item); text && text->isVisible())
                shown << text->toPlainText();
        }
        for (const QString &kola : std::as_const(trucks))
            QVERIFY2(shown.contains(kola), qPrintable(kola + QStringLiteral(" among ") + shown.join(QStringLiteral(", "))));
    }

    // A course saved in the course editor shows on the dashboard of the main window.
    void aSavedCourseShowsOnTheDashboard()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(test::addBands(scratch));
        QVERIFY(scratch.exec(QStringLiteral("INSERT INTO shof (kod, ime) VALUES ('007', 'Иван Петров Иванов')")));
        RecordingMessageService messages;
        FrmMain window(FirmProfile(), scratch.config(), scratch.db(), QStringLiteral("A"));
        QVERIFY(waitLoaded(*window.tablo()));
        const auto before = std::get<MonthComparison>(*window.tablo()->figures(Tile::Month));
        QCOMPARE(before.current.courses, 0);

        Kurs screen(scratch.db());
        screen.findChild<QComboBox *>(QStringLiteral("Combo5"))->setEditText(QStringLiteral("007,Иван Петров Иванов"));
        screen.findChild<QComboBox *>(QStringLiteral("Combo1"))->setEditText(QStringLiteral("СА 1234 ВК"));
        screen.findChild<QLineEdit *>(QStringLiteral("txtFields_1"))->setText(formatDate(commandDay().today));
        screen.findChild<QLineEdit *>(QStringLiteral("txtFields_12"))->setText(QStringLiteral("10"));
        screen.findChild<QLineEdit *>(QStringLiteral("txtFields_4"))->setText(QStringLiteral("25"));
        screen.findChild<QLineEdit *>(QStringLiteral("txtTarifa"))->setText(QStringLiteral("0,125"));
        screen.findChild<QComboBox *>(QStringLiteral("Combo2"))->setEditText(QStringLiteral("София - Перник"));
        screen.findChild<QComboBox *>(QStringLiteral("Combo3"))->setEditText(QStringLiteral("Бетон АД"));
        screen.findChild<QComboBox *>(QStringLiteral("Combo4"))->setEditText(QStringLiteral("Пясък"));
        screen.findChild<QPushButton *>(QStringLiteral("cmdUpdate"))->click();
        QCOMPARE(test::scalar(scratch.db(), "SELECT COUNT(*) FROM tabl").toInt(), 1);

        QVERIFY(waitLoaded(*window.tablo()));
        const auto after = std::get<MonthComparison>(*window.tablo()->figures(Tile::Month));
        QCOMPARE(after.current.courses, 1);
        QCOMPARE(after.current.gross, Money::fromCents(3125));
    }

    // Pictures of the main window with its dashboard, for a person to look at: written into the
    // folder ZAREK_SCREENSHOT_DIR names (run again with QT_SCALE_FACTOR=2 for a dense screen).
    void pictureOfTheMainWindow_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("1024x768") << QSize(1024, 768);
        QTest::newRow("1600x900") << QSize(1600, 900);
    }
    void pictureOfTheMainWindow()
    {
        QFETCH(QSize, size);
        const QString folder = qEnvironmentVariable("ZAREK_SCREENSHOT_DIR");
        if (folder.isEmpty())
            QSKIP("ZAREK_SCREENSHOT_DIR names no folder for the pictures");
        ZAREK_SCRATCH_DB(scratch);
        DemoOptions options;
        options.courses = 2000;
        QSqlDatabase db = scratch.db();
        QVERIFY(fillDemoDatabase(db, options).ok());
        RecordingMessageService messages;
        FirmProfile firm;
        firm.UserName = QStringLiteral("Демо Транс ООД");
        FrmMain window(firm, scratch.config(), scratch.db(), QStringLiteral("A"));
        window.resize(size);
        window.show();
        QVERIFY(waitLoaded(*window.tablo()));
        QTest::qWait(200);
        const QString name = QStringLiteral("%1/tablo-%2x%3-scale%4-%5.png")
                                 .arg(folder).arg(size.width()).arg(size.height())
                                 .arg(qEnvironmentVariable("QT_SCALE_FACTOR", QStringLiteral("1")), engine);
        QVERIFY(window.grab().save(name));
    }

private:
    QTemporaryDir m_dir;
};

QTEST_MAIN(DashboardTest)
#include "tst_dashboard.moc"
