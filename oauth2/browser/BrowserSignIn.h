// Signs in by the system's browser (RFC 8252): opens the provider's page there, waits on a port of this computer for
// the one answer, exchanges the code with its proof key (RFC 7636, S256), and reports once. Nobody who can only see the
// page's address, or reach the port, can sign in in the user's place: an answer counts when it has the state that this
// sign-in made up.
//
// Threads: the main thread, which runs an event loop; nothing blocks. A sign-in is for one time. Destroying it cancels
// it and closes the port; that may happen in its callback too.
//
// Errors: those of GTMOAuth2SignIn; oauth2::ErrorCode::authorizationFailed with the provider's error name under
// errorKey::error; URLErrorCode::timedOut when nobody answered; errorDomain::posix when no port of this computer can be
// listened on, or no browser took the address. The reason is a sentence that says what to do.
#pragma once

#include "oauth2/GTMOAuth2SignIn.h"

#include <QObject>

#include <chrono>
#include <functional>
#include <memory>

namespace quenby {

class LoopbackListener;
class Opener;

class BrowserSignIn : public QObject {
    Q_OBJECT

public:
    using Auth = std::shared_ptr<GTMOAuth2Authentication>;
    using Finished = std::function<void(const Auth& authentication, const MaybeError& error)>;

    // How long the user may take.
    static constexpr std::chrono::minutes patience{15};

    // The authentication has no token yet; its redirect URI becomes the port's. The opener outlives this.
    BrowserSignIn(Auth authentication, const QUrl& authorizationURL, Opener& opener, SignInEnvironment environment);
    ~BrowserSignIn() override;

    // Never called back from inside; not at all after cancel() or when the context has died.
    void signIn(QObject* context, Finished finished);
    void cancel();
    // The user closed the page, or it went into the wrong browser. Whether a browser took it; does nothing once the
    // answer is there.
    bool openPageAgain();
    // To be copied into a browser by hand; a secret as long as this waits. Empty while it does not.
    const QUrl& pageAddress() const { return pageAddress_; }

Q_SIGNALS:
    // The browser has answered; the code is being exchanged.
    void answered();

private:
    void start();
    void showPage(const std::optional<URLRequest>& request);
    void takeAnswer(const QUrl& address);
    void stopWaiting();
    void finish(const MaybeError& error);

    const Auth authentication_;
    const QUrl authorizationURL_;
    Opener& opener_;
    const SignInEnvironment environment_;
    CompletionGate<const Auth&, const MaybeError&> finished_;
    std::unique_ptr<LoopbackListener> listener_;
    std::unique_ptr<GTMOAuth2SignIn> signIn_;
    std::unique_ptr<Timer> timeout_;
    QUrl pageAddress_;
};

} // namespace quenby
