#include "support/UpdateModel.h"

#include "platform/Version.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"

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
        http.reply = {200, "<update/>"};
        xml.elements = {{"url", "http://www.zav-noise.org/zav/"}, {"version", version}};
    }
    UpdateModel load() {
        UpdateModel m("http://site.example/", "/opt/zav", {http, xml, updater, shell, dialogs});
        m.open();
        return m;
    }
};

} // namespace

TEST(UpdateModel, NewerVersionOffersTheDownloadPageOlderIsCurrent) {
    UpdateRig rig("0.0.1");
    UpdateModel older = rig.load();
    EXPECT_EQ(rig.http.requests.at(0).url, "http://site.example/Update.xml");
    EXPECT_EQ(older.Message, "Version " + VersionText() + " is current");
    EXPECT_FALSE(older.supportVisible);
    // A newer revision only: every part counts.
    const std::string newer = std::to_string(kVersionMajor) + "." + std::to_string(kVersionMinor) +
                              "." + std::to_string(kVersionRevision + 1);
    rig.xml.elements = {{"url", "https://mirror.example/downloads/zav/"}, {"version", newer}};
    EXPECT_EQ(rig.load().Message, "New version available: " + newer); // a secure site too
    rig.xml.elements = {{"url", "http://mirror.example/downloads/zav/"}, {"version", newer}};
    UpdateModel update = rig.load();
    EXPECT_EQ(update.Message, "New version available: " + newer);
    EXPECT_TRUE(update.supportVisible);
    rig.xml.elements.erase("version"); // a description without one
    EXPECT_EQ(rig.load().Message, "Update site not responding properly.");

    // The download page opens through the shell, with the browser's message if it fails.
    rig.shell.results = {32};
    update.openSupportPage();
    EXPECT_EQ(rig.shell.opened,
              std::vector<std::string>{"http://site.example/support.htm#download"});
    ASSERT_EQ(rig.dialogs.messages.size(), 1u);
    EXPECT_EQ(rig.dialogs.messages[0].title, "Browser Unavailable");
    EXPECT_NE(rig.dialogs.messages[0].text.find("for http://site.example/support.htm#download on"),
              std::string::npos);
    EXPECT_TRUE(update.CloseRequested);
}

TEST(UpdateModel, UpdaterButtonOnlyWithAnInstalledUpdaterAndItsLaunchAlwaysCloses) {
    UpdateRig rig(VersionText());
    EXPECT_FALSE(rig.load().updaterEnabled);
    rig.updater.version = "0.0.0";
    EXPECT_FALSE(rig.load().updaterEnabled);
    rig.updater.version = "1.4.2";
    rig.http.reply.status = 404; // the site's answer does not matter to it
    EXPECT_TRUE(rig.load().updaterEnabled);

    const std::pair<int, std::string> cases[] = {
        {2, "Problem accessing kwUpdate. (Error 2)"},
        {31, "ZAV could not find a file association for .kwupdate on your system.\n\nOpen it by "
             "hand: /opt/zav/ZAV.kwupdate"},
        {32, "ZAV could not find a file association for .kwupdate on your system.\n\nOpen it by "
             "hand: /opt/zav/ZAV.kwupdate"}};
    for (const auto& [result, text] : cases) {
        UpdateRig each(VersionText());
        UpdateModel m = each.load();
        each.shell.results = {result};
        m.runUpdater();
        EXPECT_EQ(each.shell.opened, std::vector<std::string>{"/opt/zav/ZAV.kwupdate"});
        EXPECT_TRUE(m.CloseRequested);
        EXPECT_EQ(each.dialogs.texts(),
                  text.empty() ? std::vector<std::string>{} : std::vector<std::string>{text});
        if (!text.empty()) {
            EXPECT_EQ(each.dialogs.messages[0].title, "kwUpdate unavailable");
            EXPECT_EQ(each.dialogs.messages[0].icon, MessageIcon::Exclamation);
        }
    }
}
