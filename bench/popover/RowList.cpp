#include "bench/popover/RowList.h"

#include "bench/popover/InventedChanges.h"
#include "popover/changes/RowLook.h"

#include <QScrollBar>

namespace quenby::bench {

RowList::RowList(const QList<ChangeRecord>& records, const QSize& size) {
    constexpr int stepOfScrollArea = 20;
    const RowFrames frames = rowFrames(size.width(), layoutDirection());
    for (int i = 0; i < records.size(); ++i) {
        const int rank = static_cast<int>(records.size()) - 1 - i;
        const QImage picture =
            inventedThumbnail(rank).scaled(frames.picture.size(), Qt::KeepAspectRatio, Qt::SmoothTransformation);
        auto* item =
            new QStandardItem(QIcon(QPixmap::fromImage(picture)), records.at(i).title + QChar::LineSeparator +
                                                                      records.at(i).modifiedDate.toString(Qt::ISODate));
        item->setSizeHint(QSize(size.width(), rowHeight));
        model_.appendRow(item);
    }
    setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    setFrameShape(QFrame::NoFrame);
    setModel(&model_);
    setIconSize(frames.picture.size());
    setUniformItemSizes(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(ScrollPerPixel);
    verticalScrollBar()->setSingleStep(stepOfScrollArea);
    setFixedSize(size);
}

} // namespace quenby::bench
