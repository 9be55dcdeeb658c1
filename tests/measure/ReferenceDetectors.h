#pragma once

#include "measure/Measurement.h"

#include <cmath>
#include <cstdint>
#include <vector>

namespace zav::test {

// The detectors the plain way, one sample at a time, as an oracle for the fast kernel. Reads past
// the end of `data` give 0, as a short file does. Sum = long double for millions of samples.
template <typename Sum = double>
void ReferenceDetectors(const std::vector<std::int16_t>& data, std::int64_t samples,
                        std::int32_t sampleRate, double frequencyMHz, Measurement& m) {
    const double pi = 4 * std::atan(1.0), fs = sampleRate;
    const double kc = 1 - std::exp(-1 / (fs * 0.001));
    const double kd = std::exp(-1 / (fs * (frequencyMHz > 30 ? 0.55 : 0.16)));
    const double kdc = 1 - std::exp(-1 / (fs * (1 / (2 * pi * 20))));
    auto sampleAt = [&](std::int64_t i) -> double {
        return i < static_cast<std::int64_t>(data.size()) ? data[static_cast<std::size_t>(i)] : 0;
    };
    double dc = 0, peak = 0, qp = 0, qpmax = 0;
    for (std::int64_t i = 0; i <= static_cast<std::int64_t>(std::nearbyint(fs * 0.01)); ++i)
        dc = dc + sampleAt(i) / 32768;
    dc = dc / (fs * 0.01);
    Sum sum = 0, sumsq = 0;
    for (std::int64_t i = 0; i < samples; ++i) {
        double e = sampleAt(i) / 32768 - dc;
        dc = dc + e * kdc;
        sumsq = sumsq + e * e;
        e = e > 0 ? e * 0.7589818 : 0;
        sum = sum + e;
        if (e >= peak)
            peak = e;
        qp = qp * kd;
        if (e > qp)
            qp = qp + (e - qp) * kc;
        if (qp > qpmax)
            qpmax = qp;
    }
    const double n = static_cast<double>(samples);
    m.Avg = (static_cast<double>(sum) / n / 0.7589818) * std::pow(2.0, -0.5) / 2 * pi * 2;
    m.Ms = static_cast<double>(sumsq) / n;
    m.Pk = peak / 0.7589818 / std::pow(2.0, 0.5);
    m.QP = qpmax;
    m.Calc();
}

} // namespace zav::test
