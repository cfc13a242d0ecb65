#pragma once

#include <QSqlDatabase>
#include <QSqlError>

namespace zarek {

// Writes that belong together: begun on construction, rolled back unless commit() succeeds.
// Every transaction is one that writes: on SQLite it takes the database's write lock as it begins
// (BEGIN IMMEDIATE), waiting up to the busy timeout while another copy of the program writes, so
// what it reads stays true until it commits and its writes never meet "database is locked".
// Transactions nest: one begun while another is open on the same connection is a savepoint of
// it, so a routine that writes in a transaction of its own can run inside a larger one (the demo
// firm saves each course through the course store, and all of it is one transaction).
class Transaction {
public:
    enum class Lock {
        // The engine's own locks: SQLite's write lock (as above), PostgreSQL's row locks.
        None,
        // Only one such transaction at a time across every copy of the program: SQLite takes its
        // write lock before anything is read (BEGIN IMMEDIATE, waiting up to the busy timeout),
        // PostgreSQL the program's advisory lock (waiting up to 15 s). Start-up decisions are made
        // under it. Inside another transaction it is only granted when that one holds it.
        Writer,
    };

    explicit Transaction(QSqlDatabase db, Lock lock = Lock::None);
    ~Transaction();
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;

    bool isActive() const { return m_active; }
    bool commit();

    // Why the transaction could not begin or commit.
    QSqlError lastError() const { return m_error; }
    // True when it could not begin because another copy held the lock for the whole wait.
    bool timedOut() const;

    // True when a Writer transaction is open on the connection: what runs inside it reads and
    // writes under the lock already.
    static bool holdsWriterLock(const QSqlDatabase &db);

private:
    bool exec(const QString &sql);
    void rollback();

    QSqlDatabase m_db;
    QString m_connection;
    int m_level = 0;  // 1 for the outermost, 2 and up for savepoints
    bool m_active = false;
    QSqlError m_error;
};

}
