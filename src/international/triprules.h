#pragma once

#include "core/usermessage.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <optional>

// The rules of an international trip (one CMR consignment note) and of the firms address book.
namespace zarek {

// A sender or receiver: the four parts that together are one firm of the address book.
struct FirmAddress {
    QString name;
    QString adres;
    QString city;
    QString country;

    // Each part without surrounding blanks: one firm is one row however it was typed.
    FirmAddress trimmed() const;
    bool operator==(const FirmAddress &) const = default;
};

// The columns of ExternalKurs the trip editor holds, in the order of its boxes 0 to 22.
const QStringList &tripColumns();
// The columns read as numbers and as dates.
QStringList tripNumberColumns();
QStringList tripDateColumns();

// The sender (boxes 9 to 12) and the receiver (13 to 16) of a trip's values.
FirmAddress tripSender(const QVariantMap &values);
FirmAddress tripReceiver(const QVariantMap &values);

// The five checks of a save in their order: number, date, driver, tractor, trailer. The first
// box found empty stops the save with its message; then the figures (checkTripFigures).
std::optional<UserMessage> checkTrip(const QVariantMap &typed);

// The figures of a trip, each blank or a number from 0 to its limit: the cargo's tonnes, the fuel,
// the kilometres and the two sums. The message of the first beyond its limit (NaN and infinity
// included), as the screen shows it and the store refuses it.
struct TripFigureLimit {
    const char *column;
    const char *caption;
    double limit;
};
const QList<TripFigureLimit> &tripFigureLimits();
std::optional<UserMessage> checkTripFigures(const QVariantMap &values);

// "Съществува ЧМР със същия номер!"
UserMessage tripNumberTakenMessage();
// The one question before a trip is deleted.
UserMessage tripDeleteQuestion();

}
