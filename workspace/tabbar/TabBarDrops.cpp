#include "workspace/tabbar/TabBar.h"
#include "workspace/tabbar/TabDrop.h"

#include <QDropEvent>

#include <utility>

namespace quenby {
namespace {

constexpr int dropSelectsMilliseconds = 500;

} // namespace

void TabBar::dragEnterEvent(QDragEnterEvent* event) {
    if (tabDrop(*event->mimeData()).isUsable())
        event->acceptProposedAction();
}

void TabBar::dragMoveEvent(QDragMoveEvent* event) {
    dropTargetIs(layout_.tabAt(event->position().toPoint()));
    event->acceptProposedAction();
}

void TabBar::dragLeaveEvent(QDragLeaveEvent*) { dropTargetIs(-1); }

void TabBar::dropEvent(QDropEvent* event) {
    const int index = layout_.tabAt(event->position().toPoint());
    dropTargetIs(-1);
    const TabDrop drop = tabDrop(*event->mimeData());
    if (!drop.isUsable())
        return;
    event->acceptProposedAction();
    if (!drop.paths.isEmpty())
        Q_EMIT filesDropped(index, drop.paths);
    else
        Q_EMIT addressDropped(index, drop.address);
}

// Half a second over one tab shows its page, so that the drag can go on there.
void TabBar::dropTargetIs(int index) {
    if (index == dropTarget_)
        return;
    updateTab(std::exchange(dropTarget_, index));
    updateTab(dropTarget_);
    if (index >= 0)
        dropSelects_.start(dropSelectsMilliseconds, this);
    else
        dropSelects_.stop();
}

} // namespace quenby
