// The resumable upload protocol of JSON-RPC: POST /upload/rpc?uploadType=resumable announces, PUT at the location
// carries bytes or asks how many are held.
#pragma once

#include "localdrive/server/Authenticator.h"
#include "localdrive/server/RpcEndpoint.h"
#include "localdrive/server/http/HttpServer.h"
#include "localdrive/server/upload/UploadReceiver.h"

namespace quenby::localdrive {

// Threads: any.
class UploadEndpoint {
public:
    UploadEndpoint(UploadReceiver& receiver, const RpcEndpoint& calls, const Authenticator& authenticator)
        : receiver_(receiver)
        , calls_(calls)
        , authenticator_(authenticator) {}

    void addRoutes(HttpServer& server);

private:
    void announce(const httplib::Request& request, httplib::Response& response);

    UploadReceiver& receiver_;
    const RpcEndpoint& calls_;
    const Authenticator& authenticator_;
};

} // namespace quenby::localdrive
