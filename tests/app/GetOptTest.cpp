#include "app/GetOpt.h"
#include "platform/CommandLine.h"
#include "testsupport/FakeDialogs.h"

#include <gtest/gtest.h>

using namespace zav;
using Letters = std::vector<std::string>;

namespace {

// Runs GetOpt over a whole command line and records letters and option arguments.
Letters letters(const std::string& line, GetOpt& g) {
    const auto args = SplitCommandLine(line, 5);
    Letters out;
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

TEST(GetOpt, FlagsArgumentsAndWhereOptionsEnd) {
    struct Case {
        const char* line;
        Letters letters;
        int optind;
    };
    const Case cases[] = {{"-d -l", {"d", "l"}, 3},
                          {"-dl myprof", {"d", "l"}, 2},
                          {"-tmy.tab -d", {"t=my.tab", "d"}, 3},
                          {"-dtlog.tab", {"d", "t=log.tab"}, 2},
                          {"-t my.tab", {"t=my.tab"}, 3},
                          {"prof -d", {}, 1},
                          {"-d -- -h", {"d"}, 3}, // after "--" "-h" is an argument
                          {"- prof", {""}, 2}};   // a lone dash is passed over
    for (const Case& c : cases) {
        test::FakeDialogs d;
        GetOpt g(d);
        EXPECT_EQ(letters(c.line, g), c.letters) << c.line;
        EXPECT_EQ(g.optind, c.optind) << c.line;
        EXPECT_TRUE(d.messages.empty()) << c.line;
    }
}

TEST(GetOpt, UnknownOptionAndMissingArgumentShowTheirMessagesUnlessSilenced) {
    test::FakeDialogs d;
    GetOpt unknown(d), missing(d), colon(d), quiet(d);
    EXPECT_EQ(letters("-x", unknown), Letters{"?"});
    EXPECT_EQ(letters("-d -t", missing), (Letters{"d", "?"}));
    EXPECT_EQ(letters("-:", colon), Letters{"?"}); // ":" is never an option
    quiet.opterr = false;
    EXPECT_EQ(letters("-x", quiet), Letters{"?"});
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
