#include "platform/AtomicFile.h"

#include "testsupport/ScratchDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

using namespace zav;
namespace fs = std::filesystem;

namespace {

std::size_t entries(const fs::path& dir) {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(dir), {}));
}

} // namespace

TEST(AtomicFile, WholeFileReplacedKeepingPermissionsAndLinks) {
    test::TempDir dir;
    const fs::path file = dir.path / "a.txt";
    ASSERT_TRUE(WriteFileAtomically(file.string(), std::string("one\r\ntwo\0three", 14)));
    EXPECT_EQ(test::ReadFile(file), std::string("one\r\ntwo\0three", 14));

    fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write);
    const fs::path link = dir.path / "link.txt";
    fs::create_symlink(file, link);
    ASSERT_TRUE(WriteFileAtomically(link.string(), "through"));
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(test::ReadFile(file), "through");
    EXPECT_EQ(fs::status(file).permissions() & fs::perms::all,
              fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(entries(dir.path), 2u); // no temporary left behind

    std::string error;
    EXPECT_FALSE(WriteFileAtomically((dir.path / "none" / "b.txt").string(), "x", &error));
    EXPECT_FALSE(error.empty());
}

TEST(AtomicFile, StreamedWriterCommitsOnceOrLeavesTheOldFile) {
    test::TempDir dir;
    const fs::path file = dir.path / "big.txt";
    std::ofstream(file) << "old";
    {
        AtomicFileWriter writer(file.string());
        ASSERT_TRUE(writer.IsOpen());
        writer.Stream() << "half of a new file";
        EXPECT_EQ(test::ReadFile(file), "old"); // nothing shows before the commit
    }                                           // abandoned: as if the export had failed midway
    EXPECT_EQ(test::ReadFile(file), "old");
    EXPECT_EQ(entries(dir.path), 1u);

    AtomicFileWriter writer(file.string());
    for (int i = 0; i < 100000; ++i)
        writer.Stream() << i << "\r\n";
    ASSERT_TRUE(writer.Commit());
    EXPECT_FALSE(writer.Commit());
    EXPECT_EQ(test::ReadFile(file).substr(0, 9), "0\r\n1\r\n2\r\n");
    EXPECT_EQ(fs::file_size(file), 688890u); // every line, digits and CR LF
    EXPECT_EQ(entries(dir.path), 1u);

    AtomicFileWriter nowhere((dir.path / "none" / "c.txt").string());
    EXPECT_FALSE(nowhere.IsOpen());
    nowhere.Stream() << "lost";
    std::string error;
    EXPECT_FALSE(nowhere.Commit(&error));
    EXPECT_NE(error.find("cannot create"), std::string::npos);
}
