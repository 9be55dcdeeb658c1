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
#include "testsupport/QtWait.h"

#include <QElapsedTimer>
#include <QTimer>

#include <gtest/gtest.h>

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
    const std::string doc = "<?xml version=\"1.0\"?><a><b><cc>1<i>5</i></cc></b><cc>2</cc></a>";
    EXPECT_EQ(xml.FirstElementText(doc, "cc"), "15");
    EXPECT_EQ(xml.FirstElementText(doc, "a"), "152");
    EXPECT_EQ(xml.FirstElementText("<r><cc>a &amp; b</cc><e/></r>", "cc"), "a & b");
    EXPECT_EQ(xml.FirstElementText("<r><cc>a &amp; b</cc><e/></r>", "e"), "");
    for (const char* bad : {"Server busy", "<cc>0</c>", "<r><cc>1</cc><x></r>", "<r></r>"})
        EXPECT_EQ(xml.FirstElementText(bad, "cc"), std::nullopt) << bad;
    // Nesting and element count are bounded, the element's own children included.
    const auto nested = [&xml](std::size_t depth, std::size_t children) {
        std::string text = "<cc>x";
        for (std::size_t i = 0; i < children; ++i)
            text += "<i/>";
        for (text += "</cc>"; depth > 1; --depth)
            text = "<a>" + text + "</a>";
        return xml.FirstElementText(text, "cc").value_or("none");
    };
    const std::size_t depth = QtXmlLookup::kMaxDepth, count = QtXmlLookup::kMaxElements;
    EXPECT_EQ(nested(depth, 0) + nested(depth + 1, 0), "xnone");
    EXPECT_EQ(nested(1, count - 1) + nested(1, count), "xnone");
}

TEST(SocketPost, ReplyIsWholeOnlyWhenItsLengthOrTheCloseSaysSo) {
    const std::string ok = "HTTP/1.1 200 OK\r\n", moved = "HTTP/1.1 307 X\r\nLOCATION: /b\r\n";
    const std::tuple<std::string, bool, int, std::string> cases[] = {
        {ok + "Content-Length: 4\r\n\r\n<r/>tail", false, 200, "<r/>"},
        {ok + "content-length:  5 \r\n\r\n<r/>", true, 0, ""},
        {ok + "\r\n<r/>", false, 0, ""},
        {ok + "\r\n<r/>", true, 200, "<r/>"},
        {moved + "Content-Length: 0\r\n\r\n", false, 307, ""},
        {ok + "Content-Length: -1\r\n\r\n", true, 0, ""},
        {"HTTP/1.1 2x0 OK\r\n\r\n", true, 0, ""},
        {ok + "Content-Length: 4\r\n", true, 0, ""}};
    for (const auto& [bytes, closed, status, body] : cases) {
        HttpResponse r;
        EXPECT_EQ(SocketPost::ParseReply(bytes, closed, r), status != 0) << bytes;
        EXPECT_EQ(std::tuple(r.status, r.body, r.location),
                  std::tuple(status, body, std::string(status == 307 ? "/b" : "")))
            << bytes;
    }
}

TEST(QtHttpClient, RepliesWholeOrNoneWithTheCauseAndTheWaitAnnounced) {
    TestHttpServer server;
    QtHttpClient http(1s);
    int waits = 0;
    http.waitStarted = http.waitFinished = [&] { ++waits; };
    server.reply(404, "gone");
    HttpResponse r = http.Get(server.url("/Update.xml"));
    const TestHttpServer::Request& asked = server.requests.at(0);
    EXPECT_EQ(std::to_string(r.status) + " " + r.body + " " + asked.method + " " + asked.path,
              "404 gone GET /Update.xml");
    EXPECT_EQ(waits, 2);
    EXPECT_EQ(http.Get("not a url").status, 0);
    // Cut off anywhere, or longer than the limit: no reply at all.
    for (std::size_t cut : {std::size_t{0}, kReceipt.size() - 1}) {
        server.reply(200, kReceipt);
        server.stopMidReply(cut);
        EXPECT_EQ(http.Get(server.url("/c")).status, 0) << cut;
    }
    for (const std::size_t size :
         {QtHttpClient::kMaxReplyBytes, QtHttpClient::kMaxReplyBytes + 1}) {
        server.reply(200, std::string(size, 'x'));
        EXPECT_EQ(http.Get(server.url("/u")).body.size(),
                  size == QtHttpClient::kMaxReplyBytes ? size : 0);
    }
    server.neverAnswer(); // the time-out ends the wait (checked with the transfer), so does Abort
    QtHttpClient patient(60s);
    patient.waitStarted = [&patient] { QTimer::singleShot(50, [&patient] { patient.Abort(); }); };
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(patient.Post(server.url("/p"), "text/plain", "x").status, 0);
    EXPECT_LT(clock.elapsed(), 20000);
}

// Only a request that provably never left may be queued and sent again.
TEST(QtFormPoster, AnsweredOnceNeverLeftOrUnknown) {
    TestHttpServer server;
    QtFormPoster poster(1s);
    const std::string closed = closedPort();
    server.reply(500, "down for maintenance");
    EXPECT_EQ(poster.Post(server.url("/p?x=1"), "a=7%2E0").delivery, PostDelivery::Answered);
    const TestHttpServer::Request& r = server.requests.at(0);
    EXPECT_EQ(r.path + " " + r.contentType + " " + r.body,
              "/p?x=1 application/x-www-form-urlencoded a=7%2E0");
    const PostAttempt refused = poster.Post("http://" + closed + "/p", "a");
    EXPECT_EQ(std::pair(refused.delivery, refused.error),
              std::pair(PostDelivery::NeverLeft, "connection refused by " + closed));
    EXPECT_EQ(poster.Post("ftp://127.0.0.1/p", "a").delivery, PostDelivery::NeverLeft);
    server.stopMidReply(3); // the request arrived
    EXPECT_EQ(poster.Post(server.url("/p"), "a").delivery, PostDelivery::Unknown);
    server.neverAnswer();
    const PostAttempt unanswered = poster.Post(server.url("/p"), "a");
    EXPECT_EQ(std::pair(unanswered.delivery, unanswered.error),
              std::pair(PostDelivery::Unknown, std::string("no answer in 1 s")));
}

// What the server does reaches the model's message (whose wording is the core's; the causes are
// the adapter's), OK comes back only when the observation provably never left or was accepted,
// a double-click sends once, and nothing is resent or moved elsewhere.
TEST(TransferOverHttp, WhatTheServerDoesReachesTheMessageAndNothingIsResentOrMoved) {
    const std::string refused = closedPort(), error = "Error: HTTP status code:";
    enum { kDrop = -1, kNever = -2 }; // no reply at all, or none in time
    const struct {
        int status;
        std::string body, url, message; // body: the Location of a redirect; "%s": host and port
        std::size_t requests;
    } cases[] = {
        {200, "<?xml version=\"1.0\"?>\n" + kReceipt, "", "Receipt: ZAV-000123", 1},
        {200, "<r><cc>4</cc><reason>Unknown+user+%26+wrong%20password</reason></r>", "",
         "Unknown user & wrong password", 1},
        {200, "<r><cc>3</cc><reason>+</reason></r>", "",
         "Error:<r><cc>3</cc><reason>+</reason></r>", 1},
        {404, "<html>not here</html>", "", error + "404", 1},
        {200, kReceipt, refused + "/c", error + "0 (connection refused by " + refused + ")", 0},
        {200, kReceipt, "nohost.invalid/c", error + "0 (host nohost.invalid not found)", 0},
        {200, kReceipt, "https://%s/c", error + "0 (secure connection (TLS) with %s failed)", 0},
        {kDrop, "", "",
         error + "0 (connection closed by %s before the whole reply arrived). " +
             "The observation may have arrived at the server; it was not sent again.",
         1},
        {kNever, "", "", error + "0 (no answer in 1 s). The observation may have arrived", 1},
        {302, "/moved.php", "", error + "302 (redirected to http://%s/moved.php, not followed)", 1},
        {308, "http://%s/moved.php", "", "Receipt: ZAV-7", 2},
        {308, "https://%s/moved.php", "", error + "308 (redirected to https://", 1},
        {307, "/c.php", "", error + "307 (redirected too often, last to http://%s/c.php)", 5},
    };
    for (const auto& c : cases) {
        TestHttpServer server;
        const std::string host = server.hostAndPath(""), message = at(c.message, host);
        SCOPED_TRACE(message);
        server.reply(c.status, c.body);
        if (c.status == kDrop)
            server.dropAfterRequest();
        else if (c.status == kNever)
            server.neverAnswer();
        else if (c.status / 100 == 3)
            server.reply(c.status, "moved", at(c.body, host));
        server.replyAt("/moved.php", "<result><cc>0</cc><receipt>ZAV-7</receipt></result>");
        ReportFixture fixture;
        TransferSettings settings{.username = "alice",
                                  .password = "s\u00e9cret 1",
                                  .Email = "a@b.org",
                                  .URL = c.url.empty() ? host + "/c.php" : at(c.url, host),
                                  .AtfEmail = "",
                                  .online = true};
        TransferHistory history;
        QtHttpClient http{1s};
        QtXmlLookup xml;
        FakeMailer mailer;
        FakeClipboard clipboard;
        FakeDialogs dialogs;
        TransferModel model{
            fixture.source(), settings, history, {http, xml, mailer, clipboard, dialogs}};
        model.open();
        http.waitStarted = [&model] { model.okPressed(); }; // a double-click sends once
        model.okPressed();
        EXPECT_EQ(model.Message.substr(0, message.size()), message);
        const bool accepted = message.rfind("Receipt", 0) == 0;
        EXPECT_EQ(model.okVisible, accepted || c.requests == 0); // as "Done" when accepted
        EXPECT_EQ(history.lastReceipt.empty(), !accepted);
        WaitFor([] { return false; }, 200); // anything resent would arrive now
        ASSERT_EQ(server.requests.size(), c.requests);
        for (const TestHttpServer::Request& r : server.requests) // UTF-8 encoded byte by byte
            EXPECT_EQ(
                r.method + " " + r.contentType + " " + r.body,
                "POST application/x-www-form-urlencoded " + PostVars(fixture.source()) +
                    "&username=alice&password=s%C3%A9cret+1&Email=a%40b%2Eorg&client=1&debug=0");
    }
}
