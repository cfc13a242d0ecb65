#include "forms/commands.h"
#include "forms/messageservice.h"
#include "forms/recordform.h"
#include "testdatabase.h"
#include "waybills/rowdlist.h"
#include "waybills/waybillscommands.h"

#include <QAbstractItemModel>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlError>
#include <QSqlQuery>
#include <QTabWidget>
#include <QTableView>

using namespace zarek;
using zarek::test::scalar;

namespace {

const QString truck = QStringLiteral("СА 1234 ВК");      // norm 30 l/100 km
const QString otherTruck = QStringLiteral("РВ 7777 АА");  // norm 25.5
const QString driver = QStringLiteral("Георги Д'Амато");

void prepare(test::ScratchDatabase &scratch)
{
    QVERIFY(scratch.exec(QStringLiteral("INSERT INTO Config (kola, Razhod, Procent, Ton) VALUES ('СА 1234 ВК', 30, 12, 20)")));
    QVERIFY(scratch.exec(QStringLiteral("INSERT INTO Config (kola, Razhod, Procent, Ton) VALUES ('РВ 7777 АА', 25.5, 12, 12)")));
    QVERIFY(scratch.exec(QStringLiteral("INSERT INTO shof (kod, ime) VALUES ('007', 'Иван Петров Иванов')")));
    QVERIFY(scratch.exec(QStringLiteral("INSERT INTO shof (kod, ime) VALUES ('012', 'Георги Д''Амато')")));
}

// A waybill written as earlier entry would have left it, with its lines (km, ton, fuel).
void addWaybill(QSqlDatabase db, const QString &listId, const QDate &date, const QString &kola,
                const QList<std::tuple<double, double, double>> &lines = {})
{
    double km = 0, fuel = 0;
    for (const auto &[lineKm, ton, razhN] : lines) {
        QSqlQuery query(db);
        query.prepare(QStringLiteral("INSERT INTO Marsh (MarshID, Marshrut, KM, Ton, Koef, RazhN) VALUES (?, ?, ?, ?, 0, ?)"));
        query.addBindValue(listId);
        query.addBindValue(QStringLiteral("София - Перник"));
        query.addBindValue(lineKm);
        query.addBindValue(ton);
        query.addBindValue(razhN);
        QVERIFY2(query.exec(), qPrintable(query.lastError().text()));
        km += lineKm;
        fuel += razhN;
    }
    QSqlQuery query(db);
    query.prepare(QStringLiteral("INSERT INTO RowdList (ListID, Data, Kola, NameDriver, SumKM, SumRazhN, EndKM, ZarN, "
                                 "ZarM, CenaN, CenaM) VALUES (?, ?, ?, ?, ?, ?, 0, 0, 0, 0, 0)"));
    for (const QVariant &value : QVariantList{listId, date, kola, QStringLiteral("Иван Петров Иванов"), km, fuel})
        query.addBindValue(value);
    QVERIFY2(query.exec(), qPrintable(query.lastError().text()));
}

QStringList texts(const RecordingMessageService &messages)
{
    QStringList list;
    for (const UserMessage &m : messages.shown)
        list.append(m.text.section(QLatin1Char('\n'), 0, 0));
    return list;
}

void type(const QString &text)
{
    for (const QChar c : text)
        QTest::sendKeyEvent(QTest::Click, QApplication::focusWidget(), Qt::Key_unknown, QString(c), Qt::NoModifier);
}

void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QTest::keyClick(QApplication::focusWidget(), key, modifiers);
    QCoreApplication::processEvents();
}

QPushButton *button(RowdList &screen, const char *name)
{
    return screen.findChild<QPushButton *>(QString::fromLatin1(name));
}

void show(RowdList &screen)
{
    screen.show();
    QVERIFY(QTest::qWaitForWindowActive(&screen));
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

// A line typed into the pending row of the grid, then saved.
bool saveLine(RowdList &screen, const QString &route, const QString &km, const QString &ton, const QString &koef)
{
    QAbstractItemModel *model = screen.grid()->model();
    const int row = screen.routes()->state() == RecordFormState::Adding ? model->rowCount() - 1
                                                                          : screen.routes()->currentIndex();
    const QStringList cells = {route, km, ton, koef};
    for (int column = 0; column < 4; ++column)
        model->setData(model->index(row, column), cells[column]);
    return screen.routes()->update();
}

void addLine(RowdList &screen, const QString &route, const QString &km, const QString &ton, const QString &koef)
{
    screen.routes()->add();
    QVERIFY(saveLine(screen, route, km, ton, koef));
}

QStringList gridRows(RowdList &screen)
{
    QStringList rows;
    const QAbstractItemModel *model = screen.grid()->model();
    for (int row = 0; row < model->rowCount(); ++row) {
        QStringList cells;
        for (int column = 0; column < model->columnCount(); ++column)
            cells.append(model->index(row, column).data().toString());
        rows.append(cells.join(QLatin1Char('|')));
    }
    return rows;
}

}

class RowdListTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void anEmptyRegisterOpensReadyForItsFirstWaybill()
    {
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch);
        RecordingMessageService messages;
        RowdList screen(scratch.db());
        show(screen);
        QCOMPARE(screen.windowTitle(), QStringLiteral("Зарек 2.3.4 - Пътни листи"));
        QCOMPARE(screen.header()->state(), RecordFormState::Adding);
        QCOMPARE(screen.header()->statusLabel()->text(), QStringLiteral("Нов запис"));
        QCOMPARE(QApplication::focusWidget(), screen.field(4));
        QVERIFY(screen.driverCombo()->isVisible());
        QVERIFY(!screen.field(2)->isVisible());
        QCOMPARE(screen.driverCombo()->count(), 2);
        QCOMPARE(screen.truckCombo()->count(), 2);
        // Nothing to save before the route tab was opened.
        QVERIFY(!button(screen, "cmdUpdateRowd")->isEnabled());
        QCOMPARE(screen.tabs()->tabText(0), QStringLiteral("Обща част"));
        QCOMPARE(screen.tabs()->tabToolTip(1), QStringLiteral("Маршрути от пътния лист"));
        QCOMPARE(screen.field(4)->palette().color(QPalette::Base), QColor(0xFF, 0xFF, 0x80));
        QCOMPARE(screen.field(8)->palette().color(QPalette::Base), QApplication::palette(screen.field(8)).color(QPalette::Base));
        QVERIFY(messages.shown.isEmpty());
    }

    void theNewestNumberShowsFirstAndBrowsingShowsTheBoxes()
    {
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch);
        addWaybill(scratch.db(), QStringLiteral("0000000040"), QDate(2026, 3, 2), truck);
        addWaybill(scratch.db(), QStringLiteral("0000000052"), QDate(2026, 3, 4), otherTruck, {{120, 10, 40.8}});
        addWaybill(scratch.db(), QStringLiteral("0000000041"), QDate(2026, 3, 3), truck);
        RecordingMessageService messages;
        RowdList screen(scratch.db());
        show(screen);
        QCOMPARE(screen.header()->state(), RecordFormState::Browsing);
        QCOMPARE(screen.field(4)->text(), QStringLiteral("0000000052"));
        QCOMPARE(screen.header()->statusLabel()->text(), QStringLiteral("Запис № 3"));
        QCOMPARE(screen.field(3)->text(), otherTruck);
        QCOMPARE(screen.field(1)->text(), QStringLiteral("120"));
        QCOMPARE(screen.field(6)->text(), QStringLiteral("40,8"));
        QVERIFY(screen.field(3)->isVisible());
        QVERIFY(!screen.truckCombo()->isVisible());
        QVERIFY(screen.field(1)->isReadOnly());
        QCOMPARE(screen.field(1)->focusPolicy(), Qt::NoFocus);
        screen.header()->previous();
        QCOMPARE(screen.field(4)->text(), QStringLiteral("0000000041"));
        QCOMPARE(screen.header()->statusLabel()->text(), QStringLiteral("Запис № 2"));
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
        QTest::newRow("taken, in its padded form") << "40" << "0000000040"
                                                   << "Съществува пътен лист със същия номер!" << true;
        QTest::newRow("eleven: told, not fatal") << "12345678901" << "12345678901"
                                                 << "Номера на документа е по-дълъг от разрешения!" << true;
    }
    void theNumberIsPaddedOnLeavingItsBox()
    {
        QFETCH(QString, typed);
        QFETCH(QString, shown);
        QFETCH(QString, message);
        QFETCH(bool, focusBack);
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch);
        addWaybill(scratch.db(), QStringLiteral("0000000040"), QDate(2026, 3, 2), truck);
        RecordingMessageService messages;
        RowdList screen(scratch.db());
        show(screen);
        screen.header()->add();
        QCOMPARE(QApplication::focusWidget(), screen.field(4));
        type(typed);
        press(Qt::Key_Tab);
        QCOMPARE(screen.field(4)->text(), shown);
        QCOMPARE(texts(messages), message.isEmpty() ? QStringList() : QStringList{message});
        QCOMPARE(QApplication::focusWidget(), focusBack ? static_cast<QWidget *>(screen.field(4)) : screen.field(0));
        if (!message.isEmpty() && message.startsWith(QStringLiteral("Съществува")))
            QCOMPARE(messages.shown.first().title, QStringLiteral("   ГРЕШКА!"));
    }

    // While a waybill is corrected its own number is reported too, and it may still be saved.
    void correctingAWaybillReportsItsOwnNumberAndSaves()
    {
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch);
        addWaybill(scratch.db(), QStringLiteral("0000000040"), QDate(2026, 3, 2), truck, {{100, 0, 30}});
        RecordingMessageService messages;
        RowdList screen(scratch.db());
        show(screen);
        screen.header()->edit();
        QCOMPARE(screen.header()->statusLabel()->text(), QStringLiteral("Корекция на запис"));
        QCOMPARE(QApplication::focusWidget(), screen.field(0));
        QCOMPARE(screen.truckCombo()->currentText(), truck);
        screen.field(4)->setFocus();
        press(Qt::Key_Tab);
        QCOMPARE(texts(messages), QStringList{QStringLiteral("Съществува пътен лист със същия номер!")});
        QCOMPARE(QApplication::focusWidget(), screen.field(0));  // not held in the box
        screen.field(7)->setText(QStringLiteral("2,5"));
        QVERIFY(screen.header()->update());
        QCOMPARE(scalar(scratch.db(), "SELECT ZarM FROM RowdList").toDouble(), 2.5);
        QCOMPARE(messages.shown.size(), 1);
    }

    // The path of a new waybill: number, date, driver, truck, routes typed into the grid, "Изчисли",
    // back to the header, saved. Each line has its norm fuel.
    void aNewWaybillWithThreeLinesIsStoredWithItsNormAndSums()
    {
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch);
        RecordingMessageService messages;
        RowdList screen(scratch.db());
        show(screen);
        fillHeader(screen, QStringLiteral("37"));
        QCOMPARE(screen.field(4)->text(), QStringLiteral("0000000037"));

        screen.tabs()->setCurrentIndex(1);
        QCOMPARE(screen.tabs()->currentIndex(), 1);
        QCOMPARE(screen.currentListId(), QStringLiteral("0000000037"));
        QCOMPARE(screen.currentKola(), truck);
        QVERIFY(button(screen, "cmdUpdateRowd")->isEnabledTo(screen.tabs()->widget(0)));
        // No lines yet: the first one is typed at once, from the keyboard.
        QCOMPARE(screen.routes()->state(), RecordFormState::Adding);
        QCOMPARE(screen.routes()->statusLabel()->text(), QStringLiteral("Корекция..."));
        QVERIFY(!screen.tabs()->isTabEnabled(0));
        QVERIFY(screen.grid()->isAncestorOf(QApplication::focusWidget()));
        type(QStringLiteral("София - Перник"));
        press(Qt::Key_Tab);
        type(QStringLiteral("250"));
        press(Qt::Key_Tab);
        type(QStringLiteral("10"));
        press(Qt::Key_Tab);
        type(QStringLiteral("10"));
        press(Qt::Key_Return);
        QTRY_COMPARE(screen.routes()->state(), RecordFormState::Browsing);
        QCOMPARE(QApplication::focusWidget(), button(screen, "cmdAddMarsh"));
        QCOMPARE(scalar(scratch.db(), "SELECT RazhN FROM Marsh WHERE MarshID = '0000000037'").toDouble(), 93.5);

        // Enter on "Добави" starts the next line.
        press(Qt::Key_Return);
        QCOMPARE(screen.routes()->state(), RecordFormState::Adding);
        QVERIFY(saveLine(screen, QStringLiteral("Перник - Радомир"), QStringLiteral("99,5"), QStringLiteral("0"),
                         QStringLiteral("0")));
        addLine(screen, QStringLiteral("Радомир - София"), QStringLiteral("100.5"), QStringLiteral("12,5"),
                QStringLiteral("-10"));
        QCOMPARE(gridRows(screen), (QStringList{QStringLiteral("София - Перник|250|10|10"),
                                                QStringLiteral("Перник - Радомир|99,5|0|0"),
                                                QStringLiteral("Радомир - София|100,5|12,5|-10")}));
        QVERIFY(button(screen, "cmdCloseMarsh")->isVisible());
        button(screen, "cmdCloseMarsh")->click();
        QVERIFY(!screen.routes()->actionStrip()->isVisible());
        QCOMPARE(screen.field(1)->text(), QStringLiteral("450"));  // 250 + 99.5 + 100.5
        // 93.5 + 30.0 (99.5 counts as 100) + (5 + 30) * 100 / 100 * 0.9 = 31.5
        QCOMPARE(screen.field(6)->text(), QStringLiteral("155"));

        screen.tabs()->setCurrentIndex(0);
        QVERIFY(screen.header()->update());
        QCOMPARE(screen.header()->state(), RecordFormState::Browsing);
        QVERIFY(messages.shown.isEmpty());
        const QSqlDatabase db = scratch.db();
        QCOMPARE(scalar(db, "SELECT ListID || '|' || Kola || '|' || NameDriver FROM RowdList").toString(),
                 QStringLiteral("0000000037|СА 1234 ВК|Георги Д'Амато"));
        QCOMPARE(scalar(db, "SELECT SumKM FROM RowdList").toDouble(), 450.0);
        QCOMPARE(scalar(db, "SELECT SumRazhN FROM RowdList").toDouble(), 155.0);
        QCOMPARE(scalar(db, "SELECT ZarN FROM RowdList").toDouble(), 120.0);
        QCOMPARE(scalar(db, "SELECT ZarM FROM RowdList").toDouble(), 0.0);  // a blank is saved as 0
        QCOMPARE(scalar(db, "SELECT Data FROM RowdList").toDate(), QDate(2026, 3, 5));
        QCOMPARE(scalar(db, "SELECT COUNT(*) FROM Marsh WHERE MarshID = '0000000037'").toInt(), 3);
        QCOMPARE(scalar(db, "SELECT SUM(RazhN) FROM Marsh").toDouble(), 155.0);
        QCOMPARE(screen.field(0)->text(), QStringLiteral("05.03.2026"));
        QCOMPARE(screen.field(8)->text(), QStringLiteral("120"));
    }

    void theRouteTabNeedsATruck()
    {
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch);
        RecordingMessageService messages;
        RowdList screen(scratch.db());
        show(screen);
        fillHeader(screen, QStringLiteral("37"), QString());
        screen.tabs()->setCurrentIndex(1);
        QCOMPARE(screen.tabs()->currentIndex(), 0);  // the page stays as it is
        QCOMPARE(messages.shown.size(), 1);
        QCOMPARE(messages.shown.first().title, QStringLiteral("   ВНИМАНИЕ!"));
        QCOMPARE(messages.shown.first().text,
                 QStringLiteral("Няма въведен номер на кола в пътния лист!\n\nМоля, въведете номера на колата."));
        QVERIFY(!button(screen, "cmdUpdateRowd")->isEnabled());
    }

    // Lines of a new waybill go under its number: none, a taken one or one too long opens no routes.
    void theRouteTabOfANewWaybillNeedsAFreeNumber_data()
    {
        QTest::addColumn<QString>("number");
        QTest::addColumn<QString>("message");
        QTest::newRow("none") << "" << "Няма въведен номер на пътния лист!";
        QTest::newRow("taken") << "0000000040" << "Съществува пътен лист със същия номер!";
    }
    void theRouteTabOfANewWaybillNeedsAFreeNumber()
    {
        QFETCH(QString, number);
        QFETCH(QString, message);
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch);
        addWaybill(scratch.db(), QStringLiteral("0000000040"), QDate(2026, 3, 2), truck, {{100, 0, 30}});
        RecordingMessageService messages;
        RowdList screen(scratch.db());
        show(screen);
        screen.header()->add();
        screen.truckCombo()->setEditText(truck);
        screen.field(4)->setText(number);  // typed, the box not left
        screen.tabs()->setCurrentIndex(1);
        QCOMPARE(screen.tabs()->currentIndex(), 0);
        QCOMPARE(texts(messages).value(0), message);
    }

    void aTruckWithoutANormGetsNoLines()
    {
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch);
        RecordingMessageService messages;
        RowdList screen(scratch.db());
        show(screen);
        fillHeader(screen, QStringLiteral("37"), QStringLiteral("ВТ 0001 ХХ"));
        screen.tabs()->setCurrentIndex(1);
        QVERIFY(!saveLine(screen, QStringLiteral("Търново - Русе"), QStringLiteral("100"), QStringLiteral("0"),
                          QStringLiteral("0")));
        QCOMPARE(messages.shown.size(), 1);
        QCOMPARE(messages.shown.first().title, QStringLiteral("   ВНИМАНИЕ!"));
        QCOMPARE(messages.shown.first().text,
                 QStringLiteral("Колата няма въведена разходната норма!\n\nМоля, въведете разходната норма на колата."));
        QCOMPARE(screen.routes()->state(), RecordFormState::Adding);  // the line stays as typed
        QCOMPARE(gridRows(screen).value(0), QStringLiteral("Търново - Русе|100|0|0"));
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM Marsh").toInt(), 0);
    }

    void badFiguresInALineAreToldAndNothingIsWritten_data()
    {
        QTest::addColumn<QString>("km");
        QTest::addColumn<QString>("ton");
        QTest::addColumn<QString>("koef");
        QTest::addColumn<QString>("message");
        QTest::newRow("km no number") << "сто" << "0" << "0" << "\"сто\" не е число!";
        QTest::newRow("km blank") << "" << "0" << "0" << "Няма въведени километри на маршрута!";
        QTest::newRow("km above 32767") << "40000" << "0" << "0" << "Километрите на маршрута са твърде много!";
        QTest::newRow("tonnage no number") << "100" << "10т" << "0" << "\"10т\" не е число!";
        QTest::newRow("surcharge no number") << "100" << "0" << "10%" << "\"10%\" не е число!";
    }
    void badFiguresInALineAreToldAndNothingIsWritten()
    {
        QFETCH(QString, km);
        QFETCH(QString, ton);
        QFETCH(QString, koef);
        QFETCH(QString, message);
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch);
        RecordingMessageService messages;
        RowdList screen(scratch.db());
        show(screen);
        fillHeader(screen, QStringLiteral("37"));
        screen.tabs()->setCurrentIndex(1);
        QVERIFY(!saveLine(screen, QStringLiteral("София - Перник"), km, ton, koef));
        QCOMPARE(texts(messages), QStringList{message});
        QCOMPARE(screen.routes()->state(), RecordFormState::Adding);
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM Marsh").toInt(), 0);
    }

    // The header's totals follow its lines as each is saved or deleted, without "Изчисли", so the
    // waybill report and the fuel balance never read a stale total; a header saved later keeps them.
    void theHeaderTotalsFollowItsLines()
    {
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch);
        RecordingMessageService messages;
        RowdList screen(scratch.db());
        show(screen);
        fillHeader(screen, QStringLiteral("37"));
        screen.tabs()->setCurrentIndex(1);
        QVERIFY(saveLine(screen, QStringLiteral("София - Перник"), QStringLiteral("250"), QStringLiteral("10"),
                         QStringLiteral("10")));
        QCOMPARE(screen.field(1)->text(), QStringLiteral("250"));
        QCOMPARE(screen.field(6)->text(), QStringLiteral("93,5"));
        screen.tabs()->setCurrentIndex(0);
        QVERIFY(screen.header()->update());
        QCOMPARE(scalar(scratch.db(), "SELECT SumKM FROM RowdList").toDouble(), 250.0);

        // Browsing the waybill: a line added, corrected (KM 30 → 80), then deleted.
        screen.tabs()->setCurrentIndex(1);
        addLine(screen, QStringLiteral("Перник - София"), QStringLiteral("30"), QStringLiteral("0"), QStringLiteral("0"));
        QCOMPARE(scalar(scratch.db(), "SELECT SumKM FROM RowdList").toDouble(), 280.0);
        QCOMPARE(scalar(scratch.db(), "SELECT SumRazhN FROM RowdList").toDouble(), 102.5);
        screen.routes()->last();
        screen.routes()->edit();
        QVERIFY(saveLine(screen, QStringLiteral("Перник - София"), QStringLiteral("80"), QStringLiteral("0"),
                         QStringLiteral("0")));
        QCOMPARE(scalar(scratch.db(), "SELECT SumKM FROM RowdList").toDouble(), 330.0);
        QCOMPARE(scalar(scratch.db(), "SELECT SumRazhN FROM RowdList").toDouble(), 117.5);
        QCOMPARE(screen.field(1)->text(), QStringLiteral("330"));
        QCOMPARE(screen.field(6)->text(), QStringLiteral("117,5"));
        screen.routes()->last();
        button(screen, "cmdDeleteMarsh")->click();
        QCOMPARE(scalar(scratch.db(), "SELECT SumKM FROM RowdList").toDouble(), 250.0);
        QCOMPARE(scalar(scratch.db(), "SELECT SumRazhN FROM RowdList").toDouble(), 93.5);
        QCOMPARE(screen.field(1)->text(), QStringLiteral("250"));

        // A correction of the header saved afterwards keeps the totals of the lines.
        screen.tabs()->setCurrentIndex(0);
        screen.header()->edit();
        screen.field(8)->setText(QStringLiteral("150"));
        QVERIFY(screen.header()->update());
        QCOMPARE(scalar(scratch.db(), "SELECT SumKM FROM RowdList").toDouble(), 250.0);
        QCOMPARE(scalar(scratch.db(), "SELECT ZarN FROM RowdList").toDouble(), 150.0);
        QVERIFY(messages.shown.isEmpty());
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
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch);
        addWaybill(scratch.db(), QStringLiteral("0000000040"), QDate(2026, 3, 2), truck, {{100, 0, 30}});
        RecordingMessageService messages;
        RowdList screen(scratch.db());
        show(screen);
        screen.header()->edit();
        screen.field(0)->setText(date);
        screen.truckCombo()->setEditText(kola);
        screen.driverCombo()->setEditText(driverName);
        QVERIFY(!screen.header()->update());
        QCOMPARE(texts(messages), QStringList{message});
        QCOMPARE(screen.header()->state(), RecordFormState::Editing);
        QCOMPARE(scalar(scratch.db(), "SELECT row_version FROM RowdList").toInt(), 1);
    }

    // A new waybill saved under a number another waybill took meanwhile is refused.
    void aTakenNumberIsRefusedAtTheSave()
    {
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch);
        RecordingMessageService messages;
        RowdList screen(scratch.db());
        show(screen);
        fillHeader(screen, QStringLiteral("37"));
        screen.tabs()->setCurrentIndex(1);
        QVERIFY(saveLine(screen, QStringLiteral("София - Перник"), QStringLiteral("250"), QStringLiteral("10"),
                         QStringLiteral("10")));
        button(screen, "cmdCloseMarsh")->click();
        screen.tabs()->setCurrentIndex(0);
        addWaybill(scratch.db(), QStringLiteral("0000000037"), QDate(2026, 3, 2), otherTruck);  // another workstation
        QVERIFY(!screen.header()->update());
        QCOMPARE(texts(messages), QStringList{QStringLiteral("Съществува пътен лист със същия номер!")});
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM RowdList").toInt(), 1);
    }

    // Cancelled, a new waybill takes the lines saved for it along; the lines of others stay.
    void cancellingANewWaybillLeavesNoLinesBehind()
    {
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch);
        addWaybill(scratch.db(), QStringLiteral("0000000040"), QDate(2026, 3, 2), truck, {{100, 0, 30}});
        RecordingMessageService messages;
        RowdList screen(scratch.db());
        show(screen);
        screen.header()->add();
        fillHeader(screen, QStringLiteral("37"));
        screen.tabs()->setCurrentIndex(1);
        QVERIFY(saveLine(screen, QStringLiteral("София - Перник"), QStringLiteral("250"), QStringLiteral("10"),
                         QStringLiteral("10")));
        addLine(screen, QStringLiteral("Перник - София"), QStringLiteral("30"), QStringLiteral("0"), QStringLiteral("0"));
        screen.tabs()->setCurrentIndex(0);
        button(screen, "cmdCancelRowd")->click();
        QCOMPARE(screen.header()->state(), RecordFormState::Browsing);
        QCOMPARE(screen.field(4)->text(), QStringLiteral("0000000040"));
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM Marsh WHERE MarshID = '0000000037'").toInt(), 0);
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM Marsh").toInt(), 1);
        QCOMPARE(screen.field(4)->palette().color(QPalette::Base), QApplication::palette(screen.field(4)).color(QPalette::Base));
        QVERIFY(messages.shown.isEmpty());
    }

    // Closed while a new waybill is typed: the same as cancelling it.
    void closingDuringANewWaybillLeavesNoLinesBehind()
    {
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch);
        RecordingMessageService messages;
        {
            RowdList screen(scratch.db());
            show(screen);
            fillHeader(screen, QStringLiteral("37"));
            screen.tabs()->setCurrentIndex(1);
            QVERIFY(saveLine(screen, QStringLiteral("София - Перник"), QStringLiteral("250"), QStringLiteral("10"),
                             QStringLiteral("10")));
            screen.routes()->add();  // a second line half typed
            screen.reject();
        }
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM Marsh").toInt(), 0);
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM RowdList").toInt(), 0);
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
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch);
        addWaybill(scratch.db(), QStringLiteral("0000000040"), QDate(2026, 3, 2), truck, {{100, 0, 30}});
        addWaybill(scratch.db(), QStringLiteral("0000000041"), QDate(2026, 3, 3), truck, {{100, 0, 30}, {50, 0, 15}});
        RecordingMessageService messages;
        messages.answers = {yes};
        RowdList screen(scratch.db());
        show(screen);
        QCOMPARE(screen.field(4)->text(), QStringLiteral("0000000041"));
        button(screen, "cmdDeleteRowd")->click();
        QCOMPARE(messages.asked.size(), 1);
        QCOMPARE(messages.asked.first().title, QStringLiteral("   ВНИМАНИЕ!"));
        QCOMPARE(messages.asked.first().text,
                 QStringLiteral("Изтривате информацията за пътния лист!\n\nПотвърдете изтриването на пътния лист!"));
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM RowdList").toInt(), yes ? 1 : 2);
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM Marsh WHERE MarshID = '0000000041'").toInt(), yes ? 0 : 2);
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM Marsh WHERE MarshID = '0000000040'").toInt(), 1);
        QCOMPARE(screen.field(4)->text(), yes ? QStringLiteral("0000000040") : QStringLiteral("0000000041"));
    }

    void deletingALineAsksTheWaybillQuestionAndTakesOnlyTheLine()
    {
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch);
        addWaybill(scratch.db(), QStringLiteral("0000000041"), QDate(2026, 3, 3), truck, {{100, 0, 30}, {50, 0, 15}});
        RecordingMessageService messages;
        RowdList screen(scratch.db());
        show(screen);
        screen.tabs()->setCurrentIndex(1);
        QCOMPARE(gridRows(screen).size(), 2);
        QCOMPARE(screen.routes()->statusLabel()->text(), QStringLiteral("Запис № 1"));
        screen.routes()->next();
        button(screen, "cmdDeleteMarsh")->click();
        QCOMPARE(messages.asked.size(), 1);
        QCOMPARE(messages.asked.first().text.section(QLatin1Char('\n'), 0, 0),
                 QStringLiteral("Изтривате информацията за пътния лист!"));
        QCOMPARE(gridRows(screen), QStringList{QStringLiteral("София - Перник|100|0|0")});
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM RowdList").toInt(), 1);
        // "Изчисли" on a waybill that is only browsed stores its sums at once.
        button(screen, "cmdCloseMarsh")->click();
        QCOMPARE(screen.field(1)->text(), QStringLiteral("100"));
        QCOMPARE(screen.field(6)->text(), QStringLiteral("30"));
        QCOMPARE(scalar(scratch.db(), "SELECT SumKM FROM RowdList").toDouble(), 100.0);
        QCOMPARE(scalar(scratch.db(), "SELECT SumRazhN FROM RowdList").toDouble(), 30.0);
        QCOMPARE(scalar(scratch.db(), "SELECT row_version FROM RowdList").toInt(), 2);
    }

    // The lines are the waybill's: a corrected number takes them along.
    void aCorrectedNumberTakesTheLinesAlong()
    {
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch);
        addWaybill(scratch.db(), QStringLiteral("0000000040"), QDate(2026, 3, 2), truck, {{100, 0, 30}, {50, 0, 15}});
        RecordingMessageService messages;
        RowdList screen(scratch.db());
        show(screen);
        screen.header()->edit();
        screen.field(4)->setText(QStringLiteral("48"));
        QVERIFY(screen.header()->update());
        QCOMPARE(scalar(scratch.db(), "SELECT ListID FROM RowdList").toString(), QStringLiteral("0000000048"));
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM Marsh WHERE MarshID = '0000000048'").toInt(), 2);
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM Marsh").toInt(), 2);
        screen.tabs()->setCurrentIndex(1);
        QCOMPARE(gridRows(screen).size(), 2);
    }

    // A new waybill whose number changes after lines were saved for it keeps them.
    void theLinesOfANewWaybillFollowItsNumber()
    {
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch);
        RecordingMessageService messages;
        RowdList screen(scratch.db());
        show(screen);
        fillHeader(screen, QStringLiteral("37"));
        screen.tabs()->setCurrentIndex(1);
        QVERIFY(saveLine(screen, QStringLiteral("София - Перник"), QStringLiteral("250"), QStringLiteral("10"),
                         QStringLiteral("10")));
        button(screen, "cmdCloseMarsh")->click();
        screen.tabs()->setCurrentIndex(0);
        screen.field(4)->setFocus();
        screen.field(4)->setText(QStringLiteral("38"));
        press(Qt::Key_Tab);
        QCOMPARE(screen.currentListId(), QStringLiteral("0000000038"));
        QVERIFY(screen.header()->update());
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM Marsh WHERE MarshID = '0000000038'").toInt(), 1);
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM Marsh").toInt(), 1);
        QVERIFY(messages.shown.isEmpty());
    }

    // Another workstation corrected the waybill meanwhile: the save is refused, nothing typed is lost.
    void aWaybillChangedElsewhereIsNotOverwritten()
    {
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch);
        addWaybill(scratch.db(), QStringLiteral("0000000040"), QDate(2026, 3, 2), truck, {{100, 0, 30}});
        RecordingMessageService messages;
        RowdList screen(scratch.db());
        show(screen);
        screen.header()->edit();
        screen.field(8)->setText(QStringLiteral("88"));
        QVERIFY(scratch.exec(QStringLiteral("UPDATE RowdList SET ZarN = 77, row_version = row_version + 1")));
        QVERIFY(!screen.header()->update());
        QCOMPARE(messages.shown.size(), 1);
        QCOMPARE(messages.shown.first().title, QStringLiteral("ГРЕШКА при записа на пътния лист!"));
        QCOMPARE(screen.header()->state(), RecordFormState::Editing);
        QCOMPARE(screen.field(8)->text(), QStringLiteral("88"));
        QCOMPARE(scalar(scratch.db(), "SELECT ZarN FROM RowdList").toDouble(), 77.0);
    }

    // Esc among the routes while a new waybill is typed does not close the window.
    void escapeAmongTheRoutesKeepsANewWaybill()
    {
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch);
        RecordingMessageService messages;
        RowdList screen(scratch.db());
        show(screen);
        fillHeader(screen, QStringLiteral("37"));
        screen.tabs()->setCurrentIndex(1);
        QVERIFY(saveLine(screen, QStringLiteral("София - Перник"), QStringLiteral("250"), QStringLiteral("10"),
                         QStringLiteral("10")));
        QTest::keyClick(screen.grid(), Qt::Key_Escape);
        QVERIFY(screen.isVisible());
        QCOMPARE(screen.header()->state(), RecordFormState::Adding);
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM Marsh").toInt(), 1);
    }

    void theMenuCommandsAreRegistered()
    {
        CommandRegistry commands{CommandContext{}};
        registerWaybillCommands(commands);
        QVERIFY(commands.has(QStringLiteral("mnuDataPList")));
        QVERIFY(commands.has(QStringLiteral("mnuSprRowdList")));
    }

    // Each new waybill lists the drivers and trucks once more.
    void theListsAreAddedToAtEachNewWaybill()
    {
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch);
        addWaybill(scratch.db(), QStringLiteral("0000000040"), QDate(2026, 3, 2), truck, {{100, 0, 30}});
        RecordingMessageService messages;
        RowdList screen(scratch.db());
        show(screen);
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
