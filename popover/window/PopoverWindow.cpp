#include "popover/window/PopoverWindow.h"

#include "popover/window/CustomButton.h"
#include "popover/window/PopoverHeight.h"
#include "popover/window/PopoverPlacement.h"
#include "popover/window/PopoverUi.h"
#include "widgets/QuotaBar.h"

#include <QApplication>
#include <QCursor>
#include <QHideEvent>
#include <QLabel>
#include <QScreen>
#include <QShowEvent>

#include <algorithm>

namespace quenby {
namespace {

QList<PopoverScreen> allScreens() {
    QList<PopoverScreen> screens;
    for (const QScreen* screen : QGuiApplication::screens())
        screens.append({screen->geometry(), screen->availableGeometry()});
    return screens;
}

// Where a window is put by nobody but the compositor, it grows downwards.
bool canBePlaced() { return !QGuiApplication::platformName().startsWith(QLatin1String("wayland")); }

} // namespace

PopoverWindow::PopoverWindow(QWidget* changes, Defaults& defaults)
    : defaults_(defaults)
    , ui_(std::make_unique<PopoverUi>(*this, changes, defaults)) {
    setWindowTitle(QStringLiteral("Quenby Changes"));
    setObjectName(QStringLiteral("PopoverWindow"));
    connectButton(ui_->addButton, &PopoverWindow::addRequested);
    connectButton(ui_->gearButton, &PopoverWindow::gearRequested);
    showAccount();
}

PopoverWindow::~PopoverWindow() = default;

void PopoverWindow::connectButton(CustomButton* button, Request request) {
    connect(button, &CustomButton::clicked, this, [this, button, request] {
        Q_EMIT(this->*request)(*button);
        if (QWidget* const menu = QApplication::activePopupWidget())
            button->stayDownWhileOpen(*menu);
    });
}

void PopoverWindow::setAccount(const AccountDisplay& account) {
    if (account_ == account)
        return;
    account_ = account;
    showAccount();
}

void PopoverWindow::showAccount() {
    ui_->userName->setText(account_.userName);
    // Nobody is told once.
    ui_->accountName->setText(account_.accountName == account_.userName ? QString() : account_.accountName);
    ui_->quotaText->setText(account_.quota);
    // An empty bar would say that nothing is used, which is not the same as not knowing.
    ui_->quotaBar->setVisible(account_.percentUsed.has_value());
    ui_->quotaBar->setValue(std::clamp(account_.percentUsed.value_or(0), 0, 100));
    ui_->quotaBar->setAccessibleDescription(account_.quota);
}

void PopoverWindow::setStatusText(const QString& text) {
    if (status_ == text)
        return;
    status_ = text;
    ui_->showStatus(status_, isBusy_);
}

void PopoverWindow::setActivityIndicator(bool isShown) {
    if (isBusy_ == isShown)
        return;
    isBusy_ = isShown;
    ui_->showStatus(status_, isBusy_);
}

void PopoverWindow::setDropTarget(QWidget* dropTarget) { ui_->setDropTarget(dropTarget); }

void PopoverWindow::open(const QRect& anchor) {
    const PopoverPlace place = placePopover(
        {anchor, QCursor::pos(), allScreens(), {popoverWidth, keptPopoverHeight(defaults_)}, layoutDirection()});
    ui_->setMovingEdge(canBePlaced() ? place.movingEdge : Qt::BottomEdge);
    focusFirst();
    showAt(place.frame);
}

// The list, so that arrow keys do something; no ring shows anywhere before Tab was pressed.
void PopoverWindow::focusFirst() {
    QWidget* const first = ui_->changes->isVisibleTo(this) ? ui_->changes : ui_->addButton;
    first->setFocus(Qt::OtherFocusReason);
}

void PopoverWindow::showEvent(QShowEvent* event) {
    CustomWindow::showEvent(event);
    if (!event->spontaneous())
        Q_EMIT visibleChanged(true);
}

void PopoverWindow::hideEvent(QHideEvent* event) {
    CustomWindow::hideEvent(event);
    if (!event->spontaneous())
        Q_EMIT visibleChanged(false);
}

} // namespace quenby
