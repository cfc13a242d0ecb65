#include "recordstore.h"

#include "data/query.h"
#include "data/sqlerror.h"

#include <QSqlRecord>

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

Checked<QList<RecordRow>> RecordStore::read(const QString &columns, const QString &where, const QVariantList &values,
                                            bool withValues, const QString &errorTitle) const
{
    QString sql = QStringLiteral("SELECT id, row_version%1 FROM %2").arg(columns, m_table);
    if (!where.isEmpty())
        sql += QStringLiteral(" WHERE ") + where;
    sql += QStringLiteral(" ORDER BY ") + (m_orderBy.isEmpty() ? QString() : m_orderBy + QStringLiteral(", ")) +
           QStringLiteral("id");
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
