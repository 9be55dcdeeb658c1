#include "platform/AtomicFile.h"
#include "platform/FileAccess.h"
#include "platform/TempFolder.h"

#include "testsupport/FileSizeLimit.h"
#include "testsupport/ScratchDir.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

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
    EXPECT_NE(
        error.find("cannot write " + (dir.path / "none" / "c.txt").string() + ": No such file"),
        std::string::npos);
}

TEST(AtomicFile, AFullDiskIsReportedWithTheFileAndTheSystemsReason) {
    test::TempDir dir;
    const fs::path file = dir.path / "a.zav";
    std::ofstream(file) << "old";
    std::string error;
    {
        test::FileSizeLimit full(100);
        EXPECT_FALSE(WriteFileAtomically(file.string(), std::string(70000, 'x'), &error));
    }
    EXPECT_EQ(error, "cannot write " + file.string() + ": File too large");
    EXPECT_EQ(test::ReadFile(file), "old");
    EXPECT_EQ(entries(dir.path), 1u);
}

TEST(AtomicFile, OwnerOnlyFilesAreCreatedSoAndWiderOnesNarrowed) {
    test::TempDir dir;
    const auto mode = [](const fs::path& p) {
        return fs::status(p).permissions() & fs::perms::all;
    };
    const fs::perms ownerOnly = fs::perms::owner_read | fs::perms::owner_write;
    const mode_t oldMask = umask(022);
    ASSERT_TRUE(WriteFileAtomically((dir.path / "usual").string(), "u"));
    EXPECT_EQ(mode(dir.path / "usual"), ownerOnly | fs::perms::group_read | fs::perms::others_read);
    ASSERT_TRUE(
        WriteFileAtomically((dir.path / "new").string(), "p", nullptr, FileAccessMode::OwnerOnly));
    EXPECT_EQ(mode(dir.path / "new"), ownerOnly);
    ASSERT_TRUE(WriteFileAtomically((dir.path / "usual").string(), "p", nullptr,
                                    FileAccessMode::OwnerOnly));
    EXPECT_EQ(mode(dir.path / "usual"), ownerOnly);
    umask(oldMask);
}

TEST(FileAccess, OnlyRegularFilesAreReadAndCreatedFilesAreNeverLinksTargets) {
    test::TempDir dir;
    const fs::path fifo = dir.path / "fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    std::string bytes, error;
    // /proc files are regular but have no size until read: the cap holds while reading.
    EXPECT_FALSE(ReadRegularFile("/proc/self/status", 10, bytes, &error));
    EXPECT_EQ(error, "it is larger than 10 bytes");
    ASSERT_TRUE(ReadRegularFile("/proc/self/status", 1 << 20, bytes, &error));
    EXPECT_NE(bytes.find("Pid:"), std::string::npos);
    for (const fs::path& p : {dir.path, fifo, fs::path("/dev/zero")}) {
        EXPECT_EQ(OpenRegularFile(p.string(), &error), nullptr) << p;
        EXPECT_EQ(error, p == dir.path ? "it is a folder" : "it is not a regular file");
    }

    const fs::path victim = dir.path / "victim";
    std::ofstream(victim) << "precious";
    const fs::path planted = dir.path / "~0000ABCD.wav";
    fs::create_symlink(victim, planted);
    EXPECT_EQ(CreateExclusiveFile(planted.string(), &error), nullptr);
    EXPECT_EQ(error, "File exists");
    EXPECT_EQ(test::ReadFile(victim), "precious");
}

TEST(TempFolder, RecordingsGoToAFolderNoOtherUserCanPlantAnythingIn) {
    test::TempDir dir;
    const auto mode = [](const fs::path& p) {
        return fs::symlink_status(p).permissions() & fs::perms::all;
    };
    // The session's runtime folder when it is private, a folder of the user's own otherwise.
    const fs::path runtime = dir.path / "run";
    fs::create_directory(runtime);
    fs::permissions(runtime, fs::perms::owner_all, fs::perm_options::replace);
    const fs::path shared = dir.path / "tmp";
    fs::create_directory(shared);
    EXPECT_EQ(PrivateTempFolder(runtime.string(), shared.string()), (runtime / "zav/").string());
    EXPECT_EQ(mode(runtime / "zav"), fs::perms::owner_all);
    const fs::path own = shared / ("zav-" + std::to_string(getuid()));
    EXPECT_EQ(PrivateTempFolder("", shared.string()), own.string() + "/");
    EXPECT_EQ(mode(own), fs::perms::owner_all);
    fs::permissions(runtime, fs::perms::all, fs::perm_options::replace); // open to others
    EXPECT_EQ(PrivateTempFolder(runtime.string(), shared.string()), own.string() + "/");

    // Someone planted a link at the usual name: a fresh folder is made instead.
    const fs::path elsewhere = dir.path / "elsewhere";
    fs::create_directory(elsewhere);
    fs::remove(own);
    fs::create_directory_symlink(elsewhere, own);
    const std::string fresh = PrivateTempFolder("", shared.string());
    EXPECT_NE(fresh, own.string() + "/");
    EXPECT_EQ(fresh.rfind((shared / "zav-").string(), 0), 0u) << fresh;
    EXPECT_EQ(mode(fresh), fs::perms::owner_all);
    EXPECT_TRUE(fs::is_empty(elsewhere));

    // Leftovers of runs that are gone are removed; this run's and others' files stay.
    const pid_t gone = fork();
    if (gone == 0)
        _exit(0);
    waitpid(gone, nullptr, 0);
    const auto name = [](long pid, const char* ext) {
        char text[32];
        std::snprintf(text, sizeof text, "~%08lX%s", pid, ext);
        return std::string(text);
    };
    const fs::path folder(fresh);
    for (const std::string& n : {name(gone, ".wav"), name(gone, ".tmp"), name(getpid(), ".wav"),
                                 name(getppid(), ".tmp"), std::string("notes.txt")})
        std::ofstream(folder / n) << "x";
    RemoveStaleRecordings(folder.string());
    EXPECT_FALSE(fs::exists(folder / name(gone, ".wav")));
    EXPECT_FALSE(fs::exists(folder / name(gone, ".tmp")));
    EXPECT_TRUE(fs::exists(folder / name(getpid(), ".wav")));
    EXPECT_TRUE(fs::exists(folder / name(getppid(), ".tmp")));
    EXPECT_TRUE(fs::exists(folder / "notes.txt"));
}

TEST(TempFolder, ATerminatedRunRemovesItsRecordings) {
    test::TempDir dir;
    const fs::path wav = dir.path / "~1.wav", tmp = dir.path / "~1.tmp";
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        RemoveOnTermination({wav.string(), tmp.string()});
        std::ofstream(wav) << "w";
        std::ofstream(tmp) << "t";
        raise(SIGTERM);
        _exit(0); // not reached
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM);
    EXPECT_FALSE(fs::exists(wav));
    EXPECT_FALSE(fs::exists(tmp));
}
