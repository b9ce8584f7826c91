// "drive#app": what can open files. There is one, the local Drive's own pages.
#pragma once

#include "core/Result.h"
#include "localdrive/store/Parameters.h"
#include "localdrive/store/Work.h"

#include <QJsonObject>

namespace quenby::localdrive::apps {

// With "appFilterMimeTypes" (comma separated), only apps that open one of them.
Result<QJsonObject> list(Work& work, const Parameters& params);
Result<QJsonObject> get(Work& work, const Parameters& params);

} // namespace quenby::localdrive::apps
