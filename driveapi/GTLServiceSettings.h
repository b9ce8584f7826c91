// What a service puts into every request. Read when a request is made, so a change counts from the next one on.
#pragma once

#include "driveapi/GTLServiceTypes.h"
#include "driveapi/GTLUtilities.h"
#include "http/GTMHTTPFetcher.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace quenby {

inline constexpr quint64 defaultServiceUploadChunkSize = std::numeric_limits<quint64>::max(); // no chunks
inline constexpr quint64 minimumServiceUploadChunkSize = 50000;                               // bytes

struct GTLServiceSettings {
    QUrl rpcURL;
    QUrl rpcUploadURL;
    QString apiVersion;
    QString userAgent; // empty: composed from the application's name and version
    QString userAgentAddition;
    GTLStringMap urlQueryParameters;
    GTLStringMap additionalHTTPHeaders;
    std::optional<CookieStorageMethod> cookieStorageMethod; // nothing: the fetcher service's own
    bool allowInsecureQueries = false;                      // to this computer, and over plain http
    bool isRESTDataWrapperRequired = false;                 // the object of a REST reply is its "data" member
    quint64 serviceUploadChunkSize = defaultServiceUploadChunkSize;
    GTLTestBlock testBlock; // for queries that have none of their own

    quint64 usedUploadChunkSize() const { return std::max(serviceUploadChunkSize, minimumServiceUploadChunkSize); }
};

} // namespace quenby
