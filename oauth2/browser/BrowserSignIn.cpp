#include "oauth2/browser/BrowserSignIn.h"

#include "oauth2/OAuth2Error.h"
#include "oauth2/ProofKey.h"
#include "oauth2/browser/LoopbackListener.h"
#include "platform/Opener.h"

#include <cerrno>

namespace quenby {
namespace {

Error noClientError() {
    return oauth2::makeError(oauth2::ErrorCode::authorizationFailed,
                             QStringLiteral("Quenby does not know as which client it should sign in. Set the client "
                                            "id and try again."));
}

Error noBrowserError() {
    return Error(errorDomain::posix, ENOENT,
                 {{errorKey::reason,
                   QStringLiteral("No browser took the sign-in page. Choose a default browser in the desktop's "
                                  "settings and sign in again.")}});
}

Error nobodyAnsweredError() {
    return Error(URLErrorCode::timedOut,
                 {{errorKey::reason, QStringLiteral("The sign-in was not finished in the browser within %1 minutes. "
                                                    "Sign in again.")
                                         .arg(BrowserSignIn::patience.count())}});
}

// What the provider's error means to whoever sat in front of its page.
Error explained(const Error& error) {
    if (error.detail(errorKey::error).toString() != QLatin1String("access_denied"))
        return error;
    return error.withDetail(errorKey::reason,
                            QStringLiteral("The access was declined in the browser. To use the Drive, sign in again "
                                           "and allow it there."));
}

} // namespace

BrowserSignIn::BrowserSignIn(Auth authentication, const QUrl& authorizationURL, Opener& opener,
                             SignInEnvironment environment)
    : authentication_(std::move(authentication))
    , authorizationURL_(authorizationURL)
    , opener_(opener)
    , environment_(std::move(environment)) {}

BrowserSignIn::~BrowserSignIn() { finished_.ticket().cancel(); }

void BrowserSignIn::signIn(QObject* context, Finished finished) {
    finished_ = {context, std::move(finished)};
    start();
}

void BrowserSignIn::start() {
    const QString state = oauth2::makeState();
    listener_ = std::make_unique<LoopbackListener>(environment_.timeSource);
    // Queued: whatever follows from the answer may end the listener.
    connect(listener_.get(), &LoopbackListener::answered, this, &BrowserSignIn::takeAnswer, Qt::QueuedConnection);
    if (const MaybeError error = listener_->listen(state))
        return finish(error);
    authentication_->setRedirectURI(listener_->redirectURI());
    timeout_ = environment_.timeSource->startTimer(patience, [this] { finish(nobodyAnsweredError()); });

    signIn_ = std::make_unique<GTMOAuth2SignIn>(
        authentication_, authorizationURL_, this,
        [this](GTMOAuth2SignIn&, const std::optional<URLRequest>& request) { showPage(request); },
        [this](GTMOAuth2SignIn&, const Auth&, const MaybeError& error) { finish(error); }, environment_);
    signIn_->setState(state);
    signIn_->setUsesPKCE(true);
    // The browser tells about the network itself.
    signIn_->setNetworkLossTimeoutInterval(std::chrono::milliseconds(0));
    if (!signIn_->startSigningIn())
        finish(noClientError());
}

// Asked by the sign-in. There is no page of ours to close.
void BrowserSignIn::showPage(const std::optional<URLRequest>& request) {
    if (!request)
        return;
    pageAddress_ = request->url;
    if (!opener_.openURL(pageAddress_))
        finish(noBrowserError());
}

bool BrowserSignIn::openPageAgain() { return !pageAddress_.isEmpty() && opener_.openURL(pageAddress_); }

void BrowserSignIn::takeAnswer(const QUrl& address) {
    if (!listener_)
        return;
    stopWaiting();
    signIn_->requestRedirectedToRequest(URLRequest(address));
    Q_EMIT answered();
}

void BrowserSignIn::stopWaiting() {
    listener_.reset();
    timeout_.reset();
    pageAddress_.clear();
}

void BrowserSignIn::cancel() {
    stopWaiting();
    // Of a sign-in that has ended, the authentication is somebody else's by now.
    if (finished_.ticket().cancel() && signIn_)
        signIn_->cancelSigningIn();
}

void BrowserSignIn::finish(const MaybeError& error) {
    stopWaiting();
    finished_.deliver(authentication_, error ? MaybeError(explained(*error)) : error);
}

} // namespace quenby
