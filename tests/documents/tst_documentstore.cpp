#include "documents/documentrules.h"
#include "documents/documentstore.h"
#include "data/sqlerror.h"
#include "testdatabase.h"


using namespace zarek;
using namespace zarek::documents;

namespace {

const QString title = QStringLiteral("ГРЕШКА при запис!");
const QDate today(2026, 6, 1);

RecordRow document(const QString &kind, const QString &holder, const QDate &issued, const QDate &valid,
                   const QString &number = QStringLiteral("1"))
{
    RecordRow row;
    row.values = {{"Vid", kind},      {"Kod", holder},    {"Nomer", number}, {"Izdaden", issued},
                  {"Valid", valid},   {"Izdatel", "ДАИ"}, {"Belejka", ""}};
    return row;
}

int count(QSqlDatabase db, const QString &sql, const QVariantList &values = {})
{
    return test::scalar(db, sql, values).toInt();
}

// The due list as "state kind holder valid-until", one row a line.
QStringList dueLines(const RowSet &rows)
{
    QStringList lines;
    for (int row = 0; row < rows.rowCount(); ++row)
        lines << QStringLiteral("%1 %2 %3 %4")
                     .arg(rows.value(row, QStringLiteral("Sastoianie")).toString(), rows.value(row, QStringLiteral("Vid")).toString(),
                          rows.value(row, QStringLiteral("Kod")).toString(),
                          rows.value(row, QStringLiteral("Valid")).toDate().toString(QStringLiteral("dd.MM")));
    return lines;
}

}

// A fresh database of the current engine (db) and the document store on it.
#define DOCUMENT_STORE()              \
    ZAREK_SCRATCH_DB_AS(scratch, db); \
    const DocumentStore store(db)

class DocumentStoreTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    // A new database starts with the kinds a haulier keeps, as the rules describe them, and
    // refuses a document valid before its issue.
    void aNewDatabaseHasTheStandardKindsAndItsGuard()
    {
        ZAREK_SCRATCH_DB(scratch);
        const auto kinds = DocumentStore(scratch.db()).kinds();
        QVERIFY(kinds);
        QCOMPARE(kinds.value().size(), standardKinds().size());
        for (const DocumentKind &expected : standardKinds()) {
            const auto found = std::find_if(kinds.value().begin(), kinds.value().end(),
                                            [&](const DocumentKind &k) { return k.name == expected.name; });
            QVERIFY2(found != kinds.value().end(), qPrintable(expected.name));
            DocumentKind stored = *found;
            stored.id = 0;
            QCOMPARE(stored, expected);
        }
        // The database itself keeps a validity before the issue out, whoever writes.
        QVERIFY(!test::insertRow(scratch.db(), QStringLiteral("Dokumenti"), QStringLiteral("Vid, Za, Kod, Izdaden, Valid"),
                                 {"Технически преглед", "K", "СА 1234 ВК", QDate(2026, 3, 2), QDate(2026, 3, 1)}));
    }

    // Expired and due ones, soonest first; valid, renewed and never-reminding ones are left out.
    void theDueListHoldsExpiredAndDueSoonestFirst()
    {
        ZAREK_SCRATCH_DB_AS(scratch, db);
        QVERIFY(scratch.exec(QStringLiteral("INSERT INTO shof (kod, ime) VALUES ('001', 'Иван Петров')")));
        const DocumentStore store(db);
        const auto kinds = store.kinds().value();
        const QList<RecordRow> rows = {
            document("Гражданска отговорност", "СА 1234 ВК", QDate(2025, 7, 1), QDate(2026, 6, 30)),       // due (30 days)
            document("Технически преглед", "СА 1234 ВК", QDate(2025, 7, 3), QDate(2026, 7, 2)),            // warned from tomorrow
            document("Застраховка CMR", "СА 5678 ВК", QDate(2025, 5, 31), QDate(2026, 5, 31)),             // expired yesterday
            document("Сваляне на данни от картата на водача", "001", QDate(2026, 5, 7), QDate(2026, 6, 4)),  // due
            document("Психологическа годност", "001", QDate(2019, 1, 1), QDate(2020, 1, 1)),                // never reminds
            document("Технически преглед", "СА 9999 ВК", QDate(2025, 6, 1), QDate(2026, 6, 1)),             // today: due
        };
        for (const RecordRow &row : rows)
            QVERIFY(store.save(row, true, kinds, today, std::nullopt, title));
        const auto due = store.dueList(today);
        QVERIFY(due);
        QCOMPARE(dueLines(due.value()),
                 (QStringList{"Изтекъл Застраховка CMR СА 5678 ВК 31.05", "Изтича Технически преглед СА 9999 ВК 01.06",
                              "Изтича Сваляне на данни от картата на водача 001 04.06",
                              "Изтича Гражданска отговорност СА 1234 ВК 30.06"}));
        QCOMPARE(due.value().value(2, QStringLiteral("Pritejatel")).toString(), QStringLiteral("Шофьор 001 Иван Петров"));
        QCOMPARE(due.value().value(0, QStringLiteral("Ostavat")).toInt(), -1);
        const auto counted = store.dueCount(today);
        QVERIFY(counted);
        QCOMPARE(counted.value(), qMakePair(4, 1));
    }

    // Renewing keeps the old document as history, marked renewed, and out of the due list.
    void aRenewalKeepsTheOldDocumentInTheHistory()
    {
        DOCUMENT_STORE();
        const auto kinds = store.kinds().value();
        const auto old = store.save(document("Застраховка CMR", "СА 1234 ВК", QDate(2025, 6, 5), QDate(2026, 6, 4), "A-1"),
                                    true, kinds, today, std::nullopt, title);
        QVERIFY(old);
        QCOMPARE(store.dueCount(today).value().first, 1);
        const auto renewal = store.save(document("Застраховка CMR", "СА 1234 ВК", QDate(2026, 6, 5), QDate(2027, 6, 4), "A-2"),
                                        true, kinds, today, old.value(), title);
        QVERIFY(renewal);
        QCOMPARE(renewal.value().values.value("PredID").toLongLong(), old.value().id);
        const auto history = store.history(QStringLiteral("Застраховка CMR"), Holder::Truck, QStringLiteral("СА 1234 ВК"));
        QVERIFY(history);
        QCOMPARE(history.value().size(), 2);
        QCOMPARE(history.value().at(0).values.value("Nomer").toString(), QStringLiteral("A-2"));
        QCOMPARE(history.value().at(1).values.value("Nomer").toString(), QStringLiteral("A-1"));
        QVERIFY(history.value().at(1).values.value("Smenen").toBool());
        QVERIFY(!history.value().at(0).values.value("Smenen").toBool());
        QCOMPARE(store.dueCount(today).value().first, 0);

        // Renewing the same old document again, at the version read before, changes nothing.
        const auto twice = store.save(document("Застраховка CMR", "СА 1234 ВК", QDate(2026, 6, 5), QDate(2027, 6, 4), "A-3"),
                                      true, kinds, today, old.value(), title);
        QVERIFY(!twice);
        QCOMPARE(twice.message(), rowConflictMessage(title));
        QCOMPARE(count(db, QStringLiteral("SELECT COUNT(*) FROM Dokumenti")), 2);
    }

    void theStoreRefusesWhatTheFormRefuses_data()
    {
        QTest::addColumn<QDate>("issued");
        QTest::addColumn<QDate>("valid");
        QTest::addColumn<QString>("kind");
        QTest::newRow("valid before issued") << QDate(2026, 3, 2) << QDate(2026, 3, 1) << "Технически преглед";
        QTest::newRow("expiring kind without validity") << QDate(2026, 3, 2) << QDate() << "Технически преглед";
        QTest::newRow("unknown kind") << QDate(2026, 3, 2) << QDate(2027, 3, 1) << "Паспорт";
    }
    void theStoreRefusesWhatTheFormRefuses()
    {
        QFETCH(QDate, issued);
        QFETCH(QDate, valid);
        QFETCH(QString, kind);
        ZAREK_SCRATCH_DB(scratch);
        const DocumentStore store(scratch.db());
        QVERIFY(!store.save(document(kind, "СА 1234 ВК", issued, valid), true, store.kinds().value(), today, std::nullopt, title));
        QCOMPARE(count(scratch.db(), QStringLiteral("SELECT COUNT(*) FROM Dokumenti")), 0);
    }

    // A scan over 10 MB is refused and nothing is written; one of exactly 10 MB is kept whole.
    void aBigScanIsRefusedAndNothingWritten()
    {
        DOCUMENT_STORE();
        const auto saved = store.save(document("Технически преглед", "СА 1234 ВК", QDate(2026, 3, 2), QDate(2027, 3, 1)), true,
                                      store.kinds().value(), today, std::nullopt, title);
        QVERIFY(saved);
        const qint64 id = saved.value().id;
        const QByteArray page(200 * 1024, '\x7f');
        QVERIFY(!store.attachScan(id, QStringLiteral("талон.pdf"), page));
        const auto tooBig = store.attachScan(id, QStringLiteral("голям.pdf"), QByteArray(maxScanBytes + 1, 'x'));
        QVERIFY(tooBig);
        QCOMPARE(tooBig->title, QStringLiteral("ВНИМАНИЕ!"));
        QCOMPARE(store.scanInfo(id).value(), std::optional<ScanInfo>(ScanInfo{QStringLiteral("талон.pdf"), page.size()}));
        QCOMPARE(store.scanData(id).value(), page);

        QByteArray tenMegabytes(maxScanBytes, '\0');
        tenMegabytes[0] = '%';
        tenMegabytes[maxScanBytes - 1] = '\xff';
        QVERIFY(!store.attachScan(id, QStringLiteral("точно.pdf"), tenMegabytes));
        QCOMPARE(store.scanData(id).value(), tenMegabytes);
        QCOMPARE(count(db, QStringLiteral("SELECT COUNT(*) FROM DokScan")), 1);

        // The database refuses a copy over the size even when written past the store.
        QVERIFY(!test::insertRow(db, QStringLiteral("DokScan"), QStringLiteral("DokID, Ime, Razmer, Danni"),
                                 {id + 1, "x", maxScanBytes + 1, QByteArray(maxScanBytes + 1, 'x')}));
    }

    // Deleting a driver takes his documents and their copies with him, and nobody else's.
    void deletingAHolderTakesItsDocuments()
    {
        ZAREK_SCRATCH_DB_AS(scratch, db);
        QVERIFY(scratch.exec(QStringLiteral("INSERT INTO shof (kod, ime) VALUES ('001', 'Иван Петров')")));
        QVERIFY(scratch.exec(QStringLiteral("INSERT INTO shof (kod, ime) VALUES ('002', 'Петър Иванов')")));
        const DocumentStore store(db);
        const auto kinds = store.kinds().value();
        for (const char *holder : {"001", "001", "002"}) {
            const auto saved = store.save(document("Карта на водача", holder, QDate(2024, 1, 1), QDate(2028, 12, 31)), true,
                                          kinds, today, std::nullopt, title);
            QVERIFY(saved);
            QVERIFY(!store.attachScan(saved.value().id, QStringLiteral("карта.png"), QByteArray("png")));
        }
        QCOMPARE(store.holderDocumentCount(Holder::Driver, QStringLiteral("001")).value(), 2);
        RecordRow driver;
        driver.id = test::scalar(db, QStringLiteral("SELECT id FROM shof WHERE kod = '001'")).toLongLong();
        driver.rowVersion = 1;
        driver.values.insert(QStringLiteral("kod"), QStringLiteral("001"));
        RecordRow stale = driver;
        stale.rowVersion = 7;
        QCOMPARE(store.removeHolder(Holder::Driver, stale, title), std::optional<UserMessage>(rowConflictMessage(title)));
        QCOMPARE(count(db, QStringLiteral("SELECT COUNT(*) FROM Dokumenti")), 3);
        QVERIFY(!store.removeHolder(Holder::Driver, driver, title));
        // One driver left, with his one document and its scan.
        QCOMPARE(test::rowsText(db, "SELECT (SELECT COUNT(*) FROM shof), (SELECT COUNT(*) FROM Dokumenti WHERE Kod = '002'), "
                                    "(SELECT COUNT(*) FROM Dokumenti), (SELECT COUNT(*) FROM DokScan)"),
                 QStringLiteral("1|1|1|1"));
    }

    // A kind in use stays; an unused one goes.
    void aKindInUseIsNotDeleted()
    {
        DOCUMENT_STORE();
        QVERIFY(store.save(document("Застраховка CMR", "СА 1234 ВК", QDate(2026, 1, 1), QDate(2026, 12, 31)), true,
                           store.kinds().value(), today, std::nullopt, title));
        const auto rows = store.kindRows()->load().value();
        for (const RecordRow &row : rows) {
            const QString name = row.values.value(QStringLiteral("Ime")).toString();
            const auto refused = store.removeKind(row, title);
            QCOMPARE(refused.has_value(), name == QStringLiteral("Застраховка CMR"));
        }
        QCOMPARE(count(db, QStringLiteral("SELECT COUNT(*) FROM DokVid")), 1);
    }
};

QTEST_GUILESS_MAIN(DocumentStoreTest)
#include "tst_documentstore.moc"
