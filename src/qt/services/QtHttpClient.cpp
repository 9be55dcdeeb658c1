#include "qt/services/QtHttpClient.h"

#include "qt/services/SocketPost.h"

#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QUrl>

namespace zav {
namespace {

QNetworkRequest requestFor(const std::string& url) {
    QNetworkRequest request(QUrl(QString::fromStdString(url)));
    request.setHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("ZAV"));
    return request;
}

// True when the reply arrived whole: either no error, or an error that only reports the server's
// own HTTP status (404, 500 ...). Connection, proxy and protocol failures, a time-out, an abort,
// or a server that closes the connection mid-body leave at best part of a reply, and a cut-off
// body must never be read as an answer.
bool arrivedWhole(QNetworkReply::NetworkError error) {
    const int code = error;
    return error == QNetworkReply::NoError || (code > 200 && code < 300) ||
           (code > 400 && code < 500);
}

// Why a reply without a usable answer failed, in the operator's words.
std::string causeOf(QNetworkReply* reply, bool timedOut, std::chrono::milliseconds timeout) {
    const QUrl url = reply->url();
    const std::string where = url.host().toStdString() + ":" +
                              std::to_string(url.port(url.scheme() == "https" ? 443 : 80));
    if (timedOut)
        return NoAnswerCause(timeout);
    switch (reply->error()) {
    case QNetworkReply::ConnectionRefusedError:
        return "connection refused by " + where;
    case QNetworkReply::HostNotFoundError:
        return "host " + url.host().toStdString() + " not found";
    case QNetworkReply::SslHandshakeFailedError:
        return "secure connection (TLS) with " + where + " failed";
    case QNetworkReply::RemoteHostClosedError:
        return "connection closed by " + where + " before the whole reply arrived";
    case QNetworkReply::OperationCanceledError:
        return "cancelled";
    case QNetworkReply::ProtocolUnknownError:
    case QNetworkReply::ProtocolInvalidOperationError:
        return "not a usable address: " + url.toString().toStdString();
    default:
        return reply->error() == QNetworkReply::NoError || arrivedWhole(reply->error())
                   ? "connection closed by " + where + " before the whole reply arrived"
                   : "connection to " + where + " failed";
    }
}

} // namespace

QtHttpClient::QtHttpClient(std::chrono::milliseconds timeout)
    : m_manager(std::make_unique<QNetworkAccessManager>()), m_timeout(timeout) {}

QtHttpClient::~QtHttpClient() = default;

HttpResponse QtHttpClient::busy() {
    HttpResponse response;
    response.failure = HttpFailure::NotSent;
    response.cause = "another request is still waiting for its reply";
    return response;
}

HttpResponse QtHttpClient::Get(const std::string& url) {
    if (m_current || m_post)
        return busy();
    return wait(m_manager->get(requestFor(url)));
}

HttpResponse QtHttpClient::Post(const std::string& url, const std::string& contentType,
                                const std::string& body) {
    if (m_current || m_post)
        return busy();
    SocketPost post(m_timeout, kMaxReplyBytes);
    m_post = &post;
    HttpResponse response = post.Send(url, contentType, body, waitStarted, waitFinished);
    m_post = nullptr;
    return response;
}

void QtHttpClient::Abort() {
    if (m_current)
        m_current->abort();
    if (m_post)
        m_post->Abort();
}

HttpResponse QtHttpClient::wait(QNetworkReply* reply) {
    const std::unique_ptr<QNetworkReply> owned(reply);
    m_current = reply;
    QEventLoop loop;
    QTimer timer;
    bool timedOut = false;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, reply, [reply, &timedOut] {
        timedOut = true;
        reply->abort();
    });
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    QObject::connect(reply, &QNetworkReply::downloadProgress, reply, [reply](qint64 received) {
        if (received > kMaxReplyBytes)
            reply->abort();
    });
    if (!reply->isFinished()) {
        if (waitStarted)
            waitStarted();
        timer.start(m_timeout);
        loop.exec();
        if (waitFinished)
            waitFinished();
    }
    m_current = nullptr;

    HttpResponse response; // no status: the error texts stay in the adapter
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    // The check during the download may come too late for a reply that arrived in one piece.
    const bool tooLong = reply->bytesAvailable() > kMaxReplyBytes;
    if (!arrivedWhole(reply->error()) || !status.isValid() || tooLong) {
        // A GET changes nothing on the server: how far it got does not matter to anyone.
        response.failure = HttpFailure::MayHaveArrived;
        response.cause = tooLong ? "reply longer than " + std::to_string(kMaxReplyBytes) + " bytes"
                                 : causeOf(reply, timedOut, m_timeout);
        return response;
    }
    response.status = status.toInt();
    response.location =
        reply->header(QNetworkRequest::LocationHeader).toUrl().toString().toStdString();
    if (reply->isOpen())
        response.body = reply->readAll().toStdString();
    return response;
}

} // namespace zav
