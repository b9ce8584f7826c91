// "drive#change": the latest change of each file, in the order in which they happened.
#pragma once

#include "core/Result.h"
#include "localdrive/store/Parameters.h"
#include "localdrive/store/Work.h"

#include <QJsonObject>

namespace quenby::localdrive::changes {

// From "startChangeId" on, oldest first. A file that changes while pages are read moves to a later one. Files that the
// caller can't see any more are reported as deleted.
Result<QJsonObject> list(Work& work, const Parameters& params);
Result<QJsonObject> get(Work& work, const Parameters& params);

} // namespace quenby::localdrive::changes
