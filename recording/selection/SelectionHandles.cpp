#include "recording/selection/SelectionHandles.h"

#include <array>

namespace quenby {
namespace {

const std::array<SelectionEdges, handleCount>& edgesByTag() {
    using enum SelectionEdge;
    static const std::array<SelectionEdges, handleCount> edges{
        left | lower, right | lower, right | upper, left | upper, lower, right, upper, left,
    };
    return edges;
}

// Half way where the handle moves neither of the two.
qreal placeBetween(qreal low, qreal high, bool isLow, bool isHigh) {
    if (isLow)
        return low;
    return isHigh ? high : low + (high - low) / 2;
}

} // namespace

SelectionEdges edgesOfHandle(int tag) {
    Q_ASSERT(tag >= 1 && tag <= handleCount);
    return edgesByTag()[static_cast<size_t>(tag - 1)];
}

SelectionCursor cursorOfHandle(int tag) {
    using enum SelectionEdge;
    const SelectionEdges edges = edgesOfHandle(tag);
    if (edges == (left | lower) || edges == (right | upper))
        return SelectionCursor::diagonalUpwards;
    if (edges == (right | lower) || edges == (left | upper))
        return SelectionCursor::diagonalDownwards;
    return edges & (lower | upper) ? SelectionCursor::resizeUpDownCursor : SelectionCursor::resizeLeftRightCursor;
}

QRectF frameOfHandle(int tag, const QRectF& selection) {
    using enum SelectionEdge;
    const SelectionEdges edges = edgesOfHandle(tag);
    const qreal x = placeBetween(selection.left(), selection.right(), edges & left, edges & right);
    const qreal y = placeBetween(selection.top(), selection.bottom(), edges & lower, edges & upper);
    return {x - handleSide / 2, y - handleSide / 2, handleSide, handleSide};
}

int handleAt(const QPointF& point, const QRectF& selection) {
    for (int tag = 1; tag <= handleCount; ++tag)
        if (frameOfHandle(tag, selection).contains(point))
            return tag;
    return 0;
}

} // namespace quenby
