// POST /rpc, and calls without a content at /upload/rpc.
#pragma once

#include "localdrive/rpc/RpcEnvelope.h"
#include "localdrive/server/Authenticator.h"
#include "localdrive/server/http/HttpServer.h"

namespace quenby::localdrive {

// Threads: any.
class RpcEndpoint {
public:
    RpcEndpoint(const RpcMethods& methods, const Authenticator& authenticator)
        : envelope_(methods)
        , authenticator_(authenticator) {}

    void addRoutes(HttpServer& server);
    void answer(const httplib::Request& request, httplib::Response& response) const;

private:
    const RpcEnvelope envelope_;
    const Authenticator& authenticator_;
};

} // namespace quenby::localdrive
