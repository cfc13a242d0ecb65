#include "clients/clientstore.h"
#include "data/schema.h"
#include "testdatabase.h"

#include <QSqlDatabase>
#include <QSqlQuery>

using namespace zarek;
using namespace zarek::clients;
using zarek::test::rowsText;
using zarek::test::scalar;

namespace {

const QString title = QStringLiteral("ГРЕШКА при запис!");

RecordRow client(const QString &name, const QString &eik = {}, const QString &vat = {}, const QVariant &term = 30)
{
    RecordRow row;
    row.values = {{"Ime", name},         {"EIK", eik},        {"DDSNomer", vat},  {"Adres", "ул. Шипка 1"},
                  {"Grad", "София"},     {"Darzhava", ""},    {"MOL", "Иван Иванов"}, {"Tel", "02 123 456"},
                  {"Email", "office@example.bg"}, {"SrokDni", term}};
    return row;
}

QString registerText(QSqlDatabase db)
{
    return rowsText(db, QStringLiteral("SELECT Ime, EIK, DDSNomer, SrokDni FROM Klienti ORDER BY Ime"));
}

}

class ClientStoreTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void aGoodClientIsWrittenPutRight()
    {
        ZAREK_SCRATCH_DB(scratch);
        const ClientStore store(scratch.db());
        const Checked<RecordRow> written = store.save(client(" Виваком България ЕАД ", "831 642 181", "bg831642181"), true, title);
        QVERIFY(written);
        QVERIFY(written.value().id > 0);
        QCOMPARE(registerText(scratch.db()), "Виваком България ЕАД|831642181|BG831642181|30");
        QCOMPARE(store.idOf(QStringLiteral("Виваком България ЕАД  ")).value(), written.value().id);
        QCOMPARE(store.idOf(QStringLiteral("Йеттел")).value(), qint64(0));
    }

    // The store refuses what the register's form refuses, and writes nothing of it.
    void aBadClientIsRefusedAndNothingWritten_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("eik");
        QTest::addColumn<QString>("vat");
        QTest::addColumn<QVariant>("term");
        QTest::addColumn<QString>("fault");
        QTest::newRow("no name") << " " << "831642181" << "" << QVariant(30) << "Името на клиента не е въведено!";
        QTest::newRow("bad ЕИК") << "Клиент" << "831642182" << "" << QVariant(30) << "Контролната цифра";
        QTest::newRow("ЕИК of 10 digits") << "Клиент" << "8316421810" << "" << QVariant(30) << "не е от 9 или 13 цифри";
        QTest::newRow("VAT number of another firm") << "Клиент" << "831642181" << "BG130460283" << QVariant(30) << "не отговаря на ЕИК";
        QTest::newRow("term 400") << "Клиент" << "" << "" << QVariant(400) << "Срокът за плащане";
        QTest::newRow("term NaN") << "Клиент" << "" << "" << QVariant(qQNaN()) << "Срокът за плащане";
        QTest::newRow("term below 0") << "Клиент" << "" << "" << QVariant(-5) << "Срокът за плащане";
        QTest::newRow("the same name") << "Йеттел България ЕАД" << "" << "" << QVariant(30) << "вече има в регистъра";
        QTest::newRow("the same name, spaces round it") << " Йеттел България ЕАД " << "" << "" << QVariant(30)
                                                        << "вече има в регистъра";
    }
    void aBadClientIsRefusedAndNothingWritten()
    {
        QFETCH(QString, name);
        QFETCH(QString, eik);
        QFETCH(QString, vat);
        QFETCH(QVariant, term);
        QFETCH(QString, fault);
        ZAREK_SCRATCH_DB(scratch);
        const ClientStore store(scratch.db());
        QVERIFY(store.save(client(QStringLiteral("Йеттел България ЕАД"), QStringLiteral("130460283")), true, title));
        const QString before = registerText(scratch.db());
        const Checked<RecordRow> refused = store.save(client(name, eik, vat, term), true, title);
        QVERIFY(!refused);
        QVERIFY2(refused.message().text.contains(fault), qPrintable(refused.message().text));
        QCOMPARE(registerText(scratch.db()), before);
    }

    // A correction is refused the same way, and the stored client stays as it was.
    void aCorrectionIsRefusedTheSameWay()
    {
        ZAREK_SCRATCH_DB(scratch);
        const ClientStore store(scratch.db());
        QVERIFY(store.save(client(QStringLiteral("Йеттел България ЕАД"), QStringLiteral("130460283")), true, title));
        const Checked<RecordRow> viva = store.save(client(QStringLiteral("Виваком"), QStringLiteral("831642181")), true, title);
        QVERIFY(viva);
        const QString before = registerText(scratch.db());
        RecordRow renamed = viva.value();
        renamed.values.insert(QStringLiteral("Ime"), QStringLiteral("Йеттел България ЕАД"));
        QVERIFY(!store.save(renamed, false, title));
        RecordRow badEik = viva.value();
        badEik.values.insert(QStringLiteral("EIK"), QStringLiteral("831642180"));
        QVERIFY(!store.save(badEik, false, title));
        QCOMPARE(registerText(scratch.db()), before);
        // Kept under its own name it is written, once, at the version read.
        RecordRow moved = viva.value();
        moved.values.insert(QStringLiteral("Grad"), QStringLiteral("Пловдив"));
        QVERIFY(store.save(moved, false, title));
        QVERIFY(!store.save(moved, false, title));  // another workstation's correction came first
        QCOMPARE(scalar(scratch.db(), "SELECT Grad FROM Klienti WHERE Ime = 'Виваком'").toString(), QStringLiteral("Пловдив"));
    }

    // The course editor's new client: the name alone, once.
    void aNameAloneIsAddedOnce()
    {
        ZAREK_SCRATCH_DB(scratch);
        const ClientStore store(scratch.db());
        const Checked<qint64> id = store.addName(QStringLiteral(" Тракия Зърно ЕООД"), title);
        QVERIFY(id);
        QCOMPARE(registerText(scratch.db()), "Тракия Зърно ЕООД|||0");
        QVERIFY(!store.addName(QStringLiteral("Тракия Зърно ЕООД"), title));
        QVERIFY(!store.addName(QStringLiteral("  "), title));
        QCOMPARE(store.names().value(), QStringList{QStringLiteral("Тракия Зърно ЕООД")});
    }

    // The database itself refuses a second client of one name and a term out of range, whatever writes.
    void theDatabaseGuardsNameAndTerm()
    {
        ZAREK_SCRATCH_DB_AS(scratch, db);
        QVERIFY(scratch.exec(QStringLiteral("INSERT INTO Klienti (Ime) VALUES ('Клиент')")));
        QSqlQuery query(db);
        QVERIFY(!query.exec(QStringLiteral("INSERT INTO Klienti (Ime) VALUES ('Клиент')")));
        QVERIFY(!query.exec(QStringLiteral("INSERT INTO Klienti (Ime, SrokDni) VALUES ('Друг', 366)")));
        QVERIFY(!query.exec(QStringLiteral("INSERT INTO Klienti (Ime) VALUES ('  ')")));
        QCOMPARE(scalar(db, "SELECT COUNT(*) FROM Klienti").toInt(), 1);
    }

    // Opening a database of the courses' time: the register starts with the distinct names the
    // courses used, trimmed, each once, with blank data.
    void theUpgradeFillsTheRegisterFromTheCourses()
    {
        ZAREK_SCRATCH_DB_AS(scratch, db);
        // The database as it stood before the register: the tables and columns of that step gone.
        QVERIFY(test::execAll(db, {QStringLiteral("DROP TABLE Pogasiavania"), QStringLiteral("DROP TABLE Plashtania"),
                                   QStringLiteral("DROP TABLE FaktRed"), QStringLiteral("DROP TABLE FaktDok"),
                                   QStringLiteral("DROP TABLE Nomerator"), QStringLiteral("DROP TABLE Klienti"),
                                   QStringLiteral("ALTER TABLE ZarekCfg DROP COLUMN UserIBAN"),
                                   QStringLiteral("ALTER TABLE ZarekCfg DROP COLUMN UserBank"),
                                   QStringLiteral("ALTER TABLE ZarekCfg DROP COLUMN UserBIC"),
                                   QStringLiteral("ALTER TABLE ZarekCfg DROP COLUMN UserMiasto"),
                                   QStringLiteral("ALTER TABLE ZarekCfg DROP COLUMN UserSastavil"),
                                   QStringLiteral("DELETE FROM zarek_schema WHERE version = 8")}));
        for (const char *name : {"Агрополис ООД", " Агрополис ООД ", "Бетон Юг ООД", "Агрополис ООД", "", "   ", "Д'Аргос ООД"})
            QVERIFY(test::execAll(db, {QStringLiteral("INSERT INTO tabl (data, kola, Klient) VALUES ('2026-02-01', 'СА 1234 ВК', '%1')")
                                           .arg(QString::fromUtf8(name).replace(QLatin1Char('\''), QStringLiteral("''")))}));
        QVERIFY(test::execAll(db, {QStringLiteral("INSERT INTO tabl (data, kola) VALUES ('2026-02-02', 'СА 1234 ВК')")}));
        QVERIFY(!upgradeSchema(db));
        QCOMPARE(rowsText(db, "SELECT Ime, COALESCE(EIK, ''), COALESCE(DDSNomer, ''), SrokDni FROM Klienti ORDER BY Ime"),
                 "Агрополис ООД|||0 Бетон Юг ООД|||0 Д'Аргос ООД|||0");
        QCOMPARE(schemaVersion(db), latestSchemaVersion());
    }
};

QTEST_GUILESS_MAIN(ClientStoreTest)
#include "tst_clientstore.moc"
