#include "fifo.h"

#include <cmath>

namespace zarek {

std::optional<Quantity> toQuantity(double value)
{
    if (!std::isfinite(value) || std::fabs(value) > 1e12)
        return std::nullopt;
    const double scaled = value * quantityScale;
    const double whole = std::round(scaled);
    // 2.675 typed is 2674.9999… thousandths in binary: what is within rounding noise counts as typed.
    if (std::fabs(scaled - whole) > 1e-6 * std::max(1.0, std::fabs(scaled)))
        return std::nullopt;
    return static_cast<Quantity>(whole);
}

Quantity storedQuantity(double value)
{
    return std::isfinite(value) ? std::llround(value * quantityScale) : 0;
}

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
