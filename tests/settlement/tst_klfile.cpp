#include "data/scratchdatabase.h"
#include "forms/messageservice.h"
#include "reports/reportpreview.h"
#include "settlement/klfile.h"
#include "settlement/klients.h"
#include "klientstestdata.h"
#include "queryrows.h"
#include "screendriver.h"
#include "subsystemfixtures.h"
#include "testdatabase.h"

#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QTemporaryDir>
#include <memory>

using namespace zarek;
using zarek::test::onlyOne;
using zarek::test::onlyText;
using zarek::test::onlyTitle;

// A fresh database of the current engine with the March courses (database), a folder for the
// files (dir), and the messages recorded.
#define STATEMENT_FILES()                                     \
    ZAREK_SCRATCH_DB(database);                               \
    QVERIFY(klientstest::fillCourses(database.db()));         \
    QTemporaryDir dir;                                        \
    RecordingMessageService messages

namespace {

constexpr int kmColumn = 4;

std::unique_ptr<Klients> openStatement(QSqlDatabase db, const QString &folder)
{
    return std::make_unique<Klients>(klientstest::march(), db, std::make_unique<ScratchDatabase>(folder),
                                     []() -> const FirmProfile & { return klientstest::firm(); });
}

QStringList shownRows(const Klients &screen)
{
    return test::gridRows(screen.model(), QStringLiteral(" "), {1, kmColumn});
}

// The kilometres and the sum shown under the list.
QString totals(const Klients &screen)
{
    return screen.findChild<QLabel *>(QStringLiteral("Label2"))->text() + QLatin1Char('|')
           + screen.findChild<QLabel *>(QStringLiteral("Label4"))->text();
}

QByteArray digest(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256);
}

const QString heading = QStringLiteral("CREATE TABLE KlientsFile (Klient TEXT, OtData TEXT, DoData TEXT)");
const QString marchHeading =
    QStringLiteral("INSERT INTO KlientsFile VALUES ('Д''Аргос ООД', '2006-03-01', '2006-03-31')");

const QString fullKlients = QStringLiteral(
    "CREATE TABLE TempKlients (Data TEXT, Marsh TEXT, VidTovar TEXT, Kola TEXT, KM INTEGER, Ton DOUBLE PRECISION, "
    "Tarifa DOUBLE PRECISION, Suma DOUBLE PRECISION)");
const QString fullKlientsNew = QStringLiteral(
    "CREATE TABLE TempKlientsNew (Data TEXT, Marsh TEXT, VidTovar TEXT, Kola TEXT, KM TEXT, Ton TEXT, Tarifa TEXT, "
    "Suma TEXT)");

// The rows of a query on a statement file, opened as the plain SQLite file it is (see test::rows).
QStringList fileRows(const QString &path, const QString &sql)
{
    QStringList result;
    {
        QSqlDatabase file = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("statementfile"));
        file.setDatabaseName(path);
        result = file.open() ? test::rows(file, sql) : QStringList{QStringLiteral("<not opened>")};
    }
    QSqlDatabase::removeDatabase(QStringLiteral("statementfile"));
    return result;
}

// A hand-made file loaded into the March statement is refused with the fault as its first line,
// and the statement on screen, its scratch rows and its client stay as they were.
void expectRefusal(const QStringList &statements, const QString &fault)
{
    STATEMENT_FILES();
    const QString path = dir.filePath(QStringLiteral("чужд.kl"));
    QVERIFY(test::makePlainSqliteFile(path, statements));
    auto screen = openStatement(database.db(), dir.path());
    const QStringList listBefore = shownRows(*screen);
    const QString totalsBefore = totals(*screen);
    screen->chooseFileToOpen = [&path](QWidget *) { return path; };
    screen->openFile();
    QCOMPARE(onlyOne(messages.shown), QStringLiteral("ГРЕШКА при зареждане на файл!|") + fault
                                          + QStringLiteral("\nФайлът не е зареден; справката остава както беше."));
    QVERIFY(!screen->fileLoaded());
    QCOMPARE(shownRows(*screen), listBefore);
    QCOMPARE(totals(*screen), totalsBefore);
    QCOMPARE(screen->conditions().SeekKlient, klientstest::client);
    QCOMPARE(test::countBy(screen->scratch()->db(), QStringLiteral("SELECT COUNT(*) FROM TempKlients")), 4);
}

}

class KlFileTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    // Corrected, saved, reloaded into a fresh statement of the same client: the corrected list comes back.
    void aSavedCorrectedListLoadsBack()
    {
        STATEMENT_FILES();
        const QString before = klientstest::registerFingerprint(database.db());
        const QString path = dir.filePath(QStringLiteral("март Д'Аргос"));
        {
            auto screen = openStatement(database.db(), dir.path());
            test::showActive(*screen);
            QTRY_COMPARE(screen->currentRow(), 0);
            QTest::keyClick(screen->grid(), Qt::Key_F4);
            QVERIFY(screen->model()->setData(screen->model()->index(1, kmColumn), QStringLiteral("120")));
            QVERIFY(screen->model()->setData(screen->model()->index(1, 6), QStringLiteral("0,15")));
            screen->grid()->setCurrentIndex(screen->model()->index(0, 1));
            QTest::keyClick(screen->grid(), Qt::Key_Delete);
            screen->chooseFileToSave = [&path](QWidget *) { return path; };
            screen->saveFile();
            QVERIFY(screen->fileSaved());
            QVERIFY(!screen->isVisible());  // saving ends the screen
            QCOMPARE(screen->savePath(), path + QStringLiteral(".kl"));
            QVERIFY(messages.asked.isEmpty());
        }
        QVERIFY(QFile::exists(path + QStringLiteral(".kl")));
        // Client data, readable by the user alone, as archives are.
        const QFile::Permissions permissions = QFile::permissions(path + QStringLiteral(".kl"));
        QVERIFY(permissions.testFlags(QFile::ReadOwner | QFile::WriteOwner));
        QCOMPARE(permissions & (QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther
                                | QFile::WriteOther | QFile::ExeOther),
                 QFile::Permissions());
        QCOMPARE(QDir(dir.path()).entryList({QStringLiteral("*.tmp")}, QDir::Files | QDir::Hidden).size(), 0);

        auto screen = openStatement(database.db(), dir.path());
        const QByteArray fileBefore = digest(path + QStringLiteral(".kl"));
        screen->chooseFileToOpen = [&path](QWidget *) { return path + QStringLiteral(".kl"); };
        screen->openFile();
        QVERIFY(screen->fileLoaded());
        QCOMPARE(shownRows(*screen), (QStringList{"София - Перник 120", "Перник - София 25", "София - Перник 60"}));
        QCOMPARE(screen->model()->index(0, 6).data().toString(), QStringLiteral("0,150"));
        // The sums are those of the file's rows (the deleted course of 125,00 is gone), not the register's 275,00.
        QCOMPARE(totals(*screen), QStringLiteral("205|225,00лв."));
        QCOMPARE(digest(path + QStringLiteral(".kl")), fileBefore);  // loading never writes the file
        ReportPreview *preview = screen->print();
        QVERIFY(preview);
        QVERIFY(preview->report().textLines().contains(QStringLiteral("Общо | 280,00лв.")));  // 180 + 40 + 60
        delete preview;
        QCOMPARE(klientstest::registerFingerprint(database.db()), before);
        QVERIFY(messages.shown.isEmpty());
    }

    void aFileThatIsNoStatementIsRefusedAndTheListStays_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::newRow("text file") << "text";
        QTest::newRow("empty file") << "empty";
        QTest::newRow("truncated statement") << "truncated";
        QTest::newRow("other database") << "other";
        QTest::newRow("a column missing") << "column";
        QTest::newRow("no such file") << "missing";
    }
    void aFileThatIsNoStatementIsRefusedAndTheListStays()
    {
        QFETCH(QString, kind);
        STATEMENT_FILES();
        auto screen = openStatement(database.db(), dir.path());
        const QString path = dir.filePath(QStringLiteral("файл.kl"));
        if (kind == QLatin1String("text") || kind == QLatin1String("empty")) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            if (kind == QLatin1String("text"))
                file.write("Данни за клиенти\n2006-03-02;София - Перник;100\n");
        } else if (kind == QLatin1String("truncated")) {
            QVERIFY(!saveStatementFile(screen->scratch()->db(), {klientstest::client, klientstest::march().period}, path));
            QFile file(path);
            QVERIFY(file.size() > 4096);
            QVERIFY(file.resize(file.size() / 2));
        } else if (kind == QLatin1String("other")) {
            QVERIFY(test::makePlainSqliteFile(path, {QStringLiteral("CREATE TABLE Sklad (Name TEXT)")}));
        } else if (kind == QLatin1String("column")) {
            QVERIFY(test::makePlainSqliteFile(path, {QStringLiteral("CREATE TABLE TempKlients (Data TEXT, Marsh TEXT, VidTovar TEXT, "
                                                       "Kola TEXT, KM INTEGER, Ton REAL, Suma REAL)"),
                                        fullKlientsNew}));
        }
        const QStringList listBefore = shownRows(*screen);
        screen->chooseFileToOpen = [&path](QWidget *) { return path; };
        screen->openFile();
        QCOMPARE(onlyOne(messages.shown),
                 QStringLiteral("ГРЕШКА при зареждане на файл!|Файлът \"файл.kl\" не съдържа данни за клиенти!\n"
                                "Моля, изберете файл, записан от справката \"Клиент за фактуриране\"."));
        QVERIFY(!screen->fileLoaded());
        QCOMPARE(shownRows(*screen), listBefore);
        QCOMPARE(test::countBy(screen->scratch()->db(), QStringLiteral("SELECT COUNT(*) FROM TempKlients")), 4);
    }

    // A file of an earlier version held whatever else its scratch database held: it is read all the same.
    void aFileWithFurtherTablesAndColumnsIsAccepted()
    {
        STATEMENT_FILES();
        const QString path = dir.filePath(QStringLiteral("стар.kl"));
        QVERIFY(test::makePlainSqliteFile(
            path, {QStringLiteral("CREATE TABLE TempBalans (Red INTEGER, Kola TEXT, Prihod TEXT, Razhod TEXT, Ostatak TEXT)"),
                   heading, marchHeading,
                   QStringLiteral("CREATE TABLE TempKlients (Red INTEGER, Data TEXT, Marsh TEXT, VidTovar TEXT, Kola TEXT, "
                                  "KM INTEGER, Ton REAL, Tarifa REAL, Suma REAL)"),
                   fullKlientsNew,
                   QStringLiteral("INSERT INTO TempKlients VALUES (1, '2006-03-09', 'Перник - Брезник', 'Чакъл', "
                                  "'СА 1234 ВК', 30, 10, 0.2, 60)"),
                   QStringLiteral("INSERT INTO TempKlients VALUES (2, '2006-03-10', 'Брезник - Перник', 'Чакъл', "
                                  "'СА 1234 ВК', 30, 10, 0.2, 60)")}));
        auto screen = openStatement(database.db(), dir.path());
        screen->chooseFileToOpen = [&path](QWidget *) { return path; };
        screen->openFile();
        QVERIFY(messages.shown.isEmpty());
        QVERIFY(screen->fileLoaded());
        QCOMPARE(screen->openPath(), path);
        QCOMPARE(shownRows(*screen),
                 (QStringList{QStringLiteral("Перник - Брезник 30"), QStringLiteral("Брезник - Перник 30")}));
        QCOMPARE(screen->model()->index(0, 0).data().toString(), QStringLiteral("09.03.2006"));
    }

    // A file saved for another client and period switches the screen to them, and says so: the
    // caption, the sums and the paper all speak of the file's client, never of the one before.
    void aFileOfAnotherClientSwitchesTheScreenToItsClientAndPeriod()
    {
        STATEMENT_FILES();
        const QString path = dir.filePath(QStringLiteral("бетон.kl"));
        QVERIFY(test::makePlainSqliteFile(path, {heading, fullKlients, fullKlientsNew,
                                    QStringLiteral("INSERT INTO KlientsFile VALUES ('Бетон АД', '2006-02-01', '2006-02-28')"),
                                    QStringLiteral("INSERT INTO TempKlients VALUES ('2006-02-10', 'Бетон - Перник', "
                                                   "'Бетон', 'РВ 7777 АА', 50, 20, 0.05, 50)"),
                                    QStringLiteral("INSERT INTO TempKlients VALUES ('2006-02-11', 'Перник - Бетон', "
                                                   "'Бетон', 'РВ 7777 АА', 30, 10, 0.1, 30)")}));
        auto screen = openStatement(database.db(), dir.path());
        QVERIFY(screen->windowTitle().endsWith(QStringLiteral(" - Курсове на Д'Аргос ООД")));
        screen->chooseFileToOpen = [&path](QWidget *) { return path; };
        screen->openFile();
        QVERIFY(screen->fileLoaded());
        QCOMPARE(onlyText(messages.shown),
                 QStringLiteral("Файлът \"бетон.kl\" е справка за клиент \"Бетон АД\" за периода от 01.02.2006 до 28.02.2006.\n"
                                "Справката е превключена към този клиент и период."));
        QCOMPARE(screen->conditions().SeekKlient, QStringLiteral("Бетон АД"));
        QCOMPARE(screen->conditions().period, (Period{QDate(2006, 2, 1), QDate(2006, 2, 28)}));
        QVERIFY(screen->windowTitle().endsWith(QStringLiteral(" - Курсове на Бетон АД")));
        QCOMPARE(shownRows(*screen), (QStringList{QStringLiteral("Бетон - Перник 50"), QStringLiteral("Перник - Бетон 30")}));
        QCOMPARE(totals(*screen), QStringLiteral("80|80,00лв."));
        ReportPreview *preview = screen->print();
        QVERIFY(preview);
        const QStringList lines = preview->report().textLines();
        QVERIFY2(lines.contains(QStringLiteral("по заявка на Бетон АД")), qPrintable(lines.join(QLatin1Char('\n'))));
        QVERIFY(lines.contains(QStringLiteral("за периода от 01.02.2006 до 28.02.2006")));
        QVERIFY(!lines.join(QLatin1Char('\n')).contains(QStringLiteral("Д'Аргос")));
        delete preview;
        // Saved again, the file keeps the client it came with.
        const QString again = dir.filePath(QStringLiteral("отново.kl"));
        QVERIFY(!saveStatementFile(screen->scratch()->db(), {screen->conditions().SeekKlient, screen->conditions().period},
                                   again));
        QCOMPARE(readStatementFile(again).value().heading.klient, QStringLiteral("Бетон АД"));
    }

    // A file saved after a print keeps the printed copy of that print, whether or not a correction
    // followed it, even though the screen writes the copy only when a file needs it.
    void aFileSavedAfterAPrintHoldsItsPrintedCopy_data()
    {
        QTest::addColumn<bool>("correctedAfter");
        QTest::newRow("saved after the print") << false;
        QTest::newRow("corrected after the print") << true;
    }
    void aFileSavedAfterAPrintHoldsItsPrintedCopy()
    {
        QFETCH(bool, correctedAfter);
        STATEMENT_FILES();
        const QString path = dir.filePath(QStringLiteral("отпечатан.kl"));
        {
            auto screen = openStatement(database.db(), dir.path());
            delete screen->print();
            if (correctedAfter) {
                QTest::keyClick(screen->grid(), Qt::Key_F4);
                QVERIFY(screen->model()->setData(screen->model()->index(0, kmColumn), QStringLiteral("45")));
            }
            screen->chooseFileToSave = [&path](QWidget *) { return path; };
            screen->saveFile();
            QVERIFY(screen->fileSaved());
        }
        // The copy of the print, by route and date, with the kilometres printed.
        QCOMPARE(fileRows(path, QStringLiteral("SELECT Marsh, KM, Suma FROM TempKlientsNew ORDER BY rowid")),
                 (QStringList{"Батановци - Перник|40|50,00", "Перник - София|25|40,00", "София - Перник|100|125,00",
                              "София - Перник|60|60,00"}));
        QCOMPARE(fileRows(path, QStringLiteral("SELECT KM FROM TempKlients WHERE Marsh = 'Батановци - Перник'")),
                 QStringList{correctedAfter ? QStringLiteral("45") : QStringLiteral("40")});
        QVERIFY(messages.shown.isEmpty());
    }

    // The file of the statement on screen loads without a word.
    void aFileOfTheSameClientAndPeriodLoadsWithoutAWord()
    {
        STATEMENT_FILES();
        const QString path = dir.filePath(QStringLiteral("март.kl"));
        auto screen = openStatement(database.db(), dir.path());
        QVERIFY(!saveStatementFile(screen->scratch()->db(), {klientstest::client, klientstest::march().period}, path));
        auto other = openStatement(database.db(), dir.path());
        other->chooseFileToOpen = [&path](QWidget *) { return path; };
        other->openFile();
        QVERIFY(other->fileLoaded());
        QVERIFY(messages.shown.isEmpty());
        QCOMPARE(other->conditions().SeekKlient, klientstest::client);
    }

    // A file that does not tell its client and period, or tells a wrong one, is refused: its rows
    // could otherwise stand under the name of the statement on screen.
    void aFileWithoutAValidClientAndPeriodIsRefused_data()
    {
        QTest::addColumn<QStringList>("head");  // the statement's tables and a row follow it
        QTest::addColumn<QString>("fault");
        const QString none = QStringLiteral("Файлът не казва за кой клиент и период е справката.");
        const QString wrong = QStringLiteral("Клиентът или периодът, записани във файла, не са верни.");
        const QString values = QStringLiteral("INSERT INTO KlientsFile VALUES (%1)");
        QTest::newRow("no heading table") << QStringList{} << none;
        QTest::newRow("an empty heading") << QStringList{heading} << none;
        QTest::newRow("two headings") << QStringList{heading, marchHeading, marchHeading} << wrong;
        QTest::newRow("blank client") << QStringList{heading, values.arg("'  ', '2006-03-01', '2006-03-31'")} << wrong;
        QTest::newRow("client with a control character")
            << QStringList{heading, values.arg("'Д' || char(7) || 'Аргос', '2006-03-01', '2006-03-31'")} << wrong;
        QTest::newRow("client as a blob") << QStringList{heading, values.arg("x'41', '2006-03-01', '2006-03-31'")} << wrong;
        QTest::newRow("no date") << QStringList{heading, values.arg("'Д''Аргос ООД', 'abc', '2006-03-31'")} << wrong;
        QTest::newRow("end before start")
            << QStringList{heading, values.arg("'Д''Аргос ООД', '2006-03-31', '2006-03-01'")} << wrong;
    }
    void aFileWithoutAValidClientAndPeriodIsRefused()
    {
        QFETCH(QStringList, head);
        QFETCH(QString, fault);
        expectRefusal(head + QStringList{fullKlients, fullKlientsNew,
                                         QStringLiteral("INSERT INTO TempKlients VALUES ('2006-03-02', 'София', "
                                                        "'Пясък', 'СА 1234 ВК', 100, 10, 0.1, 100)")},
                      fault);
    }

    // Every value of the working list must be one the screen itself would hold; the first that is
    // not refuses the whole file, naming its row, and nothing on screen changes.
    void aValueTheScreenWouldRefuseRefusesTheFile_data()
    {
        QTest::addColumn<QString>("values");
        QTest::addColumn<QString>("fault");
        // A row of the second line: date, route, cargo, truck, then km, tonnes, rate and sum.
        const QString row = QStringLiteral("%1, 'София', 'Пясък', 'СА', %2, %3, %4, %5");
        const QString march = QStringLiteral("'2006-03-02'");
        const QString km = QStringLiteral("Ред 2 на файла: %1 не са километри: нужно е цяло число от 0 до 32767.");
        const QString line = QStringLiteral("Ред 2 на файла: %1");
        QTest::newRow("km -500") << row.arg(march, "-500", "10", "0.1", "100") << km.arg("\"-500\"");
        QTest::newRow("km 40000") << row.arg(march, "40000", "10", "0.1", "100") << km.arg("\"40000\"");
        QTest::newRow("km 12.5") << row.arg(march, "12.5", "10", "0.1", "100") << km.arg("\"12.5\"");
        QTest::newRow("km as text") << row.arg(march, "'сто'", "10", "0.1", "100") << km.arg("\"сто\"");
        QTest::newRow("km missing") << row.arg(march, "NULL", "10", "0.1", "100") << km.arg("(празно)");
        QTest::newRow("NaN sum (stored as nothing)") << row.arg(march, "100", "10", "0.1", "0.0/0.0")
                                                     << line.arg("сумата (празно) не е число от 0 до 20000000.");
        QTest::newRow("infinite sum") << row.arg(march, "100", "10", "0.1", "9e999")
                                      << line.arg("сумата \"inf\" не е число от 0 до 20000000.");
        QTest::newRow("huge tonnes") << row.arg(march, "100", "1e300", "0.1", "100")
                                     << line.arg("тонажът \"1e+300\" не е число от 0 до 100.");
        QTest::newRow("negative rate") << row.arg(march, "100", "10", "-0.1", "100")
                                       << line.arg("тарифата \"-0.1\" не е число от 0 до 100.");
        QTest::newRow("rate as blob") << row.arg(march, "100", "10", "x'01'", "100")
                                      << line.arg("тарифата \"\uFFFD\" не е число от 0 до 100.");
        QTest::newRow("control character in a route") << "'2006-03-02', 'Со' || char(0) || 'фия', 'Пясък', 'СА', 100, 10, 0.1, 100"
                                                       << "Ред 2 на файла: текстът съдържа непозволен знак.";
        QTest::newRow("line break in a cargo") << "'2006-03-02', 'София', 'Пя' || char(10) || 'сък', 'СА', 100, 10, 0.1, 100"
                                               << "Ред 2 на файла: текстът съдържа непозволен знак.";
        QTest::newRow("truck longer than 12") << "'2006-03-02', 'София', 'Пясък', 'СА 1234 ВК 567', 100, 10, 0.1, 100"
                                              << "Ред 2 на файла: текстът \"СА 1234 ВК 567\" е по-дълъг от 12 знака.";
        QTest::newRow("a date \"abc\"") << "'abc', 'София', 'Пясък', 'СА', 100, 10, 0.1, 100"
                                        << "Ред 2 на файла: датата \"abc\" не е дата.";
        QTest::newRow("a date outside the period") << "'2006-04-02', 'София', 'Пясък', 'СА', 100, 10, 0.1, 100"
                                                   << "Ред 2 на файла: датата 02.04.2006 е извън периода на справката.";
    }
    void aValueTheScreenWouldRefuseRefusesTheFile()
    {
        QFETCH(QString, values);
        QFETCH(QString, fault);
        expectRefusal({heading, marchHeading, fullKlients, fullKlientsNew,
                       QStringLiteral("INSERT INTO TempKlients VALUES ('2006-03-03', 'Перник', 'Пясък', 'СА', 10, 1, 1, 10)"),
                       QStringLiteral("INSERT INTO TempKlients VALUES (%1)").arg(values)},
                      fault);
    }

    // A file of more rows than any statement has is refused before its rows are read, at once.
    void aFileOverTheSizeLimitIsRefusedAtOnce()
    {
        QElapsedTimer clock;
        clock.start();
        expectRefusal({heading, marchHeading, fullKlients, fullKlientsNew,
                       QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
                                      "INSERT INTO TempKlients SELECT '2006-03-02', 'София', 'Пясък', 'СА', 100, 10, 0.1, "
                                      "100 FROM n").arg(maxStatementFileRows + 1)},
                      QStringLiteral("Файлът съдържа 100001 реда, повече от 100000."));
        QVERIFY2(clock.elapsed() < 20000, qPrintable(QString::number(clock.elapsed())));
    }

    // The reading can be cancelled from its progress: nothing is taken and nothing is said.
    void aCancelledReadingTakesNothing()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("голям.kl"));
        QVERIFY(test::makePlainSqliteFile(path, {heading, marchHeading, fullKlients, fullKlientsNew,
                                    QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 5000) "
                                                   "INSERT INTO TempKlients SELECT '2006-03-02', 'София', 'Пясък', 'СА', "
                                                   "100, 10, 0.1, 100 FROM n")}));
        QList<int> told;
        const Checked<StatementFile> cancelled = readStatementFile(path, [&told](int done, int total) {
            told.append(done);
            return done < 1000 && total == 5000;
        });
        QVERIFY(!cancelled);
        QCOMPARE(cancelled.message(), statementFileCancelled());
        QCOMPARE(told.last(), 1000);
        const Checked<StatementFile> whole = readStatementFile(path, [](int, int) { return true; });
        QVERIFY(whole);
        QCOMPARE(whole.value().rows.klients.rowCount(), 5000);
    }

    void aSaveThatCannotBeWrittenKeepsTheScreenAndTheOldFile()
    {
        STATEMENT_FILES();
        auto screen = openStatement(database.db(), dir.path());
        test::showActive(*screen);
        QTRY_COMPARE(screen->currentRow(), 0);
        QTest::keyClick(screen->grid(), Qt::Key_Delete);
        screen->chooseFileToSave = [&dir](QWidget *) { return dir.filePath(QStringLiteral("няма/такава/папка.kl")); };
        screen->saveFile();
        QCOMPARE(onlyTitle(messages.shown), QStringLiteral("ГРЕШКА при запис на файл!"));
        QVERIFY(screen->isVisible());
        QVERIFY(!screen->fileSaved());
        QCOMPARE(screen->model()->rowCount(), 3);
    }

    // Saving over an existing file replaces it with the new list, through a checked copy.
    void savingOverAFileReplacesIt()
    {
        STATEMENT_FILES();
        const QString path = dir.filePath(QStringLiteral("март.kl"));
        QFile old(path);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("стар файл");
        old.close();
        auto screen = openStatement(database.db(), dir.path());
        QVERIFY(!saveStatementFile(screen->scratch()->db(), {klientstest::client, klientstest::march().period}, path));
        const Checked<StatementFile> read = readStatementFile(path);
        QVERIFY(read.ok());
        QCOMPARE(read.value().heading.klient, klientstest::client);
        QCOMPARE(read.value().heading.period, klientstest::march().period);
        QCOMPARE(read.value().rows.klients.rowCount(), 4);
        QCOMPARE(read.value().rows.klients.value(1, QStringLiteral("Marsh")).toString(), QStringLiteral("София - Перник"));
        // The file holds the statement's two tables and nothing else.
        QCOMPARE(fileRows(path, QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name")),
                 (QStringList{"KlientsFile", "TempKlients", "TempKlientsNew"}));
    }
};

QTEST_MAIN(KlFileTest)
#include "tst_klfile.moc"
