#include "reports/reportrows.h"

#include "data/query.h"

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

std::shared_ptr<RowStream> changedRows(std::shared_ptr<RowStream> source, const QStringList &addedColumns,
                                       std::function<void(QList<QVariant> &cells)> change)
{
    return std::make_shared<ChangedStream>(std::move(source), addedColumns, std::move(change));
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
