#include "forms/messageservice.h"
#include "forms/recordform.h"
#include "queryrows.h"
#include "screendriver.h"
#include "subsystemfixtures.h"
#include "testdatabase.h"
#include "waybills/rowdlist.h"

#include <QAbstractItemModel>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlError>
#include <QSqlQuery>
#include <QTabWidget>
#include <QTableView>

#include <memory>

using namespace zarek;
using zarek::test::row;
using zarek::test::scalar;
using namespace zarek::test;

namespace {

const QString truck = QStringLiteral("СА 1234 ВК");      // norm 30 l/100 km
const QString otherTruck = QStringLiteral("РВ 7777 АА");  // norm 25.5
const QString driver = QStringLiteral("Георги Д'Амато");
const QString taken = QStringLiteral("Съществува пътен лист със същия номер!");

void prepare(test::ScratchDatabase &scratch)
{
    QVERIFY(scratch.exec(QStringLiteral("INSERT INTO Config (kola, Razhod, Procent, Ton) VALUES ('СА 1234 ВК', 30, 12, 20)")));
    QVERIFY(scratch.exec(QStringLiteral("INSERT INTO Config (kola, Razhod, Procent, Ton) VALUES ('РВ 7777 АА', 25.5, 12, 12)")));
    QVERIFY(scratch.exec(QStringLiteral("INSERT INTO shof (kod, ime) VALUES ('007', 'Иван Петров Иванов')")));
    QVERIFY(scratch.exec(QStringLiteral("INSERT INTO shof (kod, ime) VALUES ('012', 'Георги Д''Амато')")));
}

// A waybill written as earlier entry would have left it, with its lines (km, ton, fuel); by
// default waybill 0000000040 of 02.03.2026 with one line of 100 km.
void addWaybill(QSqlDatabase db, const QString &listId = QStringLiteral("0000000040"),
                const QDate &date = QDate(2026, 3, 2), const QString &kola = truck,
                const QList<std::tuple<double, double, double>> &lines = {{100, 0, 30}})
{
    double km = 0, fuel = 0;
    for (const auto &[lineKm, ton, razhN] : lines) {
        QVERIFY(test::insertRow(db, QStringLiteral("Marsh"), QStringLiteral("MarshID, Marshrut, KM, Ton, Koef, RazhN"),
                                {listId, QStringLiteral("София - Перник"), lineKm, ton, 0, razhN}));
        km += lineKm;
        fuel += razhN;
    }
    QVERIFY(test::insertRow(db, QStringLiteral("RowdList"),
                            QStringLiteral("ListID, Data, Kola, NameDriver, SumKM, SumRazhN, EndKM, ZarN, ZarM, CenaN, CenaM"),
                            {listId, date, kola, QStringLiteral("Иван Петров Иванов"), km, fuel, 0, 0, 0, 0, 0}));
}

QStringList texts(const RecordingMessageService &messages)
{
    return test::firstLines(messages.shown);
}

// The header of a new waybill, straight into its boxes; the number is left as the user would.
void fillHeader(RowdList &screen, const QString &number, const QString &kola = truck)
{
    screen.field(4)->setFocus();
    screen.field(4)->setText(number);
    press(Qt::Key_Tab);
    screen.field(0)->setText(QStringLiteral("05.03.2026"));
    screen.driverCombo()->setEditText(driver);
    screen.truckCombo()->setEditText(kola);
    screen.field(8)->setText(QStringLiteral("120"));
    screen.field(5)->setText(QStringLiteral("245300"));
}

// A line, "route|km|ton|koef", typed into the pending row of the grid, then saved.
bool saveLine(RowdList &screen, const QString &line)
{
    QAbstractItemModel *model = screen.grid()->model();
    const int row = screen.routes()->state() == RecordFormState::Adding ? model->rowCount() - 1
                                                                          : screen.routes()->currentIndex();
    const QStringList cells = line.split(QLatin1Char('|'));
    for (int column = 0; column < 4; ++column)
        model->setData(model->index(row, column), cells.value(column));
    return screen.routes()->update();
}

void addLine(RowdList &screen, const QString &line)
{
    screen.routes()->add();
    QVERIFY(saveLine(screen, line));
}

// A new waybill 37 with its first line (250 km, 10 t, +10 %: 93,5 l) saved.
void startWithALine(RowdList &screen)
{
    fillHeader(screen, QStringLiteral("37"));
    screen.tabs()->setCurrentIndex(1);
    QVERIFY(saveLine(screen, QStringLiteral("София - Перник|250|10|10")));
}

QStringList gridRows(RowdList &screen)
{
    return test::gridRows(screen.grid()->model());
}

// The waybill shown: its number and the header's status, as "number|status".
QString shown(RowdList &screen)
{
    return screen.field(4)->text() + QLatin1Char('|') + screen.header()->statusLabel()->text();
}

// What the header shows: the number, km and fuel totals.
QString totals(RowdList &screen)
{
    return screen.field(1)->text() + QLatin1Char(' ') + screen.field(6)->text();
}

}

// Each test gets a fresh database with two trucks and two drivers, and a message recorder;
// open() shows the screen on it.
class RowdListTest : public QObject, test::DatabaseFixture {
    Q_OBJECT
    std::unique_ptr<RowdList> screen;

    RowdList &open()
    {
        screen = std::make_unique<RowdList>(db);
        showActive(*screen);
        return *screen;
    }
    // The screen on a new waybill 37 with its first line saved (startWithALine()).
    RowdList &openWithALine()
    {
        RowdList &opened = open();
        startWithALine(opened);
        return opened;
    }
    QString sums() { return row(db, "SELECT SumKM, SumRazhN FROM RowdList"); }
    int count(const char *sql) { return scalar(db, QString::fromLatin1(sql)).toInt(); }

private slots:
    void initTestCase_data() { test::addEngineRows(); }
    void init()
    {
        ZAREK_DATABASE_FIXTURE();
        prepare(*database);
    }
    void cleanup()
    {
        screen.reset();
        tearDown();
    }

    void anEmptyRegisterOpensReadyForItsFirstWaybill()
    {
        RowdList &screen = open();
        QCOMPARE(screen.windowTitle() + QLatin1Char('|') + shown(screen), QStringLiteral("Зарек 2.3.4 - Пътни листи||Нов запис"));
        QCOMPARE(screen.header()->state(), RecordFormState::Adding);
        QCOMPARE(QApplication::focusWidget(), screen.field(4));
        QVERIFY(screen.driverCombo()->isVisible() && !screen.field(2)->isVisible());
        QCOMPARE(QStringLiteral("%1 %2").arg(screen.driverCombo()->count()).arg(screen.truckCombo()->count()),
                 QStringLiteral("2 2"));
        // Nothing to save before the route tab was opened.
        QVERIFY(!button(screen, "cmdUpdateRowd")->isEnabled());
        QCOMPARE(screen.tabs()->tabText(0) + QLatin1Char('|') + screen.tabs()->tabToolTip(1),
                 QStringLiteral("Обща част|Маршрути от пътния лист"));
        QCOMPARE(screen.field(4)->palette().color(QPalette::Base), QColor(0xFF, 0xFF, 0x80));
        QCOMPARE(screen.field(8)->palette().color(QPalette::Base), QApplication::palette(screen.field(8)).color(QPalette::Base));
        QVERIFY(messages->shown.isEmpty());
    }

    void theNewestNumberShowsFirstAndBrowsingShowsTheBoxes()
    {
        addWaybill(db, QStringLiteral("0000000040"), QDate(2026, 3, 2), truck, {});
        addWaybill(db, QStringLiteral("0000000052"), QDate(2026, 3, 4), otherTruck, {{120, 10, 40.8}});
        addWaybill(db, QStringLiteral("0000000041"), QDate(2026, 3, 3), truck, {});
        RowdList &screen = open();
        QCOMPARE(screen.header()->state(), RecordFormState::Browsing);
        QCOMPARE(shown(screen) + QLatin1Char('|') + screen.field(3)->text() + QLatin1Char('|') + totals(screen),
                 QStringLiteral("0000000052|Запис № 3|РВ 7777 АА|120 40,8"));
        QVERIFY(screen.field(3)->isVisible() && !screen.truckCombo()->isVisible());
        QVERIFY(screen.field(1)->isReadOnly());
        QCOMPARE(screen.field(1)->focusPolicy(), Qt::NoFocus);
        screen.header()->previous();
        QCOMPARE(shown(screen), QStringLiteral("0000000041|Запис № 2"));
    }

    void theNumberIsPaddedOnLeavingItsBox_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("message");
        QTest::addColumn<bool>("focusBack");
        QTest::newRow("37") << "37" << "0000000037" << QString() << false;
        QTest::newRow("blanks around") << "  37 " << "0000000037" << QString() << false;
        QTest::newRow("ten already") << "1234567890" << "1234567890" << QString() << false;
        QTest::newRow("taken, in its padded form") << "40" << "0000000040" << taken << true;
        QTest::newRow("eleven: told, not fatal") << "12345678901" << "12345678901"
                                                 << "Номера на документа е по-дълъг от разрешения!" << true;
    }
    void theNumberIsPaddedOnLeavingItsBox()
    {
        QFETCH(QString, typed);
        QFETCH(QString, shown);
        QFETCH(QString, message);
        QFETCH(bool, focusBack);
        addWaybill(db, QStringLiteral("0000000040"), QDate(2026, 3, 2), truck, {});
        RowdList &screen = open();
        screen.header()->add();
        QCOMPARE(QApplication::focusWidget(), screen.field(4));
        type(typed);
        press(Qt::Key_Tab);
        QCOMPARE(screen.field(4)->text(), shown);
        QCOMPARE(texts(*messages), message.isEmpty() ? QStringList() : QStringList{message});
        QCOMPARE(QApplication::focusWidget(), focusBack ? static_cast<QWidget *>(screen.field(4)) : screen.field(0));
        if (message == taken)
            QCOMPARE(messages->shown.first().title, QStringLiteral("   ГРЕШКА!"));
    }

    // While a waybill is corrected its own number is reported too, and it may still be saved.
    void correctingAWaybillReportsItsOwnNumberAndSaves()
    {
        addWaybill(db);
        RowdList &screen = open();
        screen.header()->edit();
        QCOMPARE(screen.header()->statusLabel()->text(), QStringLiteral("Корекция на запис"));
        QCOMPARE(QApplication::focusWidget(), screen.field(0));
        QCOMPARE(screen.truckCombo()->currentText(), truck);
        screen.field(4)->setFocus();
        press(Qt::Key_Tab);
        QCOMPARE(texts(*messages), QStringList{taken});
        QCOMPARE(QApplication::focusWidget(), screen.field(0));  // not held in the box
        screen.field(7)->setText(QStringLiteral("2,5"));
        QVERIFY(screen.header()->update());
        QCOMPARE(scalar(db, "SELECT ZarM FROM RowdList").toDouble(), 2.5);
        QCOMPARE(messages->shown.size(), 1);
    }

    // The path of a new waybill: number, date, driver, truck, routes typed into the grid, "Изчисли",
    // back to the header, saved. Each line has its norm fuel.
    void aNewWaybillWithThreeLinesIsStoredWithItsNormAndSums()
    {
        RowdList &screen = open();
        fillHeader(screen, QStringLiteral("37"));
        QCOMPARE(screen.field(4)->text(), QStringLiteral("0000000037"));

        screen.tabs()->setCurrentIndex(1);
        QCOMPARE(QString::number(screen.tabs()->currentIndex()) + QLatin1Char(' ') + screen.currentListId() + QLatin1Char(' ')
                     + screen.currentKola(),
                 "1 0000000037 " + truck);
        QVERIFY(button(screen, "cmdUpdateRowd")->isEnabledTo(screen.tabs()->widget(0)));
        // No lines yet: the first one is typed at once, from the keyboard.
        QCOMPARE(screen.routes()->state(), RecordFormState::Adding);
        QCOMPARE(screen.routes()->statusLabel()->text(), QStringLiteral("Корекция..."));
        QVERIFY(!screen.tabs()->isTabEnabled(0));
        QVERIFY(screen.grid()->isAncestorOf(QApplication::focusWidget()));
        const QStringList cells{QStringLiteral("София - Перник"), QStringLiteral("250"), QStringLiteral("10"),
                                QStringLiteral("10")};
        for (int i = 0; i < 4; ++i) {
            type(cells[i]);
            press(i < 3 ? Qt::Key_Tab : Qt::Key_Return);
        }
        QTRY_COMPARE(screen.routes()->state(), RecordFormState::Browsing);
        QCOMPARE(QApplication::focusWidget(), button(screen, "cmdAddMarsh"));
        QCOMPARE(scalar(db, "SELECT RazhN FROM Marsh WHERE MarshID = '0000000037'").toDouble(), 93.5);

        // Enter on "Добави" starts the next line.
        press(Qt::Key_Return);
        QCOMPARE(screen.routes()->state(), RecordFormState::Adding);
        QVERIFY(saveLine(screen, QStringLiteral("Перник - Радомир|99,5|0|0")));
        addLine(screen, QStringLiteral("Радомир - София|100.5|12,5|-10"));
        QCOMPARE(gridRows(screen), (QStringList{QStringLiteral("София - Перник|250|10|10"),
                                                QStringLiteral("Перник - Радомир|99,5|0|0"),
                                                QStringLiteral("Радомир - София|100,5|12,5|-10")}));
        QVERIFY(button(screen, "cmdCloseMarsh")->isVisible());
        button(screen, "cmdCloseMarsh")->click();
        QVERIFY(!screen.routes()->actionStrip()->isVisible());
        // 250 + 99.5 + 100.5 km; 93.5 + 30.0 (99.5 counts as 100) + (5 + 30) * 100 / 100 * 0.9 = 31.5
        QCOMPARE(totals(screen), QStringLiteral("450 155"));

        screen.tabs()->setCurrentIndex(0);
        QVERIFY(screen.header()->update());
        QCOMPARE(screen.header()->state(), RecordFormState::Browsing);
        QVERIFY(messages->shown.isEmpty());
        // A blank ZarM is saved as 0.
        QCOMPARE(row(db, "SELECT ListID, Kola, NameDriver, SumKM, SumRazhN, ZarN, ZarM, Data FROM RowdList"),
                 QStringLiteral("0000000037|СА 1234 ВК|Георги Д'Амато|450|155|120|0|2026-03-05"));
        QCOMPARE(row(db, "SELECT COUNT(*), SUM(RazhN) FROM Marsh WHERE MarshID = '0000000037'"), QStringLiteral("3|155"));
        QCOMPARE(screen.field(0)->text() + QLatin1Char(' ') + screen.field(8)->text(), QStringLiteral("05.03.2026 120"));
    }

    // The route tab opens only for a truck and a free number, the lines going under both; without
    // them it stays shut with nothing to save. The number is typed, its box not left.
    void theRouteTabNeedsATruckAndAFreeNumber_data()
    {
        QTest::addColumn<QString>("number");
        QTest::addColumn<QString>("kola");
        QTest::addColumn<QString>("told");
        QTest::newRow("no truck") << "37" << "" << "   ВНИМАНИЕ!|Няма въведен номер на кола в пътния лист!\n\n"
                                                   "Моля, въведете номера на колата.";
        QTest::newRow("no number") << "" << truck << "   ВНИМАНИЕ!|Няма въведен номер на пътния лист!\n\n"
                                                     "Моля, въведете номера на пътния лист.";
        QTest::newRow("taken") << "0000000040" << truck
                               << "   ГРЕШКА!|" + taken + "\n\nМоля, променете номера и опитайте отново.";
    }
    void theRouteTabNeedsATruckAndAFreeNumber()
    {
        QFETCH(QString, number);
        QFETCH(QString, kola);
        QFETCH(QString, told);
        addWaybill(db);
        RowdList &screen = open();
        screen.header()->add();
        screen.truckCombo()->setEditText(kola);
        screen.field(4)->setText(number);
        screen.tabs()->setCurrentIndex(1);
        QCOMPARE(screen.tabs()->currentIndex(), 0);  // the page stays as it is
        QCOMPARE(test::titled(messages->shown), QStringList{told});  // once, though the box checks it too as it is left
        QVERIFY(!button(screen, "cmdUpdateRowd")->isEnabled());
    }

    // A line is saved only for a truck with a norm and with figures that read: otherwise it is told,
    // the line stays as typed and nothing is written.
    void badFiguresInALineAreToldAndNothingIsWritten_data()
    {
        QTest::addColumn<QString>("kola");
        QTest::addColumn<QString>("km");
        QTest::addColumn<QString>("ton");
        QTest::addColumn<QString>("koef");
        QTest::addColumn<QString>("told");
        const QString fault = QStringLiteral("ГРЕШКА при запис!|");
        const QString number = QStringLiteral("\nМоля, въведете число в поле \"%1\".");
        QTest::newRow("a truck without a norm") << "ВТ 0001 ХХ" << "100" << "0" << "0"
                                                << "   ВНИМАНИЕ!|Колата няма въведена разходната норма!\n\n"
                                                   "Моля, въведете разходната норма на колата.";
        QTest::newRow("km no number") << truck << "сто" << "0" << "0" << fault + "\"сто\" не е число!" + number.arg("КМ");
        QTest::newRow("km blank") << truck << "" << "0" << "0"
                                  << fault + "Няма въведени километри на маршрута!\nМоля, въведете километрите в колона \"КМ\".";
        QTest::newRow("km above 32767") << truck << "40000" << "0" << "0"
                                        << fault + "Километрите на маршрута са твърде много!\nМоля, въведете до 32767 км в "
                                                   "колона \"КМ\".";
        QTest::newRow("tonnage no number") << truck << "100" << "10т" << "0" << fault + "\"10т\" не е число!" + number.arg("Тонаж");
        QTest::newRow("surcharge no number") << truck << "100" << "0" << "10%"
                                             << fault + "\"10%\" не е число!" + number.arg("Коеф.");
    }
    void badFiguresInALineAreToldAndNothingIsWritten()
    {
        QFETCH(QString, kola);
        QFETCH(QString, km);
        QFETCH(QString, ton);
        QFETCH(QString, koef);
        RowdList &screen = open();
        fillHeader(screen, QStringLiteral("37"), kola);
        screen.tabs()->setCurrentIndex(1);
        QVERIFY(!saveLine(screen, QStringList{QStringLiteral("София - Перник"), km, ton, koef}.join('|')));
        QTEST(onlyOne(messages->shown), "told");
        QCOMPARE(screen.routes()->state(), RecordFormState::Adding);
        QCOMPARE(gridRows(screen).value(0), QStringList({QStringLiteral("София - Перник"), km, ton, koef}).join('|'));
        QCOMPARE(count("SELECT COUNT(*) FROM Marsh"), 0);
    }

    // The header's totals follow its lines as each is saved or deleted, without "Изчисли", so the
    // waybill report and the fuel balance never read a stale total; a header saved later keeps them.
    void theHeaderTotalsFollowItsLines()
    {
        RowdList &screen = openWithALine();
        QCOMPARE(totals(screen), QStringLiteral("250 93,5"));
        screen.tabs()->setCurrentIndex(0);
        QVERIFY(screen.header()->update());
        QCOMPARE(sums(), QStringLiteral("250|93.5"));

        // Browsing the waybill: a line added, corrected (KM 30 → 80), then deleted.
        screen.tabs()->setCurrentIndex(1);
        addLine(screen, QStringLiteral("Перник - София|30|0|0"));
        QCOMPARE(sums(), QStringLiteral("280|102.5"));
        screen.routes()->last();
        screen.routes()->edit();
        QVERIFY(saveLine(screen, QStringLiteral("Перник - София|80|0|0")));
        QCOMPARE(sums(), QStringLiteral("330|117.5"));
        QCOMPARE(totals(screen), QStringLiteral("330 117,5"));
        screen.routes()->last();
        button(screen, "cmdDeleteMarsh")->click();
        QCOMPARE(sums(), QStringLiteral("250|93.5"));
        QCOMPARE(screen.field(1)->text(), QStringLiteral("250"));

        // A correction of the header saved afterwards keeps the totals of the lines.
        screen.tabs()->setCurrentIndex(0);
        screen.header()->edit();
        screen.field(8)->setText(QStringLiteral("150"));
        QVERIFY(screen.header()->update());
        QCOMPARE(row(db, "SELECT SumKM, ZarN FROM RowdList"), QStringLiteral("250|150"));
        QVERIFY(messages->shown.isEmpty());
    }

    void theHeaderChecksStopTheSaveInOrder_data()
    {
        QTest::addColumn<QString>("date");
        QTest::addColumn<QString>("kola");
        QTest::addColumn<QString>("driverName");
        QTest::addColumn<QString>("message");
        QTest::newRow("no date") << "" << "" << "" << "Няма въведена дата на пътния лист!";
        QTest::newRow("no truck") << "05.03.2026" << "" << "" << "Няма въведен номер на кола в пътния лист!";
        QTest::newRow("no driver") << "05.03.2026" << truck << "" << "Няма въведено име на шофьор!";
        QTest::newRow("no date that reads") << "31.02.2026" << truck << driver << "\"31.02.2026\" не е дата!";
    }
    void theHeaderChecksStopTheSaveInOrder()
    {
        QFETCH(QString, date);
        QFETCH(QString, kola);
        QFETCH(QString, driverName);
        QFETCH(QString, message);
        addWaybill(db);
        RowdList &screen = open();
        screen.header()->edit();
        screen.field(0)->setText(date);
        screen.truckCombo()->setEditText(kola);
        screen.driverCombo()->setEditText(driverName);
        QVERIFY(!screen.header()->update());
        QCOMPARE(texts(*messages), QStringList{message});
        QCOMPARE(screen.header()->state(), RecordFormState::Editing);
        QCOMPARE(count("SELECT row_version FROM RowdList"), 1);
    }

    // A new waybill saved under a number another waybill took meanwhile is refused.
    void aTakenNumberIsRefusedAtTheSave()
    {
        RowdList &screen = openWithALine();
        button(screen, "cmdCloseMarsh")->click();
        screen.tabs()->setCurrentIndex(0);
        addWaybill(db, QStringLiteral("0000000037"), QDate(2026, 3, 2), otherTruck, {});  // another workstation
        QVERIFY(!screen.header()->update());
        QCOMPARE(texts(*messages), QStringList{taken});
        QCOMPARE(count("SELECT COUNT(*) FROM RowdList"), 1);
    }

    // Cancelled, a new waybill takes the lines saved for it along; the lines of others stay.
    void cancellingANewWaybillLeavesNoLinesBehind()
    {
        addWaybill(db);
        RowdList &screen = open();
        screen.header()->add();
        startWithALine(screen);
        addLine(screen, QStringLiteral("Перник - София|30|0|0"));
        screen.tabs()->setCurrentIndex(0);
        button(screen, "cmdCancelRowd")->click();
        QCOMPARE(screen.header()->state(), RecordFormState::Browsing);
        QCOMPARE(screen.field(4)->text() + QLatin1Char('|') + test::row(db, "SELECT MarshID FROM Marsh"),
                 QStringLiteral("0000000040|0000000040"));
        QCOMPARE(screen.field(4)->palette().color(QPalette::Base), QApplication::palette(screen.field(4)).color(QPalette::Base));
        QVERIFY(messages->shown.isEmpty());
    }

    // Closed while a new waybill is typed: the same as cancelling it.
    void closingDuringANewWaybillLeavesNoLinesBehind()
    {
        RowdList &screen = openWithALine();
        screen.routes()->add();  // a second line half typed
        screen.reject();
        this->screen.reset();
        QCOMPARE(row(db, "SELECT (SELECT COUNT(*) FROM Marsh), (SELECT COUNT(*) FROM RowdList)"), QStringLiteral("0|0"));
    }

    void deletingAWaybillDeletesItsLines_data()
    {
        QTest::addColumn<bool>("yes");
        QTest::newRow("Да") << true;
        QTest::newRow("Не") << false;
    }
    void deletingAWaybillDeletesItsLines()
    {
        QFETCH(bool, yes);
        addWaybill(db);
        addWaybill(db, QStringLiteral("0000000041"), QDate(2026, 3, 3), truck, {{100, 0, 30}, {50, 0, 15}});
        messages->answers = {yes};
        RowdList &screen = open();
        QCOMPARE(screen.field(4)->text(), QStringLiteral("0000000041"));
        button(screen, "cmdDeleteRowd")->click();
        QCOMPARE(onlyOne(messages->asked),
                 QStringLiteral("   ВНИМАНИЕ!|Изтривате информацията за пътния лист!\n\nПотвърдете изтриването на пътния лист!"));
        QCOMPARE(test::rows(db, "SELECT MarshID, COUNT(*) FROM Marsh GROUP BY MarshID ORDER BY MarshID"),
                 (yes ? QStringList{"0000000040|1"} : QStringList{"0000000040|1", "0000000041|2"}));
        QCOMPARE(QString::number(count("SELECT COUNT(*) FROM RowdList")) + QLatin1Char(' ') + screen.field(4)->text(),
                 yes ? QStringLiteral("1 0000000040") : QStringLiteral("2 0000000041"));
    }

    void deletingALineAsksTheWaybillQuestionAndTakesOnlyTheLine()
    {
        addWaybill(db, QStringLiteral("0000000041"), QDate(2026, 3, 3), truck, {{100, 0, 30}, {50, 0, 15}});
        RowdList &screen = open();
        screen.tabs()->setCurrentIndex(1);
        QCOMPARE(gridRows(screen).size(), 2);
        QCOMPARE(screen.routes()->statusLabel()->text(), QStringLiteral("Запис № 1"));
        screen.routes()->next();
        button(screen, "cmdDeleteMarsh")->click();
        QCOMPARE(test::firstLines(messages->asked), QStringList{QStringLiteral("Изтривате информацията за пътния лист!")});
        QCOMPARE(gridRows(screen), QStringList{QStringLiteral("София - Перник|100|0|0")});
        QCOMPARE(count("SELECT COUNT(*) FROM RowdList"), 1);
        // "Изчисли" on a waybill that is only browsed stores its sums at once.
        button(screen, "cmdCloseMarsh")->click();
        QCOMPARE(totals(screen), QStringLiteral("100 30"));
        QCOMPARE(row(db, "SELECT SumKM, SumRazhN, row_version FROM RowdList"), QStringLiteral("100|30|2"));
    }

    // The lines are the waybill's: a corrected number takes them along.
    void aCorrectedNumberTakesTheLinesAlong()
    {
        addWaybill(db, QStringLiteral("0000000040"), QDate(2026, 3, 2), truck, {{100, 0, 30}, {50, 0, 15}});
        RowdList &screen = open();
        screen.header()->edit();
        screen.field(4)->setText(QStringLiteral("48"));
        QVERIFY(screen.header()->update());
        QCOMPARE(test::rows(db, "SELECT ListID FROM RowdList UNION ALL SELECT MarshID FROM Marsh"), QStringList(3, "0000000048"));
        screen.tabs()->setCurrentIndex(1);
        QCOMPARE(gridRows(screen).size(), 2);
    }

    // A new waybill whose number changes after lines were saved for it keeps them. Esc among the
    // routes while it is typed does not close the window.
    void theLinesOfANewWaybillFollowItsNumber()
    {
        RowdList &screen = openWithALine();
        QTest::keyClick(screen.grid(), Qt::Key_Escape);
        QVERIFY(screen.isVisible());
        QCOMPARE(screen.header()->state(), RecordFormState::Adding);
        QCOMPARE(count("SELECT COUNT(*) FROM Marsh"), 1);
        button(screen, "cmdCloseMarsh")->click();
        screen.tabs()->setCurrentIndex(0);
        screen.field(4)->setFocus();
        screen.field(4)->setText(QStringLiteral("38"));
        press(Qt::Key_Tab);
        QCOMPARE(screen.currentListId(), QStringLiteral("0000000038"));
        QVERIFY(screen.header()->update());
        QCOMPARE(test::rows(db, "SELECT MarshID FROM Marsh"), QStringList{QStringLiteral("0000000038")});
        QVERIFY(messages->shown.isEmpty());
    }

    // Another workstation corrected the waybill meanwhile: the save is refused, nothing typed is lost.
    void aWaybillChangedElsewhereIsNotOverwritten()
    {
        addWaybill(db);
        RowdList &screen = open();
        screen.header()->edit();
        screen.field(8)->setText(QStringLiteral("88"));
        QVERIFY(database->exec(QStringLiteral("UPDATE RowdList SET ZarN = 77, row_version = row_version + 1")));
        QVERIFY(!screen.header()->update());
        QCOMPARE(onlyTitle(messages->shown), QStringLiteral("ГРЕШКА при записа на пътния лист!"));
        QCOMPARE(screen.header()->state(), RecordFormState::Editing);
        QCOMPARE(screen.field(8)->text(), QStringLiteral("88"));
        QCOMPARE(scalar(db, "SELECT ZarN FROM RowdList").toDouble(), 77.0);
    }

    // Each new waybill lists the drivers and trucks once more.
    void theListsAreAddedToAtEachNewWaybill()
    {
        addWaybill(db);
        RowdList &screen = open();
        screen.header()->add();
        QCOMPARE(screen.truckCombo()->count(), 2);
        QCOMPARE(screen.truckCombo()->itemText(0), otherTruck);  // sorted
        screen.header()->cancel();
        screen.header()->edit();
        QCOMPARE(screen.truckCombo()->count(), 4);
        QCOMPARE(screen.driverCombo()->currentText(), QStringLiteral("Иван Петров Иванов"));
    }
};

QTEST_MAIN(RowdListTest)
#include "tst_rowdlist.moc"
