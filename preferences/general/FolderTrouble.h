// Why a folder that was chosen once cannot be used now.
#pragma once

#include <QByteArray>
#include <QString>

namespace quenby {

// A sentence that says what to do; empty when the folder is there and can be read. The path is how people know it. May
// wait for the file system. Threads: any.
QString folderTrouble(const QString& path, const QByteArray& bookmark);

} // namespace quenby
