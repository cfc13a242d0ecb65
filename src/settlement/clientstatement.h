#pragma once

#include "core/sharedroutines.h"

#include "core/money.h"

#include <QString>
#include <optional>

// The rules of a client's statement: what a line of the printed statement holds, and its tax summary.
// The settlement's own namespace: the invoice statement has a line of its own.
namespace zarek::settlement {

// A printed line, recomputed from the kilometres, tonnes and rate of the working list: a corrected
// kilometre or rate reaches the money only here. Texts as the statement prints them.
struct StatementLine {
    QString km;      // "###0"
    QString ton;     // "###0.000"
    QString tarifa;  // "###0.000"
    Money suma;      // km × ton × tarifa, to the cent
    QString sumaText() const;  // "###0.00"
};
StatementLine statementLine(double km, double ton, double tarifa);

// The tax summary under the statement: VAT is 20 % of the gross sum itself, the net the rest.
struct StatementTax {
    Money gross;
    Money vat;
    Money net;
};
StatementTax statementTax(Money gross);

// A course's kilometres as the working list holds them: whole, halves to even.
double wholeKm(double km);
// Kilometres typed into the working list: a whole number from 0 to 32767; empty for anything else.
std::optional<qlonglong> statementKm(double typed);
// A rate typed into the working list: a number from 0 to a course's highest rate; empty otherwise.
std::optional<double> statementRate(double typed);


}
