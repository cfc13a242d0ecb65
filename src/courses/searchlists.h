#pragma once

#include <QSqlDatabase>
#include <QStringList>

// The lists the search dialogs and the course and waybill editors offer: what earlier rows used.
namespace zarek::searchlists {

// Every truck number the books know, trimmed, once each, sorted: the fleet (Config) with the
// trucks of earlier courses and waybills, so that a truck with waybills and no course, or the
// fleet after the year's courses were closed, can still be chosen.
QStringList trucks(QSqlDatabase db);
QStringList clients(QSqlDatabase db);          // distinct Klient of tabl
QStringList routes(QSqlDatabase db);           // distinct Marsh of tabl
QStringList cargoes(QSqlDatabase db);          // distinct Tovar of tabl
QStringList invoiceNumbers(QSqlDatabase db);   // issued invoice numbers, newest first
QStringList drivers(QSqlDatabase db);          // "kod,ime" of shof

}
