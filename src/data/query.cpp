#include "query.h"

#include "data/sqlerror.h"

#include <QAtomicInteger>
#include <QHash>
#include <QMutex>
#include <QMutexLocker>
#include <QPointer>
#include <QSqlDriver>
#include <QSqlError>
#include <vector>

namespace zarek {

struct KeptStatement {
    std::unique_ptr<QSqlQuery> query;
    bool prepared = false;
    bool inUse = false;
    quint64 lastUse = 0;
};

namespace {

// More distinct texts than this on one connection (conditions built into the text) and the one
// used longest ago is freed.
constexpr int keptPerConnection = 64;

using Statements = QHash<QString, std::shared_ptr<KeptStatement>>;

// The statements of one connection, with the session they were prepared in.
struct ConnectionStatements {
    QPointer<QSqlDriver> driver;
    const void *handle = nullptr;
    Statements statements;
    quint64 clock = 0;
};

QMutex keptMutex;
QHash<QString, ConnectionStatements> &keptStatements()
{
    static QHash<QString, ConnectionStatements> connections;
    return connections;
}

const void *sessionHandle(const QSqlDatabase &db)
{
    const QSqlDriver *driver = db.driver();
    if (!driver || !db.isOpen())
        return nullptr;
    const QVariant handle = driver->handle();
    return handle.isValid() ? *static_cast<const void *const *>(handle.constData()) : nullptr;
}

// Lets statements of a session that has ended go. While their driver lives on (a connection closed
// and opened again without forgetStatements) freeing them would reach into the new session, so
// they wait for the driver to go; a driver that is gone frees nothing on the server.
void letGo(Statements statements, QSqlDriver *liveDriver)
{
    if (statements.isEmpty() || !liveDriver)
        return;
    auto *parked = new Statements(std::move(statements));
    QObject::connect(liveDriver, &QObject::destroyed, [parked] { delete parked; });
}

// Prepares the statement the first time it runs (a kept one once on its connection). A text that
// does not prepare is not kept.
std::optional<UserMessage> prepareOnce(QSqlQuery &query, KeptStatement *kept, bool &ownPrepared,
                                       const QString &connectionName, const QString &sql, const QString &title)
{
    if (kept ? kept->prepared : ownPrepared)
        return std::nullopt;
    if (!query.prepare(sql)) {
        const UserMessage failure = sqlErrorMessage(title, query.lastError());
        if (kept) {
            QMutexLocker lock(&keptMutex);
            auto connection = keptStatements().find(connectionName);
            if (connection != keptStatements().end()) {
                auto it = connection->statements.find(sql);
                if (it != connection->statements.end() && it.value().get() == kept)
                    connection->statements.erase(it);
            }
        }
        return failure;
    }
    (kept ? kept->prepared : ownPrepared) = true;
    return std::nullopt;
}

}

Query::Query(QSqlDatabase db, const QString &sql) : m_db(std::move(db)), m_sql(sql)
{
    acquire();
}

Query::Query(QSqlDatabase db) : m_db(std::move(db)) {}

Query::~Query()
{
    release();
}

std::optional<UserMessage> Query::exec(const QString &title, const QString &sql, const QVariantList &values)
{
    release();
    m_sql = sql;
    acquire();
    return run(title, values);
}

void Query::acquire()
{
    const QString name = m_db.connectionName();
    const void *handle = sessionHandle(m_db);
    if (handle) {
        Statements stale;
        QPointer<QSqlDriver> staleDriver;
        Statements evicted;
        {
            QMutexLocker lock(&keptMutex);
            ConnectionStatements &connection = keptStatements()[name];
            if (connection.driver != m_db.driver() || connection.handle != handle) {
                stale = std::exchange(connection.statements, {});
                staleDriver = connection.driver;
                connection.driver = m_db.driver();
                connection.handle = handle;
            }
            if (!connection.statements.value(m_sql)) {
                // Room for it first: the statement used longest ago and not in use goes.
                if (connection.statements.size() > keptPerConnection) {
                    auto oldest = connection.statements.end();
                    for (auto it = connection.statements.begin(); it != connection.statements.end(); ++it) {
                        if (it.value() && !it.value()->inUse
                            && (oldest == connection.statements.end() || it.value()->lastUse < oldest.value()->lastUse))
                            oldest = it;
                    }
                    if (oldest != connection.statements.end()) {
                        evicted.insert(oldest.key(), oldest.value());
                        connection.statements.erase(oldest);
                    }
                }
                std::shared_ptr<KeptStatement> made = std::make_shared<KeptStatement>();
                made->query = std::make_unique<QSqlQuery>(m_db);
                made->query->setForwardOnly(true);
                connection.statements[m_sql] = made;
            }
            const std::shared_ptr<KeptStatement> &statement = connection.statements[m_sql];
            if (!statement->inUse) {
                statement->inUse = true;
                statement->lastUse = ++connection.clock;
                m_kept = statement;
            }
        }
        letGo(std::move(stale), staleDriver);
        evicted.clear();  // freed in the session they were prepared in
    }
    if (m_kept) {
        m_query = m_kept->query.get();
    } else {
        // The text is being read by another Query: this one runs a statement of its own.
        m_own = std::make_unique<QSqlQuery>(m_db);
        m_own->setForwardOnly(true);
        m_query = m_own.get();
    }
}

void Query::release()
{
    if (!m_query)
        return;
    m_query->finish();
    if (m_kept) {
        QMutexLocker lock(&keptMutex);
        m_kept->inUse = false;
    }
    m_kept.reset();
    m_own.reset();
    m_ownPrepared = false;
    m_query = nullptr;
}

std::optional<UserMessage> Query::run(const QString &title, const QVariantList &values)
{
    if (!m_query)
        acquire();
    if (auto failure = prepareOnce(*m_query, m_kept.get(), m_ownPrepared, m_db.connectionName(), m_sql, title))
        return failure;
    // A kept statement still holds the values of its last run: those beyond these are cleared.
    const qsizetype before = m_query->boundValues().size();
    for (qsizetype i = 0; i < values.size(); ++i)
        m_query->bindValue(static_cast<int>(i), values.at(i));
    for (qsizetype i = values.size(); i < before; ++i)
        m_query->bindValue(static_cast<int>(i), QVariant());
    return runBound(title);
}

std::optional<UserMessage> Query::run(const QString &title, const QVariantMap &named)
{
    if (!m_query)
        acquire();
    if (auto failure = prepareOnce(*m_query, m_kept.get(), m_ownPrepared, m_db.connectionName(), m_sql, title))
        return failure;
    for (auto it = named.begin(); it != named.end(); ++it)
        m_query->bindValue(it.key().startsWith(QLatin1Char(':')) ? it.key() : QLatin1Char(':') + it.key(), it.value());
    return runBound(title);
}

std::optional<UserMessage> Query::runOnce(const QString &title)
{
    release();
    m_own = std::make_unique<QSqlQuery>(m_db);
    m_own->setForwardOnly(true);
    m_query = m_own.get();
    if (!m_query->exec(m_sql))
        return sqlErrorMessage(title, m_query->lastError());
    return std::nullopt;
}

std::optional<UserMessage> Query::runBound(const QString &title)
{
    if (!m_query->exec())
        return sqlErrorMessage(title, m_query->lastError());
    return std::nullopt;
}

std::optional<UserMessage> Query::readFailure(const QString &title) const
{
    if (m_query->lastError().isValid())
        return sqlErrorMessage(title, m_query->lastError());
    return std::nullopt;
}

std::optional<UserMessage> execute(QSqlDatabase db, const QString &title, const QString &sql, const QVariantList &values)
{
    Query query(std::move(db), sql);
    return query.run(title, values);
}

Checked<QVariant> scalar(QSqlDatabase db, const QString &title, const QString &sql, const QVariantList &values)
{
    Query query(std::move(db), sql);
    if (auto failure = query.run(title, values))
        return *failure;
    return query.next() ? query.value(0) : QVariant();
}

Checked<RowSet> readRows(QSqlDatabase db, const QString &title, const QString &sql, const QVariantList &values)
{
    Query query(std::move(db), sql);
    if (auto failure = query.run(title, values))
        return *failure;
    return query.rows(title);
}

std::optional<UserMessage> executeOnVersion(QSqlDatabase db, const QString &title, const QString &sql,
                                            const QVariantList &values)
{
    Query query(std::move(db), sql);
    if (auto failure = query.run(title, values))
        return failure;
    if (query.rowsAffected() != 1)
        return rowConflictMessage(title);
    return std::nullopt;
}

QString placeholders(qsizetype count)
{
    return QStringList(count, QStringLiteral("?")).join(QStringLiteral(", "));
}

void forgetStatements(const QString &connectionName)
{
    ConnectionStatements gone;
    {
        QMutexLocker lock(&keptMutex);
        gone = keptStatements().take(connectionName);
    }
    if (!gone.driver)
        return;  // its driver is gone: nothing is left to free on the server
    const void *now = QSqlDatabase::contains(connectionName)
                          ? sessionHandle(QSqlDatabase::database(connectionName, false))
                          : nullptr;
    // Still in their session: freed now (on PostgreSQL, deallocated on the server). Otherwise they
    // wait for their driver.
    if (now != gone.handle)
        letGo(std::move(gone.statements), gone.driver);
}

int keptStatementCount(const QString &connectionName)
{
    QMutexLocker lock(&keptMutex);
    const auto connection = keptStatements().constFind(connectionName);
    return connection == keptStatements().constEnd() ? 0 : static_cast<int>(connection->statements.size());
}

namespace {

QString privateName()
{
    static QAtomicInteger<quint64> counter;
    return QStringLiteral("zarek_private_%1_%2").arg(reinterpret_cast<quintptr>(&counter)).arg(counter.fetchAndAddRelaxed(1));
}

}

PrivateConnection::PrivateConnection(const QString &sqlitePath, const QString &options) : m_name(privateName())
{
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name);
    db.setDatabaseName(sqlitePath);
    db.setConnectOptions(options);
    db.open();
}

PrivateConnection::PrivateConnection(const QSqlDatabase &cloneOf) : m_name(privateName())
{
    QSqlDatabase clone = QSqlDatabase::cloneDatabase(cloneOf, m_name);
    clone.open();
}

PrivateConnection::~PrivateConnection()
{
    forgetStatements(m_name);
    {
        QSqlDatabase db = QSqlDatabase::database(m_name, false);
        db.close();
    }
    QSqlDatabase::removeDatabase(m_name);
}

}
