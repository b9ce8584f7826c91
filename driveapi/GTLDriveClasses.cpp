// The class descriptors of the Drive resources.
#include "driveapi/GTLDriveAbout.h"
#include "driveapi/GTLDriveApp.h"
#include "driveapi/GTLDriveChange.h"
#include "driveapi/GTLDriveChannel.h"
#include "driveapi/GTLDriveComment.h"
#include "driveapi/GTLDriveFile.h"
#include "driveapi/GTLDriveFileParts.h"
#include "driveapi/GTLDrivePermission.h"
#include "driveapi/GTLDriveProperty.h"
#include "driveapi/GTLDriveReference.h"
#include "driveapi/GTLDriveRevision.h"
#include "driveapi/GTLDriveUser.h"

namespace quenby {

const GTLClass& GTLDriveList::classDescriptor() {
    return gtlDefineClass<GTLDriveList, GTLCollectionObject>("GTLDriveList");
}
const GTLClass& GTLDrivePageList::classDescriptor() {
    return gtlDefineClass<GTLDrivePageList, GTLDriveList>("GTLDrivePageList");
}

const GTLClass& GTLDriveAboutAdditionalRoleInfoItemRoleSetsItem::classDescriptor() {
    return gtlDefineClass<GTLDriveAboutAdditionalRoleInfoItemRoleSetsItem, GTLObject>(
        "GTLDriveAboutAdditionalRoleInfoItemRoleSetsItem");
}
const GTLClass& GTLDriveAboutAdditionalRoleInfoItem::classDescriptor() {
    return gtlDefineClass<GTLDriveAboutAdditionalRoleInfoItem, GTLObject>("GTLDriveAboutAdditionalRoleInfoItem");
}
const GTLClass& GTLDriveAboutExportFormatsItem::classDescriptor() {
    return gtlDefineClass<GTLDriveAboutExportFormatsItem, GTLObject>("GTLDriveAboutExportFormatsItem");
}
const GTLClass& GTLDriveAboutFeaturesItem::classDescriptor() {
    return gtlDefineClass<GTLDriveAboutFeaturesItem, GTLObject>("GTLDriveAboutFeaturesItem");
}
const GTLClass& GTLDriveAboutImportFormatsItem::classDescriptor() {
    return gtlDefineClass<GTLDriveAboutImportFormatsItem, GTLObject>("GTLDriveAboutImportFormatsItem");
}
const GTLClass& GTLDriveAboutMaxUploadSizesItem::classDescriptor() {
    return gtlDefineClass<GTLDriveAboutMaxUploadSizesItem, GTLObject>("GTLDriveAboutMaxUploadSizesItem");
}
const GTLClass& GTLDriveAboutQuotaBytesByServiceItem::classDescriptor() {
    return gtlDefineClass<GTLDriveAboutQuotaBytesByServiceItem, GTLObject>("GTLDriveAboutQuotaBytesByServiceItem");
}
const GTLClass& GTLDriveAbout::classDescriptor() { return gtlDefineClass<GTLDriveAbout, GTLObject>("GTLDriveAbout"); }

const GTLClass& GTLDriveAppIconsItem::classDescriptor() {
    return gtlDefineClass<GTLDriveAppIconsItem, GTLObject>("GTLDriveAppIconsItem");
}
const GTLClass& GTLDriveApp::classDescriptor() { return gtlDefineClass<GTLDriveApp, GTLObject>("GTLDriveApp"); }
const GTLClass& GTLDriveAppList::classDescriptor() {
    return gtlDefineClass<GTLDriveAppList, GTLDriveList>("GTLDriveAppList");
}

const GTLClass& GTLDriveChange::classDescriptor() {
    return gtlDefineClass<GTLDriveChange, GTLObject>("GTLDriveChange");
}
const GTLClass& GTLDriveStartPageToken::classDescriptor() {
    return gtlDefineClass<GTLDriveStartPageToken, GTLObject>("GTLDriveStartPageToken");
}
const GTLClass& GTLDriveGeneratedIds::classDescriptor() {
    return gtlDefineClass<GTLDriveGeneratedIds, GTLObject>("GTLDriveGeneratedIds");
}
const GTLClass& GTLDriveChangeList::classDescriptor() {
    return gtlDefineClass<GTLDriveChangeList, GTLDrivePageList>("GTLDriveChangeList");
}

const GTLClass& GTLDriveChannelParams::classDescriptor() {
    return gtlDefineClass<GTLDriveChannelParams, GTLObject>("GTLDriveChannelParams");
}
const GTLClass& GTLDriveChannel::classDescriptor() {
    return gtlDefineClass<GTLDriveChannel, GTLObject>("GTLDriveChannel");
}

const GTLClass& GTLDriveCommentReply::classDescriptor() {
    return gtlDefineClass<GTLDriveCommentReply, GTLObject>("GTLDriveCommentReply");
}
const GTLClass& GTLDriveCommentReplyList::classDescriptor() {
    return gtlDefineClass<GTLDriveCommentReplyList, GTLCollectionObject>("GTLDriveCommentReplyList");
}
const GTLClass& GTLDriveCommentContext::classDescriptor() {
    return gtlDefineClass<GTLDriveCommentContext, GTLObject>("GTLDriveCommentContext");
}
const GTLClass& GTLDriveComment::classDescriptor() {
    return gtlDefineClass<GTLDriveComment, GTLObject>("GTLDriveComment");
}
const GTLClass& GTLDriveCommentList::classDescriptor() {
    return gtlDefineClass<GTLDriveCommentList, GTLCollectionObject>("GTLDriveCommentList");
}

const GTLClass& GTLDriveFile::classDescriptor() { return gtlDefineClass<GTLDriveFile, GTLObject>("GTLDriveFile"); }
const GTLClass& GTLDriveFileList::classDescriptor() {
    return gtlDefineClass<GTLDriveFileList, GTLDrivePageList>("GTLDriveFileList");
}

const GTLClass& GTLDriveFileLabels::classDescriptor() {
    return gtlDefineClass<GTLDriveFileLabels, GTLObject>("GTLDriveFileLabels");
}
const GTLClass& GTLDriveFileExportLinks::classDescriptor() {
    return gtlDefineClass<GTLDriveFileExportLinks, GTLObject>("GTLDriveFileExportLinks");
}
const GTLClass& GTLDriveFileOpenWithLinks::classDescriptor() {
    return gtlDefineClass<GTLDriveFileOpenWithLinks, GTLObject>("GTLDriveFileOpenWithLinks");
}
const GTLClass& GTLDriveFileImageMediaMetadataLocation::classDescriptor() {
    return gtlDefineClass<GTLDriveFileImageMediaMetadataLocation, GTLObject>("GTLDriveFileImageMediaMetadataLocation");
}
const GTLClass& GTLDriveFileImageMediaMetadata::classDescriptor() {
    return gtlDefineClass<GTLDriveFileImageMediaMetadata, GTLObject>("GTLDriveFileImageMediaMetadata");
}
const GTLClass& GTLDriveFileVideoMediaMetadata::classDescriptor() {
    return gtlDefineClass<GTLDriveFileVideoMediaMetadata, GTLObject>("GTLDriveFileVideoMediaMetadata");
}
const GTLClass& GTLDriveFileIndexableText::classDescriptor() {
    return gtlDefineClass<GTLDriveFileIndexableText, GTLObject>("GTLDriveFileIndexableText");
}
const GTLClass& GTLDriveFileThumbnail::classDescriptor() {
    return gtlDefineClass<GTLDriveFileThumbnail, GTLObject>("GTLDriveFileThumbnail");
}

const GTLClass& GTLDrivePermission::classDescriptor() {
    return gtlDefineClass<GTLDrivePermission, GTLObject>("GTLDrivePermission");
}
const GTLClass& GTLDrivePermissionList::classDescriptor() {
    return gtlDefineClass<GTLDrivePermissionList, GTLDriveList>("GTLDrivePermissionList");
}
const GTLClass& GTLDrivePermissionId::classDescriptor() {
    return gtlDefineClass<GTLDrivePermissionId, GTLObject>("GTLDrivePermissionId");
}

const GTLClass& GTLDriveProperty::classDescriptor() {
    return gtlDefineClass<GTLDriveProperty, GTLObject>("GTLDriveProperty");
}
const GTLClass& GTLDrivePropertyList::classDescriptor() {
    return gtlDefineClass<GTLDrivePropertyList, GTLDriveList>("GTLDrivePropertyList");
}

const GTLClass& GTLDriveParentReference::classDescriptor() {
    return gtlDefineClass<GTLDriveParentReference, GTLObject>("GTLDriveParentReference");
}
const GTLClass& GTLDriveParentList::classDescriptor() {
    return gtlDefineClass<GTLDriveParentList, GTLDriveList>("GTLDriveParentList");
}
const GTLClass& GTLDriveChildReference::classDescriptor() {
    return gtlDefineClass<GTLDriveChildReference, GTLObject>("GTLDriveChildReference");
}
const GTLClass& GTLDriveChildList::classDescriptor() {
    return gtlDefineClass<GTLDriveChildList, GTLDrivePageList>("GTLDriveChildList");
}

const GTLClass& GTLDriveRevisionExportLinks::classDescriptor() {
    return gtlDefineClass<GTLDriveRevisionExportLinks, GTLObject>("GTLDriveRevisionExportLinks");
}
const GTLClass& GTLDriveRevision::classDescriptor() {
    return gtlDefineClass<GTLDriveRevision, GTLObject>("GTLDriveRevision");
}
const GTLClass& GTLDriveRevisionList::classDescriptor() {
    return gtlDefineClass<GTLDriveRevisionList, GTLDriveList>("GTLDriveRevisionList");
}

const GTLClass& GTLDriveUserPicture::classDescriptor() {
    return gtlDefineClass<GTLDriveUserPicture, GTLObject>("GTLDriveUserPicture");
}
const GTLClass& GTLDriveUser::classDescriptor() { return gtlDefineClass<GTLDriveUser, GTLObject>("GTLDriveUser"); }

} // namespace quenby
