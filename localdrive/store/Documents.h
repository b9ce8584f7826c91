// What the Drive's own documents hold: one JSON object each, which their pages write and exports read.
//
// Threads: any.
#pragma once

#include "core/Result.h"
#include "localdrive/store/Access.h"
#include "localdrive/store/DriveStore.h"
#include "localdrive/store/Work.h"

#include <QJsonObject>

namespace quenby::localdrive::documents {

struct Document {
    FileRecord file;
    Role role = Role::none; // the caller's
    qint64 revision = 0;    // 0: nobody has written to it
    QJsonObject content;
};

// 404 when there is no such file or the caller can't see it, 400 when it is no native document.
Result<Document> read(DriveStore& store, const Caller& caller, const QString& fileId);

// Replaces the content and returns its revision. 412 "conditionNotMet" when the present revision is not the one that
// the new content was made from.
Result<qint64> write(DriveStore& store, const Caller& caller, const QString& fileId, const QJsonObject& content,
                     qint64 baseRevision);

// Gives a new file what the original holds, as part of the caller's work.
void copy(Work& work, const QString& originalId, const QString& copyId);

} // namespace quenby::localdrive::documents
