#include "recordstore.h"

#include "data/query.h"
#include "data/sqlerror.h"

#include <QSqlRecord>

#include <algorithm>

namespace zarek {

RecordStore::RecordStore(QSqlDatabase db, QString table, QStringList columns, QString orderBy, QString where,
                         QVariantList whereValues)
    : m_db(std::move(db)), m_table(std::move(table)), m_columns(std::move(columns)), m_orderBy(std::move(orderBy)),
      m_where(std::move(where)), m_whereValues(std::move(whereValues))
{
}

void RecordStore::setWhere(QString where, QVariantList values)
{
    m_where = std::move(where);
    m_whereValues = std::move(values);
}

QString RecordStore::valueName(const QString &column)
{
    if (column.size() > 1 && column.startsWith(QLatin1Char('"')) && column.endsWith(QLatin1Char('"')))
        return column.mid(1, column.size() - 2);
    return column;
}

namespace {

// The order turned round, term by term.
QString reversedOrder(const QString &orderBy)
{
    QStringList terms;
    for (const QString &term : orderBy.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        QString t = term.trimmed();
        if (t.endsWith(QLatin1String(" DESC"), Qt::CaseInsensitive))
            t.chop(5);
        else
            t += QStringLiteral(" DESC");
        terms.append(t);
    }
    return terms.join(QStringLiteral(", "));
}

}

Checked<QList<RecordRow>> RecordStore::read(const QString &columns, const QString &where, const QVariantList &values,
                                            bool withValues, const QString &errorTitle, const QString &tail,
                                            bool reversed) const
{
    QString sql = QStringLiteral("SELECT id, row_version%1 FROM %2").arg(columns, m_table);
    if (!where.isEmpty())
        sql += QStringLiteral(" WHERE ") + where;
    const QString order = reversed ? reversedOrder(m_orderBy) : m_orderBy;
    sql += QStringLiteral(" ORDER BY ") + (order.isEmpty() ? QString() : order + QStringLiteral(", ")) +
           (reversed ? QStringLiteral("id DESC") : QStringLiteral("id")) + tail;
    Query query(m_db, sql);
    if (auto failure = query.run(errorTitle, values))
        return *failure;
    QStringList names;
    for (const QString &column : m_columns)
        names.append(valueName(column));
    QList<RecordRow> rows;
    while (query.next()) {
        RecordRow row{query.value(0).toLongLong(), query.value(1).toInt(), {}};
        if (withValues) {
            for (int i = 0; i < names.size(); ++i)
                row.values.insert(names[i], query.value(i + 2));
        }
        rows.append(row);
    }
    return rows;
}

Checked<QList<RecordRow>> RecordStore::load(const QString &errorTitle) const
{
    return read(QStringLiteral(", ") + m_columns.join(QStringLiteral(", ")), m_where, m_whereValues, true, errorTitle);
}

Checked<QList<RecordRow>> RecordStore::loadKeys(const QString &errorTitle) const
{
    return read(QString(), m_where, m_whereValues, false, errorTitle);
}

QString RecordStore::whereWith(const QString &condition) const
{
    if (m_where.isEmpty())
        return condition;
    if (condition.isEmpty())
        return m_where;
    return QStringLiteral("(%1) AND %2").arg(m_where, condition);
}

Checked<QList<RecordRow>> RecordStore::page(int offset, int limit, bool fromEnd, const QString &errorTitle) const
{
    return read(QStringLiteral(", ") + m_columns.join(QStringLiteral(", ")), m_where, m_whereValues, true, errorTitle,
                QStringLiteral(" LIMIT %1 OFFSET %2").arg(std::max(0, limit)).arg(std::max(0, offset)), fromEnd);
}

std::optional<Checked<QList<RecordRow>>> RecordStore::pageAt(qint64 id, int limit, bool backwards,
                                                             const QString &errorTitle) const
{
    const QString column = m_orderBy.trimmed();
    if (column.isEmpty() || column.contains(QLatin1Char(',')) || column.contains(QLatin1Char(' ')))
        return std::nullopt;
    QVariant key;
    {
        Query query(m_db, QStringLiteral("SELECT %1 FROM %2 WHERE id = ?").arg(column, m_table));
        if (auto failure = query.run(errorTitle, {id}))
            return Checked<QList<RecordRow>>(*failure);
        if (!query.next())
            return Checked<QList<RecordRow>>(QList<RecordRow>());
        key = query.value(0);
    }
    // The order in parts, each a range of the (column, id) index: NULL keys stand first on SQLite
    // and last on PostgreSQL, so the part of the other kind of key follows (or goes before) it.
    const bool nullsFirst = m_db.driverName() == QLatin1String("QSQLITE");
    const QString step = backwards ? QStringLiteral("<=") : QStringLiteral(">=");
    QList<QPair<QString, QVariantList>> parts;
    if (key.isNull()) {
        parts.append({column + QStringLiteral(" IS NULL AND id %1 ?").arg(step), {id}});
        if (nullsFirst != backwards)
            parts.append({column + QStringLiteral(" IS NOT NULL"), {}});
    } else {
        parts.append({QStringLiteral("(%1, id) %2 (?, ?)").arg(column, step), {key, id}});
        if (nullsFirst == backwards)
            parts.append({column + QStringLiteral(" IS NULL"), {}});
    }
    const QString columns = QStringLiteral(", ") + m_columns.join(QStringLiteral(", "));
    QList<RecordRow> rows;
    for (const auto &[condition, values] : parts) {
        if (rows.size() >= limit)
            break;
        QVariantList bound = m_whereValues;
        bound += values;
        const auto read = this->read(columns, whereWith(condition), bound, true, errorTitle,
                                     QStringLiteral(" LIMIT %1").arg(limit - rows.size()), backwards);
        if (!read)
            return read;
        rows += read.value();
    }
    return Checked<QList<RecordRow>>(rows);
}

Checked<int> RecordStore::countWhere(const QString &condition, const QVariantList &values,
                                     const QString &errorTitle) const
{
    const QString where = whereWith(condition);
    QVariantList bound = m_whereValues;
    bound += values;
    Query query(m_db, QStringLiteral("SELECT COUNT(*) FROM %1").arg(m_table)
                          + (where.isEmpty() ? QString() : QStringLiteral(" WHERE ") + where));
    if (auto failure = query.run(errorTitle, bound))
        return *failure;
    if (!query.next())
        return sqlErrorMessage(errorTitle, query.lastError());
    return query.value(0).toInt();
}

Checked<int> RecordStore::count(const QString &errorTitle) const
{
    return countWhere(QString(), {}, errorTitle);
}

Checked<int> RecordStore::positionOf(qint64 id, const QString &errorTitle) const
{
    const QString column = m_orderBy.trimmed();
    const bool simpleOrder = !column.contains(QLatin1Char(',')) && !column.contains(QLatin1Char(' '));
    if (!simpleOrder) {
        // An order of several terms: the ids in order, and the place found among them.
        const auto keys = loadKeys(errorTitle);
        if (!keys)
            return keys.message();
        for (int i = 0; i < keys.value().size(); ++i) {
            if (keys.value().at(i).id == id)
                return i;
        }
        return -1;
    }
    QVariant key;
    {
        const QString where = whereWith(QStringLiteral("id = ?"));
        Query query(m_db, QStringLiteral("SELECT %1 FROM %2 WHERE %3")
                              .arg(column.isEmpty() ? QStringLiteral("id") : column, m_table, where));
        QVariantList bound = m_whereValues;
        bound.append(id);
        if (auto failure = query.run(errorTitle, bound))
            return *failure;
        if (!query.next())
            return -1;
        key = query.value(0);
    }
    if (column.isEmpty())
        return countWhere(QStringLiteral("id < ?"), {id}, errorTitle);
    // The rows before it: a smaller key, or its key and a smaller id; NULL keys stand first on
    // SQLite and last on PostgreSQL. Each part is a range of an index.
    const bool nullsFirst = m_db.driverName() == QLatin1String("QSQLITE");
    QList<QPair<QString, QVariantList>> parts;
    if (key.isNull()) {
        parts.append({column + QStringLiteral(" IS NULL AND id < ?"), {id}});
        if (!nullsFirst)
            parts.append({column + QStringLiteral(" IS NOT NULL"), {}});
    } else {
        parts.append({column + QStringLiteral(" < ?"), {key}});
        parts.append({column + QStringLiteral(" = ? AND id < ?"), {key, id}});
        if (nullsFirst)
            parts.append({column + QStringLiteral(" IS NULL"), {}});
    }
    int before = 0;
    for (const auto &[condition, values] : parts) {
        const Checked<int> counted = countWhere(condition, values, errorTitle);
        if (!counted)
            return counted.message();
        before += counted.value();
    }
    return before;
}

Checked<QList<RecordRow>> RecordStore::fetch(const QList<qint64> &ids, const QString &errorTitle) const
{
    if (ids.isEmpty())
        return QList<RecordRow>();
    QVariantList values;
    for (qint64 id : ids)
        values.append(id);
    return read(QStringLiteral(", ") + m_columns.join(QStringLiteral(", ")),
                QStringLiteral("id IN (%1)").arg(placeholders(ids.size())), values, true, errorTitle);
}

std::optional<UserMessage> RecordStore::insert(RecordRow &row, const QString &errorTitle) const
{
    QVariantList values;
    for (const QString &column : m_columns)
        values.append(row.values.value(valueName(column)));
    Query query(m_db,
                QStringLiteral("INSERT INTO %1 (%2) VALUES (%3) RETURNING id, row_version")
                    .arg(m_table, m_columns.join(QStringLiteral(", ")), placeholders(m_columns.size())));
    if (auto failure = query.run(errorTitle, values))
        return failure;
    if (!query.next())
        return query.readFailure(errorTitle).value_or(rowConflictMessage(errorTitle));
    row.id = query.value(0).toLongLong();
    row.rowVersion = query.value(1).toInt();
    query.finish();  // SQLite keeps the statement open until the RETURNING rows are read out
    return std::nullopt;
}

std::optional<UserMessage> RecordStore::update(RecordRow &row, const QString &errorTitle) const
{
    QStringList sets;
    for (const QString &column : m_columns)
        sets.append(column + QStringLiteral(" = ?"));
    QVariantList values;
    for (const QString &column : m_columns)
        values.append(row.values.value(valueName(column)));
    if (auto failure = executeOnVersion(
            m_db, errorTitle,
            QStringLiteral("UPDATE %1 SET %2, row_version = row_version + 1 WHERE id = ? AND row_version = ?")
                .arg(m_table, sets.join(QStringLiteral(", "))),
            values + QVariantList{row.id, row.rowVersion}))
        return failure;
    ++row.rowVersion;
    return std::nullopt;
}

std::optional<UserMessage> RecordStore::remove(const RecordRow &row, const QString &errorTitle) const
{
    if (auto failure = executeOnVersion(m_db, errorTitle,
                                        QStringLiteral("DELETE FROM %1 WHERE id = ? AND row_version = ?").arg(m_table),
                                        {row.id, row.rowVersion}))
        return failure;
    return std::nullopt;
}

}
