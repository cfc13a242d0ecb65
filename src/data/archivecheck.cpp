#include "archivecheck.h"

#include "core/docnumber.h"
#include "core/money.h"
#include "core/storedvalues.h"
#include "data/schema.h"

#include <QDate>
#include <QHash>
#include <QSet>
#include <QSqlQuery>
#include <QTime>
#include <QVariant>
#include <algorithm>
#include <cmath>
#include <limits>

namespace zarek::archiving {

namespace {

// SQLite's own tables that ANALYZE may leave in any file: statistics for the planner, never run.
bool isEngineStatistics(const SchemaObject &object)
{
    return object.type == QLatin1String("table") && object.name.startsWith(QLatin1String("sqlite_stat"));
}

QString kindWords(const QString &type)
{
    if (type == QLatin1String("trigger"))
        return QStringLiteral("тригер");
    if (type == QLatin1String("view"))
        return QStringLiteral("изглед");
    if (type == QLatin1String("index"))
        return QStringLiteral("индекс");
    if (type == QLatin1String("table"))
        return QStringLiteral("таблица");
    return QStringLiteral("непознат обект");
}

// How a column's values are checked, from its declared type and its name.
enum class Kind { Key, Integer, Flag, Number, Text, Date, Time, Bytes };

struct Column {
    QString name;
    Kind kind = Kind::Text;
    bool notNull = false;
};

Kind kindOf(const QString &name, const QString &declared, bool primaryKey)
{
    const QString type = declared.toUpper();
    if (primaryKey)
        return Kind::Key;
    if (type == QLatin1String("BOOLEAN"))
        return Kind::Flag;
    if (type == QLatin1String("BLOB"))
        return Kind::Bytes;
    if (type == QLatin1String("DOUBLE PRECISION"))
        return Kind::Number;
    if (type == QLatin1String("INTEGER") || type == QLatin1String("BIGINT"))
        return Kind::Integer;
    const QString lower = name.toLower();
    if (lower == QLatin1String("data") || lower == QLatin1String("datemod") || lower == QLatin1String("izdaden")
        || lower == QLatin1String("valid") || lower.startsWith(QLatin1String("data")))
        return Kind::Date;
    if (lower == QLatin1String("timemod"))
        return Kind::Time;
    return Kind::Text;
}

QList<Column> columnsOf(QSqlDatabase db, const QString &table)
{
    QList<Column> out;
    QSqlQuery info(db);
    info.setForwardOnly(true);
    if (!info.exec(QStringLiteral("PRAGMA table_info(%1)").arg(quoted(table))))
        return out;
    while (info.next()) {
        const QString name = info.value(1).toString();
        out.append({name, kindOf(name, info.value(2).toString(), info.value(5).toInt() > 0), info.value(3).toInt() != 0});
    }
    return out;
}

// The limits the screens hold a table's numbers and texts to, where they are narrower than any
// stored value's.
struct Limits {
    double low = -1e12;
    double high = 1e12;
    bool cents = false;
    bool quantity = false;
    int length = maxStoredTextLength;
    bool documentNumber = false;
    bool required = false;  // a number every row has: a course's figures and money
};

Limits limitsOf(const QString &table, const QString &column)
{
    Limits limits;
    const auto is = [&](const char *t, const char *c) {
        return table == QLatin1String(t) && column.compare(QLatin1String(c), Qt::CaseInsensitive) == 0;
    };
    const auto range = [&](double low, double high) {
        limits.low = low;
        limits.high = high;
    };
    if (table == QLatin1String("tabl")) {
        for (const char *figure : {"km", "ton", "Tarifa", "bruto", "procent", "neto"})
            limits.required = limits.required || is("tabl", figure);
    }
    if (is("tabl", "km"))
        range(0, maxCourseKm);
    else if (is("tabl", "ton"))
        range(0, maxCourseTonnes);
    else if (is("tabl", "Tarifa"))
        range(0, maxCourseRate);
    else if (is("tabl", "bruto") || is("tabl", "procent") || is("tabl", "neto")) {
        range(0, maxCourseAmount);
        limits.cents = true;
    } else if (is("tabl", "kola"))
        limits.length = 12;
    else if (is("tabl", "Klient") || is("tabl", "Marsh") || is("tabl", "Tovar") || is("Klienti", "Ime"))
        limits.length = 25;
    else if (is("tabl", "NomFakt") || is("EvroFakt", "NomFakt") || is("Fakturi", "NomFakt") || is("RowdList", "ListID") || is("Marsh", "MarshID")
             || is("ExternalKurs", "KursID") || is("FaktDok", "Nomer") || is("FaktDok", "KamNomer"))
        limits.documentNumber = true;
    else if (table == QLatin1String("Tarifi") && column.startsWith(QLatin1String("Trf_")))
        range(0, maxCourseRate);
    else if (is("Sklad", "DocVid"))
        limits.length = 15;
    else if (is("Sklad", "Ostat") || is("Nalich", "Broi")) {
        range(0, 1e12);
        limits.quantity = true;
    } else if (is("SkladLots", "Kol")) {
        range(0.001, 1e12);
        limits.quantity = true;
    } else if (is("Nalich", "Edin") || is("EvroSklad", "Edin") || is("SkladLots", "Edin"))
        range(0, 1e12);
    else if (is("Evro", "Kurs"))
        range(1e-9, 1e6);  // a conversion rate above zero
    else if (is("Evro", "Nomer"))
        range(1, 1);
    else if (is("SkladLots", "IssueID") || is("SkladLots", "ReceiptID") || is("EvroSklad", "ReceiptID"))
        range(1, 9e15);
    return limits;
}

std::optional<QString> valueFault(const Column &column, const Limits &limits, const QString &storage, const QVariant &value)
{
    const bool null = storage == QLatin1String("null");
    if (null) {
        if (column.notNull || limits.required || column.kind == Kind::Key || column.kind == Kind::Flag)
            return QStringLiteral("няма стойност");
        return std::nullopt;
    }
    switch (column.kind) {
    case Kind::Key:
    case Kind::Integer: {
        if (storage != QLatin1String("integer"))
            return QStringLiteral("не е цяло число");
        const qint64 number = value.toLongLong();
        if (column.kind == Kind::Key ? number < 1 : !isWithin(double(number), limits.low, limits.high))
            return QStringLiteral("извън разрешените граници");
        return std::nullopt;
    }
    case Kind::Flag:
        if (storage != QLatin1String("integer") || (value.toLongLong() != 0 && value.toLongLong() != 1))
            return QStringLiteral("не е \"да\" или \"не\"");
        return std::nullopt;
    case Kind::Number: {
        if (storage != QLatin1String("real") && storage != QLatin1String("integer"))
            return QStringLiteral("не е число");
        const double number = value.toDouble();
        if (!std::isfinite(number) || !isWithin(number, limits.low, limits.high))
            return QStringLiteral("извън разрешените граници");
        if (limits.cents && !isWholeCents(number))
            return QStringLiteral("сумата не е в цели стотинки");
        if (limits.quantity && !toQuantity(number))
            return QStringLiteral("количеството е с повече от три знака след запетаята");
        return std::nullopt;
    }
    case Kind::Date: {
        const QString text = value.toString();
        if (storage != QLatin1String("text") || text.size() != 10 || !QDate::fromString(text, Qt::ISODate).isValid())
            return QStringLiteral("не е дата");
        return std::nullopt;
    }
    case Kind::Time: {
        const QString text = value.toString();
        if (storage != QLatin1String("text") || text.size() > 12
            || !(QTime::fromString(text, Qt::ISODateWithMs).isValid() || QTime::fromString(text, Qt::ISODate).isValid()))
            return QStringLiteral("не е час");
        return std::nullopt;
    }
    case Kind::Bytes:
        // A scanned copy: any bytes, within the size a document's copy may have.
        if (storage != QLatin1String("blob") || value.toByteArray().size() > 10 * 1024 * 1024)
            return QStringLiteral("не е сканирано копие");
        return std::nullopt;
    case Kind::Text: {
        if (storage != QLatin1String("text"))
            return QStringLiteral("не е текст");
        const QString text = value.toString();
        if (!isStorableText(text, std::numeric_limits<int>::max()))
            return QStringLiteral("съдържа непозволен знак");
        if (limits.documentNumber && !isStoredDocumentNumber(text))
            return QStringLiteral("не е номер от %1 знака").arg(documentNumberLength);
        if (text.size() > maxStoredTextLength || text.trimmed().size() > limits.length)
            return QStringLiteral("текстът е по-дълъг от %1 знака").arg(limits.length);
        return std::nullopt;
    }
    }
    return std::nullopt;
}

// The same rules as SQL over a whole table, the other way round: a condition that holds of every
// row whose values valueFault and rowFault take, and of no other row only where that is easily
// said. The rows it does not hold of are the ones read and judged value by value; the engine
// passes over the others, so a table of clean rows is never read into the program.
QString number(double value)
{
    return QString::number(value, 'g', 17);
}

// Whole units of 1/scale, with a tolerance narrower than isWholeIn's.
QString wholeIn(const QString &column, const char *scale)
{
    return QStringLiteral("abs(%1 * %2 - round(%1 * %2)) <= 1e-7 * max(1.0, abs(%1 * %2))").arg(column, QLatin1String(scale));
}

QString cleanValue(const Column &column, const Limits &limits)
{
    const QString c = quoted(column.name);
    // No NUL and no control character in any text is said once for the whole row (cleanTexts).
    const QString text = QStringLiteral("typeof(%1) = 'text'").arg(c);
    QString clean;
    switch (column.kind) {
    case Kind::Key:
        clean = QStringLiteral("typeof(%1) = 'integer' AND %1 >= 1").arg(c);
        break;
    case Kind::Integer:
        clean = QStringLiteral("typeof(%1) = 'integer' AND %1 >= %2 AND %1 <= %3").arg(c, number(limits.low), number(limits.high));
        break;
    case Kind::Flag:
        clean = QStringLiteral("typeof(%1) = 'integer' AND %1 IN (0, 1)").arg(c);
        break;
    case Kind::Number:
        clean = QStringLiteral("typeof(%1) IN ('real', 'integer') AND %1 >= %2 AND %1 <= %3")
                    .arg(c, number(limits.low), number(limits.high));
        if (limits.cents)
            clean += QStringLiteral(" AND abs(%1) <= %2 AND ").arg(c, number(double(Money::maxCents) / 100.0)) + wholeIn(c, "100.0");
        if (limits.quantity)
            clean += QStringLiteral(" AND abs(%1) <= 1e12 AND ").arg(c) + wholeIn(c, "1000.0");
        break;
    case Kind::Date:
        clean = text + QStringLiteral(" AND length(%1) = 10 AND %1 GLOB '[0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9]' "
                                      "AND substr(%1, 1, 4) <> '0000' AND date(%1, '+0 days') = %1").arg(c);
        break;
    case Kind::Time:
        clean = text + QStringLiteral(" AND ((length(%1) = 8 AND %1 GLOB '[0-2][0-9]:[0-5][0-9]:[0-5][0-9]') "
                                      "OR (length(%1) = 12 AND %1 GLOB '[0-2][0-9]:[0-5][0-9]:[0-5][0-9].[0-9][0-9][0-9]')) "
                                      "AND substr(%1, 1, 2) <= '23'").arg(c);
        break;
    case Kind::Bytes:
        clean = QStringLiteral("typeof(%1) = 'blob' AND length(%1) <= %2").arg(c).arg(10 * 1024 * 1024);
        break;
    case Kind::Text: {
        // No control character; and few enough UTF-16 units: a character the engine counts is one
        // or two of them, two only for one of four bytes or more.
        const int length = std::min(limits.length, maxStoredTextLength);
        clean = text + QStringLiteral(" AND 2 * length(%1) + length(CAST(%1 AS BLOB)) <= %2").arg(c).arg(3 * length);
        if (limits.documentNumber)
            clean += QStringLiteral(" AND %1 GLOB '[0-9][0-9][0-9][0-9][0-9][0-9][0-9][0-9][0-9][0-9]'").arg(c);
        break;
    }
    }
    const bool nullAllowed = !(column.notNull || limits.required || column.kind == Kind::Key || column.kind == Kind::Flag);
    return nullAllowed ? QStringLiteral("(%1 IS NULL OR (%2))").arg(c, clean) : QStringLiteral("(%1)").arg(clean);
}

// Every text of the row together: no NUL (where the engine's text functions stop) and no control character.
QString cleanTexts(const QList<Column> &columns)
{
    QStringList texts;
    for (const Column &column : columns) {
        if (column.kind == Kind::Text || column.kind == Kind::Date || column.kind == Kind::Time)
            texts << QStringLiteral("COALESCE(CAST(%1 AS TEXT), '')").arg(quoted(column.name));
    }
    if (texts.isEmpty())
        return QStringLiteral("1");
    // A blank between texts: a byte of one is never read as part of a character of the next.
    const QString all = texts.join(QStringLiteral(" || ' ' || "));
    return QStringLiteral("instr(CAST(%1 AS BLOB), x'00') = 0 AND NOT (%1) GLOB ('*[' || char(1) || '-' || char(31) || char(127) "
                          "|| '-' || char(159) || ']*')").arg(all);
}

QString cleanRow(const QString &table)
{
    if (table == QLatin1String("tabl"))
        return QStringLiteral("(\"Fakt\" <> 0) = (\"NomFakt\" <> '%1')").arg(noDocumentNumber());
    if (table == QLatin1String("Sklad"))
        return QStringLiteral("\"VidKol\" IN ('P', 'R') AND (\"VidKol\" <> 'P' OR (\"Kol\" > 0 AND abs(\"Kol\") <= 1e12 AND %1 "
                              "AND (\"Ostat\" IS NULL OR \"Ostat\" <= \"Kol\")))")
            .arg(wholeIn(QStringLiteral("\"Kol\""), "1000.0"));
    return QStringLiteral("1");
}

// The rules of one row as a whole: the invoicing flag goes with a real number, a receipt holds
// no more than it took in.
std::optional<ValueFault> rowFault(const QString &table, qint64 id, const QHash<QString, QVariant> &row)
{
    if (table == QLatin1String("tabl")) {
        const bool invoiced = row.value(QStringLiteral("Fakt")).toLongLong() != 0;
        const bool numbered = row.value(QStringLiteral("NomFakt")).toString() != noDocumentNumber();
        if (invoiced && !numbered)
            return ValueFault{table, id, QStringLiteral("NomFakt"), QStringLiteral("фактуриран курс без номер на фактура")};
        if (!invoiced && numbered)
            return ValueFault{table, id, QStringLiteral("NomFakt"), QStringLiteral("номер на фактура на нефактуриран курс")};
    } else if (table == QLatin1String("Sklad")) {
        const QString kind = row.value(QStringLiteral("VidKol")).toString();
        if (kind != QLatin1String("P") && kind != QLatin1String("R"))
            return ValueFault{table, id, QStringLiteral("VidKol"), QStringLiteral("не е доставка или изписване")};
        const double kol = row.value(QStringLiteral("Kol")).toDouble();
        if (kind == QLatin1String("P")) {
            if (!(kol > 0) || !toQuantity(kol))
                return ValueFault{table, id, QStringLiteral("Kol"), QStringLiteral("количеството на доставката е недопустимо")};
            const QVariant ostat = row.value(QStringLiteral("Ostat"));
            if (!ostat.isNull() && storedQuantity(ostat.toDouble()) > storedQuantity(kol))
                return ValueFault{table, id, QStringLiteral("Ostat"), QStringLiteral("остатъкът е по-голям от доставеното")};
        }
    }
    return std::nullopt;
}

// The stock on hand of each name is what its open receipts still hold.
std::optional<ValueFault> stockFault(QSqlDatabase db)
{
    QSqlQuery query(db);
    query.setForwardOnly(true);
    // The tables themselves are read, never an index that is not unique.
    if (!query.exec(QStringLiteral("SELECT n.id, n.Broi, COALESCE(s.total, 0.0) FROM Nalich n NOT INDEXED LEFT JOIN "
                                   "(SELECT Name, TOTAL(Ostat) AS total FROM Sklad NOT INDEXED WHERE VidKol = 'P' AND Lipsa = 0 "
                                   "GROUP BY Name) s ON s.Name = n.Name ORDER BY n.id")))
        return ValueFault{QStringLiteral("Nalich"), 0, QString(), engineText(query.lastError())};
    while (query.next()) {
        if (storedQuantity(query.value(1).toDouble()) != storedQuantity(query.value(2).toDouble()))
            return ValueFault{QStringLiteral("Nalich"), query.value(0).toLongLong(), QStringLiteral("Broi"),
                              QStringLiteral("наличността не отговаря на остатъците на доставките")};
    }
    if (!query.exec(QStringLiteral("SELECT s.id FROM Sklad s NOT INDEXED WHERE s.VidKol = 'P' AND s.Lipsa = 0 AND s.Ostat > 0 "
                                   "AND NOT EXISTS (SELECT 1 FROM Nalich n WHERE n.Name = s.Name) ORDER BY s.id LIMIT 1")))
        return ValueFault{QStringLiteral("Sklad"), 0, QString(), engineText(query.lastError())};
    if (query.next())
        return ValueFault{QStringLiteral("Sklad"), query.value(0).toLongLong(), QStringLiteral("Ostat"),
                          QStringLiteral("остатък на доставка без наличност")};
    return std::nullopt;
}

}

std::optional<Fault> readSchemaObjects(QSqlDatabase db, QList<SchemaObject> &out)
{
    out.clear();
    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("SELECT type, name, tbl_name, sql FROM sqlite_master")))
        return engineFault(query.lastError());
    while (query.next())
        out.append({query.value(0).toString(), query.value(1).toString(), query.value(2).toString(),
                    query.value(3).toString().simplified()});
    return std::nullopt;
}

std::optional<Fault> makeSchemaAt(QSqlDatabase db, const QList<int> &versions)
{
    // A step runs when its version is not recorded: the others are recorded first, so that only
    // the archive's own steps run, and are struck off again afterwards.
    QList<int> others;
    for (int version = 1; version <= latestSchemaVersion(); ++version) {
        if (isKnownSchemaVersion(version) && !versions.contains(version))
            others.append(version);
    }
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("CREATE TABLE zarek_schema (version INTEGER NOT NULL)")))
        return engineFault(query.lastError());
    for (int version : std::as_const(others)) {
        query.prepare(QStringLiteral("INSERT INTO zarek_schema (version) VALUES (?)"));
        query.addBindValue(version);
        if (!query.exec())
            return engineFault(query.lastError());
    }
    if (auto failure = upgradeSchema(db))
        return Fault{failure->text.section(QLatin1Char('\n'), 0, 0)};
    for (int version : std::as_const(others)) {
        query.prepare(QStringLiteral("DELETE FROM zarek_schema WHERE version = ?"));
        query.addBindValue(version);
        if (!query.exec())
            return engineFault(query.lastError());
    }
    return std::nullopt;
}

QString foreignObjects(const QList<SchemaObject> &archive, const QList<SchemaObject> &own)
{
    QStringList kinds;
    for (const SchemaObject &object : archive) {
        if (own.contains(object) || isEngineStatistics(object))
            continue;
        const QString words = kindWords(object.type);
        if (!kinds.contains(words))
            kinds.append(words);
    }
    return kinds.join(QStringLiteral(", "));
}

bool lacksTables(const QList<SchemaObject> &archive, const QList<SchemaObject> &own)
{
    return std::any_of(own.begin(), own.end(), [&](const SchemaObject &object) {
        return object.type == QLatin1String("table")
               && std::none_of(archive.begin(), archive.end(), [&](const SchemaObject &other) {
                      return other.type == object.type && other.name == object.name;
                  });
    });
}

QString tableCaption(const QString &table)
{
    static const QHash<QString, QString> captions = {
        {QStringLiteral("tabl"), QStringLiteral("Курсове")},
        {QStringLiteral("shof"), QStringLiteral("Шофьори")},
        {QStringLiteral("Config"), QStringLiteral("Коли")},
        {QStringLiteral("Tarifi"), QStringLiteral("Тарифи")},
        {QStringLiteral("ZarekCfg"), QStringLiteral("Данни за фирмата")},
        {QStringLiteral("Users"), QStringLiteral("Потребители")},
        {QStringLiteral("Sklad"), QStringLiteral("Складови документи")},
        {QStringLiteral("Nalich"), QStringLiteral("Наличност")},
        {QStringLiteral("RowdList"), QStringLiteral("Пътни листове")},
        {QStringLiteral("Marsh"), QStringLiteral("Маршрути на пътните листове")},
        {QStringLiteral("ExternalKurs"), QStringLiteral("Международни курсове")},
        {QStringLiteral("Firms"), QStringLiteral("Изпращачи и получатели")},
        {QStringLiteral("SkladLots"), QStringLiteral("Изписани партиди")},
        {QStringLiteral("Evro"), QStringLiteral("Преминаване към евро")},
        {QStringLiteral("EvroFakt"), QStringLiteral("Фактури в евро")},
        {QStringLiteral("EvroSklad"), QStringLiteral("Цени в евро на доставките")},
        {QStringLiteral("Fakturi"), QStringLiteral("Издадени фактури")},
        {QStringLiteral("DokVid"), QStringLiteral("Видове документи")},
        {QStringLiteral("Dokumenti"), QStringLiteral("Документи")},
        {QStringLiteral("DokScan"), QStringLiteral("Сканирани документи")},
        {QStringLiteral("Klienti"), QStringLiteral("Клиенти")},
        {QStringLiteral("Nomerator"), QStringLiteral("Номерация на документите")},
        {QStringLiteral("FaktDok"), QStringLiteral("Данъчни документи")},
        {QStringLiteral("FaktRed"), QStringLiteral("Редове на данъчните документи")},
        {QStringLiteral("Plashtania"), QStringLiteral("Плащания от клиенти")},
        {QStringLiteral("Pogasiavania"), QStringLiteral("Погасявания")},
    };
    return captions.value(table, table);
}

QString describe(const ValueFault &fault)
{
    QString where = tableCaption(fault.table);
    if (fault.id > 0)
        where += QStringLiteral(", ред № %1").arg(fault.id);
    if (!fault.column.isEmpty())
        where += QStringLiteral(", поле %1").arg(fault.column);
    return where + QStringLiteral(": ") + fault.fault;
}

std::optional<ValueFault> checkStoredValues(QSqlDatabase db)
{
    // The rules in SQL rely on the text being UTF-8, as the program writes it.
    bool utf8 = false;
    {
        QSqlQuery encoding(db);
        utf8 = encoding.exec(QStringLiteral("PRAGMA encoding")) && encoding.next()
               && encoding.value(0).toString() == QLatin1String("UTF-8");
    }
    for (const SchemaTable &table : schemaTables()) {
        const QList<Column> columns = columnsOf(db, table.name);
        if (columns.isEmpty())
            return ValueFault{table.name, 0, QString(), QStringLiteral("таблицата липсва")};
        QList<Limits> limits;
        QStringList select;
        QStringList clean;
        for (const Column &column : columns) {
            limits.append(limitsOf(table.name, column.name));
            select << QStringLiteral("typeof(%1)").arg(quoted(column.name)) << quoted(column.name);
            clean << QStringLiteral("COALESCE(%1, 0)").arg(cleanValue(column, limits.last()));
        }
        clean << QStringLiteral("COALESCE(%1, 0)").arg(cleanRow(table.name)) << QStringLiteral("COALESCE(%1, 0)").arg(cleanTexts(columns));
        const QString suspect = utf8 ? QStringLiteral("NOT (%1)").arg(clean.join(QStringLiteral(" AND "))) : QStringLiteral("1");
        QSqlQuery query(db);
        query.setForwardOnly(true);
        if (!query.exec(QStringLiteral("SELECT %1 FROM %2 NOT INDEXED WHERE %3 ORDER BY rowid")
                            .arg(select.join(QStringLiteral(", ")), quoted(table.name), suspect)))
            return ValueFault{table.name, 0, QString(), engineText(query.lastError())};
        QHash<QString, QVariant> row;
        while (query.next()) {
            row.clear();
            const qint64 id = query.value(1).toLongLong();
            for (int i = 0; i < columns.size(); ++i) {
                const QString storage = query.value(2 * i).toString();
                const QVariant value = query.value(2 * i + 1);
                if (auto fault = valueFault(columns.at(i), limits.at(i), storage, value))
                    return ValueFault{table.name, id, columns.at(i).name, *fault};
                row.insert(columns.at(i).name, value);
            }
            if (auto fault = rowFault(table.name, id, row))
                return fault;
        }
        if (query.lastError().isValid())
            return ValueFault{table.name, 0, QString(), engineText(query.lastError())};
    }
    return stockFault(db);
}

}
