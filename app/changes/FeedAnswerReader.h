// From the Drive's change list to the plain values that the store works with.
#pragma once

#include "app/changes/ChangeStore.h"

namespace quenby {

class GTLDriveChangeList;

// What a query has to ask for, so that an answer holds everything that is read here and nothing else.
QString feedAnswerFields();

// Touches every node of the list: see driveapi/JSONValue.h about threads.
FeedAnswer feedAnswer(const GTLDriveChangeList& list);

} // namespace quenby
