#pragma once

#include "measure/RxCalibration.h"

#include <cmath>

namespace zav::test {

inline constexpr double kBoltzmannJPerK = 1.3806504e-23;
inline constexpr double kT0Kelvin = 290.0;

// The Y-factor method from first principles: a source whose excess temperature over T0 is Tc
// raises the noise power by Y = (T0 + Tsys + Tc) / (T0 + Tsys), so F = (T0 + Tsys) / T0
// = Tc / (T0·(Y − 1)). Tc from a carrier of P watts in B Hz is P / (k·B).
inline double ExcessTemperature(CalSource source, double level, double bandwidthHz) {
    switch (source) {
    case CalSource::Carrier:
        return std::pow(10.0, level / 10.0) / 1000.0 / (kBoltzmannJPerK * bandwidthHz);
    case CalSource::NoiseDensity:
        return std::pow(10.0, level / 10.0) / 1000.0 / kBoltzmannJPerK;
    case CalSource::ExcessNoiseRatio:
        break;
    }
    return std::pow(10.0, level / 10.0) * kT0Kelvin;
}

} // namespace zav::test
