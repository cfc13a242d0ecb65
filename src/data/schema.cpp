#include "schema.h"

#include "data/dialect.h"
#include "data/transaction.h"

#include <QSqlError>
#include <QSqlQuery>
#include <algorithm>
#include <vector>

namespace zarek {

namespace {

// Each migration is a version number and its statements; placeholders are filled per engine
// (dialect.h). Every table has the surrogate key id and row_version for optimistic concurrency.
// Text lengths are enforced by the screens, not the columns, so both engines behave alike.
// A step runs when its version is not yet recorded in zarek_schema, so steps are independent of
// the order in which they were added. Numbers: 2 start-up safety, 3 warehouse issue lots, 4 the euro.
struct Migration {
    int version;
    QStringList statements;
};

const std::vector<Migration> &migrations()
{
    static const std::vector<Migration> list = {
        {1, {  // the twelve tables
            QStringLiteral("CREATE TABLE tabl (id {ID}, row_version {VERSION}, data {DATE} NOT NULL, kod {TEXT}, "
                           "kola {TEXT}, Klient {TEXT}, Marsh {TEXT}, Tovar {TEXT}, km {REAL}, ton {REAL}, "
                           "Tarifa {REAL}, bruto {REAL}, procent {REAL}, neto {REAL}, Fakt {BOOL}, "
                           "NomFakt {TEXT} NOT NULL DEFAULT '0000000000', plat {BOOL}, Doc {BOOL}, "
                           "DateMod {DATE}, TimeMod {TIME})"),
            QStringLiteral("CREATE INDEX tabl_data ON tabl (data)"),
            QStringLiteral("CREATE INDEX tabl_kola_data ON tabl (kola, data)"),
            QStringLiteral("CREATE INDEX tabl_klient_data ON tabl (Klient, data)"),
            QStringLiteral("CREATE INDEX tabl_kod_data ON tabl (kod, data)"),
            QStringLiteral("CREATE INDEX tabl_marsh ON tabl (Marsh)"),
            QStringLiteral("CREATE INDEX tabl_tovar ON tabl (Tovar)"),
            QStringLiteral("CREATE INDEX tabl_nomfakt ON tabl (NomFakt)"),
            QStringLiteral("CREATE TABLE shof (id {ID}, row_version {VERSION}, kod {TEXT}, ime {TEXT}, adres {TEXT}, "
                           "tel {TEXT}, mob {TEXT}, EGN {TEXT}, LKarta {TEXT})"),
            QStringLiteral("CREATE TABLE Config (id {ID}, row_version {VERSION}, kola {TEXT}, Razhod {REAL}, "
                           "Procent {REAL}, Ton {REAL})"),
            QStringLiteral("CREATE TABLE Tarifi (id {ID}, row_version {VERSION}, \"Trf_20\" {REAL}, "
                           "\"Trf_20-30\" {REAL}, \"Trf_30-50\" {REAL}, \"Trf_50-100\" {REAL}, "
                           "\"Trf_100-200\" {REAL}, \"Trf_200\" {REAL}, DateMod {DATE}, TimeMod {TIME})"),
            QStringLiteral("CREATE TABLE ZarekCfg (id {ID}, row_version {VERSION}, UserName {TEXT}, "
                           "UserAdres {TEXT}, UserCity {TEXT}, UserCountry {TEXT}, UserDanN {TEXT}, "
                           "UserBULSTAT {TEXT}, UserMOL {TEXT}, UserEmail {TEXT}, UserTel {TEXT}, "
                           "UserGSM {TEXT}, UserURL {TEXT})"),
            QStringLiteral("CREATE TABLE Users (id {ID}, row_version {VERSION}, Ime {TEXT}, Password {TEXT}, "
                           "Vid {TEXT})"),
            QStringLiteral("CREATE TABLE Sklad (id {ID}, row_version {VERSION}, Data {DATE}, DocVid {TEXT}, "
                           "DocNom {TEXT}, Name {TEXT}, Kol {REAL}, Edin {REAL}, Suma {REAL}, VidKol {TEXT}, "
                           "Ostat {REAL}, Lipsa {BOOL}, DateMod {DATE}, TimeMod {TIME})"),
            QStringLiteral("CREATE INDEX sklad_name ON Sklad (Name, Data)"),
            QStringLiteral("CREATE INDEX sklad_docvid ON Sklad (DocVid, Data)"),
            QStringLiteral("CREATE TABLE Nalich (id {ID}, row_version {VERSION}, Name {TEXT}, Edin {REAL}, "
                           "Broi {REAL}, DateMod {DATE}, TimeMod {TIME})"),
            QStringLiteral("CREATE INDEX nalich_name ON Nalich (Name)"),
            QStringLiteral("CREATE TABLE RowdList (id {ID}, row_version {VERSION}, ListID {TEXT}, Data {DATE}, "
                           "Kola {TEXT}, NameDriver {TEXT}, SumKM {REAL}, SumRazhN {REAL}, EndKM {REAL}, "
                           "ZarN {REAL}, ZarM {REAL}, CenaN {REAL}, CenaM {REAL})"),
            QStringLiteral("CREATE INDEX rowdlist_listid ON RowdList (ListID)"),
            QStringLiteral("CREATE INDEX rowdlist_kola_data ON RowdList (Kola, Data)"),
            QStringLiteral("CREATE TABLE Marsh (id {ID}, row_version {VERSION}, MarshID {TEXT}, Marshrut {TEXT}, "
                           "KM {REAL}, Ton {REAL}, Koef {REAL}, RazhN {REAL})"),
            QStringLiteral("CREATE INDEX marsh_marshid ON Marsh (MarshID)"),
            QStringLiteral("CREATE TABLE ExternalKurs (id {ID}, row_version {VERSION}, KursID {TEXT}, Data {DATE}, "
                           "SendName {TEXT}, SendAdres {TEXT}, SendCity {TEXT}, SendCountry {TEXT}, "
                           "SendCityP {TEXT}, SendCountryP {TEXT}, ResivName {TEXT}, ResivAdres {TEXT}, "
                           "ResivCity {TEXT}, ResivCountry {TEXT}, ResivCityP {TEXT}, ResivCountryP {TEXT}, "
                           "DriverName {TEXT}, TruckV {TEXT}, TruckR {TEXT}, TovarName {TEXT}, TovarTon {REAL}, "
                           "TotalKM {REAL}, TotalFuel {REAL}, TotalP {REAL}, TotalR {REAL})"),
            QStringLiteral("CREATE INDEX externalkurs_kursid ON ExternalKurs (KursID)"),
            QStringLiteral("CREATE TABLE Firms (id {ID}, row_version {VERSION}, SrName {TEXT}, SrAdres {TEXT}, "
                           "SrCity {TEXT}, SrCountry {TEXT})"),
            QStringLiteral("CREATE INDEX firms_srname ON Firms (SrName)"),
        }},
        {3, {  // warehouse: the lots each issue took from the receipts, one stock row a trimmed name
            QStringLiteral("CREATE TABLE SkladLots (id {ID}, row_version {VERSION}, IssueID BIGINT NOT NULL, "
                           "ReceiptID BIGINT NOT NULL, Kol {REAL} NOT NULL, Edin {REAL} NOT NULL)"),
            QStringLiteral("CREATE INDEX skladlots_issue ON SkladLots (IssueID)"),
            QStringLiteral("CREATE INDEX skladlots_receipt ON SkladLots (ReceiptID)"),
            // The open receipts of a name, oldest first; the movements of a period by kind.
            QStringLiteral("CREATE INDEX sklad_open ON Sklad (Name, VidKol, Lipsa, Data)"),
            QStringLiteral("CREATE INDEX sklad_vidkol_data ON Sklad (VidKol, Data)"),
            // Names are compared trimmed: rows of one name typed with blanks around it become one.
            QStringLiteral("UPDATE Sklad SET Name = TRIM(Name) WHERE Name <> TRIM(Name)"),
            QStringLiteral("UPDATE Nalich SET Name = TRIM(Name) WHERE Name <> TRIM(Name)"),
            QStringLiteral("UPDATE Nalich SET Broi = (SELECT SUM(same.Broi) FROM Nalich same WHERE same.Name = Nalich.Name) "
                           "WHERE id IN (SELECT MAX(id) FROM Nalich GROUP BY Name HAVING COUNT(*) > 1)"),
            QStringLiteral("DELETE FROM Nalich WHERE id NOT IN (SELECT MAX(id) FROM Nalich GROUP BY Name)"),
            QStringLiteral("DROP INDEX nalich_name"),
            QStringLiteral("CREATE UNIQUE INDEX nalich_name ON Nalich (Name)"),
        }},
    };
    return list;
}

bool ensureVersionTable(QSqlDatabase &db, QString *error)
{
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("CREATE TABLE IF NOT EXISTS zarek_schema (version INTEGER NOT NULL)"))) {
        if (error)
            *error = query.lastError().text();
        return false;
    }
    return true;
}

}

QStringList mainTables()
{
    return {QStringLiteral("tabl"),  QStringLiteral("shof"),     QStringLiteral("Config"),
            QStringLiteral("Tarifi"), QStringLiteral("ZarekCfg"), QStringLiteral("Users"),
            QStringLiteral("Sklad"), QStringLiteral("Nalich"),   QStringLiteral("RowdList"),
            QStringLiteral("Marsh"), QStringLiteral("ExternalKurs"), QStringLiteral("Firms")};
}

int latestSchemaVersion()
{
    int latest = 0;
    for (const Migration &step : migrations())
        latest = std::max(latest, step.version);
    return latest;
}

namespace {

bool isApplied(QSqlDatabase &db, int version)
{
    QSqlQuery query(db);
    query.prepare(QStringLiteral("SELECT COUNT(*) FROM zarek_schema WHERE version = ?"));
    query.addBindValue(version);
    return query.exec() && query.next() && query.value(0).toInt() > 0;
}

}

int schemaVersion(QSqlDatabase &db)
{
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("SELECT MAX(version) FROM zarek_schema")) || !query.next())
        return 0;
    return query.value(0).toInt();
}

bool migrateSchema(QSqlDatabase &db, QString *error)
{
    if (!ensureVersionTable(db, error))
        return false;
    const Dialect dialect = dialectOf(db);
    std::vector<Migration> steps = migrations();
    std::sort(steps.begin(), steps.end(), [](const Migration &a, const Migration &b) { return a.version < b.version; });
    for (const Migration &step : steps) {
        const int version = step.version;
        if (isApplied(db, version))
            continue;
        Transaction transaction(db);
        QSqlQuery query(db);
        // Two workstations starting at once: the second waits here and then finds the step done.
        if (dialect == Dialect::PostgreSQL)
            query.exec(QStringLiteral("LOCK TABLE zarek_schema IN EXCLUSIVE MODE"));
        if (isApplied(db, version))
            continue;
        for (const QString &statement : step.statements) {
            if (!query.exec(dialectDdl(statement, dialect))) {
                if (error)
                    *error = QStringLiteral("%1 (%2)").arg(query.lastError().text(), statement);
                return false;
            }
        }
        query.prepare(QStringLiteral("INSERT INTO zarek_schema (version) VALUES (?)"));
        query.addBindValue(version);
        if (!query.exec() || !transaction.commit()) {
            if (error)
                *error = query.lastError().text();
            return false;
        }
    }
    return true;
}

}
