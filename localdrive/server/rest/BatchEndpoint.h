// POST /batch/drive/v2 and /batch: up to 100 calls of the REST API in one request. The answers come in another order
// than the calls, as they may: only their Content-ID says which is whose.
#pragma once

#include "localdrive/server/Authenticator.h"
#include "localdrive/server/http/HttpServer.h"
#include "localdrive/server/rest/BatchBody.h"
#include "localdrive/server/rest/RestCall.h"

namespace quenby::localdrive {

// Threads: any.
class BatchEndpoint {
public:
    BatchEndpoint(const RpcMethods& methods, const Authenticator& authenticator)
        : methods_(methods)
        , authenticator_(authenticator) {}

    void addRoutes(HttpServer& server);

private:
    void answer(const httplib::Request& request, httplib::Response& response) const;
    BatchAnswer answerOne(const BatchCall& call, const std::optional<Caller>& caller) const;

    const RpcMethods& methods_;
    const Authenticator& authenticator_;
};

} // namespace quenby::localdrive
