// What the Drive tells about the account: fetched when the account is opened, and again 600 seconds after each answer.
//
// Threads: the main thread. A failed fetch is told and not repeated from here: the account has to be opened again.
#pragma once

#include "core/AccountSummary.h"
#include "core/TimeSource.h"
#include "driveapi/GTLService.h"

#include <QObject>

#include <memory>
#include <optional>

namespace quenby {

class GTLDriveAbout;
class GTLServiceDrive;

// The server has said what time it is; what this computer's clocks showed at that moment.
struct ServerMoment {
    QDateTime date; // whole seconds
    QDateTime local;
    std::chrono::milliseconds elapsed;
};

class AccountDetails : public QObject {
    Q_OBJECT

public:
    AccountDetails(std::shared_ptr<GTLServiceDrive> driveService, std::shared_ptr<TimeSource> timeSource);
    ~AccountDetails() override;

    // Fetches now. A fetch that runs or waits is given up for this one.
    void GetDetailOfUserDrive();
    // Signed out: nothing is known any more, and nothing is fetched.
    void clear();

    // Absent until the first answer.
    const std::optional<AccountSummary>& dicUserData() const { return dicUserData_; }
    // The folder at the top of the Drive; empty until the first answer.
    const QString& RootFolderId() const { return RootFolderId_; }
    void setRootFolderId(const QString& identifier) { RootFolderId_ = identifier; }
    // Of the last answer of any kind; absent before the first.
    const std::optional<ServerMoment>& serverMoment() const { return serverMoment_; }
    // The last answer, or null.
    const std::shared_ptr<GTLDriveAbout>& DriveInfoAPI() const { return DriveInfoAPI_; }

Q_SIGNALS:
    // The first answer since the start or the sign-in; comes before its changed().
    void arrived();
    void changed();
    void failed(const quenby::Error& error);

private:
    void heardFrom(const GTLServiceTicket& ticket);
    void answered(const GTLObjectPtr& object, const MaybeError& error);
    void detailsSetInApp(const std::shared_ptr<GTLDriveAbout>& about);
    void stop();

    const std::shared_ptr<GTLServiceDrive> driveService_;
    const std::shared_ptr<TimeSource> timeSource_;
    GTLServiceTicketPtr ticket_;
    std::unique_ptr<Timer> nextFetch_;
    std::optional<ServerMoment> serverMoment_;
    std::optional<AccountSummary> dicUserData_;
    QString RootFolderId_;
    std::shared_ptr<GTLDriveAbout> DriveInfoAPI_;
};

} // namespace quenby
