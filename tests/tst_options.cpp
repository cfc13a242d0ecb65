#include "app/messageservice.h"
#include "forms/recordform.h"
#include "reference/options.h"
#include "testdatabase.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlQuery>
#include <QTabWidget>

using namespace zarek;

namespace {

QLineEdit *box(QWidget &w, const QString &name)
{
    return w.findChild<QLineEdit *>(name);
}

QPushButton *button(QWidget &w, const char *name)
{
    return w.findChild<QPushButton *>(QString::fromLatin1(name));
}

void setRates(Options &screen, const QStringList &rates)
{
    for (int i = 0; i < 6; ++i)
        box(screen, QStringLiteral("Text%1").arg(i + 1))->setText(rates[i]);
}

}

class OptionsTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void aTariffBoxThatIsNoNumberIsToldAtOnce()
    {
        ZAREK_SCRATCH_DB(scratch);
        RecordingMessageService messages;
        Options screen(scratch.db());
        QLineEdit *first = box(screen, QStringLiteral("Text1"));
        QTest::keyClicks(first, "0,35");
        QVERIFY(messages.shown.isEmpty());
        QTest::keyClick(first, Qt::Key_A);
        QCOMPARE(messages.shown.size(), 1);
        QCOMPARE(messages.shown[0].title, QStringLiteral("ГРЕШКА при въвеждане!"));
        QCOMPARE(messages.shown[0].text, QStringLiteral("Въведения символ е невалиден!\nМоля, въведете друг."));
        QCOMPARE(first->text(), QStringLiteral("0,35a"));  // the text stays as typed
        first->selectAll();
        QTest::keyClick(first, Qt::Key_Backspace);  // clearing is no number either
        QCOMPARE(messages.shown.size(), 2);
        QTest::keyClicks(first, "5");
        QCOMPARE(messages.shown.size(), 2);
    }

    void tariffsAreSavedAlsoIntoAnEmptyTable()
    {
        ZAREK_SCRATCH_DB(scratch);
        RecordingMessageService messages;
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
        QCOMPARE(box(again, QStringLiteral("Text1"))->text(), QStringLiteral("0,360"));
    }

    void aTariffThatIsNoNumberWritesNothing()
    {
        ZAREK_SCRATCH_DB(scratch);
        RecordingMessageService messages;
        Options screen(scratch.db());
        setRates(screen, {"0,35", "0,25", "x", "0,14", "0,12", "0,1"});
        button(screen, "cmdUpdate2")->click();
        QCOMPARE(messages.shown.size(), 1);
        QCOMPARE(messages.shown[0].title, QStringLiteral("ГРЕШКА при запис!"));
        QVERIFY(messages.shown[0].text.startsWith(QStringLiteral("13:")));
        QSqlQuery query(scratch.db());
        QVERIFY(query.exec(QStringLiteral("SELECT COUNT(*) FROM Tarifi")) && query.next());
        QCOMPARE(query.value(0).toInt(), 0);
    }

    void trucksAreKeptWithoutChecksAndNumbersTypedWithComma()
    {
        ZAREK_SCRATCH_DB(scratch);
        RecordingMessageService messages;
        Options screen(scratch.db());
        button(screen, "cmdAdd1")->click();
        QCOMPARE(screen.findChild<QLabel *>(QStringLiteral("lblStatus1"))->text(), QStringLiteral("Добавяне"));
        box(screen, QStringLiteral("txtFields1_0"))->setText(QStringLiteral("РВ 1234 ТМ"));
        box(screen, QStringLiteral("txtFields1_1"))->setText(QStringLiteral("31,5"));
        button(screen, "cmdUpdate1")->click();
        QVERIFY(messages.shown.isEmpty());
        QCOMPARE(screen.findChild<QLabel *>(QStringLiteral("lblStatus1"))->text(), QStringLiteral("Кола № 1"));
        QSqlQuery query(scratch.db());
        QVERIFY(query.exec(QStringLiteral("SELECT kola, Razhod, Procent FROM Config")) && query.next());
        QCOMPARE(query.value(0).toString(), QStringLiteral("РВ 1234 ТМ"));
        QCOMPARE(query.value(1).toDouble(), 31.5);
        QVERIFY(query.value(2).isNull());

        button(screen, "cmdEdit1")->click();
        box(screen, QStringLiteral("txtFields1_2"))->setText(QStringLiteral("дванадесет"));
        button(screen, "cmdUpdate1")->click();
        QCOMPARE(messages.shown.size(), 1);  // a number column refuses text instead of storing it
        QCOMPARE(screen.trucks()->state(), RecordForm::State::Editing);
    }

    void closingCancelsAPendingTruckAndCtrlTabSwitchesTabs()
    {
        ZAREK_SCRATCH_DB(scratch);
        RecordingMessageService messages;
        Options screen(scratch.db());
        screen.show();
        QTest::keyClick(&screen, Qt::Key_Tab, Qt::ControlModifier);
        QCOMPARE(screen.tabs()->currentIndex(), 1);
        QTest::keyClick(&screen, Qt::Key_Tab, Qt::ControlModifier);
        QCOMPARE(screen.tabs()->currentIndex(), 0);
        QTest::keyClick(&screen, Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(screen.tabs()->currentIndex(), 1);

        button(screen, "cmdAdd1")->click();
        box(screen, QStringLiteral("txtFields1_0"))->setText(QStringLiteral("СА 0001 АА"));
        button(screen, "cmdCancel")->click();
        QCOMPARE(screen.trucks()->state(), RecordForm::State::Browsing);
        QVERIFY(!screen.isVisible());
        QSqlQuery query(scratch.db());
        QVERIFY(query.exec(QStringLiteral("SELECT COUNT(*) FROM Config")) && query.next());
        QCOMPARE(query.value(0).toInt(), 0);
    }

    void screenshots()
    {
        const QString dir = qEnvironmentVariable("ZAREK_SCREENSHOT_DIR");
        if (dir.isEmpty())
            QSKIP("set ZAREK_SCREENSHOT_DIR to save pictures of the screen");
        ZAREK_SCRATCH_DB(scratch);
        scratch.exec(QStringLiteral("INSERT INTO Config (kola, Razhod, Procent, Ton) VALUES ('РВ 1234 ТМ', 31.5, 12, 24)"));
        Options screen(scratch.db());
        screen.show();
        QTest::qWait(50);
        screen.grab().save(dir + QStringLiteral("/options-trucks.png"));
        screen.tabs()->setCurrentIndex(1);
        QTest::qWait(50);
        screen.grab().save(dir + QStringLiteral("/options-tariffs.png"));
    }
};

QTEST_MAIN(OptionsTest)
#include "tst_options.moc"
