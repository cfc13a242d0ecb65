#include "klfile.h"

#include "core/dates.h"
#include "core/formats.h"
#include "core/sharedroutines.h"
#include "core/textcheck.h"
#include "core/valueformat.h"
#include "courses/coursecheck.h"
#include "data/query.h"
#include "data/scratchtables.h"
#include "data/sqlerror.h"
#include "settlement/clientstatement.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QSqlError>
#include <QSqlQuery>

#include <algorithm>
#include <cmath>
#include <filesystem>

namespace zarek {

using namespace settlement;

namespace {

const QString loadTitle = QStringLiteral("ГРЕШКА при зареждане на файл!");
const QString saveTitle = QStringLiteral("ГРЕШКА при запис на файл!");
const QString workingTable = QStringLiteral("TempKlients");
const QString printTable = QStringLiteral("TempKlientsNew");
const QString headingTable = QStringLiteral("KlientsFile");
constexpr int progressStep = 500;
// The lengths the course editor allows.
constexpr int klientLength = 25;
const QList<QPair<QString, int>> textLengths = {
    {QStringLiteral("Marsh"), 25}, {QStringLiteral("VidTovar"), 25}, {QStringLiteral("Kola"), 12}};

UserMessage notAStatementFile(const QString &path)
{
    return UserMessage::twoLines(loadTitle,
                                 QStringLiteral("Файлът \"%1\" не съдържа данни за клиенти!").arg(QFileInfo(path).fileName()),
                                 QStringLiteral("Моля, изберете файл, записан от справката \"Клиент за фактуриране\"."),
                                 UserMessage::Icon::Critical);
}

UserMessage refused(const QString &fault)
{
    return UserMessage::twoLines(loadTitle, fault, QStringLiteral("Файлът не е зареден; справката остава както беше."),
                                 UserMessage::Icon::Critical);
}

UserMessage badValue(int row, const QString &what)
{
    return refused(QStringLiteral("Ред %1 на файла: %2").arg(row).arg(what));
}

UserMessage notWritten(const QString &path, const QString &why)
{
    return UserMessage::twoLines(saveTitle,
                                 QStringLiteral("Файлът \"%1\" не е записан!").arg(QDir::toNativeSeparators(path)),
                                 why, UserMessage::Icon::Critical);
}

// Reading never creates or changes the file it reads.
const QString readOnly = QStringLiteral("QSQLITE_OPEN_READONLY");

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

bool hasColumns(QSqlDatabase db, const QString &table, const QStringList &columns)
{
    if (!hasTable(db, table))
        return false;
    const QStringList present = columnsOf(db, table);
    return std::all_of(columns.cbegin(), columns.cend(),
                       [&present](const QString &column) { return present.contains(column, Qt::CaseInsensitive); });
}

qint64 rowCount(QSqlDatabase db, const QString &table)
{
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("SELECT COUNT(*) FROM \"%1\"").arg(table)) || !query.next())
        return -1;
    return query.value(0).toLongLong();
}

// A date as the scratch database keeps it: an ISO text of a valid day.
QDate storedDate(const QVariant &value)
{
    if (value.typeId() != QMetaType::QString)
        return {};
    const QString text = value.toString();
    QDate date = QDate::fromString(text, Qt::ISODate);
    if (!date.isValid())
        date = QDateTime::fromString(text, Qt::ISODate).date();
    return date;
}

// A number as SQLite holds one: an integer or a real, never a text, a blob or nothing.
std::optional<double> storedNumber(const QVariant &value)
{
    const int type = value.typeId();
    if (value.isNull() || (type != QMetaType::LongLong && type != QMetaType::Int && type != QMetaType::Double))
        return std::nullopt;
    const double number = value.toDouble();
    if (!std::isfinite(number))
        return std::nullopt;
    return number;
}

QString shownValue(const QVariant &value)
{
    if (value.isNull())
        return QStringLiteral("(празно)");
    QString text = value.toString().left(30);
    for (QChar &c : text) {
        if (hasControlCharacter(QString(c)))
            c = QChar(0xFFFD);
    }
    return QLatin1Char('"') + text + QLatin1Char('"');
}

Checked<StatementHeading> readHeading(QSqlDatabase db)
{
    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("SELECT Klient, OtData, DoData FROM %1 LIMIT 2").arg(headingTable)) || !query.next())
        return refused(QStringLiteral("Файлът не казва за кой клиент и период е справката."));
    StatementHeading heading;
    const QVariant klient = query.value(0);
    heading.klient = klient.toString();
    heading.period = {storedDate(query.value(1)), storedDate(query.value(2))};
    const bool second = query.next();
    if (second || klient.typeId() != QMetaType::QString || heading.klient.trimmed().isEmpty()
        || LenCheck(heading.klient, klientLength) == 1 || hasControlCharacter(heading.klient) || !heading.period.isValid())
        return refused(QStringLiteral("Клиентът или периодът, записани във файла, не са верни."));
    return heading;
}

// One row of the working list against what the statement screen holds: the message, or none.
std::optional<UserMessage> checkWorkingRow(const QList<QVariant> &cells, int row, const Period &period)
{
    const QDate date = storedDate(cells.at(0));
    if (!date.isValid())
        return badValue(row, QStringLiteral("датата %1 не е дата.").arg(shownValue(cells.at(0))));
    if (!period.contains(date))
        return badValue(row, QStringLiteral("датата %1 е извън периода на справката.").arg(formatDate(date)));
    for (int i = 0; i < textLengths.size(); ++i) {
        const QVariant &value = cells.at(1 + i);
        if (value.isNull())
            continue;
        if (value.typeId() != QMetaType::QString)
            return badValue(row, QStringLiteral("%1 не е текст.").arg(shownValue(value)));
        const QString text = value.toString();
        if (hasControlCharacter(text))
            return badValue(row, QStringLiteral("текстът съдържа непозволен знак."));
        if (LenCheck(text, textLengths.at(i).second) == 1)  // as the course editor measures it
            return badValue(row, QStringLiteral("текстът %1 е по-дълъг от %2 знака.").arg(shownValue(value)).arg(textLengths.at(i).second));
    }
    const std::optional<double> km = storedNumber(cells.at(4));
    if (!km || !statementKm(*km))
        return badValue(row, QStringLiteral("%1 не са километри: нужно е цяло число от 0 до 32767.").arg(shownValue(cells.at(4))));
    const std::optional<double> ton = storedNumber(cells.at(5));
    if (!ton || *ton < 0 || *ton > maxCourseTonnes)
        return badValue(row, QStringLiteral("тонажът %1 не е число от 0 до %2.").arg(shownValue(cells.at(5)), formatFixed(maxCourseTonnes, 0)));
    const std::optional<double> rate = storedNumber(cells.at(6));
    if (!rate || !statementRate(*rate))
        return badValue(row, QStringLiteral("тарифата %1 не е число от 0 до %2.").arg(shownValue(cells.at(6)), formatFixed(maxCourseRate, 0)));
    constexpr double maxSum = maxCourseTonnes * maxCourseKm * maxCourseRate;
    const std::optional<double> sum = storedNumber(cells.at(7));
    if (!sum || *sum < 0 || *sum > maxSum)
        return badValue(row, QStringLiteral("сумата %1 не е число от 0 до %2.").arg(shownValue(cells.at(7)), formatFixed(maxSum, 0)));
    return std::nullopt;
}

Checked<RowSet> readWorkingList(QSqlDatabase db, const Period &period, int total, const StatementFileProgress &progress)
{
    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("SELECT %1 FROM \"%2\" ORDER BY rowid")
                        .arg(KlientsStore::columns().join(QStringLiteral(", ")), workingTable)))
        return refused(QStringLiteral("Списъкът на справката във файла не се чете."));
    RowSet rows(KlientsStore::columns());
    rows.reserveRows(total);
    QList<QVariant> cells;
    int row = 0;
    while (query.next()) {
        ++row;
        if (row > total)
            return refused(QStringLiteral("Файлът се промени, докато се четеше."));
        cells.clear();
        for (int c = 0; c < 8; ++c)
            cells.append(query.value(c));
        if (auto fault = checkWorkingRow(cells, row, period))
            return *fault;
        cells[0] = storedDate(cells.at(0));
        cells[4] = static_cast<qlonglong>(cells.at(4).toDouble());
        rows.appendRow(cells);
        if (progress && row % progressStep == 0 && !progress(row, total))
            return statementFileCancelled();
    }
    if (query.lastError().isValid())
        return refused(QStringLiteral("Списъкът на справката във файла не се чете."));
    return rows;
}

void removeWithCompanions(const QString &path)
{
    for (const QString &suffix : {QString(), QStringLiteral("-journal"), QStringLiteral("-wal"), QStringLiteral("-shm")})
        QFile::remove(path + suffix);
}

// The heading written into the copy of the scratch database.
bool writeHeading(const QString &copy, const StatementHeading &heading, QString &why)
{
    PrivateConnection file(copy);
    if (!file.isOpen()) {
        why = file.db().lastError().text();
        return false;
    }
    QSqlQuery query(file.db());
    if (!query.exec(QStringLiteral("DROP TABLE IF EXISTS ") + headingTable)
        || !query.exec(QStringLiteral("CREATE TABLE %1 (Klient TEXT, OtData TEXT, DoData TEXT)").arg(headingTable))
        || !query.prepare(QStringLiteral("INSERT INTO %1 (Klient, OtData, DoData) VALUES (?, ?, ?)").arg(headingTable))) {
        why = query.lastError().text();
        return false;
    }
    query.addBindValue(heading.klient);
    query.addBindValue(isoDateText(heading.period.from));
    query.addBindValue(isoDateText(heading.period.to));
    if (!query.exec()) {
        why = query.lastError().text();
        return false;
    }
    return true;
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

UserMessage statementFileCancelled()
{
    return UserMessage{QStringLiteral("Зареждане на файл"), QStringLiteral("Зареждането е прекъснато.")};
}

Checked<StatementFile> readStatementFile(const QString &path, const StatementFileProgress &progress)
{
    const QFileInfo info(path);
    if (!info.isFile() || !info.isReadable())
        return notAStatementFile(path);
    if (info.size() > maxStatementFileBytes)
        return refused(QStringLiteral("Файлът \"%1\" е по-голям от %2 MB.")
                           .arg(info.fileName())
                           .arg(maxStatementFileBytes / (1024 * 1024)));
    StatementFile file;
    {
        PrivateConnection connection(path, readOnly);
        if (!connection.isOpen() || !isSound(connection.db()))
            return notAStatementFile(path);
        const QSqlDatabase db = connection.db();
        if (!hasColumns(db, workingTable, KlientsStore::columns()) || !hasColumns(db, printTable, KlientsStore::columns()))
            return notAStatementFile(path);
        if (!hasColumns(db, headingTable, {QStringLiteral("Klient"), QStringLiteral("OtData"), QStringLiteral("DoData")}))
            return refused(QStringLiteral("Файлът не казва за кой клиент и период е справката."));
        const Checked<StatementHeading> heading = readHeading(db);
        if (!heading)
            return heading.message();
        file.heading = heading.value();
        const qint64 total = rowCount(db, workingTable);
        if (total < 0)
            return notAStatementFile(path);
        if (total > maxStatementFileRows)
            return refused(QStringLiteral("Файлът съдържа %1 реда, повече от %2.").arg(total).arg(maxStatementFileRows));
        if (progress && !progress(0, static_cast<int>(total)))
            return statementFileCancelled();
        Checked<RowSet> rows = readWorkingList(db, file.heading.period, static_cast<int>(total), progress);
        if (!rows)
            return rows.message();
        file.rows.klients = rows.value();
        file.rows.klientsNew = RowSet(KlientsStore::columns());
        if (progress && !progress(static_cast<int>(total), static_cast<int>(total)))
            return statementFileCancelled();
    }
    return file;
}

std::optional<UserMessage> saveStatementFile(QSqlDatabase scratch, const StatementHeading &heading, const QString &path)
{
    const QFileInfo target(path);
    if (target.isDir())
        return notWritten(path, QStringLiteral("На това място стои папка."));
    const QString copy = target.absolutePath() + QStringLiteral("/.") + target.fileName()
                         + QStringLiteral(".%1.tmp").arg(QRandomGenerator::global()->generate(), 8, 16, QLatin1Char('0'));
    removeWithCompanions(copy);
    {
        // The client's data is the user's alone: the file is made 0600 before anything is in it,
        // and SQLite copies into the empty file.
        QFile empty(copy);
        if (!empty.open(QIODevice::WriteOnly | QIODevice::NewOnly, QFile::ReadOwner | QFile::WriteOwner))
            return notWritten(path, empty.errorString());
        empty.close();
        QFile::setPermissions(copy, QFile::ReadOwner | QFile::WriteOwner);
    }
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
    QString why;
    if (!writeHeading(copy, heading, why)) {
        removeWithCompanions(copy);
        return notWritten(path, why);
    }
    // The copy is read back as any statement file would be, and must hold every row.
    const Checked<StatementFile> written = readStatementFile(copy);
    if (!written) {
        removeWithCompanions(copy);
        return notWritten(path, written.message().text.section(QLatin1Char('\n'), 0, 0));
    }
    if (written.value().rows.klients.rowCount() != rowCount(scratch, workingTable)
        || !(written.value().heading == heading)) {
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
