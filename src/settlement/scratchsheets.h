#pragma once

#include "core/currency.h"
#include "core/money.h"
#include "core/usermessage.h"
#include "data/rowset.h"
#include "settlement/paysheetstore.h"

#include <memory>

namespace zarek {

class RowStream;
class ScratchDatabase;

// A statement laid out in the scratch database: its rows as the report reads them, and the total
// of their amounts as printed.
struct ScratchStatement {
    RowSet rows;
    Money total;
    Currency currency = Currency::Leva;
    bool mixed = false;  // courses of both currencies: each sum with its unit, a note under the total
    Changeover changeover;
};

// How a statement of courses totals: in euro when any course is or when it is handed out on a day
// in euro; a payment converts the driver's leva once, rounded up, as pay is.
struct StatementCurrency {
    BooksDay books;
    std::optional<Currency> handedOut;
    bool wages = false;
};

// TempZaplata made anew and filled with the pay sheet, one row per course; its rows read back by
// Red.
Checked<RowSet> writeTempZaplata(ScratchDatabase &scratch, const PaySheet &sheet);

// The rows writeTempZaplata would read back, made straight from the sheet: the paper needs no
// scratch table between.
RowSet paySheetRows(const PaySheet &sheet);
// The same rows, each made as the paper lays it out.
std::shared_ptr<RowStream> paySheetRowStream(const PaySheet &sheet);

// TempPlaten made anew and filled with the given rows of courses (Data, Marsh, Tovar, kola, KM,
// Ton, Tarifa, neto), numbered from 1, figures as text: KM "###0", Ton "###0.000", Tarifa with
// tarifaDecimals (three: the rate's own decimals, up to eight), Suma (neto) "###0.00". The total
// adds the amounts as written, so it is always the sum of the statement's own lines.
Checked<ScratchStatement> writeTempPlaten(ScratchDatabase &scratch, const RowSet &courses, const QList<int> &rows,
                                          int tarifaDecimals, const StatementCurrency &currency);

}
