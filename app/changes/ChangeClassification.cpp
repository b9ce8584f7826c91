#include "app/changes/ChangeClassification.h"

#include "app/changes/ChangesLog.h"
#include "core/ResourceKey.h"

#include <algorithm>

namespace quenby {
namespace {

using Records = QList<ChangeRecord>;
using Status = ChangeRecord::Status;

// The list is short: a search is cheaper than an index would be.
qsizetype indexOfFile(const Records& records, const QString& identifier) {
    const auto isOfFile = [&](const ChangeRecord& record) { return record.identifier == identifier; };
    const auto found = std::find_if(records.begin(), records.end(), isOfFile);
    return identifier.isEmpty() || found == records.end() ? -1 : found - records.begin();
}

qsizetype indexOfSummary(const Records& records) {
    const auto found = std::find_if(records.begin(), records.end(), std::mem_fn(&ChangeRecord::isDeletionSummary));
    return found == records.end() ? -1 : found - records.begin();
}

// Newest first; behind those of the same date.
void place(Records& records, const ChangeRecord& record) {
    const auto behind =
        std::upper_bound(records.begin(), records.end(), record, [](const auto& one, const auto& other) {
            return isLater(one.modifiedDate, other.modifiedDate);
        });
    records.insert(behind, record);
}

void insert(Records& records, const ChangeRecord& record) {
    while (records.size() >= mostRecords)
        records.removeLast();
    place(records, record);
}

void replace(Records& records, qsizetype index, const ChangeRecord& record) {
    records.removeAt(index);
    place(records, record);
}

// One record sums up all the files that are gone and were never in the list: there is nothing to say of each.
void countDeletion(Records& records, const QDateTime& date) {
    const qsizetype index = indexOfSummary(records);
    ChangeRecord summary = index < 0 ? ChangeRecord() : records.at(index);
    summary.status = Status::deleted;
    ++summary.count;
    if (index < 0 || date.isValid())
        summary.modifiedDate = date;
    if (index < 0)
        insert(records, summary);
    else
        replace(records, index, summary);
}

// The older record stays: it tells what had happened to the file before.
void recordDeletion(Records& records, const FeedChange& change) {
    const qsizetype index = indexOfFile(records, identifierOf(change));
    if (index < 0)
        return countDeletion(records, change.modificationDate);
    ChangeRecord record = records.at(index);
    record.modifiedDate = change.modificationDate;
    record.share.clear();
    record.status = Status::deleted;
    insert(records, record);
}

void recordFile(Records& records, const ChangeRecord& record) {
    const qsizetype index = indexOfFile(records, record.identifier);
    if (index < 0)
        insert(records, record);
    else
        replace(records, index, record);
}

} // namespace

bool isLater(const QDateTime& date, const QDateTime& than) {
    return date.isValid() && (!than.isValid() || date > than);
}

QString identifierOf(const FeedChange& change) {
    return change.file && !change.file->identifier.isEmpty() ? change.file->identifier : change.fileId;
}

ChangeRecord getDataDic(const FeedChange& change, const QString& strSHARE) {
    ChangeRecord record;
    record.identifier = identifierOf(change);
    record.modifiedDate = change.modificationDate;
    if (!change.file)
        return record;
    record.title = change.file->title;
    record.iconLink = change.file->iconLink;
    record.thumbnailLink = change.file->thumbnailLink.isEmpty() ? change.file->iconLink : change.file->thumbnailLink;
    record.mimeType = change.file->mimeType;
    record.resourceKey = change.file->resourceKey;
    if (!change.file->isTrashed && !record.identifier.isEmpty() && !strSHARE.isEmpty())
        record.share = addressWithResourceKey(strSHARE + record.identifier, record.resourceKey);
    return record;
}

std::optional<Status> statusOf(const FeedChange& change, const ChangeStore& store) {
    if (!change.file)
        return Status::deleted;
    const bool wasTrashed = store.trashFileList.contains(identifierOf(change));
    if (change.file->isTrashed)
        return wasTrashed ? std::nullopt : std::optional(Status::trashed);
    if (wasTrashed)
        return Status::restored;
    if (isLater(change.file->createdDate, store.dateCheckList))
        return Status::added;
    if (isLater(change.file->modifiedDate, store.dateCheckList))
        return Status::updated;
    return std::nullopt;
}

void classify(ChangeStore& store, const FeedChange& change, const QString& strSHARE) {
    const QString identifier = identifierOf(change);
    const std::optional<Status> status = statusOf(change, store);
    if (!change.file || !change.file->isTrashed)
        store.trashFileList.remove(identifier);
    else if (!identifier.isEmpty())
        store.trashFileList.insert(identifier);

    if (!change.file)
        return recordDeletion(store.DriveChangeInfoAPI, change);
    if (status) {
        ChangeRecord record = getDataDic(change, strSHARE);
        record.status = status;
        recordFile(store.DriveChangeInfoAPI, record);
    } else if (!change.file->isTrashed) {
        qCInfo(changesLog, "Change: Title : %s", titleForLog(change.file->title).constData());
    }
}

} // namespace quenby
