#pragma once

#include <QSqlDatabase>
#include <QStringList>

// The lists the search dialogs and the course editor offer: what earlier courses used.
namespace zarek::searchlists {

QStringList trucks(QSqlDatabase db);           // distinct kola of tabl
QStringList clients(QSqlDatabase db);          // distinct Klient of tabl
QStringList routes(QSqlDatabase db);           // distinct Marsh of tabl
QStringList cargoes(QSqlDatabase db);          // distinct Tovar of tabl
QStringList invoiceNumbers(QSqlDatabase db);   // issued invoice numbers, newest first
QStringList drivers(QSqlDatabase db);          // "kod,ime" of shof

}
