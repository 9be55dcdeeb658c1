#include "platform/Associate.h"
#include "platform/AtomicFile.h"
#include "platform/CommandLine.h"
#include "platform/CompareVersions.h"
#include "platform/Conversions.h"
#include "platform/FileAccess.h"
#include "platform/Format.h"
#include "platform/Number.h"
#include "platform/Paths.h"
#include "platform/PostOnce.h"
#include "platform/ResourceFolder.h"
#include "platform/TempFolder.h"
#include "platform/UrlCoding.h"
#include "testsupport/FakePorts.h"
#include "testsupport/FileSizeLimit.h"
#include "testsupport/ScratchDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <random>
#include <regex>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>

using namespace zav;
using P = std::pair<const char*, const char*>;
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

TEST(Conversions, AntennaFactorFromTheTextbookFormula) {
    // AF = 20·log10(9.733 / λ) − G, the 50 Ω form, computed another way.
    const double pi = std::acos(-1.0);
    for (double f : {0.1, 1.8, 7.0, 14.2, 100.0, 1296.0})
        for (double g : {-10.0, 0.0, 2.15, 17.5})
            EXPECT_NEAR(GainToFactor(g, f),
                        20 * std::log10(std::sqrt(480 * pi * pi / 50) * f / 299.792458) - g, 1e-9);
}

TEST(CompareVersions, NumericPartsAndTheSharedPosition) {
    using C = std::tuple<const char*, const char*, int, int>;
    // After the first part the shared position moves past the nearer dot: "01.3" reads "" (0).
    for (const auto& [a, b, parts, result] :
         {C{"5.1", "6.0", 2, -1}, C{"10.0", "6.0", 2, 1}, C{"6.0", "6.0", 2, 0},
          C{"2.1.2.9", "2.1.2.8", 4, 1}, C{"2.1.2.9", "2.1.2.8", 3, 0}, C{"1.2.10", "1.2.9", 3, 1},
          C{"6", "6.0", 2, 0}, C{"", "0", 1, 0}, C{"1.2", "01.3", 2, 1}, C{"1.10", "01.9", 2, 1},
          C{"01.9", "1.10", 2, -1}})
        EXPECT_EQ(CompareVersions(a, b, parts), result) << a << " " << b;
}

TEST(Paths, BaseNamesSeparatorsAndTheSuffixOfTheChosenFilter) {
    for (const auto& [path, base] : {P{"C:\\data\\home.zav", "home"}, P{"x.zav.zav", "x.zav"},
                                     P{"/home/op/site a.zav", "site a"}, P{"D:field.zav", "field"}})
        EXPECT_EQ(ProfileBaseName(path), base);

    // The chosen type's suffix, the command's own for "*.*", out of range the first type's.
    const char *text = "All Files (*.*)|*.*|Text files (*.txt;*.tab)|*.txt;*.tab",
               *plot = "All Files (*.*)|*.*|Plot files (*.plt)|*.plt",
               *zav = "ZAV files (*.zav)|*.zav|Other (*.ini)|*.ini", *all = "All Files (*.*)|*.*";
    using C = std::tuple<const char*, int, const char*>;
    for (const auto& [filter, index, suffix] :
         {C{text, 2, "txt"}, C{text, 1, "txt"}, C{plot, 1, "plt"}, C{zav, 2, "ini"},
          C{zav, 7, "zav"}, C{all, 1, ""}, C{"Antenna (ant*)|ant*|Any|*", 1, ""}})
        EXPECT_EQ(FilterSuffix(filter, index), suffix) << filter << " " << index;
    EXPECT_EQ(FileKind("All Files (*.*)|*.*|Wave files (*.wav)|*.wav") + FileKind(all), "wavany");
}

TEST(SplitCommandLine, QuotesBlanksLimitAndJoinRoundTrip) {
    using Args = std::vector<std::string>;
    EXPECT_EQ(SplitCommandLine("  a\t\tb   c d e f g  ", 5), (Args{"5", "a", "b", "c", "d", "e"}));
    EXPECT_EQ(SplitCommandLine("", 5)[0], "0");
    const Args quoted = SplitCommandLine("pre\"in side\"post \"\" \"open quote", 5);
    EXPECT_EQ(Args(quoted.begin(), quoted.begin() + 4),
              (Args{"3", "prein sidepost", "", "open quote"}));
    for (const Args& args : std::vector<Args>{
             {}, {"-d"}, {"-t", "my log.tab", "prof"}, {"", "a\tb", "x"}, {"-dl", "--", "-h"}}) {
        const auto split = SplitCommandLine(JoinCommandLine(args), 5);
        ASSERT_EQ(split[0], std::to_string(args.size()));
        EXPECT_EQ(Args(split.begin() + 1, split.begin() + 1 + std::ptrdiff_t(args.size())), args);
    }
}

TEST(UrlCoding, KnownFormsMalformedEscapesAndEveryByteRoundTrips) {
    EXPECT_EQ(UrlEncode("a b&c", true) + UrlEncode("a b", false), "a+b%26ca%20b");
    EXPECT_EQ(UrlEncode("x\t\r\n-_.~\xC3\xA9", true), "x%09%0D%0A%2D%5F%2E%7E%C3%A9");
    for (const auto& [coded, text] : {P{"a+b%26c", "a b&c"}, P{"100%", "100%"}, P{"%4", "%4"},
                                      P{"%zz%41%c3%a9", "%zzA\xC3\xA9"}, P{"%41", "A"}})
        EXPECT_EQ(UrlDecode(coded), text);
    std::mt19937 rng(3);
    for (int n = 0; n < 200; ++n) {
        std::string s(40, '\0');
        std::generate(s.begin(), s.end(), [&rng] { return static_cast<char>(rng() & 0xFF); });
        for (bool plus : {true, false}) {
            const std::string e = UrlEncode(s, plus);
            EXPECT_EQ(e.find_first_of(" \t\r\n&="), std::string::npos);
            EXPECT_EQ(UrlDecode(e), s);
        }
    }
}

TEST(PostOnce, RedirectTargetsAndOrigins) {
    const std::string from = "http://Example.org/zav/collect.php?x=1";
    for (const auto& [location, resolved] :
         {P{"https://other.org/a", "https://other.org/a"}, P{"//other.org/a", "http://other.org/a"},
          P{"/a/b", "http://Example.org/a/b"}, P{"moved.php", "http://Example.org/zav/moved.php"}})
        EXPECT_EQ(ResolveLocation(from, location), resolved) << location;
    EXPECT_TRUE(SameOrigin(from, "http://example.org:80/other") &&
                SameOrigin("https://a.org/x", "HTTPS://A.ORG:443/y"));
    for (const char* other : {"https://example.org/zav/", "http://example.org:8080/zav/",
                              "http://example.org.evil.net/zav/", "http://evil.net/?example.org",
                              "http://user@evil.net/", "example.org/zav/"})
        EXPECT_FALSE(SameOrigin(from, other)) << other;
}

TEST(Number, AcceptsTheDecimalGrammarAndHexadecimal) {
    using D = std::pair<const char*, double>;
    // Hexadecimal: 16 bits signed up to four digits, then 32 bits signed.
    for (const auto& [text, value] :
         {D{"0", 0}, D{"  42 ", 42}, D{"-3", -3}, D{"+2.5", 2.5}, D{"1E-3", 0.001},
          D{"2.5e+2", 250}, D{".5", 0.5}, D{"7.", 7}, D{"\t-0.31\t", -0.31},
          D{"000.000100", 0.0001}, D{"&h10", 16}, D{"&HfF", 255}, D{"&h7FFF", 32767},
          D{"&hFFFF", -1}, D{"&h10000", 65536}, D{"&hFFFFFFFF", -1}}) {
        EXPECT_TRUE(IsNumber(text)) << text;
        EXPECT_DOUBLE_EQ(Number(text), value) << text;
    }
    for (double v : {0.1, -173.97500000000002, 1e-300, 6.02214076e23}) {
        char buf[64];
        std::snprintf(buf, sizeof buf, "%.17g", v);
        EXPECT_EQ(Number(buf), v) << buf;
    }
    for (const char* text :
         {"",      "   ", "abc", "1.2.3", "1,5",  "1 000", "e5",   "1e",          "1e+",
          "--1",   "+",   ".",   "1..",   "0x10", "&h",    "&hG1", "&h123456789", "-&h10",
          "1e400", "inf", "nan", "12abc", "- 5",  "1d3"}) {
        EXPECT_TRUE(!IsNumber(text) && Number(text) == 0.0) << text;
    }
    EXPECT_TRUE(IsNumber("1,5", ',') && !IsNumber("1.5", ','));
    EXPECT_DOUBLE_EQ(Number("1,5", ','), 1.5);
}

TEST(Number, StoredNumbersUseAPointAndReadEitherSeparator) {
    // shown in a locale -> stored -> shown again; digits are kept as typed
    for (char sep : {'.', ','}) {
        for (std::string stored : {"7.100", "-0.31", "2700", "1.5e3", "&hFF", " 8.00 "}) {
            std::string shown = stored;
            std::replace(shown.begin(), shown.end(), '.', sep);
            EXPECT_EQ(LocaleFreeNumber(shown, sep), stored) << shown;
            EXPECT_EQ(ShownNumber(stored, sep), shown) << stored;
            EXPECT_EQ(StoredNumber(stored), Number(stored)) << stored;
        }
    }
    // A comma-locale machine's "2,700" is 2.7, never 2700 nor a default.
    EXPECT_TRUE(ShownNumber("2,700", '.') == "2.700" && StoredNumber("2,700") == 2.7);
    for (const char* text : {"", "six", "1.000,5", "1,5,0", "7 MHz"}) {
        EXPECT_EQ(LocaleFreeNumber(text, ','), text);
        EXPECT_FALSE(ShownNumber(text, ',') || StoredNumber(text)) << text;
    }
}

TEST(Format, PatternsRoundingSignAndSeparator) {
    using C = std::tuple<double, const char*, const char*>;
    // Halves go away from zero on the decimal value (2.675 is 2.67499999... in binary).
    for (const auto& [value, pattern, text] :
         {C{2700.6, "0", "2701"}, C{-0.31, "0.0", "-0.3"}, C{-35.1, "0.000000", "-35.100000"},
          C{-7.5, "00.000000", "-07.500000"}, C{1234.5, "00.000000", "1234.500000"},
          C{2.675, "0.00", "2.68"}, C{-2.675, "0.00", "-2.68"}, C{2.5, "0", "3"},
          C{-0.5, "0", "-1"}, C{9.995, "0.00", "10.00"}, C{-0.0, "0.00", "0.00"},
          C{-0.4, "0", "0"}})
        EXPECT_EQ(Format(value, pattern), text) << value << " " << pattern;
    EXPECT_EQ(Format(33.8, "0.00", ','), "33,80");
    EXPECT_THROW(Format(1, "#.##"), std::invalid_argument);
    EXPECT_THROW(Format(1, "0.0.0"), std::invalid_argument);

    // printf rounds the exact binary value; the two agree away from a hair of a tie.
    std::mt19937_64 rng(7);
    std::uniform_real_distribution<double> dist(-1e5, 1e5);
    for (int i = 0; i < 20000; ++i) {
        const double v = dist(rng), scaled = std::fabs(v) * 100;
        if (std::fabs(scaled - std::floor(scaled) - 0.5) < 1e-6)
            continue;
        char buf[64];
        std::snprintf(buf, sizeof buf, "%.2f", v);
        ASSERT_EQ(Format(v, "0.00"), std::string(buf) == "-0.00" ? "0.00" : buf) << v;
    }
}

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
    const fs::path secret = dir.path / "secret.txt"; // narrow from its first byte on
    ASSERT_TRUE(WriteFileAtomically(secret.string(), "pw", nullptr, FileAccessMode::OwnerOnly));
    EXPECT_EQ(mode(secret), fs::perms::owner_read | fs::perms::owner_write);
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
    fs::create_directory(runtime), fs::create_directory(shared), fs::create_directory(elsewhere);
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
