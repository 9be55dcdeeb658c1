#pragma once

#include <array>
#include <optional>

namespace zav {

// Everything the noise-temperature calculation reads, as numbers.
struct FieldStrengthInputs {
    double ms1 = 0, ms2 = 0, ms3 = 0; // mean squares: sound card, receiver, external
    bool externalOverThreshold = false;
    double rms3 = 0, avgRms3 = 0, qpRms3 = 0, pkRms3 = 0; // external step's RMS and ratios (dB)
    double bandwidthHz = 0;
    double frequencyMHz = 0;
    double rxNfDb = 0;
    double attenuatorDb = 0;
    double lossDb = 0;
    double antGain = 0;   // dBi, or dB/m when antFact
    bool antFact = false; // antGain holds an antenna factor
};

enum class CalcOutcome {
    NoExternal,      // no external reading, or one taken with the AGC acting
    NotComputable,   // a step not above the sound card, bandwidth or frequency not above 0,
                     // or an external noise temperature not above 0: silently empty
    ArithmeticError, // an overflow or undefined logarithm on the way
    Done,
};

// One detector's row of the results grid.
struct DetectorResult {
    double rxDbm;          // received power
    double fsDbuvPerM;     // field strength
    double normFsDbuvPerM; // field strength in 1 Hz
};

struct FieldStrength {
    CalcOutcome outcome = CalcOutcome::NotComputable;
    // Set as far as the calculation got; nullopt where it did not get there.
    std::optional<double> yfact;      // (Ms3 − Ms1) / (Ms2 − Ms1)
    std::optional<double> Text;       // external noise temperature at the antenna, K
    std::optional<double> Fa;         // external noise factor, dB above k·T0·b, when Text > 0
    std::optional<double> MBW;        // 10·log10(B), dB
    std::optional<double> NumAntGain; // dBi
    std::optional<double> NumAntFact; // dB/m
    // Avg, RMS, QP, Pk; the RMS row is always present when Done, the others when rms3 > 0.
    std::array<std::optional<DetectorResult>, 4> rows;
};

// Power of 1 µV across 50 Ω in dBm: 10·log10((1e-6)² / 50) + 30 = −106.9897.
double MicrovoltRef();

// The Y-factor calculation: the receiver's own noise, known from its noise figure, is the
// yardstick for the external noise; the sound card's noise is taken off both readings.
FieldStrength ComputeFieldStrength(const FieldStrengthInputs& in);

} // namespace zav
