#include "forms/messageservice.h"
#include "courses/diaseek.h"
#include "courses/diaseekall.h"
#include "courses/diaseekalt.h"
#include "courses/searchlists.h"
#include "core/textcheck.h"
#include "screendriver.h"
#include "testdatabase.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

using namespace zarek;
using zarek::test::child;
using zarek::test::enterPeriod;
using zarek::test::onlyOne;
using zarek::test::onlyText;
using zarek::test::onlyTitle;

namespace {

void addCourse(QSqlDatabase db, const QString &kola, const QString &klient, const QString &nomFakt)
{
    QVERIFY(test::execBound(db, QStringLiteral("INSERT INTO tabl (data, kod, kola, Klient, Marsh, Tovar, NomFakt) "
                                               "VALUES (?, '001', ?, ?, 'София - Перник', 'Пясък', ?)"),
                            {QDate(2026, 3, 5), kola, klient, nomFakt}));
}

void fillSample(test::ScratchDatabase &scratch)
{
    addCourse(scratch.db(), QStringLiteral("СА 1234 ВК"), QStringLiteral("Д'Аргос ООД"), QStringLiteral("0000000000"));
    addCourse(scratch.db(), QStringLiteral("РВ 5678 ТМ"), QStringLiteral("Агрополис АД"), QStringLiteral("0000000007"));
    addCourse(scratch.db(), QStringLiteral("РВ 5678 ТМ"), QStringLiteral("Агрополис АД"), QStringLiteral("0000000012"));
    scratch.exec(QStringLiteral("INSERT INTO shof (kod, ime) VALUES ('001', 'Иван Петров')"));
}

// Types the period into the dialog's date boxes without searching.
void setPeriod(QWidget &dialog, const QString &from, const QString &to)
{
    child<QLineEdit>(dialog, "Text1_0")->setText(from);
    child<QLineEdit>(dialog, "Text1_1")->setText(to);
}

// The messages more than one check gives.
const QString unknownTruck = QStringLiteral("Въведения номер няма курсове!\nМоля, изберете номер от списъка и опитайте отново.");
const QString unknownClient = QStringLiteral("Въведеното име не е Ваш клиент!\nМоля, изберете клиент от списъка и опитайте отново.");
const QString badDriver = QStringLiteral("Грешно име на шофьор!\nМоля, изберете име от списъка!");
const QString reversedPeriod = QStringLiteral("Грешно зададен период!\n(начална дата е след крайната дата)\nПроверете си датите!");
const QString noPeriod = QStringLiteral("Няма избран период за търсене!\nПроверете си датите!");

QString lastText(const RecordingMessageService &messages)
{
    return messages.shown.isEmpty() ? QString() : messages.shown.last().text;
}

}

// A fresh database of the current engine, with the sample courses unless "empty", and the
// messages recorded.
#define SEARCH_SAMPLE()                   \
    ZAREK_SCRATCH_DB(scratch);            \
    fillSample(scratch);                  \
    RecordingMessageService messages
#define SEARCH_EMPTY()                    \
    ZAREK_SCRATCH_DB_TELLING(scratch)

Q_DECLARE_METATYPE(zarek::SearchMode)

class SearchDialogsTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void aTruckSearchGivesTheTruckAndThePeriod()
    {
        SEARCH_SAMPLE();
        DiaSeek dialog(SearchMode::Kola, scratch.db());
        QCOMPARE(child<QComboBox>(dialog, "Combo1")->count(), 2);
        QCOMPARE(child<QComboBox>(dialog, "Combo1")->currentText(), QStringLiteral("РВ 5678 ТМ"));
        enterPeriod(dialog, QStringLiteral("1.3.2026"), QStringLiteral("31.03.2026"));
        QVERIFY(messages.shown.isEmpty());
        QVERIFY(dialog.SeekOk());
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(dialog.conditions().SeekKola, QStringLiteral("РВ 5678 ТМ"));
        QCOMPARE(dialog.conditions().period, (Period{QDate(2026, 3, 1), QDate(2026, 3, 31)}));
    }

    // Tab went from the dates to "Търси" and "Отказ" before the truck box, so a truck typed after
    // the dates went nowhere and Enter searched the first truck of the list.
    void tabSkippedTheTruckAndEnterSearchedTheFirstTruck_data()
    {
        QTest::addColumn<QString>("dialogName");
        QTest::addColumn<QStringList>("order");
        QTest::newRow("DiaSeek") << "DiaSeek" << QStringList{"Text1_0", "Text1_1", "Combo1", "OKButton", "CancelButton"};
        QTest::newRow("DiaSeekAlt") << "DiaSeekAlt"
                                    << QStringList{"Text1_0", "Text1_1", "Combo1", "Option1", "OKButton", "CancelButton"};
        QTest::newRow("DiaSeekAll") << "DiaSeekAll"
                                    << QStringList{"Text1_0", "Text1_1", "Combo1", "Combo2", "Text3", "Text2",
                                                   "OKButton", "CancelButton"};
    }
    void tabSkippedTheTruckAndEnterSearchedTheFirstTruck()
    {
        QFETCH(QString, dialogName);
        QFETCH(QStringList, order);
        SEARCH_SAMPLE();
        std::unique_ptr<SearchDialog> dialog;
        if (dialogName == QLatin1String("DiaSeek"))
            dialog = std::make_unique<DiaSeek>(SearchMode::Kola, scratch.db());
        else if (dialogName == QLatin1String("DiaSeekAlt"))
            dialog = std::make_unique<DiaSeekAlt>(SearchMode::Driver, scratch.db());
        else
            dialog = std::make_unique<DiaSeekAll>(SearchMode::FaktNew, scratch.db());
        test::showActive(*dialog);
        QStringList visited;
        for (qsizetype i = 0; i < order.size(); ++i) {
            QWidget *focus = QApplication::focusWidget();
            // A combo's text box has the focus for its combo.
            while (focus && focus->objectName().isEmpty())
                focus = focus->parentWidget();
            visited.append(focus ? focus->objectName() : QStringLiteral("<none>"));
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(visited, order);

        if (dialogName != QLatin1String("DiaSeek"))
            return;
        // Dates, Tab, the truck, Enter: the truck typed is the one searched.
        dialog->findChild<QLineEdit *>(QStringLiteral("Text1_0"))->setFocus();
        QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("1.3.2026"));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("31.3.2026"));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        auto *combo = child<QComboBox>(*dialog, "Combo1");
        QCOMPARE(QApplication::focusWidget(), combo);
        combo->lineEdit()->selectAll();
        test::type(QStringLiteral("СА 1234 ВК"));
        if (QWidget *popup = QApplication::activePopupWidget())
            QTest::keyClick(popup, Qt::Key_Escape);
        QTest::keyClick(combo, Qt::Key_Return);
        QVERIFY2(messages.shown.isEmpty(), qPrintable(lastText(messages)));
        QVERIFY(dialog->SeekOk());
        QCOMPARE(dialog->conditions().SeekKola, QStringLiteral("СА 1234 ВК"));
    }

    // A truck, client, invoice or driver typed that is not in the list opened an empty screen.
    void aTextNotInTheListIsTold_data()
    {
        QTest::addColumn<SearchMode>("mode");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("message");
        QTest::newRow("truck") << SearchMode::Kola << "СА 9999 ВК" << unknownTruck;
        QTest::newRow("truck of another case") << SearchMode::Kola << "са 1234 вк" << unknownTruck;
        QTest::newRow("client") << SearchMode::Klients << "Непознат ЕООД" << unknownClient;
        QTest::newRow("invoice") << SearchMode::EditFakt << "0000000099"
                                 << "Няма фактура с този номер!\nМоля, изберете номер на фактура от списъка.";
        QTest::newRow("driver") << SearchMode::Driver << "002,Петър Иванов" << badDriver;
        QTest::newRow("listed truck with blanks") << SearchMode::Kola << "  СА 1234 ВК " << "";
    }
    void aTextNotInTheListIsTold()
    {
        QFETCH(SearchMode, mode);
        QFETCH(QString, typed);
        QFETCH(QString, message);
        SEARCH_SAMPLE();
        DiaSeek dialog(mode, scratch.db());
        child<QComboBox>(dialog, "Combo1")->setEditText(typed);
        enterPeriod(dialog, QStringLiteral("1.3.2026"), QStringLiteral("31.03.2026"));
        QCOMPARE(lastText(messages), message);
        QCOMPARE(dialog.SeekOk(), message.isEmpty());
    }

    void periodChecksKeepTheDialogOpen_data()
    {
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        QTest::addColumn<QString>("message");
        QTest::newRow("same day") << "05.03.2026" << "05.03.2026" << reversedPeriod;
        QTest::newRow("reversed") << "06.03.2026" << "05.03.2026" << reversedPeriod;
        QTest::newRow("no end") << "05.03.2026" << "" << noPeriod;
        QTest::newRow("unreadable") << "ааа" << "05.03.2026" << "Неверен формат на датата!\nПроверете си датите!";
    }
    void periodChecksKeepTheDialogOpen()
    {
        QFETCH(QString, from);
        QFETCH(QString, to);
        QFETCH(QString, message);
        SEARCH_SAMPLE();
        for (SearchMode mode : {SearchMode::Kola, SearchMode::All}) {
            DiaSeek dialog(mode, scratch.db());
            enterPeriod(dialog, from, to);
            QCOMPARE(lastText(messages), message);
            QVERIFY(!dialog.SeekOk());
            QCOMPARE(dialog.result(), int(QDialog::Rejected));
        }
        DiaSeekAlt alt(SearchMode::All, scratch.db());
        enterPeriod(alt, from, to);
        QCOMPARE(lastText(messages), message);
        QVERIFY(!alt.SeekOk());
    }

    void invoicesAndStockAskNoPeriod()
    {
        SEARCH_SAMPLE();
        DiaSeek invoices(SearchMode::EditFakt, scratch.db());
        QVERIFY(!child<QLineEdit>(invoices, "Text1_0")->isEnabled());
        QVERIFY(!child<QLineEdit>(invoices, "Text1_1")->isEnabled());
        auto *combo = child<QComboBox>(invoices, "Combo1");
        QCOMPARE(combo->count(), 2);  // no "0000000000", newest first
        QCOMPARE(combo->itemText(0), QStringLiteral("0000000012"));
        test::click(invoices, QStringLiteral("OKButton"));
        QVERIFY(invoices.SeekOk());
        QCOMPARE(invoices.conditions().SeekNomFakt, QStringLiteral("0000000012"));
        QVERIFY(invoices.conditions().SeekFrom.isEmpty());

        DiaSeek stock(SearchMode::NalichSK, scratch.db());
        QVERIFY(!child<QLineEdit>(stock, "Text1_0")->isEnabled());
        QVERIFY(child<QComboBox>(stock, "Combo1")->isHidden());
        test::click(stock, QStringLiteral("OKButton"));
        QVERIFY(stock.SeekOk());
        QVERIFY(stock.conditions().SeekArtikul.isEmpty());
        QVERIFY(messages.shown.isEmpty());
    }

    void allModeNeedsOnlyThePeriod()
    {
        SEARCH_EMPTY();
        DiaSeek dialog(SearchMode::All, scratch.db());
        QVERIFY(!child<QComboBox>(dialog, "Combo1")->isEnabled());
        QVERIFY(messages.shown.isEmpty());  // no list, so no empty-list message
        test::click(dialog, QStringLiteral("OKButton"));
        QCOMPARE(lastText(messages), noPeriod);
        enterPeriod(dialog, QStringLiteral("01.01.2026"), QStringLiteral("31.12.2026"));
        QVERIFY(dialog.SeekOk());
    }

    // The truck lists offer the fleet with the trucks of earlier courses and waybills: a truck with
    // waybills and no course, or the fleet after the year's courses were closed, can be chosen.
    void theTruckListsOfferTheFleetAndEarlierRows_data()
    {
        QTest::addColumn<SearchMode>("mode");
        QTest::addColumn<bool>("seekAll");
        QTest::newRow("DiaSeek") << SearchMode::Kola << false;
        QTest::newRow("DiaSeekAll") << SearchMode::FaktNew << true;
    }
    void theTruckListsOfferTheFleetAndEarlierRows()
    {
        QFETCH(SearchMode, mode);
        QFETCH(bool, seekAll);
        ZAREK_SCRATCH_DB(scratch);
        fillSample(scratch);
        QVERIFY(scratch.exec(QStringLiteral("INSERT INTO Config (kola) VALUES ('ВТ 1111 АА ')")));   // the fleet only
        QVERIFY(scratch.exec(QStringLiteral("INSERT INTO Config (kola) VALUES ('СА 1234 ВК')")));    // and a course
        QVERIFY(scratch.exec(QStringLiteral("INSERT INTO RowdList (ListID, Data, Kola) "
                                            "VALUES ('0000000001', '2026-03-05', 'РК 2222 ВВ')")));  // waybills only
        const QStringList fleet = {QStringLiteral("ВТ 1111 АА"), QStringLiteral("РВ 5678 ТМ"), QStringLiteral("РК 2222 ВВ"),
                                   QStringLiteral("СА 1234 ВК")};
        QCOMPARE(searchlists::trucks(scratch.db()), fleet);
        RecordingMessageService messages;
        std::unique_ptr<SearchDialog> dialog;
        if (seekAll)
            dialog = std::make_unique<DiaSeekAll>(mode, scratch.db());
        else
            dialog = std::make_unique<DiaSeek>(mode, scratch.db());
        QComboBox *trucks = child<QComboBox>(*dialog, seekAll ? "Combo2" : "Combo1");
        QCOMPARE(test::items(trucks), fleet);
        trucks->setEditText(QStringLiteral("РК 2222 ВВ"));
        enterPeriod(*dialog, QStringLiteral("1.3.2026"), QStringLiteral("31.03.2026"));
        QVERIFY2(dialog->SeekOk(), qPrintable(lastText(messages)));
        QCOMPARE(dialog->conditions().SeekKola, QStringLiteral("РК 2222 ВВ"));
    }

    // The waybill report takes "0" for every truck; the other truck searches keep to one truck.
    void everyTruckIsZeroWhereItIsOffered_data()
    {
        QTest::addColumn<bool>("offered");
        QTest::newRow("the waybill report") << true;
        QTest::newRow("a course search") << false;
    }
    void everyTruckIsZeroWhereItIsOffered()
    {
        QFETCH(bool, offered);
        SEARCH_SAMPLE();
        DiaSeek dialog(SearchMode::Kola, scratch.db());
        if (offered)
            dialog.offerEveryTruck();
        QComboBox *trucks = child<QComboBox>(dialog, "Combo1");
        QCOMPARE(trucks->findText(QStringLiteral("0")), offered ? 0 : -1);
        QCOMPARE(trucks->currentText(), QStringLiteral("РВ 5678 ТМ"));  // the first truck stays shown
        trucks->setEditText(QStringLiteral("0"));
        enterPeriod(dialog, QStringLiteral("1.3.2026"), QStringLiteral("31.03.2026"));
        QCOMPARE(dialog.SeekOk(), offered);
        if (offered)
            QCOMPARE(dialog.conditions().SeekKola, QStringLiteral("0"));
        else
            QCOMPARE(lastText(messages), unknownTruck);
    }

    void anEmptyDatabaseIsToldAtOpening()
    {
        SEARCH_EMPTY();
        DiaSeek dialog(SearchMode::Klients, scratch.db());
        QCOMPARE(lastText(messages), QStringLiteral("Липсват данните за списъка!"));
        enterPeriod(dialog, QStringLiteral("01.01.2026"), QStringLiteral("31.12.2026"));
        QCOMPARE(lastText(messages), QStringLiteral("Няма избран клиент!\nМоля, изберете клиент от списъка."));
        QVERIFY(!dialog.SeekOk());
        // The invoicing search says at opening that there are no courses at all.
        messages.shown.clear();
        DiaSeekAll invoicing(SearchMode::FaktNew, scratch.db());
        QCOMPARE(onlyText(messages.shown), QStringLiteral("Няма въведени курсове в компютъра!"));
    }

    void aDriverIsSplitAtTheComma()
    {
        SEARCH_SAMPLE();
        DiaSeek dialog(SearchMode::Driver, scratch.db());
        QCOMPARE(child<QComboBox>(dialog, "Combo1")->currentText(), QStringLiteral("001,Иван Петров"));
        child<QComboBox>(dialog, "Combo1")->setEditText(QStringLiteral("Иван Петров"));
        enterPeriod(dialog, QStringLiteral("01.01.2026"), QStringLiteral("31.12.2026"));
        QCOMPARE(lastText(messages), badDriver);
        child<QComboBox>(dialog, "Combo1")->setCurrentIndex(0);
        test::click(dialog, QStringLiteral("OKButton"));
        QVERIFY(dialog.SeekOk());
        QCOMPARE(dialog.conditions().SeekDriverKod + ',' + dialog.conditions().SeekDriverIme, QStringLiteral("001,Иван Петров"));
    }

    void theAlternativeSearchTellsItsChoice()
    {
        SEARCH_SAMPLE();
        DiaSeekAlt all(SearchMode::All, scratch.db());
        QVERIFY(child<QRadioButton>(all, "Option1")->isChecked());
        QCOMPARE(child<QRadioButton>(all, "Option2")->text(), QStringLiteral("Фактурирани"));
        QVERIFY(!child<QComboBox>(all, "Combo1")->isEnabled());
        child<QRadioButton>(all, "Option3")->click();
        enterPeriod(all, QStringLiteral("01.01.2026"), QStringLiteral("31.12.2026"));
        QCOMPARE(all.conditions().SeekChoice, QStringLiteral("No"));

        DiaSeekAlt driver(SearchMode::Driver, scratch.db());
        QCOMPARE(child<QRadioButton>(driver, "Option2")->text(), QStringLiteral("Платени"));
        QCOMPARE(child<QRadioButton>(driver, "Option3")->text(), QStringLiteral("Неплатени"));
        child<QRadioButton>(driver, "Option2")->click();
        enterPeriod(driver, QStringLiteral("01.01.2026"), QStringLiteral("31.12.2026"));
        QCOMPARE(driver.conditions().SeekChoice, QStringLiteral("Yes"));
        QCOMPARE(driver.conditions().SeekDriverKod, QStringLiteral("001"));
        QVERIFY(messages.shown.isEmpty());
    }

    void theInvoicingSearchChecksClientAndTruck_data()
    {
        QTest::addColumn<QString>("klient");
        QTest::addColumn<QString>("kola");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("seekKola");
        QTest::newRow("truck left at its design text") << "Агрополис АД" << "ааа" << unknownTruck << "";
        QTest::newRow("truck cleared means all") << "Агрополис АД" << "" << "" << "";
        QTest::newRow("truck of the list") << "Агрополис АД" << "СА 1234 ВК" << "" << "СА 1234 ВК";
        QTest::newRow("no client") << " " << "" << "Няма зададен клиент!\nВъведете клиент и опитайте отново." << "";
        QTest::newRow("not a client") << "Непознат ЕООД" << "" << unknownClient << "";
        QTest::newRow("client with apostrophe") << "Д'Аргос ООД" << "" << "" << "";
    }
    void theInvoicingSearchChecksClientAndTruck()
    {
        QFETCH(QString, klient);
        QFETCH(QString, kola);
        QFETCH(QString, message);
        QFETCH(QString, seekKola);
        SEARCH_SAMPLE();
        DiaSeekAll dialog(SearchMode::FaktNew, scratch.db());
        QCOMPARE(child<QComboBox>(dialog, "Combo2")->currentText(), QStringLiteral("ааа"));
        child<QComboBox>(dialog, "Combo1")->setEditText(klient);
        child<QComboBox>(dialog, "Combo2")->setEditText(kola);
        enterPeriod(dialog, QStringLiteral("01.03.2026"), QStringLiteral("31.03.2026"));
        QCOMPARE(lastText(messages), message);
        QCOMPARE(dialog.SeekOk(), message.isEmpty());
        if (dialog.SeekOk()) {
            QCOMPARE(dialog.conditions().SeekKlient, klient.trimmed());
            QCOMPARE(dialog.conditions().SeekKola, seekKola);
        }
    }

    void blankRouteAndCargoAreNoCondition()
    {
        SEARCH_SAMPLE();
        DiaSeekAll first(SearchMode::FaktNew, scratch.db());
        child<QComboBox>(first, "Combo2")->setEditText(QString());
        child<QLineEdit>(first, "Text2")->setText(QStringLiteral("Пяс"));
        child<QLineEdit>(first, "Text3")->setText(QStringLiteral("София"));
        enterPeriod(first, QStringLiteral("01.03.2026"), QStringLiteral("31.03.2026"));
        QCOMPARE(first.conditions().SeekTovar + '|' + first.conditions().SeekMarsh, QStringLiteral("Пяс|София"));

        DiaSeekAll second(SearchMode::FaktNew, scratch.db());
        child<QComboBox>(second, "Combo2")->setEditText(QString());
        enterPeriod(second, QStringLiteral("01.03.2026"), QStringLiteral("31.03.2026"));
        QVERIFY(second.SeekOk());
        QCOMPARE(second.conditions().SeekTovar + '|' + second.conditions().SeekMarsh, QStringLiteral("|"));
    }

    // The truck box starts empty (all trucks): the design text "ааа" taken as a truck emptied the list.
    void warehouseExpensesTakeTheTruckUnchecked()
    {
        SEARCH_SAMPLE();
        DiaSeekAll dialog(SearchMode::SkladPRN, scratch.db());
        QVERIFY(!child<QComboBox>(dialog, "Combo1")->isEnabled());
        QVERIFY(!child<QLineEdit>(dialog, "Text2")->isEnabled());
        QCOMPARE(child<QLabel>(dialog, "lblText3")->text(), QStringLiteral("Артикул"));
        QCOMPARE(child<QComboBox>(dialog, "Combo2")->currentText(), QString());
        enterPeriod(dialog, QStringLiteral("01.03.2026"), QStringLiteral("31.03.2026"));
        QVERIFY(dialog.SeekOk());
        QCOMPARE(dialog.conditions().SeekKola, QString());

        DiaSeekAll typed(SearchMode::SkladPRN, scratch.db());
        child<QComboBox>(typed, "Combo2")->setEditText(QStringLiteral("Непозната 1"));
        enterPeriod(typed, QStringLiteral("01.03.2026"), QStringLiteral("31.03.2026"));
        QVERIFY(typed.SeekOk());
        QCOMPARE(typed.conditions().SeekKola, QStringLiteral("Непозната 1"));
    }

    // A control character in a search box is refused; cancelling then is told as no conditions.
    void aControlCharacterInASearchBoxIsRefusedAndCancellingIsToldAsNoConditions()
    {
        SEARCH_SAMPLE();
        DiaSeek dialog(SearchMode::Kola, scratch.db());
        child<QComboBox>(dialog, "Combo1")->setEditText(QStringLiteral("РВ 5678") + QChar(u'\0') + QStringLiteral("ТМ"));
        enterPeriod(dialog, QStringLiteral("1.3.2026"), QStringLiteral("31.03.2026"));
        QCOMPARE(onlyText(messages.shown), controlCharacterMessage(QString()).text);
        QVERIFY(!dialog.SeekOk());
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
        child<QPushButton>(dialog, "CancelButton")->click();
        QCOMPARE(lastText(messages), QStringLiteral("Няма избрани ограничения за търсене!"));
        QVERIFY(!dialog.SeekOk());
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
    }

    // With ZAREK_SCREENSHOT_DIR set, saves each dialog family as a picture for a person to look at.
    void screenshots()
    {
        ZAREK_SCREENSHOT_DIR(dir);
        SEARCH_SAMPLE();
        const auto save = [&](QDialog &dialog, const QString &title, const QString &name) {
            dialog.setWindowTitle(title);
            dialog.show();
            QTest::qWait(50);
            dialog.grab().save(dir + QLatin1Char('/') + name + QStringLiteral(".png"));
        };
        DiaSeek kola(SearchMode::Kola, scratch.db());
        setPeriod(kola, QStringLiteral("01.03.2026"), QStringLiteral("31.03.2026"));
        save(kola, QStringLiteral("Търсене - Курсове на кола №"), QStringLiteral("diaseek-kola"));
        DiaSeek rowd(SearchMode::Kola, scratch.db());
        rowd.offerEveryTruck();
        child<QComboBox>(rowd, "Combo1")->showPopup();
        save(rowd, QStringLiteral("Търсене - Справка пътни листи"), QStringLiteral("diaseek-rowdlist"));
        DiaSeek fakt(SearchMode::EditFakt, scratch.db());
        save(fakt, QStringLiteral("Търсене - Корекция фактури"), QStringLiteral("diaseek-editfakt"));
        DiaSeek stock(SearchMode::NalichSK, scratch.db());
        save(stock, QStringLiteral("Търсене - Наличност в склада"), QStringLiteral("diaseek-nalichsk"));
        DiaSeekAlt alt(SearchMode::Driver, scratch.db());
        save(alt, QStringLiteral("Търсене - Курсове на шофьор"), QStringLiteral("diaseekalt-driver"));
        DiaSeekAll all(SearchMode::FaktNew, scratch.db());
        save(all, QStringLiteral("Търсене - Нефактурирани курсове"), QStringLiteral("diaseekall-faktnew"));
    }
};

QTEST_MAIN(SearchDialogsTest)
#include "tst_searchdialogs.moc"
