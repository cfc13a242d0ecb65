#include "archivesnapshot.h"

#include "core/dates.h"
#include "data/dialect.h"
#include "data/schema.h"

#include <QFileInfo>
#include <QTime>
#include <cctype>
#include <charconv>

#include <postgresql/libpq-fe.h>

#pragma GCC visibility push(hidden)
#include <sqlite3.h>
#pragma GCC visibility pop

namespace zarek::archiving {

namespace {

const QString coursesTable = QStringLiteral("tabl");

QStringList schemaColumns(const QString &key)
{
    for (const SchemaTable &table : schemaTables()) {
        if (table.name == key)
            return table.columns;
    }
    return {};
}

// Rows of a PostgreSQL query read with COPY … TO STDOUT in its text format, in the transaction the
// connection is in: each field unescaped, \N read as no value.
class CopyOut {
public:
    explicit CopyOut(PGconn *connection) : m_connection(connection) {}
    ~CopyOut()
    {
        // A copy left early is read to its end, so the connection is free for what follows (each
        // step frees the row before).
        while (next()) {
        }
    }
    CopyOut(const CopyOut &) = delete;
    CopyOut &operator=(const CopyOut &) = delete;

    std::optional<Fault> start(const QString &query)
    {
        PGresult *result = PQexec(m_connection, QStringLiteral("COPY (%1) TO STDOUT").arg(query).toUtf8().constData());
        const bool ready = PQresultStatus(result) == PGRES_COPY_OUT;
        const QString error = QString::fromUtf8(PQresultErrorMessage(result)).simplified();
        PQclear(result);
        if (!ready)
            return Fault{error};
        m_open = true;
        return std::nullopt;
    }

    // The next row; false at the end or on a failure (fault() tells which).
    bool next()
    {
        if (m_row) {
            PQfreemem(m_row);
            m_row = nullptr;
        }
        if (!m_open)
            return false;
        const int size = PQgetCopyData(m_connection, &m_row, 0);
        if (size < 0) {
            m_open = false;
            while (PGresult *result = PQgetResult(m_connection)) {
                if (PQresultStatus(result) != PGRES_COMMAND_OK && !m_fault)
                    m_fault = Fault{QString::fromUtf8(PQresultErrorMessage(result)).simplified()};
                PQclear(result);
            }
            if (size == -2 && !m_fault)
                m_fault = Fault{QString::fromUtf8(PQerrorMessage(m_connection)).simplified()};
            return false;
        }
        split(m_row, size);
        return true;
    }

    std::optional<Fault> fault() const { return m_fault; }
    qsizetype fields() const { return m_count; }
    bool isNull(qsizetype field) const { return m_null.at(field); }
    const QByteArray &field(qsizetype field) const { return m_fields.at(field); }

private:
    void split(const char *row, int size)
    {
        if (size > 0 && row[size - 1] == '\n')
            --size;
        m_count = 0;
        const char *end = row + size;
        const char *at = row;
        for (;;) {
            if (m_count == m_fields.size()) {
                m_fields.append(QByteArray());
                m_null.append(false);
            }
            QByteArray &field = m_fields[m_count];
            field.clear();
            const char *start = at;
            while (at < end && *at != '\t')
                ++at;
            m_null[m_count] = at - start == 2 && start[0] == '\\' && start[1] == 'N';
            if (!m_null[m_count])
                unescape(start, at, field);
            ++m_count;
            if (at >= end)
                break;
            ++at;
        }
    }

    static void unescape(const char *from, const char *end, QByteArray &out)
    {
        const char *plain = from;
        for (const char *at = from; at < end; ++at) {
            if (*at != '\\' || at + 1 >= end)
                continue;
            out.append(plain, at - plain);
            const char c = *++at;
            switch (c) {
            case 'b': out.append('\b'); break;
            case 'f': out.append('\f'); break;
            case 'n': out.append('\n'); break;
            case 'r': out.append('\r'); break;
            case 't': out.append('\t'); break;
            case 'v': out.append('\v'); break;
            case 'x': {
                int value = 0;
                int digits = 0;
                while (digits < 2 && at + 1 < end && std::isxdigit(static_cast<unsigned char>(at[1]))) {
                    value = value * 16 + QByteArray(1, *++at).toInt(nullptr, 16);
                    ++digits;
                }
                if (digits == 0)
                    out.append('x');
                else
                    out.append(char(value));
                break;
            }
            default:
                if (c >= '0' && c <= '7') {
                    int value = c - '0';
                    for (int digits = 1; digits < 3 && at + 1 < end && at[1] >= '0' && at[1] <= '7'; ++digits)
                        value = value * 8 + (*++at - '0');
                    out.append(char(value));
                } else {
                    out.append(c);
                }
            }
            plain = at + 1;
        }
        out.append(plain, end - plain);
    }

    PGconn *m_connection;
    char *m_row = nullptr;
    bool m_open = false;
    std::optional<Fault> m_fault;
    QList<QByteArray> m_fields;
    QList<bool> m_null;
    qsizetype m_count = 0;
};

// The column types whose text COPY gives is bound here to the value Qt's drivers would store.
bool copiedAsText(int type)
{
    switch (type) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::Double:
    case QMetaType::QString:
    case QMetaType::QDate:
    case QMetaType::QTime:
    case QMetaType::QByteArray:
        return true;
    default:
        return false;
    }
}

// One field of PostgreSQL's text into the SQLite statement, stored as the program stores the value
// Qt's PostgreSQL driver reads from it: flags as 0 and 1, numbers as numbers, dates as yyyy-MM-dd,
// times as hh:mm:ss.zzz, scans as bytes, a value the driver cannot read as none.
int bindField(sqlite3_stmt *insert, int index, const CopyOut &rows, qsizetype field, int type)
{
    if (rows.isNull(field))
        return sqlite3_bind_null(insert, index);
    const QByteArray &text = rows.field(field);
    const char *begin = text.constData();
    const char *end = begin + text.size();
    switch (type) {
    case QMetaType::Bool:
        return sqlite3_bind_int64(insert, index, text.startsWith('t') ? 1 : 0);
    case QMetaType::Int:
    case QMetaType::LongLong: {
        qint64 number = 0;
        const auto read = std::from_chars(begin, end, number);
        return read.ec == std::errc() ? sqlite3_bind_int64(insert, index, number) : sqlite3_bind_null(insert, index);
    }
    case QMetaType::Double: {
        double number = 0;
        const auto read = std::from_chars(begin, end, number);
        return read.ec == std::errc() ? sqlite3_bind_double(insert, index, number) : sqlite3_bind_null(insert, index);
    }
    case QMetaType::QDate: {
        const QDate date = QDate::fromString(QLatin1StringView(text), Qt::ISODate);
        if (!date.isValid())
            return sqlite3_bind_null(insert, index);
        const QByteArray shown = isoDateText(date).toLatin1();
        return sqlite3_bind_text(insert, index, shown.constData(), int(shown.size()), SQLITE_TRANSIENT);
    }
    case QMetaType::QTime: {
        const QTime time = QTime::fromString(QLatin1StringView(text), Qt::ISODate);
        if (!time.isValid())
            return sqlite3_bind_null(insert, index);
        const QByteArray shown = time.toString(QStringLiteral("hh:mm:ss.zzz")).toLatin1();
        return sqlite3_bind_text(insert, index, shown.constData(), int(shown.size()), SQLITE_TRANSIENT);
    }
    case QMetaType::QByteArray: {
        if (!text.startsWith("\\x"))
            return SQLITE_MISMATCH;
        const QByteArray bytes = QByteArray::fromHex(text.mid(2));
        return sqlite3_bind_blob(insert, index, bytes.constData(), int(bytes.size()), SQLITE_TRANSIENT);
    }
    default:
        return sqlite3_bind_text(insert, index, begin, int(text.size()), SQLITE_TRANSIENT);
    }
}

// A table's rows from PostgreSQL by COPY into the SQLite file, one prepared INSERT a row.
std::optional<Fault> copyTable(PGconn *connection, QSqlDatabase out, const TableNames &table, const QStringList &columns)
{
    sqlite3 *file = sqliteHandle(out);
    if (!file)
        return Fault{QStringLiteral("няма връзка с архива")};
    const QByteArray sql = QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)")
                               .arg(quoted(table.key), quotedList(columns),
                                    QStringList(columns.size(), QStringLiteral("?")).join(QLatin1Char(',')))
                               .toUtf8();
    sqlite3_stmt *insert = nullptr;
    if (sqlite3_prepare_v2(file, sql.constData(), int(sql.size()), &insert, nullptr) != SQLITE_OK)
        return Fault{QString::fromUtf8(sqlite3_errmsg(file))};
    const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt *)> owned(insert, sqlite3_finalize);
    CopyOut rows(connection);
    if (auto fault = rows.start(QStringLiteral("SELECT %1 FROM %2 ORDER BY 1").arg(quotedList(table.columns), quoted(table.table))))
        return fault;
    const int count = int(table.columns.size());
    while (rows.next()) {
        if (rows.fields() != count)
            return Fault{QStringLiteral("в таблица %1 е прочетен ред с %2 полета вместо %3").arg(table.key).arg(rows.fields()).arg(count)};
        for (int i = 0; i < count; ++i) {
            if (bindField(insert, i + 1, rows, i, table.types.at(i)) != SQLITE_OK)
                return Fault{QString::fromUtf8(sqlite3_errmsg(file))};
        }
        const int done = sqlite3_step(insert);
        sqlite3_reset(insert);
        if (done != SQLITE_DONE)
            return Fault{QString::fromUtf8(sqlite3_errmsg(file))};
    }
    if (auto fault = rows.fault())
        return fault;
    return std::nullopt;
}

}

Snapshot::Snapshot(QSqlDatabase db, bool forYearClose) : m_db(std::move(db)), m_yearClose(forYearClose) {}

Snapshot::~Snapshot()
{
    m_transaction.reset();  // rolls back what was not committed, before its connection goes
    m_copy.reset();
    m_work.reset();
}

std::optional<Fault> Snapshot::begin()
{
    if (!m_db.isOpen())
        return Fault{QStringLiteral("няма връзка с базата данни")};
    m_sqlite = dialectOf(m_db) == Dialect::SQLite;
    if (auto fault = resolveNames(m_db, m_names))
        return fault;
    m_work = std::make_unique<PrivateConnection>(m_db);
    QSqlDatabase work = m_work->db();
    if (!work.isOpen())
        return engineFault(work.lastError());
    if (m_sqlite) {
        m_copy = std::make_unique<PrivateConnection>(m_db);
        if (!m_copy->db().isOpen())
            return engineFault(m_copy->db().lastError());
        skipSyncs(m_copy->db());
        m_transaction = std::make_unique<Transaction>(work, Transaction::Lock::Writer);
        if (!m_transaction->isActive())
            return engineFault(m_transaction->lastError());
    } else {
        m_transaction = std::make_unique<Transaction>(work);
        if (!m_transaction->isActive())
            return engineFault(m_transaction->lastError());
        QSqlQuery query(work);
        // The isolation first, and the lock before any read, so the snapshot already holds it.
        QStringList statements = {m_yearClose ? QStringLiteral("SET TRANSACTION ISOLATION LEVEL REPEATABLE READ")
                                              : QStringLiteral("SET TRANSACTION ISOLATION LEVEL REPEATABLE READ, READ ONLY")};
        if (m_yearClose)
            statements << QStringLiteral("SET LOCAL lock_timeout = '15s'")
                       << QStringLiteral("LOCK TABLE %1 IN EXCLUSIVE MODE").arg(quoted(courses().table));
        for (const QString &statement : statements) {
            if (!query.exec(statement))
                return engineFault(query.lastError());
        }
    }
    return countRows(work, m_names, m_counts);
}

std::optional<Fault> Snapshot::writeTo(const QString &emptyFile, const std::function<void()> &tableDone)
{
    if (m_sqlite) {
        // The engine's page copy, read in one transaction of the second connection: the state the
        // first one counted, since it holds the write lock.
        PrivateConnection archive(emptyFile);
        QSqlDatabase out = archive.db();
        if (!out.isOpen())
            return engineFault(out.lastError());
        skipSyncs(out);
        PageCopy copy(m_copy->db(), out);
        if (auto fault = copy.copyAll())
            return fault;
        return useRollbackJournal(out);
    }
    return copyRowsInto(emptyFile, tableDone);
}

std::optional<Fault> Snapshot::deleteCourses(qint64 *deleted)
{
    QSqlQuery query(m_work->db());
    if (!query.exec(QStringLiteral("DELETE FROM ") + quoted(courses().table)))
        return engineFault(query.lastError());
    *deleted = query.numRowsAffected();
    if (*deleted != m_counts.value(coursesTable))
        return Fault{QStringLiteral("изтрити са %1 курса от %2").arg(*deleted).arg(m_counts.value(coursesTable))};
    return std::nullopt;
}

std::optional<Fault> Snapshot::commit()
{
    if (!m_transaction->commit())
        return engineFault(m_transaction->lastError());
    return std::nullopt;
}

const TableNames &Snapshot::courses() const
{
    for (const TableNames &table : m_names) {
        if (table.key == coursesTable)
            return table;
    }
    Q_UNREACHABLE();
}

// PostgreSQL's rows into a new SQLite file with the schema of this program: the values as the
// driver gives them, so dates, times and flags are stored as the program stores them on SQLite.
std::optional<Fault> Snapshot::copyRowsInto(const QString &emptyFile, const std::function<void()> &tableDone)
{
    PrivateConnection archive(emptyFile);
    QSqlDatabase out = archive.db();
    if (!out.isOpen())
        return engineFault(out.lastError());
    skipSyncs(out);
    largeCache(out);
    if (auto failure = upgradeSchema(out))
        return Fault{failure->text.section(QLatin1Char('\n'), 0, 0)};
    std::list<QSqlQuery> statements;
    Transaction writing(out);
    if (!writing.isActive())
        return engineFault(writing.lastError());
    QStringList indexes;
    if (auto fault = dropIndexes(out, QStringLiteral("main"), QString(), &indexes))
        return fault;
    // COPY's text in the forms read below, whatever the server's settings: scans in hex, numbers
    // to their last digit, dates as yyyy-mm-dd.
    if (auto fault = execAll(m_work->db(), {QStringLiteral("SET LOCAL bytea_output = 'hex'"),
                                            QStringLiteral("SET LOCAL extra_float_digits = 3"),
                                            QStringLiteral("SET LOCAL DateStyle = 'ISO, YMD'")}))
        return fault;
    for (const TableNames &table : m_names) {
        // A migration may have put rows of its own in the new file (the standard document kinds):
        // the archive holds the database's rows and no others.
        QSqlQuery empty(out);
        if (!empty.exec(QStringLiteral("DELETE FROM ") + quoted(table.key)))
            return engineFault(empty.lastError());
        PGconn *connection = libpqConnection(m_work->db());
        if (connection && std::all_of(table.types.cbegin(), table.types.cend(), copiedAsText)) {
            if (auto fault = copyTable(connection, out, table, schemaColumns(table.key)))
                return fault;
            if (tableDone)
                tableDone();
            continue;
        }
        QSqlQuery read(m_work->db());
        read.setForwardOnly(true);
        if (!read.exec(QStringLiteral("SELECT %1 FROM %2 ORDER BY 1").arg(quotedList(table.columns), quoted(table.table))))
            return engineFault(read.lastError());
        BatchInsert insert(out, table.key, schemaColumns(table.key), statements);
        const int columns = int(table.columns.size());
        while (read.next()) {
            for (int i = 0; i < columns; ++i) {
                if (auto fault = insert.add(read.value(i)))
                    return fault;
            }
        }
        if (read.lastError().isValid())
            return engineFault(read.lastError());
        if (auto fault = insert.flush())
            return fault;
        if (tableDone)
            tableDone();
    }
    if (!m_secondaryIndexes) {
        indexes.erase(std::remove_if(indexes.begin(), indexes.end(), [](const QString &sql) {
            return !sql.startsWith(QLatin1String("CREATE UNIQUE"), Qt::CaseInsensitive);
        }), indexes.end());
    }
    if (auto fault = execAll(out, indexes))
        return fault;
    if (!writing.commit())
        return engineFault(writing.lastError());
    return std::nullopt;
}

std::optional<Fault> writeChecked(Snapshot &snapshot, const WorkFile &file, Steps &steps)
{
    if (auto fault = createEmptyFile(file.path()))
        return fault;
    if (auto fault = snapshot.writeTo(file.path(), [&steps] { steps.done(); }))
        return fault;
    if (auto fault = checkWrittenArchive(file.path(), snapshot.counts()))
        return fault;
    steps.done();
    syncToDisk(file.path());
    return std::nullopt;
}

std::optional<Fault> writeArchiveFile(QSqlDatabase db, const QString &path, Steps &steps, RowCounts *counts, ArchiveUse use)
{
    Snapshot snapshot(db, false);
    if (use == ArchiveUse::SafetyCopy)
        snapshot.leaveOutSecondaryIndexes();
    if (auto fault = snapshot.begin())
        return fault;
    steps.done();
    WorkFile file(path);
    if (auto fault = writeChecked(snapshot, file, steps))
        return fault;
    if (auto fault = moveInto(file.path(), path))
        return fault;
    file.keep();
    syncToDisk(QFileInfo(path).absolutePath());
    *counts = snapshot.counts();
    return std::nullopt;
}

}
