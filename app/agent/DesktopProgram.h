// The desktop program from its command line to its end.
#pragma once

namespace quenby {

class Console;
struct Options;

// Runs until the program is told to end; answers the process's exit code. Without a display it says so and ends.
int runDesktopProgram(int argc, char** argv, const Options& options, Console& console);

} // namespace quenby
