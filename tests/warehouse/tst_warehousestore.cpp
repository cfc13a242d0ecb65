#include "data/schema.h"
#include "queryrows.h"
#include "testdatabase.h"
#include "warehouse/stockfixture.h"
#include "warehouse/warehousestore.h"

#include <QSqlError>
#include <QSqlQuery>
#include <limits>
#include <random>

using namespace zarek;
using zarek::test::movement;
using zarek::test::scalar;

namespace {

const QDateTime clockTime(QDate(2026, 3, 20), QTime(10, 15));

WarehouseStore storeOf(QSqlDatabase db)
{
    return WarehouseStore(db, [] { return clockTime; });
}

double broi(QSqlDatabase db, const QString &name)
{
    return scalar(db, QStringLiteral("SELECT Broi FROM Nalich WHERE Name = ?"), {name}).toDouble();
}

// Ostat and Lipsa of each receipt, as "5 0x" (x: closed).
QString receiptState(QSqlDatabase db, const QList<qint64> &ids)
{
    QStringList states;
    for (const qint64 id : ids) {
        const QString state = test::row(db, "SELECT Ostat, Lipsa FROM Sklad WHERE id = ?", {id});
        states.append(state.section(QLatin1Char('|'), 0, 0) + (state.endsWith(QLatin1String("|1")) ? "x" : ""));
    }
    return states.join(QLatin1Char(' '));
}

// Everything the stock rule writes, as one text: two equal snapshots mean nothing changed.
QString snapshot(QSqlDatabase db)
{
    return test::rowsText(db, "SELECT id, row_version, Name, Kol, Edin, Suma, Ostat, Lipsa FROM Sklad ORDER BY id")
           + QStringLiteral("\nN: ") + test::rowsText(db, "SELECT id, row_version, Name, Edin, Broi FROM Nalich ORDER BY id")
           + QStringLiteral("\nL: ") + test::rowsText(db, "SELECT IssueID, ReceiptID, Kol FROM SkladLots ORDER BY id");
}

// The stock rule's invariants, each failure as a line: for every name Broi is the sum of Ostat of
// its open receipts; every receipt has given what its lots say; every stock issue is its lots.
QStringList brokenInvariants(QSqlDatabase db, bool lotsToo = true)
{
    QStringList broken = test::rows(
        db, "SELECT 'Broi of ' || n.Name FROM Nalich n WHERE ABS(n.Broi - COALESCE((SELECT SUM(s.Ostat) FROM Sklad s "
            "WHERE s.Name = n.Name AND s.VidKol = 'P' AND s.Lipsa = ?), 0)) >= 0.0005", {false});
    broken += test::rows(db, "SELECT 'open receipt ' || s.id || ' without a stock row' FROM Sklad s WHERE s.VidKol = 'P' "
                             "AND s.Lipsa = ? AND s.Ostat > 0 AND NOT EXISTS (SELECT 1 FROM Nalich n WHERE n.Name = s.Name)",
                         {false});
    if (!lotsToo)
        return broken;
    broken += test::rows(db, "SELECT 'receipt ' || s.id || ': its lots' FROM Sklad s WHERE s.VidKol = 'P' AND "
                             "ABS(s.Kol - COALESCE(s.Ostat, 0) - COALESCE((SELECT SUM(l.Kol) FROM SkladLots l "
                             "WHERE l.ReceiptID = s.id), 0)) >= 0.0005");
    broken += test::rows(db, "SELECT 'issue ' || s.id || ': its lots' FROM Sklad s WHERE s.VidKol = 'R' AND s.Name <> ? "
                             "AND ABS(s.Kol - COALESCE((SELECT SUM(l.Kol) FROM SkladLots l WHERE l.IssueID = s.id), 0)) "
                             ">= 0.0005", {repairName()});
    return broken;
}

QString textOf(const std::optional<UserMessage> &message)
{
    return message ? message->title + QLatin1Char('|') + message->text : QString();
}

template <typename T>
QString textOf(const Checked<T> &result)
{
    return result ? QString() : result.message().title + QLatin1Char('|') + result.message().text;
}

// What a store call gave back: "name kol edin suma-in-cents ostat lipsa", the price to the last bit,
// "-" for no Ostat, x for closed; or the refusal.
QString said(const Checked<StockMovement> &result)
{
    if (!result)
        return textOf(result);
    const StockMovement &m = result.value();
    return QStringLiteral("%1 %2 %3 %4 %5 %6")
        .arg(m.name).arg(m.kol).arg(m.edin, 0, 'g', 17).arg(m.suma.cents())
        .arg(m.ostat ? QString::number(*m.ostat) : QStringLiteral("-"), m.lipsa ? QStringLiteral("x") : QStringLiteral("o"));
}

}

// A fresh database of the current engine (db) and the store on it at the fixed clock.
#define WAREHOUSE_STORE()             \
    ZAREK_SCRATCH_DB_AS(scratch, db); \
    const WarehouseStore store = storeOf(db)

class WarehouseStoreTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void twoReceiptsAndAnIssueOfFifteenGoFirstInFirstOut()
    {
        WAREHOUSE_STORE();
        const auto first = store.addReceipt(movement("Филтър маслен", 10, 2.00, QDate(2026, 3, 1)));
        const auto second = store.addReceipt(movement("Филтър маслен", 10, 3.00, QDate(2026, 3, 2)));
        QCOMPARE(said(first), QStringLiteral("Филтър маслен 10 2 2000 10 o"));
        QVERIFY2(second, qPrintable(textOf(second)));
        QCOMPARE(test::row(db, "SELECT Broi, Edin FROM Nalich"), QStringLiteral("20|3"));

        const auto issue = store.addIssue(movement("Филтър маслен", 15, 3.00, QDate(2026, 3, 5), "СА 1234 ВК"));
        QCOMPARE(said(issue), QStringLiteral("Филтър маслен 15 2.3333333333333335 3500 - x"));
        QCOMPARE(receiptState(db, {first.value().id, second.value().id}), QStringLiteral("0x 5"));
        QCOMPARE(broi(db, "Филтър маслен"), 5.0);
        QCOMPARE(test::row(db, "SELECT Edin, Suma, Ostat FROM Sklad WHERE VidKol = 'R'"),
                 QStringLiteral("2.33333333333|35|"));

        QStringList lots;  // receipt, date, quantity, price, sum in cents
        const Checked<QList<IssueLotRow>> issued = store.lotsOf(issue.value().id);  // kept: the loop reads into it
        for (const IssueLotRow &lot : issued.value())
            lots << QStringLiteral("%1 %2 %3 %4 %5").arg(lot.receiptId).arg(lot.receiptDate.toString(Qt::ISODate))
                        .arg(lot.kol).arg(lot.edin).arg(lot.suma.cents());
        QCOMPARE(lots, (QStringList{QStringLiteral("%1 2026-03-01 10 2 2000").arg(first.value().id),
                                    QStringLiteral("%1 2026-03-02 5 3 1500").arg(second.value().id)}));
        QVERIFY(brokenInvariants(db).isEmpty());
    }

    void aStockIssueIsRefusedAndWritesNothing_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<double>("kol");
        QTest::addColumn<double>("price");
        QTest::addColumn<QString>("message");
        QTest::newRow("typed at the older price 2.00") << "Масло" << 15.0 << 2.0
                                                       << "ВНИМАНИЕ!|В склада нямате артикул с такава цена!";
        QTest::newRow("more than there is") << "Масло" << 21.0 << 3.0 << "ВНИМАНИЕ!|В склада нямате такова количество!";
        QTest::newRow("a name not in stock") << "Антифриз" << 1.0 << 3.0 << "ВНИМАНИЕ!|В склада нямате артикул с това име!";
        QTest::newRow("a quantity of 0") << "Масло" << 0.0 << 3.0
                                         << "ГРЕШКА!|Количеството трябва да е по-голямо от нула!\nМоля, въведете количество.";
    }
    void aStockIssueIsRefusedAndWritesNothing()
    {
        QFETCH(QString, name);
        QFETCH(double, kol);
        QFETCH(double, price);
        WAREHOUSE_STORE();
        QVERIFY(store.addReceipt(movement("Масло", 10, 2.00, QDate(2026, 3, 1))));
        QVERIFY(store.addReceipt(movement("Масло", 10, 3.00, QDate(2026, 3, 2))));
        const QString before = snapshot(db);
        QTEST(textOf(store.addIssue(movement(name, kol, price, QDate(2026, 3, 5)))), "message");
        QCOMPARE(snapshot(db), before);
    }

    // The store refuses what the screens refuse, whatever path calls it: no row ever holds a value
    // that the stock position or the audit could not print.
    void theStoreRefusesWhatTheScreensRefuse_data()
    {
        QTest::addColumn<QString>("call");
        QTest::addColumn<double>("kol");
        QTest::addColumn<double>("price");
        QTest::addColumn<QString>("message");
        const double nan = std::numeric_limits<double>::quiet_NaN();
        const double inf = std::numeric_limits<double>::infinity();
        const QString quantityNaN = QStringLiteral("ГРЕШКА!|Количеството не е число!\nМоля, въведете количество.");
        const QString quantityBig = QStringLiteral("ГРЕШКА!|Количеството е над 99999,999!\nМоля, въведете по-малко количество.");
        const QString priceNaN = QStringLiteral("ГРЕШКА!|Цената не е число!\nМоля, въведете цена.");
        const QString priceBig = QStringLiteral("ГРЕШКА!|Цената е над 999999,99!\nМоля, въведете по-малка цена.");
        const QString priceNegative = QStringLiteral("ГРЕШКА!|Цената не може да е отрицателна!\nМоля, въведете цена.");
        QTest::newRow("receipt of 999 999 999 999,999 at 999 999") << "receipt" << 999999999999.999 << 999999.0 << quantityBig;
        QTest::newRow("receipt NaN quantity") << "receipt" << nan << 2.0 << quantityNaN;
        QTest::newRow("receipt Inf quantity") << "receipt" << inf << 2.0 << quantityNaN;
        QTest::newRow("receipt negative quantity") << "receipt" << -5.0 << 2.0
                                                   << "ГРЕШКА!|Количеството трябва да е по-голямо от нула!\nМоля, въведете количество.";
        QTest::newRow("receipt NaN price") << "receipt" << 5.0 << nan << priceNaN;
        QTest::newRow("receipt Inf price") << "receipt" << 5.0 << inf << priceNaN;
        QTest::newRow("receipt negative price") << "receipt" << 5.0 << -2.0 << priceNegative;
        QTest::newRow("receipt price over the limit") << "receipt" << 5.0 << 1000000.0 << priceBig;
        QTest::newRow("corrected receipt NaN quantity") << "correct receipt" << nan << 2.0 << quantityNaN;
        QTest::newRow("corrected receipt huge price") << "correct receipt" << 5.0 << 1e300 << priceBig;
        QTest::newRow("issue NaN price") << "issue" << 1.0 << nan << priceNaN;
        QTest::newRow("issue huge quantity") << "issue" << 1e15 << 2.0 << quantityBig;
        QTest::newRow("repair NaN price") << "repair" << 1.0 << nan << priceNaN;
        QTest::newRow("repair Inf price") << "repair" << 1.0 << inf << priceNaN;
        QTest::newRow("repair negative price") << "repair" << 1.0 << -240.5 << priceNegative;
        QTest::newRow("repair price over the limit") << "repair" << 1.0 << 1e12 << priceBig;
        QTest::newRow("corrected repair NaN quantity") << "correct repair" << nan << 240.5 << quantityNaN;
        QTest::newRow("corrected issue Inf quantity") << "correct issue" << inf << 2.0 << quantityNaN;
    }
    void theStoreRefusesWhatTheScreensRefuse()
    {
        QFETCH(QString, call);
        QFETCH(double, kol);
        QFETCH(double, price);
        WAREHOUSE_STORE();
        const auto receipt = store.addReceipt(movement("Масло", 10, 2.00, QDate(2026, 3, 1)));
        const auto issue = store.addIssue(movement("Масло", 4, 2.00, QDate(2026, 3, 2)));
        const auto repair = store.addIssue(movement("Ремонт", 1, 240.50, QDate(2026, 3, 3)));
        QVERIFY(receipt && issue && repair);
        const QString before = snapshot(db);
        QString refusal;
        if (call == QLatin1String("receipt")) {
            refusal = textOf(store.addReceipt(movement("Масло", kol, price, QDate(2026, 3, 5))));
        } else if (call == QLatin1String("correct receipt")) {
            const auto fresh = store.addReceipt(movement("Гуми", 4, 2.00, QDate(2026, 3, 4)));
            QVERIFY(fresh);
            const QString withFresh = snapshot(db);
            refusal = textOf(store.correctReceipt(fresh.value(), movement("Гуми", kol, price, QDate(2026, 3, 4))));
            QCOMPARE(snapshot(db), withFresh);
            QTEST(refusal, "message");
            QVERIFY(brokenInvariants(db).isEmpty());
            return;
        } else if (call == QLatin1String("issue")) {
            refusal = textOf(store.addIssue(movement("Масло", kol, price, QDate(2026, 3, 5))));
        } else if (call == QLatin1String("repair")) {
            refusal = textOf(store.addIssue(movement("Ремонт", kol, price, QDate(2026, 3, 5))));
        } else if (call == QLatin1String("correct repair")) {
            refusal = textOf(store.correctIssue(repair.value(), movement("Ремонт", kol, price, QDate(2026, 3, 5))));
        } else if (call == QLatin1String("correct issue")) {
            refusal = textOf(store.correctIssue(issue.value(), movement("Масло", kol, price, QDate(2026, 3, 5))));
        }
        QTEST(refusal, "message");
        QCOMPARE(snapshot(db), before);
        QVERIFY(brokenInvariants(db).isEmpty());
        // Nothing stored that a list could not print.
        QVERIFY(!scalar(db, "SELECT COUNT(*) FROM Sklad WHERE Kol > 99999.999 OR Edin > 999999.99 OR Edin < 0").toBool());
    }

    // The oldest receipt brought exactly to 0 stays open; the next issue passes over it at no cost.
    void anIssueEqualToTheOldestReceiptLeavesItOpenAtZero()
    {
        WAREHOUSE_STORE();
        const qint64 first = store.addReceipt(movement("Масло", 10, 2.00, QDate(2026, 3, 1))).value().id;
        const qint64 second = store.addReceipt(movement("Масло", 10, 3.00, QDate(2026, 3, 2))).value().id;
        QCOMPARE(said(store.addIssue(movement("Масло", 10, 3.00, QDate(2026, 3, 5)))), QStringLiteral("Масло 10 2 2000 - x"));
        QCOMPARE(receiptState(db, {first, second}), QStringLiteral("0 10"));
        const auto next = store.addIssue(movement("Масло", 4, 3.00, QDate(2026, 3, 6)));
        QCOMPARE(said(next), QStringLiteral("Масло 4 3 1200 - x"));
        QCOMPARE(receiptState(db, {first, second}), QStringLiteral("0x 6"));
        QCOMPARE(store.lotsOf(next.value().id).value().size(), 1);
        QVERIFY(brokenInvariants(db).isEmpty());
    }

    void aRepairIsOnePieceAtTheTypedPriceWithoutStock()
    {
        WAREHOUSE_STORE();
        const auto repair = store.addIssue(movement(" Ремонт ", 5, 240.50, QDate(2026, 3, 5), "СА 1234 ВК"));
        QCOMPARE(said(repair), QStringLiteral("Ремонт 1 240.5 24050 0 x"));
        QCOMPARE(test::row(db, "SELECT (SELECT COUNT(*) FROM Nalich), (SELECT COUNT(*) FROM SkladLots)"), QStringLiteral("0|0"));
        // Nor can a repair be received into stock.
        QVERIFY(!store.addReceipt(movement("Ремонт", 1, 240.50, QDate(2026, 3, 5))));
        // Deleting it gives nothing back to any stock.
        QCOMPARE(textOf(store.removeIssue(repair.value())), QString());
        QCOMPARE(scalar(db, "SELECT COUNT(*) FROM Sklad").toInt(), 0);
    }

    void aSixteenCharacterDocumentKindIsCutToFifteenAtTheSave()
    {
        WAREHOUSE_STORE();
        QVERIFY(store.addReceipt(movement("Масло", 1, 2, QDate(2026, 3, 1), "Стокова разпис16")));
        QCOMPARE(scalar(db, "SELECT DocVid FROM Sklad").toString(), QStringLiteral("Стокова разпис1"));
    }

    // "масло " and "масло" are one article: one stock row, and an issue typed either way finds it.
    void namesAreComparedTrimmed()
    {
        WAREHOUSE_STORE();
        QVERIFY(store.addReceipt(movement("масло ", 4, 9.8, QDate(2026, 3, 1))));
        QVERIFY(store.addReceipt(movement(" масло", 6, 9.8, QDate(2026, 3, 2))));
        QCOMPARE(test::rows(db, "SELECT Name, Broi FROM Nalich"), QStringList{QStringLiteral("масло|10")});
        QCOMPARE(scalar(db, "SELECT COUNT(*) FROM Sklad WHERE Name = 'масло'").toInt(), 2);
        QVERIFY(store.addIssue(movement("масло  ", 7, 9.8, QDate(2026, 3, 5))));
        QCOMPARE(broi(db, "масло"), 3.0);
        QVERIFY(store.onHand(" масло ").value().has_value());
    }

    // Stock says 5 but no open receipt holds anything (an older database): refused, no division by zero.
    void anIssueWithoutOpenReceiptsIsRefusedInsteadOfDividingByZero_data()
    {
        QTest::addColumn<double>("openReceipt");
        QTest::newRow("no open receipt at all") << 0.0;
        QTest::newRow("receipts hold less than the stock says") << 2.0;
    }
    void anIssueWithoutOpenReceiptsIsRefusedInsteadOfDividingByZero()
    {
        ZAREK_SCRATCH_DB(scratch);
        QFETCH(double, openReceipt);
        QSqlDatabase db = scratch.db();
        QVERIFY(scratch.exec("INSERT INTO Nalich (Name, Edin, Broi) VALUES ('Крушка 24V', 7.9, 5)"));
        if (openReceipt > 0) {
            QVERIFY(storeOf(db).addReceipt(movement("Крушка 24V", openReceipt, 7.9, QDate(2026, 3, 1))));
            QVERIFY(scratch.exec("UPDATE Nalich SET Broi = 5"));
        }
        const QString before = snapshot(db);
        QCOMPARE(said(storeOf(db).addIssue(movement("Крушка 24V", 4, 7.9, QDate(2026, 3, 5)))),
                 QStringLiteral("ВНИМАНИЕ!|Наличността на \"Крушка 24V\" не отговаря на доставките му!\n"
                                "Нищо не е изписано. Проверете доставките на артикула."));
        QCOMPARE(snapshot(db), before);
    }

    void deletingAnIssueGivesBackExactlyWhatItTook()
    {
        WAREHOUSE_STORE();
        const qint64 a = store.addReceipt(movement("Гума", 2, 600, QDate(2026, 3, 1))).value().id;
        const qint64 b = store.addReceipt(movement("Гума", 4, 612, QDate(2026, 3, 2))).value().id;
        const auto early = store.addIssue(movement("Гума", 3, 612, QDate(2026, 3, 3)));
        const auto late = store.addIssue(movement("Гума", 2, 612, QDate(2026, 3, 4)));
        QVERIFY(early && late);
        QCOMPARE(early.value().suma, Money::fromCents(181200));  // 2 x 600 + 1 x 612
        QCOMPARE(receiptState(db, {a, b}), QStringLiteral("0x 1"));

        // After each delete: the receipts, the stock, the lots left.
        const auto state = [&] {
            return receiptState(db, {a, b}) + QStringLiteral(" / ") + test::row(db, "SELECT Broi FROM Nalich")
                   + QStringLiteral(" / ") + test::rowsText(db, "SELECT IssueID FROM SkladLots");
        };
        QCOMPARE(textOf(store.removeIssue(early.value())), QString());
        QCOMPARE(state(), QStringLiteral("2 2 / 4 / %1").arg(late.value().id));
        QVERIFY(brokenInvariants(db).isEmpty());
        QCOMPARE(textOf(store.removeIssue(late.value())), QString());
        QCOMPARE(state(), QStringLiteral("2 4 / 6 / "));
    }

    void aReceiptDrawnOnKeepsItsQuantityAndPrice()
    {
        WAREHOUSE_STORE();
        const auto receipt = store.addReceipt(movement("Антифриз", 30, 6.40, QDate(2026, 3, 1)));
        QVERIFY(store.addIssue(movement("Антифриз", 5, 6.40, QDate(2026, 3, 3))));
        QCOMPARE(store.isDrawnOn(receipt.value().id).value(), true);
        StockMovement read = receipt.value();
        read.rowVersion = scalar(db, "SELECT row_version FROM Sklad WHERE id = ?", {read.id}).toInt();

        StockMovement typed = read;
        typed.kol = 40;
        const QString before = snapshot(db);
        QCOMPARE(textOf(store.correctReceipt(read, typed)),
                 QStringLiteral("ВНИМАНИЕ!|От тази доставка вече е изписвано!\nКоличеството и цената й не могат да "
                                "се променят."));
        typed = read;
        typed.edin = 7;
        QVERIFY(!store.correctReceipt(read, typed));
        QCOMPARE(textOf(store.removeReceipt(read)),
                 QStringLiteral("ВНИМАНИЕ!|От тази доставка вече е изписвано!\nИзтрийте първо разходите, изписани от "
                                "нея."));
        QCOMPARE(snapshot(db), before);

        // Its date and number may be corrected.
        typed = read;
        typed.data = QDate(2026, 2, 27);
        typed.docNom = QStringLiteral("3107");
        QCOMPARE(said(store.correctReceipt(read, typed)), QStringLiteral("Антифриз 30 6.4000000000000004 19200 25 o"));
        QCOMPARE(test::row(db, "SELECT Data, DocNom FROM Sklad WHERE id = ?", {read.id}), QStringLiteral("2026-02-27|3107"));
        QVERIFY(brokenInvariants(db).isEmpty());
    }

    void aReceiptNotDrawnOnMovesTheStockWithIt()
    {
        WAREHOUSE_STORE();
        const auto older = store.addReceipt(movement("Накладки", 6, 148, QDate(2026, 3, 1)));
        const auto newer = store.addReceipt(movement("Накладки", 4, 150, QDate(2026, 3, 2)));
        QCOMPARE(store.isDrawnOn(newer.value().id).value(), false);

        StockMovement typed = newer.value();
        typed.kol = 5;
        typed.edin = 151;
        const auto corrected = store.correctReceipt(newer.value(), typed);
        QCOMPARE(said(corrected), QStringLiteral("Накладки 5 151 75500 5 o"));
        QCOMPARE(test::row(db, "SELECT Broi, Edin FROM Nalich"), QStringLiteral("11|151"));  // the newest receipt's price

        // The older one's price does not replace the newest's.
        typed = older.value();
        typed.edin = 149;
        QVERIFY(store.correctReceipt(older.value(), typed));
        QCOMPARE(test::row(db, "SELECT Broi, Edin FROM Nalich"), QStringLiteral("11|151"));

        // Deleting the newest gives the stock the price of the one before it.
        QCOMPARE(textOf(store.removeReceipt(corrected.value())), QString());
        QCOMPARE(test::row(db, "SELECT Broi, Edin FROM Nalich"), QStringLiteral("6|149"));
        QVERIFY(brokenInvariants(db).isEmpty());
    }

    void correctingAnIssuesQuantityTakesItAgainFirstInFirstOut()
    {
        WAREHOUSE_STORE();
        const qint64 a = store.addReceipt(movement("Масло", 10, 2.00, QDate(2026, 3, 1))).value().id;
        const qint64 b = store.addReceipt(movement("Масло", 10, 3.00, QDate(2026, 3, 2))).value().id;
        const auto issue = store.addIssue(movement("Масло", 15, 3.00, QDate(2026, 3, 5)));
        QVERIFY(issue);

        StockMovement typed = issue.value();
        typed.kol = 12;
        typed.edin = 99;  // the price of an issue is not typed again
        const auto smaller = store.correctIssue(issue.value(), typed);
        QCOMPARE(said(smaller), QStringLiteral("Масло 12 2.1666666666666665 2600 - x"));
        QCOMPARE(receiptState(db, {a, b}), QStringLiteral("0x 8"));
        QCOMPARE(broi(db, "Масло"), 8.0);
        QVERIFY(brokenInvariants(db).isEmpty());

        typed = smaller.value();
        typed.kol = 21;
        const QString before = snapshot(db);
        QCOMPARE(textOf(store.correctIssue(smaller.value(), typed)),
                 QStringLiteral("ВНИМАНИЕ!|В склада нямате такова количество!"));
        QCOMPARE(snapshot(db), before);

        typed.kol = 20;
        typed.docNom = QStringLiteral("77");
        const auto all = store.correctIssue(smaller.value(), typed);
        QCOMPARE(said(all) + QLatin1Char(' ') + all.value().docNom, QStringLiteral("Масло 20 2.5 5000 - x 77"));
        QCOMPARE(broi(db, "Масло"), 0.0);
        QVERIFY(brokenInvariants(db).isEmpty());
    }

    // Another workstation's issue from a receipt changes only what the receipt still holds: its
    // date and number can still be corrected here. A correction of the document itself there can not
    // be overwritten here.
    void aReceiptChangedByAnotherWorkstationIsNotOverwritten()
    {
        WAREHOUSE_STORE();
        const auto receipt = store.addReceipt(movement("Масло", 10, 2.00, QDate(2026, 3, 1)));
        const WarehouseStore other = storeOf(scratch.openSecondConnection());
        QVERIFY(other.addIssue(movement("Масло", 1, 2.00, QDate(2026, 3, 2))));
        StockMovement typed = receipt.value();
        typed.docNom = QStringLiteral("99");
        const auto corrected = store.correctReceipt(receipt.value(), typed);
        QCOMPARE(said(corrected), QStringLiteral("Масло 10 2 2000 9 o"));  // what the other issue took stays taken
        QVERIFY(brokenInvariants(db).isEmpty());

        StockMovement there = corrected.value();
        there.docNom = QStringLiteral("100");
        QVERIFY(other.correctReceipt(corrected.value(), there));
        typed = corrected.value();
        typed.data = QDate(2026, 2, 28);
        const auto stale = store.correctReceipt(corrected.value(), typed);
        QVERIFY(!stale);
        QCOMPARE(stale.message().title, QStringLiteral("ГРЕШКА при запис!"));
        QVERIFY(stale.message().text.startsWith(QStringLiteral("-2147217864:")));
        QVERIFY(store.removeReceipt(corrected.value()).has_value());
        QCOMPARE(scalar(db, "SELECT DocNom FROM Sklad WHERE id = ?", {there.id}).toString(), QStringLiteral("100"));
    }

    void anIssueChangedByAnotherWorkstationIsNotOverwritten()
    {
        WAREHOUSE_STORE();
        QVERIFY(store.addReceipt(movement("Масло", 10, 2.00, QDate(2026, 3, 1))));
        const auto issue = store.addIssue(movement("Масло", 4, 2.00, QDate(2026, 3, 2)));
        const WarehouseStore other = storeOf(scratch.openSecondConnection());
        StockMovement there = issue.value();
        there.kol = 5;
        QVERIFY(other.correctIssue(issue.value(), there));
        StockMovement typed = issue.value();
        typed.kol = 6;
        QVERIFY(!store.correctIssue(issue.value(), typed));
        QVERIFY(store.removeIssue(issue.value()).has_value());
        QCOMPARE(broi(db, "Масло"), 5.0);
        QVERIFY(brokenInvariants(db).isEmpty());
    }

    // Every write of an issue fails in turn: each time the stock stays exactly as it was.
    void aFailureAtAnyWriteOfAnIssueLeavesTheStockAsBefore_data()
    {
        QTest::addColumn<QString>("operation");
        QTest::newRow("add") << "add";
        QTest::newRow("correct the quantity") << "correct";
        QTest::newRow("delete") << "delete";
    }
    void aFailureAtAnyWriteOfAnIssueLeavesTheStockAsBefore()
    {
        ZAREK_SCRATCH_DB(scratch);
        QFETCH(QString, operation);
        QSqlDatabase db = scratch.db();
        WarehouseStore store = storeOf(db);
        for (int i = 1; i <= 3; ++i)
            QVERIFY(store.addReceipt(movement("Масло", 4, 2.0 + i, QDate(2026, 3, i))));
        StockMovement existing;
        if (operation != QLatin1String("add"))
            existing = store.addIssue(movement("Масло", 6, 5.0, QDate(2026, 3, 10))).value();

        const UserMessage forced{QStringLiteral("ГРЕШКА при запис!"), QStringLiteral("1:изкуствена грешка")};
        int failAt = 1;
        for (;; ++failAt) {
            QVERIFY2(failAt < 50, "the operation never succeeded");
            const QString before = snapshot(db);
            int writes = 0;
            store.beforeWrite = [&](int write) -> std::optional<UserMessage> {
                writes = write;
                return write == failAt ? std::optional(forced) : std::nullopt;
            };
            QString failure;
            if (operation == QLatin1String("add")) {
                failure = textOf(store.addIssue(movement("Масло", 10, 5.0, QDate(2026, 3, 10))));
            } else if (operation == QLatin1String("correct")) {
                StockMovement typed = existing;
                typed.kol = 11;
                failure = textOf(store.correctIssue(existing, typed));
            } else {
                failure = textOf(store.removeIssue(existing));
            }
            if (writes < failAt) {
                QCOMPARE(failure, QString());  // every write done: the operation went through
                break;
            }
            QCOMPARE(failure, forced.title + QLatin1Char('|') + forced.text);
            QCOMPARE(snapshot(db), before);
        }
        QVERIFY2(failAt > 4, qPrintable(QString::number(failAt)));  // several writes were each made to fail
        QVERIFY(brokenInvariants(db).isEmpty());
    }

    // Receipts, issues, corrections and deletes at random, on five names: after every step the
    // stock on hand is the sum of the open receipts, and the lots agree with both sides.
    void theStockNeverDriftsUnderARandomSequence()
    {
        WAREHOUSE_STORE();
        const QStringList names = {"Масло", "Филтър", "Гума", "Крушка", "Антифриз"};
        std::mt19937 random(20260320);
        const auto between = [&](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
        QList<StockMovement> receipts;
        QList<StockMovement> issues;
        int done = 0;
        int refused = 0;
        const int steps = 2000;
        for (int step = 0; step < steps; ++step) {
            const QString name = names.at(between(0, names.size() - 1));
            const QDate date = QDate(2025, 1, 1).addDays(between(0, 400));
            const int choice = between(0, 9);
            bool ok = false;
            if (choice <= 2) {
                const auto r = store.addReceipt(movement(name, between(1, 4000) / 100.0, between(50, 9000) / 100.0, date));
                if ((ok = r.ok()))
                    receipts.append(r.value());
            } else if (choice <= 5) {
                const auto stock = store.onHand(name).value();
                const double price = stock && between(0, 9) > 0 ? stock->edin : 1.23;
                const auto r = store.addIssue(movement(name, between(1, 3000) / 100.0, price, date, "СА 1234 ВК"));
                if ((ok = r.ok()))
                    issues.append(r.value());
            } else if (choice == 6 && !receipts.isEmpty()) {
                const int i = between(0, int(receipts.size()) - 1);
                StockMovement read = receipts[i];
                read.rowVersion = scalar(db, "SELECT row_version FROM Sklad WHERE id = ?", {read.id}).toInt();
                StockMovement typed = read;
                typed.kol = between(1, 4000) / 100.0;
                typed.edin = between(0, 1) ? read.edin : between(50, 9000) / 100.0;
                const auto r = store.correctReceipt(read, typed);
                if ((ok = r.ok()))
                    receipts[i] = r.value();
            } else if (choice == 7 && !receipts.isEmpty()) {
                const int i = between(0, int(receipts.size()) - 1);
                StockMovement read = receipts[i];
                read.rowVersion = scalar(db, "SELECT row_version FROM Sklad WHERE id = ?", {read.id}).toInt();
                if ((ok = !store.removeReceipt(read)))
                    receipts.removeAt(i);
            } else if (choice == 8 && !issues.isEmpty()) {
                const int i = between(0, int(issues.size()) - 1);
                StockMovement typed = issues[i];
                typed.kol = between(1, 3000) / 100.0;
                const auto r = store.correctIssue(issues[i], typed);
                if ((ok = r.ok()))
                    issues[i] = r.value();
            } else if (choice == 9 && !issues.isEmpty()) {
                const int i = between(0, int(issues.size()) - 1);
                if ((ok = !store.removeIssue(issues[i])))
                    issues.removeAt(i);
            }
            ok ? ++done : ++refused;
            // The lots are checked every few steps: the stock after every one.
            const QStringList broken = brokenInvariants(db, step % 20 == 0 || step == steps - 1);
            QVERIFY2(broken.isEmpty(), qPrintable(QStringLiteral("step %1: %2").arg(step).arg(broken.join("; "))));
        }
        // The sequence did real work of every kind, and refusals too.
        QVERIFY2(done > steps / 2 && refused > steps / 20, qPrintable(QStringLiteral("%1 done").arg(done)));
        QVERIFY(scalar(db, "SELECT COUNT(*) FROM SkladLots").toInt() > 100);
    }

    // An older database may hold a name typed with blanks, even in two stock rows: the upgrade
    // makes them one row with both quantities.
    void theUpgradeMakesNamesTypedWithBlanksOneArticle()
    {
        ZAREK_SCRATCH_DB_AS(scratch, db);
        // Back to before the warehouse step.
        for (const char *sql : {"DROP TABLE SkladLots", "DROP INDEX sklad_open", "DROP INDEX sklad_vidkol_data",
                                "DROP INDEX nalich_name", "CREATE INDEX nalich_name ON Nalich (Name)",
                                "DELETE FROM zarek_schema WHERE version = 3"})
            QVERIFY(scratch.exec(QString::fromLatin1(sql)));
        QVERIFY(scratch.exec("INSERT INTO Nalich (Name, Edin, Broi) VALUES ('масло', 9.5, 4)"));
        QVERIFY(scratch.exec("INSERT INTO Nalich (Name, Edin, Broi) VALUES ('масло ', 9.8, 6)"));
        QVERIFY(scratch.exec("INSERT INTO Nalich (Name, Edin, Broi) VALUES ('филтър', 24.5, 2)"));
        QVERIFY(scratch.exec("INSERT INTO Sklad (Name, VidKol, Kol, Ostat, Lipsa) VALUES ('масло ', 'P', 6, 6, FALSE)"));
        QString error;
        QVERIFY2(migrateSchema(db, &error), qPrintable(error));
        QCOMPARE(test::rows(db, "SELECT Name, Broi, Edin FROM Nalich ORDER BY Name"),
                 (QStringList{QStringLiteral("масло|10|9.8"), QStringLiteral("филтър|2|24.5")}));
        QCOMPARE(scalar(db, "SELECT Name FROM Sklad").toString(), QStringLiteral("масло"));
        // One stock row a name from now on.
        QSqlQuery duplicate(db);
        QVERIFY(!duplicate.exec("INSERT INTO Nalich (Name, Broi) VALUES ('филтър', 1)"));
    }
};

QTEST_MAIN(WarehouseStoreTest)
#include "tst_warehousestore.moc"
