#pragma once

#include "core/usermessage.h"

#include <QList>
#include <QSqlDatabase>
#include <QStringList>
#include <QVariantMap>
#include <optional>

namespace zarek {

// One row as a record form holds it: its values by column, and the id and version it was read at.
// A row not written yet has id 0.
struct RecordRow {
    qint64 id = 0;
    int rowVersion = 0;
    QVariantMap values;

    bool operator==(const RecordRow &) const = default;
};

// The rows of one table for a record form: read once, written one row at a time, each write
// checked against the version it was read at. Table and column names are the program's own;
// every value reaches SQL as a bound parameter. A column created quoted (the tariff bands of
// tariffColumns()) is given quoted and stands in the row's values by its bare name.
class RecordStore {
public:
    RecordStore(QSqlDatabase db, QString table, QStringList columns, QString orderBy, QString where = {},
                QVariantList whereValues = {});

    // The rows of the table (WHERE with its bound values), in the given order, then by id.
    Checked<QList<RecordRow>> load(const QString &errorTitle = QStringLiteral("ГРЕШКА при четене!")) const;
    // Only the ids and versions of those rows, in the same order: a large table opens at once and
    // its values are read a page at a time with fetch().
    Checked<QList<RecordRow>> loadKeys(const QString &errorTitle = QStringLiteral("ГРЕШКА при четене!")) const;
    // The rows at [offset, offset + limit) of that order with their values; fromEnd: counted from
    // the last row back, the last first (both engines put NULLs at the opposite end when the
    // order is turned round, so the turned order is exactly the order read backwards).
    Checked<QList<RecordRow>> page(int offset, int limit, bool fromEnd,
                                   const QString &errorTitle = QStringLiteral("ГРЕШКА при четене!")) const;
    // The rows from the row of that id on in the order (backwards: from it back to the first, nearest
    // first), that row included: read from its key through the index, however far from the first
    // row it stands. None when the order is not one column (the caller counts by offset instead).
    std::optional<Checked<QList<RecordRow>>> pageAt(qint64 id, int limit, bool backwards,
                                                    const QString &errorTitle = QStringLiteral("ГРЕШКА при четене!")) const;
    // How many rows there are.
    Checked<int> count(const QString &errorTitle = QStringLiteral("ГРЕШКА при четене!")) const;
    // The place of the row of that id in the order (-1 when it is not among the rows), counted
    // through the indexes without reading the rows before it.
    Checked<int> positionOf(qint64 id, const QString &errorTitle = QStringLiteral("ГРЕШКА при четене!")) const;
    // The rows of these ids with their values, in no particular order; a row deleted meanwhile is missing.
    Checked<QList<RecordRow>> fetch(const QList<qint64> &ids,
                                    const QString &errorTitle = QStringLiteral("ГРЕШКА при четене!")) const;
    // A new row: fills in the id and version the database gave it.
    std::optional<UserMessage> insert(RecordRow &row, const QString &errorTitle) const;
    // The row of its id, only when still at the version read; the version moves on by one.
    std::optional<UserMessage> update(RecordRow &row, const QString &errorTitle) const;
    // Deletes the row of its id, only when still at the version read.
    std::optional<UserMessage> remove(const RecordRow &row, const QString &errorTitle) const;

    // Another WHERE (with its bound values) for the reads that follow: the lines of another document.
    void setWhere(QString where, QVariantList values);

    const QString &table() const { return m_table; }
    const QStringList &columns() const { return m_columns; }
    QSqlDatabase database() const { return m_db; }

    // The name a column's value goes by in a row: without the quotes it may be given in.
    static QString valueName(const QString &column);

private:
    Checked<QList<RecordRow>> read(const QString &columns, const QString &where, const QVariantList &values,
                                   bool withValues, const QString &errorTitle, const QString &tail = {},
                                   bool reversed = false) const;
    // The table's WHERE joined with a further condition, and the values of both.
    QString whereWith(const QString &condition) const;
    Checked<int> countWhere(const QString &condition, const QVariantList &values, const QString &errorTitle) const;

    QSqlDatabase m_db;
    QString m_table;
    QStringList m_columns;
    QString m_orderBy;
    QString m_where;
    QVariantList m_whereValues;
};

}
