// Contents for calls of the REST API, below /upload/drive/v2: announced and then sent to a location of their own
// ("resumable"), or, when they are small, in the request itself, with ("multipart") or without ("media") metadata.
#pragma once

#include "localdrive/server/http/HttpServer.h"
#include "localdrive/server/rest/RestCall.h"
#include "localdrive/server/upload/UploadReceiver.h"

namespace quenby::localdrive {

// Threads: any.
class RestUploadEndpoint {
public:
    RestUploadEndpoint(UploadReceiver& receiver, const RpcMethods& methods, BlobStore& blobs,
                       const Authenticator& authenticator)
        : receiver_(receiver)
        , methods_(methods)
        , blobs_(blobs)
        , authenticator_(authenticator) {}

    void addRoutes(HttpServer& server);

private:
    void begin(const httplib::Request& request, httplib::Response& response, const httplib::ContentReader& read);
    void announce(const httplib::Request& request, const RestMethod& method, const QByteArray& body,
                  const Caller& caller, httplib::Response& response);
    RestAnswer takeWhole(const httplib::Request& request, const RestMethod& method, const QByteArray& body,
                         const Caller& caller);

    UploadReceiver& receiver_;
    const RpcMethods& methods_;
    BlobStore& blobs_;
    const Authenticator& authenticator_;
};

} // namespace quenby::localdrive
