#include "transaction.h"

#include "data/dialect.h"

#include <QHash>
#include <QSqlQuery>
#include <QVariant>

namespace zarek {

namespace {

struct OpenTransaction {
    int depth = 0;
    bool writer = false;
};

// The transactions open on each connection, by connection name (one thread uses a connection).
QHash<QString, OpenTransaction> &openTransactions()
{
    static QHash<QString, OpenTransaction> open;
    return open;
}

// The advisory lock that serializes start-up decisions on PostgreSQL ("Zarek" in ASCII).
constexpr qint64 writerLockKey = 0x5A6172656BLL;

QString savepointName(int level)
{
    return QStringLiteral("zarek_savepoint_%1").arg(level);
}

}

bool Transaction::holdsWriterLock(const QSqlDatabase &db)
{
    const OpenTransaction open = openTransactions().value(db.connectionName());
    return open.depth > 0 && open.writer;
}

Transaction::Transaction(QSqlDatabase db, Lock lock) : m_db(std::move(db)), m_connection(m_db.connectionName())
{
    OpenTransaction &open = openTransactions()[m_connection];
    if (open.depth > 0) {
        if (lock == Lock::Writer && !open.writer) {
            m_error = QSqlError(QStringLiteral("Transaction"),
                                QStringLiteral("the write lock cannot be taken inside a transaction without it"),
                                QSqlError::TransactionError);
            return;
        }
        m_level = open.depth + 1;
        if (!exec(QStringLiteral("SAVEPOINT ") + savepointName(m_level)))
            return;
        open.depth = m_level;
        m_active = true;
        return;
    }

    if (dialectOf(m_db) == Dialect::SQLite) {
        // The write lock before the first read: a transaction that read under a shared lock and
        // then writes after another copy wrote fails at once with "database is locked" (the busy
        // timeout cannot help it), while one that waits for the lock here sees the other's rows.
        m_active = exec(QStringLiteral("BEGIN IMMEDIATE"));
    } else if (lock == Lock::None) {
        m_active = m_db.transaction();
        if (!m_active)
            m_error = m_db.lastError();
    } else {
        m_active = exec(QStringLiteral("BEGIN"));
        if (m_active) {
            // One statement, not prepared: each is a round trip to the server, and the key is the
            // program's own constant. The timeout is set first: a subquery in FROM calling a
            // volatile function is run before the select list.
            QSqlQuery query(m_db);
            if (!query.exec(QStringLiteral("SELECT pg_advisory_xact_lock(%1) FROM "
                                           "(SELECT set_config('lock_timeout', '15s', true)) AS timeout")
                                .arg(writerLockKey))) {
                if (query.lastError().isValid())
                    m_error = query.lastError();
                m_db.rollback();
                m_active = false;
            }
        }
    }
    if (!m_active) {
        openTransactions().remove(m_connection);
        return;
    }
    m_level = 1;
    open.depth = 1;
    open.writer = lock == Lock::Writer;
}

Transaction::~Transaction()
{
    if (m_active)
        rollback();
}

bool Transaction::exec(const QString &sql)
{
    QSqlQuery query(m_db);
    if (query.exec(sql))
        return true;
    m_error = query.lastError();
    return false;
}

bool Transaction::timedOut() const
{
    const QString code = m_error.nativeErrorCode();
    // SQLite: SQLITE_BUSY (5); PostgreSQL: lock_not_available.
    return code == QLatin1String("5") || code == QLatin1String("55P03");
}

bool Transaction::commit()
{
    if (!m_active)
        return false;
    m_active = false;
    if (m_level > 1) {
        if (exec(QStringLiteral("RELEASE SAVEPOINT ") + savepointName(m_level))) {
            openTransactions()[m_connection].depth = m_level - 1;
            return true;
        }
        m_active = true;
        rollback();
        return false;
    }
    openTransactions().remove(m_connection);
    if (m_db.commit())
        return true;
    m_error = m_db.lastError();
    m_db.rollback();
    return false;
}

void Transaction::rollback()
{
    m_active = false;
    if (m_level > 1) {
        // Undoes this part alone; the enclosing transaction goes on (on PostgreSQL, usable again).
        exec(QStringLiteral("ROLLBACK TO SAVEPOINT ") + savepointName(m_level));
        exec(QStringLiteral("RELEASE SAVEPOINT ") + savepointName(m_level));
        openTransactions()[m_connection].depth = m_level - 1;
        return;
    }
    openTransactions().remove(m_connection);
    m_db.rollback();
}

}
