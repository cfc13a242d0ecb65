#include "forms/commandday.h"
#include "forms/dialog.h"
#include "forms/messageservice.h"
#include "courses/courseeditorrules.h"
#include "courses/coursestore.h"
#include "courses/kurs.h"
#include "courseexample.h"
#include "coursesfixture.h"
#include "core/currency.h"
#include "forms/recordform.h"
#include "screendriver.h"
#include "testdatabase.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTimer>

using namespace zarek;
using namespace zarek::test;

namespace {

const QString emptyList = QStringLiteral("Списъка е празен\nЩе се създаде нов!");

// A course saved through the store, as earlier entry or another workstation would save it.
void addCourse(QSqlDatabase db, const QString &kola, const QString &date, const QString &tarifa = QStringLiteral("0,125"))
{
    CourseEntry entry = test::exampleCourseEntry();
    entry.kola = kola;
    entry.date = date;
    entry.tarifa = tarifa;
    QVERIFY(CourseStore(db).save(entry, {}, {commandDay().changeover, QDate(2026, 1, 1)}).ok());
}

// The tariff bands and two drivers, and courses saved through the store as earlier entry would
// have: "truck date" or "truck date rate" each.
void prepare(test::ScratchDatabase &scratch, const QStringList &courses = {})
{
    QVERIFY(test::addBands(scratch));
    QVERIFY(scratch.exec(QStringLiteral("INSERT INTO shof (kod, ime) VALUES ('007', 'Иван Петров Иванов')")));
    QVERIFY(scratch.exec(QStringLiteral("INSERT INTO shof (kod, ime) VALUES ('012', 'Георги Д''Амато')")));
    // The example courses' client is in the register: saving them asks nothing about it.
    QVERIFY(scratch.exec(QStringLiteral("INSERT INTO Klienti (Ime) VALUES ('Д''Аргос ООД')")));
    for (const QString &course : courses) {
        const QStringList parts = course.split(QLatin1Char(' '));
        addCourse(scratch.db(), parts.mid(0, 3).join(QLatin1Char(' ')), parts[3], parts.value(4, QStringLiteral("0,125")));
    }
}

// The editor on new courses, or on the courses of СА 1234 ВК in a period.
const QString sa1234 = QStringLiteral("СА 1234 ВК");
const Period february{QDate(2026, 2, 1), QDate(2026, 2, 28)};

QLineEdit *field(QWidget &w, int index) { return child<QLineEdit>(w, QStringLiteral("txtFields_%1").arg(index)); }
QComboBox *combo(QWidget &w, int index) { return child<QComboBox>(w, QStringLiteral("Combo%1").arg(index)); }
QString sum(QWidget &w, int index) { return child<QLabel>(w, QStringLiteral("lblLabels_%1").arg(index))->text(); }
// The gross, the percentage and the net shown.
QString sums(QWidget &w) { return QStringList{sum(w, 15), sum(w, 16), sum(w, 17)}.join(QLatin1Char('|')); }
QLineEdit *rateBox(QWidget &w) { return child<QLineEdit>(w, QStringLiteral("txtTarifa")); }
QCheckBox *invoiced(QWidget &w) { return child<QCheckBox>(w, QStringLiteral("Check1")); }
// The rate and the gross shown.
QString rateAndGross(QWidget &w) { return rateBox(w)->text() + QLatin1Char('|') + sum(w, 15); }


// Fills the boxes of a new course directly (the checks are what is tested, not the typing).
void fillNewCourse(Kurs &screen, const QString &nomFakt = QStringLiteral("0000000000"),
                   const QString &date = QStringLiteral("05.03.2026"))
{
    combo(screen, 5)->setEditText(QStringLiteral("007,Иван Петров Иванов"));
    combo(screen, 1)->setEditText(QStringLiteral("СА 1234 ВК"));
    field(screen, 1)->setText(date);
    field(screen, 12)->setText(QStringLiteral("10"));
    field(screen, 4)->setText(QStringLiteral("25"));
    rateBox(screen)->setText(QStringLiteral("0,125"));
    combo(screen, 2)->setEditText(QStringLiteral("София - Перник"));
    combo(screen, 3)->setEditText(QStringLiteral("Д'Аргос ООД"));
    combo(screen, 4)->setEditText(QStringLiteral("Пясък"));
    field(screen, 2)->setText(nomFakt);
}

}

// A fresh database of the current engine prepared with the courses named, the messages recorded,
// and the editor shown on it: entering new courses, or correcting those of СА 1234 ВК in February.
#define ENTERING_COURSES(screen, ...)         \
    ZAREK_SCRATCH_DB(scratch);                \
    prepare(scratch, {__VA_ARGS__});          \
    RecordingMessageService messages;         \
    Kurs screen(scratch.db());                \
    showActive(screen)
#define CORRECTING_COURSES(screen, ...)       \
    ZAREK_SCRATCH_DB(scratch);                \
    prepare(scratch, {__VA_ARGS__});          \
    RecordingMessageService messages;         \
    Kurs screen(scratch.db(), sa1234, february); \
    showActive(screen)
// A course of 30.12.2025 in leva, the tariff bands changed by the SET clause given, the books past
// the changeover of 01.01.2026, and the editor shown (new courses, or as the arguments open it).
#define AFTER_THE_CHANGEOVER(screen, tariffs, ...)                                              \
    ZAREK_SCRATCH_DB(scratch);                                                                  \
    prepare(scratch, {"СА 1234 ВК 30.12.2025"});                                                \
    QVERIFY(scratch.exec(QStringLiteral("UPDATE Tarifi SET " tariffs)));                        \
    ScopedCommandDay books({Changeover{QDate(2026, 1, 1)}, QDate::currentDate()});              \
    RecordingMessageService messages;                                                           \
    Kurs screen(scratch.db() __VA_OPT__(, ) __VA_ARGS__);                                       \
    showActive(screen)

class KursTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    // Driver, truck, date, tonnes, km (the rate fills itself), route, client, cargo, expense, save:
    // nothing but keys, and the course is stored priced, with its expense row.
    void aCourseEnteredFromTheKeyboardIsStoredPricedWithItsExpense()
    {
        ENTERING_COURSES(screen);
        QCOMPARE(screen.windowTitle().endsWith(QStringLiteral(" - Нов курс")), true);
        QCOMPARE(QApplication::focusWidget(), combo(screen, 5));
        QCOMPARE(screen.recordForm()->statusLabel()->text(), QStringLiteral("Нов курс"));

        type(QStringLiteral("Петров"));  // part of the name finds the driver
        QVERIFY(combo(screen, 5)->completer()->popup()->isVisible());
        press(Qt::Key_Down);
        press(Qt::Key_Return);
        QCOMPARE(combo(screen, 5)->currentText(), QStringLiteral("007,Иван Петров Иванов"));
        QCOMPARE(QApplication::focusWidget(), combo(screen, 5));
        press(Qt::Key_Tab);
        type(QStringLiteral("СА 1234 ВК"));
        press(Qt::Key_Return);  // Enter goes on like Tab
        QCOMPARE(QApplication::focusWidget(), field(screen, 1));
        type(QStringLiteral("05.03.2026"));
        press(Qt::Key_Tab);
        type(QStringLiteral("10"));
        press(Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), field(screen, 4));
        type(QStringLiteral("25"));  // over the preset "0", selected on entering
        press(Qt::Key_Tab);
        QCOMPARE(rateBox(screen)->text(), QStringLiteral("0,125"));
        QCOMPARE(QApplication::focusWidget(), combo(screen, 2));  // the rate takes no tab
        type(QStringLiteral("София - Перник"));
        press(Qt::Key_Tab);
        type(QStringLiteral("Д'Аргос ООД"));
        press(Qt::Key_Tab);
        type(QStringLiteral("Пясък"));
        press(Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), child(screen, QStringLiteral("chkFields")));
        press(Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), child(screen, QStringLiteral("txtRazhod")));
        QVERIFY(child(screen, QStringLiteral("txtRazhod"))->isEnabled());  // a truck was named
        type(QStringLiteral("12,50"));
        press(Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), button(screen, "cmdUpdate"));
        press(Qt::Key_Return);

        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Browsing);
        // A new database: four lists empty, four identical boxes in a row. One says it all.
        QCOMPARE(test::titled(messages.shown), QStringList(1, QStringLiteral("ВНИМАНИЕ!|") + emptyList));
        QCOMPARE(rowsText(scratch.db(), "SELECT kod, kola, Marsh, Klient, Tovar, bruto, procent, neto, Tarifa, data FROM tabl"),
                 QStringLiteral("007|СА 1234 ВК|София - Перник|Д'Аргос ООД|Пясък|31.25|0.94|30.31|0.125|2026-03-05"));
        QCOMPARE(rowsText(scratch.db(), "SELECT Name, DocVid, Suma, VidKol FROM Sklad"),
                 QStringLiteral("Разходи за курс|СА 1234 ВК|12.5|R"));
        QCOMPARE(sums(screen), QStringLiteral("31,25|0,94|30,31"));
        QCOMPARE(screen.recordForm()->statusLabel()->text(), QStringLiteral("Курс № 1"));
        QCOMPARE(field(screen, 100)->text(), QStringLiteral("Иван Петров Иванов"));
        QCOMPARE(items(combo(screen, 1)), QStringList{QStringLiteral("СА 1234 ВК")});  // the list learned the truck

        // Enter on "Добави" starts the next course, which offers the previous course's values again.
        QCOMPARE(QApplication::focusWidget(), button(screen, "cmdAdd"));
        QCOMPARE(button(screen, "cmdAdd")->text(), QStringLiteral("&Добави"));
        press(Qt::Key_Return);
        QCOMPARE(QApplication::focusWidget(), combo(screen, 5));
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Adding);
        QCOMPARE((QStringList{combo(screen, 3)->currentText(), field(screen, 4)->text(), field(screen, 2)->text(), sum(screen, 15)}),
                 (QStringList{"Д'Аргос ООД", "0", "0000000000", "0 "}));
    }

    void leavingTheKilometresPicksTheRateOfTheirBand_data()
    {
        QTest::addColumn<QString>("km");
        QTest::addColumn<QString>("rate");
        QTest::addColumn<int>("told");
        QTest::newRow("0 from the preset") << "0" << "0,350" << 0;
        QTest::newRow("20 the first band") << "20" << "0,350" << 0;
        QTest::newRow("20,5 the second band") << "20,5" << "0,125" << 0;
        QTest::newRow("200 the fifth band") << "200" << "0,120" << 0;
        QTest::newRow("200.01 the last band") << "200.01" << "0,100" << 0;
        QTest::newRow("text: a message and no rate") << "ааа" << "9,999" << 1;
        QTest::newRow("empty: a message and no rate") << "" << "9,999" << 1;
    }
    void leavingTheKilometresPicksTheRateOfTheirBand()
    {
        QFETCH(QString, km);
        QFETCH(QString, rate);
        QFETCH(int, told);
        ENTERING_COURSES(screen, "СА 1234 ВК 01.02.2026");
        auto *tarifa = rateBox(screen);
        tarifa->setText(QStringLiteral("9,999"));
        field(screen, 4)->setFocus();
        field(screen, 4)->setText(km);
        press(Qt::Key_Tab);
        QCOMPARE(tarifa->text(), rate);
        QCOMPARE(messages.shown.size(), told);
        if (told)
            QCOMPARE(messages.shown.first().text, QStringLiteral("Километрите не са число!\nМоля, въведете километрите на курса"));
    }

    // The first failing check stops the save with its box; the row stays open as typed.
    void aFailingCheckStopsTheSave_data()
    {
        QTest::addColumn<QString>("nomFakt");
        QTest::addColumn<QString>("date");
        QTest::addColumn<QString>("message");
        QTest::newRow("invoice of 9") << "000000000" << "05.03.2026"
                                      << "Грешен номер на фактура!\nМоля, въведете 10 цифри за номер на фактурата!";
        QTest::newRow("invoice of 11") << "00000000000" << "05.03.2026"
                                       << "Грешен номер на фактура!\nМоля, въведете 10 цифри за номер на фактурата!";
        QTest::newRow("month 13") << "0000000000" << "05.13.2026"
                                  << "Неверен формат на датата!\nПроверете въведената дата и опитайте отново.";
    }
    void aFailingCheckStopsTheSave()
    {
        QFETCH(QString, nomFakt);
        QFETCH(QString, date);
        QFETCH(QString, message);
        ENTERING_COURSES(screen, "СА 1234 ВК 01.02.2026");
        fillNewCourse(screen, nomFakt, date);
        QVERIFY(!screen.recordForm()->update());
        QCOMPARE(onlyText(messages.shown), message);
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Adding);
        QCOMPARE(field(screen, 2)->text(), nomFakt);
        QCOMPARE(rowsText(scratch.db(), "SELECT (SELECT COUNT(*) FROM tabl), (SELECT COUNT(*) FROM Sklad)"), "1|1");
        if (date.contains(QStringLiteral(".13."))) {
            QCOMPARE(QApplication::focusWidget(), field(screen, 1));
            QCOMPARE(field(screen, 1)->selectedText(), date);
        }
    }

    // Many courses: the editor reads a page of them, not every course, yet shows the same places.
    // A saved course stands where the drivers' order puts it, with the courses another workstation
    // saved meanwhile counted; End goes to the last course of all, Home to the first.
    void manyCoursesShowTheirPlacesInTheDriversOrder()
    {
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch);
        QSqlDatabase db = scratch.db();
        QVERIFY(db.transaction());
        const int courses = 3 * RecordSet::pageSize + 50;
        for (int i = 0; i < courses; ++i)
            QVERIFY(insertRow(db, QStringLiteral("tabl"), courseColumns,
                              {QDate(2026, 1, 1).addDays(i % 60), i % 2 ? QStringLiteral("012") : QStringLiteral("001"),
                               sa1234, QStringLiteral("Клиент"), QStringLiteral("София - Перник"), QStringLiteral("Пясък"), 25,
                               10, 0.125, 31.25, 0.94, 30.31, false, QStringLiteral("0000000000"), false, false}));
        QVERIFY(db.commit());
        RecordingMessageService messages;
        Kurs screen(db);
        showActive(screen);
        RecordForm *form = screen.recordForm();
        // Another workstation's course of the same driver, after the editor opened.
        addCourse(db, QStringLiteral("РК 5678 ВС"), QStringLiteral("04.03.2026"));
        fillNewCourse(screen);
        QVERIFY(form->update());
        const int before = scalar(db, "SELECT COUNT(*) FROM tabl WHERE kod < '007'").toInt()
                           + scalar(db, QStringLiteral("SELECT COUNT(*) FROM tabl WHERE kod = '007' AND id < %1")
                                            .arg(form->currentRow()->id)).toInt();
        QCOMPARE(before, courses / 2 + 1);  // the '001' courses and the other workstation's
        QCOMPARE(form->statusLabel()->text(), QStringLiteral("Курс № %1").arg(before + 1));
        QCOMPARE(field(screen, 100)->text(), QStringLiteral("Иван Петров Иванов"));
        press(Qt::Key_End);
        QCOMPARE(form->statusLabel()->text(), QStringLiteral("Курс № %1").arg(courses + 2));
        QCOMPARE(field(screen, 100)->text(), QStringLiteral("Георги Д'Амато"));
        press(Qt::Key_Down);  // past the last course: a beep, and it stays
        QCOMPARE(messages.beeps, 1);
        QCOMPARE(form->statusLabel()->text(), QStringLiteral("Курс № %1").arg(courses + 2));
        press(Qt::Key_Home);
        QCOMPARE(form->statusLabel()->text(), QStringLiteral("Курс № 1"));
        QCOMPARE(form->currentRow()->values.value(QStringLiteral("kod")).toString(), QStringLiteral("001"));
        QCOMPARE(form->rowCount(), courses + 2);
        QVERIFY(messages.shown.isEmpty());
    }

    // Correcting a course: the combos take the row's values, the driver stays, the save prices
    // the course again and appends a further expense row of 0.
    void aCorrectionIsPricedAgainAndAddsAnExpenseRow()
    {
        CORRECTING_COURSES(screen, "СА 1234 ВК 01.02.2026", "СА 1234 ВК 03.02.2026 0,2", "РК 5678 ВС 02.02.2026", "СА 1234 ВК 01.03.2026");
        QVERIFY(screen.windowTitle().endsWith(QStringLiteral(" - Корекция курс")));
        RecordForm *form = screen.recordForm();
        QCOMPARE(form->rowCount(), 2);
        QVERIFY(!button(screen, "cmdAdd")->isEnabled());
        QVERIFY(combo(screen, 1)->isHidden());
        QVERIFY(!field(screen, 12)->isEnabled());
        // The first course shows its own figures at once.
        QCOMPARE(rateAndGross(screen), QStringLiteral("0,125|31,25"));
        QCOMPARE(field(screen, 100)->text(), QStringLiteral("Иван Петров Иванов"));
        press(Qt::Key_Down);
        QCOMPARE(form->statusLabel()->text(), QStringLiteral("Курс № 2"));
        QCOMPARE(rateAndGross(screen), QStringLiteral("0,200|50,00"));
        QCOMPARE(field(screen, 100)->text(), QStringLiteral("Иван Петров Иванов"));

        form->edit();
        QCOMPARE(sum(screen, 15), QStringLiteral("0 "));
        QCOMPARE(combo(screen, 1)->currentText(), QStringLiteral("СА 1234 ВК"));
        QCOMPARE(combo(screen, 5)->currentText(), QStringLiteral("007"));
        QVERIFY(!combo(screen, 5)->isEnabled());  // the driver of a course is not changed here
        QVERIFY(field(screen, 12)->isEnabled());
        field(screen, 12)->setText(QStringLiteral("20"));
        field(screen, 2)->setText(QStringLiteral("0000000042"));
        invoiced(screen)->setChecked(true);
        QVERIFY(form->update());
        QCOMPARE(messages.shown.size(), 0);
        QCOMPARE(sums(screen), QStringLiteral("100,00|3,00|97,00"));
        QVERIFY(combo(screen, 1)->isHidden());
        QVERIFY(!field(screen, 12)->isEnabled());
        // The invoice mark is kept while correcting.
        QCOMPARE(rowsText(scratch.db(), "SELECT data, bruto, NomFakt, Fakt FROM tabl WHERE ton = 20"),
                 QStringLiteral("2026-02-03|100|0000000042|1"));
        QCOMPARE(rowsText(scratch.db(), "SELECT COUNT(*), SUM(Suma) FROM Sklad WHERE Name = 'Разходи за курс'"), "5|0");
    }

    // A period without courses of the truck starts a new row although "Добави" is off; the save
    // keeps the typed invoice number, as only new-course entry forces it.
    void anEmptyPeriodStartsANewRowThatKeepsItsInvoice()
    {
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch, {"СА 1234 ВК 01.02.2026"});
        RecordingMessageService messages;
        Kurs screen(scratch.db(), sa1234, {QDate(2026, 5, 1), QDate(2026, 5, 31)});
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Adding);
        QVERIFY(!button(screen, "cmdAdd")->isEnabled());
        fillNewCourse(screen, QStringLiteral("0000000077"));
        invoiced(screen)->setChecked(true);
        QVERIFY(screen.recordForm()->update());
        QCOMPARE(rowsText(scratch.db(), "SELECT data, NomFakt FROM tabl WHERE Fakt = TRUE"), "2026-03-05|0000000077");
    }

    // "Поправи" then "Запиши" on an invoiced course in new-course entry wrote "0000000000" and
    // cleared the mark: the course could be invoiced twice.
    void anInvoicedCourseCorrectedInNewCourseEntryLostItsInvoice()
    {
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch, {"СА 1234 ВК 01.02.2026"});
        QVERIFY(scratch.exec(QStringLiteral("UPDATE tabl SET NomFakt = '0000000042', Fakt = TRUE")));
        RecordingMessageService messages;
        Kurs screen(scratch.db());
        screen.recordForm()->cancel();  // closes the editor, which stays usable here
        RecordForm *form = screen.recordForm();
        QCOMPARE(form->state(), RecordForm::State::Browsing);
        QCOMPARE(field(screen, 2)->text(), QStringLiteral("0000000042"));
        form->edit();
        combo(screen, 4)->setEditText(QStringLiteral("Чакъл"));  // an invoiced course's cargo may change
        QVERIFY(form->update());
        QCOMPARE(rowsText(scratch.db(), "SELECT NomFakt, Fakt, Tovar FROM tabl"), "0000000042|1|Чакъл");
        // A new course is never invoiced, whatever was typed for it.
        form->add();
        fillNewCourse(screen, QStringLiteral("0000000077"));
        invoiced(screen)->setChecked(true);
        QVERIFY(form->update());
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM tabl WHERE NomFakt = '0000000000' AND Fakt = FALSE").toInt(), 1);
    }

    // The expense box kept its text after a save, and the next course wrote the same expense again.
    void theExpenseWasWrittenAgainWithTheNextCourse()
    {
        ENTERING_COURSES(screen, "СА 1234 ВК 01.02.2026");
        auto *razhod = child<QLineEdit>(screen, QStringLiteral("txtRazhod"));
        fillNewCourse(screen);
        razhod->setEnabled(true);
        razhod->setText(QStringLiteral("12,50"));
        QVERIFY(screen.recordForm()->update());
        QCOMPARE(razhod->text(), QString());
        screen.recordForm()->add();
        fillNewCourse(screen);
        QVERIFY(screen.recordForm()->update());
        QCOMPARE(rowsText(scratch.db(), "SELECT Name, Suma FROM Sklad WHERE Suma <> 0"), "Разходи за курс|12.5");
        QCOMPARE(scalar(scratch.db(), "SELECT SUM(Suma) FROM Sklad").toDouble(), 12.5);
    }

    // Browsing showed the rate and expense of an earlier entry, a deleted course's sums stayed after
    // "Изтрий", and a correction opened on a course with no driver and blank sums.
    void theEditorShowedAnotherCoursesFigures()
    {
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch, {"СА 1234 ВК 01.02.2026 0,2", "СА 1234 ВК 02.02.2026 0,1"});
        RecordingMessageService messages;
        {
            Kurs screen(scratch.db());
            RecordForm *form = screen.recordForm();
            QCOMPARE(rateBox(screen)->text(), QString());  // a new course has no rate until its km are left
            fillNewCourse(screen);  // rate 0,125, 10 t, 25 km
            auto *razhod = child<QLineEdit>(screen, QStringLiteral("txtRazhod"));
            razhod->setEnabled(true);
            razhod->setText(QStringLiteral("7"));
            QVERIFY(form->update());
            QCOMPARE(rateBox(screen)->text(), QStringLiteral("0,125"));
            form->first();
            QCOMPARE(rateAndGross(screen), QStringLiteral("0,200|50,00"));
            QCOMPARE(razhod->text(), QString());
            form->next();
            QCOMPARE(rateAndGross(screen), QStringLiteral("0,100|25,00"));

            messages.answers = {true, true};
            form->first();
            form->remove();  // the course of 0,2 goes; the next one is shown with its own figures
            QCOMPARE(form->rowCount(), 2);
            QCOMPARE(rateAndGross(screen), QStringLiteral("0,100|25,00"));
        }
        Kurs screen(scratch.db(), sa1234, february);
        QCOMPARE(screen.recordForm()->currentIndex(), 0);
        QCOMPARE(field(screen, 100)->text(), QStringLiteral("Иван Петров Иванов"));
        QCOMPARE(sums(screen), QStringLiteral("25,00|0,75|24,25"));
        QCOMPARE(rateBox(screen)->text(), QStringLiteral("0,100"));
        // A correction given up shows the course's sums again, not the zeros of the correction.
        screen.recordForm()->edit();
        QCOMPARE(sum(screen, 15), QStringLiteral("0 "));
        screen.recordForm()->cancel();
        QCOMPARE(sum(screen, 15), QStringLiteral("25,00"));
    }

    // Cancelling the course started at opening closes the editor; so does Esc, after asking
    // about what was typed.
    void cancelInNewCourseEntryCloses()
    {
        ENTERING_COURSES(screen);
        combo(screen, 2)->setEditText(QStringLiteral("София - Перник"));
        messages.answers = {false};
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        QVERIFY(screen.isVisible());
        QCOMPARE(messages.asked.size(), 1);
        button(screen, "cmdCancel")->click();
        QVERIFY(!screen.isVisible());
        QCOMPARE(messages.asked.size(), 1);
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM tabl").toInt(), 0);
    }

    // The lists are what earlier courses used, each once; a save adds what they lack, at the end.
    void theListsLearnAtTheSave()
    {
        ENTERING_COURSES(screen, "РК 5678 ВС 01.02.2026", "СА 1234 ВК 02.02.2026", "СА 1234 ВК 03.02.2026");
        QVERIFY(messages.shown.isEmpty());
        QCOMPARE(items(combo(screen, 1)), (QStringList{"РК 5678 ВС", "СА 1234 ВК"}));
        QCOMPARE(items(combo(screen, 5)), (QStringList{"007,Иван Петров Иванов", "012,Георги Д'Амато"}));
        fillNewCourse(screen);
        combo(screen, 1)->setEditText(QStringLiteral(" ВТ 1111 АА "));
        combo(screen, 5)->setEditText(QStringLiteral("012,Георги Д'Амато"));
        QVERIFY(screen.recordForm()->update());
        QCOMPARE(items(combo(screen, 1)), (QStringList{"РК 5678 ВС", "СА 1234 ВК", "ВТ 1111 АА"}));
        QCOMPARE(scalar(scratch.db(), "SELECT kod FROM tabl WHERE kola = 'ВТ 1111 АА'").toString(), QStringLiteral("012"));
        QCOMPARE(field(screen, 100)->text(), QStringLiteral("Георги Д'Амато"));
        // The route equals the list's only item, which the walk does not look at: it is added once more.
        QCOMPARE(items(combo(screen, 2)), (QStringList{"София - Перник", "София - Перник"}));
        QVERIFY(screen.recordForm()->reload());
        button(screen, "cmdAdd")->click();
        fillNewCourse(screen);
        QVERIFY(screen.recordForm()->update());
        QCOMPARE(items(combo(screen, 2)).size(), 2);  // but only once
    }

    // The list walk starts at the second item: a value equal to the first is added once more.
    void aValueEqualToTheFirstItemIsLearnedAgain_data()
    {
        QTest::addColumn<QStringList>("list");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("learns");
        QTest::newRow("new value") << QStringList{"А", "Б"} << "В" << true;
        QTest::newRow("second item") << QStringList{"А", "Б"} << " Б " << false;
        QTest::newRow("first item") << QStringList{"А", "Б"} << "А" << true;
        QTest::newRow("empty list") << QStringList{} << "А" << true;
        QTest::newRow("other case") << QStringList{"А", "Б"} << "б" << true;
    }
    void aValueEqualToTheFirstItemIsLearnedAgain()
    {
        QFETCH(QStringList, list);
        QFETCH(QString, typed);
        QFETCH(bool, learns);
        QCOMPARE(courseeditor::listLearns(list, typed), learns);
    }

    // Two questions before a course goes; its expense rows stay in the warehouse.
    // Ctrl+' fills the focused box with what it held at the last save of this opening; before any
    // save it does nothing, and a new course still starts with its boxes as they always start.
    void ctrlApostropheRepeatsTheLastSavedCoursesBox()
    {
        ENTERING_COURSES(screen);
        field(screen, 1)->setFocus();
        QTest::keyClick(field(screen, 1), Qt::Key_Apostrophe, Qt::ControlModifier);
        QCOMPARE(field(screen, 1)->text(), QString());  // nothing saved yet in this opening

        fillNewCourse(screen, QStringLiteral("0000000000"), QStringLiteral("17.03.2026"));
        QVERIFY(screen.recordForm()->update());
        screen.recordForm()->add();
        QCOMPARE(field(screen, 1)->text(), QString());  // the date starts blank, as before
        field(screen, 1)->setFocus();
        QTest::keyClick(field(screen, 1), Qt::Key_Apostrophe, Qt::ControlModifier);
        QCOMPARE(field(screen, 1)->text(), QStringLiteral("17.03.2026"));
        combo(screen, 5)->setFocus();
        QTest::keyClick(combo(screen, 5)->lineEdit(), Qt::Key_Apostrophe, Qt::ControlModifier);
        QCOMPARE(combo(screen, 5)->currentText(), QStringLiteral("007,Иван Петров Иванов"));
        QVERIFY(field(screen, 1)->toolTip().contains(QStringLiteral("Ctrl+'")));
        for (const UserMessage &m : messages.shown)
            QVERIFY2(!m.title.startsWith(QStringLiteral("ГРЕШКА")), qPrintable(m.text));  // the save went through
    }

    void deletingAsksTwiceAndLeavesTheExpenseRows()
    {
        CORRECTING_COURSES(screen, "СА 1234 ВК 01.02.2026", "СА 1234 ВК 02.02.2026");
        messages.answers = {true, false};
        screen.recordForm()->remove();
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM tabl").toInt(), 2);
        messages.answers = {true, true};
        screen.recordForm()->remove();
        QCOMPARE(test::titled(messages.asked).mid(2), (QStringList{"Изтриване на запис|Наистна ли искате да изтриете записа?",
                                                                   "Изтриване на запис|Ще загубите данните окончателно"}));
        QCOMPARE(rowsText(scratch.db(), "SELECT (SELECT COUNT(*) FROM tabl), (SELECT COUNT(*) FROM Sklad)"), "1|2");
        QCOMPARE(screen.recordForm()->rowCount(), 1);
    }

    // A course changed at another workstation since it was read is not overwritten.
    void aCourseChangedElsewhereIsNotOverwritten()
    {
        CORRECTING_COURSES(screen, "СА 1234 ВК 01.02.2026");
        screen.recordForm()->edit();
        QVERIFY(scratch.exec(QStringLiteral("UPDATE tabl SET ton = 99, row_version = row_version + 1")));
        field(screen, 12)->setText(QStringLiteral("20"));
        QVERIFY(!screen.recordForm()->update());
        QCOMPARE(onlyTitle(messages.shown), QStringLiteral("ГРЕШКА при запис!"));
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Editing);
        QCOMPARE(rowsText(scratch.db(), "SELECT ton, (SELECT COUNT(*) FROM Sklad) FROM tabl"), "99|1");
    }

    // After the changeover the bands stand in euro; a leva course corrected later is priced in leva
    // (its band's rate taken back into leva), a course of a euro day in euro, each with its unit.
    void aLevaCourseCorrectedAfterTheChangeoverIsPricedInLeva()
    {
        AFTER_THE_CHANGEOVER(screen, "\"Trf_20\" = 0.17895216, \"Trf_20-30\" = 0.06391149", sa1234, {QDate(2025, 12, 1), QDate(2025, 12, 31)});
        QCOMPARE(sum(screen, 2), QStringLiteral("лв."));
        screen.recordForm()->edit();
        auto *tarifa = rateBox(screen);
        tarifa->setText(QStringLiteral("9,999"));
        field(screen, 4)->setFocus();
        press(Qt::Key_Tab);
        QCOMPARE(tarifa->text(), QStringLiteral("0,125"));
        QVERIFY(screen.recordForm()->update());
        QCOMPARE(messages.shown.size(), 0);
        QCOMPARE(sum(screen, 15), QStringLiteral("31,25"));
        QCOMPARE(sum(screen, 2), QStringLiteral("лв."));
        QCOMPARE(rowsText(scratch.db(), "SELECT bruto, Tarifa FROM tabl"), "31.25|0.125");
    }

    void aCourseOfAEuroDayIsPricedWithTheEuroBand()
    {
        AFTER_THE_CHANGEOVER(screen, "\"Trf_20-30\" = 0.06391149");
        fillNewCourse(screen, QStringLiteral("0000000000"), QStringLiteral("05.01.2026"));
        field(screen, 1)->setFocus();
        field(screen, 4)->setFocus();  // leaving the date shows its unit
        QCOMPARE(sum(screen, 2), QStringLiteral("евро"));
        QCOMPARE(sum(screen, 19), QStringLiteral("евро"));
        press(Qt::Key_Tab);  // leaving the kilometres picks the euro band
        QCOMPARE(rateBox(screen)->text(), QStringLiteral("0,06391149"));
        QVERIFY(screen.recordForm()->update());
        // 10 t over 25 km: 15,98 €, which is what 31,25 лв. convert to.
        QCOMPARE(sum(screen, 15), QStringLiteral("15,98"));
        QCOMPARE(levaToEuro(Money::fromCents(3125)).cents(), qint64(1598));
        QCOMPARE(scalar(scratch.db(), "SELECT bruto FROM tabl WHERE data > '2026-01-01'").toDouble(), 15.98);
    }

    // A driver typed as his code and left with Tab is the list's entry; it failed at the save
    // with "Грешно име на шофьор!".
    void aDriverTypedByHisCodeIsTheListsEntry_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("shown");
        QTest::newRow("code") << "012" << "012,Георги Д'Амато";
        QTest::newRow("whole name") << "иван петров иванов" << "007,Иван Петров Иванов";
        QTest::newRow("part found once") << "Амато" << "012,Георги Д'Амато";
        QTest::newRow("part of two: left as typed") << "0" << "0";
    }
    void aDriverTypedByHisCodeIsTheListsEntry()
    {
        QFETCH(QString, typed);
        QFETCH(QString, shown);
        ENTERING_COURSES(screen, "СА 1234 ВК 01.02.2026");
        fillNewCourse(screen);
        combo(screen, 5)->setEditText(QString());
        combo(screen, 5)->setFocus();
        type(typed);
        press(Qt::Key_Tab);
        QCOMPARE(combo(screen, 5)->currentText(), shown);
        if (shown.contains(QLatin1Char(','))) {
            QVERIFY(screen.recordForm()->update());
            QCOMPARE(scalar(scratch.db(), "SELECT kod FROM tabl ORDER BY id DESC").toString(), shown.left(3));
        }
    }

    // New course dated 15.11.2026 (euro): 100 km take the euro band. The date retyped as
    // 15.11.2025 (leva) stored the euro figure as leva: 71,58 лв. instead of 140,00.
    void theRateIsOfTheCurrencyOfTheDateShown_data()
    {
        QTest::addColumn<QString>("firstDate");
        QTest::addColumn<QString>("savedDate");
        QTest::addColumn<double>("rate");
        QTest::addColumn<double>("bruto");
        QTest::newRow("euro day, then leva") << "15.11.2026" << "15.11.2025" << 0.14 << 140.0;
        QTest::newRow("leva day, then euro") << "15.11.2025" << "15.11.2026" << 0.07158086 << 71.58;
        QTest::newRow("same currency") << "15.11.2026" << "16.11.2026" << 0.07158086 << 71.58;
    }
    void theRateIsOfTheCurrencyOfTheDateShown()
    {
        QFETCH(QString, firstDate);
        QFETCH(QString, savedDate);
        QFETCH(double, rate);
        QFETCH(double, bruto);
        AFTER_THE_CHANGEOVER(screen, "\"Trf_50-100\" = 0.07158086");
        fillNewCourse(screen, QStringLiteral("0000000000"), firstDate);
        rateBox(screen)->clear();
        field(screen, 4)->setText(QStringLiteral("100"));
        field(screen, 4)->setFocus();
        press(Qt::Key_Tab);  // the band of 100 km, in the currency of the first date
        field(screen, 1)->setFocus();
        field(screen, 1)->setText(savedDate);
        press(Qt::Key_Tab);
        QVERIFY(screen.recordForm()->update());
        QVERIFY(messages.asked.isEmpty());  // a picked rate is picked again without a question
        QCOMPARE(rowsText(scratch.db(), "SELECT Tarifa, bruto FROM tabl ORDER BY id DESC LIMIT 1"),
                 QString::number(rate, 'g', 12) + QLatin1Char('|') + QString::number(bruto, 'g', 12));
    }

    // A rate typed by hand is replaced only when the user says so; saved straight from the date
    // box (Ctrl+Enter) the same question comes.
    void aRateTypedByHandIsReplacedOnlyWhenTheUserSaysSo_data()
    {
        QTest::addColumn<bool>("answer");
        QTest::addColumn<bool>("ctrlEnter");
        QTest::addColumn<double>("rate");
        QTest::newRow("Да: the leva band") << true << false << 0.14;
        QTest::newRow("Не: the typed rate") << false << false << 0.2;
        QTest::newRow("Да, saved from the date") << true << true << 0.14;
    }
    void aRateTypedByHandIsReplacedOnlyWhenTheUserSaysSo()
    {
        QFETCH(bool, answer);
        QFETCH(bool, ctrlEnter);
        QFETCH(double, rate);
        AFTER_THE_CHANGEOVER(screen, "\"Trf_50-100\" = 0.07158086");
        fillNewCourse(screen, QStringLiteral("0000000000"), QStringLiteral("15.11.2026"));
        field(screen, 4)->setText(QStringLiteral("100"));
        auto *tarifa = rateBox(screen);
        tarifa->setFocus();
        tarifa->selectAll();
        type(QStringLiteral("0,2"));
        field(screen, 1)->setFocus();
        field(screen, 1)->setText(QStringLiteral("15.11.2025"));
        messages.answers = {answer};
        if (ctrlEnter)
            press(Qt::Key_Return, Qt::ControlModifier);
        else
            press(Qt::Key_Tab);
        QCOMPARE(onlyText(messages.asked), QStringLiteral("Тарифата 0,2 е въведена ръчно за курс в евро, а курсът от 15.11.2025 е в лева!\n"
                                "Да се вземе ли тарифата в лева 0,140?"));
        if (!ctrlEnter)
            QVERIFY(screen.recordForm()->update());
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Browsing);
        QCOMPARE(messages.asked.size(), 1);
        QCOMPARE(scalar(scratch.db(), "SELECT Tarifa FROM tabl ORDER BY id DESC").toDouble(), rate);
    }

    // "Корекция на курс" on a course of invoice 0000000001: km 10 -> 12 replaced the typed rate and
    // the gross of an invoice handed out went from 33,33 to 14,00 without a word.
    void anInvoicedCourseKeepsItsMoney_data()
    {
        QTest::addColumn<QString>("box");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("refused");
        QTest::newRow("km") << "txtFields_4" << "12" << true;
        QTest::newRow("tonnes") << "txtFields_12" << "11" << true;
        QTest::newRow("rate") << "txtTarifa" << "0,3" << true;
        QTest::newRow("client") << "Combo3" << "Друг клиент" << true;
        QTest::newRow("route") << "Combo2" << "София - Бургас" << false;
        QTest::newRow("cargo") << "Combo4" << "Чакъл" << false;
    }
    void anInvoicedCourseKeepsItsMoney()
    {
        QFETCH(QString, box);
        QFETCH(QString, typed);
        QFETCH(bool, refused);
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch, {"СА 1234 ВК 01.02.2026"});
        // 10 t over 10 km at a rate typed by hand: 33,33, invoiced.
        QVERIFY(scratch.exec(QStringLiteral("UPDATE tabl SET km = 10, Tarifa = 0.3333, bruto = 33.33, procent = 1, "
                                            "neto = 32.33, NomFakt = '0000000001', Fakt = TRUE")));
        RecordingMessageService messages;
        Kurs screen(scratch.db(), sa1234, february);
        showActive(screen);
        screen.recordForm()->edit();
        auto *target = child(screen, box);
        target->setFocus();
        if (auto *c = qobject_cast<QComboBox *>(target))
            c->setEditText(typed);
        else
            static_cast<QLineEdit *>(target)->setText(typed);
        // Passing through the kilometres as the user tabs on keeps the rate typed for them.
        field(screen, 4)->setFocus();
        press(Qt::Key_Tab);
        if (box != QLatin1String("txtFields_4") && box != QLatin1String("txtTarifa"))
            QCOMPARE(rateBox(screen)->text(), QStringLiteral("0,3333"));
        QCOMPARE(screen.recordForm()->update(), !refused);
        const QSqlDatabase db = scratch.db();
        QCOMPARE(rowsText(db, "SELECT bruto, neto, Tarifa FROM tabl"), "33.33|32.33|0.3333");
        if (refused) {
            QCOMPARE(onlyText(messages.shown), QStringLiteral("Курсът е по фактура № 0000000001: тонаж, километри, тарифа, сума и клиент не се "
                                    "променят!\nМоля, първо махнете курса от фактурата с \"Корекция фактури\"! "
                                    "Маршрут и товар може да се поправят."));
            QCOMPARE(screen.recordForm()->state(), RecordForm::State::Editing);
            QCOMPARE(QApplication::focusWidget(), target);  // the box at fault
        } else {
            QCOMPARE(messages.shown.size(), 0);
            QCOMPARE(scalar(db, "SELECT Marsh || '|' || Tovar FROM tabl").toString().contains(typed), true);
        }
    }

    // The store refuses what the screen refuses: a write of other money over an invoiced course.
    void theStoreKeepsAnInvoicedCoursesMoney()
    {
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch, {"СА 1234 ВК 01.02.2026"});
        QVERIFY(scratch.exec(QStringLiteral("UPDATE tabl SET NomFakt = '0000000001', Fakt = TRUE")));
        CourseStore store(scratch.db());
        const qint64 id = scalar(scratch.db(), "SELECT id FROM tabl").toLongLong();
        Course course = *store.find(id);
        course.Marsh = QStringLiteral("София - Бургас");
        QVERIFY(store.write(course, Money()).ok());
        course = *store.find(id);
        course.km = 30;
        course.bruto = Money::fromAmount(37.5);
        const Checked<Course> written = store.write(course, Money());
        QVERIFY(!written.ok());
        QVERIFY(written.message().text.contains(QStringLiteral("0000000001")));
        QCOMPARE(rowsText(scratch.db(), "SELECT km, Marsh FROM tabl"), "25|София - Бургас");
    }

    // Esc in a half-typed course asks whether to drop it; Enter, as the box opens, answers "Не".
    void escThenEnterKeepsTheHalfTypedCourse()
    {
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch, {"СА 1234 ВК 01.02.2026"});
        WidgetMessageService boxes;
        MessageService::setInstance(&boxes);
        Kurs screen(scratch.db());
        showActive(screen);
        combo(screen, 2)->setFocus();
        combo(screen, 2)->setEditText(QStringLiteral("София - Перник"));
        QString question;
        QTimer answer;
        answer.setInterval(20);
        QObject::connect(&answer, &QTimer::timeout, [&question, &answer] {
            auto *box = qobject_cast<Dialog *>(QApplication::activeModalWidget());
            if (!box || !box->isActiveWindow())
                return;
            answer.stop();
            question = box->text();
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        });
        answer.start();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        MessageService::setInstance(nullptr);
        QCOMPARE(question, QStringLiteral("Въведените данни не са записани!\nДа се откажа ли от промените?"));
        QVERIFY(screen.isVisible());
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Adding);
        QCOMPARE(combo(screen, 2)->currentText(), QStringLiteral("София - Перник"));
    }

    // A failing check puts the cursor into the box it is about, ready to be typed over.
    void aFailingCheckPutsTheCursorInTheBoxAtFault_data()
    {
        QTest::addColumn<QString>("blank");
        QTest::newRow("route") << "Combo2";
        QTest::newRow("client") << "Combo3";
        QTest::newRow("tonnes") << "txtFields_12";
    }
    void aFailingCheckPutsTheCursorInTheBoxAtFault()
    {
        QFETCH(QString, blank);
        ENTERING_COURSES(screen, "СА 1234 ВК 01.02.2026");
        fillNewCourse(screen);
        if (auto *c = child<QComboBox>(screen, blank))
            c->setEditText(QString());
        else
            child<QLineEdit>(screen, blank)->clear();
        button(screen, "cmdUpdate")->setFocus();
        press(Qt::Key_Return);
        QCOMPARE(messages.shown.size(), 1);
        QCOMPARE(QApplication::focusWidget(), child(screen, blank));
    }

    // Keys typed while a course is only shown went nowhere: the status line now says how to start.
    void typingOnABrowsedCourseSaysHowToCorrectIt()
    {
        CORRECTING_COURSES(screen, "СА 1234 ВК 01.02.2026");
        button(screen, "cmdEdit")->setFocus();
        type(QStringLiteral("1"));
        QCOMPARE(screen.recordForm()->statusLabel()->text(), QStringLiteral("За корекция натиснете \"Поправи\""));
        QCOMPARE(messages.beeps, 1);
        if (const QString dir = qEnvironmentVariable("ZAREK_SCREENSHOT_DIR"); !dir.isEmpty())
            screen.grab().save(dir + QStringLiteral("/kurs-typing-while-browsing.png"));
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Browsing);
    }

    // With ZAREK_SCREENSHOT_DIR set, saves the editor entering a course and correcting one.
    void screenshots()
    {
        ZAREK_SCREENSHOT_DIR(dir);
        ZAREK_ONLY_ON("sqlite", "one set of pictures is enough");
        ZAREK_SCRATCH_DB(scratch);
        prepare(scratch, {"СА 1234 ВК 01.02.2026", "СА 1234 ВК 03.02.2026 0,2"});
        RecordingMessageService messages;
        {
            Kurs screen(scratch.db());
            test::showExposed(screen);
            fillNewCourse(screen);
            QCoreApplication::processEvents();
            screen.grab().save(dir + QStringLiteral("/kurs-new-entering.png"));
            QVERIFY(screen.recordForm()->update());
            QCoreApplication::processEvents();
            screen.grab().save(dir + QStringLiteral("/kurs-new-browsing.png"));
        }
        Kurs screen(scratch.db(), sa1234, february);
        test::showExposed(screen);
        screen.recordForm()->next();
        QCoreApplication::processEvents();
        screen.grab().save(dir + QStringLiteral("/kurs-edit-browsing.png"));
        screen.recordForm()->edit();
        QCoreApplication::processEvents();
        screen.grab().save(dir + QStringLiteral("/kurs-edit-correcting.png"));
    }
};

QTEST_MAIN(KursTest)
#include "tst_kurs.moc"
