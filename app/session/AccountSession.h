// Who is signed in: restores the sign-in from the keyring, runs the sign-in dialog, signs out. There is one account, or
// none. The dialog shows the service's page, or sends the user to the browser, as the service or the settings want it.
//
// Threads: the main thread; nothing blocks. Everything referred to outlives the session.
#pragma once

#include "core/CompletionGate.h"
#include "core/Error.h"
#include "core/TimeSource.h"
#include "oauth2/window/KeychainPersistence.h"

#include <QObject>

#include <functional>
#include <memory>
#include <optional>

class QWidget;

namespace quenby {

class BrowserSignInSheet;
class Defaults;
class DriveConnection;
class GTMOAuth2Authentication;
class GTMOAuth2WindowController;
class HostReachability;
class Keyring;
class Opener;
class SecondChanceAuthorizer;
class WebViews;

// How the sign-in stands, without anything that it is made of.
struct CredentialFacts {
    bool canBeRenewed = false; // there is a refresh token
    bool hasAccessToken = false;
    std::optional<QDateTime> expirationDate; // of the access token
    qsizetype scopes = 0;
};

class AccountSession : public QObject {
    Q_OBJECT

public:
    struct Surroundings {
        DriveConnection& drive;
        Keyring& keyring;
        Defaults& defaults;
        WebViews& webViews;
        Opener& opener;
        std::shared_ptr<HostReachability> reachability;
    };
    // No error: the sign-in was restored, or there is none to restore. An error: there is one, but the keyring does not
    // give it away; that is not "signed out".
    using Checked = std::function<void(const MaybeError& keyringTrouble)>;

    explicit AccountSession(const Surroundings& surroundings);
    ~AccountSession() override;

    // Gates every upload.
    bool UserLogin() const { return UserLogin_; }
    bool isSignedIn() const;
    // The user's e-mail address; null while nobody is signed in.
    QString signedInUsername() const;
    // Absent while there are no credentials.
    std::optional<CredentialFacts> credentialFacts() const;
    // What the sign-in was given access to, as the service names it; empty while there are no credentials.
    QString grantedScope() const;
    // Under which the pages of the account keep their cookies. Empty where there is no keyring: there, nothing that
    // opens the account is left on the disk, cookies included.
    QString webAccount() const;
    // The sharing page's address without the file's identifier; a secret. Empty while nobody is signed in.
    const QString& strSHARE() const { return strSHARE_; }

    // Restores the sign-in. A locked keyring is waited for. Of two calls, or when a sign-in comes in between, the
    // earlier one is not answered.
    void loginCheck(QObject* context, Checked checked);
    // The dialog, unless somebody is signed in or the dialog is open already.
    void makeLoginInGoogle(QWidget* window);
    // The handler is called after a sign-in that succeeded.
    void runSigninThenHandler(QWidget* window, std::function<void()> handler = {});
    // While its dialog asks something that must be answered first: whether the program should not quit underneath it. A
    // sign-in by the browser never keeps the program: its page can be opened again at any time.
    bool preventsApplicationTermination() const;
    // Brings that dialog to the front, with a line that says why.
    void callToSignIn(const QString& notice);
    // Closes that dialog; whether it was open. Nothing is told of it.
    bool endSignIn();
    // Forgets the account here: the credentials in memory at once, then those in the keyring and the web pages'
    // cookies. A keyring that does not let go is told by signOutTroubled().
    void makeLogoutFromGoogle(QObject* context, std::function<void()> done);

Q_SIGNALS:
    // By the dialog.
    void signedIn();
    // The dialog has ended, either way; after signedIn(). No error: it worked, or the user closed it.
    void signInEnded(const quenby::MaybeError& error);
    // It worked, but could not be kept: the next start asks again.
    void keepingFailed(const quenby::Error& error);
    void signOutTroubled(const quenby::Error& error);
    // The service no longer accepts the sign-in, and the keyring has no newer one of the same user, such as the command
    // line may have kept there; only a new one helps. UserLogin is off from here on.
    void signInRefused();

private:
    bool signsInByBrowser() const;
    void use(const std::shared_ptr<GTMOAuth2Authentication>& authentication);
    void drop();
    void readKeyringAgain();
    void keyringReadAgain(const GTMOAuth2Authentication& kept);
    void endRefused();
    void keepNewToken();
    const QString& itemName() const;
    void signInFinished(const std::shared_ptr<GTMOAuth2Authentication>& authentication, const MaybeError& error,
                        const std::function<void()>& handler);

    const Surroundings surroundings_;
    KeychainPersistence keychain_;
    bool UserLogin_ = false;
    std::shared_ptr<GTMOAuth2Authentication> authentication_;
    std::shared_ptr<SecondChanceAuthorizer> authorizer_; // of the same
    QString strSHARE_;
    QString keptToken_;                                       // the refresh token as the keyring has it; a secret
    std::unique_ptr<GTMOAuth2WindowController> signInWindow_; // while it is open
    std::unique_ptr<BrowserSignInSheet> signInSheet_;         // likewise, of a sign-in by the browser
    CompletionTicket restoring_;
    CompletionTicket readingAgain_; // after a refusal
    std::unique_ptr<Timer> patience_;
};

} // namespace quenby
