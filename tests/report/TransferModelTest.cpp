#include "ReportFixture.h"

#include "platform/UrlCoding.h"
#include "platform/Version.h"
#include "report/PostVars.h"
#include "report/TextReport.h"
#include "report/TransferModel.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

using namespace zav;
using namespace zav::test;

namespace {

using Items = std::vector<std::pair<std::string, std::string>>;

// Cuts a form body back into its items; a stray "&" or "=" in a value would show here as an
// extra item or a wrong key.
Items splitForm(const std::string& body) {
    Items items;
    std::size_t start = 0;
    while (start <= body.size()) {
        const std::size_t end = std::min(body.find('&', start), body.size());
        const std::string item = body.substr(start, end - start);
        const std::size_t eq = item.find('=');
        items.emplace_back(item.substr(0, eq), eq == std::string::npos ? "" : item.substr(eq + 1));
        start = end + 1;
    }
    return items;
}

std::vector<std::string> keys(const Items& items) {
    std::vector<std::string> out;
    for (const auto& [k, v] : items)
        out.push_back(k);
    return out;
}

const std::vector<std::string> kFieldKeys = {
    "Program",  "Version",    "ObsTime", "Tester",  "Location", "Environment", "Frequency",
    "Receiver", "Bandwidth",  "MBW",     "MeasInt", "RxNF",     "Antenna",     "AntGain",
    "AntFact",  "Attenuator", "AGC",     "Loss",    "RxAvg",    "RxRms",       "RxQp",
    "RxPk",     "FsAvg",      "FsRms",   "FsQp",    "FsPk",     "NormAvg",     "NormRms",
    "NormQp",   "NormPk",     "QpRms",   "PkRms",   "Notes"};

struct TransferRig {
    ReportFixture fixture;
    TransferSettings settings;
    TransferHistory history;
    FakeHttp http;
    FakeXml xml;
    FakeMailer mailer;
    FakeClipboard clipboard;
    FakeDialogs dialogs;
    ReportSource source = fixture.source();

    TransferRig() {
        settings.username = "alice";
        settings.password = "p&ss word";
        settings.Email = "me@example.org";
        settings.URL = "collect.example.org/post.php";
        settings.AtfEmail = "obs@example.org";
        accept("R-17");
    }
    void accept(const std::string& receipt) {
        http.reply = {200, "<r><cc>0</cc><receipt>" + receipt + "</receipt></r>"};
        xml.elements = {{"cc", "0"}, {"receipt", receipt}};
    }
    TransferModel open() {
        TransferModel m(source, settings, history, {http, xml, mailer, clipboard, dialogs});
        m.Form_Load();
        return m;
    }
};

} // namespace

TEST(PostVars, FieldOrderWithFreeTextEncodedAndCellsAsDisplayed) {
    ReportFixture f;
    f.setup.Location = "Hill top = 3 & more";
    const Items items = splitForm(PostVars(f.source()));
    ASSERT_EQ(keys(items), kFieldKeys); // no feed line, average included, no position
    auto value = [&items](const std::string& key) {
        for (const auto& [k, v] : items)
            if (k == key)
                return v;
        return std::string("<missing>");
    };
    EXPECT_EQ(value("Program"), "ZAV");
    EXPECT_EQ(value("Version"), VersionText());
    EXPECT_EQ(value("ObsTime"), f.observation.ObsTime);
    // Free text comes back whole through the decoder, line ends, tabs, "&" and "=" included.
    const std::pair<const char*, std::string> typed[] = {{"Tester", f.setup.Tester},
                                                         {"Location", f.setup.Location},
                                                         {"Environment", f.setup.Environment},
                                                         {"Frequency", f.setup.Frequency},
                                                         {"Receiver", f.setup.Receiver},
                                                         {"Bandwidth", f.setup.Bandwidth},
                                                         {"RxNF", f.setup.RxNF},
                                                         {"Antenna", f.setup.Antenna},
                                                         {"Attenuator", f.setup.Attenuator},
                                                         {"AGC", f.setup.AGC},
                                                         {"Loss", f.setup.Loss},
                                                         {"Notes", f.setup.Notes}};
    for (const auto& [key, text] : typed) {
        EXPECT_EQ(UrlDecode(value(key)), text) << key;
        EXPECT_EQ(value(key).find_first_of(" \r\n\t&="), std::string::npos) << key;
    }
    EXPECT_EQ(UrlDecode(value("MBW")), "33.80");
    EXPECT_EQ(UrlDecode(value("MeasInt")), "0.500");
    EXPECT_EQ(value("AntGain"), "%2D2%2E15");
    EXPECT_EQ(UrlDecode(value("AntFact")), "12.00");
    const std::pair<const char*, int> cells[] = {{"RxAvg", 5},    {"RxRms", 9},   {"RxQp", 13},
                                                 {"RxPk", 17},    {"FsAvg", 6},   {"FsRms", 10},
                                                 {"FsQp", 14},    {"FsPk", 18},   {"NormAvg", 7},
                                                 {"NormRms", 11}, {"NormQp", 15}, {"NormPk", 19}};
    for (const auto& [key, index] : cells)
        EXPECT_EQ(value(key), f.gridCalc.Text(index)) << key;
    EXPECT_EQ(value("QpRms"), f.gridMeas.Text(23));
    EXPECT_EQ(value("PkRms"), f.gridMeas.Text(27));
}

TEST(PostVars, PositionOnlyWhenBothHalvesKnownAndNeverEncoded) {
    ReportFixture f;
    f.observation.ObsLat = "51.500000";
    EXPECT_EQ(keys(splitForm(PostVars(f.source()))), kFieldKeys);
    f.observation.ObsLat.clear();
    f.observation.ObsLon = "-0.120000";
    EXPECT_EQ(keys(splitForm(PostVars(f.source()))), kFieldKeys);

    f.observation.ObsLat = "51.500000";
    f.observation.ObsTime = "20261121 093015"; // a blank goes as it stands
    const std::string body = PostVars(f.source());
    EXPECT_NE(body.find("&ObsTime=20261121 093015&"), std::string::npos);
    const std::string tail = "&Latitude=51.500000&Longitude=-0.120000";
    ASSERT_GE(body.size(), tail.size());
    EXPECT_EQ(body.substr(body.size() - tail.size()), tail);
}

TEST(TransferAddress, SchemeKeptOrHttpPutInFront) {
    EXPECT_EQ(TransferAddress("collect.example.org/p"), "http://collect.example.org/p");
    EXPECT_EQ(TransferAddress("https://h/p"), "https://h/p");
    EXPECT_EQ(TransferAddress("HTTP://h/p"), "HTTP://h/p");
    EXPECT_EQ(TransferAddress("httpx://h"), "http://httpx://h");
}

TEST(TransferModel, LoadShowsNoticeAndOkOnlyWithAnAddressForTheChosenWay) {
    TransferRig rig;
    TransferModel m = rig.open();
    EXPECT_EQ(m.username, "alice");
    EXPECT_EQ(m.password, "p&ss word");
    EXPECT_TRUE(m.OptionOnline);
    EXPECT_FALSE(m.OptionEmail);
    EXPECT_TRUE(m.OKButtonVisible);
    EXPECT_EQ(m.OKButtonCaption, "OK");
    EXPECT_EQ(m.Message.rfind("This facility is for transfer of the data from the main ZAV "
                              "form, this form, and the IP address",
                              0),
              0u);
    EXPECT_NE(m.Message.find("hit Cancel now."), std::string::npos);

    rig.settings.URL.clear();
    EXPECT_FALSE(rig.open().OKButtonVisible);
    rig.settings.online = false; // e-mail: the collecting address decides
    EXPECT_TRUE(rig.open().OKButtonVisible);
    rig.settings.AtfEmail.clear();
    TransferModel mail = rig.open();
    EXPECT_TRUE(mail.OptionEmail);
    EXPECT_FALSE(mail.OKButtonVisible);

    // The options and leaving the address boxes keep OK honest.
    mail.URL = "h/p";
    mail.OptionOnline_Click();
    EXPECT_TRUE(mail.OKButtonVisible);
    mail.OptionEmail_Click();
    EXPECT_FALSE(mail.OKButtonVisible);
    mail.AtfEmail = "x@y";
    mail.AtfEmail_LostFocus();
    EXPECT_TRUE(mail.OKButtonVisible);
    mail.URL.clear();
    mail.URL_LostFocus();
    EXPECT_FALSE(mail.OKButtonVisible);
}

TEST(TransferModel, StarredUserNameSetsTheServerDebugFlagForTheRestOfTheRun) {
    TransferRig rig;
    rig.settings.username = "*alice";
    TransferModel m = rig.open();
    m.OKButton_Click();
    const Items first = splitForm(rig.http.requests.at(0).body);
    ASSERT_EQ(first.size(), kFieldKeys.size() + 5);
    EXPECT_EQ(first[first.size() - 5],
              std::make_pair(std::string("username"), std::string("alice")));
    EXPECT_EQ(first.back(), std::make_pair(std::string("debug"), std::string("1")));
    EXPECT_EQ(m.username, "*alice"); // the box keeps what was typed
    m.Form_Unload();
    EXPECT_EQ(rig.settings.username, "*alice");

    rig.settings.username = "bob";
    rig.fixture.observation.ObsTime = "20261121100000";
    TransferModel later = rig.open();
    later.OKButton_Click();
    const Items second = splitForm(rig.http.requests.at(1).body);
    EXPECT_EQ(second[second.size() - 5].second, "bob");
    EXPECT_EQ(second.back().second, "1");
}

TEST(TransferModel, EmailVariantMailsAccountAndReportThenClosesAndCountsAsTransferred) {
    TransferRig rig;
    rig.settings.online = false;
    rig.settings.username = "*alice";
    TransferModel m = rig.open();
    m.OKButton_Click();
    EXPECT_TRUE(rig.http.requests.empty());
    ASSERT_EQ(rig.mailer.sent.size(), 1u);
    const MailMessage& mail = rig.mailer.sent[0];
    EXPECT_EQ(mail.to, "obs@example.org");
    EXPECT_EQ(mail.subject, "### ZAV report ### ");
    EXPECT_EQ(mail.body, "username\talice\r\npassword\tp&ss word\r\nEmail\tme@example.org\r\n"
                         "debug\t1\r\n" +
                             TextResults(rig.source) + "--\r\n");
    EXPECT_TRUE(m.CloseRequested);
    EXPECT_EQ(rig.history.lastReceipt, "by Email");

    TransferModel again = rig.open();
    again.OKButton_Click();
    EXPECT_EQ(again.Message, "Error: observation already succesfully transfered, receipt by Email");
    EXPECT_EQ(rig.mailer.sent.size(), 1u);
}

TEST(TransferModel, MailHandOffFailureSaysSoAndTransfersNothing) {
    TransferRig rig;
    rig.settings.online = false;
    rig.mailer.accepts = false;
    TransferModel m = rig.open();
    m.OKButton_Click();
    ASSERT_EQ(rig.dialogs.messages.size(), 1u);
    EXPECT_EQ(rig.dialogs.messages[0].text, "Error: unable to perform MAPI login.");
    EXPECT_EQ(rig.dialogs.messages[0].icon, MessageIcon::Critical);
    EXPECT_FALSE(m.CloseRequested);
    EXPECT_TRUE(rig.history.lastObsTime.empty());
}

TEST(TransferModel, UnloadWritesTheBoxesBackAndDoubleClickCopiesTheMessage) {
    TransferRig rig;
    TransferModel m = rig.open();
    m.username = "carol";
    m.password = "x";
    m.Email = "c@d";
    m.URL = "other/p";
    m.AtfEmail = "e@f";
    m.OptionEmail_Click();
    m.CancelButton_Click();
    EXPECT_TRUE(m.CloseRequested);
    m.Form_Unload();
    EXPECT_EQ(rig.settings.username, "carol");
    EXPECT_EQ(rig.settings.password, "x");
    EXPECT_EQ(rig.settings.Email, "c@d");
    EXPECT_EQ(rig.settings.URL, "other/p");
    EXPECT_EQ(rig.settings.AtfEmail, "e@f");
    EXPECT_FALSE(rig.settings.online);

    m.Message_DblClick();
    ASSERT_EQ(rig.clipboard.texts.size(), 1u);
    EXPECT_EQ(rig.clipboard.texts[0], m.Message);
}
