// Profiles and the transfer between a "." and a "," locale, with the separators the real
// QLocale gives: what one machine writes or sends, the other reads as the same number.
#include "config/Profiles.h"
#include "platform/Format.h"
#include "platform/MemorySettingsStore.h"
#include "qt/services/LocaleSeparator.h"
#include "report/PostVars.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/ScratchDir.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace zav;
namespace fs = std::filesystem;

namespace {

struct NoEvents : SetupEvents {
    void recalculate() override {}
    void resetFromStep1() override {}
    void resetFromStep3() override {}
    std::optional<double> AntennaValueAt(double) override { return std::nullopt; }
    void UnloadAntennaFile() override {}
    void LoadAntennaFile() override {}
    void SetFocus(FocusTarget) override {}
    void ProfileNameChanged(const std::string&) override {}
};

// One desktop's profile handling in the locale whose separator is `sep`.
struct Desktop {
    explicit Desktop(char sep)
        : profiles(record, options, controls, state, settings, dialogs, events, sep) {}
    void open(const fs::path& path) {
        state.ProfilePath = path.string();
        profiles.GetProfileSettings();
    }
    SetupRecord record;
    Options options;
    SetupControls controls;
    PersistentState state;
    MemorySettingsStore settings;
    test::FakeDialogs dialogs;
    NoEvents events;
    Profiles profiles;
};

std::string shown(const char* stored, char sep) {
    std::string text = stored;
    for (char& c : text)
        if (c == '.')
            c = sep;
    return text;
}

} // namespace

TEST(LocaleNumbers, ProfilesAndTheTransferMeanTheSameInAPointAndACommaLocale) {
    const char point = LocaleDecimalSeparator(QLocale(QLocale::English, QLocale::UnitedStates));
    const char comma = LocaleDecimalSeparator(QLocale(QLocale::German, QLocale::Germany));
    ASSERT_EQ(point, '.');
    ASSERT_EQ(comma, ',');
    test::TempDir dir;
    const fs::path example = fs::path(ZAV_SOURCE_DIR) / "examples" / "example.zav";
    const std::string shipped = test::ReadFile(example);

    std::string sent[2];
    for (char sep : {point, comma}) {
        SCOPED_TRACE(sep);
        // The shipped profile opens with its own values, shown in the locale...
        const fs::path copy = dir.path / "example.zav";
        fs::copy_file(example, copy, fs::copy_options::overwrite_existing);
        Desktop desk(sep);
        desk.open(copy);
        const SetupRecord& r = desk.record;
        EXPECT_EQ(r.Frequency + " " + r.RxNF + " " + r.Attenuator + " " + r.Loss,
                  shown("7.100 8.00 0.0 1.0", sep));
        EXPECT_TRUE(desk.dialogs.messages.empty());
        // ...and closing the program writes back exactly what was there.
        ASSERT_TRUE(desk.profiles.SaveWindowSettings());
        EXPECT_EQ(test::ReadFile(copy), shipped);

        // The observation a window in this locale would send.
        desk.record.lat = shown("48.100000", sep);
        Observation observation;
        observation.ObsTime = "20261121093015";
        observation.ObsLat = shown("48.100000", sep);
        observation.ObsLon = shown("11.500000", sep);
        observation.durationSeconds = 1.5;
        ResultGrid meas = ResultGrid::MakeMeasGrid(), calc = ResultGrid::MakeCalcGrid();
        calc.SetText(2, 2, Format(12.34, "0.00", sep));
        meas.SetText(23, Format(1.5, "0.00", sep));
        sent[sep == comma] =
            PostVars(ReportSource{desk.record, observation, meas, calc, -2.15, 12.0, sep});
    }
    EXPECT_EQ(sent[0], sent[1]);
    EXPECT_NE(sent[1].find("&Frequency=7%2E100&"), std::string::npos) << sent[1];
    EXPECT_NE(sent[1].find("&FsRms=12.34&"), std::string::npos) << sent[1];
    EXPECT_NE(sent[1].find("&Latitude=48.100000&Longitude=11.500000"), std::string::npos);

    // Written in one locale, read in the other, both ways.
    for (auto [writer, reader] : {std::pair{comma, point}, std::pair{point, comma}}) {
        SCOPED_TRACE(std::string(1, writer) + " to " + reader);
        const fs::path written = dir.path / "written.zav";
        Desktop from(writer);
        from.state.ProfilePath = written.string();
        from.record.Frequency = shown("2.700", writer);
        from.record.Bandwidth = "2700";
        from.record.lon = shown("-8.500000", writer);
        ASSERT_TRUE(from.profiles.SaveProfileSettings());
        Desktop to(reader);
        to.open(written);
        EXPECT_EQ(to.record.Frequency + " " + to.record.Bandwidth + " " + to.record.lon,
                  shown("2.700 2700 -8.500000", reader));
    }
}
