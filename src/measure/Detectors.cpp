#include "measure/Detectors.h"

#include "measure/DoublePair.h"
#include "platform/Conversions.h"

#include <algorithm>
#include <cmath>

namespace zav {

namespace {

// The kernel works in sample units (full scale 32768) and scales once at the end: scaling by
// a power of two is exact, so every result is the same as with each sample divided first.
constexpr double kSampleScale = 1.0 / 32768;
// Values this small are indistinguishable from 0 in every result, but multiplying them
// (a detector left to decay over a long silence) runs very slowly on many processors.
constexpr double kNegligible = 1e-250;

// e where it is positive, else +0; and the larger of two values: both without branches, as
// the sign of a noise sample cannot be predicted.
inline double positivePart(double e) {
    return e > 0 ? e : 0.0;
}
inline double larger(double a, double b) {
    return a > b ? a : b;
}

} // namespace

Detectors::Detectors(std::int32_t sampleRate, double frequencyMHz) : m_fs(sampleRate) {
    const double pi = PiValue();
    m_kc = 1 - std::exp(-1 / (m_fs * 0.001));
    // Above 30 MHz the QP detector discharges with 0.55 s, at 30 MHz and below with 0.16 s.
    m_kd = std::exp(-1 / (m_fs * (frequencyMHz > 30 ? 0.55 : 0.16)));
    m_kdc = 1 - std::exp(-1 / (m_fs * (1 / (2 * pi * 20))));
    m_startupSamples = static_cast<std::int64_t>(std::nearbyint(m_fs * 0.01)) + 1;

    // dc[n+1] = dc[n] + (x[n] - dc[n])·kdc = a·dc[n] + kdc·x[n], a = 1 - kdc; j steps at
    // once: dc[n+j] = a^j·dc[n] + p[j], p[j] = a·p[j-1] + kdc·x[n+j-1], p[0] = 0.
    const double a = 1 - m_kdc;
    m_a[0] = 1;
    for (int j = 1; j < 5; ++j)
        m_a[j] = m_a[j - 1] * a;
    for (std::size_t g = 0; g <= kBlock; ++g) {
        m_kdPow[g] = std::pow(m_kd, static_cast<double>(g));
        m_chargePow[g] = m_kdPow[g] * (1 - m_kc);
    }
    // The margin covers the rounding of up to kBlock successive discharges.
    m_skipBelow = m_kdPow[kBlock] * (1 - 1e-12);
}

void Detectors::AddStartup(const std::int16_t* samples, std::size_t count) {
    for (std::size_t i = 0; i < count && m_startupSeen < m_startupSamples; ++i, ++m_startupSeen)
        m_startupSum += samples[i];
}

void Detectors::Start() {
    m_dc = static_cast<double>(m_startupSum) / (m_fs * 0.01);
}

void Detectors::Run(const std::int16_t* samples, std::size_t count) {
    while (count > 0) {
        const std::size_t n = std::min(count, kBlock);
        runBlock(samples, n);
        samples += n;
        count -= n;
    }
}

// Two passes over a block.
//
// The first tracks the DC offset four samples at a time, in pairs of lanes (its feedback is
// the longest chain of dependent operations, so it is stepped four ahead), feeds the RMS,
// average and peak detectors, and picks out the few rectified values that could charge the
// QP detector: while it only discharges, the detector stays above its value at the block's
// start times kd^kBlock, and charging only lifts it, so nothing at or below that can charge.
//
// The second runs the QP detector from one such value to the next, all the discharges
// between them in one step.
void Detectors::runBlock(const std::int16_t* s, std::size_t n) {
    alignas(64) double rect[kBlock];
    std::uint16_t candidates[kBlock + 1];
    std::size_t count = 0;

    const double kdc = m_kdc, a1 = m_a[1], a2 = m_a[2], a3 = m_a[3];
    const DoublePair k01 = DoublePair::Of(0, kdc);                // p[0], p[1] from x0
    const DoublePair x0To23 = DoublePair::Of(kdc * a1, kdc * a2); // p[2], p[3] from x0
    const DoublePair x1To23 = DoublePair::Of(kdc, kdc * a1);      // p[2], p[3] from x1
    const DoublePair x01To4 = DoublePair::Of(kdc * a3, kdc * a2); // p[4] from x0, x1
    const DoublePair x23To4 = DoublePair::Of(kdc * a1, kdc);      // p[4] from x2, x3
    const DoublePair decay01 = DoublePair::Of(1, a1), decay23 = DoublePair::Of(a2, a3);
    const DoublePair decay4 = DoublePair::Both(m_a[4]);
    const DoublePair calibration = DoublePair::Both(kQpCalibration);
    const DoublePair floor = DoublePair::Both(m_qp * m_skipBelow);

    DoublePair dc = DoublePair::Both(m_dc);
    DoublePair sumsq = DoublePair::Both(0), sum = DoublePair::Both(0);
    DoublePair peak = DoublePair::Both(m_peak);
    std::size_t i = 0;
    for (; i + 4 <= n; i += 4) {
        DoublePair x01, x23;
        DoublePair::LoadFour(s + i, x01, x23);
        const DoublePair x0 = x01.Lows(), x1 = x01.Highs(), x2 = x23.Lows();
        const DoublePair p01 = x0 * k01;
        const DoublePair p23 = x0 * x0To23 + x1 * x1To23 + x2 * k01;
        const DoublePair w = x01 * x01To4 + x23 * x23To4;
        const DoublePair e01 = x01 - (dc * decay01 + p01);
        const DoublePair e23 = x23 - (dc * decay23 + p23);
        dc = dc * decay4 + (w + w.Swapped());
        sumsq = sumsq + (e01 * e01 + e23 * e23);
        const DoublePair r01 = PositivePart(e01) * calibration;
        const DoublePair r23 = PositivePart(e23) * calibration;
        sum = sum + (r01 + r23);
        peak = Larger(peak, Larger(r01, r23));
        r01.Store(rect + i);
        r23.Store(rect + i + 2);
        const int above01 = r01.Above(floor), above23 = r23.Above(floor);
        candidates[count] = static_cast<std::uint16_t>(i);
        count += above01 & 1;
        candidates[count] = static_cast<std::uint16_t>(i + 1);
        count += above01 >> 1;
        candidates[count] = static_cast<std::uint16_t>(i + 2);
        count += above23 & 1;
        candidates[count] = static_cast<std::uint16_t>(i + 3);
        count += above23 >> 1;
    }
    double dcTail = dc.Low(), sumsqTail = 0, sumTail = 0, peakTail = 0;
    for (; i < n; ++i) {
        const double e = s[i] - dcTail;
        dcTail = dcTail + e * kdc;
        sumsqTail += e * e;
        const double r = positivePart(e) * kQpCalibration;
        sumTail += r;
        peakTail = larger(peakTail, r);
        rect[i] = r;
        candidates[count] = static_cast<std::uint16_t>(i);
        count += r > floor.Low();
    }
    m_dc = std::fabs(dcTail) < kNegligible ? 0.0 : dcTail;
    m_sumsq += (sumsq.Low() + sumsq.High()) + sumsqTail;
    m_sum += (sum.Low() + sum.High()) + sumTail;
    m_peak = larger(larger(peak.Low(), peak.High()), peakTail);

    // Discharge up to and including the candidate g samples on, then charge if it is above:
    // qp = max(qp·kd^g, qp·kd^g + (r - qp·kd^g)·kc), the second written so as not to wait
    // for the first. Only a charge can raise the maximum.
    const double kc = m_kc;
    double qp = m_qp, qpmax = m_qpmax;
    std::size_t last = static_cast<std::size_t>(-1);
    for (std::size_t k = 0; k < count; ++k) {
        const std::size_t j = candidates[k];
        const std::size_t g = j - last;
        qp = larger(qp * m_kdPow[g], qp * m_chargePow[g] + rect[j] * kc);
        qpmax = larger(qpmax, qp);
        last = j;
    }
    qp = qp * m_kdPow[n - 1 - last];
    m_qp = qp < kNegligible ? 0.0 : qp;
    m_qpmax = qpmax;
}

void Detectors::Finish(std::int64_t samples, Measurement& m) const {
    const double n = static_cast<double>(samples);
    const double pi = PiValue();
    // Mean of the positive half-waves times π/√2: a sine of amplitude A reads A/√2.
    m.Avg = (m_sum * kSampleScale / n / kQpCalibration) * std::pow(2.0, -0.5) / 2 * pi * 2;
    m.Ms = m_sumsq * (kSampleScale * kSampleScale) / n;
    m.Pk = m_peak * kSampleScale / kQpCalibration / std::pow(2.0, 0.5);
    m.QP = m_qpmax * kSampleScale;
}

} // namespace zav
