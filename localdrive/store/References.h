// "drive#parentReference" and "drive#childReference": the same link between a folder and what is in it, seen from
// either end.
#pragma once

#include "core/Result.h"
#include "localdrive/store/Parameters.h"
#include "localdrive/store/Work.h"

#include <QJsonObject>

namespace quenby::localdrive {

QJsonObject parentReference(Work& work, const QString& fileId, const QString& parentId);
QJsonObject childReference(Work& work, const QString& folderId, const QString& childId);

namespace parents {

Result<QJsonObject> list(Work& work, const Parameters& params);
Result<QJsonObject> get(Work& work, const Parameters& params);
Result<QJsonObject> insert(Work& work, const Parameters& params);
Result<QJsonObject> remove(Work& work, const Parameters& params);

} // namespace parents

// The list of children is among the file lists (store/FileLists.h).
namespace children {

Result<QJsonObject> get(Work& work, const Parameters& params);
Result<QJsonObject> insert(Work& work, const Parameters& params);
Result<QJsonObject> remove(Work& work, const Parameters& params);

} // namespace children
} // namespace quenby::localdrive
