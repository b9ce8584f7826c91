// The functions through which queries, tickets and the service talk to their callers.
#pragma once

#include "core/Error.h"
#include "driveapi/GTLClass.h"

#include <QUrl>

#include <functional>
#include <memory>

namespace quenby {

class GTLServiceTicket;
using GTLServiceTicketPtr = std::shared_ptr<GTLServiceTicket>;

// The outcome of one execution. The object is null after a failure, and when the server has nothing to send.
using GTLCompletionHandler =
    std::function<void(const GTLServiceTicketPtr& ticket, const GTLObjectPtr& object, const MaybeError& error)>;

// Bytes sent and bytes in all, the announcing request's own body included.
using GTLUploadProgressBlock =
    std::function<void(const GTLServiceTicketPtr& ticket, qint64 bytesSent, qint64 bytesTotal)>;

// The address under which an upload can be resumed, also in a later run; empty when it is no longer valid. A secret.
using GTLUploadLocationChangeBlock = std::function<void(const GTLServiceTicketPtr& ticket, const QUrl& location)>;

// One page of a result, or all of it where there are no pages.
using GTLPageBlock = std::function<void(const GTLObjectPtr& page)>;

// The transport's proposal and the error behind it; answers whether to try again.
using GTLRetryBlock =
    std::function<bool(const GTLServiceTicketPtr& ticket, bool suggestedWillRetry, const Error& error)>;

// Takes the place of the network: gives the response, at once or later, from any thread. The first response counts.
using GTLTestResponse = std::function<void(const GTLObjectPtr& object, const MaybeError& error)>;
using GTLTestBlock = std::function<void(const GTLServiceTicketPtr& ticket, const GTLTestResponse& response)>;

} // namespace quenby
