#include "platform/Version.h"
#include "support/AboutModel.h"
#include "support/HelpMenu.h"
#include "support/LikePattern.h"
#include "support/UpdateModel.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"

#include <gtest/gtest.h>

#include <random>
#include <regex>

using namespace zav;
using namespace zav::test;

TEST(Like, AgreesWithARegularExpressionOnRandomPatterns) {
    std::mt19937 rng(7);
    // The same pieces as a regular expression: an independent matcher.
    const char* pieces[] = {"a", "b", "1", "9", ".", "*", "?", "#", "[ab]", "[!1]", "[0-5]"};
    const char* asRegex[] = {"a", "b",     "1",    "9",    "\\.",  ".*",
                             ".", "[0-9]", "[ab]", "[^1]", "[0-5]"};
    const char letters[] = "ab17.x9";
    for (int round = 0; round < 4000; ++round) {
        std::string pattern, re, text;
        for (int i = static_cast<int>(rng() % 6); i > 0; --i) {
            const auto piece = rng() % std::size(pieces);
            pattern += pieces[piece], re += asRegex[piece];
        }
        for (int i = static_cast<int>(rng() % 8); i > 0; --i)
            text += letters[rng() % (sizeof letters - 1)];
        ASSERT_EQ(Like(text, pattern), std::regex_match(text, std::regex(re)))
            << "text " << text << " pattern " << pattern;
    }
    // A star inside a list is only itself; an open bracket matches nothing.
    EXPECT_TRUE(Like("2.1.39", "*#.*#.*#") && Like("*", "[*]") && Like("", "***"));
    EXPECT_FALSE(Like("2.1.37b", "*#.*#.*#") || Like("x", "[*]") || Like("[a", "[a") ||
                 Like("a", ""));
}

namespace {

struct UpdateRig {
    FakeHttp http;
    FakeXml xml;
    FakeUpdater updater;
    FakeShell shell;
    FakeDialogs dialogs;
    UpdateModel load(const std::string& url, const std::string& version,
                     HttpResponse reply = {200, "<update/>"}) {
        http.reply = reply;
        xml.elements = {{"url", url}, {"version", version}};
        UpdateModel m("http://site.example/", "/opt/zav", {http, xml, updater, shell, dialogs});
        m.open();
        return m;
    }
};

} // namespace

TEST(UpdateModel, OnlyAThreePartVersionFromTheProgramsOwnFolderIsBelievedAndOnlyANewerOneOffered) {
    const std::string home = "http://www.zav-noise.org/zav/",
                      bad = "Update site not responding properly.";
    const std::string newer = std::to_string(kVersionMajor) + "." + std::to_string(kVersionMinor) +
                              "." + std::to_string(kVersionRevision + 1);
    const std::string current = "Version " + VersionText() + " is current",
                      offered = "New version available: " + newer;
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {home, "0.0.1", current},
        {home, VersionText(), current},
        {home, newer, offered},
        {"https://mirror.example/downloads/zav/", newer, offered},
        {home, "2.2", bad},
        {home, "", bad},
        {"http://www.example.com/other/", newer, bad},
        {"ftp://www.zav-noise.org/zav/", newer, bad},
        {"http://www.zav-noise.org/zav", newer, bad},
        {"http://www.zav-noise.org/ZAV/", newer, bad}};
    for (const auto& [url, version, message] : cases) {
        UpdateRig rig;
        const UpdateModel m = rig.load(url, version);
        EXPECT_EQ(std::make_tuple(m.Message, m.supportVisible,
                                  m.outcome == UpdateModel::Outcome::SiteFailed),
                  std::make_tuple(message, message == offered, message == bad))
            << url << " " << version;
        EXPECT_EQ(rig.http.requests.at(0).url, "http://site.example/Update.xml");
    }
}

TEST(UpdateModel, UpdaterButtonOnlyWithAnInstalledUpdaterAndItsLaunchAlwaysCloses) {
    UpdateRig none; // "0.0.0" is no updater, whatever the site says
    none.updater.version = "0.0.0";
    EXPECT_FALSE(none.load("", "", {404, ""}).updaterEnabled);
    for (const int result : {2, 32}) {
        UpdateRig rig;
        UpdateModel m = rig.load("", "");
        rig.shell.results = {result};
        m.runUpdater();
        EXPECT_EQ(rig.shell.opened, std::vector<std::string>{"/opt/zav/ZAV.kwupdate"});
        EXPECT_TRUE(m.CloseRequested && rig.dialogs.messages.at(0).title == "kwUpdate unavailable");
        EXPECT_EQ(rig.dialogs.texts()[0].find("Error 2") != std::string::npos, result == 2);
    }
}

TEST(HelpAndAbout, DocumentsAndPagesOpenWhereTheyShould) {
    FakeShell shell;
    FakeDialogs dialogs;
    FakeSystemInfo info;
    HelpMenu help(shell, dialogs);
    shell.results = {31, 7, 33, 32, 33, 33, 3}; // above 32: opened
    for (const char* folder : {"/usr/share/zav/", "docs"})
        help.openHelp(folder);
    help.openHomePage("https://site.example/"), help.openFaq("https://site.example/");
    help.openSupportPage("https://site.example/");
    for (const char* folder : {"/", "/opt/zav/"}) // one separator
        AboutModel(folder, {shell, dialogs, info}).showLicence();
    std::string shown;
    for (const auto& m : dialogs.messages) // where to open it by hand, or the error number
        shown += m.title + ": " + m.text.substr(m.text.rfind(' ') + 1) + "|";
    EXPECT_EQ(shown, "Acrobat unavailable: /usr/share/zav/ZAV.pdf|Acrobat unavailable: 7)|Browser "
                     "Unavailable: https://site.example/faq.htm|Browser Unavailable: 3)|");
    EXPECT_EQ(shell.opened, (std::vector<std::string>{
                                "/usr/share/zav/ZAV.pdf", "docs/ZAV.pdf", "https://site.example/",
                                "https://site.example/faq.htm", "https://site.example/support.htm",
                                "/licence.txt", "/opt/zav/licence.txt"}));
    dialogs.messages.clear(); // system information: only a tool that exists is started
    AboutModel about("/opt/zav", {shell, dialogs, info});
    for (const char* path : {"", "/no/such/tool", "/bin/sh"})
        info.path = path, about.startSystemInfo();
    EXPECT_TRUE(dialogs.messages.size() == 2 && shell.ran == std::vector<std::string>{"/bin/sh|"});
}
