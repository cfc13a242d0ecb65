#pragma once

#include "core/money.h"

namespace zarek {

// A course's money: gross = tonnes x km x rate rounded to the cent, a fixed 3 % deduction of the
// rounded gross (rounded again), and net = gross - deduction.
struct CourseMoney {
    Money bruto;
    Money procent;
    Money neto;
    bool operator==(const CourseMoney &) const = default;
};

CourseMoney priceCourse(double ton, double km, double rate);

}
