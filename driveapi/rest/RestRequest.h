// What a query asks on the second road: verb, address and body.
#pragma once

#include "core/Result.h"
#include "driveapi/GTLQuery.h"

namespace quenby {

struct RestRequest {
    QByteArray verb;
    QUrl url;        // with every parameter that is not part of the path, and the API key under "key"
    QByteArray body; // JSON; empty: none
};

// The query below an address, whose own query comes first. The API key may be empty; the query's own goes before it.
//
// Refused with the error that the service itself would give on the first road: a method that the Drive does not have,
// a parameter of the path that is missing or can stand in no path, and media for a method that takes none. A batch
// sends no media, so that they are not looked at there.
enum class RestMedia { sent, ignored };
Result<RestRequest> restRequestForQuery(const GTLQuery& query, const QUrl& base, const QString& APIKey,
                                        RestMedia media);

} // namespace quenby
