// The WAVE reader and the detectors on any file: no crash, no hang, values finite.
#include "FuzzFile.h"
#include "measure/WaveAnalysis.h"
#include "platform/SilentDialogs.h"

#include <cmath>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string path = FuzzFile(data, size, ".wav");
    zav::SilentDialogs dialogs;
    zav::BinaryFile file(path);
    const zav::WaveInfo info = zav::ReadWaveHeader(file, dialogs);
    // A header may claim up to 2^31 samples: analyse only what the input can hold, so a run
    // stays short (missing samples read as 0 and are covered by the tests).
    if (info.SampleRate > 0 && info.Samples > 0 && info.Samples <= 1 << 16) {
        zav::Measurement m;
        if (zav::AnalyseWave(path, 7.0, m, dialogs) &&
            !(std::isfinite(m.Ms) && std::isfinite(m.QP) && std::isfinite(m.Pk)))
            std::abort();
    }
    return 0;
}
