#pragma once

#include "measure/Measurement.h"
#include "measure/WaveHeader.h"
#include "platform/Dialogs.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace zav {

// One step's measurement run on a recorded WAVE file: the header check, then the four
// detectors over every sample, results into `m` (Avg, Ms, QP, Pk, then m.Calc()).
// Returns false, leaving the detector values untouched, when the file is unusable: the header
// check failed (its message is shown) or the rate or the sample count is not positive (no
// message). m.OverThreshold is true while the run is under way and false after Calc.
// A file cut short is analysed over the samples it holds, with a warning naming how many of
// the header's count were there; `info.Samples` then tells the samples analysed.
// `progress`, when given, hears the fraction done (0..1) as the samples are read.
bool AnalyseWave(const std::string& path, double frequencyMHz, Measurement& m, Dialogs& dialogs,
                 const std::function<void(double)>& progress = {});
// The same, also telling what the header said (both 0 when the header check failed).
bool AnalyseWave(const std::string& path, double frequencyMHz, Measurement& m, Dialogs& dialogs,
                 WaveInfo& info, const std::function<void(double)>& progress = {});

// The same run over samples already in memory (`count` of them, the first one first), with
// the same result and the same false for a rate or count that is not positive. The start-up
// DC estimate reads 0 past the end of a buffer shorter than 10 ms.
bool AnalyseSamples(const std::int16_t* samples, std::size_t count, std::int32_t sampleRate,
                    double frequencyMHz, Measurement& m);

} // namespace zav
