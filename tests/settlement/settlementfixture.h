#pragma once

// Courses of two drivers over March 2006 for the settlement tests, written straight into tabl.

#include "examplefirm.h"
#include "testdatabase.h"
#include "core/firmprofile.h"
#include "courses/searchconditions.h"

#include <QDate>
#include <QSqlDatabase>
#include <QtTest>

namespace zarek::test {

struct SettlementCourse {
    QDate data;
    QString kod;
    QString kola;
    QString marsh;
    double ton = 10;
    double km = 25;
    double tarifa = 0.125;
    double bruto = 0;
    double neto = 0;
    bool plat = false;
    QString tovar = QStringLiteral("Пясък");
};

inline bool insertCourse(QSqlDatabase db, const SettlementCourse &c)
{
    return insertRow(db, QStringLiteral("tabl"), courseColumns,
                     {c.data, c.kod, c.kola, QStringLiteral("Бетон АД"), c.marsh, c.tovar, c.km, c.ton, c.tarifa, c.bruto,
                      c.bruto - c.neto, c.neto, false, QStringLiteral("0000000000"), c.plat, false});
}

inline bool insertDriver(QSqlDatabase db, const QString &kod, const QString &ime, const QString &egn,
                         const QString &lKarta)
{
    return insertRow(db, QStringLiteral("shof"), QStringLiteral("kod, ime, EGN, LKarta"), {kod, ime, egn, lKarta});
}

inline bool insertTruck(QSqlDatabase db, const QString &kola, double percent, double ton)
{
    return insertRow(db, QStringLiteral("Config"), QStringLiteral("kola, Razhod, Procent, Ton"), {kola, 30, percent, ton});
}

inline const QString &driverName()
{
    static const QString name = QStringLiteral("Иван Д'Арков");  // an apostrophe is just a letter
    return name;
}

inline SearchConditions marchOf(const QString &kod)
{
    SearchConditions conditions;
    conditions.SeekDriverKod = kod;
    conditions.SeekDriverIme = driverName();
    conditions.period = {QDate(2006, 3, 1), QDate(2006, 3, 31)};
    return conditions;
}

// Driver 007 has five unpaid courses in March 2006 (both ends of the month among them), one paid,
// one on each side of the month; driver 008 has a course but no shof row. The pay of the five
// lines printed adds up to 165,44; the pay of the sheet, added up unrounded, is 165,45.
inline bool fillPaySheetExample(QSqlDatabase db)
{
    const QString truck = QStringLiteral("СА 1234 ВК");
    const QString truck2 = QStringLiteral("РВ 7777 АА");
    return insertDriver(db, QStringLiteral("007"), driverName(), QStringLiteral("7503124567"),
                        QStringLiteral("645123987"))
           && insertTruck(db, truck, 0, 18)  // the later row of the truck counts
           && insertTruck(db, truck2, 12, 25) && insertTruck(db, truck, 10, 20)
           && insertCourse(db, {QDate(2006, 2, 28), "007", truck, "Преди периода", 10, 25, 0.4, 100, 97})
           && insertCourse(db, {QDate(2006, 3, 31), "007", truck2, "Перник - Радомир", 26, 50, 0.154, 200, 194})
           && insertCourse(db, {QDate(2006, 3, 1), "007", truck, "София - Перник", 20.9, 100, 0.5, 1000, 970})
           && insertCourse(db, {QDate(2006, 3, 12), "007", truck, "Батановци - Перник", 10, 25, 0.125, 31.25, 30.31})
           && insertCourse(db, {QDate(2006, 3, 5), "007", truck, "Перник - София", 23.5, 100, 0.4255, 1000, 970})
           && insertCourse(db, {QDate(2006, 3, 10), "007", truck, "Перник - Батановци", 10, 25, 0.125, 31.25, 30.31})
           && insertCourse(db, {QDate(2006, 3, 15), "007", truck, "Платен", 10, 25, 2, 500, 485, true})
           && insertCourse(db, {QDate(2006, 4, 1), "007", truck, "След периода", 10, 25, 0.4, 100, 97})
           && insertCourse(db, {QDate(2006, 3, 7), "008", truck, "Друг шофьор", 10, 25, 3.6, 900, 873});
}

}
