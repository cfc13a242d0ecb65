#pragma once

#include "core/currency.h"

#include "core/dates.h"
#include "core/firmprofile.h"
#include "core/money.h"
#include "core/usermessage.h"
#include "courses/searchconditions.h"
#include "data/rowset.h"
#include "reports/report.h"

#include <QSqlDatabase>
#include <functional>

// The lists of the warehouse, laid out row by row with the columns of their scratch tables, and
// the reports that print them: stock on hand (TempNal, rptNalich), the audit of a period
// (TempSKlad, rptSklad) and the receipts or issues of a period (TempSKladPR, rptSkladPR).
// Article and truck conditions are prefixes, matched without regard to case on every engine.
namespace zarek {

// A list and the total of its amount column, as shown and printed.
struct StockList {
    RowSet rows;
    Money total;
    // The currency of the total; mixed: movements of both currencies, each amount shown with its
    // unit and the total's leva converted, as a note under it says.
    Currency currency = Currency::Leva;
    bool mixed = false;
    // The changeover the amounts were read under, for the note under the total.
    Changeover changeover;
};

// Stock on hand of the names that begin with the prefix (all for an empty one), by name:
// Red, Name, Kol (Broi), Cena (Edin), Suma (Broi x Edin to the cent).
Checked<StockList> stockPosition(QSqlDatabase db, const QString &articlePrefix, const BooksDay &books);
// "В склада няма артикул с това име!" / "Моля, изберете друго."
UserMessage noStockArticleMessage();
bool priceDrawnRed(double price);  // under 1

// The audit of a period: every name ever moved, with its receipts and issues in the period
// (course costs count as issues of their name). Text columns Red, Name, Cena, Prihod, SumaP,
// Razhod, SumaR, Ostatak, SumaO, and the remainder as a number in OstatakKol. The total is the
// sum of SumaO. progress, when given, is told each name done (done, count).
Checked<StockList> stockAudit(QSqlDatabase db, const Period &period, const BooksDay &books,
                              const std::function<void(int, int)> &progress = {});
bool remainderDrawnRed(double remainder);  // under 1

// The receipts (or issues) of a period whose names begin with the article prefix (issues also:
// whose document kind, the truck of a course cost, begins with the truck prefix), by name:
// text columns Red, DocVid, NomData ("number / d.M.yyyy"), Name, Broi, Edin, Suma.
Checked<StockList> stockMovements(QSqlDatabase db, bool receipts, const Period &period,
                                  const QString &articlePrefix, const QString &truckPrefix, const BooksDay &books,
                                  const std::function<void(int, int)> &progress = {});
// "Няма приходи в склада за периода!" or "Няма разходи в склада за периода!"
UserMessage noMovementsMessage(bool receipts);

// The reports over these lists, filled and ready to lay out.
Checked<Report> ReportNalich(const StockList &position, const FirmProfile &firm, QDate today);
Checked<Report> ReportSklad(const StockList &audit, const FirmProfile &firm, QDate today);
Checked<Report> ReportSkladPR(const StockList &movements, bool receipts, const Period &period,
                              const FirmProfile &firm);

// SkladReport: the movement list of the conditions printed by rptSkladPR (the article is the
// dialog's SeekArtikul for receipts, SeekMarsh for issues, and the truck SeekKola); the message
// when the period has none. progress as for the audit, by rows.
Checked<Report> SkladReport(bool receipts, const SearchConditions &conditions, QSqlDatabase db,
                            const FirmProfile &firm, const BooksDay &books,
                            const std::function<void(int, int)> &progress = {});

}
