// libFuzzer target: the archive loader of "Зареждане". Each input damages a good archive, either
// as bytes patched into the file or as a value written into a row, and the restore's check reads
// it: it must never crash, and a file it takes must hold only values the screens would take.
#include "data/archive.h"
#include "data/archivecheck.h"
#include "data/archivesupport.h"
#include "data/restore.h"
#include "data/schema.h"

#include <QCoreApplication>
#include <QDate>
#include <QDir>
#include <QFile>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>
#include <memory>

using namespace zarek;
using namespace zarek::archiving;

namespace {

struct World {
    std::unique_ptr<QCoreApplication> app;
    std::unique_ptr<QTemporaryDir> dir;
    QByteArray archive;
    QString damaged;
    QString work;
};

// Made once and never torn down: the application must outlive every connection, and libFuzzer
// ends the process without unwinding it.
World &world()
{
    static World *w = new World;
    return *w;
}

bool exec(QSqlDatabase db, const QString &sql, const QVariantList &values = {})
{
    QSqlQuery query(db);
    query.prepare(sql);
    for (const QVariant &value : values)
        query.addBindValue(value);
    return query.exec();
}

// A small firm with a row in the tables a restore checks most.
QByteArray goodArchive(const QString &folder)
{
    const QString live = QDir(folder).filePath(QStringLiteral("live.db"));
    const QString path = QDir(folder).filePath(QStringLiteral("good.abd"));
    {
        PrivateConnection connection(live);
        QSqlDatabase db = connection.db();
        if (upgradeSchema(db))
            return {};
        exec(db, QStringLiteral("INSERT INTO ZarekCfg (UserName) VALUES ('Зарек Транс ООД')"));
        exec(db, QStringLiteral("INSERT INTO tabl (data, kod, kola, Klient, Marsh, Tovar, km, ton, Tarifa, bruto, procent, neto, "
                                "Fakt, NomFakt, plat, Doc) VALUES (?, '001', 'СА 1234 ВК', 'Д''Аргос', 'Перник - София', 'Пясък', "
                                "120, 20.5, 0.1, 246, 7.38, 238.62, 1, '0000000042', 0, 0)"),
             {QDate(2025, 3, 5)});
        exec(db, QStringLiteral("INSERT INTO Sklad (Data, DocVid, DocNom, Name, Kol, Edin, Suma, VidKol, Ostat, Lipsa) "
                                "VALUES (?, 'Фактура', '123', 'Масло', 10, 12.35, 123.5, 'P', 7.5, 0)"),
             {QDate(2025, 3, 5)});
        exec(db, QStringLiteral("INSERT INTO Nalich (Name, Edin, Broi) VALUES ('Масло', 12.35, 7.5)"));
        exec(db, QStringLiteral("INSERT INTO Evro (Nomer, Data, Kurs) VALUES (1, ?, 1.95583)"), {QDate(2026, 1, 1)});
        if (!writeArchive(db, path))
            return {};
    }
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}

}

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    World &w = world();
    w.app = std::make_unique<QCoreApplication>(*argc, *argv);
    w.dir = std::make_unique<QTemporaryDir>();
    w.archive = goodArchive(w.dir->path());
    w.damaged = w.dir->filePath(QStringLiteral("damaged.abd"));
    w.work = w.dir->filePath(QStringLiteral("work"));
    QDir(w.dir->path()).mkdir(QStringLiteral("work"));
    if (w.archive.isEmpty())
        __builtin_trap();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    World &w = world();
    if (size < 2)
        return 0;
    QByteArray bytes = w.archive;
    QString statement;
    if (data[0] & 1) {
        // Bytes patched in: each three input bytes an offset (two bytes, scaled over the file) and a value.
        for (size_t i = 1; i + 2 < size; i += 3) {
            const qsizetype at = qsizetype((size_t(data[i]) << 8 | data[i + 1]) * size_t(bytes.size()) / 65536);
            bytes[at] = char(data[i + 2]);
        }
    } else {
        // A value written into a row: the table and column from the input, the rest as the value.
        const QList<SchemaTable> &tables = schemaTables();
        const SchemaTable &table = tables.at(data[1] % tables.size());
        const QString column = table.columns.at(data[0] / 2 % table.columns.size());
        const QByteArray value(reinterpret_cast<const char *>(data + 2), qsizetype(size - 2));
        statement = QStringLiteral("UPDATE OR IGNORE %1 SET %2 = ?").arg(quoted(table.name), quoted(column));
        QFile::remove(w.damaged);
        QFile::copy(w.dir->filePath(QStringLiteral("good.abd")), w.damaged);
        QFile::setPermissions(w.damaged, QFile::ReadOwner | QFile::WriteOwner);
        {
            PrivateConnection connection(w.damaged);
            // The value as text, as a number when it reads as one, as raw bytes otherwise.
            bool number = false;
            const double asNumber = QString::fromUtf8(value).toDouble(&number);
            const QVariant bound = number ? QVariant(asNumber) : (data[0] & 2 ? QVariant(value) : QVariant(QString::fromUtf8(value)));
            exec(connection.db(), statement, {bound});
        }
        QFile file(w.damaged);
        file.open(QIODevice::ReadOnly);
        bytes = file.readAll();
    }
    {
        QFile file(w.damaged);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
            return 0;
    }
    PreparedArchive prepared;
    if (prepared.prepare(w.damaged, w.work))
        return 0;
    // Taken: the working copy holds only values the screens take, whatever the input was.
    PrivateConnection copy(prepared.workingCopy(), readOnlyOptions());
    if (checkStoredValues(copy.db()))
        __builtin_trap();
    return 0;
}
