// quenby about: whose Drive it is and how much of it is used.
#pragma once

#include "app/cli/Command.h"
#include "driveapi/GTLServiceTypes.h"

namespace quenby {

class Console;
class Session;

class AboutCommand : public Command {
    Q_OBJECT

public:
    AboutCommand(Session& session, Console& console);
    ~AboutCommand() override;
    void start() override;

private:
    void answered(const GTLObjectPtr& object, const MaybeError& error);

    Session& session_;
    Console& console_;
    GTLServiceTicketPtr ticket_;
};

} // namespace quenby
