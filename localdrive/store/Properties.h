// "drive#property": values that applications keep with a file.
#pragma once

#include "core/Result.h"
#include "localdrive/store/Parameters.h"
#include "localdrive/store/Work.h"

#include <QJsonArray>
#include <QJsonObject>

namespace quenby::localdrive {

QJsonArray propertyResources(Work& work, const QString& fileId);
// Stores {"key", "value", "visibility"} with the file; the visibility is PRIVATE when not given.
MaybeError storeProperty(Work& work, const QString& fileId, const QJsonObject& property);

namespace properties {

Result<QJsonObject> list(Work& work, const Parameters& params);
Result<QJsonObject> get(Work& work, const Parameters& params);
Result<QJsonObject> insert(Work& work, const Parameters& params);
// Also makes a property that is not there yet.
Result<QJsonObject> update(Work& work, const Parameters& params);
Result<QJsonObject> remove(Work& work, const Parameters& params);

} // namespace properties
} // namespace quenby::localdrive
