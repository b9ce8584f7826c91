// The structure of a movie file that was being written in pieces.
#pragma once

#include <QtGlobal>

namespace quenby {

// How many bytes from the beginning of the file can be played: everything up to the last piece that is described. 0
// when there is none, or when it is no such file. The descriptor's position is where it was.
qint64 playableLength(int descriptor);

} // namespace quenby
