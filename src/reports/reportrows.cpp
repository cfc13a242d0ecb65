#include "reports/reportrows.h"

#include "data/dialect.h"
#include "data/query.h"

#include <QSqlQuery>
#include <QSqlRecord>

namespace zarek {

namespace {

class RowSetStream : public RowStream {
public:
    explicit RowSetStream(RowSet rows) : m_rows(std::move(rows)) {}
    const QStringList &columns() const override { return m_rows.columns(); }
    bool next(QList<QVariant> &cells) override
    {
        if (m_next >= m_rows.rowCount())
            return false;
        cells.resize(m_rows.columnCount());
        for (int c = 0; c < m_rows.columnCount(); ++c)
            cells[c] = m_rows.value(m_next, c);
        ++m_next;
        return true;
    }

private:
    RowSet m_rows;
    int m_next = 0;
};

class QueryStream : public RowStream {
public:
    QueryStream(std::unique_ptr<PrivateConnection> connection, std::unique_ptr<Query> query, QString errorTitle)
        : m_connection(std::move(connection)), m_query(std::move(query)), m_errorTitle(std::move(errorTitle))
    {
        const QSqlRecord record = m_query->record();
        for (int i = 0; i < record.count(); ++i)
            m_columns.append(record.fieldName(i));
    }
    ~QueryStream() override { finish(); }

    const QStringList &columns() const override { return m_columns; }
    bool next(QList<QVariant> &cells) override
    {
        if (!m_query)
            return false;
        if (!m_query->next()) {
            m_error = m_query->readFailure(m_errorTitle);
            finish();
            return false;
        }
        const auto count = m_columns.size();
        cells.resize(count);
        for (qsizetype i = 0; i < count; ++i)
            cells[i] = m_query->value(static_cast<int>(i));
        return true;
    }
    std::optional<UserMessage> error() const override { return m_error; }

private:
    // The last row read: the statement and the connection are let go at once.
    void finish()
    {
        m_query.reset();
        m_connection.reset();
    }

    std::unique_ptr<PrivateConnection> m_connection;
    std::unique_ptr<Query> m_query;
    QString m_errorTitle;
    QStringList m_columns;
    std::optional<UserMessage> m_error;
};

// Chunks of rows after the last key read, in one read-only snapshot of a connection of its own.
class KeyedStream : public RowStream {
public:
    KeyedStream(std::unique_ptr<PrivateConnection> connection, QString selectList, QString fromAndWhere,
                QStringList keys, QList<QVariant> values, QString errorTitle)
        : m_connection(std::move(connection)), m_keys(std::move(keys)), m_values(std::move(values)),
          m_errorTitle(std::move(errorTitle))
    {
        QStringList keyed;
        for (int i = 0; i < m_keys.size(); ++i)
            keyed.append(QStringLiteral("%1 AS zarek_key_%2").arg(m_keys.at(i)).arg(i));
        const QString select = QStringLiteral("SELECT ") + selectList + QStringLiteral(", ")
                               + keyed.join(QStringLiteral(", ")) + QStringLiteral(" FROM ") + fromAndWhere;
        const QString orderBy = QStringLiteral(" ORDER BY ") + m_keys.join(QStringLiteral(", "))
                                + QStringLiteral(" LIMIT ?");
        m_first = select + orderBy;
        const bool hasWhere = fromAndWhere.contains(QStringLiteral(" WHERE "), Qt::CaseInsensitive)
                              || fromAndWhere.startsWith(QStringLiteral("WHERE "), Qt::CaseInsensitive);
        m_after = select + (hasWhere ? QStringLiteral(" AND (") : QStringLiteral(" WHERE ("))
                  + m_keys.join(QStringLiteral(", ")) + QStringLiteral(") > (") + placeholders(m_keys.size())
                  + QLatin1Char(')') + orderBy;
    }
    ~KeyedStream() override { finish(); }

    // Begins the snapshot and reads the first chunk; the message when it cannot.
    std::optional<UserMessage> start()
    {
        QSqlDatabase db = m_connection->db();
        // Statements of the transaction itself go unprepared (the driver cannot prepare them).
        if (!db.transaction())
            return UserMessage{m_errorTitle, db.lastError().text(), UserMessage::Icon::Critical};
        m_inTransaction = true;
        QSqlQuery snapshot(db);
        if (!snapshot.exec(QStringLiteral("SET TRANSACTION ISOLATION LEVEL REPEATABLE READ, READ ONLY")))
            return UserMessage{m_errorTitle, snapshot.lastError().text(), UserMessage::Icon::Critical};
        if (auto failure = readChunk())
            return failure;
        return std::nullopt;
    }

    const QStringList &columns() const override { return m_columns; }
    bool next(QList<QVariant> &cells) override
    {
        if (m_at >= m_chunk.rowCount()) {
            if (m_done || !m_connection)
                return false;
            if ((m_error = readChunk()) || m_chunk.rowCount() == 0) {
                finish();
                return false;
            }
        }
        const auto count = m_columns.size();
        cells.resize(count);
        for (qsizetype i = 0; i < count; ++i)
            cells[i] = m_chunk.value(m_at, static_cast<int>(i));
        ++m_at;
        if (m_at >= m_chunk.rowCount() && m_done)
            finish();
        return true;
    }
    std::optional<UserMessage> error() const override { return m_error; }

private:
    std::optional<UserMessage> readChunk()
    {
        QList<QVariant> bound = m_values;
        if (m_chunk.rowCount() > 0) {
            const int last = m_chunk.rowCount() - 1;
            for (int i = 0; i < m_keys.size(); ++i)
                bound.append(m_chunk.value(last, static_cast<int>(m_columns.size()) + i));
        }
        bound.append(m_size);
        const Checked<RowSet> chunk =
            readRows(m_connection->db(), m_errorTitle, m_chunk.rowCount() > 0 ? m_after : m_first, bound);
        if (!chunk)
            return chunk.message();
        if (m_columns.isEmpty())
            m_columns = chunk.value().columns().mid(0, chunk.value().columnCount() - m_keys.size());
        m_done = chunk.value().rowCount() < m_size;
        m_chunk = chunk.value();
        m_at = 0;
        // The first rows come at once; later chunks grow, so a long report takes few round trips.
        m_size = std::min(m_size * 4, 8000);
        return std::nullopt;
    }

    // The last row read: the snapshot, the statement and the connection are let go at once.
    void finish()
    {
        if (m_connection && m_inTransaction)
            m_connection->db().rollback();
        m_inTransaction = false;
        m_connection.reset();
        m_done = true;
    }

    std::unique_ptr<PrivateConnection> m_connection;
    QStringList m_keys;
    QList<QVariant> m_values;
    QString m_errorTitle;
    QString m_first, m_after;
    QStringList m_columns;
    RowSet m_chunk;
    int m_at = 0;
    int m_size = 125;
    bool m_done = false;
    bool m_inTransaction = false;
    std::optional<UserMessage> m_error;
};

class MadeStream : public RowStream {
public:
    MadeStream(QStringList columns, int count, std::function<QList<QVariant>(int)> make)
        : m_columns(std::move(columns)), m_count(count), m_make(std::move(make))
    {
    }
    const QStringList &columns() const override { return m_columns; }
    bool next(QList<QVariant> &cells) override
    {
        if (m_next >= m_count)
            return false;
        cells = m_make(m_next++);
        cells.resize(m_columns.size());
        return true;
    }

private:
    QStringList m_columns;
    int m_count = 0;
    std::function<QList<QVariant>(int)> m_make;
    int m_next = 0;
};

class ChangedStream : public RowStream {
public:
    ChangedStream(std::shared_ptr<RowStream> source, const QStringList &added,
                  std::function<void(QList<QVariant> &)> change)
        : m_source(std::move(source)), m_columns(m_source->columns() + added), m_change(std::move(change))
    {
    }
    const QStringList &columns() const override { return m_columns; }
    bool next(QList<QVariant> &cells) override
    {
        if (!m_source->next(cells))
            return false;
        cells.resize(m_columns.size());
        m_change(cells);
        return true;
    }
    std::optional<UserMessage> error() const override { return m_source->error(); }

private:
    std::shared_ptr<RowStream> m_source;
    QStringList m_columns;
    std::function<void(QList<QVariant> &)> m_change;
};

}

std::shared_ptr<RowStream> rowStreamOf(RowSet rows)
{
    return std::make_shared<RowSetStream>(std::move(rows));
}

Checked<std::shared_ptr<RowStream>> queryRowStream(QSqlDatabase db, const QString &sql, const QList<QVariant> &values,
                                                   const QString &errorTitle)
{
    auto connection = std::make_unique<PrivateConnection>(db);
    if (!connection->isOpen())
        connection.reset();  // the program's own connection serves
    auto query = std::make_unique<Query>(connection ? connection->db() : db, sql);
    if (auto failure = query->run(errorTitle, values))
        return *failure;
    return std::shared_ptr<RowStream>(std::make_shared<QueryStream>(std::move(connection), std::move(query), errorTitle));
}

Checked<std::shared_ptr<RowStream>> keyedRowStream(QSqlDatabase db, const QString &selectList,
                                                   const QString &fromAndWhere, const QStringList &keyColumns,
                                                   const QList<QVariant> &values, const QString &errorTitle)
{
    if (dialectOf(db) == Dialect::PostgreSQL) {
        auto connection = std::make_unique<PrivateConnection>(db);
        if (connection->isOpen()) {
            auto stream = std::make_shared<KeyedStream>(std::move(connection), selectList, fromAndWhere, keyColumns,
                                                        values, errorTitle);
            if (auto failure = stream->start())
                return *failure;
            return std::shared_ptr<RowStream>(stream);
        }
    }
    return queryRowStream(db,
                          QStringLiteral("SELECT ") + selectList + QStringLiteral(" FROM ") + fromAndWhere
                              + QStringLiteral(" ORDER BY ") + keyColumns.join(QStringLiteral(", ")),
                          values, errorTitle);
}

std::shared_ptr<RowStream> changedRows(std::shared_ptr<RowStream> source, const QStringList &addedColumns,
                                       std::function<void(QList<QVariant> &cells)> change)
{
    return std::make_shared<ChangedStream>(std::move(source), addedColumns, std::move(change));
}

std::shared_ptr<RowStream> madeRows(QStringList columns, int count, std::function<QList<QVariant>(int row)> make)
{
    return std::make_shared<MadeStream>(std::move(columns), count, std::move(make));
}

Checked<RowSet> readAllRows(RowStream &rows)
{
    RowSet all(rows.columns());
    QList<QVariant> cells;
    while (rows.next(cells))
        all.appendRow(cells);
    if (const auto error = rows.error())
        return *error;
    return all;
}

Checked<Report> withAllRows(Checked<StreamedReport> streamed)
{
    if (!streamed)
        return streamed.message();
    Report report = streamed.value().report;
    if (!streamed.value().rows)
        return report;
    const Checked<RowSet> rows = readAllRows(*streamed.value().rows);
    if (!rows)
        return rows.message();
    report.setDataSource(rows.value());
    return report;
}

}
