#include "workspace/window/WelcomeView.h"

#include "widgets/ActivityIndicator.h"
#include "workspace/window/WelcomeViewUi.h"

#include <QAccessible>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>

namespace quenby {

WelcomeView::WelcomeView(QWidget* parent)
    : QWidget(parent)
    , ui_(std::make_unique<WelcomeViewUi>(this)) {
    connect(ui_->signInButton, &QPushButton::clicked, this, &WelcomeView::signInRequested);
    connect(ui_->localDriveButton, &QPushButton::clicked, this, &WelcomeView::localDriveRequested);
    connect(ui_->tryAgainButton, &QPushButton::clicked, this, &WelcomeView::tryAgainRequested);
    connect(ui_->ownClientButton, &QPushButton::clicked, this, &WelcomeView::ownClientRequested);
    // Not clicked(): the arrow keys and assistive programs choose without a click. One of the two tells for both.
    connect(ui_->everything, &QRadioButton::toggled, this, [this](bool isEverything) {
        Q_EMIT accessChosen(isEverything ? DriveAccess::everything : DriveAccess::ownFiles);
    });
    setOffersAccess(false);
    setOffersOwnClient(false);
    showReady();
}

WelcomeView::~WelcomeView() = default;

void WelcomeView::showReady() {
    const bool wasWaiting = !ui_->signInButton->isEnabled();
    ui_->statusRow->hide();
    ui_->tryAgainButton->hide();
    ui_->signInButton->setEnabled(true);
    if (wasWaiting) // a button that cannot be pressed has no focus: it went to the next one
        focusFirst();
}

void WelcomeView::showWaiting(const QString& status) {
    ui_->tryAgainButton->hide();
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

void WelcomeView::setOffersAccess(bool offers) { ui_->access->setVisible(offers); }

void WelcomeView::setOffersOwnClient(bool offers) { ui_->ownClient->setVisible(offers); }

void WelcomeView::setAccess(DriveAccess access) {
    const QSignalBlocker silent(ui_->everything);
    (access == DriveAccess::everything ? ui_->everything : ui_->ownFiles)->setChecked(true);
}

void WelcomeView::setOwnClient(const QString& identifier) {
    ui_->clientInUse->setText(identifier.isEmpty() ? QString() : tr("Signs in as your client %1").arg(identifier));
    ui_->clientInUse->setVisible(!identifier.isEmpty());
}

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
