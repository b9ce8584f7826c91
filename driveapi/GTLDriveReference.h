// References from a file to its parent folders, and from a folder to its children.
#pragma once

#include "driveapi/GTLCollectionObject.h"

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

class GTLDriveParentList : public GTLCollectionOf<GTLDriveParentReference> {
    GTL_OBJECT(GTLDriveParentList);

public:
    GTL_PROPERTY(GTLArray<GTLDriveParentReference>, items, setItems, "items");
    GTL_PROPERTY(QString, selfLink, setSelfLink, "selfLink");
    GTL_PROPERTY(QString, ETag, setETag, "etag");
    GTL_PROPERTY(QString, kind, setKind, "kind");
};

class GTLDriveChildReference : public GTLObject {
    GTL_OBJECT(GTLDriveChildReference);

public:
    GTL_PROPERTY(QString, identifier, setIdentifier, "id");
    GTL_PROPERTY(QString, childLink, setChildLink, "childLink");
    GTL_PROPERTY(QString, selfLink, setSelfLink, "selfLink");
    GTL_PROPERTY(QString, kind, setKind, "kind");
};

class GTLDriveChildList : public GTLCollectionOf<GTLDriveChildReference> {
    GTL_OBJECT(GTLDriveChildList);

public:
    GTL_PROPERTY(GTLArray<GTLDriveChildReference>, items, setItems, "items");
    GTL_PROPERTY(QString, nextPageToken, setNextPageToken, "nextPageToken");
    GTL_PROPERTY(QString, nextLink, setNextLink, "nextLink");
    GTL_PROPERTY(QString, selfLink, setSelfLink, "selfLink");
    GTL_PROPERTY(QString, ETag, setETag, "etag");
    GTL_PROPERTY(QString, kind, setKind, "kind");
};

} // namespace quenby
