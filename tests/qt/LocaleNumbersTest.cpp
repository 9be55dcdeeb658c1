// The shipped profile opened with the separator the real QLocale gives: shown in the locale,
// and written back exactly as it was.
#include "../config/RecordingEvents.h"
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

TEST(LocaleNumbers, TheLocalesSeparatorShowsTheShippedProfileAndWritesItBackAsItWas) {
    const QLocale locales[] = {QLocale(QLocale::English), QLocale(QLocale::German),
                               QLocale(QLocale::Arabic, QLocale::SaudiArabia)};
    test::TempDir dir;
    const fs::path example = fs::path(ZAV_SOURCE_DIR) / "examples" / "example.zav";
    const fs::path copy = dir.path / "example.zav";
    for (int i = 0; i < 3; ++i) {
        const char sep = LocaleDecimalSeparator(locales[i]);
        EXPECT_EQ(sep, ".,."[i]) << i; // Arabic's is not ASCII: a point
        fs::copy_file(example, copy, fs::copy_options::overwrite_existing);
        SetupRecord r;
        Options options;
        SetupControls controls;
        PersistentState state;
        state.ProfilePath = copy.string();
        MemorySettingsStore settings;
        test::FakeDialogs dialogs;
        test::RecordingEvents events;
        Profiles profiles(r, options, controls, state, settings, dialogs, events, sep);
        profiles.GetProfileSettings();
        std::string shown = "7.100 8.00 0.0 1.0";
        std::replace(shown.begin(), shown.end(), '.', sep);
        EXPECT_EQ(r.Frequency + " " + r.RxNF + " " + r.Attenuator + " " + r.Loss, shown);
        EXPECT_TRUE(dialogs.messages.empty());
        ASSERT_TRUE(profiles.SaveWindowSettings());
        EXPECT_EQ(test::ReadFile(copy), test::ReadFile(example));
    }
}
