#include "courseexample.h"
#include "courses/coursestore.h"
#include "testdatabase.h"

#include <QSqlQuery>

using namespace zarek;

namespace {

// A firm still in leva, on the day the test runs.
BooksDay leva()
{
    return {Changeover{}, QDate::currentDate()};
}

CourseEntry exampleEntry()
{
    CourseEntry entry = test::exampleCourseEntry();
    entry.razhod = QStringLiteral("12,50");
    return entry;
}

const CourseSaveContext adding{CourseMode::NewKurs, true, {}};

int countRows(QSqlDatabase db, const QString &table)
{
    return test::scalar(db, QStringLiteral("SELECT COUNT(*) FROM ") + table).toInt();
}

CourseSaveContext correcting(const Course &course)
{
    return {CourseMode::EditKurs, false, course};
}

CourseEntry entryFor(const Course &course)
{
    CourseEntry entry = exampleEntry();
    entry.driver = course.kod;
    entry.driverCode = course.kod;
    entry.nomFakt = course.NomFakt;
    return entry;
}

}

class CourseStoreTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void aSavedCourseHasItsMoneyAndItsExpenseRow()
    {
        ZAREK_SCRATCH_DB(scratch);
        CourseStore store(scratch.db());
        const auto outcome = store.save(exampleEntry(), adding, leva());
        QVERIFY2(outcome.ok(), qPrintable(outcome.message ? outcome.message->text : QString()));

        const auto stored = store.find(outcome.saved->id);
        QVERIFY(stored);
        QCOMPARE(stored->data, QDate(2006, 3, 5));
        QCOMPARE(stored->kod, QStringLiteral("007"));
        QCOMPARE(stored->bruto.cents(), qint64(3125));
        QCOMPARE(stored->procent.cents(), qint64(94));
        QCOMPARE(stored->neto.cents(), qint64(3031));
        QCOMPARE(stored->Tarifa, 0.125);
        QCOMPARE(stored->NomFakt, QStringLiteral("0000000000"));
        QVERIFY(!stored->Fakt);
        QCOMPARE(stored->rowVersion, 1);

        QSqlQuery expense(scratch.db());
        QVERIFY(expense.exec(QStringLiteral(
            "SELECT DocVid, DocNom, Data, Name, Kol, Edin, Suma, VidKol, Lipsa, Ostat FROM Sklad")));
        QVERIFY(expense.next());
        QCOMPARE(expense.value(0).toString(), QStringLiteral("СА 1234 ВК"));
        QCOMPARE(expense.value(1).toString(), QStringLiteral("0000000000"));
        QCOMPARE(expense.value(2).toDate(), QDate(2006, 3, 5));
        QCOMPARE(expense.value(3).toString(), QStringLiteral("Разходи за курс"));
        QCOMPARE(expense.value(4).toDouble(), 1.0);
        QCOMPARE(expense.value(5).toDouble(), 12.5);
        QCOMPARE(expense.value(6).toDouble(), 12.5);
        QCOMPARE(expense.value(7).toString(), QStringLiteral("R"));
        QVERIFY(expense.value(8).toBool());
        QCOMPARE(expense.value(9).toDouble(), 0.0);
        QVERIFY(!expense.next());
    }

    void aFailedExpenseWriteLeavesNoCourse()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(scratch.exec(QStringLiteral("ALTER TABLE Sklad RENAME TO Sklad_away")));
        CourseStore store(scratch.db());
        const auto outcome = store.save(exampleEntry(), adding, leva());
        QVERIFY(!outcome.ok());
        QCOMPARE(outcome.message->title, QStringLiteral("ГРЕШКА при запис!"));
        QVERIFY(outcome.message->text.contains(QLatin1Char(':')));
        QCOMPARE(countRows(scratch.db(), QStringLiteral("tabl")), 0);
    }

    void aRefusedCourseWritesNothing_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("value");
        QTest::newRow("impossible date") << "date" << "31.13.2005";
        QTest::newRow("rate not a number") << "tarifa" << "abc";
        QTest::newRow("long client") << "klient" << QString(60, u'ж');
        QTest::newRow("no truck") << "kola" << "";
    }
    void aRefusedCourseWritesNothing()
    {
        ZAREK_SCRATCH_DB(scratch);
        QFETCH(QString, field);
        QFETCH(QString, value);
        CourseEntry entry = exampleEntry();
        (field == "date" ? entry.date : field == "tarifa" ? entry.tarifa : field == "klient" ? entry.klient
                                                                                            : entry.kola) = value;
        const auto outcome = CourseStore(scratch.db()).save(entry, adding, leva());
        QVERIFY(!outcome.ok());
        QVERIFY(outcome.message);
        QCOMPARE(countRows(scratch.db(), QStringLiteral("tabl")), 0);
        QCOMPARE(countRows(scratch.db(), QStringLiteral("Sklad")), 0);
    }

    // The overflow course once stored a gross of -92233720368547760,00; NUL in a text was stored by
    // SQLite and refused by PostgreSQL with raw SQL. Both engines now refuse both alike.
    void theOverflowCourseAndANulAreRefusedOnBothEngines_data()
    {
        QTest::addColumn<QString>("ton");
        QTest::addColumn<QString>("km");
        QTest::addColumn<QString>("rate");
        QTest::addColumn<QString>("route");
        QTest::newRow("overflow") << "100000000" << "1000000000" << "1,000" << "София - Перник";
        QTest::newRow("negative") << "-4" << "18" << "4" << "София - Перник";
        QTest::newRow("NUL in the route") << "10" << "25" << "0,125" << QStringLiteral("AB") + QChar(u'\0') + "CD";
    }
    void theOverflowCourseAndANulAreRefusedOnBothEngines()
    {
        ZAREK_SCRATCH_DB(scratch);
        QFETCH(QString, ton);
        QFETCH(QString, km);
        QFETCH(QString, rate);
        QFETCH(QString, route);
        CourseEntry entry = exampleEntry();
        entry.ton = ton;
        entry.km = km;
        entry.tarifa = rate;
        entry.marsh = route;
        const auto outcome = CourseStore(scratch.db()).save(entry, adding, leva());
        QVERIFY(!outcome.ok());
        QVERIFY(outcome.message);
        QCOMPARE(outcome.message->text.count(QLatin1Char('\n')), 1);  // the checks' two lines, no SQL
        QCOMPARE(countRows(scratch.db(), QStringLiteral("tabl")), 0);
        QCOMPARE(countRows(scratch.db(), QStringLiteral("Sklad")), 0);
    }

    void anInvalidSumIsNeverWritten()
    {
        ZAREK_SCRATCH_DB(scratch);
        Course course;
        course.data = QDate(2006, 3, 5);
        course.bruto = Money::fromAmount(1e300);
        QVERIFY(!CourseStore(scratch.db()).write(course, Money()));
        QCOMPARE(countRows(scratch.db(), QStringLiteral("tabl")), 0);
    }

    void apostrophesAndCyrillicRoundTrip()
    {
        ZAREK_SCRATCH_DB(scratch);
        CourseEntry entry = exampleEntry();
        entry.klient = QStringLiteral("О'Нийл & Сие ЕООД");
        entry.marsh = QStringLiteral("Бургас - Ямбол'; DROP");
        entry.tovar = QStringLiteral("Жито „Ранно“");
        QVERIFY(CourseStore(scratch.db()).save(entry, adding, leva()).ok());

        QCOMPARE(test::rowsText(scratch.db(), "SELECT Marsh, Tovar FROM tabl WHERE Klient = ? AND data BETWEEN ? AND ?",
                                {entry.klient, QDate(2006, 3, 5), QDate(2006, 3, 31)}),
                 entry.marsh + QLatin1Char('|') + entry.tovar);
    }

    void aCorrectionRewritesTheCourseAndAddsAnExpenseRow()
    {
        ZAREK_SCRATCH_DB(scratch);
        CourseStore store(scratch.db());
        const Course first = *store.save(exampleEntry(), adding, leva()).saved;

        CourseEntry entry = entryFor(first);
        entry.km = QStringLiteral("40");
        entry.tarifa = QStringLiteral("0,2");
        entry.razhod.clear();
        const auto outcome = store.save(entry, correcting(first), leva());
        QVERIFY(outcome.ok());
        const Course stored = *store.find(first.id);
        QCOMPARE(stored.km, 40.0);
        QCOMPARE(stored.bruto.cents(), qint64(8000));
        QCOMPARE(stored.rowVersion, 2);
        QCOMPARE(stored.kod, QStringLiteral("007"));
        QCOMPARE(countRows(scratch.db(), QStringLiteral("tabl")), 1);
        QCOMPARE(countRows(scratch.db(), QStringLiteral("Sklad")), 2);
    }

    void aRowChangedByAnotherUserIsNotOverwritten()
    {
        ZAREK_SCRATCH_DB(scratch);
        CourseStore mine(scratch.db());
        const Course read = *mine.save(exampleEntry(), adding, leva()).saved;

        QSqlDatabase other = scratch.openSecondConnection();
        QVERIFY(test::execBound(other, QStringLiteral("UPDATE tabl SET km = 99, row_version = row_version + 1 WHERE id = ?"),
                                {read.id}));

        CourseEntry entry = entryFor(read);
        entry.km = QStringLiteral("40");
        const auto outcome = mine.save(entry, correcting(read), leva());
        QVERIFY(!outcome.ok());
        QCOMPARE(outcome.message->title, QStringLiteral("ГРЕШКА при запис!"));
        QVERIFY(outcome.message->text.contains(QStringLiteral("друг потребител")));
        QCOMPARE(mine.find(read.id)->km, 99.0);
        QCOMPARE(countRows(scratch.db(), QStringLiteral("Sklad")), 1);  // the expense row went back too
    }

    void aRowDeletedByAnotherUserIsAConflictToo()
    {
        ZAREK_SCRATCH_DB(scratch);
        CourseStore mine(scratch.db());
        const Course read = *mine.save(exampleEntry(), adding, leva()).saved;
        QSqlQuery theirs(scratch.openSecondConnection());
        QVERIFY(theirs.exec(QStringLiteral("DELETE FROM tabl")));

        QVERIFY(!mine.save(entryFor(read), correcting(read), leva()).ok());
        QCOMPARE(countRows(scratch.db(), QStringLiteral("tabl")), 0);
        QVERIFY(mine.remove(read).has_value());
    }

    void removeChecksTheVersion()
    {
        ZAREK_SCRATCH_DB(scratch);
        CourseStore store(scratch.db());
        Course course = *store.save(exampleEntry(), adding, leva()).saved;
        Course stale = course;
        stale.rowVersion = 7;
        QVERIFY(store.remove(stale).has_value());
        QVERIFY(!store.remove(course).has_value());
        QCOMPARE(countRows(scratch.db(), QStringLiteral("tabl")), 0);
    }
};

QTEST_GUILESS_MAIN(CourseStoreTest)
#include "tst_coursestore.moc"
