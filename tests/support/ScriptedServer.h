// An HTTP/1.1 server on the loopback interface that answers as a test tells it to, faults included, and records what
// it was asked. It runs on the event loop of the thread that made it.
#pragma once

#include "http/HeaderFields.h"

#include <QByteArray>
#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace quenby::testing {

// A request as it arrived. A request whose connection broke off before its end is recorded as incomplete, with the part
// of the body that came.
struct ReceivedRequest {
    QByteArray method;
    QByteArray target;
    HeaderFields headers;
    QByteArray body;
    bool isComplete = false;
    int connection = 0; // which of the server's connections, from 1

    QByteArray header(QByteArrayView name) const { return headers.value(name); }
};

// What goes out for one request, and what becomes of the connection then.
struct Answer {
    enum class Then { keepOpen, close, reset, stall }; // stall: nothing more is read or written

    QByteArray bytes;
    Then then = Then::keepOpen;

    static Answer with(int status, const QByteArray& body = {}, const std::vector<HeaderFields::Field>& headers = {});
    static Answer raw(const QByteArray& bytes, Then then = Then::keepOpen) { return {bytes, then}; }
    static Answer nothing(Then then) { return {{}, then}; }
    // Only the first so many bytes of it.
    Answer cutAt(qsizetype length, Then andThen) const { return {bytes.first(length), andThen}; }
};

class ScriptedServer {
public:
    using Handler = std::function<Answer(const ReceivedRequest& request)>;

    // Listens at once. Takes over a server that is not yet listening, for example one that speaks TLS.
    explicit ScriptedServer(std::unique_ptr<QTcpServer> server = std::make_unique<QTcpServer>(),
                            const QHostAddress& address = QHostAddress::LocalHost);
    ~ScriptedServer();

    QUrl url(const QString& path = QStringLiteral("/")) const;
    void setScheme(const QString& scheme) { scheme_ = scheme; }

    // Answers are taken in turn; when they are used up the handler is asked, which at the start answers 404.
    void enqueue(const Answer& answer) { answers_.push_back(answer); }
    void setHandler(Handler handler) { handler_ = std::move(handler); }
    // Answers as soon as the head of a request is there, and goes on reading its body.
    void setAnswersEarly(bool early) { answersEarly_ = early; }
    // Reads no more than so many bytes every few milliseconds; 0 reads all there is.
    void setReadPiece(qint64 bytes) { readPiece_ = bytes; }
    // Keeps requests' bodies out of memory; only their lengths are then told, by receivedBodyBytes().
    void setDiscardsBodies(bool discards) { discardsBodies_ = discards; }

    const std::vector<ReceivedRequest>& requests() const { return requests_; }
    int connectionCount() const { return connectionCount_; }
    int openConnectionCount() const { return static_cast<int>(connections_.size()); }
    qint64 receivedBodyBytes() const { return receivedBodyBytes_; }
    void closeAllConnections();

private:
    struct Connection;

    void accept();
    void read(Connection& connection);
    void consume(Connection& connection);
    bool consumeHead(Connection& connection);
    bool consumeBody(Connection& connection);
    bool consumeChunk(Connection& connection);
    void takeBody(Connection& connection, qsizetype length);
    void answer(Connection& connection);
    void forget(QTcpSocket* socket);

    std::unique_ptr<QTcpServer> server_;
    QString scheme_ = QStringLiteral("http");
    std::deque<Answer> answers_;
    Handler handler_;
    bool answersEarly_ = false;
    bool discardsBodies_ = false;
    qint64 readPiece_ = 0;
    std::map<QTcpSocket*, std::unique_ptr<Connection>> connections_;
    std::vector<ReceivedRequest> requests_;
    int connectionCount_ = 0;
    qint64 receivedBodyBytes_ = 0;
};

} // namespace quenby::testing
