#pragma once

#include <QTcpServer>
#include <QTcpSocket>

#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace zav::test {

// An HTTP server on 127.0.0.1, in the test's own thread: it answers while the client under test
// waits in its event loop. Every request is counted and gets the canned reply (or its path's),
// or none; a TLS hello gets a line of text.
class TestHttpServer {
public:
    struct Request {
        std::string method, path, contentType, body;
    };
    std::vector<Request> requests;
    static constexpr int kDrop = -1, kNever = -2; // statuses: close at once, or never answer

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
        m_status = status, m_body = std::move(body), m_location = std::move(location);
        m_answer = status != kNever, m_drop = status == kDrop, m_cutAfter = std::string::npos;
    }
    void replyAt(const std::string& path, std::string body) { m_pathBodies[path] = body; }
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
            const QList<QByteArray> lines = in->left(end).split('\n');
            const QList<QByteArray> first = lines.value(0).trimmed().split(' ');
            Request r{first.value(0).toStdString(), first.value(1).toStdString(), "", ""};
            qsizetype length = 0;
            for (const QByteArray& line : lines.mid(1)) {
                const QByteArray name = line.left(line.indexOf(':')).trimmed().toLower();
                const QByteArray value = line.mid(line.indexOf(':') + 1).trimmed();
                if (name == "content-length")
                    length = value.toLongLong();
                else if (name == "content-type")
                    r.contentType = value.toStdString();
            }
            if (end < 0 || in->size() < end + 4 + length)
                return; // the rest is still on its way
            r.body = in->mid(end + 4, length).toStdString();
            requests.push_back(r), in->clear();
            const auto own = m_pathBodies.find(r.path);
            const std::string body = own == m_pathBodies.end() ? m_body : own->second;
            const std::string head =
                "HTTP/1.1 " + std::to_string(own == m_pathBodies.end() ? m_status : 200) +
                " Reason\r\nContent-Type: text/xml" +
                (m_location.empty() || own != m_pathBodies.end() ? ""
                                                                 : "\r\nLocation: " + m_location) +
                "\r\nContent-Length: " + std::to_string(body.size()) +
                "\r\nConnection: close\r\n\r\n";
            if (m_answer && !m_drop)
                socket->write(QByteArray::fromStdString(head + body.substr(0, m_cutAfter)));
            if (m_answer)
                socket->disconnectFromHost();
        });
    }

    QTcpServer m_server;
    int m_status = 200;
    std::string m_body, m_location;
    bool m_answer = true, m_drop = false;
    std::size_t m_cutAfter = std::string::npos;
    std::map<std::string, std::string> m_pathBodies;
};

} // namespace zav::test
