// Calls below /drive/v2, and the contents of files there.
#pragma once

#include "localdrive/server/Authenticator.h"
#include "localdrive/server/http/HttpServer.h"
#include "localdrive/server/rest/RestCall.h"
#include "localdrive/server/web/FileEndpoint.h"

namespace quenby::localdrive {

// Threads: any.
class RestEndpoint {
public:
    RestEndpoint(const RpcMethods& methods, const Authenticator& authenticator, FileEndpoint& contents)
        : methods_(methods)
        , authenticator_(authenticator)
        , contents_(contents) {}

    void addRoutes(HttpServer& server);

private:
    void answer(const httplib::Request& request, httplib::Response& response);

    const RpcMethods& methods_;
    const Authenticator& authenticator_;
    FileEndpoint& contents_;
};

} // namespace quenby::localdrive
