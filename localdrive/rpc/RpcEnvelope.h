// JSON-RPC 2.0 around RpcMethods: a single call or a batch in, one reply out.
//
// Threads: any.
#pragma once

#include "localdrive/rpc/RpcMethods.h"

#include <QByteArray>

namespace quenby::localdrive {

struct RpcReply {
    int status = 200; // HTTP status; of a single failed call the error's own, 200 for a batch
    QByteArray body;  // compact JSON
};

class RpcEnvelope {
public:
    explicit RpcEnvelope(const RpcMethods& methods)
        : methods_(methods) {}

    // The reply to a request body. A body that is no JSON, or no call, yields an error reply with code -32700 or
    // -32600. A batch's replies come in the order of its calls; each call is a transaction of its own.
    RpcReply answer(const QByteArray& body, const CallContext& context) const;

    // The same for one call that was parsed before, such as the one that announced an upload.
    RpcReply answerCall(const QJsonObject& call, const CallContext& context) const;

private:
    QJsonObject reply(const QJsonValue& call, const CallContext& context) const;

    const RpcMethods& methods_;
};

} // namespace quenby::localdrive
