#include "support/AboutModel.h"
#include "support/HelpMenu.h"

#include "platform/OpenDocument.h"
#include "platform/Version.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"
#include "testsupport/ScratchDir.h"

#include <gtest/gtest.h>

#include <fstream>

using namespace zav;
using namespace zav::test;

namespace {
const std::string kByHand = "\n\nOpen it by hand: ";
const std::string kBrowser = " on your system. You should check that your browser is correctly "
                             "installed and associated with this type of file.";
} // namespace

TEST(ShellResultRule, MessageBelow31AndAt32OnlyWith31PassingSilently) {
    for (int result = -1; result <= 40; ++result) {
        FakeDialogs dialogs;
        const bool silent = result == 31 || result > 32;
        EXPECT_EQ(ReportShellResult(result, {"T", "Problem (Error ", "no association"}, dialogs),
                  silent);
        EXPECT_EQ(dialogs.texts(),
                  silent ? std::vector<std::string>{}
                  : result == 32
                      ? std::vector<std::string>{"no association"}
                      : std::vector<std::string>{"Problem (Error " + std::to_string(result) + ")"})
            << result;
    }
}

TEST(HelpMenu, ManualAndWebPagesOpenWhereTheyShould) {
    FakeShell shell;
    FakeDialogs dialogs;
    HelpMenu help(shell, dialogs);
    shell.results = {31, 7, 2, 32};
    help.openHelp("/usr/share/zav/");
    help.openHelp("docs");
    help.openHomePage("https://site.example/");
    help.openFaq("https://site.example/");
    help.openSupportPage("https://site.example/");
    EXPECT_EQ(shell.opened,
              (std::vector<std::string>{"/usr/share/zav/ZAV.pdf", "docs/ZAV.pdf",
                                        "https://site.example/", "https://site.example/faq.htm",
                                        "https://site.example/support.htm"}));
    // Nothing to open it with (31 or 32) is said, with where it is to open it by hand.
    EXPECT_EQ(dialogs.texts(),
              (std::vector<std::string>{
                  "ZAV could not find a file association for ZAV.pdf on your system." + kByHand +
                      "/usr/share/zav/ZAV.pdf",
                  "Problem accessing documentation. (Error 7)",
                  "Problem running your web browser. You should check that your browser is "
                  "correctly installed. (Error 2)",
                  "ZAV could not find a file association for https://site.example/faq.htm" +
                      kBrowser + kByHand + "https://site.example/faq.htm"}));
    EXPECT_EQ(dialogs.messages[0].title, "Acrobat unavailable");
    EXPECT_EQ(dialogs.messages[3].title, "Browser Unavailable");
}

TEST(AboutModel, VersionLicenceAndSystemInformation) {
    FakeShell shell;
    FakeDialogs dialogs;
    FakeSystemInfo info;
    AboutModel about("/opt/zav", {shell, dialogs, info});
    about.open();
    EXPECT_EQ(about.versionText, "Version: " + std::to_string(kVersionMajor) + "." +
                                    std::to_string(kVersionMinor) + "." +
                                    std::to_string(kVersionRevision));

    // The licence beside the program, with one separator whatever the folder ends in.
    shell.results = {42, 32, 3};
    AboutModel("/", {shell, dialogs, info}).showLicence();
    AboutModel("/opt/zav/", {shell, dialogs, info}).showLicence();
    about.showLicence();
    EXPECT_EQ(shell.opened, (std::vector<std::string>{"/licence.txt", "/opt/zav/licence.txt",
                                                      "/opt/zav/licence.txt"}));
    EXPECT_EQ(dialogs.texts(),
              (std::vector<std::string>{"ZAV could not find a file association for licence.txt" +
                                            kBrowser + kByHand + "/opt/zav/licence.txt",
                                        "Problem accessing licence file. (Error 3)"}));

    // System information: only a tool that exists is started.
    dialogs.messages.clear();
    about.startSystemInfo(); // none named
    info.path = "/no/such/tool";
    about.startSystemInfo();
    EXPECT_EQ(dialogs.texts(),
              std::vector<std::string>(2, "System Information Is Unavailable At This Time"));
    const TempDir dir;
    info.path = (dir.path / "sysinfo").string();
    std::ofstream(info.path) << "#!/bin/sh\n";
    about.startSystemInfo();
    EXPECT_EQ(dialogs.messages.size(), 2u);
    EXPECT_EQ(shell.ran, std::vector<std::string>{info.path + "|"});
}
