// Folders and what is in them. A file may be in several folders, and no folder is inside itself.
//
// A file is in the trash when it was put there, or when it has folders and all of them are in the trash. A file goes
// with a deleted folder unless it is in another folder too.
#pragma once

#include "core/Error.h"
#include "localdrive/store/Work.h"

#include <QStringList>

namespace quenby::localdrive {

class FileTree {
public:
    explicit FileTree(Work& work)
        : work_(work)
        , session_(work.session()) {}

    QStringList parents(const QString& fileId);
    QStringList children(const QString& folderId);
    bool isParent(const QString& folderId, const QString& fileId);

    // Both leave the trash state to refreshTrashed(). Being there already, or not at all, is no error. The new folder
    // must exist, be writable by the caller, be a folder and not lie below the file.
    MaybeError addParent(const QString& fileId, const QString& folderId);
    void removeParent(const QString& fileId, const QString& folderId);
    MaybeError setParents(const QString& fileId, const QStringList& folderIds);

    // Works out anew whether the file is in the trash, and everything below it; records the changes of those for
    // which the answer is another.
    void refreshTrashed(const QString& fileId);

    // Deletes the file for good, with what goes with it.
    void remove(const QString& fileId);

private:
    bool liesBelow(const QString& fileId, const QString& folderId);
    void removeOne(const QString& fileId);

    Work& work_;
    Session& session_;
};

} // namespace quenby::localdrive
