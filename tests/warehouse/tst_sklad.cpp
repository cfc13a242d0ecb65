#include "forms/commands.h"
#include "forms/messageservice.h"
#include "forms/recordform.h"
#include "screendriver.h"
#include "subsystemfixtures.h"
#include "testdatabase.h"
#include "warehouse/issuecost.h"
#include "warehouse/sklad.h"
#include "warehouse/stockfixture.h"
#include "warehouse/stockscreens.h"
#include "warehouse/warehousecommands.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlQuery>
#include <QTableView>
#include <QTableWidget>

using namespace zarek;
using zarek::test::child;
using zarek::test::movement;
using zarek::test::scalar;

namespace {

const auto fixedClock = [] { return QDateTime(QDate(2026, 3, 20), QTime(10, 0)); };

QLineEdit *field(QWidget &w, int index) { return child<QLineEdit>(w, QStringLiteral("txtFields_%1").arg(index)); }
QComboBox *combo(QWidget &w, int index) { return child<QComboBox>(w, QStringLiteral("Combo%1").arg(index)); }

// Types a movement into the boxes of a screen in Adding, as the keyboard leaves them.
void enter(Sklad &screen, const QString &kind, const QString &name, const QString &kol, const QString &edin,
           const QString &date = QStringLiteral("05.03.2026"))
{
    combo(screen, 1)->setEditText(kind);
    emit combo(screen, 1)->lineEdit()->editingFinished();
    field(screen, 2)->setText(QStringLiteral("0001"));
    field(screen, 0)->setText(date);
    combo(screen, 2)->setEditText(name);
    emit combo(screen, 2)->lineEdit()->editingFinished();
    if (!field(screen, 4)->isReadOnly())
        field(screen, 4)->setText(kol);
    field(screen, 5)->setText(edin);
}

void twoReceipts(QSqlDatabase db)
{
    const WarehouseStore store(db, fixedClock);
    for (const int day : {1, 2})
        QVERIFY(store.addReceipt(
            movement("Масло", 10, 1.0 + day, QDate(2026, 3, day), "Фактура", QString::number(3100 + day))));
}

QStringList texts(const RecordingMessageService &messages) { return test::titled(messages.shown); }

}

// A fresh database of the current engine, with two receipts of "Масло" (10 at 2, 10 at 3) unless
// "empty", the messages recorded, and the warehouse screen of kind P (receipts) or R (issues).
#define WAREHOUSE_EMPTY(screen, kind)                                             \
    ZAREK_SCRATCH_DB_TELLING(scratch);                                            \
    Sklad screen(QStringLiteral(kind), scratch.db(), nullptr, fixedClock)
#define WAREHOUSE_WITH_TWO_RECEIPTS(screen, kind)                                 \
    ZAREK_SCRATCH_DB(scratch);                                                    \
    twoReceipts(scratch.db());                                                    \
    RecordingMessageService messages;                                             \
    Sklad screen(QStringLiteral(kind), scratch.db(), nullptr, fixedClock)

class SkladTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    // An empty warehouse opens straight in a new receipt; saving it raises the stock.
    void aReceiptIsEnteredAndRaisesTheStock()
    {
        WAREHOUSE_EMPTY(screen, "P");
        QCOMPARE(screen.objectName(), QStringLiteral("Sklad"));
        QCOMPARE(screen.windowTitle(), QStringLiteral("Зарек 2.3 - Склад - Приход"));
        QCOMPARE(child<QGroupBox>(screen, "Frame3")->title(), QStringLiteral("Приход"));
        QVERIFY(child<QGroupBox>(screen, "Frame4")->isHidden());
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Adding);
        QCOMPARE(screen.recordForm()->statusLabel()->text(), QStringLiteral("Нов запис"));
        QCOMPARE(field(screen, 0)->text(), QStringLiteral("20.03.2026"));  // today to start with

        enter(screen, "Фактура", "Масло ", "10", "2,50");
        QCOMPARE(field(screen, 6)->text(), QStringLiteral("25,00"));
        QVERIFY(screen.recordForm()->update());
        QCOMPARE(texts(messages), QStringList());
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Browsing);
        QCOMPARE(field(screen, 3)->text(), QStringLiteral("Масло"));
        QCOMPARE(field(screen, 6)->text(), QStringLiteral("25,00"));
        QVERIFY(!child<QCheckBox>(screen, "chkFields")->isChecked());
        QCOMPARE(child<QLabel>(screen, "lblStock")->text(), QStringLiteral("Неизписано от доставката: 10"));
        QCOMPARE(scalar(scratch.db(), "SELECT Broi FROM Nalich WHERE Name = 'Масло'").toDouble(), 10.0);
        // The lists learnt the new kind and name.
        QCOMPARE(combo(screen, 2)->findText(QStringLiteral("Масло")), 0);
    }

    void theSaveChecksShowTheirMessageAndKeepWhatWasTyped_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("kol");
        QTest::addColumn<QString>("message");
        QTest::newRow("no kind") << "" << "Масло" << "1" << "ГРЕШКА!|Въведете данни за вида на документа.";
        QTest::newRow("no name") << "Фактура" << "" << "1" << "ГРЕШКА!|Въведете име на артикула.";
        QTest::newRow("quantity of letters") << "Фактура" << "Масло" << "пет"
                                             << "ГРЕШКА!|\"пет\" не е число!\nМоля, въведете количество с цифри.";
    }
    void theSaveChecksShowTheirMessageAndKeepWhatWasTyped()
    {
        QFETCH(QString, kind);
        QFETCH(QString, name);
        QFETCH(QString, kol);
        WAREHOUSE_EMPTY(screen, "P");
        enter(screen, kind, name, kol, "2");
        QVERIFY(!screen.recordForm()->update());
        QTEST(texts(messages).value(0), "message");
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Adding);
        QCOMPARE(field(screen, 4)->text(), kol);
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM Sklad").toInt(), 0);
    }

    void aDocumentKindOfSixteenIsCutOnLeavingTheBox()
    {
        WAREHOUSE_EMPTY(screen, "R");
        combo(screen, 1)->setEditText(QStringLiteral("Стокова разпис16"));
        emit combo(screen, 1)->lineEdit()->editingFinished();
        QCOMPARE(combo(screen, 1)->currentText(), QStringLiteral("Стокова разпис1"));
    }

    // 10 @ 2.00 then 10 @ 3.00; an issue of 15 typed at 3.00 costs 35 and shows the two lots.
    void anIssueShowsItsCostAndTheLotsItTook()
    {
        WAREHOUSE_WITH_TWO_RECEIPTS(screen, "R");
        QCOMPARE(screen.objectName(), QStringLiteral("Sklad_R"));
        QCOMPARE(screen.windowTitle(), QStringLiteral("Зарек 2.3 - Склад - Разход"));
        QCOMPARE(child<QGroupBox>(screen, "Frame3")->title(), QStringLiteral("Разход"));
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Adding);
        enter(screen, "СА 1234 ВК", "Масло", "15", "3");
        QCOMPARE(child<QLabel>(screen, "lblStock")->text(),
                 QStringLiteral("Наличност: 20, цена на последната доставка: 3,00лв."));
        // Before the save the amount is what the issue will cost, first in, first out: 10 at 2,00
        // and 5 at 3,00, not the typed 3 × 15. Nothing of it is written yet.
        QCOMPARE(field(screen, 6)->text(), QStringLiteral("35,00"));
        test::saveScreenshot(screen, QStringLiteral("sklad-r-before-save"));
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM Sklad WHERE VidKol = 'R'").toInt(), 0);
        QCOMPARE(scalar(scratch.db(), "SELECT Broi FROM Nalich").toDouble(), 20.0);
        QVERIFY(screen.recordForm()->update());
        QCOMPARE(texts(messages), QStringList());
        // The average cost formatted, with four decimals where two would hide part of it.
        QCOMPARE(field(screen, 5)->text(), QStringLiteral("2,3333"));
        test::saveScreenshot(screen, QStringLiteral("sklad-r-saved"));
        QCOMPARE(field(screen, 6)->text(), QStringLiteral("35,00"));
        QVERIFY(child<QCheckBox>(screen, "chkFields")->isChecked());
        auto *lots = child<QTableWidget>(screen, "grdLots");
        QCOMPARE(lots->rowCount(), 2);
        QCOMPARE(lots->item(0, 0)->text(), QStringLiteral("01.03.2026"));
        QCOMPARE(lots->item(0, 1)->text(), QStringLiteral("Фактура 3101"));
        QCOMPARE(lots->item(0, 2)->text(), QStringLiteral("10"));
        QCOMPARE(lots->item(0, 3)->text(), QStringLiteral("2,00"));
        QCOMPARE(lots->item(1, 2)->text(), QStringLiteral("5"));
        QCOMPARE(lots->item(1, 4)->text(), QStringLiteral("15,00"));
        QCOMPARE(child<QLabel>(screen, "lblLots")->text(), QStringLiteral("От 2 доставки: 15 за 35,00лв."));
        QCOMPARE(scalar(scratch.db(), "SELECT Broi FROM Nalich").toDouble(), 5.0);

        // Correcting it: the kind, the name and the price stay locked.
        screen.recordForm()->edit();
        QVERIFY(field(screen, 5)->isReadOnly());
        QVERIFY(!combo(screen, 1)->isEnabled());
        QVERIFY(!combo(screen, 2)->isEnabled());
        QVERIFY(!field(screen, 4)->isReadOnly());
        screen.recordForm()->cancel();
        QVERIFY(!field(screen, 5)->isReadOnly() || screen.recordForm()->state() == RecordForm::State::Browsing);
    }

    void anIssuePriceIsShownFormatted_data()
    {
        QTest::addColumn<double>("price");
        QTest::addColumn<QString>("shown");
        QTest::newRow("whole") << 2.0 << "2,00";
        QTest::newRow("cents") << 2.45 << "2,45";
        QTest::newRow("an average of thirds") << 35.0 / 15.0 << "2,3333";
        QTest::newRow("below a cent") << 0.004 << "0,0040";
    }
    void anIssuePriceIsShownFormatted()
    {
        QFETCH(double, price);
        QFETCH(QString, shown);
        QCOMPARE(issuePriceText(price), shown);
    }

    void anIssueAtAnOlderPriceIsRefusedAndStaysBeingEntered()
    {
        WAREHOUSE_WITH_TWO_RECEIPTS(screen, "R");
        enter(screen, "СА 1234 ВК", "Масло", "15", "2,00");
        QVERIFY(!screen.recordForm()->update());
        QCOMPARE(texts(messages), QStringList{"ВНИМАНИЕ!|В склада нямате артикул с такава цена!"});
        QCOMPARE(field(screen, 6)->text(), QString());  // no cost for an issue the save refuses
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Adding);
        QCOMPARE(field(screen, 5)->text(), QStringLiteral("2,00"));
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM Sklad WHERE VidKol = 'R'").toInt(), 0);
    }

    // "Ремонт": leaving the name locks the quantity at 1; another name frees it again.
    void aRepairLocksItsQuantityAtOne()
    {
        WAREHOUSE_EMPTY(screen, "R");
        enter(screen, "СА 1234 ВК", "Ремонт", "", "240");
        QCOMPARE(field(screen, 4)->text(), QStringLiteral("1"));
        QVERIFY(field(screen, 4)->isReadOnly());
        combo(screen, 2)->setEditText(QStringLiteral("Масло"));
        emit combo(screen, 2)->lineEdit()->editingFinished();
        QVERIFY(!field(screen, 4)->isReadOnly());
        combo(screen, 2)->setEditText(QStringLiteral("Ремонт"));
        emit combo(screen, 2)->lineEdit()->editingFinished();
        QVERIFY(screen.recordForm()->update());
        QCOMPARE(texts(messages), QStringList());
        QCOMPARE(field(screen, 6)->text(), QStringLiteral("240,00"));
        QCOMPARE(child<QLabel>(screen, "lblLots")->text(), QStringLiteral("Разход без изписване от склада."));
        QVERIFY(!field(screen, 4)->isReadOnly() || screen.recordForm()->state() == RecordForm::State::Browsing);
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM Nalich").toInt(), 0);
    }

    // Deleting an issue asks twice, then gives its quantity back to the receipts and the stock.
    void deletingAnIssueAsksTwiceAndGivesBack()
    {
        WAREHOUSE_WITH_TWO_RECEIPTS(screen, "R");
        enter(screen, "СА 1234 ВК", "Масло", "15", "3");
        QVERIFY(screen.recordForm()->update());
        QSignalSpy changed(&screen, &Sklad::stockChanged);
        messages.answers = {true, false};
        screen.recordForm()->remove();
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM Sklad WHERE VidKol = 'R'").toInt(), 1);
        messages.answers = {true, true};
        screen.recordForm()->remove();
        QCOMPARE(messages.asked.size(), 4);
        QCOMPARE(messages.asked[0].title, QStringLiteral("Изтриване на запис"));
        QCOMPARE(messages.asked[0].text, QStringLiteral("Наистна ли искате да изтриете записа?"));
        QCOMPARE(messages.asked[3].text, QStringLiteral("Ще загубите данните окончателно"));
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM Sklad WHERE VidKol = 'R'").toInt(), 0);
        QCOMPARE(scalar(scratch.db(), "SELECT Broi FROM Nalich").toDouble(), 20.0);
        QCOMPARE(scalar(scratch.db(), "SELECT SUM(Ostat) FROM Sklad WHERE VidKol = 'P'").toDouble(), 20.0);
        QCOMPARE(changed.count(), 1);
    }

    // A receipt an issue took from: correcting it says why, and its quantity and price stay locked.
    void aReceiptDrawnOnIsCorrectedOnlyInDateAndNumber()
    {
        ZAREK_SCRATCH_DB(scratch);
        twoReceipts(scratch.db());
        const WarehouseStore store(scratch.db(), fixedClock);
        QVERIFY(store.addIssue(movement("Масло", 4, 3, QDate(2026, 3, 5), "СА 1234 ВК")));
        RecordingMessageService messages;
        Sklad screen(QStringLiteral("P"), scratch.db(), nullptr, fixedClock);
        QCOMPARE(child<QLabel>(screen, "lblStock")->text(), QStringLiteral("Неизписано от доставката: 6"));
        screen.recordForm()->edit();
        QCOMPARE(texts(messages),
                 QStringList{"ВНИМАНИЕ!|От тази доставка вече е изписвано!\nМожете да поправите датата и номера на "
                             "документа; количеството и цената остават."});
        QVERIFY(field(screen, 4)->isReadOnly());
        QVERIFY(field(screen, 5)->isReadOnly());
        QVERIFY(!field(screen, 2)->isReadOnly());
        field(screen, 2)->setText(QStringLiteral("3101-А"));
        QVERIFY(screen.recordForm()->update());
        QCOMPARE(scalar(scratch.db(), "SELECT DocNom FROM Sklad WHERE VidKol = 'P' ORDER BY Data").toString(),
                 QStringLiteral("3101-А"));

        // The receipt not drawn on takes a new quantity, and the stock with it.
        screen.recordForm()->next();
        messages.shown.clear();
        screen.recordForm()->edit();
        QCOMPARE(texts(messages), QStringList());
        QVERIFY(!field(screen, 4)->isReadOnly());
        field(screen, 4)->setText(QStringLiteral("12"));
        QVERIFY(screen.recordForm()->update());
        QCOMPARE(scalar(scratch.db(), "SELECT Broi FROM Nalich").toDouble(), 18.0);
    }

    // Enter goes on from box to box and saves on the price.
    void enterGoesOnAndSavesOnThePrice()
    {
        WAREHOUSE_EMPTY(screen, "P");
        test::showActive(screen);
        QCOMPARE(QApplication::focusWidget(), combo(screen, 1));
        combo(screen, 1)->setEditText(QStringLiteral("Фактура"));
        QTest::keyClick(combo(screen, 1), Qt::Key_Return);
        QCOMPARE(QApplication::focusWidget(), field(screen, 2));
        QTest::keyClick(field(screen, 2), Qt::Key_Return);
        QCOMPARE(QApplication::focusWidget(), field(screen, 0));
        QTest::keyClick(field(screen, 0), Qt::Key_Return);
        QCOMPARE(QApplication::focusWidget(), combo(screen, 2));
        combo(screen, 2)->setEditText(QStringLiteral("Filter"));
        QTest::keyClick(combo(screen, 2), Qt::Key_Return);
        QCOMPARE(QApplication::focusWidget(), field(screen, 4));
        QTest::keyClicks(field(screen, 4), "3");
        QTest::keyClick(field(screen, 4), Qt::Key_Return);
        QCOMPARE(QApplication::focusWidget(), field(screen, 5));
        QTest::keyClicks(field(screen, 5), "24,5");
        QTest::keyClick(field(screen, 5), Qt::Key_Return);
        QCOMPARE(texts(messages), QStringList());
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Browsing);
        QCOMPARE(scalar(scratch.db(), "SELECT Suma FROM Sklad").toDouble(), 73.5);
    }

    void thePositionShowsValuesAndDrawsCheapPartsRed()
    {
        ZAREK_SCRATCH_DB(scratch);
        twoReceipts(scratch.db());
        QVERIFY(scratch.exec("INSERT INTO Nalich (Name, Edin, Broi) VALUES ('Шайба', 0.35, 100)"));
        RecordingMessageService messages;
        NalichSK screen(QString(), scratch.db(), {}, nullptr, QDate(2026, 3, 20));
        QCOMPARE(screen.windowTitle(), QStringLiteral("Зарек 2.3 - Склад - Наличност"));
        QCOMPARE(child<QLineEdit>(screen, "Text1")->text(), QStringLiteral("Складова наличност към 20.03.2026"));
        const QAbstractItemModel *model = screen.grid()->model();
        QCOMPARE(model->rowCount(), 2);
        QCOMPARE(test::captions(model), (QStringList{"№", "Име", "Брой", "Ед.цена", "Сума"}));
        QCOMPARE(model->index(1, 1).data().toString(), QStringLiteral("Шайба"));
        QCOMPARE(model->index(1, 4).data().toString(), QStringLiteral("35,00"));
        QCOMPARE(model->index(1, 1).data(Qt::ForegroundRole).value<QColor>(), QColor(255, 0, 0));
        QVERIFY(!model->index(0, 1).data(Qt::ForegroundRole).isValid());
        QCOMPARE(child<QLabel>(screen, "lblTotal")->text(), QStringLiteral("Всичко:"));
        QCOMPARE(child<QLabel>(screen, "Label1")->text(), QStringLiteral("95,00лв."));

        NalichSK none(QStringLiteral("Гума"), scratch.db(), {}, nullptr, QDate(2026, 3, 20));
        QCOMPARE(texts(messages),
                 QStringList{"ВНИМАНИЕ!|В склада няма артикул с това име!\nМоля, изберете друго."});
    }

    void theAuditDrawsARemainderUnderOneRed()
    {
        ZAREK_SCRATCH_DB(scratch);
        twoReceipts(scratch.db());
        QVERIFY(scratch.exec("INSERT INTO Sklad (DocVid, DocNom, Data, Name, Kol, Edin, Suma, VidKol, Lipsa, Ostat) "
                             "VALUES ('РВ 5678 КМ', '0000000000', '2026-03-08', 'Разходи за курс', 1, 35.5, 35.5, 'R', "
                             "TRUE, 0)"));
        RecordingMessageService messages;
        SkladSK screen({QDate(2026, 3, 1), QDate(2026, 3, 31)}, scratch.db(), {}, nullptr, QDate(2026, 3, 20));
        QCOMPARE(screen.windowTitle(), QStringLiteral("Зарек 2.3 - Склад - Ревизия"));
        QCOMPARE(child<QLineEdit>(screen, "Text1")->text(), QStringLiteral("Ревизия на склада към 20.03.2026"));
        const QAbstractItemModel *model = screen.grid()->model();
        QCOMPARE(model->rowCount(), 2);
        QCOMPARE(model->index(0, 1).data().toString(), QStringLiteral("Масло"));
        QCOMPARE(model->index(0, 7).data().toString(), QStringLiteral("20"));
        QVERIFY(!model->index(0, 1).data(Qt::ForegroundRole).isValid());
        QCOMPARE(model->index(1, 1).data().toString(), QStringLiteral("Разходи за курс"));
        QCOMPARE(model->index(1, 7).data().toString(), QStringLiteral("-1"));
        QCOMPARE(model->index(1, 1).data(Qt::ForegroundRole).value<QColor>(), QColor(255, 0, 0));
        QVERIFY(screen.grid()->isColumnHidden(9));
        QCOMPARE(child<QLabel>(screen, "Label1")->text(), QStringLiteral("14,50лв."));
        QCOMPARE(texts(messages), QStringList());
    }

    // The Склад menu's commands are there; receipts and issues stand beside the main window, once each.
    void theWarehouseCommandsAreEnabledAndOpenTheirScreens()
    {
        ZAREK_SCRATCH_DB(scratch);
        twoReceipts(scratch.db());
        RecordingMessageService messages;
        QWidget window;
        CommandContext context;
        context.db = scratch.db();
        context.window = &window;
        QString panel;
        context.setPanel = [&panel](const QString &text) { panel = text; };
        context.helpTopic = [](const QString &) { return 27; };
        context.firm = [] {
            static FirmProfile firm;
            return firm;
        };
        CommandRegistry commands(context);
        registerWarehouseCommands(commands);
        for (const char *item : {"mnuSklPrih", "mnuSklRaz", "mnuSprPrihod", "mnuSprRazhod", "mnuNal",
                                 "mnuPrihPer"})
            QVERIFY2(commands.has(QString::fromLatin1(item)), item);
        commands.handler(QStringLiteral("mnuSklPrih"))();
        QWidget *receipts = commands.openWindow(QStringLiteral("mnuSklPrih"));
        QVERIFY(receipts);
        QCOMPARE(receipts->objectName(), QStringLiteral("Sklad"));
        QVERIFY(receipts->isVisible());
        QVERIFY(!receipts->isModal());
        commands.handler(QStringLiteral("mnuSklPrih"))();
        QCOMPARE(commands.openWindow(QStringLiteral("mnuSklPrih")), receipts);
        QCOMPARE(child<QLabel>(*receipts, "lblStock")->text(), QStringLiteral("Неизписано от доставката: 10"));
        commands.handler(QStringLiteral("mnuSklRaz"))();
        auto *issues = qobject_cast<Sklad *>(commands.openWindow(QStringLiteral("mnuSklRaz")));
        QCOMPARE(issues->objectName(), QStringLiteral("Sklad_R"));
        QCOMPARE(issues->property("helpTopic").toInt(), 27);
        // An issue saved beside it shows at once in the receipts window.
        enter(*issues, "СА 1234 ВК", "Масло", "15", "3");
        QVERIFY(issues->recordForm()->update());
        QCOMPARE(child<QLabel>(*receipts, "lblStock")->text(), QStringLiteral("Неизписано от доставката: 0"));
        QVERIFY(child<QCheckBox>(*receipts, "chkFields")->isChecked());
        receipts->close();
        commands.openWindow(QStringLiteral("mnuSklRaz"))->close();
    }
};

QTEST_MAIN(SkladTest)
#include "tst_sklad.moc"
