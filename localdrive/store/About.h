// "drive#about": whose Drive it is and how full it is.
#pragma once

#include "core/Result.h"
#include "localdrive/store/Parameters.h"
#include "localdrive/store/Work.h"

#include <QJsonObject>

namespace quenby::localdrive::about {

Result<QJsonObject> get(Work& work, const Parameters& params);

} // namespace quenby::localdrive::about
