#include "platform/Conversions.h"

namespace zav {

double PiValue() {
    return 4.0 * std::atan(1.0);
}

double GainToFactor(double value, double frequencyMHz) {
    const double lambda = 299792458.0 / frequencyMHz / 1000000.0; // wavelength, m
    const double a = lambda * lambda * 50.0 / 4.0 / PiValue();    // 50 Ω × isotropic aperture
    const double b = a / 120.0 / PiValue();                       // over free-space impedance
    return -value - 20.0 * std::log(std::pow(b, 0.5)) / LogTen;
}

} // namespace zav
