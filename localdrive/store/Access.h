// Who may do what with a file.
#pragma once

#include "core/Result.h"
#include "localdrive/store/FileRecord.h"
#include "localdrive/store/Work.h"

namespace quenby::localdrive {

// In the order of their powers; the numbers stand in the database.
enum class Role : int { none = 0, reader = 1, commenter = 2, writer = 3, owner = 4 };

// What a permission is called by, whatever it is given to: one person, everybody of a domain, or everybody.
QString permissionId(const QString& type, const QString& value, bool withLink);

// The most that any permission of the file gives the caller.
Role roleOf(Work& work, const QString& fileId);

// Whether the calling program may know of the file at all: with full access of every one, else of those that it made,
// and of the root folder.
bool isShownTo(Work& work, const FileRecord& file);

// The file of that id, "root" being the root folder's other name. A file that the caller can't see is 404 "notFound",
// one that he can see but may not treat so is 403 "insufficientFilePermissions".
Result<FileRecord> findFile(Work& work, const QString& id, Role needed = Role::reader);

// "root" or an id, as an id.
QString resolvedId(Work& work, const QString& id);

} // namespace quenby::localdrive
