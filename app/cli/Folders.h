// Where the program keeps what must outlive it, after the XDG base directory rules. Paths are bytes.
#pragma once

#include "core/Result.h"

#include <QByteArray>

namespace quenby {

// $XDG_STATE_HOME/quenby, or ~/.local/state/quenby when that is not set to an absolute path.
QByteArray stateFolder();
// $XDG_DATA_HOME/quenby/local-drive, or ~/.local/share/quenby/local-drive.
QByteArray defaultLocalDriveFolder();

// The path as seen from the root folder.
QByteArray absolutePath(const QByteArray& path);
// Whether something has this name, a dangling link included.
bool isThere(const QByteArray& path);
// The folder that a path lies in; "." when it names none.
QByteArray folderOf(const QByteArray& path);
QByteArray lastComponent(const QByteArray& path);

// Makes the folder and those above it that are missing, for this user alone.
Result<void> makePrivateFolder(const QByteArray& path);

// An errno with what was tried: "can't read the file /tmp/x: No such file or directory".
Error fileError(int code, const QString& tried, const QByteArray& path);

} // namespace quenby
