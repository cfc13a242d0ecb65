#include "forms/messageservice.h"
#include "courses/coursestore.h"
#include "forms/recordform.h"
#include "reference/options.h"
#include "screendriver.h"
#include "testdatabase.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlQuery>
#include <QTabWidget>

using namespace zarek;
using zarek::test::button;
using zarek::test::lineEdit;
using zarek::test::onlyOne;
using zarek::test::onlyText;
using zarek::test::onlyTitle;

namespace {

void setRates(Options &screen, const QStringList &rates)
{
    for (int i = 0; i < 6; ++i)
        lineEdit(screen, QStringLiteral("Text%1").arg(i + 1))->setText(rates[i]);
}

}

// A fresh database of the current engine, the messages recorded, and the settings screen on it.
#define OPTIONS_SCREEN()               \
    ZAREK_SCRATCH_DB_TELLING(scratch); \
    Options screen(scratch.db())

class OptionsTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    // A tariff box that is no number is told at once, and a save with it writes nothing.
    void aTariffBoxThatIsNoNumberIsToldAtOnceAndWritesNothing()
    {
        OPTIONS_SCREEN();
        QLineEdit *first = lineEdit(screen, QStringLiteral("Text1"));
        QTest::keyClicks(first, "0,35");
        QVERIFY(messages.shown.isEmpty());
        QTest::keyClick(first, Qt::Key_A);
        QCOMPARE(onlyOne(messages.shown),
                 QStringLiteral("ГРЕШКА при въвеждане!|Въведения символ е невалиден!\nМоля, въведете друг."));
        QCOMPARE(first->text(), QStringLiteral("0,35a"));  // the text stays as typed
        first->selectAll();
        QTest::keyClick(first, Qt::Key_Backspace);  // clearing is no number either
        QCOMPARE(messages.shown.size(), 2);
        QTest::keyClicks(first, "5");
        QCOMPARE(messages.shown.size(), 2);

        // A save with a tariff that is no number writes nothing.
        messages.shown.clear();
        setRates(screen, {"0,35", "0,25", "x", "0,14", "0,12", "0,1"});
        QCOMPARE(messages.shown.size(), 1);  // told as it changed
        QCOMPARE(messages.shown[0].title, QStringLiteral("ГРЕШКА при въвеждане!"));
        button(screen, "cmdUpdate2")->click();
        QCOMPARE(messages.shown.size(), 2);
        QCOMPARE(messages.shown[1].title, QStringLiteral("ГРЕШКА при запис!"));
        QVERIFY(messages.shown[1].text.startsWith(QStringLiteral("13:")));
        QCOMPARE(test::countBy(scratch.db(), QStringLiteral("SELECT COUNT(*) FROM Tarifi")), 0);
    }

    void tariffsAreSavedAlsoIntoAnEmptyTable()
    {
        ZAREK_SCRATCH_DB_TELLING(scratch);
        {
            Options screen(scratch.db());
            setRates(screen, {"0,350", "0.25", "0,18", "0,14", "0,12", "0,1"});
            button(screen, "cmdUpdate2")->click();
            QVERIFY(messages.shown.isEmpty());
            setRates(screen, {"0,36", "0,25", "0,18", "0,14", "0,12", "0,1"});
            button(screen, "cmdUpdate2")->click();
            QVERIFY(messages.shown.isEmpty());
        }
        QSqlQuery query(scratch.db());
        QVERIFY(query.exec(QStringLiteral("SELECT COUNT(*), MAX(\"Trf_20\"), MAX(\"Trf_20-30\"), MAX(DateMod) FROM Tarifi")));
        QVERIFY(query.next());
        QCOMPARE(query.value(0).toInt(), 1);
        QCOMPARE(query.value(1).toDouble(), 0.36);
        QCOMPARE(query.value(2).toDouble(), 0.25);
        QVERIFY(!query.value(3).isNull());

        Options again(scratch.db());
        QCOMPARE(lineEdit(again, QStringLiteral("Text1"))->text(), QStringLiteral("0,360"));
    }

    void trucksAreKeptWithoutChecksAndNumbersTypedWithComma()
    {
        OPTIONS_SCREEN();
        button(screen, "cmdAdd1")->click();
        QCOMPARE(screen.findChild<QLabel *>(QStringLiteral("lblStatus1"))->text(), QStringLiteral("Добавяне"));
        lineEdit(screen, QStringLiteral("txtFields1_0"))->setText(QStringLiteral("РВ 1234 ТМ"));
        lineEdit(screen, QStringLiteral("txtFields1_1"))->setText(QStringLiteral("31,5"));
        button(screen, "cmdUpdate1")->click();
        QVERIFY(messages.shown.isEmpty());
        QCOMPARE(screen.findChild<QLabel *>(QStringLiteral("lblStatus1"))->text(), QStringLiteral("Кола № 1"));
        QCOMPARE(test::rowsText(scratch.db(), "SELECT kola, Razhod, Procent FROM Config"), "РВ 1234 ТМ|31.5|");  // no percentage

        button(screen, "cmdEdit1")->click();
        lineEdit(screen, QStringLiteral("txtFields1_2"))->setText(QStringLiteral("дванадесет"));
        button(screen, "cmdUpdate1")->click();
        QCOMPARE(messages.shown.size(), 1);  // a number column refuses text instead of storing it
        QCOMPARE(screen.trucks()->state(), RecordForm::State::Editing);
    }

    void closingCancelsAPendingTruckAndCtrlTabSwitchesTabs()
    {
        OPTIONS_SCREEN();
        screen.show();
        QTest::keyClick(&screen, Qt::Key_Tab, Qt::ControlModifier);
        QCOMPARE(screen.tabs()->currentIndex(), 1);
        QTest::keyClick(&screen, Qt::Key_Tab, Qt::ControlModifier);
        QCOMPARE(screen.tabs()->currentIndex(), 0);
        QTest::keyClick(&screen, Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(screen.tabs()->currentIndex(), 1);

        button(screen, "cmdAdd1")->click();
        lineEdit(screen, QStringLiteral("txtFields1_0"))->setText(QStringLiteral("СА 0001 АА"));
        button(screen, "cmdCancel")->click();
        QCOMPARE(messages.asked.size(), 1);  // "Да": the typed truck is dropped
        QCOMPARE(screen.trucks()->state(), RecordForm::State::Browsing);
        QVERIFY(!screen.isVisible());
        QCOMPARE(test::countBy(scratch.db(), QStringLiteral("SELECT COUNT(*) FROM Config")), 0);
    }

    void tariffsAreShownWithThreeDecimalsAndAnotherUsersSaveIsNotOverwritten()
    {
        ZAREK_SCRATCH_DB(scratch);
        scratch.exec(QStringLiteral("INSERT INTO Tarifi (\"Trf_20\", \"Trf_20-30\", \"Trf_30-50\", \"Trf_50-100\", "
                                    "\"Trf_100-200\", \"Trf_200\") VALUES (0.35, 0.25, 0.18, 0.14, 0.12, 0.1)"));
        RecordingMessageService messages;
        Options screen(scratch.db());
        QStringList shown;
        for (int i = 1; i <= 6; ++i)
            shown.append(lineEdit(screen, QStringLiteral("Text%1").arg(i))->text());
        QCOMPARE(shown, (QStringList{"0,350", "0,250", "0,180", "0,140", "0,120", "0,100"}));
        QVERIFY(messages.shown.isEmpty());

        QSqlQuery other(scratch.openSecondConnection());
        QVERIFY(other.exec(QStringLiteral("UPDATE Tarifi SET \"Trf_20\" = 0.4, row_version = row_version + 1")));
        lineEdit(screen, QStringLiteral("Text2"))->setText(QStringLiteral("0,3"));
        button(screen, "cmdUpdate2")->click();
        QCOMPARE(messages.shown.size(), 1);
        QCOMPARE(messages.shown[0], CourseStore::conflictMessage(QStringLiteral("ГРЕШКА при запис!")));
        QCOMPARE(lineEdit(screen, QStringLiteral("Text2"))->text(), QStringLiteral("0,3"));
        QCOMPARE(test::rowsText(scratch.db(), "SELECT \"Trf_20\", \"Trf_20-30\" FROM Tarifi"), "0.4|0.25");
    }

    void escDoesNotCloseTheScreen()
    {
        OPTIONS_SCREEN();
        test::showExposed(screen);
        QTest::keyClick(lineEdit(screen, QStringLiteral("txtFields1_0")), Qt::Key_Escape);
        QTest::keyClick(&screen, Qt::Key_Escape);
        QVERIFY(screen.isVisible());
        QTest::keyClick(lineEdit(screen, QStringLiteral("txtFields1_0")), Qt::Key_Tab, Qt::ControlModifier);
        QCOMPARE(screen.tabs()->currentIndex(), 1);
    }

    void aTruckIsDeletedAfterTwoQuestions()
    {
        ZAREK_SCRATCH_DB(scratch);
        scratch.exec(QStringLiteral("INSERT INTO Config (kola, Razhod, Procent, Ton) VALUES ('РВ 1234 ТМ', 31.5, 12, 24)"));
        RecordingMessageService messages;
        Options screen(scratch.db());
        QCOMPARE(lineEdit(screen, QStringLiteral("txtFields1_1"))->text(), QStringLiteral("31,5"));
        messages.answers = {true, false};
        button(screen, "cmdDelete1")->click();
        messages.answers = {true, true};
        button(screen, "cmdDelete1")->click();
        QCOMPARE(messages.asked.size(), 4);
        QCOMPARE(test::countBy(scratch.db(), QStringLiteral("SELECT COUNT(*) FROM Config")), 0);
        QCOMPARE(screen.findChild<QLabel *>(QStringLiteral("lblStatus1"))->text(), QString());
    }

    void screenshots()
    {
        ZAREK_SCREENSHOT_DIR(dir);
        ZAREK_SCRATCH_DB(scratch);
        scratch.exec(QStringLiteral("INSERT INTO Config (kola, Razhod, Procent, Ton) VALUES ('РВ 1234 ТМ', 31.5, 12, 24)"));
        scratch.exec(QStringLiteral("INSERT INTO Tarifi (\"Trf_20\", \"Trf_20-30\", \"Trf_30-50\", \"Trf_50-100\", "
                                    "\"Trf_100-200\", \"Trf_200\") VALUES (0.35, 0.25, 0.18, 0.14, 0.12, 0.1)"));
        RecordingMessageService messages;
        Options screen(scratch.db());
        test::showExposed(screen);
        screen.grab().save(dir + QStringLiteral("/options-trucks.png"));
        button(screen, "cmdEdit1")->click();
        QTest::qWait(50);
        screen.grab().save(dir + QStringLiteral("/options-trucks-editing.png"));
        button(screen, "cmdCancel1")->click();
        screen.tabs()->setCurrentIndex(1);
        QTest::qWait(50);
        screen.grab().save(dir + QStringLiteral("/options-tariffs.png"));
        lineEdit(screen, QStringLiteral("Text3"))->setFocus();
        lineEdit(screen, QStringLiteral("Text3"))->setText(QStringLiteral("0,2"));
        QTest::qWait(50);
        screen.grab().save(dir + QStringLiteral("/options-tariffs-editing.png"));
    }
};

QTEST_MAIN(OptionsTest)
#include "tst_options.moc"
