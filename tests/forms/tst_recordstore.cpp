#include "courses/coursestore.h"
#include "data/schema.h"
#include "forms/recordset.h"
#include "forms/recordstore.h"
#include "testdatabase.h"

#include <QSqlQuery>

using namespace zarek;

namespace {

const QString saveTitle = QStringLiteral("ГРЕШКА при запис!");

RecordStore drivers(QSqlDatabase db)
{
    return RecordStore(db, QStringLiteral("shof"), {QStringLiteral("kod"), QStringLiteral("ime")}, QStringLiteral("kod"));
}

RecordRow driver(const QString &kod, const QString &ime)
{
    return {0, 0, {{QStringLiteral("kod"), kod}, {QStringLiteral("ime"), ime}}};
}

// The message of a write that should have failed; an empty one when it did not.
UserMessage failureOf(const std::optional<UserMessage> &failure)
{
    return failure.value_or(UserMessage{});
}

QString storedName(QSqlDatabase db, qint64 id)
{
    return test::scalar(db, QStringLiteral("SELECT ime FROM shof WHERE id = ?"), {id}).toString();
}

}

class RecordStoreTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void aWrittenRowComesBackWithItsIdAndVersion()
    {
        ZAREK_SCRATCH_DB(scratch);
        const RecordStore store = drivers(scratch.db());
        RecordRow row = driver(QStringLiteral("002"), QStringLiteral("Димитър О'Нийл"));
        QVERIFY(!store.insert(row, saveTitle));
        QVERIFY(row.id > 0);
        QCOMPARE(row.rowVersion, 1);
        row.values[QStringLiteral("ime")] = QStringLiteral("Димитър О'Нийл Петров");
        QVERIFY(!store.update(row, saveTitle));
        QCOMPARE(row.rowVersion, 2);
        QVERIFY(!store.update(row, saveTitle));  // the version moved on with the write
        QCOMPARE(storedName(scratch.db(), row.id), QStringLiteral("Димитър О'Нийл Петров"));
    }

    // Rows are read in order, by code then id, with bound conditions. A large table opens on its
    // ids alone, in the same order; the values of any ids are read with their versions.
    void rowsAndKeysComeInOrderAndValuesByIds()
    {
        ZAREK_SCRATCH_DB(scratch);
        const RecordStore all = drivers(scratch.db());
        QList<qint64> ids;
        for (const auto &[kod, ime] : {std::pair{"003", "Ана"}, std::pair{"001", "Д'Арси"}, std::pair{"001", "Боби"}}) {
            RecordRow row = driver(QString::fromUtf8(kod), QString::fromUtf8(ime));
            QVERIFY(!all.insert(row, saveTitle));
            ids.append(row.id);
        }
        const auto rows = all.load();
        QVERIFY(rows);
        QCOMPARE(rows.value().size(), 3);
        QCOMPARE(rows.value()[0].values.value(QStringLiteral("ime")).toString(), QStringLiteral("Д'Арси"));
        QCOMPARE(rows.value()[1].values.value(QStringLiteral("ime")).toString(), QStringLiteral("Боби"));  // then by id

        const RecordStore one(scratch.db(), QStringLiteral("shof"), {QStringLiteral("ime")}, QStringLiteral("ime"),
                              QStringLiteral("ime = ?"), {QStringLiteral("Д'Арси")});
        QCOMPARE(one.load().value().size(), 1);

        const auto keys = all.loadKeys();
        QVERIFY(keys);
        QCOMPARE(keys.value().size(), 3);
        QCOMPARE(keys.value()[0].id, ids[1]);
        QCOMPARE(keys.value()[2].id, ids[0]);
        QVERIFY(keys.value()[0].values.isEmpty());
        QCOMPARE(keys.value()[0].rowVersion, 1);

        QVERIFY(scratch.exec(QStringLiteral("UPDATE shof SET ime = 'Ани', row_version = 2 WHERE kod = '003'")));
        const auto fetched = all.fetch({ids[0], ids[2], 999999});
        QVERIFY(fetched);
        QCOMPARE(fetched.value().size(), 2);  // an id no longer there is simply missing
        for (const RecordRow &row : fetched.value()) {
            if (row.id == ids[0]) {
                QCOMPARE(row.values.value(QStringLiteral("ime")).toString(), QStringLiteral("Ани"));
                QCOMPARE(row.rowVersion, 2);
            }
        }
        QVERIFY(all.fetch({}).value().isEmpty());
    }

    void aRowChangedOrDeletedByAnotherUserIsLeftAlone()
    {
        ZAREK_SCRATCH_DB(scratch);
        const RecordStore store = drivers(scratch.db());
        RecordRow mine = driver(QStringLiteral("001"), QStringLiteral("Иван"));
        RecordRow gone = driver(QStringLiteral("002"), QStringLiteral("Петър"));
        QVERIFY(!store.insert(mine, saveTitle));
        QVERIFY(!store.insert(gone, saveTitle));

        QSqlQuery other(scratch.openSecondConnection());
        QVERIFY(other.exec(QStringLiteral("UPDATE shof SET ime = 'Иван от другия', row_version = row_version + 1 "
                                          "WHERE kod = '001'")));
        QVERIFY(other.exec(QStringLiteral("DELETE FROM shof WHERE kod = '002'")));

        mine.values[QStringLiteral("ime")] = QStringLiteral("Иван мой");
        const auto changed = store.update(mine, saveTitle);
        QVERIFY(changed);
        QCOMPARE(*changed, CourseStore::conflictMessage(saveTitle));
        QCOMPARE(mine.rowVersion, 1);
        QCOMPARE(storedName(scratch.db(), mine.id), QStringLiteral("Иван от другия"));
        QCOMPARE(failureOf(store.update(gone, saveTitle)), CourseStore::conflictMessage(saveTitle));

        const QString deleteTitle = QStringLiteral("ГРЕШКА при изтриване!");
        QCOMPARE(failureOf(store.remove(mine, deleteTitle)), CourseStore::conflictMessage(deleteTitle));
        QCOMPARE(storedName(scratch.db(), mine.id), QStringLiteral("Иван от другия"));
    }

    void quotedColumnsAreWrittenAndReadByTheirBareNames()
    {
        ZAREK_SCRATCH_DB(scratch);
        QStringList columns;
        for (const QString &column : tariffColumns())
            columns.append(column);
        const RecordStore tariffs(scratch.db(), QStringLiteral("Tarifi"), columns, QString());
        RecordRow row;
        const double rates[] = {0.35, 0.25, 0.18, 0.14, 0.12, 0.1};
        for (int i = 0; i < 6; ++i)
            row.values.insert(RecordStore::valueName(columns[i]), rates[i]);
        QVERIFY(row.values.contains(QStringLiteral("Trf_20-30")));
        QVERIFY(!tariffs.insert(row, saveTitle));
        row.values[QStringLiteral("Trf_20-30")] = 0.26;
        QVERIFY(!tariffs.update(row, saveTitle));
        const auto rows = tariffs.load();
        QVERIFY(rows);
        QCOMPARE(rows.value().first().values.value(QStringLiteral("Trf_20-30")).toDouble(), 0.26);
        QCOMPARE(rows.value().first().values.value(QStringLiteral("Trf_200")).toDouble(), 0.1);
        QCOMPARE(RecordStore::valueName(QStringLiteral("kola")), QStringLiteral("kola"));
    }

    void aFailedReadIsAMessageUnderItsTitle()
    {
        ZAREK_SCRATCH_DB(scratch);
        const RecordStore missing(scratch.db(), QStringLiteral("no_such_table"), {QStringLiteral("a")}, QString());
        const auto rows = missing.load(QStringLiteral("ГРЕШКА при четене!"));
        QVERIFY(!rows);
        QCOMPARE(rows.message().title, QStringLiteral("ГРЕШКА при четене!"));
        QVERIFY(rows.message().text.contains(QLatin1Char(':')));
    }
    // A table too large to read its ids at opening is walked a page at a time: every move and
    // every place counted agrees with the whole order read at once, NULL codes included (first on
    // SQLite, last on PostgreSQL), from either end; a row written takes its place in the order.
    // Pages next to a row held are read by offset or from that row's key: the same rows either way.
    void pagedRowsFollowTheWholeOrder_data()
    {
        QTest::addColumn<bool>("byKey");
        QTest::newRow("by offset") << false;
        QTest::newRow("from the key of a row held") << true;
    }
    void pagedRowsFollowTheWholeOrder()
    {
        QFETCH(bool, byKey);
        ZAREK_SCRATCH_DB_AS(scratch, db);
        const RecordStore store = drivers(db);
        QVERIFY(db.transaction());
        QSqlQuery insert(db);
        insert.prepare(QStringLiteral("INSERT INTO shof (kod, ime) VALUES (?, ?)"));
        for (int i = 0; i < 3 * RecordSet::pageSize + 17; ++i) {
            insert.addBindValue(i % 13 == 0 ? QVariant(QMetaType(QMetaType::QString)) : QVariant(QStringLiteral("%1").arg(i % 7, 3, 10, QLatin1Char('0'))));
            insert.addBindValue(QStringLiteral("Шофьор %1").arg(i));
            QVERIFY(insert.exec());
        }
        QVERIFY(db.commit());
        const auto whole = store.load();
        QVERIFY(whole);
        QList<qint64> expected;
        for (const RecordRow &row : whole.value())
            expected.append(row.id);

        RecordSet rows(store.columns());
        RecordSet::Pager pager;
        pager.page = [&store](int offset, int limit, bool fromEnd) { return store.page(offset, limit, fromEnd); };
        pager.count = [&store] { return store.count(); };
        pager.positionOf = [&store](qint64 id) { return store.positionOf(id); };
        if (byKey)
            pager.pageAt = [&store](qint64 id, int limit, bool backwards) { return store.pageAt(id, limit, backwards); };
        rows.setPagedRows(pager);
        QList<qint64> walked;
        for (;;) {
            walked.append(rows.current().id);
            if (rows.atLast())
                break;
            rows.moveTo(rows.position() + 1);
        }
        QCOMPARE(walked, expected);

        rows.setPagedRows(pager);
        rows.moveLast();
        QCOMPARE(rows.position(), expected.size() - 1);
        QList<qint64> backwards;
        for (int i = expected.size() - 1; i >= 0; --i)
            backwards.prepend(rows.at(i).id);  // read from the end first
        QCOMPARE(backwards, expected);

        for (int place : {0, 1, 12, 13, 250, int(expected.size()) - 1}) {
            rows.setPagedRows(pager);
            QVERIFY(rows.moveToBookmark(expected.at(place)));
            QCOMPARE(rows.position(), place);
            QCOMPARE(rows.current().id, expected.at(place));
        }
        QVERIFY(!rows.moveToBookmark(987654));
        // Back to the first row from a bookmark far down, a page at a time.
        rows.setPagedRows(pager);
        QVERIFY(rows.moveToBookmark(expected.at(expected.size() - 3)));
        for (int i = int(expected.size()) - 3; i >= 0; --i)
            QCOMPARE(rows.at(i).id, expected.at(i));

        RecordRow added = driver(QStringLiteral("003"), QStringLiteral("Нов"));
        QVERIFY(!store.insert(added, saveTitle));
        rows.append(added);
        const auto after = store.load();
        int place = -1;
        for (int i = 0; i < after.value().size(); ++i)
            place = after.value().at(i).id == added.id ? i : place;
        QCOMPARE(rows.position(), place);
        QCOMPARE(rows.count(), expected.size() + 1);
        QCOMPARE(rows.at(place + 1).id, after.value().at(place + 1).id);

        QVERIFY(!store.remove(rows.current(), saveTitle));
        rows.removeCurrent();
        QCOMPARE(rows.position(), place);
        QCOMPARE(rows.current().id, after.value().at(place + 1).id);
        QCOMPARE(rows.count(), expected.size());
        QVERIFY(!rows.takeFetchFailure());
    }
};

QTEST_GUILESS_MAIN(RecordStoreTest)
#include "tst_recordstore.moc"
