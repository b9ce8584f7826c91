// How much of the Drive a sign-in opens to the program.
#pragma once

namespace quenby {

enum class DriveAccess {
    everything,
    ownFiles, // the files that this program has made, and no others
};

} // namespace quenby
