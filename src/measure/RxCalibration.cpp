#include "measure/RxCalibration.h"

#include "platform/Conversions.h"

#include <cmath>

namespace zav {
namespace {

constexpr double kT0 = 290.0; // reference temperature, K

double log10Design(double x) {
    return std::log(x) / LogTen;
}

} // namespace

RxCalibration CalibrateReceiver(CalSource source, double level, const CalibrationInputs& in) {
    RxCalibration r;
    const double Y = in.yfact;
    if (Y > 0 && std::isfinite(Y))
        r.yFactorDb = 10.0 * log10Design(Y);
    if (!(Y > 1) || !std::isfinite(Y)) {
        r.status = CalStatus::TooWeak;
        return r;
    }
    const double mbw = 10.0 * log10Design(in.bandwidthHz); // bandwidth in dB above 1 Hz

    // The source's excess over T0, divided by Y − 1, is the system's own noise: in dB,
    // Fsys = source level above k·T0 (per Hz, or in B) − 10·log10(Y − 1).
    const double rise = 10.0 * log10Design(Y - 1.0);
    double fsys = 0;
    switch (source) {
    case CalSource::Carrier:
        fsys = level - rise - mbw - NoiseDensity;
        break;
    case CalSource::NoiseDensity:
        fsys = level - rise - NoiseDensity;
        break;
    case CalSource::ExcessNoiseRatio:
        fsys = level - rise;
        break;
    }
    r.status = CalStatus::NotPhysical;
    if (!std::isfinite(fsys))
        return r;
    r.systemNfDb = fsys;

    // System noise temperature at the injection point, K: Te = (F − 1)·T0. The loss L ahead of
    // the receiver adds (L − 1)·T0 and scales the receiver's Tr by L: Tr = (Te − (L − 1)·T0) / L.
    const double Te = (std::pow(10.0, fsys / 10.0) - 1.0) * kT0;
    const double L = std::pow(10.0, (in.attenuatorDb + in.lossDb) / 10.0);
    const double Tr = (Te - (L - 1.0) * kT0) / L;
    if (!(Tr > -kT0) || !std::isfinite(Tr)) // also catches a NaN from an infinite loss
        return r;
    const double nf = 10.0 * log10Design(1.0 + Tr / kT0);
    const double floorDbm = nf + NoiseDensity + mbw;
    if (!std::isfinite(nf) || !std::isfinite(floorDbm))
        return r;
    r.receiverNfDb = nf;
    r.noiseFloorDbm = floorDbm;
    r.status = CalStatus::Done;
    return r;
}

} // namespace zav
