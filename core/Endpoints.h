// Every host and path of the service, in one value. There are two: the provider's and the local Drive's.
#pragma once

#include "core/WebPlaces.h"

#include <QString>
#include <QUrl>

namespace quenby {

struct Endpoints {
    QUrl rpcURL;       // JSON-RPC calls, without query
    QUrl rpcUploadURL; // JSON-RPC calls that announce an upload, without query
    QUrl authorizationURL;
    QUrl tokenURL;
    QUrl revocationURL;
    QUrl userInfoURL;
    QUrl downloadBaseURL;     // files' contents are served below it
    QUrl webURL;              // the Drive's web application
    QUrl sharingPageURL;      // its page on which one file is shared, without query
    WebPlaces webPlaces;      // which pages belong to it
    QString keychainItemName; // under which the sign-in is kept
    QString emailScope;
    QString profileScope;
    QString driveScope;         // full access to the Drive
    QString providerDomain;     // a host in it is the provider's own: its sign-in can tell who signed in
    QString jwtBearerGrantType; // RFC 7523, section 2.1
    QUrl clientConsoleURL;      // where people register clients of their own; empty where there is no such place
    bool isLocal = false;       // plain http to this computer is allowed, also for authorized requests

    static Endpoints provider();
    // The local Drive at an address such as http://127.0.0.1:4711.
    static Endpoints localDrive(const QUrl& base);
};

} // namespace quenby
