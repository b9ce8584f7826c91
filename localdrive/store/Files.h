// The methods of "drive.files" that treat one file. The lists are in store/FileLists.h.
#pragma once

#include "core/Result.h"
#include "localdrive/store/Parameters.h"
#include "localdrive/store/Work.h"

#include <QJsonObject>

namespace quenby::localdrive {

// Bytes that count against the quota; of the trash alone when asked.
qint64 quotaUsed(Session& session);
qint64 quotaUsedInTrash(Session& session);
// 403 "quotaExceeded" when so many bytes more would go beyond the total.
MaybeError checkQuota(Session& session, qint64 total, qint64 more);

// The id that a client chose for the file that it inserts: 400 "invalid" when it can't be one, 409 "fileIdInUse" when a
// file has it, or once had it. Without one everything is fine.
MaybeError checkChosenId(Session& session, const QJsonObject& resource);

namespace files {

// Ids that no file has, for files to be inserted: "maxResults" (10) of them, at most 1000.
Result<QJsonObject> generateIds(Work& work, const Parameters& params);
// A file with the call's content; without one, an empty file, a folder or a native document. It goes into the root
// folder unless the resource names "parents". The resource may choose the file's "id".
Result<QJsonObject> insert(Work& work, const Parameters& params);
// "updateViewedDate" marks it as viewed as well; that alone makes it a mutation, so reading is a method of its own.
Result<QJsonObject> get(Work& work, const Parameters& params);
// Both of update and patch: absent fields stay, null empties. A content makes a new head revision ("newRevision" false:
// replaces the head).
Result<QJsonObject> update(Work& work, const Parameters& params);
// The content is shared with the original, not copied.
Result<QJsonObject> copy(Work& work, const Parameters& params);
Result<QJsonObject> touch(Work& work, const Parameters& params);
Result<QJsonObject> trash(Work& work, const Parameters& params);
Result<QJsonObject> untrash(Work& work, const Parameters& params);
Result<QJsonObject> remove(Work& work, const Parameters& params);
Result<QJsonObject> emptyTrash(Work& work, const Parameters& params);

} // namespace files
} // namespace quenby::localdrive
