#include "report/WaveformText.h"

#include "platform/Format.h"

#include <charconv>
#include <vector>

namespace zav {
namespace {

constexpr std::size_t kBlockSamples = 8192;
constexpr const char* kCrLf = "\r\n";

void appendShortest(std::string& line, double value) {
    char buf[32];
    const auto r = std::to_chars(buf, buf + sizeof buf, value);
    line.append(buf, r.ptr);
}

// Calls `line(text, time, sample)` for every sample, the time accumulated step by step: adding the
// same step each time, not multiplying, so the last digits match what the table always gave.
template <typename LineWriter>
bool forEachSample(WaveSampleReader& samples, std::ostream& out, LineWriter line) {
    const double step = 1.0 / samples.SampleRate();
    double time = 0.0;
    std::vector<std::int16_t> block(kBlockSamples);
    std::string text;
    while (const std::size_t n = samples.Read(block.data(), block.size())) {
        text.clear();
        for (std::size_t i = 0; i < n; ++i) {
            line(text, time, block[i]);
            time += step;
        }
        if (!out.write(text.data(), static_cast<std::streamsize>(text.size())))
            return false;
    }
    return true;
}

} // namespace

std::string WaveTitle(const std::string& stepTitle, const std::string& obsTime) {
    return "ZAV: " + stepTitle + " " + obsTime;
}

bool WriteGnuplotScript(WaveSampleReader& samples, const std::string& stepTitle,
                        const std::string& obsTime, std::ostream& out) {
    out << "$data << EOD" << kCrLf;
    const bool data =
        forEachSample(samples, out, [](std::string& text, double time, std::int16_t sample) {
            appendShortest(text, time);
            text += ' ';
            appendShortest(text, NormalisedVoltage(sample));
            text += kCrLf;
        });
    if (!data)
        return false;
    out << "EOD" << kCrLf                                                   //
        << "reset" << kCrLf                                                 //
        << "set title \"" << WaveTitle(stepTitle, obsTime) << "\"" << kCrLf //
        << "set xlabel \"Time (s)\"" << kCrLf                               //
        << "set ylabel \"Normalised voltage (V)\"" << kCrLf                 //
        << "set yrange [-1:1]" << kCrLf                                     //
        << "unset key" << kCrLf                                             //
        << "plot $data with lines lc rgb \"red\"" << kCrLf;
    return static_cast<bool>(out);
}

bool WriteSampleTable(WaveSampleReader& samples, std::ostream& out, char decimalSeparator) {
    out << "Time\tNormalisedVoltage" << kCrLf;
    return forEachSample(samples, out,
                         [decimalSeparator](std::string& text, double time, std::int16_t sample) {
                             text += Format(time, "0.000000", decimalSeparator);
                             text += '\t';
                             text +=
                                 Format(NormalisedVoltage(sample), "0.000000", decimalSeparator);
                             text += kCrLf;
                         }) &&
           static_cast<bool>(out);
}

} // namespace zav
