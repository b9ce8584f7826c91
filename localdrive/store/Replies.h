// "drive#commentReply": the answers to a comment, oldest first. The verbs "resolve" and "reopen" also set its status.
#pragma once

#include "core/Result.h"
#include "localdrive/store/Comments.h"
#include "localdrive/store/Parameters.h"
#include "localdrive/store/Work.h"

#include <QJsonArray>
#include <QJsonObject>

namespace quenby::localdrive {

// Those that are not deleted.
QJsonArray replyResources(Work& work, const CommentTarget& comment);

namespace replies {

Result<QJsonObject> list(Work& work, const Parameters& params);
Result<QJsonObject> get(Work& work, const Parameters& params);
Result<QJsonObject> insert(Work& work, const Parameters& params);
// Only by who wrote it, as is removing.
Result<QJsonObject> update(Work& work, const Parameters& params);
Result<QJsonObject> remove(Work& work, const Parameters& params);

} // namespace replies
} // namespace quenby::localdrive
