#include "app/Startup.h"
#include "app/GetOpt.h"
#include "platform/CommandLine.h"
#include "platform/MemorySettingsStore.h"
#include "platform/Paths.h"
#include "testsupport/FakeDialogs.h"

#include <gtest/gtest.h>

using namespace zav;

namespace {

// Runs GetOpt over a whole command line: the letters and option arguments, then where it ended.
std::string letters(const std::string& line, GetOpt& g) {
    const auto args = SplitCommandLine(line, 5);
    std::string out;
    for (std::string c; out.size() < 99 && (c = g.Next(args, "dhlt:")) != "-1";) {
        out += (g.optarg.empty() ? c : c + "=" + g.optarg) + " ";
        if (c == "?")
            break;
    }
    return out + "@" + std::to_string(g.optind);
}

const std::string kDir = std::string("/work/site") + kDirSeparator;

struct Launch {
    test::FakeDialogs dialogs;
    MemorySettingsStore settings;
    StartupDecision decide(const std::string& line) {
        return DecideStartup(line, "/work/site", settings, dialogs);
    }
};

} // namespace

TEST(GetOpt, FlagsArgumentsErrorsAndWhereOptionsEnd) {
    // After "--" "-h" is an argument; a lone dash is passed over.
    for (const auto& [line, expected] : {std::pair{"-d -l", "d l @3"},
                                         {"-dl myprof", "d l @2"},
                                         {"-tmy.tab -d", "t=my.tab d @3"},
                                         {"-dtlog.tab", "d t=log.tab @2"},
                                         {"-t my.tab", "t=my.tab @3"},
                                         {"prof -d", "@1"},
                                         {"-d -- -h", "d @3"},
                                         {"- prof", " @2"}}) {
        test::FakeDialogs d;
        GetOpt g(d);
        EXPECT_EQ(letters(line, g), expected);
        EXPECT_TRUE(d.messages.empty()) << line;
    }
    test::FakeDialogs d;
    GetOpt unknown(d), missing(d), colon(d), quiet(d);
    quiet.opterr = false;
    std::string got = letters("-x", unknown); // in this order
    got += letters("-d -t", missing), got += letters("-:", colon), got += letters("-x", quiet);
    EXPECT_EQ(got, "? @2d ? @3? @2? @2"); // ":" is never an option
    EXPECT_EQ(d.texts(), (std::vector<std::string>{"Error: \"x\" is not a valid option.",
                                                   "Error: \"t\" option requires an argument.",
                                                   "Error: \":\" is not a valid option."}));
    EXPECT_EQ(d.messages[0].icon, MessageIcon::Critical);
    // The position only advances past an unknown letter that ends its argument.
    const auto first = SplitCommandLine("-xd", 5), last = SplitCommandLine("-dx", 5);
    GetOpt a(d), b(d);
    std::string seen = a.Next(first, "dhlt:");
    seen += b.Next(last, "dhlt:"), seen += b.Next(last, "dhlt:");
    EXPECT_EQ(seen, "?d?");
    EXPECT_EQ(std::vector({a.optind, a.optpos, b.optind, b.optpos}), std::vector({1, 2, 2, 2}));
}

TEST(Startup, ProfileLogAndDebugFlagOrHelpAndNoWindow) {
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
    EXPECT_FALSE(r.decide("-d -h -t x.tab").showWindow);
    ASSERT_EQ(r.dialogs.messages.size(), 1u);
    EXPECT_EQ(r.dialogs.messages[0].title + "|" + r.dialogs.messages[0].text,
              "ZAV - Help|Usage: ZAV [-d] [-h] [-l] [-t]\r   d   debug\r   h   help\r"
              "   l   use last saved profile\r   t   TSV file name\r");
    EXPECT_FALSE(r.decide("-t").showWindow || r.decide("-q prof").showWindow);
    EXPECT_EQ(r.dialogs.messages.size(), 3u);
}
