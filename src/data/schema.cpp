#include "schema.h"

#include "data/dialect.h"
#include "data/transaction.h"

#include <QSqlError>
#include <QVariant>
#include <QSqlQuery>
#include <algorithm>
#include <optional>
#include <vector>

namespace zarek {

namespace {

// Each migration is a version number and its statements; placeholders are filled per engine
// (dialect.h). Every table has the surrogate key id and row_version for optimistic concurrency.
// Text lengths are enforced by the screens, not the columns, so both engines behave alike.
// A step runs when its version is not yet recorded in zarek_schema, so steps are independent of
// the order in which they were added; a recorded version the program does not know is a newer
// program's, and the database is refused. Numbers: 1 the tables, 2 never used, 3 warehouse issue lots, 4 the euro,
// 6 the documents of trucks and drivers, 7 indexes, 8 the tax documents and payments.
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
        {4, {  // the euro: the firm's changeover, its euro invoices, the euro prices of open receipts
            // One row at most: Nomer is always 1 and unique, so the changeover is recorded once.
            QStringLiteral("CREATE TABLE Evro (id {ID}, row_version {VERSION}, Nomer INTEGER NOT NULL, "
                           "Data {DATE} NOT NULL, Kurs {REAL} NOT NULL, DateMod {DATE}, TimeMod {TIME})"),
            QStringLiteral("CREATE UNIQUE INDEX evro_nomer ON Evro (Nomer)"),
            // The invoice numbers issued in euro; an invoice not listed was issued in leva.
            QStringLiteral("CREATE TABLE EvroFakt (id {ID}, row_version {VERSION}, NomFakt {TEXT} NOT NULL)"),
            QStringLiteral("CREATE UNIQUE INDEX evrofakt_nomfakt ON EvroFakt (NomFakt)"),
            // A leva receipt still open at the changeover, priced in euro for the issues after it;
            // the receipt itself stays as it was written.
            QStringLiteral("CREATE TABLE EvroSklad (id {ID}, row_version {VERSION}, ReceiptID BIGINT NOT NULL, "
                           "Edin {REAL} NOT NULL)"),
            QStringLiteral("CREATE UNIQUE INDEX evrosklad_receipt ON EvroSklad (ReceiptID)"),
        }},
        {5, {  // every invoice number issued, once: two workstations can never issue the same number
            // A number, the client it was issued to and the day; kept when the year close deletes
            // the courses, so numbering goes on from the last number of the year before.
            QStringLiteral("CREATE TABLE Fakturi (id {ID}, row_version {VERSION}, NomFakt {TEXT} NOT NULL, "
                           "Klient {TEXT}, Data {DATE})"),
            QStringLiteral("CREATE UNIQUE INDEX fakturi_nomfakt ON Fakturi (NomFakt)"),
            // The invoices issued so far, from their courses (a number found on two clients' courses
            // stays recorded once, for the first client by name).
            QStringLiteral("INSERT INTO Fakturi (NomFakt, Klient, Data) SELECT NomFakt, MIN(Klient), MAX(DateMod) "
                           "FROM tabl WHERE NomFakt <> '0000000000' AND TRIM(NomFakt) <> '' GROUP BY NomFakt "
                           "ORDER BY NomFakt"),
        }},
        {6, {  // the documents of trucks and drivers, their kinds and scanned copies
            // A kind: its usual validity (months and days; both 0: it does not expire), the days of
            // warning before the day to act, and the working days ahead a renewal must be requested.
            QStringLiteral("CREATE TABLE DokVid (id {ID}, row_version {VERSION}, Ime {TEXT} NOT NULL, Za {TEXT} NOT NULL, "
                           "Meseci INTEGER NOT NULL DEFAULT 0, Dni INTEGER NOT NULL DEFAULT 0, "
                           "Predi INTEGER NOT NULL DEFAULT 30, RabDni INTEGER NOT NULL DEFAULT 0, "
                           "Napomnia BOOLEAN NOT NULL DEFAULT TRUE, "
                           "CHECK (Za IN ('K', 'S')), CHECK (Meseci BETWEEN 0 AND 240), CHECK (Dni BETWEEN 0 AND 3660), "
                           "CHECK (Predi BETWEEN 0 AND 365), CHECK (RabDni BETWEEN 0 AND 60))"),
            QStringLiteral("CREATE UNIQUE INDEX dokvid_ime ON DokVid (Ime)"),
            QStringLiteral("INSERT INTO DokVid (Ime, Za, Meseci, Dni, Predi, RabDni, Napomnia) VALUES ('Технически преглед', 'K', 12, 0, 30, 0, TRUE)"),
            QStringLiteral("INSERT INTO DokVid (Ime, Za, Meseci, Dni, Predi, RabDni, Napomnia) VALUES ('Технически преглед (над 10 г.)', 'K', 6, 0, 30, 0, TRUE)"),
            QStringLiteral("INSERT INTO DokVid (Ime, Za, Meseci, Dni, Predi, RabDni, Napomnia) VALUES ('Тахограф - периодична проверка', 'K', 24, 0, 30, 0, TRUE)"),
            QStringLiteral("INSERT INTO DokVid (Ime, Za, Meseci, Dni, Predi, RabDni, Napomnia) VALUES ('Гражданска отговорност', 'K', 12, 0, 30, 0, TRUE)"),
            QStringLiteral("INSERT INTO DokVid (Ime, Za, Meseci, Dni, Predi, RabDni, Napomnia) VALUES ('Застраховка CMR', 'K', 12, 0, 30, 0, TRUE)"),
            QStringLiteral("INSERT INTO DokVid (Ime, Za, Meseci, Dni, Predi, RabDni, Napomnia) VALUES ('Сваляне на данни от тахографа', 'K', 0, 90, 14, 0, TRUE)"),
            QStringLiteral("INSERT INTO DokVid (Ime, Za, Meseci, Dni, Predi, RabDni, Napomnia) VALUES ('Карта на водача', 'S', 60, 0, 30, 15, TRUE)"),
            QStringLiteral("INSERT INTO DokVid (Ime, Za, Meseci, Dni, Predi, RabDni, Napomnia) VALUES ('Свидетелство за управление C/CE', 'S', 60, 0, 60, 0, TRUE)"),
            QStringLiteral("INSERT INTO DokVid (Ime, Za, Meseci, Dni, Predi, RabDni, Napomnia) VALUES ('Карта за квалификация (код 95)', 'S', 60, 0, 60, 0, TRUE)"),
            QStringLiteral("INSERT INTO DokVid (Ime, Za, Meseci, Dni, Predi, RabDni, Napomnia) VALUES ('ADR свидетелство', 'S', 60, 0, 60, 0, TRUE)"),
            QStringLiteral("INSERT INTO DokVid (Ime, Za, Meseci, Dni, Predi, RabDni, Napomnia) VALUES ('Психологическа годност', 'S', 0, 0, 0, 0, FALSE)"),
            QStringLiteral("INSERT INTO DokVid (Ime, Za, Meseci, Dni, Predi, RabDni, Napomnia) VALUES ('Сваляне на данни от картата на водача', 'S', 0, 28, 7, 0, TRUE)"),
            // A document of a truck (Za 'K', Kod its number) or a driver (Za 'S', Kod his code); a
            // renewed one stays as history (Smenen), the new one names it (PredID).
            QStringLiteral("CREATE TABLE Dokumenti (id {ID}, row_version {VERSION}, Vid {TEXT} NOT NULL, "
                           "Za {TEXT} NOT NULL, Kod {TEXT} NOT NULL, Nomer {TEXT}, Izdaden {DATE}, Valid {DATE}, "
                           "Izdatel {TEXT}, Belejka {TEXT}, Smenen {BOOL}, PredID BIGINT, DateMod {DATE}, TimeMod {TIME}, "
                           "CHECK (Za IN ('K', 'S')), CHECK (Valid IS NULL OR Izdaden IS NULL OR Valid >= Izdaden))"),
            QStringLiteral("CREATE INDEX dokumenti_due ON Dokumenti (Smenen, Valid)"),
            QStringLiteral("CREATE INDEX dokumenti_holder ON Dokumenti (Za, Kod)"),
            QStringLiteral("CREATE INDEX dokumenti_vid ON Dokumenti (Vid)"),
            // One scanned copy a document, at most 10 MB.
            QStringLiteral("CREATE TABLE DokScan (id {ID}, row_version {VERSION}, DokID BIGINT NOT NULL, "
                           "Ime {TEXT} NOT NULL, Razmer BIGINT NOT NULL, Danni {BLOB} NOT NULL, "
                           "CHECK (Razmer BETWEEN 1 AND 10485760), CHECK (length(Danni) = Razmer))"),
            QStringLiteral("CREATE UNIQUE INDEX dokscan_dokid ON DokScan (DokID)"),
            QStringLiteral("CREATE INDEX shof_kod ON shof (kod)"),
            QStringLiteral("CREATE INDEX config_kola ON Config (kola)"),
        }},
        {7, {  // indexes the screens' main statements want on many courses
            // the invoicing grid: a client's courses not invoiced yet in a period, by date
            QStringLiteral("CREATE INDEX tabl_klient_fakt_data ON tabl (Klient, Fakt, data)"),
            // the pay sheet and the payment screen: a driver's courses not paid yet in a period, by date
            QStringLiteral("CREATE INDEX tabl_kod_plat_data ON tabl (kod, plat, data)"),
            // the course editor pages through every course in the order of the drivers' codes
            QStringLiteral("CREATE INDEX tabl_kod_id ON tabl (kod, id)"),
        }},
        {8, {  // the tax documents: clients, invoices and notes, their one number sequence, payments
            // The client register: a course's Klient names a client by Ime. ЕИК is 9 or 13 digits,
            // DDSNomer the VAT number (blank when the client is not registered for VAT), SrokDni the
            // payment term in days.
            QStringLiteral("CREATE TABLE Klienti (id {ID}, row_version {VERSION}, Ime {TEXT} NOT NULL, EIK {TEXT}, "
                           "DDSNomer {TEXT}, Adres {TEXT}, Grad {TEXT}, Darzhava {TEXT}, MOL {TEXT}, Tel {TEXT}, "
                           "Email {TEXT}, SrokDni INTEGER NOT NULL DEFAULT 0, DateMod {DATE}, TimeMod {TIME}, "
                           "CHECK (TRIM(Ime) <> ''), CHECK (SrokDni BETWEEN 0 AND 365))"),
            QStringLiteral("CREATE UNIQUE INDEX klienti_ime ON Klienti (Ime)"),
            QStringLiteral("CREATE INDEX klienti_eik ON Klienti (EIK)"),
            // The clients the courses name so far, with blank data.
            QStringLiteral("INSERT INTO Klienti (Ime) SELECT DISTINCT TRIM(Klient) FROM tabl "
                           "WHERE Klient IS NOT NULL AND TRIM(Klient) <> '' ORDER BY 1"),
            // What an invoice needs of the firm beside its address: bank account, place of issue and
            // the person who issues invoices.
            QStringLiteral("ALTER TABLE ZarekCfg ADD COLUMN UserIBAN {TEXT}"),
            QStringLiteral("ALTER TABLE ZarekCfg ADD COLUMN UserBank {TEXT}"),
            QStringLiteral("ALTER TABLE ZarekCfg ADD COLUMN UserBIC {TEXT}"),
            QStringLiteral("ALTER TABLE ZarekCfg ADD COLUMN UserMiasto {TEXT}"),
            QStringLiteral("ALTER TABLE ZarekCfg ADD COLUMN UserSastavil {TEXT}"),
            // A number sequence: the last number taken. Row 'fakturi' numbers invoices and notes
            // alike; it is read and raised inside the transaction that records the document.
            QStringLiteral("CREATE TABLE Nomerator (id {ID}, row_version {VERSION}, Ime {TEXT} NOT NULL, "
                           "Posleden BIGINT NOT NULL, CHECK (Posleden BETWEEN 0 AND 9999999999))"),
            QStringLiteral("CREATE UNIQUE INDEX nomerator_ime ON Nomerator (Ime)"),
            QStringLiteral("INSERT INTO Nomerator (Ime, Posleden) VALUES ('fakturi', 0)"),
            // An issued tax document, frozen as printed: Vid F invoice, K credit note, D debit note
            // (a note names its invoice by KamID, KamNomer, DataKam). Data the issue date, DataDan
            // the date of the tax event, DataPadej the due date. The supplier (Dost…) and the
            // recipient (Pol…, KlientID the register's row, Klient the name) as they stood that day.
            // Amounts are whole cents in the document's currency (BGN or EUR), a note's as positive
            // figures; the base and the VAT make the total.
            QStringLiteral("CREATE TABLE FaktDok (id {ID}, row_version {VERSION}, Nomer {TEXT} NOT NULL, "
                           "Vid {TEXT} NOT NULL, Data {DATE} NOT NULL, DataDan {DATE} NOT NULL, "
                           "KamID BIGINT, KamNomer {TEXT}, DataKam {DATE}, Prichina {TEXT}, "
                           "DostIme {TEXT}, DostEIK {TEXT}, DostDDS {TEXT}, DostAdres {TEXT}, DostGrad {TEXT}, "
                           "DostDarzhava {TEXT}, DostMOL {TEXT}, DostIBAN {TEXT}, DostBank {TEXT}, DostBIC {TEXT}, "
                           "Miasto {TEXT}, Sastavil {TEXT}, "
                           "KlientID BIGINT, Klient {TEXT} NOT NULL, PolEIK {TEXT}, PolDDS {TEXT}, PolAdres {TEXT}, "
                           "PolGrad {TEXT}, PolDarzhava {TEXT}, PolMOL {TEXT}, "
                           "Valuta {TEXT} NOT NULL, DDSProcent INTEGER NOT NULL, Osnova BIGINT NOT NULL, "
                           "DDS BIGINT NOT NULL, Obshto BIGINT NOT NULL, OsnovanieNula {TEXT}, "
                           "NachinPlashtane {TEXT}, SrokDni INTEGER NOT NULL DEFAULT 0, DataPadej {DATE} NOT NULL, "
                           "DateMod {DATE}, TimeMod {TIME}, "
                           "CHECK (Vid IN ('F', 'K', 'D')), CHECK (Vid = 'F' OR KamID IS NOT NULL), "
                           "CHECK (Valuta IN ('BGN', 'EUR')), CHECK (DDSProcent BETWEEN 0 AND 100), "
                           "CHECK (Osnova >= 0 AND DDS >= 0 AND Osnova + DDS = Obshto), "
                           "CHECK (Obshto <= 1000000000000000), "
                           "CHECK (DDSProcent > 0 OR TRIM(COALESCE(OsnovanieNula, '')) <> ''), "
                           "CHECK (SrokDni BETWEEN 0 AND 365), CHECK (DataPadej >= Data))"),
            QStringLiteral("CREATE UNIQUE INDEX faktdok_nomer ON FaktDok (Nomer)"),
            QStringLiteral("CREATE INDEX faktdok_data ON FaktDok (Data)"),
            QStringLiteral("CREATE INDEX faktdok_klient_data ON FaktDok (Klient, Data)"),
            QStringLiteral("CREATE INDEX faktdok_kamid ON FaktDok (KamID)"),
            QStringLiteral("CREATE INDEX faktdok_padej ON FaktDok (DataPadej)"),
            // The lines of a document, as printed: a course's line names it (KursID, DataKurs), a
            // summary or typed line does not. Suma in whole cents; Cena the unit price.
            QStringLiteral("CREATE TABLE FaktRed (id {ID}, row_version {VERSION}, DokID BIGINT NOT NULL, "
                           "Red INTEGER NOT NULL, KursID BIGINT, DataKurs {DATE}, Opisanie {TEXT} NOT NULL, "
                           "Kol {REAL} NOT NULL, Edinica {TEXT}, Cena {REAL} NOT NULL, Suma BIGINT NOT NULL, "
                           "CHECK (Red >= 1), CHECK (Suma BETWEEN 0 AND 1000000000000000))"),
            QStringLiteral("CREATE UNIQUE INDEX faktred_dok_red ON FaktRed (DokID, Red)"),
            QStringLiteral("CREATE INDEX faktred_kurs ON FaktRed (KursID)"),
            // A payment received from a client: Suma whole cents in Valuta, Nachin B bank, C cash.
            QStringLiteral("CREATE TABLE Plashtania (id {ID}, row_version {VERSION}, Data {DATE} NOT NULL, "
                           "KlientID BIGINT, Klient {TEXT} NOT NULL, Suma BIGINT NOT NULL, Valuta {TEXT} NOT NULL, "
                           "Nachin {TEXT} NOT NULL, Referencia {TEXT}, DateMod {DATE}, TimeMod {TIME}, "
                           "CHECK (Suma > 0 AND Suma <= 1000000000000000), CHECK (Valuta IN ('BGN', 'EUR')), "
                           "CHECK (Nachin IN ('B', 'C')))"),
            QStringLiteral("CREATE INDEX plashtania_klient_data ON Plashtania (Klient, Data)"),
            QStringLiteral("CREATE INDEX plashtania_data ON Plashtania (Data)"),
            // What settles an invoice or a debit note (DokID): part of a payment (PlashtaneID) or a
            // credit note (KreditID), in whole cents of the settled document's currency.
            QStringLiteral("CREATE TABLE Pogasiavania (id {ID}, row_version {VERSION}, DokID BIGINT NOT NULL, "
                           "PlashtaneID BIGINT, KreditID BIGINT, Data {DATE} NOT NULL, Suma BIGINT NOT NULL, "
                           "CHECK (Suma > 0 AND Suma <= 1000000000000000), "
                           "CHECK ((PlashtaneID IS NULL AND KreditID IS NOT NULL) "
                           "OR (PlashtaneID IS NOT NULL AND KreditID IS NULL)))"),
            QStringLiteral("CREATE INDEX pogasiavania_dok ON Pogasiavania (DokID)"),
            QStringLiteral("CREATE INDEX pogasiavania_plashtane ON Pogasiavania (PlashtaneID)"),
            QStringLiteral("CREATE INDEX pogasiavania_kredit ON Pogasiavania (KreditID)"),
        }},
        {9, {  // the dashboard's sums: the courses not yet paid and not yet invoiced in small indexes of
               // their own, in the order they are grouped by
            QStringLiteral("CREATE INDEX tabl_unpaid ON tabl (kod, kola, ton, data, bruto, plat) WHERE plat = FALSE"),
            QStringLiteral("CREATE INDEX tabl_uninvoiced ON tabl (Klient, data, bruto, Fakt) WHERE Fakt = FALSE"),
            // the month's and the trucks' sums of a period read from the index alone, wherever the
            // period's courses lie in the table
            QStringLiteral("CREATE INDEX tabl_data_sums ON tabl (data, kola, bruto, ton, km)"),
        }},
    };
    return list;
}

bool hasVersionTable(QSqlDatabase &db)
{
    // QSqlDatabase::tables() gives PostgreSQL's names in lower case, SQLite's as created.
    for (const QString &table : db.tables(QSql::Tables)) {
        if (table.compare(QLatin1String("zarek_schema"), Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

}

bool isKnownSchemaVersion(int version)
{
    for (const Migration &step : migrations()) {
        if (step.version == version)
            return true;
    }
    return false;
}

QStringList mainTables()
{
    return {QStringLiteral("tabl"),  QStringLiteral("shof"),     QStringLiteral("Config"),
            QStringLiteral("Tarifi"), QStringLiteral("ZarekCfg"), QStringLiteral("Users"),
            QStringLiteral("Sklad"), QStringLiteral("Nalich"),   QStringLiteral("RowdList"),
            QStringLiteral("Marsh"), QStringLiteral("ExternalKurs"), QStringLiteral("Firms"),
            QStringLiteral("Fakturi"),
            // DokVid is left out: a new database starts with its kinds, and it is no data of the firm's.
            QStringLiteral("Dokumenti"), QStringLiteral("DokScan")};
}

QString schemaIsCurrentSql()
{
    QStringList known;
    for (const Migration &step : migrations())
        known.append(QString::number(step.version));
    return QStringLiteral("(SELECT COUNT(DISTINCT version) FROM zarek_schema) = %1 "
                          "AND NOT EXISTS (SELECT 1 FROM zarek_schema WHERE version NOT IN (%2))")
        .arg(known.size())
        .arg(known.join(QLatin1Char(',')));
}

int latestSchemaVersion()
{
    int latest = 0;
    for (const Migration &step : migrations())
        latest = std::max(latest, step.version);
    return latest;
}

namespace {

UserMessage openingError(const QString &fault, const QString &request)
{
    return UserMessage::twoLines(databaseOpenTitle(), fault, request, UserMessage::Icon::Critical);
}

// The engine's own words, without the statement: a message never shows SQL.
UserMessage engineError(const QSqlError &error)
{
    QString text = error.databaseText().simplified();
    if (text.isEmpty())
        text = error.text().simplified();
    return openingError(QStringLiteral("Базата данни не може да бъде подготвена: %1").arg(text),
                        QStringLiteral("Моля, проверете базата данни и опитайте отново!"));
}

}

UserMessage databaseBusyMessage()
{
    return openingError(QStringLiteral("Базата данни е заета от друго копие на програмата!"),
                        QStringLiteral("Моля, опитайте отново след малко!"));
}

UserMessage foreignDatabaseMessage()
{
    return openingError(QStringLiteral("Това не е база данни на Зарек: в нея има чужди таблици!"),
                        QStringLiteral("Моля, посочете базата данни на Зарек или нов файл. Базата не е променена."));
}

UserMessage newerSchemaMessage(int databaseVersion, int programVersion)
{
    return openingError(QStringLiteral("Базата данни е от по-нова версия на Зарек (схема %1, програмата познава до %2)!")
                            .arg(databaseVersion)
                            .arg(programVersion),
                        QStringLiteral("Моля, отворете я с по-новата версия на програмата. Базата не е променена."));
}

int schemaVersion(QSqlDatabase &db)
{
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("SELECT MAX(version) FROM zarek_schema")) || !query.next())
        return 0;
    return query.value(0).toInt();
}

std::optional<UserMessage> upgradeSchema(QSqlDatabase &db)
{
    // The version is read under the write lock, so two copies starting on a new database never
    // both decide to create the tables: the caller's lock when it holds it (the start; on a server
    // a savepoint of its own would cost two round trips more), else one of its own. Each step
    // below is a savepoint either way; a failure is rolled back with the caller's transaction.
    std::optional<Transaction> transaction;
    if (!Transaction::holdsWriterLock(db)) {
        transaction.emplace(db, Transaction::Lock::Writer);
        if (!transaction->isActive())
            return transaction->timedOut() ? databaseBusyMessage() : engineError(transaction->lastError());
    }

    QSqlQuery query(db);
    if (!hasVersionTable(db)) {
        // Another program's tables are never joined by ours.
        if (!db.tables(QSql::Tables).isEmpty())
            return foreignDatabaseMessage();
        if (!query.exec(QStringLiteral("CREATE TABLE zarek_schema (version INTEGER NOT NULL)")))
            return engineError(query.lastError());
    }
    QList<int> recorded;
    if (!query.exec(QStringLiteral("SELECT DISTINCT version FROM zarek_schema ORDER BY version")))
        return engineError(query.lastError());
    while (query.next())
        recorded.append(query.value(0).toInt());
    query.finish();
    for (int version : recorded) {
        if (!isKnownSchemaVersion(version))
            return newerSchemaMessage(recorded.last(), latestSchemaVersion());
    }

    const Dialect dialect = dialectOf(db);
    std::vector<Migration> steps = migrations();
    std::sort(steps.begin(), steps.end(), [](const Migration &a, const Migration &b) { return a.version < b.version; });
    for (const Migration &step : steps) {
        if (recorded.contains(step.version))
            continue;
        Transaction stepTransaction(db);  // a savepoint: a failed step leaves nothing behind
        for (const QString &statement : step.statements) {
            if (!query.exec(dialectDdl(statement, dialect)))
                return engineError(query.lastError());
        }
        query.prepare(QStringLiteral("INSERT INTO zarek_schema (version) VALUES (?)"));
        query.addBindValue(step.version);
        if (!query.exec())
            return engineError(query.lastError());
        if (!stepTransaction.commit())
            return engineError(stepTransaction.lastError());
    }
    if (transaction && !transaction->commit())
        return engineError(transaction->lastError());
    return std::nullopt;
}

bool migrateSchema(QSqlDatabase &db, QString *error)
{
    const auto failure = upgradeSchema(db);
    if (failure && error)
        *error = failure->text;
    return !failure;
}

}
