#include "config/Profiles.h"
#include "config/SetupField.h"

#include "RecordingEvents.h"
#include "platform/MemorySettingsStore.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FileSizeLimit.h"
#include "testsupport/ScratchDir.h"

#include <gtest/gtest.h>

#include <cmath>
#include <deque>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <sys/stat.h>

using namespace zav;
using zav::test::FakeDialogs;
using zav::test::RecordingEvents;
using Calls = std::vector<std::string>;
namespace fs = std::filesystem;

namespace {

// One main window's worth of profile state around a temporary folder.
class ProfilesTest : public ::testing::Test {
protected:
    ProfilesTest() {
        state.CurrentDir = dir.string() + "/";
        state.ProfilePath = path("ZAV.zav");
    }

    std::string path(const std::string& name) const { return (dir / name).string(); }
    // Writes `text` as a profile and opens it.
    void open(const std::string& name, const std::string& text = "") {
        if (!text.empty())
            std::ofstream(dir / name, std::ios::binary) << text;
        state.ProfilePath = path(name);
        state.ProfileName = name;
        events.calls.clear();
        profiles.GetProfileSettings();
    }
    // The set-up and option texts in the profile's order, as zavcli prints them.
    std::string shown() const {
        std::string out;
        for (F f : {F::Receiver, F::Antenna, F::Feedline, F::Tester, F::Location, F::lat, F::lon,
                    F::RxNF, F::Bandwidth, F::Frequency, F::AntGain, F::Attenuator, F::AGC, F::Loss,
                    F::Environment, F::Interval})
            out += FieldText(record, f) + "|";
        for (bool b : {options.Verbose, options.Samples, options.AntFact, options.AutoTsv,
                       state.transfer.online})
            out += b ? "T" : "F";
        return out;
    }
    using F = SetupField;

    test::TempDir scratch;
    fs::path dir = scratch.path;
    SetupRecord record;
    Options options;
    SetupControls controls;
    PersistentState state;
    MemorySettingsStore settings;
    FakeDialogs dialogs;
    RecordingEvents events;
    Profiles profiles{record, options, controls, state, settings, dialogs, events};
};

} // namespace

TEST_F(ProfilesTest, AMissingProfileGivesEveryDefault) {
    for (int f = 0; f < kSetupFieldCount; ++f)
        FieldText(record, static_cast<SetupField>(f)) = "x";
    record.Environment = "Business";
    options = {true, false, true, false, true, true};
    state.transfer = {"u", "p", "e", "url", "atf", false};
    open("nothing-here.zav");
    EXPECT_EQ(shown(), "|||||||6|2700|7|0|20|20|0|Residential|8|TTFFT");
    EXPECT_EQ(record.AGCTag + record.IntervalTag + record.AntFileName, "208");
    const TransferSettings& t = state.transfer;
    EXPECT_EQ(t.username + t.password + t.Email + t.URL + t.AtfEmail, "");
    EXPECT_EQ(events.calls, (Calls{"UnloadAntennaFile", "Caption nothing-here.zav",
                                   "resetFromStep1", "Focus Step1"}));
    EXPECT_FALSE(fs::exists(path("nothing-here.zav"))) << "reading creates nothing";
}

TEST_F(ProfilesTest, SaveThenLoadKeepsEveryValueInTheTableOrder) {
    for (bool flag : {true, false}) {
        record = {"J\xC3\xB6rg",
                  "Ch\xC3\xA2teau \xE2\x82\xAC",
                  flag ? "-35.100000" : "",
                  "149.000000",
                  flag ? "Quiet rural" : "Business",
                  "3.650",
                  "IC-7300 \"barefoot\"",
                  "wide",
                  "5.50",
                  "  loop = small; [indoor]  ",
                  "-1.25",
                  "RG-213",
                  "0.5",
                  "10.0",
                  "30",
                  flag ? "64" : "750",
                  "notes stay out",
                  "/antennas/loop.tab",
                  "",
                  ""};
        options = {!flag, flag, !flag, flag, true, flag};
        state.transfer = {
            "op", "\"secret\"", "me@example.org", "zav.example.org/post", "atf@example.org", !flag};
        const std::string before = shown();
        const TransferSettings transfer = state.transfer;
        ASSERT_TRUE(profiles.SaveProfileSettings());
        const std::string written = test::ReadFile(path("ZAV.zav"));

        record = SetupRecord{};
        options = Options{};
        state.transfer = TransferSettings{};
        open("ZAV.zav");
        EXPECT_EQ(shown(), before);
        EXPECT_EQ(record.AntFileName, "/antennas/loop.tab");
        EXPECT_EQ(record.IntervalTag + record.AGCTag, record.Interval + "30");
        EXPECT_EQ(state.transfer.username + state.transfer.password + state.transfer.Email +
                      state.transfer.URL + state.transfer.AtfEmail,
                  transfer.username + transfer.password + transfer.Email + transfer.URL +
                      transfer.AtfEmail);
        EXPECT_EQ(events.calls.at(1), "LoadAntennaFile");
        ASSERT_TRUE(profiles.SaveProfileSettings());
        EXPECT_EQ(test::ReadFile(path("ZAV.zav")), written)
            << "load and save again changes nothing";
    }
    std::vector<std::string> keys;
    std::istringstream lines(test::ReadFile(path("ZAV.zav")));
    for (std::string line; std::getline(lines, line);) {
        ASSERT_EQ(line.back(), '\r');
        if (line.size() > 1)
            keys.push_back(line.front() == '[' ? line.substr(0, line.size() - 1)
                                               : line.substr(0, line.find('=')));
    }
    EXPECT_EQ(keys, (std::vector<std::string>{
                        "[conditions]", "Receiver",    "Antenna",    "Feedline",   "Tester",
                        "Location",     "Lat",         "Lon",        "RxNF",       "Bandwidth",
                        "Frequency",    "AntGain",     "Attenuator", "AGC",        "Loss",
                        "Environment",  "AntFilename", "[options]",  "Verbose",    "Samples",
                        "Interval",     "AntFact",     "AutoTsv",    "[transfer]", "username",
                        "password",     "email",       "url",        "AtfEmail",   "online"}));
}

TEST_F(ProfilesTest, UnreadableNumbersAreReportedAndKeptBadBooleansFallBackToDefaults) {
    const std::string bad =
        "[conditions]\r\nRxNF=six\r\nBandwidth=wide\r\nFrequency=7 MHz\r\nAntGain=\r\n"
        "AGC=&hZZ\r\nLoss=--1\r\nLat=north\r\nEnvironment=rural\r\n"
        "[options]\r\nVerbose=maybe\r\nSamples=\r\nAntFact=yes\r\nAutoTsv=2\r\nInterval=x\r\n"
        "[transfer]\r\nonline=perhaps\r\n";
    open("bad.zav", bad);
    // Never a default in place of what the operator wrote: the box shows it, saving keeps it.
    EXPECT_EQ(shown(), "|||||north||six|wide|7 MHz|0|20|&hZZ|--1||x|TTFTT");
    EXPECT_EQ(dialogs.texts().size(), 7u);
    EXPECT_EQ(dialogs.texts().at(0),
              "Error: profile " + path("bad.zav") + ": Lat=north is not a number.");
    ASSERT_TRUE(profiles.SaveProfileSettings());
    const std::string saved = test::ReadFile(path("bad.zav"));
    for (const char* kept : {"RxNF=six\r", "Frequency=7 MHz\r", "Interval=x\r", "Lat=north\r"})
        EXPECT_NE(saved.find(kept), std::string::npos) << kept;
    open("bools.zav", "[conditions]\nEnvironment=  Rural  \n[options]\nVerbose= false \n"
                      "Samples=0\nAntFact=-1\nAutoTsv=TRUE\n[transfer]\nonline=0\n");
    EXPECT_EQ(shown(), "|||||||6|2700|7|0|20|20|0|Rural|8|FFTTF");
}

TEST_F(ProfilesTest, NumbersAreStoredWithAPointAndShownInTheLocale) {
    // Written by a comma-locale machine, read in a point locale, and the other way round.
    const std::string file = "[conditions]\nLat=-35,5\nRxNF=5,5\nFrequency=2,700\nLoss=0.5\n"
                             "[options]\nInterval=1500\n";
    for (char sep : {'.', ','}) {
        profiles.decimalSeparator = sep;
        open("comma.zav", file);
        const std::string s(1, sep);
        EXPECT_EQ(record.lat + record.RxNF + record.Frequency + record.Loss,
                  "-35" + s + "5" + "5" + s + "5" + "2" + s + "700" + "0" + s + "5");
        EXPECT_TRUE(dialogs.messages.empty());
        ASSERT_TRUE(profiles.SaveProfileSettings());
        const std::string saved = test::ReadFile(path("comma.zav"));
        for (const char* stored : {"Lat=-35.5\r", "RxNF=5.5\r", "Frequency=2.700\r", "Loss=0.5\r"})
            EXPECT_NE(saved.find(stored), std::string::npos) << stored << " with " << sep;
    }
}

TEST_F(ProfilesTest, ALegacyNoiseFloorBecomesANoiseFigureAndIsNotWrittenBack) {
    open("old.zav", "[conditions]\r\nRxNF=9\r\nRxNoiseFloor=-140\r\nBandwidth=2700\r\n");
    EXPECT_EQ(record.RxNF, "-0.31");
    ASSERT_TRUE(profiles.SaveProfileSettings());
    EXPECT_EQ(test::ReadFile(path("old.zav")).find("RxNoiseFloor"), std::string::npos);
    for (double floorDbm : {-150.0, -131.5, -120.0}) {
        for (int bandwidthHz : {500, 2400, 6000}) {
            std::ostringstream text;
            text << "[conditions]\nRxNoiseFloor=" << floorDbm << "\nBandwidth=" << bandwidthHz;
            open("old.zav", text.str());
            // NF = floor − thermal floor in the bandwidth, kTB = −174 dBm/Hz + 10·log10(B).
            const double nf = floorDbm + 174 - 10 * std::log10(bandwidthHz);
            EXPECT_NEAR(std::stod(record.RxNF), nf, 0.005 + 1e-9);
        }
    }
    open("old.zav", "[conditions]\nRxNF=4.5\nRxNoiseFloor=-140\nBandwidth=none\n");
    EXPECT_EQ(record.RxNF, "4.5") << "nothing to convert with";
}

TEST_F(ProfilesTest, TheAntennaFileLoadsAfterTheOptionsAndItsFactorModeStands) {
    bool loaded = false;
    // Loading a file makes the box a factor, as the real antenna file mode does.
    events.onLoadAntenna = [&] {
        loaded = record.AntFileName == "/a/loop.tab" && record.Interval == "16";
        options.AntFact = true;
    };
    open("ant.zav", "[conditions]\nEnvironment=Rural\nAntGain=-3.00\nAntFilename=/a/loop.tab\n"
                    "[options]\nInterval=16\nAntFact=False\n");
    EXPECT_TRUE(loaded);
    EXPECT_EQ(events.calls, (Calls{"UnloadAntennaFile", "LoadAntennaFile", "Caption ant.zav",
                                   "resetFromStep1", "Focus Step1"}));
    // A stored "False" would take the file's factors as gains: the file wins, and the label
    // says so.
    EXPECT_TRUE(options.AntFact);
    EXPECT_EQ(controls.antGainLabel, "Factor (d&B/m)");
    EXPECT_EQ(controls.intervalLabel, "Samples (k)");
    // Without a file the value is in the unit the profile names: no conversion, only the
    // labels follow the options read, both ways.
    open("ant.zav", "[conditions]\nAntGain=-3.00\n[options]\nAntFact=False\nSamples=False\n"
                    "Interval=1000\n");
    EXPECT_EQ(record.AntGain, "-3.00");
    EXPECT_FALSE(options.AntFact);
    EXPECT_EQ(controls.antGainLabel, "Gain (d&Bi)");
    EXPECT_EQ(controls.intervalLabel, "Interval (ms)");
}

TEST_F(ProfilesTest, ValuesAreCutAtTheReadBuffer) {
    const std::string ascii(300, 'a');
    std::string accented;
    for (int i = 0; i < 300; ++i)
        accented += "\xC3\xA9";
    open("long.zav", "[conditions]\nTester=" + ascii + "\nLocation=" + accented + "\n");
    EXPECT_EQ(record.Tester, ascii.substr(0, Profiles::kMaxValueChars));
    EXPECT_EQ(record.Location, accented.substr(0, 2 * Profiles::kMaxValueChars));
    EXPECT_EQ(profiles.GetProfileSetting("d", "Tester", "Conditions").size(), 254u);
    EXPECT_EQ(profiles.GetProfileSetting("d", "Nothing", "conditions"), "d");
}

TEST_F(ProfilesTest, TheRecentListShiftsDownOnEverySave) {
    // As the list behaves: the saved path goes on top, everything else moves down one place,
    // the ninth drops off; duplicates are never merged.
    std::deque<std::string> oracle(MaxMru, "");
    std::mt19937 rng(4);
    for (int round = 0; round < 60; ++round) {
        state.ProfilePath = path(std::string(1, "abcDd"[rng() % 5]) + ".zav");
        ASSERT_TRUE(profiles.SaveProfileSettings());
        oracle.push_front(state.ProfilePath);
        oracle.pop_back();
        for (int i = 1; i <= MaxMru; ++i) {
            EXPECT_EQ(state.recent.Caption[i], oracle[i - 1]);
            EXPECT_EQ(state.recent.Visible[i], !oracle[i - 1].empty());
            EXPECT_EQ(settings.GetSetting("default", "MRUF" + std::to_string(i), "?"),
                      oracle[i - 1]);
        }
    }
}

TEST_F(ProfilesTest, WindowSettingsRoundTripWithDefaultsForBadValues) {
    settings.SaveSetting("default", "Stale", "x");
    settings.SaveSetting("gps", "Old", "y");
    state.gps = {3, 9600, "E", 7, 2, 25, "/dev/ttyUSB0"};
    state.InputDevice = "USB Audio";
    state.BaseUrl = "https://mirror.example.org/zav/";
    options.Beep = false;
    ASSERT_TRUE(profiles.SaveWindowSettings());
    EXPECT_EQ(settings.GetSetting("default", "Stale", "gone") +
                  settings.GetSetting("gps", "Old", "gone"),
              "gonegone");
    EXPECT_EQ(settings.GetSetting("default", "Profile", ""), state.ProfilePath);
    state = PersistentState{};
    options = Options{};
    profiles.LoadWindowSettings();
    EXPECT_FALSE(options.Beep);
    EXPECT_EQ(state.BaseUrl + state.InputDevice, "https://mirror.example.org/zav/USB Audio");
    const GpsSettings& g = state.gps;
    EXPECT_EQ(std::vector<int>({g.Port, g.Speed, g.Dbits, g.Sbits, g.Acc}),
              std::vector<int>({3, 9600, 7, 2, 25}));
    EXPECT_EQ(g.Parity + g.Device, "E/dev/ttyUSB0");

    MemorySettingsStore fresh;
    Profiles firstRun{record, options, controls, state, fresh, dialogs, events};
    fresh.SaveSetting("default", "MRUF3", "/p/three.zav");
    fresh.SaveSetting("default", "BaseUrl", kFormerBaseUrl);
    fresh.SaveSetting("gps", "Speed", "115200"); // today's receivers: past 16 bits
    fresh.SaveSetting("gps", "Port", "COM4");
    fresh.SaveSetting("gps", "Acc", "2.5"); // whole numbers, halves to even
    fresh.SaveSetting("gps", "Sbits", "-1");
    const std::pair<const char*, bool> beeps[] = {
        {"False", false}, {"0", false}, {"true", true}, {"-1", true}, {"noise", true}};
    for (const auto& [stored, beep] : beeps) {
        fresh.SaveSetting("default", "Beep", stored);
        firstRun.LoadWindowSettings();
        EXPECT_EQ(options.Beep, beep) << stored;
    }
    EXPECT_EQ(std::vector<int>({g.Port, g.Speed, g.Dbits, g.Sbits, g.Acc}),
              std::vector<int>({1, 115200, 8, -1, 2}));
    EXPECT_EQ(g.Parity + g.Device, "N");
    EXPECT_EQ(state.BaseUrl, kDefaultBaseUrl) << "the former address is replaced";
    EXPECT_TRUE(state.recent.Visible[3] && !state.recent.Visible[2]);
}

TEST_F(ProfilesTest, FileMenuCommands) {
    record.Tester = "outgoing";
    state.ProfilePath = path("first.zav");
    dialogs.files = {std::nullopt, path("second.zav"), std::nullopt, path("third.zav")};
    profiles.openProfile(); // cancelled, but the outgoing profile is saved first
    const FileDialogRequest& request = dialogs.fileRequests.at(0);
    EXPECT_EQ(request.filter + request.initialDir + request.fileName,
              "ZAV files (*.zav)|*.zav" + state.CurrentDir);
    EXPECT_NE(test::ReadFile(path("first.zav")).find("Tester=outgoing"), std::string::npos);
    EXPECT_TRUE(events.calls.empty());

    std::ofstream(dir / "second.zav") << "[conditions]\nTester=incoming\n";
    profiles.openProfile();
    EXPECT_EQ(state.ProfilePath + state.ProfileName, path("second.zav") + "second");
    EXPECT_EQ(record.Tester, "incoming");

    events.calls.clear();
    profiles.saveProfile(); // cancelled
    EXPECT_EQ(dialogs.fileRequests.at(2).fileName, path("second.zav"));
    profiles.saveProfile();
    EXPECT_NE(test::ReadFile(path("third.zav")).find("Tester=incoming"), std::string::npos);
    EXPECT_EQ(events.calls, Calls{"Caption third"});

    // Recent entries: a vanished file is reported and changes nothing; otherwise the clicked
    // file opens, though saving the outgoing profile has moved the list.
    state.recent.Caption = {"", path("third.zav"), path("first.zav"), path("gone.zav")};
    profiles.openRecentProfile(3);
    ASSERT_EQ(dialogs.messages.size(), 1u);
    EXPECT_EQ(dialogs.messages[0].text, "Error: file " + path("gone.zav") + " does not exist.");
    EXPECT_EQ(dialogs.messages[0].icon, MessageIcon::Critical);
    EXPECT_EQ(state.recent.Caption[3], path("gone.zav"));
    EXPECT_EQ(state.ProfilePath, path("third.zav"));
    profiles.openRecentProfile(2);
    EXPECT_EQ(state.ProfilePath, path("first.zav"));
    EXPECT_EQ(record.Tester, "outgoing");
}

TEST_F(ProfilesTest, AFailedSaveIsShownWithItsReasonAndChangesNeitherTitleNorRecentList) {
    record.Tester = "kept";
    state.ProfilePath = path("first.zav");
    ASSERT_TRUE(profiles.SaveProfileSettings());
    const auto recentBefore = state.recent.Caption;
    const std::string nameBefore = state.ProfileName;
    events.calls.clear();
    // A full disk (a file size limit stands in for it) and a folder that is not there.
    for (const std::string& target : {path("second.zav"), path("none/second.zav")}) {
        dialogs.files = {target};
        {
            test::FileSizeLimit full(target == path("second.zav") ? 10 : 1 << 20);
            profiles.saveProfile();
        }
        ASSERT_FALSE(dialogs.messages.empty()) << target;
        const std::string shown = dialogs.messages.back().text;
        EXPECT_EQ(shown.rfind("Error: the profile could not be saved: cannot ", 0), 0u) << shown;
        EXPECT_NE(shown.find(target == path("second.zav") ? "File too large"
                                                          : "No such file or directory"),
                  std::string::npos)
            << shown;
        EXPECT_EQ(shown.find(".tmp"), std::string::npos) << "the file named is the profile";
        EXPECT_EQ(dialogs.messages.back().icon, MessageIcon::Critical);
        EXPECT_TRUE(events.calls.empty()) << "the title stays";
        EXPECT_EQ(state.ProfilePath, path("first.zav"));
        EXPECT_EQ(state.ProfileName, nameBefore);
        EXPECT_EQ(state.recent.Caption, recentBefore);
        EXPECT_EQ(settings.GetSetting("default", "Profile", ""), path("first.zav"));
        EXPECT_EQ(settings.GetSetting("default", "MRUF1", ""), path("first.zav"));
        EXPECT_FALSE(fs::exists(path("second.zav")));
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(dir), {}), 1) << "no temporary file left";
}

TEST_F(ProfilesTest, AProfileWithAPasswordIsReadableByItsOwnerOnly) {
    const auto mode = [this](const char* name) {
        return fs::status(dir / name).permissions() & fs::perms::all;
    };
    const fs::perms ownerOnly = fs::perms::owner_read | fs::perms::owner_write;
    const mode_t oldMask = umask(022);
    state.ProfilePath = path("plain.zav");
    ASSERT_TRUE(profiles.SaveProfileSettings());
    EXPECT_NE(mode("plain.zav") & fs::perms::others_read, fs::perms::none);

    state.transfer.password = "secret";
    state.ProfilePath = path("new.zav"); // created so
    ASSERT_TRUE(profiles.SaveProfileSettings());
    EXPECT_EQ(mode("new.zav"), ownerOnly);
    std::ofstream(dir / "wide.zav") << "[transfer]\npassword=\n";
    fs::permissions(dir / "wide.zav",
                    fs::perms::owner_all | fs::perms::group_all | fs::perms::others_read);
    state.ProfilePath = path("wide.zav"); // an existing wider one is narrowed
    ASSERT_TRUE(profiles.SaveProfileSettings());
    EXPECT_EQ(mode("wide.zav"), ownerOnly);
    EXPECT_NE(test::ReadFile(dir / "wide.zav").find("password=secret"), std::string::npos);
    umask(oldMask);
}

TEST_F(ProfilesTest, AProfileThatCannotBeReadIsSaidNotSilentlyDefaulted) {
    const fs::path fifo = dir / "pipe.zav";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    fs::create_directory(dir / "folder.zav");
    for (const char* name : {"folder.zav", "pipe.zav"}) {
        dialogs.messages.clear();
        open(name); // returns at once: a pipe nobody writes to is not waited on
        ASSERT_EQ(dialogs.messages.size(), 1u) << name;
        EXPECT_EQ(dialogs.messages[0].text,
                  "Error: profile " + path(name) + " cannot be read: " +
                      (name[0] == 'f' ? "it is a folder" : "it is not a regular file") +
                      ". Every setting shows its default.");
    }
    dialogs.messages.clear();
    open("missing.zav"); // a new profile: no message
    EXPECT_TRUE(dialogs.messages.empty());
}
