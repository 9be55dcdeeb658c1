#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace zav {

// The ITU-R P.372 median noise curves a site is compared with: man-made noise for the four
// environments the set-up offers, in their list order, and galactic noise.
enum class P372Curve { Business, Residential, Rural, QuietRural, Galactic };

inline constexpr std::array<P372Curve, 5> kP372Curves = {
    P372Curve::Business, P372Curve::Residential, P372Curve::Rural, P372Curve::QuietRural,
    P372Curve::Galactic};

// Fam = c − d·log10(f / 1 MHz), dB above k·T0·b, with the spread of the hourly medians about it.
struct P372CurveData {
    const char* name;
    double c;
    double d;
    double upperDecileDb; // exceeded 10 % of the time: Fam + upper
    double lowerDecileDb; // exceeded 90 % of the time: Fam − lower
    double minMHz;        // the frequencies the fit was made for
    double maxMHz;
};

const P372CurveData& P372Data(P372Curve curve);

// The man-made curve of a set-up environment ("Business" ... "Quiet rural"); nothing for any
// other text, an unselected list included.
std::optional<P372Curve> P372CurveForEnvironment(std::string_view environment);

// Median noise figure Fam in dB at `frequencyMHz`, whether or not the fit holds there.
double P372Median(P372Curve curve, double frequencyMHz);

// Whether `frequencyMHz` lies where the curve was fitted (galactic noise: up to about 100 MHz,
// and only above the ionosphere's critical frequency in practice).
bool P372InRange(P372Curve curve, double frequencyMHz);

} // namespace zav
