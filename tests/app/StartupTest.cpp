#include "app/Startup.h"
#include "platform/MemorySettingsStore.h"
#include "platform/Paths.h"
#include "testsupport/FakeDialogs.h"

#include <gtest/gtest.h>

using namespace zav;

namespace {

const std::string kDir = std::string("/work/site") + kDirSeparator;

struct Launch {
    test::FakeDialogs dialogs;
    MemorySettingsStore settings;
    StartupDecision decide(const std::string& line) {
        return DecideStartup(line, "/work/site", settings, dialogs);
    }
};

} // namespace

TEST(Startup, DefaultsWithoutArguments) {
    Launch r;
    const auto d = r.decide("");
    EXPECT_TRUE(d.showWindow);
    EXPECT_EQ(d.state.currentDir, kDir);
    EXPECT_EQ(d.state.profilePath, kDir + "ZAV.zav");
    EXPECT_EQ(d.state.profileName, "ZAV");
    EXPECT_EQ(d.state.tsvFileName, "ZavData.tab");
    EXPECT_EQ(d.state.debugFlag, 0);
    EXPECT_TRUE(r.dialogs.messages.empty());
}

TEST(Startup, HelpShowsTheUsageBoxAndNeverTheWindow) {
    Launch r;
    const auto d = r.decide("-d -h -t x.tab");
    EXPECT_FALSE(d.showWindow);
    ASSERT_EQ(r.dialogs.messages.size(), 1u);
    EXPECT_EQ(r.dialogs.messages[0].title, "ZAV - Help");
    EXPECT_EQ(r.dialogs.messages[0].text,
              "Usage: ZAV [-d] [-h] [-l] [-t]\r   d   debug\r   h   help\r"
              "   l   use last saved profile\r   t   TSV file name\r");
    EXPECT_EQ(r.dialogs.messages[0].buttons, MessageButtons::Ok);
}

TEST(Startup, OptionErrorsEndBeforeTheWindow) {
    Launch r;
    EXPECT_FALSE(r.decide("-t").showWindow);
    EXPECT_FALSE(r.decide("-q prof").showWindow);
    ASSERT_EQ(r.dialogs.messages.size(), 2u);
    EXPECT_EQ(r.dialogs.messages[0].text, "Error: \"t\" option requires an argument.");
    EXPECT_EQ(r.dialogs.messages[1].text, "Error: \"q\" is not a valid option.");
}

TEST(Startup, LastProfileThenFileArgumentWins) {
    Launch r;
    r.settings.SaveSetting("default", "Profile", "/old/place/last.zav");
    auto d = r.decide("-l");
    EXPECT_EQ(d.state.profilePath, "/old/place/last.zav");
    EXPECT_EQ(d.state.profileName, "last");

    d = r.decide("-dl myprof");
    EXPECT_EQ(d.state.debugFlag, 1);
    EXPECT_EQ(d.state.profilePath, kDir + "myprof.zav");
    EXPECT_EQ(d.state.profileName, "myprof");

    Launch empty;
    d = empty.decide("-l");
    EXPECT_EQ(d.state.profilePath, kDir + "ZAV.zav");
}

TEST(Startup, ProfileArgumentExtensionAndFolder) {
    Launch r;
    EXPECT_EQ(r.decide("home.zav").state.profilePath, kDir + "home.zav");
    EXPECT_EQ(r.decide("/data/field").state.profilePath, "/data/field.zav");
    EXPECT_EQ(r.decide("\"/my data/a b.zav\"").state.profilePath, "/my data/a b.zav");
    EXPECT_EQ(r.decide("\"/my data/a b.zav\"").state.profileName, "a b");
    EXPECT_EQ(r.decide("-- -h").state.profilePath, kDir + "-h.zav");
    EXPECT_TRUE(r.dialogs.messages.empty());
}

TEST(Startup, DataLogNameAndArgumentLimit) {
    Launch r;
    auto d = r.decide("-t \"my log.tab\" prof");
    EXPECT_EQ(d.state.tsvFileName, "my log.tab");
    EXPECT_EQ(d.state.profileName, "prof");
    // Five arguments at most: the profile in sixth place is never seen.
    d = r.decide("-d -d -d -d -d prof");
    EXPECT_TRUE(d.showWindow);
    EXPECT_EQ(d.state.profilePath, kDir + "ZAV.zav");
}
