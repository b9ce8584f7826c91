#include "workspace/window/SidePanel.h"

#include "workspace/window/AccountView.h"
#include "workspace/window/PaneSplitter.h"

#include <QEvent>
#include <QPainter>
#include <QScrollArea>
#include <QShortcut>
#include <QVBoxLayout>

namespace quenby {
namespace {

QVBoxLayout* bareLayout(QWidget* widget) {
    auto* layout = new QVBoxLayout(widget);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    return layout;
}

QScrollArea* makeScrollArea(QWidget* content, QWidget* parent) {
    auto* area = new QScrollArea(parent);
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidget(content);
    return area;
}

} // namespace

SidePanel::SidePanel(QWidget* parent)
    : QWidget(parent) {
    auto* content = new QWidget;
    content_ = bareLayout(content);
    accountView_ = new AccountView(content);
    content_->addWidget(accountView_);
    content_->addStretch(1);
    bareLayout(this)->addWidget(makeScrollArea(content, this));
    setMinimumWidth(smallestWidth);
    setMaximumWidth(largestWidth);
    setAutoFillBackground(true);
    auto* escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    escape->setContext(Qt::WidgetWithChildrenShortcut);
    connect(escape, &QShortcut::activated, this, &SidePanel::closeRequested);
}

void SidePanel::setDownloadsView(QWidget* view) {
    content_->insertWidget(1, view);
    view->installEventFilter(this);
    accountView_->setShowsDownloads(view->isVisibleTo(this));
}

// It hides itself while there are no downloads.
bool SidePanel::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ShowToParent || event->type() == QEvent::HideToParent)
        accountView_->setShowsDownloads(event->type() == QEvent::ShowToParent);
    return QWidget::eventFilter(watched, event);
}

void SidePanel::setOverPage(bool isOver) {
    isOverPage_ = isOver;
    const int edge = isOver ? 1 : 0;
    layout()->setContentsMargins(isLeftToRight() ? edge : 0, 0, isLeftToRight() ? 0 : edge, 0);
    update();
}

void SidePanel::paintEvent(QPaintEvent*) {
    if (!isOverPage_)
        return;
    QPainter painter(this);
    painter.fillRect(QRect(isLeftToRight() ? 0 : width() - 1, 0, 1, height()), partingLineColour(palette()));
}

} // namespace quenby
