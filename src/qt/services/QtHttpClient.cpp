#include "qt/services/QtHttpClient.h"

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

} // namespace

QtHttpClient::QtHttpClient(std::chrono::milliseconds timeout)
    : m_manager(std::make_unique<QNetworkAccessManager>()), m_timeout(timeout) {}

QtHttpClient::~QtHttpClient() = default;

HttpResponse QtHttpClient::Get(const std::string& url) {
    return wait(m_manager->get(requestFor(url)));
}

HttpResponse QtHttpClient::Post(const std::string& url, const std::string& contentType,
                                const std::string& body) {
    QNetworkRequest request = requestFor(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader, QString::fromStdString(contentType));
    return wait(m_manager->post(request, QByteArray::fromStdString(body)));
}

void QtHttpClient::Abort() {
    if (m_current)
        m_current->abort();
}

HttpResponse QtHttpClient::wait(QNetworkReply* reply) {
    const std::unique_ptr<QNetworkReply> owned(reply);
    m_current = reply;
    QEventLoop loop;
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, reply, &QNetworkReply::abort);
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
    if (!arrivedWhole(reply->error()) || !status.isValid() ||
        reply->bytesAvailable() > kMaxReplyBytes)
        return response;
    response.status = status.toInt();
    if (reply->isOpen())
        response.body = reply->readAll().toStdString();
    return response;
}

} // namespace zav
