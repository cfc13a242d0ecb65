#include "warehouse/fifo.h"
#include "warehouse/stockrules.h"

#include <QtTest>

using namespace zarek;

Q_DECLARE_METATYPE(QList<zarek::OpenReceipt>)

namespace {

// Receipts as "quantity@price" in thousandths, ids from 1.
QList<OpenReceipt> receipts(std::initializer_list<std::pair<Quantity, double>> list)
{
    QList<OpenReceipt> out;
    qint64 id = 0;
    for (const auto &[ostat, price] : list)
        out.append({++id, 1, ostat, price});
    return out;
}

// The receipts after a walk (Consumption or GivenBack).
template <typename Walk>
QString after(const Walk &walk)
{
    QStringList parts;
    for (const ReceiptAfter &r : walk.receipts)
        parts.append(QStringLiteral("%1:%2%3").arg(r.id).arg(r.ostat).arg(r.lipsa ? "x" : ""));
    return parts.join(QLatin1Char(' '));
}

QString lotsText(const QList<IssueLot> &lots)
{
    QStringList parts;
    for (const IssueLot &lot : lots)
        parts.append(QStringLiteral("%1:%2@%3").arg(lot.receiptId).arg(lot.quantity).arg(lot.price));
    return parts.join(QLatin1Char(' '));
}

QVariantMap typed(const QString &docVid, const QString &name, const QString &kol, const QString &edin,
                  const QString &data = QStringLiteral("05.03.2026"))
{
    return {{QStringLiteral("DocVid"), docVid}, {QStringLiteral("Name"), name}, {QStringLiteral("Kol"), kol},
            {QStringLiteral("Edin"), edin}, {QStringLiteral("Data"), data}};
}

}

class FifoTest : public QObject {
    Q_OBJECT
private slots:
    // Receipts after the walk read "id:Ostat" with "x" when used up (Lipsa); lots "id:quantity@price".
    void theOldestReceiptsGoFirst_data()
    {
        QTest::addColumn<QList<OpenReceipt>>("open");
        QTest::addColumn<Quantity>("need");
        QTest::addColumn<QString>("receiptsAfter");
        QTest::addColumn<QString>("lotsTaken");
        QTest::addColumn<bool>("complete");
        QTest::addColumn<double>("cost");

        QTest::newRow("10 @ 2.00 and 10 @ 3.00, issue 15")
            << receipts({{10000, 2.0}, {10000, 3.0}}) << Quantity(15000) << "1:0x 2:5000" << "1:10000@2 2:5000@3"
            << true << 35.0;
        QTest::newRow("an issue equal to the oldest receipt leaves it open at 0")
            << receipts({{10000, 2.0}, {10000, 3.0}}) << Quantity(10000) << "1:0" << "1:10000@2" << true << 20.0;
        QTest::newRow("a receipt at 0 is passed over at no cost and closed")
            << receipts({{0, 2.0}, {10000, 3.0}}) << Quantity(4000) << "1:0x 2:6000" << "2:4000@3" << true << 12.0;
        QTest::newRow("less in the receipts than needed: what there is")
            << receipts({{5000, 2.0}}) << Quantity(8000) << "1:0x" << "1:5000@2" << false << 10.0;
        QTest::newRow("no open receipt: nothing") << receipts({}) << Quantity(3000) << "" << "" << false << 0.0;
        QTest::newRow("thousandths add up exactly")
            << receipts({{3333, 1.5}, {3333, 1.5}, {3334, 1.5}}) << Quantity(10000) << "1:0x 2:0x 3:0" << "1:3333@1.5 2:3333@1.5 3:3334@1.5"
            << true << 15.0;
        QTest::newRow("three receipts, the third partly")
            << receipts({{2000, 1.0}, {3000, 2.0}, {4000, 4.0}}) << Quantity(6000) << "1:0x 2:0x 3:3000"
            << "1:2000@1 2:3000@2 3:1000@4" << true << 12.0;
    }
    void theOldestReceiptsGoFirst()
    {
        QFETCH(QList<OpenReceipt>, open);
        QFETCH(Quantity, need);
        const Consumption c = ConsumeReceipts(open, need);
        QTEST(after(c), "receiptsAfter");
        QTEST(lotsText(c.lots), "lotsTaken");
        QTEST(c.complete(), "complete");
        QTEST(c.cost, "cost");
    }

    // An issue of 15 took 10 @ 2.00 (receipt 1, used up) and 5 @ 3.00 (receipt 2, 5 left); a later
    // receipt 3 (10 @ 4.00) and a later issue may stand beside them. Receipts after read as above.
    void givingBackReturnsWhatTheIssueTookLastFirst_data()
    {
        QTest::addColumn<Quantity>("secondHolds");  // Ostat of receipt 2 now (a later issue took from it)
        QTest::addColumn<Quantity>("giveBack");
        QTest::addColumn<QString>("receiptsAfter");
        QTest::addColumn<QString>("lotsLeft");
        QTest::addColumn<QString>("nextIssueOf12");  // what an issue of 12 then takes, first in, first out

        QTest::newRow("the whole issue") << Quantity(5000) << Quantity(15000) << "1:10000 2:10000" << ""
                                         << "1:10000@2 2:2000@3";
        QTest::newRow("part of it: the second receipt's lot first, then the first's")
            << Quantity(5000) << Quantity(7000) << "1:2000 2:10000" << "1:8000@2" << "1:2000@2 2:10000@3";
        QTest::newRow("part within the last lot") << Quantity(5000) << Quantity(3000) << "2:8000" << "1:10000@2 2:2000@3"
                                                  << "2:8000@3 3:4000@4";
        QTest::newRow("after a later issue took from the second receipt, exactly what the issue took")
            << Quantity(1000) << Quantity(15000) << "1:10000 2:6000" << "" << "1:10000@2 2:2000@3";
        QTest::newRow("nothing asked, nothing given") << Quantity(5000) << Quantity(0) << "" << "1:10000@2 2:5000@3"
                                                      << "2:5000@3 3:7000@4";
    }
    void givingBackReturnsWhatTheIssueTookLastFirst()
    {
        QFETCH(Quantity, secondHolds);
        QFETCH(Quantity, giveBack);
        const Consumption issue = ConsumeReceipts(receipts({{10000, 2.0}, {10000, 3.0}}), 15000);
        const QList<HeldReceipt> held = {{1, 2, 0}, {2, 3, secondHolds}, {3, 1, 10000}};
        const GivenBack given = GiveBackToReceipts(held, issue.lots, giveBack);
        QVERIFY(given.complete());
        QTEST(after(given), "receiptsAfter");
        QTEST(lotsText(given.lotsLeft), "lotsLeft");
        QCOMPARE(given.given, giveBack);
        // Each receipt is written at the version it was read at.
        for (const ReceiptAfter &r : given.receipts)
            QCOMPARE(r.rowVersion, held.at(r.id - 1).rowVersion);
        // The receipts given back to are open again and go before the later receipt.
        QList<OpenReceipt> open;
        for (const HeldReceipt &h : held) {
            Quantity ostat = h.ostat;
            for (const ReceiptAfter &r : given.receipts)
                if (r.id == h.id)
                    ostat = r.ostat;
            if (ostat > 0)
                open.append({h.id, 1, ostat, 1.0 + h.id});
        }
        QTEST(lotsText(ConsumeReceipts(open, 12000).lots), "nextIssueOf12");
    }

    void givingBackToAReceiptThatIsGoneGivesNothing()
    {
        const Consumption issue = ConsumeReceipts(receipts({{10000, 2.0}, {10000, 3.0}}), 15000);
        const GivenBack given = GiveBackToReceipts({{2, 1, 5000}}, issue.lots, 15000);
        QVERIFY(!given.complete());
        QCOMPARE(given.missingReceipt, qint64(1));
        QCOMPARE(given.given, Quantity(0));
        QVERIFY(given.receipts.isEmpty());
    }

    void theIssueCostsTheWeightedAverageOfWhatItTook()
    {
        const Consumption c = ConsumeReceipts(receipts({{10000, 2.0}, {10000, 3.0}}), 15000);
        QCOMPARE(*c.averagePrice(), 35.0 / 15.0);
        QCOMPARE(quantityValue(c.taken) * *c.averagePrice(), 35.0);
        // Nothing taken has no average instead of a division by zero.
        QVERIFY(!ConsumeReceipts({}, 5000).averagePrice());
        QVERIFY(!ConsumeReceipts(receipts({{0, 2.0}}), 5000).averagePrice());
    }

    void quantitiesAreWholeThousandths_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<Quantity>("thousandths");
        QTest::newRow("15") << 15.0 << true << Quantity(15000);
        QTest::newRow("2.675, a hair below in binary") << 2.675 << true << Quantity(2675);
        QTest::newRow("0.001") << 0.001 << true << Quantity(1);
        QTest::newRow("1.2345") << 1.2345 << false << Quantity(0);
        QTest::newRow("0.0005") << 0.0005 << false << Quantity(0);
        QTest::newRow("not a number") << std::nan("") << false << Quantity(0);
        QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << false << Quantity(0);
    }
    void quantitiesAreWholeThousandths()
    {
        QFETCH(double, value);
        QFETCH(bool, valid);
        const std::optional<Quantity> q = toQuantity(value);
        QCOMPARE(q.has_value(), valid);
        if (valid)
            QTEST(*q, "thousandths");
    }

    void theSaveChecksComeInTheirOrder_data()
    {
        QTest::addColumn<QVariantMap>("input");
        QTest::addColumn<QString>("vidKol");
        QTest::addColumn<QString>("message");
        const QString receipt = QStringLiteral("P");
        const QString issue = QStringLiteral("R");
        QTest::newRow("no document kind, no name")
            << typed(" ", "", "x", "") << receipt << "ГРЕШКА!|Въведете данни за вида на документа.";
        QTest::newRow("no name") << typed("Фактура", "  ", "x", "") << receipt << "ГРЕШКА!|Въведете име на артикула.";
        QTest::newRow("quantity not a number")
            << typed("Фактура", "Масло", "пет", "2") << receipt
            << "ГРЕШКА!|\"пет\" не е число!\nМоля, въведете количество с цифри.";
        QTest::newRow("no quantity") << typed("Фактура", "Масло", " ", "2") << receipt
                                     << "ГРЕШКА!|Няма въведено количество!\nМоля, въведете количество.";
        QTest::newRow("quantity 0") << typed("Фактура", "Масло", "0", "2") << issue
                                    << "ГРЕШКА!|Количеството трябва да е по-голямо от нула!\nМоля, въведете количество.";
        QTest::newRow("four decimals")
            << typed("Фактура", "Масло", "1,2345", "2") << receipt
            << "ГРЕШКА!|Количеството е с повече от три знака след запетаята!\nМоля, въведете до три знака след запетаята.";
        QTest::newRow("price not a number")
            << typed("Фактура", "Масло", "2,5", "2,5,0") << receipt
            << "ГРЕШКА!|\"2,5,0\" не е число!\nМоля, въведете единична цена с цифри.";
        QTest::newRow("negative price") << typed("Фактура", "Масло", "2", "-1") << receipt
                                        << "ГРЕШКА!|Цената не може да е отрицателна!\nМоля, въведете цена.";
        QTest::newRow("no date") << typed("Фактура", "Масло", "2", "1", "") << receipt
                                 << "ГРЕШКА!|Няма въведена дата!\nМоля, въведете датата на документа.";
        QTest::newRow("a repair asks no quantity") << typed("СА 1234 ВК", "Ремонт ", "", "120") << issue << "";
        QTest::newRow("a repair is no receipt") << typed("Фактура", " Ремонт", "1", "120") << receipt
                                                << "ГРЕШКА!|\"Ремонт\" е разход без наличност!\nВъведете ремонта в \"Разход\".";
        QTest::newRow("all well, comma or point") << typed("Фактура", "Масло", "2.5", "9,80") << receipt << "";
    }
    void theSaveChecksComeInTheirOrder()
    {
        QFETCH(QVariantMap, input);
        QFETCH(QString, vidKol);
        const std::optional<UserMessage> message = checkMovement(input, vidKol);
        QTEST(message ? message->title + QLatin1Char('|') + message->text : QString(), "message");
    }

    void aDocumentKindIsCutToFifteen_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("kept");
        QTest::newRow("16 characters") << "Стокова разпис16" << "Стокова разпис1";
        QTest::newRow("blanks around do not count") << "  Фактура  " << "Фактура";
        QTest::newRow("exactly 15") << "123456789012345" << "123456789012345";
    }
    void aDocumentKindIsCutToFifteen()
    {
        QFETCH(QString, typed);
        QTEST(cutDocumentKind(typed), "kept");
    }

    // The typed price is checked before the quantity, as the stock rows are walked by price.
    void aStockIssueNeedsTheNameThenTheLatestPriceThenTheQuantity_data()
    {
        QTest::addColumn<bool>("inStock");
        QTest::addColumn<double>("price");
        QTest::addColumn<Quantity>("quantity");
        QTest::addColumn<QString>("message");
        QTest::newRow("no such name") << false << 3.0 << Quantity(1000) << "В склада нямате артикул с това име!";
        QTest::newRow("an older price") << true << 2.0 << Quantity(1000) << "В склада нямате артикул с такава цена!";
        QTest::newRow("an older price and too much") << true << 2.0 << Quantity(99000)
                                                     << "В склада нямате артикул с такава цена!";
        QTest::newRow("too much") << true << 3.0 << Quantity(20001) << "В склада нямате такова количество!";
        QTest::newRow("all there is") << true << 3.0 << Quantity(20000) << "";
        QTest::newRow("3 typed as 3,00") << true << 3.00 << Quantity(1) << "";
    }
    void aStockIssueNeedsTheNameThenTheLatestPriceThenTheQuantity()
    {
        QFETCH(bool, inStock);
        QFETCH(double, price);
        QFETCH(Quantity, quantity);
        std::optional<StockOnHand> stock;
        if (inStock)
            stock = StockOnHand{1, 1, QStringLiteral("Масло"), 3.0, 20000};
        const std::optional<UserMessage> message = checkStockIssue(stock, price, quantity);
        if (message)
            QCOMPARE(message->title, QStringLiteral("ВНИМАНИЕ!"));
        QTEST(message ? message->text : QString(), "message");
    }
};

QTEST_APPLESS_MAIN(FifoTest)
#include "tst_fifo.moc"
