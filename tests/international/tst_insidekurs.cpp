#include "forms/messageservice.h"
#include "forms/recordform.h"
#include "international/insidekurs.h"
#include "international/sendresive.h"
#include "international/tripstore.h"
#include "queryrows.h"
#include "screendriver.h"
#include "subsystemfixtures.h"
#include "testdatabase.h"
#include "tripfixture.h"

#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlQuery>
#include <QTableView>
#include <QTableWidget>
#include <QTimer>
#include <memory>

using namespace zarek;
using zarek::test::agro;
using zarek::test::dargos;
using zarek::test::items;
using zarek::test::onlyOne;
using zarek::test::onlyText;
using zarek::test::onlyTitle;

namespace {

const FirmAddress hellas{QStringLiteral("Hellas Foods SA"), QStringLiteral("Odos Lagkada 140"),
                         QStringLiteral("Thessaloniki"), QStringLiteral("Гърция")};

void prepare(test::ScratchDatabase &scratch)
{
    QVERIFY(scratch.exec("INSERT INTO shof (kod, ime) VALUES ('001', 'Иван Петров Иванов')"));
    QVERIFY(scratch.exec("INSERT INTO Config (kola) VALUES ('РВ 1234 ВК')"));
}

// A trip saved earlier, as the editor saves it.
void addTrip(QSqlDatabase db, const QString &number, const FirmAddress &sender, const FirmAddress &receiver)
{
    const RecordRow row = test::tripRow(number, sender, receiver, QStringLiteral("Иван Петров Иванов"),
                                        QStringLiteral("РВ 0001 ЕЕ"), QVariant());
    QVERIFY(TripStore(db).save(row, true, "ГРЕШКА при запис!").ok());
}

QPushButton *button(QWidget &w, const char *name)
{
    return w.findChild<QPushButton *>(QString::fromLatin1(name) + QStringLiteral("Razh"));
}

QComboBox *combo(QWidget &w, const char *name) { return w.findChild<QComboBox *>(QString::fromLatin1(name)); }

QString statusText(InsideKurs &screen) { return screen.recordForm()->statusLabel()->text(); }

// Fills what a save needs: number, date, driver, tractor, trailer.
void fillRequired(InsideKurs &screen, const QString &number = "37")
{
    screen.field(0)->setText(number);
    screen.field(1)->setText("05.03.2026");
    combo(screen, "ComboNameShof")->setEditText("Иван Петров Иванов");
    combo(screen, "ComboTruckV")->setEditText("РВ 1234 ВК");
    combo(screen, "ComboTruckR")->setEditText("РВ 0001 ЕЕ");
}

QStringList panel(InsideKurs &screen, int first)
{
    QStringList parts;
    for (int i = first; i < first + 4; ++i)
        parts.append(screen.field(i)->text());
    return parts;
}

int firmCount(QSqlDatabase db)
{
    QSqlQuery query(db);
    return query.exec("SELECT COUNT(*) FROM Firms") && query.next() ? query.value(0).toInt() : -1;
}

// Opens the address book from a panel with a right click, picks the row with Enter (or closes the
// book with Esc when row is -1).
void pickFromPanel(InsideKurs &screen, const char *frame, int row)
{
    bool seen = false;
    test::onNextModal<SendResive>([&seen, row](SendResive &picker) {
        seen = true;
        QTableView *grid = picker.grid();
        if (row < 0) {
            QTest::keyClick(grid, Qt::Key_Escape);
            return;
        }
        grid->setCurrentIndex(grid->model()->index(row, 0));
        QTest::keyClick(grid, Qt::Key_Return);
    });
    QWidget *panel = screen.findChild<QGroupBox *>(QString::fromLatin1(frame));
    QTest::mouseClick(panel, Qt::RightButton, Qt::NoModifier, QPoint(4, panel->height() - 4));
    QVERIFY2(seen, "the address book did not open");
}

}

// Each test starts on a fresh database with a driver and a tractor, and a message recorder;
// open() makes the screen on it.
class InsideKursTest : public QObject, test::DatabaseFixture {
    Q_OBJECT
    std::unique_ptr<InsideKurs> screen;

    InsideKurs &open()
    {
        screen = std::make_unique<InsideKurs>(db);
        return *screen;
    }

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

    void theScreenOpensOnTheTripsByNumberWithTheFormsCaptions()
    {
        addTrip(db, "0000000200", agro, hellas);
        addTrip(db, "0000000100", dargos, agro);
        InsideKurs &screen = open();
        QCOMPARE(screen.windowTitle(), QStringLiteral("Международни курсове"));
        QCOMPARE(screen.field(0)->text(), QStringLiteral("0000000100"));
        QCOMPARE(screen.field(9)->text(), dargos.name);
        QCOMPARE(statusText(screen), QStringLiteral("Запис № 1"));
        QVERIFY(screen.findChild<QWidget *>("picButtonsRazh"));
        QVERIFY(screen.findChild<QLabel *>("lblStatusRazh"));
        QStringList labels;
        for (const char *name : {"lblLabels_7", "lblLabels_8", "lblLabels_21", "lblLabels_22"})
            labels << screen.findChild<QLabel *>(name)->text();
        QCOMPARE(labels, (QStringList{"Total  Fuel", "Total     KM", "Приход:                  лв.",
                                      "Общ разход:                   лв."}));
        const char *frames[][2] = {{"Frame1", "Общи данни за курса"}, {"Frame2", "Изпращач"}, {"Frame3", "Получател"},
                                   {"Frame4", "Товарен пункт"},      {"Frame5", "Разтоварен пункт"},
                                   {"Frame6", "Общи суми от курса"}};
        for (const auto &frame : frames)
            QCOMPARE(screen.findChild<QGroupBox *>(frame[0])->title(), QString::fromUtf8(frame[1]));
        auto *grid = screen.findChild<QTableWidget *>("GridEX1");
        QCOMPARE(grid->rowCount(), 0);
        QCOMPARE(grid->columnCount(), 7);
        QCOMPARE(grid->horizontalHeaderItem(6)->text(), QStringLiteral("Сума"));
        button(screen, "cmdNext")->click();
        QCOMPARE(screen.field(0)->text(), QStringLiteral("0000000200"));
        QCOMPARE(statusText(screen), QStringLiteral("Запис № 2"));
        QVERIFY(messages->shown.isEmpty());
    }

    // While a trip is added the three lists stand over their boxes, and the boxes a save needs are
    // coloured; after a cancel the boxes and the colours are back.
    void addingShowsTheListsAndMarksWhatTheSaveNeeds()
    {
        addTrip(db, "0000000001", agro, hellas);
        InsideKurs &screen = open();
        screen.show();
        const QColor plain = screen.field(0)->palette().color(QPalette::Base);
        button(screen, "cmdAdd")->click();
        QCOMPARE(statusText(screen), QStringLiteral("Нов запис"));
        for (const char *name : {"ComboNameShof", "ComboTruckV", "ComboTruckR"})
            QVERIFY2(combo(screen, name)->isVisible(), name);
        for (int index : {2, 3, 4})
            QVERIFY(!screen.field(index)->isVisible());
        for (QWidget *required : std::initializer_list<QWidget *>{screen.field(0), screen.field(1),
                                                                   combo(screen, "ComboTruckR")}) {
            QCOMPARE(required->palette().color(QPalette::Base), QColor(0xFF, 0xFF, 0x80));
            QCOMPARE(required->palette().color(QPalette::Text), QColor(0x00, 0x00, 0xC0));
        }
        QCOMPARE(items(combo(screen, "ComboNameShof")), QStringList{"Иван Петров Иванов"});
        QCOMPARE(items(combo(screen, "ComboTruckR")), QStringList{"РВ 0001 ЕЕ"});
        QCOMPARE(combo(screen, "ComboTruckR")->currentText(), QString());
        QCOMPARE(screen.field(0)->text(), QString());

        button(screen, "cmdCancel")->click();
        QCOMPARE(statusText(screen), QStringLiteral("Запис № 1"));
        QVERIFY(screen.field(2)->isVisible());
        QVERIFY(!combo(screen, "ComboNameShof")->isVisible());
        QCOMPARE(screen.field(0)->palette().color(QPalette::Base), plain);
        QCOMPARE(screen.field(0)->text(), QStringLiteral("0000000001"));
        // Each opening of the lists adds them again, as the list routine does.
        button(screen, "cmdAdd")->click();
        QCOMPARE(items(combo(screen, "ComboTruckR")), (QStringList{"РВ 0001 ЕЕ", "РВ 0001 ЕЕ"}));
        QVERIFY(messages->shown.isEmpty());
    }

    // The first trip: no trailer is known yet, the list says so, and the trailer is typed.
    void theFirstTripFindsTheTrailerListEmpty()
    {
        InsideKurs &screen = open();
        QCOMPARE(statusText(screen), QString());
        button(screen, "cmdAdd")->click();
        QCOMPARE(test::shown(*messages), QStringList{"ВНИМАНИЕ!: Списъка е празен / Ще се създаде нов!"});
        QCOMPARE(messages->shown.first().text.count(QLatin1Char('\n')), 1);
        fillRequired(screen);
        QVERIFY(screen.recordForm()->update());
        QCOMPARE(screen.field(4)->text(), QStringLiteral("РВ 0001 ЕЕ"));
        QCOMPARE(statusText(screen), QStringLiteral("Запис № 1"));
    }

    // The save checks in their order through the screen: each box filled moves the message on.
    void theSaveChecksRunInOrderAndKeepWhatWasTyped()
    {
        addTrip(db, "0000000001", agro, hellas);
        InsideKurs &screen = open();
        button(screen, "cmdAdd")->click();
        const QStringList faults = {"Няма въведен номер на ЧМР!", "Няма въведена дата на ЧМР!",
                                    "Няма въведено име на шофьор!", "Няма въведен номер на влекач!",
                                    "Няма въведен номер на ремарке!"};
        const std::function<void()> fill[] = {
            [&] { screen.field(0)->setText("5"); },
            [&] { screen.field(1)->setText("05.03.2026"); },
            [&] { combo(screen, "ComboNameShof")->setEditText("Иван Петров Иванов"); },
            [&] { combo(screen, "ComboTruckV")->setEditText("РВ 1234 ВК"); },
            [&] { combo(screen, "ComboTruckR")->setEditText("  "); },
        };
        for (int i = 0; i < 5; ++i) {
            messages->shown.clear();
            QVERIFY(!screen.recordForm()->update());
            QCOMPARE(onlyTitle(messages->shown), QStringLiteral("   ВНИМАНИЕ!"));
            QCOMPARE(messages->shown.first().text.section('\n', 0, 0), faults[i]);
            QCOMPARE(statusText(screen), QStringLiteral("Нов запис"));
            fill[i]();
        }
        QCOMPARE(screen.field(0)->text(), QStringLiteral("5"));
        combo(screen, "ComboTruckR")->setEditText("РВ 0001 ЕЕ");
        QVERIFY(screen.recordForm()->update());
        QCOMPARE(screen.field(0)->text(), QStringLiteral("0000000005"));  // padded even without leaving the box
    }

    // 37 becomes 0000000037 on leaving the box; a number another trip carries is told and the
    // focus goes back to the box.
    void theNumberIsPaddedOnLeavingAndADuplicateIsTold_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("padded");
        QTest::addColumn<bool>("duplicate");
        QTest::newRow("37") << "37" << "0000000037" << true;
        QTest::newRow("38") << " 38 " << "0000000038" << false;
        QTest::newRow("letters") << "AB12" << "000000AB12" << false;
        QTest::newRow("ten digits") << "1234567890" << "1234567890" << false;
    }
    void theNumberIsPaddedOnLeavingAndADuplicateIsTold()
    {
        QFETCH(QString, typed);
        QFETCH(QString, padded);
        QFETCH(bool, duplicate);
        addTrip(db, "0000000037", agro, hellas);
        InsideKurs &screen = open();
        test::showActive(screen);
        button(screen, "cmdAdd")->click();
        screen.field(0)->setFocus();
        screen.field(0)->setText(typed);
        QTest::keyClick(screen.field(0), Qt::Key_Tab);
        QCOMPARE(screen.field(0)->text(), padded);
        QCOMPARE(QApplication::focusWidget() != screen.field(0), true);
        QCoreApplication::processEvents();
        if (!duplicate) {
            QVERIFY(messages->shown.isEmpty());
            return;
        }
        QCOMPARE(test::shown(*messages),
                 QStringList{"   ГРЕШКА!: Съществува ЧМР със същия номер! / Моля, променете номера и опитайте отново."});
        QCOMPARE(messages->shown.first().text.count(QLatin1Char('\n')), 2);
        QCOMPARE(QApplication::focusWidget(), screen.field(0));
        // Saved all the same, the duplicate is refused and the trip stays in entry.
        fillRequired(screen, padded);
        QVERIFY(!screen.recordForm()->update());
        QCOMPARE(messages->shown.last(), tripNumberTakenMessage());
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Adding);
    }

    // Regression: correcting a trip and leaving its number unchanged called the trip's own number a
    // duplicate and held the focus in the box.
    void correctingATripDoesNotCallItsOwnNumberADuplicate()
    {
        addTrip(db, "0000000037", agro, hellas);
        InsideKurs &screen = open();
        test::showActive(screen);
        button(screen, "cmdEdit")->click();
        QCOMPARE(statusText(screen), QStringLiteral("Корекция запис"));
        QCOMPARE(combo(screen, "ComboTruckR")->currentText(), QStringLiteral("РВ 0001 ЕЕ"));
        QCOMPARE(combo(screen, "ComboNameShof")->currentText(), QStringLiteral("Иван Петров Иванов"));
        screen.field(0)->setFocus();
        QTest::keyClick(screen.field(0), Qt::Key_Tab);
        QCoreApplication::processEvents();
        QVERIFY(messages->shown.isEmpty());
        screen.field(5)->setText("Пшеница");
        QVERIFY(screen.recordForm()->update());
        QCOMPARE(screen.field(5)->text(), QStringLiteral("Пшеница"));
    }

    // A save writes the trip and puts its sender and receiver into the address book; the same firms
    // on a second trip make no new rows.
    void savedTripsFillTheAddressBookOnce()
    {
        addTrip(db, "0000000001", agro, hellas);
        InsideKurs &screen = open();
        QCOMPARE(firmCount(db), 2);
        for (const char *number : {"2", "3"}) {
            button(screen, "cmdAdd")->click();
            fillRequired(screen, QString::fromLatin1(number));
            screen.fillPanel(InsideKurs::Panel::Send, dargos);
            screen.fillPanel(InsideKurs::Panel::Resiv, {" Hellas Foods SA", "Odos Lagkada 140", "Thessaloniki", "Гърция "});
            QVERIFY(screen.recordForm()->update());
        }
        QCOMPARE(firmCount(db), 3);
        QCOMPARE(statusText(screen), QStringLiteral("Запис № 3"));
        QCOMPARE(screen.field(9)->text(), dargos.name);
    }

    // The address book fills the panel it was opened from, and that panel only.
    void thePickerFillsThePanelItWasOpenedFrom_data()
    {
        QTest::addColumn<QString>("frame");
        QTest::addColumn<int>("filled");
        QTest::addColumn<int>("untouched");
        QTest::newRow("sender") << "Frame2" << 9 << 13;
        QTest::newRow("receiver") << "Frame3" << 13 << 9;
    }
    void thePickerFillsThePanelItWasOpenedFrom()
    {
        QFETCH(QString, frame);
        QFETCH(int, filled);
        QFETCH(int, untouched);
        addTrip(db, "0000000001", hellas, agro);  // the book: Agro Trade SRL, Hellas Foods SA
        InsideKurs &screen = open();
        screen.show();
        button(screen, "cmdAdd")->click();
        screen.field(untouched)->setText("Typed by hand");
        pickFromPanel(screen, frame.toLatin1().constData(), 1);
        QCOMPARE(panel(screen, filled), (QStringList{hellas.name, hellas.adres, hellas.city, hellas.country}));
        QCOMPARE(panel(screen, untouched), (QStringList{"Typed by hand", "", "", ""}));

        // Closed without a pick, the book changes nothing (nor does it write the last pick again).
        screen.field(filled)->setText("Друга фирма");
        pickFromPanel(screen, frame.toLatin1().constData(), -1);
        QCOMPARE(screen.field(filled)->text(), QStringLiteral("Друга фирма"));
        QCOMPARE(panel(screen, untouched), (QStringList{"Typed by hand", "", "", ""}));
    }

    // A browsed trip is never changed by the address book.
    void theBookDoesNotOpenOverABrowsedTrip()
    {
        addTrip(db, "0000000001", hellas, agro);
        InsideKurs &screen = open();
        screen.show();
        bool opened = false;
        test::onNextModal<QWidget>([&opened](QWidget &modal) {
            opened = true;
            modal.close();
        });
        auto *panelBox = screen.findChild<QGroupBox *>("Frame2");
        QTest::mouseClick(panelBox, Qt::RightButton, Qt::NoModifier, QPoint(4, panelBox->height() - 4));
        QCoreApplication::processEvents();
        QVERIFY(!opened);
        QCOMPARE(screen.field(9)->text(), hellas.name);
    }

    void thePickerListsTheFirmsByName()
    {
        addTrip(db, "0000000001", hellas, dargos);
        addTrip(db, "0000000002", agro, hellas);
        SendResive picker(db);
        picker.show();
        QCOMPARE(picker.windowTitle(), QStringLiteral("Данни на фирми"));
        QCOMPARE(picker.grid()->objectName(), QStringLiteral("grdSendResive"));
        QAbstractItemModel *model = picker.grid()->model();
        QCOMPARE(model->rowCount(), 3);
        QCOMPARE(model->index(0, 0).data().toString(), agro.name);
        QCOMPARE(model->index(2, 0).data().toString(), dargos.name);
        QCOMPARE(model->index(2, 3).data().toString(), dargos.country);
        QVERIFY(!picker.pickedFirm());
        QVERIFY(QTest::qWaitForWindowExposed(&picker));
        const QPoint cell = picker.grid()->visualRect(model->index(2, 1)).center();
        QTest::mouseClick(picker.grid()->viewport(), Qt::LeftButton, Qt::NoModifier, cell);
        QTest::mouseDClick(picker.grid()->viewport(), Qt::LeftButton, Qt::NoModifier, cell);
        QCOMPARE(picker.pickedFirm(), std::optional<FirmAddress>(dargos));
    }

    // One question; the trip goes, the firms stay.
    void deletingAsksOnceAndKeepsTheFirms()
    {
        addTrip(db, "0000000001", hellas, agro);
        addTrip(db, "0000000002", dargos, agro);
        InsideKurs &screen = open();
        messages->answers = {false};
        button(screen, "cmdDelete")->click();
        QCOMPARE(screen.recordForm()->rowCount(), 2);
        button(screen, "cmdDelete")->click();
        QCOMPARE(messages->asked.size(), 2);
        QCOMPARE(messages->asked.first().title, QStringLiteral("   ВНИМАНИЕ!"));
        QCOMPARE(messages->asked.first().text,
                 QStringLiteral("Изтривате информацията за ЧМР!\n\nПотвърдете изтриването на ЧМР!"));
        QCOMPARE(screen.recordForm()->rowCount(), 1);
        QCOMPARE(screen.field(0)->text(), QStringLiteral("0000000002"));
        QCOMPARE(firmCount(db), 3);
    }

    // A date or a figure that is none is refused with a message, and nothing is written.
    void aDateOrAFigureThatIsNoneIsRefused_data()
    {
        QTest::addColumn<int>("box");
        QTest::addColumn<QString>("typed");
        QTest::newRow("date") << 1 << "31.02.2026";
        QTest::newRow("tonnes") << 6 << "двадесет";
        QTest::newRow("income") << 21 << "1.200,50";
        QTest::newRow("tonnes over 100") << 6 << "120";
        QTest::newRow("km negative") << 8 << "-500";
        QTest::newRow("cost over the limit") << 22 << "100000000";
    }
    void aDateOrAFigureThatIsNoneIsRefused()
    {
        QFETCH(int, box);
        QFETCH(QString, typed);
        InsideKurs &screen = open();
        button(screen, "cmdAdd")->click();
        fillRequired(screen);
        screen.field(box)->setText(typed);
        messages->shown.clear();
        QVERIFY(!screen.recordForm()->update());
        QCOMPARE(messages->shown.size(), 1);
        QVERIFY(messages->shown.first().text.contains(typed));
        QCOMPARE(screen.field(box)->text(), typed);
        QCOMPARE(test::scalar(db, "SELECT (SELECT COUNT(*) FROM ExternalKurs) + (SELECT COUNT(*) FROM Firms)").toInt(), 0);
    }
};

QTEST_MAIN(InsideKursTest)
#include "tst_insidekurs.moc"
