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

TEST(Startup, DefaultsLastProfileAndTheProfileArgument) {
    Launch r;
    auto d = r.decide("");
    EXPECT_TRUE(d.showWindow);
    EXPECT_EQ(d.state.currentDir, kDir);
    EXPECT_EQ(d.state.profilePath + "|" + d.state.profileName, kDir + "ZAV.zav|ZAV");
    EXPECT_EQ(d.state.tsvFileName, "ZavData.tab");
    EXPECT_EQ(d.state.debugFlag, 0);
    EXPECT_EQ(r.decide("-l").state.profilePath, kDir + "ZAV.zav"); // nothing saved yet

    r.settings.SaveSetting("default", "Profile", "/old/place/last.zav");
    d = r.decide("-l");
    EXPECT_EQ(d.state.profilePath + "|" + d.state.profileName, "/old/place/last.zav|last");
    d = r.decide("-dl myprof"); // the file argument wins
    EXPECT_EQ(d.state.debugFlag, 1);
    EXPECT_EQ(d.state.profilePath + "|" + d.state.profileName, kDir + "myprof.zav|myprof");

    EXPECT_EQ(r.decide("home.zav").state.profilePath, kDir + "home.zav");
    EXPECT_EQ(r.decide("/data/field").state.profilePath, "/data/field.zav");
    d = r.decide("-t \"my log.tab\" \"/my data/a b.zav\"");
    EXPECT_EQ(d.state.tsvFileName, "my log.tab");
    EXPECT_EQ(d.state.profilePath + "|" + d.state.profileName, "/my data/a b.zav|a b");
    // Five arguments at most: the profile in sixth place is never seen.
    d = r.decide("-d -d -d -d -d prof");
    EXPECT_TRUE(d.showWindow);
    EXPECT_EQ(d.state.profilePath, kDir + "ZAV.zav");
    EXPECT_TRUE(r.dialogs.messages.empty());
}

TEST(Startup, HelpAndOptionErrorsEndBeforeTheWindow) {
    Launch r;
    EXPECT_FALSE(r.decide("-d -h -t x.tab").showWindow);
    ASSERT_EQ(r.dialogs.messages.size(), 1u);
    EXPECT_EQ(r.dialogs.messages[0].title, "ZAV - Help");
    EXPECT_EQ(r.dialogs.messages[0].text,
              "Usage: ZAV [-d] [-h] [-l] [-t]\r   d   debug\r   h   help\r"
              "   l   use last saved profile\r   t   TSV file name\r");
    // (The option errors' own texts: GetOpt's test.)
    EXPECT_FALSE(r.decide("-t").showWindow);
    EXPECT_FALSE(r.decide("-q prof").showWindow);
    EXPECT_EQ(r.dialogs.messages.size(), 3u);
}
