#include "config/Profiles.h"
#include "config/RecordingEvents.h"
#include "platform/MemorySettingsStore.h"
#include "qt/services/LocaleSeparator.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/ScratchDir.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace zav;
namespace fs = std::filesystem;

TEST(LocaleNumbers, TheLocalesSeparatorShowsTheShippedProfileAndWritesItBackAsItWas) {
    const QLocale locales[] = {QLocale(QLocale::English), QLocale(QLocale::German),
                               QLocale(QLocale::Arabic, QLocale::SaudiArabia)}; // not ASCII: "."
    const char* shown[] = {"7.100 8.00 0.0 1.0", "7,100 8,00 0,0 1,0", "7.100 8.00 0.0 1.0"};
    const fs::path example = fs::path(ZAV_SOURCE_DIR) / "examples" / "example.zav";
    const fs::path copy = test::ScratchDir() / "example.zav";
    for (int i = 0; i < 3; ++i) {
        const char sep = LocaleDecimalSeparator(locales[i]);
        EXPECT_EQ(sep, shown[i][1]) << i;
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
        EXPECT_EQ(r.Frequency + " " + r.RxNF + " " + r.Attenuator + " " + r.Loss, shown[i]);
        ASSERT_TRUE(profiles.SaveWindowSettings());
        EXPECT_EQ(test::ReadFile(copy), test::ReadFile(example));
    }
}
