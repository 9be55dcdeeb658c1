#include "measure/P372Noise.h"

#include "config/SetupRecord.h"
#include "platform/Conversions.h"

#include <cmath>

namespace zav {
namespace {

// Man-made noise was fitted from 0.3 to 250 MHz; quiet rural sites share the rural spread.
constexpr std::array<P372CurveData, 5> kData = {{
    {"Business", 76.8, 27.7, 11.0, 6.7, 0.3, 250.0},
    {"Residential", 72.5, 27.7, 10.6, 5.3, 0.3, 250.0},
    {"Rural", 67.2, 27.7, 9.2, 4.6, 0.3, 250.0},
    {"Quiet rural", 53.6, 28.6, 9.2, 4.6, 0.3, 250.0},
    {"Galactic", 52.0, 23.0, 2.0, 2.0, 0.0, 100.0},
}};

} // namespace

const P372CurveData& P372Data(P372Curve curve) {
    return kData[static_cast<std::size_t>(curve)];
}

std::optional<P372Curve> P372CurveForEnvironment(std::string_view environment) {
    for (std::size_t i = 0; i < kEnvironments.size(); ++i)
        if (environment == kEnvironments[i])
            return static_cast<P372Curve>(i);
    return std::nullopt;
}

double P372Median(P372Curve curve, double frequencyMHz) {
    const P372CurveData& d = P372Data(curve);
    return d.c - d.d * std::log(frequencyMHz) / LogTen;
}

bool P372InRange(P372Curve curve, double frequencyMHz) {
    const P372CurveData& d = P372Data(curve);
    return frequencyMHz > 0 && frequencyMHz >= d.minMHz && frequencyMHz <= d.maxMHz;
}

} // namespace zav
