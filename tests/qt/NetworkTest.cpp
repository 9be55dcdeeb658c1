// The HTTP client, the form poster, the XML look-up and the transfer against a real HTTP
// server started inside the test on 127.0.0.1.
#include "TestHttpServer.h"
#include "report/ReportFixture.h"

#include "qt/services/QtFormPoster.h"
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

namespace {

// "127.0.0.1:PORT" where nobody listens: a port that was free a moment ago.
std::string closedPort() {
    QTcpServer closed;
    EXPECT_TRUE(closed.listen(QHostAddress::LocalHost, 0));
    return "127.0.0.1:" + std::to_string(closed.serverPort());
}

// `text` with each "%s" replaced by `host`.
std::string at(std::string text, const std::string& host) {
    for (auto i = text.find("%s"); i != std::string::npos; i = text.find("%s"))
        text.replace(i, 2, host);
    return text;
}

const std::string kReceipt = "<result><cc>0</cc><receipt>ZAV-000123</receipt></result>";

} // namespace

TEST(QtXmlLookup, FirstElementOfTheNameInDocumentOrderOfAWellFormedBoundedReply) {
    QtXmlLookup xml;
    const std::string doc = "<?xml version=\"1.0\"?><a><b><cc>1<i>5</i></cc></b><cc>2</cc>"
                            "<empty/></a>";
    const struct {
        std::string doc, name;
        std::optional<std::string> text;
    } cases[] = {
        {doc, "cc", "15"},
        {doc, "empty", ""},
        {doc, "a", "152"},
        {doc, "receipt", std::nullopt},
        {"Server busy, try later", "cc", std::nullopt},
        {"<cc>0</c>", "cc", std::nullopt},
        {"<r><cc>a &amp; b</cc></r>", "cc", "a & b"},
        {"<r><cc>1</cc><x></r>", "cc", std::nullopt}, // ill-formed behind the element
    };
    for (const auto& c : cases)
        EXPECT_EQ(xml.FirstElementText(c.doc, c.name), c.text) << c.doc << " " << c.name;

    // Nesting and element count are bounded, the element's own children included.
    const auto nested = [](std::size_t depth, std::size_t children) {
        std::string open, close;
        for (std::size_t i = 1; i < depth; ++i)
            open += "<a>", close += "</a>";
        std::string inner;
        for (std::size_t i = 0; i < children; ++i)
            inner += "<i/>";
        return open + "<cc>x" + inner + "</cc>" + close;
    };
    const std::size_t depth = QtXmlLookup::kMaxDepth, count = QtXmlLookup::kMaxElements;
    EXPECT_EQ(xml.FirstElementText(nested(depth, 0), "cc"), "x");
    EXPECT_EQ(xml.FirstElementText(nested(depth + 1, 0), "cc"), std::nullopt);
    EXPECT_EQ(xml.FirstElementText(nested(1, count - 1), "cc"), "x");
    EXPECT_EQ(xml.FirstElementText(nested(1, count), "cc"), std::nullopt);
}

TEST(SocketPost, ReplyIsWholeOnlyWhenItsLengthOrTheCloseSaysSo) {
    const struct {
        std::string bytes;
        bool closed;
        int status; // 0: not (yet) a whole reply
        std::string body, location;
    } cases[] = {
        {"HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\n<r/>tail", false, 200, "<r/>", ""},
        {"HTTP/1.1 200 OK\r\ncontent-length:  5 \r\n\r\n<r/>", true, 0, "", ""},
        {"HTTP/1.0 200 OK\r\n\r\n<r/>", false, 0, "", ""},
        {"HTTP/1.0 200 OK\r\n\r\n<r/>", true, 200, "<r/>", ""},
        {"HTTP/1.1 307 X\r\nLOCATION: /b\r\nContent-Length: 0\r\n\r\n", false, 307, "", "/b"},
        {"HTTP/1.1 200 OK\r\nContent-Length: -1\r\n\r\n", true, 0, "", ""},
        {"HTTP/1.1 2x0 OK\r\n\r\n", true, 0, "", ""},
        {"SSH-2.0-OpenSSH\r\n\r\n", true, 0, "", ""},
        {"HTTP/1.1 200 OK\r\nContent-Length: 4\r\n", true, 0, "", ""},
    };
    for (const auto& c : cases) {
        HttpResponse r;
        EXPECT_EQ(SocketPost::ParseReply(c.bytes, c.closed, r), c.status != 0) << c.bytes;
        EXPECT_EQ(std::tie(r.status, r.body, r.location), std::tie(c.status, c.body, c.location))
            << c.bytes;
    }
}

TEST(QtHttpClient, RepliesWholeOrNoneWithTheCauseAndTheWaitAnnounced) {
    TestHttpServer server;
    QtHttpClient http(1s);
    int started = 0, finished = 0;
    http.waitStarted = [&] { ++started; };
    http.waitFinished = [&] { ++finished; };
    server.reply(200, "<update/>");
    HttpResponse r = http.Get(server.url("/Update.xml"));
    EXPECT_EQ(std::to_string(r.status) + r.body + std::to_string(started) +
                  std::to_string(finished),
              "200<update/>11");
    server.reply(404, "gone");
    r = http.Post(server.url("/p"), "application/x-www-form-urlencoded", "a=1&b=%26");
    EXPECT_EQ(std::to_string(r.status) + " " + r.body, "404 gone");
    ASSERT_EQ(server.requests.size(), 2u);
    EXPECT_EQ(server.requests[0].method + " " + server.requests[0].path, "GET /Update.xml");
    EXPECT_EQ(server.requests[1].method + " " + server.requests[1].contentType + " " +
                  server.requests[1].body,
              "POST application/x-www-form-urlencoded a=1&b=%26");

    const std::string nobody = closedPort();
    EXPECT_EQ(http.Get("http://" + nobody + "/").cause, "connection refused by " + nobody);
    EXPECT_EQ(http.Get("not a url").status, 0);

    // Cut off anywhere, or longer than the limit: no reply at all.
    for (std::size_t cut : {std::size_t{0}, std::size_t{18}, kReceipt.size() - 1}) {
        server.reply(200, kReceipt);
        server.stopMidReply(cut);
        EXPECT_EQ(http.Get(server.url("/c")).status, 0) << cut;
    }
    server.reply(200, std::string(QtHttpClient::kMaxReplyBytes + 1, 'x'));
    EXPECT_EQ(http.Get(server.url("/u")).status, 0);
    server.reply(200, std::string(QtHttpClient::kMaxReplyBytes, 'x'));
    EXPECT_EQ(http.Get(server.url("/u")).body.size(), QtHttpClient::kMaxReplyBytes);

    // A server that never answers: the time-out ends the wait, and so does Abort.
    server.neverAnswer();
    QElapsedTimer clock;
    clock.start();
    r = http.Get(server.url("/Update.xml"));
    EXPECT_EQ(r.cause, "no answer in 1 s");
    EXPECT_GE(clock.elapsed(), 900);
    QtHttpClient patient(60s);
    patient.waitStarted = [&patient] { QTimer::singleShot(50, [&patient] { patient.Abort(); }); };
    clock.restart();
    EXPECT_EQ(patient.Post(server.url("/p"), "text/plain", "x").status, 0);
    EXPECT_LT(clock.elapsed(), 20000);
}

// Only a request that provably never left may be queued and sent again.
TEST(QtFormPoster, AnsweredOnceNeverLeftOrUnknown) {
    TestHttpServer server;
    server.reply(500, "down for maintenance");
    QtFormPoster poster(1s);
    const PostAttempt a = poster.Post(server.url("/zav/post.php?x=1"), "Frequency=7%2E000&a=b");
    EXPECT_EQ(a.delivery, PostDelivery::Answered);
    EXPECT_EQ(a.response.body, "down for maintenance");
    ASSERT_EQ(server.requests.size(), 1u);
    EXPECT_EQ(server.requests[0].path + " " + server.requests[0].contentType + " " +
                  server.requests[0].body,
              "/zav/post.php?x=1 application/x-www-form-urlencoded Frequency=7%2E000&a=b");

    const PostAttempt down = poster.Post("http://" + closedPort() + "/p", "a=b");
    EXPECT_EQ(down.delivery, PostDelivery::NeverLeft);
    EXPECT_EQ(down.error, "connection refused");
    EXPECT_EQ(poster.Post("ftp://127.0.0.1/p", "a=b").delivery, PostDelivery::NeverLeft);

    server.reply(200, "<r><cc>0</cc></r>");
    server.stopMidReply(3); // part of a reply: the request arrived
    EXPECT_EQ(poster.Post(server.url("/p"), "a=b").delivery, PostDelivery::Unknown);
    server.neverAnswer();
    const PostAttempt silent = poster.Post(server.url("/p"), "a=b");
    EXPECT_EQ(silent.delivery, PostDelivery::Unknown);
    EXPECT_EQ(silent.error, "no answer within 1 s");
}

namespace {

// The transfer over the real client and server; the observation's fields (whose encoding the
// core tests check) and the messages the model builds are the core's: here the server's
// behaviour must reach the model through the adapter.
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
    TransferModel model{
        fixture.source(), settings, history, {http, xml, mailer, clipboard, dialogs}};

    ServerTransfer() {
        settings.username = "alice";
        settings.password = "s\xC3\xA9"
                            "cret 1"; // UTF-8, encoded byte by byte
        settings.Email = "a@b.org";
        settings.URL = server.hostAndPath("/collect.php");
    }
    TransferModel& send() {
        model.Form_Load();
        model.OKButton_Click();
        return model;
    }
    std::string body(int debug) const {
        return PostVars(fixture.source()) +
               "&username=alice&password=s%C3%A9cret+1&Email=a%40b%2Eorg&client=1&debug=" +
               std::to_string(debug);
    }
    std::string here(const std::string& text) const { return at(text, server.hostAndPath("")); }
};

} // namespace

TEST(TransferOverHttp, AcceptedOnceWithTheExactBodyAndNeverSentTwice) {
    ServerTransfer t;
    t.settings.username = "*alice"; // the server's debug flag
    t.server.reply(200, "<?xml version=\"1.0\"?>\n" + kReceipt);
    // A second press delivered while the first waits (a double-click) sends nothing.
    t.http.waitStarted = [&t] { t.model.OKButton_Click(); };
    EXPECT_EQ(t.send().Message, "Receipt: ZAV-000123");
    ASSERT_EQ(t.server.requests.size(), 1u);
    const TestHttpServer::Request& r = t.server.requests[0];
    EXPECT_EQ(r.method + " " + r.path + " " + r.contentType,
              "POST /collect.php application/x-www-form-urlencoded");
    EXPECT_EQ(r.body, t.body(1));
    ServerTransfer again; // the history remembers the receipt
    again.history = t.history;
    EXPECT_NE(again.send().Message.find("ZAV-000123"), std::string::npos);
    EXPECT_TRUE(again.server.requests.empty());
}

// Refused, failed, never sent, or sent and lost: the message tells which, OK comes back only
// when the observation provably never left, and nothing is ever resent.
TEST(TransferOverHttp, EachWayOfFailingShowsItsCauseAndOnlyWhatNeverLeftMayBeSentAgain) {
    const std::string refused = closedPort();
    const std::string mayHaveArrived =
        "). The observation may have arrived at the server; it was not sent again.";
    const std::string closedEarly = "connection closed by %s before the whole reply arrived";
    const struct {
        std::function<void(TestHttpServer&)> behave;
        std::string url; // "": the server's; "%s": its host and port
        std::string message;
        std::size_t requests;
        bool okBack;
    } cases[] = {
        {[](TestHttpServer& s) {
             s.reply(200, "<result><cc>4</cc><reason>Unknown+user+%26+wrong%20password</reason>"
                          "</result>");
         },
         "", "Unknown user & wrong password", 1, false},
        {[](TestHttpServer& s) { s.reply(200, "<reply><cc>3</cc><reason>+</reason></reply>"); }, "",
         "Error:<reply><cc>3</cc><reason>+</reason></reply>", 1, false},
        {[](TestHttpServer& s) { s.reply(404, "<html>not here</html>"); }, "",
         "Error: HTTP status code:404", 1, false},
        {[](TestHttpServer&) {}, refused + "/collect.php",
         "Error: HTTP status code:0 (connection refused by " + refused + ")", 0, true},
        {[](TestHttpServer&) {}, "no-such-host.invalid/collect.php",
         "Error: HTTP status code:0 (host no-such-host.invalid not found)", 0, true},
        {[](TestHttpServer&) {}, "https://%s/collect.php",
         "Error: HTTP status code:0 (secure connection (TLS) with %s failed)", 0, true},
        {[](TestHttpServer& s) { s.dropAfterRequest(); }, "",
         "Error: HTTP status code:0 (" + closedEarly + mayHaveArrived, 1, false},
        {[](TestHttpServer& s) { s.stopMidReply(kReceipt.find("</r")); }, "",
         "Error: HTTP status code:0 (" + closedEarly + mayHaveArrived, 1, false},
        {[](TestHttpServer& s) { s.neverAnswer(); }, "",
         "Error: HTTP status code:0 (no answer in 1 s" + mayHaveArrived, 1, false},
    };
    for (const auto& c : cases) {
        ServerTransfer t;
        t.server.reply(200, kReceipt);
        c.behave(t.server);
        if (!c.url.empty())
            t.settings.URL = t.here(c.url);
        SCOPED_TRACE(c.message);
        TransferModel& m = t.send();
        EXPECT_EQ(m.Message, t.here(c.message));
        EXPECT_EQ(m.OKButtonVisible, c.okBack);
        EXPECT_TRUE(t.history.lastReceipt.empty());
        QElapsedTimer settle; // anything resent would arrive now
        settle.start();
        while (settle.elapsed() < 200)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        EXPECT_EQ(t.server.requests.size(), c.requests);
    }
}

TEST(TransferOverHttp, RedirectsNeverMoveTheBodyElsewhereNorTurnItIntoAGet) {
    const struct {
        int status;
        std::string location; // "%s": this server's host and port
        std::size_t requests;
    } cases[] = {
        {302, "/moved.php", 1},
        {303, "http://%s/moved.php", 1},
        {307, "/moved.php", 2},
        {308, "http://%s/moved.php", 2},
        {307, "http://localhost.invalid/moved.php", 1},
        {308, "https://%s/moved.php", 1},
        {307, "/collect.php", 5}, // a loop is given up
    };
    for (const auto& c : cases) {
        ServerTransfer t;
        t.server.redirect(c.status, t.here(c.location));
        t.server.replyAt("/moved.php", 200, "<result><cc>0</cc><receipt>ZAV-7</receipt></result>");
        SCOPED_TRACE(std::to_string(c.status) + " " + c.location);
        const std::string message = t.send().Message;
        ASSERT_EQ(t.server.requests.size(), c.requests);
        for (const TestHttpServer::Request& r : t.server.requests)
            EXPECT_EQ(r.method + " " + r.body, "POST " + t.body(0));
        if (c.requests == 2)
            EXPECT_EQ(message, "Receipt: ZAV-7");
        else
            EXPECT_EQ(
                message.rfind("Error: HTTP status code:" + std::to_string(c.status) + " (", 0), 0u)
                << message;
    }
}
