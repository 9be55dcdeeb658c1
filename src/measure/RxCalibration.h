#pragma once

#include <optional>

namespace zav {

// The kinds of source of known level that the receiver can be calibrated with.
enum class CalSource {
    Carrier,          // narrow-band carrier inside the pass band, dBm
    NoiseDensity,     // wide-band noise source, dBm/Hz
    ExcessNoiseRatio, // noise diode, ENR in dB
};

enum class CalStatus {
    Done,
    TooWeak,     // Y not above 1: the source gave no rise over the receiver noise
    NotPhysical, // the loss ahead of the receiver leaves no positive absolute temperature
};

// The numbers the calibration works from: the last calculation's Y factor and the set-up's
// bandwidth and the attenuator and feed-line loss between the source and the receiver.
struct CalibrationInputs {
    double yfact = 0;
    double bandwidthHz = 0;
    double attenuatorDb = 0;
    double lossDb = 0;
};

// What the calibration found, as far as it got.
struct RxCalibration {
    CalStatus status = CalStatus::TooWeak;
    std::optional<double> yFactorDb;     // 10·log10(Y), when Y > 0
    std::optional<double> systemNfDb;    // at the injection point, loss included
    std::optional<double> receiverNfDb;  // the loss taken out
    std::optional<double> noiseFloorDbm; // receiver's noise in the set-up bandwidth
};

// Y-factor calibration: a source of known level raised the reading by Y over the receiver
// with its input terminated, which fixes the system noise figure; the attenuator and feed
// line, a passive loss at 290 K, are then taken out to leave the receiver's own figure.
RxCalibration CalibrateReceiver(CalSource source, double level, const CalibrationInputs& in);

} // namespace zav
