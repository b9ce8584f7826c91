// Every host and path of the service, in one value. There are two: the provider's and the local Drive's.
#pragma once

#include "core/WebPlaces.h"

#include <QString>
#include <QUrl>

namespace quenby {

// The two ways in which the service is spoken to. Every method can be called on both.
enum class APIRoad {
    rpc,  // JSON-RPC 2.0, one address for all calls
    rest, // resources below one address, with the verbs of HTTP
};

// Where the user signs in.
enum class SignInPlace {
    window,  // in a web view of our own
    browser, // in the system's browser, which answers to a port of this computer (RFC 8252, section 7.3)
};

struct Endpoints {
    APIRoad road = APIRoad::rpc; // the one to begin with: a service that has lost the first is called on the second
    QUrl rpcURL;                 // JSON-RPC calls, without query
    QUrl rpcUploadURL;           // JSON-RPC calls that announce an upload, without query
    QUrl restURL;                // resources, without a slash at the end
    QUrl restUploadURL;          // the same, for requests that announce an upload
    QUrl restBatchURL;           // several calls in one request
    SignInPlace signInPlace = SignInPlace::window;
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
    QString driveFileScope;     // access to the files that this program made, and no others
    QString providerDomain;     // a host in it is the provider's own: its sign-in can tell who signed in
    QString jwtBearerGrantType; // RFC 7523, section 2.1
    QUrl clientConsoleURL;      // where people register clients of their own; empty where there is no such place
    bool isLocal = false;       // plain http to this computer is allowed, also for authorized requests

    // Whether people may bring a client of their own, and choose what a sign-in gives access to.
    bool takesOwnClients() const { return !clientConsoleURL.isEmpty(); }

    static Endpoints provider();
    // The local Drive at an address such as http://127.0.0.1:4711.
    static Endpoints localDrive(const QUrl& base);
};

} // namespace quenby
