#include "workspace/tabbar/DemoModel.h"
#include "workspace/tabbar/TabBar.h"
#include "workspace/tabbar/TabMenus.h"
#include "workspace/tabbar/TabTexts.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QMenu>
#include <QToolTip>
#include <QWheelEvent>

#include <algorithm>
#include <utility>

namespace quenby {
namespace {

constexpr QPoint nowhere(-1, -1);
constexpr int carryMilliseconds = 150; // per tab that is not shown

} // namespace

bool TabBar::event(QEvent* event) {
    switch (event->type()) {
    case QEvent::HoverEnter:
    case QEvent::HoverMove:
    case QEvent::HoverLeave:
        return true; // the base would repaint; see hoverAt()
    case QEvent::ToolTip: {
        const auto* help = static_cast<QHelpEvent*>(event);
        return showToolTip(help->pos(), help->globalPos());
    }
    default:
        return QTabBar::event(event);
    }
}

bool TabBar::showToolTip(QPoint point, QPoint globalPoint) {
    const int index = layout_.tabAt(point);
    if (const DemoModel* model = modelAt(index))
        QToolTip::showText(globalPoint, toolTipOf(*model), this, layout_.tab(index));
    else
        QToolTip::hideText();
    return true;
}

void TabBar::hoverAt(QPoint point) {
    pointer_ = point;
    const int tab = press_.kind == Press::Kind::drag ? -1 : layout_.tabAt(point);
    if (tab != hover_.tab)
        setHover({tab, false}); // now its close button may be there
    setHover({tab, tab >= 0 && partsOf(tab).closeButton.contains(point)});
}

void TabBar::setHover(const Hover& hover) {
    if (hover == hover_)
        return;
    const Hover before = std::exchange(hover_, hover);
    updateTab(before.tab);
    updateTab(hover_.tab);
}

void TabBar::requestClose(int index) {
    if (mayClose(index))
        Q_EMIT closeRequested(index);
}

void TabBar::step(int by) {
    if (count() > 0)
        setCurrentIndex(std::clamp(currentIndex() + by, 0, count() - 1));
}

void TabBar::focusInEvent(QFocusEvent* event) {
    const Qt::FocusReason reason = event->reason();
    const bool returns = reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason;
    if (!returns)
        isFocusByKey_ =
            reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason || reason == Qt::ShortcutFocusReason;
    updateTab(currentIndex());
}

void TabBar::focusOutEvent(QFocusEvent*) { updateTab(currentIndex()); }

void TabBar::keyPressEvent(QKeyEvent* event) {
    if (!std::exchange(isFocusByKey_, true))
        updateTab(currentIndex());
    const int forward = layoutDirection() == Qt::RightToLeft ? -1 : 1;
    switch (event->key()) {
    case Qt::Key_Left:
        return step(-forward);
    case Qt::Key_Right:
        return step(forward);
    case Qt::Key_Home:
        return step(-count());
    case Qt::Key_End:
        return step(count());
    case Qt::Key_Delete:
        return requestClose(currentIndex());
    default:
        event->ignore();
    }
}

void TabBar::mousePressEvent(QMouseEvent* event) {
    const QPoint point = event->position().toPoint();
    if (event->buttons() == event->button())
        endPress(); // the release of an earlier one went elsewhere
    hoverAt(point);
    DemoModel* model = modelAt(layout_.tabAt(point));
    if (!model || press_.kind != Press::Kind::none)
        return event->ignore();
    press_ = {Press::Kind::none, model, point};
    if (event->button() == Qt::MiddleButton) {
        press_.kind = Press::Kind::middle;
    } else if (event->button() == Qt::LeftButton && hover_.isOnClose) {
        press_.kind = Press::Kind::close;
        updateTab(hover_.tab);
    } else if (event->button() == Qt::LeftButton) {
        press_.kind = Press::Kind::select;
        setCurrentIndex(hover_.tab);
    } else {
        event->ignore();
    }
}

void TabBar::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && layout_.tabAt(event->position().toPoint()) < 0)
        Q_EMIT addTabRequested();
    else
        mousePressEvent(event); // quick clicks on tabs are all clicks
}

void TabBar::mouseMoveEvent(QMouseEvent* event) {
    const QPoint point = event->position().toPoint();
    if (event->buttons() == Qt::NoButton)
        endPress();
    hoverAt(point);
    const bool isFar = (point - press_.at).manhattanLength() >= QApplication::startDragDistance();
    if (press_.kind == Press::Kind::select && isFar)
        beginDrag(point);
    else if (press_.kind == Press::Kind::drag)
        dragTo(point);
    else if (press_.kind == Press::Kind::middle || press_.kind == Press::Kind::scrub)
        scrubTo(point);
}

void TabBar::mouseReleaseEvent(QMouseEvent* event) {
    const QPoint point = event->position().toPoint();
    const bool isMiddle = press_.kind == Press::Kind::middle || press_.kind == Press::Kind::scrub;
    if (press_.kind == Press::Kind::none || event->button() != (isMiddle ? Qt::MiddleButton : Qt::LeftButton))
        return event->ignore();
    hoverAt(point);
    const Press ended = press_;
    endPress();
    hoverAt(point);
    const bool isOnSameTab = ended.model && hover_.tab >= 0 && modelAt(hover_.tab) == ended.model;
    if (isOnSameTab && (ended.kind == Press::Kind::middle || (ended.kind == Press::Kind::close && hover_.isOnClose)))
        requestClose(hover_.tab);
}

void TabBar::leaveEvent(QEvent* event) {
    QTabBar::leaveEvent(event);
    hoverAt(nowhere);
}

// With the middle button held down, the tabs that the pointer passes are selected.
void TabBar::scrubTo(QPoint point) {
    const int index = layout_.tabAt(point);
    if (!options_.allowsScrubbing || index < 0 ||
        (press_.kind == Press::Kind::middle && modelAt(index) == press_.model))
        return;
    press_.kind = Press::Kind::scrub;
    setCurrentIndex(index);
}

void TabBar::wheelEvent(QWheelEvent* event) {
    constexpr int notch = 120;
    if (!options_.allowsScrubbing)
        return event->ignore();
    const QPoint angle = event->angleDelta();
    const bool isSideways = std::abs(angle.x()) > std::abs(angle.y());
    const bool isReversed = isSideways && layoutDirection() == Qt::RightToLeft;
    const int turn = isSideways ? (isReversed ? -angle.x() : angle.x()) : angle.y();
    if ((turn > 0) != (wheelTurn_ > 0))
        wheelTurn_ = 0;
    wheelTurn_ += turn;
    const int notches = wheelTurn_ / notch;
    wheelTurn_ -= notches * notch;
    if (notches != 0)
        step(-notches);
    event->accept();
}

void TabBar::contextMenuEvent(QContextMenuEvent* event) {
    const bool isByKey = event->reason() == QContextMenuEvent::Keyboard;
    const int index = isByKey ? currentIndex() : layout_.tabAt(event->pos());
    makeTabMenu(*this, index)
        ->popup(isByKey && index >= 0 ? mapToGlobal(layout_.tab(index).bottomLeft()) : event->globalPos());
}

void TabBar::beginDrag(QPoint point) {
    const int index = press_.model ? indexOf(*press_.model) : -1;
    if (count() < 2 || !layout_.isShown(index))
        return;
    const QRect seen = seenFrame(index);
    const int grip = std::abs(press_.at.x() - (layoutDirection() == Qt::RightToLeft ? seen.right() : seen.left()));
    press_.grip = std::min(grip, layout_.widthOf(index));
    press_.kind = Press::Kind::drag;
    dragTo(point);
}

// The tab follows the pointer as far as the row of tabs goes; the others make room.
void TabBar::dragTo(QPoint point) {
    int index = press_.model ? indexOf(*press_.model) : -1;
    if (!layout_.isShown(index)) // others have been selected or removed meanwhile
        return endPress();
    const int pointer = layout_.fromLeading(point.x());
    const int width = layout_.widthOf(index);
    press_.leading = std::clamp(pointer - press_.grip, layout_.tabsBegin(), layout_.tabsEnd() - width);
    const auto middleOf = [this](int tab) { return layout_.leadingOf(tab) + layout_.widthOf(tab) / 2; };
    const auto exchangeWith = [&](int other) {
        moveTab(index, other);
        index = other;
    };
    while (press_.kind == Press::Kind::drag && index + 1 < layout_.endShown() &&
           press_.leading + width > middleOf(index + 1))
        exchangeWith(index + 1);
    while (press_.kind == Press::Kind::drag && index > layout_.firstShown() && press_.leading < middleOf(index - 1))
        exchangeWith(index - 1);
    carryBy_ = pointer > layout_.tabsEnd() && layout_.endShown() < count() ? 1
               : pointer < layout_.tabsBegin() && layout_.firstShown() > 0 ? -1
                                                                           : 0;
    if (carryBy_ == 0)
        carries_.stop();
    else if (!carries_.isActive())
        carries_.start(carryMilliseconds, this);
    update();
}

// Held beyond an end of the row, a tab goes on among the tabs that are not shown there.
void TabBar::carryOn() {
    const int index = press_.kind == Press::Kind::drag && press_.model ? indexOf(*press_.model) : -1;
    const int to = index + carryBy_;
    if (index < 0 || to < 0 || to >= count())
        return carries_.stop();
    moveTab(index, to);
    if (press_.kind == Press::Kind::drag)
        dragTo(pointer_);
}

void TabBar::endPress() {
    carries_.stop();
    const Press ended = std::exchange(press_, Press());
    if (ended.kind == Press::Kind::none)
        return;
    const int index = ended.model ? indexOf(*ended.model) : -1;
    if (ended.kind == Press::Kind::drag && layout_.isShown(index) && animates()) {
        auto from = motion_.remaining(places_);
        from[ended.model] = layout_.frame(ended.leading, layout_.widthOf(index));
        motion_.start(std::move(from));
    }
    if (ended.kind == Press::Kind::drag)
        update();
    else
        updateTab(index);
}

} // namespace quenby
