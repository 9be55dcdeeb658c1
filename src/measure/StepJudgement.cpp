#include "measure/StepJudgement.h"

#include "platform/Format.h"

#include <cmath>

namespace zav {
namespace {

using Kind = StepJudgement::Kind;

// Crest factor (peak over RMS) above which the sound card's noise holds pulses, and the
// level of its own noise above which the input is too loud or picks something up.
constexpr double kMaxCrestDb = 20.0, kMaxSoundCardDbfs = -60.0;
// Each stage must stand this far above the sound card (5 times its RMS voltage).
constexpr double kMinAboveSoundCardDb = 13.98;
// Below this the external noise hardly lifts the receiver's own, and the Y factor, the
// difference of two nearly equal powers, carries most of the reading's uncertainty.
constexpr double kMinAboveReceiverDb = 3.0;

std::string db(double v, char separator) {
    return Format(v, "0.0", separator);
}

} // namespace

double LevelDifferenceDb(double a, double b) {
    if (!(a > 0) || !(b > 0))
        return -999;
    return 20.0 * std::log10(a / b);
}

StepJudgement ClippingVerdict(const char* source, const Measurement& m, char separator) {
    return {Kind::Fault, std::string(source) + " reading clips (peak " +
                             Format(m.Pk, "0.000", separator) + " V, limit " +
                             Format(0.7, "0.000", separator) +
                             " V): turn the receiver's audio gain or the recording level down"};
}

StepJudgement SoundCardVerdict(const Measurement& s1, char separator) {
    const double level = LevelDifferenceDb(s1.Rms, 1.0);
    if (s1.Pk > 10 * s1.Rms)
        return {Kind::Warning, "Sound card noise has peaks " + db(s1.PkRms, separator) +
                                   " dB above its RMS (at most 20 dB): look for clicks, hum or "
                                   "a loose lead on the sound card input"};
    if (s1.Rms > 0.001)
        return {Kind::Warning, "Sound card noise " + db(level, separator) +
                                   " dBFS, above the -60 dBFS limit: turn the recording level "
                                   "down or choose a quieter input"};
    if (s1.Rms <= 0)
        return {Kind::Good, "Sound card noise below the resolution of the recording: good"};
    return {Kind::Good, "Sound card noise " + db(level, separator) + " dBFS: good"};
}

StepJudgement ReceiverVerdict(const Measurement& s1, const Measurement& s2, char separator) {
    const double above = LevelDifferenceDb(s2.Rms, s1.Rms);
    if (s2.Rms * s2.Rms - s1.Rms * s1.Rms < 0 || s2.Rms == 0)
        return {Kind::Fault, "Receiver adds no noise to the sound card's: check that the "
                             "receiver is on and its audio reaches the chosen input"};
    if (5 * s1.Rms > s2.Rms)
        return {Kind::Warning, "Receiver noise only " + db(above, separator) +
                                   " dB above the sound card's noise (at least 14 dB): turn "
                                   "the receiver's audio gain up"};
    return {Kind::Good,
            "Receiver noise " + db(above, separator) + " dB above the sound card's noise: good"};
}

StepJudgement ExternalVerdict(const Measurement& s1, const Measurement& s2, const Measurement& s3,
                              double agcDb, char separator) {
    const double r1 = s1.Rms, r2 = s2.Rms, r3 = s3.Rms;
    if (r3 * r3 - r1 * r1 < 0 || r3 == 0)
        return {Kind::Fault, "External noise adds nothing to the sound card's: check that the "
                             "antenna is connected and the receiver's audio reaches the input"};
    if (5 * r1 > r3)
        return {Kind::Warning, "External noise only " + db(LevelDifferenceDb(r3, r1), separator) +
                                   " dB above the sound card's noise (at least 14 dB): turn "
                                   "the receiver's audio gain up"};
    const double overReceiver = LevelDifferenceDb(r3, r2);
    const double agc = std::pow(10.0, agcDb / 20.0);
    if (agc * r2 < r3)
        return {Kind::Fault, "External noise " + db(overReceiver, separator) +
                                 " dB above the receiver's noise, more than the AGC threshold "
                                 "of " +
                                 db(agcDb, separator) + " dB: add attenuation or turn the AGC off"};
    if (agc * r3 < r2)
        return {Kind::Fault, "Receiver noise " + db(-overReceiver, separator) +
                                 " dB above the external noise, more than the AGC threshold "
                                 "of " +
                                 db(agcDb, separator) + " dB: repeat step 2 with the AGC off"};
    if (overReceiver < kMinAboveReceiverDb)
        return {Kind::Warning, "External noise only " + db(overReceiver, separator) +
                                   " dB above the receiver's noise: use a better antenna or "
                                   "less attenuation"};
    return {Kind::Good, "External noise " + db(overReceiver, separator) +
                            " dB above the receiver's noise: good"};
}

} // namespace zav
