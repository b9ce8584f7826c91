// Where the program's own files lie, after the XDG Base Directory Specification. Absolute paths; nothing is made.
#pragma once

#include <QString>

namespace quenby {

// $XDG_CONFIG_HOME
QString configFolderPath();
// $XDG_CONFIG_HOME/quenby/<profile>.ini
QString settingsFilePath(const QString& profile);
// $XDG_CACHE_HOME/<profile>
QString cacheFolderPath(const QString& profile);

} // namespace quenby
