#include "searchlists.h"

#include "data/query.h"
#include "data/textlist.h"

#include <QVariant>

namespace zarek::searchlists {

// Sorted so both engines give the same order; the indexes make DISTINCT cheap on large tables.
QStringList trucks(QSqlDatabase db)
{
    return nonBlankTexts(db, QStringLiteral("SELECT kola FROM (SELECT TRIM(kola) AS kola FROM Config "
                                            "UNION SELECT TRIM(kola) FROM tabl "
                                            "UNION SELECT TRIM(Kola) FROM RowdList) trucks ORDER BY kola"));
}

QStringList clients(QSqlDatabase db)
{
    return nonBlankTexts(db, QStringLiteral("SELECT DISTINCT Klient FROM tabl ORDER BY Klient"));
}

QStringList routes(QSqlDatabase db)
{
    return nonBlankTexts(db, QStringLiteral("SELECT DISTINCT Marsh FROM tabl ORDER BY Marsh"));
}

QStringList cargoes(QSqlDatabase db)
{
    return nonBlankTexts(db, QStringLiteral("SELECT DISTINCT Tovar FROM tabl ORDER BY Tovar"));
}

QStringList invoiceNumbers(QSqlDatabase db)
{
    return nonBlankTexts(db, QStringLiteral(
                          "SELECT DISTINCT NomFakt FROM tabl WHERE NomFakt <> '0000000000' ORDER BY NomFakt DESC"));
}

QStringList drivers(QSqlDatabase db)
{
    QStringList values;
    Query query(db, QStringLiteral("SELECT DISTINCT kod, ime FROM shof ORDER BY kod, ime"));
    if (query.run(QString()))
        return values;
    while (query.next())
        values.append(query.value(0).toString() + QLatin1Char(',') + query.value(1).toString());
    return values;
}

}
