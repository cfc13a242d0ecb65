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

// The screen's name, title and the caption of its frame, as "name|title|caption".
QString identity(Sklad &screen)
{
    return screen.objectName() + QLatin1Char('|') + screen.windowTitle() + QLatin1Char('|')
           + child<QGroupBox>(screen, QStringLiteral("Frame3"))->title();
}

// Which boxes take no typing: kind, name, quantity, price (1 locked, 0 free).
QString locked(Sklad &screen)
{
    return QStringLiteral("%1%2%3%4").arg(int(!combo(screen, 1)->isEnabled())).arg(int(!combo(screen, 2)->isEnabled()))
        .arg(int(field(screen, 4)->isReadOnly())).arg(int(field(screen, 5)->isReadOnly()));
}

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
        QCOMPARE(identity(screen), QStringLiteral("Sklad|Зарек 2.3 - Склад - Приход|Приход"));
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
        QCOMPARE(test::rowsText(scratch.db(), "SELECT Name, Broi FROM Nalich"), QStringLiteral("Масло|10"));
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

    // 10 @ 2.00 then 10 @ 3.00; an issue of 15 typed at 3.00 costs 35 and shows the two lots.
    void anIssueShowsItsCostAndTheLotsItTook()
    {
        WAREHOUSE_WITH_TWO_RECEIPTS(screen, "R");
        QCOMPARE(identity(screen), QStringLiteral("Sklad_R|Зарек 2.3 - Склад - Разход|Разход"));
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Adding);
        enter(screen, "СА 1234 ВК", "Масло", "15", "3");
        QCOMPARE(child<QLabel>(screen, "lblStock")->text(),
                 QStringLiteral("Наличност: 20, цена на последната доставка: 3,00лв."));
        // Before the save the amount is what the issue will cost, first in, first out: 10 at 2,00
        // and 5 at 3,00, not the typed 3 × 15. Nothing of it is written yet.
        QCOMPARE(field(screen, 6)->text(), QStringLiteral("35,00"));
        test::saveScreenshot(screen, QStringLiteral("sklad-r-before-save"));
        const QString issuesAndStock = QStringLiteral("SELECT (SELECT COUNT(*) FROM Sklad WHERE VidKol = 'R'), Broi FROM Nalich");
        QCOMPARE(test::rowsText(scratch.db(), issuesAndStock), QStringLiteral("0|20"));
        QVERIFY(screen.recordForm()->update());
        QCOMPARE(texts(messages), QStringList());
        // The average cost formatted, with four decimals where two would hide part of it.
        QCOMPARE(field(screen, 5)->text(), QStringLiteral("2,3333"));
        test::saveScreenshot(screen, QStringLiteral("sklad-r-saved"));
        QCOMPARE(field(screen, 6)->text(), QStringLiteral("35,00"));
        QVERIFY(child<QCheckBox>(screen, "chkFields")->isChecked());
        QCOMPARE(test::gridRows(child<QTableWidget>(screen, "grdLots")->model()),
                 (QStringList{"01.03.2026|Фактура 3101|10|2,00|20,00", "02.03.2026|Фактура 3102|5|3,00|15,00"}));
        QCOMPARE(child<QLabel>(screen, "lblLots")->text(), QStringLiteral("От 2 доставки: 15 за 35,00лв."));
        QCOMPARE(test::rowsText(scratch.db(), issuesAndStock), QStringLiteral("1|5"));

        // Correcting it: the kind, the name and the price stay locked.
        screen.recordForm()->edit();
        QCOMPARE(locked(screen), QStringLiteral("1101"));
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
        QCOMPARE(field(screen, 5)->text() + QLatin1Char('|') + field(screen, 6)->text(),
                 QStringLiteral("2,00|"));  // no cost for an issue the save refuses
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Adding);
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM Sklad WHERE VidKol = 'R'").toInt(), 0);
    }

    // A document kind of sixteen is cut on leaving its box. "Ремонт": leaving the name locks the
    // quantity at 1; another name frees it again.
    void aKindIsCutToFifteenAndARepairLocksItsQuantityAtOne()
    {
        WAREHOUSE_EMPTY(screen, "R");
        combo(screen, 1)->setEditText(QStringLiteral("Стокова разпис16"));
        emit combo(screen, 1)->lineEdit()->editingFinished();
        QCOMPARE(combo(screen, 1)->currentText(), QStringLiteral("Стокова разпис1"));
        enter(screen, "СА 1234 ВК", "Ремонт", "", "240");
        QCOMPARE(field(screen, 4)->text(), QStringLiteral("1"));
        for (const auto &[name, locks] : {std::pair("Масло", "0000"), std::pair("Ремонт", "0010")}) {
            combo(screen, 2)->setEditText(QString::fromUtf8(name));
            emit combo(screen, 2)->lineEdit()->editingFinished();
            QCOMPARE(locked(screen), QString::fromLatin1(locks));
        }
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
        const QString first = QStringLiteral("Изтриване на запис|Наистна ли искате да изтриете записа?");
        const QString second = QStringLiteral("Изтриване на запис|Ще загубите данните окончателно");
        QCOMPARE(test::titled(messages.asked), (QStringList{first, second, first, second}));
        QCOMPARE(test::rowsText(scratch.db(), "SELECT (SELECT COUNT(*) FROM Sklad WHERE VidKol = 'R'), Broi, "
                                              "(SELECT SUM(Ostat) FROM Sklad WHERE VidKol = 'P') FROM Nalich"),
                 QStringLiteral("0|20|20"));
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
        QCOMPARE(locked(screen) + QString::number(field(screen, 2)->isReadOnly()), QStringLiteral("11110"));
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
        // Each box in turn has the focus, takes its text and Enter.
        const QList<std::pair<QWidget *, QString>> boxes = {
            {combo(screen, 1), "Фактура"}, {field(screen, 2), ""}, {field(screen, 0), ""},
            {combo(screen, 2), "Filter"}, {field(screen, 4), "3"}, {field(screen, 5), "24,5"}};
        for (const auto &[box, text] : boxes) {
            QCOMPARE(QApplication::focusWidget(), box);
            if (auto *list = qobject_cast<QComboBox *>(box))
                list->setEditText(text);
            else
                QTest::keyClicks(box, text);
            QTest::keyClick(box, Qt::Key_Return);
        }
        QCOMPARE(texts(messages), QStringList());
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Browsing);
        QCOMPARE(scalar(scratch.db(), "SELECT Suma FROM Sklad").toDouble(), 73.5);
    }

    // The audit draws a remainder under one red; the position shows values and draws cheap parts red.
    void thePositionShowsValuesAndDrawsCheapPartsRed()
    {
        ZAREK_SCRATCH_DB(scratch);
        twoReceipts(scratch.db());
        QVERIFY(scratch.exec("INSERT INTO Nalich (Name, Edin, Broi) VALUES ('Шайба', 0.35, 100)"));
        QVERIFY(scratch.exec("INSERT INTO Sklad (DocVid, DocNom, Data, Name, Kol, Edin, Suma, VidKol, Lipsa, Ostat) "
                             "VALUES ('РВ 5678 КМ', '0000000000', '2026-03-08', 'Разходи за курс', 1, 35.5, 35.5, 'R', "
                             "TRUE, 0)"));
        RecordingMessageService messages;
        SkladSK audit({QDate(2026, 3, 1), QDate(2026, 3, 31)}, scratch.db(), {}, nullptr, QDate(2026, 3, 20));
        QCOMPARE(audit.windowTitle() + QLatin1Char('|') + child<QLineEdit>(audit, "Text1")->text(),
                 QStringLiteral("Зарек 2.3 - Склад - Ревизия|Ревизия на склада към 20.03.2026"));
        const QAbstractItemModel *model = audit.grid()->model();
        QCOMPARE(test::gridRows(model, "|", {1, 7}), (QStringList{"Масло|20", "Разходи за курс|-1"}));
        QVERIFY(!model->index(0, 1).data(Qt::ForegroundRole).isValid());
        QCOMPARE(model->index(1, 1).data(Qt::ForegroundRole).value<QColor>(), QColor(255, 0, 0));
        QVERIFY(audit.grid()->isColumnHidden(9));
        QCOMPARE(child<QLabel>(audit, "Label1")->text(), QStringLiteral("14,50лв."));
        QCOMPARE(texts(messages), QStringList());

        NalichSK screen(QString(), scratch.db(), {}, nullptr, QDate(2026, 3, 20));
        QCOMPARE(screen.windowTitle() + QLatin1Char('|') + child<QLineEdit>(screen, "Text1")->text(),
                 QStringLiteral("Зарек 2.3 - Склад - Наличност|Складова наличност към 20.03.2026"));
        model = screen.grid()->model();
        QCOMPARE(test::captions(model), (QStringList{"№", "Име", "Брой", "Ед.цена", "Сума"}));
        QCOMPARE(test::gridRows(model, "|", {1, 4}).value(1), QStringLiteral("Шайба|35,00"));
        QCOMPARE(test::gridRows(model).size(), 2);
        QCOMPARE(model->index(1, 1).data(Qt::ForegroundRole).value<QColor>(), QColor(255, 0, 0));
        QVERIFY(!model->index(0, 1).data(Qt::ForegroundRole).isValid());
        QCOMPARE(child<QLabel>(screen, "lblTotal")->text() + child<QLabel>(screen, "Label1")->text(),
                 QStringLiteral("Всичко:95,00лв."));
        NalichSK none(QStringLiteral("Гума"), scratch.db(), {}, nullptr, QDate(2026, 3, 20));
        QCOMPARE(texts(messages),
                 QStringList{"ВНИМАНИЕ!|В склада няма артикул с това име!\nМоля, изберете друго."});
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
        // That every item of the menu is registered is checked where the main window enables it (tst_frmmain).
        commands.handler(QStringLiteral("mnuSklPrih"))();
        QWidget *receipts = commands.openWindow(QStringLiteral("mnuSklPrih"));
        QVERIFY(receipts);
        QCOMPARE(QStringLiteral("%1 %2 %3").arg(receipts->objectName()).arg(int(receipts->isVisible())).arg(int(receipts->isModal())),
                 QStringLiteral("Sklad 1 0"));
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
