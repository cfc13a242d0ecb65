#include "klfile.h"

#include "data/scratchtables.h"
#include "data/sqlerror.h"

#include <QAtomicInt>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QSqlError>
#include <QSqlQuery>

#include <filesystem>

namespace zarek {

namespace {

const QString loadTitle = QStringLiteral("ГРЕШКА при зареждане на файл!");
const QString saveTitle = QStringLiteral("ГРЕШКА при запис на файл!");
const QStringList statementTables = {QStringLiteral("TempKlients"), QStringLiteral("TempKlientsNew")};

QAtomicInt connectionCounter;

UserMessage notAStatementFile(const QString &path)
{
    return UserMessage::twoLines(loadTitle,
                                 QStringLiteral("Файлът \"%1\" не съдържа данни за клиенти!").arg(QFileInfo(path).fileName()),
                                 QStringLiteral("Моля, изберете файл, записан от справката \"Клиент за фактуриране\"."),
                                 UserMessage::Icon::Critical);
}

UserMessage notWritten(const QString &path, const QString &why)
{
    return UserMessage::twoLines(saveTitle,
                                 QStringLiteral("Файлът \"%1\" не е записан!").arg(QDir::toNativeSeparators(path)),
                                 why, UserMessage::Icon::Critical);
}

// A read-only connection of its own to a file, closed and forgotten on leaving.
class FileConnection {
public:
    explicit FileConnection(const QString &path)
        : m_name(QStringLiteral("klfile-%1").arg(connectionCounter.fetchAndAddRelaxed(1)))
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name);
        db.setDatabaseName(path);
        // Never creates or changes the file it reads.
        db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
        m_open = db.open();
    }
    ~FileConnection()
    {
        {
            QSqlDatabase db = QSqlDatabase::database(m_name, false);
            db.close();
        }
        QSqlDatabase::removeDatabase(m_name);
    }
    FileConnection(const FileConnection &) = delete;
    FileConnection &operator=(const FileConnection &) = delete;

    bool isOpen() const { return m_open; }
    QSqlDatabase db() const { return QSqlDatabase::database(m_name, false); }

private:
    QString m_name;
    bool m_open = false;
};

bool isSound(QSqlDatabase db)
{
    QSqlQuery check(db);
    return check.exec(QStringLiteral("PRAGMA quick_check")) && check.next()
           && check.value(0).toString() == QLatin1String("ok");
}

QStringList columnsOf(QSqlDatabase db, const QString &table)
{
    QSqlQuery info(db);
    QStringList names;
    if (!info.exec(QStringLiteral("PRAGMA table_info(\"%1\")").arg(table)))
        return names;
    while (info.next())
        names.append(info.value(QStringLiteral("name")).toString());
    return names;
}

bool hasTable(QSqlDatabase db, const QString &table)
{
    QSqlQuery query(db);
    query.prepare(QStringLiteral("SELECT COUNT(*) FROM sqlite_master WHERE type = 'table' AND name = ? COLLATE NOCASE"));
    query.addBindValue(table);
    return query.exec() && query.next() && query.value(0).toInt() == 1;
}

// The table has every column of its definition, and each holds what its type allows.
bool tableFits(QSqlDatabase db, const ScratchTable &table)
{
    if (!hasTable(db, table.name))
        return false;
    const QStringList present = columnsOf(db, table.name);
    for (const ScratchColumn &column : table.columns) {
        if (!present.contains(column.name, Qt::CaseInsensitive))
            return false;
        QString misfit;
        switch (column.type) {
        case ScratchColumn::Type::Integer:
        case ScratchColumn::Type::Double:
            misfit = QStringLiteral("typeof(\"%1\") NOT IN ('integer', 'real', 'null')");
            break;
        case ScratchColumn::Type::Date:
            misfit = QStringLiteral("\"%1\" IS NOT NULL AND (typeof(\"%1\") <> 'text' OR date(\"%1\") IS NULL)");
            break;
        case ScratchColumn::Type::Text:
            misfit = QStringLiteral("typeof(\"%1\") = 'blob'");
            break;
        }
        QSqlQuery count(db);
        if (!count.exec(QStringLiteral("SELECT COUNT(*) FROM \"%1\" WHERE ").arg(table.name) + misfit.arg(column.name))
            || !count.next() || count.value(0).toInt() != 0)
            return false;
    }
    return true;
}

std::optional<RowSet> readTable(QSqlDatabase db, const QString &table)
{
    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("SELECT %1 FROM \"%2\" ORDER BY rowid")
                        .arg(KlientsStore::columns().join(QStringLiteral(", ")), table)))
        return std::nullopt;
    Checked<RowSet> rows = RowSet::fromQuery(query, loadTitle);
    if (!rows)
        return std::nullopt;
    return rows.value();
}

int rowCount(QSqlDatabase db, const QString &table)
{
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("SELECT COUNT(*) FROM ") + table) || !query.next())
        return -1;
    return query.value(0).toInt();
}

void removeWithCompanions(const QString &path)
{
    for (const QString &suffix : {QString(), QStringLiteral("-journal"), QStringLiteral("-wal"), QStringLiteral("-shm")})
        QFile::remove(path + suffix);
}

}

QString statementFileFilter()
{
    return QStringLiteral("Данни за клиенти (*.kl)");
}

QString statementFileSuffix()
{
    return QStringLiteral("kl");
}

Checked<StatementFileRows> readStatementFile(const QString &path)
{
    const QFileInfo info(path);
    if (!info.isFile() || !info.isReadable())
        return notAStatementFile(path);
    StatementFileRows rows;
    {
        FileConnection file(path);
        if (!file.isOpen() || !isSound(file.db()))
            return notAStatementFile(path);
        for (const QString &name : statementTables) {
            const std::optional<ScratchTable> table = scratchTable(name);
            if (!table || !tableFits(file.db(), *table))
                return notAStatementFile(path);
        }
        const std::optional<RowSet> klients = readTable(file.db(), statementTables.at(0));
        const std::optional<RowSet> klientsNew = readTable(file.db(), statementTables.at(1));
        if (!klients || !klientsNew)
            return notAStatementFile(path);
        rows.klients = *klients;
        rows.klientsNew = *klientsNew;
    }
    return rows;
}

std::optional<UserMessage> saveStatementFile(QSqlDatabase scratch, const QString &path)
{
    const QFileInfo target(path);
    if (target.isDir())
        return notWritten(path, QStringLiteral("На това място стои папка."));
    const QString copy = target.absolutePath() + QStringLiteral("/.") + target.fileName()
                         + QStringLiteral(".%1.tmp").arg(QRandomGenerator::global()->generate(), 8, 16, QLatin1Char('0'));
    removeWithCompanions(copy);
    {
        QSqlQuery vacuum(scratch);
        vacuum.prepare(QStringLiteral("VACUUM INTO ?"));
        vacuum.addBindValue(copy);
        if (!vacuum.exec()) {
            const UserMessage message = sqlErrorMessage(saveTitle, vacuum.lastError());
            removeWithCompanions(copy);
            return message;
        }
    }
    // The copy is read back as any statement file would be, and must hold every row.
    const Checked<StatementFileRows> written = readStatementFile(copy);
    if (!written || written.value().klients.rowCount() != rowCount(scratch, statementTables.at(0))
        || written.value().klientsNew.rowCount() != rowCount(scratch, statementTables.at(1))) {
        removeWithCompanions(copy);
        return notWritten(path, QStringLiteral("Копието на данните не се прочете обратно."));
    }
    std::error_code error;
    std::filesystem::rename(std::filesystem::path(copy.toStdU16String()), std::filesystem::path(path.toStdU16String()),
                            error);
    if (error) {
        removeWithCompanions(copy);
        return notWritten(path, QString::fromLocal8Bit(error.message().c_str()));
    }
    return std::nullopt;
}

}
