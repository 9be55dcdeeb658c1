#pragma once

#include "platform/HttpClient.h"

#include <QtGlobal>

#include <chrono>
#include <functional>
#include <string>

namespace zav {

// One HTTP/1.0 POST written by hand over a TCP or TLS socket, waited for in a local event
// loop: sent exactly once, never repeated and no redirect followed. It tells a request that
// never left (no connection) from one that went out and got no whole reply.
class SocketPost {
public:
    SocketPost(std::chrono::milliseconds timeout, qint64 maxReplyBytes)
        : m_timeout(timeout), m_maxReplyBytes(maxReplyBytes) {}

    // `waitStarted` and `waitFinished` are called around the wait when there is one.
    HttpResponse Send(const std::string& url, const std::string& contentType,
                      const std::string& body, const std::function<void()>& waitStarted,
                      const std::function<void()>& waitFinished);
    // Ends the wait; the request counts as cancelled.
    void Abort();

    // Status, Location and body of a whole reply; false while it is incomplete.
    // `closed`: the server has closed the connection, so a reply without a length is whole.
    static bool ParseReply(const std::string& bytes, bool closed, HttpResponse& response);

private:
    std::chrono::milliseconds m_timeout;
    qint64 m_maxReplyBytes;
    std::function<void()> m_abort;
};

// "no answer in 30 s", for a time-out in milliseconds.
std::string NoAnswerCause(std::chrono::milliseconds timeout);

} // namespace zav
