// Lets the user sign in by the system's browser: shows a sheet that says so, keeps the sign-in in the keyring when it
// has succeeded and the user wants that, and reports once.
//
// Threads: the main thread. A sheet is for one sign-in. Destroying it closes its window and reports nothing; that may
// happen in its callback too.
#pragma once

#include "oauth2/browser/BrowserSignIn.h"

#include <QPointer>

class QWidget;

namespace quenby {

class BrowserSignInWindow;
class KeychainPersistence;

// What every such sheet takes from its surroundings. The references outlive it.
struct BrowserSignInServices {
    KeychainPersistence& keychain;
    Opener& opener;
    SignInEnvironment environment;
};

class BrowserSignInSheet final : public QObject {
    Q_OBJECT

public:
    using Auth = std::shared_ptr<GTMOAuth2Authentication>;
    using CompletionHandler = std::function<void(const Auth& authentication, const MaybeError& error)>;

    // The authentication has no token yet. Kept under the item's name.
    BrowserSignInSheet(const Auth& authentication, const QUrl& authorizationURL, const QString& keychainItemName,
                       const BrowserSignInServices& services);
    ~BrowserSignInSheet() override;

    // As a sheet on the window, or, without one, in a window of its own. Called back once, through the event loop. The
    // errors are those of BrowserSignIn, and oauth2::ErrorCode::windowClosed when the user closed the sheet.
    void signInSheetModalForWindow(QWidget* window, QObject* context, CompletionHandler completionHandler);
    // Brings its window to the front, with a line that says why.
    void callAttention(const QString& notice);

    // Of the window, as long as there is one; null otherwise.
    BrowserSignInWindow* window() const;

private:
    void makeWindow(QWidget* parent);
    void copyAddress();
    void closedByUser();
    void finished(const MaybeError& error);

    const Auth authentication_;
    const QUrl authorizationURL_;
    const QString keychainItemName_;
    KeychainPersistence& keychain_;
    BrowserSignIn signIn_;
    CompletionGate<const Auth&, const MaybeError&> finished_;
    QPointer<BrowserSignInWindow> window_;
    bool wantsKeychain_ = true; // the check box, also after the window has gone
};

} // namespace quenby
