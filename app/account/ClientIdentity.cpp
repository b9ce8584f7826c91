#include "app/account/ClientIdentity.h"

#include "core/DefaultsKeys.h"
#include "platform/Defaults.h"

namespace quenby {
namespace {

QString idInEnvironment() { return qEnvironmentVariable("QUENBY_CLIENT_ID").trimmed(); }

} // namespace

ClientIdentity ClientIdentity::ofTheProgram() {
    return {QStringLiteral("123456789012-abcdefghijklmnopqrstuvwxyz012345.apps.googleusercontent.com"),
            QStringLiteral("Xq7vK2mPz9LwR4tB-HsYn3Jc")};
}

ClientIdentity ClientIdentity::chosen(const Defaults& defaults) {
    if (const QString id = idInEnvironment(); !id.isEmpty())
        return {id, qEnvironmentVariable("QUENBY_CLIENT_SECRET").trimmed()};
    if (const QString id = defaults.valueForKey(defaultsKey::clientID).toString().trimmed(); !id.isEmpty())
        return {id, defaults.valueForKey(defaultsKey::clientSecret).toString().trimmed()};
    return ofTheProgram();
}

bool ClientIdentity::isChosenByEnvironment() { return !idInEnvironment().isEmpty(); }

} // namespace quenby
