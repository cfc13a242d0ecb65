#pragma once

#include "core/usermessage.h"

#include <QString>

namespace zarek {

// The birth date of the attestation, read from the driver's personal number (ЕГН): digits 1-2
// are the year, 3-4 the month, 5-6 the day; a month of 41 or more marks a birth from 2000 on and
// stands for the month plus 40. The text keeps the digits as written, and the month of a birth
// from 2000 on has no leading zero: "7501020000" gives "02.01.1975", "0145020000" "02.5.2001".
// A number that is not digits, shorter than six, or no real date gives the message instead.
Checked<QString> birthDateFromEgn(const QString &egn);

}
