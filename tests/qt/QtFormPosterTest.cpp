// The poster that knows whether a request left, against a server inside the test.
#include "TestHttpServer.h"

#include "qt/services/QtFormPoster.h"

#include <QTcpServer>

#include <gtest/gtest.h>

using namespace zav;
using namespace zav::test;
using namespace std::chrono_literals;

TEST(QtFormPoster, AnAnsweredRequestArrivesOnceWithItsBody) {
    TestHttpServer server;
    server.reply(200, "<r><cc>0</cc><receipt>42</receipt></r>");
    QtFormPoster poster(5s);
    const PostAttempt a = poster.Post(server.url("/zav/post.php?x=1"), "Frequency=7%2E000&a=b");
    EXPECT_EQ(a.delivery, PostDelivery::Answered);
    EXPECT_EQ(a.response.status, 200);
    EXPECT_EQ(a.response.body, "<r><cc>0</cc><receipt>42</receipt></r>");
    ASSERT_EQ(server.requests.size(), 1u);
    EXPECT_EQ(server.requests[0].method, "POST");
    EXPECT_EQ(server.requests[0].path, "/zav/post.php?x=1");
    EXPECT_EQ(server.requests[0].contentType, "application/x-www-form-urlencoded");
    EXPECT_EQ(server.requests[0].body, "Frequency=7%2E000&a=b");

    server.reply(500, "down for maintenance");
    const PostAttempt refused = poster.Post(server.url("/p"), "a=b");
    EXPECT_EQ(refused.delivery, PostDelivery::Answered);
    EXPECT_EQ(refused.response.status, 500);
}

// Only a request that provably never left may be queued and sent again.
TEST(QtFormPoster, NeverLeftOnlyWhenNoConnectionWasMade) {
    QTcpServer closed; // a port that was free a moment ago: nobody listens there
    ASSERT_TRUE(closed.listen(QHostAddress::LocalHost));
    const quint16 port = closed.serverPort();
    closed.close();
    QtFormPoster poster(3s);
    const PostAttempt down = poster.Post("http://127.0.0.1:" + std::to_string(port) + "/p", "a=b");
    EXPECT_EQ(down.delivery, PostDelivery::NeverLeft);
    EXPECT_EQ(down.error, "connection refused by 127.0.0.1:" + std::to_string(port));
    EXPECT_EQ(poster.Post("ftp://127.0.0.1/p", "a=b").delivery, PostDelivery::NeverLeft);

    TestHttpServer silent;
    silent.neverAnswer();
    QtFormPoster impatient(1s);
    const PostAttempt unknown = impatient.Post(silent.url("/p"), "a=b");
    EXPECT_EQ(unknown.delivery, PostDelivery::Unknown);
    EXPECT_EQ(unknown.error, "no answer in 1 s");

    TestHttpServer dying;
    dying.reply(200, "<r><cc>0</cc></r>");
    dying.stopMidReply(3);
    const PostAttempt cut = poster.Post(dying.url("/p"), "a=b");
    EXPECT_EQ(cut.delivery, PostDelivery::Unknown) << "part of a reply: the request arrived";
}
