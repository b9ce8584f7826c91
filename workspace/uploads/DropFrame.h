// A frame over what files can be dropped on, while they are held above it. The pointer does not feel it.
//
// Threads: the main thread.
#pragma once

#include <QWidget>

namespace quenby {

class DropFrame final : public QWidget {
    Q_OBJECT

public:
    // As large as its parent when it is shown. Hidden at first.
    explicit DropFrame(QWidget* parent);

protected:
    void showEvent(QShowEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};

} // namespace quenby
