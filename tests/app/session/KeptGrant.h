// A sign-in to the local Drive as it is kept in the keyring, without anybody signing in.
#pragma once

#include "app/account/DriveConnection.h"
#include "oauth2/GTMOAuth2Authentication.h"
#include "oauth2/window/KeychainPersistence.h"
#include "platform/Keyring.h"
#include "tests/support/LocalDriveProcess.h"

namespace quenby::testing {

// The client that LocalDriveProcess::grant() is for.
inline ClientIdentity grantedClient() { return {QStringLiteral("test"), ClientIdentity::ofTheProgram().clientSecret}; }

inline KeyringItem itemOf(const Endpoints& endpoints) { return {endpoints.keychainItemName, QStringLiteral("OAuth")}; }

inline QByteArray keptGrant(LocalDriveProcess& drive, const QString& email) {
    const DriveConnection connection(Endpoints::localDrive(drive.url()), grantedClient(), makeSystemTimeSource(), {});
    const auto authentication = connection.makeAuthentication();
    authentication->setKeysForResponseDictionary(drive.grant(email).toVariantMap());
    authentication->setUserEmail(email);
    return authentication->persistenceResponseString().toUtf8();
}

// One that the Drive has never given out.
inline QByteArray refusedGrant(const QString& email) {
    return "refresh_token=never%20given%20out&serviceProvider=Google&email=" + email.toUtf8().toPercentEncoding();
}

} // namespace quenby::testing
