#include "app/session/AccountDetails.h"

#include "app/account/AccountSummary.h"
#include "driveapi/GTLDriveAbout.h"
#include "driveapi/GTLQueryDrive.h"
#include "driveapi/GTLServiceDrive.h"
#include "driveapi/GTLServiceTicket.h"
#include "http/GTMHTTPFetcher.h"
#include "http/HTTPDate.h"

namespace quenby {
namespace {

constexpr std::chrono::seconds refreshInterval(600);

} // namespace

AccountDetails::AccountDetails(std::shared_ptr<GTLServiceDrive> driveService, std::shared_ptr<TimeSource> timeSource)
    : driveService_(std::move(driveService))
    , timeSource_(std::move(timeSource)) {}

AccountDetails::~AccountDetails() { stop(); }

void AccountDetails::GetDetailOfUserDrive() {
    stop();
    ticket_ = driveService_->executeQuery(
        GTLQueryDrive::queryForAboutGet(), this,
        [this](const GTLServiceTicketPtr& ticket, const GTLObjectPtr& object, const MaybeError& error) {
            heardFrom(*ticket);
            answered(object, error);
        });
}

void AccountDetails::clear() {
    stop();
    dicUserData_.reset();
    RootFolderId_.clear();
    DriveInfoAPI_.reset();
}

void AccountDetails::heardFrom(const GTLServiceTicket& ticket) {
    const auto& fetcher = ticket.objectFetcher();
    const QDateTime date = fetcher ? parseHTTPDate(fetcher->responseHeaders().value("Date")) : QDateTime();
    if (date.isValid())
        serverMoment_ = ServerMoment{date, timeSource_->now(), timeSource_->elapsed()};
}

void AccountDetails::answered(const GTLObjectPtr& object, const MaybeError& error) {
    ticket_.reset();
    const auto about = std::dynamic_pointer_cast<GTLDriveAbout>(object);
    if (error || !about) {
        Q_EMIT failed(error.value_or(
            Error(URLErrorCode::badServerResponse,
                  {{errorKey::reason, QStringLiteral("the Drive's answer can't be understood; try again later")}})));
        return;
    }
    nextFetch_ = timeSource_->startTimer(refreshInterval, [this] { GetDetailOfUserDrive(); });
    if (RootFolderId_.isEmpty())
        Q_EMIT arrived();
    detailsSetInApp(about);
}

void AccountDetails::detailsSetInApp(const std::shared_ptr<GTLDriveAbout>& about) {
    DriveInfoAPI_ = about;
    RootFolderId_ = about->rootFolderId();
    dicUserData_ = accountSummary(*about);
    Q_EMIT changed();
}

void AccountDetails::stop() {
    nextFetch_.reset();
    if (ticket_)
        ticket_->cancelTicket();
    ticket_.reset();
}

} // namespace quenby
