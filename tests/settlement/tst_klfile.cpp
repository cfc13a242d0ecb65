#include "data/scratchdatabase.h"
#include "forms/messageservice.h"
#include "reports/reportpreview.h"
#include "settlement/klfile.h"
#include "settlement/klients.h"
#include "klientstestdata.h"
#include "testdatabase.h"

#include <QCryptographicHash>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QSqlError>
#include <QTableView>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <memory>

using namespace zarek;

namespace {

constexpr int kmColumn = 4;

std::unique_ptr<Klients> openStatement(QSqlDatabase db, const QString &folder)
{
    return std::make_unique<Klients>(klientstest::march(), db, std::make_unique<ScratchDatabase>(folder),
                                     []() -> const FirmProfile & { return klientstest::firm(); });
}

QStringList shownRows(const Klients &screen)
{
    QStringList rows;
    for (int row = 0; row < screen.model()->rowCount(); ++row)
        rows << screen.model()->index(row, 1).data().toString() + QLatin1Char(' ')
                    + screen.model()->index(row, kmColumn).data().toString();
    return rows;
}

QByteArray digest(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256);
}

// A SQLite file made by hand with the given statements, as another program or version might leave one.
bool makeDatabase(const QString &path, const QStringList &statements)
{
    const QString name = QStringLiteral("made-") + path;
    bool ok = true;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(path);
        ok = db.open();
        QSqlQuery query(db);
        for (const QString &sql : statements) {
            if (!query.exec(sql)) {
                qWarning() << query.lastError().text() << sql;
                ok = false;
            }
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
    return ok;
}

const QString fullKlients = QStringLiteral(
    "CREATE TABLE TempKlients (Data TEXT, Marsh TEXT, VidTovar TEXT, Kola TEXT, KM INTEGER, Ton DOUBLE PRECISION, "
    "Tarifa DOUBLE PRECISION, Suma DOUBLE PRECISION)");
const QString fullKlientsNew = QStringLiteral(
    "CREATE TABLE TempKlientsNew (Data TEXT, Marsh TEXT, VidTovar TEXT, Kola TEXT, KM TEXT, Ton TEXT, Tarifa TEXT, "
    "Suma TEXT)");

}

class KlFileTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    // Corrected, saved, reloaded into a fresh statement of the same client: the corrected list comes back.
    void aSavedCorrectedListLoadsBack()
    {
        ZAREK_SCRATCH_DB(database);
        QVERIFY(klientstest::fillCourses(database.db()));
        const QString before = klientstest::registerFingerprint(database.db());
        QTemporaryDir dir;
        RecordingMessageService messages;
        const QString path = dir.filePath(QStringLiteral("март Д'Аргос"));
        {
            auto screen = openStatement(database.db(), dir.path());
            screen->show();
            QVERIFY(QTest::qWaitForWindowActive(screen.get()));
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
        QCOMPARE(QDir(dir.path()).entryList({QStringLiteral("*.tmp")}, QDir::Files | QDir::Hidden).size(), 0);

        auto screen = openStatement(database.db(), dir.path());
        const QByteArray fileBefore = digest(path + QStringLiteral(".kl"));
        screen->chooseFileToOpen = [&path](QWidget *) { return path + QStringLiteral(".kl"); };
        screen->openFile();
        QVERIFY(screen->fileLoaded());
        QCOMPARE(shownRows(*screen), (QStringList{QStringLiteral("София - Перник 120"),
                                                  QStringLiteral("Перник - София 25"),
                                                  QStringLiteral("София - Перник 60")}));
        QCOMPARE(screen->model()->index(0, 6).data().toString(), QStringLiteral("0,150"));
        // The sums keep what was read from the register.
        QCOMPARE(screen->findChild<QLabel *>(QStringLiteral("Label4"))->text(), QStringLiteral("275,00лв."));
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
        QTest::newRow("letters in KM") << "letters";
        QTest::newRow("no date in Data") << "date";
        QTest::newRow("no such file") << "missing";
    }
    void aFileThatIsNoStatementIsRefusedAndTheListStays()
    {
        ZAREK_SCRATCH_DB(database);
        QVERIFY(klientstest::fillCourses(database.db()));
        QFETCH(QString, kind);
        QTemporaryDir dir;
        RecordingMessageService messages;
        auto screen = openStatement(database.db(), dir.path());
        const QString path = dir.filePath(QStringLiteral("файл.kl"));
        if (kind == QLatin1String("text") || kind == QLatin1String("empty")) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            if (kind == QLatin1String("text"))
                file.write("Данни за клиенти\n2006-03-02;София - Перник;100\n");
        } else if (kind == QLatin1String("truncated")) {
            QVERIFY(!saveStatementFile(screen->scratch()->db(), path));
            QFile file(path);
            QVERIFY(file.size() > 4096);
            QVERIFY(file.resize(file.size() / 2));
        } else if (kind == QLatin1String("other")) {
            QVERIFY(makeDatabase(path, {QStringLiteral("CREATE TABLE Sklad (Name TEXT)")}));
        } else if (kind == QLatin1String("column")) {
            QVERIFY(makeDatabase(path, {QStringLiteral("CREATE TABLE TempKlients (Data TEXT, Marsh TEXT, VidTovar TEXT, "
                                                       "Kola TEXT, KM INTEGER, Ton REAL, Suma REAL)"),
                                        fullKlientsNew}));
        } else if (kind == QLatin1String("letters")) {
            QVERIFY(makeDatabase(path, {fullKlients, fullKlientsNew,
                                        QStringLiteral("INSERT INTO TempKlients VALUES ('2006-03-02', 'София', 'Пясък', "
                                                       "'СА 1234 ВК', 'сто', 10, 0.1, 100)")}));
        } else if (kind == QLatin1String("date")) {
            QVERIFY(makeDatabase(path, {fullKlients, fullKlientsNew,
                                        QStringLiteral("INSERT INTO TempKlients VALUES ('вчера', 'София', 'Пясък', "
                                                       "'СА 1234 ВК', 100, 10, 0.1, 100)")}));
        }
        const QStringList listBefore = shownRows(*screen);
        screen->chooseFileToOpen = [&path](QWidget *) { return path; };
        screen->openFile();
        QCOMPARE(messages.shown.size(), 1);
        QCOMPARE(messages.shown.first().title, QStringLiteral("ГРЕШКА при зареждане на файл!"));
        QCOMPARE(messages.shown.first().text,
                 QStringLiteral("Файлът \"файл.kl\" не съдържа данни за клиенти!\n"
                                "Моля, изберете файл, записан от справката \"Клиент за фактуриране\"."));
        QVERIFY(!screen->fileLoaded());
        QCOMPARE(shownRows(*screen), listBefore);
        QSqlQuery count(screen->scratch()->db());
        QVERIFY(count.exec(QStringLiteral("SELECT COUNT(*) FROM TempKlients")) && count.next());
        QCOMPARE(count.value(0).toInt(), 4);
    }

    // A file of an earlier version held whatever else its scratch database held: it is read all the same.
    void aFileWithFurtherTablesAndColumnsIsAccepted()
    {
        ZAREK_SCRATCH_DB(database);
        QVERIFY(klientstest::fillCourses(database.db()));
        QTemporaryDir dir;
        RecordingMessageService messages;
        const QString path = dir.filePath(QStringLiteral("стар.kl"));
        QVERIFY(makeDatabase(
            path, {QStringLiteral("CREATE TABLE TempBalans (Red INTEGER, Kola TEXT, Prihod TEXT, Razhod TEXT, Ostatak TEXT)"),
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

    void aSaveThatCannotBeWrittenKeepsTheScreenAndTheOldFile()
    {
        ZAREK_SCRATCH_DB(database);
        QVERIFY(klientstest::fillCourses(database.db()));
        QTemporaryDir dir;
        RecordingMessageService messages;
        auto screen = openStatement(database.db(), dir.path());
        screen->show();
        QVERIFY(QTest::qWaitForWindowActive(screen.get()));
        QTRY_COMPARE(screen->currentRow(), 0);
        QTest::keyClick(screen->grid(), Qt::Key_Delete);
        screen->chooseFileToSave = [&dir](QWidget *) { return dir.filePath(QStringLiteral("няма/такава/папка.kl")); };
        screen->saveFile();
        QCOMPARE(messages.shown.size(), 1);
        QCOMPARE(messages.shown.first().title, QStringLiteral("ГРЕШКА при запис на файл!"));
        QVERIFY(screen->isVisible());
        QVERIFY(!screen->fileSaved());
        QCOMPARE(screen->model()->rowCount(), 3);
    }

    // Saving over an existing file replaces it with the new list, through a checked copy.
    void savingOverAFileReplacesIt()
    {
        ZAREK_SCRATCH_DB(database);
        QVERIFY(klientstest::fillCourses(database.db()));
        QTemporaryDir dir;
        RecordingMessageService messages;
        const QString path = dir.filePath(QStringLiteral("март.kl"));
        QFile old(path);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("стар файл");
        old.close();
        auto screen = openStatement(database.db(), dir.path());
        QVERIFY(!saveStatementFile(screen->scratch()->db(), path));
        const Checked<StatementFileRows> read = readStatementFile(path);
        QVERIFY(read.ok());
        QCOMPARE(read.value().klients.rowCount(), 4);
        QCOMPARE(read.value().klients.value(1, QStringLiteral("Marsh")).toString(), QStringLiteral("София - Перник"));
        // The file holds the statement's two tables and nothing else.
        QSqlDatabase file = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("check"));
        {
            file.setDatabaseName(path);
            QVERIFY(file.open());
            QSqlQuery tables(file);
            QVERIFY(tables.exec(QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name")));
            QStringList names;
            while (tables.next())
                names << tables.value(0).toString();
            QCOMPARE(names, (QStringList{QStringLiteral("TempKlients"), QStringLiteral("TempKlientsNew")}));
            file.close();
        }
        file = QSqlDatabase();
        QSqlDatabase::removeDatabase(QStringLiteral("check"));
    }
};

QTEST_MAIN(KlFileTest)
#include "tst_klfile.moc"
