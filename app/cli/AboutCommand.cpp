#include "app/cli/AboutCommand.h"

#include "app/account/AccountSummary.h"
#include "app/cli/Console.h"
#include "app/cli/Session.h"
#include "driveapi/GTLDriveAbout.h"
#include "driveapi/GTLQueryDrive.h"

namespace quenby {

AboutCommand::AboutCommand(Session& session, Console& console)
    : session_(session)
    , console_(console) {}

AboutCommand::~AboutCommand() {
    if (ticket_)
        ticket_->cancelTicket();
}

void AboutCommand::start() {
    ticket_ = session_.driveService()->executeQuery(GTLQueryDrive::queryForAboutGet(), this,
                                                    [this](const GTLServiceTicketPtr&, const GTLObjectPtr& object,
                                                           const MaybeError& error) { answered(object, error); });
}

void AboutCommand::answered(const GTLObjectPtr& object, const MaybeError& error) {
    const auto about = std::dynamic_pointer_cast<GTLDriveAbout>(object);
    if (error || !about) {
        console_.error(error.value_or(
            Error(URLErrorCode::badServerResponse,
                  {{errorKey::reason, QStringLiteral("the Drive's answer can't be understood; try again later")}})));
        Q_EMIT finished(exitCode::failed);
        return;
    }
    const AccountSummary summary = accountSummary(*about);
    console_.result(summary.displayName + QStringLiteral(" <") + summary.emailAddress + QStringLiteral(">, ") +
                        quotaText(summary),
                    {{QStringLiteral("displayName"), summary.displayName},
                     {QStringLiteral("emailAddress"), summary.emailAddress},
                     {QStringLiteral("quota"), quotaText(summary)},
                     {QStringLiteral("bytesTotal"), about->quotaBytesTotal()},
                     {QStringLiteral("bytesUsed"), bytesUsed(*about)}});
    Q_EMIT finished(exitCode::done);
}

} // namespace quenby
