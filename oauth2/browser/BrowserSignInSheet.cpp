#include "oauth2/browser/BrowserSignInSheet.h"

#include "oauth2/OAuth2Error.h"
#include "oauth2/browser/BrowserSignInUi.h"
#include "oauth2/window/KeychainPersistence.h"

#include <QCheckBox>
#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QPushButton>

namespace quenby {
namespace {

Error windowClosedError() {
    return oauth2::makeError(oauth2::ErrorCode::windowClosed,
                             QStringLiteral("The sign-in was cancelled before it was finished."));
}

} // namespace

BrowserSignInSheet::BrowserSignInSheet(const Auth& authentication, const QUrl& authorizationURL,
                                       const QString& keychainItemName, const BrowserSignInServices& services)
    : authentication_(authentication)
    , authorizationURL_(authorizationURL)
    , keychainItemName_(keychainItemName)
    , keychain_(services.keychain)
    , signIn_(authentication, authorizationURL, services.opener, services.environment) {}

BrowserSignInSheet::~BrowserSignInSheet() {
    finished_.ticket().cancel();
    if (!window_)
        return;
    window_->disconnect(this);
    window_->dismiss();
    window_->deleteLater(); // this may be called from inside of it
}

void BrowserSignInSheet::signInSheetModalForWindow(QWidget* window, QObject* context,
                                                   CompletionHandler completionHandler) {
    finished_ = {context, std::move(completionHandler)};
    makeWindow(window ? window->window() : nullptr);
    connect(&signIn_, &BrowserSignIn::answered, this, [this] {
        if (window_)
            window_->showFinishing();
    });
    signIn_.signIn(this, [this](const Auth&, const MaybeError& error) { finished(error); });
    // Without a browser or a port, the end has come already and is only to be told.
    if (signIn_.pageAddress().isEmpty())
        return;
    if (window)
        window_->open();
    else
        window_->show();
}

void BrowserSignInSheet::makeWindow(QWidget* parent) {
    window_ = new BrowserSignInWindow(parent);
    window_->showWaiting(authorizationURL_.host());
    connect(window_, &BrowserSignInWindow::closedByUser, this, &BrowserSignInSheet::closedByUser);
    // With the window that the sheet belonged to.
    connect(window_, &QObject::destroyed, this, &BrowserSignInSheet::closedByUser);
    connect(window_->openAgainButton(), &QPushButton::clicked, this, [this] {
        const bool isOpen = signIn_.openPageAgain();
        window_->setNotice(isOpen ? QString()
                                  : tr("No browser took the page. Copy the address and open it in one yourself."));
    });
    connect(window_->copyButton(), &QPushButton::clicked, this, &BrowserSignInSheet::copyAddress);
    connect(window_->keychainCheckbox(), &QCheckBox::toggled, this, [this](bool isOn) { wantsKeychain_ = isOn; });
}

void BrowserSignInSheet::copyAddress() {
    auto data = std::make_unique<QMimeData>();
    data->setText(signIn_.pageAddress().toString(QUrl::FullyEncoded));
    // What desktops' clipboard histories look for, to leave it out.
    data->setData(QStringLiteral("x-kde-passwordManagerHint"), QByteArrayLiteral("secret"));
    QGuiApplication::clipboard()->setMimeData(data.release());
    window_->setNotice(tr("The address is on the clipboard. Open it in a browser on this computer."));
}

void BrowserSignInSheet::callAttention(const QString& notice) {
    if (!window_)
        return;
    window_->setNotice(notice);
    window_->raise();
    window_->activateWindow();
}

BrowserSignInWindow* BrowserSignInSheet::window() const { return window_; }

void BrowserSignInSheet::closedByUser() {
    signIn_.cancel();
    finished_.deliver(authentication_, MaybeError(windowClosedError()));
}

// Nobody waits for the keyring: a locked one would hold up a sign-in that is good. KeychainPersistence keeps the order
// with what follows, and tells when it has failed.
void BrowserSignInSheet::finished(const MaybeError& error) {
    if (window_) {
        window_->disconnect(this);
        window_->dismiss();
    }
    if (!error && !keychainItemName_.isEmpty()) {
        if (wantsKeychain_ && authentication_->canAuthorize())
            keychain_.saveAuthToKeychainForName(keychainItemName_, *authentication_);
        else
            keychain_.removeAuthFromKeychainForName(keychainItemName_);
    }
    finished_.deliver(authentication_, error);
}

} // namespace quenby
