// The "User-Agent" header of the API client.
#pragma once

#include <QByteArray>
#include <QString>

namespace quenby {

// The application, the client library with its version, the system, and the addition when there is one. An identifier
// that names the client library already is used as it is.
QByteArray composeUserAgent(const QString& identifier, const QString& systemVersion, const QString& addition);

} // namespace quenby
