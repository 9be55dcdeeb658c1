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
    EXPECT_EQ(r.status, 200);
    EXPECT_EQ(r.body, "<update/>");
    EXPECT_EQ(started, 1);
    EXPECT_EQ(finished, 1);
    server.reply(404, "gone");
    r = http.Post(server.url("/p"), "application/x-www-form-urlencoded", "a=1&b=%26");
    EXPECT_EQ(r.status, 404);
    EXPECT_EQ(r.body, "gone");
    ASSERT_EQ(server.requests.size(), 2u);
    EXPECT_EQ(server.requests[0].method + " " + server.requests[0].path, "GET /Update.xml");
    EXPECT_EQ(server.requests[1].method, "POST");
    EXPECT_EQ(server.requests[1].contentType, "application/x-www-form-urlencoded");
    EXPECT_EQ(server.requests[1].body, "a=1&b=%26");

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
    EXPECT_EQ(a.response.status, 500);
    EXPECT_EQ(a.response.body, "down for maintenance");
    ASSERT_EQ(server.requests.size(), 1u);
    EXPECT_EQ(server.requests[0].path, "/zav/post.php?x=1");
    EXPECT_EQ(server.requests[0].contentType, "application/x-www-form-urlencoded");
    EXPECT_EQ(server.requests[0].body, "Frequency=7%2E000&a=b");

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
    // The observation's fields (whose encoding the core tests check), then the account.
    std::string body(int debug) const {
        return PostVars(fixture.source()) +
               "&username=alice&password=s%C3%A9cret+1&Email=a%40b%2Eorg&client=1&debug=" +
               std::to_string(debug);
    }
    std::string here(const std::string& text) const { return at(text, server.hostAndPath("")); }
};

} // namespace

TEST(TransferOverHttp, AcceptedWithReceiptExactBodyAndNeverSentTwice) {
    ServerTransfer t;
    t.settings.username = "*alice"; // the server's debug flag
    t.server.reply(200, "<?xml version=\"1.0\"?>\n" + kReceipt);
    TransferModel accepted = t.transfer();
    EXPECT_EQ(accepted.Message, "Receipt: ZAV-000123");
    EXPECT_EQ(accepted.OKButtonCaption, "Done");
    EXPECT_FALSE(accepted.CancelButtonVisible);
    ASSERT_EQ(t.server.requests.size(), 1u);
    EXPECT_EQ(t.server.requests[0].method + " " + t.server.requests[0].path, "POST /collect.php");
    EXPECT_EQ(t.server.requests[0].contentType, "application/x-www-form-urlencoded");
    EXPECT_EQ(t.server.requests[0].body, t.body(1));
    accepted.OKButton_Click(); // "Done" closes and sends nothing
    EXPECT_TRUE(accepted.CloseRequested);
    EXPECT_EQ(t.transfer().Message,
              "Error: observation already succesfully transfered, receipt ZAV-000123");
    EXPECT_EQ(t.server.requests.size(), 1u);

    // A second press delivered while the first waits (a double-click) sends nothing.
    ServerTransfer d;
    d.server.reply(200, kReceipt);
    TransferModel m(d.fixture.source(), d.settings, d.history,
                    {d.http, d.xml, d.mailer, d.clipboard, d.dialogs});
    m.Form_Load();
    d.http.waitStarted = [&m] { m.OKButton_Click(); };
    m.OKButton_Click();
    EXPECT_EQ(m.Message, "Receipt: ZAV-000123");
    EXPECT_EQ(d.server.requests.size(), 1u);
}

TEST(TransferOverHttp, RefusalsAndFailuresShowTheirMessages) {
    const struct {
        int status;
        std::string reply, message;
    } cases[] = {
        {200, "<result><cc>4</cc><reason>Unknown+user+%26+wrong%20password</reason></result>",
         "Unknown user & wrong password"},
        {200, "<result><receipt>R</receipt></result>",
         "Error:<result><receipt>R</receipt></result>"},
        {200, "<reply><cc>3</cc><reason>+</reason></reply>",
         "Error:<reply><cc>3</cc><reason>+</reason></reply>"},
        {200, "Server busy, try later", "Error:Server busy, try later"},
        {404, "<html>not here</html>", "Error: HTTP status code:404"},
        {500, kReceipt, "Error: HTTP status code:500"},
    };
    for (const auto& c : cases) {
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

TEST(TransferOverHttp, AFailureSaysHowFarItGotAndWhatMayHaveArrivedIsNotResent) {
    // Provably never sent (refused, unknown host, no TLS), so OK comes back.
    const std::string refused = closedPort();
    const struct {
        std::string url, cause;
    } notSent[] = {
        {refused + "/collect.php", "connection refused by " + refused},
        {"no-such-host.invalid/collect.php", "host no-such-host.invalid not found"},
        {"https://%s/collect.php", "secure connection (TLS) with %s failed"},
    };
    for (const auto& c : notSent) {
        ServerTransfer t;
        t.settings.URL = t.here(c.url);
        TransferModel m = t.transfer();
        EXPECT_EQ(m.Message, "Error: HTTP status code:0 (" + t.here(c.cause) + ")");
        EXPECT_TRUE(m.OKButtonVisible);
        EXPECT_TRUE(t.server.requests.empty());
    }

    // Sent, then dropped, cut off or never answered: it may have arrived.
    const std::string closedEarly = "connection closed by %s before the whole reply arrived";
    const struct {
        std::function<void(TestHttpServer&)> behave;
        std::string cause;
    } sent[] = {{[](TestHttpServer& s) { s.dropAfterRequest(); }, closedEarly},
                {[](TestHttpServer& s) { s.stopMidReply(kReceipt.find("</r")); }, closedEarly},
                {[](TestHttpServer& s) { s.neverAnswer(); }, "no answer in 1 s"}};
    for (const auto& c : sent) {
        ServerTransfer t;
        t.server.reply(200, kReceipt);
        c.behave(t.server);
        TransferModel m = t.transfer();
        EXPECT_EQ(m.Message, "Error: HTTP status code:0 (" + t.here(c.cause) +
                                 "). The observation may have arrived at the server; it was "
                                 "not sent again.");
        EXPECT_FALSE(m.OKButtonVisible);
        EXPECT_TRUE(t.history.lastReceipt.empty());
        QElapsedTimer settle; // anything resent would arrive now
        settle.start();
        while (settle.elapsed() < 300)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        EXPECT_EQ(t.server.requests.size(), 1u);
    }
}

TEST(TransferOverHttp, RedirectsNeverMoveTheBodyElsewhereNorTurnItIntoAGet) {
    const std::string notFollowed = "Error: HTTP status code:%d (redirected to %u, not followed)";
    const struct {
        int status;
        std::string location; // "%s": this server's host and port
        std::size_t requests;
        std::string message; // "%u": the location made absolute
    } cases[] = {
        {302, "/moved.php", 1, notFollowed},
        {301, "http://%s/moved.php", 1, notFollowed},
        {303, "moved.php", 1, notFollowed},
        {307, "/moved.php", 2, "Receipt: ZAV-7"},
        {308, "http://%s/moved.php", 2, "Receipt: ZAV-7"},
        {307, "http://localhost.invalid/moved.php", 1, notFollowed},
        {308, "https://%s/moved.php", 1, notFollowed},
        {307, "/collect.php", 5, // a loop is given up
         "Error: HTTP status code:307 (redirected too often, last to http://%s/collect.php)"},
    };
    for (const auto& c : cases) {
        ServerTransfer t;
        const std::string location = t.here(c.location);
        const std::string absolute =
            location.find("://") != std::string::npos ? location : t.here("http://%s/moved.php");
        std::string message = t.here(c.message);
        if (const auto i = message.find("%d"); i != std::string::npos)
            message.replace(i, 2, std::to_string(c.status));
        if (const auto i = message.find("%u"); i != std::string::npos)
            message.replace(i, 2, absolute);
        t.server.redirect(c.status, location);
        t.server.replyAt("/moved.php", 200, "<result><cc>0</cc><receipt>ZAV-7</receipt></result>");
        TransferModel m = t.transfer();
        SCOPED_TRACE(std::to_string(c.status) + " " + c.location);
        EXPECT_EQ(m.Message, message);
        ASSERT_EQ(t.server.requests.size(), c.requests);
        for (const TestHttpServer::Request& r : t.server.requests)
            EXPECT_EQ(r.method + " " + r.body, "POST " + t.body(0));
        EXPECT_EQ(t.history.lastReceipt.empty(), c.requests == 1 || c.requests == 5);
    }
}
