#include "support/UpdateModel.h"

#include "platform/Version.h"
#include "testsupport/FakePorts.h"
#include "testsupport/FakeDialogs.h"

#include <gtest/gtest.h>

using namespace zav;
using namespace zav::test;

namespace {

struct UpdateRig {
    FakeHttp http;
    FakeXml xml;
    FakeUpdater updater;
    FakeShell shell;
    FakeDialogs dialogs;

    explicit UpdateRig(const std::string& version) {
        describe("http://www.zav-noise.org/zav/", version);
    }
    void describe(const std::string& url, const std::string& version) {
        http.reply = {200, "<update/>"};
        xml.elements = {{"url", url}, {"version", version}};
    }
    UpdateModel load() {
        UpdateModel m("http://site.example/", "/opt/zav", {http, xml, updater, shell, dialogs});
        m.Form_Load();
        return m;
    }
};

} // namespace

TEST(UpdateModel, NewerVersionOffersTheDownloadPageOlderIsCurrent) {
    UpdateRig rig("0.0.1");
    UpdateModel older = rig.load();
    EXPECT_EQ(rig.http.requests.at(0).url, "http://site.example/Update.xml");
    EXPECT_EQ(older.Message, "Version " + VersionText() + " is current");
    EXPECT_FALSE(older.btnSupportVisible);
    // A newer revision only: every part counts.
    const std::string newer = std::to_string(kVersionMajor) + "." + std::to_string(kVersionMinor) +
                              "." + std::to_string(kVersionRevision + 1);
    rig.describe("http://mirror.example/downloads/zav/", newer);
    UpdateModel update = rig.load();
    EXPECT_EQ(update.Message, "New version available: " + newer);
    EXPECT_TRUE(update.btnSupportVisible);
    rig.xml.elements.erase("version"); // a description without one
    EXPECT_EQ(rig.load().Message, "Update site not responding properly.");
}

TEST(UpdateModel, UpdaterButtonOnlyWithAnInstalledUpdater) {
    UpdateRig rig(VersionText());
    EXPECT_FALSE(rig.load().btnKwupdaterEnabled);
    rig.updater.version = "0.0.0";
    EXPECT_FALSE(rig.load().btnKwupdaterEnabled);
    rig.updater.version = "1.4.2";
    EXPECT_TRUE(rig.load().btnKwupdaterEnabled);
    rig.http.reply.status = 404; // the site's answer does not matter to it
    EXPECT_TRUE(rig.load().btnKwupdaterEnabled);
}

TEST(UpdateModel, UpdaterLaunchReportsByTheShellRuleAndAlwaysCloses) {
    struct Case {
        int result;
        std::string text;
    };
    const Case cases[] = {
        {0, "Problem accessing kwUpdate. (Error 0)"},
        {2, "Problem accessing kwUpdate. (Error 2)"},
        {30, "Problem accessing kwUpdate. (Error 30)"},
        {31, ""},
        {32, "ZAV could not find a file association for .kwupdate on your system."},
        {33, ""},
        {42, ""}};
    for (const Case& c : cases) {
        UpdateRig rig(VersionText());
        UpdateModel m = rig.load();
        rig.shell.results = {c.result};
        m.btnKwupdater_Click();
        ASSERT_EQ(rig.shell.opened.size(), 1u);
        EXPECT_EQ(rig.shell.opened[0], "/opt/zav/ZAV.kwupdate");
        EXPECT_TRUE(m.CloseRequested);
        if (c.text.empty()) {
            EXPECT_TRUE(rig.dialogs.messages.empty()) << c.result;
        } else {
            ASSERT_EQ(rig.dialogs.messages.size(), 1u) << c.result;
            EXPECT_EQ(rig.dialogs.messages[0].text, c.text);
            EXPECT_EQ(rig.dialogs.messages[0].title, "kwUpdate unavailable");
            EXPECT_EQ(rig.dialogs.messages[0].icon, MessageIcon::Exclamation);
        }
    }
}

TEST(UpdateModel, DownloadPageOpensThroughTheShellAndCloses) {
    UpdateRig rig(VersionText());
    UpdateModel m = rig.load();
    rig.shell.results = {32};
    m.btnSupport_Click();
    EXPECT_EQ(rig.shell.opened,
              std::vector<std::string>{"http://site.example/support.htm#download"});
    ASSERT_EQ(rig.dialogs.messages.size(), 1u);
    EXPECT_EQ(rig.dialogs.messages[0].title, "Browser Unavailable");
    EXPECT_NE(rig.dialogs.messages[0].text.find(
                  "for http://site.example/support.htm#download on your system."),
              std::string::npos);
    EXPECT_TRUE(m.CloseRequested);

    UpdateModel exit = rig.load();
    exit.btnExit_Click();
    EXPECT_TRUE(exit.CloseRequested);
}
