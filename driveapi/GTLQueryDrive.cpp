#include "driveapi/GTLQueryDrive.h"

#include "driveapi/GTLDriveAbout.h"
#include "driveapi/GTLDriveApp.h"
#include "driveapi/GTLDriveChange.h"
#include "driveapi/GTLDriveChannel.h"
#include "driveapi/GTLDriveComment.h"
#include "driveapi/GTLDriveFile.h"
#include "driveapi/GTLDrivePermission.h"
#include "driveapi/GTLDriveProperty.h"
#include "driveapi/GTLDriveReference.h"
#include "driveapi/GTLDriveRevision.h"

namespace quenby {

const GTLClass& GTLQueryDrive::classDescriptor() { return gtlDefineClass<GTLQueryDrive, GTLQuery>("GTLQueryDrive"); }

GTLQueryDrive::Query GTLQueryDrive::queryWithMethodName(Text methodName) {
    return methodName.isEmpty() ? nullptr : Query(new GTLQueryDrive(methodName));
}

std::shared_ptr<GTLQuery> GTLQueryDrive::makeSibling() const { return Query(new GTLQueryDrive(methodName())); }

template <typename Result>
GTLQueryDrive::Query GTLQueryDrive::call(const char* methodName, Parameters path, Upload media) {
    const auto query = queryWithMethodName(QString::fromLatin1(methodName));
    for (const auto& [name, value] : path)
        query->setJSONValue(value, name);
    query->setUploadParameters(media);
    if constexpr (!std::is_void_v<Result>)
        query->setExpectedObjectClass(&Result::classDescriptor());
    return query;
}

template <typename Result>
GTLQueryDrive::Query GTLQueryDrive::callWithBody(const char* methodName, const GTLObjectPtr& body, Parameters path,
                                                 Upload media) {
    if (!body)
        return nullptr;
    auto query = call<Result>(methodName, path, media);
    query->setBodyObject(body);
    return query;
}

using Query = GTLQueryDrive::Query;

Query GTLQueryDrive::queryForAboutGet() { return call<GTLDriveAbout>("drive.about.get"); }
Query GTLQueryDrive::queryForAppsGetWithAppId(Text appId) {
    return call<GTLDriveApp>("drive.apps.get", {{"appId", appId}});
}
Query GTLQueryDrive::queryForAppsList() { return call<GTLDriveAppList>("drive.apps.list"); }
Query GTLQueryDrive::queryForChangesGetWithChangeId(Text changeId) {
    return call<GTLDriveChange>("drive.changes.get", {{"changeId", changeId}});
}
Query GTLQueryDrive::queryForChangesGetStartPageToken() {
    return call<GTLDriveStartPageToken>("drive.changes.getStartPageToken");
}
Query GTLQueryDrive::queryForChangesList() { return call<GTLDriveChangeList>("drive.changes.list"); }
Query GTLQueryDrive::queryForChangesWatchWithObject(Body<GTLDriveChannel> channel) {
    return callWithBody<GTLDriveChannel>("drive.changes.watch", channel);
}
Query GTLQueryDrive::queryForChannelsStopWithObject(Body<GTLDriveChannel> channel) {
    return callWithBody<void>("drive.channels.stop", channel);
}
Query GTLQueryDrive::queryForChildrenDeleteWithFolderId(Text folderId, Text childId) {
    return call<void>("drive.children.delete", {{"folderId", folderId}, {"childId", childId}});
}
Query GTLQueryDrive::queryForChildrenGetWithFolderId(Text folderId, Text childId) {
    return call<GTLDriveChildReference>("drive.children.get", {{"folderId", folderId}, {"childId", childId}});
}
Query GTLQueryDrive::queryForChildrenInsertWithObject(Body<GTLDriveChildReference> child, Text folderId) {
    return callWithBody<GTLDriveChildReference>("drive.children.insert", child, {{"folderId", folderId}});
}
Query GTLQueryDrive::queryForChildrenListWithFolderId(Text folderId) {
    return call<GTLDriveChildList>("drive.children.list", {{"folderId", folderId}});
}
Query GTLQueryDrive::queryForCommentsDeleteWithFileId(Text fileId, Text commentId) {
    return call<void>("drive.comments.delete", {{"fileId", fileId}, {"commentId", commentId}});
}
Query GTLQueryDrive::queryForCommentsGetWithFileId(Text fileId, Text commentId) {
    return call<GTLDriveComment>("drive.comments.get", {{"fileId", fileId}, {"commentId", commentId}});
}
Query GTLQueryDrive::queryForCommentsInsertWithObject(Body<GTLDriveComment> comment, Text fileId) {
    return callWithBody<GTLDriveComment>("drive.comments.insert", comment, {{"fileId", fileId}});
}
Query GTLQueryDrive::queryForCommentsListWithFileId(Text fileId) {
    return call<GTLDriveCommentList>("drive.comments.list", {{"fileId", fileId}});
}
Query GTLQueryDrive::queryForCommentsPatchWithObject(Body<GTLDriveComment> comment, Text fileId, Text commentId) {
    return callWithBody<GTLDriveComment>("drive.comments.patch", comment,
                                         {{"fileId", fileId}, {"commentId", commentId}});
}
Query GTLQueryDrive::queryForCommentsUpdateWithObject(Body<GTLDriveComment> comment, Text fileId, Text commentId) {
    return callWithBody<GTLDriveComment>("drive.comments.update", comment,
                                         {{"fileId", fileId}, {"commentId", commentId}});
}
Query GTLQueryDrive::queryForFilesCopyWithObject(Body<GTLDriveFile> file, Text fileId) {
    return callWithBody<GTLDriveFile>("drive.files.copy", file, {{"fileId", fileId}});
}
Query GTLQueryDrive::queryForFilesDeleteWithFileId(Text fileId) {
    return call<void>("drive.files.delete", {{"fileId", fileId}});
}
Query GTLQueryDrive::queryForFilesEmptyTrash() { return call<void>("drive.files.emptyTrash"); }
Query GTLQueryDrive::queryForFilesGenerateIds() { return call<GTLDriveGeneratedIds>("drive.files.generateIds"); }
Query GTLQueryDrive::queryForFilesGetWithFileId(Text fileId) {
    return call<GTLDriveFile>("drive.files.get", {{"fileId", fileId}});
}
Query GTLQueryDrive::queryForFilesInsertWithObject(Body<GTLDriveFile> file, Upload media) {
    return callWithBody<GTLDriveFile>("drive.files.insert", file, {}, media);
}
Query GTLQueryDrive::queryForFilesList() { return call<GTLDriveFileList>("drive.files.list"); }
Query GTLQueryDrive::queryForFilesPatchWithObject(Body<GTLDriveFile> file, Text fileId) {
    return callWithBody<GTLDriveFile>("drive.files.patch", file, {{"fileId", fileId}});
}
Query GTLQueryDrive::queryForFilesTouchWithFileId(Text fileId) {
    return call<GTLDriveFile>("drive.files.touch", {{"fileId", fileId}});
}
Query GTLQueryDrive::queryForFilesTrashWithFileId(Text fileId) {
    return call<GTLDriveFile>("drive.files.trash", {{"fileId", fileId}});
}
Query GTLQueryDrive::queryForFilesUntrashWithFileId(Text fileId) {
    return call<GTLDriveFile>("drive.files.untrash", {{"fileId", fileId}});
}
Query GTLQueryDrive::queryForFilesUpdateWithObject(Body<GTLDriveFile> file, Text fileId, Upload media) {
    return callWithBody<GTLDriveFile>("drive.files.update", file, {{"fileId", fileId}}, media);
}
Query GTLQueryDrive::queryForFilesWatchWithObject(Body<GTLDriveChannel> channel, Text fileId) {
    return callWithBody<GTLDriveChannel>("drive.files.watch", channel, {{"fileId", fileId}});
}
Query GTLQueryDrive::queryForParentsDeleteWithFileId(Text fileId, Text parentId) {
    return call<void>("drive.parents.delete", {{"fileId", fileId}, {"parentId", parentId}});
}
Query GTLQueryDrive::queryForParentsGetWithFileId(Text fileId, Text parentId) {
    return call<GTLDriveParentReference>("drive.parents.get", {{"fileId", fileId}, {"parentId", parentId}});
}
Query GTLQueryDrive::queryForParentsInsertWithObject(Body<GTLDriveParentReference> parent, Text fileId) {
    return callWithBody<GTLDriveParentReference>("drive.parents.insert", parent, {{"fileId", fileId}});
}
Query GTLQueryDrive::queryForParentsListWithFileId(Text fileId) {
    return call<GTLDriveParentList>("drive.parents.list", {{"fileId", fileId}});
}
Query GTLQueryDrive::queryForPermissionsDeleteWithFileId(Text fileId, Text permissionId) {
    return call<void>("drive.permissions.delete", {{"fileId", fileId}, {"permissionId", permissionId}});
}
Query GTLQueryDrive::queryForPermissionsGetWithFileId(Text fileId, Text permissionId) {
    return call<GTLDrivePermission>("drive.permissions.get", {{"fileId", fileId}, {"permissionId", permissionId}});
}
Query GTLQueryDrive::queryForPermissionsGetIdForEmailWithEmail(Text email) {
    return call<GTLDrivePermissionId>("drive.permissions.getIdForEmail", {{"email", email}});
}
Query GTLQueryDrive::queryForPermissionsInsertWithObject(Body<GTLDrivePermission> permission, Text fileId) {
    return callWithBody<GTLDrivePermission>("drive.permissions.insert", permission, {{"fileId", fileId}});
}
Query GTLQueryDrive::queryForPermissionsListWithFileId(Text fileId) {
    return call<GTLDrivePermissionList>("drive.permissions.list", {{"fileId", fileId}});
}
Query GTLQueryDrive::queryForPermissionsPatchWithObject(Body<GTLDrivePermission> permission, Text fileId,
                                                        Text permissionId) {
    return callWithBody<GTLDrivePermission>("drive.permissions.patch", permission,
                                            {{"fileId", fileId}, {"permissionId", permissionId}});
}
Query GTLQueryDrive::queryForPermissionsUpdateWithObject(Body<GTLDrivePermission> permission, Text fileId,
                                                         Text permissionId) {
    return callWithBody<GTLDrivePermission>("drive.permissions.update", permission,
                                            {{"fileId", fileId}, {"permissionId", permissionId}});
}
Query GTLQueryDrive::queryForPropertiesDeleteWithFileId(Text fileId, Text propertyKey) {
    return call<void>("drive.properties.delete", {{"fileId", fileId}, {"propertyKey", propertyKey}});
}
Query GTLQueryDrive::queryForPropertiesGetWithFileId(Text fileId, Text propertyKey) {
    return call<GTLDriveProperty>("drive.properties.get", {{"fileId", fileId}, {"propertyKey", propertyKey}});
}
Query GTLQueryDrive::queryForPropertiesInsertWithObject(Body<GTLDriveProperty> property, Text fileId) {
    return callWithBody<GTLDriveProperty>("drive.properties.insert", property, {{"fileId", fileId}});
}
Query GTLQueryDrive::queryForPropertiesListWithFileId(Text fileId) {
    return call<GTLDrivePropertyList>("drive.properties.list", {{"fileId", fileId}});
}
Query GTLQueryDrive::queryForPropertiesPatchWithObject(Body<GTLDriveProperty> property, Text fileId, Text propertyKey) {
    return callWithBody<GTLDriveProperty>("drive.properties.patch", property,
                                          {{"fileId", fileId}, {"propertyKey", propertyKey}});
}
Query GTLQueryDrive::queryForPropertiesUpdateWithObject(Body<GTLDriveProperty> property, Text fileId,
                                                        Text propertyKey) {
    return callWithBody<GTLDriveProperty>("drive.properties.update", property,
                                          {{"fileId", fileId}, {"propertyKey", propertyKey}});
}
Query GTLQueryDrive::queryForRealtimeGetWithFileId(Text fileId) {
    return call<void>("drive.realtime.get", {{"fileId", fileId}});
}
Query GTLQueryDrive::queryForRealtimeUpdateWithFileId(Text fileId, Upload media) {
    return call<void>("drive.realtime.update", {{"fileId", fileId}}, media);
}
Query GTLQueryDrive::queryForRepliesDeleteWithFileId(Text fileId, Text commentId, Text replyId) {
    return call<void>("drive.replies.delete", {{"fileId", fileId}, {"commentId", commentId}, {"replyId", replyId}});
}
Query GTLQueryDrive::queryForRepliesGetWithFileId(Text fileId, Text commentId, Text replyId) {
    return call<GTLDriveCommentReply>("drive.replies.get",
                                      {{"fileId", fileId}, {"commentId", commentId}, {"replyId", replyId}});
}
Query GTLQueryDrive::queryForRepliesInsertWithObject(Body<GTLDriveCommentReply> reply, Text fileId, Text commentId) {
    return callWithBody<GTLDriveCommentReply>("drive.replies.insert", reply,
                                              {{"fileId", fileId}, {"commentId", commentId}});
}
Query GTLQueryDrive::queryForRepliesListWithFileId(Text fileId, Text commentId) {
    return call<GTLDriveCommentReplyList>("drive.replies.list", {{"fileId", fileId}, {"commentId", commentId}});
}
Query GTLQueryDrive::queryForRepliesPatchWithObject(Body<GTLDriveCommentReply> reply, Text fileId, Text commentId,
                                                    Text replyId) {
    return callWithBody<GTLDriveCommentReply>("drive.replies.patch", reply,
                                              {{"fileId", fileId}, {"commentId", commentId}, {"replyId", replyId}});
}
Query GTLQueryDrive::queryForRepliesUpdateWithObject(Body<GTLDriveCommentReply> reply, Text fileId, Text commentId,
                                                     Text replyId) {
    return callWithBody<GTLDriveCommentReply>("drive.replies.update", reply,
                                              {{"fileId", fileId}, {"commentId", commentId}, {"replyId", replyId}});
}
Query GTLQueryDrive::queryForRevisionsDeleteWithFileId(Text fileId, Text revisionId) {
    return call<void>("drive.revisions.delete", {{"fileId", fileId}, {"revisionId", revisionId}});
}
Query GTLQueryDrive::queryForRevisionsGetWithFileId(Text fileId, Text revisionId) {
    return call<GTLDriveRevision>("drive.revisions.get", {{"fileId", fileId}, {"revisionId", revisionId}});
}
Query GTLQueryDrive::queryForRevisionsListWithFileId(Text fileId) {
    return call<GTLDriveRevisionList>("drive.revisions.list", {{"fileId", fileId}});
}
Query GTLQueryDrive::queryForRevisionsPatchWithObject(Body<GTLDriveRevision> revision, Text fileId, Text revisionId) {
    return callWithBody<GTLDriveRevision>("drive.revisions.patch", revision,
                                          {{"fileId", fileId}, {"revisionId", revisionId}});
}
Query GTLQueryDrive::queryForRevisionsUpdateWithObject(Body<GTLDriveRevision> revision, Text fileId, Text revisionId) {
    return callWithBody<GTLDriveRevision>("drive.revisions.update", revision,
                                          {{"fileId", fileId}, {"revisionId", revisionId}});
}
} // namespace quenby
