#include "qt/services/QtFormPoster.h"

#include <QEventLoop>
#include <QSslSocket>
#include <QTcpSocket>
#include <QTimer>
#include <QUrl>

#include <memory>

namespace zav {
namespace {

std::string socketWords(QAbstractSocket::SocketError error) {
    switch (error) {
    case QAbstractSocket::ConnectionRefusedError:
        return "connection refused";
    case QAbstractSocket::RemoteHostClosedError:
        return "the server closed the connection";
    case QAbstractSocket::HostNotFoundError:
        return "host not found";
    case QAbstractSocket::SocketTimeoutError:
        return "timed out";
    case QAbstractSocket::NetworkError:
        return "network unreachable";
    case QAbstractSocket::SslHandshakeFailedError:
        return "the secure connection could not be set up";
    default:
        return "network error " + std::to_string(static_cast<int>(error));
    }
}

// "HTTP/1.1 200 OK", headers, blank line, body: the status and the body.
HttpResponse parseReply(const QByteArray& bytes) {
    HttpResponse r;
    const qsizetype headerEnd = bytes.indexOf("\r\n\r\n");
    const QList<QByteArray> statusLine = bytes.left(bytes.indexOf("\r\n")).split(' ');
    if (headerEnd < 0 || statusLine.size() < 2 || !statusLine[0].startsWith("HTTP/"))
        return r;
    bool ok = false;
    const int status = statusLine[1].toInt(&ok);
    if (!ok)
        return r;
    const QByteArray body = bytes.mid(headerEnd + 4);
    // A reply cut short of its announced length is no answer.
    for (const QByteArray& line : bytes.left(headerEnd).split('\n')) {
        const QByteArray header = line.trimmed();
        if (header.toLower().startsWith("content-length:") &&
            body.size() < header.mid(15).trimmed().toLongLong())
            return r;
    }
    r.status = status;
    r.body = body.toStdString();
    return r;
}

} // namespace

PostAttempt QtFormPoster::Post(const std::string& url, const std::string& body) {
    PostAttempt attempt;
    const QUrl address(QString::fromStdString(url));
    const QString scheme = address.scheme().toLower();
    if (!address.isValid() || address.host().isEmpty() || (scheme != "http" && scheme != "https")) {
        attempt.error = "the address " + url + " is not usable";
        return attempt;
    }
    const bool secure = scheme == "https";
    std::unique_ptr<QTcpSocket> socket =
        secure ? std::make_unique<QSslSocket>() : std::make_unique<QTcpSocket>();

    QString target = address.path(QUrl::FullyEncoded);
    if (target.isEmpty())
        target = "/";
    if (address.hasQuery())
        target += "?" + address.query(QUrl::FullyEncoded);
    const int port = address.port(secure ? 443 : 80);
    const QByteArray request =
        "POST " + target.toUtf8() + " HTTP/1.0\r\nHost: " + address.host().toUtf8() +
        (address.port() > 0 ? ":" + QByteArray::number(port) : QByteArray()) +
        "\r\nContent-Type: application/x-www-form-urlencoded\r\nContent-Length: " +
        QByteArray::number(static_cast<qsizetype>(body.size())) + "\r\nConnection: close\r\n\r\n" +
        QByteArray::fromStdString(body);

    QEventLoop loop;
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
    QObject::connect(socket.get(), &QAbstractSocket::errorOccurred, &loop, &QEventLoop::quit);
    QObject::connect(socket.get(), &QAbstractSocket::disconnected, &loop, &QEventLoop::quit);
    QObject::connect(socket.get(), &QIODevice::readyRead, &loop, &QEventLoop::quit);

    bool connected = false;
    auto ready = [&] {
        connected = true;
        socket->write(request);
    };
    if (secure) {
        auto* tls = static_cast<QSslSocket*>(socket.get());
        QObject::connect(tls, &QSslSocket::encrypted, &loop, ready);
        tls->connectToHostEncrypted(address.host(), static_cast<quint16>(port));
    } else {
        QObject::connect(socket.get(), &QAbstractSocket::connected, &loop, ready);
        socket->connectToHost(address.host(), static_cast<quint16>(port));
    }

    QByteArray reply;
    timer.start(m_timeout);
    while (timer.isActive()) {
        loop.exec();
        reply += socket->readAll();
        if (reply.size() > kMaxReplyBytes || socket->state() == QAbstractSocket::UnconnectedState ||
            socket->error() != QAbstractSocket::UnknownSocketError)
            break;
    }
    reply += socket->readAll();
    const bool timedOut = !timer.isActive();
    // Nothing handed to the system yet: the request provably never left.
    const bool nothingWent = !connected || socket->bytesToWrite() == request.size();
    const QAbstractSocket::SocketError error = socket->error();
    socket->abort();

    if (error == QAbstractSocket::RemoteHostClosedError ||
        error == QAbstractSocket::UnknownSocketError) {
        attempt.response = parseReply(reply);
        if (attempt.response.status != 0 && reply.size() <= kMaxReplyBytes && !timedOut) {
            attempt.delivery = PostDelivery::Answered;
            return attempt;
        }
    }
    attempt.delivery =
        nothingWent && reply.isEmpty() ? PostDelivery::NeverLeft : PostDelivery::Unknown;
    attempt.error = timedOut ? "no answer within " + std::to_string(m_timeout.count() / 1000) + " s"
                    : reply.size() > kMaxReplyBytes                ? "the reply is too large"
                    : error != QAbstractSocket::UnknownSocketError ? socketWords(error)
                                                                   : "the reply is not HTTP";
    return attempt;
}

} // namespace zav
