#include "support/AboutModel.h"
#include "support/HelpMenu.h"

#include "platform/OpenDocument.h"
#include "platform/Version.h"
#include "testsupport/FakePorts.h"
#include "testsupport/FakeDialogs.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

using namespace zav;
using namespace zav::test;

TEST(ShellResultRule, MessageBelow31AndAt32OnlyWith31PassingSilently) {
    const ShellFailureTexts texts{"T", "Problem (Error ", "no association"};
    for (int result = -1; result <= 40; ++result) {
        FakeDialogs dialogs;
        const bool quiet = ReportShellResult(result, texts, dialogs);
        const bool expectMessage = result < 31 || result == 32;
        EXPECT_EQ(quiet, !expectMessage) << result;
        ASSERT_EQ(dialogs.messages.size(), expectMessage ? 1u : 0u) << result;
        if (expectMessage) {
            EXPECT_EQ(dialogs.messages[0].text,
                      result == 32 ? std::string("no association")
                                   : "Problem (Error " + std::to_string(result) + ")");
        }
    }
}

TEST(HelpMenu, ManualAndWebPagesOpenWhereTheyShould) {
    FakeShell shell;
    FakeDialogs dialogs;
    HelpMenu help(shell, dialogs);
    shell.results = {31, 32, 7};
    help.MenuHelpHelp_Click("/usr/share/zav/");
    EXPECT_TRUE(dialogs.messages.empty()); // 31: nothing visible
    help.MenuHelpHelp_Click("/usr/share/zav");
    help.MenuHelpHelp_Click("docs");
    ASSERT_EQ(dialogs.messages.size(), 2u);
    EXPECT_EQ(dialogs.messages[0].text,
              "ZAV could not find a file association for ZAV.pdf on your system.");
    EXPECT_EQ(dialogs.messages[1].text, "Problem accessing documentation. (Error 7)");
    for (const auto& m : dialogs.messages)
        EXPECT_EQ(m.title, "Acrobat unavailable");

    shell.results = {2, 32};
    help.MenuHome_Click("https://site.example/");
    help.MenuFaq_Click("https://site.example/");
    help.MenuSupport_Click("https://site.example/");
    EXPECT_EQ(shell.opened, (std::vector<std::string>{
                                "/usr/share/zav/ZAV.pdf", "/usr/share/zav/ZAV.pdf", "docs/ZAV.pdf",
                                "https://site.example/", "https://site.example/faq.htm",
                                "https://site.example/support.htm"}));
    // The web pages fail as a browser problem, naming the error or the address.
    ASSERT_EQ(dialogs.messages.size(), 4u);
    EXPECT_EQ(dialogs.messages[2].text, "Problem running your web browser. You should check that "
                                        "your browser is correctly installed. (Error 2)");
    EXPECT_EQ(dialogs.messages[3].text,
              "ZAV could not find a file association for https://site.example/faq.htm on your "
              "system. You should check that your browser is correctly installed and "
              "associated with this type of file.");
    EXPECT_EQ(dialogs.messages[3].title, "Browser Unavailable");
    EXPECT_EQ(dialogs.messages[3].icon, MessageIcon::Exclamation);
}

TEST(AboutModel, CaptionVersionAndDisclaimerWithItsLineBreak) {
    FakeShell shell;
    FakeDialogs dialogs;
    FakeSystemInfo info;
    AboutModel about("/opt/zav", {shell, dialogs, info});
    about.Form_Load();
    EXPECT_EQ(about.Caption, "About ZAV");
    EXPECT_EQ(about.lblTitle, "ZAV");
    EXPECT_EQ(about.lblVersion, "Version: " + std::to_string(kVersionMajor) + "." +
                                    std::to_string(kVersionMinor) + "." +
                                    std::to_string(kVersionRevision));
    EXPECT_EQ(about.lblDisclaimer,
              "Disclaimer:\rUse at your own risk, see licence for warranty statement.");
    EXPECT_FALSE(about.lblDescription.empty());
    EXPECT_FALSE(about.lblNotice.empty());
    about.cmdOK_Click();
    EXPECT_TRUE(about.CloseRequested);
}

TEST(AboutModel, LicenceOpensBesideTheProgramWithOneSeparator) {
    FakeShell shell;
    FakeDialogs dialogs;
    FakeSystemInfo info;
    shell.results = {42, 31, 32, 3};
    AboutModel("/opt/zav", {shell, dialogs, info}).Licence_Click();
    AboutModel("/", {shell, dialogs, info}).Licence_Click();
    AboutModel("/opt/zav/", {shell, dialogs, info}).Licence_Click();
    AboutModel("/opt/zav", {shell, dialogs, info}).Licence_Click();
    EXPECT_EQ(shell.opened,
              (std::vector<std::string>{"/opt/zav/licence.txt", "/licence.txt",
                                        "/opt/zav/licence.txt", "/opt/zav/licence.txt"}));
    ASSERT_EQ(dialogs.messages.size(), 2u);
    EXPECT_EQ(dialogs.messages[0].text,
              "ZAV could not find a file association for licence.txt on your system. You should "
              "check that your browser is correctly installed and associated with this type of "
              "file.");
    EXPECT_EQ(dialogs.messages[1].text, "Problem accessing licence file. (Error 3)");
    EXPECT_EQ(dialogs.messages[1].title, "Browser Unavailable");
}

TEST(AboutModel, SystemInformationStartsAnExistingToolOrSaysItIsUnavailable) {
    FakeShell shell;
    FakeDialogs dialogs;
    FakeSystemInfo info;
    AboutModel about("/opt/zav", {shell, dialogs, info});
    about.StartSysInfo(); // none named
    info.path = "/no/such/tool";
    about.StartSysInfo();
    ASSERT_EQ(dialogs.messages.size(), 2u);
    for (const auto& m : dialogs.messages)
        EXPECT_EQ(m.text, "System Information Is Unavailable At This Time");
    EXPECT_TRUE(shell.ran.empty());

    const auto tool = std::filesystem::temp_directory_path() / "zav-sysinfo-tool";
    std::ofstream(tool) << "#!/bin/sh\n";
    info.path = tool.string();
    about.StartSysInfo();
    EXPECT_EQ(dialogs.messages.size(), 2u);
    EXPECT_EQ(shell.ran, std::vector<std::string>{tool.string() + "|"});
    std::filesystem::remove(tool);
}
