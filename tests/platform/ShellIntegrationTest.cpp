#include "platform/Associate.h"
#include "platform/CommandLine.h"
#include "platform/ResourceFolder.h"
#include "testsupport/FakePorts.h"
#include "testsupport/ScratchDir.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>

using namespace zav;
namespace fs = std::filesystem;

namespace {

// Runs the program and waits for it, as the desktop eventually would.
struct WaitingShell : test::FakeShell {
    bool Run(const std::string& program, const std::string& arguments) override {
        FakeShell::Run(program, arguments);
        return std::system((program + " " + arguments + " > /dev/null 2>&1").c_str()) == 0;
    }
};

std::string desktopValue(const fs::path& entry, const std::string& key) {
    std::istringstream in(test::ReadFile(entry));
    for (std::string line; std::getline(in, line);)
        if (line.rfind(key + "=", 0) == 0)
            return line.substr(key.size() + 1);
    return "<missing>";
}

// The program an Exec value starts, as a desktop takes it apart: string escapes first, then
// "%f" dropped and "%%" made "%", then the shell's own reading of the double quotes.
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
    const fs::path bin = home.path / "bin";
    fs::create_directories(bin);
    std::ofstream(bin / "zav.svg") << "<svg/>";
    ASSERT_TRUE(Associate("ZAV", ".zav", (bin / "zav").string(), data.string(), shell));
    EXPECT_EQ(desktopValue(entry, "Icon"), (bin / "zav.svg").string());
}

TEST(Associate, TheSharedMimeDatabaseAcceptsTheTypeAndBadInputRunsNothing) {
    test::TempDir home;
    WaitingShell shell;
    ASSERT_TRUE(Associate("ZAV", "  .zav ", "/usr/bin/zav", home.path.string(), shell));
    if (fs::exists("/usr/bin/update-mime-database")) { // it compiled our XML
        EXPECT_NE(test::ReadFile(home.path / "mime" / "globs2").find("x-zav-profile:*.zav"),
                  std::string::npos);
        EXPECT_NE(test::ReadFile(home.path / "mime/application/x-zav-profile.xml").find("zav File"),
                  std::string::npos);
    }
    test::TempDir empty;
    test::FakeShell fake;
    std::ofstream(empty.path / "file") << "x";
    using P = std::pair<const char*, std::string>;
    for (const auto& [extension, folder] :
         {P{"zav", empty.path.string()}, P{"", empty.path.string()}, P{".zav", ""},
          P{".zav", (empty.path / "file").string()}})
        EXPECT_FALSE(Associate("ZAV", extension, "/usr/bin/zav", folder, fake)) << extension;
    // A relative data folder is no place either: without a home folder there is none.
    ScopedEnv relative("XDG_DATA_HOME", "relative/dir");
    ScopedEnv noHome("HOME", nullptr);
    EXPECT_FALSE(associateFileTypes("/usr/bin/zav", fake));
    EXPECT_TRUE(fake.ran.empty() && fs::is_regular_file(empty.path / "file"));
    EXPECT_EQ(std::distance(fs::directory_iterator(empty.path), {}), 1);
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
