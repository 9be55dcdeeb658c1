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
    if (!reply->isFinished()) {
        if (waitStarted)
            waitStarted();
        timer.start(m_timeout);
        loop.exec();
        if (waitFinished)
            waitFinished();
    }
    m_current = nullptr;

    HttpResponse response;
    // An aborted or unanswered request has no status; the error texts stay in the adapter.
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (reply->error() != QNetworkReply::OperationCanceledError && status.isValid())
        response.status = status.toInt();
    if (reply->isOpen())
        response.body = reply->readAll().toStdString();
    return response;
}

} // namespace zav
