// What the lists of Drive resources have besides their items.
#pragma once

#include "driveapi/GTLCollectionObject.h"

namespace quenby {

// A list that comes whole.
class GTLDriveList : public GTLCollectionObject {
    GTL_OBJECT(GTLDriveList);

public:
    GTL_PROPERTY(QString, selfLink, setSelfLink, "selfLink");
    GTL_PROPERTY(QString, ETag, setETag, "etag");
    GTL_PROPERTY(QString, kind, setKind, "kind");
};

// One page of a list. The last page has neither a token nor a link for the next.
class GTLDrivePageList : public GTLDriveList {
    GTL_OBJECT(GTLDrivePageList);

public:
    GTL_PROPERTY(QString, nextPageToken, setNextPageToken, "nextPageToken");
    GTL_PROPERTY(QString, nextLink, setNextLink, "nextLink");
};

} // namespace quenby
