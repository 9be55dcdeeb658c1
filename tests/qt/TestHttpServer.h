#pragma once

#include <QTcpServer>
#include <QTcpSocket>

#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

namespace zav::test {

// An HTTP server on 127.0.0.1 answering in the test's thread while the client waits in its event
// loop: each request is counted and gets the canned reply (or its path's); TLS, a line of text.
class TestHttpServer {
public:
    struct Request {
        std::string method, path, contentType, body;
    };
    std::vector<Request> requests;
    static constexpr int kNever = -1; // a status: no answer at all

    TestHttpServer() {
        if (!m_server.listen(QHostAddress::LocalHost, 0))
            throw std::runtime_error("cannot listen on 127.0.0.1");
        QObject::connect(&m_server, &QTcpServer::newConnection, [this] {
            while (QTcpSocket* socket = m_server.nextPendingConnection())
                serve(socket);
        });
    }
    std::string hostAndPath(const std::string& path) const {
        return "127.0.0.1:" + std::to_string(m_server.serverPort()) + path;
    }
    std::string url(const std::string& path) const { return "http://" + hostAndPath(path); }
    void reply(int status, std::string body, std::string location = "") {
        m_replies[""] = {status, std::move(body), std::move(location)};
        m_cutAfter = std::string::npos;
    }
    void replyAt(const std::string& path, std::string body) { m_replies[path] = {200, body, ""}; }
    void neverAnswer() { reply(kNever, ""); } // the client's time-out has to end the wait
    // Announces the whole reply but closes after `bytes` of its body.
    void stopMidReply(std::size_t bytes) { m_cutAfter = bytes; }

private:
    void serve(QTcpSocket* socket) {
        QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        auto in = std::make_shared<QByteArray>();
        QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket, in] {
            *in += socket->readAll();
            if (!in->isEmpty() && !std::isupper(static_cast<unsigned char>(in->at(0))))
                return socket->write("not a secure server\r\n"), socket->disconnectFromHost();
            const qsizetype end = in->indexOf("\r\n\r\n");
            const QByteArray head = in->left(end).toLower();
            const auto field = [&head](const QByteArray& name) {
                const qsizetype at = head.indexOf("\n" + name + ":");
                return at < 0 ? QByteArray()
                              : head.mid(at + name.size() + 2).split('\r')[0].trimmed();
            };
            const qsizetype length = field("content-length").toLongLong();
            if (end < 0 || in->size() < end + 4 + length)
                return; // the rest is still on its way
            const QList<QByteArray> first = in->left(in->indexOf('\r')).split(' ');
            requests.push_back({first.value(0).toStdString(), first.value(1).toStdString(),
                                field("content-type").toStdString(),
                                in->mid(end + 4, length).toStdString()});
            in->clear();
            const auto& [status, body, location] =
                m_replies[m_replies.count(requests.back().path) ? requests.back().path : ""];
            const std::string answer = "HTTP/1.1 " + std::to_string(status) +
                                       " Reason\r\nContent-Type: text/xml" +
                                       (location.empty() ? "" : "\r\nLocation: " + location) +
                                       "\r\nContent-Length: " + std::to_string(body.size()) +
                                       "\r\nConnection: close\r\n\r\n";
            if (status != kNever)
                socket->write(QByteArray::fromStdString(answer + body.substr(0, m_cutAfter))),
                    socket->disconnectFromHost();
        });
    }

    QTcpServer m_server;
    std::map<std::string, std::tuple<int, std::string, std::string>> m_replies{{"", {200, "", ""}}};
    std::size_t m_cutAfter = std::string::npos;
};

} // namespace zav::test
