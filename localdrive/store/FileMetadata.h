// What a client may say about a file.
#pragma once

#include "core/Error.h"
#include "localdrive/store/FileRecord.h"
#include "localdrive/store/Parameters.h"
#include "localdrive/store/Work.h"

#include <QJsonObject>
#include <QStringList>

#include <optional>

namespace quenby::localdrive {

// Which dates a client may set.
enum class SettableDates { none, modified, all };

// Takes the writable fields of a file resource over into the record: title, mimeType, description, originalFilename,
// folderColorRgb, labels, writersCanShare, lastViewedByMeDate, and the dates that may be set. Absent fields stay as
// they are and null empties a field; fields that only the server sets are ignored, so that a client may send back what
// it read. A value of the wrong type is 400 "invalid".
MaybeError applyMetadata(const QJsonObject& resource, SettableDates dates, qint64 now, FileRecord& file);

// The ids under "parents"; nothing when the resource does not speak of parents.
std::optional<QStringList> requestedParents(const QJsonObject& resource);

// Stores what the resource has under "properties" with the file.
MaybeError storeProperties(Work& work, const QString& fileId, const QJsonObject& resource);

} // namespace quenby::localdrive
