#pragma once

// Courses of two drivers over March 2006 for the settlement tests, written straight into tabl.

#include "examplefirm.h"
#include "core/firmprofile.h"
#include "courses/searchconditions.h"

#include <QDate>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>
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
    QSqlQuery query(db);
    query.prepare(QStringLiteral("INSERT INTO tabl (data, kod, kola, Klient, Marsh, Tovar, km, ton, Tarifa, bruto, "
                                 "procent, neto, Fakt, NomFakt, plat, Doc) "
                                 "VALUES (?, ?, ?, 'Бетон АД', ?, ?, ?, ?, ?, ?, ?, ?, ?, '0000000000', ?, ?)"));
    for (const QVariant &value : QList<QVariant>{c.data, c.kod, c.kola, c.marsh, c.tovar, c.km, c.ton, c.tarifa,
                                                 c.bruto, c.bruto - c.neto, c.neto, false, c.plat, false})
        query.addBindValue(value);
    if (!query.exec()) {
        qWarning() << query.lastError().text();
        return false;
    }
    return true;
}

inline bool insertDriver(QSqlDatabase db, const QString &kod, const QString &ime, const QString &egn,
                         const QString &lKarta)
{
    QSqlQuery query(db);
    query.prepare(QStringLiteral("INSERT INTO shof (kod, ime, EGN, LKarta) VALUES (?, ?, ?, ?)"));
    query.addBindValue(kod);
    query.addBindValue(ime);
    query.addBindValue(egn);
    query.addBindValue(lKarta);
    return query.exec();
}

inline bool insertTruck(QSqlDatabase db, const QString &kola, double percent, double ton)
{
    QSqlQuery query(db);
    query.prepare(QStringLiteral("INSERT INTO Config (kola, Razhod, Procent, Ton) VALUES (?, 30, ?, ?)"));
    query.addBindValue(kola);
    query.addBindValue(percent);
    query.addBindValue(ton);
    return query.exec();
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

}
