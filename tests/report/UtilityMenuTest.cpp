#include "report/DplotCommand.h"
#include "report/SoundControls.h"

#include <gtest/gtest.h>

using namespace zav;

namespace {

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
    FakeShell none, second, tabs;
    none.failures = 1000, second.failures = 1;
    SoundControls(none).openSoundDevices();
    EXPECT_EQ(none.runs.size(), launchers.size()); // each tried once, then silence
    SoundControls(second).openSoundDevices();
    ASSERT_EQ(second.runs.size(), std::min<std::size_t>(2, launchers.size()));
    EXPECT_EQ(second.runs.back().rfind(launchers[second.runs.size() - 1].program, 0), 0u);
#if !defined(_WIN32) && !defined(__APPLE__)
    SoundControls controls(tabs);
    controls.openPlaybackMixer();
    controls.openRecordingMixer();
    controls.openSoundDevices();
    EXPECT_EQ(tabs.runs, (std::vector<std::string>{"pavucontrol --tab=1", "pavucontrol --tab=2",
                                                   "pavucontrol --tab=4"}));
#endif
}
