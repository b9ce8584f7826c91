// Who the application is towards the service. An installed application's secret is no secret that protects anything
// (RFC 8252, section 8.5), but it is never logged either.
#pragma once

#include <QString>

namespace quenby::clientIdentity {

inline const QString clientID =
    QStringLiteral("123456789012-abcdefghijklmnopqrstuvwxyz012345.apps.googleusercontent.com");
inline const QString clientSecret = QStringLiteral("Xq7vK2mPz9LwR4tB-HsYn3Jc");

} // namespace quenby::clientIdentity
