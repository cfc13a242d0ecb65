#include "courses/coursejournalstore.h"

#include "data/currencyrows.h"
#include "data/dialect.h"
#include "data/query.h"
#include "data/sqlerror.h"
#include "data/textlist.h"

#include <QCollator>
#include <QLocale>
#include <QSqlError>
#include <algorithm>
#include <cmath>
#include <numeric>

namespace zarek {

namespace {

const QString readTitle = QStringLiteral("ГРЕШКА при четене!");

QStringList distinctValues(QSqlDatabase db, const QString &column, QString *error)
{
    Query query(db, distinctValuesQuery(QStringLiteral("tabl"), column));
    QStringList values;
    if (query.run(readTitle)) {
        *error = query.lastError().text();
        return values;
    }
    while (query.next())
        values.append(query.value(0).toString());
    return values;
}

QStringList containing(const QStringList &values, const QString &text)
{
    QStringList found;
    for (const QString &value : values) {
        if (value.contains(text, Qt::CaseInsensitive))
            found.append(value);
    }
    return found;
}

void appendIn(QStringList &conditions, QVariantList &bound, const QString &column, const QStringList &values)
{
    for (const QString &value : values)
        bound.append(value);
    conditions.append(QStringLiteral("%1 IN (%2)").arg(column, placeholders(values.size())));
}

const char *columnName(JournalColumn column)
{
    switch (column) {
    case JournalColumn::Date: return "data";
    case JournalColumn::Driver: return "kod";
    case JournalColumn::Truck: return "kola";
    case JournalColumn::Client: return "Klient";
    case JournalColumn::Route: return "Marsh";
    case JournalColumn::Cargo: return "Tovar";
    case JournalColumn::Tonnes: return "ton";
    case JournalColumn::Km: return "km";
    case JournalColumn::Rate: return "Tarifa";
    case JournalColumn::Gross: return "bruto";
    case JournalColumn::Invoice: return "NomFakt";
    case JournalColumn::Invoiced: return "Fakt";
    case JournalColumn::Paid: return "plat";
    }
    return "data";
}

bool isTextColumn(JournalColumn column)
{
    return column == JournalColumn::Driver || column == JournalColumn::Truck || column == JournalColumn::Client
           || column == JournalColumn::Route || column == JournalColumn::Cargo;
}

QDate dateOf(const QVariant &value)
{
    if (value.metaType().id() == QMetaType::QDate)
        return value.toDate();
    return QDate::fromString(value.toString().left(10), Qt::ISODate);
}

}

QVariant JournalRow::value(JournalColumn column) const
{
    switch (column) {
    case JournalColumn::Date: return date;
    case JournalColumn::Driver: return driverName.isEmpty() ? driverCode : driverName;
    case JournalColumn::Truck: return truck;
    case JournalColumn::Client: return client;
    case JournalColumn::Route: return route;
    case JournalColumn::Cargo: return cargo;
    case JournalColumn::Tonnes: return tonnes;
    case JournalColumn::Km: return km;
    case JournalColumn::Rate: return rate;
    case JournalColumn::Gross: return gross;
    case JournalColumn::Invoice: return invoice;
    case JournalColumn::Invoiced: return invoiced;
    case JournalColumn::Paid: return paid;
    }
    return {};
}

CourseJournalStore::CourseJournalStore(QSqlDatabase db) : m_db(std::move(db)) {}

std::optional<UserMessage> CourseJournalStore::refreshLists()
{
    QString error;
    m_trucks = distinctValues(m_db, QStringLiteral("kola"), &error);
    m_clients = distinctValues(m_db, QStringLiteral("Klient"), &error);
    m_routes = distinctValues(m_db, QStringLiteral("Marsh"), &error);
    m_cargoes = distinctValues(m_db, QStringLiteral("Tovar"), &error);
    m_driverCodes = distinctValues(m_db, QStringLiteral("kod"), &error);
    m_driverNames.clear();
    Query query(m_db, QStringLiteral("SELECT kod, ime FROM shof ORDER BY id"));
    if (query.run(readTitle))
        error = query.lastError().text();
    while (query.next()) {
        const QString code = query.value(0).toString().trimmed();
        if (!m_driverNames.contains(code))
            m_driverNames.insert(code, query.value(1).toString().trimmed());
    }
    if (!error.isEmpty())
        return UserMessage{readTitle, error, UserMessage::Icon::Critical};
    QCollator collator{QLocale(QLocale::Bulgarian, QLocale::Bulgaria)};
    for (QStringList *list : {&m_trucks, &m_clients})
        std::sort(list->begin(), list->end(), collator);
    return std::nullopt;
}

CourseJournalStore::Where CourseJournalStore::where(const JournalFilter &filter) const
{
    Where out;
    QStringList conditions;
    if (filter.from.isValid()) {
        conditions.append(QStringLiteral("data >= ?"));
        out.values.append(filter.from);
    }
    if (filter.to.isValid()) {
        conditions.append(QStringLiteral("data <= ?"));
        out.values.append(filter.to);
    }
    const auto textCondition = [&](const QString &typed, const QString &column, const QStringList &values) {
        const QString text = typed.trimmed();
        if (text.isEmpty())
            return;
        const QStringList matching = containing(values, text);
        if (matching.isEmpty())
            out.nothing = true;
        else
            appendIn(conditions, out.values, column, matching);
    };
    textCondition(filter.truck, QStringLiteral("kola"), m_trucks);
    textCondition(filter.client, QStringLiteral("Klient"), m_clients);
    if (const QString driver = filter.driver.trimmed(); !driver.isEmpty()) {
        QStringList codes;
        for (const QString &code : m_driverCodes) {
            if (code.contains(driver, Qt::CaseInsensitive)
                || m_driverNames.value(code.trimmed()).contains(driver, Qt::CaseInsensitive))
                codes.append(code);
        }
        if (codes.isEmpty())
            out.nothing = true;
        else
            appendIn(conditions, out.values, QStringLiteral("kod"), codes);
    }
    if (const QString text = filter.text.trimmed(); !text.isEmpty()) {
        const QStringList routes = containing(m_routes, text);
        const QStringList cargoes = containing(m_cargoes, text);
        if (routes.isEmpty() && cargoes.isEmpty()) {
            out.nothing = true;
        } else {
            QStringList either;
            if (!routes.isEmpty())
                appendIn(either, out.values, QStringLiteral("Marsh"), routes);
            if (!cargoes.isEmpty())
                appendIn(either, out.values, QStringLiteral("Tovar"), cargoes);
            conditions.append(QLatin1Char('(') + either.join(QStringLiteral(" OR ")) + QLatin1Char(')'));
        }
    }
    const auto markCondition = [&](JournalFilter::Mark mark, const QString &column) {
        if (mark == JournalFilter::Mark::All)
            return;
        conditions.append(column + QStringLiteral(" = ?"));
        out.values.append(mark == JournalFilter::Mark::Yes);
    };
    markCondition(filter.invoiced, QStringLiteral("Fakt"));
    markCondition(filter.paid, QStringLiteral("plat"));
    if (!conditions.isEmpty())
        out.sql = QStringLiteral(" WHERE ") + conditions.join(QStringLiteral(" AND "));
    return out;
}

Checked<QList<qint64>> CourseJournalStore::orderedIds(const JournalFilter &filter, JournalColumn sortColumn,
                                                       bool ascending) const
{
    const Where condition = where(filter);
    if (condition.nothing)
        return QList<qint64>{};
    // The engine gives the rows by date (its index); any other order is a stable sort here, so
    // equal values stay by date, texts go by the Bulgarian alphabet on both engines, and no
    // column needs an index of its own.
    const bool byDate = sortColumn == JournalColumn::Date;
    const QString column = QString::fromLatin1(columnName(sortColumn));
    Query query(m_db,
                (byDate ? QStringLiteral("SELECT id FROM tabl") : QStringLiteral("SELECT id, %1 FROM tabl").arg(column))
                    + condition.sql + QStringLiteral(" ORDER BY data, id"));
    if (auto failure = query.run(readTitle, condition.values))
        return *failure;
    QList<qint64> ids;
    if (byDate) {
        while (query.next())
            ids.append(query.value(0).toLongLong());
        if (!ascending)
            std::reverse(ids.begin(), ids.end());
        return ids;
    }
    struct Keyed {
        qint64 id;
        double key;
    };
    QList<Keyed> keyed;
    if (isTextColumn(sortColumn)) {
        QHash<QString, int> ranks;
        QList<QString> distinct;
        while (query.next()) {
            QString value = query.value(1).toString();
            if (sortColumn == JournalColumn::Driver)
                value = m_driverNames.value(value.trimmed(), value);
            auto found = ranks.constFind(value);
            if (found == ranks.constEnd()) {
                found = ranks.insert(value, static_cast<int>(distinct.size()));
                distinct.append(value);
            }
            keyed.append({query.value(0).toLongLong(), static_cast<double>(*found)});
        }
        // The few distinct values are ranked once by the collator; the many rows sort by rank.
        QList<int> byAlphabet(distinct.size());
        std::iota(byAlphabet.begin(), byAlphabet.end(), 0);
        QCollator collator{QLocale(QLocale::Bulgarian, QLocale::Bulgaria)};
        std::sort(byAlphabet.begin(), byAlphabet.end(),
                  [&](int a, int b) { return collator.compare(distinct[a], distinct[b]) < 0; });
        QList<double> rankOf(distinct.size());
        for (int i = 0; i < byAlphabet.size(); ++i)
            rankOf[byAlphabet[i]] = i;
        for (Keyed &k : keyed)
            k.key = rankOf[static_cast<int>(k.key)];
    } else if (sortColumn == JournalColumn::Invoice) {
        while (query.next())
            keyed.append({query.value(0).toLongLong(), query.value(1).toString().toDouble()});
    } else {
        while (query.next())
            keyed.append({query.value(0).toLongLong(), query.value(1).toDouble()});
    }
    std::stable_sort(keyed.begin(), keyed.end(), [ascending](const Keyed &a, const Keyed &b) {
        return ascending ? a.key < b.key : a.key > b.key;
    });
    ids.reserve(keyed.size());
    for (const Keyed &k : std::as_const(keyed))
        ids.append(k.id);
    return ids;
}

Checked<QList<JournalRow>> CourseJournalStore::rows(const QList<qint64> &ids) const
{
    if (ids.isEmpty())
        return QList<JournalRow>{};
    QVariantList values;
    for (qint64 id : ids)
        values.append(id);
    return read(QStringLiteral(" WHERE id IN (%1)").arg(placeholders(ids.size())), values);
}

Checked<QList<JournalRow>> CourseJournalStore::allRows(const JournalFilter &filter) const
{
    const Where condition = where(filter);
    if (condition.nothing)
        return QList<JournalRow>{};
    return read(condition.sql, condition.values);
}

Checked<QList<JournalRow>> CourseJournalStore::read(const QString &condition, const QVariantList &values) const
{
    QList<JournalRow> out;
    Query query(m_db,
                QStringLiteral("SELECT id, data, kod, kola, Klient, Marsh, Tovar, ton, km, Tarifa, bruto, "
                               "NomFakt, Fakt, plat FROM tabl")
                    + condition);
    if (auto failure = query.run(readTitle, values))
        return *failure;
    while (query.next()) {
        JournalRow row;
        row.id = query.value(0).toLongLong();
        row.date = dateOf(query.value(1));
        row.driverCode = query.value(2).toString();
        row.driverName = m_driverNames.value(row.driverCode.trimmed());
        row.truck = query.value(3).toString();
        row.client = query.value(4).toString();
        row.route = query.value(5).toString();
        row.cargo = query.value(6).toString();
        row.tonnes = query.value(7).toDouble();
        row.km = query.value(8).toDouble();
        row.rate = query.value(9).toDouble();
        row.gross = query.value(10).toDouble();
        row.invoice = query.value(11).toString();
        row.invoiced = query.value(12).toBool();
        row.paid = query.value(13).toBool();
        out.append(row);
    }
    return out;
}

Checked<JournalSummary> CourseJournalStore::summary(const JournalFilter &filter, const Changeover &changeover) const
{
    JournalSummary summary;
    const Where condition = where(filter);
    if (condition.nothing)
        return summary;
    const QString month = dialectOf(m_db) == Dialect::PostgreSQL ? QStringLiteral("to_char(data, 'YYYY-MM')")
                                                                   : QStringLiteral("substr(data, 1, 7)");
    // One pass over the rows for both; gross in whole stotinki, so many rows add up without drift.
    // The money of the days from the changeover is in euro, that of the days before in leva.
    const QString cents = QStringLiteral("ROUND(bruto * 100)");
    const QString none = QStringLiteral("0");
    const SqlPart euro = byRowCurrency(QStringLiteral("data"), changeover, cents, none);
    const SqlPart leva = byRowCurrency(QStringLiteral("data"), changeover, none, cents);
    const SqlPart euroCount = byRowCurrency(QStringLiteral("data"), changeover, QStringLiteral("1"), none);
    Query query(m_db, QStringLiteral("SELECT %1, COUNT(*), SUM(ton), SUM(km), SUM(%2), SUM(%3), SUM(%4) FROM tabl")
                          .arg(month, euro.sql, leva.sql, euroCount.sql)
                      + condition.sql + QStringLiteral(" GROUP BY 1 ORDER BY 1"));
    if (auto failure = query.run(readTitle, euro.values + leva.values + euroCount.values + condition.values))
        return *failure;
    struct Month {
        QString name;
        qint64 euro, leva;
    };
    QList<Month> months;
    bool anyEuro = false;
    bool anyLeva = false;
    while (query.next()) {
        const int count = query.value(1).toInt();
        const int euroCount = query.value(6).toInt();
        summary.totals.count += count;
        summary.totals.tonnes += query.value(2).toDouble();
        summary.totals.km += query.value(3).toDouble();
        anyEuro = anyEuro || euroCount > 0;
        anyLeva = anyLeva || euroCount < count;
        months.append({query.value(0).toString(), static_cast<qint64>(std::llround(query.value(4).toDouble())),
                       static_cast<qint64>(std::llround(query.value(5).toDouble()))});
    }
    summary.totals.currency = totalsCurrency(anyEuro);
    summary.totals.converted = anyEuro && anyLeva;
    Money gross;
    for (const Month &m : std::as_const(months)) {
        const Money value = Money::fromCents(m.euro)
                            + convertAmount(Money::fromCents(m.leva), Currency::Leva, summary.totals.currency);
        gross += value;
        summary.months.append({m.name, value.toDouble()});
    }
    summary.totals.gross = gross.toDouble();
    return summary;
}

}
