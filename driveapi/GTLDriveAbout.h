// The account: who, how much storage, what the service can do. Sizes are in bytes.
#pragma once

#include "driveapi/GTLDriveUser.h"

namespace quenby {

class GTLDriveAboutAdditionalRoleInfoItemRoleSetsItem : public GTLObject {
    GTL_OBJECT(GTLDriveAboutAdditionalRoleInfoItemRoleSetsItem);

public:
    GTL_PROPERTY(GTLArray<QString>, additionalRoles, setAdditionalRoles, "additionalRoles");
    GTL_PROPERTY(QString, primaryRole, setPrimaryRole, "primaryRole");
};

class GTLDriveAboutAdditionalRoleInfoItem : public GTLObject {
    GTL_OBJECT(GTLDriveAboutAdditionalRoleInfoItem);

public:
    GTL_PROPERTY(GTLArray<GTLDriveAboutAdditionalRoleInfoItemRoleSetsItem>, roleSets, setRoleSets, "roleSets");
    GTL_PROPERTY(QString, type, setType, "type");
};

class GTLDriveAboutExportFormatsItem : public GTLObject {
    GTL_OBJECT(GTLDriveAboutExportFormatsItem);

public:
    GTL_PROPERTY(QString, source, setSource, "source");
    GTL_PROPERTY(GTLArray<QString>, targets, setTargets, "targets");
};

// The rate is in requests per second.
class GTLDriveAboutFeaturesItem : public GTLObject {
    GTL_OBJECT(GTLDriveAboutFeaturesItem);

public:
    GTL_PROPERTY(QString, featureName, setFeatureName, "featureName");
    GTL_PROPERTY(double, featureRate, setFeatureRate, "featureRate");
};

class GTLDriveAboutImportFormatsItem : public GTLObject {
    GTL_OBJECT(GTLDriveAboutImportFormatsItem);

public:
    GTL_PROPERTY(QString, source, setSource, "source");
    GTL_PROPERTY(GTLArray<QString>, targets, setTargets, "targets");
};

class GTLDriveAboutMaxUploadSizesItem : public GTLObject {
    GTL_OBJECT(GTLDriveAboutMaxUploadSizesItem);

public:
    GTL_PROPERTY(qint64, size, setSize, "size");
    GTL_PROPERTY(QString, type, setType, "type");
};

class GTLDriveAboutQuotaBytesByServiceItem : public GTLObject {
    GTL_OBJECT(GTLDriveAboutQuotaBytesByServiceItem);

public:
    GTL_PROPERTY(QString, serviceName, setServiceName, "serviceName");
    GTL_PROPERTY(qint64, bytesUsed, setBytesUsed, "bytesUsed");
};

class GTLDriveAbout : public GTLObject {
    GTL_OBJECT(GTLDriveAbout);

public:
    GTL_PROPERTY(GTLDriveUser, user, setUser, "user");
    GTL_PROPERTY(qint64, quotaBytesTotal, setQuotaBytesTotal, "quotaBytesTotal");
    GTL_PROPERTY(qint64, quotaBytesUsed, setQuotaBytesUsed, "quotaBytesUsed");
    GTL_PROPERTY(qint64, quotaBytesUsedAggregate, setQuotaBytesUsedAggregate, "quotaBytesUsedAggregate");
    GTL_PROPERTY(qint64, quotaBytesUsedInTrash, setQuotaBytesUsedInTrash, "quotaBytesUsedInTrash");
    GTL_PROPERTY(GTLArray<GTLDriveAboutQuotaBytesByServiceItem>, quotaBytesByService, setQuotaBytesByService,
                 "quotaBytesByService");
    GTL_PROPERTY(QString, quotaType, setQuotaType, "quotaType");
    GTL_PROPERTY(QString, rootFolderId, setRootFolderId, "rootFolderId");
    GTL_PROPERTY(qint64, largestChangeId, setLargestChangeId, "largestChangeId");
    GTL_PROPERTY(qint64, remainingChangeIds, setRemainingChangeIds, "remainingChangeIds");
    GTL_PROPERTY(QString, name, setName, "name");
    GTL_PROPERTY(QString, permissionId, setPermissionId, "permissionId");
    GTL_PROPERTY(QString, languageCode, setLanguageCode, "languageCode");
    GTL_PROPERTY(QString, domainSharingPolicy, setDomainSharingPolicy, "domainSharingPolicy");
    GTL_PROPERTY(bool, isCurrentAppInstalled, setIsCurrentAppInstalled, "isCurrentAppInstalled");
    GTL_PROPERTY(GTLArray<GTLDriveAboutAdditionalRoleInfoItem>, additionalRoleInfo, setAdditionalRoleInfo,
                 "additionalRoleInfo");
    GTL_PROPERTY(GTLArray<GTLDriveAboutExportFormatsItem>, exportFormats, setExportFormats, "exportFormats");
    GTL_PROPERTY(GTLArray<GTLDriveAboutFeaturesItem>, features, setFeatures, "features");
    GTL_PROPERTY(GTLArray<GTLDriveAboutImportFormatsItem>, importFormats, setImportFormats, "importFormats");
    GTL_PROPERTY(GTLArray<GTLDriveAboutMaxUploadSizesItem>, maxUploadSizes, setMaxUploadSizes, "maxUploadSizes");
    GTL_PROPERTY(QString, ETag, setETag, "etag");
    GTL_PROPERTY(QString, selfLink, setSelfLink, "selfLink");
    GTL_PROPERTY(QString, kind, setKind, "kind");
};

} // namespace quenby
