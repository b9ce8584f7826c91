#include "popover/changes/ScrollView.h"

#include "popover/changes/RFOverlayScroller.h"
#include "popover/changes/TableView.h"

#include <QScrollBar>
#include <QStyle>

namespace quenby {

ScrollView::ScrollView(RowPictures& pictures, const Endpoints& endpoints, std::shared_ptr<TimeSource> timeSource,
                       QWidget* parent)
    : QScrollArea(parent)
    , tableView_(new TableView(pictures, endpoints.webURL, timeSource))
    , scroller_(new RFOverlayScroller(*verticalScrollBar(), std::move(timeSource), this)) {
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff); // the scroller speaks for it
    setWidgetResizable(true);
    setWidget(tableView_);
    tableView_->setAutoFillBackground(false);
    viewport()->setAutoFillBackground(false);
    setFocusPolicy(Qt::NoFocus);
    setFocusProxy(tableView_);
    connect(tableView_, &TableView::openRequested, this, &ScrollView::openRequested);
    connect(tableView_, &TableView::shareRequested, this, &ScrollView::shareRequested);
    connect(tableView_, &TableView::wantsToShow, this,
            [this](const QRect& row) { ensureVisible(0, row.center().y(), 0, row.height() / 2 + 1); });
}

ScrollView::~ScrollView() = default;

void ScrollView::setRecords(const QList<ChangeRecord>& records) { tableView_->setRecords(records); }

void ScrollView::resizeEvent(QResizeEvent* event) {
    QScrollArea::resizeEvent(event);
    const QRect room = viewport()->geometry();
    const QRect right(room.right() + 1 - RFOverlayScroller::floatingWidth, room.top(), RFOverlayScroller::floatingWidth,
                      room.height());
    scroller_->setGeometry(QStyle::visualRect(layoutDirection(), room, right));
    scroller_->raise();
}

} // namespace quenby
