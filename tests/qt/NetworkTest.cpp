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
    server.reply(404, "gone");
    HttpResponse r = http.Get(server.url("/Update.xml"));
    EXPECT_EQ(std::to_string(r.status) + " " + r.body + " " + server.requests.at(0).method + " " +
                  server.requests.at(0).path,
              "404 gone GET /Update.xml");
    EXPECT_EQ(started + finished, 2);
    const std::string nobody = closedPort();
    EXPECT_EQ(http.Get("http://" + nobody + "/").cause, "connection refused by " + nobody);
    EXPECT_EQ(http.Get("not a url").status, 0);

    // Cut off anywhere, or longer than the limit: no reply at all.
    for (std::size_t cut : {std::size_t{0}, std::size_t{18}, kReceipt.size() - 1}) {
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
    // A server that never answers: the time-out ends the wait, and so does Abort.
    server.neverAnswer();
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(http.Get(server.url("/Update.xml")).cause, "no answer in 1 s");
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
    QtFormPoster poster(1s);
    const std::string closed = closedPort();
    const auto stopMid = [](TestHttpServer& s) { s.stopMidReply(3); }; // the request arrived
    const struct {
        std::string url; // "": the server's
        std::function<void(TestHttpServer&)> behave;
        PostDelivery delivery;
        std::string error;
    } cases[] = {
        {"", [](TestHttpServer&) {}, PostDelivery::Answered, ""},
        {"http://" + closed + "/p", {}, PostDelivery::NeverLeft, "connection refused by " + closed},
        {"ftp://127.0.0.1/p", {}, PostDelivery::NeverLeft, ""},
        {"", stopMid, PostDelivery::Unknown, ""},
        {"", [](TestHttpServer& s) { s.neverAnswer(); }, PostDelivery::Unknown, "no answer in 1 s"},
    };
    for (const auto& c : cases) {
        server.reply(500, "down for maintenance");
        if (c.behave)
            c.behave(server);
        const PostAttempt a = poster.Post(c.url.empty() ? server.url("/p?x=1") : c.url, "a=7%2E0");
        EXPECT_EQ(a.delivery, c.delivery) << c.url;
        if (!c.error.empty()) {
            EXPECT_EQ(a.error, c.error);
        }
    }
    EXPECT_EQ(server.requests.at(0).path + " " + server.requests.at(0).contentType + " " +
                  server.requests.at(0).body,
              "/p?x=1 application/x-www-form-urlencoded a=7%2E0");
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
    std::string body(int debug) const {
        return PostVars(fixture.source()) +
               "&username=alice&password=s%C3%A9cret+1&Email=a%40b%2Eorg&client=1&debug=" +
               std::to_string(debug);
    }
    std::string here(const std::string& text) const { return at(text, server.hostAndPath("")); }
};

} // namespace

// Accepted, refused, failed, never sent, sent and lost, or redirected: what the server does
// reaches the model's message (whose wording is the core's; the causes are the adapter's), OK
// comes back only when the observation provably never left, and nothing is resent or moved.
TEST(TransferOverHttp, WhatTheServerDoesReachesTheMessageAndNothingIsResentOrMoved) {
    const std::string refused = closedPort(), moved = "/moved.php";
    const auto answer = [](int status, std::string body) {
        return [status, body](TestHttpServer& s) { s.reply(status, body); };
    };
    const auto redirect = [](int status, std::string location) {
        return [status, location](TestHttpServer& s) {
            s.redirect(status, at(location, s.hostAndPath("")));
        };
    };
    const struct {
        std::function<void(TestHttpServer&)> behave;
        std::string url;     // "": the server's; "%s": its host and port
        std::string message; // the start of it
        std::size_t requests;
        bool okBack = false;
    } cases[] = {
        {answer(200, "<?xml version=\"1.0\"?>\n" + kReceipt), "", "Receipt: ZAV-000123", 1},
        {answer(200, "<r><cc>4</cc><reason>Unknown+user+%26+wrong%20password</reason></r>"), "",
         "Unknown user & wrong password", 1},
        {answer(200, "<r><cc>3</cc><reason>+</reason></r>"), "",
         "Error:<r><cc>3</cc><reason>+</reason></r>", 1},
        {answer(404, "<html>not here</html>"), "", "Error: HTTP status code:404", 1},
        {answer(200, kReceipt), refused + "/collect.php",
         "Error: HTTP status code:0 (connection refused by " + refused + ")", 0, true},
        {answer(200, kReceipt), "no-such-host.invalid/c",
         "Error: HTTP status code:0 (host no-such-host.invalid not found)", 0, true},
        {answer(200, kReceipt), "https://%s/c",
         "Error: HTTP status code:0 (secure connection (TLS) with %s failed)", 0, true},
        {[](TestHttpServer& s) { s.dropAfterRequest(); }, "",
         "Error: HTTP status code:0 (connection closed by %s before the whole reply arrived). "
         "The observation may have arrived at the server; it was not sent again.",
         1},
        {[](TestHttpServer& s) { s.reply(200, kReceipt), s.stopMidReply(kReceipt.find("</r")); },
         "", "Error: HTTP status code:0 (connection closed by %s before", 1},
        {[](TestHttpServer& s) { s.neverAnswer(); }, "",
         "Error: HTTP status code:0 (no answer in 1 s). The observation may have arrived", 1},
        {redirect(302, moved), "",
         "Error: HTTP status code:302 (redirected to http://%s" + moved + ", not followed)", 1},
        {redirect(303, "http://%s" + moved), "", "Error: HTTP status code:303 (redirected", 1},
        {redirect(307, moved), "", "Receipt: ZAV-7", 2},
        {redirect(308, "http://%s" + moved), "", "Receipt: ZAV-7", 2},
        {redirect(307, "http://localhost.invalid" + moved), "", "Error: HTTP status code:307 (", 1},
        {redirect(308, "https://%s" + moved), "", "Error: HTTP status code:308 (", 1},
        {redirect(307, "/collect.php"), "",
         "Error: HTTP status code:307 (redirected too often, last to http://%s/collect.php)", 5},
    };
    for (const auto& c : cases) {
        ServerTransfer t;
        c.behave(t.server);
        t.server.replyAt(moved, 200, "<result><cc>0</cc><receipt>ZAV-7</receipt></result>");
        if (!c.url.empty())
            t.settings.URL = t.here(c.url);
        SCOPED_TRACE(c.message);
        t.model.open();
        t.http.waitStarted = [&t] { t.model.okPressed(); }; // a double-click sends once
        t.model.okPressed();
        EXPECT_EQ(t.model.Message.substr(0, t.here(c.message).size()), t.here(c.message));
        const bool accepted = c.message.rfind("Receipt", 0) == 0;
        EXPECT_EQ(t.model.okVisible, c.okBack || accepted); // as "Done" when accepted
        EXPECT_EQ(t.history.lastReceipt.empty(), !accepted);
        QElapsedTimer settle; // anything resent would arrive now
        settle.start();
        while (settle.elapsed() < 200)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        ASSERT_EQ(t.server.requests.size(), c.requests);
        for (const TestHttpServer::Request& r : t.server.requests)
            EXPECT_EQ(r.method + " " + r.contentType + " " + r.body,
                      "POST application/x-www-form-urlencoded " + t.body(0));
        if (accepted) { // and never sent twice
            ServerTransfer again;
            again.history = t.history;
            again.model.open();
            again.model.okPressed();
            EXPECT_NE(again.model.Message.find(t.history.lastReceipt), std::string::npos);
            EXPECT_TRUE(again.server.requests.empty());
        }
    }
}
