#include "popover/window/PopoverHeight.h"

#include "platform/Defaults.h"

#include <algorithm>
#include <cmath>

namespace quenby {
namespace {

QString heightKey() { return QStringLiteral("heightForStatusMenu"); }

} // namespace

int keptPopoverHeight(const Defaults& defaults) {
    const QVariant kept = defaults.valueForKey(heightKey());
    bool isNumber = false;
    const double height = kept.toDouble(&isNumber);
    // The truth counts as a number, too, and so does the text "nan".
    if (!isNumber || kept.typeId() == QMetaType::Bool || !std::isfinite(height))
        return usualPopoverHeight;
    return static_cast<int>(std::clamp<double>(std::round(height), leastPopoverHeight, greatestPopoverHeight));
}

void keepPopoverHeight(Defaults& defaults, int height) {
    defaults.setValueForKey(heightKey(), static_cast<float>(height));
}

} // namespace quenby
