#pragma once

#include "core/storedvalues.h"

#include <QList>
#include <QtGlobal>
#include <optional>

// The first-in-first-out rule of the warehouse, free of the database: an issue takes what it
// needs from the oldest open receipts first, and costs the weighted average of what it took.
namespace zarek {

// Quantities in whole thousandths (Quantity, toQuantity): core/storedvalues.h.

// A receipt that can still be issued from (Lipsa false), as read, oldest first.
struct OpenReceipt {
    qint64 id = 0;
    int rowVersion = 0;
    Quantity ostat = 0;  // not issued yet
    double price = 0;    // Edin
};

// A receipt after the issue: what it holds now and whether it is used up.
struct ReceiptAfter {
    qint64 id = 0;
    int rowVersion = 0;  // the version it was read at
    Quantity ostat = 0;
    bool lipsa = false;
};

// What an issue took from one receipt.
struct IssueLot {
    qint64 receiptId = 0;
    Quantity quantity = 0;
    double price = 0;
    bool operator==(const IssueLot &) const = default;
};

struct Consumption {
    QList<ReceiptAfter> receipts;  // every receipt the walk touched, in order
    QList<IssueLot> lots;          // what was taken, only where something was
    Quantity needed = 0;
    Quantity taken = 0;
    double cost = 0;               // the sum of quantity x price over the lots

    bool complete() const { return taken == needed && needed > 0; }
    // The weighted average cost of what was taken (cost / taken); none when nothing was taken.
    std::optional<double> averagePrice() const;
};

// Walks the open receipts from the oldest: a receipt that covers the rest of the need gives it
// and stays open (even when it comes to 0); one that does not is used up (Ostat 0, Lipsa true)
// and the walk goes on. Stops when the need is met or the receipts run out.
Consumption ConsumeReceipts(const QList<OpenReceipt> &oldestFirst, Quantity need);

// A receipt an issue took from, as it stands now (open, used up, or drawn on by later issues).
struct HeldReceipt {
    qint64 id = 0;
    int rowVersion = 0;
    Quantity ostat = 0;
};

struct GivenBack {
    QList<ReceiptAfter> receipts;  // each receipt given to, once, in the order of the issue's lots
    QList<IssueLot> lotsLeft;      // what the issue still holds, oldest first
    Quantity given = 0;
    qint64 missingReceipt = 0;     // a lot's receipt that is gone: nothing is given back then

    bool complete() const { return missingReceipt == 0; }
};

// The reverse of ConsumeReceipts: gives back up to the quantity of what an issue took, from its
// last lot backwards (what it took last goes back first). Each receipt gets back exactly what it
// gave, whatever later issues took from it, and is open again (Lipsa false), so the next issue
// takes from it before any later receipt.
GivenBack GiveBackToReceipts(const QList<HeldReceipt> &receipts, const QList<IssueLot> &lotsOldestFirst,
                             Quantity quantity);

}
