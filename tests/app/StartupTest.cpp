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
    EXPECT_EQ(r.decide("").state.currentDir, kDir);
    const std::pair<const char*, std::string> lines[] = {
        {"", kDir + "ZAV.zav|ZAV|0ZavData.tab"},
        {"-l", kDir + "ZAV.zav|ZAV|0ZavData.tab"}, // nothing saved yet
        {"-l", "/old/place/last.zav|last|0ZavData.tab"},
        {"-dl myprof", kDir + "myprof.zav|myprof|1ZavData.tab"}, // the file argument wins
        {"home.zav", kDir + "home.zav|home|0ZavData.tab"},
        {"/data/field", "/data/field.zav|field|0ZavData.tab"},
        {"-t \"my log.tab\" \"/my data/a b.zav\"", "/my data/a b.zav|a b|0my log.tab"},
        {"-d -d -d -d -d prof", kDir + "ZAV.zav|ZAV|1ZavData.tab"}}; // a sixth is never seen
    for (const auto& [line, expected] : lines) {
        const StartupState s = r.decide(line).state;
        EXPECT_EQ(s.profilePath + "|" + s.profileName + "|" + char('0' + s.debugFlag) +
                      s.tsvFileName,
                  expected)
            << line;
        if (line == std::string("-l"))
            r.settings.SaveSetting("default", "Profile", "/old/place/last.zav");
    }
    EXPECT_TRUE(r.dialogs.messages.empty() && r.decide("-l").showWindow);
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
