#include "app/changes/ChangeStore.h"

#include "app/changes/ChangeClassification.h"
#include "app/changes/ChangesLog.h"

#include <algorithm>
#include <vector>

namespace quenby {
namespace {

using Records = QList<ChangeRecord>;
using Status = ChangeRecord::Status;
using Changes = std::vector<const FeedChange*>;

// Without folders, newest first; of a file that is listed more than once, as happens when it changes while the pages
// are read, the latest change alone.
Changes latestChanges(const QList<FeedChange>& items) {
    const QString folderType = QStringLiteral("application/vnd.google-apps.folder");
    Changes changes;
    changes.reserve(static_cast<size_t>(items.size()));
    for (auto item = items.rbegin(); item != items.rend(); ++item) {
        if (!item->file || item->file->mimeType != folderType)
            changes.push_back(&*item);
    }
    std::stable_sort(changes.begin(), changes.end(), [](const FeedChange* one, const FeedChange* other) {
        return isLater(one->modificationDate, other->modificationDate);
    });
    QSet<QString> known;
    std::erase_if(changes, [&known](const FeedChange* change) {
        const QString identifier = identifierOf(*change);
        if (known.contains(identifier))
            return true;
        if (!identifier.isEmpty())
            known.insert(identifier);
        return false;
    });
    return changes;
}

void saveTrashFile(QSet<QString>& trashFileList, const Changes& changes) {
    for (const FeedChange* change : changes) {
        const QString identifier = identifierOf(*change);
        if (!change->file || !change->file->isTrashed)
            trashFileList.remove(identifier); // restored while no poll succeeded
        else if (!identifier.isEmpty())
            trashFileList.insert(identifier);
    }
    qCInfo(changesLog, "%zu record TrashList", static_cast<size_t>(trashFileList.size()));
}

// Makes the list anew, from the latest changes of all. The answer: the same records with what happened since
// dateCheckList as their status, as an incremental poll would have seen it.
Records rebuild(ChangeStore& store, const Changes& changes, const QString& strSHARE) {
    const ChangeStore before = store;
    saveTrashFile(store.trashFileList, changes);
    Records happened;
    store.DriveChangeInfoAPI.clear();
    for (const FeedChange* change : changes) {
        if (store.DriveChangeInfoAPI.size() == mostRecordsOfFirstPoll)
            break;
        ChangeRecord record = getDataDic(*change, strSHARE);
        qCInfo(changesLog, "Title : %s", titleForLog(record.title).constData());
        const std::optional<Status> status = statusOf(*change, before);
        if (change->file && change->file->isTrashed)
            record.status = Status::trashed;
        store.DriveChangeInfoAPI.append(record);
        record.status = status;
        happened.append(record);
    }
    return happened;
}

// Of a record with a status. A file without a title counts as one file.
QString textOf(const ChangeRecord& record) {
    const int count = std::max(record.count, 1);
    const QString files = QString::number(count) + (count == 1 ? QStringLiteral(" file") : QStringLiteral(" files"));
    const QString subject = record.title.isEmpty() ? files : record.title;
    switch (*record.status) {
    case Status::added:
        return subject + QStringLiteral(" added");
    case Status::updated:
        return subject + QStringLiteral(" updated");
    case Status::restored:
        return subject + QStringLiteral(" restored");
    case Status::trashed:
        return subject + QStringLiteral(" trashed");
    case Status::deleted:
        break;
    }
    return subject + QStringLiteral(" deleted");
}

// Of the same change: the records of two polls may differ in their status.
bool contains(const Records& records, const ChangeRecord& wanted) {
    return std::any_of(records.begin(), records.end(), [&](const ChangeRecord& record) {
        return record.identifier == wanted.identifier && record.modifiedDate == wanted.modifiedDate &&
               record.count == wanted.count;
    });
}

QList<ChangeNotice> notificationifNeeded(ChangeStore& store, const Records& happened, const Records& knownBefore,
                                         bool notificationDisplay) {
    QList<ChangeNotice> notices;
    for (const ChangeRecord& record : happened) {
        if (contains(knownBefore, record))
            continue;
        const bool isUploadedHere = store.listNotificationDontDisplay.remove(record.identifier);
        const bool isNew = store.dateCheckList.isValid() && isLater(record.modifiedDate, store.dateCheckList);
        if (notificationDisplay && isNew && record.status && !isUploadedHere)
            notices.append({record, textOf(record)});
    }
    return notices;
}

// The numbers are followed wherever there are any.
void keepPlace(ChangeStore& store, const std::optional<FeedAnswer>& answer) {
    const QString token = answer ? answer->nextPageToken : QString();
    const qint64 largest = answer ? std::max<qint64>(answer->largestChangeId, 0) : 0;
    const bool goesOnWithFirst = store.isNextPollFirst() || store.isFirstPollCutOff;
    const bool goesByToken = !token.isEmpty() && (largest == 0 || store.areNumbersRefused);
    store.isFirstPollCutOff = goesByToken && answer->isCutOff && goesOnWithFirst;
    store.startPageToken = goesByToken ? token : QString();
    store.maxFileChangeId = goesByToken ? 0 : largest;
}

} // namespace

PolledStore pollCompleted(ChangeStore store, const std::optional<FeedAnswer>& answer,
                          const FeedSurroundings& surroundings) {
    const Records before = store.DriveChangeInfoAPI;
    Records happened;
    if (!answer || answer->items.isEmpty()) {
        qCDebug(changesLog, "no changes detect in last 30 seconds");
    } else if (store.isNextPollFirst()) {
        happened = rebuild(store, latestChanges(answer->items), surroundings.strSHARE);
    } else {
        for (const FeedChange* change : latestChanges(answer->items))
            classify(store, *change, surroundings.strSHARE);
        happened = store.DriveChangeInfoAPI;
    }
    keepPlace(store, answer);
    const auto notices = notificationifNeeded(store, happened, before, surroundings.notificationDisplay);
    store.dateCheckList = surroundings.now;
    const bool hasNews = store.DriveChangeInfoAPI != before;
    return {std::move(store), notices, hasNews};
}

} // namespace quenby
