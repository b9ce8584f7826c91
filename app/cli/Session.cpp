#include "app/cli/Session.h"

#include "app/account/ClientIdentity.h"
#include "app/account/LocalSignInPage.h"
#include "app/cli/Console.h"
#include "app/cli/Folders.h"
#include "http/FetchLog.h"
#include "http/GTMHTTPFetcherService.h"
#include "oauth2/GTMOAuth2SignIn.h"

#include <QCoreApplication>
#include <QFile>
#include <QUrlQuery>

#include <cerrno>
#include <filesystem>

namespace quenby {
namespace {

// The fetchers' own retries stay short; whoever has more patience takes up the matter again.
constexpr double maxRetryInterval = 30; // seconds

// Its own place, so that there is one line to change when there is a keyring.
Error providerNotYetPossible() {
    return Error(
        errorDomain::posix, ENOTSUP,
        {{errorKey::reason,
          QStringLiteral("signing in to the provider's service comes with the desktop program and its keyring; "
                         "until then use --local, the Drive on this computer")}});
}

// In bytes throughout: the working folder's path need not be text.
QByteArray absolutePath(const QByteArray& path) {
    if (path.startsWith('/'))
        return path;
    std::error_code removed;
    const auto folder = std::filesystem::current_path(removed);
    return QByteArray::fromStdString(folder.native()) + '/' + path;
}

QByteArray dataFolder(const Session::Settings& settings) {
    return settings.localData.isEmpty() ? defaultLocalDriveFolder() : absolutePath(settings.localData);
}

QByteArray tokenPath(const Session::Settings& settings) {
    return settings.localData.isEmpty() ? stateFolder() + "/local-drive-token"
                                        : dataFolder(settings) + "/local-drive-token";
}

} // namespace

Session::Session(Console& console, const Settings& settings, std::shared_ptr<TimeSource> timeSource)
    : console_(console)
    , settings_(settings)
    , timeSource_(std::move(timeSource))
    , tokenFile_(tokenPath(settings))
    , launcher_(dataFolder(settings), QCoreApplication::applicationDirPath() + QStringLiteral("/quenby-localdrive"),
                timeSource_) {
    connect(&launcher_, &LocalDriveLauncher::revived, this, &Session::revived);
}

Session::~Session() = default;

void Session::open(QObject* context, Opened opened) {
    opened_ = {context, std::move(opened)};
    if (!settings_.local)
        return opened_.deliver(MaybeError(providerNotYetPossible()));
    launcher_.ensureRunning(this, [this](const Result<QUrl>& base) {
        if (!base)
            return opened_.deliver(MaybeError(base.error()));
        endpoints_ = Endpoints::localDrive(*base);
        compose();
        restoreSignIn();
    });
}

void Session::revive() { launcher_.revive(); }

void Session::compose() {
    if (!settings_.httpLog.isEmpty())
        fetchLog_ = std::make_shared<FetchLog>(QFile::decodeName(settings_.httpLog), QStringLiteral("quenby"),
                                               FetchLog::loggingDateStamp(timeSource_->now().toLocalTime()));
    accountFetcherService_ = makeFetcherService();
    driveService_ = std::make_shared<GTLServiceDrive>(endpoints_, makeFetcherService());
    driveService_->ticketSettings().shouldFetchNextPages = true;
    driveService_->ticketSettings().retryEnabled = true;
    driveService_->ticketSettings().maxRetryInterval = maxRetryInterval;
    startWithoutSignIn();
}

void Session::startWithoutSignIn() {
    authentication_ = GTMOAuth2SignIn::standardGoogleAuthenticationForScope(
        endpoints_.driveScope, clientIdentity::clientID, clientIdentity::clientSecret, endpoints_, timeSource_);
    authentication_->setShouldAuthorizeAllRequests(endpoints_.isLocal);
    authentication_->setFetcherService(accountFetcherService_);
    connect(authentication_.get(), &GTMOAuth2Authentication::notification, this, [this](const QString& name) {
        // A sign-in under way is kept when it is complete.
        if (name == kGTMOAuth2RefreshTokenChanged && !signInPage_ && authentication_->refreshToken() != keptToken_)
            keepSignIn();
    });
    driveService_->setAuthorizer(authentication_);
}

std::shared_ptr<GTMHTTPFetcherService> Session::makeFetcherService() const {
    const auto service = GTMHTTPFetcherService::create(timeSource_);
    service->setAllowLocalhostRequest(endpoints_.isLocal);
    service->setLogger(fetchLog_);
    return service;
}

void Session::restoreSignIn() {
    const auto kept = tokenFile_.load();
    if (!kept)
        console_.remark(kept.error().description() + QStringLiteral("; signing in anew"));
    if (!kept || kept->isEmpty())
        return signIn();
    keptToken_ = QUrlQuery(*kept).queryItemValue(QStringLiteral("refresh_token"), QUrl::FullyDecoded);
    authentication_->setKeysForResponseString(*kept);
    checkSignIn();
}

// A kept access token may be long expired: asking for an authorization renews it, or tells that the sign-in is over.
void Session::checkSignIn() {
    authentication_->authorizeRequest(
        URLRequest(endpoints_.rpcURL), this, [this](const URLRequest&, const MaybeError& error) {
            if (!error)
                return opened_.deliver(MaybeError());
            if (authentication_->lastRefreshFailure() != RefreshFailure::refused)
                return opened_.deliver(error);
            console_.remark(QStringLiteral("the local Drive no longer accepts the sign-in; signing in anew"));
            signIn();
        });
}

void Session::signIn() {
    startWithoutSignIn();
    signInPage_ = std::make_unique<LocalSignInPage>(authentication_, accountFetcherService_, endpoints_, timeSource_);
    signInPage_->signIn(this, [this](const MaybeError& error) {
        signInPage_.reset();
        if (!error)
            keepSignIn();
        opened_.deliver(error);
    });
}

void Session::keepSignIn() {
    // Without the file everything still works, only the next command signs in again.
    if (const auto kept = tokenFile_.save(authentication_->persistenceResponseString()); !kept)
        console_.remark(kept.error().description());
    keptToken_ = authentication_->refreshToken();
}

} // namespace quenby
