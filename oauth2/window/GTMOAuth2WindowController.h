// Lets the user sign in: shows the provider's page in a window or a sheet, passes what the page does to the sign-in,
// keeps the sign-in in the keyring when it has succeeded and the user wants that, and reports once.
//
// Threads: the main thread. A controller signs in once. Destroying it closes its window and reports nothing; that may
// happen in its callbacks too.
//
// Cookies. With shouldPersistUser the page's cookies are the account's: they lie in its profile, and the provider knows
// the user again, here and in every page of that account. Without it the page is a private session: the engine keeps
// its cookies in memory, each is mirrored into cookieStorage() for the sign-in to look at, and both end with the
// window. The engine builds the page's requests, so no Cookie field is put together here.
#pragma once

#include "http/GTMCookieStorage.h"
#include "oauth2/GTMOAuth2SignIn.h"
#include "platform/WebView.h"

#include <QPointer>
#include <QVariantMap>

class QCheckBox;
class QPushButton;
class QWidget;

namespace quenby {

class GTMOAuth2Window;
class KeychainPersistence;
class Opener;
class SignInPage;

// What every sign-in window takes from its surroundings. The references outlive it.
struct SignInWindowServices {
    using SignInClass = std::function<std::unique_ptr<GTMOAuth2SignIn>(
        const std::shared_ptr<GTMOAuth2Authentication>& authentication, const QUrl& authorizationURL, QObject* delegate,
        GTMOAuth2SignIn::WebRequestSelector webRequestSelector, GTMOAuth2SignIn::FinishedSelector finishedSelector,
        const SignInEnvironment& environment)>;

    WebViews& webViews;
    KeychainPersistence& keychain;
    Opener& opener;
    SignInEnvironment environment;
    QString webAccount; // the profile in which the account's pages are shown
    SignInClass signInClass = standardSignInClass();

    static SignInClass standardSignInClass();
};

class GTMOAuth2WindowController final : public QObject {
    Q_OBJECT

public:
    using Auth = std::shared_ptr<GTMOAuth2Authentication>;
    using FinishedSelector =
        std::function<void(GTMOAuth2WindowController& controller, const Auth& authentication, const MaybeError& error)>;
    using CompletionHandler = std::function<void(const Auth& authentication, const MaybeError& error)>;
    using ExternalRequestSelector =
        std::function<void(GTMOAuth2WindowController& controller, const URLRequest& request)>;

    // Signs in at the service of the environment's endpoints.
    static std::unique_ptr<GTMOAuth2WindowController> controllerWithScope(const QString& scope, const QString& clientID,
                                                                          const QString& clientSecret,
                                                                          const QString& keychainItemName,
                                                                          const SignInWindowServices& services);
    static std::unique_ptr<GTMOAuth2WindowController>
    controllerWithAuthentication(const Auth& authentication, const QUrl& authorizationURL,
                                 const QString& keychainItemName, const SignInWindowServices& services);
    ~GTMOAuth2WindowController() override;

    // --- Running --------------------------------------------------------------------------------------------------

    // As a sheet on the window, or, without one, in a window of its own. Called back once, through the event loop,
    // unless the delegate or context has died or the sign-in was cancelled. The sign-in's errors, see there; and
    // oauth2::ErrorCode::authorizationFailed when there is no client to sign in with.
    void signInSheetModalForWindow(QWidget* window, QObject* delegate, FinishedSelector finishedSelector);
    void signInSheetModalForWindow(QWidget* window, QObject* context, CompletionHandler completionHandler);
    // Ends without a callback.
    void cancelSigningIn();
    // As if the user closed it.
    void closeWindow();
    // Brings its window to the front, with a line that says why.
    void callAttention(const QString& notice);

    // --- Settings, before signing in ------------------------------------------------------------------------------

    // Shown before the provider's page.
    void setInitialHTMLString(const QString& html) { initialHTMLString_ = html; }
    const QString& initialHTMLString() const { return initialHTMLString_; }
    // On from the start.
    void setShouldPersistUser(bool should) { shouldPersistUser_ = should; }
    bool shouldPersistUser() const { return shouldPersistUser_; }
    void setShouldAllowApplicationTermination(bool should) { shouldAllowApplicationTermination_ = should; }
    bool shouldAllowApplicationTermination() const { return shouldAllowApplicationTermination_; }
    // Gets what the page wants to open in another window; the default browser does without it.
    void setExternalRequestSelector(ExternalRequestSelector selector) {
        externalRequestSelector_ = std::move(selector);
    }
    void setNetworkLossTimeoutInterval(std::chrono::milliseconds interval) {
        signIn_->setNetworkLossTimeoutInterval(interval);
    }
    std::chrono::milliseconds networkLossTimeoutInterval() const { return signIn_->networkLossTimeoutInterval(); }
    void setUserData(const QVariant& userData) { userData_ = userData; }
    const QVariant& userData() const { return userData_; }
    void setProperty(const QString& key, const QVariant& value); // an invalid value removes the key
    QVariant propertyForKey(const QString& key) const { return properties_.value(key); }

    // --- State ----------------------------------------------------------------------------------------------------

    GTMOAuth2SignIn& signIn() const { return *signIn_; }
    Auth authentication() const { return signIn_->authentication(); }
    const QString& keychainItemName() const { return keychainItemName_; }
    bool shouldUseKeychain() const { return !keychainItemName_.isEmpty(); }
    const std::optional<URLRequest>& initialRequest() const { return initialRequest_; }
    GTMCookieStorage& cookieStorage() { return cookieStorage_; }
    QWidget* sheetModalForWindow() const;
    bool isWindowShown() const { return isWindowShown_; }
    // While its sheet is shown: whether the program should not quit underneath it.
    bool preventsApplicationTermination() const;

    // Of the window, as long as there is one; null otherwise.
    GTMOAuth2Window* window() const;
    WebView* webView() const;
    QCheckBox* keychainCheckbox() const;
    QPushButton* webCloseButton() const;
    QPushButton* webBackButton() const;

private:
    GTMOAuth2WindowController(const Auth& authentication, const QUrl& authorizationURL, const QString& keychainItemName,
                              const SignInWindowServices& services);

    void signInCommonForWindow(QWidget* window);
    void displayRequest(const std::optional<URLRequest>& request);
    void makeWindow();
    void makePage();
    void awakeFromNib();
    void connectPage();
    bool requestRedirected(const URLRequest& request);
    void handlePrematureWindowClose();
    void destroyWindow();
    void dropWindow();
    void signInNotified(const QString& name);
    void finishedWithAuth(const Auth& auth, const MaybeError& error);
    void storeInKeychain(const Auth& auth);

    const SignInWindowServices services_;
    const QString keychainItemName_;
    GTMCookieStorage cookieStorage_;
    std::unique_ptr<GTMOAuth2SignIn> signIn_;
    CompletionGate<const Auth&, const MaybeError&> finished_;

    QString initialHTMLString_;
    bool shouldPersistUser_ = true;
    bool shouldAllowApplicationTermination_ = false;
    ExternalRequestSelector externalRequestSelector_;
    QVariant userData_;
    QVariantMap properties_;

    QPointer<QWidget> sheetModalForWindow_;
    std::optional<URLRequest> initialRequest_;
    bool isSheet_ = false;
    bool isWindowShown_ = false;
    bool hasDoneFinalRedirect_ = false;
    bool hasCalledFinished_ = false;
    bool wantsKeychain_ = false; // the check box, also after the window has gone
    QPointer<GTMOAuth2Window> window_;
    std::unique_ptr<SignInPage> page_;
    std::unique_ptr<Timer> timer_; // until the first load, and until the closed window is destroyed
};

} // namespace quenby
