#include "localdrive/store/FileTree.h"

#include "localdrive/store/Access.h"
#include "localdrive/store/ApiError.h"
#include "localdrive/store/ChangeLog.h"

namespace quenby::localdrive {
namespace {

QStringList firstColumn(const QList<Row>& rows) {
    QStringList texts;
    texts.reserve(rows.size());
    for (const Row& row : rows)
        texts.append(row[0].toString());
    return texts;
}

} // namespace

QStringList FileTree::parents(const QString& fileId) {
    return firstColumn(
        session_.rows(QStringLiteral("SELECT parent_id FROM parents WHERE file_id = ? ORDER BY parent_id"), {fileId}));
}

QStringList FileTree::children(const QString& folderId) {
    return firstColumn(session_.rows(QStringLiteral("SELECT file_id FROM parents WHERE parent_id = ?"), {folderId}));
}

bool FileTree::isParent(const QString& folderId, const QString& fileId) {
    return session_
        .value(QStringLiteral("SELECT 1 FROM parents WHERE file_id = ? AND parent_id = ?"), {fileId, folderId})
        .isValid();
}

// Whether `fileId` is the folder or somewhere below it.
bool FileTree::liesBelow(const QString& fileId, const QString& folderId) {
    return session_
        .value(QStringLiteral("WITH RECURSIVE above(id) AS (SELECT ? UNION "
                              "SELECT parents.parent_id FROM parents JOIN above ON parents.file_id = above.id) "
                              "SELECT 1 FROM above WHERE id = ?"),
               {fileId, folderId})
        .isValid();
}

MaybeError FileTree::addParent(const QString& fileId, const QString& folderId) {
    const Result<FileRecord> folder = findFile(work_, folderId, Role::writer);
    if (!folder)
        return folder.error();
    if (!folder->isFolder())
        return apiError::invalid(QStringLiteral("parents"), QStringLiteral("%1 is not a folder.").arg(folderId));
    if (fileId == work_.store().rootFolderId())
        return apiError::forbidden(QStringLiteral("The root folder can't be moved."));
    if (liesBelow(folder->id, fileId))
        return apiError::invalid(QStringLiteral("parents"), QStringLiteral("A folder can't be put into itself."));
    session_.run(QStringLiteral("INSERT OR IGNORE INTO parents VALUES(?, ?)"), {fileId, folder->id});
    return std::nullopt;
}

void FileTree::removeParent(const QString& fileId, const QString& folderId) {
    session_.run(QStringLiteral("DELETE FROM parents WHERE file_id = ? AND parent_id = ?"),
                 {fileId, resolvedId(work_, folderId)});
}

MaybeError FileTree::setParents(const QString& fileId, const QStringList& folderIds) {
    QStringList wanted;
    for (const QString& id : folderIds)
        wanted.append(resolvedId(work_, id));
    for (const QString& current : parents(fileId))
        if (!wanted.contains(current))
            removeParent(fileId, current);
    for (const QString& id : wanted)
        if (const MaybeError refused = addParent(fileId, id))
            return refused;
    return std::nullopt;
}

void FileTree::refreshTrashed(const QString& fileId) {
    // Marks are only passed on where they change, and folders have no circles, so this ends.
    QStringList waiting{fileId};
    while (!waiting.isEmpty()) {
        const QString id = waiting.takeLast();
        const Row row = session_.row(QStringLiteral("SELECT files.trashed, files.explicitly_trashed OR "
                                                    "(COUNT(parents.file_id) > 0 AND MIN(folder.trashed)) "
                                                    "FROM files LEFT JOIN parents ON parents.file_id = files.id "
                                                    "LEFT JOIN files AS folder ON folder.id = parents.parent_id "
                                                    "WHERE files.id = ? GROUP BY files.id"),
                                     {id});
        if (row.isEmpty() || row[0].toBool() == row[1].toBool())
            continue;
        session_.run(QStringLiteral("UPDATE files SET trashed = ? WHERE id = ?"), {row[1].toBool(), id});
        recordChange(work_, id);
        waiting += children(id);
    }
}

void FileTree::removeOne(const QString& fileId) {
    const QStringList blobs = firstColumn(session_.rows(
        QStringLiteral("SELECT DISTINCT blob_id FROM revisions WHERE file_id = ? AND blob_id IS NOT NULL"), {fileId}));
    if (session_.run(QStringLiteral("DELETE FROM files WHERE id = ?"), {fileId}) == 0)
        return; // it went with its folder before
    for (const QString& blob : blobs)
        work_.release(blob);
    recordDeletion(work_, fileId);
}

void FileTree::remove(const QString& fileId) {
    QStringList waiting{fileId};
    while (!waiting.isEmpty()) {
        const QString id = waiting.takeLast();
        const QStringList inside = children(id);
        removeOne(id);
        for (const QString& child : inside) {
            if (parents(child).isEmpty()) {
                waiting.append(child);
            } else {
                recordChange(work_, child);
                refreshTrashed(child);
            }
        }
    }
}

} // namespace quenby::localdrive
