// The resumable upload protocol: POST /upload/rpc?uploadType=resumable announces, PUT at the location carries bytes or
// asks how many are held.
#pragma once

#include "localdrive/server/Authenticator.h"
#include "localdrive/server/RpcEndpoint.h"
#include "localdrive/server/http/HttpServer.h"
#include "localdrive/server/upload/ContentRange.h"
#include "localdrive/server/upload/UploadSessions.h"

namespace quenby::localdrive {

// Threads: any.
class UploadEndpoint {
public:
    UploadEndpoint(UploadSessions& sessions, const RpcMethods& methods, const RpcEndpoint& calls,
                   const Authenticator& authenticator, Statistics& statistics);

    void addRoutes(HttpServer& server);

private:
    void announce(const httplib::Request& request, httplib::Response& response);
    void put(const httplib::Request& request, httplib::Response& response, const httplib::ContentReader& read);
    Result<ContentRange> rangeOf(const httplib::Request& request, const UploadFacts& facts) const;
    Result<void> receive(UploadSession& session, const ContentRange& range, const httplib::ContentReader& read);
    void reportHeld(UploadSession& session, httplib::Response& response) const;
    void finish(const QByteArray& uploadId, UploadSession& session, httplib::Response& response);

    UploadSessions& sessions_;
    const RpcMethods& methods_;
    const RpcEndpoint& calls_;
    const Authenticator& authenticator_;
    Statistics& statistics_;
};

} // namespace quenby::localdrive
