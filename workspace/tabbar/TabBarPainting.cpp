#include "workspace/tabbar/DemoModel.h"
#include "workspace/tabbar/TabBar.h"
#include "workspace/tabbar/TabPainter.h"
#include "workspace/tabbar/TabTexts.h"

#include <QPaintEvent>
#include <QPainter>
#include <QTimerEvent>

namespace quenby {
namespace {

constexpr int spinnerMilliseconds = 60; // per step

} // namespace

TabLook TabBar::lookOf(int index) const {
    TabLook look;
    const DemoModel* model = modelAt(index);
    if (!model)
        return look;
    look.label = tabLabel(*model);
    look.icon = model->shownIcon();
    look.spinnerStep = model->isProcessing() ? spinnerStep_ : -1;
    look.badge = model->showObjectCount() ? objectCountText(model->objectCount()) : QString();
    look.badgeColor = model->objectCountColor();
    look.isEdited = model->isEdited();
    look.isCurrent = index == currentIndex();
    look.isLifted = press_.kind == Press::Kind::drag && press_.model == model;
    look.isUnderPointer = hover_.tab == index && !look.isLifted;
    look.isDropTarget = dropTarget_ == index;
    look.hasFocusRing = look.isCurrent && hasFocus() && isFocusByKey_;
    const auto standsOut = [this](int tab) { return tab == currentIndex() || tab == hover_.tab; };
    look.hasSeparator = !standsOut(index) && !standsOut(index + 1);
    look.showsCloseButton = mayClose(index) && model->hasCloseButton() && !look.isLifted &&
                            (!options_.onlyShowCloseOnHover || look.isUnderPointer || look.hasFocusRing);
    look.isCloseUnderPointer = look.isUnderPointer && hover_.isOnClose;
    look.isClosePressed = press_.kind == Press::Kind::close && press_.model == model;
    return look;
}

QRect TabBar::seenFrame(int index) const {
    if (press_.kind == Press::Kind::drag && press_.model && press_.model == modelAt(index) && layout_.isShown(index))
        return layout_.frame(press_.leading, layout_.widthOf(index));
    return motion_.seen(modelAt(index), layout_.tab(index));
}

TabParts TabBar::partsOf(int index) const {
    return layout_.isShown(index) ? tabParts(seenFrame(index), layoutDirection(), lookOf(index).content(fontMetrics()))
                                  : TabParts();
}

void TabBar::updateTab(int index) {
    if (layout_.isShown(index))
        update(seenFrame(index).adjusted(-1, 0, 1, 0)); // with the separators on both sides
}

void TabBar::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    TabPainter look(painter, palette(), layoutDirection(), event->region());
    look.paintBar(rect());
    const auto paint = [&](int index) { look.paintTab(seenFrame(index), lookOf(index)); };
    for (int index = layout_.firstShown(); index < layout_.endShown(); ++index) {
        if (index != currentIndex() && event->region().intersects(seenFrame(index)))
            paint(index);
    }
    // Above the others: they may slide below it. It is the one that is dragged, too.
    if (layout_.isShown(currentIndex()))
        paint(currentIndex());
}

QRect TabBar::spinnerPlace(int index) const {
    const DemoModel* model = modelAt(index);
    return model && model->isProcessing() ? partsOf(index).icon : QRect();
}

void TabBar::updateSpinner() {
    bool isNeeded = false;
    for (int index = layout_.firstShown(); isSeen_ && !isNeeded && index < layout_.endShown(); ++index) {
        const DemoModel* model = modelAt(index);
        isNeeded = model && model->isProcessing();
    }
    if (isNeeded && !spinner_.isActive())
        spinner_.start(spinnerMilliseconds, this);
    else if (!isNeeded)
        spinner_.stop();
}

void TabBar::timerEvent(QTimerEvent* event) {
    if (event->timerId() == spinner_.timerId()) {
        spinnerStep_ = (spinnerStep_ + 1) % TabPainter::spinnerSteps;
        for (int index = layout_.firstShown(); index < layout_.endShown(); ++index) {
            if (const QRect place = spinnerPlace(index); !place.isNull())
                update(place);
        }
    } else if (event->timerId() == dropSelects_.timerId()) {
        dropSelects_.stop();
        if (dropTarget_ >= 0)
            setCurrentIndex(dropTarget_);
    } else if (event->timerId() == carries_.timerId()) {
        carryOn();
    } else {
        QTabBar::timerEvent(event);
    }
}

void TabBar::showEvent(QShowEvent* event) {
    QTabBar::showEvent(event);
    isSeen_ = true;
    updateSpinner();
}

// A minimised window is told the same.
void TabBar::hideEvent(QHideEvent* event) {
    QTabBar::hideEvent(event);
    isSeen_ = false;
    motion_.start({});
    endPress();
    setHover({});
    updateSpinner();
}

} // namespace quenby
