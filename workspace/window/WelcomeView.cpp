#include "workspace/window/WelcomeView.h"

#include "widgets/ActivityIndicator.h"
#include "workspace/window/WelcomeViewUi.h"

#include <QAccessible>
#include <QLabel>
#include <QPushButton>

namespace quenby {

WelcomeView::WelcomeView(QWidget* parent)
    : QWidget(parent)
    , ui_(std::make_unique<WelcomeViewUi>(this)) {
    connect(ui_->signInButton, &QPushButton::clicked, this, &WelcomeView::signInRequested);
    connect(ui_->localDriveButton, &QPushButton::clicked, this, &WelcomeView::localDriveRequested);
    connect(ui_->tryAgainButton, &QPushButton::clicked, this, &WelcomeView::tryAgainRequested);
    showReady();
}

WelcomeView::~WelcomeView() = default;

void WelcomeView::showReady() {
    ui_->statusRow->hide();
    ui_->tryAgainButton->hide();
    ui_->signInButton->setEnabled(true);
}

void WelcomeView::showWaiting(const QString& status) {
    showReady();
    ui_->setStatus(status);
    ui_->troublePicture->hide();
    ui_->activityIndicator->show();
    ui_->statusRow->show();
    ui_->signInButton->setEnabled(false);
}

void WelcomeView::showTrouble(const QString& sentence) {
    showReady();
    ui_->setStatus(sentence);
    ui_->activityIndicator->hide();
    ui_->troublePicture->show();
    ui_->statusRow->show();
    ui_->tryAgainButton->show();
    focusFirst();
    QAccessibleEvent alert(ui_->statusText, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void WelcomeView::setOffersLocalDrive(bool offers) { ui_->localDriveButton->setVisible(offers); }

void WelcomeView::setCommandsMenu(QMenu* menu) {
    ui_->menuButton->setMenu(menu);
    ui_->menuButton->setVisible(menu != nullptr);
}

void WelcomeView::focusFirst() {
    for (QPushButton* button : {ui_->tryAgainButton, ui_->signInButton, ui_->localDriveButton}) {
        if (button->isVisibleTo(this) && button->isEnabled()) {
            button->setFocus(Qt::OtherFocusReason);
            return;
        }
    }
}

} // namespace quenby
