// One request and its reply under an ordered fault.
#pragma once

#include "localdrive/server/fault/FaultRule.h"
#include "localdrive/server/fault/ShapedStream.h"

#include <functional>

namespace quenby::localdrive {

// What a fault can do to the Drive itself. Threads: any.
class FaultEffects {
public:
    virtual ~FaultEffects() = default;

    virtual void loseUploadSession(const QByteArray& uploadId) = 0;
    // The session goes on under a new id, which is returned; the former is gone. Empty when there is no such session.
    virtual QByteArray renameUploadSession(const QByteArray& uploadId) = 0;
    virtual void expireAccessTokens() = 0;
    virtual void revokeRefreshTokens() = 0;
    virtual void skewClock(std::chrono::seconds skew) = 0;
};

// Threads: the connection's.
class FaultyExchange {
public:
    enum class Work { done, skipped }; // skipped: the request is read to its end, and that is all
    // Has the library read one request from the stream and answer it there. False when the connection is no good any
    // more.
    using Process = std::function<bool(httplib::Stream&, Work)>;

    FaultyExchange(ClientConnection& connection, RequestFacts request, FaultAction action, FaultEffects& effects);

    // True when the connection can take a next request.
    bool run(const Process& process);

private:
    void applyEffects();
    bool sendRewritten(ShapedStream& stream);
    QByteArray changedLocation(const QByteArray& location);

    ClientConnection& connection_;
    const RequestFacts request_;
    const FaultAction action_;
    FaultEffects& effects_;
};

} // namespace quenby::localdrive
