#include "data/dialect.h"
#include "invoicing/invoicestore.h"
#include "invoicingfixture.h"
#include "testdatabase.h"

#include <QSqlError>
#include <QSqlQuery>

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

// Makes any UPDATE of the course fail inside the database, as a broken disk or a lost link would.
void failUpdatesOf(test::ScratchDatabase &scratch, qint64 id)
{
    if (dialectOf(scratch.db()) == Dialect::SQLite) {
        QVERIFY(scratch.exec(QStringLiteral("CREATE TRIGGER forced_failure BEFORE UPDATE ON tabl WHEN OLD.id = %1 "
                                            "BEGIN SELECT RAISE(ABORT, 'forced failure'); END")
                                 .arg(id)));
    } else {
        QVERIFY(scratch.exec(QStringLiteral("CREATE FUNCTION forced_failure() RETURNS trigger AS $$ BEGIN "
                                            "RAISE EXCEPTION 'forced failure'; END $$ LANGUAGE plpgsql")));
        QVERIFY(scratch.exec(QStringLiteral("CREATE TRIGGER forced_failure BEFORE UPDATE ON tabl FOR EACH ROW "
                                            "WHEN (OLD.id = %1) EXECUTE FUNCTION forced_failure()")
                                 .arg(id)));
    }
}

}

class InvoiceStoreTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { addEngineRows(); }

    void theUninvoicedCoursesOfAClientAndPeriod()
    {
        ZAREK_SCRATCH_DB(scratch);
        fillMarch(scratch.db());
        InvoiceStore store(scratch.db());
        const Checked<RowSet> rows = store.courses(march());
        QVERIFY(rows);
        QCOMPARE(routesOf(rows.value()),
                 (QStringList{"2006-03-02 София - Перник", "2006-03-05 Перник - Радомир",
                              "2006-03-09 Батановци - Перник", "2006-03-20 София - Перник"}));
        for (const char *column : {"id", "row_version", "Klient", "NomFakt", "bruto"})
            QVERIFY2(rows.value().column(QString::fromLatin1(column)) >= 0, column);
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
        QFETCH(int, count);
        ZAREK_SCRATCH_DB(scratch);
        fillMarch(scratch.db());
        const Checked<RowSet> rows = InvoiceStore(scratch.db()).courses(march(kola, marsh, tovar));
        QVERIFY(rows);
        QCOMPARE(rows.value().rowCount(), count);
    }

    void theCoursesOfAnInvoice()
    {
        ZAREK_SCRATCH_DB(scratch);
        fillMarch(scratch.db());
        FakturaSelection selection;
        selection.mode = FakturaMode::EditFakt;
        selection.number = QStringLiteral("0000000120");
        const Checked<RowSet> rows = InvoiceStore(scratch.db()).courses(selection);
        QVERIFY(rows);
        QCOMPARE(routesOf(rows.value()), (QStringList{"2006-02-10 София - Перник", "2006-02-12 Перник - София"}));
        QVERIFY(rows.value().value(0, QStringLiteral("Fakt")).toBool());
    }

    void theUsedNumbersHighestFirstWithoutTheNone()
    {
        ZAREK_SCRATCH_DB(scratch);
        fillMarch(scratch.db());
        insertCourse(scratch.db(), {QDate(2006, 1, 5), beton, QStringLiteral("А"), QStringLiteral("Пясък"),
                                    QStringLiteral("СА 1234 ВК"), 1, 1, 1, 1, true, QStringLiteral("0000000099")});
        QCOMPARE(InvoiceStore(scratch.db()).usedNumbers(),
                 (QStringList{QStringLiteral("0000000120"), QStringLiteral("0000000099")}));
    }

    void theClosingWriteStampsAndCountsEveryCourse()
    {
        ZAREK_SCRATCH_DB(scratch);
        const QList<qint64> ids = fillMarch(scratch.db());
        InvoiceStore store(scratch.db());
        const SettleOutcome outcome =
            store.settle({{ids[0], 1, true, QStringLiteral("0000000130")}, {ids[2], 1, true, QStringLiteral("0000000130")},
                          {ids[6], 1, false, QStringLiteral("0000000000")}},
                         stamp, QStringLiteral("0000000130"));
        QCOMPARE(int(outcome.kind), int(SettleOutcome::Kind::Written));
        QCOMPARE(outcome.written, 3);
        const QSqlRecord numbered = courseById(scratch.db(), ids[2]);
        QVERIFY(numbered.value(QStringLiteral("Fakt")).toBool());
        QCOMPARE(numbered.value(QStringLiteral("NomFakt")).toString(), QStringLiteral("0000000130"));
        QCOMPARE(numbered.value(QStringLiteral("row_version")).toInt(), 2);
        QCOMPARE(numbered.value(QStringLiteral("DateMod")).toDate(), QDate(2006, 4, 2));
        QCOMPARE(numbered.value(QStringLiteral("TimeMod")).toTime(), QTime(14, 35, 12));
        const QSqlRecord off = courseById(scratch.db(), ids[6]);
        QVERIFY(!off.value(QStringLiteral("Fakt")).toBool());
        QCOMPARE(off.value(QStringLiteral("NomFakt")).toString(), QStringLiteral("0000000000"));
        // Courses not written are not touched.
        QCOMPARE(courseById(scratch.db(), ids[1]).value(QStringLiteral("row_version")).toInt(), 1);
        QVERIFY(courseById(scratch.db(), ids[1]).value(QStringLiteral("DateMod")).isNull());
    }

    void aCourseChangedOnAnotherConnectionStopsTheWholeWrite()
    {
        ZAREK_SCRATCH_DB(scratch);
        const QList<qint64> ids = fillMarch(scratch.db());
        QSqlDatabase other = scratch.openSecondConnection();
        QSqlQuery change(other);
        change.prepare(QStringLiteral("UPDATE tabl SET Fakt = ?, NomFakt = '0000000777', row_version = row_version + 1 "
                                      "WHERE id = ?"));
        change.addBindValue(true);
        change.addBindValue(ids[2]);
        QVERIFY2(change.exec(), qPrintable(change.lastError().text()));
        const QStringList before = invoiceState(scratch.db());

        QList<CourseWrite> writes;
        for (const int i : {0, 1, 2, 3})
            writes.append({ids[i], 1, true, QStringLiteral("0000000130")});
        const SettleOutcome outcome = InvoiceStore(scratch.db()).settle(writes, stamp, QStringLiteral("0000000130"));
        QCOMPARE(int(outcome.kind), int(SettleOutcome::Kind::Conflict));
        QCOMPARE(outcome.changed, QList<qint64>{ids[2]});
        QCOMPARE(invoiceState(scratch.db()), before);
        QCOMPARE(courseById(scratch.db(), ids[2]).value(QStringLiteral("NomFakt")).toString(),
                 QStringLiteral("0000000777"));
    }

    void aDeletedCourseCountsAsChanged()
    {
        ZAREK_SCRATCH_DB(scratch);
        const QList<qint64> ids = fillMarch(scratch.db());
        QVERIFY(scratch.exec(QStringLiteral("DELETE FROM tabl WHERE id = %1").arg(ids[1])));
        const SettleOutcome outcome = InvoiceStore(scratch.db()).settle(
            {{ids[0], 1, false, QStringLiteral("0000000000")}, {ids[1], 1, false, QStringLiteral("0000000000")}}, stamp);
        QCOMPARE(int(outcome.kind), int(SettleOutcome::Kind::Conflict));
        QCOMPARE(outcome.changed, QList<qint64>{ids[1]});
        QVERIFY(courseById(scratch.db(), ids[0]).value(QStringLiteral("DateMod")).isNull());
    }

    void aNumberIssuedMeanwhileIsNotIssuedTwice()
    {
        ZAREK_SCRATCH_DB(scratch);
        const QList<qint64> ids = fillMarch(scratch.db());
        const QStringList before = invoiceState(scratch.db());
        const SettleOutcome outcome = InvoiceStore(scratch.db()).settle(
            {{ids[0], 1, true, QStringLiteral("0000000120")}}, stamp, QStringLiteral("0000000120"));
        QCOMPARE(int(outcome.kind), int(SettleOutcome::Kind::NumberTaken));
        QCOMPARE(invoiceState(scratch.db()), before);
    }

    void aFailureInTheMiddleOfTheWriteLeavesEveryCourseAsItWas()
    {
        ZAREK_SCRATCH_DB(scratch);
        QList<qint64> ids;
        for (int i = 0; i < 2 * InvoiceStore::batchSize + 50; ++i)
            ids.append(insertCourse(scratch.db(), {QDate(2006, 3, 1).addDays(i % 30), dargos, QStringLiteral("Маршрут")}));
        failUpdatesOf(scratch, ids[InvoiceStore::batchSize + 10]);  // in the second of three statements
        const QStringList before = invoiceState(scratch.db());
        QList<CourseWrite> writes;
        for (const qint64 id : ids)
            writes.append({id, 1, true, QStringLiteral("0000000130")});
        const SettleOutcome outcome = InvoiceStore(scratch.db()).settle(writes, stamp, QStringLiteral("0000000130"));
        QCOMPARE(int(outcome.kind), int(SettleOutcome::Kind::Failed));
        QVERIFY(outcome.message);
        QCOMPARE(outcome.message->title, QStringLiteral("ГРЕШКА при запис!"));
        QVERIFY2(outcome.message->text.contains(QStringLiteral("forced failure")), qPrintable(outcome.message->text));
        QCOMPARE(invoiceState(scratch.db()), before);
        QCOMPARE(countWhere(scratch.db(), QStringLiteral("SELECT COUNT(*) FROM tabl WHERE Fakt = ?"), {true}), 0);
    }
};

QTEST_GUILESS_MAIN(InvoiceStoreTest)
#include "tst_invoicestore.moc"
