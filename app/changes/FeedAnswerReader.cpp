#include "app/changes/FeedAnswerReader.h"

#include "driveapi/GTLDriveChange.h"

namespace quenby {
namespace {

// In UTC wherever the instant is known: such dates are cheap to make and to compare.
QDateTime instantOf(const GTLDateTime& date) {
    const auto milliseconds = date.millisecondsSinceEpoch();
    return milliseconds ? QDateTime::fromMSecsSinceEpoch(*milliseconds, Qt::UTC) : date.date();
}

FeedChange::File readFile(const GTLDriveFile& file) {
    const auto labels = file.labels();
    return {.identifier = file.identifier(),
            .title = file.title(),
            .mimeType = file.mimeType(),
            .iconLink = file.iconLink(),
            .thumbnailLink = file.thumbnailLink(),
            .resourceKey = file.resourceKey(),
            .createdDate = instantOf(file.createdDate()),
            .modifiedDate = instantOf(file.modifiedDate()),
            .isTrashed = labels && labels->trashed()};
}

FeedChange readChange(const GTLDriveChange& change) {
    FeedChange read{.fileId = change.fileId(), .modificationDate = instantOf(change.modificationDate()), .file = {}};
    const auto file = change.file();
    if (file && !change.deleted())
        read.file = readFile(*file);
    return read;
}

} // namespace

QString feedAnswerFields() {
    return QStringLiteral("items(fileId,deleted,modificationDate,file(id,title,mimeType,iconLink,thumbnailLink,"
                          "resourceKey,createdDate,modifiedDate,labels/trashed)),largestChangeId,nextPageToken,"
                          "newStartPageToken");
}

FeedAnswer feedAnswer(const GTLDriveChangeList& list) {
    FeedAnswer answer;
    answer.largestChangeId = list.largestChangeId();
    // A feed of more pages than are followed at once goes on with the next poll.
    answer.isCutOff = list.newStartPageToken().isEmpty() && !list.nextPageToken().isEmpty();
    answer.nextPageToken = answer.isCutOff ? list.nextPageToken() : list.newStartPageToken();
    const auto items = list.items();
    if (!items)
        return answer;
    answer.items.reserve(items->count());
    for (const auto& change : *items)
        answer.items.append(readChange(*change));
    return answer;
}

} // namespace quenby
