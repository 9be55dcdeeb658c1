// The HTTP client, the form poster, the XML look-up and the transfer against a real server.
#include "TestHttpServer.h"
#include "qt/services/QtFormPoster.h"
#include "qt/services/QtHttpClient.h"
#include "qt/services/QtXmlLookup.h"
#include "report/PostVars.h"
#include "report/ReportFixture.h"
#include "report/TransferModel.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"
#include "testsupport/QtWait.h"

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

const std::string kReceipt = "<result><cc>0</cc><receipt>ZAV-000123</receipt></result>";

} // namespace

TEST(QtXmlLookup, FirstElementOfTheNameInDocumentOrderOfAWellFormedBoundedReply) {
    QtXmlLookup xml;
    std::string deep = "<cc>x</cc>";
    for (std::size_t i = 1; i < QtXmlLookup::kMaxDepth; ++i)
        deep = "<a>" + deep + "</a>";
    EXPECT_EQ(xml.FirstElementText("<a><b><cc>&amp;<i>5</i></cc></b><cc>2</cc></a>", "cc"), "&5");
    EXPECT_EQ(xml.FirstElementText(deep, "cc"), "x");
    EXPECT_EQ(xml.FirstElementText("<a>" + deep + "</a>", "cc"), std::nullopt);  // too deep
    EXPECT_EQ(xml.FirstElementText("<r><cc>1</cc><x></r>", "cc"), std::nullopt); // ill-formed
}

TEST(QtHttpClientAndFormPoster, RepliesWholeOrNoneAndOnlyANeverSentPostIsResendable) {
    TestHttpServer server;
    QtHttpClient http(1s);
    server.reply(404, "gone");
    HttpResponse r = http.Get(server.url("/Update.xml"));
    const TestHttpServer::Request& asked = server.requests.at(0);
    EXPECT_EQ(std::to_string(r.status) + " " + r.body + " " + asked.method + " " + asked.path,
              "404 gone GET /Update.xml");
    server.reply(200, kReceipt);
    server.stopMidReply(kReceipt.size() - 1);
    EXPECT_EQ(http.Get(server.url("/c")).status, 0); // cut off: none at all
    server.reply(200, std::string(QtHttpClient::kMaxReplyBytes, 'x'));
    EXPECT_EQ(http.Get(server.url("/u")).body.size(), QtHttpClient::kMaxReplyBytes);
    server.reply(200, std::string(QtHttpClient::kMaxReplyBytes + 1, 'x'));
    EXPECT_EQ(http.Get(server.url("/u")).status, 0); // longer than the limit: none

    // The form poster: only a request that provably never left may be queued and sent again.
    QtFormPoster poster(1s);
    const std::string closed = closedPort();
    server.reply(500, "down for maintenance");
    EXPECT_EQ(poster.Post(server.url("/p?x=1"), "a=7%2E0").delivery, PostDelivery::Answered);
    const TestHttpServer::Request& form = server.requests.back();
    EXPECT_EQ(form.path + " " + form.contentType + " " + form.body,
              "/p?x=1 application/x-www-form-urlencoded a=7%2E0");
    const PostAttempt refused = poster.Post("http://" + closed + "/p", "a");
    EXPECT_EQ(std::pair(refused.delivery, refused.error),
              std::pair(PostDelivery::NeverLeft, "connection refused by " + closed));
    EXPECT_EQ(poster.Post("ftp://127.0.0.1/p", "a").delivery, PostDelivery::NeverLeft);
    server.stopMidReply(3); // the request arrived
    EXPECT_EQ(poster.Post(server.url("/p"), "a").delivery, PostDelivery::Unknown);
    server.neverAnswer();
    EXPECT_EQ(poster.Post(server.url("/p"), "a").error, "no answer in 1 s");
}

// OK comes back only when the observation provably never left (or "Done" when accepted).
TEST(TransferOverHttp, WhatTheServerDoesReachesTheMessageAndNothingIsResentOrMoved) {
    const std::string refused = closedPort(), e = "Error: HTTP status code:";
    const int kNever = TestHttpServer::kNever;
    const struct {
        int status;
        std::string body, url, message; // body: the Location of a redirect; %s: host and port
        std::size_t requests;
    } cases[] = {
        {200, "<?xml version=\"1.0\"?>\n" + kReceipt, "", "Receipt: ZAV-000123", 1},
        {200, "<r><cc>4</cc><reason>No+user+%26+bad%20pw</reason></r>", "", "No user & bad pw", 1},
        {200, "<r><cc>3</cc><reason>+</reason></r>", "", "Error:<r><cc>3</cc><reason>+", 1},
        {404, "<html>not here</html>", "", e + "404", 1},
        {200, kReceipt, refused + "/c", e + "0 (connection refused by " + refused + ")", 0},
        {200, kReceipt, "https://%s/c", e + "0 (secure connection (TLS) with %s failed)", 0},
        {kNever, "", "", e + "0 (no answer in 1 s). The observation may have arrived at", 1},
        {302, "/moved.php", "", e + "302 (redirected to http://%s/moved.php, not followed)", 1},
        {308, "http://%s/moved.php", "", "Receipt: ZAV-7", 2},
        {308, "https://%s/moved.php", "", e + "308 (redirected to https://", 1},
        {307, "/c.php", "", e + "307 (redirected too often, last to http://%s/c.php)", 5},
    };
    ReportFixture fixture;
    const std::string form =
        "POST application/x-www-form-urlencoded " + // UTF-8 byte by byte
        PostVars(fixture.source()) +
        "&username=alice&password=s%C3%A9cret+1&Email=a%40b%2Eorg&client=1&debug=0";
    for (const auto& c : cases) {
        TestHttpServer server;
        const QString host = QString::fromStdString(server.hostAndPath(""));
        const auto at = [&host](const std::string& s) {
            return QString::fromStdString(s).replace("%s", host).toStdString();
        };
        SCOPED_TRACE(at(c.message));
        server.reply(c.status, c.body, c.status / 100 == 3 ? at(c.body) : "");
        server.replyAt("/moved.php", "<result><cc>0</cc><receipt>ZAV-7</receipt></result>");
        TransferSettings settings{"alice",   "s\u00e9cret 1",
                                  "a@b.org", c.url.empty() ? at("%s/c.php") : at(c.url),
                                  "",        true};
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
        EXPECT_EQ(model.Message.substr(0, at(c.message).size()), at(c.message));
        const bool accepted = c.message.rfind("Receipt", 0) == 0;
        EXPECT_EQ(model.okVisible, accepted || c.requests == 0); // as "Done" when accepted
        EXPECT_EQ(history.lastReceipt.empty(), !accepted);
        WaitFor([] { return false; }, 200); // anything resent would arrive now
        ASSERT_EQ(server.requests.size(), c.requests);
        for (const TestHttpServer::Request& r : server.requests)
            EXPECT_EQ(r.method + " " + r.contentType + " " + r.body, form);
    }
}
