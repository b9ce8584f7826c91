// One client's TCP connection, plain or with TLS, as the HTTP library reads and writes it.
//
// It reads in large pieces, so that an upload costs few system calls; it lets the next request be looked at before the
// library takes it; and it can be ended in the two ways in which connections end: with FIN or with RST.
#pragma once

#include "localdrive/server/http/StopEvent.h"

#include <QByteArray>
#include <QByteArrayView>

#include <chrono>
#include <memory>

#include <httplib.h>

namespace quenby::localdrive {

// Threads: one at a time. Every wait ends early when the server stops.
class ClientConnection final : public httplib::Stream {
public:
    // Owns the socket from here on.
    ClientConnection(socket_t socket, const StopEvent& stop);
    ~ClientConnection() override;
    ClientConnection(const ClientConnection&) = delete;
    ClientConnection& operator=(const ClientConnection&) = delete;

    // The server's half of the TLS handshake.
    bool acceptTls(SSL_CTX* context);

    // True when the next request has begun to arrive; false when the client went away, nothing came in time or the
    // server stops.
    bool waitForRequest(std::chrono::milliseconds timeout);

    // What has arrived and was not read yet.
    QByteArrayView buffered() const;
    // Waits for more bytes behind buffered(). False at the end of the stream, an error or a time-out.
    bool bufferMore();

    // False when the server stops or the client goes away meanwhile.
    bool pause(std::chrono::milliseconds duration);

    // FIN: everything written before arrives. What the client still sends is read and thrown away for a moment, since
    // closing with unread bytes would turn the FIN into a RST.
    void drop();
    void reset(); // RST: unsent bytes are lost
    bool isOpen() const { return socket_ >= 0; }

    bool is_readable() const override;
    bool is_writable() const override;
    // 0 at the end of the stream, -1 on an error or a time-out.
    ssize_t read(char* target, size_t size) override;
    // Everything or -1.
    ssize_t write(const char* bytes, size_t size) override;
    using httplib::Stream::write;
    void get_remote_ip_and_port(std::string& ip, int& port) const override;
    void get_local_ip_and_port(std::string& ip, int& port) const override;
    socket_t socket() const override { return socket_; }

private:
    struct TlsDeleter {
        void operator()(SSL* session) const { SSL_free(session); }
    };

    bool waitFor(short events, std::chrono::milliseconds timeout) const;
    ssize_t receive(char* target, size_t size);
    ssize_t send(const char* bytes, size_t size);
    void endWriting();
    void close();

    socket_t socket_; // -1 once it is closed
    const StopEvent& stop_;
    std::unique_ptr<SSL, TlsDeleter> tls_;
    QByteArray buffer_;
    qsizetype readPosition_ = 0; // buffer_ before it has been read
};

} // namespace quenby::localdrive
