#include "config/IniFile.h"
#include "config/TextEncoding.h"
#include "testsupport/ScratchDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iconv.h>
#include <random>
#include <sys/stat.h>

using namespace zav;
namespace fs = std::filesystem;

namespace {

void spit(const fs::path& p, const std::string& s) {
    std::ofstream(p, std::ios::binary) << s;
}

// The C library's own converter, as an independent oracle; nothing when it refuses.
std::optional<std::string> iconvConvert(const char* from, const char* to, std::string in) {
    iconv_t cd = iconv_open(to, from);
    if (cd == reinterpret_cast<iconv_t>(-1))
        return std::nullopt;
    std::string out(in.size() * 4 + 16, '\0');
    char *inp = in.data(), *outp = out.data();
    size_t inLeft = in.size(), outLeft = out.size();
    const size_t r = iconv(cd, &inp, &inLeft, &outp, &outLeft);
    iconv_close(cd);
    if (r == static_cast<size_t>(-1) || inLeft != 0)
        return std::nullopt;
    out.resize(out.size() - outLeft);
    return out;
}

} // namespace

TEST(IniFile, ReadsLikeTheWindowsProfileFunctions) {
    const IniFile ini = IniFile::Parse(
        "orphan=ignored before any section\r\n; a comment=not a key\r\n"
        "  [ Conditions ]  trailing words\r\n  RECEIVER  =   IC-7300  \r\nreceiver=second loses\r\n"
        "Tester=\"  Joe  \"\r\nQuoted=\"\"\"twice\"\"\"\r\nHalf=\"open\r\nLone=\"\r\n"
        "line without an equals sign\r\n=no key\r\nurl=host/path?a=b;c\r\nEmpty=\r\n"
        "[unclosed\r\nAfterUnclosed=still conditions\n[options]\nVerbose = False\n"
        "[CONDITIONS]\nTester=repeated section loses\nLoss=1.5\n");
    std::string got; // "-" where no value is found
    for (const char* key : {"Receiver", "Tester", "Quoted", "Half", "Lone", "url", "Empty",
                            "AfterUnclosed", "Loss", "orphan", "; a comment", ""})
        got += ini.Value("conditions", key).value_or("-") + "|";
    got += ini.Value("options", "verbose").value_or("-") + ini.Value("options", "x").value_or("-");
    EXPECT_EQ(got, "IC-7300|  Joe  |\"\"twice\"\"|\"open|\"|host/path?a=b;c||still conditions|"
                   "1.5|-|-|-|False-");
    EXPECT_EQ(ini.Get("transfer", "online", "1"), "1");
    EXPECT_EQ(ini.Get("conditions", "Empty", "default"), "") << "present but empty is not absent";
}

TEST(IniFile, WritesCrLfSectionsInOrderAndQuotesOnlyWhatWouldNotReadBack) {
    IniFile ini;
    ini.Set("conditions", "Receiver", "IC-7300");
    ini.Set("conditions", "Tester", "padded ");
    ini.Set("conditions", "Lead", " x");
    ini.Set("options", "Verbose", "True");
    ini.Set("conditions", "Notes", "two\r\nlines");
    ini.Set("CONDITIONS", "receiver", "FT-817"); // same key: replaced in place
    ini.Set("conditions", "Quoted", "\"q\"");
    ini.Set("conditions", "Inner", "a \"b\" c");
    EXPECT_EQ(ini.Text(), "[conditions]\r\nReceiver=FT-817\r\nTester=\"padded \"\r\nLead=\" x\"\r\n"
                          "Notes=two  lines\r\nQuoted=\"\"q\"\"\r\nInner=a \"b\" c\r\n\r\n"
                          "[options]\r\nVerbose=True\r\n");
    EXPECT_EQ(IniFile::Parse(ini.Text()).Text(), ini.Text());
    EXPECT_EQ(IniFile().Text(), "");
}

TEST(IniFile, AnyBytesReadBackAlike) {
    std::mt19937 rng(11);
    // Whatever bytes come in, what was understood is written and understood the same again.
    const std::string pieces[] = {"[",    "]",    "=",    ";",    "\"",
                                  "\r\n", "\n",   "\r",   " ",    "a",
                                  "\x80", "\xC3", "\xA9", "\xFF", std::string(1, '\0')};
    for (int round = 0; round < 2000; ++round) {
        std::string bytes;
        for (int i = rng() % 60; i > 0; --i)
            bytes += pieces[rng() % std::size(pieces)];
        const IniFile once = IniFile::Parse(bytes);
        EXPECT_EQ(IniFile::Parse(once.Text()).Text(), once.Text());
        EXPECT_TRUE(IsValidUtf8(once.Text()));
    }
}

TEST(TextEncoding, AgreesWithTheCLibrary) {
    for (int b = 1; b < 256; ++b) {
        const std::string byte(1, static_cast<char>(b));
        // The five codes Windows-1252 leaves open become the C1 controls of the same number.
        const auto oracle = b == 0x81 || b == 0x8D || b == 0x8F || b == 0x90 || b == 0x9D
                                ? iconvConvert("UTF-32LE", "UTF-8", {byte[0], 0, 0, 0})
                                : iconvConvert("WINDOWS-1252", "UTF-8", byte);
        EXPECT_EQ(Windows1252ToUtf8(byte), oracle) << b;
    }
    std::mt19937 rng(9);
    std::uniform_int_distribution<int> anyByte(1, 255), highByte(0x80, 0xFF);
    for (int round = 0; round < 20000; ++round) {
        std::string s; // mostly lead and continuation bytes, where the mistakes are
        for (int i = std::uniform_int_distribution<int>(1, 6)(rng); i > 0; --i)
            s += static_cast<char>(rng() % 5 ? highByte(rng) : anyByte(rng));
        EXPECT_EQ(IsValidUtf8(s), iconvConvert("UTF-8", "UTF-32LE", s).has_value());
    }
    // A byte-order mark is dropped; one stray byte makes the whole file Windows-1252.
    EXPECT_EQ(DecodeText("\xEF\xBB\xBF[x]"), "[x]");
    EXPECT_EQ(DecodeText("\xC3\xA9 \xE9 \x80"), "\xC3\x83\xC2\xA9 \xC3\xA9 \xE2\x82\xAC");
}

TEST(IniFile, UnreadableFilesGiveAnEmptyProfileAndTheReasonAtOnce) {
    // A pipe nobody writes to, something far too large or a read error: never a wait or a throw.
    test::TempDir dir;
    const fs::path big = dir.path / "big.zav", fifo = dir.path / "fifo.zav";
    spit(big, "[x]\r\ny=1\r\n" + std::string(IniFile::kMaxFileBytes, ';'));
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const std::pair<fs::path, const char*> unreadable[] = {
        {dir.path / "nothing.zav", "No such file or directory"},
        {dir.path, "it is a folder"},
        {fifo, "it is not a regular file"},
        {big, "it is larger than 4194304 bytes"},
        {"/proc/self/mem", "Input/output error"}}; // a regular file whose reading fails
    for (const auto& [path, reason] : unreadable) {
        IniFile loaded = IniFile::Parse("[x]\ny=1\n");
        std::string error;
        EXPECT_FALSE(loaded.Load(path.string(), &error)) << path;
        EXPECT_EQ(error, reason) << path;
        EXPECT_EQ(loaded.Text(), "") << path;
    }
}

TEST(IniFile, OldMacLineEndsAndUnicodeTextFilesReadAsTheirText) {
    const std::string text = "[conditions]\r\nReceiver=R\xC3\xA9"
                             "cepteur \xE2\x82\xAC \xF0\x9F\x93\xBB\r\nLoss=1.5\r\n";
    std::string crOnly = text;
    crOnly.erase(std::remove(crOnly.begin(), crOnly.end(), '\n'), crOnly.end());
    test::TempDir dir;
    for (const std::string& bytes :
         {crOnly, "\xFF\xFE" + iconvConvert("UTF-8", "UTF-16LE", text).value_or(""),
          "\xFE\xFF" + iconvConvert("UTF-8", "UTF-16BE", text).value_or(""),
          "\xEF\xBB\xBF" + text}) {
        spit(dir.path / "p.zav", bytes);
        IniFile ini;
        EXPECT_TRUE(ini.Load((dir.path / "p.zav").string()) && ini.Text() == text) << bytes;
    }
    // A lone surrogate or a stray last byte is no reason to lose the rest.
    const char broken[] = "\xFF\xFE[\0a\0]\0\n\0k\0=\0\x00\xD8x";
    EXPECT_EQ(IniFile::Parse(std::string(broken, sizeof broken - 1)).Text(),
              "[a]\r\nk=\xEF\xBF\xBD\xEF\xBF\xBD\r\n");
}
