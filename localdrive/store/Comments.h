// "drive#comment": what people say about a file. The newest comes first. Deleted ones stay, without their words.
#pragma once

#include "core/Result.h"
#include "localdrive/store/Access.h"
#include "localdrive/store/Parameters.h"
#include "localdrive/store/Work.h"

#include <QJsonObject>

namespace quenby::localdrive {

// A comment of a file that the caller may see, as the methods on replies need it.
struct CommentTarget {
    QString fileId;
    QString commentId;
};

// The comment that "fileId" and "commentId" name; a deleted one is not found unless it is asked for.
Result<CommentTarget> findComment(Work& work, const Parameters& params, Role needed, bool deletedToo = false);
// The comment got a reply or lost one: its date and its file's change say so.
void touchComment(Work& work, const CommentTarget& comment);
// "resolved" or "open".
void setCommentStatus(Work& work, const CommentTarget& comment, const QString& status);

namespace comments {

Result<QJsonObject> list(Work& work, const Parameters& params);
Result<QJsonObject> get(Work& work, const Parameters& params);
Result<QJsonObject> insert(Work& work, const Parameters& params);
// Only by who wrote it, as is removing.
Result<QJsonObject> update(Work& work, const Parameters& params);
Result<QJsonObject> remove(Work& work, const Parameters& params);

} // namespace comments
} // namespace quenby::localdrive
