#include "RecordingEvents.h"
#include "config/IniFile.h"
#include "config/OptionsMenu.h"
#include "config/Profiles.h"
#include "config/SetupForm.h"
#include "config/TextEncoding.h"
#include "platform/Conversions.h"
#include "platform/MemorySettingsStore.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FileSizeLimit.h"
#include "testsupport/ScratchDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iconv.h>
#include <random>
#include <sstream>
#include <sys/stat.h>

using namespace zav;
using test::RecordingEvents;
using Calls = std::vector<std::string>;
using Texts = std::vector<std::string>;
using F = SetupField;
namespace fs = std::filesystem;

namespace {

void spit(const fs::path& p, const std::string& s) {
    std::ofstream(p, std::ios::binary) << s;
}

// The C library's own converter, as an independent oracle; nothing when it refuses.
std::optional<std::string> iconvConvert(const char* from, const char* to, std::string in) {
    iconv_t cd = iconv_open(to, from);
    if (cd == reinterpret_cast<iconv_t>(-1))
        return std::nullopt;
    std::string out(in.size() * 4 + 16, '\0');
    char *inp = in.data(), *outp = out.data();
    size_t inLeft = in.size(), outLeft = out.size();
    const size_t r = iconv(cd, &inp, &inLeft, &outp, &outLeft);
    iconv_close(cd);
    if (r == static_cast<size_t>(-1) || inLeft != 0)
        return std::nullopt;
    out.resize(out.size() - outLeft);
    return out;
}

// One main window's set-up boxes, options menu and profile state around a temporary folder.
class SetupTest : public ::testing::Test {
protected:
    SetupTest() { state.CurrentDir = dir.string() + "/", state.ProfilePath = path("ZAV.zav"); }
    std::string path(const std::string& name) const { return (dir / name).string(); }
    void open(const std::string& name, const std::string& text = "") {
        if (!text.empty())
            std::ofstream(dir / name, std::ios::binary) << text;
        state.ProfilePath = path(name), state.ProfileName = name;
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
        const TransferSettings& t = state.transfer;
        return out + "|" + t.username + "|" + t.password + "|" + t.Email + "|" + t.URL + "|" +
               t.AtfEmail;
    }
    void expectSaved(const std::string& name, std::initializer_list<const char*> lines) const {
        const std::string saved = test::ReadFile(dir / name);
        for (const char* line : lines)
            EXPECT_NE(saved.find(line), std::string::npos) << line << " in " << saved;
    }

    bool leave(F field, const std::string& text) { // true: the box keeps the focus
        bool cancel = false;
        form.fieldLeft(type(field, text), cancel);
        return cancel;
    }
    KeyOutcome enter(F field, const std::string& text, Key key = Key::Enter) {
        return form.keyPressed(type(field, text), key);
    }
    F type(F field, const std::string& text) {
        dialogs.messages.clear(), events.calls.clear();
        return FieldText(record, field) = text, field;
    }
    std::string box() const {
        if (dialogs.messages.empty())
            return "";
        EXPECT_EQ(dialogs.messages.size(), 1u);
        const auto& m = dialogs.messages[0];
        EXPECT_TRUE(m.title == "Value error:" && m.icon == MessageIcon::None);
        return m.text;
    }

    test::TempDir scratch;
    fs::path dir = scratch.path;
    SetupRecord record;
    Options options;
    SetupControls controls;
    CommandStates commands;
    PersistentState state;
    MemorySettingsStore settings;
    test::FakeDialogs dialogs;
    RecordingEvents events;
    Profiles profiles{record, options, controls, state, settings, dialogs, events};
    SetupForm form{record, options, dialogs, events};
    OptionsMenu menu{options, record, controls, commands, events};
};

const char* const kBandwidth = "Bandwidth must be > 0 and  <= 200000";
const char* const kFrequency = "Frequency must be >= 0.1 and <= 10000";
const char* const kSamples = "Samples must be 8, 16, 32, 64, 128, or 256";

} // namespace

TEST_F(SetupTest, AMissingProfileGivesEveryDefaultAndAFolderSaysSo) {
    for (int f = 0; f < kSetupFieldCount; ++f)
        FieldText(record, static_cast<SetupField>(f)) = "x";
    options = {true, false, true, false, true, true};
    state.transfer = {"u", "p", "e", "url", "atf", false};
    open("nothing-here.zav");
    EXPECT_EQ(shown(), "|||||||6|2700|7|0|20|20|0|Residential|8|TTFFT|||||");
    EXPECT_EQ(record.AGCTag + record.IntervalTag + record.AntFileName, "208");
    EXPECT_EQ(events.calls, (Calls{"UnloadAntennaFile", "Caption nothing-here.zav",
                                   "resetFromStep1", "Focus Step1"}));
    EXPECT_TRUE(!fs::exists(path("nothing-here.zav")) && dialogs.messages.empty()) << "a new one";
    fs::create_directory(dir / "folder.zav");
    open("folder.zav");
    EXPECT_EQ(dialogs.texts(), Texts{"Error: profile " + path("folder.zav") +
                                     " cannot be read: "
                                     "it is a folder. Every setting shows its default."});
}

TEST_F(SetupTest, SaveThenLoadKeepsEveryValueInTheTableOrder) {
    for (bool flag : {true, false}) {
        std::istringstream values(
            std::string("J\xC3\xB6rg|Ch\xC3\xA2teau \xE2\x82\xAC|") +
            (flag ? "-35.100000|149.000000|Quiet rural|" : "|149.000000|Business|") +
            "3.650|IC-7300 \"barefoot\"|wide|5.50|  loop = small; [in]  |"
            "-1.25|RG-213|0.5|10.0|30|" +
            (flag ? "64" : "750") + "|notes stay out");
        for (int f = 0; f < kSetupFieldCount; ++f)
            std::getline(values, FieldText(record, static_cast<SetupField>(f)), '|');
        record.AntFileName = "/antennas/loop.tab";
        options = {!flag, flag, !flag, flag, true, flag};
        state.transfer = {"op", "\"pw\"", "me@example.org", "zav.example.org/post", "a@b.c", !flag};
        const std::string before = shown();
        ASSERT_TRUE(profiles.SaveProfileSettings());
        const std::string written = test::ReadFile(path("ZAV.zav"));
        record = SetupRecord{}, options = Options{}, state.transfer = TransferSettings{};
        open("ZAV.zav");
        EXPECT_EQ(shown(), before);
        EXPECT_EQ(record.AntFileName + record.IntervalTag + record.AGCTag,
                  "/antennas/loop.tab" + record.Interval + "30");
        ASSERT_TRUE(profiles.SaveProfileSettings());
        EXPECT_EQ(test::ReadFile(path("ZAV.zav")), written) << "load and save changes nothing";
    }
    std::string keys; // every line CR LF ended, the keys in the table's order
    std::istringstream lines(test::ReadFile(path("ZAV.zav")));
    for (std::string line; std::getline(lines, line);) {
        ASSERT_EQ(line.back(), '\r');
        keys += line.substr(0, std::min(line.find('='), line.size() - 1)) + " ";
    }
    EXPECT_EQ(keys, "[conditions] Receiver Antenna Feedline Tester Location Lat Lon RxNF Bandwidth "
                    "Frequency AntGain Attenuator AGC Loss Environment AntFilename  [options] "
                    "Verbose Samples Interval AntFact AutoTsv  [transfer] username password email "
                    "url AtfEmail online ");
}

TEST_F(SetupTest, BadNumbersAreReportedAndKeptBadBooleansDefaultLongValuesAreCut) {
    open("bad.zav", "[conditions]\r\nRxNF=six\r\nFrequency=7 MHz\r\nAntGain=\r\nLat=north\r\n"
                    "Environment=rural\r\n[options]\r\nVerbose=maybe\r\nSamples=\r\nAntFact=yes\r\n"
                    "AutoTsv=2\r\nInterval=x\r\n[transfer]\r\nonline=perhaps\r\n");
    // Never a default in place of what the operator wrote: the box shows it, saving keeps it.
    EXPECT_EQ(shown(), "|||||north||six|2700|7 MHz|0|20|20|0||x|TTFTT|||||");
    EXPECT_EQ(dialogs.texts().size(), 4u);
    EXPECT_EQ(dialogs.texts().at(0),
              "Error: profile " + path("bad.zav") + ": Lat=north is not a number.");
    ASSERT_TRUE(profiles.SaveProfileSettings());
    expectSaved("bad.zav", {"RxNF=six\r", "Frequency=7 MHz\r", "Interval=x\r", "Lat=north\r"});
    open("bools.zav", "[conditions]\nEnvironment=  Rural  \n[options]\nVerbose= false \n"
                      "Samples=0\nAntFact=-1\nAutoTsv=TRUE\n[transfer]\nonline=0\n");
    EXPECT_EQ(shown(), "|||||||6|2700|7|0|20|20|0|Rural|8|FFTTF|||||");
    std::string accented;
    for (int i = 0; i < 300; ++i)
        accented += "\xC3\xA9";
    open("long.zav", "[conditions]\nTester=" + std::string(300, 'a') + "\nLocation=" + accented);
    EXPECT_EQ(record.Tester, std::string(254, 'a'));
    EXPECT_EQ(record.Location, accented.substr(0, 2 * 254));
    EXPECT_EQ(profiles.GetProfileSetting("d", "Nothing", "conditions"), "d");
}

TEST_F(SetupTest, ALegacyNoiseFloorBecomesANoiseFigureAndNumbersAreStoredWithAPoint) {
    open("old.zav", "[conditions]\r\nRxNF=9\r\nRxNoiseFloor=-140\r\nBandwidth=2700\r\n");
    EXPECT_EQ(record.RxNF, "-0.31"); // -140 dBm less kTB in 2700 Hz (-139.69 dBm)
    ASSERT_TRUE(profiles.SaveProfileSettings());
    EXPECT_EQ(test::ReadFile(path("old.zav")).find("RxNoiseFloor"), std::string::npos);
    open("old.zav", "[conditions]\nRxNF=4.5\nRxNoiseFloor=-140\nBandwidth=none\n");
    EXPECT_EQ(record.RxNF, "4.5") << "nothing to convert with";
    for (char sep : {'.', ','}) { // written by a comma-locale machine, read in both
        profiles.decimalSeparator = sep;
        open("comma.zav", "[conditions]\nLat=-35,5\nRxNF=5,5\nFrequency=2,700\nLoss=0.5\n");
        const std::string s(1, sep);
        EXPECT_EQ(record.lat + " " + record.RxNF + " " + record.Frequency + " " + record.Loss,
                  "-35" + s + "5 5" + s + "5 2" + s + "700 0" + s + "5");
        EXPECT_EQ(dialogs.messages.size(), 1u) << "Bandwidth=none only";
        ASSERT_TRUE(profiles.SaveProfileSettings());
        expectSaved("comma.zav", {"Lat=-35.5\r", "RxNF=5.5\r", "Frequency=2.700\r", "Loss=0.5\r"});
    }
}

TEST_F(SetupTest, TheAntennaFileLoadsAfterTheOptionsAndItsFactorModeStands) {
    bool loaded = false;
    events.onLoadAntenna = [&] { // loading a file makes the box a factor
        loaded = record.AntFileName == "/a/loop.tab" && record.Interval == "16";
        options.AntFact = true;
    };
    open("ant.zav", "[conditions]\nAntGain=-3.00\nAntFilename=/a/loop.tab\n"
                    "[options]\nInterval=16\nAntFact=False\n");
    EXPECT_TRUE(loaded && options.AntFact);
    EXPECT_EQ(events.calls, (Calls{"UnloadAntennaFile", "LoadAntennaFile", "Caption ant.zav",
                                   "resetFromStep1", "Focus Step1"}));
    EXPECT_EQ(controls.antGainLabel + " " + controls.intervalLabel, "Factor (d&B/m) Samples (k)");
}

TEST_F(SetupTest, TheRecentListShiftsDownOnEverySave) {
    // The saved path goes on top, the rest move down, the ninth drops off; no merging.
    std::deque<std::string> oracle(MaxMru, "");
    std::mt19937 rng(4);
    for (int round = 0; round < 30; ++round) {
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

TEST_F(SetupTest, WindowSettingsRoundTripWithDefaultsForBadValues) {
    const auto gps = [&] {
        const GpsSettings& g = state.gps;
        return std::to_string(g.Port) + g.Parity + std::to_string(g.Speed) + " " +
               std::to_string(g.Dbits) + std::to_string(g.Sbits) + " " + std::to_string(g.Acc) +
               g.Device + (options.Beep ? " beep " : " ") + state.BaseUrl;
    };
    state.gps = {3, 9600, "E", 7, 2, 25, "/dev/ttyUSB0"};
    state.BaseUrl = "https://mirror.example.org/zav/", options.Beep = false;
    ASSERT_TRUE(profiles.SaveWindowSettings());
    state = PersistentState{}, options = Options{};
    profiles.LoadWindowSettings();
    EXPECT_EQ(gps(), "3E9600 72 25/dev/ttyUSB0 https://mirror.example.org/zav/");
    MemorySettingsStore fresh; // bad values and a former address give the defaults
    Profiles firstRun{record, options, controls, state, fresh, dialogs, events};
    fresh.SaveSetting("default", "MRUF3", "/p/three.zav");
    fresh.SaveSetting("default", "BaseUrl", kFormerBaseUrl);
    fresh.SaveSetting("default", "Beep", "-1");
    fresh.SaveSetting("gps", "Speed", "115200"); // past 16 bits
    fresh.SaveSetting("gps", "Port", "COM4");
    fresh.SaveSetting("gps", "Acc", "2.5"); // whole numbers, halves to even
    firstRun.LoadWindowSettings();
    EXPECT_EQ(gps(), "1N115200 81 2 beep " + std::string(kDefaultBaseUrl));
    EXPECT_TRUE(state.recent.Visible[3] && !state.recent.Visible[2]);
}

TEST_F(SetupTest, TheMenuWritesTheOutgoingProfileFirstAndSkipsAVanishedOne) {
    record.Tester = "mine";
    dialogs.files = {path("other.zav")};
    profiles.saveProfile(); // save as
    EXPECT_EQ(state.ProfilePath + state.recent.Caption[1], path("other.zav") + path("other.zav"));
    EXPECT_EQ(events.calls, Calls{"Caption other"});
    state.ProfilePath = path("ZAV.zav");
    record.Tester = "changed";
    dialogs.files = {path("other.zav")};
    profiles.openProfile();
    EXPECT_EQ(record.Tester + " " + state.ProfilePath, "mine " + path("other.zav"));
    expectSaved("ZAV.zav", {"Tester=changed\r"});

    state.recent.Caption = {"", path("other.zav"), path("ZAV.zav"), path("gone.zav")};
    profiles.openRecentProfile(3);
    EXPECT_EQ(dialogs.texts(), Texts{"Error: file " + path("gone.zav") + " does not exist."});
    EXPECT_EQ(state.ProfilePath, path("other.zav"));
    // Saving the outgoing profile moves the list; the clicked file opens all the same.
    profiles.openRecentProfile(2);
    EXPECT_EQ(state.ProfilePath + " " + record.Tester, path("ZAV.zav") + " changed");
    EXPECT_EQ(state.recent.Caption[1], path("other.zav"));
}

TEST_F(SetupTest, AFailedSaveChangesNeitherTitleNorRecentListAPasswordNarrowsTheFile) {
    state.ProfilePath = path("first.zav");
    ASSERT_TRUE(profiles.SaveProfileSettings());
    const auto recentBefore = state.recent.Caption;
    events.calls.clear();
    // A full disk (a file size limit stands in for it) and a folder that is not there.
    for (const auto& [target, why] : {std::pair{path("second.zav"), "File too large"},
                                      {path("none/second.zav"), "No such file or directory"}}) {
        dialogs.files = {target}; // the limit holds while the save runs
        (test::FileSizeLimit(target == path("second.zav") ? 10 : 1 << 20), profiles.saveProfile());
        ASSERT_FALSE(dialogs.messages.empty()) << target;
        EXPECT_EQ(dialogs.messages.back().text,
                  "Error: the profile could not be saved: cannot write " + target + ": " + why);
        EXPECT_TRUE(events.calls.empty()) << "the title stays";
        EXPECT_EQ(state.ProfilePath, path("first.zav"));
        EXPECT_EQ(state.recent.Caption, recentBefore);
        EXPECT_EQ(settings.GetSetting("default", "Profile", ""), path("first.zav"));
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(dir), {}), 1) << "no temporary file left";
    const mode_t oldMask = umask(022);
    ASSERT_TRUE(profiles.SaveProfileSettings());
    EXPECT_NE(fs::status(path("first.zav")).permissions() & fs::perms::others_read,
              fs::perms::none);
    state.transfer.password = "secret"; // the existing wider file is narrowed
    ASSERT_TRUE(profiles.SaveProfileSettings());
    EXPECT_EQ(fs::status(path("first.zav")).permissions() & fs::perms::all,
              fs::perms::owner_read | fs::perms::owner_write);
    umask(oldMask);
}

TEST_F(SetupTest, LeavingABoxTidiesChecksAndActs) {
    record.AGCTag = "20", record.IntervalTag = "8", options.Samples = true;
    const Calls calc{"recalculate"}, none{}, reset1{"resetFromStep1"}, reset3{"resetFromStep3"};
    const std::tuple<F, const char*, const char*, const char*, Calls> cases[] = {
        {F::Bandwidth, "2700.6", "2701", "", calc},
        {F::Bandwidth, "0", "0", kBandwidth, none},
        {F::Frequency, "10000", "10000.000", "", calc},
        {F::Frequency, "0.0996", "0.100", "", calc},
        {F::Frequency, "0.09", "0.090", kFrequency, none},
        {F::Frequency, "10000.001", "10000.001", kFrequency, none},
        {F::RxNF, "-3", "0.00", "", calc},
        {F::RxNF, "3.456", "3.46", "", calc},
        {F::Attenuator, "abc", "0.0", "", calc},
        {F::Loss, "12.25", "12.3", "", calc},
        {F::AntGain, "&h10", "16.00", "", calc},
        {F::lat, "abc", "", "", none},
        {F::lon, "149.1234567", "149.123457", "", none},
        {F::AGC, "9", "9", "AGC threshold must be >= 10", none},
        {F::AGC, "30", "30", "", reset3},
        {F::AGC, "30", "30", "", none},
        {F::AGC, "29.6", "30", "", none},
        {F::AGC, "9.5", "10", "", reset3},
        {F::Interval, "  32  ", "32", "", reset1},
        {F::Interval, "32 ", "32", "", none},
        {F::Interval, "12", "12", kSamples, none},
        {F::Interval, "32.0", "32.0", kSamples, none},
        {F::Interval, "256", "256", "", reset1},
        {F::Interval, "512", "512", kSamples, none}};
    for (const auto& [field, typed, after, message, calls] : cases) {
        const bool cancel = leave(field, typed); // true: the box keeps the focus
        const std::string where = std::to_string(static_cast<int>(field)) + " " + typed;
        EXPECT_EQ(FieldText(record, field), after) << where;
        EXPECT_EQ(box(), message) << where;
        EXPECT_EQ(cancel, *message != '\0') << where;
        EXPECT_EQ(events.calls, calls) << where;
    }
    EXPECT_EQ(record.AGCTag + record.IntervalTag, "10256");

    options.Samples = false;
    for (const char* bad : {"499.99", "10001"}) {
        EXPECT_TRUE(leave(F::Interval, bad));
        EXPECT_EQ(box(), "Interval must be >= 500 and <= 10,0000");
    }
    EXPECT_FALSE(leave(F::Interval, "10000"));
    EXPECT_FALSE(leave(F::Interval, " 500 ")); // no clean-up in this mode: a new text
    EXPECT_EQ(record.IntervalTag + events.calls.at(0), " 500 resetFromStep1");
}

TEST_F(SetupTest, FrequencyFetchesTheAntennaFactorAndBoxesUseTheLocaleSeparator) {
    double askedAt = 0;
    events.antenna = [&](double f) { return 10 + (askedAt = f) / 3; };
    record.AntGain = "1.00";
    EXPECT_FALSE(leave(F::Frequency, "14.2"));
    EXPECT_DOUBLE_EQ(askedAt, 14.2);
    EXPECT_EQ(record.AntGain, "14.73");
    EXPECT_EQ(events.calls, (Calls{"AntennaValueAt", "recalculate"}));
    EXPECT_TRUE(leave(F::Frequency, "20000"));
    EXPECT_EQ(record.AntGain, "14.73");
    form.decimalSeparator = ',';
    for (const auto& [typed, after] : {std::pair{"2,5", "2,5"}, {"2.5", "0,0"}}) {
        leave(F::Loss, typed);
        EXPECT_EQ(record.Loss, std::string(after));
    }
    EXPECT_FALSE(leave(F::Frequency, "7,1"));
    EXPECT_EQ(record.Frequency, "7,100");
    EXPECT_TRUE(leave(F::Frequency, "0,09"));
}

TEST_F(SetupTest, EnterChecksSwallowsTheKeyAndSelectsAgain) {
    const std::pair<F, const char*> checked[] = {{F::RxNF, "12.35"},       {F::Bandwidth, "12"},
                                                 {F::Frequency, "12.345"}, {F::Attenuator, "12.3"},
                                                 {F::lat, "12.345000"},    {F::AGC, "12"},
                                                 {F::Loss, "12.3"},        {F::AntGain, "12.35"}};
    for (const auto& [f, after] : checked) {
        form.SelectText(f, 0, 0);
        EXPECT_EQ(enter(f, "12.345"), KeyOutcome::Swallowed);
        EXPECT_EQ(FieldText(record, f), after);
        const auto selected = form.Selection(f);
        EXPECT_EQ(std::pair(selected.SelStart, selected.SelLength),
                  std::pair(0, int(strlen(after))));
    }
    // Nothing is filtered while typing; boxes without checks leave Enter alone.
    EXPECT_EQ(enter(F::Frequency, "7", Key::Other), KeyOutcome::PassedOn);
    EXPECT_EQ(enter(F::Tester, "x"), KeyOutcome::PassedOn);
    EXPECT_TRUE(events.calls.empty() && dialogs.messages.empty());

    // Enter in the interval box warns in its own words and takes a new length only on leaving.
    options.Samples = true, record.IntervalTag = "8";
    EXPECT_EQ(enter(F::Interval, "12"), KeyOutcome::Swallowed);
    EXPECT_EQ(box(), "Samples must be 8, 16, 32, 64, 128 or 256");
    EXPECT_EQ(enter(F::Interval, " 64 "), KeyOutcome::Swallowed);
    EXPECT_TRUE(box().empty() && events.calls.empty() && record.IntervalTag == "8");
    options.Samples = false;
    EXPECT_EQ(enter(F::Interval, "499"), KeyOutcome::Swallowed);
    EXPECT_EQ(box(), "Interval must be >= 500 and <= 10000");
}

TEST_F(SetupTest, GainAndFactorAndIntervalUnitsFlipBackAndForth) {
    // Two-decimal values survive the flips (the factor itself: the conversions' test).
    for (const auto& [gain, f] : {std::pair{"-29.99", 0.1}, {"0.00", 7.05}, {"39.99", 2999.9}}) {
        record.AntGain = gain, record.Frequency = std::to_string(f);
        menu.toggleAntennaFactor();
        EXPECT_EQ(controls.antGainLabel + std::to_string(options.AntFact), "Factor (d&B/m)1");
        EXPECT_NEAR(std::stod(record.AntGain), GainToFactor(std::stod(gain), f), 0.005 + 1e-9);
        menu.toggleAntennaFactor();
        EXPECT_EQ(controls.antGainLabel + record.AntGain, std::string("Gain (d&Bi)") + gain);
    }
    EXPECT_TRUE(events.calls.empty()) << "a unit change alone recalculates nothing";
    record.Interval = record.IntervalTag = "64";
    for (const auto& [samples, interval, label] :
         {std::tuple{false, "500", "Interval (ms)"}, {true, "8", "Samples (k)"}}) {
        menu.intervalLabelDoubleClicked();
        EXPECT_EQ(options.Samples, samples);
        EXPECT_EQ(record.Interval + record.IntervalTag + controls.intervalLabel,
                  std::string(interval) + interval + label);
    }
}

TEST_F(SetupTest, LimitsOffKeepsResultsVisibleButUnusable) {
    commands.Step2 = commands.Step3 = commands.recordTsvButtonEnabled = true;
    commands.enableOutputCommands(true);
    menu.toggleLimits();
    EXPECT_EQ(events.calls, (Calls{"recalculate", "Focus Step3"}));
    for (bool enabled :
         {commands.recordTsvButtonEnabled, commands.calibrateRxEnabled, commands.saveTextEnabled,
          commands.recordTsvEnabled, commands.sendTextEnabled, commands.transferEnabled,
          commands.copyTextEnabled})
        EXPECT_FALSE(enabled);
    EXPECT_TRUE(commands.exportGnuplotEnabled && commands.Step2 && commands.Step3);
    events.calls.clear(), menu.toggleLimits();
    EXPECT_EQ(events.calls, (Calls{"resetFromStep1", "Focus Step1"}));
    commands.Step3 = false, events.calls.clear(), menu.toggleLimits();
    EXPECT_EQ(events.calls, Calls{"recalculate"}) << "without step 3 the focus stays";
}

TEST(IniFile, ReadsLikeTheWindowsProfileFunctions) {
    const IniFile ini = IniFile::Parse(
        "orphan=ignored before any section\r\n; a comment=not a key\r\n"
        "  [ Conditions ]  trailing words\r\n  RECEIVER  =   IC-7300  \r\nreceiver=second loses\r\n"
        "Tester=\"  Joe  \"\r\nQuoted=\"\"\"twice\"\"\"\r\nHalf=\"open\r\nLone=\"\r\nBlank=\"\"\r\n"
        "line without an equals sign\r\n=no key\r\nurl=host/path?a=b;c\r\nEmpty=\r\n"
        "[unclosed\r\nAfterUnclosed=still conditions\n[options]\nVerbose = False\n"
        "[CONDITIONS]\nTester=repeated section loses\nLoss=1.5\n");
    std::string got; // "-" where no value is found
    for (const char* key : {"Receiver", "Tester", "Quoted", "Half", "Lone", "Blank", "url", "Empty",
                            "AfterUnclosed", "Loss", "orphan", "; a comment", ""})
        got += ini.Value("conditions", key).value_or("-") + "|";
    got += ini.Value("options", "verbose").value_or("-") + ini.Value("options", "x").value_or("-");
    EXPECT_EQ(got, "IC-7300|  Joe  |\"\"twice\"\"|\"open|\"||host/path?a=b;c||still conditions|"
                   "1.5|-|-|-|False-");
    EXPECT_EQ(ini.Get("transfer", "online", "1"), "1");
    EXPECT_EQ(ini.Get("conditions", "Empty", "default"), "") << "present but empty is not absent";
}

TEST(IniFile, WritesCrLfSectionsInOrderAndQuotesOnlyWhatWouldNotReadBack) {
    IniFile ini;
    ini.Set("conditions", "Receiver", "IC-7300");
    ini.Set("conditions", "Tester", "padded ");
    ini.Set("conditions", "Lead", " x");
    ini.Set("options", "Verbose", "True");
    ini.Set("conditions", "Notes", "two\r\nlines");
    ini.Set("CONDITIONS", "receiver", "FT-817"); // same key: replaced in place
    ini.Set("conditions", "Quoted", "\"q\"");
    ini.Set("conditions", "Inner", "a \"b\" c");
    EXPECT_EQ(ini.Text(), "[conditions]\r\nReceiver=FT-817\r\nTester=\"padded \"\r\nLead=\" x\"\r\n"
                          "Notes=two  lines\r\nQuoted=\"\"q\"\"\r\nInner=a \"b\" c\r\n\r\n"
                          "[options]\r\nVerbose=True\r\n");
    EXPECT_EQ(IniFile::Parse(ini.Text()).Text(), ini.Text());
    EXPECT_EQ(IniFile().Text(), "");
}

TEST(IniFile, AnyBytesReadBackAlike) {
    std::mt19937 rng(11);
    // Whatever bytes come in, what was understood is written and understood the same again.
    const std::string pieces[] = {"[",    "]",    "=",    ";",    "\"",
                                  "\r\n", "\n",   "\r",   " ",    "a",
                                  "\x80", "\xC3", "\xA9", "\xFF", std::string(1, '\0')};
    for (int round = 0; round < 2000; ++round) {
        std::string bytes;
        for (int i = rng() % 60; i > 0; --i)
            bytes += pieces[rng() % std::size(pieces)];
        const IniFile once = IniFile::Parse(bytes);
        EXPECT_EQ(IniFile::Parse(once.Text()).Text(), once.Text());
        EXPECT_TRUE(IsValidUtf8(once.Text()));
    }
}

TEST(TextEncoding, AgreesWithTheCLibrary) {
    for (int b = 1; b < 256; ++b) {
        const std::string byte(1, static_cast<char>(b));
        // The five codes Windows-1252 leaves open become the C1 controls of the same number.
        const auto oracle = b == 0x81 || b == 0x8D || b == 0x8F || b == 0x90 || b == 0x9D
                                ? iconvConvert("UTF-32LE", "UTF-8", {byte[0], 0, 0, 0})
                                : iconvConvert("WINDOWS-1252", "UTF-8", byte);
        EXPECT_EQ(Windows1252ToUtf8(byte), oracle) << b;
    }
    std::mt19937 rng(9);
    std::uniform_int_distribution<int> anyByte(1, 255), highByte(0x80, 0xFF);
    for (int round = 0; round < 20000; ++round) {
        std::string s; // mostly lead and continuation bytes, where the mistakes are
        for (int i = std::uniform_int_distribution<int>(1, 6)(rng); i > 0; --i)
            s += static_cast<char>(rng() % 5 ? highByte(rng) : anyByte(rng));
        EXPECT_EQ(IsValidUtf8(s), iconvConvert("UTF-8", "UTF-32LE", s).has_value());
    }
    // A byte-order mark is dropped; one stray byte makes the whole file Windows-1252.
    EXPECT_EQ(DecodeText("\xEF\xBB\xBF[x]"), "[x]");
    EXPECT_EQ(DecodeText("\xC3\xA9 \xE9 \x80"), "\xC3\x83\xC2\xA9 \xC3\xA9 \xE2\x82\xAC");
}

TEST(IniFile, UnreadableFilesSayWhyAndUnicodeFilesReadAsTheirText) {
    // A pipe nobody writes to, something far too large or a read error: never a wait or a throw.
    test::TempDir dir;
    const fs::path big = dir.path / "big.zav", fifo = dir.path / "fifo.zav";
    spit(big, "[x]\r\ny=1\r\n" + std::string(IniFile::kMaxFileBytes, ';'));
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const std::pair<fs::path, const char*> unreadable[] = {
        {dir.path / "nothing.zav", "No such file or directory"},
        {dir.path, "it is a folder"},
        {fifo, "it is not a regular file"},
        {big, "it is larger than 4194304 bytes"},
        {"/proc/self/mem", "Input/output error"}}; // a regular file whose reading fails
    for (const auto& [path, reason] : unreadable) {
        IniFile loaded = IniFile::Parse("[x]\ny=1\n");
        std::string error;
        EXPECT_FALSE(loaded.Load(path.string(), &error)) << path;
        EXPECT_EQ(error, reason) << path;
        EXPECT_EQ(loaded.Text(), "") << path;
    }
    const std::string text = "[conditions]\r\nReceiver=R\xC3\xA9"
                             "cepteur \xE2\x82\xAC \xF0\x9F\x93\xBB\r\nLoss=1.5\r\n";
    std::string crOnly = text;
    crOnly.erase(std::remove(crOnly.begin(), crOnly.end(), '\n'), crOnly.end());
    for (const std::string& bytes :
         {crOnly, "\xFF\xFE" + iconvConvert("UTF-8", "UTF-16LE", text).value_or(""),
          "\xFE\xFF" + iconvConvert("UTF-8", "UTF-16BE", text).value_or(""),
          "\xEF\xBB\xBF" + text}) {
        spit(dir.path / "p.zav", bytes);
        IniFile ini;
        EXPECT_TRUE(ini.Load((dir.path / "p.zav").string()) && ini.Text() == text) << bytes;
    }
    // A lone surrogate or a stray last byte is no reason to lose the rest.
    const char broken[] = "\xFF\xFE[\0a\0]\0\n\0k\0=\0\x00\xD8x";
    EXPECT_EQ(IniFile::Parse(std::string(broken, sizeof broken - 1)).Text(),
              "[a]\r\nk=\xEF\xBF\xBD\xEF\xBF\xBD\r\n");
}
