// zavcli in-process: what only the command layer adds; refusals are in the scripts.
#include "cli/Commands.h"
#include "cli/CliDialogs.h"
#include "cli/NmeaInput.h"
#include "measure/WaveAnalysis.h"
#include "platform/Conversions.h"
#include "platform/Format.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/ScratchDir.h"
#include "testsupport/TestWave.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>

using namespace zav;
using namespace zav::test;

namespace {

struct Cli {
    std::ostringstream out, err;
    CliIo io{out, err, false};
    int run(std::vector<std::string> args) { return RunCli(args, io); }
};

std::map<std::string, std::string> fields(const std::string& text) {
    std::map<std::string, std::string> f;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        if (const auto tab = line.find('\t'); tab != std::string::npos)
            f[line.substr(0, tab)] = line.substr(tab + 1);
    return f;
}

double jsonNumber(const std::string& json, const std::string& key, std::size_t from = 0) {
    const auto at = json.find("\"" + key + "\":", from);
    EXPECT_NE(at, std::string::npos) << key;
    return at == std::string::npos ? NAN : std::strtod(json.c_str() + at + key.size() + 3, nullptr);
}

} // namespace

TEST(AnalyseCommand, NineSignificantDigitsJsonThatReadsBackAndProgressOnATerminalOnly) {
    const TempDir dir;
    const std::string path = (dir.path / "sine.wav").string();
    WriteWave(path, Sine(32767, 1000, 44100, 6 * 44100), 44100);
    FakeDialogs dialogs;
    Measurement m, above;
    ASSERT_TRUE(AnalyseWave(path, 7, m, dialogs) && AnalyseWave(path, 30.001, above, dialogs));
    Cli c, j, terminal;
    terminal.io.errIsTerminal = true;
    ASSERT_EQ(c.run({"analyse", path}) + terminal.run({"analyse", path}), kExitOk);
    EXPECT_EQ(c.err.str() + c.out.str(), terminal.out.str());
    EXPECT_NE(terminal.err.str().find("100%"), std::string::npos);
    const auto f = fields(c.out.str());
    EXPECT_EQ(f.size(), 11u);
    const std::pair<const char*, double> want[] = {
        {"SampleRate", 44100}, {"Samples", 6 * 44100}, {"Avg", m.Avg},  {"Ms", m.Ms},
        {"Rms", m.Rms},        {"QP", m.QP},           {"Pk", m.Pk},    {"QpRms", m.QpRms},
        {"PkRms", m.PkRms},    {"AvgRms", m.AvgRms},   {"ClipFlag", -1}};
    for (const auto& [key, value] : want) {
        const std::string text = f.count(key) ? f.at(key) : "";
        int digits = 0; // significant digits: leading zeros and the exponent do not count
        for (char ch : text.substr(0, text.find_first_of("eE")))
            digits += (ch >= '1' && ch <= '9') || (ch == '0' && digits > 0);
        EXPECT_LE(digits, 9) << text;
        EXPECT_NEAR(std::strtod(text.c_str(), nullptr), value, 5e-9 * std::fabs(value)) << key;
    }
    // Above 30 MHz the other quasi-peak detector; JSON numbers are the doubles themselves.
    ASSERT_EQ(j.run({"analyse", "--json", path, "--frequency", "30.001"}), kExitOk);
    EXPECT_TRUE(j.out.str().ends_with("}\n") && above.QP != m.QP);
    for (const auto& [key, value] : {std::pair{"QP", above.QP}, {"Ms", above.Ms}})
        EXPECT_EQ(jsonNumber(j.out.str(), key), value) << key;
}

TEST(CliDialogs, MessagesGoToStandardErrorAsTitleAndText) {
    std::ostringstream err;
    CliDialogs d(err);
    d.ShowMessage("Unsupported WAVE file format.", "ZAV", MessageIcon::Critical);
    d.ShowMessage("line one\rline two\r\nthree\r", "", MessageIcon::None);
    EXPECT_EQ(err.str(), "ZAV: Unsupported WAVE file format.\nline one\nline two\nthree\n");
}

TEST(NmeaInput, LinesAsSentWithAnEndlessLineCut) {
    const TempDir dir;
    const auto file = dir.path / "lines.nmea";
    std::ofstream(file, std::ios::binary)
        << std::string(100000, 'A') + "\r\n$GPGGA,1\r\nglued\rtwo\n\nlast";
    NmeaInput in;
    std::string error, line;
    ASSERT_TRUE(in.Open(file.string(), error)) << error;
    std::vector<std::string> lines;
    while (in.Read(line) == NmeaInput::Next::Line)
        lines.push_back(line);
    EXPECT_EQ(lines, (std::vector<std::string>{std::string(kMaxNmeaLineBytes, 'A'), "$GPGGA,1",
                                               "glued\rtwo", "", "last"})); // only LF ends a line
}

// A quiet sound card, the receiver and a noise diode on (noise of 3, 100 and 316 counts), and
// profiles of the given noise figure with 4 dB lost ahead of the receiver.
TEST(MeasureCalibrate, NoiseDiodeRoundTripAndItsSiteComparison) {
    const TempDir dir;
    std::vector<std::string> files;
    for (const int rms : {3, 100, 316}) {
        files.push_back((dir.path / (std::to_string(rms) + ".wav")).string());
        WriteWave(files.back(), Noise(rms, 16000, rms), 8000);
    }
    const auto measure = [&](Cli& c, const std::string& rxNf, std::vector<std::string> options) {
        const std::string profile = (dir.path / "nf.zav").string();
        std::ofstream(profile, std::ios::binary)
            << "[conditions]\r\nRxNF=" << rxNf << "\r\nBandwidth=2700\r\nFrequency=7.100\r\n"
            << "AntGain=0.00\r\nAttenuator=3.0\r\nLoss=1.0\r\n";
        options.insert(options.begin(), {"measure", "--profile", profile});
        options.insert(options.end(), files.begin(), files.end());
        return c.run(options);
    };
    Cli json, cal, other, again;
    ASSERT_EQ(measure(json, "8.00", {"--json"}), kExitOk) << json.err.str();
    const double y = jsonNumber(json.out.str(), "yfact");
    ASSERT_GT(y, 5);
    ASSERT_EQ(measure(cal, "8.00", {"--calibrate", "enr:15"}), kExitOk);
    // The figures instead of the report: NF = ENR − 10·log10(Y − 1) − loss ahead.
    const double nf = 15 - 10 * std::log10(y - 1) - 4.0, kTB = 1.3806504e-23 * 290 * 2700 * 1000;
    EXPECT_EQ(fields(cal.out.str()),
              (std::map<std::string, std::string>{
                  {"RxNF", Format(nf, "0.00")},
                  {"SystemNF", Format(nf + 4.0, "0.00")},
                  {"YFactorDb", Format(10 * std::log10(y), "0.00")},
                  {"NoiseFloor", Format(nf + 10 * std::log10(kTB), "0.00")}}));
    // The same source as a carrier in the set-up bandwidth; with --json, at full precision.
    const std::string carrier = Format(NoiseDensity + 15 + 10 * std::log10(2700.0), "0.000000");
    ASSERT_EQ(measure(other, "8.00", {"--json", "--calibrate", "carrier:" + carrier}), kExitOk);
    const auto at = other.out.str().find("\"calibration\":{");
    ASSERT_NE(at, std::string::npos);
    EXPECT_NEAR(jsonNumber(other.out.str(), "RxNF", at), nf, 1e-5);
    // Applied, the external noise is the diode's own T0·(1 + ENR): Fa = 10·log10(1 + 10^1.5).
    ASSERT_EQ(measure(again, Format(nf, "0.00"), {"--json"}), 0);
    EXPECT_NEAR(jsonNumber(again.out.str(), "Fa"), 10 * std::log10(1 + std::pow(10.0, 1.5)),
                0.0051);
}
