// Every mutation of a file ends here, inside its transaction.
#pragma once

#include "localdrive/store/Work.h"

namespace quenby::localdrive {

// The file changed: its version grows and its latest change gets the next id.
void recordChange(Work& work, const QString& fileId);
// The file is gone; only this change remains of it.
void recordDeletion(Work& work, const QString& fileId);

// The id of the latest change ever; at least 1, because making the Drive counts as the first.
qint64 largestChangeId(Session& session);

} // namespace quenby::localdrive
