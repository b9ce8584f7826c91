#include "app/session/AccountSession.h"

#include "app/account/DriveConnection.h"
#include "app/session/SecondChanceAuthorizer.h"
#include "app/session/SharingAddress.h"
#include "core/DefaultsKeys.h"
#include "driveapi/GTLServiceDrive.h"
#include "http/GTMHTTPFetcherService.h"
#include "oauth2/GTMOAuth2Authentication.h"
#include "oauth2/OAuth2Error.h"
#include "oauth2/browser/BrowserSignInSheet.h"
#include "oauth2/window/GTMOAuth2WindowController.h"
#include "platform/Keyring.h"
#include "platform/Opener.h"
#include "platform/WebView.h"

#include <QLoggingCategory>

#include <utility>

namespace quenby {

namespace {

const QString keptWebAccount = QStringLiteral("account");

// For a keyring that was locked since, or hangs, while requests wait.
constexpr std::chrono::seconds keyringPatience(30);

Q_LOGGING_CATEGORY(sessionLog, "quenby.session")

bool isClosedByUser(const MaybeError& error) {
    return error && error->is(errorDomain::oauth2, static_cast<qint64>(oauth2::ErrorCode::windowClosed));
}

} // namespace

AccountSession::AccountSession(const Surroundings& surroundings)
    : surroundings_(surroundings)
    , keychain_(surroundings.keyring, surroundings.defaults, surroundings.drive.endpoints(),
                surroundings.drive.timeSource()) {
    connect(&keychain_, &KeychainPersistence::saveFailed, this,
            [this](const QString&, const Error& error) { Q_EMIT keepingFailed(error); });
    connect(&surroundings.defaults, &Defaults::changed, this, [this](const QString& key) {
        if (key == KeychainPersistence::prefsKeyForName(itemName()))
            keepNewToken();
    });
}

AccountSession::~AccountSession() {
    restoring_.cancel();
    readingAgain_.cancel();
    if (authorizer_)
        authorizer_->giveUp();
}

QString AccountSession::signedInUsername() const {
    const auto authorizer = surroundings_.drive.driveService()->authorizer();
    return authorizer && authentication_ && authentication_->canAuthorize() ? authorizer->userEmail() : QString();
}

bool AccountSession::isSignedIn() const { return !signedInUsername().isNull(); }

std::optional<CredentialFacts> AccountSession::credentialFacts() const {
    if (!authentication_)
        return std::nullopt;
    return CredentialFacts{.canBeRenewed = !authentication_->refreshToken().isEmpty(),
                           .hasAccessToken = !authentication_->accessToken().isEmpty(),
                           .expirationDate = authentication_->expirationDate(),
                           .scopes = authentication_->scope().split(QLatin1Char(' '), Qt::SkipEmptyParts).size()};
}

QString AccountSession::grantedScope() const { return authentication_ ? authentication_->scope() : QString(); }

void AccountSession::loginCheck(QObject* context, Checked checked) {
    UserLogin_ = false;
    restoring_.cancel();
    const CompletionGate<const MaybeError&> gate(context, std::move(checked));
    const auto authentication = surroundings_.drive.makeAuthentication();
    restoring_ = keychain_.authorizeFromKeychainForName(
        itemName(), authentication, this, [this, authentication, gate](KeychainRead outcome, const MaybeError& error) {
            // A sign-in of nobody is none.
            if (outcome == KeychainRead::authorized && !authentication->userEmail().isNull())
                use(authentication);
            UserLogin_ = isSignedIn();
            if (UserLogin_)
                qCInfo(sessionLog, "Successfull login");
            // A sign-in that cannot be read for good is as good as none: only a new one helps.
            const bool isLost = outcome == KeychainRead::notOurs;
            gate.deliver(isLost ? MaybeError() : error);
        });
}

QString AccountSession::webAccount() const {
    return surroundings_.keyring.unavailableBecause().isEmpty() ? keptWebAccount : QString();
}

void AccountSession::makeLoginInGoogle(QWidget* window) {
    if (!isSignedIn())
        runSigninThenHandler(window);
}

void AccountSession::runSigninThenHandler(QWidget* window, std::function<void()> handler) {
    if (signInWindow_ || signInSheet_)
        return;
    const DriveConnection& drive = surroundings_.drive;
    const QUrl& page = drive.endpoints().authorizationURL;
    const SignInEnvironment environment{drive.endpoints(), drive.timeSource(), surroundings_.reachability};
    auto finished = [this, handler = std::move(handler)](const std::shared_ptr<GTMOAuth2Authentication>& authentication,
                                                         const MaybeError& error) {
        signInFinished(authentication, error, handler);
    };
    if (signsInByBrowser()) {
        signInSheet_ =
            std::make_unique<BrowserSignInSheet>(drive.makeAuthentication(), page, itemName(),
                                                 BrowserSignInServices{keychain_, surroundings_.opener, environment});
        signInSheet_->signInSheetModalForWindow(window, this, std::move(finished));
        return;
    }
    signInWindow_ = GTMOAuth2WindowController::controllerWithAuthentication(
        drive.makeAuthentication(), page, itemName(),
        {surroundings_.webViews, keychain_, surroundings_.opener, environment, webAccount()});
    signInWindow_->signInSheetModalForWindow(window, this, std::move(finished));
}

// A service that wants the browser refuses every other place: the settings cannot help it.
bool AccountSession::signsInByBrowser() const {
    return surroundings_.drive.endpoints().signInPlace == SignInPlace::browser ||
           surroundings_.defaults.valueForKey(defaultsKey::signInPlace).toString() == QLatin1String("browser");
}

bool AccountSession::preventsApplicationTermination() const {
    return signInWindow_ && signInWindow_->preventsApplicationTermination();
}

void AccountSession::callToSignIn(const QString& notice) {
    if (signInWindow_)
        signInWindow_->callAttention(notice);
    if (signInSheet_)
        signInSheet_->callAttention(notice);
}

void AccountSession::signInFinished(const std::shared_ptr<GTMOAuth2Authentication>& authentication,
                                    const MaybeError& error, const std::function<void()>& handler) {
    signInWindow_.reset();
    signInSheet_.reset();
    if (!error) {
        use(authentication);
        Q_EMIT signedIn();
        if (handler)
            handler();
    }
    Q_EMIT signInEnded(isClosedByUser(error) ? MaybeError() : error);
}

bool AccountSession::endSignIn() {
    const bool hadWindow = std::exchange(signInWindow_, nullptr) != nullptr;
    const bool hadSheet = std::exchange(signInSheet_, nullptr) != nullptr;
    return hadWindow || hadSheet;
}

void AccountSession::makeLogoutFromGoogle(QObject* context, std::function<void()> done) {
    const CompletionGate<> gate(context, std::move(done));
    drop();
    surroundings_.webViews.forget(keptWebAccount);
    keychain_.removeAuthFromKeychainForName(itemName(), this, [this, gate](const MaybeError& error) {
        if (error) {
            qCWarning(sessionLog, "error");
            Q_EMIT signOutTroubled(*error);
        } else {
            qCInfo(sessionLog, "sucess logout");
        }
        gate.deliver();
    });
}

void AccountSession::use(const std::shared_ptr<GTMOAuth2Authentication>& authentication) {
    drop();
    authentication_ = authentication;
    authorizer_ = SecondChanceAuthorizer::create(authentication);
    connect(authorizer_.get(), &SecondChanceAuthorizer::refused, this, &AccountSession::readKeyringAgain);
    surroundings_.drive.driveService()->setAuthorizer(authorizer_);
    UserLogin_ = true;
    keptToken_ = authentication->refreshToken();
    strSHARE_ = sharingAddress(surroundings_.drive.endpoints(), keptToken_);
    connect(authentication.get(), &GTMOAuth2Authentication::notification, this, [this](const QString& name) {
        if (name == kGTMOAuth2RefreshTokenChanged)
            keepNewToken();
    });
}

void AccountSession::drop() {
    restoring_.cancel();
    readingAgain_.cancel();
    patience_.reset();
    signInWindow_.reset();
    signInSheet_.reset();
    UserLogin_ = false;
    strSHARE_.clear();
    keptToken_.clear();
    if (const auto authorizer = std::exchange(authorizer_, nullptr)) {
        authorizer->disconnect(this);
        authorizer->giveUp();
    }
    if (authentication_) {
        authentication_->disconnect(this);
        // This may be called from inside of it: it stays until the event loop's next turn.
        QMetaObject::invokeMethod(
            this, [kept = std::exchange(authentication_, nullptr)] {}, Qt::QueuedConnection);
    }
    const DriveConnection& drive = surroundings_.drive;
    drive.driveService()->setAuthorizer(nullptr);
    for (const auto& service : {drive.driveService()->fetcherService(), drive.accountFetcherService()})
        service->clearHistory();
}

// The server refuses the sign-in that is used here. The command line works with the same one, and keeps the refresh
// token that a server gives it in place of the old one.
void AccountSession::readKeyringAgain() {
    const auto kept = surroundings_.drive.makeAuthentication();
    patience_ = surroundings_.drive.timeSource()->startTimer(keyringPatience, [this] { endRefused(); });
    readingAgain_ = keychain_.authorizeFromKeychainForName(
        itemName(), kept, this, [this, kept](KeychainRead, const MaybeError&) { keyringReadAgain(*kept); });
}

void AccountSession::keyringReadAgain(const GTMOAuth2Authentication& kept) {
    const QString token = kept.refreshToken();
    // Another user's would take over this one's uploads.
    if (token.isEmpty() || token == authentication_->refreshToken() || kept.userEmail() != authentication_->userEmail())
        return endRefused();
    qCInfo(sessionLog, "The keyring has a newer sign-in");
    patience_.reset();
    keptToken_ = token;
    strSHARE_ = sharingAddress(surroundings_.drive.endpoints(), token);
    authentication_->setKeysForResponseString(kept.persistenceResponseString());
    authorizer_->tryAgain();
}

void AccountSession::endRefused() {
    drop();
    Q_EMIT signInRefused();
}

// The server gave out a new refresh token, and may refuse the old one from now on.
void AccountSession::keepNewToken() {
    const QString token = authentication_ ? authentication_->refreshToken() : QString();
    if (token.isEmpty() || token == keptToken_)
        return;
    strSHARE_ = sharingAddress(surroundings_.drive.endpoints(), token);
    // Kept where the user wanted it kept before, and nowhere else. While an older one is being written, the mark is
    // missing: this is called again when it is set.
    if (!surroundings_.defaults.boolForKey(KeychainPersistence::prefsKeyForName(itemName())))
        return;
    keptToken_ = token;
    keychain_.saveAuthToKeychainForName(itemName(), *authentication_);
}

const QString& AccountSession::itemName() const { return surroundings_.drive.endpoints().keychainItemName; }

} // namespace quenby
