// "api#channel": who wants to be told of changes.
//
// The store keeps the channels; they expire by themselves and calls to an address outside are never made from here.
#pragma once

#include "core/Result.h"
#include "localdrive/store/Parameters.h"
#include "localdrive/store/Work.h"

#include <QJsonObject>

namespace quenby::localdrive {

namespace files {

Result<QJsonObject> watch(Work& work, const Parameters& params);

} // namespace files

namespace changes {

Result<QJsonObject> watch(Work& work, const Parameters& params);

} // namespace changes

namespace channels {

Result<QJsonObject> stop(Work& work, const Parameters& params);

} // namespace channels
} // namespace quenby::localdrive
