#pragma once

// The rate of VAT on the firm's services, stated once: a constant of the law, not a setting.
namespace zarek {

inline constexpr int vatPercent = 20;
// The same as a factor (0.2) for sums held as doubles.
inline constexpr double vatFactor = vatPercent / 100.0;

}
