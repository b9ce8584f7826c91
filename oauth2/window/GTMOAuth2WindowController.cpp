#include "oauth2/window/GTMOAuth2WindowController.h"

#include "oauth2/OAuth2Error.h"
#include "oauth2/window/GTMOAuth2WindowUi.h"
#include "oauth2/window/KeychainPersistence.h"
#include "oauth2/window/SignInPage.h"
#include "platform/Opener.h"

#include <QCheckBox>
#include <QPushButton>

namespace quenby {
namespace {

using namespace std::chrono_literals;

constexpr auto firstLoadDelay = 10ms;
constexpr auto closeDelay = 100ms;
constexpr qint64 earliestPlausibleTime = 1293840000; // 1 January 2011, 00:00 UTC, in seconds after the epoch

QString clockPage(const QDateTime& now) {
    return QStringLiteral("<html><body><div align=center><font size='7'>&"
                          "#x231A; ?<br><i>System Clock Incorrect</i><br>%1</font></div></body></html>")
        .arg(now.toUTC().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss +0000")));
}

Error noClientError() {
    return oauth2::makeError(oauth2::ErrorCode::authorizationFailed,
                             QStringLiteral("Quenby does not know as which client it should sign in. Set the client "
                                            "id and try again."));
}

} // namespace

SignInWindowServices::SignInClass SignInWindowServices::standardSignInClass() {
    return [](const auto& authentication, const QUrl& authorizationURL, QObject* delegate, auto webRequestSelector,
              auto finishedSelector, const SignInEnvironment& environment) {
        return std::make_unique<GTMOAuth2SignIn>(authentication, authorizationURL, delegate,
                                                 std::move(webRequestSelector), std::move(finishedSelector),
                                                 environment);
    };
}

std::unique_ptr<GTMOAuth2WindowController>
GTMOAuth2WindowController::controllerWithScope(const QString& scope, const QString& clientID,
                                               const QString& clientSecret, const QString& keychainItemName,
                                               const SignInWindowServices& services) {
    const SignInEnvironment& environment = services.environment;
    return controllerWithAuthentication(
        GTMOAuth2SignIn::standardGoogleAuthenticationForScope(scope, clientID, clientSecret, environment.endpoints,
                                                              environment.timeSource),
        environment.endpoints.authorizationURL, keychainItemName, services);
}

std::unique_ptr<GTMOAuth2WindowController>
GTMOAuth2WindowController::controllerWithAuthentication(const Auth& authentication, const QUrl& authorizationURL,
                                                        const QString& keychainItemName,
                                                        const SignInWindowServices& services) {
    return std::unique_ptr<GTMOAuth2WindowController>(
        new GTMOAuth2WindowController(authentication, authorizationURL, keychainItemName, services));
}

GTMOAuth2WindowController::GTMOAuth2WindowController(const Auth& authentication, const QUrl& authorizationURL,
                                                     const QString& keychainItemName,
                                                     const SignInWindowServices& services)
    : services_(services)
    , keychainItemName_(keychainItemName)
    , cookieStorage_(services.environment.timeSource)
    , signIn_(services.signInClass(
          authentication, authorizationURL, this,
          [this](GTMOAuth2SignIn&, const std::optional<URLRequest>& request) { displayRequest(request); },
          [this](GTMOAuth2SignIn&, const Auth& auth, const MaybeError& error) { finishedWithAuth(auth, error); },
          services.environment)) {
    connect(signIn_.get(), &GTMOAuth2SignIn::notification, this, &GTMOAuth2WindowController::signInNotified);
}

GTMOAuth2WindowController::~GTMOAuth2WindowController() {
    finished_.ticket().cancel();
    dropWindow();
}

// --- Starting -------------------------------------------------------------------------------------------------------

void GTMOAuth2WindowController::signInSheetModalForWindow(QWidget* window, QObject* delegate,
                                                          FinishedSelector finishedSelector) {
    signInSheetModalForWindow(window, delegate,
                              [self = QPointer(this), finishedSelector = std::move(finishedSelector)](
                                  const Auth& authentication, const MaybeError& error) {
                                  if (self)
                                      finishedSelector(*self, authentication, error);
                              });
}

void GTMOAuth2WindowController::signInSheetModalForWindow(QWidget* window, QObject* context,
                                                          CompletionHandler completionHandler) {
    finished_ = {context, std::move(completionHandler)};
    signInCommonForWindow(window);
}

void GTMOAuth2WindowController::signInCommonForWindow(QWidget* window) {
    sheetModalForWindow_ = window;
    isSheet_ = window != nullptr;
    hasDoneFinalRedirect_ = false;
    hasCalledFinished_ = false;
    if (!signIn_->startSigningIn())
        finishedWithAuth(authentication(), noClientError());
}

// Asked by the sign-in: a page to show, or nothing: close the window.
void GTMOAuth2WindowController::displayRequest(const std::optional<URLRequest>& request) {
    if (!request)
        return destroyWindow();
    initialRequest_ = request;
    makeWindow();
    awakeFromNib();
    if (isSheet_)
        window_->open();
    else
        window_->show();
    isWindowShown_ = true;
}

void GTMOAuth2WindowController::makeWindow() {
    dropWindow();
    window_ = new GTMOAuth2Window(isSheet_ ? sheetModalForWindow_->window() : nullptr);
    connect(window_, &GTMOAuth2Window::closedByUser, this, &GTMOAuth2WindowController::handlePrematureWindowClose);
    connect(window_, &QObject::destroyed, this, [this] { // with the window that the sheet belonged to
        page_.reset();
        window_.clear();
        handlePrematureWindowClose();
    });
    wantsKeychain_ = shouldUseKeychain();
    connect(window_->keychainCheckbox(), &QCheckBox::toggled, this, [this](bool on) { wantsKeychain_ = on; });
    makePage();
}

void GTMOAuth2WindowController::makePage() {
    WebViewProfile profile;
    if (shouldPersistUser_)
        profile.account = services_.webAccount;
    page_ = std::make_unique<SignInPage>(
        *window_, services_.webViews, profile, services_.environment.timeSource,
        SignInPage::Questions{
            [this](const URLRequest& request) { return requestRedirected(request); },
            [this](const Error& error) { return hasDoneFinalRedirect_ || signIn_->loadFailedWithError(error); }});
    connectPage();
}

// The window's contents are there.
void GTMOAuth2WindowController::awakeFromNib() {
    if (!initialHTMLString_.isEmpty())
        page_->showHTML(initialHTMLString_);
    const QDateTime now = services_.environment.timeSource->now();
    const bool isClockPlausible = now.toSecsSinceEpoch() > earliestPlausibleTime;
    window_->keychainCheckbox()->setVisible(shouldUseKeychain() && isClockPlausible);
    if (isClockPlausible)
        timer_ =
            services_.environment.timeSource->startTimer(firstLoadDelay, [this] { page_->load(*initialRequest_); });
    else
        page_->showHTML(clockPage(now));
}

// --- The page -------------------------------------------------------------------------------------------------------

void GTMOAuth2WindowController::connectPage() {
    connect(page_.get(), &SignInPage::titleChanged, this, [this](const QString& title) {
        if (!title.isEmpty())
            signIn_->titleChanged(title);
    });
    connect(page_.get(), &SignInPage::loadFinished, this, [this] { signIn_->cookiesChanged(cookieStorage_); });
    connect(page_.get(), &SignInPage::cookieAdded, this, [this](const QByteArray& setCookie) {
        if (!shouldPersistUser_)
            cookieStorage_.setCookies(QNetworkCookie::parseCookies(setCookie));
    });
    connect(page_.get(), &SignInPage::newWindowRequested, this, [this](const QUrl& url) {
        if (externalRequestSelector_)
            externalRequestSelector_(*this, URLRequest(url));
        else
            services_.opener.openURL(url);
    });
}

bool GTMOAuth2WindowController::requestRedirected(const URLRequest& request) {
    if (hasDoneFinalRedirect_)
        return false;
    hasDoneFinalRedirect_ = signIn_->requestRedirectedToRequest(request);
    return hasDoneFinalRedirect_;
}

void GTMOAuth2WindowController::signInNotified(const QString& name) {
    if (!window_ || !page_)
        return;
    if (name == kGTMOAuthNetworkLost)
        window_->setNotice(tr("The network cannot be reached. Waiting for it to come back."));
    if (name == kGTMOAuthNetworkFound) {
        window_->setNotice({});
        page_->networkFound();
    }
}

void GTMOAuth2WindowController::callAttention(const QString& notice) {
    if (!window_)
        return;
    window_->setNotice(notice);
    window_->raise();
    window_->activateWindow();
}

// --- Closing --------------------------------------------------------------------------------------------------------

void GTMOAuth2WindowController::closeWindow() {
    if (window_)
        window_->reject();
}

void GTMOAuth2WindowController::handlePrematureWindowClose() {
    if (!hasCalledFinished_)
        signIn_->windowWasClosed();
    destroyWindow();
}

// Goes from the screen at once. The rest waits until the page's call that led here has returned.
void GTMOAuth2WindowController::destroyWindow() {
    isWindowShown_ = false;
    if (page_)
        page_->stop();
    if (window_)
        window_->dismiss();
    timer_ = services_.environment.timeSource->startTimer(closeDelay, [this] { dropWindow(); });
}

void GTMOAuth2WindowController::dropWindow() {
    page_.reset();
    if (window_)
        window_->disconnect(this);
    delete window_;
    cookieStorage_.removeAllCookies();
}

void GTMOAuth2WindowController::cancelSigningIn() {
    hasCalledFinished_ = true;
    finished_.ticket().cancel();
    signIn_->cancelSigningIn();
    hasDoneFinalRedirect_ = true;
}

// --- Finishing ------------------------------------------------------------------------------------------------------

void GTMOAuth2WindowController::finishedWithAuth(const Auth& auth, const MaybeError& error) {
    if (std::exchange(hasCalledFinished_, true))
        return;
    if (!error && shouldUseKeychain())
        storeInKeychain(auth);
    finished_.deliver(auth, error);
}

// Nobody waits for it: a locked keyring would hold up a sign-in that is good. KeychainPersistence keeps the order with
// what follows, and tells when it has failed.
void GTMOAuth2WindowController::storeInKeychain(const Auth& auth) {
    if (wantsKeychain_ && auth->canAuthorize())
        services_.keychain.saveAuthToKeychainForName(keychainItemName_, *auth);
    else
        services_.keychain.removeAuthFromKeychainForName(keychainItemName_);
}

// --- State ----------------------------------------------------------------------------------------------------------

void GTMOAuth2WindowController::setProperty(const QString& key, const QVariant& value) {
    if (value.isValid())
        properties_.insert(key, value);
    else
        properties_.remove(key);
}

bool GTMOAuth2WindowController::preventsApplicationTermination() const {
    return isSheet_ && isWindowShown_ && !shouldAllowApplicationTermination_;
}

QWidget* GTMOAuth2WindowController::sheetModalForWindow() const { return sheetModalForWindow_; }

GTMOAuth2Window* GTMOAuth2WindowController::window() const { return window_; }

WebView* GTMOAuth2WindowController::webView() const { return page_ ? page_->webView() : nullptr; }
QCheckBox* GTMOAuth2WindowController::keychainCheckbox() const {
    return window_ ? window_->keychainCheckbox() : nullptr;
}
QPushButton* GTMOAuth2WindowController::webCloseButton() const { return window_ ? window_->webCloseButton() : nullptr; }
QPushButton* GTMOAuth2WindowController::webBackButton() const { return window_ ? window_->webBackButton() : nullptr; }

} // namespace quenby
