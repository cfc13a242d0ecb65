#include "data/schema.h"
#include "testdatabase.h"

#include <QSqlQuery>
#include <QSqlRecord>

using namespace zarek;

class SchemaTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void newDatabaseReachesLatestVersionAndMigratingAgainChangesNothing()
    {
        ZAREK_SCRATCH_DB_AS(scratch, db);
        QCOMPARE(schemaVersion(db), latestSchemaVersion());
        QString error;
        QVERIFY2(migrateSchema(db, &error), qPrintable(error));
        // Each step recorded once (step numbers are assigned ahead, so they may have gaps).
        QCOMPARE(test::rowsText(db, QStringLiteral("SELECT COUNT(*) - COUNT(DISTINCT version), MAX(version) FROM zarek_schema")),
                 QStringLiteral("0|%1").arg(latestSchemaVersion()));
    }

    void everyTableHasItsColumnsAndConcurrencyColumns_data()
    {
        QTest::addColumn<QString>("table");
        QTest::addColumn<QStringList>("columns");
        QTest::newRow("tabl") << "tabl"
                              << QStringList{"data", "kod", "kola", "Klient", "Marsh", "Tovar", "km", "ton",
                                             "Tarifa", "bruto", "procent", "neto", "Fakt", "NomFakt", "plat",
                                             "Doc", "DateMod", "TimeMod"};
        QTest::newRow("shof") << "shof" << QStringList{"kod", "ime", "adres", "tel", "mob", "EGN", "LKarta"};
        QTest::newRow("Config") << "Config" << QStringList{"kola", "Razhod", "Procent", "Ton"};
        QTest::newRow("Tarifi") << "Tarifi"
                                << QStringList{"Trf_20", "Trf_20-30", "Trf_30-50", "Trf_50-100", "Trf_100-200",
                                               "Trf_200", "DateMod", "TimeMod"};
        QTest::newRow("ZarekCfg") << "ZarekCfg"
                                  << QStringList{"UserName", "UserAdres", "UserCity", "UserCountry", "UserDanN",
                                                 "UserBULSTAT", "UserMOL", "UserEmail", "UserTel", "UserGSM",
                                                 "UserURL"};
        QTest::newRow("Users") << "Users" << QStringList{"Ime", "Password", "Vid"};
        QTest::newRow("Sklad") << "Sklad"
                               << QStringList{"Data", "DocVid", "DocNom", "Name", "Kol", "Edin", "Suma", "VidKol",
                                              "Ostat", "Lipsa", "DateMod", "TimeMod"};
        QTest::newRow("Nalich") << "Nalich" << QStringList{"Name", "Edin", "Broi", "DateMod", "TimeMod"};
        QTest::newRow("RowdList") << "RowdList"
                                  << QStringList{"ListID", "Data", "Kola", "NameDriver", "SumKM", "SumRazhN",
                                                 "EndKM", "ZarN", "ZarM", "CenaN", "CenaM"};
        QTest::newRow("Marsh") << "Marsh" << QStringList{"MarshID", "Marshrut", "KM", "Ton", "Koef", "RazhN"};
        QTest::newRow("ExternalKurs")
            << "ExternalKurs"
            << QStringList{"KursID",     "Data",       "SendName",   "SendAdres",    "SendCity",  "SendCountry",
                           "SendCityP",  "SendCountryP", "ResivName", "ResivAdres",  "ResivCity", "ResivCountry",
                           "ResivCityP", "ResivCountryP", "DriverName", "TruckV",    "TruckR",    "TovarName",
                           "TovarTon",   "TotalKM",    "TotalFuel",  "TotalP",       "TotalR"};
        QTest::newRow("Firms") << "Firms" << QStringList{"SrName", "SrAdres", "SrCity", "SrCountry"};
        QTest::newRow("SkladLots") << "SkladLots" << QStringList{"IssueID", "ReceiptID", "Kol", "Edin"};
    }
    void everyTableHasItsColumnsAndConcurrencyColumns()
    {
        ZAREK_SCRATCH_DB(scratch);
        QFETCH(QString, table);
        QFETCH(QStringList, columns);
        const QSqlRecord record = scratch.db().record(table.toLower());
        QVERIFY2(!record.isEmpty(), qPrintable(table));
        for (const QString &column : columns + QStringList{"id", "row_version"})
            QVERIFY2(record.indexOf(column) >= 0, qPrintable(table + "." + column));
    }

    void tariffColumnsAreReachedByTheirQuotedNames()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(scratch.exec(QStringLiteral(
            "INSERT INTO Tarifi (\"Trf_20\", \"Trf_20-30\", \"Trf_30-50\", \"Trf_50-100\", \"Trf_100-200\", "
            "\"Trf_200\") VALUES (1, 2, 3, 4, 5, 6)")));
        QCOMPARE(test::rowsText(scratch.db(), QStringLiteral("SELECT \"Trf_20-30\", \"Trf_200\" FROM Tarifi")), QStringLiteral("2|6"));
    }
};

QTEST_MAIN(SchemaTest)
#include "tst_schema.moc"
