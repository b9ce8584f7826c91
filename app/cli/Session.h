// The one place where a command's tools are put together: the Drive to talk to, the sign-in, and the service that
// carries both. Threads: the main thread. Outlives every command.
#pragma once

#include "app/account/DriveConnection.h"
#include "app/cli/LocalDriveLauncher.h"
#include "app/cli/TokenFile.h"
#include "core/Endpoints.h"
#include "driveapi/GTLServiceDrive.h"
#include "oauth2/GTMOAuth2Authentication.h"

#include <QObject>

#include <functional>
#include <memory>

namespace quenby {

class BrowserSignIn;
class Console;
class ConsoleOpener;
class KeptSignIn;
class LocalSignInPage;
class ProxySetting;
struct AccountStorage;

class Session : public QObject {
    Q_OBJECT

public:
    struct Settings {
        bool local = false;   // the local Drive, not the provider's
        QByteArray localData; // its data folder, empty for the usual one; its sign-in is then kept there too
        QByteArray httpLog;   // folder for the fetch log; empty: none
        bool signsIn = false; // there is somebody who can sign in to the provider's Drive by a browser
    };
    // The Drive that is meant without `local`, and where the desktop program keeps the sign-in to it.
    struct Provider {
        Endpoints endpoints;
        std::function<AccountStorage()> storage;
    };
    using Opened = std::function<void(const MaybeError& error)>;

    Session(Console& console, const Settings& settings, Provider provider, std::shared_ptr<TimeSource> timeSource);
    ~Session() override;

    // Finds or starts the local Drive, and signs in there where no sign-in is kept or the kept one is refused. Only a
    // person can sign in to the provider's: without a good sign-in in the keyring, this asks for one by the browser
    // when the settings allow it, and fails otherwise.
    void open(QObject* context, Opened opened);
    // To be waited for before the program ends: what is to be kept is kept then.
    void close(QObject* context, std::function<void()> closed);

    // Only once open.
    const std::shared_ptr<GTLServiceDrive>& driveService() const { return connection_->driveService(); }
    const std::shared_ptr<GTMOAuth2Authentication>& authentication() const { return authentication_; }
    const Endpoints& endpoints() const { return connection_->endpoints(); }
    const std::shared_ptr<TimeSource>& timeSource() const { return timeSource_; }

    // After trouble: the local Drive is started again if it has died.
    void revive();

Q_SIGNALS:
    // The local Drive was started again and answers.
    void revived();

private:
    void openKept();
    void compose(Endpoints endpoints, ClientIdentity identity);
    void startWithoutSignIn();
    void restoreSignIn();
    void checkSignIn();
    void signIn();
    void signInByBrowser();
    void keepSignIn();

    Console& console_;
    const Settings settings_;
    const Provider provider_;
    const std::shared_ptr<TimeSource> timeSource_;
    const TokenFile tokenFile_;
    LocalDriveLauncher launcher_;
    CompletionGate<MaybeError> opened_;

    std::unique_ptr<KeptSignIn> kept_;       // of the provider's Drive
    std::unique_ptr<Timer> keyringPatience_; // while it is being read
    std::unique_ptr<ProxySetting> proxies_;  // of the settings; null on the local Drive, which needs none
    std::unique_ptr<DriveConnection> connection_;
    std::shared_ptr<GTMOAuth2Authentication> authentication_;
    std::unique_ptr<LocalSignInPage> signInPage_; // while a sign-in is under way
    std::unique_ptr<ConsoleOpener> opener_;
    std::unique_ptr<BrowserSignIn> browserSignIn_; // likewise, to the provider's
    QString keptToken_;                            // the refresh token in the file or keyring; a secret
};

} // namespace quenby
