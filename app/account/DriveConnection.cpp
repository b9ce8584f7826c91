#include "app/account/DriveConnection.h"

#include "driveapi/GTLServiceDrive.h"
#include "http/CurlConnection.h"
#include "http/GTMHTTPFetcherService.h"
#include "oauth2/GTMOAuth2Authentication.h"
#include "oauth2/GTMOAuth2SignIn.h"

#include <QStringList>

namespace quenby {
namespace {

// The fetchers' own retries stay short; whoever has more patience takes up the matter again.
constexpr double maxRetryInterval = 30; // seconds

} // namespace

DriveConnection::DriveConnection(Endpoints endpoints, ClientIdentity identity, std::shared_ptr<TimeSource> timeSource,
                                 std::shared_ptr<FetchLogger> logger, const std::shared_ptr<ProxySource>& proxySource)
    : endpoints_(std::move(endpoints))
    , identity_(std::move(identity))
    , timeSource_(std::move(timeSource))
    , accountFetcherService_(makeFetcherService(logger, proxySource))
    , pictureFetcherService_(makeFetcherService(logger, proxySource))
    , driveService_(std::make_shared<GTLServiceDrive>(endpoints_, makeFetcherService(logger, proxySource))) {
    driveService_->ticketSettings().shouldFetchNextPages = true;
    driveService_->ticketSettings().retryEnabled = true;
    driveService_->ticketSettings().maxRetryInterval = maxRetryInterval;
}

DriveConnection::~DriveConnection() = default;

std::shared_ptr<GTMHTTPFetcherService>
DriveConnection::makeFetcherService(const std::shared_ptr<FetchLogger>& logger,
                                    const std::shared_ptr<ProxySource>& proxySource) const {
    const auto service = GTMHTTPFetcherService::create(timeSource_);
    service->setAllowLocalhostRequest(endpoints_.isLocal);
    service->setLogger(logger);
    if (proxySource)
        service->setConnectionClass(CurlConnection::factory(proxySource));
    return service;
}

std::optional<DriveAccess> DriveConnection::accessIn(const QString& scope) const {
    const QStringList granted = scope.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (granted.contains(endpoints_.driveScope))
        return DriveAccess::everything;
    if (granted.contains(endpoints_.driveFileScope))
        return DriveAccess::ownFiles;
    return std::nullopt;
}

std::shared_ptr<GTMOAuth2Authentication> DriveConnection::makeAuthentication() const {
    const QString& scope = access_ == DriveAccess::ownFiles ? endpoints_.driveFileScope : endpoints_.driveScope;
    const auto authentication = GTMOAuth2SignIn::standardGoogleAuthenticationForScope(
        scope, identity_.clientID, identity_.clientSecret, endpoints_, timeSource_);
    prepare(*authentication);
    return authentication;
}

void DriveConnection::prepare(GTMOAuth2Authentication& authentication) const {
    authentication.setShouldAuthorizeAllRequests(endpoints_.isLocal);
    authentication.setFetcherService(accountFetcherService_);
}

} // namespace quenby
