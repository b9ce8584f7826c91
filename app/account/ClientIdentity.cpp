#include "app/account/ClientIdentity.h"

#include "platform/Defaults.h"

namespace quenby {

ClientIdentity ClientIdentity::ofTheProgram() {
    return {QStringLiteral("123456789012-abcdefghijklmnopqrstuvwxyz012345.apps.googleusercontent.com"),
            QStringLiteral("Xq7vK2mPz9LwR4tB-HsYn3Jc")};
}

ClientIdentity ClientIdentity::chosen(const Defaults& defaults) {
    if (const QString id = qEnvironmentVariable("QUENBY_CLIENT_ID").trimmed(); !id.isEmpty())
        return {id, qEnvironmentVariable("QUENBY_CLIENT_SECRET").trimmed()};
    if (const QString id = defaults.valueForKey(QStringLiteral("clientID")).toString().trimmed(); !id.isEmpty())
        return {id, defaults.valueForKey(QStringLiteral("clientSecret")).toString().trimmed()};
    return ofTheProgram();
}

} // namespace quenby
