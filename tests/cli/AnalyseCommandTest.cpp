// zavcli analyse in-process: its fields against the detector run itself, exit codes, messages.
#include "CliRun.h"
#include "cli/Commands.h"
#include "measure/WaveAnalysis.h"
#include "platform/Format.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/TestWave.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

using namespace zav;
using zav::test::Cli;

namespace {

std::string scratch(const std::string& name) {
    const auto dir = std::filesystem::path(ZAV_BINARY_DIR) / "test-scratch" / "cli-analyse";
    std::filesystem::create_directories(dir);
    return (dir / name).string();
}

std::string sineFile() {
    const std::string path = scratch("sine-1000Hz-44100-16bit-1s.wav");
    test::WriteWave(path, test::Sine(32767, 1000, 44100, 44100), 44100);
    return path;
}

std::vector<std::pair<std::string, std::string>> fields(const std::string& text) {
    std::vector<std::pair<std::string, std::string>> f;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
        const auto tab = line.find('\t');
        f.push_back({line.substr(0, tab), tab == std::string::npos ? "" : line.substr(tab + 1)});
    }
    return f;
}

int significantDigits(std::string v) {
    v = v.substr(0, v.find_first_of("eE"));
    std::string digits;
    for (char c : v)
        if (c >= '0' && c <= '9')
            digits += c;
    digits.erase(0, digits.find_first_not_of('0'));
    return static_cast<int>(digits.size());
}

} // namespace

TEST(AnalyseCommand, PrintsEveryFieldToNineSignificantDigits) {
    const std::string path = sineFile();
    test::FakeDialogs dialogs;
    Measurement m;
    ASSERT_TRUE(AnalyseWave(path, 7, m, dialogs));

    Cli c;
    ASSERT_EQ(c.run({"analyse", path}), kExitOk);
    const auto f = fields(c.out.str());
    const std::vector<std::pair<std::string, double>> want = {
        {"SampleRate", 44100}, {"Samples", 44100},   {"Avg", m.Avg},  {"Ms", m.Ms},
        {"Rms", m.Rms},        {"QP", m.QP},         {"Pk", m.Pk},    {"QpRms", m.QpRms},
        {"PkRms", m.PkRms},    {"AvgRms", m.AvgRms}, {"ClipFlag", -1}};
    ASSERT_EQ(f.size(), want.size());
    for (std::size_t i = 0; i < want.size(); ++i) {
        EXPECT_EQ(f[i].first, want[i].first);
        EXPECT_LE(significantDigits(f[i].second), 9) << f[i].second;
        EXPECT_NEAR(std::strtod(f[i].second.c_str(), nullptr), want[i].second,
                    5e-9 * std::fabs(want[i].second))
            << f[i].first;
    }
    EXPECT_EQ(f[1].second, "44100");
    EXPECT_EQ(f[10].second, "-1");
    EXPECT_TRUE(c.err.str().empty());

    // JSON: the same keys, numbers that read back as the very same doubles.
    Cli j;
    ASSERT_EQ(j.run({"analyse", "--json", path, "--frequency", "30.001"}), kExitOk);
    const std::string json = j.out.str();
    EXPECT_EQ(json.front(), '{');
    EXPECT_EQ(json.substr(json.size() - 2), "}\n");
    Measurement above;
    ASSERT_TRUE(AnalyseWave(path, 30.001, above, dialogs));
    auto number = [&](const std::string& key) {
        const auto at = json.find("\"" + key + "\":");
        EXPECT_NE(at, std::string::npos) << key;
        return std::strtod(json.c_str() + at + key.size() + 3, nullptr);
    };
    EXPECT_EQ(number("SampleRate"), 44100);
    EXPECT_EQ(number("QP"), above.QP);
    EXPECT_EQ(Format(number("QP"), "0.000"), "0.736");
    EXPECT_EQ(number("Ms"), above.Ms);
    EXPECT_EQ(number("AvgRms"), above.AvgRms);
    EXPECT_EQ(number("ClipFlag"), -1);
}

TEST(AnalyseCommand, UnusableFilesAndBadUsage) {
    const std::string stereo = scratch("stereo.wav");
    std::ofstream(stereo, std::ios::binary)
        << std::string("RIFF\0\0\0\0WAVEfmt "
                       "\x10\0\0\0\x01\0\x02\0\x44\xac\0\0\0\0\0\0\x04\0\x10\0data\0\0\0\0",
                       44);
    const std::string noSamples = scratch("no-samples.wav");
    test::WriteWave(noSamples, {}, 44100);
    const std::string fifo = scratch("pipe.wav");
    std::filesystem::remove(fifo);
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    // A pipe nobody writes to and an endless device are refused, never waited on or read.
    for (auto [file, message] :
         {std::pair<std::string, std::string>{stereo, "Unsupported WAVE file format."},
          {noSamples, "no samples"},
          {scratch("absent.wav"), "cannot open"},
          {fifo, "cannot open " + fifo + ": it is not a regular file"},
          {"/dev/zero", "cannot open /dev/zero: it is not a regular file"}}) {
        Cli bad;
        EXPECT_EQ(bad.run({"analyse", file}), kExitFailed) << file;
        EXPECT_NE(bad.err.str().find(message), std::string::npos) << bad.err.str();
        EXPECT_TRUE(bad.out.str().empty());
    }

    const std::string path = sineFile();
    for (const std::vector<std::string>& args : {std::vector<std::string>{"analyse"},
                                                 {"analyse", path, "--frequency"},
                                                 {"analyse", path, "--frequency", "seven"},
                                                 {"analyse", path, "--frobnicate"},
                                                 {"analyse", path, path}}) {
        Cli u;
        EXPECT_EQ(u.run(args), kExitUsage) << args.size();
        EXPECT_TRUE(u.out.str().empty());
    }
}

TEST(AnalyseCommand, ShowsProgressOnATerminalForLongFilesOnly) {
    const std::string longFile = scratch("noise-44100-16bit-6s.wav");
    test::WriteWave(longFile, test::Noise(3000, 6 * 44100, 2), 44100);
    Cli terminal;
    terminal.io.errIsTerminal = true;
    ASSERT_EQ(terminal.run({"analyse", longFile}), kExitOk);
    EXPECT_NE(terminal.err.str().find("100%"), std::string::npos);
    Cli piped;
    ASSERT_EQ(piped.run({"analyse", longFile}), kExitOk);
    EXPECT_TRUE(piped.err.str().empty());
    EXPECT_EQ(piped.out.str(), terminal.out.str());
    Cli shortFile;
    shortFile.io.errIsTerminal = true;
    ASSERT_EQ(shortFile.run({"analyse", sineFile()}), kExitOk);
    EXPECT_TRUE(shortFile.err.str().empty());
}
