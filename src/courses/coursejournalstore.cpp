#include "courses/coursejournalstore.h"

#include "data/dialect.h"
#include "data/sqlerror.h"

#include <QCollator>
#include <QLocale>
#include <QSqlError>
#include <QSqlQuery>
#include <algorithm>
#include <numeric>

namespace zarek {

namespace {

const QString readTitle = QStringLiteral("ГРЕШКА при четене!");

QStringList distinctValues(QSqlDatabase db, const QString &column, QString *error)
{
    QSqlQuery query(db);
    query.setForwardOnly(true);
    QStringList values;
    if (!query.exec(QStringLiteral("SELECT DISTINCT %1 FROM tabl WHERE %1 IS NOT NULL").arg(column))) {
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
    QStringList marks;
    for (const QString &value : values) {
        marks.append(QStringLiteral("?"));
        bound.append(value);
    }
    conditions.append(QStringLiteral("%1 IN (%2)").arg(column, marks.join(QLatin1Char(','))));
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
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("SELECT kod, ime FROM shof ORDER BY id")))
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
    const QString column = QString::fromLatin1(columnName(sortColumn));
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    const bool text = isTextColumn(sortColumn);
    // Numbers, dates and marks sort in the engine; texts are ranked here by the Bulgarian alphabet.
    const QString order = text ? QString()
                               : QStringLiteral(" ORDER BY %1 %2, id %2").arg(column, ascending ? QStringLiteral("ASC")
                                                                                                : QStringLiteral("DESC"));
    query.prepare(QStringLiteral("SELECT id, %1, data FROM tabl").arg(column) + condition.sql + order);
    for (const QVariant &value : condition.values)
        query.addBindValue(value);
    if (!query.exec())
        return sqlErrorMessage(readTitle, query.lastError());
    QList<qint64> ids;
    if (!text) {
        while (query.next())
            ids.append(query.value(0).toLongLong());
        return ids;
    }
    struct Keyed {
        qint64 id;
        int rank;
        QDate date;
    };
    QList<Keyed> keyed;
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
        keyed.append({query.value(0).toLongLong(), *found, dateOf(query.value(2))});
    }
    // Rank the few distinct values once with the collator, then sort the many rows by rank.
    QList<int> order_(distinct.size());
    std::iota(order_.begin(), order_.end(), 0);
    QCollator collator{QLocale(QLocale::Bulgarian, QLocale::Bulgaria)};
    std::sort(order_.begin(), order_.end(), [&](int a, int b) { return collator.compare(distinct[a], distinct[b]) < 0; });
    QList<int> rankOf(distinct.size());
    for (int i = 0; i < order_.size(); ++i)
        rankOf[order_[i]] = i;
    std::sort(keyed.begin(), keyed.end(), [&](const Keyed &a, const Keyed &b) {
        const int ra = rankOf[a.rank], rb = rankOf[b.rank];
        if (ra != rb)
            return ascending ? ra < rb : ra > rb;
        if (a.date != b.date)
            return a.date < b.date;
        return a.id < b.id;
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
    QStringList marks;
    QVariantList values;
    for (qint64 id : ids) {
        marks.append(QStringLiteral("?"));
        values.append(id);
    }
    return read(QStringLiteral(" WHERE id IN (%1)").arg(marks.join(QLatin1Char(','))), values);
}

Checked<QHash<qint64, JournalRow>> CourseJournalStore::allRows(const JournalFilter &filter) const
{
    QHash<qint64, JournalRow> byId;
    const Where condition = where(filter);
    if (condition.nothing)
        return byId;
    const Checked<QList<JournalRow>> rows = read(condition.sql, condition.values);
    if (!rows)
        return rows.message();
    byId.reserve(rows.value().size());
    for (const JournalRow &row : rows.value())
        byId.insert(row.id, row);
    return byId;
}

Checked<QList<JournalRow>> CourseJournalStore::read(const QString &condition, const QVariantList &values) const
{
    QList<JournalRow> out;
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    query.prepare(QStringLiteral("SELECT id, data, kod, kola, Klient, Marsh, Tovar, ton, km, Tarifa, bruto, NomFakt, "
                                 "Fakt, plat FROM tabl") + condition);
    for (const QVariant &value : values)
        query.addBindValue(value);
    if (!query.exec())
        return sqlErrorMessage(readTitle, query.lastError());
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

Checked<JournalTotals> CourseJournalStore::totals(const JournalFilter &filter) const
{
    JournalTotals totals;
    const Where condition = where(filter);
    if (condition.nothing)
        return totals;
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    // Gross in whole stotinki, so the sum of many rows has no binary drift.
    query.prepare(QStringLiteral("SELECT COUNT(*), SUM(ton), SUM(km), SUM(ROUND(bruto * 100)) FROM tabl") + condition.sql);
    for (const QVariant &value : condition.values)
        query.addBindValue(value);
    if (!query.exec() || !query.next())
        return sqlErrorMessage(readTitle, query.lastError());
    totals.count = query.value(0).toInt();
    totals.tonnes = query.value(1).toDouble();
    totals.km = query.value(2).toDouble();
    totals.gross = query.value(3).toDouble() / 100.0;
    return totals;
}

Checked<QList<QPair<QString, double>>> CourseJournalStore::monthlyGross(const JournalFilter &filter) const
{
    QList<QPair<QString, double>> months;
    const Where condition = where(filter);
    if (condition.nothing)
        return months;
    const QString month = dialectOf(m_db) == Dialect::PostgreSQL ? QStringLiteral("to_char(data, 'YYYY-MM')")
                                                                   : QStringLiteral("substr(data, 1, 7)");
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    query.prepare(QStringLiteral("SELECT %1, SUM(ROUND(bruto * 100)) FROM tabl").arg(month) + condition.sql
                  + QStringLiteral(" GROUP BY 1 ORDER BY 1"));
    for (const QVariant &value : condition.values)
        query.addBindValue(value);
    if (!query.exec())
        return sqlErrorMessage(readTitle, query.lastError());
    while (query.next())
        months.append({query.value(0).toString(), query.value(1).toDouble() / 100.0});
    return months;
}

}
