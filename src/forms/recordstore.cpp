#include "recordstore.h"

#include "data/sqlerror.h"

#include <QSqlQuery>
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
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    query.prepare(sql);
    for (const QVariant &value : values)
        query.addBindValue(value);
    if (!query.exec())
        return sqlErrorMessage(errorTitle, query.lastError());
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
    QStringList marks;
    QVariantList values;
    for (qint64 id : ids) {
        marks.append(QStringLiteral("?"));
        values.append(id);
    }
    return read(QStringLiteral(", ") + m_columns.join(QStringLiteral(", ")),
                QStringLiteral("id IN (%1)").arg(marks.join(QStringLiteral(", "))), values, true, errorTitle);
}

std::optional<UserMessage> RecordStore::insert(RecordRow &row, const QString &errorTitle) const
{
    QStringList marks;
    for (qsizetype i = 0; i < m_columns.size(); ++i)
        marks.append(QStringLiteral("?"));
    QSqlQuery query(m_db);
    query.prepare(QStringLiteral("INSERT INTO %1 (%2) VALUES (%3) RETURNING id, row_version")
                      .arg(m_table, m_columns.join(QStringLiteral(", ")), marks.join(QStringLiteral(", "))));
    for (const QString &column : m_columns)
        query.addBindValue(row.values.value(valueName(column)));
    if (!query.exec() || !query.next())
        return sqlErrorMessage(errorTitle, query.lastError());
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
    QSqlQuery query(m_db);
    query.prepare(QStringLiteral("UPDATE %1 SET %2, row_version = row_version + 1 WHERE id = ? AND row_version = ?")
                      .arg(m_table, sets.join(QStringLiteral(", "))));
    for (const QString &column : m_columns)
        query.addBindValue(row.values.value(valueName(column)));
    query.addBindValue(row.id);
    query.addBindValue(row.rowVersion);
    if (!query.exec())
        return sqlErrorMessage(errorTitle, query.lastError());
    if (query.numRowsAffected() != 1)
        return rowConflictMessage(errorTitle);
    ++row.rowVersion;
    return std::nullopt;
}

std::optional<UserMessage> RecordStore::remove(const RecordRow &row, const QString &errorTitle) const
{
    QSqlQuery query(m_db);
    query.prepare(QStringLiteral("DELETE FROM %1 WHERE id = ? AND row_version = ?").arg(m_table));
    query.addBindValue(row.id);
    query.addBindValue(row.rowVersion);
    if (!query.exec())
        return sqlErrorMessage(errorTitle, query.lastError());
    if (query.numRowsAffected() != 1)
        return rowConflictMessage(errorTitle);
    return std::nullopt;
}

}
