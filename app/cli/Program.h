// One call of the command line from its options to its exit code. Threads: the main thread.
#pragma once

#include "app/cli/Command.h"
#include "app/cli/Console.h"
#include "app/cli/Options.h"
#include "app/cli/Session.h"
#include "platform/linux/session/ProcessSignals.h"

#include <functional>
#include <memory>

namespace quenby {

class Program {
public:
    // The storage is only asked for without --local.
    Program(Console& console, Options options, std::function<AccountStorage()> storage);
    ~Program();

    // Runs the application's event loop until the command has finished or a signal has ended it.
    int run();

private:
    std::unique_ptr<Command> makeCommand();
    void end(int code);

    Console& console_;
    const Options options_;
    Session session_;
    std::unique_ptr<Command> command_;
    ProcessSignals signals_;
};

} // namespace quenby
