// The shared document of "drive.realtime": one JSON value per file with a revision number.
#pragma once

#include "core/Result.h"
#include "localdrive/store/Parameters.h"
#include "localdrive/store/Work.h"

#include <QJsonObject>

namespace quenby::localdrive::realtime {

// {"appId", "revision", "data"}; a file that never had a document has an empty one of revision 0. Another "revision"
// than the present one can't be had: 404.
Result<QJsonObject> get(Work& work, const Parameters& params);
// Replaces the document by the call's content, which must be JSON of at most 10 MiB. With "baseRevision", only when
// that is the present revision, else 412 "conditionNotMet".
Result<QJsonObject> update(Work& work, const Parameters& params);

} // namespace quenby::localdrive::realtime
