// The metadata of a file or folder, and lists of them. Sizes are in bytes.
#pragma once

#include "driveapi/GTLDriveFileParts.h"
#include "driveapi/GTLDriveList.h"
#include "driveapi/GTLDrivePermission.h"
#include "driveapi/GTLDriveProperty.h"
#include "driveapi/GTLDriveReference.h"
#include "driveapi/GTLDriveUser.h"

namespace quenby {

class GTLDriveFile : public GTLObject {
    GTL_OBJECT(GTLDriveFile);

public:
    GTL_PROPERTY(QString, identifier, setIdentifier, "id");
    GTL_PROPERTY(QString, title, setTitle, "title");
    GTL_PROPERTY(QString, mimeType, setMimeType, "mimeType");
    GTL_PROPERTY(GTLDriveFileLabels, labels, setLabels, "labels");
    GTL_PROPERTY(GTLArray<GTLDriveParentReference>, parents, setParents, "parents");
    GTL_PROPERTY(GTLDateTime, createdDate, setCreatedDate, "createdDate");
    GTL_PROPERTY(GTLDateTime, modifiedDate, setModifiedDate, "modifiedDate");
    GTL_PROPERTY(GTLDateTime, modifiedByMeDate, setModifiedByMeDate, "modifiedByMeDate");
    GTL_PROPERTY(GTLDateTime, lastViewedByMeDate, setLastViewedByMeDate, "lastViewedByMeDate");
    GTL_PROPERTY(GTLDateTime, markedViewedByMeDate, setMarkedViewedByMeDate, "markedViewedByMeDate");
    GTL_PROPERTY(GTLDateTime, sharedWithMeDate, setSharedWithMeDate, "sharedWithMeDate");
    GTL_PROPERTY(QString, alternateLink, setAlternateLink, "alternateLink");
    GTL_PROPERTY(QString, defaultOpenWithLink, setDefaultOpenWithLink, "defaultOpenWithLink");
    GTL_PROPERTY(QString, downloadUrl, setDownloadUrl, "downloadUrl");
    GTL_PROPERTY(QString, embedLink, setEmbedLink, "embedLink");
    GTL_PROPERTY(QString, iconLink, setIconLink, "iconLink");
    GTL_PROPERTY(QString, selfLink, setSelfLink, "selfLink");
    GTL_PROPERTY(QString, thumbnailLink, setThumbnailLink, "thumbnailLink");
    GTL_PROPERTY(QString, resourceKey, setResourceKey, "resourceKey"); // to be sent along by whoever has only the link
    GTL_PROPERTY(QString, webContentLink, setWebContentLink, "webContentLink");
    GTL_PROPERTY(QString, webViewLink, setWebViewLink, "webViewLink");
    GTL_PROPERTY(QString, descriptionProperty, setDescriptionProperty, "description");
    GTL_PROPERTY(QString, ETag, setETag, "etag");
    GTL_PROPERTY(QString, fileExtension, setFileExtension, "fileExtension");
    GTL_PROPERTY(QString, originalFilename, setOriginalFilename, "originalFilename");
    GTL_PROPERTY(QString, md5Checksum, setMd5Checksum, "md5Checksum");
    GTL_PROPERTY(QString, headRevisionId, setHeadRevisionId, "headRevisionId");
    GTL_PROPERTY(QString, lastModifyingUserName, setLastModifyingUserName, "lastModifyingUserName");
    GTL_PROPERTY(qint64, fileSize, setFileSize, "fileSize");
    GTL_PROPERTY(qint64, quotaBytesUsed, setQuotaBytesUsed, "quotaBytesUsed");
    GTL_PROPERTY(qint64, version, setVersion, "version");
    GTL_PROPERTY(bool, appDataContents, setAppDataContents, "appDataContents");
    GTL_PROPERTY(bool, copyable, setCopyable, "copyable");
    GTL_PROPERTY(bool, editable, setEditable, "editable");
    GTL_PROPERTY(bool, explicitlyTrashed, setExplicitlyTrashed, "explicitlyTrashed");
    GTL_PROPERTY(bool, shared, setShared, "shared");
    GTL_PROPERTY(bool, writersCanShare, setWritersCanShare, "writersCanShare");
    GTL_PROPERTY(GTLDriveFileExportLinks, exportLinks, setExportLinks, "exportLinks");
    GTL_PROPERTY(GTLDriveFileOpenWithLinks, openWithLinks, setOpenWithLinks, "openWithLinks");
    GTL_PROPERTY(GTLDriveFileImageMediaMetadata, imageMediaMetadata, setImageMediaMetadata, "imageMediaMetadata");
    GTL_PROPERTY(GTLDriveFileVideoMediaMetadata, videoMediaMetadata, setVideoMediaMetadata, "videoMediaMetadata");
    GTL_PROPERTY(GTLDriveFileIndexableText, indexableText, setIndexableText, "indexableText");
    GTL_PROPERTY(GTLDriveFileThumbnail, thumbnail, setThumbnail, "thumbnail");
    GTL_PROPERTY(GTLDriveUser, lastModifyingUser, setLastModifyingUser, "lastModifyingUser");
    GTL_PROPERTY(GTLDriveUser, sharingUser, setSharingUser, "sharingUser");
    GTL_PROPERTY(GTLArray<GTLDriveUser>, owners, setOwners, "owners");
    GTL_PROPERTY(GTLArray<QString>, ownerNames, setOwnerNames, "ownerNames");
    GTL_PROPERTY(GTLArray<GTLDrivePermission>, permissions, setPermissions, "permissions");
    GTL_PROPERTY(GTLArray<GTLDriveProperty>, properties, setProperties, "properties");
    GTL_PROPERTY(GTLDrivePermission, userPermission, setUserPermission, "userPermission");
    GTL_PROPERTY(QString, kind, setKind, "kind");
};

// Identifiers that no file has, for files to come.
class GTLDriveGeneratedIds : public GTLObject {
    GTL_OBJECT(GTLDriveGeneratedIds);

public:
    GTL_PROPERTY(GTLArray<QString>, ids, setIds, "ids");
    GTL_PROPERTY(QString, space, setSpace, "space");
    GTL_PROPERTY(QString, kind, setKind, "kind");
};

class GTLDriveFileList : public GTLCollectionOf<GTLDriveFile, GTLDrivePageList> {
    GTL_OBJECT(GTLDriveFileList);

public:
    GTL_PROPERTY(GTLArray<GTLDriveFile>, items, setItems, "items");
};

} // namespace quenby
