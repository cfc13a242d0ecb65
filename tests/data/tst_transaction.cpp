#include "data/transaction.h"
#include "testdatabase.h"

#include <QSqlQuery>

using namespace zarek;

namespace {

int rows(QSqlDatabase db)
{
    return test::countBy(db, QStringLiteral("SELECT COUNT(*) FROM Firms"));
}

bool insert(QSqlDatabase db, const QString &name)
{
    return test::execBound(db, QStringLiteral("INSERT INTO Firms (SrName) VALUES (?)"), {name});
}

}

// Transactions nest as savepoints, so a routine with a transaction of its own can run inside a larger one.
class TransactionTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void aNestedRollbackUndoesOnlyItsOwnPart()
    {
        ZAREK_SCRATCH_DB_AS(scratch, db);
        {
            Transaction outer(db);
            QVERIFY(outer.isActive());
            QVERIFY(insert(db, QStringLiteral("A")));
            {
                Transaction inner(db);
                QVERIFY(inner.isActive());
                QVERIFY(insert(db, QStringLiteral("B")));
            }  // not committed
            {
                Transaction inner(db);
                QVERIFY(insert(db, QStringLiteral("C")));
                QVERIFY(inner.commit());
            }
            QVERIFY(outer.commit());
        }
        QCOMPARE(test::rowsText(db, QStringLiteral("SELECT SrName FROM Firms ORDER BY SrName")), QStringLiteral("A C"));
    }

    void aNestedCommitIsUndoneWithItsOuterTransaction()
    {
        ZAREK_SCRATCH_DB_AS(scratch, db);
        {
            Transaction outer(db);
            Transaction inner(db);
            QVERIFY(insert(db, QStringLiteral("A")));
            QVERIFY(inner.commit());
        }
        QCOMPARE(rows(db), 0);
        // The connection is free again for a transaction of its own.
        Transaction next(db);
        QVERIFY(insert(db, QStringLiteral("B")));
        QVERIFY(next.commit());
        QCOMPARE(rows(db), 1);
    }

    void aFailedStatementInsideLeavesTheOuterUsable()
    {
        ZAREK_SCRATCH_DB_AS(scratch, db);
        Transaction outer(db);
        QVERIFY(insert(db, QStringLiteral("A")));
        {
            Transaction inner(db);
            QSqlQuery broken(db);
            QVERIFY(!broken.exec(QStringLiteral("INSERT INTO no_such_table VALUES (1)")));
        }  // PostgreSQL aborts the whole transaction unless the savepoint is rolled back
        QVERIFY(insert(db, QStringLiteral("B")));
        QVERIFY(outer.commit());
        QCOMPARE(rows(db), 2);
    }

    void theWriteLockIsTakenOutermostAndGrantedInside()
    {
        ZAREK_SCRATCH_DB_AS(scratch, db);
        {
            Transaction plain(db);
            Transaction writer(db, Transaction::Lock::Writer);
            QVERIFY(!writer.isActive());  // it cannot be had once reads may have happened without it
        }
        Transaction writer(db, Transaction::Lock::Writer);
        QVERIFY(writer.isActive());
        Transaction inside(db, Transaction::Lock::Writer);
        QVERIFY(inside.isActive());
        QVERIFY(insert(db, QStringLiteral("A")));
        QVERIFY(inside.commit());
        QVERIFY(writer.commit());
        QCOMPARE(rows(db), 1);
    }

    // A transaction takes SQLite's write lock as it begins, before it reads: a second one waits
    // for it (and here, with a short wait, gives up as busy) instead of reading rows that the
    // first may change and then failing on its first write with "database is locked".
    void aTransactionHoldsTheWriteLockFromItsStart()
    {
        ZAREK_SCRATCH_DB_AS(scratch, db);
        QSqlDatabase other = scratch.openSecondConnection();
        const bool sqlite = db.driverName() == QLatin1String("QSQLITE");
        if (sqlite)
            QVERIFY(QSqlQuery(other).exec(QStringLiteral("PRAGMA busy_timeout = 100")));
        Transaction first(db);
        QVERIFY(first.isActive());
        {
            Transaction second(other);
            // PostgreSQL locks the rows a transaction writes, not the database.
            QCOMPARE(second.isActive(), !sqlite);
            QCOMPARE(second.timedOut(), sqlite);
        }
        QVERIFY(insert(db, QStringLiteral("A")));
        QVERIFY(first.commit());
        // Once the first has committed, the second begins and sees its row.
        Transaction second(other);
        QVERIFY(second.isActive());
        QCOMPARE(rows(other), 1);
        QVERIFY(insert(other, QStringLiteral("B")));
        QVERIFY(second.commit());
        QCOMPARE(rows(db), 2);
    }
};

QTEST_GUILESS_MAIN(TransactionTest)
#include "tst_transaction.moc"
