#include "report/WaveformExports.h"
#include "measure/WaveBytes.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"
#include "testsupport/ScratchDir.h"
#include "testsupport/TestWave.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

// Every sample against sox and the script through the real gnuplot: tests/cli/outputs.sh.

using namespace zav;
namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

namespace {

// Lines of a CR LF text; a bare LF fails the test.
Lines crlfLines(const std::string& text) {
    Lines lines;
    for (std::size_t start = 0, lf; (lf = text.find('\n', start)) != std::string::npos;
         start = lf + 1) {
        EXPECT_TRUE(lf > start && text[lf - 1] == '\r') << "bare LF at " << lf;
        lines.push_back(text.substr(start, lf - start - (lf > start)));
    }
    return lines;
}

struct FakeOutput : AudioOutput {
    std::vector<std::string> played;
    std::optional<DeviceError> answer;
    std::optional<DeviceError> PlayWave(const std::string& path) override {
        played.push_back(path);
        return answer;
    }
};

struct Exports {
    fs::path dir = test::ScratchDir();
    WaveformSource source{(dir / "~0000ABCD.wav").string(), "20240501120000", "External Noise",
                          dir.string()};
    CommandStates commands;
    test::FakeDialogs dialogs;
    test::FakeClipboard clipboard;
    FakeOutput output;
    WaveformExports model{[this] { return source; }, commands, {dialogs, clipboard, output}};
};

} // namespace

TEST(WaveformExports, SampleTableAndGnuplotScriptCarryEverySample) {
    Exports e;
    std::vector<std::int16_t> samples = test::Noise(6000, 8000, 7);
    samples[0] = -32768, samples[1] = 16384, samples[2] = 32767, samples[3] = -1;
    samples.back() = 0;
    test::WriteWave(e.source.wavePath, samples, 8000);
    e.model.copyWaveSamples();
    e.model.decimalSeparator = ',';
    e.model.copyWaveSamples();
    ASSERT_EQ(e.clipboard.texts.size(), 2u);
    Lines lines = crlfLines(e.clipboard.texts[0]);
    ASSERT_EQ(lines.size(), 8001u);
    lines.erase(lines.begin() + 5, lines.end() - 1);
    EXPECT_EQ(lines, (Lines{"Time\tNormalisedVoltage", "0.000000\t-1.000000", "0.000125\t0.500000",
                            "0.000250\t0.999969", "0.000375\t-0.000031", "0.999875\t0.000000"}));
    EXPECT_EQ(crlfLines(e.clipboard.texts[1])[2], "0,000125\t0,500000");

    e.dialogs.files.push_back((e.dir / "out.plt").string());
    e.model.exportGnuplot();
    const FileDialogRequest& asked = e.dialogs.fileRequests.at(0);
    EXPECT_EQ(asked.filter + "|" + std::to_string(asked.filterIndex) + "|" + asked.fileName + "|" +
                  asked.initialDir,
              "All Files (*.*)|*.*|Plot files (*.plt)|*.plt|2|20240501120000|" + e.dir.string());
    Lines plt = crlfLines(test::ReadFile(e.dir / "out.plt"));
    ASSERT_EQ(plt.size(), samples.size() + 9);
    std::istringstream row(plt[2]);
    double t = 0, v = 0;
    row >> t >> v;
    EXPECT_EQ(std::make_pair(t, v * 32768), std::make_pair(1.0 / 8000, 16384.0));
    plt.erase(plt.begin() + 1, plt.end() - 8);
    EXPECT_EQ(
        plt,
        (Lines{"$data << EOD", "EOD", "reset", "set title \"ZAV: External Noise 20240501120000\"",
               "set xlabel \"Time (s)\"", "set ylabel \"Normalised voltage (V)\"",
               "set yrange [-1:1]", "unset key", "plot $data with lines lc rgb \"red\""}));
}

TEST(WaveformExports, UnreadableRecordingsAndFailedCopiesSayWhyAndLeaveTheOldFiles) {
    Exports e;
    bool shown = false;
    e.model.showPlot = [&](WavePlot) { shown = true; };
    test::WriteBytes(e.source.wavePath, test::WaveHeader{}.Bytes()); // a header, no samples
    e.dialogs.files.push_back((e.dir / "x.plt").string());
    e.model.exportGnuplot();
    e.model.copyWaveSamples();
    e.model.plotWave();
    EXPECT_TRUE(e.dialogs.fileRequests.empty() && e.dialogs.messages.empty() &&
                e.clipboard.texts.empty() && !shown);
    test::WaveHeader cut; // promises 1000 samples, holds 3 and a half: 3 rows
    cut.dataSize = 2000;
    test::WriteBytes(e.source.wavePath, cut.Bytes({100, 200, 300}) + '\x01');
    e.model.copyWaveSamples();
    EXPECT_EQ(crlfLines(e.clipboard.texts.at(0)).size(), 4u);

    // Saved as a copy; cancelled: nothing said; into a missing folder, or without a
    // recording: said, and the chosen file stays as it was.
    const fs::path target = e.dir / "copy.wav", missing = e.dir / "no" / "such.plt";
    test::WriteWave(e.source.wavePath, test::Noise(3000, 5000, 3), 22050);
    std::ofstream(target) << "an older and much longer file than nothing at all";
    e.dialogs.files = {target.string(), std::nullopt, missing.string(), target.string()};
    e.model.saveWave();
    EXPECT_EQ(e.dialogs.fileRequests.back().filter, "All Files (*.*)|*.*|Wave files (*.wav)|*.wav");
    const std::string copy = test::ReadFile(target);
    EXPECT_EQ(copy, test::ReadFile(e.source.wavePath));
    e.model.exportGnuplot();
    e.model.exportGnuplot();
    fs::remove(e.source.wavePath);
    e.model.saveWave();
    EXPECT_EQ(test::ReadFile(target), copy);
    EXPECT_EQ(e.dialogs.texts(), (Lines{"Error: the file could not be saved: cannot write " +
                                            missing.string() + ": No such file or directory",
                                        "Error: the file could not be saved: " + e.source.wavePath +
                                            ": No such file or directory"}));
    for (const auto& entry : fs::directory_iterator(e.dir))
        EXPECT_NE(entry.path().extension(), ".tmp") << entry.path();
}

TEST(WaveformExports, PlayFailureSaysWhyThePlotGetsEverySampleAndAStepEnablesThem) {
    Exports e;
    e.output.answer = DeviceError{263, "The specified device is not open."};
    e.model.playWave();
    EXPECT_EQ(e.output.played, Lines{e.source.wavePath});
    EXPECT_EQ(e.dialogs.texts(),
              Lines{"Error: playing wave file: The specified device is not open.(263)."});
    const auto samples = test::Sine(8000, 440, 11025, 11025);
    test::WriteWave(e.source.wavePath, samples, 11025);
    std::vector<WavePlot> shown;
    e.model.showPlot = [&](WavePlot p) { shown.push_back(std::move(p)); };
    e.model.plotWave();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].title + std::to_string(shown[0].sampleRate),
              "ZAV: External Noise 2024050112000011025");
    EXPECT_EQ(shown[0].samples, samples);
    e.model.enableWaveCommands(); // after a step: every wave command, but not the results'
    EXPECT_TRUE(e.model.saveWaveEnabled && e.model.copyWaveEnabled && e.model.plotWaveEnabled &&
                e.model.playWaveEnabled && e.commands.exportGnuplotEnabled &&
                !e.commands.saveTextEnabled);
}
