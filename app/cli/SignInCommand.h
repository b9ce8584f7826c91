// quenby signin: the session has signed in already when this starts; it tells as whom.
#pragma once

#include "app/cli/Command.h"

namespace quenby {

class Console;
class Session;

class SignInCommand : public Command {
    Q_OBJECT

public:
    SignInCommand(Session& session, Console& console);
    void start() override;

private:
    Session& session_;
    Console& console_;
};

} // namespace quenby
