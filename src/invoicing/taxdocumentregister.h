#pragma once

#include "core/dates.h"
#include "core/usermessage.h"
#include "data/rowset.h"

#include <QDate>
#include <QSqlDatabase>

// The register "Фактури": the issued invoices and notes of a period, as they were recorded, with
// what has been paid of each and where it stands.
namespace zarek {

struct TaxRegisterConditions {
    Period period;
    QString clientPrefix;  // the recipient's name begins so (any case); blank: every client
    QDate today = QDate::currentDate();
};

// One row per document, by issue date and number. Columns: id, Nomer, Vid ("Фактура", ...), Data,
// DataDan, Klient, EIK, Osnova, DDS, Obshto, Valuta, Plateno, Ostatak, Sastoianie, Padej,
// Prosrochena (yes/no). Amounts are figures in the document's currency; a credit note's base, VAT
// and total stand negative, as the sales ledger takes them, and it has no payment columns.
// Paid is what payments settled of it; the remainder is its total less the payments and less the
// credit notes issued against it (recorded as settlements, or, where not, by their own total).
Checked<RowSet> taxDocumentRegister(QSqlDatabase db, const TaxRegisterConditions &conditions);

}
