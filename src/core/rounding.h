#pragma once

// Money and fuel are rounded half to even on the decimal value the user sees: 0.125 -> 0.12,
// 0.135 -> 0.14, 2.675 -> 2.68, although 2.675 is stored in binary a hair below the half.
namespace zarek {

double roundHalfEven(double value, int decimals);

// Half away from zero on the same decimal value, as the euro conversion rounds rates and prices:
// 0,0639114... is cut where the user's eye cuts it, not a binary hair off.
double roundHalfUp(double value, int decimals);

}
