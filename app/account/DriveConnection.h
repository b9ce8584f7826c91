// What it takes to talk to one Drive: its service, the fetchers below it, and authorizers that fit.
// Threads: the main thread.
#pragma once

#include "app/account/ClientIdentity.h"
#include "core/DriveAccess.h"
#include "core/Endpoints.h"
#include "core/TimeSource.h"

#include <memory>
#include <optional>

namespace quenby {

class FetchLogger;
class GTLServiceDrive;
class GTMHTTPFetcherService;
class GTMOAuth2Authentication;
class ProxySource;

class DriveConnection {
public:
    // The logger may be null. Without a source of proxies, every connection follows the environment.
    DriveConnection(Endpoints endpoints, ClientIdentity identity, std::shared_ptr<TimeSource> timeSource,
                    std::shared_ptr<FetchLogger> logger, const std::shared_ptr<ProxySource>& proxySource = nullptr);
    ~DriveConnection();

    const Endpoints& endpoints() const { return endpoints_; }
    // Of the authorizers to come; each keeps the one that it was made with to its end.
    const ClientIdentity& identity() const { return identity_; }
    void setIdentity(ClientIdentity identity) { identity_ = std::move(identity); }
    // What they ask for; everything at first. A sign-in keeps what it was given.
    DriveAccess access() const { return access_; }
    void setAccess(DriveAccess access) { access_ = access; }
    // What a sign-in was given, by the scope that came with it; absent: nothing of the Drive.
    std::optional<DriveAccess> accessIn(const QString& scope) const;
    const std::shared_ptr<TimeSource>& timeSource() const { return timeSource_; }
    // Follows collections through all pages, and retries.
    const std::shared_ptr<GTLServiceDrive>& driveService() const { return driveService_; }
    // For tokens and sign-in pages: they don't stand in line with the Drive's own requests.
    const std::shared_ptr<GTMHTTPFetcherService>& accountFetcherService() const { return accountFetcherService_; }

    // For thumbnails and icons, from whichever hosts have them: slow ones keep no place that the Drive's calls wait
    // for.
    const std::shared_ptr<GTMHTTPFetcherService>& pictureFetcherService() const { return pictureFetcherService_; }

    // Without any token yet.
    std::shared_ptr<GTMOAuth2Authentication> makeAuthentication() const;
    // Gives an authorizer that was made elsewhere what this Drive asks of it.
    void prepare(GTMOAuth2Authentication& authentication) const;

private:
    std::shared_ptr<GTMHTTPFetcherService> makeFetcherService(const std::shared_ptr<FetchLogger>& logger,
                                                              const std::shared_ptr<ProxySource>& proxySource) const;

    const Endpoints endpoints_;
    ClientIdentity identity_;
    DriveAccess access_ = DriveAccess::everything;
    const std::shared_ptr<TimeSource> timeSource_;
    const std::shared_ptr<GTMHTTPFetcherService> accountFetcherService_;
    const std::shared_ptr<GTMHTTPFetcherService> pictureFetcherService_;
    const std::shared_ptr<GTLServiceDrive> driveService_;
};

} // namespace quenby
