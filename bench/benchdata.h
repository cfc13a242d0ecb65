#pragma once

// Courses written straight into tabl for the benchmarks: five trucks, four clients, three
// routes and cargoes, nine drivers, spread over two years.

#include <QDate>
#include <QElapsedTimer>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>
#include <cmath>
#include <cstdio>

namespace zarek::bench {

inline double ms(const QElapsedTimer &timer) { return timer.nsecsElapsed() / 1e6; }

inline bool fillCourses(QSqlDatabase db, int count)
{
    const QStringList trucks = {"СА 1234 ВК", "РК 5678 ВС", "РК 9012 КМ", "СО 3456 АР", "ВТ 7890 ХА"};
    const QStringList clients = {"Бетон Перник АД", "Д'Аргос ООД", "Стройинвест Юг ЕООД", "Пътстрой ЕАД"};
    const QStringList routes = {"Перник - София", "Перник - Радомир - Кюстендил", "Батановци - Перник"};
    const QStringList goods = {"Пясък", "Чакъл 0-4 мм", "Бетонови елементи"};
    if (!db.transaction())
        return false;
    QSqlQuery query(db);
    query.prepare(QStringLiteral("INSERT INTO tabl (data, kod, kola, Klient, Marsh, Tovar, km, ton, Tarifa, bruto, "
                                 "procent, neto, Fakt, NomFakt, plat, Doc) "
                                 "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    for (int i = 0; i < count; ++i) {
        const double ton = 8 + (i * 37 % 170) / 10.0;
        const double km = 10 + (i * 53 % 240);
        const double rate = 0.08 + (i % 7) * 0.015;
        const double bruto = std::round(ton * km * rate * 100) / 100;
        const double procent = std::round(bruto * 3) / 100;
        const QList<QVariant> values = {QDate(2022, 1, 1).addDays(i % 730), QStringLiteral("00%1").arg(i % 9),
                                        trucks.at(i % trucks.size()), clients.at(i % clients.size()),
                                        routes.at(i % routes.size()), goods.at(i % goods.size()), km, ton, rate,
                                        bruto, procent, bruto - procent, i % 4 == 0,
                                        QStringLiteral("0000000000"), i % 3 == 0, false};
        for (const QVariant &value : values)
            query.addBindValue(value);
        if (!query.exec()) {
            std::fprintf(stderr, "insert: %s\n", qPrintable(query.lastError().text()));
            return false;
        }
    }
    return db.commit();
}

}
