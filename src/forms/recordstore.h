#pragma once

#include "app/usermessage.h"

#include <QList>
#include <QSqlDatabase>
#include <QStringList>
#include <QVariantMap>
#include <optional>

namespace zarek {

// One row as a record form holds it: its values by column, and the id and version it was read at.
struct RecordRow {
    qint64 id = 0;
    int rowVersion = 0;
    QVariantMap values;
};

// The rows of one table for a record form: read once, written one row at a time, each write
// checked against the version it was read at.
class RecordStore {
public:
    RecordStore(QSqlDatabase db, QString table, QStringList columns, QString orderBy, QString where = {},
                QVariantList whereValues = {});

    Checked<QList<RecordRow>> load() const;
    std::optional<UserMessage> insert(RecordRow &row, const QString &errorTitle) const;
    std::optional<UserMessage> update(RecordRow &row, const QString &errorTitle) const;
    std::optional<UserMessage> remove(const RecordRow &row, const QString &errorTitle) const;

    const QStringList &columns() const { return m_columns; }

private:
    QSqlDatabase m_db;
    QString m_table;
    QStringList m_columns;
    QString m_orderBy;
    QString m_where;
    QVariantList m_whereValues;
};

}
