#include "oauth2/browser/LoopbackListener.h"

#include "oauth2/browser/LoopbackPages.h"

#include <QNetworkProxy>
#include <QTcpSocket>

#include <algorithm>
#include <cerrno>
#include <utility>

#include <sys/socket.h>

namespace quenby {
namespace {

constexpr QByteArrayView emptyLine = "\r\n\r\n";

Error cannotListenError(const QTcpServer& server) {
    const bool isExhausted = server.serverError() == QAbstractSocket::SocketResourceError;
    return Error(errorDomain::posix, isExhausted ? EMFILE : EADDRNOTAVAIL,
                 {{errorKey::reason,
                   QStringLiteral("This computer gave Quenby no port to wait for the browser's answer at (%1). Close "
                                  "other programs and sign in again.")
                       .arg(server.errorString())}});
}

} // namespace

// One request, one response. A browser's spare connections, and those of others, end when they were silent too long.
class LoopbackListener::Connection final : public QObject {
public:
    Connection(LoopbackListener& listener, QTcpSocket* socket)
        : listener_(listener)
        , socket_(socket) {
        socket_->setParent(this);
        socket_->setReadBufferSize(maxHeadSize + 1);
        connect(socket_, &QTcpSocket::readyRead, this, [this] { read(); });
        connect(socket_, &QTcpSocket::disconnected, this, [this] { listener_.forget(this); });
        timeout_ = listener_.timeSource_->startTimer(connectionTimeout, [this] { timedOut(); });
    }
    ~Connection() override {
        socket_->disconnect(this);
        socket_->abort();
    }

    void read() {
        if (isAnswered_) {
            socket_->skip(socket_->bytesAvailable());
            return;
        }
        const qsizetype searched = std::max<qsizetype>(received_.size() - emptyLine.size(), 0);
        received_ += socket_->read(maxHeadSize + 1 - received_.size());
        const qsizetype end = received_.indexOf(emptyLine, searched);
        if (end >= 0)
            listener_.headArrived(*this, received_.first(end));
        else if (received_.size() > maxHeadSize)
            answer(loopback::responseTo(loopback::Trouble::headTooLarge));
    }

    // What else the other end has to say is read and forgotten until it closes: a connection that is closed with bytes
    // unread takes the response with it.
    void answer(const QByteArray& response) {
        isAnswered_ = true;
        received_.clear();
        socket_->write(response);
        socket_->flush();
        if (socket_->bytesToWrite() == 0)
            ::shutdown(static_cast<int>(socket_->socketDescriptor()), SHUT_WR);
        else
            socket_->disconnectFromHost();
        socket_->skip(socket_->bytesAvailable());
    }

private:
    void timedOut() {
        if (!isAnswered_)
            answer(loopback::responseTo(loopback::Trouble::tooSlow));
        listener_.forget(this);
    }

    LoopbackListener& listener_;
    QTcpSocket* const socket_;
    QByteArray received_;
    bool isAnswered_ = false;
    std::unique_ptr<Timer> timeout_;
};

LoopbackListener::LoopbackListener(std::shared_ptr<TimeSource> timeSource)
    : timeSource_(std::move(timeSource)) {
    server_.setProxy(QNetworkProxy::NoProxy);
    connect(&server_, &QTcpServer::newConnection, this, &LoopbackListener::accept);
}

LoopbackListener::~LoopbackListener() = default;

MaybeError LoopbackListener::listen(const QString& state) {
    if (!server_.listen(QHostAddress(QHostAddress::LocalHost)))
        return cannotListenError(server_);
    expected_ = {"127.0.0.1:" + QByteArray::number(server_.serverPort()), state.toUtf8()};
    redirectURI_ = QStringLiteral("http://") + QString::fromLatin1(expected_.host);
    return std::nullopt;
}

void LoopbackListener::accept() {
    while (QTcpSocket* socket = server_.nextPendingConnection()) {
        if (connections_.size() == maxConnections)
            connections_.pop_front();
        connections_.push_back(std::make_unique<Connection>(*this, socket));
        Connection& connection = *connections_.back();
        // What has arrived before can be the whole request.
        QMetaObject::invokeMethod(
            &connection, [&connection] { connection.read(); }, Qt::QueuedConnection);
    }
}

// It may be called from inside the connection.
void LoopbackListener::forget(Connection* connection) {
    const auto found = std::find_if(connections_.begin(), connections_.end(),
                                    [connection](const auto& one) { return one.get() == connection; });
    if (found == connections_.end())
        return;
    Connection* const ended = found->release();
    connections_.erase(found);
    ended->setParent(this);
    ended->deleteLater();
}

void LoopbackListener::headArrived(Connection& connection, const QByteArray& head) {
    const loopback::Request request = loopback::judged(head, expected_);
    connection.answer(loopback::responseTo(request.verdict));
    if (!loopback::isAnswer(request.verdict) || !server_.isListening())
        return;
    server_.close();
    std::erase_if(connections_, [&connection](const auto& one) { return one.get() != &connection; });
    Q_EMIT answered(request.url);
}

} // namespace quenby
