// People.
#pragma once

#include "driveapi/GTLObject.h"

namespace quenby {

class GTLDriveUserPicture : public GTLObject {
    GTL_OBJECT(GTLDriveUserPicture);

public:
    GTL_PROPERTY(QString, url, setUrl, "url");
};

class GTLDriveUser : public GTLObject {
    GTL_OBJECT(GTLDriveUser);

public:
    GTL_PROPERTY(QString, displayName, setDisplayName, "displayName");
    GTL_PROPERTY(QString, emailAddress, setEmailAddress, "emailAddress");
    GTL_PROPERTY(bool, isAuthenticatedUser, setIsAuthenticatedUser, "isAuthenticatedUser");
    GTL_PROPERTY(QString, permissionId, setPermissionId, "permissionId");
    GTL_PROPERTY(GTLDriveUserPicture, picture, setPicture, "picture");
    GTL_PROPERTY(QString, kind, setKind, "kind");
};

} // namespace quenby
