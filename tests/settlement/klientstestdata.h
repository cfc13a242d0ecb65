#pragma once

// Courses of March 2006 for the client statement tests: four of "Д'Аргос ООД" in the period, one on
// each side of it, and one of another client.

#include "examplefirm.h"
#include "testdatabase.h"
#include "core/firmprofile.h"
#include "courses/searchconditions.h"

#include <QDate>
#include <QSqlDatabase>

namespace klientstest {

inline const QString client = QStringLiteral("Д'Аргос ООД");

inline bool insertCourse(QSqlDatabase db, QDate date, const QString &klient, const QString &marsh, const QString &tovar,
                         const QString &kola, double km, double ton, double tarifa, double bruto)
{
    return zarek::test::insertRow(db, QStringLiteral("tabl"), zarek::test::courseColumns,
                                  {date, QStringLiteral("007"), kola, klient, marsh, tovar, km, ton, tarifa, bruto, 0, bruto,
                                   false, QStringLiteral("0000000000"), false, false});
}

inline bool fillCourses(QSqlDatabase db)
{
    const QString ca = QStringLiteral("СА 1234 ВК");
    const QString pb = QStringLiteral("РВ 7777 АА");
    return insertCourse(db, QDate(2006, 3, 2), client, QStringLiteral("София - Перник"), QStringLiteral("Пясък"), ca,
                        100, 10, 0.125, 125.00)
           && insertCourse(db, QDate(2006, 3, 2), client, QStringLiteral("Батановци - Перник"), QStringLiteral("Чакъл"),
                           pb, 40, 12.5, 0.1, 50.00)
           && insertCourse(db, QDate(2006, 3, 15), client, QStringLiteral("Перник - София"),
                           QStringLiteral("пясък едър"), ca, 25, 8, 0.2, 40.00)
           && insertCourse(db, QDate(2006, 3, 31), client, QStringLiteral("София - Перник"), QStringLiteral("Пясък"), ca,
                           60, 10, 0.1, 60.00)
           && insertCourse(db, QDate(2006, 2, 28), client, QStringLiteral("Преди периода"), QStringLiteral("Пясък"), ca,
                           10, 1, 1, 10.00)
           && insertCourse(db, QDate(2006, 4, 1), client, QStringLiteral("След периода"), QStringLiteral("Пясък"), ca, 10,
                           1, 1, 10.00)
           && insertCourse(db, QDate(2006, 3, 10), QStringLiteral("Бетон АД"), QStringLiteral("Друг клиент"),
                           QStringLiteral("Пясък"), ca, 10, 1, 1, 10.00);
}

inline zarek::SearchConditions march()
{
    zarek::SearchConditions conditions;
    conditions.SeekKlient = client;
    conditions.period = {QDate(2006, 3, 1), QDate(2006, 3, 31)};
    return conditions;
}

inline const zarek::FirmProfile &firm()
{
    return zarek::test::pernikFirm();
}

// What the register holds, to tell that nothing changed it.
inline QString registerFingerprint(QSqlDatabase db)
{
    return zarek::test::rowsText(db, QStringLiteral("SELECT COUNT(*), SUM(km), SUM(Tarifa), SUM(bruto), SUM(row_version) FROM tabl"));
}

}
