// Native documents as files: the export links, below /docs/ and at the addresses that they once had.
#pragma once

#include "localdrive/server/Authenticator.h"
#include "localdrive/server/http/HttpServer.h"
#include "localdrive/store/DriveStore.h"

namespace quenby::localdrive {

// Threads: any.
class ExportEndpoint {
public:
    ExportEndpoint(DriveStore& store, const Authenticator& authenticator)
        : store_(store)
        , authenticator_(authenticator) {}

    void addRoutes(HttpServer& server);

private:
    void sendExport(const QString& id, const QString& format, const httplib::Request& request,
                    httplib::Response& response) const;

    DriveStore& store_;
    const Authenticator& authenticator_;
};

} // namespace quenby::localdrive
