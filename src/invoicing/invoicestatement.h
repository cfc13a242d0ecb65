#pragma once

#include "core/currency.h"
#include "core/dates.h"
#include "core/firmprofile.h"
#include "core/money.h"
#include "core/usermessage.h"
#include "core/vat.h"
#include "data/rowset.h"
#include "invoicing/invoiceclosing.h"
#include "reports/report.h"

#include <QList>
#include <QSqlDatabase>

// The statement of the courses on an invoice (rptFaktura): the marked courses laid out in the
// scratch table TempPlaten, the sum without VAT, the VAT and the total. The invoicing's own
// namespace: the client statement has a line of its own.
namespace zarek::invoicing {

// The VAT rate of the statement (core/vat.h).
inline constexpr double vatRate = vatFactor;

// One course of the statement, as TempPlaten holds it.
struct StatementLine {
    int red = 0;  // running number from 1
    QDate data;
    QString marsh;
    QString vidTovar;
    QString kolaId;
    double km = 0;
    double ton = 0;
    double tarifa = 0;
    Money suma;
    Currency currency = Currency::Leva;  // of the course's day
};

// The marked rows of the screen (flag column Fakt, amount bruto), numbered in their order.
QList<StatementLine> statementLines(const RowSet &rows, const BooksDay &books);
Money statementSum(const QList<StatementLine> &lines);

// The statement's sum in the statement's currency. A new invoice's statement is handed out today,
// in today's currency (or in euro when any course is); an issued invoice's keeps the currency it
// was issued in. Courses of the other currency are converted, each on its own, and then each
// course's sum shows its unit and a note stands under the totals.
struct StatementMoney {
    Currency currency = Currency::Leva;
    Money sum;
    bool mixed = false;
    Changeover changeover;  // the books the lines were dated by, for the note under a mixed total
};
StatementMoney statementMoney(const QList<StatementLine> &lines, std::optional<Currency> handedOut,
                              std::optional<Currency> fixed = std::nullopt);

// VAT on a sum, unrounded: only the format rounds it when it is shown (33.33 gives 6.666).
double vatOf(Money sum);

// The three lines of the statement's foot, aligned on the colon by their leading blanks:
// "Сума без ДДС: 33,33 лв.", "         ДДС: 6,67 лв.", "      Всичко: 40,00 лв.".
QStringList statementTotals(Money sum, Currency currency = Currency::Leva);

// Empties TempPlaten and writes the lines into it, in one transaction, so the table holds
// exactly this statement; with unitsPerRow each sum carries its course's unit.
std::optional<UserMessage> fillTempPlaten(QSqlDatabase scratch, const QList<StatementLine> &lines,
                                          bool unitsPerRow = false);

// What the statement's heading says: whose courses, the period and the invoice's number.
struct StatementHeading {
    FakturaMode mode = FakturaMode::FaktNew;
    QString klient;
    Period period;
    QString number;
};

// rptFaktura over the rows of TempPlaten, with the totals of the statement's money.
Checked<Report> ReportFaktura(const StatementHeading &heading, const StatementMoney &money, QSqlDatabase scratch,
                              const FirmProfile &firm);
// The same over rows already read (statementRows: the lines as TempPlaten holds them).
RowSet statementRows(const QList<StatementLine> &lines, bool unitsPerRow = false);
Checked<Report> ReportFaktura(const StatementHeading &heading, const StatementMoney &money, const RowSet &rows,
                              const FirmProfile &firm);
// The same for a statement in leva.
inline Checked<Report> ReportFaktura(const StatementHeading &heading, Money sum, QSqlDatabase scratch,
                                     const FirmProfile &firm)
{
    return ReportFaktura(heading, StatementMoney{Currency::Leva, sum, false, {}}, scratch, firm);
}

}
