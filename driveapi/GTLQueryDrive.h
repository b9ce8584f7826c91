// The calls of the Drive API, one constructor a method, and their parameters.
//
// A constructor takes the path parameters and the body that the method needs; optional parameters are set on the query
// afterwards. A constructor with a body answers null without one.
#pragma once

#include "driveapi/GTLQuery.h"

namespace quenby {

class GTLDriveChannel;
class GTLDriveChildReference;
class GTLDriveComment;
class GTLDriveCommentReply;
class GTLDriveFile;
class GTLDriveParentReference;
class GTLDrivePermission;
class GTLDriveProperty;
class GTLDriveRevision;

class GTLQueryDrive : public GTLQuery {
    GTL_CLASS(GTLQueryDrive);

public:
    GTL_PROPERTY(QString, fields, setFields, "fields");
    GTL_PROPERTY(QString, addParents, setAddParents, "addParents");
    GTL_PROPERTY(QString, appFilterExtensions, setAppFilterExtensions, "appFilterExtensions");
    GTL_PROPERTY(QString, appFilterMimeTypes, setAppFilterMimeTypes, "appFilterMimeTypes");
    GTL_PROPERTY(QString, appId, setAppId, "appId");
    GTL_PROPERTY(QString, baseRevision, setBaseRevision, "baseRevision");
    GTL_PROPERTY(QString, changeId, setChangeId, "changeId");
    GTL_PROPERTY(QString, childId, setChildId, "childId");
    GTL_PROPERTY(QString, commentId, setCommentId, "commentId");
    GTL_PROPERTY(QString, corpus, setCorpus, "corpus");
    GTL_PROPERTY(QString, email, setEmail, "email");
    GTL_PROPERTY(QString, emailMessage, setEmailMessage, "emailMessage");
    GTL_PROPERTY(QString, fileId, setFileId, "fileId");
    GTL_PROPERTY(QString, folderId, setFolderId, "folderId");
    GTL_PROPERTY(QString, languageCode, setLanguageCode, "languageCode");
    GTL_PROPERTY(QString, ocrLanguage, setOcrLanguage, "ocrLanguage");
    GTL_PROPERTY(QString, pageToken, setPageToken, "pageToken");
    GTL_PROPERTY(QString, parentId, setParentId, "parentId");
    GTL_PROPERTY(QString, permissionId, setPermissionId, "permissionId");
    GTL_PROPERTY(QString, projection, setProjection, "projection");
    GTL_PROPERTY(QString, propertyKey, setPropertyKey, "propertyKey");
    GTL_PROPERTY(QString, q, setQ, "q");
    GTL_PROPERTY(QString, removeParents, setRemoveParents, "removeParents");
    GTL_PROPERTY(QString, replyId, setReplyId, "replyId");
    GTL_PROPERTY(QString, revisionId, setRevisionId, "revisionId");
    GTL_PROPERTY(QString, timedTextLanguage, setTimedTextLanguage, "timedTextLanguage");
    GTL_PROPERTY(QString, timedTextTrackName, setTimedTextTrackName, "timedTextTrackName");
    GTL_PROPERTY(QString, updatedMin, setUpdatedMin, "updatedMin");
    GTL_PROPERTY(QString, visibility, setVisibility, "visibility");
    GTL_PROPERTY(bool, acknowledgeAbuse, setAcknowledgeAbuse, "acknowledgeAbuse");
    GTL_PROPERTY(bool, convert, setConvert, "convert");
    GTL_PROPERTY(bool, includeDeleted, setIncludeDeleted, "includeDeleted");
    GTL_PROPERTY(bool, includeSubscribed, setIncludeSubscribed, "includeSubscribed");
    GTL_PROPERTY(bool, newRevision, setNewRevision, "newRevision");
    GTL_PROPERTY(bool, ocr, setOcr, "ocr");
    GTL_PROPERTY(bool, pinned, setPinned, "pinned");
    GTL_PROPERTY(bool, sendNotificationEmails, setSendNotificationEmails, "sendNotificationEmails");
    GTL_PROPERTY(bool, setModifiedDate, setSetModifiedDate, "setModifiedDate");
    GTL_PROPERTY(bool, transferOwnership, setTransferOwnership, "transferOwnership");
    GTL_PROPERTY(bool, updateViewedDate, setUpdateViewedDate, "updateViewedDate");
    GTL_PROPERTY(bool, useContentAsIndexableText, setUseContentAsIndexableText, "useContentAsIndexableText");
    GTL_PROPERTY(qint64, maxChangeIdCount, setMaxChangeIdCount, "maxChangeIdCount");
    GTL_PROPERTY(qint64, maxResults, setMaxResults, "maxResults");
    GTL_PROPERTY(qint64, revision, setRevision, "revision");
    GTL_PROPERTY(qint64, startChangeId, setStartChangeId, "startChangeId");

    using Query = std::shared_ptr<GTLQueryDrive>;
    template <typename Object>
    using Body = const std::shared_ptr<Object>&;
    using Text = const QString&;
    using Upload = const std::optional<GTLUploadParameters>&;

    // Any other method; null for an empty name.
    static Query queryWithMethodName(Text methodName);

    static Query queryForAboutGet();

    static Query queryForAppsGetWithAppId(Text appId);
    static Query queryForAppsList();

    static Query queryForChangesGetWithChangeId(Text changeId);
    static Query queryForChangesGetStartPageToken();
    static Query queryForChangesList();
    static Query queryForChangesWatchWithObject(Body<GTLDriveChannel> channel);

    static Query queryForChannelsStopWithObject(Body<GTLDriveChannel> channel);

    static Query queryForChildrenDeleteWithFolderId(Text folderId, Text childId);
    static Query queryForChildrenGetWithFolderId(Text folderId, Text childId);
    static Query queryForChildrenInsertWithObject(Body<GTLDriveChildReference> child, Text folderId);
    static Query queryForChildrenListWithFolderId(Text folderId);

    static Query queryForCommentsDeleteWithFileId(Text fileId, Text commentId);
    static Query queryForCommentsGetWithFileId(Text fileId, Text commentId);
    static Query queryForCommentsInsertWithObject(Body<GTLDriveComment> comment, Text fileId);
    static Query queryForCommentsListWithFileId(Text fileId);
    static Query queryForCommentsPatchWithObject(Body<GTLDriveComment> comment, Text fileId, Text commentId);
    static Query queryForCommentsUpdateWithObject(Body<GTLDriveComment> comment, Text fileId, Text commentId);

    static Query queryForFilesCopyWithObject(Body<GTLDriveFile> file, Text fileId);
    static Query queryForFilesDeleteWithFileId(Text fileId);
    static Query queryForFilesEmptyTrash();
    static Query queryForFilesGenerateIds();
    static Query queryForFilesGetWithFileId(Text fileId);
    static Query queryForFilesInsertWithObject(Body<GTLDriveFile> file, Upload media = {});
    static Query queryForFilesList();
    static Query queryForFilesPatchWithObject(Body<GTLDriveFile> file, Text fileId);
    static Query queryForFilesTouchWithFileId(Text fileId);
    static Query queryForFilesTrashWithFileId(Text fileId);
    static Query queryForFilesUntrashWithFileId(Text fileId);
    static Query queryForFilesUpdateWithObject(Body<GTLDriveFile> file, Text fileId, Upload media = {});
    static Query queryForFilesWatchWithObject(Body<GTLDriveChannel> channel, Text fileId);

    static Query queryForParentsDeleteWithFileId(Text fileId, Text parentId);
    static Query queryForParentsGetWithFileId(Text fileId, Text parentId);
    static Query queryForParentsInsertWithObject(Body<GTLDriveParentReference> parent, Text fileId);
    static Query queryForParentsListWithFileId(Text fileId);

    static Query queryForPermissionsDeleteWithFileId(Text fileId, Text permissionId);
    static Query queryForPermissionsGetWithFileId(Text fileId, Text permissionId);
    static Query queryForPermissionsGetIdForEmailWithEmail(Text email);
    static Query queryForPermissionsInsertWithObject(Body<GTLDrivePermission> permission, Text fileId);
    static Query queryForPermissionsListWithFileId(Text fileId);
    static Query queryForPermissionsPatchWithObject(Body<GTLDrivePermission> permission, Text fileId,
                                                    Text permissionId);
    static Query queryForPermissionsUpdateWithObject(Body<GTLDrivePermission> permission, Text fileId,
                                                     Text permissionId);

    static Query queryForPropertiesDeleteWithFileId(Text fileId, Text propertyKey);
    static Query queryForPropertiesGetWithFileId(Text fileId, Text propertyKey);
    static Query queryForPropertiesInsertWithObject(Body<GTLDriveProperty> property, Text fileId);
    static Query queryForPropertiesListWithFileId(Text fileId);
    static Query queryForPropertiesPatchWithObject(Body<GTLDriveProperty> property, Text fileId, Text propertyKey);
    static Query queryForPropertiesUpdateWithObject(Body<GTLDriveProperty> property, Text fileId, Text propertyKey);

    static Query queryForRealtimeGetWithFileId(Text fileId);
    static Query queryForRealtimeUpdateWithFileId(Text fileId, Upload media = {});

    static Query queryForRepliesDeleteWithFileId(Text fileId, Text commentId, Text replyId);
    static Query queryForRepliesGetWithFileId(Text fileId, Text commentId, Text replyId);
    static Query queryForRepliesInsertWithObject(Body<GTLDriveCommentReply> reply, Text fileId, Text commentId);
    static Query queryForRepliesListWithFileId(Text fileId, Text commentId);
    static Query queryForRepliesPatchWithObject(Body<GTLDriveCommentReply> reply, Text fileId, Text commentId,
                                                Text replyId);
    static Query queryForRepliesUpdateWithObject(Body<GTLDriveCommentReply> reply, Text fileId, Text commentId,
                                                 Text replyId);

    static Query queryForRevisionsDeleteWithFileId(Text fileId, Text revisionId);
    static Query queryForRevisionsGetWithFileId(Text fileId, Text revisionId);
    static Query queryForRevisionsListWithFileId(Text fileId);
    static Query queryForRevisionsPatchWithObject(Body<GTLDriveRevision> revision, Text fileId, Text revisionId);
    static Query queryForRevisionsUpdateWithObject(Body<GTLDriveRevision> revision, Text fileId, Text revisionId);

protected:
    explicit GTLQueryDrive(const QString& methodName)
        : GTLQuery(methodName) {}
    std::shared_ptr<GTLQuery> makeSibling() const override;

private:
    using Parameters = std::initializer_list<std::pair<std::string_view, QString>>;

    // Result is the class expected in return, or void.
    template <typename Result>
    static Query call(const char* methodName, Parameters path = {}, Upload media = {});
    template <typename Result>
    static Query callWithBody(const char* methodName, const GTLObjectPtr& body, Parameters path = {},
                              Upload media = {});
};

} // namespace quenby
