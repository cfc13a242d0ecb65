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

const QString columnsRead = QStringLiteral(
    "SELECT tabl.id, data, kod, kola, Klient, Marsh, Tovar, ton, km, Tarifa, bruto, NomFakt, Fakt, plat FROM tabl");

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
    for (auto &list : m_lists)
        list.reset();
    m_driverNames.clear();
    Query query(m_db, QStringLiteral("SELECT kod, ime FROM shof ORDER BY id"));
    if (auto failure = query.run(readTitle))
        return failure;
    while (query.next()) {
        const QString code = query.value(0).toString().trimmed();
        if (!m_driverNames.contains(code))
            m_driverNames.insert(code, query.value(1).toString().trimmed());
    }
    return std::nullopt;
}

const QStringList &CourseJournalStore::list(List which) const
{
    std::optional<QStringList> &list = m_lists[which];
    if (!list) {
        static const char *const columns[ListCount] = {"kola", "Klient", "Marsh", "Tovar", "kod"};
        QString error;  // a list that cannot be read matches nothing; the rows' reading tells why
        list = distinctValues(m_db, QString::fromLatin1(columns[which]), &error);
        if (which == Trucks || which == Clients) {
            QCollator collator{QLocale(QLocale::Bulgarian, QLocale::Bulgaria)};
            std::sort(list->begin(), list->end(), collator);
        }
    }
    return *list;
}

const QStringList &CourseJournalStore::trucks() const
{
    return list(Trucks);
}

const QStringList &CourseJournalStore::clients() const
{
    return list(Clients);
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
    const auto textCondition = [&](const QString &typed, const QString &column, List values) {
        const QString text = typed.trimmed();
        if (text.isEmpty())
            return;
        const QStringList matching = containing(list(values), text);
        if (matching.isEmpty())
            out.nothing = true;
        else
            appendIn(conditions, out.values, column, matching);
    };
    textCondition(filter.truck, QStringLiteral("kola"), Trucks);
    textCondition(filter.client, QStringLiteral("Klient"), Clients);
    if (const QString driver = filter.driver.trimmed(); !driver.isEmpty()) {
        QStringList codes;
        for (const QString &code : list(DriverCodes)) {
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
        const QStringList routes = containing(list(Routes), text);
        const QStringList cargoes = containing(list(Cargoes), text);
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

CourseJournalStore::Order CourseJournalStore::order(JournalColumn sortColumn, bool ascending) const
{
    Order out;
    const QString direction = ascending ? QStringLiteral(" ASC") : QStringLiteral(" DESC");
    if (sortColumn == JournalColumn::Date) {
        out.by = QStringLiteral(" ORDER BY data%1, id%1").arg(direction);
        return out;
    }
    // Any other order keeps equal values by date, as the newest-first list had them.
    const QString ties = QStringLiteral(", data, id");
    const QString column = QString::fromLatin1(columnName(sortColumn));
    if (!isTextColumn(sortColumn)) {
        const bool number = sortColumn != JournalColumn::Invoice && sortColumn != JournalColumn::Invoiced
                            && sortColumn != JournalColumn::Paid;
        out.by = QStringLiteral(" ORDER BY ") + (number ? QStringLiteral("COALESCE(%1, 0)").arg(column) : column)
                 + direction + ties;
        return out;
    }
    // Texts go by the Bulgarian alphabet on both engines: the few stored values are ranked once by
    // the collator, and the database orders the rows by the rank of their value. A driver goes by
    // his name, or by his code when he has none.
    const QStringList &values = list(sortColumn == JournalColumn::Truck    ? Trucks
                                      : sortColumn == JournalColumn::Client ? Clients
                                      : sortColumn == JournalColumn::Route  ? Routes
                                      : sortColumn == JournalColumn::Cargo  ? Cargoes
                                                                            : DriverCodes);
    if (values.isEmpty()) {
        out.by = QStringLiteral(" ORDER BY data, id");
        return out;
    }
    QStringList keys;
    for (const QString &value : values)
        keys.append(sortColumn == JournalColumn::Driver ? m_driverNames.value(value.trimmed(), value) : value);
    QList<int> byAlphabet(values.size());
    std::iota(byAlphabet.begin(), byAlphabet.end(), 0);
    QCollator collator{QLocale(QLocale::Bulgarian, QLocale::Bulgaria)};
    std::stable_sort(byAlphabet.begin(), byAlphabet.end(),
                     [&](int a, int b) { return collator.compare(keys[a], keys[b]) < 0; });
    QStringList ranks;
    int rank = -1;
    for (int i = 0; i < byAlphabet.size(); ++i) {
        // Equal names (two codes of one driver) share a rank, so their courses stay by date.
        if (i == 0 || collator.compare(keys[byAlphabet[i - 1]], keys[byAlphabet[i]]) != 0)
            ++rank;
        ranks.append(QStringLiteral("(?, %1)").arg(rank));
        out.values.append(values[byAlphabet[i]]);
    }
    out.with = QStringLiteral("WITH journal_rank(v, k) AS (VALUES %1) ").arg(ranks.join(QStringLiteral(", ")));
    out.join = QStringLiteral(" LEFT JOIN journal_rank ON journal_rank.v = tabl.%1").arg(column);
    out.by = QStringLiteral(" ORDER BY COALESCE(journal_rank.k, -1)") + direction + ties;
    return out;
}

Checked<int> CourseJournalStore::count(const JournalFilter &filter) const
{
    const Where condition = where(filter);
    if (condition.nothing)
        return 0;
    const Checked<QVariant> count = scalar(m_db, readTitle, QStringLiteral("SELECT COUNT(*) FROM tabl") + condition.sql,
                                           condition.values);
    if (!count)
        return count.message();
    return count.value().toInt();
}

Checked<QList<qint64>> CourseJournalStore::orderedIds(const JournalFilter &filter, JournalColumn sortColumn,
                                                       bool ascending) const
{
    const Where condition = where(filter);
    if (condition.nothing)
        return QList<qint64>{};
    const Order by = order(sortColumn, ascending);
    Query query(m_db, by.with + QStringLiteral("SELECT tabl.id FROM tabl") + by.join + condition.sql + by.by);
    if (auto failure = query.run(readTitle, by.values + condition.values))
        return *failure;
    QList<qint64> ids;
    while (query.next())
        ids.append(query.value(0).toLongLong());
    if (auto failure = query.readFailure(readTitle))
        return *failure;
    return ids;
}

Checked<QList<JournalRow>> CourseJournalStore::page(const JournalFilter &filter, JournalColumn sortColumn,
                                                   bool ascending, int offset, int limit) const
{
    const Where condition = where(filter);
    if (condition.nothing || limit <= 0)
        return QList<JournalRow>{};
    const Order by = order(sortColumn, ascending);
    return read(by.with + columnsRead + by.join + condition.sql + by.by + QStringLiteral(" LIMIT ? OFFSET ?"),
                by.values + condition.values + QVariantList{limit, std::max(0, offset)});
}

Checked<QList<JournalRow>> CourseJournalStore::allRows(const JournalFilter &filter, JournalColumn sortColumn,
                                                      bool ascending) const
{
    const Where condition = where(filter);
    if (condition.nothing)
        return QList<JournalRow>{};
    const Order by = order(sortColumn, ascending);
    return read(by.with + columnsRead + by.join + condition.sql + by.by, by.values + condition.values);
}

Checked<QList<JournalRow>> CourseJournalStore::read(const QString &sql, const QVariantList &values) const
{
    QList<JournalRow> out;
    Query query(m_db, sql);
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
    if (auto failure = query.readFailure(readTitle))
        return *failure;
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
