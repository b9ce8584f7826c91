// The popover's rows as the toolkit's own list shows them: picture, title and date, in rows of the same height.
#pragma once

#include "core/ChangeRecord.h"

#include <QListView>
#include <QStandardItemModel>

namespace quenby::bench {

class RowList final : public QListView {
    Q_OBJECT

public:
    // The records' pictures are the invented ones. In a window of this size, of the popover's kind.
    RowList(const QList<ChangeRecord>& records, const QSize& size);

private:
    QStandardItemModel model_;
};

} // namespace quenby::bench
