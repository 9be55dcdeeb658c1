#include "ReportFixture.h"

#include "platform/Version.h"
#include "report/PostVars.h"
#include "report/TextReport.h"
#include "report/TransferModel.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"

#include <gtest/gtest.h>

#include <algorithm>

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
        settings.username = "alice";
        settings.password = "p&ss word";
        settings.Email = "me@example.org";
        settings.URL = "collect.example.org/post.php";
        settings.AtfEmail = "obs@example.org";
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
    f.setup.Tester = "G4ABC/P";
    f.setup.Location = "Hill top = 3 & more";
    // Written out by hand from the field list: free text and formatted numbers encoded
    // (every character but letters and digits), grid cells and the time as they stand.
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

    // The position only when both halves are known, and never encoded.
    f.observation.ObsLat = "51.500000";
    EXPECT_EQ(PostVars(f.source()), noPosition);
    f.observation.ObsLat.clear();
    f.observation.ObsLon = "-0.120000";
    EXPECT_EQ(PostVars(f.source()), noPosition);
    f.observation.ObsLat = "51.500000";
    EXPECT_EQ(PostVars(f.source()), noPosition + "&Latitude=51.500000&Longitude=-0.120000");
    f.observation.ObsTime = "20261121 093015"; // a blank goes as it stands
    EXPECT_NE(PostVars(f.source()).find("&ObsTime=20261121 093015&"), std::string::npos);
}

TEST(PostVars, ACommaLocaleSendsExactlyWhatAPointLocaleSends) {
    ReportFixture f;
    f.observation.ObsLat = "51.500000";
    f.observation.ObsLon = "-0.120000";
    const std::string sent = PostVars(f.source());
    // The same observation as a comma-locale window shows it.
    auto comma = [](std::string text) {
        std::replace(text.begin(), text.end(), '.', ',');
        return text;
    };
    for (std::string* t :
         {&f.setup.Frequency, &f.setup.Bandwidth, &f.setup.RxNF, &f.setup.Loss, &f.setup.Attenuator,
          &f.setup.AGC, &f.observation.ObsLat, &f.observation.ObsLon})
        *t = comma(*t);
    for (ResultGrid* g : {&f.gridCalc, &f.gridMeas})
        for (int i = 0; i < g->Rows() * g->Columns(); ++i)
            g->SetText(i, comma(g->Text(i)));
    ReportSource shownWithComma = f.source();
    shownWithComma.decimalSeparator = ',';
    EXPECT_EQ(PostVars(shownWithComma), sent);
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
    EXPECT_EQ(m.username + "|" + m.password, "alice|p&ss word");
    EXPECT_TRUE(m.sendOnline && !m.sendByEmail && m.okVisible);
    EXPECT_EQ(m.okCaption, "OK");
    EXPECT_EQ(m.Message.rfind("This facility is for transfer of the data from the main ZAV "
                              "form, this form, and the IP address",
                              0),
              0u);

    rig.settings.URL.clear();
    EXPECT_FALSE(rig.open().okVisible);
    rig.settings.online = false; // e-mail: the collecting address decides
    EXPECT_TRUE(rig.open().okVisible);
    rig.settings.AtfEmail.clear();
    TransferModel mail = rig.open();
    EXPECT_TRUE(mail.sendByEmail);
    EXPECT_FALSE(mail.okVisible);

    // The options and leaving the address boxes keep OK honest.
    mail.URL = "h/p";
    mail.chooseOnline();
    EXPECT_TRUE(mail.okVisible);
    mail.chooseEmail();
    EXPECT_FALSE(mail.okVisible);
    mail.AtfEmail = "x@y";
    mail.collectingAddressLeft();
    EXPECT_TRUE(mail.okVisible);
    mail.URL.clear();
    mail.urlLeft();
    EXPECT_FALSE(mail.okVisible);
    // Typing follows at once, so OK is there for a click straight from another box.
    mail.URL = "h";
    mail.urlEdited();
    EXPECT_TRUE(mail.okVisible);
    mail.AtfEmail.clear();
    mail.collectingAddressEdited();
    EXPECT_FALSE(mail.okVisible);
}

TEST(TransferModel, StarredUserNameSetsTheServerDebugFlagForTheRestOfTheRun) {
    TransferRig rig;
    rig.settings.username = "*alice";
    TransferModel m = rig.open();
    m.okPressed();
    const std::string account =
        "&username=alice&password=p%26ss+word&Email=me%40example%2Eorg&client=1&debug=1";
    ASSERT_EQ(rig.http.requests.size(), 1u);
    EXPECT_EQ(rig.http.requests[0].body, PostVars(rig.source) + account);
    EXPECT_EQ(rig.http.requests[0].contentType, "application/x-www-form-urlencoded");
    EXPECT_EQ(m.username, "*alice"); // the box keeps what was typed
    m.close();
    EXPECT_EQ(rig.settings.username, "*alice");

    rig.settings.username = "bob";
    rig.fixture.observation.ObsTime = "20261121100000";
    TransferModel later = rig.open();
    later.okPressed();
    const std::string second = rig.http.requests.at(1).body;
    EXPECT_NE(second.find("&username=bob&"), std::string::npos);
    EXPECT_EQ(second.substr(second.size() - 8), "&debug=1");
}

TEST(TransferModel, EmailVariantMailsAccountAndReportThenClosesAndCountsAsTransferred) {
    TransferRig rig;
    rig.settings.online = false;
    rig.settings.username = "*alice";
    TransferModel m = rig.open();
    m.okPressed();
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
    again.okPressed();
    EXPECT_EQ(again.Message, "Error: observation already succesfully transfered, receipt by Email");
    EXPECT_EQ(rig.mailer.sent.size(), 1u);
}

TEST(TransferModel, MailHandOffFailureSaysSoAndTransfersNothing) {
    TransferRig rig;
    rig.settings.online = false;
    rig.mailer.accepts = false;
    TransferModel m = rig.open();
    m.okPressed();
    ASSERT_EQ(rig.dialogs.messages.size(), 1u);
    EXPECT_EQ(rig.dialogs.messages[0].text, "Error: unable to perform MAPI login.");
    EXPECT_EQ(rig.dialogs.messages[0].icon, MessageIcon::Critical);
    EXPECT_FALSE(m.CloseRequested);
    EXPECT_TRUE(rig.history.lastObsTime.empty());
}

TEST(TransferModel, ClosingWritesTheBoxesBackAndDoubleClickCopiesTheMessage) {
    TransferRig rig;
    TransferModel m = rig.open();
    m.username = "carol";
    m.password = "x";
    m.Email = "c@d";
    m.URL = "other/p";
    m.AtfEmail = "e@f";
    m.chooseEmail();
    m.cancelPressed();
    EXPECT_TRUE(m.CloseRequested);
    m.close();
    const TransferSettings& t = rig.settings;
    EXPECT_EQ(t.username + "|" + t.password + "|" + t.Email + "|" + t.URL + "|" + t.AtfEmail,
              "carol|x|c@d|other/p|e@f");
    EXPECT_FALSE(t.online);

    m.copyMessage();
    ASSERT_EQ(rig.clipboard.texts.size(), 1u);
    EXPECT_EQ(rig.clipboard.texts[0], m.Message);
}
