// What happened to a file, judged from one change and from what the changes before it said.
#pragma once

#include "core/ChangeRecord.h"

#include <QSet>
#include <QString>

#include <optional>

namespace quenby {

class GTLDriveChange;

class ChangeKinds {
public:
    using Status = ChangeRecord::Status;

    // Nothing for folders, which are not listed. Changes are taken in the order in which they happened.
    std::optional<Status> take(const GTLDriveChange& change);

    // "new", "updated", "restored", "trashed" or "deleted".
    static QString name(Status status);

private:
    Status statusOf(const GTLDriveChange& change) const;

    QSet<QString> known_;   // identifiers of files that an earlier change spoke of
    QSet<QString> trashed_; // those of them that lie in the trash
};

} // namespace quenby
