#include "forms/recordfield.h"
#include "forms/recordset.h"

#include <QSignalSpy>
#include <QtTest>

using namespace zarek;

namespace {

// Rows of ids 10, 20 and 30.
void fillThreeRows(RecordSet &rows)
{
    QList<RecordRow> list;
    for (int i = 1; i <= 3; ++i)
        list.append({i * 10, 1, {{QStringLiteral("kod"), QStringLiteral("00%1").arg(i)}, {QStringLiteral("ime"), i}}});
    rows.setRows(list);
}

}

// A record set of the columns kod and ime holding the rows of ids 10, 20 and 30, the first current.
#define THREE_ROWS(rows)                                              \
    RecordSet rows({QStringLiteral("kod"), QStringLiteral("ime")}); \
    fillThreeRows(rows)

class RecordSetTest : public QObject {
    Q_OBJECT
private slots:
    // The first row is current after reading; the rows serve a grid too.
    void theFirstRowIsCurrentAfterReadingAndTheRowsServeAGrid()
    {
        THREE_ROWS(rows);
        QCOMPARE((QList<int>{rows.position(), rows.atFirst(), rows.atLast()}), (QList<int>{0, 1, 0}));
        QCOMPARE((QList<int>{rows.rowCount(), rows.columnCount()}), (QList<int>{3, 2}));
        QCOMPARE(rows.headerData(1, Qt::Horizontal).toString() + QLatin1Char('|') + rows.data(rows.index(2, 0)).toString(),
                 QStringLiteral("ime|003"));
        RecordSet none({QStringLiteral("kod")});
        none.setRows({});
        QCOMPARE((QList<int>{none.position(), none.atLast()}), (QList<int>{-1, 0}));
        none.moveLast();  // an empty set does not move
        QCOMPARE(none.position(), -1);
    }

    // Rows held by id get their values a page at a time, only when one of them is wanted.
    void lazyRowsAreReadAPageAroundTheWantedRow()
    {
        RecordSet rows({QStringLiteral("kod")});
        QList<RecordRow> keys;
        for (int i = 1; i <= 1000; ++i)
            keys.append({i, 1, {}});
        QList<QList<qint64>> asked;
        rows.setLazyRows(keys, [&asked](const QList<qint64> &ids) -> Checked<QList<RecordRow>> {
            asked.append(ids);
            QList<RecordRow> read;
            for (qint64 id : ids)
                read.append({id, 1, {{QStringLiteral("kod"), QString::number(id)}}});
            return read;
        });
        QCOMPARE(asked.size(), 1);  // the first row on opening
        QCOMPARE(asked[0].size(), RecordSet::pageSize);
        QCOMPARE(rows.current().values.value(QStringLiteral("kod")).toString(), QStringLiteral("1"));
        rows.moveTo(5);
        QCOMPARE(asked.size(), 1);  // already read with the first page
        rows.moveLast();
        QCOMPARE(asked.size(), 2);
        QCOMPARE(rows.current().values.value(QStringLiteral("kod")).toString(), QStringLiteral("1000"));
        QCOMPARE(rows.data(rows.index(500, 0)).toString(), QStringLiteral("501"));
        QCOMPARE(asked.size(), 3);
        QCOMPARE(rows.at(400).values.value(QStringLiteral("kod")).toString(), QStringLiteral("401"));
        QCOMPARE(asked.size(), 3);  // the page around row 500 reaches back to row 400
        QVERIFY(!rows.takeFetchFailure());
    }

    // Paged rows read nothing but the page shown on opening, and count only when the last row is
    // wanted; moving past the first page reads one page more.
    void pagedRowsReadOnlyWhatIsShown()
    {
        RecordSet rows({QStringLiteral("kod")});
        QList<std::pair<int, bool>> pages;
        int counts = 0;
        RecordSet::Pager pager;
        constexpr int total = 10 * RecordSet::pageSize;
        pager.page = [&pages, total](int offset, int limit, bool fromEnd) -> Checked<QList<RecordRow>> {
            pages.append({offset, fromEnd});
            QList<RecordRow> read;
            for (int i = offset; i < std::min(total, offset + limit); ++i) {
                const int id = fromEnd ? total - i : i + 1;
                read.append({id, 1, {{QStringLiteral("kod"), QString::number(id)}}});
            }
            return read;
        };
        pager.count = [&counts]() -> Checked<int> {
            ++counts;
            return total;
        };
        pager.positionOf = [](qint64 id) -> Checked<int> { return int(id) - 1; };
        // Pages read, counts made, the current id and whether it is the last.
        const auto read = [&] { return QList<qint64>{pages.size(), counts, rows.current().id, rows.atLast()}; };
        rows.setPagedRows(pager);
        QCOMPARE(read(), (QList<qint64>{1, 0, 1, 0}));
        rows.moveTo(RecordSet::pageSize / 2);
        QCOMPARE(pages.size(), 1);  // read with the first page
        rows.moveTo(RecordSet::pageSize + 10);
        QCOMPARE(read(), (QList<qint64>{2, 0, RecordSet::pageSize + 11, 0}));
        rows.moveLast();
        QCOMPARE(read(), (QList<qint64>{3, 1, total, 1}));
        QCOMPARE(pages.last(), std::pair(0, true));  // the last rows are read from the end
        QVERIFY(rows.moveToBookmark(total / 2));
        QCOMPARE(rows.position(), total / 2 - 1);
        QCOMPARE(rows.current().values.value(QStringLiteral("kod")).toString(), QString::number(total / 2));
        QCOMPARE(counts, 1);
    }

    void aFailedPageReadIsToldOnce()
    {
        RecordSet rows({QStringLiteral("kod")});
        rows.setLazyRows({{1, 1, {}}, {2, 1, {}}}, [](const QList<qint64> &) -> Checked<QList<RecordRow>> {
            return UserMessage{QStringLiteral("ГРЕШКА при четене!"), QStringLiteral("1:нет"), UserMessage::Icon::Critical};
        });
        const auto failure = rows.takeFetchFailure();
        QVERIFY(failure);
        QCOMPARE(failure->title, QStringLiteral("ГРЕШКА при четене!"));
        QVERIFY(!rows.takeFetchFailure());
        QCOMPARE(rows.position(), 0);  // the cursor moves all the same
    }

    void movesStayWithinTheRows_data()
    {
        QTest::addColumn<int>("to");
        QTest::addColumn<int>("position");
        QTest::newRow("before the first") << -1 << 0;
        QTest::newRow("second") << 1 << 1;
        QTest::newRow("past the last") << 3 << 2;
    }
    void movesStayWithinTheRows()
    {
        QFETCH(int, to);
        QFETCH(int, position);
        THREE_ROWS(rows);
        rows.moveTo(to);
        QCOMPARE(rows.position(), position);
    }

    void aBookmarkFollowsItsRowAndFailsOnceItIsGone()
    {
        THREE_ROWS(rows);
        rows.moveTo(2);
        const qint64 mark = rows.bookmark();
        rows.moveFirst();
        rows.removeCurrent();
        QVERIFY(rows.moveToBookmark(mark));
        QCOMPARE(rows.position(), 1);
        rows.removeCurrent();
        QVERIFY(!rows.moveToBookmark(mark));
        QVERIFY(!rows.moveToBookmark(0));  // no bookmark kept
    }

    void deletingTheLastRowMakesTheNewLastRowCurrent()
    {
        THREE_ROWS(rows);
        rows.moveLast();
        rows.removeCurrent();
        QCOMPARE(rows.position(), 1);
        QCOMPARE(rows.current().id, 20);
        rows.moveFirst();
        rows.removeCurrent();  // not the last: the next one takes its place
        QCOMPARE(rows.current().id, 20);
        rows.removeCurrent();
        QCOMPARE(rows.position(), -1);
    }

    void aWrittenRowStandsLastAndCurrent()
    {
        THREE_ROWS(rows);
        QSignalSpy moved(&rows, &RecordSet::currentChanged);
        rows.append({5, 1, {{QStringLiteral("kod"), QStringLiteral("000")}}});
        QCOMPARE((QList<int>{int(rows.count()), rows.position(), int(moved.count())}), (QList<int>{4, 3, 1}));
        rows.replaceCurrent({5, 2, {{QStringLiteral("kod"), QStringLiteral("009")}}});
        QCOMPARE(rows.current().rowVersion, 2);
    }

    void valuesAreShownTheBulgarianWay_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("text");
        QTest::newRow("norm") << QVariant(31.5) << int(RecordFieldKind::Number) << "31,5";
        QTest::newRow("whole") << QVariant(24.0) << int(RecordFieldKind::Number) << "24";
        QTest::newRow("large, no exponent") << QVariant(1000000.0) << int(RecordFieldKind::Number) << "1000000";
        QTest::newRow("no value") << QVariant(QMetaType::fromType<double>()) << int(RecordFieldKind::Number) << "";
        QTest::newRow("ISO text of SQLite") << QVariant(QStringLiteral("2006-03-05")) << int(RecordFieldKind::Date)
                                            << "05.03.2006";
        QTest::newRow("date") << QVariant(QDate(2006, 3, 5)) << int(RecordFieldKind::Date) << "05.03.2006";
        QTest::newRow("text") << QVariant(QStringLiteral(" О'Нийл ")) << int(RecordFieldKind::Text) << " О'Нийл ";
    }
    void valuesAreShownTheBulgarianWay()
    {
        QFETCH(QVariant, value);
        QFETCH(int, kind);
        QFETCH(QString, text);
        QCOMPARE(recordFieldText(value, RecordFieldKind(kind)), text);
    }

    void typedTextsBecomeValues_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<int>("kind");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("fault");
        QTest::newRow("comma") << "31,5" << int(RecordFieldKind::Number) << QVariant(31.5) << "";
        QTest::newRow("point") << " 31.5 " << int(RecordFieldKind::Number) << QVariant(31.5) << "";
        QTest::newRow("blank number is none") << "  " << int(RecordFieldKind::Number) << QVariant() << "";
        QTest::newRow("words") << "дванадесет" << int(RecordFieldKind::Number) << QVariant()
                               << "\"дванадесет\" не е число!";
        QTest::newRow("two separators") << "1,2,3" << int(RecordFieldKind::Number) << QVariant() << "\"1,2,3\" не е число!";
        QTest::newRow("date") << "5.3.2006" << int(RecordFieldKind::Date) << QVariant(QDate(2006, 3, 5)) << "";
        QTest::newRow("31 February") << "31.02.2006" << int(RecordFieldKind::Date) << QVariant()
                                     << "\"31.02.2006\" не е дата!";
        QTest::newRow("text as typed") << " Иван " << int(RecordFieldKind::Text) << QVariant(QStringLiteral(" Иван "))
                                       << "";
    }
    void typedTextsBecomeValues()
    {
        QFETCH(QString, typed);
        QFETCH(int, kind);
        QFETCH(QVariant, value);
        QFETCH(QString, fault);
        const Checked<QVariant> read =
            recordFieldValue(typed, RecordFieldKind(kind), QStringLiteral("Тонаж"), QStringLiteral("ГРЕШКА при запис!"),
                             QDate(2026, 1, 1));
        if (!fault.isEmpty()) {
            QVERIFY(!read);
            QCOMPARE(read.message().title, QStringLiteral("ГРЕШКА при запис!"));
            QCOMPARE(read.message().text.section(QLatin1Char('\n'), 0, 0), fault);
            QVERIFY(read.message().text.section(QLatin1Char('\n'), 1).contains(QStringLiteral("\"Тонаж\"")));
            return;
        }
        QVERIFY(read);
        if (value.isNull())
            QVERIFY(read.value().isNull());
        else
            QCOMPARE(read.value(), value);
    }
};

QTEST_GUILESS_MAIN(RecordSetTest)
#include "tst_recordset.moc"
