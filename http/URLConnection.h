// One exchange with a server, as the fetcher sees it. The real one is CurlConnection; tests have their own.
//
// A connection belongs to the thread that made it and calls its client on that thread, through the event loop and
// never from inside start(), in this order: any number of redirects and challenges; upload progress; the response;
// its data pieces; then exactly one of completion and failure. After cancel() nothing is called. It never follows a
// redirect, answers a challenge or stores a cookie by itself, and never repeats a request that may change something.
// A client may destroy the connection from inside any call, but must not run a nested event loop there.
#pragma once

#include "core/Error.h"
#include "http/URLRequest.h"

#include <QByteArrayView>
#include <QMetaType>

#include <functional>
#include <memory>
#include <optional>

namespace quenby {

struct Credential {
    QString user;
    QString password;

    bool isEmpty() const { return user.isEmpty(); }
};

// A 401 or 407 whose WWW-Authenticate or Proxy-Authenticate names a scheme that takes a user and a password (Basic,
// Digest). Bearer challenges are no business of the connection: they arrive as plain 401 responses.
struct AuthenticationChallenge {
    QString host;
    QString realm;
    bool isProxy = false;
    int previousFailureCount = 0;
};

class URLConnectionClient {
public:
    // What to send instead of the redirected request, which comes with its address, method and body but without header
    // fields; or nothing to take the redirect's own response.
    virtual std::optional<URLRequest> connectionWillSendRequest(const URLRequest& redirected,
                                                                const HTTPResponse& redirectResponse) = 0;
    // The credential to try, or nothing to give up; the connection then fails.
    virtual std::optional<Credential> connectionDidReceiveChallenge(const AuthenticationChallenge& challenge) = 0;
    // Bytes since the last call, bytes in all, bytes expected (-1 when not known).
    virtual void connectionDidSendBodyData(qint64 bytes, qint64 totalBytes, qint64 totalBytesExpected) = 0;
    virtual void connectionDidReceiveResponse(const HTTPResponse& response) = 0;
    // The view ends with the call. False fails the connection: the data could not be taken.
    virtual bool connectionDidReceiveData(QByteArrayView data) = 0;
    virtual void connectionDidFinishLoading() = 0;
    virtual void connectionDidFailWithError(const Error& error) = 0;

protected:
    ~URLConnectionClient() = default;
};

class URLConnection {
public:
    virtual ~URLConnection() = default; // cancels
    virtual void start() = 0;
    virtual void cancel() = 0;
    // How fast the body may go out, in bytes per second; 0: no limit. At any time. Only real ones have a speed.
    virtual void setMaxSendSpeed(qint64) {}
};

// Makes a connection for a request, not yet started; nullptr when the request cannot be sent at all. The client must
// outlive the connection.
using URLConnectionFactory = std::function<std::unique_ptr<URLConnection>(const URLRequest&, URLConnectionClient&)>;

} // namespace quenby

Q_DECLARE_METATYPE(quenby::AuthenticationChallenge)
