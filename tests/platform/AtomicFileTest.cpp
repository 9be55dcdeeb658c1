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

// Runs `body` in a child that then dies by `signal`; true when it did.
template <typename Body> bool diesBy(int signal, Body body) {
    const pid_t child = fork();
    if (child == 0) {
        body();
        raise(signal);
        _exit(0);
    }
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFSIGNALED(status) && WTERMSIG(status) == signal;
}

fs::perms mode(const fs::path& p) {
    return fs::symlink_status(p).permissions() & fs::perms::all;
}

} // namespace

TEST(AtomicFile, ReplacedWholeThroughLinksOrTheOldFileStays) {
    test::TempDir dir;
    const fs::path file = dir.path / "a.txt", link = dir.path / "link.txt";
    const std::string binary("one\r\ntwo\0three", 14), text(5000, 'n');
    ASSERT_TRUE(WriteFileAtomically(file.string(), binary));
    EXPECT_EQ(test::ReadFile(file), binary);
    fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink(file, link);
    ASSERT_TRUE(WriteFileAtomically(link.string(), "old"));
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(test::ReadFile(file), "old");
    EXPECT_EQ(mode(file), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(entries(dir.path), 2u); // no temporary left behind

    std::string error;
    AtomicFileWriter nowhere((dir.path / "none" / "c.txt").string());
    EXPECT_FALSE(nowhere.IsOpen() || nowhere.Commit(&error));
    EXPECT_NE(error.find("cannot write " + (dir.path / "none/c.txt").string() + ": No such file"),
              std::string::npos);
    {
        test::FileSizeLimit full(100);
        EXPECT_FALSE(WriteFileAtomically(file.string(), std::string(70000, 'x'), &error));
    }
    EXPECT_EQ(error, "cannot write " + file.string() + ": File too large");
    // Killed with the new text written but not yet in place: it lies beside the file.
    ASSERT_TRUE(diesBy(SIGKILL, [&] {
        AtomicFileWriter writer(file.string());
        writer.Stream() << text << std::flush;
        raise(SIGKILL);
    }));
    EXPECT_EQ(test::ReadFile(file), "old");
    ASSERT_EQ(entries(dir.path), 3u);
    ASSERT_TRUE(WriteFileAtomically(file.string(), text));
    EXPECT_EQ(test::ReadFile(file), text);
}

// Folders, pipes and oversized files: the profile reader's test.
TEST(FileAccess, ProcFilesAreCappedWhileReadAndCreatedFilesAreNeverLinksTargets) {
    test::TempDir dir;
    std::string bytes, error;
    // /proc files are regular but have no size until read: the cap holds while reading.
    EXPECT_FALSE(ReadRegularFile("/proc/self/status", 10, bytes, &error));
    EXPECT_EQ(error, "it is larger than 10 bytes");
    ASSERT_TRUE(ReadRegularFile("/proc/self/status", 1 << 20, bytes, &error));
    EXPECT_NE(bytes.find("Pid:"), std::string::npos);
    EXPECT_EQ(OpenRegularFile("/dev/zero", &error), nullptr);
    EXPECT_EQ(error, "it is not a regular file");
    const fs::path victim = dir.path / "victim", planted = dir.path / "~0000ABCD.wav";
    std::ofstream(victim) << "precious";
    fs::create_symlink(victim, planted);
    EXPECT_EQ(CreateExclusiveFile(planted.string(), &error), nullptr);
    EXPECT_EQ(error + test::ReadFile(victim), "File existsprecious");
}

TEST(TempFolder, PrivateFolderNoOtherUserCanPlantAnythingIn) {
    test::TempDir dir;
    // The session's runtime folder when it is private, a folder of the user's own otherwise.
    const fs::path runtime = dir.path / "run", shared = dir.path / "tmp",
                   own = shared / ("zav-" + std::to_string(getuid())), elsewhere = dir.path / "e";
    for (const fs::path& d : {runtime, shared, elsewhere})
        fs::create_directory(d);
    fs::permissions(runtime, fs::perms::owner_all, fs::perm_options::replace);
    EXPECT_EQ(PrivateTempFolder(runtime.string(), shared.string()), (runtime / "zav/").string());
    EXPECT_EQ(mode(runtime / "zav"), fs::perms::owner_all);
    fs::permissions(runtime, fs::perms::all, fs::perm_options::replace); // open to others
    EXPECT_EQ(PrivateTempFolder(runtime.string(), shared.string()), own.string() + "/");
    EXPECT_EQ(mode(own), fs::perms::owner_all);
    // Someone planted a link at the usual name: a fresh folder is made instead.
    fs::remove(own);
    fs::create_directory_symlink(elsewhere, own);
    const fs::path fresh = PrivateTempFolder("", shared.string());
    EXPECT_NE(fresh.string(), own.string() + "/");
    EXPECT_EQ(fresh.string().rfind((shared / "zav-").string(), 0), 0u) << fresh;
    EXPECT_EQ(mode(fresh), fs::perms::owner_all);
    EXPECT_TRUE(fs::is_empty(elsewhere));

    // Leftovers of runs that are gone are removed; this run's, its parent's and others' stay.
    const pid_t gone = fork();
    if (gone == 0)
        _exit(0);
    waitpid(gone, nullptr, 0);
    const auto name = [](long pid, const char* ext) {
        char text[32];
        std::snprintf(text, sizeof text, "~%08lX%s", pid, ext);
        return std::string(text);
    };
    using P = std::pair<std::string, bool>;
    const P files[] = {P{name(gone, ".wav"), false}, P{name(gone, ".tmp"), false},
                       P{name(getpid(), ".wav"), true}, P{name(getppid(), ".tmp"), true},
                       P{"notes.txt", true}};
    for (const auto& [n, stays] : files)
        std::ofstream(fresh / n) << "x";
    RemoveStaleRecordings(fresh.string());
    for (const auto& [n, stays] : files)
        EXPECT_EQ(fs::exists(fresh / n), stays) << n;

    // A run that is terminated removes its own recordings.
    const fs::path wav = dir.path / "~1.wav", tmp = dir.path / "~1.tmp";
    EXPECT_TRUE(diesBy(SIGTERM, [&] {
        RemoveOnTermination({wav.string(), tmp.string()});
        std::ofstream(wav) << "w";
        std::ofstream(tmp) << "t";
    }));
    EXPECT_FALSE(fs::exists(wav) || fs::exists(tmp));
}
