#include "localdrive/store/Comments.h"

#include "localdrive/store/ApiError.h"
#include "localdrive/store/ChangeLog.h"
#include "localdrive/store/Identifiers.h"
#include "localdrive/store/Links.h"
#include "localdrive/store/PageToken.h"
#include "localdrive/store/Replies.h"
#include "localdrive/store/Text.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace quenby::localdrive {
namespace {

constexpr PageLimits pageLimits{20, 100};

const QString& selectComments() {
    static const QString sql =
        QStringLiteral("SELECT seq, id, author, content, anchor, context, status, created, modified, deleted "
                       "FROM comments WHERE file_id = ? ");
    return sql;
}

QJsonObject commentResource(Work& work, const FileRecord& file, const Row& row) {
    const QString id = row[1].toString();
    const bool deleted = row[9].toBool();
    QJsonObject resource{{QStringLiteral("kind"), QStringLiteral("drive#comment")},
                         {QStringLiteral("commentId"), id},
                         {QStringLiteral("selfLink"), links::api(work.caller().base, {QStringLiteral("files"), file.id,
                                                                                      QStringLiteral("comments"), id})},
                         {QStringLiteral("fileId"), file.id},
                         {QStringLiteral("fileTitle"), file.title},
                         {QStringLiteral("author"), work.user(row[2].toString())},
                         {QStringLiteral("status"), row[6].toString()},
                         {QStringLiteral("createdDate"), dateText(row[7])},
                         {QStringLiteral("modifiedDate"), dateText(row[8])},
                         {QStringLiteral("deleted"), deleted},
                         {QStringLiteral("replies"), replyResources(work, {file.id, id})}};
    if (!deleted) {
        const QString content = row[3].toString();
        resource.insert(QStringLiteral("content"), content);
        resource.insert(QStringLiteral("htmlContent"), content.toHtmlEscaped());
    }
    if (const QString anchor = row[4].toString(); !anchor.isEmpty())
        resource.insert(QStringLiteral("anchor"), anchor);
    if (const QJsonObject context = QJsonDocument::fromJson(row[5].toString().toUtf8()).object(); !context.isEmpty())
        resource.insert(QStringLiteral("context"), context);
    return resource;
}

// The one comment, newly read.
Result<QJsonObject> answer(Work& work, const CommentTarget& comment) {
    const std::optional<FileRecord> file = FileRecord::find(work.session(), comment.fileId);
    const Row row =
        work.session().row(selectComments() + QStringLiteral("AND id = ?"), {comment.fileId, comment.commentId});
    if (!file || row.isEmpty())
        return apiError::notFound(QStringLiteral("Comment"), comment.commentId);
    return commentResource(work, *file, row);
}

// The comment, when the caller wrote it.
Result<CommentTarget> ownComment(Work& work, const Parameters& params) {
    Result<CommentTarget> comment = findComment(work, params, Role::commenter);
    if (!comment)
        return comment;
    const QString author = work.session()
                               .value(QStringLiteral("SELECT author FROM comments WHERE id = ?"), {comment->commentId})
                               .toString();
    if (author != work.caller().user.emailAddress)
        return apiError::forbidden(QStringLiteral("Only who wrote a comment may change it."));
    return comment;
}

} // namespace

Result<CommentTarget> findComment(Work& work, const Parameters& params, Role needed, bool deletedToo) {
    const Result<FileRecord> file = findFile(work, params.text("fileId"), needed);
    if (!file)
        return file.error();
    const QString id = params.text("commentId");
    const QVariant found = work.session().value(
        QStringLiteral("SELECT 1 FROM comments WHERE file_id = ? AND id = ? AND (? OR NOT deleted)"),
        {file->id, id, deletedToo});
    if (!found.isValid())
        return apiError::notFound(QStringLiteral("Comment"), id);
    return CommentTarget{file->id, id};
}

void touchComment(Work& work, const CommentTarget& comment) {
    work.session().run(QStringLiteral("UPDATE comments SET modified = ? WHERE id = ?"),
                       {work.now(), comment.commentId});
    recordChange(work, comment.fileId);
}

void setCommentStatus(Work& work, const CommentTarget& comment, const QString& status) {
    work.session().run(QStringLiteral("UPDATE comments SET status = ? WHERE id = ?"), {status, comment.commentId});
}

namespace comments {

Result<QJsonObject> list(Work& work, const Parameters& params) {
    const Result<FileRecord> file = findFile(work, params.text("fileId"));
    if (!file)
        return file.error();
    const QString updatedMin = params.text("updatedMin");
    const std::optional<QDateTime> since = parsedDate(updatedMin);
    if (!updatedMin.isEmpty() && !since)
        return apiError::invalid(QStringLiteral("updatedMin"), QStringLiteral("updatedMin must be a date."));
    const bool deletedToo = params.flag("includeDeleted", false);
    const QString name = QStringLiteral("comments %1 %2 %3").arg(file->id, updatedMin).arg(deletedToo);
    const Result<PageRequest> page = pageRequest(work, params, name, pageLimits);
    if (!page)
        return page.error();

    QList<Row> rows =
        work.session().rows(selectComments() + QStringLiteral("AND seq < ? AND modified >= ? AND (? OR NOT deleted) "
                                                              "ORDER BY seq DESC LIMIT ?"),
                            {file->id, page->after.value_or(std::numeric_limits<qint64>::max()),
                             since ? since->toMSecsSinceEpoch() : 0, deletedToo, page->limit + 1});
    const std::optional<qint64> last = cutPage(rows, page.value());
    QJsonArray items;
    for (const Row& row : std::as_const(rows))
        items.append(commentResource(work, file.value(), row));
    const QString selfLink =
        links::api(work.caller().base, {QStringLiteral("files"), file->id, QStringLiteral("comments")});
    return listResource(work, QStringLiteral("drive#commentList"), selfLink, items, page.value(), last);
}

Result<QJsonObject> get(Work& work, const Parameters& params) {
    const Result<CommentTarget> comment = findComment(work, params, Role::reader, params.flag("includeDeleted", false));
    if (!comment)
        return comment.error();
    return answer(work, comment.value());
}

Result<QJsonObject> insert(Work& work, const Parameters& params) {
    const Result<FileRecord> file = findFile(work, params.text("fileId"), Role::commenter);
    if (!file)
        return file.error();
    const QJsonObject resource = params.resource();
    const QString content = cleaned(resource.value(QLatin1String("content")).toString());
    if (content.isEmpty())
        return apiError::required(QStringLiteral("content"));
    const QJsonDocument context(resource.value(QLatin1String("context")).toObject());
    const CommentTarget comment{file->id, newItemId()};
    work.session().run(
        QStringLiteral("INSERT INTO comments(id, file_id, author, content, anchor, context, status, created, modified) "
                       "VALUES(?, ?, ?, ?, ?, ?, 'open', ?, ?)"),
        {comment.commentId, file->id, work.caller().user.emailAddress, content,
         cleaned(resource.value(QLatin1String("anchor")).toString()),
         QString::fromUtf8(context.toJson(QJsonDocument::Compact)), work.now(), work.now()});
    recordChange(work, file->id);
    return answer(work, comment);
}

Result<QJsonObject> update(Work& work, const Parameters& params) {
    const Result<CommentTarget> comment = ownComment(work, params);
    if (!comment)
        return comment.error();
    const QString content = cleaned(params.resource().value(QLatin1String("content")).toString());
    if (content.isEmpty())
        return apiError::required(QStringLiteral("content"));
    work.session().run(QStringLiteral("UPDATE comments SET content = ? WHERE id = ?"), {content, comment->commentId});
    touchComment(work, comment.value());
    return answer(work, comment.value());
}

Result<QJsonObject> remove(Work& work, const Parameters& params) {
    const Result<CommentTarget> comment = ownComment(work, params);
    if (!comment)
        return comment.error();
    work.session().run(QStringLiteral("UPDATE comments SET deleted = 1, content = '' WHERE id = ?"),
                       {comment->commentId});
    touchComment(work, comment.value());
    return QJsonObject();
}

} // namespace comments
} // namespace quenby::localdrive
