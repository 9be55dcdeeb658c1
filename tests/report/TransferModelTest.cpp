#include "ReportFixture.h"

#include "platform/Version.h"
#include "report/PostVars.h"
#include "report/TextReport.h"
#include "report/TransferModel.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"

#include <gtest/gtest.h>

using namespace zav;
using namespace zav::test;

namespace {

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
        settings.username = "alice", settings.password = "p&ss word";
        settings.Email = "me@example.org", settings.AtfEmail = "obs@example.org";
        settings.URL = "collect.example.org/post.php";
        http.reply = {200, "<r><cc>0</cc><receipt>R-17</receipt></r>"};
        xml.elements = {{"cc", "0"}, {"receipt", "R-17"}};
    }
    TransferModel open() {
        TransferModel m(source, settings, history, {http, xml, mailer, clipboard, dialogs});
        m.open();
        return m;
    }
};

} // namespace

TEST(PostVars, FieldOrderWithFreeTextEncodedCellsAsDisplayedAndThePositionLast) {
    ReportFixture f;
    f.setup.Tester = "G4ABC/P", f.setup.Location = "Hill top = 3 & more";
    // By hand: free text and formatted numbers encoded, grid cells and the time as they stand.
    const std::string noPosition =
        "Program=ZAV&Version=" + VersionText() +
        "&ObsTime=20261121093015&Tester=G4ABC%2FP&Location=Hill+top+%3D+3+%26+more"
        "&Environment=Rural&Frequency=7%2E100&Receiver=IC%2D7300&Bandwidth=2400&MBW=33%2E80"
        "&MeasInt=0%2E500&RxNF=6%2E00&Antenna=Dipole&AntGain=%2D2%2E15&AntFact=12%2E00"
        "&Attenuator=20%2E0&AGC=20&Loss=1%2E5&RxAvg=-120.05&RxRms=-119.00&RxQp=-117.50"
        "&RxPk=-108.00&FsAvg=-1.1&FsRms=0.0&FsQp=1.5&FsPk=11.0&NormAvg=-34.9&NormRms=-33.8"
        "&NormQp=-32.3&NormPk=-22.8&QpRms=1.50&PkRms=11.00"
        "&Notes=first+line%0D%0Asecond%09line+%26+more";
    EXPECT_EQ(PostVars(f.source()), noPosition);
    f.observation.ObsLon = "-0.120000";
    EXPECT_EQ(PostVars(f.source()), noPosition);
    f.observation.ObsLat = "51.500000";
    EXPECT_EQ(PostVars(f.source()), noPosition + "&Latitude=51.500000&Longitude=-0.120000");
    using P = std::pair<const char*, const char*>;
    for (const auto& [typed, address] :
         {P{"collect.example.org/p", "http://collect.example.org/p"},
          P{"https://h/p", "https://h/p"}, P{"HTTP://h/p", "HTTP://h/p"},
          P{"httpx://h", "http://httpx://h"}})
        EXPECT_EQ(TransferAddress(typed), address);
}

// The web way, the copy and the write-back through the real dialog: NetworkDialogsTest.cpp.
TEST(TransferModel, TheEmailWayNeedsTheCollectingAddress) {
    TransferRig rig;
    rig.settings.online = false;
    EXPECT_TRUE(rig.open().okVisible);
    rig.settings.AtfEmail.clear();
    TransferModel m = rig.open();
    EXPECT_TRUE(m.sendByEmail && !m.sendOnline && !m.okVisible);
    m.AtfEmail = "x@y", m.collectingAddressEdited();
    EXPECT_TRUE(m.okVisible);
}

// A starred user name sends the server's debug flag for the rest of the run, on either way.
TEST(TransferModel, PostsOrMailsAccountAndReportOnceOrSaysWhyItCouldNot) {
    TransferRig rig;
    rig.settings.username = "*alice";
    TransferModel posted = rig.open();
    posted.okPressed(), posted.close();
    ASSERT_EQ(rig.http.requests.size(), 1u);
    EXPECT_EQ(rig.http.requests[0].body,
              PostVars(rig.source) +
                  "&username=alice&password=p%26ss+word&Email=me%40example%2Eorg&client=1&debug=1");
    EXPECT_EQ(rig.http.requests[0].contentType + rig.settings.username,
              "application/x-www-form-urlencoded*alice"); // the box keeps what was typed

    rig.settings.online = false, rig.settings.username = "bob", rig.mailer.accepts = false;
    rig.fixture.observation.ObsTime = "20261121100000";
    TransferModel refused = rig.open();
    refused.okPressed();
    EXPECT_EQ(rig.dialogs.texts(),
              std::vector<std::string>{"Error: unable to perform MAPI login."});
    EXPECT_FALSE(refused.CloseRequested);
    rig.mailer.accepts = true, rig.mailer.sent.clear();
    TransferModel m = rig.open();
    m.okPressed();
    ASSERT_EQ(rig.mailer.sent.size(), 1u);
    const MailMessage& mail = rig.mailer.sent[0];
    EXPECT_EQ(mail.to + "|" + mail.subject, "obs@example.org|### ZAV report ### ");
    EXPECT_EQ(mail.body, "username\tbob\r\npassword\tp&ss word\r\nEmail\tme@example.org\r\n"
                         "debug\t1\r\n" +
                             TextResults(rig.source) + "--\r\n");
    EXPECT_TRUE(m.CloseRequested && rig.http.requests.size() == 1);
    TransferModel again = rig.open();
    again.okPressed();
    EXPECT_EQ(again.Message, "Error: observation already succesfully transfered, receipt by Email");
    EXPECT_EQ(rig.mailer.sent.size(), 1u);
}
