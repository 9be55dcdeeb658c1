// zavcli in-process: what only the command layer adds (number formats, progress, messages,
// bounded NMEA lines). Exit codes and refusals are checked end to end in outputs.sh.
#include "cli/Commands.h"
#include "CliRun.h"
#include "cli/CliDialogs.h"
#include "cli/NmeaInput.h"
#include "measure/WaveAnalysis.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/ScratchDir.h"
#include "testsupport/TestWave.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>

using namespace zav;
using zav::test::Cli;

TEST(AnalyseCommand, EveryFieldToNineSignificantDigitsAndJsonThatReadsBackExactly) {
    const test::TempDir dir;
    const std::string path = (dir.path / "sine.wav").string();
    test::WriteWave(path, test::Sine(32767, 1000, 44100, 44100), 44100);
    test::FakeDialogs dialogs;
    Measurement m, above;
    ASSERT_TRUE(AnalyseWave(path, 7, m, dialogs));
    ASSERT_TRUE(AnalyseWave(path, 30.001, above, dialogs));

    Cli c;
    ASSERT_EQ(c.run({"analyse", path}), kExitOk);
    const std::pair<const char*, double> want[] = {
        {"SampleRate", 44100}, {"Samples", 44100},   {"Avg", m.Avg},  {"Ms", m.Ms},
        {"Rms", m.Rms},        {"QP", m.QP},         {"Pk", m.Pk},    {"QpRms", m.QpRms},
        {"PkRms", m.PkRms},    {"AvgRms", m.AvgRms}, {"ClipFlag", -1}};
    std::istringstream out(c.out.str());
    std::string line;
    for (const auto& [key, value] : want) {
        ASSERT_TRUE(std::getline(out, line));
        const std::string text = line.substr(line.find('\t') + 1);
        EXPECT_EQ(line.substr(0, line.find('\t')), key);
        int digits = 0; // significant digits: leading zeros and the exponent do not count
        for (char ch : text.substr(0, text.find_first_of("eE")))
            digits += (ch >= '1' && ch <= '9') || (ch == '0' && digits > 0);
        EXPECT_LE(digits, 9) << text;
        EXPECT_NEAR(std::strtod(text.c_str(), nullptr), value, 5e-9 * std::fabs(value)) << key;
    }
    EXPECT_FALSE(std::getline(out, line));

    Cli j; // above 30 MHz the other quasi-peak detector; JSON numbers are the doubles themselves
    ASSERT_EQ(j.run({"analyse", "--json", path, "--frequency", "30.001"}), kExitOk);
    const std::string json = j.out.str();
    ASSERT_EQ(json.substr(json.size() - 2), "}\n");
    for (const auto& [key, value] : {std::pair{"QP", above.QP},
                                     {"Ms", above.Ms},
                                     {"AvgRms", above.AvgRms},
                                     {"ClipFlag", -1.0}}) {
        const auto at = json.find("\"" + std::string(key) + "\":");
        ASSERT_NE(at, std::string::npos) << key;
        EXPECT_EQ(std::strtod(json.c_str() + at + std::string(key).size() + 3, nullptr), value);
    }
    EXPECT_NE(above.QP, m.QP);
}

TEST(AnalyseCommand, ProgressOnATerminalForLongFilesOnly) {
    const test::TempDir dir;
    const std::string longFile = (dir.path / "long.wav").string();
    const std::string shortFile = (dir.path / "short.wav").string();
    test::WriteWave(longFile, test::Noise(3000, 6 * 44100, 2), 44100);
    test::WriteWave(shortFile, test::Noise(3000, 44100, 2), 44100);
    Cli terminal, piped, brief;
    terminal.io.errIsTerminal = brief.io.errIsTerminal = true;
    ASSERT_EQ(terminal.run({"analyse", longFile}), kExitOk);
    ASSERT_EQ(piped.run({"analyse", longFile}), kExitOk);
    ASSERT_EQ(brief.run({"analyse", shortFile}), kExitOk);
    EXPECT_NE(terminal.err.str().find("100%"), std::string::npos);
    EXPECT_EQ(piped.err.str() + brief.err.str(), "");
    EXPECT_EQ(piped.out.str(), terminal.out.str());
}

TEST(CliDialogs, MessagesGoToStandardErrorAsTitleAndText) {
    std::ostringstream err;
    CliDialogs d(err);
    d.ShowMessage("Unsupported WAVE file format.", "ZAV", MessageIcon::Critical);
    d.ShowMessage("line one\rline two\r\nthree\r", "", MessageIcon::None);
    d.ShowMessage("Bandwidth must be > 0", "Value error:", MessageIcon::None);
    EXPECT_EQ(err.str(), "ZAV: Unsupported WAVE file format.\nline one\nline two\nthree\n"
                         "Value error: Bandwidth must be > 0\n");
}

TEST(NmeaInput, LinesAsSentWithAnEndlessLineCut) {
    const test::TempDir dir;
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
