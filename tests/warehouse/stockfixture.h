#pragma once

// A stock movement as the warehouse tests write one: a document, an article, a quantity and a
// unit price on a day.

#include "warehouse/warehousestore.h"

namespace zarek::test {

inline StockMovement movement(const QString &name, double kol, double edin, QDate data,
                              const QString &docVid = QStringLiteral("Фактура"),
                              const QString &docNom = QStringLiteral("0001"))
{
    StockMovement m;
    m.data = data;
    m.docVid = docVid;
    m.docNom = docNom;
    m.name = name;
    m.kol = kol;
    m.edin = edin;
    return m;
}

}
