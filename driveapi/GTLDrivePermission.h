// Who may do what with a file.
#pragma once

#include "driveapi/GTLDriveList.h"

namespace quenby {

class GTLDrivePermission : public GTLObject {
    GTL_OBJECT(GTLDrivePermission);

public:
    GTL_PROPERTY(QString, identifier, setIdentifier, "id");
    GTL_PROPERTY(QString, role, setRole, "role");
    GTL_PROPERTY(QString, type, setType, "type");
    GTL_PROPERTY(QString, value, setValue, "value");
    GTL_PROPERTY(QString, name, setName, "name");
    GTL_PROPERTY(QString, emailAddress, setEmailAddress, "emailAddress");
    GTL_PROPERTY(QString, domain, setDomain, "domain");
    GTL_PROPERTY(QString, authKey, setAuthKey, "authKey");
    GTL_PROPERTY(QString, photoLink, setPhotoLink, "photoLink");
    GTL_PROPERTY(bool, withLink, setWithLink, "withLink");
    GTL_PROPERTY(GTLArray<QString>, additionalRoles, setAdditionalRoles, "additionalRoles");
    GTL_PROPERTY(QString, ETag, setETag, "etag");
    GTL_PROPERTY(QString, selfLink, setSelfLink, "selfLink");
    GTL_PROPERTY(QString, kind, setKind, "kind");
};

class GTLDrivePermissionList : public GTLCollectionOf<GTLDrivePermission, GTLDriveList> {
    GTL_OBJECT(GTLDrivePermissionList);

public:
    GTL_PROPERTY(GTLArray<GTLDrivePermission>, items, setItems, "items");
};

class GTLDrivePermissionId : public GTLObject {
    GTL_OBJECT(GTLDrivePermissionId);

public:
    GTL_PROPERTY(QString, identifier, setIdentifier, "id");
    GTL_PROPERTY(QString, kind, setKind, "kind");
};

} // namespace quenby
