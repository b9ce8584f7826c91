#include "preferences/account/AccountPane.h"

#include "preferences/account/AccountFace.h"
#include "preferences/account/AccountPaneUi.h"
#include "preferences/account/ServiceUsageBar.h"
#include "widgets/PlainToolTip.h"

#include <QLabel>
#include <QPushButton>

namespace quenby {

AccountPane::AccountPane(QWidget* parent)
    : QWidget(parent)
    , ui_(std::make_unique<AccountPaneUi>(this)) {
    connect(ui_->logoutButton, &QPushButton::clicked, this, &AccountPane::logout_click);
    connect(ui_->signInButton, &QPushButton::clicked, this, &AccountPane::signInRequested);
    connect(ui_->ownClientButton, &QPushButton::clicked, this, &AccountPane::ownClientRequested);
    setAccount({}, false);
}

AccountPane::~AccountPane() = default;

void AccountPane::setAccount(const AccountDisplay& account, bool isSignedIn) {
    account_ = account;
    const bool isNamed = !account.userName.isEmpty();
    ui_->user_name->setText(isNamed ? account.userName : isSignedIn ? account.accountName : tr("No User Login"));
    ui_->account_name->setText(account.accountName);
    // One line for what would stand there twice.
    ui_->account_name->setVisible(!account.accountName.isEmpty() && account.accountName != ui_->user_name->text());
    ui_->logoutButton->setVisible(isSignedIn);
    ui_->signInButton->setVisible(!isSignedIn);
    if (!isSignedIn) {
        setPicture({});
        usage_.reset();
    }
    showQuota();
}

void AccountPane::setUsage(const std::optional<AccountUsage>& usage) {
    usage_ = usage;
    showQuota();
}

void AccountPane::setPicture(const QImage& picture) { ui_->face->setPicture(picture); }

void AccountPane::setOwnClientRefused(const QString& sentence) {
    ui_->ownClientButton->setEnabled(sentence.isEmpty());
    ui_->ownClientButton->setToolTip(sentence.isEmpty() ? QString() : plainToolTip(sentence));
    ui_->ownClientButton->setAccessibleDescription(sentence);
}

void AccountPane::showQuota() {
    ui_->usage->setUsage(usage_);
    ui_->quota->setWordWrap(!usage_); // a sentence
    ui_->quota->setText(usage_ ? usageText(*usage_) : account_.quota);
    ui_->quota->setVisible(!ui_->quota->text().isEmpty());
}

} // namespace quenby
