// One call of the command line from its options to its exit code. Threads: the main thread.
#pragma once

#include "app/cli/Command.h"
#include "app/cli/Console.h"
#include "app/cli/Options.h"
#include "app/cli/Session.h"
#include "app/cli/SignalWatch.h"

#include <memory>

namespace quenby {

class Program {
public:
    Program(Console& console, Options options);
    ~Program();

    // Runs the application's event loop until the command has finished or a signal has ended it.
    int run();

private:
    std::unique_ptr<Command> makeCommand();

    Console& console_;
    const Options options_;
    Session session_;
    std::unique_ptr<Command> command_;
    SignalWatch signals_;
};

} // namespace quenby
