#include "localdrive/store/Files.h"

#include "localdrive/store/Access.h"
#include "localdrive/store/ApiError.h"
#include "localdrive/store/ChangeLog.h"
#include "localdrive/store/Documents.h"
#include "localdrive/store/FileMetadata.h"
#include "localdrive/store/FileResource.h"
#include "localdrive/store/FileTree.h"
#include "localdrive/store/Identifiers.h"
#include "localdrive/store/NativeTypes.h"
#include "localdrive/store/Permissions.h"
#include "localdrive/store/Revisions.h"
#include "localdrive/store/Text.h"

#include <QJsonArray>

namespace quenby::localdrive {
namespace {

const QString untitled = QStringLiteral("Untitled");
const QString anyBytes = QStringLiteral("application/octet-stream");

// The file as it now is in the database, as the answer to the call that changed it.
Result<QJsonObject> answer(Work& work, const QString& fileId) {
    const std::optional<FileRecord> file = FileRecord::find(work.session(), fileId);
    return file ? fileResource(work, *file) : QJsonObject();
}

MaybeError checkRoom(Work& work, qint64 bytes) {
    return checkQuota(work.session(), work.store().settings().quotaBytesTotal, bytes);
}

// The content that comes with the call, or one of no bytes.
Result<QString> adoptContent(Work& work, const Parameters& params) {
    if (!params.media())
        return work.adoptEmpty();
    if (const MaybeError full = checkRoom(work, params.media()->size))
        return *full;
    return work.adopt(*params.media());
}

// An id is spent for good: the change that tells of a deleted file goes on to name it.
bool isTaken(Session& session, const QString& id) {
    return session
        .value(QStringLiteral("SELECT 1 FROM files WHERE id = ? UNION ALL SELECT 1 FROM changes WHERE file_id = ?"),
               {id, id})
        .isValid();
}

QString chosenId(const QJsonObject& resource) { return cleaned(resource.value(QLatin1String("id")).toString()); }

FileRecord newRecord(Work& work) {
    FileRecord file;
    file.id = newFileId();
    file.madeWith = work.caller().program.clientId;
    file.created = work.now();
    file.modified = work.now();
    file.modifiedBy = work.caller().user.emailAddress;
    file.modifiedByMe = work.now();
    return file;
}

// Inserts the record with the owner, folders and properties that every new file has.
MaybeError insertRecord(Work& work, FileRecord& file, const QJsonObject& resource) {
    file.insert(work.session());
    insertOwner(work, file.id);
    const QStringList root{work.store().rootFolderId()};
    if (const MaybeError refused = FileTree(work).setParents(file.id, requestedParents(resource).value_or(root)))
        return refused;
    return storeProperties(work, file.id, resource);
}

void finishInsert(Work& work, const FileRecord& file) {
    file.update(work.session());
    recordChange(work, file.id);
    FileTree(work).refreshTrashed(file.id);
}

// A date that the client chose, which is one that is no longer what it was before, stays.
void markModified(Work& work, FileRecord& file, qint64 before) {
    if (file.modified == before)
        file.modified = work.now();
    file.modifiedBy = work.caller().user.emailAddress;
    file.modifiedByMe = work.now();
}

// Stars, folders and the trash are no changes of what the file is.
bool isEdited(const FileRecord& before, const FileRecord& after) {
    return before.title != after.title || before.mimeType != after.mimeType ||
           before.description != after.description || before.originalFilename != after.originalFilename;
}

MaybeError checkUpdate(Work& work, const FileRecord& before, const FileRecord& after) {
    if (isNativeType(after.mimeType) != isNativeType(before.mimeType) || after.isFolder() != before.isFolder())
        return apiError::invalid(QStringLiteral("mimeType"),
                                 QStringLiteral("A file can't become a folder or a document, nor the other way."));
    if (after.explicitlyTrashed != before.explicitlyTrashed && roleOf(work, after.id) < Role::owner)
        return apiError::forbidden(QStringLiteral("Only the owner may trash a file."));
    return std::nullopt;
}

QStringList listed(const Parameters& params, const char* name) {
    QStringList ids = params.text(name).split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (QString& id : ids)
        id = id.trimmed();
    return ids;
}

MaybeError moveFile(Work& work, const FileRecord& file, const Parameters& params) {
    FileTree tree(work);
    if (const std::optional<QStringList> parents = requestedParents(params.resource()))
        if (const MaybeError refused = tree.setParents(file.id, *parents))
            return refused;
    for (const QString& parent : listed(params, "addParents"))
        if (const MaybeError refused = tree.addParent(file.id, parent))
            return refused;
    for (const QString& parent : listed(params, "removeParents"))
        tree.removeParent(file.id, parent);
    return std::nullopt;
}

MaybeError replaceContent(Work& work, FileRecord& file, const Parameters& params) {
    if (isNativeType(file.mimeType))
        return apiError::invalid(QStringLiteral("media"), QStringLiteral("This kind of file takes no content."));
    const bool forgetsHead = !params.flag("newRevision", true);
    if (const MaybeError full = checkRoom(work, params.media()->size - file.size))
        return full;
    const Result<QString> blob = work.adopt(*params.media());
    if (!blob)
        return blob.error();
    appendRevision(work, file, blob.value(), params.flag("pinned", false), forgetsHead);
    return std::nullopt;
}

// The file, when it is not the root folder and the caller may treat it so.
Result<FileRecord> ordinaryFile(Work& work, const QString& id, Role needed) {
    Result<FileRecord> file = findFile(work, id, needed);
    if (file && file->id == work.store().rootFolderId())
        return apiError::forbidden(QStringLiteral("The root folder can't be changed, trashed or deleted."));
    return file;
}

Result<QJsonObject> setTrashed(Work& work, const QString& id, bool trashed) {
    Result<FileRecord> file = ordinaryFile(work, id, Role::owner);
    if (!file)
        return file.error();
    if (file->explicitlyTrashed != trashed) {
        file->explicitlyTrashed = trashed;
        file->update(work.session());
        recordChange(work, file->id);
        FileTree(work).refreshTrashed(file->id);
    }
    return answer(work, file->id);
}

} // namespace

qint64 quotaUsed(Session& session) {
    return session.value(QStringLiteral("SELECT TOTAL(quota_used) FROM files")).toLongLong();
}

qint64 quotaUsedInTrash(Session& session) {
    return session.value(QStringLiteral("SELECT TOTAL(quota_used) FROM files WHERE trashed")).toLongLong();
}

MaybeError checkQuota(Session& session, qint64 total, qint64 more) {
    // No sum, which a client's number could make overflow.
    if (more > 0 && more > total - quotaUsed(session))
        return apiError::quotaExceeded();
    return std::nullopt;
}

MaybeError checkChosenId(Session& session, const QJsonObject& resource) {
    if (!resource.contains(QLatin1String("id")))
        return std::nullopt;
    const QString id = chosenId(resource);
    if (!isPlausibleFileId(id))
        return apiError::invalid(QStringLiteral("id"),
                                 QStringLiteral("The provided file ID is not usable: %1").arg(id));
    if (isTaken(session, id))
        return apiError::fileIdInUse(id);
    return std::nullopt;
}

namespace files {

Result<QJsonObject> generateIds(Work& work, const Parameters& params) {
    constexpr qint64 usual = 10;
    constexpr qint64 most = 1000;
    const qint64 count = params.number("maxResults").value_or(usual);
    if (count < 1 || count > most)
        return apiError::invalid(QStringLiteral("maxResults"), QStringLiteral("maxResults must be from 1 to 1000."));
    const QString drive = QStringLiteral("drive");
    if (const QString space = params.text("space"); !space.isEmpty() && space != drive)
        return apiError::invalid(QStringLiteral("space"), QStringLiteral("The only space is drive."));
    QJsonArray ids;
    while (ids.size() < count)
        if (const QString id = newFileId(); !isTaken(work.session(), id))
            ids.append(id);
    return QJsonObject{{QStringLiteral("kind"), QStringLiteral("drive#generatedIds")},
                       {QStringLiteral("space"), drive},
                       {QStringLiteral("ids"), ids}};
}

Result<QJsonObject> insert(Work& work, const Parameters& params) {
    FileRecord file = newRecord(work);
    if (params.resource().contains(QLatin1String("id"))) {
        file.id = chosenId(params.resource());
        if (const MaybeError refused = checkChosenId(work.session(), params.resource()))
            return *refused;
    }
    file.mimeType = params.mediaType();
    if (const MaybeError wrong = applyMetadata(params.resource(), SettableDates::all, work.now(), file))
        return *wrong;
    if (file.title.isEmpty())
        file.title = untitled;
    if (file.mimeType.isEmpty())
        file.mimeType = anyBytes;
    if (file.originalFilename.isEmpty() && !isNativeType(file.mimeType))
        file.originalFilename = file.title;
    if (params.media() && isNativeType(file.mimeType))
        return apiError::invalid(QStringLiteral("mimeType"), QStringLiteral("This kind of file takes no content."));

    QString blobId;
    if (!isNativeType(file.mimeType)) {
        Result<QString> adopted = adoptContent(work, params);
        if (!adopted)
            return adopted.error();
        blobId = *std::move(adopted);
    }
    if (const MaybeError refused = insertRecord(work, file, params.resource()))
        return *refused;
    if (!file.isFolder())
        appendRevision(work, file, blobId, params.flag("pinned", false), false);
    finishInsert(work, file);
    return answer(work, file.id);
}

Result<QJsonObject> get(Work& work, const Parameters& params) {
    Result<FileRecord> file = findFile(work, params.text("fileId"));
    if (!file)
        return file.error();
    if (!params.flag("updateViewedDate", false))
        return fileResource(work, file.value());
    file->viewed = work.now();
    file->update(work.session());
    recordChange(work, file->id);
    return answer(work, file->id);
}

Result<QJsonObject> update(Work& work, const Parameters& params) {
    Result<FileRecord> file = ordinaryFile(work, params.text("fileId"), Role::writer);
    if (!file)
        return file.error();
    const FileRecord before = *file;
    const auto dates = params.flag("setModifiedDate", false) ? SettableDates::modified : SettableDates::none;
    if (const MaybeError wrong = applyMetadata(params.resource(), dates, work.now(), *file))
        return *wrong;
    if (file->title.isEmpty())
        file->title = untitled;
    if (file->mimeType.isEmpty() || (params.media() && !params.resource().contains(QLatin1String("mimeType"))))
        file->mimeType = params.mediaType().isEmpty() ? before.mimeType : params.mediaType();
    if (const MaybeError refused = checkUpdate(work, before, *file))
        return *refused;
    if (params.media() || isEdited(before, *file))
        markModified(work, *file, before.modified);
    if (params.media())
        if (const MaybeError refused = replaceContent(work, *file, params))
            return *refused;
    if (params.flag("updateViewedDate", true) && file->viewed == before.viewed)
        file->viewed = work.now();
    file->update(work.session());
    if (const MaybeError refused = moveFile(work, *file, params))
        return *refused;
    if (const MaybeError refused = storeProperties(work, file->id, params.resource()))
        return *refused;
    recordChange(work, file->id);
    FileTree(work).refreshTrashed(file->id);
    return answer(work, file->id);
}

Result<QJsonObject> copy(Work& work, const Parameters& params) {
    const Result<FileRecord> original = findFile(work, params.text("fileId"));
    if (!original)
        return original.error();
    if (original->isFolder())
        return apiError::forbidden(QStringLiteral("Folders can't be copied."));
    if (const MaybeError full = checkRoom(work, original->size))
        return *full;
    FileRecord file = newRecord(work);
    file.title = QStringLiteral("Copy of ") + original->title;
    file.mimeType = original->mimeType;
    file.originalFilename = original->originalFilename;
    file.description = original->description;
    if (const MaybeError wrong = applyMetadata(params.resource(), SettableDates::all, work.now(), file))
        return *wrong;
    if (isNativeType(file.mimeType) != isNativeType(original->mimeType) || file.isFolder())
        return apiError::invalid(QStringLiteral("mimeType"), QStringLiteral("A copy is of the original's kind."));

    QJsonObject resource = params.resource();
    if (!requestedParents(resource)) {
        QJsonArray parents;
        for (const QString& parent : FileTree(work).parents(original->id))
            parents.append(QJsonObject{{QStringLiteral("id"), parent}});
        resource.insert(QStringLiteral("parents"), parents);
    }
    if (const MaybeError refused = insertRecord(work, file, resource))
        return *refused;
    appendRevision(work, file, original->blobId, params.flag("pinned", false), false);
    documents::copy(work, original->id, file.id);
    finishInsert(work, file);
    return answer(work, file.id);
}

Result<QJsonObject> touch(Work& work, const Parameters& params) {
    Result<FileRecord> file = ordinaryFile(work, params.text("fileId"), Role::writer);
    if (!file)
        return file.error();
    markModified(work, *file, file->modified);
    file->update(work.session());
    recordChange(work, file->id);
    return answer(work, file->id);
}

Result<QJsonObject> trash(Work& work, const Parameters& params) {
    return setTrashed(work, params.text("fileId"), true);
}

Result<QJsonObject> untrash(Work& work, const Parameters& params) {
    return setTrashed(work, params.text("fileId"), false);
}

Result<QJsonObject> remove(Work& work, const Parameters& params) {
    const Result<FileRecord> file = ordinaryFile(work, params.text("fileId"), Role::owner);
    if (!file)
        return file.error();
    FileTree(work).remove(file->id);
    return QJsonObject();
}

Result<QJsonObject> emptyTrash(Work& work, const Parameters&) {
    const CallingProgram& program = work.caller().program;
    const QList<Row> trashed = work.session().rows(
        QStringLiteral("SELECT f.id FROM files f JOIN permissions p ON p.file_id = f.id AND p.id = ? AND p.role = ? "
                       "WHERE f.trashed AND (? OR f.made_with = ?)"),
        {work.caller().user.permissionId(), static_cast<int>(Role::owner), !program.seesOwnFilesOnly,
         program.clientId});
    FileTree tree(work);
    for (const Row& row : trashed)
        tree.remove(row[0].toString());
    return QJsonObject();
}

} // namespace files
} // namespace quenby::localdrive
