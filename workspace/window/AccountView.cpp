#include "workspace/window/AccountView.h"

#include "widgets/QuotaBar.h"
#include "workspace/window/AccountViewUi.h"
#include "workspace/window/UploadRows.h"

#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace quenby {
namespace {

QString countText(int running, int waiting) {
    if (running == 0 && waiting == 0)
        return {};
    const QString text = QString::number(running) + QStringLiteral(" running");
    return waiting == 0 ? text
                        : QString(text + QStringLiteral(", ") + QString::number(waiting) + QStringLiteral(" waiting"));
}

} // namespace

AccountView::AccountView(QWidget* parent)
    : QWidget(parent)
    , ui_(std::make_unique<AccountViewUi>(this)) {
    connect(ui_->uploadButton, &QPushButton::clicked, this, &AccountView::uploadRequested);
    connect(ui_->allUploadsButton, &QToolButton::clicked, this, &AccountView::allUploadsRequested);
    setAccount({});
    countUploads();
}

AccountView::~AccountView() = default;

void AccountView::setAccount(const AccountDisplay& account) {
    ui_->userName->setText(account.userName);
    ui_->accountName->setText(account.accountName);
    ui_->quotaText->setWordWrap(!account.percentUsed); // a sentence
    ui_->quotaText->setText(account.quota);
    // An empty bar would say that nothing is used, which is not the same as not knowing, or as no limit.
    ui_->quotaBar->setVisible(account.percentUsed.has_value());
    ui_->quotaBar->setEnabled(account.percentUsed.has_value());
    ui_->quotaBar->setValue(std::clamp(account.percentUsed.value_or(0), 0, 100));
    ui_->quotaBar->setAccessibleDescription(account.quota);
}

void AccountView::setDropView(QWidget* dropView) {
    while (QLayoutItem* item = ui_->dropLayout->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    if (dropView)
        ui_->dropLayout->addWidget(dropView);
    ui_->dropPlace->setVisible(dropView != nullptr);
}

void AccountView::setUploads(UploadRows* uploads) {
    if (uploads_)
        uploads_->disconnect(this);
    uploads_ = uploads;
    ui_->uploadList->setModel(uploads);
    if (uploads)
        connect(uploads, &UploadRows::countChanged, this, &AccountView::countUploads);
    countUploads();
}

void AccountView::countUploads() {
    const int running = uploads_ ? uploads_->rowCount() : 0;
    const int waiting = uploads_ ? uploads_->waiting() : 0;
    ui_->uploadCount->setText(countText(running, waiting));
    ui_->setUploadRows(running);
    ui_->uploads->setVisible(running > 0 || waiting > 0);
    fitDropPlace();
}

void AccountView::setShowsDownloads(bool showsDownloads) {
    showsDownloads_ = showsDownloads;
    fitDropPlace();
}

void AccountView::fitDropPlace() { ui_->setDropHeight(showsDownloads_ || ui_->uploads->isVisibleTo(this)); }

void AccountView::focusFirst() { ui_->uploadButton->setFocus(Qt::OtherFocusReason); }

} // namespace quenby
