// When what happened, for whoever measures the start of the desktop program.
#pragma once

namespace quenby {

// With QUENBY_LAUNCH_TRACE set, one line on the standard error: "quenby-launch", the milliseconds since the process
// began, and the word. Otherwise nothing. Any thread.
void traceLaunch(const char* word);

} // namespace quenby
