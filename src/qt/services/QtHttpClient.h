#pragma once

#include "platform/HttpClient.h"

#include <QtGlobal>

#include <chrono>
#include <functional>
#include <memory>

class QNetworkAccessManager;
class QNetworkReply;

namespace zav {

class SocketPost;

// Synchronous HTTP: the call waits in a local event loop, so a window keeps repainting, until
// the reply is complete, the time-out passes or Abort() is called. A time-out or an abort is
// reported like any request without a reply (status 0), with its cause in words.
//
// GET goes through QNetworkAccessManager. POST is written by hand over a socket: Qt's network
// layer sends a POST again by itself when a connection drops, and an observation must reach
// the server once per press. One request at a time: a request asked for while another is
// waiting (a second click delivered inside the wait) is refused without being sent.
class QtHttpClient : public HttpClient {
public:
    // The server's replies are a few hundred bytes; a reply growing past this is abandoned as
    // no reply rather than held in memory.
    static constexpr qint64 kMaxReplyBytes = 1024 * 1024;

    explicit QtHttpClient(std::chrono::milliseconds timeout = std::chrono::seconds(30));
    ~QtHttpClient() override;

    HttpResponse Get(const std::string& url) override;
    HttpResponse Post(const std::string& url, const std::string& contentType,
                      const std::string& body) override;

    // Ends the request being waited for (a busy indicator's cancel).
    void Abort();

    // Called around each wait, for a busy indicator; either may be empty.
    std::function<void()> waitStarted;
    std::function<void()> waitFinished;

private:
    HttpResponse wait(QNetworkReply* reply);
    static HttpResponse busy();

    std::unique_ptr<QNetworkAccessManager> m_manager;
    std::chrono::milliseconds m_timeout;
    QNetworkReply* m_current = nullptr;
    SocketPost* m_post = nullptr;
};

} // namespace zav
