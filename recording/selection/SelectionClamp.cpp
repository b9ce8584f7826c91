#include "recording/selection/SelectionClamp.h"

#include <algorithm>
#include <cmath>

namespace quenby {
namespace {

// What a rectangle covers of one axis.
struct Span {
    qreal origin = 0;
    qreal length = 0;
};

Span horizontal(const QRectF& rectangle) { return {rectangle.x(), rectangle.width()}; }
Span vertical(const QRectF& rectangle) { return {rectangle.y(), rectangle.height()}; }

qreal number(qreal value, qreal otherwise) { return std::isnan(value) ? otherwise : value; }

// The last word, for what the rules below leave outside: a handle that was pulled across the opposite edge at the end
// of the screen, or a selection that was made while the screen was larger.
Span keptWithin(const Span& span, qreal limit) {
    const qreal length = std::clamp(number(span.length, 0), 0.0, std::max(0.0, limit));
    return {std::clamp(number(span.origin, 0), 0.0, std::max(0.0, limit - length)), length};
}

Span clamped(Span span, const Span& before, qreal limit) {
    span.origin = std::max(0.0, span.origin);
    if (span.origin + span.length > limit)
        span = {limit - before.length, before.length};
    return keptWithin(span, limit);
}

Span resized(const Span& before, qreal movement, bool movesOrigin, bool movesEnd, qreal limit) {
    Span span = before;
    if (movesOrigin)
        span = {before.origin + movement, before.length - movement};
    else if (movesEnd)
        span.length += movement;
    span.origin = std::max(0.0, span.origin);
    if (span.origin + span.length > limit)
        span = {std::min(before.origin, limit - smallestByHandle), limit - before.origin};
    span.length = std::max(number(span.length, 0), smallestByHandle);
    return keptWithin(span, limit);
}

QRectF rectangle(const Span& x, const Span& y) { return {x.origin, y.origin, x.length, y.length}; }

} // namespace

QRectF clampedSelection(const QRectF& wanted, const QRectF& before, const QSizeF& screen) {
    return rectangle(clamped(horizontal(wanted), horizontal(before), screen.width()),
                     clamped(vertical(wanted), vertical(before), screen.height()));
}

QRectF resizedByHandle(int tag, const QRectF& before, const QPointF& movement, const QSizeF& screen) {
    using enum SelectionEdge;
    const SelectionEdges edges = edgesOfHandle(tag);
    return rectangle(resized(horizontal(before), movement.x(), edges & left, edges & right, screen.width()),
                     resized(vertical(before), movement.y(), edges & lower, edges & upper, screen.height()));
}

} // namespace quenby
