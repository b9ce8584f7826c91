// "drive#change": the latest change of each file, in the order in which they happened.
#pragma once

#include "core/Result.h"
#include "localdrive/store/Parameters.h"
#include "localdrive/store/Work.h"

#include <QJsonObject>

namespace quenby::localdrive::changes {

// 400 "invalid" when the call names a change's id and the Drive gives changes none.
MaybeError checkStartChangeId(Work& work, const Parameters& params);

// From "startChangeId" on, oldest first. A file that changes while pages are read moves to a later one. Files that the
// caller can't see any more are reported as deleted. A Drive that gives changes no ids refuses "startChangeId".
Result<QJsonObject> list(Work& work, const Parameters& params);
Result<QJsonObject> get(Work& work, const Parameters& params);
// The page token with which a list begins behind the latest change, whatever its filters. The last page of each list
// has one like it as "newStartPageToken".
Result<QJsonObject> getStartPageToken(Work& work, const Parameters& params);

} // namespace quenby::localdrive::changes
