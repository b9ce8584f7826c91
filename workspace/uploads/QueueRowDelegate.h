// Paints one upload of the queue: the picture of its type, its name, how it is in words, and a bar while it is under
// way. Everything in the desktop's own colours; what needs the user stands out by a sign and a colour of its own.
//
// Threads: the main thread.
#pragma once

#include "workspace/uploads/FileTypeIcons.h"

#include <QStyledItemDelegate>

namespace quenby {

class QueueRowDelegate final : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    // All rows are equally high.
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    mutable FileTypeIcons icons_;
};

} // namespace quenby
