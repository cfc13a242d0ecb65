#include "core/docnumber.h"
#include "data/database.h"
#include "data/dialect.h"
#include "data/schema.h"
#include "data/yearclose.h"
#include "invoicing/invoicenumber.h"
#include "invoicing/invoicestore.h"
#include "invoiceracers.h"
#include "invoicingfixture.h"
#include "queryrows.h"
#include "subsystemfixtures.h"
#include "testdatabase.h"

#include <QTemporaryDir>

using namespace zarek;
using namespace zarek::test;

namespace {

const QDateTime stamp(QDate(2006, 4, 2), QTime(14, 35, 12, 250));

FakturaSelection march(const QString &kola = {}, const QString &marsh = {}, const QString &tovar = {})
{
    return {FakturaMode::FaktNew, dargos, march2006, kola, marsh, tovar, {}};
}

QStringList routesOf(const RowSet &rows)
{
    QStringList out;
    for (int row = 0; row < rows.rowCount(); ++row)
        out << rows.value(row, QStringLiteral("Data")).toString().left(10) + QLatin1Char(' ')
                   + rows.value(row, QStringLiteral("Marsh")).toString();
    return out;
}

// Workstations racing for invoice numbers, each taking the free number the dialog would offer.
constexpr int racers = 8;
constexpr int invoicesEach = 6;
const char racerMode[] = "--numbering-racer";

int numberingRacer(const QStringList &args)
{
    return test::runRacer(args, invoicesEach, [](QSqlDatabase db, const QString &client, int racer, const RowSet &courses) {
        InvoiceStore store(db);
        const QString number = offeredInvoiceNumbers(store.usedNumbers()).value(0);
        return store.settle({{courses.value(0, QStringLiteral("id")).toLongLong(),
                              courses.value(0, QStringLiteral("row_version")).toLongLong(), true, number}},
                            QDateTime::currentDateTime(), InvoiceRecord::issue(number, client, racer % 2 == 0));
    });
}

}

// Each test starts on a fresh database, most with fillMarch()'s courses (their ids in ids).
class InvoiceStoreTest : public QObject, test::DatabaseFixture {
    Q_OBJECT
    QList<qint64> ids;
    const QString number = QStringLiteral("0000000130");

    // Numbers the courses of the given indexes with the invoice; the outcome's kind.
    SettleOutcome::Kind issue(const QList<int> &indexes, const QString &nomFakt, const QString &klient = dargos,
                              bool euro = false, QSqlDatabase on = {})
    {
        QList<CourseWrite> writes;
        for (const int i : indexes)
            writes.append({ids[i], 1, true, nomFakt});
        return InvoiceStore(on.isValid() ? on : db).settle(writes, stamp, InvoiceRecord::issue(nomFakt, klient, euro)).kind;
    }
    qint64 count(const QString &sql, const QList<QVariant> &values = {}) { return countWhere(db, sql, values); }

private slots:
    void initTestCase_data() { addEngineRows(); }
    void init()
    {
        ZAREK_DATABASE_FIXTURE();
        // Only the tests that count every invoiced course start without them.
        const QByteArray test = QTest::currentTestFunction();
        if (test != "workstationsRacingForNumbersNeverShareOne" && test != "aFailureInTheMiddleOfTheWriteLeavesEveryCourseAsItWas")
            ids = fillMarch(db);
    }
    void cleanup()
    {
        ids.clear();
        tearDown();
    }

    void theUninvoicedCoursesOfAPeriodThoseOfAnInvoiceAndTheUsedNumbers()
    {
        const Checked<RowSet> rows = InvoiceStore(db).courses(march());
        QVERIFY(rows);
        QCOMPARE(routesOf(rows.value()),
                 (QStringList{"2006-03-02 София - Перник", "2006-03-05 Перник - Радомир",
                              "2006-03-09 Батановци - Перник", "2006-03-20 София - Перник"}));
        for (const char *column : {"id", "row_version", "Klient", "NomFakt", "bruto"})
            QVERIFY2(rows.value().column(QString::fromLatin1(column)) >= 0, column);

        // The courses of an invoice.
        FakturaSelection selection;
        selection.mode = FakturaMode::EditFakt;
        selection.number = QStringLiteral("0000000120");
        const Checked<RowSet> invoiced = InvoiceStore(db).courses(selection);
        QVERIFY(invoiced);
        QCOMPARE(routesOf(invoiced.value()), (QStringList{"2006-02-10 София - Перник", "2006-02-12 Перник - София"}));
        QVERIFY(invoiced.value().value(0, QStringLiteral("Fakt")).toBool());

        // The used numbers, highest first, without the none.
        insertCourse(db, {QDate(2006, 1, 5), beton, QStringLiteral("А"), QStringLiteral("Пясък"),
                          QStringLiteral("СА 1234 ВК"), 1, 1, 1, 1, true, QStringLiteral("0000000099")});
        QCOMPARE(InvoiceStore(db).usedNumbers(), (QStringList{"0000000120", "0000000099"}));
    }

    void truckRouteAndCargoArePrefixesAndABlankIsNoCondition_data()
    {
        QTest::addColumn<QString>("kola");
        QTest::addColumn<QString>("marsh");
        QTest::addColumn<QString>("tovar");
        QTest::addColumn<int>("count");
        QTest::newRow("none") << "" << "" << "" << 4;
        QTest::newRow("truck") << "РК 7777 АА" << "" << "" << 1;
        QTest::newRow("truck prefix") << "СА" << "" << "" << 3;
        QTest::newRow("route prefix") << "" << "София" << "" << 2;
        QTest::newRow("cargo in another case") << "" << "" << "пясък" << 3;
        QTest::newRow("all three") << "СА 1234" << "София" << "Пясък р" << 1;
        QTest::newRow("a wildcard is a letter") << "" << "%" << "" << 0;
        QTest::newRow("an apostrophe is a letter") << "" << "'" << "" << 0;
    }
    void truckRouteAndCargoArePrefixesAndABlankIsNoCondition()
    {
        QFETCH(QString, kola);
        QFETCH(QString, marsh);
        QFETCH(QString, tovar);
        const Checked<RowSet> rows = InvoiceStore(db).courses(march(kola, marsh, tovar));
        QVERIFY(rows);
        QTEST(rows.value().rowCount(), "count");
    }

    void theClosingWriteStampsAndCountsEveryCourse()
    {
        const SettleOutcome outcome =
            InvoiceStore(db).settle({{ids[0], 1, true, number}, {ids[2], 1, true, number},
                                     {ids[6], 1, false, QStringLiteral("0000000000")}},
                                    stamp, InvoiceRecord::issue(number, dargos, false));
        QCOMPARE(int(outcome.kind), int(SettleOutcome::Kind::Written));
        QCOMPARE(outcome.written, 3);
        // Fakt, NomFakt, row_version, DateMod; courses not written are not touched.
        const QString sql = QStringLiteral("SELECT Fakt, NomFakt, row_version, DateMod FROM tabl WHERE id = ?");
        QCOMPARE(test::row(db, sql, {ids[2]}), QStringLiteral("1|0000000130|2|2006-04-02"));
        QCOMPARE(test::row(db, sql, {ids[6]}).left(13), QStringLiteral("0|0000000000|"));
        QCOMPARE(test::row(db, sql, {ids[1]}), QStringLiteral("0|0000000000|1|"));
        QCOMPARE(courseById(db, ids[2]).value(QStringLiteral("TimeMod")).toTime(), QTime(14, 35, 12));
    }

    void aCourseChangedOnAnotherConnectionStopsTheWholeWrite()
    {
        QCOMPARE(test::rows(database->openSecondConnection(),
                            "UPDATE tabl SET Fakt = ?, NomFakt = '0000000777', row_version = row_version + 1 WHERE id = ?",
                            {true, ids[2]}),
                 QStringList());
        const QStringList before = invoiceState(db);
        QList<CourseWrite> writes;
        for (const int i : {0, 1, 2, 3})
            writes.append({ids[i], 1, true, number});
        const SettleOutcome outcome = InvoiceStore(db).settle(writes, stamp, InvoiceRecord::issue(number, dargos, false));
        QCOMPARE(int(outcome.kind), int(SettleOutcome::Kind::Conflict));
        QCOMPARE(outcome.changed, QList<qint64>{ids[2]});
        QCOMPARE(invoiceState(db), before);
        QCOMPARE(courseById(db, ids[2]).value(QStringLiteral("NomFakt")).toString(), QStringLiteral("0000000777"));
    }

    void aDeletedCourseCountsAsChanged()
    {
        QVERIFY(database->exec(QStringLiteral("DELETE FROM tabl WHERE id = %1").arg(ids[1])));
        const SettleOutcome outcome = InvoiceStore(db).settle(
            {{ids[0], 1, false, QStringLiteral("0000000000")}, {ids[1], 1, false, QStringLiteral("0000000000")}}, stamp);
        QCOMPARE(int(outcome.kind), int(SettleOutcome::Kind::Conflict));
        QCOMPARE(outcome.changed, QList<qint64>{ids[1]});
        QVERIFY(courseById(db, ids[0]).value(QStringLiteral("DateMod")).isNull());
    }

    void aNumberIssuedMeanwhileIsNotIssuedTwice()
    {
        const QStringList before = invoiceState(db);
        QCOMPARE(int(issue({0}, QStringLiteral("0000000120"))), int(SettleOutcome::Kind::NumberTaken));
        QCOMPARE(invoiceState(db), before);
    }

    void anIssuedNumberIsRecordedWithItsClientDayAndCurrency_data()
    {
        QTest::addColumn<bool>("euro");
        QTest::newRow("leva") << false;
        QTest::newRow("euro") << true;
    }
    void anIssuedNumberIsRecordedWithItsClientDayAndCurrency()
    {
        QFETCH(bool, euro);
        QCOMPARE(int(issue({0}, number, dargos, euro)), int(SettleOutcome::Kind::Written));
        QCOMPARE(test::row(db, "SELECT Klient, Data FROM Fakturi WHERE NomFakt = ?", {number}),
                 dargos + QStringLiteral("|2006-04-02"));
        QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM EvroFakt WHERE NomFakt = ?"), {number}), euro ? 1 : 0);
        QCOMPARE(InvoiceStore(db).usedNumbers().value(0), number);
    }

    // The year close deletes the courses; their numbers stay issued and the numbering goes on.
    void aNumberIssuedBeforeTheCoursesWereDeletedStaysTaken()
    {
        QCOMPARE(int(issue({0}, number)), int(SettleOutcome::Kind::Written));
        QTemporaryDir folder;
        const auto closed = closeYear(db, folder.path(), 2006, false, stamp);
        QVERIFY2(closed, qPrintable(closed ? QString() : closed.message().text));
        QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM tabl")), 0);
        ids = fillMarch(db);
        QCOMPARE(InvoiceStore(db).usedNumbers(), (QStringList{number, QStringLiteral("0000000120")}));
        QCOMPARE(offeredInvoiceNumbers(InvoiceStore(db).usedNumbers()).value(0), QStringLiteral("0000000131"));
        const QStringList before = invoiceState(db);
        QCOMPARE(int(issue({0}, number, beton)), int(SettleOutcome::Kind::NumberTaken));
        QCOMPARE(invoiceState(db), before);
        QCOMPARE(scalar(db, QStringLiteral("SELECT Klient FROM Fakturi WHERE NomFakt = ?"), {number}).toString(), dargos);
    }

    // A number another workstation issued: refused with nothing written, never in the engine's
    // own words, and the other invoice keeps its currency.
    void aNumberIssuedOnAnotherWorkstationIsRefusedInTheSystemsWords()
    {
        QCOMPARE(int(issue({5}, number, beton, true, database->openSecondConnection())), int(SettleOutcome::Kind::Written));
        const QStringList before = invoiceState(db);
        const SettleOutcome second =
            InvoiceStore(db).settle({{ids[0], 1, true, number}}, stamp, InvoiceRecord::issue(number, dargos, false));
        QCOMPARE(int(second.kind), int(SettleOutcome::Kind::NumberTaken));
        QVERIFY(!second.message);
        QCOMPARE(invoiceState(db), before);
        // The first invoice keeps its euro record.
        QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM EvroFakt WHERE NomFakt = ?"), {number}), 1);
    }

    void anInvoiceEmptiedByItsCorrectionFreesItsNumber_data()
    {
        QTest::addColumn<bool>("emptied");
        QTest::newRow("one course taken off: kept") << false;
        QTest::newRow("every course taken off: freed") << true;
    }
    void anInvoiceEmptiedByItsCorrectionFreesItsNumber()
    {
        QFETCH(bool, emptied);
        const QString number = QStringLiteral("0000000120");
        QVERIFY(database->exec(QStringLiteral("INSERT INTO Fakturi (NomFakt, Klient) VALUES ('0000000120', 'Д''Аргос ООД')")));
        QVERIFY(database->exec(QStringLiteral("INSERT INTO EvroFakt (NomFakt) VALUES ('0000000120')")));
        const SettleOutcome outcome = InvoiceStore(db).settle(
            {{ids[6], 1, false, noDocumentNumber()}, {ids[7], 1, !emptied, emptied ? noDocumentNumber() : number}}, stamp,
            InvoiceRecord::correct(number));
        QCOMPARE(int(outcome.kind), int(SettleOutcome::Kind::Written));
        QCOMPARE(test::row(db, "SELECT (SELECT COUNT(*) FROM Fakturi WHERE NomFakt = ?), "
                               "(SELECT COUNT(*) FROM EvroFakt WHERE NomFakt = ?)", {number, number}),
                 emptied ? QStringLiteral("0|0") : QStringLiteral("1|1"));
        QCOMPARE(InvoiceStore(db).usedNumbers().contains(number), !emptied);
    }

    // A database of an earlier version: its invoices become issued numbers as it is brought up.
    void theUpgradeRecordsTheNumbersOfInvoicedCourses()
    {
        QVERIFY(database->exec(QStringLiteral("DROP TABLE Fakturi")));
        QVERIFY(database->exec(QStringLiteral("DELETE FROM zarek_schema WHERE version = 5")));
        insertCourse(db, {QDate(2006, 1, 5), beton, QStringLiteral("А"), QStringLiteral("Пясък"), QStringLiteral("СА 1234 ВК"),
                          1, 1, 1, 1, true, QStringLiteral("0000000099")});
        QVERIFY(database->exec(QStringLiteral("UPDATE tabl SET DateMod = '2006-02-28' WHERE NomFakt = '0000000120'")));
        QString error;
        QVERIFY2(migrateSchema(db, &error), qPrintable(error));
        QCOMPARE(test::rows(db, "SELECT NomFakt, Klient, Data FROM Fakturi ORDER BY NomFakt"),
                 (QStringList{"0000000099|Бетон АД|", "0000000120|Д'Аргос ООД|2006-02-28"}));
        QCOMPARE(schemaVersion(db), latestSchemaVersion());
    }

    // Eight workstations issue invoices for their own clients at once: every number ends on one
    // client's courses, every invoice keeps its currency, and no closing fails on a lock.
    void workstationsRacingForNumbersNeverShareOne()
    {
        QStringList outputs;
        race(*database, racerMode, racers, invoicesEach, outputs);
        if (QTest::currentTestFailed())
            return;
        int refusals = 0;
        for (const QString &output : outputs) {
            QVERIFY2(!output.contains(QLatin1String("locked")) && !output.contains(QLatin1String("23505")),
                     qPrintable(output));
            refusals += output.section(QStringLiteral("REFUSED "), 1).trimmed().toInt();
        }
        qInfo("%d numbers taken meanwhile by another workstation were refused and chosen again", refusals);

        const int invoices = racers * invoicesEach;
        QCOMPARE(countWhere(db, QStringLiteral("SELECT COUNT(*) FROM tabl WHERE Fakt = ?"), {true}), invoices);
        QCOMPARE(countWhere(db, QStringLiteral("SELECT COUNT(DISTINCT NomFakt) FROM tabl WHERE Fakt = ?"), {true}), invoices);
        QCOMPARE(countWhere(db, QStringLiteral("SELECT COUNT(*) FROM (SELECT NomFakt FROM tabl GROUP BY NomFakt "
                                               "HAVING COUNT(DISTINCT Klient) > 1) shared")),
                 0);
        // Each number recorded once, for the client whose course carries it; numbered 1 to 48 without a gap.
        QCOMPARE(countWhere(db, QStringLiteral("SELECT COUNT(*) FROM Fakturi")), invoices);
        QCOMPARE(countWhere(db, QStringLiteral("SELECT COUNT(*) FROM Fakturi f WHERE NOT EXISTS (SELECT 1 FROM tabl t "
                                               "WHERE t.NomFakt = f.NomFakt AND t.Klient = f.Klient)")),
                 0);
        QCOMPARE(scalar(db, QStringLiteral("SELECT MAX(NomFakt) FROM Fakturi")).toString(),
                 QStringLiteral("%1").arg(invoices, 10, 10, QLatin1Char('0')));
        for (int racer = 0; racer < racers; ++racer)
            QCOMPARE(countWhere(db, QStringLiteral("SELECT COUNT(*) FROM tabl WHERE Klient = ? AND NomFakt IN "
                                                   "(SELECT NomFakt FROM EvroFakt)"),
                                {racerClient(racer)}),
                     racer % 2 == 0 ? invoicesEach : 0);
    }

    void aFailureInTheMiddleOfTheWriteLeavesEveryCourseAsItWas()
    {
        for (int i = 0; i < 2 * InvoiceStore::batchSize + 50; ++i)
            ids.append(insertCourse(db, {QDate(2006, 3, 1).addDays(i % 30), dargos, QStringLiteral("Маршрут")}));
        // An update fails inside the database, as a broken disk or a lost link would, in the second of three statements.
        forceFailure(*database, "UPDATE ON tabl", QStringLiteral("OLD.id = %1").arg(ids[InvoiceStore::batchSize + 10]));
        const QStringList before = invoiceState(db);
        QList<CourseWrite> writes;
        for (const qint64 id : ids)
            writes.append({id, 1, true, number});
        const SettleOutcome outcome = InvoiceStore(db).settle(writes, stamp, InvoiceRecord::issue(number, dargos, false));
        QCOMPARE(int(outcome.kind), int(SettleOutcome::Kind::Failed));
        QVERIFY(outcome.message);
        QCOMPARE(outcome.message->title, QStringLiteral("ГРЕШКА при запис!"));
        QVERIFY2(outcome.message->text.contains(QStringLiteral("forced failure")), qPrintable(outcome.message->text));
        QCOMPARE(invoiceState(db), before);
        QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM tabl WHERE Fakt = ?"), {true}), 0);
    }
};

int main(int argc, char *argv[])
{
    return racingMain<InvoiceStoreTest>(argc, argv, {{racerMode, numberingRacer}});
}
#include "tst_invoicestore.moc"
