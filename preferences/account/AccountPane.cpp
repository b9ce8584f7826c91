#include "preferences/account/AccountPane.h"

#include "preferences/account/AccountFace.h"
#include "preferences/account/AccountPaneUi.h"
#include "preferences/account/ServiceUsageBar.h"
#include "widgets/PlainToolTip.h"

#include <QLabel>
#include <QPushButton>

namespace quenby {
namespace {

QString sentenceOf(const std::optional<DriveAccess>& granted) {
    if (!granted)
        return AccountPane::tr("Access: nothing of the Drive. Sign in again, and tick its box.");
    return *granted == DriveAccess::everything ? AccountPane::tr("Access: everything in the Drive")
                                               : AccountPane::tr("Access: only files that Quenby uploads");
}

} // namespace

AccountPane::AccountPane(QWidget* parent)
    : QWidget(parent)
    , ui_(std::make_unique<AccountPaneUi>(this)) {
    connect(ui_->logoutButton, &QPushButton::clicked, this, &AccountPane::logout_click);
    connect(ui_->signInButton, &QPushButton::clicked, this, &AccountPane::signInRequested);
    connect(ui_->signInAgainButton, &QPushButton::clicked, this, &AccountPane::signInAgainRequested);
    connect(ui_->ownClientButton, &QPushButton::clicked, this, &AccountPane::ownClientRequested);
    setAccount({}, false);
}

AccountPane::~AccountPane() = default;

void AccountPane::setAccount(const AccountDisplay& account, bool isSignedIn) {
    account_ = account;
    isSignedIn_ = isSignedIn;
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
    showAccess();
}

void AccountPane::setAccess(const std::optional<DriveAccess>& granted) {
    access_ = sentenceOf(granted);
    showAccess();
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

void AccountPane::showAccess() {
    const bool isTold = isSignedIn_ && !access_.isEmpty();
    ui_->access->setText(access_);
    ui_->access->setVisible(isTold);
    ui_->signInAgainButton->setVisible(isTold);
}

} // namespace quenby
