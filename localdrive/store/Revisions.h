// "drive#revision": the contents that a file has had. The newest is its head.
//
// Unpinned revisions cost no quota once they are not the head any more; the oldest of them go when there are more
// than a hundred. Native documents have revisions without content, folders none.
#pragma once

#include "core/Result.h"
#include "localdrive/store/FileRecord.h"
#include "localdrive/store/Parameters.h"
#include "localdrive/store/Work.h"

#include <QJsonObject>

namespace quenby::localdrive {

// Gives the file a new head with the content (an id of the blob store, or empty for native documents) and refreshes
// what the record knows of it, including the quota. With `replaceHead`, the head so far is forgotten.
void appendRevision(Work& work, FileRecord& file, const QString& blobId, bool pinned, bool replaceHead);

namespace revisions {

Result<QJsonObject> list(Work& work, const Parameters& params);
// The id "head" means the newest.
Result<QJsonObject> get(Work& work, const Parameters& params);
// Changes "pinned" and the three publishing marks; absent ones stay.
Result<QJsonObject> update(Work& work, const Parameters& params);
// Not the last one: a file with content always has a revision.
Result<QJsonObject> remove(Work& work, const Parameters& params);

} // namespace revisions
} // namespace quenby::localdrive
