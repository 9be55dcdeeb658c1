#include "measure/Measurement.h"

#include <cmath>

namespace zav {
namespace {

// 20·log10(x / rms) as ln / ln 10; −999 where the logarithm is undefined.
double ratioDb(double x, double rms) {
    const double r = x / rms;
    if (!(r > 0) || !std::isfinite(r))
        return -999;
    return 20.0 * std::log(r) / std::log(10.0);
}

} // namespace

void Measurement::Calc() {
    Rms = std::pow(Ms, 0.5);
    ClipFlag = Pk > 0.7 ? -1 : 0;
    if (Rms > 0) {
        QpRms = ratioDb(QP, Rms);
        PkRms = ratioDb(Pk, Rms);
        AvgRms = ratioDb(Avg, Rms);
    }
}

void Measurement::Reset() {
    Avg = Ms = Rms = QP = Pk = QpRms = PkRms = AvgRms = ClipFlag = 0;
    OverThreshold = false;
}

} // namespace zav
