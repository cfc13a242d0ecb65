#pragma once

#include "core/currency.h"
#include "core/dates.h"
#include "core/money.h"
#include "core/usermessage.h"

#include <QDate>
#include <QList>
#include <QSqlDatabase>
#include <QString>

// The figures of the dashboard "Табло", one function per tile: each reads the register for the
// books of a day and hands back plain values, the same figures the screen or report the tile opens
// shows for the same period. No widgets here; the dashboard reads them on a connection of its own.
namespace zarek::dashboard {

// The calendar month of a day: its first and its last day.
Period monthOf(const QDate &day);

// Tile 1: the courses of a period as the report "Всички курсове" adds them up.
struct MonthFigures {
    Period period;
    int courses = 0;
    double tonneKm = 0;  // Σ ton × km
    double km = 0;       // Σ km
    Money gross;         // Σ bruto in the currency of the totals
    Currency currency = Currency::Leva;
    bool converted = false;  // some gross came in leva and was converted to euro
    // The gross of one kilometre, in the currency of the totals; 0 without kilometres.
    double grossPerKm() const { return km > 0 ? gross.toDouble() / km : 0; }
};
Checked<MonthFigures> periodFigures(QSqlDatabase db, const BooksDay &books, const Period &period);

// This month (up to its last day), the one before and the same month a year ago.
struct MonthComparison {
    MonthFigures current;
    MonthFigures previous;
    MonthFigures yearAgo;
};
Checked<MonthComparison> monthComparison(QSqlDatabase db, const BooksDay &books);

// Tile 2: a client's courses not yet invoiced, up to today, as "Фактуриране" shows them for the
// client and the period from his oldest such course to today.
struct UninvoicedClient {
    QString klient;
    Period period;
    int courses = 0;
    Money gross;
    Currency currency = Currency::Leva;
};
// Oldest first.
Checked<QList<UninvoicedClient>> uninvoiced(QSqlDatabase db, const BooksDay &books);

// Tile 3: a driver's pay for his unpaid courses up to today, by the pay sheet's own rule, for the
// period from his oldest unpaid course to today.
struct UnpaidDriver {
    QString kod;
    QString name;
    Period period;
    int courses = 0;
    Money pay;
    Currency currency = Currency::Leva;
    QString failure;  // the pay sheet's refusal (a truck without a percent), shown on the row
};
// The largest pay first.
Checked<QList<UnpaidDriver>> unpaidDrivers(QSqlDatabase db, const BooksDay &books);

// Tile 4: what clients owe on issued invoices and notes: all open, what is past its due date, and
// the clients owing most past due.
struct OverdueClient {
    QString klient;
    Money overdue;
    QDate oldestDue;
};
struct Receivables {
    Money open;
    Money overdue;
    Currency currency = Currency::Euro;
    QList<OverdueClient> largest;  // at most five, the largest first
};
Checked<Receivables> receivables(QSqlDatabase db, const BooksDay &books);
// Whether the register keeps issued invoices and their settlements (the receivables' tables).
bool keepsReceivables(QSqlDatabase db);

// Tile 5: the documents expired or due today, as the due list shows them.
struct DueDocument {
    qint64 id = 0;
    QString vid;
    QString holder;
    QString nomer;
    QDate doKoga;  // the day to act by
    int daysLeft = 0;
    bool expired = false;
};
struct DueDocuments {
    int count = 0;
    int expired = 0;
    QList<DueDocument> nearest;  // at most five, the soonest first
};
Checked<DueDocuments> dueDocuments(QSqlDatabase db, const BooksDay &books);

// Tile 6: this month's income less costs per truck, as "Баланс на колите" shows it.
struct TruckProfit {
    QString kola;
    Money income;
    Money cost;
    Money profit() const { return income - cost; }
};
struct TruckProfits {
    Period period;
    Currency currency = Currency::Leva;
    QList<TruckProfit> trucks;  // every truck of the fleet, by number
};
Checked<TruckProfits> truckProfits(QSqlDatabase db, const BooksDay &books, const Period &period);

}
