// The HTTP client, the XML look-up and the transfer against a real HTTP server started inside
// the test on 127.0.0.1 (the update check over it is zavcli update's test).
#include "TestHttpServer.h"
#include "report/ReportFixture.h"

#include "qt/services/QtHttpClient.h"
#include "qt/services/QtXmlLookup.h"
#include "report/PostVars.h"
#include "report/TransferModel.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"

#include <QElapsedTimer>
#include <QTimer>

#include <gtest/gtest.h>

using namespace zav;
using namespace zav::test;
using namespace std::chrono_literals;

TEST(QtXmlLookup, FirstElementOfTheNameAnywhereInDocumentOrder) {
    QtXmlLookup xml;
    const std::string doc = "<?xml version=\"1.0\"?><a><b><cc>1<i>5</i></cc></b><cc>2</cc>"
                            "<empty/></a>";
    EXPECT_EQ(xml.FirstElementText(doc, "cc"), "15");
    EXPECT_EQ(xml.FirstElementText(doc, "i"), "5");
    EXPECT_EQ(xml.FirstElementText(doc, "empty"), "");
    EXPECT_EQ(xml.FirstElementText(doc, "a"), "152");
    EXPECT_EQ(xml.FirstElementText(doc, "receipt"), std::nullopt);
    EXPECT_EQ(xml.FirstElementText("Server busy, try later", "cc"), std::nullopt);
    EXPECT_EQ(xml.FirstElementText("<cc>0</c>", "cc"), std::nullopt);
    EXPECT_EQ(xml.FirstElementText("", "cc"), std::nullopt);
    EXPECT_EQ(xml.FirstElementText("<r><cc>a &amp; b</cc></r>", "cc"), "a & b");
    EXPECT_EQ(xml.FirstElementText("<r><cc>1</cc><x></r>", "cc"), std::nullopt)
        << "the whole reply must be well-formed, also behind the element";

    // Nesting and element count are bounded, the element's own children included.
    const auto nested = [](std::size_t depth, std::size_t siblings) {
        std::string s;
        for (std::size_t i = 1; i < depth; ++i)
            s += "<a>";
        s += "<cc>x";
        for (std::size_t i = 0; i < siblings; ++i)
            s += "<i/>";
        s += "</cc>";
        for (std::size_t i = 1; i < depth; ++i)
            s += "</a>";
        return s;
    };
    const std::size_t depth = QtXmlLookup::kMaxDepth, count = QtXmlLookup::kMaxElements;
    EXPECT_EQ(xml.FirstElementText(nested(depth, 0), "cc"), "x");
    EXPECT_EQ(xml.FirstElementText(nested(depth + 1, 0), "cc"), std::nullopt);
    EXPECT_EQ(xml.FirstElementText(nested(1, count - 1), "cc"), "x");
    EXPECT_EQ(xml.FirstElementText(nested(1, count), "cc"), std::nullopt);
}

TEST(QtHttpClient, StatusAndBodyOfRealRepliesAndNoStatusWithoutOne) {
    TestHttpServer server;
    QtHttpClient http(5s);
    int started = 0, finished = 0;
    http.waitStarted = [&] { ++started; };
    http.waitFinished = [&] { ++finished; };

    server.reply(200, "<update/>");
    HttpResponse r = http.Get(server.url("/Update.xml"));
    EXPECT_EQ(r.status, 200);
    EXPECT_EQ(r.body, "<update/>");
    ASSERT_EQ(server.requests.size(), 1u);
    EXPECT_EQ(server.requests[0].method, "GET");
    EXPECT_EQ(server.requests[0].path, "/Update.xml");
    EXPECT_EQ(started, 1);
    EXPECT_EQ(finished, 1);

    for (int status : {404, 500}) {
        server.reply(status, "gone");
        r = http.Post(server.url("/p"), "application/x-www-form-urlencoded", "a=1&b=%26");
        EXPECT_EQ(r.status, status);
        EXPECT_EQ(r.body, "gone");
        EXPECT_EQ(server.requests.back().method, "POST");
        EXPECT_EQ(server.requests.back().contentType, "application/x-www-form-urlencoded");
        EXPECT_EQ(server.requests.back().body, "a=1&b=%26");
    }

    // Nobody listening: no reply at all.
    QTcpServer closed;
    ASSERT_TRUE(closed.listen(QHostAddress::LocalHost, 0));
    const std::string nobody = "http://127.0.0.1:" + std::to_string(closed.serverPort()) + "/";
    closed.close();
    EXPECT_EQ(http.Get(nobody).status, 0);
    EXPECT_EQ(http.Get("not a url").status, 0);
}

TEST(QtHttpClient, ServerThatNeverAnswersEndsInTheTimeOutAndAbortEndsTheWait) {
    TestHttpServer server;
    server.neverAnswer();
    QtHttpClient http(1s);
    QElapsedTimer clock;
    clock.start();
    const HttpResponse r = http.Get(server.url("/Update.xml"));
    EXPECT_EQ(r.status, 0);
    EXPECT_GE(clock.elapsed(), 900);
    EXPECT_LT(clock.elapsed(), 20000);
    EXPECT_EQ(server.requests.size(), 1u); // it did arrive

    QtHttpClient patient(60s);
    patient.waitStarted = [&patient] { QTimer::singleShot(50, [&patient] { patient.Abort(); }); };
    clock.restart();
    EXPECT_EQ(patient.Post(server.url("/p"), "text/plain", "x").status, 0);
    EXPECT_LT(clock.elapsed(), 20000);
}

TEST(QtHttpClient, ReplyCutOffOrTooLongCountsAsNoReply) {
    TestHttpServer server;
    QtHttpClient http(5s);
    const std::string whole = "<result><cc>0</cc><receipt>ZAV-000123</receipt></result>";
    for (std::size_t cut : {std::size_t{0}, std::size_t{18}, whole.size() - 1}) {
        server.reply(200, whole);
        server.stopMidReply(cut);
        const HttpResponse r = http.Get(server.url("/collect.php"));
        EXPECT_EQ(r.status, 0) << cut;
    }
    server.reply(200, whole); // and the same server answering in full is read whole
    EXPECT_EQ(http.Get(server.url("/collect.php")).body, whole);

    // A reply that will not end is given up, not held in memory.
    server.reply(200, std::string(QtHttpClient::kMaxReplyBytes + 1, 'x'));
    EXPECT_EQ(http.Get(server.url("/Update.xml")).status, 0);
    server.reply(200, std::string(QtHttpClient::kMaxReplyBytes, 'x'));
    EXPECT_EQ(http.Get(server.url("/Update.xml")).body.size(), QtHttpClient::kMaxReplyBytes);
}

namespace {

// What reaches the server: the observation's fields, whose encoding the core tests check
// against a hand-written body, then the account as this test's settings give it (the UTF-8
// password encoded byte by byte) and the debug flag of a starred user name.
std::string expectedBody(const ReportFixture& fixture) {
    return PostVars(fixture.source()) +
           "&username=alice&password=s%C3%A9cret+1&Email=a%40b%2Eorg&client=1&debug=1";
}

struct ServerTransfer {
    TestHttpServer server;
    ReportFixture fixture;
    TransferSettings settings;
    TransferHistory history;
    QtHttpClient http{1s};
    QtXmlLookup xml;
    FakeMailer mailer;
    FakeClipboard clipboard;
    FakeDialogs dialogs;

    ServerTransfer() {
        settings.username = "alice";
        settings.password = "s\xC3\xA9"
                            "cret 1"; // UTF-8, encoded byte by byte
        settings.Email = "a@b.org";
        settings.URL = server.hostAndPath("/collect.php");
    }
    TransferModel transfer() {
        TransferModel m(fixture.source(), settings, history,
                        {http, xml, mailer, clipboard, dialogs});
        m.Form_Load();
        m.OKButton_Click();
        return m;
    }
};

} // namespace

TEST(TransferOverHttp, AcceptedWithReceiptExactBodyAndNoSecondRequest) {
    ServerTransfer t;
    t.settings.username = "*alice";
    t.server.reply(200, "<?xml version=\"1.0\"?>\n<result><cc>0</cc>"
                        "<receipt>ZAV-000123</receipt></result>");
    TransferModel accepted = t.transfer();
    EXPECT_EQ(accepted.Message, "Receipt: ZAV-000123");
    EXPECT_EQ(accepted.OKButtonCaption, "Done");
    EXPECT_TRUE(accepted.OKButtonVisible);
    EXPECT_FALSE(accepted.CancelButtonVisible);
    ASSERT_EQ(t.server.requests.size(), 1u);
    EXPECT_EQ(t.server.requests[0].method, "POST");
    EXPECT_EQ(t.server.requests[0].path, "/collect.php");
    EXPECT_EQ(t.server.requests[0].contentType, "application/x-www-form-urlencoded");
    EXPECT_EQ(t.server.requests[0].body, expectedBody(t.fixture));
    accepted.OKButton_Click(); // "Done" closes and sends nothing
    EXPECT_TRUE(accepted.CloseRequested);

    EXPECT_EQ(t.transfer().Message,
              "Error: observation already succesfully transfered, receipt ZAV-000123");
    EXPECT_EQ(t.server.requests.size(), 1u);
}

TEST(TransferOverHttp, RefusalsAndFailuresShowTheirMessages) {
    struct Case {
        int status;
        std::string reply;
        std::string message;
    };
    const Case cases[] = {
        {200, "<result><cc>4</cc><reason>Unknown+user+%26+wrong%20password</reason></result>",
         "Unknown user & wrong password"},
        {200, "<result><receipt>R</receipt></result>",
         "Error:<result><receipt>R</receipt></result>"},
        {200, "<reply><cc>3</cc><reason>+</reason></reply>",
         "Error:<reply><cc>3</cc><reason>+</reason></reply>"},
        {200, "<reply><cc>3</cc></reply>", "Error:<reply><cc>3</cc></reply>"},
        {200, "Server busy, try later", "Error:Server busy, try later"},
        {404, "<html>not here</html>", "Error: HTTP status code:404"},
        {500, "<result><cc>0</cc></result>", "Error: HTTP status code:500"},
    };
    for (const Case& c : cases) {
        ServerTransfer t;
        t.server.reply(c.status, c.reply);
        TransferModel m = t.transfer();
        EXPECT_EQ(m.Message, c.message);
        EXPECT_EQ(t.server.requests.size(), 1u);
        EXPECT_TRUE(t.history.lastObsTime.empty());
        EXPECT_FALSE(m.OKButtonVisible); // until the address box is left again
        m.URL_LostFocus();
        EXPECT_TRUE(m.OKButtonVisible);
    }
}

TEST(TransferOverHttp, ServerStoppingMidReplyKeepsNoReceipt) {
    ServerTransfer t;
    const std::string reply = "<result><cc>0</cc><receipt>ZAV-000123</receipt></result>";
    t.server.reply(200, reply);
    t.server.stopMidReply(reply.find("</receipt>"));
    EXPECT_EQ(t.transfer().Message, "Error: HTTP status code:0");
    EXPECT_TRUE(t.history.lastObsTime.empty());
    EXPECT_TRUE(t.history.lastReceipt.empty());
}
