// HTTP by hand over a plain blocking socket: what goes over the wire is exactly what the test wrote, and how the
// connection ended can be told.
#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QUrl>

namespace quenby::testing {

struct RawReply {
    int status = 0; // 0: no complete head arrived
    QList<QPair<QByteArray, QByteArray>> headers;
    QByteArray body;  // as far as it arrived
    QByteArray bytes; // everything, with the head

    QByteArray header(QByteArrayView name) const;
    bool isComplete() const;
};

enum class Ending { none, fin, rst, timeout };

// One connection. Threads: one at a time. Every wait ends with Ending::timeout after 30 seconds.
class RawHttp {
public:
    explicit RawHttp(const QUrl& server);
    ~RawHttp();
    RawHttp(const RawHttp&) = delete;
    RawHttp& operator=(const RawHttp&) = delete;

    bool isConnected() const { return socket_ >= 0; }

    // False when the connection broke before everything was written.
    bool send(const QByteArray& bytes);
    // The next reply: until its announced body is there or the connection ends. Bytes behind it are kept.
    RawReply readReply();
    // What has arrived by now; waits for nothing.
    QByteArray readAvailable();
    // Reads until the server ends the connection.
    QByteArray readToEnd();
    // How the connection has ended, as far as reads have seen.
    Ending ending() const { return ending_; }
    // True when there is something to read, or the end, within so many milliseconds.
    bool hasSomethingToRead(int milliseconds) const;
    void close();

    // "METHOD TARGET HTTP/1.1" with Host, Content-Length and the further header lines, then the body.
    static QByteArray request(const QByteArray& method, const QByteArray& target, const QList<QByteArray>& headers = {},
                              const QByteArray& body = {});
    // One request on a connection of its own.
    static RawReply exchange(const QUrl& server, const QByteArray& request);

private:
    bool readMore();

    int socket_ = -1;
    QByteArray received_;
    Ending ending_ = Ending::none;
};

} // namespace quenby::testing
