#include "recordstore.h"

#include "courses/coursestore.h"
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

QString RecordStore::valueName(const QString &column)
{
    if (column.size() > 1 && column.startsWith(QLatin1Char('"')) && column.endsWith(QLatin1Char('"')))
        return column.mid(1, column.size() - 2);
    return column;
}

Checked<QList<RecordRow>> RecordStore::load(const QString &errorTitle) const
{
    QString sql = QStringLiteral("SELECT id, row_version, %1 FROM %2").arg(m_columns.join(QStringLiteral(", ")), m_table);
    if (!m_where.isEmpty())
        sql += QStringLiteral(" WHERE ") + m_where;
    sql += QStringLiteral(" ORDER BY ") + (m_orderBy.isEmpty() ? QString() : m_orderBy + QStringLiteral(", ")) +
           QStringLiteral("id");
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    query.prepare(sql);
    for (const QVariant &value : m_whereValues)
        query.addBindValue(value);
    if (!query.exec())
        return sqlErrorMessage(errorTitle, query.lastError());
    QList<RecordRow> rows;
    while (query.next()) {
        RecordRow row{query.value(0).toLongLong(), query.value(1).toInt(), {}};
        for (int i = 0; i < m_columns.size(); ++i)
            row.values.insert(valueName(m_columns[i]), query.value(i + 2));
        rows.append(row);
    }
    return rows;
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
        return CourseStore::conflictMessage(errorTitle);
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
        return CourseStore::conflictMessage(errorTitle);
    return std::nullopt;
}

}
