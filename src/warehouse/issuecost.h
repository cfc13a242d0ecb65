#pragma once

#include "core/usermessage.h"
#include "warehouse/stockrules.h"

#include <QSqlDatabase>
#include <QString>

namespace zarek {

class WarehouseStore;

// What an issue being typed would cost if it were saved now: the store's own issue, written and
// rolled back, so the figure shown before saving is the one the save stores (first in, first out
// from the oldest receipts), never the typed price times the quantity. The refusal the save would
// give instead, if any. Nothing stays written. With read, the correction of that issue.
Checked<StockMovement> issueCostNow(const WarehouseStore &store, QSqlDatabase db, const StockMovement &typed,
                                    const StockMovement *read = nullptr);

// An issue's unit price as its screen shows it: "###0.00", or four decimals where two would hide
// part of it (an average cost of 35,00 over 15 shows 2,3333).
QString issuePriceText(double price);

}
