#include "app/changes/ChangeKinds.h"

#include "driveapi/GTLDriveChange.h"
#include "driveapi/GTLDriveFile.h"

namespace quenby {
namespace {

bool isTrashed(const GTLDriveFile& file) {
    const auto labels = file.labels();
    return labels && labels->trashed();
}

bool isUntouchedSinceCreation(const GTLDriveFile& file) {
    const QDateTime created = file.createdDate().date();
    return created.isValid() && file.modifiedDate().date() <= created;
}

} // namespace

std::optional<ChangeKinds::Status> ChangeKinds::take(const GTLDriveChange& change) {
    const auto file = change.file();
    if (file && file->mimeType() == QStringLiteral("application/vnd.google-apps.folder"))
        return std::nullopt;
    const Status status = statusOf(change);
    known_.insert(change.fileId());
    if (status == Status::trashed)
        trashed_.insert(change.fileId());
    else
        trashed_.remove(change.fileId());
    return status;
}

ChangeKinds::Status ChangeKinds::statusOf(const GTLDriveChange& change) const {
    const auto file = change.file();
    if (!file || change.deleted())
        return Status::deleted;
    if (isTrashed(*file))
        return Status::trashed;
    if (trashed_.contains(change.fileId()))
        return Status::restored;
    return !known_.contains(change.fileId()) && isUntouchedSinceCreation(*file) ? Status::added : Status::updated;
}

QString ChangeKinds::name(Status status) {
    switch (status) {
    case Status::added:
        return QStringLiteral("new");
    case Status::updated:
        return QStringLiteral("updated");
    case Status::restored:
        return QStringLiteral("restored");
    case Status::trashed:
        return QStringLiteral("trashed");
    case Status::deleted:
        return QStringLiteral("deleted");
    }
    return {};
}

} // namespace quenby
