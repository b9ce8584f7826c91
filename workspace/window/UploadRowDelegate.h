// Paints one running upload: its name, how far it is in words, and a bar. Everything in the desktop's own colours.
#pragma once

#include <QStyledItemDelegate>

namespace quenby {

class UploadRowDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

} // namespace quenby
