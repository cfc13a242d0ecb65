#include "courseexample.h"
#include "courses/coursestore.h"
#include "testdatabase.h"

#include <QSqlQuery>

using namespace zarek;
using zarek::test::adding;
using zarek::test::leva;

namespace {

CourseEntry exampleEntry()
{
    CourseEntry entry = test::exampleCourseEntry();
    entry.razhod = QStringLiteral("12,50");
    return entry;
}

int countRows(QSqlDatabase db, const QString &table)
{
    return test::scalar(db, QStringLiteral("SELECT COUNT(*) FROM ") + table).toInt();
}

CourseSaveContext correcting(const Course &course)
{
    return {CourseMode::EditKurs, false, course};
}

// A course as the store read it: date, driver, km, gross, percentage and net in cents, rate,
// invoice number, invoiced, version.
QString courseText(const Course &c)
{
    return QStringLiteral("%1|%2|%3|%4|%5|%6|%7|%8|%9|%10")
        .arg(c.data.toString(Qt::ISODate), c.kod)
        .arg(c.km)
        .arg(c.bruto.cents())
        .arg(c.procent.cents())
        .arg(c.neto.cents())
        .arg(c.Tarifa)
        .arg(c.NomFakt)
        .arg(c.Fakt ? 1 : 0)
        .arg(c.rowVersion);
}

// The box of an entry the tests name.
QString &boxOf(CourseEntry &entry, const QString &name)
{
    return name == QLatin1String("date") ? entry.date : name == QLatin1String("tarifa") ? entry.tarifa
         : name == QLatin1String("klient") ? entry.klient : name == QLatin1String("ton") ? entry.ton
         : name == QLatin1String("km") ? entry.km : name == QLatin1String("marsh") ? entry.marsh : entry.kola;
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
        QCOMPARE(courseText(*stored), QStringLiteral("2006-03-05|007|25|3125|94|3031|0.125|0000000000|0|1"));
        QCOMPARE(test::rowsText(scratch.db(), "SELECT DocVid, DocNom, Data, Name, Kol, Edin, Suma, VidKol, Lipsa, Ostat FROM Sklad"),
                 QStringLiteral("СА 1234 ВК|0000000000|2006-03-05|Разходи за курс|1|12.5|12.5|R|1|0"));
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

    // A course the checks refuse writes nothing, and tells the checks' lines, no SQL. The
    // overflow course once stored a gross of -92233720368547760,00; NUL in a text was stored by
    // SQLite and refused by PostgreSQL with raw SQL. Both engines now refuse both alike.
    void aRefusedCourseWritesNothing_data()
    {
        QTest::addColumn<QStringList>("boxes");  // box, value, box, value…
        QTest::addColumn<int>("breaks");  // line breaks in the message
        QTest::newRow("impossible date") << QStringList{"date", "31.13.2005"} << 1;
        QTest::newRow("rate not a number") << QStringList{"tarifa", "abc"} << 0;
        QTest::newRow("long client") << QStringList{"klient", QString(60, u'ж')} << 1;
        QTest::newRow("no truck") << QStringList{"kola", ""} << 1;
        QTest::newRow("overflow") << QStringList{"ton", "100000000", "km", "1000000000", "tarifa", "1,000"} << 1;
        QTest::newRow("negative") << QStringList{"ton", "-4", "km", "18", "tarifa", "4"} << 1;
        QTest::newRow("NUL in the route") << QStringList{"marsh", QStringLiteral("AB") + QChar(u'\0') + QStringLiteral("CD")} << 1;
    }
    void aRefusedCourseWritesNothing()
    {
        QFETCH(QStringList, boxes);
        QFETCH(int, breaks);
        ZAREK_SCRATCH_DB(scratch);
        CourseEntry entry = exampleEntry();
        for (qsizetype i = 0; i + 1 < boxes.size(); i += 2)
            boxOf(entry, boxes.at(i)) = boxes.at(i + 1);
        const auto outcome = CourseStore(scratch.db()).save(entry, adding, leva());
        QVERIFY(!outcome.ok());
        QVERIFY(outcome.message);
        QCOMPARE(outcome.message->text.count(QLatin1Char('\n')), breaks);
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
        QCOMPARE(courseText(*store.find(first.id)), QStringLiteral("2006-03-05|007|40|8000|240|7760|0.2|0000000000|0|2"));
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
