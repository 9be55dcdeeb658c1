#pragma once

#include <QTcpServer>

#include <string>
#include <vector>

namespace zav::test {

// A small HTTP server on 127.0.0.1 with a port of the system's choosing, living in the test's
// own thread: it answers while the client under test waits in its event loop. Every request
// gets the same canned reply (or the one set for its path), or none at all. It counts what
// arrives: exactly once is a count. Anything that is not HTTP (a TLS hello) gets a line of
// text and the connection closed, and is not counted.
class TestHttpServer {
public:
    struct Request {
        std::string method;
        std::string path;
        std::string contentType;
        std::string body;
    };

    TestHttpServer();
    ~TestHttpServer();

    // "127.0.0.1:PORT" followed by `path`, and the same with "http://" in front.
    std::string hostAndPath(const std::string& path) const;
    std::string url(const std::string& path) const { return "http://" + hostAndPath(path); }

    void reply(int status, std::string body, std::string contentType = "text/xml");
    // Reads requests but never answers: the client's time-out has to end the wait.
    void neverAnswer() { m_answer = false; }
    // Announces the whole reply's length but closes the connection after `bytes` of its body,
    // as a server that dies mid-reply does.
    void stopMidReply(std::size_t bytes) { m_cutAfter = bytes; }
    // Reads the request whole, then closes the connection without a word.
    void dropAfterRequest() { m_cutAfter = 0, m_dropHead = true; }
    // A redirect with `status` to `location`.
    void redirect(int status, const std::string& location);
    // The reply for requests to `path` only, whatever the others get.
    void replyAt(const std::string& path, int status, std::string body);

    std::vector<Request> requests;

private:
    void serve(QTcpSocket* socket);

    QTcpServer m_server;
    int m_status = 200;
    std::string m_body;
    std::string m_contentType = "text/xml";
    bool m_answer = true;
    std::size_t m_cutAfter = std::string::npos;
    bool m_dropHead = false;
    std::string m_location;
    struct PathReply {
        int status;
        std::string body;
    };
    std::vector<std::pair<std::string, PathReply>> m_pathReplies;
};

} // namespace zav::test
