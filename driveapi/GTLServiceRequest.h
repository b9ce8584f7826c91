// The HTTP request of a call: address, headers and time-out; everything but the body.
#pragma once

#include "driveapi/GTLServiceCall.h"
#include "http/URLRequest.h"

namespace quenby {

// A request with what every request of the service has. httpMethod may be empty, which counts as GET.
URLRequest requestForURL(const GTLServiceSettings& settings, const QUrl& url, const QByteArray& httpMethod,
                         const QByteArray& ETag);

// The request of a call, with the headers of JSON-RPC or REST, then the service's additional headers, then the call's.
URLRequest requestForCall(const GTLServiceSettings& settings, const QString& APIKey, const GTLServiceCall& call);

// "User-Agent": the settings' own, or the application's, with the client library and the system added.
QByteArray requestUserAgent(const GTLServiceSettings& settings);

} // namespace quenby
