#include "searchlists.h"

#include "data/query.h"
#include "data/textlist.h"

#include <QVariant>

namespace zarek::searchlists {

// Sorted so both engines give the same order; each value is a step down an index on large tables.
QStringList trucks(QSqlDatabase db)
{
    return nonBlankTexts(db, QStringLiteral("SELECT kola FROM (SELECT TRIM(kola) AS kola FROM Config "
                                            "UNION SELECT TRIM(v) FROM (%1) courses "
                                            "UNION SELECT TRIM(v) FROM (%2) waybills) trucks ORDER BY kola")
                                 .arg(distinctValuesQuery(QStringLiteral("tabl"), QStringLiteral("kola")),
                                      distinctValuesQuery(QStringLiteral("RowdList"), QStringLiteral("Kola"))));
}

// The register's clients and those earlier courses named (a course keeps its client as typed).
QStringList clients(QSqlDatabase db)
{
    return nonBlankTexts(db, QStringLiteral("SELECT k FROM (SELECT Ime AS k FROM Klienti "
                                            "UNION SELECT v FROM (%1) courses) clients ORDER BY k")
                                 .arg(distinctValuesQuery(QStringLiteral("tabl"), QStringLiteral("Klient"))));
}

QStringList routes(QSqlDatabase db)
{
    return nonBlankTexts(db, distinctValuesQuery(QStringLiteral("tabl"), QStringLiteral("Marsh")));
}

QStringList cargoes(QSqlDatabase db)
{
    return nonBlankTexts(db, distinctValuesQuery(QStringLiteral("tabl"), QStringLiteral("Tovar")));
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
