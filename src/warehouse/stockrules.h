#pragma once

#include "core/money.h"
#include "core/usermessage.h"
#include "warehouse/fifo.h"

#include <QDate>
#include <QString>
#include <QVariantMap>

// The rules of a stock movement that need no database: what a movement is, the reserved names,
// the checks of the receipt and issue screens with their texts, and the refusals of the stock rule.
namespace zarek {

// One row of Sklad: a receipt ("P") or an issue ("R").
struct StockMovement {
    qint64 id = 0;
    int rowVersion = 0;
    QDate data;
    QString docVid;
    QString docNom;
    QString name;
    double kol = 0;
    double edin = 0;
    Money suma;  // kol x edin, to the cent
    QString vidKol;
    std::optional<double> ostat;  // a normal issue has none
    bool lipsa = false;

    bool isReceipt() const { return vidKol == receiptKind(); }
    static QString receiptKind() { return QStringLiteral("P"); }
    static QString issueKind() { return QStringLiteral("R"); }
};

// A name with no stock: its issue is a plain cost entry of one piece at the typed price.
QString repairName();          // "Ремонт"
bool isRepair(const QString &name);
// The name of the expense row a course writes.
QString courseExpenseName();   // "Разходи за курс"

// The longest document kind the screens keep.
inline constexpr int documentKindLength = 15;
// A trimmed document kind cut to its first 15 characters.
QString cutDocumentKind(const QString &text);

// The save checks of the receipt and issue screens over the typed texts, in this order: document
// kind, name, quantity and price as numbers (a repair issue's quantity is not asked), the date.
// The message to show, or none.
std::optional<UserMessage> checkMovement(const QVariantMap &typed, const QString &vidKol);

// The largest quantity of one movement and the largest unit price. Within them a movement's sum,
// and the value of the stock of any name, stay far inside what an amount can hold, so no list or
// paper ever shows a sum it cannot print.
inline constexpr double maxStockQuantity = 99999.999;
inline constexpr double maxStockPrice = 999999.99;

// A quantity of a receipt or a stock issue: a number above zero, in whole thousandths, at most
// maxStockQuantity.
std::optional<UserMessage> checkQuantity(double quantity);
// A unit price: a number from zero to maxStockPrice.
std::optional<UserMessage> checkPrice(double price);

// A stock issue against the stock on hand of its name, as the screen checks it: the name must
// stand in stock, at the typed price (the latest receipt's), in the quantity asked.
struct StockOnHand {
    qint64 id = 0;
    int rowVersion = 0;
    QString name;
    double edin = 0;
    Quantity broi = 0;
};
std::optional<UserMessage> checkStockIssue(const std::optional<StockOnHand> &onHand, double typedPrice,
                                           Quantity quantity);
bool samePrice(double a, double b);

// Refusals of the stock rule.
UserMessage stockOutOfStepMessage(const QString &name);  // no open receipt holds what stock says
UserMessage receiptDrawnOnMessage();                     // correcting quantity or price of a drawn-on receipt
UserMessage receiptDrawnOnDeleteMessage();               // deleting a drawn-on receipt
UserMessage receiptDrawnOnNotice();                      // told as its correction starts
UserMessage repairIsNoReceiptMessage();                  // a receipt named "Ремонт"

}
