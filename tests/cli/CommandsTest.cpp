#include "cli/Commands.h"
#include "CliRun.h"
#include "cli/CliDialogs.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace zav;
using zav::test::Cli;

TEST(Cli, HelpListsEveryCommandOfTheTool) {
    Cli c;
    EXPECT_EQ(c.run({"help"}), kExitOk);
    for (const char* name :
         {"analyse", "measure", "record", "profile", "antenna", "nmea", "gps", "update", "export"})
        EXPECT_NE(c.out.str().find(std::string("zavcli ") + name), std::string::npos) << name;
}

TEST(Cli, UsageErrorsExitTwo) {
    Cli c;
    EXPECT_EQ(c.run({"frobnicate"}), kExitUsage);
    EXPECT_NE(c.err.str().find("unknown command"), std::string::npos);
    EXPECT_EQ(c.run({"help", "nothing"}), kExitUsage);
}

TEST(Cli, CommandHelpDescribesTheCommand) {
    Cli c;
    EXPECT_EQ(c.run({"antenna", "--help"}), kExitOk);
    EXPECT_NE(c.out.str().find("usage: zavcli antenna"), std::string::npos);
}

TEST(CliDialogs, MessagesGoToStandardErrorAsTitleAndText) {
    std::ostringstream err;
    CliDialogs d(err);
    d.ShowMessage("Unsupported WAVE file format.", "ZAV", MessageIcon::Critical);
    d.ShowMessage("line one\rline two\r", "", MessageIcon::None);
    EXPECT_EQ(err.str(), "ZAV: Unsupported WAVE file format.\nline one\nline two\n");
    EXPECT_FALSE(d.OpenFileName({}).has_value());
}
