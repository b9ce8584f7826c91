// The media type that the system prefers for a file name.
#pragma once

#include <QString>

namespace quenby {

inline const QString defaultMIMEType = QStringLiteral("binary/octet-stream");

// By the name's extension alone; nothing is opened. The default when the extension is unknown or there is none.
QString MIMETypeFileName(const QString& fileName, const QString& defaultType = defaultMIMEType);

} // namespace quenby
