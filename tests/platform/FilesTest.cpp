#include "platform/Associate.h"
#include "platform/AtomicFile.h"
#include "platform/CommandLine.h"
#include "platform/FileAccess.h"
#include "platform/ResourceFolder.h"
#include "platform/TempFolder.h"

#include "testsupport/FakePorts.h"
#include "testsupport/FileSizeLimit.h"
#include "testsupport/ScratchDir.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <regex>
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

std::string desktopValue(const fs::path& entry, const std::string& key) {
    const std::string text = test::ReadFile(entry);
    std::smatch m;
    return std::regex_search(text, m, std::regex("(^|\n)" + key + "=([^\n]*)")) ? m[2].str() : "?";
}

// The program an Exec value starts: escapes, then "%f" and "%%", then the shell's quoting.
std::string programOfExec(const std::string& exec, const fs::path& scratch) {
    std::string s;
    for (std::size_t i = 0; i < exec.size(); ++i) {
        char c = exec[i];
        if (c == '\\' && ++i < exec.size())
            c = exec[i] == 's' ? ' ' : exec[i] == 'n' ? '\n' : exec[i] == 't' ? '\t' : exec[i];
        s += c;
    }
    EXPECT_EQ(s.substr(s.size() - 3), " %f");
    s.resize(s.size() - 3);
    for (std::size_t at = 0; (at = s.find('%', at)) != std::string::npos; ++at) {
        EXPECT_EQ(s[at + 1], '%') << exec; // any other would be a field code
        s.erase(at, 1);
    }
    const fs::path out = scratch / "out";
    std::ofstream(scratch / "exec.sh")
        << "set -- " << s << "\nprintf '%s' \"$1\" > '" << out.string() << "'\n";
    EXPECT_EQ(std::system(("sh '" + (scratch / "exec.sh").string() + "'").c_str()), 0);
    return test::ReadFile(out);
}

struct ScopedEnv { // sets (or with nullptr removes) an environment variable for one scope
    std::string name;
    std::optional<std::string> old;
    ScopedEnv(const char* n, const char* value) : name(n) {
        old = std::getenv(n) ? std::optional<std::string>(std::getenv(n)) : std::nullopt;
        value ? setenv(n, value, 1) : unsetenv(n);
    }
    ~ScopedEnv() { old ? setenv(name.c_str(), old->c_str(), 1) : unsetenv(name.c_str()); }
};

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
    EXPECT_TRUE(fs::is_symlink(link) && test::ReadFile(file) == "old");
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
    EXPECT_TRUE(OpenRegularFile("/dev/zero", &error) == nullptr &&
                error == "it is not a regular file");
    const fs::path victim = dir.path / "victim", planted = dir.path / "~0000ABCD.wav";
    std::ofstream(victim) << "precious";
    fs::create_symlink(victim, planted);
    EXPECT_EQ(CreateExclusiveFile(planted.string(), &error), nullptr);
    EXPECT_EQ(error + test::ReadFile(victim), "File existsprecious");
}

TEST(TempFolder, PrivateFolderNoOtherUserCanPlantAnythingIn) {
    test::TempDir dir;
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
    EXPECT_TRUE(mode(fresh) == fs::perms::owner_all && fs::is_empty(elsewhere));

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

    const fs::path wav = dir.path / "~1.wav", tmp = dir.path / "~1.tmp";
    EXPECT_TRUE(diesBy(SIGTERM, [&] {
        RemoveOnTermination({wav.string(), tmp.string()});
        std::ofstream(wav) << "w";
        std::ofstream(tmp) << "t";
    }));
    EXPECT_FALSE(fs::exists(wav) || fs::exists(tmp));
}

TEST(Associate, TheEntryStartsTheProgramWholeAndTheDesktopIsRefreshed) {
    test::TempDir home;
    const fs::path data = home.path / "data dir", entry = data / "applications" / "zav.desktop";
    ScopedEnv xdg("XDG_DATA_HOME", data.string().c_str());
    test::FakeShell shell;
    ASSERT_TRUE(associateFileTypes("/opt/my tools/zav", shell));
    EXPECT_EQ(desktopValue(entry, "MimeType") + desktopValue(entry, "Icon"),
              "application/x-zav-profile;zav"); // no icon beside the program
    // The blank in the folder survives the hand-over to the tools.
    EXPECT_EQ(shell.ran,
              (std::vector<std::string>{
                  "update-mime-database|" + JoinCommandLine({(data / "mime").string()}),
                  "update-desktop-database|" + JoinCommandLine({(data / "applications").string()}),
                  "xdg-mime|default zav.desktop application/x-zav-profile"}));

    // Whatever the program's path holds, the desktop (and a shell) get it back whole.
    for (const std::string exe :
         {"/opt/my tools/zav", "/opt/a \"b\"/zav", "/opt/$HOME/`id`/zav", "/opt/back\\slash/zav",
          "/opt/100%f/zav", "/opt/it's here/zav", "/opt/tab\there/zav"}) {
        ASSERT_TRUE(Associate("ZAV", ".zav", exe, data.string(), shell));
        EXPECT_EQ(programOfExec(desktopValue(entry, "Exec"), home.path), exe);
    }
    const fs::path bin = home.path;
    std::ofstream(bin / "zav.svg") << "<svg/>";
    ASSERT_TRUE(Associate("ZAV", ".zav", (bin / "zav").string(), data.string(), shell));
    EXPECT_EQ(desktopValue(entry, "Icon"), (bin / "zav.svg").string());
}

TEST(Associate, TheSharedMimeDatabaseAcceptsTheTypeAndBadInputRunsNothing) {
    test::TempDir home;
    test::FakeShell fake;
    ASSERT_TRUE(Associate("ZAV", "  .zav ", "/usr/bin/zav", home.path.string(), fake));
    const std::string update = fake.ran.at(0).replace(fake.ran[0].find('|'), 1, " ");
    if (fs::exists("/usr/bin/update-mime-database")) { // run as the desktop would: our XML
        EXPECT_EQ(std::system((update + " > /dev/null 2>&1").c_str()), 0) << update;
        EXPECT_NE(test::ReadFile(home.path / "mime" / "globs2").find("x-zav-profile:*.zav"),
                  std::string::npos);
        EXPECT_NE(test::ReadFile(home.path / "mime/application/x-zav-profile.xml").find("zav File"),
                  std::string::npos);
    }
    test::TempDir empty;
    fake.ran.clear();
    std::ofstream(empty.path / "file") << "x";
    using P = std::pair<const char*, std::string>;
    for (const auto& [extension, folder] :
         {P{"zav", empty.path.string()}, P{"", empty.path.string()}, P{".zav", ""},
          P{".zav", (empty.path / "file").string()}})
        EXPECT_FALSE(Associate("ZAV", extension, "/usr/bin/zav", folder, fake)) << extension;
    // A relative data folder is no place either, and without a home folder there is none.
    ScopedEnv relative("XDG_DATA_HOME", "relative/dir");
    ScopedEnv noHome("HOME", nullptr);
    EXPECT_FALSE(associateFileTypes("/usr/bin/zav", fake));
    EXPECT_TRUE(fake.ran.empty() && fs::is_regular_file(empty.path / "file"));
    EXPECT_EQ(entries(empty.path), 1u);
}

TEST(ResourceFolder, ProgramFolderFirstThenTheInstalledDataFolder) {
    test::TempDir root;
    // The helper in libexec/zav finding the installed files: tests/cli/package.sh.
    const fs::path bin = root.path / "bin", share = root.path / "share" / "zav";
    fs::create_directories(bin), fs::create_directories(share);
    std::ofstream(share / "licence.txt") << "x";
    EXPECT_EQ(ResourceFolder(bin.string(), "licence.txt"), share.string() + "/");
    EXPECT_EQ(ResourceFolder(bin.string(), "ZAV.pdf"), bin.string() + "/");
    std::ofstream(bin / "licence.txt") << "x";
    EXPECT_EQ(ResourceFolder(bin.string() + "/", "licence.txt"), bin.string() + "/");
}
