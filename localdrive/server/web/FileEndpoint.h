// Contents and pictures: GET /drive/v2/files/ID, /thumbnails/ID, /icons/NAME.png and /faces/NUMBER.png.
#pragma once

#include "localdrive/rpc/RpcMethods.h"
#include "localdrive/server/Authenticator.h"
#include "localdrive/server/http/HttpServer.h"

namespace quenby::localdrive {

// Threads: any.
class FileEndpoint {
public:
    FileEndpoint(DriveStore& store, const RpcMethods& methods, const Authenticator& authenticator)
        : store_(store)
        , methods_(methods)
        , authenticator_(authenticator) {}

    void addRoutes(HttpServer& server);

private:
    void file(const httplib::Request& request, httplib::Response& response);
    void thumbnail(const httplib::Request& request, httplib::Response& response);
    void sendResource(const Caller& caller, const QString& id, const httplib::Request& request,
                      httplib::Response& response) const;

    DriveStore& store_;
    const RpcMethods& methods_;
    const Authenticator& authenticator_;
};

} // namespace quenby::localdrive
