#include "preferences/general/ScreenshotFoldersUi.h"

#include "preferences/general/NoticeLine.h"
#include "preferences/general/ScreenshotFoldersDialog.h"
#include "widgets/PlainToolTip.h"
#include "widgets/SecondaryLabel.h"

#include <QDialogButtonBox>
#include <QFile>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QStyledItemDelegate>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace quenby {
namespace {

// Everything stands on a grid of 8 pixels.
constexpr QSize usualSize(520, 344);
constexpr int margin = 16;
constexpr int rowPadding = 3;
constexpr int remarkDistance = 8;

constexpr QChar leftToRightIsolate(0x2066);
constexpr QChar endOfIsolate(0x2069);

enum Column { pathColumn, remarkColumn };
constexpr int pathRole = Qt::UserRole;     // QByteArray
constexpr int kindRole = Qt::UserRole + 1; // int of ScreenshotFolderRow::Kind

// Room around the words, and a softer tone for what is not the user's own.
class FolderDelegate final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        return QStyledItemDelegate::sizeHint(option, index).grownBy({0, rowPadding, remarkDistance, rowPadding});
    }

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        QStyledItemDelegate::initStyleOption(option, index);
        // A path begins with its slash, in a right-to-left window, too.
        if (index.column() == pathColumn && option->direction == Qt::RightToLeft)
            option->text = leftToRightIsolate + option->text + endOfIsolate;
        if (index.data(kindRole).toInt() == static_cast<int>(ScreenshotFolderRow::Kind::known))
            option->palette.setBrush(QPalette::Text, option->palette.placeholderText());
    }
};

QTreeWidget* makeList(QWidget* parent) {
    auto* list = new QTreeWidget(parent);
    list->setColumnCount(2);
    list->setHeaderHidden(true);
    list->setRootIsDecorated(false);
    list->setUniformRowHeights(true);
    list->setItemDelegate(new FolderDelegate(list));
    list->setAllColumnsShowFocus(true);
    list->setTextElideMode(Qt::ElideMiddle);
    list->setAccessibleName(ScreenshotFoldersDialog::tr("Folders"));
    list->setTabKeyNavigation(false);
    list->header()->setStretchLastSection(false);
    list->header()->setSectionResizeMode(pathColumn, QHeaderView::Stretch);
    list->header()->setSectionResizeMode(remarkColumn, QHeaderView::ResizeToContents);
    return list;
}

QString remarkOn(const ScreenshotFolderRow& row) {
    switch (row.kind) {
    case ScreenshotFolderRow::Kind::known:
        return ScreenshotFoldersDialog::tr("Found automatically");
    case ScreenshotFolderRow::Kind::added:
        return {};
    case ScreenshotFolderRow::Kind::addedButNotThere:
        return ScreenshotFoldersDialog::tr("Not there");
    }
    Q_UNREACHABLE();
}

QTreeWidgetItem* makeItem(const ScreenshotFolderRow& row) {
    const QString path = QFile::decodeName(row.path);
    auto* item = new QTreeWidgetItem({path, remarkOn(row)});
    item->setData(pathColumn, pathRole, row.path);
    item->setToolTip(pathColumn, plainToolTip(path));
    for (const Column column : {pathColumn, remarkColumn})
        item->setData(column, kindRole, static_cast<int>(row.kind));
    if (row.kind == ScreenshotFolderRow::Kind::known)
        item->setFlags(Qt::ItemIsEnabled);
    return item;
}

bool isKnown(const QTreeWidgetItem& item) {
    return item.data(pathColumn, kindRole).toInt() == static_cast<int>(ScreenshotFolderRow::Kind::known);
}

QHBoxLayout* makeButtons(const ScreenshotFoldersUi& ui, QDialog* dialog) {
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(8);
    for (QPushButton* button : {ui.add, ui.remove}) {
        button->setAutoDefault(false);
        buttons->addWidget(button);
    }
    auto* closing = new QDialogButtonBox(QDialogButtonBox::Close, dialog);
    buttons->addWidget(closing, 1);
    QObject::connect(closing, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    return buttons;
}

} // namespace

ScreenshotFoldersUi::ScreenshotFoldersUi(QDialog* dialog)
    : list(makeList(dialog))
    , notice(new NoticeLine(NoticeLine::Kind::trouble, list, dialog))
    , add(new QPushButton(ScreenshotFoldersDialog::tr("&Add…"), dialog))
    , remove(new QPushButton(ScreenshotFoldersDialog::tr("&Remove"), dialog)) {
    auto* explanation = new SecondaryLabel(dialog);
    explanation->setWordWrap(true);
    explanation->setText(ScreenshotFoldersDialog::tr(
        "Quenby looks for new screenshots in these folders. It uploads those that lie in a folder that was added here, "
        "or in the one chosen for automatic upload."));

    auto* layout = new QVBoxLayout(dialog);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(8);
    layout->addWidget(explanation);
    layout->addWidget(list, 1);
    layout->addWidget(notice);
    layout->addSpacing(8);
    layout->addLayout(makeButtons(*this, dialog));
    dialog->resize(usualSize.expandedTo(layout->totalSizeHint()));
    list->setFocus();
}

void ScreenshotFoldersUi::showRows(const QList<ScreenshotFolderRow>& rows) {
    if (rows == rows_)
        return;
    const QByteArray selected = selectedFolder();
    const int place = list->indexOfTopLevelItem(list->currentItem());
    rows_ = rows;
    list->clear();
    for (const ScreenshotFolderRow& row : rows)
        list->addTopLevelItem(makeItem(row));
    if (selected.isEmpty())
        return;
    select(selected);
    if (selectedFolder().isEmpty())
        list->setCurrentItem(list->topLevelItem(std::min(place, list->topLevelItemCount() - 1)));
}

void ScreenshotFoldersUi::select(const QByteArray& path) {
    for (int place = 0; place < list->topLevelItemCount(); ++place) {
        QTreeWidgetItem* const item = list->topLevelItem(place);
        if (item->data(pathColumn, pathRole).toByteArray() == path) {
            list->setCurrentItem(item);
            list->scrollToItem(item);
        }
    }
}

QByteArray ScreenshotFoldersUi::selectedFolder() const {
    const QTreeWidgetItem* const item = list->currentItem();
    return item && !isKnown(*item) ? item->data(pathColumn, pathRole).toByteArray() : QByteArray();
}

} // namespace quenby
