#include "tests/support/ScriptedServer.h"

#include <QTimer>

#include <algorithm>
#include <sys/socket.h>

namespace quenby::testing {

Answer Answer::with(int status, const QByteArray& body, const std::vector<HeaderFields::Field>& headers) {
    QByteArray bytes = "HTTP/1.1 " + QByteArray::number(status) + " Scripted\r\n";
    for (const auto& [name, value] : headers)
        bytes += name + ": " + value + "\r\n";
    const bool mayHaveBody = status >= 200 && status != 204 && status != 304;
    if (mayHaveBody)
        bytes += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    return {bytes + "\r\n" + (mayHaveBody ? body : QByteArray()), Then::keepOpen};
}

// One connection and the request that is arriving on it.
struct ScriptedServer::Connection {
    QTcpSocket* socket = nullptr;
    int number = 0;
    QByteArray buffer;
    ReceivedRequest request;
    bool hasHead = false;
    bool isChunked = false;
    bool hasAnswered = false;
    qint64 bodyLeft = 0; // of the body, or of the running chunk
    bool isStalled = false;
};

ScriptedServer::ScriptedServer(std::unique_ptr<QTcpServer> server, const QHostAddress& address)
    : server_(std::move(server))
    , handler_([](const ReceivedRequest&) { return Answer::with(404, "nothing is scripted for this"); }) {
    QObject::connect(server_.get(), &QTcpServer::pendingConnectionAvailable, server_.get(), [this] { accept(); });
    if (!server_->listen(address))
        qFatal("the scripted server cannot listen: %s", qPrintable(server_->errorString()));
}

ScriptedServer::~ScriptedServer() {
    for (const auto& [socket, connection] : connections_)
        socket->disconnect();
}

QUrl ScriptedServer::url(const QString& path) const {
    return QUrl(QStringLiteral("%1://127.0.0.1:%2%3").arg(scheme_).arg(server_->serverPort()).arg(path));
}

void ScriptedServer::closeAllConnections() {
    while (!connections_.empty()) {
        QTcpSocket* socket = connections_.begin()->first;
        socket->disconnect();
        socket->close();
        forget(socket);
    }
}

void ScriptedServer::accept() {
    while (QTcpSocket* socket = server_->nextPendingConnection()) {
        auto connection = std::make_unique<Connection>();
        connection->socket = socket;
        connection->number = ++connectionCount_;
        Connection& accepted = *connections_.emplace(socket, std::move(connection)).first->second;
        QObject::connect(socket, &QTcpSocket::disconnected, socket, [this, socket] { forget(socket); });
        if (readPiece_ > 0) {
            socket->setReadBufferSize(readPiece_);
            auto* timer = new QTimer(socket);
            QObject::connect(timer, &QTimer::timeout, socket, [this, &accepted] { read(accepted); });
            timer->start(std::chrono::milliseconds(5));
        } else {
            QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, &accepted] { read(accepted); });
        }
        read(accepted);
    }
}

void ScriptedServer::forget(QTcpSocket* socket) {
    const auto found = connections_.find(socket);
    if (found == connections_.end())
        return;
    if (found->second->hasHead)
        requests_.push_back(found->second->request); // broke off
    connections_.erase(found);
    socket->deleteLater();
}

void ScriptedServer::read(Connection& connection) {
    if (connection.isStalled)
        return;
    connection.buffer += readPiece_ > 0 ? connection.socket->read(readPiece_) : connection.socket->readAll();
    consume(connection);
}

void ScriptedServer::consume(Connection& connection) {
    QTcpSocket* socket = connection.socket;
    while (connections_.count(socket) > 0 && !connection.isStalled) {
        if (!connection.hasHead) {
            if (!consumeHead(connection))
                return;
            if (answersEarly_) {
                answer(connection);
                continue;
            }
        }
        if (!consumeBody(connection))
            return;
        connection.request.isComplete = true;
        requests_.push_back(connection.request);
        connection.hasHead = false;
        if (!connection.hasAnswered) {
            connection.request.body.clear();
            answer(connection);
        }
    }
}

bool ScriptedServer::consumeHead(Connection& connection) {
    const qsizetype end = connection.buffer.indexOf("\r\n\r\n");
    if (end < 0)
        return false;
    QList<QByteArray> lines = connection.buffer.first(end).replace("\r\n", "\n").split('\n');
    connection.buffer.remove(0, end + 4);
    const QList<QByteArray> words = lines.takeFirst().split(' ');
    connection.request = ReceivedRequest();
    connection.request.connection = connection.number;
    connection.request.method = words.value(0);
    connection.request.target = words.value(1);
    for (const QByteArray& line : lines) {
        const qsizetype colon = line.indexOf(':');
        connection.request.headers.append(line.first(colon), line.sliced(colon + 1).trimmed());
    }
    connection.isChunked = connection.request.header("Transfer-Encoding") == "chunked";
    connection.bodyLeft = connection.request.header("Content-Length").toLongLong();
    connection.hasHead = true;
    connection.hasAnswered = false;
    return true;
}

bool ScriptedServer::consumeBody(Connection& connection) {
    if (connection.isChunked) {
        while (consumeChunk(connection)) {
        }
        return !connection.isChunked;
    }
    takeBody(connection, std::min(connection.buffer.size(), connection.bodyLeft));
    return connection.bodyLeft == 0;
}

void ScriptedServer::takeBody(Connection& connection, qsizetype length) {
    if (!discardsBodies_)
        connection.request.body += connection.buffer.first(length);
    connection.buffer.remove(0, length);
    connection.bodyLeft -= length;
    receivedBodyBytes_ += length;
}

// One chunk, or what is there of it; false when more must arrive first or the body has ended (isChunked is off then).
bool ScriptedServer::consumeChunk(Connection& connection) {
    constexpr qsizetype lineBreak = 2;
    if (connection.bodyLeft == 0) {
        const qsizetype end = connection.buffer.indexOf("\r\n");
        if (end < 0)
            return false;
        const qint64 length = connection.buffer.first(end).toLongLong(nullptr, 16);
        if (length == 0) {
            if (connection.buffer.size() < end + 2 * lineBreak)
                return false;
            connection.buffer.remove(0, end + 2 * lineBreak);
            connection.isChunked = false;
            return false;
        }
        if (connection.buffer.size() < end + lineBreak + length + lineBreak)
            return false;
        connection.buffer.remove(0, end + lineBreak);
        connection.bodyLeft = length;
    }
    takeBody(connection, connection.bodyLeft);
    connection.buffer.remove(0, lineBreak);
    return true;
}

void ScriptedServer::answer(Connection& connection) {
    connection.hasAnswered = true;
    Answer answer;
    if (answers_.empty()) {
        answer = handler_(requests_.empty() || answersEarly_ ? connection.request : requests_.back());
    } else {
        answer = answers_.front();
        answers_.pop_front();
    }
    QTcpSocket* socket = connection.socket;
    socket->write(answer.bytes);
    socket->flush();
    switch (answer.then) {
    case Answer::Then::keepOpen:
        return;
    case Answer::Then::stall:
        connection.isStalled = true;
        return;
    case Answer::Then::close:
        socket->disconnectFromHost();
        return;
    case Answer::Then::reset: {
        const linger atOnce{1, 0};
        ::setsockopt(int(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
        socket->abort();
        return;
    }
    }
}

} // namespace quenby::testing
