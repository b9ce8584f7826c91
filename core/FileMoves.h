// Moves of files within one file system that never destroy another file. Paths are bytes, as the system has them.
// Threads: any; a move may wait for a disk or a network.
#pragma once

#include <QByteArray>

namespace quenby {

// False: errno tells what was in the way; EEXIST: another file has that name.
bool renameWithoutReplacing(const QByteArray& from, const QByteArray& to);

// Gives the file that name in the folder, or the first of "a (2).txt", "a (3).txt" and so on that is free. The path
// that it got; empty when it failed, and errno tells why.
QByteArray renameIntoFolder(const QByteArray& from, const QByteArray& folder, const QByteArray& name);

} // namespace quenby
