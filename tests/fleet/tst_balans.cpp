#include "examplefirm.h"
#include "data/scratchdatabase.h"
#include "fleet/balans.h"
#include "fleet/balansstore.h"
#include "fleet/fleetcommands.h"
#include "forms/commands.h"
#include "forms/messageservice.h"
#include "reports/reportlayout.h"
#include "reports/reportpreview.h"
#include "screendriver.h"
#include "laidoutpapers.h"
#include "queryrows.h"
#include "subsystemfixtures.h"
#include "testdatabase.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlError>
#include <QSqlQuery>
#include <QTableView>
#include <QTemporaryDir>
#include <QTimer>
#include <memory>

using namespace zarek;
using zarek::test::execBound;

namespace {

const QString ca = QStringLiteral("СА 1234 ВК");
const QString rv = QStringLiteral("РВ7777АА");  // eight characters
const QString vt = QStringLiteral("ВТ 5555 ХХ");
const QString stranger = QStringLiteral("ЯЯ 0000 ЯЯ");  // runs courses but is not in Config
const Period march{QDate(2006, 3, 1), QDate(2006, 3, 31)};

bool truck(QSqlDatabase db, const QString &kola)
{
    return execBound(db, QStringLiteral("INSERT INTO Config (kola, Razhod, Procent, Ton) VALUES (?, 30, 12, 20)"), {kola});
}

bool course(QSqlDatabase db, QDate date, const QString &kola, double bruto)
{
    return execBound(db,
                     QStringLiteral("INSERT INTO tabl (data, kod, kola, Klient, Marsh, Tovar, km, ton, Tarifa, bruto, procent, "
                                    "neto, Fakt, NomFakt, plat, Doc) VALUES (?, '007', ?, 'Бетон АД', 'София - Перник', "
                                    "'Пясък', 10, 10, 1, ?, 0, ?, ?, '0000000000', ?, ?)"),
                     {date, kola, bruto, bruto, false, false, false});
}

bool stock(QSqlDatabase db, QDate date, const QString &docVid, const QString &vidKol, double suma)
{
    return execBound(db,
                     QStringLiteral("INSERT INTO Sklad (Data, DocVid, DocNom, Name, Kol, Edin, Suma, VidKol, Ostat, Lipsa) "
                                    "VALUES (?, ?, '0000000001', 'Филтър маслен', 1, ?, ?, ?, 0, ?)"),
                     {date, docVid, suma, suma, vidKol, false});
}

bool waybill(QSqlDatabase db, const QString &listId, QDate date, const QString &kola, double sumRazhN, double zarN)
{
    return execBound(db,
                     QStringLiteral("INSERT INTO RowdList (ListID, Data, Kola, NameDriver, SumKM, SumRazhN, EndKM, ZarN, ZarM, "
                                    "CenaN, CenaM) VALUES (?, ?, ?, 'Иван Петров', 250, ?, 0, ?, 0, 2.5, 9.8)"),
                     {listId, date, kola, sumRazhN, zarN});
}

// Three trucks, one of them twice in Config; courses, issues and waybills on and beyond the period's ends.
bool fill(QSqlDatabase db)
{
    return truck(db, ca) && truck(db, ca) && truck(db, rv) && truck(db, vt)
           && course(db, QDate(2006, 3, 1), ca, 100.10) && course(db, QDate(2006, 3, 31), ca, 200.20)
           && course(db, QDate(2006, 2, 28), ca, 999) && course(db, QDate(2006, 4, 1), ca, 999)
           && course(db, QDate(2006, 3, 15), rv, 50.05) && course(db, QDate(2006, 3, 10), stranger, 1000)
           && stock(db, QDate(2006, 3, 5), ca, QStringLiteral("R"), 30.30)
           && stock(db, QDate(2006, 3, 6), ca, QStringLiteral("P"), 500)
           && stock(db, QDate(2006, 4, 1), ca, QStringLiteral("R"), 11)
           && stock(db, QDate(2006, 3, 31), vt, QStringLiteral("R"), 75.50)
           && stock(db, QDate(2006, 3, 10), stranger, QStringLiteral("R"), 20)
           && waybill(db, QStringLiteral("0000000037"), QDate(2006, 3, 1), ca, 93.5, 90)
           && waybill(db, QStringLiteral("0000000041"), QDate(2006, 3, 31), ca, 50.2, 60)
           && waybill(db, QStringLiteral("0000000040"), QDate(2006, 3, 20), rv, 40.0, 35)
           && waybill(db, QStringLiteral("0000000050"), QDate(2006, 4, 1), ca, 500, 500)
           && waybill(db, QStringLiteral("0000000039"), QDate(2006, 3, 10), stranger, 77, 70);
}

const FirmProfile &firm()
{
    return zarek::test::pernikFirm();
}

std::function<const FirmProfile &()> firmSource()
{
    return []() -> const FirmProfile & { return firm(); };
}

QStringList shownRows(const Balans &screen)
{
    return test::gridRows(screen.model(), QStringLiteral(" | "));
}

QString registerFingerprint(QSqlDatabase db)
{
    QStringList parts;
    for (const QString &table : {QStringLiteral("tabl"), QStringLiteral("Sklad"), QStringLiteral("RowdList"),
                                 QStringLiteral("Config")})
        parts << test::rowsText(db, QStringLiteral("SELECT COUNT(*), SUM(row_version) FROM ") + table);
    return parts.join(QLatin1Char('|'));
}

QStringList laidOutLines(const Checked<Report> &report)
{
    return test::laidOut(report).textLines();
}

const QString firmLines = QStringLiteral(
    "Транспорт Петров ЕООД\n"
    "тел:076 60 11 22, факс:0888 11 22 33, E-mail:office@petrov.bg, URL:http//www.petrov.bg\n"
    "Справка");

}

Q_DECLARE_METATYPE(zarek::BalansMode)

// Each test but the empty fleet's gets a fresh database with fill()'s rows, a scratch file and a
// message recorder; open() makes the screen.
class BalansTest : public QObject, test::DatabaseFixture {
    Q_OBJECT
    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<ScratchDatabase> scratch;
    std::unique_ptr<Balans> balans;

    Balans &open(BalansMode mode, const Period &period = march)
    {
        balans = std::make_unique<Balans>(mode, period, db, scratch.get(), firmSource());
        return *balans;
    }

private slots:
    void initTestCase_data() { test::addEngineRows(); }
    void init()
    {
        ZAREK_DATABASE_FIXTURE();
        folder = std::make_unique<QTemporaryDir>();
        scratch = std::make_unique<ScratchDatabase>(folder->path());
        if (qstrcmp(QTest::currentTestFunction(), "aFleetWithoutTrucksShowsAnEmptyGridAndNoMessage") != 0)
            QVERIFY(fill(db));
    }
    void cleanup()
    {
        balans.reset();
        scratch.reset();
        folder.reset();
        tearDown();
    }

    // Profit: income, cost and remainder in money, with a total. Fuel: norm fuel against fuel loaded,
    // in litres; a truck with no waybill shows zeros. In both a truck twice in Config is listed once,
    // a truck with costs only keeps its sign, the eight-character number has its row, and the truck
    // outside Config counts nowhere.
    void everyTruckShowsItsIncomeCostAndRemainder_data()
    {
        QTest::addColumn<BalansMode>("mode");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("heading");
        QTest::addColumn<QStringList>("rows");
        QTest::addColumn<QStringList>("captions");
        QTest::addColumn<QString>("total");  // empty: no total shown
        QTest::addColumn<qint64>("sum");
        QTest::newRow("profit") << BalansMode::Profit << "Зарек 2.3 - Баланс" << "Печалба за периода 1.3.2006 - 31.3.2006"
                                << QStringList{"1 | ВТ 5555 ХХ | 0,00лв. | 75,50лв. | -75,50лв.",
                                               "2 | РВ7777АА | 50,05лв. | 0,00лв. | 50,05лв.",
                                               "3 | СА 1234 ВК | 300,30лв. | 30,30лв. | 270,00лв."}
                                << QStringList{"№", "Кола", "Приход", "Разход", "Остатък"} << "Всичко: 244,55лв."
                                << qint64(24455);
        // Litres have no total on the screen; the sum is kept all the same.
        QTest::newRow("fuel") << BalansMode::Fuel << "Зарек 2.3 - Разход нафта"
                              << "Разход нафта за периода 1.3.2006 - 31.3.2006"
                              << QStringList{"1 | ВТ 5555 ХХ | 0,0 л | 0,0 л | 0,0 л", "2 | РВ7777АА | 40,0 л | 35,0 л | 5,0 л",
                                             "3 | СА 1234 ВК | 143,7 л | 150,0 л | -6,3 л"}
                              << QStringList{"№", "Кола", "Изч.разх.", "Заредено", "Разлика"} << "" << qint64(-13);
    }
    void everyTruckShowsItsIncomeCostAndRemainder()
    {
        QFETCH(BalansMode, mode);
        QFETCH(QStringList, rows);
        QFETCH(QString, total);
        const QString before = registerFingerprint(db);
        Balans &screen = open(mode);
        QCOMPARE(screen.objectName(), QStringLiteral("Balans"));
        QTEST(screen.windowTitle(), "title");
        QTEST(screen.findChild<QLineEdit *>(QStringLiteral("Text1"))->text(), "heading");
        QCOMPARE(shownRows(screen), rows);
        QTEST(test::captions(screen.model()), "captions");
        // A truck number is never cut short, however narrow the column's set width.
        QVERIFY(screen.grid()->columnWidth(1) > screen.grid()->fontMetrics().horizontalAdvance(ca));
        auto *label = screen.findChild<QLabel *>(QStringLiteral("Label1"));
        QCOMPARE(label->isHidden(), total.isEmpty());
        if (!total.isEmpty())
            QCOMPARE(label->text(), total);
        QTEST(screen.sumTotal(), "sum");
        if (mode == BalansMode::Fuel)  // Enter shows a truck's waybills
            QCOMPARE(screen.findChild<QLabel *>(QStringLiteral("Label5"))->text(), QStringLiteral("Enter"));
        // The rows stand in TempBalans as they show.
        QCOMPARE(test::rows(scratch->db(), QStringLiteral("SELECT Red, Kola, Prihod, Razhod, Ostatak FROM TempBalans ORDER BY Red")),
                 rows.replaceInStrings(QStringLiteral(" | "), QStringLiteral("|")));
        QCOMPARE(registerFingerprint(db), before);
        QVERIFY(messages->shown.isEmpty());
    }

    void bothEndsOfThePeriodCount_data()
    {
        QTest::addColumn<QDate>("from");
        QTest::addColumn<QDate>("to");
        QTest::addColumn<QString>("caRow");
        QTest::newRow("the month") << QDate(2006, 3, 1) << QDate(2006, 3, 31)
                                   << "3 | СА 1234 ВК | 300,30лв. | 30,30лв. | 270,00лв.";
        QTest::newRow("first day alone") << QDate(2006, 3, 1) << QDate(2006, 3, 2)
                                         << "3 | СА 1234 ВК | 100,10лв. | 0,00лв. | 100,10лв.";
        QTest::newRow("last day to the next") << QDate(2006, 3, 31) << QDate(2006, 4, 1)
                                              << "3 | СА 1234 ВК | 1199,20лв. | 11,00лв. | 1188,20лв.";
        QTest::newRow("before anything") << QDate(2005, 1, 1) << QDate(2005, 12, 31)
                                         << "3 | СА 1234 ВК | 0,00лв. | 0,00лв. | 0,00лв.";
    }
    void bothEndsOfThePeriodCount()
    {
        QFETCH(QDate, from);
        QFETCH(QDate, to);
        Balans &screen = open(BalansMode::Profit, {from, to});
        QCOMPARE(screen.model()->rowCount(), 3);
        QTEST(shownRows(screen).at(2), "caRow");
    }

    void aFleetWithoutTrucksShowsAnEmptyGridAndNoMessage()
    {
        Balans &screen = open(BalansMode::Profit);
        QCOMPARE(screen.model()->rowCount(), 0);
        QCOMPARE(screen.findChild<QLabel *>(QStringLiteral("Label1"))->text(), QStringLiteral("Всичко: 0,00лв."));
        QVERIFY(messages->shown.isEmpty());
    }

    // Each mode prints its rows under its own heading and units; the profit with its total, the
    // fuel without one; each with its chart on a page of its own.
    void eachModePrintsItsRows_data()
    {
        QTest::addColumn<BalansMode>("mode");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("body");
        QTest::newRow("profit") << BalansMode::Profit << "Зарек 2.3 - Справка баланс на колите"
                                << "за печалбата от колите\nза периода от 1.3.2006 до 31.3.2006\n"
                                   "Кола  | Приход | Разход | Остатък\n"
                                   "[лв.] | [лв.] | [лв.]\n"
                                   "1 | ВТ 5555 ХХ | 0,00лв. | 75,50лв. | -75,50лв.\n"
                                   "2 | РВ7777АА | 50,05лв. | 0,00лв. | 50,05лв.\n"
                                   "3 | СА 1234 ВК | 300,30лв. | 30,30лв. | 270,00лв.\n"
                                   "Всичко: 244,55лв.\n"
                                   "Зарек 2.3 | Страница 1 от 1 | Orvenn Ltd.\n"
                                   "Приходи, разходи и остатък по коли";
        QTest::newRow("fuel") << BalansMode::Fuel << "Зарек 2.3 - Справка разход на нафта"
                              << "за разхода на нафта на колите\nза периода от 1.3.2006 до 31.3.2006\n"
                                 "Кола  | Изч.разх. | Заредено | Разлика\n"
                                 "[ л. ] | [ л. ] | [ л. ]\n"
                                 "1 | ВТ 5555 ХХ | 0,0 л | 0,0 л | 0,0 л\n"
                                 "2 | РВ7777АА | 40,0 л | 35,0 л | 5,0 л\n"
                                 "3 | СА 1234 ВК | 143,7 л | 150,0 л | -6,3 л\n"
                                 "Всичко\n"
                                 "Зарек 2.3 | Страница 1 от 1 | Orvenn Ltd.\n"
                                 "Нормативен разход и заредена нафта по коли";
    }
    void eachModePrintsItsRows()
    {
        QFETCH(BalansMode, mode);
        QFETCH(QString, caption);
        QFETCH(QString, body);
        Balans &screen = open(mode);
        const Checked<Report> report = screen.report();
        QVERIFY(report.ok());
        QCOMPARE(report.value().windowCaption(), caption);
        QCOMPARE(laidOutLines(report), (firmLines + QLatin1Char('\n') + body).split(QLatin1Char('\n')));
        if (mode != BalansMode::Profit)
            return;
        // The chart is drawn on its page, and goes with the rows to a workbook.
        const LaidOutReport laid = layoutReport(report.value());
        QCOMPARE(laid.pageCount(), 2);
        QVERIFY(std::any_of(laid.pages.last().primitives.cbegin(), laid.pages.last().primitives.cend(),
                            [](const ReportPrimitive &p) { return p.kind == ReportPrimitive::Kind::Image && !p.image.isEmpty(); }));
        QCOMPARE(screen.exportTable().pictures.size(), 1);
        QVERIFY(screen.findChild<QWidget *>(QStringLiteral("chartBalans")));
    }

    // Enter on a truck in fuel mode shows its waybills of the period (rptKolaN).
    void aTrucksWaybillsPrintWithTheirTotals()
    {
        Balans &screen = open(BalansMode::Fuel);
        const QStringList expected = {
            QStringLiteral("Транспорт Петров ЕООД"),
            QStringLiteral("Перник, ул. Индустриална 14"),
            QStringLiteral("Справка"),
            QStringLiteral("за изразходваното гориво от кола СА 1234 ВК"),
            QStringLiteral("за периода от 01.03.2006 до 31.03.2006"),
            QStringLiteral("Разход"),
            QStringLiteral("Лист  | Дата | Шофьор"),
            QStringLiteral("по норма | действит."),
            QStringLiteral("0000000037 | 01.03.2006 | Иван Петров | 93,5 | 90,0"),
            QStringLiteral("0000000041 | 31.03.2006 | Иван Петров | 50,2 | 60,0"),
            QStringLiteral("Всичко | 143,7 | 150,0"),
            QStringLiteral("Зарек 2.3 | Страница 1 от 1 | Orvenn Ltd."),
        };
        QCOMPARE(laidOutLines(screen.waybillReport(2)), expected);

        test::showActive(screen);
        QTRY_COMPARE(screen.currentRow(), 0);
        screen.grid()->setCurrentIndex(screen.model()->index(1, 1));
        ReportPreview *shown = nullptr;
        QTimer::singleShot(0, [&shown] {
            for (QWidget *window : QApplication::topLevelWidgets()) {
                if (auto *preview = qobject_cast<ReportPreview *>(window); preview && preview->isVisible())
                    shown = preview;
            }
        });
        QTest::keyClick(screen.grid(), Qt::Key_Return);
        QTRY_VERIFY(shown);
        QVERIFY(shown->report().textLines().contains(QStringLiteral("Всичко | 40,0 | 35,0")));
        delete shown;
    }

    void theRecordFormKeysMoveThroughTheTrucks_data()
    {
        QTest::addColumn<int>("start");
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<int>("row");
        QTest::addColumn<int>("beeps");
        QTest::newRow("End") << 0 << int(Qt::Key_End) << 0 << 2 << 0;
        QTest::newRow("Home") << 2 << int(Qt::Key_Home) << 0 << 0 << 0;
        QTest::newRow("Down") << 0 << int(Qt::Key_Down) << 0 << 1 << 0;
        QTest::newRow("PageDown steps one") << 0 << int(Qt::Key_PageDown) << 0 << 1 << 0;
        QTest::newRow("PageUp steps one") << 2 << int(Qt::Key_PageUp) << 0 << 1 << 0;
        QTest::newRow("Ctrl+Down") << 0 << int(Qt::Key_Down) << int(Qt::ControlModifier) << 2 << 0;
        QTest::newRow("Ctrl+PageUp") << 2 << int(Qt::Key_PageUp) << int(Qt::ControlModifier) << 0 << 0;
        QTest::newRow("Ctrl+Shift+Up is Up") << 2 << int(Qt::Key_Up) << int(Qt::ControlModifier | Qt::ShiftModifier)
                                             << 1 << 0;
        QTest::newRow("Down past the last") << 2 << int(Qt::Key_Down) << 0 << 2 << 1;
        QTest::newRow("Up past the first") << 0 << int(Qt::Key_Up) << 0 << 0 << 1;
    }
    void theRecordFormKeysMoveThroughTheTrucks()
    {
        QFETCH(int, start);
        QFETCH(int, key);
        QFETCH(int, modifiers);
        Balans &screen = open(BalansMode::Profit);
        test::showActive(screen);
        QTRY_COMPARE(screen.currentRow(), 0);
        screen.grid()->setCurrentIndex(screen.model()->index(start, 1));
        QTest::keyClick(screen.grid(), Qt::Key(key), Qt::KeyboardModifiers(modifiers));
        QTEST(screen.currentRow(), "row");
        QTEST(messages->beeps, "beeps");
        QTest::keyClick(screen.grid(), Qt::Key_Escape);
        QTRY_VERIFY(!screen.isVisible());
    }

    // Another command that rebuilds the scratch tables while the balance stands open takes nothing from it.
    void aLaterScratchRebuildLeavesTheOpenBalanceWhole()
    {
        Balans &screen = open(BalansMode::Profit);
        QVERIFY(!scratch->RebuildScratchTable(QStringLiteral("TempNal")));
        QCOMPARE(screen.model()->rowCount(), 3);
        const QStringList lines = laidOutLines(screen.report());
        QVERIFY(lines.contains(QStringLiteral("3 | СА 1234 ВК | 300,30лв. | 30,30лв. | 270,00лв.")));
        QVERIFY(messages->shown.isEmpty());
    }

    // Both commands ask a period only; asked again, the window is made anew for the new period.
    void theCommandsOpenTheBalanceBesideTheMainWindow()
    {
        QTemporaryDir dir;
        ScratchDatabase shared(dir.path());
        QString panel;
        CommandContext context;
        context.db = db;
        context.scratch = &shared;
        context.firm = firmSource();
        context.setPanel = [&panel](const QString &text) { panel = text; };
        context.helpTopic = [](const QString &item) { return item == QLatin1String("mnuSprBalanc") ? 10 : 11; };
        CommandRegistry commands(context);
        registerFleetCommands(commands);
        QString caption;
        auto answer = [&caption](const QString &from, const QString &to) {
            test::onNextModal([&caption, from, to](QDialog &dialog) {
                caption = dialog.windowTitle();
                test::enterPeriod(dialog, from, to);
            });
        };
        answer(QStringLiteral("01.03.2006"), QStringLiteral("31.03.2006"));
        commands.handler(QStringLiteral("mnuSprBalanc"))();
        QCOMPARE(caption, QStringLiteral("Търсене - Баланс"));
        QCOMPARE(panel, QStringLiteral("Справка за печалбата от колите.."));
        QPointer<Balans> first = qobject_cast<Balans *>(commands.openWindow(QStringLiteral("Balans")));
        QVERIFY(first);
        QVERIFY(first->isVisible());
        QVERIFY(!first->isModal());
        QCOMPARE(first->property("helpTopic").toInt(), 10);
        QCOMPARE(first->period().to, QDate(2006, 3, 31));

        answer(QStringLiteral("01.03.2006"), QStringLiteral("01.04.2006"));
        commands.handler(QStringLiteral("mnuSprBalanc"))();
        auto *second = qobject_cast<Balans *>(commands.openWindow(QStringLiteral("Balans")));
        QVERIFY(second);
        QVERIFY(second != first);
        QCOMPARE(second->period().to, QDate(2006, 4, 1));
        QTRY_VERIFY(!first);  // the old one is gone

        answer(QStringLiteral("01.03.2006"), QStringLiteral("31.03.2006"));
        commands.handler(QStringLiteral("mnuSprPreRazh"))();
        QCOMPARE(caption, QStringLiteral("Търсене - Разход нафта от кола №"));
        QCOMPARE(commands.context().searchMode, SearchMode::PreRazh);
        QCOMPARE(panel, QStringLiteral("Справка за разхода на нафта на колите.."));
        auto *fuel = qobject_cast<Balans *>(commands.openWindow(QStringLiteral("Balans-PreRazh")));
        QVERIFY(fuel);
        QCOMPARE(fuel->mode(), BalansMode::Fuel);
        QCOMPARE(fuel->property("helpTopic").toInt(), 11);
        QVERIFY(commands.openWindow(QStringLiteral("Balans")) == second);  // both stand side by side
        QVERIFY(messages->shown.isEmpty());
        delete second;
        delete fuel;
    }
};

QTEST_MAIN(BalansTest)
#include "tst_balans.moc"
