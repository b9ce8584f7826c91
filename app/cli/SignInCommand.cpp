#include "app/cli/SignInCommand.h"

#include "app/cli/Console.h"
#include "app/cli/Session.h"

namespace quenby {

SignInCommand::SignInCommand(Session& session, Console& console)
    : session_(session)
    , console_(console) {}

void SignInCommand::start() {
    const QString email = session_.authentication()->userEmail();
    console_.result(QStringLiteral("Signed in as ") + (email.isEmpty() ? QStringLiteral("somebody") : email),
                    {{QStringLiteral("signedIn"), true}, {QStringLiteral("emailAddress"), email}});
    Q_EMIT finished(exitCode::done);
}

} // namespace quenby
