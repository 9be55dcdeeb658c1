#include "report/WaveformExports.h"
#include "measure/WaveBytes.h"
#include "report/DplotCommand.h"
#include "report/SoundControls.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"
#include "testsupport/ScratchDir.h"
#include "testsupport/TestWave.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

// Every sample against sox and the script through the real gnuplot: tests/cli/outputs.sh.
using namespace zav;
namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

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

} // namespace

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
    e.model.exportGnuplot(), e.model.exportGnuplot();
    fs::remove(e.source.wavePath);
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
    EXPECT_EQ(e.output.played, Lines{e.source.wavePath});
    EXPECT_EQ(e.dialogs.texts(),
              Lines{"Error: playing wave file: The specified device is not open.(263)."});
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
    none.failures = 1000;
    SoundControls(none).openSoundDevices();
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
