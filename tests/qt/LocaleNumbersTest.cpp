// Numbers in profiles with the decimal separator the real QLocale gives.
#include "config/Profiles.h"
#include "platform/MemorySettingsStore.h"
#include "qt/services/LocaleSeparator.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/ScratchDir.h"

#include <gtest/gtest.h>

#include <algorithm>
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

} // namespace

// The separator the real QLocale gives, and the shipped profile opened in it: shown in the
// locale, and written back exactly as it was.
TEST(LocaleNumbers, TheLocalesSeparatorShowsTheShippedProfileAndWritesItBackAsItWas) {
    const struct {
        QLocale locale;
        char separator;
    } locales[] = {{QLocale(QLocale::English, QLocale::UnitedStates), '.'},
                   {QLocale(QLocale::German, QLocale::Germany), ','},
                   {QLocale(QLocale::French, QLocale::France), ','},
                   {QLocale(QLocale::Arabic, QLocale::SaudiArabia), '.'}}; // not ASCII: a point
    test::TempDir dir;
    const fs::path example = fs::path(ZAV_SOURCE_DIR) / "examples" / "example.zav";
    for (const auto& [locale, expected] : locales) {
        const char sep = LocaleDecimalSeparator(locale);
        EXPECT_EQ(sep, expected) << locale.name().toStdString();
        const fs::path copy = dir.path / "example.zav";
        fs::copy_file(example, copy, fs::copy_options::overwrite_existing);
        Desktop desk(sep);
        desk.open(copy);
        const SetupRecord& r = desk.record;
        std::string shown = "7.100 8.00 0.0 1.0";
        std::replace(shown.begin(), shown.end(), '.', sep);
        EXPECT_EQ(r.Frequency + " " + r.RxNF + " " + r.Attenuator + " " + r.Loss, shown);
        EXPECT_TRUE(desk.dialogs.messages.empty());
        ASSERT_TRUE(desk.profiles.SaveWindowSettings());
        EXPECT_EQ(test::ReadFile(copy), test::ReadFile(example));
    }
}
