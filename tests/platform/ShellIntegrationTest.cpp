#include "platform/Associate.h"
#include "platform/CommandLine.h"
#include "platform/ResourceFolder.h"
#include "testsupport/FakePorts.h"
#include "testsupport/ScratchDir.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>

using namespace zav;
namespace fs = std::filesystem;

namespace {

// Runs the program and waits for it, as the desktop eventually would; the arguments come
// quoted as a shell reads them.
struct WaitingShell : test::FakeShell {
    bool Run(const std::string& program, const std::string& arguments) override {
        FakeShell::Run(program, arguments);
        return std::system((program + " " + arguments + " > /dev/null 2>&1").c_str()) == 0;
    }
};

std::string desktopValue(const std::string& entry, const std::string& key) {
    std::istringstream in(entry);
    for (std::string line; std::getline(in, line);)
        if (line.rfind(key + "=", 0) == 0)
            return line.substr(key.size() + 1);
    return "<missing>";
}

// The program an Exec value starts, as a desktop would take it apart: string escapes first,
// then "%f" dropped and "%%" made "%", then the shell's own reading of the double quotes.
std::string programOfExec(const std::string& exec, const fs::path& scratch) {
    std::string unescaped;
    for (std::size_t i = 0; i < exec.size(); ++i) {
        if (exec[i] == '\\' && i + 1 < exec.size()) {
            const char next = exec[++i];
            unescaped += next == 's' ? ' ' : next == 'n' ? '\n' : next == 't' ? '\t' : next;
        } else {
            unescaped += exec[i];
        }
    }
    EXPECT_EQ(unescaped.substr(unescaped.size() - 3), " %f");
    unescaped.resize(unescaped.size() - 3);
    std::string command;
    for (std::size_t i = 0; i < unescaped.size(); ++i) {
        command += unescaped[i];
        if (unescaped[i] != '%')
            continue;
        // Any other "%" would be a field code the desktop expands.
        EXPECT_TRUE(i + 1 < unescaped.size() && unescaped[i + 1] == '%') << exec;
        ++i;
    }
    const fs::path script = scratch / "exec.sh";
    std::ofstream(script) << "set -- " << command << "\nprintf '%s' \"$1\"\n";
    FILE* pipe = ::popen(("sh '" + script.string() + "'").c_str(), "r");
    std::string out;
    char buffer[256];
    for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        out.append(buffer, n);
    ::pclose(pipe);
    return out;
}

std::size_t entries(const fs::path& dir) {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(dir), {}));
}

// Sets (or with nullptr removes) an environment variable for one scope.
struct ScopedEnv {
    std::string name;
    std::optional<std::string> old;
    ScopedEnv(const char* n, const char* value) : name(n) {
        if (const char* v = std::getenv(n))
            old = v;
        value ? setenv(n, value, 1) : unsetenv(n);
    }
    ~ScopedEnv() { old ? setenv(name.c_str(), old->c_str(), 1) : unsetenv(name.c_str()); }
};

} // namespace

TEST(Associate, TheEntryStartsTheProgramWholeAndTheDesktopIsRefreshed) {
    test::TempDir home;
    const fs::path data = home.path / "data dir";
    ScopedEnv xdg("XDG_DATA_HOME", data.string().c_str());
    test::FakeShell shell;
    ASSERT_TRUE(associateFileTypes("/opt/my tools/zav", shell));
    const fs::path entry = data / "applications" / "zav.desktop";
    EXPECT_EQ(desktopValue(test::ReadFile(entry), "MimeType"), "application/x-zav-profile;");
    EXPECT_EQ(desktopValue(test::ReadFile(entry), "Icon"), "zav"); // no icon beside the program
    ASSERT_EQ(shell.ran.size(), 3u);
    // The blank in the folder survives the hand-over to the tools.
    EXPECT_EQ(shell.ran[0], "update-mime-database|" + JoinCommandLine({(data / "mime").string()}));
    EXPECT_EQ(shell.ran[1],
              "update-desktop-database|" + JoinCommandLine({(data / "applications").string()}));
    EXPECT_EQ(shell.ran[2], "xdg-mime|default zav.desktop application/x-zav-profile");

    // Whatever the program's path holds, the desktop (and a shell) get it back whole.
    for (const std::string exe :
         {"/opt/my tools/zav", "/opt/a \"b\"/zav", "/opt/$HOME/`id`/zav", "/opt/back\\slash/zav",
          "/opt/100%f/zav", "/opt/it's here/zav", "/opt/tab\there/zav"}) {
        ASSERT_TRUE(Associate("ZAV", ".zav", exe, data.string(), shell));
        EXPECT_EQ(programOfExec(desktopValue(test::ReadFile(entry), "Exec"), home.path), exe);
    }
    const fs::path bin = home.path / "bin";
    fs::create_directories(bin);
    std::ofstream(bin / "zav.svg") << "<svg/>";
    ASSERT_TRUE(Associate("ZAV", ".zav", (bin / "zav").string(), data.string(), shell));
    EXPECT_EQ(desktopValue(test::ReadFile(entry), "Icon"), (bin / "zav.svg").string());
}

TEST(Associate, TheSharedMimeDatabaseAcceptsTheType) {
    test::TempDir home;
    WaitingShell shell;
    ASSERT_TRUE(Associate("ZAV", "  .zav ", "/usr/bin/zav", home.path.string(), shell));
    if (!fs::exists("/usr/bin/update-mime-database"))
        GTEST_SKIP() << "shared-mime-info is not installed";
    // The database tool compiled our XML: the glob and the type's own file are there.
    EXPECT_NE(test::ReadFile(home.path / "mime" / "globs2").find("application/x-zav-profile:*.zav"),
              std::string::npos);
    EXPECT_NE(
        test::ReadFile(home.path / "mime" / "application" / "x-zav-profile.xml").find("zav File"),
        std::string::npos);
}

TEST(Associate, BadExtensionsAndNoPlaceToWriteFailWithoutRunningAnything) {
    test::TempDir home;
    test::FakeShell shell;
    std::ofstream(home.path / "file") << "x";
    const std::pair<const char*, std::string> bad[] = {{"zav", home.path.string()},
                                                       {"", home.path.string()},
                                                       {".zav", ""},
                                                       {".zav", (home.path / "file").string()}};
    for (const auto& [extension, folder] : bad)
        EXPECT_FALSE(Associate("ZAV", extension, "/usr/bin/zav", folder, shell)) << extension;
    EXPECT_EQ(entries(home.path), 1u);
    EXPECT_TRUE(shell.ran.empty());

    // A relative data folder is no place either: without a home folder there is none.
    ScopedEnv relative("XDG_DATA_HOME", "relative/dir");
    ScopedEnv noHome("HOME", nullptr);
    EXPECT_FALSE(associateFileTypes("/usr/bin/zav", shell));
}

TEST(ResourceFolder, ProgramFolderFirstThenTheInstalledDataFolder) {
    test::TempDir root;
    const fs::path bin = root.path / "bin", share = root.path / "share" / "zav",
                   helper = root.path / "libexec" / "zav";
    for (const fs::path& d : {bin, share, helper})
        fs::create_directories(d);
    std::ofstream(share / "licence.txt") << "x";
    EXPECT_EQ(ResourceFolder(bin.string(), "licence.txt"), share.string() + "/");
    EXPECT_EQ(ResourceFolder(helper.string(), "licence.txt"), share.string() + "/");
    EXPECT_EQ(ResourceFolder(bin.string(), "ZAV.pdf"), bin.string() + "/");
    std::ofstream(bin / "licence.txt") << "x";
    EXPECT_EQ(ResourceFolder(bin.string() + "/", "licence.txt"), bin.string() + "/");
}
