// Comments on a file and the replies to them.
#pragma once

#include "driveapi/GTLCollectionObject.h"
#include "driveapi/GTLDriveUser.h"

namespace quenby {

class GTLDriveCommentReply : public GTLObject {
    GTL_OBJECT(GTLDriveCommentReply);

public:
    GTL_PROPERTY(QString, replyId, setReplyId, "replyId");
    GTL_PROPERTY(GTLDriveUser, author, setAuthor, "author");
    GTL_PROPERTY(QString, content, setContent, "content");
    GTL_PROPERTY(QString, htmlContent, setHtmlContent, "htmlContent");
    GTL_PROPERTY(QString, verb, setVerb, "verb");
    GTL_PROPERTY(bool, deleted, setDeleted, "deleted");
    GTL_PROPERTY(GTLDateTime, createdDate, setCreatedDate, "createdDate");
    GTL_PROPERTY(GTLDateTime, modifiedDate, setModifiedDate, "modifiedDate");
    GTL_PROPERTY(QString, kind, setKind, "kind");
};

class GTLDriveCommentReplyList : public GTLCollectionOf<GTLDriveCommentReply> {
    GTL_OBJECT(GTLDriveCommentReplyList);

public:
    GTL_PROPERTY(GTLArray<GTLDriveCommentReply>, items, setItems, "items");
    GTL_PROPERTY(QString, nextPageToken, setNextPageToken, "nextPageToken");
    GTL_PROPERTY(QString, nextLink, setNextLink, "nextLink");
    GTL_PROPERTY(QString, selfLink, setSelfLink, "selfLink");
    GTL_PROPERTY(QString, kind, setKind, "kind");
};

class GTLDriveCommentContext : public GTLObject {
    GTL_OBJECT(GTLDriveCommentContext);

public:
    GTL_PROPERTY(QString, type, setType, "type");
    GTL_PROPERTY(QString, value, setValue, "value");
};

class GTLDriveComment : public GTLObject {
    GTL_OBJECT(GTLDriveComment);

public:
    GTL_PROPERTY(QString, commentId, setCommentId, "commentId");
    GTL_PROPERTY(QString, fileId, setFileId, "fileId");
    GTL_PROPERTY(QString, fileTitle, setFileTitle, "fileTitle");
    GTL_PROPERTY(GTLDriveUser, author, setAuthor, "author");
    GTL_PROPERTY(QString, anchor, setAnchor, "anchor");
    GTL_PROPERTY(QString, content, setContent, "content");
    GTL_PROPERTY(QString, htmlContent, setHtmlContent, "htmlContent");
    GTL_PROPERTY(GTLDriveCommentContext, context, setContext, "context");
    GTL_PROPERTY(bool, deleted, setDeleted, "deleted");
    GTL_PROPERTY(GTLDateTime, createdDate, setCreatedDate, "createdDate");
    GTL_PROPERTY(GTLDateTime, modifiedDate, setModifiedDate, "modifiedDate");
    GTL_PROPERTY(GTLArray<GTLDriveCommentReply>, replies, setReplies, "replies");
    GTL_PROPERTY(QString, status, setStatus, "status");
    GTL_PROPERTY(QString, selfLink, setSelfLink, "selfLink");
    GTL_PROPERTY(QString, kind, setKind, "kind");
};

class GTLDriveCommentList : public GTLCollectionOf<GTLDriveComment> {
    GTL_OBJECT(GTLDriveCommentList);

public:
    GTL_PROPERTY(GTLArray<GTLDriveComment>, items, setItems, "items");
    GTL_PROPERTY(QString, nextPageToken, setNextPageToken, "nextPageToken");
    GTL_PROPERTY(QString, nextLink, setNextLink, "nextLink");
    GTL_PROPERTY(QString, selfLink, setSelfLink, "selfLink");
    GTL_PROPERTY(QString, kind, setKind, "kind");
};

} // namespace quenby
