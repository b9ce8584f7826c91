#include "workspace/tab/ZoomSteps.h"

#include <algorithm>
#include <array>

namespace quenby {
namespace {

constexpr std::array percents{25, 33, 50, 67, 75, 80, 90, 100, 110, 125, 150, 175, 200, 250, 300, 400, 500};

// A factor comes back from the engine with its rounding.
int percentOf(qreal factor) { return qRound(factor * 100); }

} // namespace

qreal zoomedIn(qreal factor) {
    const auto next = std::upper_bound(percents.begin(), percents.end(), percentOf(factor));
    return (next == percents.end() ? percents.back() : *next) / 100.0;
}

qreal zoomedOut(qreal factor) {
    const auto same = std::lower_bound(percents.begin(), percents.end(), percentOf(factor));
    return (same == percents.begin() ? percents.front() : *(same - 1)) / 100.0;
}

} // namespace quenby
