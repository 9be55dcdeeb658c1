#pragma once

#include "measure/Measurement.h"

#include <cstdint>
#include <vector>

namespace zav::test {

// The detectors written the plain way, one sample at a time in the order the operations are
// described, as an oracle for the fast kernel. `data` holds the samples from the first one on;
// reads past its end give 0, as a short file does. Fills Avg, Ms, QP, Pk and calls Calc.
// With `extendedSums` the two running sums are kept in long double: over millions of samples
// that is the closer value, against which the plain double sums drift.
void ReferenceDetectors(const std::vector<std::int16_t>& data, std::int64_t samples,
                        std::int32_t sampleRate, double frequencyMHz, Measurement& m,
                        bool extendedSums = false);

} // namespace zav::test
