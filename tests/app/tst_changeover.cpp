#include "forms/commandday.h"
#include "app/firststart.h"
#include "app/prehodevro.h"
#include "core/formats.h"
#include "data/changeoverstore.h"
#include "data/schema.h"
#include "forms/messageservice.h"
#include "examplefirm.h"
#include "screendriver.h"
#include "testdatabase.h"
#include "warehouse/stockfixture.h"
#include "warehouse/warehousestore.h"

#include <QPushButton>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTabWidget>
#include <QTableWidget>

using namespace zarek;
using zarek::test::movement;
using zarek::test::scalar;

namespace {

const QDate euroDay(2026, 1, 1);
const QDateTime runTime(QDate(2026, 1, 2), QTime(8, 0));

WarehouseStore storeAt(QSqlDatabase db, const QDate &day)
{
    return WarehouseStore(db, [day] { return QDateTime(day, QTime(9, 0)); });
}

// A firm in leva before the changeover: its tariffs, and oil received in two lots of which the
// older is partly issued, a used-up receipt of filters, and bolts received after the changeover day.
bool fillLevaFirm(test::ScratchDatabase &scratch)
{
    if (!scratch.exec(QStringLiteral("INSERT INTO Tarifi (\"Trf_20\", \"Trf_20-30\", \"Trf_30-50\", \"Trf_50-100\", "
                                     "\"Trf_100-200\", \"Trf_200\") VALUES (0.35, 0.25, 0.18, 0.14, 0.125, 0.1)")))
        return false;
    QSqlDatabase db = scratch.db();
    const WarehouseStore store = storeAt(db, QDate(2025, 12, 20));
    return store.addReceipt(movement(QStringLiteral("Масло"), 10, 3.00, QDate(2025, 11, 3))).ok()
           && store.addReceipt(movement(QStringLiteral("Масло"), 5, 3.20, QDate(2025, 12, 1))).ok()
           && store.addIssue(movement(QStringLiteral("Масло"), 4, 3.20, QDate(2025, 12, 10))).ok()
           && store.addReceipt(movement(QStringLiteral("Филтър"), 2, 24.50, QDate(2025, 10, 1))).ok()
           && store.addIssue(movement(QStringLiteral("Филтър"), 2, 24.50, QDate(2025, 10, 5))).ok();
}

// What the changeover may touch, as one text: equal snapshots mean nothing was written.
QString snapshot(QSqlDatabase db)
{
    QStringList lines;
    QSqlQuery query(db);
    for (const QString &sql : {QStringLiteral("SELECT * FROM Tarifi ORDER BY id"),
                               QStringLiteral("SELECT id, row_version, Name, Edin, Broi FROM Nalich ORDER BY id"),
                               QStringLiteral("SELECT id, row_version, Edin, Ostat FROM Sklad ORDER BY id"),
                               QStringLiteral("SELECT * FROM EvroSklad ORDER BY id"),
                               QStringLiteral("SELECT * FROM Evro ORDER BY id")}) {
        query.exec(sql);
        while (query.next()) {
            QStringList cells;
            for (int i = 0; i < query.record().count(); ++i)
                cells.append(query.value(i).toString());
            lines.append(cells.join(QLatin1Char(',')));
        }
        lines.append(QStringLiteral("--"));
    }
    return lines.join(QLatin1Char('\n'));
}

// Why a result failed, for a failing check's text (empty when it did not).
template <typename T>
QByteArray why(const Checked<T> &result)
{
    return result.ok() ? QByteArray() : result.message().text.toUtf8();
}

// The text of a refusal, empty when there was none.
QString textOf(const std::optional<UserMessage> &message)
{
    return message ? message->text : QString();
}

// Numbers to 15 digits, joined by blanks.
QString numbers(std::initializer_list<double> values)
{
    QStringList texts;
    for (const double value : values)
        texts << QString::number(value, 'g', 15);
    return texts.join(QLatin1Char(' '));
}

double nalichPrice(QSqlDatabase db, const QString &name)
{
    return scalar(db, QStringLiteral("SELECT Edin FROM Nalich WHERE Name = ?"), {name}).toDouble();
}

}

// A fresh database of the current engine (db) holding the firm in leva before the changeover.
#define LEVA_FIRM()                   \
    ZAREK_SCRATCH_DB_AS(scratch, db); \
    QVERIFY(fillLevaFirm(scratch))

class ChangeoverTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void theReviewShowsEachOpenValueInLevaAndInEuro()
    {
        LEVA_FIRM();
        const Checked<ChangeoverReview> checked = reviewChangeover(db, euroDay);
        QVERIFY(checked.ok() && checked.value().tariffs.has_value());
        const ChangeoverReview &review = checked.value();
        QCOMPARE(numbers({review.tariffs->leva[4], review.tariffs->euro[4], review.tariffs->euro[0]}),
                 QStringLiteral("0.125 0.06391149 0.17895216"));
        // Both names stand on hand, the filters with nothing left: their latest price converts all the same.
        QCOMPARE(review.stock.size(), 2);
        QCOMPARE(review.stock.at(0).name + QLatin1Char(' ') + numbers({review.stock.at(0).leva, review.stock.at(0).euro}),
                 QStringLiteral("Масло 3.2 1.64"));
        // The open receipts only: the older oil lot is used up by the issue, the filters are gone.
        QCOMPARE(review.receipts.size(), 2);
        QCOMPARE(numbers({review.receipts.at(0).ostat, review.receipts.at(0).euro, review.receipts.at(1).ostat,
                          review.receipts.at(1).euro}),
                 QStringLiteral("6 1.53 5 1.64"));
        QCOMPARE(review.documentsFrom(), 0);
    }

    void theChangeoverWritesTheConvertedValuesRecordsItsDateAndRateAndIsRefusedTheSecondTime()
    {
        LEVA_FIRM();
        QVERIFY(!loadChangeover(db).value().isSet());
        const Checked<ChangeoverReview> review = reviewChangeover(db, euroDay);
        QVERIFY(review.ok());
        QCOMPARE(textOf(runChangeover(db, review.value(), runTime)), QString());

        const Checked<Changeover> recorded = loadChangeover(db);
        QVERIFY(recorded.ok());
        QCOMPARE(recorded.value().date, euroDay);
        QCOMPARE(recorded.value().rateScaled, euroRateScaled);
        QCOMPARE(scalar(db, QStringLiteral("SELECT \"Trf_100-200\" FROM Tarifi")).toDouble(), 0.06391149);
        QCOMPARE(test::rowsText(db, QStringLiteral("SELECT Name, Edin, (SELECT COUNT(*) FROM EvroSklad) FROM Nalich ORDER BY id")),
                 QStringLiteral("Масло|1.64|2 Филтър|12.53|2"));
        // The receipts themselves stay the leva documents they were.
        QCOMPARE(scalar(db, QStringLiteral("SELECT COUNT(*) FROM Sklad WHERE VidKol = 'P' AND Edin IN (3, 3.2, 24.5)")).toInt(), 3);

        // It is refused the second time.
        const QString after = snapshot(db);
        const Changeover done{euroDay};
        // Neither a new review nor the old one run again converts anything twice.
        const Checked<ChangeoverReview> again = reviewChangeover(db, QDate(2026, 2, 1));
        QVERIFY(!again.ok());
        QCOMPARE(again.message(), changeoverDoneMessage(done));
        QCOMPARE(textOf(runChangeover(db, review.value(), runTime)), changeoverDoneMessage(done).text);
        QCOMPARE(snapshot(db), after);
        // And the database itself holds one changeover at most.
        QSqlQuery second(db);
        QVERIFY(!second.exec(QStringLiteral("INSERT INTO Evro (Nomer, Data, Kurs) VALUES (1, '2026-02-01', 1.95583)")));
    }

    void aFailureInTheMiddleLeavesEverythingInLeva_data()
    {
        QTest::addColumn<int>("failingWrite");
        // The tariffs, the two prices on hand, the two open receipts, then the record itself.
        for (int write = 1; write <= 6; ++write)
            QTest::newRow(qPrintable(QStringLiteral("write %1").arg(write))) << write;
    }
    void aFailureInTheMiddleLeavesEverythingInLeva()
    {
        QFETCH(int, failingWrite);
        LEVA_FIRM();
        const QString before = snapshot(db);
        const Checked<ChangeoverReview> review = reviewChangeover(db, euroDay);
        int writes = 0;
        const UserMessage broken{QStringLiteral("ГРЕШКА при запис!"), QStringLiteral("Диска е пълен")};
        const auto failure = runChangeover(db, review.value(), runTime, [&](int write) -> std::optional<UserMessage> {
            writes = write;
            return write == failingWrite ? std::optional(broken) : std::nullopt;
        });
        QCOMPARE(textOf(failure), broken.text);
        QCOMPARE(writes, failingWrite);
        QCOMPARE(snapshot(db), before);
        QVERIFY(!loadChangeover(db).value().isSet());
        // The next attempt starts from the same leva values and succeeds.
        QCOMPARE(textOf(runChangeover(db, reviewChangeover(db, euroDay).value(), runTime)), QString());
    }

    void rowsChangedSinceTheReviewAreNotConvertedBlindly()
    {
        LEVA_FIRM();
        const Checked<ChangeoverReview> review = reviewChangeover(db, euroDay);
        // Another workstation receives a new article after the review was read.
        QVERIFY(storeAt(scratch.openSecondConnection(), QDate(2025, 12, 28))
                    .addReceipt(movement(QStringLiteral("Антифриз"), 30, 6.40, QDate(2025, 12, 28)))
                    .ok());
        const QString before = snapshot(db);
        const auto refused = runChangeover(db, review.value(), runTime);
        QVERIFY(refused.has_value());
        QVERIFY(refused->text.contains(QStringLiteral("променени след прегледа")));
        QCOMPARE(snapshot(db), before);
    }

    void documentsAlreadyDatedFromTheChangeoverAreCounted()
    {
        LEVA_FIRM();
        QVERIFY(storeAt(db, QDate(2026, 1, 5)).addReceipt(movement(QStringLiteral("Болт"), 100, 0.20, QDate(2026, 1, 5))).ok());
        const Checked<ChangeoverReview> review = reviewChangeover(db, euroDay);
        QCOMPARE(review.value().movementsFrom, 1);
        // A receipt of the changeover day itself is in euro already: it is no open leva receipt.
        QCOMPARE(review.value().receipts.size(), 2);
    }

    // FIFO across the changeover: what is left of a leva receipt is issued at its euro price.
    void anIssueAfterTheChangeoverCostsInEuro()
    {
        LEVA_FIRM();
        QCOMPARE(textOf(runChangeover(db, reviewChangeover(db, euroDay).value(), runTime)), QString());
        ScopedCommandDay books({Changeover{euroDay}, QDate::currentDate()});
        const WarehouseStore store = storeAt(db, QDate(2026, 1, 10));
        // The price on hand is asked in euro now; the leva price of old is no longer it.
        const Checked<StockMovement> leva = store.addIssue(movement(QStringLiteral("Масло"), 8, 3.20, QDate(2026, 1, 10)));
        QVERIFY(!leva.ok());
        QCOMPARE(leva.message().text, QStringLiteral("В склада нямате артикул с такава цена!"));
        // 6 left of the lot at 3,00 лв. (1,53 €) and 2 of the lot at 3,20 лв. (1,64 €).
        const Checked<StockMovement> issued = store.addIssue(movement(QStringLiteral("Масло"), 8, 1.64, QDate(2026, 1, 10)));
        QVERIFY2(issued.ok(), why(issued).constData());
        QCOMPARE(issued.value().suma, Money::fromCents(6 * 153 + 2 * 164));
        const QList<IssueLotRow> lots = store.lotsOf(issued.value().id).value();
        QCOMPARE(lots.size(), 2);
        QCOMPARE(numbers({lots.at(0).edin, lots.at(1).edin}), QStringLiteral("1.53 1.64"));
        // An issue dated before the changeover, typed late, still costs in leva.
        const Checked<StockMovement> late = store.addIssue(movement(QStringLiteral("Масло"), 1, 3.20, QDate(2025, 12, 30)));
        QVERIFY2(late.ok(), why(late).constData());
        QCOMPARE(late.value().suma, Money::fromCents(320));
    }

    void aLevaReceiptTypedAfterTheChangeoverPricesTheStockInEuro()
    {
        LEVA_FIRM();
        QCOMPARE(textOf(runChangeover(db, reviewChangeover(db, euroDay).value(), runTime)), QString());
        const WarehouseStore store = storeAt(db, QDate(2026, 1, 15));
        QVERIFY(store.addReceipt(movement(QStringLiteral("Масло"), 10, 3.91, QDate(2025, 12, 30))).ok());
        QCOMPARE(nalichPrice(db, QStringLiteral("Масло")), 2.00);  // 3,91 лв. is 2,00 €
        QVERIFY(store.addReceipt(movement(QStringLiteral("Масло"), 10, 2.10, QDate(2026, 1, 15))).ok());
        QCOMPARE(nalichPrice(db, QStringLiteral("Масло")), 2.10);
    }

    void aNewFirmMayStartInEuro_data()
    {
        QTest::addColumn<bool>("euro");
        QTest::addColumn<QDate>("today");
        QTest::addColumn<QDate>("changeover");
        QTest::newRow("in leva") << false << QDate(2026, 3, 1) << QDate();
        QTest::newRow("in euro after the euro came") << true << QDate(2026, 3, 1) << euroDay;
        QTest::newRow("in euro before it came") << true << QDate(2025, 12, 10) << QDate(2025, 12, 10);
    }
    void aNewFirmMayStartInEuro()
    {
        ZAREK_SCRATCH_DB(scratch);
        QFETCH(bool, euro);
        QFETCH(QDate, today);
        QFETCH(QDate, changeover);
        const FirmProfile firm = test::firmOf("Нова Фирма ООД", "ул. Първа 1", "Пловдив", "032 111 222", "0888 111 222");
        QCOMPARE(textOf(createFirmAndAdministrator(scratch.db(), firm, QStringLiteral("admin"), QStringLiteral("тайна"),
                                                   euro, today)),
                 QString());
        QCOMPARE(loadChangeover(scratch.db()).value().date, changeover);
    }

    // The review screen: what it shows, and that cancelling at any point writes nothing.
    void theReviewScreenShowsTheValuesAndCancellingWritesNothing()
    {
        LEVA_FIRM();
        const QString before = snapshot(db);
        RecordingMessageService messages;
        {
            PrehodEvro screen(db);
            QVERIFY(screen.reviewed().has_value());
            QStringList rowCounts;
            for (const char *grid : {"grdTariffs", "grdStock", "grdReceipts"})
                rowCounts << QString::number(test::child<QTableWidget>(screen, grid)->rowCount());
            QCOMPARE(rowCounts, (QStringList{"6", "2", "2"}));
            auto *receipts = screen.findChild<QTableWidget *>(QStringLiteral("grdReceipts"));
            QCOMPARE(receipts->item(0, 4)->text() + QLatin1Char('|') + receipts->item(0, 5)->text(),
                     QStringLiteral("3,00 лв.|1,53 евро"));
            // "Не" to the last question: nothing is written and the screen stays.
            messages.answers.append(false);
            screen.findChild<QPushButton *>(QStringLiteral("cmdOK"))->click();
            QVERIFY(!screen.done());
            QCOMPARE(snapshot(db), before);
            screen.findChild<QPushButton *>(QStringLiteral("cmdCancel"))->click();
            QCOMPARE(screen.result(), int(QDialog::Rejected));
        }
        QCOMPARE(snapshot(db), before);
        QVERIFY(!loadChangeover(db).value().isSet());
    }

    void theReviewScreenConvertsOnceOnYes()
    {
        LEVA_FIRM();
        RecordingMessageService messages;
        ScopedCommandDay books({Changeover{}, QDate::currentDate()});
        PrehodEvro screen(db);
        screen.clock = [] { return runTime; };
        messages.answers.append(true);
        screen.findChild<QPushButton *>(QStringLiteral("cmdOK"))->click();
        QVERIFY(screen.done());
        QCOMPARE(loadChangeover(db).value().date, euroDay);
        // The open program reads the books in euro from now on.
        QCOMPARE(commandDay().changeover.date, euroDay);
        QVERIFY(messages.shown.last().text.contains(QStringLiteral("в евро от 01.01.2026")));
    }

    // With ZAREK_SCREENSHOT_DIR set, saves the review screen, each of its tabs.
    void screenshots()
    {
        ZAREK_SCREENSHOT_DIR(dir);
        ZAREK_ONLY_ON("sqlite", "one set of pictures is enough");
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(fillLevaFirm(scratch));
        QVERIFY(storeAt(scratch.db(), QDate(2026, 1, 5))
                    .addReceipt(movement(QStringLiteral("Болт M12"), 100, 0.20, QDate(2026, 1, 5)))
                    .ok());
        RecordingMessageService messages;
        PrehodEvro screen(scratch.db());
        test::showExposed(screen);
        auto *tabs = screen.findChild<QTabWidget *>(QStringLiteral("tbsEvro"));
        for (int tab = 0; tab < tabs->count(); ++tab) {
            tabs->setCurrentIndex(tab);
            QVERIFY(screen.grab().save(dir + QStringLiteral("/evro-review-%1.png").arg(tab + 1)));
        }
    }
};

QTEST_MAIN(ChangeoverTest)
#include "tst_changeover.moc"
