#pragma once

#include "measure/Measurement.h"

#include <cstddef>
#include <cstdint>

namespace zav {

// The four detectors (average, RMS, quasi-peak, peak) behind a DC-tracking high-pass, fed
// with signed 16-bit samples in blocks of any size. Memory is constant whatever the length.
//
// Use: feed the first StartupSamples() samples to AddStartup (the DC offset's first
// estimate), call Start, feed every sample from the first one again to Run, then Finish.
class Detectors {
public:
    // The QP detector calibration: with it the QP reading of a steady sine equals its RMS
    // value (for the 0.16 s discharge); the average and peak readings divide it out again.
    static constexpr double kQpCalibration = 0.7589818;

    Detectors(std::int32_t sampleRate, double frequencyMHz);

    // First 10 ms plus one sample, the 10 ms rounded half to even.
    std::int64_t StartupSamples() const { return m_startupSamples; }
    void AddStartup(const std::int16_t* samples, std::size_t count);
    // The start-up sum is divided by the unrounded 10 ms count, not by the number of samples
    // summed: the slight over-estimate is part of the detector's known behaviour.
    void Start();

    void Run(const std::int16_t* samples, std::size_t count);

    // Avg, Ms, QP and Pk over `samples` samples; Calc is the caller's.
    void Finish(std::int64_t samples, Measurement& m) const;

private:
    void runBlock(const std::int16_t* samples, std::size_t count);

    double m_fs;
    double m_kc, m_kd, m_kdc;
    std::int64_t m_startupSamples;
    std::int64_t m_startupSum = 0; // of the raw samples: exact for any start-up length
    std::int64_t m_startupSeen = 0;

    // Derived constants for the block kernel.
    double m_a[5]; // (1 - kdc)^j, j = 0..4: the DC estimate's decay over j samples
    static constexpr std::size_t kBlock = 256; // samples per kernel pass
    double m_kdPow[kBlock + 1];                // kd^g: g discharges
    double m_chargePow[kBlock + 1]; // kd^g·(1 - kc): g discharges, then the charge's share
    double m_skipBelow; // kd^kBlock less a margin: within a block, no charge under qp·this

    // Running state, in sample units (full scale 32768).
    double m_dc = 0;
    double m_sum = 0, m_sumsq = 0, m_peak = 0;
    double m_qp = 0, m_qpmax = 0;
};

} // namespace zav
