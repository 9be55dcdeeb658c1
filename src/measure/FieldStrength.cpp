#include "measure/FieldStrength.h"

#include "platform/Conversions.h"

#include <cmath>

namespace zav {
namespace {

constexpr double kT0 = 290.0;                // reference temperature, K
constexpr double kBoltzmann = 1.3806504e-23; // J/K

double log10Design(double x) {
    return std::log(x) / LogTen;
}

bool finite(double x) {
    return std::isfinite(x);
}

} // namespace

double MicrovoltRef() {
    return 10.0 * log10Design(1e-6 * 1e-6 / 50.0) + 30.0;
}

FieldStrength ComputeFieldStrength(const FieldStrengthInputs& in) {
    FieldStrength r;
    if (in.ms3 == 0 || in.externalOverThreshold) {
        r.outcome = CalcOutcome::NoExternal;
        return r;
    }
    if (!(in.ms2 - in.ms1 > 0 && in.ms3 - in.ms1 > 0))
        return r;
    const double B = in.bandwidthHz;
    const double F = in.frequencyMHz;
    if (!(B > 0 && F > 0))
        return r;
    const double mbw = 10.0 * log10Design(B);
    r.MBW = mbw;

    r.outcome = CalcOutcome::ArithmeticError;
    const double yfact = (in.ms3 - in.ms1) / (in.ms2 - in.ms1);
    if (!finite(yfact))
        return r;
    r.yfact = yfact;
    // Receiver noise temperature, K: Tr = (F − 1)·T0 with F = 10^(NF/10).
    const double Tr = (std::pow(10.0, in.rxNfDb / 10.0) - 1.0) * kT0;
    // Attenuator and feed line as one passive loss at T0; system noise temperature referred
    // to the antenna terminals, K: Te = L·Tr + (L − 1)·T0.
    const double L = std::pow(10.0, (in.attenuatorDb + in.lossDb) / 10.0);
    const double Te = L * Tr + (L - 1.0) * kT0;
    // Step 2 saw T0 + Te, step 3 saw Text + Te: Text = Y·T0 + (Y − 1)·Te.
    const double Text = yfact * kT0 + (yfact - 1.0) * Te;
    if (!finite(Tr) || !finite(L) || !finite(Te) || !finite(Text))
        return r;
    r.Text = Text;
    if (Text <= 0) {
        r.outcome = CalcOutcome::NotComputable;
        return r;
    }
    // External noise factor, dB above k·T0·b: Fa = 10·log10(Text / T0).
    r.Fa = 10.0 * log10Design(Text / kT0);
    // RMS received power in the measurement bandwidth, dBm.
    const double P = 10.0 * log10Design(kBoltzmann * Text) + 30.0 + mbw;

    const double factor = in.antFact ? in.antGain : GainToFactor(in.antGain, F);
    const double gain = in.antFact ? GainToFactor(in.antGain, F) : in.antGain;
    if (!finite(P) || !finite(factor) || !finite(gain))
        return r;
    r.NumAntFact = factor;
    r.NumAntGain = gain;

    const double uvRef = MicrovoltRef();
    auto row = [&](double ratioDb) -> std::optional<DetectorResult> {
        DetectorResult d{P + ratioDb, P + factor - uvRef + ratioDb,
                         P + factor - mbw - uvRef + ratioDb};
        if (!finite(d.rxDbm) || !finite(d.fsDbuvPerM) || !finite(d.normFsDbuvPerM))
            return std::nullopt;
        return d;
    };
    const bool ratios = in.rms3 > 0;
    r.rows[0] = ratios ? row(in.avgRms3) : std::nullopt;
    r.rows[1] = row(0.0);
    r.rows[2] = ratios ? row(in.qpRms3) : std::nullopt;
    r.rows[3] = ratios ? row(in.pkRms3) : std::nullopt;
    if (!r.rows[1] || (ratios && (!r.rows[0] || !r.rows[2] || !r.rows[3])))
        return r;
    r.outcome = CalcOutcome::Done;
    return r;
}

} // namespace zav
