#pragma once

#include "core/usermessage.h"
#include "data/rowset.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QString>
#include <QVariant>
#include <QVariantList>
#include <QVariantMap>
#include <memory>
#include <optional>

namespace zarek {

struct KeptStatement;

// One statement of a store: prepared, given its values, run, and its failure turned into the
// error box the user sees under the store's title.
//
// Statements are kept per connection: the first run of a text on a connection prepares it, later
// runs of the same text on that connection execute the statement already prepared (on PostgreSQL
// one server-side statement, no PREPARE and DEALLOCATE around every run). The statements of a
// connection are freed when it closes through closeDatabase or a PrivateConnection, or when they
// find the connection gone or opened anew. A text that another Query still holds gets a statement
// of its own.
//
// Values reach the statement only as bound parameters: positional ("?", in order) or named
// (":name"). Rows are read forward only (PostgreSQL sends them a row at a time: read them out, or
// into rows(), before running another statement on the connection); the statement is finished when
// the Query goes, so it holds no lock and no open result afterwards.
class Query {
public:
    Query(QSqlDatabase db, const QString &sql);
    // A Query that is given its statements as it runs them (exec).
    explicit Query(QSqlDatabase db);
    ~Query();
    Query(const Query &) = delete;
    Query &operator=(const Query &) = delete;

    // Runs the statement with the values; the error box titled title when it fails.
    std::optional<UserMessage> run(const QString &title, const QVariantList &values = {});
    std::optional<UserMessage> run(const QString &title, const QVariantMap &named);
    // Runs the statement, which takes no values, without preparing or keeping it: what a connection
    // runs once (at start-up) costs a server one round trip instead of two.
    std::optional<UserMessage> runOnce(const QString &title);
    // Leaves the statement it had and runs sql with the values.
    std::optional<UserMessage> exec(const QString &title, const QString &sql, const QVariantList &values = {});

    bool next() { return m_query && m_query->next(); }
    QVariant value(int column) const { return m_query->value(column); }
    QVariant value(const QString &column) const { return m_query->value(column); }
    QSqlRecord record() const { return m_query->record(); }
    int rowsAffected() const { return m_query->numRowsAffected(); }
    // The engine's error of the last run, for a store that tells one error from another (a number
    // already taken).
    QSqlError lastError() const { return m_query ? m_query->lastError() : QSqlError(); }
    // After next() gave false: the error box titled title when reading stopped on an error.
    std::optional<UserMessage> readFailure(const QString &title) const;
    // The rows not read yet, in memory; the error box titled title when reading fails.
    Checked<RowSet> rows(const QString &title) { return RowSet::fromQuery(*m_query, title); }
    // Ends reading before the Query goes (SQLite cannot commit while a statement is still reading).
    void finish() { m_query->finish(); }

private:
    void acquire();
    void release();
    std::optional<UserMessage> runBound(const QString &title);

    QSqlDatabase m_db;
    QString m_sql;
    std::shared_ptr<KeptStatement> m_kept;  // null when this Query has a statement of its own
    std::unique_ptr<QSqlQuery> m_own;
    bool m_ownPrepared = false;
    QSqlQuery *m_query = nullptr;
};

// Runs a statement that returns no rows.
std::optional<UserMessage> execute(QSqlDatabase db, const QString &title, const QString &sql,
                                   const QVariantList &values = {});
// The first value of the first row; a null value when there is no row.
Checked<QVariant> scalar(QSqlDatabase db, const QString &title, const QString &sql, const QVariantList &values = {});
// Every row of a statement, in memory.
Checked<RowSet> readRows(QSqlDatabase db, const QString &title, const QString &sql, const QVariantList &values = {});
// A write of one row as it was read ("… WHERE id = ? AND row_version = ?"): the error box, or the
// conflict box when it changed no row (another user changed or deleted it since).
std::optional<UserMessage> executeOnVersion(QSqlDatabase db, const QString &title, const QString &sql,
                                            const QVariantList &values);
// "?, ?, ?" for count values.
QString placeholders(qsizetype count);

// Frees the statements kept for a connection; every path that closes one calls it first.
void forgetStatements(const QString &connectionName);
// How many statements are kept for a connection.
int keptStatementCount(const QString &connectionName);

// A connection of its own: a SQLite file (with the driver's connect options), or a clone of an
// open connection, so that the work done on it never meets a statement or a transaction a screen
// left open on the program's connection. Closed and forgotten with the object.
class PrivateConnection {
public:
    PrivateConnection(const QString &sqlitePath, const QString &options = QString());
    explicit PrivateConnection(const QSqlDatabase &cloneOf);
    ~PrivateConnection();
    PrivateConnection(const PrivateConnection &) = delete;
    PrivateConnection &operator=(const PrivateConnection &) = delete;

    bool isOpen() const { return db().isOpen(); }
    QSqlDatabase db() const { return QSqlDatabase::database(m_name, false); }
    QString name() const { return m_name; }

private:
    QString m_name;
};

}
