#include "app/GetOpt.h"
#include "platform/CommandLine.h"
#include "testsupport/FakeDialogs.h"

#include <gtest/gtest.h>

using namespace zav;

namespace {

// Runs GetOpt over a whole command line and records letters and option arguments.
std::vector<std::string> letters(const std::string& line, test::FakeDialogs& dialogs,
                                 GetOpt* state = nullptr) {
    GetOpt local(dialogs);
    GetOpt& g = state ? *state : local;
    const auto args = SplitCommandLine(line, 5);
    std::vector<std::string> out;
    for (int guard = 0; guard < 20; ++guard) {
        const std::string c = g.Next(args, "dhlt:");
        if (c == "-1")
            break;
        out.push_back(g.optarg.empty() ? c : c + "=" + g.optarg);
        if (c == "?")
            break;
    }
    return out;
}

} // namespace

TEST(GetOpt, FlagsGroupedOrApartAndOptionArguments) {
    test::FakeDialogs d;
    EXPECT_EQ(letters("-d -l", d), (std::vector<std::string>{"d", "l"}));
    EXPECT_EQ(letters("-dl myprof", d), (std::vector<std::string>{"d", "l"}));
    EXPECT_EQ(letters("-t my.tab", d), (std::vector<std::string>{"t=my.tab"}));
    EXPECT_EQ(letters("-tmy.tab -d", d), (std::vector<std::string>{"t=my.tab", "d"}));
    EXPECT_EQ(letters("-dtlog.tab", d), (std::vector<std::string>{"d", "t=log.tab"}));
    EXPECT_TRUE(d.messages.empty());
}

TEST(GetOpt, StopsAtTheFirstNonOptionAndAfterDoubleDash) {
    test::FakeDialogs d;
    GetOpt g(d);
    EXPECT_EQ(letters("prof -d", d, &g), std::vector<std::string>{});
    EXPECT_EQ(g.optind, 1);

    GetOpt g2(d);
    EXPECT_EQ(letters("-d -- -h", d, &g2), std::vector<std::string>{"d"});
    EXPECT_EQ(g2.optind, 3); // "-h" after "--" is an argument, not an option
}

TEST(GetOpt, UnknownOptionAndMissingArgumentShowTheirMessages) {
    test::FakeDialogs d;
    EXPECT_EQ(letters("-x", d), std::vector<std::string>{"?"});
    ASSERT_EQ(d.messages.size(), 1u);
    EXPECT_EQ(d.messages[0].text, "Error: \"x\" is not a valid option.");
    EXPECT_EQ(d.messages[0].icon, MessageIcon::Critical);

    EXPECT_EQ(letters("-d -t", d), (std::vector<std::string>{"d", "?"}));
    ASSERT_EQ(d.messages.size(), 2u);
    EXPECT_EQ(d.messages[1].text, "Error: \"t\" option requires an argument.");

    EXPECT_EQ(letters("-:", d), std::vector<std::string>{"?"}); // ":" is never an option
}

TEST(GetOpt, OpterrOffSilencesButStillFails) {
    test::FakeDialogs d;
    GetOpt g(d);
    g.opterr = false;
    EXPECT_EQ(letters("-x", d, &g), std::vector<std::string>{"?"});
    EXPECT_TRUE(d.messages.empty());
}

TEST(GetOpt, StateAfterAnUnknownLetterInsideAGroup) {
    // The position only advances past an unknown letter that ends its argument.
    test::FakeDialogs d;
    GetOpt g(d);
    const auto args = SplitCommandLine("-xd", 5);
    EXPECT_EQ(g.Next(args, "dhlt:"), "?");
    EXPECT_EQ(g.optind, 1);
    EXPECT_EQ(g.optpos, 2);
    const auto args2 = SplitCommandLine("-dx", 5);
    GetOpt g2(d);
    EXPECT_EQ(g2.Next(args2, "dhlt:"), "d");
    EXPECT_EQ(g2.Next(args2, "dhlt:"), "?");
    EXPECT_EQ(g2.optind, 2);
    EXPECT_EQ(g2.optpos, 2);
}

TEST(GetOpt, LoneDashIsIgnored) {
    test::FakeDialogs d;
    GetOpt g(d);
    const auto args = SplitCommandLine("- prof", 5);
    EXPECT_EQ(g.Next(args, "dhlt:"), "");
    EXPECT_EQ(g.Next(args, "dhlt:"), "-1");
    EXPECT_EQ(g.optind, 2);
    EXPECT_TRUE(d.messages.empty());
}
