#include "workspace/uploads/QueueList.h"

#include "workspace/uploads/QueueRowDelegate.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

#include <algorithm>
#include <utility>

namespace quenby {
namespace {

constexpr int gapWidth = 2;
constexpr int scrollMilliseconds = 30;
constexpr int scrollEdge = 24;  // pixels from the upper and the lower edge
constexpr int mostPerStep = 20; // pixels

} // namespace

QueueList::QueueList(QWidget* parent)
    : QListView(parent) {
    setItemDelegate(new QueueRowDelegate(this));
    setSelectionMode(ExtendedSelection);
    setEditTriggers(NoEditTriggers);
    setUniformItemSizes(true);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTabKeyNavigation(false);
    setDragEnabled(true);
    setContextMenuPolicy(Qt::CustomContextMenu);
    setFrameShape(NoFrame);
    setAccessibleName(tr("Uploads"));
}

// The toolkit's list would lay out and paint everything anew, but no change makes a row higher.
void QueueList::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QList<int>& roles) {
    QAbstractItemView::dataChanged(topLeft, bottomRight, roles);
}

// --- Dragging -------------------------------------------------------------------------------------------------------
// Within the list alone, and so without the desktop's drag and drop, which would wait here until it is over.

void QueueList::startDrag(Qt::DropActions) {
    viewport()->setCursor(Qt::ClosedHandCursor);
    setGap(gapAt(pointer_));
}

void QueueList::mouseMoveEvent(QMouseEvent* event) {
    pointer_ = event->position().toPoint();
    if (!isDragging())
        return QListView::mouseMoveEvent(event);
    if (!event->buttons().testFlag(Qt::LeftButton))
        return endDrag(); // let go where nobody told
    setGap(gapAt(pointer_));
    if (scrollStep() != 0 && !scrolling_.isActive())
        scrolling_.start(scrollMilliseconds, this);
}

void QueueList::mouseReleaseEvent(QMouseEvent* event) {
    if (!isDragging())
        return QListView::mouseReleaseEvent(event);
    const int gap = gapAt(event->position().toPoint());
    endDrag();
    Q_EMIT rowsDropped(gap);
}

void QueueList::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Escape)
        return QListView::keyPressEvent(event);
    if (isDragging())
        endDrag();
    else
        Q_EMIT escapePressed();
}

void QueueList::focusOutEvent(QFocusEvent* event) {
    endDrag();
    QListView::focusOutEvent(event);
}

void QueueList::timerEvent(QTimerEvent* event) {
    if (event->timerId() != scrolling_.timerId())
        return QListView::timerEvent(event);
    const int step = scrollStep();
    if (step == 0)
        return scrolling_.stop();
    verticalScrollBar()->setValue(verticalScrollBar()->value() + step);
    setGap(gapAt(pointer_));
}

// The faster, the further the pointer is beyond the edge.
int QueueList::scrollStep() const {
    const int below = pointer_.y() - (viewport()->height() - scrollEdge);
    const int above = scrollEdge - pointer_.y();
    if (below > 0)
        return std::min(below, mostPerStep);
    return above > 0 ? -std::min(above, mostPerStep) : 0;
}

// Between rows that can be dragged, before the first of them or after the last.
int QueueList::gapAt(const QPoint& place) const {
    const int count = model()->rowCount();
    const auto canBeDragged = [this](int row) {
        return model()->flags(model()->index(row, 0)).testFlag(Qt::ItemIsDragEnabled);
    };
    int first = 0;
    while (first < count && !canBeDragged(first))
        ++first;
    int end = count;
    while (end > first && !canBeDragged(end - 1))
        --end;
    const QModelIndex index = indexAt({viewport()->width() / 2, place.y()});
    if (!index.isValid())
        return place.y() < 0 ? std::clamp(indexAt({viewport()->width() / 2, 0}).row(), first, end) : end;
    const int after = place.y() >= visualRect(index).center().y() ? 1 : 0;
    return std::clamp(index.row() + after, first, end);
}

int QueueList::gapLine(int gap) const {
    if (gap < model()->rowCount())
        return visualRect(model()->index(gap, 0)).top() - (gap > 0 ? gapWidth / 2 : 0);
    return visualRect(model()->index(gap - 1, 0)).bottom() + 1 - gapWidth;
}

void QueueList::setGap(std::optional<int> gap) {
    if (gap == gap_)
        return;
    updateGap(std::exchange(gap_, gap));
    updateGap(gap_);
}

void QueueList::updateGap(std::optional<int> gap) {
    if (gap && model()->rowCount() > 0)
        viewport()->update(0, gapLine(*gap), viewport()->width(), gapWidth);
}

void QueueList::endDrag() {
    viewport()->unsetCursor();
    scrolling_.stop();
    setGap(std::nullopt);
}

void QueueList::paintEvent(QPaintEvent* event) {
    QListView::paintEvent(event);
    if (!gap_ || model()->rowCount() == 0)
        return;
    QPainter painter(viewport());
    painter.fillRect(0, gapLine(*gap_), viewport()->width(), gapWidth, palette().color(QPalette::Highlight));
}

} // namespace quenby
