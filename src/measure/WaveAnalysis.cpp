#include "measure/WaveAnalysis.h"

#include "measure/BinaryFile.h"
#include "measure/Detectors.h"

#include "platform/Version.h"

#include <algorithm>
#include <bit>
#include <string>
#include <vector>

namespace zav {

namespace {

constexpr std::size_t kReadSamples = 32768; // 64 KiB per read

// Reads `count` samples at the file's position into `out` (host order, zeros past the end);
// returns how many whole samples the file held.
std::size_t readSamples(BinaryFile& file, std::int16_t* out, std::size_t count) {
    const std::size_t bytes = file.Read(out, count * sizeof(std::int16_t));
    if constexpr (std::endian::native == std::endian::big) {
        for (std::size_t i = 0; i < count; ++i) {
            const auto u = static_cast<std::uint16_t>(out[i]);
            out[i] = static_cast<std::int16_t>(static_cast<std::uint16_t>((u >> 8) | (u << 8)));
        }
    }
    return bytes / sizeof(std::int16_t);
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
    const std::int64_t claimed = info.Samples;
    std::int64_t done = 0;
    while (done < claimed) {
        const auto n =
            static_cast<std::size_t>(std::min<std::int64_t>(claimed - done, kReadSamples));
        const std::size_t held = readSamples(file, buffer.data(), n);
        detectors.Run(buffer.data(), held);
        done += static_cast<std::int64_t>(held);
        if (progress)
            progress(static_cast<double>(done) / static_cast<double>(claimed));
        if (held < n)
            break; // the file ends before its data chunk says it does
    }
    if (done < claimed) {
        // Silence in place of the missing samples would lower every reading: only the
        // samples that are there count, and the operator hears that some were missing.
        dialogs.ShowMessage(
            "Warning: the file is shorter than its header claims: " + std::to_string(done) +
                " of " + std::to_string(claimed) + " samples analysed.",
            kAppTitle, MessageIcon::Exclamation);
        info.Samples = static_cast<std::int32_t>(done);
        if (done == 0)
            return false;
    }
    detectors.Finish(done, m);
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
