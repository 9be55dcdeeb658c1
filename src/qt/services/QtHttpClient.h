#pragma once

#include "platform/HttpClient.h"

#include <QtGlobal>

#include <chrono>
#include <functional>
#include <memory>

class QNetworkAccessManager;
class QNetworkReply;
class QNetworkRequest;

namespace zav {

// Synchronous HTTP over QNetworkAccessManager: the call waits in a local event loop, so a
// window keeps repainting, until the reply is complete, the time-out passes or Abort() is
// called. A time-out or an abort is reported like any request without a reply (status 0).
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

    std::unique_ptr<QNetworkAccessManager> m_manager;
    std::chrono::milliseconds m_timeout;
    QNetworkReply* m_current = nullptr;
};

} // namespace zav
