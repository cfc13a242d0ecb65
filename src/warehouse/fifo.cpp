#include "fifo.h"

#include <algorithm>
#include <cmath>

namespace zarek {

std::optional<double> Consumption::averagePrice() const
{
    if (taken <= 0)
        return std::nullopt;
    return cost / quantityValue(taken);
}

Consumption ConsumeReceipts(const QList<OpenReceipt> &oldestFirst, Quantity need)
{
    Consumption out;
    out.needed = need;
    Quantity rest = need;
    for (const OpenReceipt &receipt : oldestFirst) {
        if (rest <= 0)
            break;
        if (receipt.ostat - rest >= 0) {
            // This receipt covers the rest; brought to 0 it still stays open.
            out.receipts.append({receipt.id, receipt.rowVersion, receipt.ostat - rest, false});
            out.lots.append({receipt.id, rest, receipt.price});
            out.cost += quantityValue(rest) * receipt.price;
            out.taken += rest;
            rest = 0;
            break;
        }
        // Used up: all it held is taken (nothing, when an earlier issue brought it to 0).
        const Quantity taken = std::max<Quantity>(0, receipt.ostat);
        out.receipts.append({receipt.id, receipt.rowVersion, 0, true});
        if (taken > 0) {
            out.lots.append({receipt.id, taken, receipt.price});
            out.cost += quantityValue(taken) * receipt.price;
            out.taken += taken;
            rest -= taken;
        }
    }
    return out;
}

GivenBack GiveBackToReceipts(const QList<HeldReceipt> &receipts, const QList<IssueLot> &lotsOldestFirst,
                             Quantity quantity)
{
    GivenBack out;
    out.lotsLeft = lotsOldestFirst;
    QList<Quantity> back(lotsOldestFirst.size(), 0);
    Quantity rest = std::max<Quantity>(0, quantity);
    for (qsizetype i = lotsOldestFirst.size() - 1; i >= 0 && rest > 0; --i) {
        back[i] = std::min(rest, lotsOldestFirst.at(i).quantity);
        rest -= back[i];
        out.lotsLeft[i].quantity -= back[i];
    }
    out.lotsLeft.removeIf([](const IssueLot &lot) { return lot.quantity <= 0; });
    for (qsizetype i = 0; i < lotsOldestFirst.size(); ++i) {
        if (back[i] <= 0)
            continue;
        const qint64 id = lotsOldestFirst.at(i).receiptId;
        const auto held = std::find_if(receipts.begin(), receipts.end(), [id](const HeldReceipt &r) { return r.id == id; });
        if (held == receipts.end())
            return GivenBack{{}, lotsOldestFirst, 0, id};
        const auto after = std::find_if(out.receipts.begin(), out.receipts.end(),
                                        [id](const ReceiptAfter &r) { return r.id == id; });
        if (after == out.receipts.end())
            out.receipts.append({id, held->rowVersion, held->ostat + back[i], false});
        else
            after->ostat += back[i];
        out.given += back[i];
    }
    return out;
}

}
