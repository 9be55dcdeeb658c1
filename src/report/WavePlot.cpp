#include "report/WavePlot.h"

#include "report/WaveSampleReader.h"
#include "report/WaveformText.h"

#include <algorithm>

namespace zav {

std::optional<WavePlot> LoadWavePlot(const std::string& wavePath, const std::string& stepTitle,
                                     const std::string& obsTime, Dialogs& dialogs) {
    WaveSampleReader reader;
    if (reader.Open(wavePath, dialogs) != WaveSampleReader::Status::Ok)
        return std::nullopt;
    WavePlot plot;
    plot.title = WaveTitle(stepTitle, obsTime);
    plot.obsTime = obsTime;
    plot.sampleRate = reader.SampleRate();
    plot.samplesInFile = reader.Samples();
    plot.samples.resize(static_cast<std::size_t>(std::min(reader.Samples(), kMaxPlotSamples)));
    std::size_t done = 0;
    while (done < plot.samples.size()) {
        const std::size_t n = reader.Read(plot.samples.data() + done, plot.samples.size() - done);
        if (n == 0)
            break;
        done += n;
    }
    plot.samples.resize(done);
    plot.spectrum = AverageSpectrum(plot.samples, plot.sampleRate);
    return plot;
}

} // namespace zav
