#pragma once

#include "core/usermessage.h"

#include <optional>

// The norm fuel of a route line: the truck's norm in litres per 100 km, 0.4 l more for every
// tonne carried, over the line's kilometres, raised by the line's surcharge in per cent.
namespace zarek::fuelnorm {

// The kilometres as the norm counts them: whole, halves to even (99.5 and 100.5 both count as
// 100), within -32768..32767. A blank or an out-of-range figure is refused with a message.
Checked<int> normKilometres(std::optional<double> km, const QString &title);

// 1 for no surcharge (0), otherwise 1 + surcharge / 100: 10 % gives 1.1, a negative one reduces.
double surchargeFactor(double koef);

// round(((ton × 0.4 + norm) × km / 100) × factor, 1), halves to even.
double normFuel(double norm, double ton, int km, double koef);

// The norm fuel of a waybill: the sum of its lines, rounded once more to one decimal.
double fuelSum(double sum);

// The kilometres of a waybill: the sum of its lines as a whole number, halves to even.
double kilometreSum(double sum);

}
