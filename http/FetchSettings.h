// What a service gives to every fetcher that it makes. Fetchers share it and copy it on writing (QSharedDataPointer),
// so that a fetcher which changes nothing carries a pointer.
#pragma once

#include "core/TimeSource.h"
#include "http/FetchLogger.h"
#include "http/URLConnection.h"

#include <QSharedData>
#include <QSharedDataPointer>
#include <QStringList>

#include <memory>
#include <optional>

namespace quenby {

class GTMCookieStorage;
class GTMHTTPFetchHistory;

// Which cookies a fetcher sends and keeps. Any other number means none.
enum class CookieStorageMethod : int { fetcherStatic = 0, fetchHistory = 1, system = 2, none = -1 };

struct FetchSettings : QSharedData {
    std::shared_ptr<TimeSource> timeSource = makeSystemTimeSource();
    URLConnectionFactory connectionClass; // none: CurlConnection::factory()
    std::shared_ptr<FetchLogger> logger;
    std::shared_ptr<GTMHTTPFetchHistory> fetchHistory;
    CookieStorageMethod cookieStorageMethod = CookieStorageMethod::fetcherStatic;
    bool allowLocalhostRequest = false;
    QStringList allowedInsecureSchemes;
    std::optional<Credential> credential;
    std::optional<Credential> proxyCredential;
    QObject* delegateQueue = nullptr;
};

} // namespace quenby
