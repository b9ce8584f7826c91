#include "app/cli/Session.h"

#include "app/account/DriveConnection.h"
#include "app/account/DriveSettings.h"
#include "app/account/LocalSignInPage.h"
#include "app/account/ProxySetting.h"
#include "app/cli/Console.h"
#include "app/cli/ConsoleOpener.h"
#include "app/cli/Folders.h"
#include "app/cli/KeptSignIn.h"
#include "http/FetchLog.h"
#include "oauth2/browser/BrowserSignIn.h"

#include <QCoreApplication>
#include <QFile>
#include <QUrlQuery>

namespace quenby {
namespace {

// A keyring that is open answers well before.
constexpr std::chrono::seconds keyringPatience(1);

QByteArray dataFolder(const Session::Settings& settings) {
    return settings.localData.isEmpty() ? defaultLocalDriveFolder() : absolutePath(settings.localData);
}

QByteArray tokenPath(const Session::Settings& settings) {
    return settings.localData.isEmpty() ? stateFolder() + "/local-drive-token"
                                        : dataFolder(settings) + "/local-drive-token";
}

} // namespace

Session::Session(Console& console, const Settings& settings, Provider provider, std::shared_ptr<TimeSource> timeSource)
    : console_(console)
    , settings_(settings)
    , provider_(std::move(provider))
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
        return openKept();
    launcher_.ensureRunning(this, [this](const Result<QUrl>& base) {
        if (!base)
            return opened_.deliver(MaybeError(base.error()));
        compose(Endpoints::localDrive(*base), ClientIdentity::ofTheProgram());
        restoreSignIn();
    });
}

void Session::openKept() {
    kept_ = std::make_unique<KeptSignIn>(provider_.storage(), provider_.endpoints, timeSource_);
    connect(kept_.get(), &KeptSignIn::troubled, this, [this](const QString& sentence) { console_.remark(sentence); });
    compose(provider_.endpoints, kept_->identity());
    keyringPatience_ = timeSource_->startTimer(
        keyringPatience, [this] { console_.remark(QStringLiteral("waiting for the keyring; is it locked?")); });
    kept_->restore(authentication_, this, [this](KeychainRead outcome, const MaybeError& error) {
        keyringPatience_.reset();
        const bool onlySignInHelps = outcome == KeychainRead::notStored || outcome == KeychainRead::notOurs;
        if (onlySignInHelps && settings_.signsIn)
            return signInByBrowser();
        if (error)
            return opened_.deliver(error);
        keptToken_ = authentication_->refreshToken();
        checkSignIn();
    });
}

void Session::close(QObject* context, std::function<void()> closed) {
    if (kept_)
        kept_->whenKept(context, std::move(closed));
    else
        CompletionGate<>(context, std::move(closed)).deliver();
}

void Session::revive() {
    if (settings_.local)
        launcher_.revive();
}

void Session::compose(Endpoints endpoints, ClientIdentity identity) {
    std::shared_ptr<FetchLogger> fetchLog;
    if (!settings_.httpLog.isEmpty())
        fetchLog = std::make_shared<FetchLog>(QFile::decodeName(settings_.httpLog), QStringLiteral("quenby"),
                                              FetchLog::loggingDateStamp(timeSource_->now().toLocalTime()));
    if (kept_) {
        proxies_ = std::make_unique<ProxySetting>(kept_->defaults(), timeSource_);
        endpoints.road = roadToBeginWith(kept_->defaults(), endpoints);
    }
    connection_ =
        std::make_unique<DriveConnection>(std::move(endpoints), std::move(identity), timeSource_, std::move(fetchLog),
                                          kept_ ? proxies_->source() : std::make_shared<SystemProxies>(timeSource_));
    if (kept_)
        connection_->setAccess(chosenAccess(kept_->defaults(), connection_->endpoints()));
    startWithoutSignIn();
}

void Session::startWithoutSignIn() {
    authentication_ = connection_->makeAuthentication();
    connect(authentication_.get(), &GTMOAuth2Authentication::notification, this, [this](const QString& name) {
        // A sign-in under way is kept when it is complete; one that is just being read need not be.
        if (name == kGTMOAuth2RefreshTokenChanged && !signInPage_ && !browserSignIn_ && !keyringPatience_ &&
            authentication_->refreshToken() != keptToken_)
            keepSignIn();
    });
    driveService()->setAuthorizer(authentication_);
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
        URLRequest(endpoints().rpcURL), this, [this](const URLRequest&, const MaybeError& error) {
            if (!error)
                return opened_.deliver(MaybeError());
            if (authentication_->lastRefreshFailure() != RefreshFailure::refused)
                return opened_.deliver(error);
            if (kept_ && settings_.signsIn)
                return signInByBrowser();
            if (kept_)
                return opened_.deliver(MaybeError(error->withDetail(
                    errorKey::reason, QStringLiteral("the Drive no longer accepts the sign-in; start Quenby and sign "
                                                     "in again"))));
            console_.remark(QStringLiteral("the local Drive no longer accepts the sign-in; signing in anew"));
            signIn();
        });
}

void Session::signIn() {
    startWithoutSignIn();
    signInPage_ = std::make_unique<LocalSignInPage>(authentication_, connection_->accountFetcherService(), endpoints(),
                                                    timeSource_);
    signInPage_->signIn(this, [this](const MaybeError& error) {
        signInPage_.reset();
        if (!error)
            keepSignIn();
        opened_.deliver(error);
    });
}

void Session::signInByBrowser() {
    // Whoever signs in would have to do it again for every command.
    if (const QString reason = kept_->unavailableBecause(); !reason.isEmpty())
        return opened_.deliver(MaybeError(Error(keyringErrorDomain, static_cast<qint64>(KeyringErrorCode::unavailable),
                                                {{errorKey::reason, reason}})));
    startWithoutSignIn();
    opener_ = std::make_unique<ConsoleOpener>(console_);
    browserSignIn_ = std::make_unique<BrowserSignIn>(authentication_, endpoints().authorizationURL, *opener_,
                                                     SignInEnvironment{endpoints(), timeSource_, nullptr});
    browserSignIn_->signIn(this, [this](const BrowserSignIn::Auth&, const MaybeError& error) {
        browserSignIn_.reset();
        if (!error)
            keepSignIn();
        opened_.deliver(error);
    });
}

void Session::keepSignIn() {
    keptToken_ = authentication_->refreshToken();
    if (kept_)
        return kept_->keep(*authentication_);
    // Without the file everything still works, only the next command signs in again.
    if (const auto kept = tokenFile_.save(authentication_->persistenceResponseString()); !kept)
        console_.remark(kept.error().description());
}

} // namespace quenby
