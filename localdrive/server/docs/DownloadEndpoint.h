// Downloads from pages: GET /uc?id=ID leads to an address that is good for this file, this sign-in and a few minutes.
#pragma once

#include "localdrive/server/Authenticator.h"
#include "localdrive/server/http/HttpServer.h"
#include "localdrive/server/web/PageFrame.h"
#include "localdrive/server/web/PageGuard.h"
#include "localdrive/store/DriveStore.h"

namespace quenby::localdrive {

// Threads: any. Addresses are good while the process lives.
class DownloadEndpoint {
public:
    DownloadEndpoint(DriveStore& store, const Authenticator& authenticator, const PageGuard& guard,
                     const PageFrame& frame);

    void addRoutes(HttpServer& server);

private:
    void lead(const httplib::Request& request, httplib::Response& response) const;
    void sendSigned(const httplib::Request& request, httplib::Response& response) const;
    // What the address says beside the name: until when, which file, and the signature.
    QByteArray signedPart(const QString& fileId, qint64 expiry, const httplib::Request& request) const;

    DriveStore& store_;
    const Authenticator& authenticator_;
    const PageGuard& guard_;
    const PageFrame& frame_;
    const QByteArray key_;
};

} // namespace quenby::localdrive
