// What can be done on the overlay, in a dark box with round corners. Threads: the main thread. Sizes in points.
#pragma once

#include <QLabel>

namespace quenby {

class InstructionLabel final : public QLabel {
    Q_OBJECT

public:
    explicit InstructionLabel(QWidget* parent);

    // Takes the size that it has on an overlay of this size, and its place there. Where the text does not fit it
    // becomes smaller, and on narrow screens it is broken into more lines.
    void placeOn(const QSize& overlay);

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace quenby
