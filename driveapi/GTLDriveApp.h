// Applications that are connected to the Drive.
#pragma once

#include "driveapi/GTLDriveList.h"

namespace quenby {

// The size is in pixels.
class GTLDriveAppIconsItem : public GTLObject {
    GTL_OBJECT(GTLDriveAppIconsItem);

public:
    GTL_PROPERTY(QString, category, setCategory, "category");
    GTL_PROPERTY(QString, iconUrl, setIconUrl, "iconUrl");
    GTL_PROPERTY(qint64, size, setSize, "size");
};

class GTLDriveApp : public GTLObject {
    GTL_OBJECT(GTLDriveApp);

public:
    GTL_PROPERTY(QString, identifier, setIdentifier, "id");
    GTL_PROPERTY(QString, name, setName, "name");
    GTL_PROPERTY(bool, authorized, setAuthorized, "authorized");
    GTL_PROPERTY(QString, createInFolderTemplate, setCreateInFolderTemplate, "createInFolderTemplate");
    GTL_PROPERTY(QString, createUrl, setCreateUrl, "createUrl");
    GTL_PROPERTY(bool, hasDriveWideScope, setHasDriveWideScope, "hasDriveWideScope");
    GTL_PROPERTY(GTLArray<GTLDriveAppIconsItem>, icons, setIcons, "icons");
    GTL_PROPERTY(bool, installed, setInstalled, "installed");
    GTL_PROPERTY(QString, longDescription, setLongDescription, "longDescription");
    GTL_PROPERTY(QString, objectType, setObjectType, "objectType");
    GTL_PROPERTY(QString, openUrlTemplate, setOpenUrlTemplate, "openUrlTemplate");
    GTL_PROPERTY(GTLArray<QString>, primaryFileExtensions, setPrimaryFileExtensions, "primaryFileExtensions");
    GTL_PROPERTY(GTLArray<QString>, primaryMimeTypes, setPrimaryMimeTypes, "primaryMimeTypes");
    GTL_PROPERTY(QString, productId, setProductId, "productId");
    GTL_PROPERTY(QString, productUrl, setProductUrl, "productUrl");
    GTL_PROPERTY(GTLArray<QString>, secondaryFileExtensions, setSecondaryFileExtensions, "secondaryFileExtensions");
    GTL_PROPERTY(GTLArray<QString>, secondaryMimeTypes, setSecondaryMimeTypes, "secondaryMimeTypes");
    GTL_PROPERTY(QString, shortDescription, setShortDescription, "shortDescription");
    GTL_PROPERTY(bool, supportsCreate, setSupportsCreate, "supportsCreate");
    GTL_PROPERTY(bool, supportsImport, setSupportsImport, "supportsImport");
    GTL_PROPERTY(bool, supportsMultiOpen, setSupportsMultiOpen, "supportsMultiOpen");
    GTL_PROPERTY(bool, supportsOfflineCreate, setSupportsOfflineCreate, "supportsOfflineCreate");
    GTL_PROPERTY(bool, useByDefault, setUseByDefault, "useByDefault");
    GTL_PROPERTY(QString, kind, setKind, "kind");
};

class GTLDriveAppList : public GTLCollectionOf<GTLDriveApp, GTLDriveList> {
    GTL_OBJECT(GTLDriveAppList);

public:
    GTL_PROPERTY(GTLArray<GTLDriveApp>, items, setItems, "items");
    GTL_PROPERTY(GTLArray<QString>, defaultAppIds, setDefaultAppIds, "defaultAppIds");
};

} // namespace quenby
