// Lists of files by a search: "drive.files.list" and "drive.children.list". The newest file comes first.
#pragma once

#include "core/Result.h"
#include "localdrive/store/Parameters.h"
#include "localdrive/store/Work.h"

#include <QJsonObject>

namespace quenby::localdrive {

namespace files {

// All files of the caller, those in the trash too, but not the root folder.
Result<QJsonObject> list(Work& work, const Parameters& params);

} // namespace files

namespace children {

Result<QJsonObject> list(Work& work, const Parameters& params);

} // namespace children
} // namespace quenby::localdrive
