// The one place where a command's tools are put together: the Drive to talk to, the sign-in, and the service that
// carries both. Threads: the main thread. Outlives every command.
#pragma once

#include "app/cli/LocalDriveLauncher.h"
#include "app/cli/TokenFile.h"
#include "core/Endpoints.h"
#include "driveapi/GTLServiceDrive.h"
#include "oauth2/GTMOAuth2Authentication.h"

#include <QObject>

#include <functional>
#include <memory>

namespace quenby {

class Console;
class FetchLogger;
class GTMHTTPFetcherService;
class LocalSignInPage;

class Session : public QObject {
    Q_OBJECT

public:
    struct Settings {
        bool local = false;   // the local Drive, not the provider's
        QByteArray localData; // its data folder, empty for the usual one; its sign-in is then kept there too
        QByteArray httpLog;   // folder for the fetch log; empty: none
    };
    using Opened = std::function<void(const MaybeError& error)>;

    Session(Console& console, const Settings& settings, std::shared_ptr<TimeSource> timeSource);
    ~Session() override;

    // Finds or starts the Drive and signs in where no sign-in is kept or the kept one is refused.
    void open(QObject* context, Opened opened);

    // Only once open.
    const std::shared_ptr<GTLServiceDrive>& driveService() const { return driveService_; }
    const std::shared_ptr<GTMOAuth2Authentication>& authentication() const { return authentication_; }
    const Endpoints& endpoints() const { return endpoints_; }
    const std::shared_ptr<TimeSource>& timeSource() const { return timeSource_; }

    // After trouble: the local Drive is started again if it has died.
    void revive();

Q_SIGNALS:
    // The local Drive was started again and answers.
    void revived();

private:
    void compose();
    void startWithoutSignIn();
    std::shared_ptr<GTMHTTPFetcherService> makeFetcherService() const;
    void restoreSignIn();
    void checkSignIn();
    void signIn();
    void keepSignIn();

    Console& console_;
    const Settings settings_;
    const std::shared_ptr<TimeSource> timeSource_;
    const TokenFile tokenFile_;
    LocalDriveLauncher launcher_;
    CompletionGate<MaybeError> opened_;

    Endpoints endpoints_;
    std::shared_ptr<FetchLogger> fetchLog_;
    std::shared_ptr<GTMHTTPFetcherService> accountFetcherService_; // for tokens and sign-in pages
    std::shared_ptr<GTMOAuth2Authentication> authentication_;
    std::shared_ptr<GTLServiceDrive> driveService_;
    std::unique_ptr<LocalSignInPage> signInPage_; // while a sign-in is under way
    QString keptToken_;                           // the refresh token in the file; a secret
};

} // namespace quenby
