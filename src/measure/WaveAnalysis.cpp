#include "measure/WaveAnalysis.h"

#include "measure/BinaryFile.h"
#include "measure/Detectors.h"

#include <algorithm>
#include <bit>
#include <vector>

namespace zav {

namespace {

constexpr std::size_t kReadSamples = 32768; // 64 KiB per read

// Reads `count` samples at the file's position into `out` (host order, zeros past the end).
void readSamples(BinaryFile& file, std::int16_t* out, std::size_t count) {
    file.Read(out, count * sizeof(std::int16_t));
    if constexpr (std::endian::native == std::endian::big) {
        for (std::size_t i = 0; i < count; ++i) {
            const auto u = static_cast<std::uint16_t>(out[i]);
            out[i] = static_cast<std::int16_t>(static_cast<std::uint16_t>((u >> 8) | (u << 8)));
        }
    }
}

} // namespace

bool AnalyseWave(const std::string& path, double frequencyMHz, Measurement& m, Dialogs& dialogs,
                 const std::function<void(double)>& progress) {
    WaveInfo info;
    return AnalyseWave(path, frequencyMHz, m, dialogs, info, progress);
}

bool AnalyseWave(const std::string& path, double frequencyMHz, Measurement& m, Dialogs& dialogs,
                 WaveInfo& info, const std::function<void(double)>& progress) {
    // A file that cannot be opened reads as an empty one: the header check refuses it.
    BinaryFile file(path);
    info = ReadWaveHeader(file, dialogs);
    if (info.SampleRate <= 0 || info.Samples <= 0)
        return false;
    const std::int64_t first = file.Position();

    m.OverThreshold = true;
    Detectors detectors(info.SampleRate, frequencyMHz);
    std::vector<std::int16_t> buffer(kReadSamples);

    // The start-up estimate reads its samples from the file as they come, even where the
    // data chunk is shorter than 10 ms.
    for (std::int64_t left = detectors.StartupSamples(); left > 0;) {
        const auto n = static_cast<std::size_t>(std::min<std::int64_t>(left, kReadSamples));
        readSamples(file, buffer.data(), n);
        detectors.AddStartup(buffer.data(), n);
        left -= static_cast<std::int64_t>(n);
    }
    detectors.Start();

    file.Seek(first);
    const std::int64_t total = info.Samples;
    for (std::int64_t done = 0; done < total;) {
        const auto n = static_cast<std::size_t>(std::min<std::int64_t>(total - done, kReadSamples));
        readSamples(file, buffer.data(), n);
        detectors.Run(buffer.data(), n);
        done += static_cast<std::int64_t>(n);
        if (progress)
            progress(static_cast<double>(done) / static_cast<double>(total));
    }
    detectors.Finish(total, m);
    m.Calc();
    m.OverThreshold = false;
    return true;
}

bool AnalyseSamples(const std::int16_t* samples, std::size_t count, std::int32_t sampleRate,
                    double frequencyMHz, Measurement& m) {
    if (sampleRate <= 0 || count == 0)
        return false;
    m.OverThreshold = true;
    Detectors detectors(sampleRate, frequencyMHz);
    const auto startup = static_cast<std::size_t>(detectors.StartupSamples());
    detectors.AddStartup(samples, std::min(startup, count));
    detectors.Start(); // samples missing from a short buffer add nothing: they read as 0
    detectors.Run(samples, count);
    detectors.Finish(static_cast<std::int64_t>(count), m);
    m.Calc();
    m.OverThreshold = false;
    return true;
}

} // namespace zav
