#pragma once

// Trips as the tests of the international subsystem write them, and the firms on them.

#include "international/triprules.h"

namespace zarek::test {

inline const FirmAddress agro{QStringLiteral("Agro Trade SRL"), QStringLiteral("Str. Fabricii 8"),
                              QStringLiteral("Bucuresti"), QStringLiteral("Румъния")};
inline const FirmAddress dargos{QStringLiteral("Д'Аргос ООД"), QStringLiteral("ул. Шипка 3"), QStringLiteral("Пловдив"),
                                QStringLiteral("България")};

// A trip of 05.03.2026 by tractor РВ 1234 ВК, every figure of it the one given, from sender to
// receiver; what is not named is blank.
inline RecordRow tripRow(const QString &number, const FirmAddress &sender, const FirmAddress &receiver,
                         const QString &driver, const QString &trailer, const QVariant &figures)
{
    RecordRow row;
    for (const QString &column : tripColumns())
        row.values.insert(column, QString());
    row.values.insert(QStringLiteral("KursID"), number);
    row.values.insert(QStringLiteral("Data"), QDate(2026, 3, 5));
    row.values.insert(QStringLiteral("DriverName"), driver);
    row.values.insert(QStringLiteral("TruckV"), QStringLiteral("РВ 1234 ВК"));
    row.values.insert(QStringLiteral("TruckR"), trailer);
    for (const QString &column : tripNumberColumns())
        row.values.insert(column, figures);
    const QString parts[] = {sender.name, sender.adres, sender.city, sender.country,
                             receiver.name, receiver.adres, receiver.city, receiver.country};
    const char *columns[] = {"SendName", "SendAdres", "SendCity", "SendCountry",
                             "ResivName", "ResivAdres", "ResivCity", "ResivCountry"};
    for (int i = 0; i < 8; ++i)
        row.values.insert(QString::fromLatin1(columns[i]), parts[i]);
    return row;
}

}
