#pragma once

// What the course tests share: the tariff bands and courses written straight into tabl.

#include "testdatabase.h"

#include <QDate>
#include <QSqlDatabase>

namespace zarek::test {

// The tariff bands: up to 20 km, to 30, to 50, to 100, to 200, above 200.
inline bool addBands(ScratchDatabase &scratch)
{
    return scratch.exec(QStringLiteral("INSERT INTO Tarifi (\"Trf_20\", \"Trf_20-30\", \"Trf_30-50\", \"Trf_50-100\", "
                                       "\"Trf_100-200\", \"Trf_200\") VALUES (0.35, 0.125, 0.18, 0.14, 0.12, 0.1)"));
}

// A course as the tests write it; what a test does not name is the example course's.
struct CourseRow {
    QDate data;
    QString kod = QStringLiteral("007");
    QString kola = QStringLiteral("СА 1234 ВК");
    QString klient = QStringLiteral("Бетон АД");
    double ton = 10;
    double km = 25;
    double tarifa = 0.125;
    double bruto = 31.25;
    bool fakt = false;
    bool plat = false;
    QString marsh = QStringLiteral("София - Перник");
    double procent = 0;
    double neto = -1;  // the gross less the percentage when not named
    QString nomFakt = QStringLiteral("0000000000");  // 0000000125 for an invoiced course when not named
};

inline bool insertCourse(QSqlDatabase db, const CourseRow &row)
{
    const double neto = row.neto < 0 ? row.bruto - row.procent : row.neto;
    const QString nomFakt = row.fakt && row.nomFakt == QLatin1String("0000000000") ? QStringLiteral("0000000125")
                                                                                   : row.nomFakt;
    return execBound(db, QStringLiteral("INSERT INTO tabl (data, kod, kola, Klient, Marsh, Tovar, km, ton, Tarifa, bruto, "
                                        "procent, neto, Fakt, NomFakt, plat, Doc) "
                                        "VALUES (?, ?, ?, ?, ?, 'Пясък', ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
                     {row.data, row.kod, row.kola, row.klient, row.marsh, row.km, row.ton, row.tarifa, row.bruto,
                      row.procent, neto, row.fakt, nomFakt, row.plat, false});
}

}
