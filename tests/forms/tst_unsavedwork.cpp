#include "app/frmmain.h"
#include "app/personal.h"
#include "courses/kurs.h"
#include "data/firmstore.h"
#include "forms/messageservice.h"
#include "forms/recordform.h"
#include "forms/unsavedwork.h"
#include "reference/driver.h"
#include "reference/options.h"
#include "screendriver.h"
#include "testdatabase.h"

#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QVBoxLayout>

using namespace zarek;
using zarek::test::button;
using zarek::test::lineEdit;

// Closing a window that holds typing not yet written asks "Да"/"Не" first, however it is closed;
// "Не" keeps the window and the typing, "Да" drops the typing and closes.

namespace {

int count(QSqlDatabase db, const QString &table)
{
    return test::countBy(db, QStringLiteral("SELECT COUNT(*) FROM ") + table);
}

// The ways a user closes a window: its close box, Esc, its own close button (or "Отказ").
enum class Closing { CloseBox, Escape, Reject };

void closeBy(QDialog &window, Closing how)
{
    switch (how) {
    case Closing::CloseBox: window.close(); break;
    case Closing::Escape: QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape); break;
    case Closing::Reject: window.reject(); break;
    }
}

void addClosings()
{
    QTest::addColumn<Closing>("how");
    QTest::newRow("close box") << Closing::CloseBox;
    QTest::newRow("Esc") << Closing::Escape;
    QTest::newRow("close button") << Closing::Reject;
}

void addFirm(test::ScratchDatabase &scratch)
{
    QVERIFY(scratch.exec(QStringLiteral("INSERT INTO ZarekCfg (UserName, UserAdres, UserCity, UserTel, UserGSM) "
                                        "VALUES ('Бетон ООД', 'ул. Първа 1', 'Пловдив', '032 1', '0888 1')")));
}

}

Q_DECLARE_METATYPE(Closing)

class UnsavedWorkTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void closingARecordFormThrewTheTypingAway_data() { addClosings(); }
    void closingARecordFormThrewTheTypingAway()
    {
        QFETCH(Closing, how);
        ZAREK_SCRATCH_DB_TELLING(scratch);
        Driver screen(scratch.db());
        test::showActive(screen);
        button(screen, "cmdAdd")->click();
        lineEdit(screen, QStringLiteral("txtFields_2"))->setFocus();
        lineEdit(screen, QStringLiteral("txtFields_2"))->setText(QStringLiteral("Иван Петров"));

        messages.answers = {false};  // "Не"
        closeBy(screen, how);
        QCOMPARE(messages.asked.size(), 1);
        QCOMPARE(messages.asked.first(), UnsavedWorkGuard::question());
        QVERIFY(screen.isVisible());
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Adding);
        QCOMPARE(lineEdit(screen, QStringLiteral("txtFields_2"))->text(), QStringLiteral("Иван Петров"));

        messages.answers = {true};  // "Да"
        closeBy(screen, how);
        QCOMPARE(messages.asked.size(), 2);
        QVERIFY(!screen.isVisible());
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Browsing);
        QCOMPARE(count(scratch.db(), QStringLiteral("shof")), 0);
    }

    void aPendingRowWithNothingTypedClosesWithoutAQuestion()
    {
        ZAREK_SCRATCH_DB_TELLING(scratch);
        Kurs screen(scratch.db());  // opens on a new course, nothing typed yet
        test::showActive(screen);
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Adding);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        QVERIFY(!screen.isVisible());
        QVERIFY(messages.asked.isEmpty());
    }

    // The course editor's expense and rate are not bound to the row, but typing there counts too.
    void typingOnlyTheExpenseOfACourseAsks()
    {
        ZAREK_SCRATCH_DB_TELLING(scratch);
        Kurs screen(scratch.db());
        test::showActive(screen);
        lineEdit(screen, QStringLiteral("txtRazhod"))->setText(QStringLiteral("12,50"));
        messages.answers = {false};
        screen.close();
        QCOMPARE(messages.asked.size(), 1);
        QVERIFY(screen.isVisible());
        QCOMPARE(lineEdit(screen, QStringLiteral("txtRazhod"))->text(), QStringLiteral("12,50"));
    }

    // A corrected course: the question comes only once something was changed.
    void correctingACourseAsksOnlyOnceSomethingChanged()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(scratch.exec(QStringLiteral("INSERT INTO tabl (data, kod, kola, Klient, Marsh, Tovar, km, ton, Tarifa, "
                                            "bruto, procent, neto, Fakt, NomFakt, plat, Doc) VALUES ('2026-02-01', "
                                            "'007', 'СА 1234 ВК', 'Бетон АД', 'София - Перник', 'Пясък', 25, 10, "
                                            "0.125, 31.25, 0.94, 30.31, FALSE, '0000000000', FALSE, FALSE)")));
        RecordingMessageService messages;
        Kurs screen(scratch.db(), QStringLiteral("СА 1234 ВК"), {QDate(2026, 2, 1), QDate(2026, 2, 28)});
        test::showActive(screen);
        screen.recordForm()->edit();
        QVERIFY(!screen.recordForm()->hasUnsavedChanges());
        screen.findChild<QComboBox *>(QStringLiteral("Combo2"))->setEditText(QStringLiteral("София - Враца"));
        QVERIFY(screen.recordForm()->hasUnsavedChanges());
        messages.answers = {false};
        screen.close();
        QVERIFY(screen.isVisible());
        QCOMPARE(screen.findChild<QComboBox *>(QStringLiteral("Combo2"))->currentText(), QStringLiteral("София - Враца"));
        messages.answers = {true};
        screen.close();
        QVERIFY(!screen.isVisible());
        QCOMPARE(test::scalar(scratch.db(), QStringLiteral("SELECT Marsh FROM tabl")).toString(), QStringLiteral("София - Перник"));
    }

    // Two record strips in one window: one question for the window, and "Да" drops both rows.
    void aWindowWithTwoStripsAsksOnce()
    {
        ZAREK_SCRATCH_DB_TELLING(scratch);
        QWidget window;
        auto *layout = new QVBoxLayout(&window);
        RecordForm *strips[2] = {};
        QLineEdit *boxes[2] = {};
        const QString tables[2] = {QStringLiteral("Config"), QStringLiteral("shof")};
        const QString columns[2] = {QStringLiteral("kola"), QStringLiteral("kod")};
        for (int i = 0; i < 2; ++i) {
            RecordFormConfig config;
            config.suffix = QString::number(i + 1);
            strips[i] = new RecordForm(std::make_unique<RecordStore>(scratch.db(), tables[i], QStringList{columns[i]},
                                                                     columns[i]),
                                       config, &window);
            boxes[i] = new QLineEdit(&window);
            strips[i]->bind(boxes[i], columns[i]);
            layout->addWidget(boxes[i]);
            layout->addWidget(strips[i]);
            QVERIFY(strips[i]->open());
            strips[i]->add();
            boxes[i]->setText(QStringLiteral("ново %1").arg(i));
        }
        test::showActive(window);
        messages.answers = {false};
        QVERIFY(!window.close());
        QCOMPARE(messages.asked.size(), 1);
        QCOMPARE(boxes[1]->text(), QStringLiteral("ново 1"));
        messages.answers = {true};
        QVERIFY(window.close());
        QCOMPARE(messages.asked.size(), 2);
        for (RecordForm *strip : strips)
            QCOMPARE(strip->state(), RecordForm::State::Browsing);
        QCOMPARE(count(scratch.db(), QStringLiteral("Config")) + count(scratch.db(), QStringLiteral("shof")), 0);
    }

    // The settings window: a truck strip and six rates written by their own button.
    void closingTheSettingsWithTypedRatesAsks()
    {
        ZAREK_SCRATCH_DB_TELLING(scratch);
        Options screen(scratch.db());
        test::showActive(screen);
        for (int i = 1; i <= 6; ++i)
            lineEdit(screen, QStringLiteral("Text%1").arg(i))->setText(QStringLiteral("0,2"));
        messages.answers = {false};
        button(screen, "cmdCancel")->click();
        QVERIFY(screen.isVisible());
        QCOMPARE(lineEdit(screen, QStringLiteral("Text3"))->text(), QStringLiteral("0,2"));
        button(screen, "cmdUpdate2")->click();  // written: nothing is left to lose
        button(screen, "cmdCancel")->click();
        QCOMPARE(messages.asked.size(), 1);
        QVERIFY(!screen.isVisible());
    }

    void theFirmProfileAsksUntilItIsSaved()
    {
        ZAREK_SCRATCH_DB(scratch);
        addFirm(scratch);
        RecordingMessageService messages;
        FirmProfile profile = readFirmRow(scratch.db())->profile;
        Personal form(scratch.db(), profile);
        form.show();
        form.close();  // nothing changed
        QVERIFY(messages.asked.isEmpty());
        test::showActive(form);
        lineEdit(form, QStringLiteral("txtFirmaCity"))->setText(QStringLiteral("Пазарджик"));
        messages.answers = {false};
        button(form, "cmdCancel")->click();
        QCOMPARE(messages.asked.size(), 1);
        QVERIFY(form.isVisible());
        QCOMPARE(lineEdit(form, QStringLiteral("txtFirmaCity"))->text(), QStringLiteral("Пазарджик"));
        button(form, "OKButton")->click();
        QCOMPARE(messages.asked.size(), 1);  // saved, so the window closes without a question
        QVERIFY(!form.isVisible());
        QCOMPARE(profile.UserCity, QStringLiteral("Пазарджик"));
    }

    // Leaving the program (Изход, Ctrl+Z, the main window's close box) with such a window open.
    void leavingTheProgramClosedAChangedWindowSilently()
    {
        ZAREK_SCRATCH_DB(scratch);
        addFirm(scratch);
        QTemporaryDir dir;
        FrmMain::setSettingsFile(dir.filePath(QStringLiteral("zarek.ini")));
        RecordingMessageService messages;
        FrmMain main(readFirmRow(scratch.db())->profile, scratch.config(), scratch.db(), QStringLiteral("A"));
        test::showActive(main);
        main.menuAction(QStringLiteral("mnuHelpPerson"))->trigger();
        auto *personal = main.findChild<Personal *>();
        QVERIFY(personal && personal->isVisible());
        lineEdit(*personal, QStringLiteral("txtFirmaTel"))->setText(QStringLiteral("032 999"));

        messages.answers = {true, false};  // leave the program: yes; drop the typing: no
        main.menuAction(QStringLiteral("mnuFileExit"))->trigger();
        QCOMPARE(messages.asked.size(), 2);
        QVERIFY(main.isVisible());
        QVERIFY(personal->isVisible());
        QCOMPARE(lineEdit(*personal, QStringLiteral("txtFirmaTel"))->text(), QStringLiteral("032 999"));

        messages.answers = {true};
        QVERIFY(main.close());
        QVERIFY(!main.isVisible());
        QCOMPARE(readFirmRow(scratch.db())->profile.UserTel, QStringLiteral("032 1"));
    }
};

QTEST_MAIN(UnsavedWorkTest)
#include "tst_unsavedwork.moc"
