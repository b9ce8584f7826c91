#include "driveapi/GTLDriveKinds.h"

#include "driveapi/GTLDriveAbout.h"
#include "driveapi/GTLDriveApp.h"
#include "driveapi/GTLDriveChange.h"
#include "driveapi/GTLDriveChannel.h"
#include "driveapi/GTLDriveComment.h"
#include "driveapi/GTLDriveRevision.h"

namespace quenby {

std::span<const GTLDriveKind> gtlDriveKinds() {
    static constexpr GTLDriveKind kinds[] = {
        {"drive#about", &GTLDriveAbout::classDescriptor},
        {"drive#app", &GTLDriveApp::classDescriptor},
        {"drive#appList", &GTLDriveAppList::classDescriptor},
        {"drive#change", &GTLDriveChange::classDescriptor},
        {"drive#changeList", &GTLDriveChangeList::classDescriptor},
        {"drive#childList", &GTLDriveChildList::classDescriptor},
        {"drive#childReference", &GTLDriveChildReference::classDescriptor},
        {"drive#comment", &GTLDriveComment::classDescriptor},
        {"drive#commentList", &GTLDriveCommentList::classDescriptor},
        {"drive#commentReply", &GTLDriveCommentReply::classDescriptor},
        {"drive#commentReplyList", &GTLDriveCommentReplyList::classDescriptor},
        {"drive#file", &GTLDriveFile::classDescriptor},
        {"drive#fileList", &GTLDriveFileList::classDescriptor},
        {"drive#generatedIds", &GTLDriveGeneratedIds::classDescriptor},
        {"drive#parentList", &GTLDriveParentList::classDescriptor},
        {"drive#parentReference", &GTLDriveParentReference::classDescriptor},
        {"drive#permission", &GTLDrivePermission::classDescriptor},
        {"drive#permissionId", &GTLDrivePermissionId::classDescriptor},
        {"drive#permissionList", &GTLDrivePermissionList::classDescriptor},
        {"drive#property", &GTLDriveProperty::classDescriptor},
        {"drive#propertyList", &GTLDrivePropertyList::classDescriptor},
        {"drive#revision", &GTLDriveRevision::classDescriptor},
        {"drive#revisionList", &GTLDriveRevisionList::classDescriptor},
        {"drive#startPageToken", &GTLDriveStartPageToken::classDescriptor},
        {"drive#user", &GTLDriveUser::classDescriptor},
        {"api#channel", &GTLDriveChannel::classDescriptor},
    };
    return kinds;
}

} // namespace quenby
