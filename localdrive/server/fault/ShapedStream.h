// A connection between the library and the client on which stalls, drops and resets happen at exact bytes.
#pragma once

#include "localdrive/server/fault/FaultRule.h"
#include "localdrive/server/http/ClientConnection.h"

#include <vector>

namespace quenby::localdrive {

// Threads: the connection's.
class ShapedStream final : public httplib::Stream {
public:
    ShapedStream(ClientConnection& connection, const RequestFacts& request, const FaultAction& action);

    // Sends to the client, even when replies are held back. False when the connection has ended, by fault or not.
    bool send(QByteArrayView bytes);

    // What the library wrote as its reply, when the action rewrites replies; it has not been sent.
    const QByteArray& heldBack() const { return heldBack_; }

    // The faults that strike before anything is read. False when the connection has ended.
    bool begin();

    bool is_readable() const override { return connection_.is_readable(); }
    bool is_writable() const override { return connection_.is_writable(); }
    ssize_t read(char* target, size_t size) override;
    ssize_t write(const char* bytes, size_t size) override;
    using httplib::Stream::write;
    void get_remote_ip_and_port(std::string& ip, int& port) const override;
    void get_local_ip_and_port(std::string& ip, int& port) const override;
    socket_t socket() const override { return connection_.socket(); }

private:
    enum class Kind { stall, drop, reset };
    struct Cut {
        FaultPoint point;
        Kind kind;
        std::chrono::milliseconds duration;
    };

    // Bytes until the phase's next cut.
    qint64 untilCut(FaultPoint::Phase phase, qint64 position) const;
    // Lets everything strike that is due at the position. False when the connection has ended.
    bool strike(FaultPoint::Phase phase, qint64 position);
    bool sendPiece(QByteArrayView bytes);

    ClientConnection& connection_;
    const qint64 headLength_;
    const bool holdsBack_;
    const std::optional<qint64> bytesPerSecond_;
    std::vector<Cut> cuts_;
    qint64 read_ = 0; // with the head
    qint64 sent_ = 0;
    QByteArray heldBack_;
};

} // namespace quenby::localdrive
