// zavcli antenna in-process: the loader's messages and the exit codes (the readings are
// checked end to end against tests/data/measure).
#include "CliRun.h"
#include "cli/Commands.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

using namespace zav;
using zav::test::Cli;

namespace {

std::string antennaFile(const std::string& name, const std::string& text) {
    const auto dir = std::filesystem::path(ZAV_BINARY_DIR) / "test-scratch" / "cli-antenna";
    std::filesystem::create_directories(dir);
    std::ofstream(dir / name, std::ios::binary) << text;
    return (dir / name).string();
}

} // namespace

TEST(AntennaCommand, FailedLoadsAndBadUsage) {
    Cli unsorted;
    EXPECT_EQ(unsorted.run({"antenna", antennaFile("unsorted.tab", "1\t1\n3\t3\n2\t2\n4\t4\n"),
                            "--at", "2"}),
              kExitFailed);
    EXPECT_TRUE(unsorted.out.str().empty());
    EXPECT_NE(unsorted.err.str().find("ZAV Antenna File error:"), std::string::npos);
    EXPECT_NE(unsorted.err.str().find("Antenna File not sorted, load aborted."), std::string::npos);

    const std::string good = antennaFile("good.tab", "1\t10\n2\t20\n3\t30\n");
    for (const std::vector<std::string>& args : {std::vector<std::string>{"antenna", good},
                                                 {"antenna", "--at", "2"},
                                                 {"antenna", good, "--at"},
                                                 {"antenna", good, "--at", "two"},
                                                 {"antenna", good, good, "--at", "2"},
                                                 {"antenna", good, "--near", "2"}}) {
        Cli u;
        EXPECT_EQ(u.run(args), kExitUsage) << args.size();
        EXPECT_TRUE(u.out.str().empty());
    }
}
