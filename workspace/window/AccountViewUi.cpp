#include "workspace/window/AccountViewUi.h"

#include "widgets/QuotaBar.h"
#include "widgets/SecondaryLabel.h"
#include "workspace/window/AccountView.h"
#include "workspace/window/UploadRowDelegate.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace quenby {
namespace {

// Everything stands on a grid of 8 pixels.
constexpr int margin = 16;
constexpr int buttonHeight = 32;
constexpr int usualDropHeight = 208;
constexpr int smallDropHeight = 120; // where the transfers need the room
constexpr int mostUploadRows = 6;    // before the list scrolls

void enlarge(QLabel& label, qreal factor) {
    QFont font = label.font();
    font.setPointSizeF(font.pointSizeF() * factor);
    font.setWeight(QFont::DemiBold);
    label.setFont(font);
}

QVBoxLayout* makeHeader(const AccountViewUi& ui) {
    auto* names = new QVBoxLayout;
    names->setSpacing(2);
    names->addWidget(ui.userName);
    names->addWidget(ui.accountName);
    return names;
}

void makeUploadsLayout(const AccountViewUi& ui) {
    auto* title = new QLabel(QStringLiteral("Uploads"), ui.uploads);
    enlarge(*title, 1.15);
    auto* heading = new QHBoxLayout;
    heading->setSpacing(8);
    heading->addWidget(title);
    heading->addWidget(ui.uploadCount, 1);
    auto* layout = new QVBoxLayout(ui.uploads);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    layout->addLayout(heading);
    layout->addWidget(ui.uploadList);
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
    auto* drop = new QVBoxLayout;
    drop->setSpacing(8);
    drop->addWidget(ui.dropPlace);
    drop->addWidget(ui.uploadButton);
    drop->addWidget(ui.allUploadsButton, 0, Qt::AlignRight);
    layout->addLayout(drop);
    layout->addWidget(ui.uploads);
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
    list.setFrameShape(QFrame::NoFrame);
    list.viewport()->setAutoFillBackground(false); // its rows stand on the window's own ground
}

} // namespace

AccountViewUi::AccountViewUi(QWidget* view)
    : userName(new ElidedLabel(view))
    , accountName(new SecondaryLabel(view))
    , quotaText(new SecondaryLabel(view))
    , quotaBar(new QuotaBar(view))
    , dropPlace(new QWidget(view))
    , dropLayout(new QVBoxLayout(dropPlace))
    , uploadButton(new QPushButton(QStringLiteral("&Upload File"), view))
    , allUploadsButton(new QToolButton(view))
    , uploads(new QWidget(view))
    , uploadCount(new SecondaryLabel(uploads))
    , uploadList(new QListView(uploads)) {
    enlarge(*userName, 1.4);
    for (QLabel* label : {userName, accountName})
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    uploadButton->setAutoDefault(true); // so that Return presses it, too
    uploadButton->setMinimumHeight(buttonHeight);
    allUploadsButton->setText(AccountView::tr("All Uploads…"));
    allUploadsButton->setAutoRaise(true);
    allUploadsButton->setFocusPolicy(Qt::TabFocus);
    allUploadsButton->setToolTip(AccountView::tr("Shows every upload, and what can be done with it"));
    dropLayout->setContentsMargins(0, 0, 0, 0);
    dropPlace->hide();
    setUpUploadList(*uploadList);
    makeUploadsLayout(*this);
    uploads->hide();
    makeLayout(*this, view);
    setDropHeight(false);

    QWidget::setTabOrder(uploadButton, allUploadsButton);
    QWidget::setTabOrder(allUploadsButton, uploadList);
}

void AccountViewUi::setDropHeight(bool isSmall) {
    dropPlace->setFixedHeight(isSmall ? smallDropHeight : usualDropHeight);
}

void AccountViewUi::setUploadRows(int count) {
    uploadList->setVisible(count > 0);
    if (count > 0)
        uploadList->setFixedHeight(std::min(count, mostUploadRows) * uploadList->sizeHintForRow(0));
}

} // namespace quenby
