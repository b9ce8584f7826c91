#include "workspace/tabbar/TabMotion.h"

#include <cmath>

namespace quenby {
namespace {

constexpr int durationMilliseconds = 160;

} // namespace

TabMotion::TabMotion(QObject* parent)
    : QObject(parent) {
    animation_.setStartValue(0.0);
    animation_.setEndValue(1.0);
    animation_.setDuration(durationMilliseconds);
    animation_.setEasingCurve(QEasingCurve::OutCubic);
    connect(&animation_, &QVariantAnimation::valueChanged, this, &TabMotion::moved);
    connect(&animation_, &QVariantAnimation::finished, this, [this] {
        from_.clear();
        Q_EMIT moved();
    });
}

QRect TabMotion::seen(const void* thing, const QRect& place) const {
    const auto leg = from_.find(thing);
    if (leg == from_.end() || place.isNull())
        return place;
    const qreal progress = animation_.currentValue().toDouble();
    const auto between = [progress](int from, int to) {
        return static_cast<int>(std::lround(from + (to - from) * progress));
    };
    QRect seen = place;
    seen.setLeft(between(leg->second.left(), place.left()));
    seen.setRight(between(leg->second.right(), place.right()));
    return seen;
}

std::unordered_map<const void*, QRect>
TabMotion::remaining(const std::unordered_map<const void*, QRect>& places) const {
    std::unordered_map<const void*, QRect> remaining;
    for (const auto& [thing, place] : places) {
        if (const QRect now = seen(thing, place); now != place)
            remaining[thing] = now;
    }
    return remaining;
}

void TabMotion::start(std::unordered_map<const void*, QRect> from) {
    animation_.stop();
    from_ = std::move(from);
    if (!from_.empty())
        animation_.start();
}

} // namespace quenby
