// What one change means for the store, judged by what the store knew before. Pure functions.
#pragma once

#include "app/changes/ChangeStore.h"

namespace quenby {

// A missing date is earlier than every other.
bool isLater(const QDateTime& date, const QDateTime& than);

// The file that the change is about; empty when the server does not say.
QString identifierOf(const FeedChange& change);

// A new record of the change, without a status. The share address is left out for what can't be shared.
ChangeRecord getDataDic(const FeedChange& change, const QString& strSHARE);

// What happened to the file since dateCheckList; nothing when it is not worth a record.
std::optional<ChangeRecord::Status> statusOf(const FeedChange& change, const ChangeStore& store);

// Puts one change of an incremental poll into the store, whose list is sorted and stays so.
void classify(ChangeStore& store, const FeedChange& change, const QString& strSHARE);

} // namespace quenby
