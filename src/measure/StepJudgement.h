#pragma once

#include "measure/Measurement.h"

#include <string>

namespace zav {

// A step's judgement in words, with the figures behind it and what the operator should do:
// the colour of a cell is never the only sign. Levels are in dB of the normalised voltage
// (full scale 1.0), comparisons in dB between two RMS readings.
struct StepJudgement {
    enum class Kind { Good, Warning, Fault };
    Kind kind = Kind::Good;
    std::string text;
};

// 20·log10(a / b), dB; −999 when either reading is zero.
double LevelDifferenceDb(double a, double b);

// `source` names the column: "Sound card", "Receiver" or "External".
StepJudgement ClippingVerdict(const char* source, const Measurement& m, char separator);
StepJudgement SoundCardVerdict(const Measurement& s1, char separator);
StepJudgement ReceiverVerdict(const Measurement& s1, const Measurement& s2, char separator);
// `agcDb` is the set-up's AGC threshold.
StepJudgement ExternalVerdict(const Measurement& s1, const Measurement& s2, const Measurement& s3,
                              double agcDb, char separator);

} // namespace zav
