// Custom properties of a file.
#pragma once

#include "driveapi/GTLDriveList.h"

namespace quenby {

class GTLDriveProperty : public GTLObject {
    GTL_OBJECT(GTLDriveProperty);

public:
    GTL_PROPERTY(QString, key, setKey, "key");
    GTL_PROPERTY(QString, value, setValue, "value");
    GTL_PROPERTY(QString, visibility, setVisibility, "visibility");
    GTL_PROPERTY(QString, ETag, setETag, "etag");
    GTL_PROPERTY(QString, selfLink, setSelfLink, "selfLink");
    GTL_PROPERTY(QString, kind, setKind, "kind");
};

class GTLDrivePropertyList : public GTLCollectionOf<GTLDriveProperty, GTLDriveList> {
    GTL_OBJECT(GTLDrivePropertyList);

public:
    GTL_PROPERTY(GTLArray<GTLDriveProperty>, items, setItems, "items");
};

} // namespace quenby
