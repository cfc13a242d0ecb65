#include "fifo.h"

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

}
