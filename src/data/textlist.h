#pragma once

#include <QSqlDatabase>
#include <QString>
#include <QStringList>

namespace zarek {

// The first column of a query's rows as texts, blank ones left out: the lists combos and search
// dialogs offer. A query that fails gives an empty list (a list to choose from is a help, not a must).
QStringList nonBlankTexts(QSqlDatabase db, const QString &sql);

}
