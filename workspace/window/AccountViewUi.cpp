#include "workspace/window/AccountViewUi.h"

#include "widgets/QuotaBar.h"
#include "widgets/SecondaryLabel.h"
#include "workspace/window/UploadRowDelegate.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QStackedLayout>
#include <QVBoxLayout>

namespace quenby {
namespace {

// Everything stands on a grid of 8 pixels.
constexpr int margin = 24;
constexpr int buttonHeight = 32;
constexpr int buttonWidth = 128;

void enlarge(QLabel& label, qreal factor) {
    QFont font = label.font();
    font.setPointSizeF(font.pointSizeF() * factor);
    font.setWeight(QFont::DemiBold);
    label.setFont(font);
}

QHBoxLayout* makeHeader(const AccountViewUi& ui) {
    auto* names = new QVBoxLayout;
    names->setSpacing(2);
    names->addWidget(ui.userName);
    names->addWidget(ui.accountName);
    auto* header = new QHBoxLayout;
    header->setSpacing(8);
    header->addLayout(names, 1);
    header->addWidget(ui.showChangesButton, 0, Qt::AlignTop);
    header->addWidget(ui.menuButton, 0, Qt::AlignTop);
    return header;
}

QHBoxLayout* makeUploadsHeading(const AccountViewUi& ui, QWidget* view) {
    auto* title = new QLabel(QStringLiteral("Uploads"), view);
    enlarge(*title, 1.15);
    auto* heading = new QHBoxLayout;
    heading->setSpacing(8);
    heading->addWidget(title);
    heading->addWidget(ui.uploadCount, 1);
    heading->addWidget(ui.uploadButton);
    return heading;
}

QVBoxLayout* makeLayout(const AccountViewUi& ui, QWidget* view) {
    auto* quota = new QVBoxLayout;
    quota->setSpacing(8);
    quota->addWidget(ui.quotaText);
    quota->addWidget(ui.quotaBar);

    auto* layout = new QVBoxLayout(view);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(24);
    layout->addLayout(makeHeader(ui));
    layout->addLayout(quota);
    layout->addWidget(ui.dropPlace, 2);
    auto* uploads = new QVBoxLayout;
    uploads->setSpacing(8);
    uploads->addLayout(makeUploadsHeading(ui, view));
    uploads->addLayout(ui.uploadsStack, 1);
    layout->addLayout(uploads, 3);
    return layout;
}

void setUpUploadList(QListView& list) {
    list.setItemDelegate(new UploadRowDelegate(&list));
    list.setSelectionMode(QAbstractItemView::NoSelection);
    list.setEditTriggers(QAbstractItemView::NoEditTriggers);
    list.setUniformItemSizes(true);
    list.setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    list.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list.setTabKeyNavigation(false);
    list.setAccessibleName(QStringLiteral("Running uploads"));
    list.setMinimumHeight(80);
    list.setFrameShape(QFrame::NoFrame); // its ground sets it off; a frame loses sides at fractional scales
}

} // namespace

AccountViewUi::AccountViewUi(QWidget* view)
    : userName(new ElidedLabel(view))
    , accountName(new SecondaryLabel(view))
    , showChangesButton(new QPushButton(QStringLiteral("Show &Changes"), view))
    , menuButton(new QPushButton(QStringLiteral("&Menu"), view))
    , quotaText(new SecondaryLabel(view))
    , quotaBar(new QuotaBar(view))
    , dropPlace(new QWidget(view))
    , dropLayout(new QVBoxLayout(dropPlace))
    , uploadCount(new SecondaryLabel(view))
    , uploadButton(new QPushButton(QStringLiteral("&Upload File"), view))
    , uploadsStack(new QStackedLayout)
    , uploadList(new QListView(view))
    , noUploads(new SecondaryLabel(view)) {
    enlarge(*userName, 1.4);
    for (QLabel* label : {userName, accountName})
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    for (QPushButton* button : {showChangesButton, uploadButton}) {
        button->setAutoDefault(true); // so that Return presses it, too
        button->setMinimumSize(buttonWidth, buttonHeight);
    }
    showChangesButton->hide();
    menuButton->setMinimumSize(96, buttonHeight);
    menuButton->hide();
    dropLayout->setContentsMargins(0, 0, 0, 0);
    dropPlace->hide();
    setUpUploadList(*uploadList);
    noUploads->setText(QStringLiteral("No uploads are running."));
    noUploads->setAlignment(Qt::AlignCenter);
    uploadsStack->addWidget(noUploads);
    uploadsStack->addWidget(uploadList);
    makeLayout(*this, view);

    QWidget::setTabOrder(uploadButton, uploadList);
    QWidget::setTabOrder(uploadList, showChangesButton);
    QWidget::setTabOrder(showChangesButton, menuButton);
}

} // namespace quenby
