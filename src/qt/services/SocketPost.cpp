#include "qt/services/SocketPost.h"

#include "platform/TextHelpers.h"

#include <QEventLoop>
#include <QSslSocket>
#include <QTcpSocket>
#include <QTimer>
#include <QUrl>

#include <memory>

namespace zav {
namespace {

std::string trimmed(const std::string& s) {
    const std::size_t first = s.find_first_not_of(" \t");
    if (first == std::string::npos)
        return {};
    return s.substr(first, s.find_last_not_of(" \t\r") - first + 1);
}

} // namespace

std::string NoAnswerCause(std::chrono::milliseconds timeout) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(timeout).count();
    return seconds > 0 ? "no answer in " + std::to_string(seconds) + " s"
                       : "no answer in " + std::to_string(timeout.count()) + " ms";
}

bool SocketPost::ParseReply(const std::string& bytes, bool closed, HttpResponse& response) {
    const std::size_t headerEnd = bytes.find("\r\n\r\n");
    if (headerEnd == std::string::npos)
        return false;
    // "HTTP/1.1 200 OK"
    const std::size_t lineEnd = bytes.find("\r\n");
    const std::string statusLine = bytes.substr(0, lineEnd);
    const std::size_t blank = statusLine.find(' ');
    if (statusLine.rfind("HTTP/", 0) != 0 || blank == std::string::npos ||
        statusLine.size() < blank + 4)
        return false;
    int status = 0;
    for (std::size_t i = blank + 1; i < blank + 4; ++i) {
        if (statusLine[i] < '0' || statusLine[i] > '9')
            return false;
        status = status * 10 + (statusLine[i] - '0');
    }
    std::string location;
    std::size_t length = std::string::npos;
    for (std::size_t at = lineEnd + 2; at < headerEnd;) {
        const std::size_t end = bytes.find("\r\n", at);
        const std::string line = bytes.substr(at, end - at);
        at = end + 2;
        const std::size_t colon = line.find(':');
        if (colon == std::string::npos)
            continue;
        const std::string name = LowerAscii(trimmed(line.substr(0, colon)));
        const std::string value = trimmed(line.substr(colon + 1));
        if (name == "location") {
            location = value;
        } else if (name == "content-length") {
            if (value.empty() || value.size() > 12 ||
                value.find_first_not_of("0123456789") != std::string::npos)
                return false;
            length = std::stoull(value);
        }
    }
    std::string body = bytes.substr(headerEnd + 4);
    if (length != std::string::npos) {
        if (body.size() < length)
            return false;
        body.resize(length);
    } else if (!closed) {
        return false; // without a length, the reply ends when the server closes
    }
    response.status = status;
    response.location = location;
    response.body = std::move(body);
    response.failure = HttpFailure::None;
    response.cause.clear();
    return true;
}

void SocketPost::Abort() {
    if (m_abort)
        m_abort();
}

HttpResponse SocketPost::Send(const std::string& url, const std::string& contentType,
                              const std::string& body, const std::function<void()>& waitStarted,
                              const std::function<void()>& waitFinished) {
    HttpResponse response;
    const QUrl address(QString::fromStdString(url), QUrl::StrictMode);
    const QString scheme = address.scheme().toLower();
    if (!address.isValid() || address.host().isEmpty() ||
        (scheme != QLatin1String("http") && scheme != QLatin1String("https"))) {
        response.failure = HttpFailure::NotSent;
        response.cause = "not a usable address: " + url;
        return response;
    }
    const bool secure = scheme == QLatin1String("https");
    const quint16 port = static_cast<quint16>(address.port(secure ? 443 : 80));
    const std::string where = address.host().toStdString() + ":" + std::to_string(port);

    QByteArray target = address.path(QUrl::FullyEncoded).toLatin1();
    if (target.isEmpty())
        target = "/";
    if (address.hasQuery())
        target += "?" + address.query(QUrl::FullyEncoded).toLatin1();
    // HTTP/1.0: the reply then comes without chunks, its end marked by its length or the close.
    const QByteArray request =
        "POST " + target + " HTTP/1.0\r\nHost: " +
        address.authority(QUrl::RemoveUserInfo | QUrl::FullyEncoded).toLatin1() +
        "\r\nUser-Agent: ZAV\r\nContent-Type: " + QByteArray::fromStdString(contentType) +
        "\r\nContent-Length: " + QByteArray::number(static_cast<qulonglong>(body.size())) +
        "\r\nConnection: close\r\n\r\n" + QByteArray::fromStdString(body);

    std::unique_ptr<QTcpSocket> socket =
        secure ? std::make_unique<QSslSocket>() : std::make_unique<QTcpSocket>();
    QEventLoop loop;
    QTimer timer;
    timer.setSingleShot(true);
    bool sent = false;
    bool done = false;
    std::string received;

    auto finish = [&] {
        done = true;
        loop.quit();
    };
    auto fail = [&](const std::string& cause) {
        if (done)
            return;
        response.failure = sent ? HttpFailure::MayHaveArrived : HttpFailure::NotSent;
        response.cause = cause;
        finish();
    };
    auto read = [&](bool closed) {
        if (done)
            return;
        received += socket->readAll().toStdString();
        if (static_cast<qint64>(received.size()) > m_maxReplyBytes)
            return fail("reply longer than " + std::to_string(m_maxReplyBytes) + " bytes");
        if (ParseReply(received, closed, response))
            return finish();
        if (closed && !sent)
            fail(secure ? "secure connection (TLS) with " + where + " failed"
                        : "connection closed by " + where + " before the request was sent");
        else if (closed)
            fail("connection closed by " + where + " before the whole reply arrived");
    };
    auto send = [&] {
        socket->write(request);
        sent = true;
    };

    if (secure)
        QObject::connect(static_cast<QSslSocket*>(socket.get()), &QSslSocket::encrypted, send);
    else
        QObject::connect(socket.get(), &QTcpSocket::connected, send);
    QObject::connect(socket.get(), &QTcpSocket::readyRead, [&] { read(false); });
    QObject::connect(socket.get(), &QTcpSocket::disconnected, [&] { read(true); });
    QObject::connect(socket.get(), &QTcpSocket::errorOccurred,
                     [&](QAbstractSocket::SocketError error) {
                         switch (error) {
                         case QAbstractSocket::RemoteHostClosedError:
                             return read(true);
                         case QAbstractSocket::ConnectionRefusedError:
                             return fail("connection refused by " + where);
                         case QAbstractSocket::HostNotFoundError:
                             return fail("host " + address.host().toStdString() + " not found");
                         case QAbstractSocket::SslHandshakeFailedError:
                         case QAbstractSocket::SslInternalError:
                         case QAbstractSocket::SslInvalidUserDataError:
                             return fail("secure connection (TLS) with " + where + " failed");
                         default:
                             return fail(sent ? "connection to " + where + " lost"
                                              : "no connection to " + where);
                         }
                     });
    QObject::connect(&timer, &QTimer::timeout, [&] {
        fail(sent ? NoAnswerCause(m_timeout)
                  : "no connection to " + where + " in " +
                        NoAnswerCause(m_timeout).substr(std::string("no answer in ").size()));
    });
    m_abort = [&] { fail("cancelled"); };

    if (secure)
        static_cast<QSslSocket*>(socket.get())->connectToHostEncrypted(address.host(), port);
    else
        socket->connectToHost(address.host(), port);
    if (!done) {
        if (waitStarted)
            waitStarted();
        timer.start(m_timeout);
        if (!done)
            loop.exec();
        if (waitFinished)
            waitFinished();
    }
    m_abort = nullptr;
    // Nothing of this exchange may reach the handlers above once they are gone.
    QObject::disconnect(socket.get(), nullptr, nullptr, nullptr);
    socket->abort();
    return response;
}

} // namespace zav
