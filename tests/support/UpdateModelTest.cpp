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
    // A newer revision only: every part counts.
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
        EXPECT_EQ(m.Message, message) << url << " " << version;
        EXPECT_EQ(m.supportVisible, message == offered) << url << " " << version;
        EXPECT_EQ(m.outcome == UpdateModel::Outcome::SiteFailed, message == bad);
        EXPECT_EQ(rig.http.requests.at(0).url, "http://site.example/Update.xml");
    }
    UpdateRig rig;
    EXPECT_EQ(rig.load(home, newer, {404, "", "", HttpFailure::None, "refused"}).Message,
              bad + " HTTP status=404 (refused)");

    // The download page opens through the shell, with the browser's message if it fails.
    UpdateModel update = rig.load(home, newer);
    rig.shell.results = {32};
    update.openSupportPage();
    EXPECT_EQ(rig.shell.opened,
              std::vector<std::string>{"http://site.example/support.htm#download"});
    ASSERT_EQ(rig.dialogs.messages.size(), 1u);
    EXPECT_EQ(rig.dialogs.messages[0].title, "Browser Unavailable");
    EXPECT_TRUE(update.CloseRequested);
}

TEST(UpdateModel, UpdaterButtonOnlyWithAnInstalledUpdaterAndItsLaunchAlwaysCloses) {
    for (const auto& [installed, enabled] :
         {std::pair{"", false}, {"0.0.0", false}, {"1.4.2", true}}) {
        UpdateRig rig;
        rig.updater.version = installed;
        // The site's answer does not matter to it.
        EXPECT_EQ(rig.load("", "", {404, ""}).updaterEnabled, enabled) << installed;
    }
    const std::string none = "ZAV could not find a file association for .kwupdate on your "
                             "system.\n\nOpen it by hand: /opt/zav/ZAV.kwupdate";
    for (const auto& [result, text] :
         {std::pair{2, std::string("Problem accessing kwUpdate. (Error 2)")},
          {31, none},
          {32, none}}) {
        UpdateRig rig;
        UpdateModel m = rig.load("", "");
        rig.shell.results = {result};
        m.runUpdater();
        EXPECT_EQ(rig.shell.opened, std::vector<std::string>{"/opt/zav/ZAV.kwupdate"});
        EXPECT_TRUE(m.CloseRequested);
        EXPECT_EQ(rig.dialogs.texts(), std::vector<std::string>{text});
        EXPECT_EQ(rig.dialogs.messages[0].title, "kwUpdate unavailable");
    }
}
