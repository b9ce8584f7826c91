// References from a file to its parent folders, and from a folder to its children.
#pragma once

#include "driveapi/GTLDriveList.h"

namespace quenby {

// The identifier is the folder's; "root" stands for the root folder.
class GTLDriveParentReference : public GTLObject {
    GTL_OBJECT(GTLDriveParentReference);

public:
    GTL_PROPERTY(QString, identifier, setIdentifier, "id");
    GTL_PROPERTY(bool, isRoot, setIsRoot, "isRoot");
    GTL_PROPERTY(QString, parentLink, setParentLink, "parentLink");
    GTL_PROPERTY(QString, selfLink, setSelfLink, "selfLink");
    GTL_PROPERTY(QString, kind, setKind, "kind");
};

class GTLDriveParentList : public GTLCollectionOf<GTLDriveParentReference, GTLDriveList> {
    GTL_OBJECT(GTLDriveParentList);

public:
    GTL_PROPERTY(GTLArray<GTLDriveParentReference>, items, setItems, "items");
};

class GTLDriveChildReference : public GTLObject {
    GTL_OBJECT(GTLDriveChildReference);

public:
    GTL_PROPERTY(QString, identifier, setIdentifier, "id");
    GTL_PROPERTY(QString, childLink, setChildLink, "childLink");
    GTL_PROPERTY(QString, selfLink, setSelfLink, "selfLink");
    GTL_PROPERTY(QString, kind, setKind, "kind");
};

class GTLDriveChildList : public GTLCollectionOf<GTLDriveChildReference, GTLDrivePageList> {
    GTL_OBJECT(GTLDriveChildList);

public:
    GTL_PROPERTY(GTLArray<GTLDriveChildReference>, items, setItems, "items");
};

} // namespace quenby
