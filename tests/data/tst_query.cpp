#include "data/database.h"
#include "data/query.h"
#include "data/transaction.h"
#include "testdatabase.h"

#include <QSqlQuery>

using namespace zarek;

namespace {

const QString title = QStringLiteral("ГРЕШКА при запис!");
const QString insertFirm = QStringLiteral("INSERT INTO Firms (SrName) VALUES (?)");

int firms(QSqlDatabase db)
{
    return test::countBy(db, QStringLiteral("SELECT COUNT(*) FROM Firms"));
}

// The statements PostgreSQL holds prepared for this session; -1 on SQLite.
int serverStatements(QSqlDatabase db)
{
    if (db.driverName() != QLatin1String("QPSQL"))
        return -1;
    return test::countBy(db, QStringLiteral("SELECT COUNT(*) FROM pg_prepared_statements"));
}

}

// One way to the database: prepare, bind, run, and the error as the user reads it.
class QueryTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void aBadStatementGivesTheUsersMessageAndWritesNothing_data()
    {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QVariantList>("values");
        QTest::newRow("no such table") << QStringLiteral("INSERT INTO NoSuchTable (SrName) VALUES (?)")
                                       << QVariantList{QStringLiteral("Б")};
        QTest::newRow("not SQL") << QStringLiteral("INSERT INTO Firms SrName VALUES") << QVariantList{};
        QTest::newRow("no such column") << QStringLiteral("INSERT INTO Firms (NoSuchColumn) VALUES (?)")
                                        << QVariantList{QStringLiteral("Б")};
    }
    void aBadStatementGivesTheUsersMessageAndWritesNothing()
    {
        ZAREK_SCRATCH_DB(scratch);
        QFETCH(QString, sql);
        QFETCH(QVariantList, values);
        QSqlDatabase db = scratch.db();
        std::optional<UserMessage> failure;
        {
            Transaction transaction(db);
            QVERIFY(transaction.isActive());
            QVERIFY(!execute(db, title, insertFirm, {QStringLiteral("А")}));
            failure = execute(db, title, sql, values);
        }  // not committed: the failure leaves the transaction
        QVERIFY(failure);
        QCOMPARE(failure->title, title);
        QCOMPARE(failure->icon, UserMessage::Icon::Critical);
        // "number:description", the description the engine's own.
        const qsizetype colon = failure->text.indexOf(QLatin1Char(':'));
        QVERIFY2(colon > 0 && colon + 1 < failure->text.size(), qPrintable(failure->text));
        QCOMPARE(firms(db), 0);
        // A text that does not prepare is not kept.
        QCOMPARE(keptStatementCount(db.connectionName()), 1);
    }

    void aStatementRunAgainIsPreparedOnce()
    {
        ZAREK_SCRATCH_DB_AS(scratch, db);
        const int before = serverStatements(db);
        for (const QString &name : {QStringLiteral("А"), QStringLiteral("Б"), QStringLiteral("В")})
            QVERIFY(!execute(db, title, insertFirm, {name}));
        QCOMPARE(keptStatementCount(db.connectionName()), 1);
        if (before >= 0)
            QCOMPARE(serverStatements(db), before + 1);
        // A text still held by one Query: another gets a statement of its own, and the kept one
        // serves again once the first is done.
        const QString names = QStringLiteral("SELECT SrName FROM Firms ORDER BY SrName");
        {
            Query outer(db, names);
            QVERIFY(!outer.run(title));
            const Checked<RowSet> first = outer.rows(title);
            QVERIFY(first);
            const Checked<RowSet> second = readRows(db, title, names);
            QVERIFY(second);
            QCOMPARE(first.value().rowCount(), 3);
            QCOMPARE(second.value().rowCount(), 3);
            QCOMPARE(keptStatementCount(db.connectionName()), 2);
        }
        const Checked<RowSet> again = readRows(db, title, names);
        QVERIFY(again);
        QCOMPARE(again.value().rowCount(), 3);
        QCOMPARE(keptStatementCount(db.connectionName()), 2);
        if (before >= 0)
            QCOMPARE(serverStatements(db), before + 2);
    }

    // A kept statement clears the values of its last run; named values are bound by name.
    void aKeptStatementClearsTheValuesOfItsLastRunAndNamedOnesAreBoundByName()
    {
        ZAREK_SCRATCH_DB_AS(scratch, db);
        const QString sql = QStringLiteral("INSERT INTO Firms (SrName, SrCity) VALUES (?, ?)");
        QVERIFY(!execute(db, title, sql, {QStringLiteral("А"), QStringLiteral("София")}));
        // One value short is the engine's refusal or an empty city, never the last run's city.
        execute(db, title, sql, {QStringLiteral("Б")});
        const Checked<QVariant> city =
            scalar(db, title, QStringLiteral("SELECT COUNT(*) FROM Firms WHERE SrCity = ?"), {QStringLiteral("София")});
        QVERIFY(city);
        QCOMPARE(city.value().toInt(), 1);

        // Named values are bound by name.
        Query insert(db, QStringLiteral("INSERT INTO Firms (SrName, SrCity) VALUES (:name, :city)"));
        QVERIFY(!insert.run(title, QVariantMap{{QStringLiteral("city"), QStringLiteral("Пловдив")},
                                               {QStringLiteral(":name"), QStringLiteral("В")}}));
        const Checked<QVariant> named =
            scalar(db, title, QStringLiteral("SELECT SrCity FROM Firms WHERE SrName = ?"), {QStringLiteral("В")});
        QVERIFY(named);
        QCOMPARE(named.value().toString(), QStringLiteral("Пловдив"));
    }

    void keptStatementsSurviveAReconnect()
    {
        ZAREK_SCRATCH_DB(scratch);
        const QString name = scratch.db().connectionName();
        QVERIFY(!execute(scratch.db(), title, insertFirm, {QStringLiteral("А")}));
        QCOMPARE(keptStatementCount(name), 1);
        closeDatabase(name);
        QCOMPARE(keptStatementCount(name), 0);
        QString error;
        QSqlDatabase db = openDatabase(scratch.config(), name, &error);
        QVERIFY2(db.isOpen(), qPrintable(error));
        const int before = serverStatements(db);
        QVERIFY(!execute(db, title, insertFirm, {QStringLiteral("Б")}));
        QVERIFY(!execute(db, title, insertFirm, {QStringLiteral("В")}));
        QCOMPARE(firms(db), 3);
        QCOMPARE(keptStatementCount(name), 1);
        if (before >= 0)
            QCOMPARE(serverStatements(db), before + 1);
    }

    void aPrivateConnectionForgetsItsStatements()
    {
        ZAREK_SCRATCH_DB(scratch);
        QString name;
        {
            PrivateConnection own(scratch.db());
            QVERIFY(own.isOpen());
            name = own.name();
            QVERIFY(!execute(own.db(), title, insertFirm, {QStringLiteral("А")}));
            QCOMPARE(keptStatementCount(name), 1);
        }
        QCOMPARE(keptStatementCount(name), 0);
        QVERIFY(!QSqlDatabase::contains(name));
        QCOMPARE(firms(scratch.db()), 1);
    }
};

QTEST_GUILESS_MAIN(QueryTest)
#include "tst_query.moc"
