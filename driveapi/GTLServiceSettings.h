// What a service puts into every request. Read when a request is made, so a change counts from the next one on.
#pragma once

#include "core/Endpoints.h"
#include "driveapi/GTLServiceTypes.h"
#include "driveapi/GTLUtilities.h"
#include "http/GTMHTTPFetcher.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace quenby {

inline constexpr quint64 defaultServiceUploadChunkSize = std::numeric_limits<quint64>::max(); // no chunks
inline constexpr quint64 minimumServiceUploadChunkSize = 50000;                               // bytes
inline constexpr quint64 restUploadChunkUnit = 262144; // bytes; on the second road all chunks but the last are so many

struct GTLServiceSettings {
    // A service that has lost the first road is called on the second from then on, when there are addresses for it.
    APIRoad road = APIRoad::rpc;
    QUrl rpcURL;
    QUrl rpcUploadURL;
    QUrl restURL;       // with the query that every call has; empty: the second road is closed
    QUrl restUploadURL; // with the query that every announcement has
    QUrl restBatchURL;
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

    quint64 usedUploadChunkSize() const {
        if (road == APIRoad::rpc)
            return std::max(serviceUploadChunkSize, minimumServiceUploadChunkSize);
        return std::max(serviceUploadChunkSize / restUploadChunkUnit, quint64(1)) * restUploadChunkUnit;
    }
};

} // namespace quenby
