#include "restore.h"

#include "core/dates.h"
#include "data/archivecheck.h"
#include "data/archivesnapshot.h"
#include "data/dialect.h"
#include "data/schema.h"

#include <QDate>
#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QMutex>
#include <QSet>
#include <QTime>
#include <QSqlDriver>
#include <QVariant>

#include <postgresql/libpq-fe.h>

#pragma GCC visibility push(hidden)
#include <sqlite3.h>
#pragma GCC visibility pop

#include <QUtf8StringView>

namespace zarek {

using namespace archiving;

namespace {

const QString firmTable = QStringLiteral("ZarekCfg");
const QString archiveSchema = QStringLiteral("zarek_archive");

const QString otherArchiveRequest = QStringLiteral("Моля, посочете друг архивен файл. Данните не са променени.");

UserMessage restoreRefusal(const QString &fault, const QString &request = otherArchiveRequest)
{
    return UserMessage::twoLines(restoreErrorTitle(), fault, request, UserMessage::Icon::Critical);
}

UserMessage notAnArchive(const QString &path)
{
    return restoreRefusal(QStringLiteral("Файлът %1 не е архив на Зарек!").arg(shown(path)));
}

UserMessage damagedArchive(const QString &path)
{
    return restoreRefusal(QStringLiteral("Архивът %1 е повреден!").arg(shown(path)));
}

// SQLite's result codes as Qt reports them.
constexpr int sqliteCorrupt = 11;
constexpr int sqliteNotADatabase = 26;

UserMessage readRefusal(const QString &path, const QSqlError &error)
{
    const QString code = error.nativeErrorCode();
    if (code == QString::number(sqliteNotADatabase))
        return notAnArchive(path);
    if (code == QString::number(sqliteCorrupt))
        return damagedArchive(path);
    return restoreRefusal(QStringLiteral("Архивът %1 не може да бъде прочетен: %2").arg(shown(path), engineText(error)));
}

// A value of the SQLite archive in the type of PostgreSQL's column. A value that does not read
// as that type goes as it is, and PostgreSQL refuses it: the restore stops, nothing is guessed.
QVariant forPostgres(const QVariant &value, int type)
{
    if (value.isNull())
        return QVariant(QMetaType(type));
    bool ok = true;
    switch (type) {
    case QMetaType::Bool:
        if (value.typeId() == QMetaType::QString) {
            const QString text = value.toString().trimmed().toLower();
            if (text == QLatin1String("true") || text == QLatin1String("1"))
                return true;
            if (text == QLatin1String("false") || text == QLatin1String("0"))
                return false;
            return value;
        }
        return value.toLongLong() != 0;
    case QMetaType::QDate: {
        const QDate date = QDate::fromString(value.toString().left(10), Qt::ISODate);
        return date.isValid() ? QVariant(date) : value;
    }
    case QMetaType::QTime: {
        const QTime time = QTime::fromString(value.toString(), Qt::ISODateWithMs);
        return time.isValid() ? QVariant(time) : value;
    }
    case QMetaType::Double: {
        const double number = value.toDouble(&ok);
        return ok ? QVariant(number) : value;
    }
    case QMetaType::Int:
    case QMetaType::LongLong: {
        const qlonglong number = value.toLongLong(&ok);
        return ok ? QVariant(number) : value;
    }
    case QMetaType::QString:
        return value.toString();
    default:
        return value;
    }
}

// Rows sent to PostgreSQL with COPY … FROM STDIN in its text format, in the transaction the
// connection is in: the values of forPostgres, each written as the engine reads it back, so the
// engine checks every one as an INSERT would (a value that is not of its column's type stops it).
class CopyIn {
public:
    CopyIn(PGconn *connection, int columns) : m_connection(connection), m_columns(columns) {}

    std::optional<Fault> start(const QString &table, const QStringList &columns)
    {
        const QByteArray sql = QStringLiteral("COPY %1 (%2) FROM STDIN").arg(quoted(table), quotedList(columns)).toUtf8();
        PGresult *result = PQexec(m_connection, sql.constData());
        const bool ready = PQresultStatus(result) == PGRES_COPY_IN;
        const QString error = QString::fromUtf8(PQresultErrorMessage(result)).simplified();
        PQclear(result);
        if (!ready)
            return Fault{error};
        return std::nullopt;
    }

    std::optional<Fault> add(const QVariant &value)
    {
        return field([&] { write(value); });
    }

    // A value already in the engine's words: text as it is, escaped; a number; no value.
    std::optional<Fault> addText(const char *text, qsizetype bytes)
    {
        return field([&] { writeText(text, bytes); });
    }
    std::optional<Fault> addInteger(qint64 value)
    {
        return field([&] { m_buffer.append(QByteArray::number(value)); });
    }
    std::optional<Fault> addDouble(double value)
    {
        return field([&] { writeDouble(value); });
    }
    std::optional<Fault> addFlag(bool value)
    {
        return field([&] { writeFlag(value); });
    }
    std::optional<Fault> addNull()
    {
        return field([&] { m_buffer.append("\\N"); });
    }
    std::optional<Fault> addBytes(const char *bytes, qsizetype size)
    {
        return field([&] { writeBytes(bytes, size); });
    }

    std::optional<Fault> finish()
    {
        if (auto fault = send())
            return fault;
        if (PQputCopyEnd(m_connection, nullptr) != 1)
            return Fault{QString::fromUtf8(PQerrorMessage(m_connection)).simplified()};
        std::optional<Fault> fault;
        while (PGresult *result = PQgetResult(m_connection)) {
            if (PQresultStatus(result) != PGRES_COMMAND_OK && !fault)
                fault = Fault{QString::fromUtf8(PQresultErrorMessage(result)).simplified()};
            PQclear(result);
        }
        return fault;
    }

private:
    // One field: a tab before it unless it is the row's first, a line break after the row's last;
    // the rows go to the engine a megabyte at a time.
    template <typename Write>
    std::optional<Fault> field(Write write)
    {
        if (m_column > 0)
            m_buffer.append('\t');
        write();
        if (++m_column == m_columns) {
            m_buffer.append('\n');
            m_column = 0;
            if (m_buffer.size() > (1 << 20))
                return send();
        }
        return std::nullopt;
    }

    // UTF-8 text with the four characters COPY reads as escapes written as such.
    void writeText(const char *text, qsizetype bytes)
    {
        const char *end = text + bytes;
        const char *from = text;
        for (const char *at = text; at < end; ++at) {
            const char c = *at;
            if (c != '\\' && c != '\t' && c != '\n' && c != '\r')
                continue;
            m_buffer.append(from, at - from);
            m_buffer.append('\\');
            m_buffer.append(c == '\\' ? '\\' : c == '\t' ? 't' : c == '\n' ? 'n' : 'r');
            from = at + 1;
        }
        m_buffer.append(from, end - from);
    }

    std::optional<Fault> send()
    {
        if (!m_buffer.isEmpty() && PQputCopyData(m_connection, m_buffer.constData(), int(m_buffer.size())) != 1)
            return Fault{QString::fromUtf8(PQerrorMessage(m_connection)).simplified()};
        m_buffer.clear();
        return std::nullopt;
    }

    void writeFlag(bool value) { m_buffer.append(value ? 't' : 'f'); }
    void writeDouble(double value) { m_buffer.append(QByteArray::number(value, 'g', 17)); }
    void writeBytes(const char *bytes, qsizetype size)
    {
        m_buffer.append("\\\\x");
        m_buffer.append(QByteArray::fromRawData(bytes, size).toHex());
    }

    void write(const QVariant &value)
    {
        if (value.isNull()) {
            m_buffer.append("\\N");
            return;
        }
        switch (value.typeId()) {
        case QMetaType::Bool: writeFlag(value.toBool()); return;
        case QMetaType::QDate: m_buffer.append(isoDateText(value.toDate()).toLatin1()); return;
        case QMetaType::QTime: m_buffer.append(value.toTime().toString(Qt::ISODateWithMs).toLatin1()); return;
        case QMetaType::Double: writeDouble(value.toDouble()); return;
        case QMetaType::Int:
        case QMetaType::LongLong: m_buffer.append(QByteArray::number(value.toLongLong())); return;
        case QMetaType::QByteArray: {
            const QByteArray bytes = value.toByteArray();
            writeBytes(bytes.constData(), bytes.size());
            return;
        }
        default: {
            const QByteArray text = value.toString().toUtf8();
            writeText(text.constData(), text.size());
        }
        }
    }

    PGconn *m_connection;
    int m_columns;
    int m_column = 0;
    QByteArray m_buffer;
};

// Rows of a SQLite statement read on the engine's own handle, each value as the engine holds it.
class EngineRows {
public:
    EngineRows(QSqlDatabase db, const QString &sql) : m_db(sqliteHandle(db))
    {
        if (!m_db) {
            m_fault = Fault{QStringLiteral("няма връзка с работното копие")};
            return;
        }
        const QByteArray text = sql.toUtf8();
        if (sqlite3_prepare_v2(m_db, text.constData(), int(text.size()), &m_statement, nullptr) != SQLITE_OK)
            m_fault = Fault{QString::fromUtf8(sqlite3_errmsg(m_db))};
    }
    ~EngineRows() { sqlite3_finalize(m_statement); }
    EngineRows(const EngineRows &) = delete;
    EngineRows &operator=(const EngineRows &) = delete;

    bool next()
    {
        if (m_fault || !m_statement)
            return false;
        const int code = sqlite3_step(m_statement);
        if (code == SQLITE_ROW)
            return true;
        if (code != SQLITE_DONE)
            m_fault = Fault{QString::fromUtf8(sqlite3_errmsg(m_db))};
        return false;
    }
    std::optional<Fault> fault() const { return m_fault; }
    sqlite3_stmt *statement() const { return m_statement; }

    // The value as Qt's driver gives it.
    QVariant value(int column) const
    {
        switch (sqlite3_column_type(m_statement, column)) {
        case SQLITE_INTEGER: return QVariant(qlonglong(sqlite3_column_int64(m_statement, column)));
        case SQLITE_FLOAT: return QVariant(sqlite3_column_double(m_statement, column));
        case SQLITE_BLOB: {
            const char *bytes = static_cast<const char *>(sqlite3_column_blob(m_statement, column));
            return QVariant(QByteArray(bytes, sqlite3_column_bytes(m_statement, column)));
        }
        case SQLITE_TEXT: {
            const auto *text = static_cast<const char16_t *>(sqlite3_column_text16(m_statement, column));
            return QVariant(QString::fromUtf16(text, sqlite3_column_bytes16(m_statement, column) / 2));
        }
        default: return QVariant();
        }
    }

private:
    sqlite3 *m_db = nullptr;
    sqlite3_stmt *m_statement = nullptr;
    std::optional<Fault> m_fault;
};

// One value of the working copy into COPY, as forPostgres would give it: written straight from the
// engine where that gives the same value (whole numbers, numbers, flags, texts, dates of ten
// characters, times, scans), through forPostgres otherwise.
std::optional<Fault> addValue(CopyIn &copy, const EngineRows &rows, int column, int type)
{
    sqlite3_stmt *row = rows.statement();
    switch (sqlite3_column_type(row, column)) {
    case SQLITE_NULL:
        return copy.addNull();
    case SQLITE_INTEGER: {
        const qint64 number = sqlite3_column_int64(row, column);
        if (type == QMetaType::Int || type == QMetaType::LongLong || type == QMetaType::QString)
            return copy.addInteger(number);
        if (type == QMetaType::Double)
            return copy.addDouble(double(number));
        if (type == QMetaType::Bool)
            return copy.addFlag(number != 0);
        break;
    }
    case SQLITE_FLOAT:
        if (type == QMetaType::Double)
            return copy.addDouble(sqlite3_column_double(row, column));
        break;
    case SQLITE_TEXT: {
        const char *text = reinterpret_cast<const char *>(sqlite3_column_text(row, column));
        const qsizetype bytes = sqlite3_column_bytes(row, column);
        if (!QUtf8StringView(text, bytes).isValidUtf8())
            break;
        if (type == QMetaType::QString || (type == QMetaType::QDate && bytes == 10)
            || (type == QMetaType::QTime && (bytes == 8 || bytes == 12)))
            return copy.addText(text, bytes);
        break;
    }
    case SQLITE_BLOB:
        if (type == QMetaType::QByteArray)
            return copy.addBytes(static_cast<const char *>(sqlite3_column_blob(row, column)), sqlite3_column_bytes(row, column));
        break;
    }
    return copy.add(forPostgres(rows.value(column), type));
}

// The restore on SQLite: the working copy attached and each table refilled from it by the engine
// itself, all under the write lock in one transaction.
std::optional<Fault> replaceOnSqlite(QSqlDatabase program, const PreparedArchive &archive, Steps &steps)
{
    PrivateConnection connection(program);
    QSqlDatabase db = connection.db();
    if (!db.isOpen())
        return engineFault(db.lastError());
    largeCache(db);
    {
        QSqlQuery attach(db);
        attach.prepare(QStringLiteral("ATTACH DATABASE ? AS %1").arg(archiveSchema));
        attach.addBindValue(archive.workingCopy());
        if (!attach.exec())
            return engineFault(attach.lastError());
    }
    std::optional<Fault> fault;
    {
        Transaction transaction(db, Transaction::Lock::Writer);
        if (!transaction.isActive())
            fault = engineFault(transaction.lastError());
        QSqlQuery query(db);
        for (const SchemaTable &table : schemaTables()) {
            if (fault)
                break;
            const QString target = QStringLiteral("main.") + quoted(table.name);
            if (!query.exec(QStringLiteral("SELECT COALESCE(MAX(row_version), 0) FROM ") + target) || !query.next()) {
                fault = engineFault(query.lastError());
                break;
            }
            const qint64 version = query.value(0).toLongLong() + 1;
            query.finish();
            QStringList source;
            for (const QString &column : table.columns)
                source.append(column == QLatin1String("row_version") ? QStringLiteral("?") : quoted(column));
            QStringList indexes;
            if ((fault = dropIndexes(db, QStringLiteral("main"), table.name, &indexes)))
                break;
            if (!query.exec(QStringLiteral("DELETE FROM ") + target)) {
                fault = engineFault(query.lastError());
                break;
            }
            query.prepare(QStringLiteral("INSERT INTO %1 (%2) SELECT %3 FROM %4.%5")
                              .arg(target, quotedList(table.columns), source.join(QStringLiteral(", ")), archiveSchema,
                                   quoted(table.name)));
            if (table.columns.contains(QStringLiteral("row_version")))
                query.addBindValue(version);
            if (!query.exec()) {
                fault = engineFault(query.lastError());
                break;
            }
            if (query.numRowsAffected() != archive.counts().value(table.name)) {
                fault = Fault{QStringLiteral("в таблица %1 са заредени %2 реда от %3")
                                  .arg(table.name)
                                  .arg(query.numRowsAffected())
                                  .arg(archive.counts().value(table.name))};
                break;
            }
            if ((fault = execAll(db, indexes)))
                break;
            steps.done();
        }
        query.finish();
        if (!fault && !transaction.commit())
            fault = engineFault(transaction.lastError());
    }

    {
        QSqlQuery detach(db);
        detach.exec(QStringLiteral("DETACH DATABASE ") + archiveSchema);
    }
    return fault;
}

// The restore on PostgreSQL: every table locked, emptied and refilled from the working copy by
// COPY, its indexes built once its rows are in, its identity moved past the highest id, all in
// one transaction.
std::optional<Fault> replaceOnPostgres(QSqlDatabase program, const PreparedArchive &archive, Steps &steps)
{
    PrivateConnection connection(program);
    QSqlDatabase db = connection.db();
    if (!db.isOpen())
        return engineFault(db.lastError());
    QList<TableNames> names;
    if (auto fault = resolveNames(db, names))
        return fault;
    PrivateConnection copy(archive.workingCopy(), readOnlyOptions());
    QSqlDatabase source = copy.db();
    if (!source.isOpen())
        return engineFault(source.lastError());

    // Prepared statements outlive the transaction: after a failure it is rolled back first, and
    // only then are they freed.
    std::list<QSqlQuery> statements;
    Transaction transaction(db, Transaction::Lock::Writer);
    if (!transaction.isActive())
        return engineFault(transaction.lastError());
    {
        QSqlQuery query(db);
        QStringList all;
        for (const TableNames &table : std::as_const(names))
            all.append(quoted(table.table));
        // Every table is taken whole (other copies of the program wait for the restore's few
        // seconds, even to read) and emptied by TRUNCATE, which a rollback undoes: the rows go
        // into a fresh table, and its indexes are built from them alone.
        if (!query.exec(QStringLiteral("LOCK TABLE %1 IN ACCESS EXCLUSIVE MODE").arg(all.join(QStringLiteral(", ")))))
            return engineFault(query.lastError());
        QHash<QString, qint64> versions;
        for (const TableNames &table : std::as_const(names)) {
            if (!query.exec(QStringLiteral("SELECT COALESCE(MAX(row_version), 0) FROM ") + quoted(table.table))
                || !query.next())
                return engineFault(query.lastError());
            versions.insert(table.table, query.value(0).toLongLong() + 1);
            query.finish();
        }
        if (!query.exec(QStringLiteral("SET LOCAL maintenance_work_mem = '256MB'"))
            || !query.exec(QStringLiteral("TRUNCATE TABLE %1").arg(all.join(QStringLiteral(", ")))))
            return engineFault(query.lastError());

        for (const TableNames &table : std::as_const(names)) {
            const qint64 version = versions.value(table.table);
            // As on SQLite, the indexes are built again once the rows are in (the key stays).
            QStringList indexes;
            QStringList drops;
            QSqlQuery &lookup = statements.emplace_back(db);
            lookup.prepare(QStringLiteral("SELECT c.relname, pg_get_indexdef(c.oid) FROM pg_index x "
                                          "JOIN pg_class c ON c.oid = x.indexrelid "
                                          "WHERE x.indrelid = to_regclass(?) AND NOT x.indisprimary"));
            lookup.addBindValue(quoted(table.table));
            if (!lookup.exec())
                return engineFault(lookup.lastError());
            while (lookup.next()) {
                drops.append(QStringLiteral("DROP INDEX ") + quoted(lookup.value(0).toString()));
                indexes.append(lookup.value(1).toString());
            }
            lookup.finish();
            if (auto fault = execAll(db, drops))
                return fault;

            const int columns = int(table.columns.size());
            const int versionColumn = int(table.columns.indexOf(QStringLiteral("row_version")));
            const QString select = QStringLiteral("SELECT %1 FROM %2 ORDER BY 1").arg(quotedList(table.columns), quoted(table.key));
            if (PGconn *connection = libpqConnection(db)) {
                EngineRows read(source, select);
                if (auto fault = read.fault())
                    return fault;
                CopyIn copy(connection, columns);
                if (auto fault = copy.start(table.table, table.columns))
                    return fault;
                std::optional<Fault> fault;
                while (!fault && read.next()) {
                    for (int i = 0; !fault && i < columns; ++i)
                        fault = i == versionColumn ? copy.addInteger(version) : addValue(copy, read, i, table.types.at(i));
                }
                // The copy is ended even after a fault, so the connection is free for the rollback.
                const auto ended = copy.finish();
                if (fault)
                    return fault;
                if (auto failed = read.fault())
                    return failed;
                if (ended)
                    return ended;
            } else {
                QSqlQuery read(source);
                read.setForwardOnly(true);
                if (!read.exec(select))
                    return engineFault(read.lastError());
                BatchInsert insert(db, table.table, table.columns, statements);
                while (read.next()) {
                    for (int i = 0; i < columns; ++i) {
                        if (auto fault = insert.add(i == versionColumn ? QVariant(version)
                                                                       : forPostgres(read.value(i), table.types.at(i))))
                            return fault;
                    }
                }
                if (read.lastError().isValid())
                    return engineFault(read.lastError());
                if (auto fault = insert.flush())
                    return fault;
            }
            if (auto fault = execAll(db, indexes))
                return fault;

            // A counter is only ever moved forward, past the highest id restored: setval is not
            // undone by a rollback, so a restore that fails after it must leave a counter that
            // still lies past every id of the data that stays.
            if (table.columns.contains(QStringLiteral("id"))) {
                QSqlQuery &identity = statements.emplace_back(db);
                identity.prepare(QStringLiteral("SELECT setval(seq, next, true) FROM (SELECT seq, GREATEST((SELECT COALESCE(MAX(id), 0) "
                                                "FROM %1), COALESCE(pg_sequence_last_value(seq), 0)) AS next FROM "
                                                "(SELECT pg_get_serial_sequence(?, 'id')::regclass AS seq) s) n WHERE next > 0")
                                     .arg(quoted(table.table)));
                identity.addBindValue(quoted(table.table));
                if (!identity.exec())
                    return engineFault(identity.lastError());
            }
            if (!query.exec(QStringLiteral("SELECT COUNT(*) FROM ") + quoted(table.table)) || !query.next())
                return engineFault(query.lastError());
            if (query.value(0).toLongLong() != archive.counts().value(table.key))
                return Fault{QStringLiteral("в таблица %1 са заредени %2 реда от %3")
                                 .arg(table.key)
                                 .arg(query.value(0).toLongLong())
                                 .arg(archive.counts().value(table.key))};
            query.finish();
            steps.done();
        }
    }
    if (!transaction.commit())
        return engineFault(transaction.lastError());
    return std::nullopt;
}

// The program's own schema at the given versions, made once for each set of versions.
std::optional<Fault> ownSchemaAt(const QList<int> &versions, QList<SchemaObject> &out)
{
    static QMutex mutex;
    static QHash<QList<int>, QList<SchemaObject>> made;
    const QMutexLocker lock(&mutex);
    const auto found = made.constFind(versions);
    if (found != made.cend()) {
        out = *found;
        return std::nullopt;
    }
    PrivateConnection reference(QStringLiteral(":memory:"));
    if (auto fault = makeSchemaAt(reference.db(), versions))
        return fault;
    if (auto fault = readSchemaObjects(reference.db(), out))
        return fault;
    made.insert(versions, out);
    return std::nullopt;
}

}

PreparedArchive::~PreparedArchive()
{
    discard();
}

QString PreparedArchive::workingCopy() const
{
    return m_work ? m_work->path() : QString();
}

void PreparedArchive::discard()
{
    m_work.reset();
    m_archive.clear();
    m_counts.clear();
}

std::optional<UserMessage> PreparedArchive::prepare(const QString &archivePath, const QString &workFolder)
{
    discard();
    const QFileInfo file(archivePath);
    if (!file.exists())
        return restoreRefusal(QStringLiteral("Файлът %1 не съществува!").arg(shown(archivePath)));
    if (!file.isFile())
        return restoreRefusal(QStringLiteral("%1 не е файл!").arg(shown(archivePath)));
    if (file.size() == 0)
        return notAnArchive(archivePath);
    if (auto fault = ensureFolder(workFolder))
        return restoreRefusal(QStringLiteral("Папката %1 не може да бъде подготвена: %2").arg(shown(workFolder), fault->text),
                              QStringLiteral("Моля, проверете правата за запис! Данните не са променени."));

    // The archive is only read, through SQLite, and only as data: its schema is compared with the
    // program's own at the archive's versions, and only a file whose schema is exactly that (no
    // trigger, view, index or column of another making) is copied, page for page, into a working
    // copy, where every value is checked. Nothing that came in the file is run.
    auto copy = std::make_unique<WorkFile>(QDir(workFolder).filePath(QStringLiteral("zarek-restore.db")));
    const QString workRefusalRequest = QStringLiteral("Моля, проверете правата за запис и свободното място! Данните не са променени.");
    const auto workRefusal = [&](const QString &why) {
        return restoreRefusal(QStringLiteral("Работното копие на архива не може да бъде записано в %1: %2").arg(shown(workFolder), why),
                              workRefusalRequest);
    };
    {
        PrivateConnection source(file.absoluteFilePath(), readOnlyOptions());
        QSqlDatabase db = source.db();
        if (!db.isOpen())
            return readRefusal(archivePath, db.lastError());
        QSqlQuery query(db);
        query.setForwardOnly(true);
        if (!query.exec(QStringLiteral("PRAGMA quick_check")) || !query.next())
            return readRefusal(archivePath, query.lastError());
        if (query.value(0).toString() != QLatin1String("ok"))
            return damagedArchive(archivePath);
        query.finish();
        QList<SchemaObject> objects;
        if (auto fault = readSchemaObjects(db, objects))
            return readRefusal(archivePath, QSqlError(QString(), fault->text));
        const bool anyTable = std::any_of(objects.begin(), objects.end(),
                                          [](const SchemaObject &o) { return o.type == QLatin1String("table"); });
        if (!anyTable)
            return notAnArchive(archivePath);
        const bool versionTable = std::any_of(objects.begin(), objects.end(), [](const SchemaObject &o) {
            return o.type == QLatin1String("table") && o.name == QLatin1String("zarek_schema");
        });
        if (!versionTable)
            return restoreRefusal(QStringLiteral("Файлът %1 е база данни на друга програма, не архив на Зарек!").arg(shown(archivePath)));
        QList<int> versions;
        if (checkRecordedVersions(query, versions))
            return readRefusal(archivePath, query.lastError());
        if (versions.isEmpty())
            return notAnArchive(archivePath);
        for (int version : std::as_const(versions)) {
            if (!isKnownSchemaVersion(version))
                return restoreRefusal(QStringLiteral("Архивът %1 е от по-нова версия на Зарек (схема %2, програмата познава до %3)!")
                                          .arg(shown(archivePath))
                                          .arg(versions.last())
                                          .arg(latestSchemaVersion()),
                                      QStringLiteral("Моля, заредете го с по-новата версия на програмата. Данните не са променени."));
        }

        // The program's own schema at the archive's versions, to compare with.
        QList<SchemaObject> own;
        if (auto fault = ownSchemaAt(versions, own))
            return workRefusal(fault->text);
        // Exactly the program's own schema: nothing foreign (a trigger, a view), nothing missing.
        const auto schemaRefusal = [&](const QList<SchemaObject> &found) -> std::optional<UserMessage> {
            const QString foreign = foreignObjects(found, own);
            if (!foreign.isEmpty())
                return restoreRefusal(QStringLiteral("Архивът %1 не е такъв, какъвто Зарек го записва: в него има %2!")
                                          .arg(shown(archivePath), foreign));
            if (lacksTables(found, own))
                return restoreRefusal(QStringLiteral("В архива %1 липсват таблици или полета на Зарек!").arg(shown(archivePath)));
            return std::nullopt;
        };
        if (auto refusal = schemaRefusal(objects))
            return refusal;

        if (auto fault = createEmptyFile(copy->path()))
            return workRefusal(fault->text);
        // The working copy is the file's pages as they are, copied whole, then held to the same
        // checks again: its schema must still be exactly the program's own (the file may have
        // changed since it was read), and its unique indexes are built anew from the rows.
        if (auto fault = copyFileInto(file.absoluteFilePath(), copy->path()))
            return workRefusal(fault->text);
        PrivateConnection working(copy->path());
        QSqlDatabase out = working.db();
        if (!out.isOpen())
            return workRefusal(engineText(out.lastError()));
        skipSyncs(out);
        largeCache(out);
        QSqlQuery work(out);
        work.setForwardOnly(true);
        // The engine's own sorter in temporary files builds the indexes quicker than one in memory.
        work.exec(QStringLiteral("PRAGMA journal_mode = DELETE"));
        work.finish();
        QList<SchemaObject> copied;
        if (auto fault = readSchemaObjects(out, copied))
            return readRefusal(archivePath, QSqlError(QString(), fault->text));
        if (auto refusal = schemaRefusal(copied))
            return refusal;
        Transaction writing(out);
        if (!writing.isActive())
            return workRefusal(engineText(writing.lastError()));
        QStringList steps;
        // The planner's statistics of the file are not kept; the versions are the ones read.
        for (const SchemaObject &object : std::as_const(copied)) {
            if (object.type == QLatin1String("table") && object.name.startsWith(QLatin1String("sqlite_stat")))
                steps.append(QStringLiteral("DROP TABLE ") + quoted(object.name));
        }
        steps.append(QStringLiteral("DELETE FROM zarek_schema"));
        for (int version : std::as_const(versions))
            steps.append(QStringLiteral("INSERT INTO zarek_schema (version) VALUES (%1)").arg(version));
        // An index of the program's own that the file lacks is made, from the program's own text.
        for (const SchemaObject &object : std::as_const(own)) {
            if (object.type == QLatin1String("index") && !object.sql.isEmpty()
                && std::none_of(copied.begin(), copied.end(), [&](const SchemaObject &c) { return c.name == object.name; }))
                steps.append(object.sql);
        }
        if (auto fault = execAll(out, steps))
            return workRefusal(fault->text);
        // The unique indexes are built anew from the rows, so that they hold; the others are
        // not read by the checks, the counts or the copy into the data (each reads the tables
        // themselves), and are built anew too when the program's steps are to run on the copy.
        bool older = false;
        for (int version = 1; version <= latestSchemaVersion(); ++version)
            older = older || (isKnownSchemaVersion(version) && !versions.contains(version));
        for (const SchemaObject &object : std::as_const(own)) {
            if (object.type != QLatin1String("index")
                || !(older || object.sql.isEmpty() || object.sql.startsWith(QLatin1String("CREATE UNIQUE"), Qt::CaseInsensitive)))
                continue;
            if (!work.exec(QStringLiteral("REINDEX ") + quoted(object.name))) {
                const QString code = work.lastError().nativeErrorCode();
                if (code == QLatin1String("11") || code == QLatin1String("26"))  // damaged, not a database
                    return readRefusal(archivePath, work.lastError());
                return restoreRefusal(QStringLiteral("В архива %1 има недопустими данни: %2: %3")
                                          .arg(shown(archivePath), tableCaption(object.table), engineText(work.lastError())));
            }
        }
        work.finish();
        if (!writing.commit())
            return workRefusal(engineText(writing.lastError()));
    }

    RowCounts counts;
    {
        PrivateConnection working(copy->path());
        QSqlDatabase db = working.db();
        if (!db.isOpen())
            return workRefusal(engineText(db.lastError()));
        skipSyncs(db);
        // An archive of an older program takes the steps it lacks, in the copy only.
        if (auto failure = upgradeSchema(db))
            return restoreRefusal(QStringLiteral("Архивът %1 не може да бъде приведен към тази версия: %2")
                                      .arg(shown(archivePath), failure->text.section(QLatin1Char('\n'), 0, 0)));
        if (const auto fault = checkStoredValues(db))
            return restoreRefusal(QStringLiteral("В архива %1 има недопустима стойност: %2!").arg(shown(archivePath), describe(*fault)));
        // Counted from the tables themselves, never from an index that is not unique.
        QSqlQuery count(db);
        count.setForwardOnly(true);
        for (const SchemaTable &table : schemaTables()) {
            if (!count.exec(QStringLiteral("SELECT COUNT(*) FROM %1 NOT INDEXED").arg(quoted(table.name))) || !count.next())
                return readRefusal(archivePath, QSqlError(QString(), engineText(count.lastError())));
            counts.insert(table.name, count.value(0).toLongLong());
        }
        count.finish();
        if (counts.value(firmTable) == 0)
            return restoreRefusal(QStringLiteral("В архива %1 няма данни за фирмата!").arg(shown(archivePath)));
    }
    m_archive = file.absoluteFilePath();
    m_work = std::move(copy);
    m_counts = counts;
    return std::nullopt;
}

Checked<RestoreOutcome> restoreArchive(QSqlDatabase db, const PreparedArchive &archive, const QString &safetyFolder,
                                       const QDateTime &now, const ArchiveProgress &progress)
{
    const QString unchanged = QStringLiteral("Моля, опитайте отново след малко! Данните не са променени.");
    if (!archive.isReady())
        return restoreRefusal(QStringLiteral("Архивът не е проверен!"));
    if (auto fault = ensureFolder(safetyFolder))
        return restoreRefusal(QStringLiteral("Папката %1 не може да бъде подготвена: %2").arg(shown(safetyFolder), fault->text),
                              QStringLiteral("Моля, проверете правата за запис! Данните не са променени."));

    Steps steps(progress, 2 * int(schemaTables().size()) + 2);
    const QString safetyCopy = freeName(safetyFolder,
                                        QStringLiteral("Преди зареждане ") + now.toString(QStringLiteral("yyyy-MM-dd hh-mm-ss")),
                                        QStringLiteral(".abd"));
    RowCounts before;
    if (auto fault = writeArchiveFile(db, safetyCopy, steps, &before, ArchiveUse::SafetyCopy)) {
        if (fault->busy)
            return busyMessage(restoreErrorTitle(), unchanged);
        return restoreRefusal(QStringLiteral("Предпазното копие на текущите данни не може да бъде записано в %1: %2")
                                  .arg(shown(safetyCopy), fault->text),
                              QStringLiteral("Зареждането е отменено. Данните не са променени."));
    }
    const auto fault = dialectOf(db) == Dialect::SQLite ? replaceOnSqlite(db, archive, steps)
                                                        : replaceOnPostgres(db, archive, steps);
    if (fault) {
        if (fault->busy)
            return busyMessage(restoreErrorTitle(), unchanged);
        return restoreRefusal(QStringLiteral("Данните от архива %1 не могат да бъдат заредени: %2")
                                  .arg(shown(archive.archivePath()), fault->text),
                              QStringLiteral("Моля, опитайте отново. Данните не са променени."));
    }
    steps.finish();
    return RestoreOutcome{safetyCopy, archive.counts()};
}

}
