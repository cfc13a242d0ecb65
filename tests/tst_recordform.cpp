#include "app/messageservice.h"
#include "forms/recordform.h"
#include "reference/driver.h"
#include "reference/driverrules.h"
#include "testdatabase.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlQuery>

using namespace zarek;

namespace {

void addDriver(QSqlDatabase db, const QString &kod, const QString &ime)
{
    QSqlQuery query(db);
    query.prepare(QStringLiteral("INSERT INTO shof (kod, ime, EGN, LKarta) VALUES (?, ?, '7501011234', '612345678')"));
    query.addBindValue(kod);
    query.addBindValue(ime);
    QVERIFY(query.exec());
}

QPushButton *button(QWidget &w, const char *name)
{
    return w.findChild<QPushButton *>(QString::fromLatin1(name));
}

QLineEdit *field(QWidget &w, int index)
{
    return w.findChild<QLineEdit *>(QStringLiteral("txtFields_%1").arg(index));
}

QString status(QWidget &w)
{
    return w.findChild<QLabel *>(QStringLiteral("lblStatus"))->text();
}

void fillValidDriver(QWidget &w, const QString &kod, const QString &ime)
{
    field(w, 2)->setText(ime);
    field(w, 3)->setText(kod);
    field(w, 1)->setText(QStringLiteral("7501011234"));
    field(w, 4)->setText(QStringLiteral("612345678"));
}

int count(QSqlDatabase db)
{
    QSqlQuery query(db);
    query.exec(QStringLiteral("SELECT COUNT(*) FROM shof"));
    query.next();
    return query.value(0).toInt();
}

}

class RecordFormTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void driverChecksKeepTheLastFailure_data()
    {
        QTest::addColumn<QString>("ime");
        QTest::addColumn<QString>("kod");
        QTest::addColumn<QString>("egn");
        QTest::addColumn<QString>("lkarta");
        QTest::addColumn<QString>("firstLine");
        QTest::newRow("all empty shows check 8") << "" << "" << "" << "" << "Няма въведен № на лична карта на шофьора!";
        QTest::newRow("51-character name") << QString(51, u'и') << "001" << "7501011234" << "612345678"
                                            << "Въведеното име е по дълго от разрешеното!";
        QTest::newRow("code ab") << "Иван" << "ab" << "7501011234" << "612345678" << "Няма въведени данни за кода!";
        QTest::newRow("code abcd") << "Иван" << "abcd" << "7501011234" << "612345678" << "Няма въведени данни за кода!";
        QTest::newRow("ten letters as EGN pass") << "Иван" << "001" << "абвгдежзий" << "612345678" << "";
        QTest::newRow("blanks around do not count") << "  Иван  " << " 001 " << "7501011234" << "612345678" << "";
        QTest::newRow("short EGN") << "Иван" << "001" << "750101" << "612345678" << "Грешно ЕГН на шофьора!";
    }
    void driverChecksKeepTheLastFailure()
    {
        QFETCH(QString, ime);
        QFETCH(QString, kod);
        QFETCH(QString, egn);
        QFETCH(QString, lkarta);
        QFETCH(QString, firstLine);
        const auto failure = checkDriver({{"ime", ime}, {"kod", kod}, {"EGN", egn}, {"LKarta", lkarta}});
        QCOMPARE(failure ? failure->text.section(QLatin1Char('\n'), 0, 0) : QString(), firstLine);
    }

    void buttonsFollowTheState()
    {
        ZAREK_SCRATCH_DB(scratch);
        addDriver(scratch.db(), QStringLiteral("001"), QStringLiteral("Иван Петров"));
        RecordingMessageService messages;
        Driver screen(scratch.db());
        QCOMPARE(status(screen), QStringLiteral("Запис №: 1"));
        QCOMPARE(field(screen, 2)->text(), QStringLiteral("Иван Петров"));
        for (const char *shown : {"cmdAdd", "cmdEdit", "cmdDelete", "cmdClose"})
            QVERIFY2(!button(screen, shown)->isHidden(), shown);
        QVERIFY(button(screen, "cmdUpdate")->isHidden());
        QVERIFY(field(screen, 2)->isReadOnly());

        button(screen, "cmdAdd")->click();
        QCOMPARE(status(screen), QStringLiteral("Нов запис"));
        for (const char *hidden : {"cmdAdd", "cmdEdit", "cmdDelete", "cmdClose"})
            QVERIFY2(button(screen, hidden)->isHidden(), hidden);
        QVERIFY(!button(screen, "cmdUpdate")->isHidden());
        QVERIFY(!button(screen, "cmdNext")->isEnabled());
        QVERIFY(field(screen, 2)->text().isEmpty());
        QVERIFY(!field(screen, 2)->isReadOnly());

        button(screen, "cmdCancel")->click();
        QCOMPARE(status(screen), QStringLiteral("Запис №: 1"));
        QCOMPARE(field(screen, 2)->text(), QStringLiteral("Иван Петров"));
        button(screen, "cmdEdit")->click();
        QCOMPARE(status(screen), QStringLiteral("Корекция"));
    }

    void keysNavigateOnlyWhileBrowsing()
    {
        ZAREK_SCRATCH_DB(scratch);
        for (int i = 1; i <= 3; ++i)
            addDriver(scratch.db(), QStringLiteral("00%1").arg(i), QStringLiteral("Шофьор %1").arg(i));
        RecordingMessageService messages;
        Driver screen(scratch.db());
        screen.show();
        RecordForm *form = screen.recordForm();
        QTest::keyClick(field(screen, 2), Qt::Key_End);
        QCOMPARE(form->currentIndex(), 2);
        QTest::keyClick(field(screen, 2), Qt::Key_Down);
        QCOMPARE(form->currentIndex(), 2);
        QCOMPARE(messages.beeps, 1);  // at the end: a beep, and it stays
        QTest::keyClick(field(screen, 2), Qt::Key_Up, Qt::ControlModifier);
        QCOMPARE(form->currentIndex(), 0);
        QTest::keyClick(field(screen, 2), Qt::Key_PageDown, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(form->currentIndex(), 1);  // Ctrl with Shift is no Ctrl
        QTest::keyClick(field(screen, 2), Qt::Key_Home);
        QCOMPARE(form->currentIndex(), 0);

        button(screen, "cmdAdd")->click();
        QTest::keyClick(field(screen, 2), Qt::Key_Escape);
        QVERIFY(screen.isVisible());  // Esc is dead while adding
        QCOMPARE(form->state(), RecordForm::State::Adding);
        button(screen, "cmdCancel")->click();
        QTest::keyClick(field(screen, 2), Qt::Key_Escape);
        QVERIFY(!screen.isVisible());
    }

    void aFailedCheckKeepsWhatWasTyped()
    {
        ZAREK_SCRATCH_DB(scratch);
        RecordingMessageService messages;
        Driver screen(scratch.db());
        QCOMPARE(screen.recordForm()->rowCount(), 0);
        button(screen, "cmdAdd")->click();
        field(screen, 2)->setText(QStringLiteral("Димитър О'Нийл"));
        field(screen, 3)->setText(QStringLiteral("ab"));
        button(screen, "cmdUpdate")->click();
        QCOMPARE(messages.shown.size(), 1);
        QCOMPARE(messages.shown[0].title, QStringLiteral("ГРЕШКА при запис!"));
        QCOMPARE(messages.shown[0].text.section(QLatin1Char('\n'), 0, 0),
                 QStringLiteral("Няма въведен № на лична карта на шофьора!"));
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Adding);
        QCOMPARE(field(screen, 2)->text(), QStringLiteral("Димитър О'Нийл"));
        QCOMPARE(count(scratch.db()), 0);

        fillValidDriver(screen, QStringLiteral("007"), QStringLiteral("Димитър О'Нийл"));
        button(screen, "cmdUpdate")->click();
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Browsing);
        QCOMPARE(count(scratch.db()), 1);
        QCOMPARE(status(screen), QStringLiteral("Запис №: 1"));
    }

    void cancellingOnAnEmptyTableLeavesItEmpty()
    {
        ZAREK_SCRATCH_DB(scratch);
        RecordingMessageService messages;
        Driver screen(scratch.db());
        button(screen, "cmdAdd")->click();
        button(screen, "cmdCancel")->click();
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Browsing);
        QCOMPARE(screen.recordForm()->currentIndex(), -1);
        button(screen, "cmdNext")->click();
        QCOMPARE(messages.beeps, 0);  // an empty table neither beeps nor moves
        QVERIFY(messages.shown.isEmpty());
    }

    void deletingAsksTwiceAndTheNewLastRowBecomesCurrent()
    {
        ZAREK_SCRATCH_DB(scratch);
        for (int i = 1; i <= 3; ++i)
            addDriver(scratch.db(), QStringLiteral("00%1").arg(i), QStringLiteral("Шофьор %1").arg(i));
        RecordingMessageService messages;
        Driver screen(scratch.db());
        screen.recordForm()->last();
        messages.answers = {true, false};
        button(screen, "cmdDelete")->click();
        QCOMPARE(messages.asked.size(), 2);
        QCOMPARE(messages.asked[0].text, QStringLiteral("Наистна ли искате да изтриете записа?"));
        QCOMPARE(messages.asked[1].text, QStringLiteral("Ще загубите данните окончателно"));
        QCOMPARE(count(scratch.db()), 3);
        messages.answers = {true, true};
        button(screen, "cmdDelete")->click();
        QCOMPARE(count(scratch.db()), 2);
        QCOMPARE(screen.recordForm()->currentIndex(), 1);
        QCOMPARE(field(screen, 2)->text(), QStringLiteral("Шофьор 2"));
    }

    void aRowChangedByAnotherUserIsNotOverwritten()
    {
        ZAREK_SCRATCH_DB(scratch);
        addDriver(scratch.db(), QStringLiteral("001"), QStringLiteral("Иван Петров"));
        RecordingMessageService messages;
        Driver screen(scratch.db());
        button(screen, "cmdEdit")->click();
        field(screen, 2)->setText(QStringLiteral("Иван Петров Иванов"));

        QSqlQuery other(scratch.openSecondConnection());
        QVERIFY(other.exec(QStringLiteral("UPDATE shof SET tel = '0321234', row_version = row_version + 1")));
        button(screen, "cmdUpdate")->click();
        QCOMPARE(messages.shown.size(), 1);
        QCOMPARE(messages.shown[0].title, QStringLiteral("ГРЕШКА при запис!"));
        QVERIFY(messages.shown[0].text.contains(QStringLiteral("друг потребител")));
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Editing);
        QCOMPARE(field(screen, 2)->text(), QStringLiteral("Иван Петров Иванов"));
        QSqlQuery check(scratch.db());
        QVERIFY(check.exec(QStringLiteral("SELECT ime, tel FROM shof")) && check.next());
        QCOMPARE(check.value(0).toString(), QStringLiteral("Иван Петров"));
        QCOMPARE(check.value(1).toString(), QStringLiteral("0321234"));
    }

    // With ZAREK_SCREENSHOT_DIR set, saves the drivers' screen browsing and editing.
    void screenshots()
    {
        const QString dir = qEnvironmentVariable("ZAREK_SCREENSHOT_DIR");
        if (dir.isEmpty())
            QSKIP("set ZAREK_SCREENSHOT_DIR to save pictures of the screen");
        ZAREK_SCRATCH_DB(scratch);
        addDriver(scratch.db(), QStringLiteral("001"), QStringLiteral("Иван Петров Иванов"));
        Driver screen(scratch.db());
        screen.show();
        QTest::qWait(50);
        screen.grab().save(dir + QStringLiteral("/driver-browsing.png"));
        button(screen, "cmdEdit")->click();
        QTest::qWait(50);
        screen.grab().save(dir + QStringLiteral("/driver-editing.png"));
    }
};

QTEST_MAIN(RecordFormTest)
#include "tst_recordform.moc"
