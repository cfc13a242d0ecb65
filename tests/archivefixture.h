#pragma once

// A firm with rows in every table, and the whole database as comparable text, for the tests of
// archive, restore and year close.

#include "data/archive.h"
#include "testdatabase.h"

#include <QDate>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QSqlRecord>
#include <QStringList>
#include <QTime>
#include <QVariant>
#include <QtTest>

namespace zarek::test {

// A course of the given date and client; the rest made up from them.
inline bool insertCourse(QSqlDatabase db, const QDate &date, const QString &client, double km = 120)
{
    return insertRow(db, QStringLiteral("tabl"),
                     QStringLiteral("data, kod, kola, Klient, Marsh, Tovar, km, ton, Tarifa, bruto, procent, neto, Fakt, "
                                    "NomFakt, plat, Doc"),
                     {date, QStringLiteral("001"), QStringLiteral("СА 1234 ВК"), client, QStringLiteral("Перник - София"),
                      QStringLiteral("Пясък"), km, 20.5, 0.1, 246.0, 7.38, 238.62, false, QStringLiteral("0000000000"),
                      false, false});
}

// Rows in every table: apostrophes, Cyrillic, empty and missing values, flags both ways, dates,
// times, amounts that are not exact in binary, the tariff columns with a minus in their names.
inline bool fillEveryTable(QSqlDatabase db)
{
    const QDate day(2025, 3, 5);
    const QTime time(14, 30, 5);
    const auto row = [&db](const char *table, const char *columns, const QVariantList &values) {
        return insertRow(db, QString::fromUtf8(table), QString::fromUtf8(columns), values);
    };
    bool ok = true;
    ok = ok && row("tabl", "data, kod, kola, Klient, Marsh, Tovar, km, ton, Tarifa, bruto, procent, neto, Fakt, NomFakt, plat, "
                           "Doc, DateMod, TimeMod",
                   {day, QStringLiteral("001"), QStringLiteral("СА 1234 ВК"), QStringLiteral("Д'Аргос ООД"),
                    QStringLiteral("Перник - София"), QVariant(QMetaType(QMetaType::QString)), 0.1 + 0.2, 20.5, 0.115,
                    246.01, 7.38, 238.63, true, QStringLiteral("0000000042"), true, false, day, time});
    ok = ok && insertCourse(db, QDate(2025, 12, 31), QStringLiteral("Бетон Перник АД"));
    ok = ok && insertCourse(db, QDate(2024, 1, 2), QStringLiteral(""));
    ok = ok && row("shof", "kod, ime, adres, tel, mob, EGN, LKarta",
                   {QStringLiteral("001"), QStringLiteral("Иван О'Нийл"), QStringLiteral("Перник, ул. \"Кракра\" 1"),
                    QStringLiteral("076123456"), QStringLiteral("0888123456"), QStringLiteral("7501011234"),
                    QStringLiteral("123456789")});
    ok = ok && row("Config", "kola, Razhod, Procent, Ton", {QStringLiteral("СА 1234 ВК"), 32.5, 12.0, 25.0});
    ok = ok && row("Tarifi", "\"Trf_20\", \"Trf_20-30\", \"Trf_30-50\", \"Trf_50-100\", \"Trf_100-200\", \"Trf_200\", "
                             "DateMod, TimeMod",
                   {0.3, 0.25, 0.2, 0.15, 0.12, 0.1, day, time});
    ok = ok && row("ZarekCfg", "UserName, UserAdres, UserCity, UserTel, UserGSM, UserMOL",
                   {QStringLiteral("Зарек Транс ООД"), QStringLiteral("ул. Първа 1"), QStringLiteral("Перник"),
                    QStringLiteral("076 600 600"), QStringLiteral("0888 600 600"), QStringLiteral(" ")});
    ok = ok && row("Users", "Ime, Password, Vid",
                   {QStringLiteral("админ"), QStringLiteral("$argon2id$v=19$m=65536,t=2,p=1$c2FsdA$aGFzaA"), QStringLiteral("A")});
    ok = ok && row("Sklad", "Data, DocVid, DocNom, Name, Kol, Edin, Suma, VidKol, Ostat, Lipsa, DateMod, TimeMod",
                   {day, QStringLiteral("Фактура"), QStringLiteral("123"), QStringLiteral("Масло 15W40"), 10.0, 12.35, 123.5,
                    QStringLiteral("P"), 7.5, false, day, time});
    ok = ok && row("Nalich", "Name, Edin, Broi, DateMod, TimeMod", {QStringLiteral("Масло 15W40"), 12.35, 7.5, day, time});
    ok = ok && row("RowdList", "ListID, Data, Kola, NameDriver, SumKM, SumRazhN, EndKM, ZarN",
                   {QStringLiteral("0000000007"), day, QStringLiteral("СА 1234 ВК"), QStringLiteral("Иван О'Нийл"), 240.0,
                    78.1, 123456.0, 0.0});
    ok = ok && row("Marsh", "MarshID, Marshrut, KM, Ton, Koef, RazhN",
                   {QStringLiteral("0000000007"), QStringLiteral("Перник - София"), 120.0, 20.5, 0.0, 39.05});
    ok = ok && row("ExternalKurs", "KursID, Data, SendName, ResivName, TovarTon, TotalP",
                   {QStringLiteral("0000000003"), day, QStringLiteral("Сенд ЕООД"), QStringLiteral("Ресив GmbH"), 22.0, 4200.5});
    ok = ok && row("Firms", "SrName, SrAdres, SrCity, SrCountry",
                   {QStringLiteral("Ресив GmbH"), QStringLiteral("Hauptstraße 1"), QStringLiteral("Wien"), QStringLiteral("Австрия")});
    ok = ok && row("SkladLots", "IssueID, ReceiptID, Kol, Edin", {2, 1, 2.5, 12.35});
    ok = ok && row("Fakturi", "NomFakt, Klient, Data", {QStringLiteral("0000000042"), QStringLiteral("Д'Аргос ООД"), day});
    ok = ok && row("Dokumenti", "Vid, Za, Kod, Nomer, Izdaden, Valid, Izdatel, Smenen",
                   {QStringLiteral("Застраховка CMR"), QStringLiteral("K"), QStringLiteral("СА 1234 ВК"),
                    QStringLiteral("О'Нийл-7"), day, QDate(2026, 3, 4), QStringLiteral("ЗД Бул Инс АД"), true});
    // A scanned copy: bytes, a zero and a 0xff among them, as they were.
    ok = ok && row("DokScan", "DokID, Ime, Razmer, Danni", {1, QStringLiteral("полица.pdf"), 6, QByteArray("%PDF\x00\xff", 6)});
    return ok;
}

// One value as text, the same for both engines: dates and times as ISO, flags as 0 and 1, numbers
// to the last bit.
inline QString normalized(const QVariant &value)
{
    if (value.isNull())
        return QStringLiteral("NULL");
    switch (value.typeId()) {
    case QMetaType::QDate: return value.toDate().toString(Qt::ISODate);
    case QMetaType::QTime: return value.toTime().toString(QStringLiteral("hh:mm:ss.zzz"));
    case QMetaType::Bool: return value.toBool() ? QStringLiteral("1") : QStringLiteral("0");
    case QMetaType::Double: return QString::number(value.toDouble(), 'g', 17);
    case QMetaType::Int:
    case QMetaType::LongLong: return QString::number(value.toLongLong());
    case QMetaType::QByteArray: return QString::fromLatin1(value.toByteArray().toHex());
    default: return value.toString();
    }
}

// Every table of the system, every row by id, every column but row_version.
inline QStringList dumpDatabase(QSqlDatabase db)
{
    QStringList out;
    for (const SchemaTable &table : schemaTables()) {
        QStringList columns;
        for (const QString &column : table.columns) {
            if (column != QLatin1String("row_version"))
                columns << QLatin1Char('"') + (db.driverName() == QLatin1String("QPSQL") && !column.contains(QLatin1Char('-'))
                                                       && !column.startsWith(QLatin1String("Trf_"))
                                                   ? column.toLower()
                                                   : column)
                               + QLatin1Char('"');
        }
        QSqlQuery query(db);
        query.setForwardOnly(true);
        if (!query.exec(QStringLiteral("SELECT %1 FROM %2 ORDER BY id").arg(columns.join(QStringLiteral(", ")), table.name))) {
            out << table.name + QStringLiteral(": ") + query.lastError().text();
            continue;
        }
        while (query.next()) {
            QStringList values;
            for (int i = 0; i < columns.size(); ++i) {
                // SQLite keeps times as text: read them as times to compare with PostgreSQL's.
                QVariant value = query.value(i);
                if (!value.isNull() && value.typeId() == QMetaType::QString && table.columns.contains(QStringLiteral("TimeMod"))
                    && columns.at(i).compare(QStringLiteral("\"TimeMod\""), Qt::CaseInsensitive) == 0)
                    value = QTime::fromString(value.toString(), Qt::ISODateWithMs);
                values << normalized(value);
            }
            out << table.name + QStringLiteral(": ") + values.join(QStringLiteral(" | "));
        }
    }
    return out;
}

inline qint64 countOf(QSqlDatabase db, const QString &table)
{
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("SELECT COUNT(*) FROM ") + table) || !query.next())
        return -1;
    return query.value(0).toLongLong();
}

}

// Two whole databases, row by row, so a difference shows the one row in full.
#define COMPARE_DUMPS(actual, expected)                                  \
    do {                                                                 \
        const QStringList a_ = (actual), e_ = (expected);                \
        for (qsizetype i_ = 0; i_ < std::max(a_.size(), e_.size()); ++i_) \
            QVERIFY2(a_.value(i_) == e_.value(i_),                       \
                     qPrintable(a_.value(i_) + QStringLiteral("\n   expected: ") + e_.value(i_))); \
    } while (false)

// A fresh database of the current engine with rows in every table (db), and a folder for the
// archives (dir), or the test skips with the reason.
#define ZAREK_FILLED_DB(scratch, dir, db)  \
    ZAREK_SCRATCH_DB_AS(scratch, db);       \
    QTemporaryDir dir;                      \
    QVERIFY(zarek::test::fillEveryTable(db));
