// The HTTP client, the XML look-up and the transfer against a real HTTP server started inside
// the test on 127.0.0.1 (the update check over it is zavcli update's test).
#include "TestHttpServer.h"
#include "report/ReportFixture.h"

#include "qt/services/QtHttpClient.h"
#include "qt/services/QtXmlLookup.h"
#include "qt/services/SocketPost.h"
#include "report/PostVars.h"
#include "report/TransferModel.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

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
    r = http.Get(nobody);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.cause, "connection refused by " + nobody.substr(7, nobody.size() - 8));
    EXPECT_EQ(http.Get("not a url").status, 0);
}

TEST(SocketPost, ReplyIsWholeOnlyWhenItsLengthOrTheCloseSaysSo) {
    struct Case {
        std::string bytes;
        bool closed;
        int status; // 0: not (yet) a whole reply
        std::string body, location;
    };
    const Case cases[] = {
        {"HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\n<r/>", false, 200, "<r/>", ""},
        {"HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\n<r/>tail", false, 200, "<r/>", ""},
        {"HTTP/1.1 200 OK\r\ncontent-length:  5 \r\n\r\n<r/>", true, 0, "", ""},
        {"HTTP/1.0 200 OK\r\n\r\n<r/>", false, 0, "", ""},
        {"HTTP/1.0 200 OK\r\n\r\n<r/>", true, 200, "<r/>", ""},
        {"HTTP/1.1 307 Temporary Redirect\r\nLOCATION: /b\r\nContent-Length: 0\r\n\r\n", false, 307,
         "", "/b"},
        {"HTTP/1.1 200 OK\r\nContent-Length: -1\r\n\r\n", true, 0, "", ""},
        {"HTTP/1.1 2x0 OK\r\n\r\n", true, 0, "", ""},
        {"SSH-2.0-OpenSSH\r\n\r\n", true, 0, "", ""},
        {"HTTP/1.1 200 OK\r\nContent-Length: 4\r\n", true, 0, "", ""},
    };
    for (const Case& c : cases) {
        HttpResponse r;
        EXPECT_EQ(SocketPost::ParseReply(c.bytes, c.closed, r), c.status != 0) << c.bytes;
        EXPECT_EQ(r.status, c.status) << c.bytes;
        EXPECT_EQ(r.body, c.body) << c.bytes;
        EXPECT_EQ(r.location, c.location) << c.bytes;
    }
}

TEST(QtHttpClient, ServerThatNeverAnswersEndsInTheTimeOutAndAbortEndsTheWait) {
    TestHttpServer server;
    server.neverAnswer();
    QtHttpClient http(1s);
    QElapsedTimer clock;
    clock.start();
    const HttpResponse r = http.Get(server.url("/Update.xml"));
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.cause, "no answer in 1 s");
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
        m.open();
        m.okPressed();
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
    EXPECT_EQ(accepted.okCaption, "Done");
    EXPECT_TRUE(accepted.okVisible);
    EXPECT_FALSE(accepted.cancelVisible);
    ASSERT_EQ(t.server.requests.size(), 1u);
    EXPECT_EQ(t.server.requests[0].method, "POST");
    EXPECT_EQ(t.server.requests[0].path, "/collect.php");
    EXPECT_EQ(t.server.requests[0].contentType, "application/x-www-form-urlencoded");
    EXPECT_EQ(t.server.requests[0].body, expectedBody(t.fixture));
    accepted.okPressed(); // "Done" closes and sends nothing
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
        EXPECT_FALSE(m.okVisible); // until the address box is left again
        m.urlLeft();
        EXPECT_TRUE(m.okVisible);
    }
}

TEST(TransferOverHttp, EachPressSendsOnceAndAFailureSaysHowFarItGot) {
    // A closed port, and a name no resolver knows: provably never sent, so OK comes back.
    QTcpServer closed;
    ASSERT_TRUE(closed.listen(QHostAddress::LocalHost, 0));
    const std::string refusedAt = "127.0.0.1:" + std::to_string(closed.serverPort());
    closed.close();
    struct NotSent {
        std::string url, message;
    };
    for (const NotSent& c :
         {NotSent{refusedAt + "/collect.php",
                  "Error: HTTP status code:0 (connection refused by " + refusedAt + ")"},
          NotSent{"no-such-host.invalid/collect.php",
                  "Error: HTTP status code:0 (host no-such-host.invalid not found)"}}) {
        ServerTransfer t;
        t.settings.URL = c.url;
        TransferModel m = t.transfer();
        EXPECT_EQ(m.Message, c.message);
        EXPECT_TRUE(m.okVisible);
        EXPECT_TRUE(t.history.lastObsTime.empty());
    }
    {
        // A server that does not speak TLS: the handshake fails before anything is sent.
        ServerTransfer t;
        t.settings.URL = "https://" + t.server.hostAndPath("/collect.php");
        TransferModel m = t.transfer();
        EXPECT_EQ(m.Message, "Error: HTTP status code:0 (secure connection (TLS) with " +
                                 t.server.hostAndPath("") + " failed)");
        EXPECT_TRUE(m.okVisible);
        EXPECT_TRUE(t.server.requests.empty());
    }

    // Sent, then the connection dropped, the reply cut off or never came: it may have
    // arrived, and nothing sends it again.
    const std::string reply = "<result><cc>0</cc><receipt>ZAV-000123</receipt></result>";
    struct Sent {
        std::function<void(TestHttpServer&)> behave;
        std::string cause;
    };
    for (const Sent& c : {Sent{[](TestHttpServer& s) { s.dropAfterRequest(); },
                               "connection closed by %s before the whole reply arrived"},
                          Sent{[&](TestHttpServer& s) { s.stopMidReply(reply.find("</r")); },
                               "connection closed by %s before the whole reply arrived"},
                          Sent{[](TestHttpServer& s) { s.neverAnswer(); }, "no answer in 1 s"}}) {
        ServerTransfer t;
        t.server.reply(200, reply);
        c.behave(t.server);
        TransferModel m = t.transfer();
        std::string cause = c.cause;
        if (const auto at = cause.find("%s"); at != std::string::npos)
            cause.replace(at, 2, t.server.hostAndPath(""));
        EXPECT_EQ(m.Message, "Error: HTTP status code:0 (" + cause +
                                 "). The observation may have arrived at the server; it was "
                                 "not sent again.");
        EXPECT_FALSE(m.okVisible);
        EXPECT_EQ(t.server.requests.size(), 1u);
        EXPECT_TRUE(t.history.lastReceipt.empty());
        QElapsedTimer settle; // anything resent would arrive now
        settle.start();
        while (settle.elapsed() < 300)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        EXPECT_EQ(t.server.requests.size(), 1u);
    }

    // A second press delivered while the first waits (a double-click) sends nothing.
    ServerTransfer t;
    t.server.reply(200, reply);
    TransferModel m(t.fixture.source(), t.settings, t.history,
                    {t.http, t.xml, t.mailer, t.clipboard, t.dialogs});
    m.open();
    int pressesInside = 0;
    t.http.waitStarted = [&] { ++pressesInside, m.okPressed(); };
    m.okPressed();
    EXPECT_EQ(pressesInside, 1);
    EXPECT_EQ(m.Message, "Receipt: ZAV-000123");
    EXPECT_EQ(t.server.requests.size(), 1u);
}

TEST(TransferOverHttp, RedirectsNeverMoveTheBodyElsewhereNorTurnItIntoAGet) {
    const std::string receipt = "<result><cc>0</cc><receipt>ZAV-7</receipt></result>";
    struct Case {
        int status;
        std::string location; // "%s" is this server's host and port
        std::size_t requests;
        std::string message;
    };
    const Case cases[] = {
        {302, "/moved.php", 1,
         "Error: HTTP status code:302 (redirected to http://%s/moved.php, "
         "not followed)"},
        {301, "http://%s/moved.php", 1,
         "Error: HTTP status code:301 (redirected to http://%s/moved.php, not followed)"},
        {303, "moved.php", 1,
         "Error: HTTP status code:303 (redirected to http://%s/moved.php, not followed)"},
        {307, "/moved.php", 2, "Receipt: ZAV-7"},
        {308, "http://%s/moved.php", 2, "Receipt: ZAV-7"},
        {307, "http://localhost.invalid/moved.php", 1,
         "Error: HTTP status code:307 (redirected to http://localhost.invalid/moved.php, not "
         "followed)"},
        {308, "https://%s/moved.php", 1,
         "Error: HTTP status code:308 (redirected to https://%s/moved.php, not followed)"},
        {307, "/collect.php", 5, // a loop is given up
         "Error: HTTP status code:307 (redirected too often, last to http://%s/collect.php)"},
    };
    for (const Case& c : cases) {
        ServerTransfer t;
        auto here = [&](std::string text) {
            for (auto at = text.find("%s"); at != std::string::npos; at = text.find("%s"))
                text.replace(at, 2, t.server.hostAndPath(""));
            return text;
        };
        t.server.redirect(c.status, here(c.location));
        t.server.replyAt("/moved.php", 200, receipt);
        TransferModel m = t.transfer();
        SCOPED_TRACE(std::to_string(c.status) + " " + c.location);
        EXPECT_EQ(m.Message, here(c.message));
        ASSERT_EQ(t.server.requests.size(), c.requests);
        std::string body = expectedBody(t.fixture); // a plain user name: debug 0
        body.replace(body.find("&debug=1"), 8, "&debug=0");
        for (const TestHttpServer::Request& r : t.server.requests) {
            EXPECT_EQ(r.method, "POST");
            EXPECT_EQ(r.body, body);
        }
        EXPECT_EQ(t.history.lastReceipt.empty(), c.message.rfind("Receipt", 0) != 0);
    }
}
