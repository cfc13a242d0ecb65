#pragma once

#include "core/usermessage.h"
#include "warehouse/stockrules.h"

#include <QDateTime>
#include <QList>
#include <QSqlDatabase>
#include <QStringList>
#include <functional>
#include <optional>

namespace zarek {

// One lot of an issue as its screen lists it: the receipt it came from and what was taken.
struct IssueLotRow {
    qint64 receiptId = 0;
    QDate receiptDate;   // invalid when the receipt is gone
    QString docVid;
    QString docNom;
    double kol = 0;
    double edin = 0;
    Money suma;          // kol x edin, to the cent
};

// The movements of the warehouse and its stock on hand, written so that stock never drifts:
// for every name, Nalich.Broi equals the sum of Ostat over its open receipts after every call.
// A receipt and its stock change are one transaction; an issue, the receipts it takes from, the
// lots it records and the stock are one transaction. Each row is written only at the version it
// was read at, so two workstations never take the same quantity twice.
class WarehouseStore {
public:
    using Clock = std::function<QDateTime()>;
    explicit WarehouseStore(QSqlDatabase db, Clock clock = {});

    // A receipt: Ostat = Kol, open; the first of a name makes its stock row, later ones add to
    // Broi and set Edin to their price.
    Checked<StockMovement> addReceipt(StockMovement typed) const;
    // Date, number, quantity and price of a receipt (kind and name stay). One already drawn on
    // keeps its quantity and price; one not drawn on moves the stock with it.
    Checked<StockMovement> correctReceipt(const StockMovement &read, const StockMovement &typed) const;
    // Only a receipt not drawn on; its quantity leaves the stock.
    std::optional<UserMessage> removeReceipt(const StockMovement &read) const;

    // An issue: "Ремонт" is one piece at the typed price and touches no stock; any other name
    // must stand in stock at the typed price in the quantity asked, and takes it from the oldest
    // open receipts, recording each lot and costing their weighted average.
    Checked<StockMovement> addIssue(StockMovement typed) const;
    // Date, number and quantity of an issue (kind, name and price stay). A changed quantity of an
    // issue with lots gives back what it took and takes the new quantity first in, first out.
    Checked<StockMovement> correctIssue(const StockMovement &read, const StockMovement &typed) const;
    // Gives back to each receipt exactly what the issue took from it, and to the stock.
    std::optional<UserMessage> removeIssue(const StockMovement &read) const;

    // True when an issue has taken from the receipt (it then keeps its quantity and price).
    Checked<bool> isDrawnOn(qint64 receiptId) const;
    Checked<QList<IssueLotRow>> lotsOf(qint64 issueId) const;
    // The stock row of a name, compared trimmed.
    Checked<std::optional<StockOnHand>> onHand(const QString &name) const;

    // The lists of the screens' combo boxes, sorted: the document kinds of one kind of movement,
    // and every article name of receipts and issues alike.
    QStringList documentKinds(const QString &vidKol) const;
    QStringList articleNames() const;

    // For tests: asked before each write of a call (numbered from 1); a message fails that write.
    std::function<std::optional<UserMessage>(int write)> beforeWrite;

private:
    QSqlDatabase m_db;
    Clock m_clock;
};

// Names in the same order on every engine: without regard to case, then by case.
bool nameLess(const QString &a, const QString &b);
void sortNames(QStringList &names);

}
