// Who is told of every attempt that a fetcher has made. The fetch log implements it; without one nothing is recorded.
#pragma once

#include "core/Error.h"
#include "http/URLRequest.h"

#include <QDateTime>

#include <chrono>
#include <memory>
#include <optional>

namespace quenby {

// One attempt of a fetch: a retried fetch makes several records. A plain value, cheap to copy (bytes are shared).
struct FetchRecord {
    QString comment;
    QDateTime started; // UTC
    std::chrono::milliseconds duration{0};
    QUrl originalURL;         // before redirects
    URLRequest request;       // as it was sent last
    bool isURLSecret = false; // the address must not be written anywhere
    bool willRetry = false;   // another attempt follows
    std::optional<HTTPResponse> response;
    QByteArray responseBody;   // empty when it went into a file
    qint64 responseLength = 0; // bytes received, into a file or not
    MaybeError error;
};

// Threads: both operations are called on the fetcher's thread, by fetchers of any thread, and return at once.
class FetchLogger {
public:
    virtual ~FetchLogger() = default;

    // The stream to send in place of this one: the same bytes, errors and length, its beginning noted on the way. A
    // stream that came from here before comes back as it is, its note empty again.
    virtual std::shared_ptr<QIODevice> willSendStream(const std::shared_ptr<QIODevice>& stream) = 0;
    virtual void attemptDidEnd(const FetchRecord& record) = 0;
};

} // namespace quenby
