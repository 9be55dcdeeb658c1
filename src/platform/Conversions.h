#pragma once

#include <cmath>

namespace zav {

// ln 10: every decimal logarithm in the program is ln(x) / LogTen, so that results match the
// original arithmetic to the last digit.
inline const double LogTen = std::log(10.0);

// Thermal noise power density at 290 K in dBm/Hz: 10·log10(k·T0) + 30, k·T0 = 4.00388616e-21 W/Hz.
inline const double NoiseDensity = 10.0 * std::log(4.00388616e-21) / LogTen + 30.0;

// Highest index of the recent-profile list (entries 1..9).
inline constexpr int MaxMru = 9;

double PiValue();

// Antenna factor in dB/m from gain in dBi at `frequencyMHz`, and gain from factor: the
// conversion is its own inverse. factor = 20·log10(√(120π·4π / (50·λ²))) − gain.
double GainToFactor(double value, double frequencyMHz);

} // namespace zav
