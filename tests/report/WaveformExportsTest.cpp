#include "report/WaveformExports.h"
#include "measure/WaveBytes.h"
#include "report/DplotCommand.h"
#include "report/Fft.h"
#include "report/MinMaxDecimation.h"
#include "report/SoundControls.h"
#include "report/Spectrum.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"
#include "testsupport/ScratchDir.h"
#include "testsupport/TestWave.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>

using namespace zav;
namespace fs = std::filesystem;
using Lines = std::vector<std::string>;
using cd = std::complex<double>;

namespace {

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

struct FakeShell : Shell {
    int failures = 0; // Run fails this many times first
    std::vector<std::string> runs;
    int Open(const std::string&) override { return 33; }
    bool Run(const std::string& program, const std::string& arguments) override {
        runs.push_back(program + (arguments.empty() ? "" : " " + arguments));
        return static_cast<int>(runs.size()) > failures;
    }
};

std::size_t peakBin(const Spectrum& s) {
    return static_cast<std::size_t>(std::max_element(s.levelDbfs.begin(), s.levelDbfs.end()) -
                                    s.levelDbfs.begin());
}

constexpr double kStep = 1.0 / 44100;

std::size_t indexOf(const PlotPoint& p) {
    return static_cast<std::size_t>(std::lround(p.x / kStep));
}

// Each point a real sample, in time order, each column showing its lowest and highest.
void expectFaithful(const std::vector<std::int16_t>& s, std::size_t first, std::size_t last,
                    std::size_t columns) {
    const auto points = DecimateMinMax(s, first, last, columns, kStep);
    ASSERT_LE(points.size(), 2 * columns);
    std::size_t p = 0;
    for (std::size_t c = 0; c < columns; ++c) {
        const std::size_t begin = first + (last - first) * c / columns;
        const std::size_t end = first + (last - first) * (c + 1) / columns;
        std::vector<std::int16_t> shown;
        for (; p < points.size() && indexOf(points[p]) < end; ++p) {
            ASSERT_GE(indexOf(points[p]), begin) << "point " << p << " out of order";
            ASSERT_EQ(points[p].y, s[indexOf(points[p])] / 32768.0) << "not a sample";
            shown.push_back(s[indexOf(points[p])]);
        }
        ASSERT_FALSE(shown.empty()) << "column " << c;
        const auto [lo, hi] = std::minmax_element(s.begin() + long(begin), s.begin() + long(end));
        const auto [slo, shi] = std::minmax_element(shown.begin(), shown.end());
        EXPECT_EQ(std::make_pair(*slo, *shi), std::make_pair(*lo, *hi)) << "column " << c;
    }
    EXPECT_EQ(p, points.size());
}

} // namespace

// Every sample against sox, the script through the real gnuplot: tests/cli/outputs.sh.
TEST(WaveformExports, SampleTableAndGnuplotScriptCarryEverySample) {
    Exports e;
    test::WriteWave(e.source.wavePath, {-32768, 16384, 32767, -1, 0}, 8000);
    e.dialogs.files.push_back((e.dir / "out.plt").string());
    e.model.copyWaveSamples(), e.model.decimalSeparator = ',', e.model.copyWaveSamples();
    e.model.exportGnuplot();
    EXPECT_EQ(e.clipboard.texts,
              (Lines{"Time\tNormalisedVoltage\r\n0.000000\t-1.000000\r\n0.000125\t0.500000\r\n"
                     "0.000250\t0.999969\r\n0.000375\t-0.000031\r\n0.000500\t0.000000\r\n",
                     "Time\tNormalisedVoltage\r\n0,000000\t-1,000000\r\n0,000125\t0,500000\r\n"
                     "0,000250\t0,999969\r\n0,000375\t-0,000031\r\n0,000500\t0,000000\r\n"}));
    const FileDialogRequest& asked = e.dialogs.fileRequests.at(0);
    EXPECT_EQ(asked.filter + "|" + std::to_string(asked.filterIndex) + "|" + asked.fileName + "|" +
                  asked.initialDir,
              "All Files (*.*)|*.*|Plot files (*.plt)|*.plt|2|20240501120000|" + e.dir.string());
    EXPECT_EQ(test::ReadFile(e.dir / "out.plt"),
              "$data << EOD\r\n0 -1\r\n0.000125 0.5\r\n0.00025 0.999969482421875\r\n"
              "0.000375 -3.0517578125e-05\r\n5e-04 0\r\nEOD\r\nreset\r\n"
              "set title \"ZAV: External Noise 20240501120000\"\r\nset xlabel \"Time (s)\"\r\n"
              "set ylabel \"Normalised voltage (V)\"\r\nset yrange [-1:1]\r\nunset key\r\n"
              "plot $data with lines lc rgb \"red\"\r\n");
}

TEST(WaveformExports, UnreadableRecordingsAndFailedCopiesSayWhyAndLeaveTheOldFiles) {
    Exports e;
    bool shown = false;
    e.model.showPlot = [&](WavePlot) { shown = true; };
    test::WriteBytes(e.source.wavePath, test::WaveHeader{}.Bytes()); // a header, no samples
    e.dialogs.files.push_back((e.dir / "x.plt").string());
    e.model.exportGnuplot(), e.model.copyWaveSamples(), e.model.plotWave();
    EXPECT_TRUE(e.dialogs.fileRequests.empty() && e.dialogs.messages.empty() &&
                e.clipboard.texts.empty() && !shown);

    // Saved; cancelled; into a missing folder or without a recording: said, the file kept.
    const fs::path target = e.dir / "copy.wav", missing = e.dir / "no" / "such.plt";
    test::WriteWave(e.source.wavePath, test::Noise(3000, 5000, 3), 22050);
    std::ofstream(target) << "an older and much longer file than nothing at all";
    e.dialogs.files = {target.string(), std::nullopt, missing.string(), target.string()};
    e.model.saveWave();
    EXPECT_EQ(e.dialogs.fileRequests.back().filter, "All Files (*.*)|*.*|Wave files (*.wav)|*.wav");
    const std::string copy = test::ReadFile(target);
    EXPECT_EQ(copy, test::ReadFile(e.source.wavePath));
    e.model.exportGnuplot(), e.model.exportGnuplot(), fs::remove(e.source.wavePath);
    e.model.saveWave();
    EXPECT_EQ(test::ReadFile(target), copy);
    EXPECT_EQ(e.dialogs.texts(), (Lines{"Error: the file could not be saved: cannot write " +
                                            missing.string() + ": No such file or directory",
                                        "Error: the file could not be saved: " + e.source.wavePath +
                                            ": No such file or directory"}));
}

TEST(WaveformExports, PlayFailureSaysWhyThePlotGetsEverySampleAndAStepEnablesThem) {
    Exports e;
    e.output.answer = DeviceError{263, "The specified device is not open."};
    e.model.playWave();
    EXPECT_EQ(e.output.played.at(0) + "|" + e.dialogs.texts().at(0),
              e.source.wavePath +
                  "|Error: playing wave file: The specified device is not open.(263).");
    const auto samples = test::Sine(8000, 440, 11025, 11025);
    test::WriteWave(e.source.wavePath, samples, 11025);
    WavePlot shown;
    e.model.showPlot = [&](WavePlot p) { shown = std::move(p); };
    e.model.plotWave();
    EXPECT_EQ(shown.title + std::to_string(shown.sampleRate),
              "ZAV: External Noise 2024050112000011025");
    EXPECT_EQ(shown.samples, samples);
    e.model.enableWaveCommands(); // after a step: every wave command, but not the results'
    EXPECT_TRUE(e.model.saveWaveEnabled && e.model.copyWaveEnabled && e.model.plotWaveEnabled &&
                e.model.playWaveEnabled && e.commands.exportGnuplotEnabled &&
                !e.commands.saveTextEnabled);
}

TEST(UtilityMenu, DplotNamesTheDocumentFromVersionTwoOneTwoEight) {
    using P = std::pair<const char*, bool>;
    for (const auto& [version, withName] : {P{"2.1.2.8", true}, P{"2.1.3", true}, P{"10.0", true},
                                            P{"2.1.2.7", false}, P{"1.9.9.9", false}, P{"", false}})
        EXPECT_EQ(DplotCommand(version, "/home/op/", "20240501120000"),
                  std::string("[Enable(0)][DocRestore()]") +
                      (withName ? "[SetFilename(\"/home/op/20240501120000.grf\")]" : "") +
                      "[Enable(1)]")
            << version;
}

TEST(UtilityMenu, SoundControlsTryTheNextProgramUntilOneStarts) {
    const auto launchers = SoundPanelLaunchers(SoundPanel::Devices);
    FakeShell none, tabs;
    none.failures = 1000, SoundControls(none).openSoundDevices();
    ASSERT_EQ(none.runs.size(), launchers.size()); // each tried once, then silence
    for (std::size_t i = 0; i < launchers.size(); ++i)
        EXPECT_EQ(none.runs[i].rfind(launchers[i].program, 0), 0u) << none.runs[i];
#if !defined(_WIN32) && !defined(__APPLE__)
    SoundControls controls(tabs);
    controls.openPlaybackMixer(), controls.openRecordingMixer(), controls.openSoundDevices();
    EXPECT_EQ(tabs.runs, (std::vector<std::string>{"pavucontrol --tab=1", "pavucontrol --tab=2",
                                                   "pavucontrol --tab=4"}));
#endif
}

TEST(Fft, MatchesTheDefinition) {
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> d(-1, 1);
    for (std::size_t n : {1u, 2u, 8u, 512u, 0u, 3u, 1000u}) {
        std::vector<cd> x(n), dft(n);
        for (auto& c : x)
            c = cd(d(rng), d(rng));
        for (std::size_t k = 0; k < n; ++k)
            for (std::size_t j = 0; j < n; ++j)
                dft[k] += x[j] * std::polar(1.0, -2.0 * std::acos(-1.0) * double(k * j % n) / n);
        auto fast = x;
        const bool powerOfTwo = n && !(n & (n - 1));
        ASSERT_EQ(Fft(fast), powerOfTwo) << n;
        for (std::size_t k = 0; k < n; ++k)
            EXPECT_LT(std::abs(fast[k] - (powerOfTwo ? dft[k] : x[k])), 1e-9 * n) << n;
    }
}

TEST(Spectrum, SinesPeakAtTheirFrequencyAndLevelAndNoiseFollowsItsPower) {
    // 1 kHz at 8 kHz falls on bin 512 of 4096: -6.02 dBFS for half scale.
    const auto onBin = test::Sine(16384, 1000, 8000, 8000 * 4);
    const Spectrum s = AverageSpectrum(onBin, 8000);
    ASSERT_EQ(
        std::make_tuple(s.blockSize, s.frequencyHz.size(), s.blocks),
        std::make_tuple(std::size_t{4096}, std::size_t{2049}, (onBin.size() - 4096) / 2048 + 1));
    EXPECT_EQ(s.frequencyHz[peakBin(s)] + s.frequencyHz.back(), 5000.0);
    EXPECT_NEAR(s.levelDbfs[peakBin(s)], 20 * std::log10(0.5), 0.01);
    EXPECT_LT(std::max(s.levelDbfs[100], s.levelDbfs[1500]), -100);
    // Hann-windowed white noise of variance v puts v·3n/8 into each bin on average; scaled as
    // a sine's amplitude that reads 6v/n.
    const Spectrum w = AverageSpectrum(test::Noise(1000, 1 << 18, 21), 48000, 1024);
    double mean = 0;
    for (std::size_t k = 1; k + 1 < w.levelDbfs.size(); ++k)
        mean += std::pow(10.0, w.levelDbfs[k] / 10) / double(w.levelDbfs.size() - 2);
    EXPECT_NEAR(10 * std::log10(mean), 10 * std::log10(6 * std::pow(1000 / 32768.0, 2) / 1024),
                0.2);
    // Full scale on DC reads 0 dBFS in bin 0: no mirror image to share with.
    EXPECT_EQ(AverageSpectrum(std::vector<std::int16_t>(5000, 0), 8000).levelDbfs[9],
              kSpectrumFloorDbfs);
    const auto shortSine = test::Sine(32767, 2000, 8000, 100); // the largest power of two held
    const Spectrum small = AverageSpectrum(shortSine, 8000);
    EXPECT_EQ(std::make_tuple(small.blockSize, small.blocks, small.frequencyHz[peakBin(small)]),
              std::make_tuple(std::size_t{64}, std::size_t{2}, 2000.0));
    EXPECT_NEAR(AverageSpectrum(std::vector<std::int16_t>(4096, -32768), 8000).levelDbfs[0], 0.0,
                1e-9);
    EXPECT_TRUE(AverageSpectrum(std::vector<std::int16_t>(15, 1), 8000).levelDbfs.empty() &&
                AverageSpectrum(shortSine, 0).levelDbfs.empty() &&
                AverageSpectrum(shortSine, 8000, 1000).levelDbfs.empty());
}

TEST(MinMaxDecimation, EveryColumnKeepsItsExtremesAndShortRangesComeBackWhole) {
    auto s = test::Noise(2000, 262144, 4);
    s[123457] = 32767;  // a single-sample spike
    s[200001] = -32768; // and a dip
    expectFaithful(s, 0, s.size(), 800);
    expectFaithful(s, 1001, 98765, 333); // a zoomed range the columns do not divide
    expectFaithful(std::vector<std::int16_t>(10000, 5), 0, 10000, 100); // ties everywhere
    s.resize(1000);
    const auto whole = DecimateMinMax(s, 10, 210, 100, kStep);
    ASSERT_EQ(whole.size(), 200u);
    for (std::size_t i = 0; i < whole.size(); ++i)
        EXPECT_TRUE(indexOf(whole[i]) == 10 + i && whole[i].y == s[10 + i] / 32768.0) << i;
    EXPECT_EQ(DecimateMinMax(s, 900, 5000, 1000, kStep).size(), 100u); // clipped at the end
    for (auto [first, last, columns] :
         {std::tuple{500, 500, 10}, {600, 500, 10}, {0, 1000, 0}, {2000, 3000, 10}})
        EXPECT_TRUE(DecimateMinMax(s, first, last, columns, kStep).empty()) << first << " " << last;
}
