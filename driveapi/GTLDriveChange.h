// The change feed. A change has its file unless the file is gone.
#pragma once

#include "driveapi/GTLDriveFile.h"
#include "driveapi/GTLDriveList.h"

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

class GTLDriveChangeList : public GTLCollectionOf<GTLDriveChange, GTLDrivePageList> {
    GTL_OBJECT(GTLDriveChangeList);

public:
    GTL_PROPERTY(GTLArray<GTLDriveChange>, items, setItems, "items");
    // Absent where the service counts changes no more; then its last page tells where the next reading begins.
    GTL_PROPERTY(qint64, largestChangeId, setLargestChangeId, "largestChangeId");
    GTL_PROPERTY(QString, newStartPageToken, setNewStartPageToken, "newStartPageToken");
};

class GTLDriveStartPageToken : public GTLObject {
    GTL_OBJECT(GTLDriveStartPageToken);

public:
    GTL_PROPERTY(QString, startPageToken, setStartPageToken, "startPageToken"); // the page after the latest change
    GTL_PROPERTY(QString, kind, setKind, "kind");
};

} // namespace quenby
