#pragma once

#include <QTcpServer>

#include <map>
#include <string>
#include <vector>

namespace zav::test {

// A small HTTP server on 127.0.0.1 with a port of the system's choosing, living in the test's
// own thread: it answers while the client under test waits in its event loop. Every request
// gets the canned reply (or the one set for its path), or none at all, and is counted: exactly
// once is a count. Anything that is not HTTP (a TLS hello) gets a line of text and is closed.
class TestHttpServer {
public:
    struct Request {
        std::string method, path, contentType, body;
    };

    TestHttpServer();

    // "127.0.0.1:PORT" followed by `path`, and the same with "http://" in front.
    std::string hostAndPath(const std::string& path) const;
    std::string url(const std::string& path) const { return "http://" + hostAndPath(path); }

    void reply(int status, std::string body, std::string location = "");
    // Reads requests but never answers: the client's time-out has to end the wait.
    void neverAnswer() { m_answer = false; }
    // Announces the whole reply's length but closes after `bytes` of its body, as a server that
    // dies mid-reply does; after none of the reply at all with dropAfterRequest.
    void stopMidReply(std::size_t bytes) { m_cutAfter = bytes; }
    void dropAfterRequest() { m_cutAfter = 0, m_dropHead = true; }
    void redirect(int status, const std::string& location) { reply(status, "moved", location); }
    // The reply for requests to `path` only, whatever the others get.
    void replyAt(const std::string& path, int status, std::string body) {
        m_pathReplies[path] = {status, std::move(body)};
    }

    std::vector<Request> requests;

private:
    void serve(QTcpSocket* socket);

    QTcpServer m_server;
    int m_status = 200;
    std::string m_body, m_location;
    bool m_answer = true, m_dropHead = false;
    std::size_t m_cutAfter = std::string::npos;
    std::map<std::string, std::pair<int, std::string>> m_pathReplies;
};

} // namespace zav::test
