#pragma once

#include <QSqlDatabase>
#include <QString>
#include <QStringList>

namespace zarek {

// The first column of a query's rows as texts, blank ones left out: the lists combos and search
// dialogs offer. A query that fails gives an empty list (a list to choose from is a help, not a must).
QStringList nonBlankTexts(QSqlDatabase db, const QString &sql);

// A query of the distinct values of a column, smallest first, NULL left out. Each value is one
// step down the column's index, not a pass over every row: a million courses hold a few hundred
// clients. Table and column are the program's own names (never typed text).
QString distinctValuesQuery(const QString &table, const QString &column);

}
