#pragma once

#include <string>

namespace zav {

// One step's detector results, in normalised volts (full scale 1.0); the average, QP and peak
// detectors are scaled to read the RMS value of a steady sine.
class Measurement {
public:
    double Avg = 0;    // average detector
    double Ms = 0;     // mean square of the DC-removed samples
    double Rms = 0;    // Ms^0.5, set by Calc
    double QP = 0;     // quasi-peak detector
    double Pk = 0;     // peak detector
    double QpRms = 0;  // 20·log10(QP / Rms), dB
    double PkRms = 0;  // 20·log10(Pk / Rms), dB
    double AvgRms = 0; // 20·log10(Avg / Rms), dB
    std::string Title;
    double ClipFlag = 0; // −1 when clipping was detected, else 0

    // Set while a run is under way and by step 3's AGC test: a run that never finished, or
    // a reading taken with the receiver's AGC acting, is never used by the calculation.
    bool OverThreshold = false;

    // Rms, ClipFlag (Pk > 0.7) and, when Rms > 0, the three ratios; a ratio whose detector
    // reads 0 is −999.
    void Calc();
    // Zeroes every value and the mark; Title stays.
    void Reset();
};

} // namespace zav
