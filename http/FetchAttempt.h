// What exists only while one attempt of a fetch is made: from its authorization to its end, or to the end of the delay
// that follows it.
#pragma once

#include "core/CompletionGate.h"
#include "core/TimeSource.h"
#include "http/DownloadFile.h"
#include "http/URLConnection.h"

#include <QDateTime>

#include <memory>

namespace quenby {

struct FetchAttempt {
    CompletionTicket authorization;
    URLRequest wireRequest; // the fetcher's request with cookies and conditions
    QUrl originalURL;       // of that, before redirects
    std::unique_ptr<DownloadFile> downloadFile;
    std::unique_ptr<URLConnection> connection;
    MaybeError connectionError; // found in a connection's callback, in place of what the connection will say
    QDateTime date;
    std::chrono::milliseconds time{0}; // the same moment on the clock that only goes forward
    std::unique_ptr<Timer> retryTimer;
};

} // namespace quenby
