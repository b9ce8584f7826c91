// Waits on a port of this computer for the one answer to a sign-in, which the browser brings (RFC 8252, section 7.3).
// Whoever else asks there gets an error page and changes nothing. After the answer the port is closed.
//
// Threads: one, which runs an event loop; nothing blocks. Memory and connections are bounded, whatever comes.
// Destroying it closes the port and every connection; an end page that has been answered with is with the system by
// then.
#pragma once

#include "core/Error.h"
#include "core/TimeSource.h"
#include "oauth2/browser/LoopbackRequest.h"

#include <QObject>
#include <QTcpServer>

#include <deque>
#include <memory>

namespace quenby {

class LoopbackListener final : public QObject {
    Q_OBJECT

public:
    // Bytes. A browser adds the cookies of every server that was ever at this computer's address, at any port.
    static constexpr qsizetype maxHeadSize = qsizetype{32} * 1024;
    // At once. One more takes the place of the oldest: who holds connections open keeps nobody out.
    static constexpr size_t maxConnections = 16;
    // From accepting a connection until its end.
    static constexpr std::chrono::seconds connectionTimeout{10};

    explicit LoopbackListener(std::shared_ptr<TimeSource> timeSource);
    ~LoopbackListener() override;

    // On 127.0.0.1 alone, at a port that the system chooses; the answer will have the state. errorDomain::posix when
    // that is not possible.
    MaybeError listen(const QString& state);
    bool isListening() const { return server_.isListening(); }
    // Empty before listen().
    const QString& redirectURI() const { return redirectURI_; }

Q_SIGNALS:
    // Once. The address is the redirect URI with the code or the error: a secret. The listener must not be destroyed
    // from inside.
    void answered(const QUrl& address);

private:
    class Connection;

    void accept();
    void forget(Connection* connection);
    void headArrived(Connection& connection, const QByteArray& head);

    const std::shared_ptr<TimeSource> timeSource_;
    QTcpServer server_;
    loopback::Expected expected_;
    QString redirectURI_;
    std::deque<std::unique_ptr<Connection>> connections_; // the oldest first
};

} // namespace quenby
