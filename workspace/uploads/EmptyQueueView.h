// What stands in place of the list while there are no uploads: that there are none, and what to do about it.
//
// Threads: the main thread.
#pragma once

#include <QWidget>

namespace quenby {

class EmptyQueueView final : public QWidget {
    Q_OBJECT

public:
    explicit EmptyQueueView(QWidget* parent = nullptr);
};

} // namespace quenby
