// Damaged and hostile statement files (.kl), made from one sound file with a fixed seed: bits
// flipped, bytes overwritten, the file cut short, and single values replaced by ones the screen
// would refuse. Whatever the file, the loader never ends the process, and a file it accepts holds
// only values the statement screen itself would hold.
#include "fuzz/klfileinvariants.h"
#include "settlement/klfile.h"
#include "testdatabase.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <cstring>
#include <random>

using namespace zarek;

namespace {

constexpr quint32 seed = 20061101;
constexpr int damagedFiles = 4000;
constexpr int baseRows = 24;

// Runs the statements on the SQLite file at path, without waiting for the disk: a test file.
bool runStatements(const QString &path, const QStringList &statements)
{
    return test::makePlainSqliteFile(path, QStringList{QStringLiteral("PRAGMA synchronous = OFF")} + statements);
}

// A sound statement of March 2006 with small pages, so that damage lands in the rows often.
bool makeSoundFile(const QString &path)
{
    QStringList statements = {
        QStringLiteral("PRAGMA page_size = 512"),
        QStringLiteral("CREATE TABLE KlientsFile (Klient TEXT, OtData TEXT, DoData TEXT)"),
        QStringLiteral("INSERT INTO KlientsFile VALUES ('Д''Аргос ООД', '2006-03-01', '2006-03-31')"),
        QStringLiteral("CREATE TABLE TempKlients (Data TEXT, Marsh TEXT, VidTovar TEXT, Kola TEXT, KM INTEGER, "
                       "Ton DOUBLE PRECISION, Tarifa DOUBLE PRECISION, Suma DOUBLE PRECISION)"),
        QStringLiteral("CREATE TABLE TempKlientsNew (Data TEXT, Marsh TEXT, VidTovar TEXT, Kola TEXT, KM TEXT, Ton TEXT, "
                       "Tarifa TEXT, Suma TEXT)"),
    };
    for (int i = 0; i < baseRows; ++i) {
        const double ton = 5 + i * 0.25;
        const int km = 20 + i * 7;
        const double rate = 0.1 + i * 0.005;
        statements << QStringLiteral("INSERT INTO TempKlients VALUES ('2006-03-%1', 'София - Перник %2', 'Пясък', "
                                     "'СА %3 ВК', %4, %5, %6, %7)")
                          .arg(1 + i, 2, 10, QLatin1Char('0'))
                          .arg(i)
                          .arg(1000 + i)
                          .arg(km)
                          .arg(ton)
                          .arg(rate)
                          .arg(std::round(km * ton * rate * 100) / 100);
        statements << QStringLiteral("INSERT INTO TempKlientsNew VALUES ('2006-03-%1', 'Ред', 'Пясък', 'СА', '%2', "
                                     "'10,000', '0,100', '1,00')")
                          .arg(1 + i, 2, 10, QLatin1Char('0'))
                          .arg(km);
    }
    return runStatements(path, statements);
}

// One value of the working list replaced, and whether the screen would hold it.
struct Replacement {
    const char *column;
    const char *value;
    bool acceptable;
};

const Replacement replacements[] = {
    {"KM", "-500", false},           {"KM", "40000", false},          {"KM", "12.5", false},
    {"KM", "'сто'", false},          {"KM", "NULL", false},           {"KM", "9e999", false},
    {"KM", "0", true},               {"KM", "32767", true},           {"KM", "32768", false},
    {"Ton", "0.0/0.0", false},       {"Ton", "-1", false},            {"Ton", "1e300", false},
    {"Ton", "-9e999", false},        {"Ton", "x'00ff'", false},       {"Ton", "100", true},
    {"Tarifa", "-0.001", false},     {"Tarifa", "100.5", false},      {"Tarifa", "'abc'", false},
    {"Tarifa", "0.125", true},       {"Suma", "85.361953125", true},  {"Suma", "-10", false},
    {"Suma", "1e300", false},        {"Suma", "9e999", false},        {"Data", "'abc'", false},
    {"Data", "'2006-02-28'", false}, {"Data", "'2006-04-01'", false}, {"Data", "'2006-03-31'", true},
    {"Data", "20060315", false},     {"Data", "NULL", false},         {"Marsh", "'Д' || char(7) || 'Аргос'", false},
    {"Marsh", "'Со' || char(0) || 'фия'", false},                     {"Marsh", "printf('%.26c', 'a')", false},
    {"Marsh", "printf('%.25c', 'a')", true},                          {"Marsh", "NULL", true},
    {"Kola", "'СА 1234 ВК 99'", false}, {"Kola", "x'41'", false},    {"VidTovar", "char(10)", false},
    {"VidTovar", "char(127)", false}, {"VidTovar", "char(133)", false}, {"Kola", "'СА 1234 ВК'", true},
};

const char *headingReplacements[][2] = {
    {"Klient", "'Д' || char(27) || 'Аргос'"}, {"Klient", "''"},           {"Klient", "NULL"},
    {"Klient", "printf('%.26c', 'K')"},       {"OtData", "'abc'"},        {"DoData", "'2006-02-01'"},
    {"OtData", "NULL"},                       {"DoData", "'2006-13-01'"},
};

}

class KlFileFuzzTest : public QObject {
    Q_OBJECT
private slots:
    void damagedFilesAreRefusedOrHoldOnlyWhatTheScreenHolds()
    {
        QTemporaryDir dir;
        const QString sound = dir.filePath(QStringLiteral("март.kl"));
        QVERIFY(makeSoundFile(sound));
        QFile soundFile(sound);
        QVERIFY(soundFile.open(QIODevice::ReadOnly));
        const QByteArray bytes = soundFile.readAll();
        soundFile.close();
        const Checked<StatementFile> base = readStatementFile(sound);
        QVERIFY2(base, qPrintable(base ? QString() : base.message().text));
        QCOMPARE(base.value().rows.klients.rowCount(), baseRows);

        std::mt19937 random(seed);
        const auto below = [&random](qsizetype n) { return static_cast<qsizetype>(random() % std::max<qsizetype>(n, 1)); };
        const QString path = dir.filePath(QStringLiteral("повреден.kl"));
        int accepted = 0;
        for (int i = 0; i < damagedFiles; ++i) {
            QByteArray damaged = bytes;
            QString how;
            switch (random() % 4) {
            case 0: {  // a few bits flipped, past the 100-byte header most of the time
                const int flips = 1 + random() % 4;
                for (int f = 0; f < flips; ++f) {
                    const qsizetype at = below(damaged.size());
                    damaged[at] = static_cast<char>(damaged.at(at) ^ (1 << (random() % 8)));
                    how += QStringLiteral("bit@%1 ").arg(at);
                }
                break;
            }
            case 1: {  // a byte set to a value that changes a record's type or length
                static const char values[] = {0x00, 0x01, 0x07, 0x08, 0x09, 0x0c, 0x0d, 0x7f, char(0x80), char(0xff)};
                const qsizetype at = 100 + below(damaged.size() - 100);
                damaged[at] = values[random() % sizeof values];
                how = QStringLiteral("byte@%1").arg(at);
                break;
            }
            case 2: {  // eight bytes of a row overwritten, as a real number's would be (NaN, infinity, huge)
                static const quint64 patterns[] = {0x7ff8000000000000ULL, 0x7ff0000000000000ULL, 0xfff0000000000000ULL,
                                                   0x7fefffffffffffffULL, 0xc07f400000000000ULL /* -500 */};
                const qsizetype at = 100 + below(damaged.size() - 108);
                const quint64 pattern = qToBigEndian(patterns[random() % 5]);
                memcpy(damaged.data() + at, &pattern, 8);
                how = QStringLiteral("real@%1").arg(at);
                break;
            }
            default:  // cut short
                damaged.truncate(below(damaged.size()));
                how = QStringLiteral("cut at %1").arg(damaged.size());
                break;
            }
            QFile::remove(path);
            QFile out(path);
            QVERIFY(out.open(QIODevice::WriteOnly));
            out.write(damaged);
            out.close();
            const Checked<StatementFile> read = readStatementFile(path);
            if (!read) {
                QVERIFY(!read.message().text.isEmpty());
                continue;
            }
            ++accepted;
            const QString broken = klcheck::brokenRule(read.value());
            QVERIFY2(broken.isEmpty(), qPrintable(QStringLiteral("file %1 (%2): %3").arg(i).arg(how, broken)));
        }
        qInfo("%d damaged files, %d accepted", damagedFiles, accepted);
    }

    void hostileValuesAreRefusedAndSoundOnesTaken()
    {
        QTemporaryDir dir;
        const QString sound = dir.filePath(QStringLiteral("март.kl"));
        QVERIFY(makeSoundFile(sound));
        std::mt19937 random(seed);
        const QString path = dir.filePath(QStringLiteral("чужд.kl"));
        int cases = 0;
        for (int round = 0; round < 12; ++round) {
            for (const Replacement &replacement : replacements) {
                const int row = 1 + random() % baseRows;
                QFile::remove(path);
                QVERIFY(QFile::copy(sound, path));
                QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner));
                QVERIFY(runStatements(path, {QStringLiteral("UPDATE TempKlients SET %1 = %2 WHERE rowid = %3")
                                                 .arg(QLatin1String(replacement.column),
                                                      QString::fromUtf8(replacement.value))
                                                 .arg(row)}));
                const Checked<StatementFile> read = readStatementFile(path);
                const QString what = QStringLiteral("%1 = %2 in row %3").arg(QLatin1String(replacement.column),
                                                                             QString::fromUtf8(replacement.value))
                                         .arg(row);
                QVERIFY2(bool(read) == replacement.acceptable,
                         qPrintable(what + (read ? QStringLiteral(" accepted") : QStringLiteral(" refused: ") + read.message().text)));
                if (read)
                    QVERIFY2(klcheck::brokenRule(read.value()).isEmpty(), qPrintable(what));
                else
                    QVERIFY2(read.message().text.startsWith(QStringLiteral("Ред %1 на файла: ").arg(row)),
                             qPrintable(what + QLatin1Char(' ') + read.message().text));
                ++cases;
            }
        }
        for (const auto &replacement : headingReplacements) {
            QFile::remove(path);
            QVERIFY(QFile::copy(sound, path));
            QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner));
            QVERIFY(runStatements(path, {QStringLiteral("UPDATE KlientsFile SET %1 = %2")
                                             .arg(QLatin1String(replacement[0]), QString::fromUtf8(replacement[1]))}));
            QVERIFY2(!readStatementFile(path), replacement[1]);
            ++cases;
        }
        QVERIFY(cases > 400);
    }
};

QTEST_GUILESS_MAIN(KlFileFuzzTest)
#include "tst_klfilefuzz.moc"
