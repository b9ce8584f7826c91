// "drive#file" and what stands inside it.
#pragma once

#include "localdrive/store/FileRecord.h"
#include "localdrive/store/Work.h"

#include <QJsonObject>

namespace quenby::localdrive {

QJsonObject fileResource(Work& work, const FileRecord& file);

// The extension of a name, without the dot; empty when there is none.
QString fileExtension(const QString& name);

} // namespace quenby::localdrive
