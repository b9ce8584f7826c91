// A request and a response as plain values.
#pragma once

#include "http/HeaderFields.h"

#include <QByteArray>
#include <QIODevice>
#include <QUrl>

#include <chrono>
#include <memory>

namespace quenby {

struct URLRequest {
    QUrl url;
    QByteArray httpMethod; // empty counts as GET
    HeaderFields headers;

    // The body: bytes (null for none), or a device that is read as the network asks for it, or neither. A device must
    // be open for reading and have its bytes at hand; it is read from its position at the start of the fetch, and must
    // not be sequential when the request may be sent again (a retry or a redirect seeks back). bodyLength may be -1:
    // the body is then all that the device holds, and goes out chunked when the device cannot tell how much that is.
    QByteArray body;
    std::shared_ptr<QIODevice> bodyStream;
    qint64 bodyLength = -1;

    // How long the transfer may stand still (no byte either way), 0 for ever. Not a limit for the whole transfer.
    std::chrono::milliseconds timeout{std::chrono::seconds(60)};
    // The platform's shared cookies, for connections that have such. The desktop has no shared store and CurlConnection
    // therefore none to use.
    bool shouldHandleCookies = false;
    bool reloadIgnoringLocalCache = false;
    // What a server's 401 that asks for a user and a password is: a challenge; or, where there is no login to give, an
    // answer like any other, with its body.
    bool takesLogin = true;

    URLRequest() = default;
    explicit URLRequest(QUrl requestURL)
        : url(std::move(requestURL)) {}

    bool hasBody() const { return bodyStream || !body.isNull(); }
    // What the server will act on: the X-HTTP-Method-Override field if there is one, else the method.
    QByteArray effectiveMethod() const;
    // Whether that is GET or HEAD, and nothing is sent along.
    bool isReadOnly() const;
};

struct HTTPResponse {
    QUrl url;
    int statusCode = 0;
    HeaderFields headers;

    // The media type without parameters, lower case; empty when the server named none.
    QByteArray mimeType() const;
};

} // namespace quenby
