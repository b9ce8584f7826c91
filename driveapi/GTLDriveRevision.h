// Earlier states of a file. Sizes are in bytes.
#pragma once

#include "driveapi/GTLDriveList.h"
#include "driveapi/GTLDriveUser.h"

namespace quenby {

// MIME type to link, as additional properties.
class GTLDriveRevisionExportLinks : public GTLObject {
    GTL_OBJECT(GTLDriveRevisionExportLinks);
};

class GTLDriveRevision : public GTLObject {
    GTL_OBJECT(GTLDriveRevision);

public:
    GTL_PROPERTY(QString, identifier, setIdentifier, "id");
    GTL_PROPERTY(QString, downloadUrl, setDownloadUrl, "downloadUrl");
    GTL_PROPERTY(QString, ETag, setETag, "etag");
    GTL_PROPERTY(GTLDriveRevisionExportLinks, exportLinks, setExportLinks, "exportLinks");
    GTL_PROPERTY(qint64, fileSize, setFileSize, "fileSize");
    GTL_PROPERTY(GTLDriveUser, lastModifyingUser, setLastModifyingUser, "lastModifyingUser");
    GTL_PROPERTY(QString, lastModifyingUserName, setLastModifyingUserName, "lastModifyingUserName");
    GTL_PROPERTY(QString, md5Checksum, setMd5Checksum, "md5Checksum");
    GTL_PROPERTY(QString, mimeType, setMimeType, "mimeType");
    GTL_PROPERTY(GTLDateTime, modifiedDate, setModifiedDate, "modifiedDate");
    GTL_PROPERTY(QString, originalFilename, setOriginalFilename, "originalFilename");
    GTL_PROPERTY(bool, pinned, setPinned, "pinned");
    GTL_PROPERTY(bool, publishAuto, setPublishAuto, "publishAuto");
    GTL_PROPERTY(bool, published, setPublished, "published");
    GTL_PROPERTY(QString, publishedLink, setPublishedLink, "publishedLink");
    GTL_PROPERTY(bool, publishedOutsideDomain, setPublishedOutsideDomain, "publishedOutsideDomain");
    GTL_PROPERTY(QString, selfLink, setSelfLink, "selfLink");
    GTL_PROPERTY(QString, kind, setKind, "kind");
};

class GTLDriveRevisionList : public GTLCollectionOf<GTLDriveRevision, GTLDriveList> {
    GTL_OBJECT(GTLDriveRevisionList);

public:
    GTL_PROPERTY(GTLArray<GTLDriveRevision>, items, setItems, "items");
};

} // namespace quenby
