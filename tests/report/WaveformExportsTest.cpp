#include "report/WaveformExports.h"
#include "measure/WaveBytes.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"
#include "testsupport/TestWave.h"

#include "testsupport/ScratchDir.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

// The script through the real gnuplot, and both texts against sox's reading of the samples:
// tests/cli/export.sh.

using namespace zav;
namespace fs = std::filesystem;

namespace {

// Lines of a CR LF text; a bare LF fails the test.
std::vector<std::string> crlfLines(const std::string& text) {
    std::vector<std::string> lines;
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

    void record(const std::vector<std::int16_t>& samples, int rate) {
        test::WriteWave(source.wavePath, samples, rate);
    }
};

} // namespace

TEST(WaveformExports, SampleTableTimesAndVoltagesAsFormatted) {
    Exports e;
    std::vector<std::int16_t> samples(8000, 0);
    samples[0] = -32768;
    samples[1] = 16384;
    samples[2] = 32767;
    samples[3] = -1;
    e.record(samples, 8000);
    e.model.copyWaveSamples();
    ASSERT_EQ(e.clipboard.texts.size(), 1u);
    const auto lines = crlfLines(e.clipboard.texts[0]);
    ASSERT_EQ(lines.size(), 8001u);
    EXPECT_EQ(lines[0], "Time\tNormalisedVoltage");
    EXPECT_EQ(lines[1], "0.000000\t-1.000000");
    EXPECT_EQ(lines[2], "0.000125\t0.500000");
    EXPECT_EQ(lines[3], "0.000250\t0.999969");
    EXPECT_EQ(lines[4], "0.000375\t-0.000031");
    EXPECT_EQ(lines.back(), "0.999875\t0.000000");
    EXPECT_TRUE(e.dialogs.fileRequests.empty());

    e.model.decimalSeparator = ',';
    e.model.copyWaveSamples();
    EXPECT_EQ(crlfLines(e.clipboard.texts.at(1))[2], "0,000125\t0,500000");
}

TEST(WaveformExports, GnuplotScriptRoundTripsEverySample) {
    Exports e;
    std::vector<std::int16_t> samples = test::Noise(6000, 44100, 7);
    samples[100] = -32768;
    samples[101] = 32767;
    e.record(samples, 44100);
    const fs::path script = e.dir / "out.plt";
    e.dialogs.files.push_back(script.string());
    e.model.exportGnuplot();

    ASSERT_EQ(e.dialogs.fileRequests.size(), 1u);
    const FileDialogRequest& request = e.dialogs.fileRequests[0];
    EXPECT_EQ(request.filter, "All Files (*.*)|*.*|Plot files (*.plt)|*.plt");
    EXPECT_EQ(request.filterIndex, 2);
    EXPECT_EQ(request.fileName + "|" + request.initialDir, "20240501120000|" + e.dir.string());

    const auto lines = crlfLines(test::ReadFile(script));
    ASSERT_EQ(lines.size(), samples.size() + 9);
    EXPECT_EQ(lines[0], "$data << EOD");
    const std::vector<std::string> tail(lines.end() - 8, lines.end());
    EXPECT_EQ(tail, (std::vector<std::string>{
                        "EOD", "reset", "set title \"ZAV: External Noise 20240501120000\"",
                        "set xlabel \"Time (s)\"", "set ylabel \"Normalised voltage (V)\"",
                        "set yrange [-1:1]", "unset key", "plot $data with lines lc rgb \"red\""}));
    // Full precision: the numbers read back give the very sample, and the very time that
    // adding 1 / rate up gives (a product k / rate differs in the last digits).
    double time = 0;
    for (std::size_t k = 0; k < samples.size(); ++k) {
        char* end = nullptr;
        const double t = std::strtod(lines[k + 1].c_str(), &end);
        ASSERT_EQ(*end, ' ') << lines[k + 1];
        const double v = std::strtod(end, &end);
        ASSERT_EQ(*end, '\0') << lines[k + 1];
        ASSERT_EQ(t, time) << "line " << k + 1;
        ASSERT_EQ(v * 32768.0, samples[k]) << "line " << k + 1;
        time += 1.0 / 44100;
    }
}

TEST(WaveformExports, NothingToExportShowsNoDialog) {
    Exports e;
    test::WriteBytes(e.source.wavePath, test::WaveHeader{}.Bytes()); // a header, no samples
    e.dialogs.files.push_back((e.dir / "x.plt").string());
    e.model.exportGnuplot();
    e.model.copyWaveSamples();
    bool shown = false;
    e.model.showPlot = [&](WavePlot) { shown = true; };
    e.model.plotWave();
    EXPECT_TRUE(e.dialogs.fileRequests.empty());
    EXPECT_TRUE(e.dialogs.messages.empty());
    EXPECT_TRUE(e.clipboard.texts.empty());
    EXPECT_FALSE(shown);
    EXPECT_FALSE(fs::exists(e.dir / "x.plt"));

    // A stereo file is refused by the header check, which says so; still no file dialog.
    test::WaveHeader stereo;
    stereo.align = 4;
    test::WriteBytes(e.source.wavePath, stereo.Bytes({1, 2, 3, 4}));
    e.model.exportGnuplot();
    EXPECT_TRUE(e.dialogs.fileRequests.empty());
    EXPECT_EQ(e.dialogs.texts(), std::vector<std::string>{"Unsupported WAVE file format."});

    // A header that promises 1000 samples over a file holding 3 and a half: 3 rows.
    test::WaveHeader cut;
    cut.dataSize = 2000;
    test::WriteBytes(e.source.wavePath, cut.Bytes({100, 200, 300}) + '\x01');
    e.model.copyWaveSamples();
    ASSERT_EQ(e.clipboard.texts.size(), 1u);
    EXPECT_EQ(crlfLines(e.clipboard.texts[0]).size(), 4u);
}

TEST(WaveformExports, SaveWaveCopiesAndFailuresSayWhyLeavingTheOldFile) {
    Exports e;
    e.record(test::Noise(3000, 5000, 3), 22050);
    const fs::path target = e.dir / "copy.wav";
    std::ofstream(target) << "an older and much longer file than nothing at all";
    e.dialogs.files.push_back(target.string());
    e.model.saveWave();
    ASSERT_EQ(e.dialogs.fileRequests.size(), 1u);
    EXPECT_EQ(e.dialogs.fileRequests[0].filter, "All Files (*.*)|*.*|Wave files (*.wav)|*.wav");
    EXPECT_EQ(test::ReadFile(target), test::ReadFile(e.source.wavePath));

    // Cancelled: nothing said. Into a folder that does not exist: said, nothing left behind.
    const fs::path keep = e.dir / "keep.plt";
    std::ofstream(keep) << "old";
    e.dialogs.files = {std::nullopt, std::nullopt, (e.dir / "no" / "such.plt").string()};
    e.model.exportGnuplot();
    e.model.saveWave();
    e.model.exportGnuplot();
    // Without a recording the copy fails and the chosen file stays as it was.
    const std::string before = test::ReadFile(target);
    fs::remove(e.source.wavePath);
    e.dialogs.files.push_back(target.string());
    e.model.saveWave();
    e.model.exportGnuplot(); // no recording: not even a dialog
    EXPECT_EQ(e.dialogs.fileRequests.size(), 5u);
    EXPECT_EQ(test::ReadFile(target), before);
    EXPECT_EQ(test::ReadFile(keep), "old");
    EXPECT_EQ(e.dialogs.texts(),
              (std::vector<std::string>{"Error: the file could not be saved: cannot write " +
                                            (e.dir / "no" / "such.plt").string() +
                                            ": No such file or directory",
                                        "Error: the file could not be saved: " + e.source.wavePath +
                                            ": No such file or directory"}));
    for (const auto& entry : fs::directory_iterator(e.dir))
        EXPECT_NE(entry.path().extension(), ".tmp") << entry.path();
}

TEST(WaveformExports, PlayPlotAndEnabledStates) {
    Exports e;
    e.model.playWave();
    EXPECT_EQ(e.output.played, std::vector<std::string>{e.source.wavePath});
    EXPECT_TRUE(e.dialogs.messages.empty());
    e.output.answer = DeviceError{263, "The specified device is not open."};
    e.model.playWave();
    EXPECT_EQ(e.dialogs.texts(), std::vector<std::string>{"Error: playing wave file: The "
                                                          "specified device is not open.(263)."});
    EXPECT_EQ(e.dialogs.messages[0].icon, MessageIcon::Critical);

    const auto samples = test::Sine(8000, 440, 11025, 11025);
    e.record(samples, 11025);
    std::vector<WavePlot> shown;
    e.model.showPlot = [&](WavePlot p) { shown.push_back(std::move(p)); };
    e.model.plotWave();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].title, "ZAV: External Noise 20240501120000");
    EXPECT_EQ(shown[0].sampleRate, 11025);
    EXPECT_EQ(shown[0].samples, samples);

    EXPECT_FALSE(e.model.saveWaveEnabled || e.model.copyWaveEnabled || e.model.plotWaveEnabled ||
                 e.model.playWaveEnabled || e.commands.exportGnuplotEnabled);
    e.model.enableWaveCommands();
    EXPECT_TRUE(e.model.saveWaveEnabled && e.model.copyWaveEnabled && e.model.plotWaveEnabled &&
                e.model.playWaveEnabled && e.commands.exportGnuplotEnabled);
    EXPECT_FALSE(e.commands.saveTextEnabled);
}
