#include "localdrive/store/Replies.h"

#include "localdrive/store/ApiError.h"
#include "localdrive/store/Identifiers.h"
#include "localdrive/store/Links.h"
#include "localdrive/store/PageToken.h"
#include "localdrive/store/Text.h"

namespace quenby::localdrive {
namespace {

constexpr PageLimits pageLimits{20, 100};

const QString& selectReplies() {
    static const QString sql = QStringLiteral("SELECT seq, id, author, content, verb, created, modified, deleted "
                                              "FROM replies WHERE comment_id = ? ");
    return sql;
}

QJsonObject replyResource(Work& work, const Row& row) {
    const bool deleted = row[7].toBool();
    QJsonObject resource{{QStringLiteral("kind"), QStringLiteral("drive#commentReply")},
                         {QStringLiteral("replyId"), row[1].toString()},
                         {QStringLiteral("author"), work.user(row[2].toString())},
                         {QStringLiteral("createdDate"), dateText(row[5])},
                         {QStringLiteral("modifiedDate"), dateText(row[6])},
                         {QStringLiteral("deleted"), deleted}};
    if (!deleted) {
        const QString content = row[3].toString();
        resource.insert(QStringLiteral("content"), content);
        resource.insert(QStringLiteral("htmlContent"), content.toHtmlEscaped());
    }
    if (const QString verb = row[4].toString(); !verb.isEmpty())
        resource.insert(QStringLiteral("verb"), verb);
    return resource;
}

Row findReply(Work& work, const CommentTarget& comment, const QString& id, bool deletedToo) {
    return work.session().row(selectReplies() + QStringLiteral("AND id = ? AND (? OR NOT deleted)"),
                              {comment.commentId, id, deletedToo});
}

Result<QJsonObject> answer(Work& work, const CommentTarget& comment, const QString& id, bool deletedToo = false) {
    const Row row = findReply(work, comment, id, deletedToo);
    if (row.isEmpty())
        return apiError::notFound(QStringLiteral("Reply"), id);
    return replyResource(work, row);
}

// The comment of the reply that the call is about, when the caller wrote the reply.
Result<CommentTarget> ownReply(Work& work, const Parameters& params) {
    Result<CommentTarget> comment = findComment(work, params, Role::commenter);
    if (!comment)
        return comment;
    const Row row = findReply(work, comment.value(), params.text("replyId"), false);
    if (row.isEmpty())
        return apiError::notFound(QStringLiteral("Reply"), params.text("replyId"));
    if (row[2].toString() != work.caller().user.emailAddress)
        return apiError::forbidden(QStringLiteral("Only who wrote a reply may change it."));
    return comment;
}

} // namespace

QJsonArray replyResources(Work& work, const CommentTarget& comment) {
    QJsonArray items;
    for (const Row& row :
         work.session().rows(selectReplies() + QStringLiteral("AND NOT deleted ORDER BY seq"), {comment.commentId}))
        items.append(replyResource(work, row));
    return items;
}

namespace replies {

Result<QJsonObject> list(Work& work, const Parameters& params) {
    const Result<CommentTarget> comment = findComment(work, params, Role::reader);
    if (!comment)
        return comment.error();
    const bool deletedToo = params.flag("includeDeleted", false);
    const QString name = QStringLiteral("replies %1 %2").arg(comment->commentId).arg(deletedToo);
    const Result<PageRequest> page = pageRequest(work, params, name, pageLimits);
    if (!page)
        return page.error();
    QList<Row> rows =
        work.session().rows(selectReplies() + QStringLiteral("AND seq > ? AND (? OR NOT deleted) ORDER BY seq LIMIT ?"),
                            {comment->commentId, page->after.value_or(0), deletedToo, page->limit + 1});
    const std::optional<qint64> last = cutPage(rows, page.value());
    QJsonArray items;
    for (const Row& row : std::as_const(rows))
        items.append(replyResource(work, row));
    const QString selfLink =
        links::api(work.caller().base, {QStringLiteral("files"), comment->fileId, QStringLiteral("comments"),
                                        comment->commentId, QStringLiteral("replies")});
    return listResource(work, QStringLiteral("drive#commentReplyList"), selfLink, items, page.value(), last);
}

Result<QJsonObject> get(Work& work, const Parameters& params) {
    const Result<CommentTarget> comment = findComment(work, params, Role::reader);
    if (!comment)
        return comment.error();
    return answer(work, comment.value(), params.text("replyId"), params.flag("includeDeleted", false));
}

Result<QJsonObject> insert(Work& work, const Parameters& params) {
    const Result<CommentTarget> comment = findComment(work, params, Role::commenter);
    if (!comment)
        return comment.error();
    const QString content = cleaned(params.resource().value(QLatin1String("content")).toString());
    const QString verb = params.resource().value(QLatin1String("verb")).toString();
    if (verb == QLatin1String("resolve"))
        setCommentStatus(work, comment.value(), QStringLiteral("resolved"));
    else if (verb == QLatin1String("reopen"))
        setCommentStatus(work, comment.value(), QStringLiteral("open"));
    else if (!verb.isEmpty())
        return apiError::invalid(QStringLiteral("verb"), QStringLiteral("A verb is resolve or reopen."));
    else if (content.isEmpty())
        return apiError::required(QStringLiteral("content"));
    const QString id = newItemId();
    work.session().run(
        QStringLiteral("INSERT INTO replies(id, comment_id, author, content, verb, created, modified) "
                       "VALUES(?, ?, ?, ?, ?, ?, ?)"),
        {id, comment->commentId, work.caller().user.emailAddress, content, verb, work.now(), work.now()});
    touchComment(work, comment.value());
    return answer(work, comment.value(), id);
}

Result<QJsonObject> update(Work& work, const Parameters& params) {
    const Result<CommentTarget> comment = ownReply(work, params);
    if (!comment)
        return comment.error();
    const QString content = cleaned(params.resource().value(QLatin1String("content")).toString());
    if (content.isEmpty())
        return apiError::required(QStringLiteral("content"));
    const QString id = params.text("replyId");
    work.session().run(QStringLiteral("UPDATE replies SET content = ?, modified = ? WHERE id = ?"),
                       {content, work.now(), id});
    touchComment(work, comment.value());
    return answer(work, comment.value(), id);
}

Result<QJsonObject> remove(Work& work, const Parameters& params) {
    const Result<CommentTarget> comment = ownReply(work, params);
    if (!comment)
        return comment.error();
    work.session().run(QStringLiteral("UPDATE replies SET deleted = 1, content = '', modified = ? WHERE id = ?"),
                       {work.now(), params.text("replyId")});
    touchComment(work, comment.value());
    return QJsonObject();
}

} // namespace replies
} // namespace quenby::localdrive
