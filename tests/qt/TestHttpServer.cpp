#include "TestHttpServer.h"

#include <QTcpSocket>

#include <cctype>
#include <memory>
#include <stdexcept>
#include <tuple>

namespace zav::test {

TestHttpServer::TestHttpServer() {
    if (!m_server.listen(QHostAddress::LocalHost, 0))
        throw std::runtime_error("cannot listen on 127.0.0.1");
    QObject::connect(&m_server, &QTcpServer::newConnection, [this] {
        while (QTcpSocket* socket = m_server.nextPendingConnection())
            serve(socket);
    });
}

std::string TestHttpServer::hostAndPath(const std::string& path) const {
    return "127.0.0.1:" + std::to_string(m_server.serverPort()) + path;
}

void TestHttpServer::reply(int status, std::string body, std::string location) {
    m_status = status, m_body = std::move(body), m_location = std::move(location);
    m_answer = true, m_dropHead = false, m_cutAfter = std::string::npos;
}

void TestHttpServer::serve(QTcpSocket* socket) {
    QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    auto buffer = std::make_shared<QByteArray>();
    QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket, buffer] {
        *buffer += socket->readAll();
        if (!buffer->isEmpty() && !std::isupper(static_cast<unsigned char>(buffer->at(0)))) {
            socket->write("not a secure server\r\n");
            socket->disconnectFromHost();
            return;
        }
        const qsizetype headerEnd = buffer->indexOf("\r\n\r\n");
        if (headerEnd < 0)
            return;
        const QList<QByteArray> lines = buffer->left(headerEnd).split('\n');
        const QList<QByteArray> first = lines.value(0).trimmed().split(' ');
        Request request{first.value(0).toStdString(), first.value(1).toStdString(), "", ""};
        qsizetype length = 0;
        for (const QByteArray& line : lines.mid(1)) {
            const QByteArray name = line.left(line.indexOf(':')).trimmed().toLower();
            const QByteArray value = line.mid(line.indexOf(':') + 1).trimmed();
            if (name == "content-length")
                length = value.toLongLong();
            else if (name == "content-type")
                request.contentType = value.toStdString();
        }
        if (buffer->size() < headerEnd + 4 + length)
            return; // the body is still on its way
        request.body = buffer->mid(headerEnd + 4, length).toStdString();
        requests.push_back(request);
        buffer->clear();
        if (!m_answer)
            return;
        int status = m_status;
        std::string body = m_body, location = m_location;
        if (const auto at = m_pathReplies.find(request.path); at != m_pathReplies.end())
            std::tie(status, body) = at->second, location.clear();
        const std::string head =
            "HTTP/1.1 " + std::to_string(status) + " Reason\r\nContent-Type: text/xml" +
            (location.empty() ? "" : "\r\nLocation: " + location) +
            "\r\nContent-Length: " + std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n";
        if (!m_dropHead)
            socket->write(QByteArray::fromStdString(head + body.substr(0, m_cutAfter)));
        socket->disconnectFromHost();
    });
}

} // namespace zav::test
