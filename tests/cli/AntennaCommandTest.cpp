// zavcli antenna in-process: the loader's messages and the exit codes (the readings are
// checked end to end against tests/data/measure).
#include "CliRun.h"
#include "cli/Commands.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/stat.h>

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

TEST(AntennaCommand, AFolderADeviceOrAPipeIsRefusedByTheCommandAndByAProfileThatNamesIt) {
    const auto dir = std::filesystem::path(ZAV_BINARY_DIR) / "test-scratch" / "cli-unreadable";
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    const std::string fifo = (dir / "pipe.tab").string();
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const std::pair<std::string, std::string> inputs[] = {
        {dir.string(), "it is a folder"},
        {"/dev/zero", "it is not a regular file"},
        {fifo, "it is not a regular file"},
    };
    for (const auto& [path, reason] : inputs) {
        const std::string message = "Error: cannot open antenna file " + path + ": " + reason + ".";
        Cli antenna;
        EXPECT_EQ(antenna.run({"antenna", path, "--at", "2"}), kExitFailed) << path;
        EXPECT_NE(antenna.err.str().find(message), std::string::npos) << antenna.err.str();

        const std::string profile =
            antennaFile("named.zav", "[conditions]\r\nAntFilename=" + path + "\r\nTester=T\r\n");
        Cli opened;
        EXPECT_EQ(opened.run({"profile", profile}), kExitOk) << path;
        EXPECT_NE(opened.err.str().find(message), std::string::npos) << opened.err.str();
        EXPECT_NE(opened.out.str().find("Tester\tT\n"), std::string::npos);
        EXPECT_NE(opened.out.str().find("AntFilename\t\n"), std::string::npos)
            << "a failed load clears the name";
    }
}
