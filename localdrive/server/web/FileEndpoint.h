// Contents and pictures: GET /drive/v2/files/ID?alt=media, /thumbnails/ID, /icons/NAME.png and /faces/NUMBER.png.
#pragma once

#include "localdrive/server/Authenticator.h"
#include "localdrive/server/http/HttpServer.h"
#include "localdrive/store/DriveStore.h"

namespace quenby::localdrive {

// Threads: any.
class FileEndpoint {
public:
    FileEndpoint(DriveStore& store, const Authenticator& authenticator)
        : store_(store)
        , authenticator_(authenticator) {}

    void addRoutes(HttpServer& server);
    // Answers the request with the file's content. The address is the REST API's, which knows what is asked for there.
    void content(const QString& fileId, const httplib::Request& request, httplib::Response& response);

private:
    void thumbnail(const httplib::Request& request, httplib::Response& response);

    DriveStore& store_;
    const Authenticator& authenticator_;
};

} // namespace quenby::localdrive
