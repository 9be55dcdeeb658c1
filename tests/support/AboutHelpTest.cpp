#include "support/AboutModel.h"
#include "support/HelpMenu.h"

#include "platform/OpenDocument.h"
#include "platform/Version.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

using namespace zav;
using namespace zav::test;

TEST(ShellResultRule, MessageBelow31AndAt32OnlyWith31PassingSilently) {
    const ShellFailureTexts texts{"T", "Problem (Error ", "no association"};
    for (int result = -1; result <= 40; ++result) {
        FakeDialogs dialogs;
        const bool expectMessage = result < 31 || result == 32;
        EXPECT_EQ(ReportShellResult(result, texts, dialogs), !expectMessage) << result;
        const std::vector<std::string> expected =
            !expectMessage ? std::vector<std::string>{}
            : result == 32
                ? std::vector<std::string>{"no association"}
                : std::vector<std::string>{"Problem (Error " + std::to_string(result) + ")"};
        EXPECT_EQ(dialogs.texts(), expected) << result;
    }
}

TEST(HelpMenu, ManualAndWebPagesOpenWhereTheyShould) {
    FakeShell shell;
    FakeDialogs dialogs;
    HelpMenu help(shell, dialogs);
    shell.results = {31, 32, 7, 2, 32};
    help.openHelp("/usr/share/zav/");
    help.openHelp("/usr/share/zav");
    help.openHelp("docs");
    help.openHomePage("https://site.example/");
    help.openFaq("https://site.example/");
    help.openSupportPage("https://site.example/");
    EXPECT_EQ(shell.opened, (std::vector<std::string>{
                                "/usr/share/zav/ZAV.pdf", "/usr/share/zav/ZAV.pdf", "docs/ZAV.pdf",
                                "https://site.example/", "https://site.example/faq.htm",
                                "https://site.example/support.htm"}));
    // Nothing to open it with (31 or 32) is said, with where it is to open it by hand.
    const std::string byHand = "\n\nOpen it by hand: ";
    EXPECT_EQ(dialogs.texts(),
              (std::vector<std::string>{
                  "ZAV could not find a file association for ZAV.pdf on your system." + byHand +
                      "/usr/share/zav/ZAV.pdf",
                  "ZAV could not find a file association for ZAV.pdf on your system." + byHand +
                      "/usr/share/zav/ZAV.pdf",
                  "Problem accessing documentation. (Error 7)",
                  "Problem running your web browser. You should check that your browser is "
                  "correctly installed. (Error 2)",
                  "ZAV could not find a file association for https://site.example/faq.htm on "
                  "your system. You should check that your browser is correctly installed and "
                  "associated with this type of file." +
                      byHand + "https://site.example/faq.htm"}));
    EXPECT_EQ(dialogs.messages[0].title, "Acrobat unavailable");
    EXPECT_EQ(dialogs.messages[4].title, "Browser Unavailable");
    EXPECT_EQ(dialogs.messages[4].icon, MessageIcon::Exclamation);
}

TEST(AboutModel, CaptionsLicenceAndSystemInformation) {
    FakeShell shell;
    FakeDialogs dialogs;
    FakeSystemInfo info;
    AboutModel about("/opt/zav", {shell, dialogs, info});
    about.open();
    EXPECT_EQ(about.Caption, "About ZAV");
    EXPECT_EQ(about.versionText, "Version: " + std::to_string(kVersionMajor) + "." +
                                     std::to_string(kVersionMinor) + "." +
                                     std::to_string(kVersionRevision));
    EXPECT_EQ(about.disclaimerText,
              "Disclaimer:\rUse at your own risk, see licence for warranty statement.");
    about.okPressed();
    EXPECT_TRUE(about.CloseRequested);

    // The licence beside the program, with one separator whatever the folder ends in.
    shell.results = {42, 32, 3};
    AboutModel("/", {shell, dialogs, info}).showLicence();
    AboutModel("/opt/zav/", {shell, dialogs, info}).showLicence();
    about.showLicence();
    EXPECT_EQ(shell.opened, (std::vector<std::string>{"/licence.txt", "/opt/zav/licence.txt",
                                                      "/opt/zav/licence.txt"}));
    EXPECT_EQ(dialogs.texts(),
              (std::vector<std::string>{
                  "ZAV could not find a file association for licence.txt on your system. You "
                  "should check that your browser is correctly installed and associated with "
                  "this type of file.\n\nOpen it by hand: /opt/zav/licence.txt",
                  "Problem accessing licence file. (Error 3)"}));
    EXPECT_EQ(dialogs.messages[1].title, "Browser Unavailable");

    // System information: only a tool that exists is started.
    dialogs.messages.clear();
    about.startSystemInfo(); // none named
    info.path = "/no/such/tool";
    about.startSystemInfo();
    EXPECT_EQ(dialogs.texts(),
              std::vector<std::string>(2, "System Information Is Unavailable At This Time"));
    EXPECT_TRUE(shell.ran.empty());
    const auto tool = std::filesystem::temp_directory_path() / "zav-sysinfo-tool";
    std::ofstream(tool) << "#!/bin/sh\n";
    info.path = tool.string();
    about.startSystemInfo();
    EXPECT_EQ(dialogs.messages.size(), 2u);
    EXPECT_EQ(shell.ran, std::vector<std::string>{tool.string() + "|"});
    std::filesystem::remove(tool);
}
