// The change feed. A change has its file unless the file is gone.
#pragma once

#include "driveapi/GTLCollectionObject.h"
#include "driveapi/GTLDriveFile.h"

namespace quenby {

class GTLDriveChange : public GTLObject {
    GTL_OBJECT(GTLDriveChange);

public:
    GTL_PROPERTY(qint64, identifier, setIdentifier, "id");
    GTL_PROPERTY(QString, fileId, setFileId, "fileId");
    GTL_PROPERTY(GTLDriveFile, file, setFile, "file");
    GTL_PROPERTY(bool, deleted, setDeleted, "deleted");
    GTL_PROPERTY(GTLDateTime, modificationDate, setModificationDate, "modificationDate");
    GTL_PROPERTY(QString, selfLink, setSelfLink, "selfLink");
    GTL_PROPERTY(QString, kind, setKind, "kind");
};

class GTLDriveChangeList : public GTLCollectionOf<GTLDriveChange> {
    GTL_OBJECT(GTLDriveChangeList);

public:
    GTL_PROPERTY(GTLArray<GTLDriveChange>, items, setItems, "items");
    GTL_PROPERTY(qint64, largestChangeId, setLargestChangeId, "largestChangeId");
    GTL_PROPERTY(QString, nextPageToken, setNextPageToken, "nextPageToken");
    GTL_PROPERTY(QString, nextLink, setNextLink, "nextLink");
    GTL_PROPERTY(QString, selfLink, setSelfLink, "selfLink");
    GTL_PROPERTY(QString, ETag, setETag, "etag");
    GTL_PROPERTY(QString, kind, setKind, "kind");
};

} // namespace quenby
