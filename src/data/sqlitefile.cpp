#include "sqlitefile.h"

#include "data/query.h"
#include "data/schema.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>
#include <QVariant>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <cstring>
#include <unistd.h>
#endif

namespace zarek {

namespace {

const QFile::Permissions privateFolder = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
const QFile::Permissions privateFile = QFile::ReadOwner | QFile::WriteOwner;
// The mode's own bits (WriteUser is what access() says, and root may always write).
const QFile::Permissions anyWrite = QFile::WriteOwner | QFile::WriteGroup | QFile::WriteOther;

QString shown(const QString &path)
{
    return QDir::toNativeSeparators(path);
}

UserMessage refusal(const QString &fault, const QString &request)
{
    return UserMessage::twoLines(databaseOpenTitle(), fault, request, UserMessage::Icon::Critical);
}

UserMessage notZarekFile(const QString &path)
{
    return refusal(QStringLiteral("Файлът %1 не е база данни на Зарек!").arg(shown(path)),
                   QStringLiteral("Моля, посочете базата данни на Зарек или нов файл. Файлът не е променен."));
}

UserMessage damagedFile(const QString &path)
{
    return refusal(QStringLiteral("Базата данни %1 е повредена!").arg(shown(path)),
                   QStringLiteral("Моля, възстановете я от архивно копие със \"Зареждане\" (\"Дискети\"). "
                                  "Файлът не е променен."));
}

UserMessage cannotCreate(const QString &what, const QString &path, const QString &reason)
{
    return refusal(QStringLiteral("Не може да се създаде %1 %2: %3").arg(what, shown(path), reason),
                   QStringLiteral("Моля, проверете правата за запис и свободното място!"));
}

// SQLite's result codes as Qt reports them.
bool isCode(const QSqlError &error, int code)
{
    return error.nativeErrorCode() == QString::number(code);
}
constexpr int sqliteCorrupt = 11;
constexpr int sqliteNotADatabase = 26;

std::optional<UserMessage> readError(const QString &path, const QSqlError &error)
{
    if (isCode(error, sqliteNotADatabase))
        return notZarekFile(path);
    if (isCode(error, sqliteCorrupt))
        return damagedFile(path);
    return refusal(QStringLiteral("Базата данни %1 не може да бъде прочетена: %2")
                       .arg(shown(path), error.databaseText().simplified()),
                   QStringLiteral("Моля, проверете файла и правата за достъп до него. Файлът не е променен."));
}

}

std::optional<UserMessage> prepareDatabaseFolder(const QString &filePath, bool programsOwnFolder)
{
    const QString folder = QFileInfo(filePath).absolutePath();
    QStringList missing;
    for (QString level = folder; !QFileInfo::exists(level); level = QFileInfo(level).absolutePath()) {
        missing.prepend(level);
        if (QFileInfo(level).absolutePath() == level)
            break;
    }
    for (const QString &level : std::as_const(missing)) {
        // Made with its permissions: the umask cannot widen them, and no moment is it open to others.
        if (!QDir().mkdir(level, privateFolder) && !QFileInfo(level).isDir())
            return cannotCreate(QStringLiteral("папката"), level, QStringLiteral("няма права за запис"));
    }
    if (programsOwnFolder && !QFile::setPermissions(folder, privateFolder))
        return cannotCreate(QStringLiteral("папката"), folder, QStringLiteral("правата ѝ не могат да бъдат зададени"));
    return std::nullopt;
}

std::optional<UserMessage> createDatabaseFile(const QString &filePath)
{
    const QFileInfo target(filePath);
    const QString aside = target.absolutePath() + QStringLiteral("/.") + target.fileName() + QStringLiteral(".new-")
                          + QUuid::createUuid().toString(QUuid::Id128).left(12);
    {
        QFile file(aside);
        if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly, privateFile))
            return cannotCreate(QStringLiteral("файла"), filePath, file.errorString());
    }
    // The umask may have taken bits away; the file is exactly 0600.
    QFile::setPermissions(aside, privateFile);
    std::optional<UserMessage> failure;
    {
        // A rollback journal here: every commit is in the file itself when it is linked into place.
        PrivateConnection connection(aside, QString());
        QSqlDatabase db = connection.db();
        if (!db.isOpen())
            failure = cannotCreate(QStringLiteral("файла"), filePath, db.lastError().databaseText());
        else
            failure = upgradeSchema(db);
    }
    if (!failure) {
#ifdef Q_OS_UNIX
        // link() never replaces: a file another copy put there first wins, and is opened instead.
        if (::link(QFile::encodeName(aside).constData(), QFile::encodeName(filePath).constData()) != 0
            && errno != EEXIST)
            failure = cannotCreate(QStringLiteral("файла"), filePath, QString::fromLocal8Bit(strerror(errno)));
#else
        if (!QFileInfo::exists(filePath) && !QFile::rename(aside, filePath))
            failure = cannotCreate(QStringLiteral("файла"), filePath, QStringLiteral("преместването не успя"));
#endif
    }
    QFile::remove(aside);
    QFile::remove(aside + QStringLiteral("-journal"));
    return failure;
}

std::optional<UserMessage> checkDatabaseIntegrity(const QString &filePath)
{
    PrivateConnection connection(filePath, QStringLiteral("QSQLITE_OPEN_READONLY;QSQLITE_BUSY_TIMEOUT=10000"));
    QSqlDatabase db = connection.db();
    if (!db.isOpen())
        return readError(filePath, db.lastError());
    Query query(db);
    if (query.exec(QString(), QStringLiteral("PRAGMA quick_check")))
        return readError(filePath, query.lastError());
    if (!query.next() || query.value(0).toString() != QLatin1String("ok"))
        return damagedFile(filePath);
    return std::nullopt;
}

std::optional<UserMessage> checkDatabaseFile(const QString &filePath)
{
    const QFileInfo file(filePath);
    const QFileInfo folder(file.absolutePath());
    if (!file.isFile())
        return refusal(QStringLiteral("%1 не е файл!").arg(shown(filePath)),
                       QStringLiteral("Моля, посочете файла на базата данни или нов файл!"));
    if (file.size() == 0)
        return refusal(QStringLiteral("Файлът %1 е празен: не е база данни на Зарек!").arg(shown(filePath)),
                       QStringLiteral("Моля, посочете базата данни на Зарек или нов файл. Файлът не е променен."));
    // The mode bits count even for root, who may write anyway: a file marked read-only stays so.
    if (!file.isWritable() || !(file.permissions() & anyWrite))
        return refusal(QStringLiteral("Файлът %1 е само за четене!").arg(shown(filePath)),
                       QStringLiteral("Моля, разрешете записа в него или работете с копие. Файлът не е променен."));
    if (!folder.isWritable() || !(folder.permissions() & anyWrite))
        return refusal(QStringLiteral("Папката %1 е само за четене!").arg(shown(folder.absoluteFilePath())),
                       QStringLiteral("Моля, разрешете записа в нея: базата данни пише и до файла си. "
                                      "Файлът не е променен."));

    PrivateConnection connection(filePath, QStringLiteral("QSQLITE_OPEN_READONLY;QSQLITE_BUSY_TIMEOUT=10000"));
    QSqlDatabase db = connection.db();
    if (!db.isOpen())
        return readError(filePath, db.lastError());
    QSqlQuery query(db);
    query.setForwardOnly(true);
    // The header and the schema, not the whole file: a start takes the same time on any size.
    // The pages of the rows are checked in the background after sign-in (checkDatabaseIntegrity).
    qint64 pageSize = 0;
    qint64 pageCount = 0;
    for (const auto &[pragma, value] : {std::pair{"PRAGMA page_size", &pageSize}, std::pair{"PRAGMA page_count", &pageCount}}) {
        if (!query.exec(QString::fromLatin1(pragma)))
            return readError(filePath, query.lastError());
        if (!query.next())
            return damagedFile(filePath);
        *value = query.value(0).toLongLong();
        query.finish();
    }
    // A file shorter than its header says lost its end; with a write-ahead log beside it the
    // newest pages may still stand there.
    if (pageSize <= 0 || (!QFileInfo::exists(filePath + QStringLiteral("-wal")) && pageSize * pageCount > file.size()))
        return damagedFile(filePath);

    if (!query.exec(QStringLiteral("SELECT type, name FROM sqlite_master")))
        return readError(filePath, query.lastError());
    QStringList tables;
    while (query.next()) {
        if (query.value(0).toString() == QLatin1String("table"))
            tables.append(query.value(1).toString());
    }
    query.finish();
    // Each table's first page: a schema pointing at a page that is not its table's is damage.
    for (const QString &table : std::as_const(tables)) {
        QString quoted = table;
        quoted.replace(QLatin1Char('"'), QStringLiteral("\"\""));
        if (!query.exec(QStringLiteral("SELECT 1 FROM \"%1\" LIMIT 1").arg(quoted)))
            return readError(filePath, query.lastError());
        query.finish();
    }
    if (tables.isEmpty())
        return notZarekFile(filePath);
    if (!tables.contains(QStringLiteral("zarek_schema")))
        return foreignDatabaseMessage();
    QList<int> versions;
    if (!query.exec(QStringLiteral("SELECT DISTINCT version FROM zarek_schema ORDER BY version")))
        return readError(filePath, query.lastError());
    while (query.next())
        versions.append(query.value(0).toInt());
    query.finish();
    for (int version : std::as_const(versions)) {
        if (!isKnownSchemaVersion(version))
            return newerSchemaMessage(versions.last(), latestSchemaVersion());
    }
    return std::nullopt;
}

}
