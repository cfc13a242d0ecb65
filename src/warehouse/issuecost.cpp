#include "issuecost.h"

#include "core/formats.h"
#include "data/sqlerror.h"
#include "data/transaction.h"
#include "warehouse/warehousestore.h"

#include <cmath>

namespace zarek {

Checked<StockMovement> issueCostNow(const WarehouseStore &store, QSqlDatabase db, const StockMovement &typed,
                                    const StockMovement *read)
{
    // The store's transaction becomes a savepoint of this one, which is never committed.
    Transaction dryRun(db);
    if (!dryRun.isActive())
        return sqlErrorMessage(QStringLiteral("ГРЕШКА при четене!"), dryRun.lastError());
    return read ? store.correctIssue(*read, typed) : store.addIssue(typed);
}

QString issuePriceText(double price)
{
    const double cents = price * 100.0;
    if (std::abs(cents - std::round(cents)) < 1e-6)
        return formatFixed(price, 2);
    return formatFixed(price, 4);
}

}
