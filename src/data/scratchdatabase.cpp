#include "scratchdatabase.h"

#include "data/query.h"
#include "data/sqlerror.h"
#include "data/transaction.h"
#include "data/scratchtables.h"

#include <QAtomicInt>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLockFile>
#include <QSqlError>
#include <QSqlQuery>
#include <QStandardPaths>

namespace zarek {

namespace {

const QString errorTitle = QStringLiteral("ГРЕШКА при работа с временната база!");
const QString lockSuffix = QStringLiteral(".lock");

QAtomicInt fileCounter;

void removeDatabaseFiles(const QString &path)
{
    for (const QString &suffix : {QString(), QStringLiteral("-journal"), QStringLiteral("-wal"), QStringLiteral("-shm")})
        QFile::remove(path + suffix);
}

UserMessage failure(const QString &text)
{
    return UserMessage{errorTitle, text, UserMessage::Icon::Critical};
}

}

ScratchDatabase::ScratchDatabase(QString folder) : m_folder(std::move(folder)) {}

ScratchDatabase::~ScratchDatabase()
{
    close(true);
}

QString ScratchDatabase::defaultFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation) + QStringLiteral("/scratch");
}

int ScratchDatabase::removeStaleFiles(const QString &folder)
{
    QDir dir(folder);
    int removed = 0;
    // A file whose lock can be taken belongs to a copy that is gone.
    for (const QString &lockName : dir.entryList({QStringLiteral("Temp-*.db") + lockSuffix}, QDir::Files)) {
        const QString lockPath = dir.filePath(lockName);
        QLockFile lock(lockPath);
        lock.setStaleLockTime(0);  // only a dead owner makes a lock stale, never its age
        if (!lock.tryLock(0))
            continue;
        removeDatabaseFiles(lockPath.chopped(lockSuffix.size()));
        lock.unlock();
        ++removed;
    }
    // A file without a lock was left by a copy that died while making it.
    for (const QString &name : dir.entryList({QStringLiteral("Temp-*.db")}, QDir::Files)) {
        if (!QFile::exists(dir.filePath(name) + lockSuffix)) {
            removeDatabaseFiles(dir.filePath(name));
            ++removed;
        }
    }
    return removed;
}

std::optional<UserMessage> ScratchDatabase::open()
{
    if (isOpen())
        return std::nullopt;
    QDir dir;
    if (!dir.mkpath(m_folder))
        return failure(QStringLiteral("Папката %1 не може да бъде създадена.").arg(m_folder));
    QFile::setPermissions(m_folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    removeStaleFiles(m_folder);

    const QString base = QStringLiteral("Temp-%1-%2.db").arg(QCoreApplication::applicationPid()).arg(fileCounter.fetchAndAddRelaxed(1) + 1);
    m_path = QDir(m_folder).filePath(base);
    m_lock = std::make_unique<QLockFile>(m_path + lockSuffix);
    m_lock->setStaleLockTime(0);
    if (!m_lock->tryLock(0)) {
        m_lock.reset();
        return failure(QStringLiteral("Файлът %1 е зает от друго копие на програмата.").arg(m_path));
    }
    removeDatabaseFiles(m_path);
    {
        QFile file(m_path);
        if (!file.open(QIODevice::WriteOnly))
            return failure(QStringLiteral("Файлът %1 не може да бъде създаден.").arg(m_path));
        file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    }
    m_connection = QStringLiteral("ConnTemp-") + base;
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connection);
    db.setDatabaseName(m_path);
    if (!db.open()) {
        const UserMessage message = sqlErrorMessage(errorTitle, db.lastError());
        close(true);
        return message;
    }
    // Nothing here outlives the program: speed over durability.
    QSqlQuery pragma(db);
    pragma.exec(QStringLiteral("PRAGMA synchronous = OFF"));
    pragma.exec(QStringLiteral("PRAGMA journal_mode = MEMORY"));
    return std::nullopt;
}

bool ScratchDatabase::isOpen() const
{
    return !m_connection.isEmpty() && QSqlDatabase::database(m_connection, false).isOpen();
}

QSqlDatabase ScratchDatabase::db() const
{
    return m_connection.isEmpty() ? QSqlDatabase() : QSqlDatabase::database(m_connection, false);
}

std::optional<UserMessage> ScratchDatabase::RebuildScratchTable(const QString &name)
{
    std::optional<ScratchTable> table = scratchTable(name);
    if (!table)
        return failure(QStringLiteral("Непозната временна таблица %1.").arg(name));
    if (auto refusal = open())
        return refusal;
    QSqlDatabase database = db();
    Transaction transaction(database);
    if (!transaction.isActive())
        return sqlErrorMessage(errorTitle, database.lastError());
    QSqlQuery query(database);
    // Every table of the last rebuild goes, whichever it was.
    QStringList existing;
    if (!query.exec(QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table'")))
        return sqlErrorMessage(errorTitle, query.lastError());
    while (query.next())
        existing.append(query.value(0).toString());
    query.finish();
    for (const QString &old : existing) {
        if (!query.exec(QStringLiteral("DROP TABLE \"%1\"").arg(QString(old).replace(QLatin1Char('"'), QStringLiteral("\"\"")))))
            return sqlErrorMessage(errorTitle, query.lastError());
    }
    QList<ScratchTable> tables = {*table};
    if (table->name == QLatin1String("TempKlients"))
        tables.append(*scratchTable(QStringLiteral("TempKlientsNew")));
    for (const ScratchTable &t : tables) {
        if (!query.exec(scratchTableDdl(t)))
            return sqlErrorMessage(errorTitle, query.lastError());
    }
    if (!transaction.commit())
        return sqlErrorMessage(errorTitle, database.lastError());
    return std::nullopt;
}

Checked<RowSet> ScratchDatabase::layOut(const QString &table, const QStringList &columns,
                                        const QList<QVariantList> &rows, const QString &readBack)
{
    if (auto refusal = RebuildScratchTable(table))
        return *refusal;
    if (auto failure = fillScratchTable(db(), errorTitle, table, columns, rows))
        return *failure;
    return readRows(db(), errorTitle, readBack);
}

std::optional<UserMessage> fillScratchTable(QSqlDatabase scratch, const QString &title, const QString &table,
                                            const QStringList &columns, const QList<QVariantList> &rows,
                                            const std::function<void(int)> &progress)
{
    // Many rows to a statement: one statement a row costs more than the row. What is left over
    // goes a row at a time, so a table has only two statements to keep.
    constexpr int rowsPerStatement = 64;
    const QString one = QLatin1Char('(') + placeholders(columns.size()) + QLatin1Char(')');
    const QString head = QStringLiteral("INSERT INTO %1 (%2) VALUES ").arg(table, columns.join(QStringLiteral(", ")));
    Transaction transaction(scratch);
    if (!transaction.isActive())
        return sqlErrorMessage(title, transaction.lastError());
    if (auto failure = execute(scratch, title, QStringLiteral("DELETE FROM %1").arg(table)))
        return failure;
    const qsizetype batched = rows.size() - rows.size() % rowsPerStatement;
    if (batched > 0) {
        Query insert(scratch, head + QStringList(rowsPerStatement, one).join(QStringLiteral(", ")));
        QVariantList values;
        for (qsizetype first = 0; first < batched; first += rowsPerStatement) {
            values.clear();
            for (qsizetype row = first; row < first + rowsPerStatement; ++row)
                values.append(rows.at(row));
            if (auto failure = insert.run(title, values))
                return failure;
            if (progress)
                progress(static_cast<int>(first + rowsPerStatement));
        }
    }
    if (batched < rows.size()) {
        Query insert(scratch, head + one);
        for (qsizetype row = batched; row < rows.size(); ++row) {
            if (auto failure = insert.run(title, rows.at(row)))
                return failure;
        }
    }
    if (!transaction.commit())
        return sqlErrorMessage(title, transaction.lastError());
    if (progress)
        progress(static_cast<int>(rows.size()));
    return std::nullopt;
}

void ScratchDatabase::close(bool removeFile)
{
    if (!m_connection.isEmpty()) {
        forgetStatements(m_connection);
        {
            QSqlDatabase db = QSqlDatabase::database(m_connection, false);
            db.close();
        }
        QSqlDatabase::removeDatabase(m_connection);
        m_connection.clear();
    }
    if (removeFile && !m_path.isEmpty())
        removeDatabaseFiles(m_path);
    if (m_lock) {
        m_lock->unlock();
        m_lock.reset();
    }
    if (removeFile)
        m_path.clear();
}

}
