#include "workspace/downloads/DownloadsView.h"

#include "workspace/downloads/DownloadRowView.h"
#include "workspace/downloads/Downloads.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace quenby {
namespace {

constexpr int margin = 16;

QLabel* makeTitle(QWidget* parent) {
    auto* title = new QLabel(QStringLiteral("Downloads"), parent);
    QFont font = title->font();
    font.setPointSizeF(font.pointSizeF() * 1.15);
    font.setWeight(QFont::DemiBold);
    title->setFont(font);
    return title;
}

} // namespace

DownloadsView::DownloadsView(Downloads& downloads, QWidget* parent)
    : QWidget(parent)
    , downloads_(downloads)
    , list_(new QVBoxLayout)
    , clear_(new QToolButton(this)) {
    clear_->setText(QStringLiteral("Clear"));
    clear_->setAutoRaise(true);
    clear_->setFocusPolicy(Qt::TabFocus);
    clear_->setToolTip(QStringLiteral("Take what has ended off the list"));
    auto* heading = new QHBoxLayout;
    heading->addWidget(makeTitle(this));
    heading->addStretch();
    heading->addWidget(clear_);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin, 8, margin, margin);
    layout->setSpacing(4);
    layout->addLayout(heading);
    list_->setSpacing(0);
    layout->addLayout(list_);

    connect(clear_, &QToolButton::clicked, &downloads_, &Downloads::clearEnded);
    connect(&downloads_, &QAbstractItemModel::rowsInserted, this,
            [this](const QModelIndex&, int first, int last) { insertRows(first, last); });
    connect(&downloads_, &QAbstractItemModel::rowsAboutToBeRemoved, this,
            [this](const QModelIndex&, int first, int last) { removeRows(first, last); });
    connect(&downloads_, &QAbstractItemModel::dataChanged, this,
            [this](const QModelIndex& first, const QModelIndex& last) { showRows(first.row(), last.row()); });
    connect(&downloads_, &Downloads::countChanged, this, &DownloadsView::countRows);
    if (downloads_.rowCount() > 0)
        insertRows(0, downloads_.rowCount() - 1);
    countRows();
}

// The newest stands first.
void DownloadsView::insertRows(int first, int last) {
    for (int row = first; row <= last; ++row) {
        auto* view = new DownloadRowView;
        rows_.insert(rows_.begin() + row, view);
        list_->insertWidget(int(rows_.size()) - 1 - row, view);
        connect(view, &DownloadRowView::pauseRequested, this, [this, view] { downloads_.pause(rowOf(view)); });
        connect(view, &DownloadRowView::resumeRequested, this, [this, view] { downloads_.resume(rowOf(view)); });
        connect(view, &DownloadRowView::cancelRequested, this, [this, view] { downloads_.cancel(rowOf(view)); });
        connect(view, &DownloadRowView::showInFolderRequested, this,
                [this, view] { downloads_.showInFolder(rowOf(view)); });
    }
    showRows(first, last);
}

void DownloadsView::removeRows(int first, int last) {
    for (int row = first; row <= last; ++row)
        rows_[std::size_t(row)]->deleteLater(); // its button may be the one that was pressed
    rows_.erase(rows_.begin() + first, rows_.begin() + last + 1);
}

void DownloadsView::showRows(int first, int last) {
    for (int row = first; row <= last; ++row) {
        const QModelIndex index = downloads_.index(row);
        const QVariant rate = index.data(Downloads::RateRole);
        rows_[std::size_t(row)]->setDownload(
            index.data().toString(),
            {.state = Arrival::State(index.data(Downloads::StateRole).toInt()),
             .received = index.data(Downloads::ReceivedRole).toLongLong(),
             .total = index.data(Downloads::TotalRole).toLongLong(),
             .bytesPerSecond = rate.isValid() ? std::optional(rate.toLongLong()) : std::nullopt,
             .reason = index.data(Downloads::ReasonRole).toString()});
    }
}

void DownloadsView::countRows() {
    setVisible(!rows_.empty());
    clear_->setEnabled(downloads_.DownloadFileList().size() < downloads_.rowCount());
}

int DownloadsView::rowOf(const DownloadRowView* view) const {
    return int(std::find(rows_.cbegin(), rows_.cend(), view) - rows_.cbegin());
}

} // namespace quenby
